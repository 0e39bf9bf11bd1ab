"""Checks of arguments before work starts: each function returns its argument in the one form that
the rest of the package uses, or raises an error with the name and value of the argument and what is
wanted."""

from __future__ import annotations

import difflib
import math
import operator
import re
from collections.abc import Callable, Collection, Iterable, Mapping, Sequence
from collections.abc import Set as AbstractSet
from itertools import chain
from typing import Any

import numpy as np
import numpy.typing as npt

from zeltbraidwerk import _core, errors, limits
from zeltbraidwerk._shown import shown as shown

BoolArray = npt.NDArray[np.bool_]

_BOOLS = (bool, np.bool_)
_BYTES_PER_QUBIT = 1000  # of names, wires in pictures, layers and the like
_YEAR = 3.2e7  # seconds
_MOST = 2**31 - 1  # of what the compiled part counts in 32 bits
_LETTERS = re.compile("[IXYZ_]*|[ixyz_]*")


def comes_from(value: Any, package: str) -> bool:
    """Whether a class of that package, or a class derived from one, made the value. The package
    is not imported."""
    return package in map(package_of, type(value).__mro__)


def package_of(kind: Any) -> str:
    """The package of a class. Those of Qiskit's gates without parameters have no module."""
    return str(kind.__module__).partition(".")[0].lstrip("_")


# --- kinds of values ----------------------------------------------------------------------------


def instance(value: Any, name: str, kind: type | tuple[type, ...], wanted: str) -> Any:
    """``wanted`` is what the text of the error says, such as "a Device"."""
    if not isinstance(value, kind):
        raise errors.DtypeError(f"{name}: got {shown(value)}, wanted {wanted}")
    return value


def flag(value: Any, name: str) -> bool:
    return bool(instance(value, name, _BOOLS, "True or False"))


def text(value: Any, name: str) -> str:
    return str(instance(value, name, str, "text"))


def callback(value: Any, name: str) -> Callable[..., object] | None:
    if value is not None and not callable(value):
        raise errors.DtypeError(f"{name}: got {shown(value)}, wanted a function or None")
    return value  # type: ignore[no-any-return]


def items(value: Any, name: str, wanted: str) -> list[Any]:
    """A list of anything that can be iterated over in a fixed order. Text, mappings and sets are
    refused; so are masked arrays, whose mask would be lost."""
    if type(value) in (tuple, list):
        return list(value)
    refused = (str, bytes, bytearray, set, frozenset, np.ma.MaskedArray)
    is_mapping = isinstance(value, Mapping) and not isinstance(value, AbstractSet)
    try:
        if isinstance(value, refused) or is_mapping:
            raise TypeError
        return list(value)
    except TypeError:
        raise errors.DtypeError(f"{name}: got {shown(value)}, wanted {wanted}") from None


def choice(value: Any, name: str, choices: Collection[str]) -> str:
    if not isinstance(value, str) or value not in choices:
        listed = ", ".join(repr(each) for each in choices)
        raise errors.OptionError(
            f"{name}: got {shown(value)}, wanted one of {listed}{meant(value, choices)}"
        )
    return str(value)


def meant(value: Any, known: Iterable[str]) -> str:
    """The end of the text of an error: which of the known words was probably meant."""
    words = {word.casefold(): word for word in known}
    text = value.casefold() if isinstance(value, str) else ""
    near = difflib.get_close_matches(text, words, 1)
    return f"; did you mean {words[near[0]]!r}?" if near else ""


def method(value: Any, known: Collection[str], on_device: bool = False) -> str:
    """The argument ``method`` of a family; ``known`` is what its ``methods()`` returns."""
    if not isinstance(value, str) or value not in known:
        raise errors.UnknownMethodError(
            f"method: got {shown(value)}, wanted one of {', '.join(known)}"
            f"{' on a device' if on_device else ''}{meant(value, known)}"
        )
    return str(value)


def options_of(chosen: str, takers: Mapping[str, Collection[str]], **given: Any) -> None:
    """Refuses the options that were given, those not None, but that the method does not take.
    ``takers`` lists for each option the methods that take it; others are taken by all."""
    for name, value in given.items():
        if value is not None and name in takers and chosen not in takers[name]:
            raise errors.OptionError(
                f"{name}: not an option of method {chosen!r}, but of {', '.join(takers[name])}"
            )


# --- numbers ------------------------------------------------------------------------------------


def integer(value: Any, name: str, least: int, most: int | None = None) -> int:
    number = _index(value, name)
    if number < least or (most is not None and number > most):
        wanted = f"at least {least}" if most is None else f"{least} to {most}"
        raise errors.OptionError(f"{name}: got {shown(number)}, wanted {wanted}")
    return number


def _index(value: Any, name: str) -> int:
    if type(value) is int:
        return value
    try:
        if isinstance(value, (*_BOOLS, np.ma.MaskedArray)):
            raise TypeError
        return operator.index(value)
    except TypeError:
        raise errors.DtypeError(f"{name}: got {shown(value)}, wanted an integer") from None


def real(value: Any, name: str, wanted: str) -> float:
    """A number, neither bool nor text; it may be infinite or not a number."""
    if type(value) is float:
        return value
    refused = (str, bytes, bytearray, *_BOOLS, np.ma.MaskedArray)
    is_array = isinstance(value, np.ndarray) and (value.ndim or value.dtype.kind not in "iuf")
    try:
        if isinstance(value, refused) or is_array:
            raise TypeError
        return float(value)
    except OverflowError:
        return math.inf
    except (TypeError, ValueError):
        raise errors.DtypeError(f"{name}: got {shown(value)}, wanted {wanted}") from None


def seconds(value: Any, name: str) -> float:
    number = real(value, name, "seconds")
    if not 0 < number <= _YEAR:
        raise errors.OptionError(
            f"{name}: got {number}, wanted a positive number of seconds, a year at most"
        )
    return number


def angle(value: Any, name: str) -> float:
    number = real(value, name, "a number of radians or an expression")
    if not math.isfinite(number):
        raise errors.AngleError(f"{name}: got {number}, wanted a finite angle in radians")
    return number


# --- qubits -------------------------------------------------------------------------------------


def qubit_count(value: Any, name: str = "n", square: int = 0) -> int:
    """``square`` is what is made of the qubits in bytes over the square of their number, besides
    what grows with their number."""
    n = _index(value, name)
    if n > 0:
        limits.check_memory(name, n, "qubits", n * (_BYTES_PER_QUBIT + int(square) * n))
    return integer(n, name, 0, _MOST)


def qubits(values: Any, name: str) -> tuple[int, ...]:
    """Distinct qubits from 0 up; the circuit that takes them knows the upper end."""
    listed = items(values, name, "an integer or a list of integers")
    checked = tuple([_index(value, name) for value in listed])
    for qubit in checked:
        if not 0 <= qubit < _MOST:
            wanted = "0 or more" if qubit < 0 else f"0 to {_MOST - 1}"
            raise errors.QubitError(f"{name}: got {shown(qubit)}, wanted {wanted}")
    if len(set(checked)) < len(checked):
        raise errors.QubitError(f"{name}: got {shown(checked)}, wanted distinct qubits")
    return checked


def qubits_below(values: Sequence[int], n: int, name: str) -> None:
    for qubit in values:
        if qubit >= n:
            raise errors.QubitError(f"{name}: got qubit {qubit}, wanted 0 to {n - 1}")


def pairs(value: Any, name: str) -> npt.NDArray[Any]:
    """Pairs of integers as a (k, 2) array."""
    rows = value if isinstance(value, np.ndarray) else items(value, name, "pairs of qubits")
    found = array(rows, name)
    if found.shape == (0,):
        return np.zeros((0, 2), dtype=np.int32)
    if found.dtype.kind not in "iu":
        raise errors.DtypeError(f"{name}: got entries of type {found.dtype}, wanted integers")
    if found.ndim != 2 or found.shape[1] != 2:
        raise errors.ShapeError(f"{name}: got shape {found.shape}, wanted pairs, (pairs, 2)")
    if rows is not value and not set(map(type, chain.from_iterable(rows))).isdisjoint(_BOOLS):
        raise errors.DtypeError(f"{name}: got a bool among the qubits, wanted integers")
    return found


def cnots(value: Any, n: int, name: str) -> npt.NDArray[np.int32]:
    """A read-only (k, 2) array of control and target, not shared with the caller."""
    found = pairs(value, name)
    outside = found[(found < 0) | (found >= n)]
    if outside.size:
        raise errors.QubitError(f"{name}: got qubit {outside[0]}, wanted 0 to {n - 1}")
    same = found[found[:, 0] == found[:, 1]]
    if same.size:
        raise errors.QubitError(f"{name}: got qubit {same[0, 0]} twice in a pair, wanted two")
    return frozen(found.astype(np.int32))


# --- arrays -------------------------------------------------------------------------------------


def array(value: Any, name: str) -> npt.NDArray[Any]:
    """An array, or an object that holds one, as a plain array of numpy, not copied if possible.
    Nested lists, pandas, galois and sparse matrices of scipy are taken; masks are refused."""
    parts = value if isinstance(value, (list, tuple)) else (value,)
    if any(isinstance(part, np.ma.MaskedArray) for part in parts):
        raise errors.DtypeError(f"{name}: got a masked array, wanted an array without a mask")
    shape = getattr(value, "shape", ())
    if isinstance(shape, tuple) and len(shape) == 2:
        limits.check_memory(name, shape[0], f"rows of {shape[1]} entries", 2 * shape[0] * shape[1])
    if comes_from(value, "scipy") and hasattr(value, "toarray"):
        value = value.astype(np.int8).toarray() if value.dtype.kind in "biu" else value.toarray()
    if isinstance(value, (str, bytes, bytearray)) or not (
        isinstance(value, Sequence) or hasattr(value, "__array__")
    ):
        raise errors.DtypeError(f"{name}: got {shown(value)}, wanted an array or nested lists")
    try:
        return np.asarray(value)
    except (TypeError, ValueError, OverflowError):
        raise errors.ShapeError(f"{name}: got rows of unequal length") from None


def bits(value: Any, name: str) -> BoolArray:
    """An array of bool of any shape. One of bool is not copied; nothing here writes into it."""
    found = array(value, name)
    if found.dtype == np.bool_:
        return found
    if found.size and found.dtype.kind not in "biu":
        raise errors.DtypeError(
            f"{name}: got entries of type {found.dtype}, wanted bool or the integers 0 and 1"
        )
    as_bool = found.astype(np.bool_)
    if not np.array_equal(found, as_bool):
        strange = found[found != as_bool].flat[0]
        raise errors.EntryError(f"{name}: got the entry {strange}, wanted 0 and 1 alone")
    return as_bool


def bit_matrix(value: Any, name: str) -> BoolArray:
    """A square matrix of bool."""
    found = bits(value, name)
    if found.ndim != 2 or found.shape[0] != found.shape[1]:
        if found.size == 0 and found.ndim < 2:
            return np.zeros((0, 0), dtype=np.bool_)
        raise errors.ShapeError(f"{name}: got shape {found.shape}, wanted a square matrix")
    return found


def invertible_matrix(value: Any, name: str) -> BoolArray:
    matrix = bit_matrix(value, name)
    n = len(matrix)
    if not _core.boolean_matrix_det(matrix, n):
        raise errors.SingularMatrixError(
            f"{name}: got a singular {n} by {n} matrix, wanted one with an inverse over GF(2)"
        )
    return matrix


def frozen(array: npt.NDArray[Any]) -> npt.NDArray[Any]:
    array.flags.writeable = False
    return array


# --- Pauli strings ------------------------------------------------------------------------------


def pauli(value: Any, n: int, name: str) -> tuple[bool, str]:
    """(True for minus, letters) of a string such as "XIZ", "-XIZ" or "+_XZ". Letters are upper or
    lower case, not both: the "i" of "iXX" is a phase, where other packages write it."""
    if not isinstance(value, str):
        raise errors.DtypeError(f"{name}: got {type(value).__name__}, wanted a string of letters")
    letters = value.lstrip("+-")
    sign = value[: len(value) - len(letters)]
    if len(sign) > 1 or not _LETTERS.fullmatch(letters):
        raise errors.PauliError(
            f"{name}: got {shown(value)}, wanted letters I, X, Y, Z after one sign"
        )
    letters = letters.upper().replace("_", "I")
    if len(letters) != n:
        raise errors.PauliError(f"{name}: got {shown(value)} of {len(letters)} letters, wanted {n}")
    return sign == "-", letters

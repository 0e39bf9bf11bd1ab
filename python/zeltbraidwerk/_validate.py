"""Arguments checked before work starts: each function returns its argument in the one form that
the rest of the package uses, or raises with the argument's name, what came and what is wanted."""

from __future__ import annotations

import math
import operator
from collections.abc import Collection, Iterable, Sequence
from typing import Any, TypeVar

import numpy as np
import numpy.typing as npt

from zeltbraidwerk import _core, errors

BoolArray = npt.NDArray[np.bool_]
T = TypeVar("T")


def bit_matrix(value: Any, name: str) -> BoolArray:
    """A square matrix of bool. An array of bool is not copied; nothing here writes into it."""
    array = value if isinstance(value, np.ndarray) else _as_array(value, name)
    if array.dtype != np.bool_:
        array = _as_bits(array, name)
    if array.ndim != 2 or array.shape[0] != array.shape[1]:
        if array.size == 0 and array.ndim < 2:
            return np.zeros((0, 0), dtype=np.bool_)
        raise errors.ShapeError(f"{name}: got shape {array.shape}, wanted a square matrix")
    return array


def invertible_matrix(value: Any, name: str) -> BoolArray:
    matrix = bit_matrix(value, name)
    n = len(matrix)
    if not _core.boolean_matrix_det(matrix, n):
        raise errors.SingularMatrixError(
            f"{name}: got a singular {n} by {n} matrix, wanted one with an inverse over GF(2)"
        )
    return matrix


def _as_array(value: Any, name: str) -> npt.NDArray[Any]:
    try:
        return np.asarray(value)
    except ValueError:
        raise errors.ShapeError(f"{name}: got rows of unequal length") from None


def _as_bits(array: npt.NDArray[Any], name: str) -> BoolArray:
    if array.size and array.dtype.kind not in "biu":
        raise errors.DtypeError(
            f"{name}: got entries of type {array.dtype}, wanted bool or the integers 0 and 1"
        )
    bits = array.astype(np.bool_)
    if not np.array_equal(array, bits):
        strange = array[array != bits].flat[0]
        raise errors.EntryError(f"{name}: got the entry {strange}, wanted 0 and 1 alone")
    return bits


def integer(value: Any, name: str, least: int, most: int | None = None) -> int:
    if isinstance(value, (bool, np.bool_)):
        raise errors.DtypeError(f"{name}: got {value!r}, wanted an integer")
    try:
        number = operator.index(value)
    except TypeError:
        raise errors.DtypeError(f"{name}: got {value!r}, wanted an integer") from None
    if number < least or (most is not None and number > most):
        wanted = f"at least {least}" if most is None else f"{least} to {most}"
        raise errors.OptionError(f"{name}: got {number}, wanted {wanted}")
    return number


def seconds(value: Any, name: str) -> float:
    try:
        number = float(value)
    except (TypeError, ValueError):
        raise errors.DtypeError(f"{name}: got {value!r}, wanted seconds") from None
    if not number > 0:
        raise errors.OptionError(f"{name}: got {number}, wanted a positive number of seconds")
    return number


def choice(value: Any, name: str, choices: Collection[str]) -> str:
    if value not in choices:
        listed = ", ".join(repr(each) for each in choices)
        raise errors.OptionError(f"{name}: got {value!r}, wanted one of {listed}")
    return str(value)


def qubit_count(value: Any, name: str = "n") -> int:
    return integer(value, name, 0, 2**31 - 1)


def qubits(values: Iterable[Any], name: str) -> tuple[int, ...]:
    """Distinct qubits from 0 up; the circuit that takes them knows the upper end."""
    checked = []
    for value in values:
        try:
            qubit = operator.index(value)
        except TypeError:
            raise errors.DtypeError(f"{name}: got {value!r}, wanted an integer") from None
        if qubit < 0:
            raise errors.QubitError(f"{name}: got {qubit}, wanted 0 or more")
        checked.append(qubit)
    if len(set(checked)) < len(checked):
        raise errors.QubitError(f"{name}: got {tuple(checked)}, wanted distinct qubits")
    return tuple(checked)


def qubits_below(values: Sequence[int], n: int, name: str) -> None:
    for qubit in values:
        if qubit >= n:
            raise errors.QubitError(f"{name}: got qubit {qubit}, wanted 0 to {n - 1}")


def finite(value: float, name: str) -> float:
    if not math.isfinite(value):
        raise errors.AngleError(f"{name}: got {value}, wanted a finite angle in radians")
    return float(value)


def cnots(value: Any, n: int, name: str) -> npt.NDArray[np.int32]:
    """A read-only (k, 2) array of control and target, apart from the caller's."""
    array = _as_array(value if isinstance(value, np.ndarray) else list(value), name)
    if array.size == 0:
        array = np.zeros((0, 2), dtype=np.int32)
    if array.dtype.kind not in "iu":
        raise errors.DtypeError(f"{name}: got entries of type {array.dtype}, wanted integers")
    if array.ndim != 2 or array.shape[1] != 2:
        raise errors.ShapeError(f"{name}: got shape {array.shape}, wanted (gates, 2)")
    outside = array[(array < 0) | (array >= n)]
    if outside.size:
        raise errors.QubitError(f"{name}: got qubit {outside[0]}, wanted 0 to {n - 1}")
    same = array[array[:, 0] == array[:, 1]]
    if same.size:
        raise errors.QubitError(f"{name}: got control and target both {same[0, 0]}")
    return frozen(array.astype(np.int32))


def frozen(array: npt.NDArray[Any]) -> npt.NDArray[Any]:
    array.flags.writeable = False
    return array


def pauli(value: Any, n: int, name: str) -> tuple[bool, str]:
    """(True for minus, letters) of a string such as "XIZ", "-XIZ" or "+_XZ"."""
    if not isinstance(value, str):
        raise errors.DtypeError(f"{name}: got {type(value).__name__}, wanted a string of letters")
    letters = value.lstrip("+-").upper().replace("_", "I")
    sign = value[: len(value) - len(letters)]
    if len(sign) > 1 or set(letters) - set("IXYZ"):
        raise errors.PauliError(f"{name}: got {value!r}, wanted letters I, X, Y, Z after one sign")
    if len(letters) != n:
        raise errors.PauliError(f"{name}: got {len(letters)} letters, wanted {n}")
    return sign == "-", letters

"""Pauli rotations in the forms that users and other packages write, read into one form."""

from __future__ import annotations

import operator
from collections.abc import ItemsView, Iterable, Iterator, Mapping, Sequence
from dataclasses import dataclass
from typing import Any, NamedTuple

import numpy as np
import numpy.typing as npt

from zeltbraidwerk import _core, _foreign_rotations, _validate, errors
from zeltbraidwerk._parameter import Parameter, parameter

_CODES = bytes.maketrans(b"IXYZ", b"\0\1\2\3")
_LETTERS = bytes.maketrans(b"\0\1\2\3", b"IXYZ")
_IDENTITY = "I"
_STRING = "pytket.QubitPauliString"
_STRINGS = ("stim.PauliString", "qiskit.Pauli")
_STRIDE = 1024  # strings looked at together


@dataclass(frozen=True)
class Rotations:
    """Strings of letters, none of them the identity, and their angles, in the order given.
    ``identity_angle`` is the sum of the angles of identity strings."""

    n: int
    strings: tuple[str, ...]
    angles: tuple[Parameter, ...]
    identity_angle: Parameter

    def letters(self) -> npt.NDArray[np.uint8]:
        return codes(self.strings, self.n)


class _Listed(NamedTuple):
    pairs: Iterable[tuple[Any, Any]]
    unordered: str | None  # what the source is, where its items have no order
    n: int | None = None  # qubits, where the source knows them without a string


# --- strings ------------------------------------------------------------------------------------


def codes(strings: Sequence[str], n: int) -> npt.NDArray[np.uint8]:
    """One row per string, 0 to 3 for I, X, Y, Z."""
    text = "".join(strings).encode().translate(_CODES)
    return np.frombuffer(text, dtype=np.uint8).reshape(len(strings), n)


def from_codes(letters: npt.NDArray[np.uint8]) -> list[str]:
    text = letters.tobytes().translate(_LETTERS).decode()
    rows, n = letters.shape
    return [text[k * n : (k + 1) * n] for k in range(rows)]


def is_string(value: Any) -> bool:
    """Whether the value is one Pauli string. A list of codes counts as one only within a list."""
    return isinstance(value, (str, bytes, bytearray)) or _kind(value) in _STRINGS


def read_strings(source: Any, name: str, n: int | None = None) -> list[tuple[bool, str]]:
    """(True for minus, letters) of each, all of one length. Of a mapping, the keys."""
    if is_string(source):
        raise errors.DtypeError(
            f"{name}: got {_validate.shown(source)}, wanted Pauli strings in a list"
        )
    listed = list(source) if isinstance(source, Mapping) else source
    found: list[tuple[bool, str]] = []
    for pauli in _validate.items(listed, name, "Pauli strings in a list"):
        found.append(signed(pauli, len(found[0][1]) if found else n, name))
    return found


def signed(pauli: Any, n: int | None, name: str) -> tuple[bool, str]:
    """(True for minus, letters) of text, of codes 0 to 3, of a Pauli of Stim or Qiskit."""
    kind = _kind(pauli)
    if kind == "stim.PauliString":
        if pauli.sign not in (1, -1):
            raise errors.PauliError(f"{name}: got {pauli}, wanted the sign + or -")
        pauli = str(pauli)
    elif kind == "qiskit.Pauli":
        label = pauli.to_label()
        if "i" in label:
            raise errors.PauliError(f"{name}: got {label}, wanted the sign + or -")
        pauli = label[: len(label) - pauli.num_qubits] + label[::-1][: pauli.num_qubits]
    elif isinstance(pauli, (tuple, list, np.ndarray)):
        listed = _validate.items(pauli, name, "codes 0 to 3 for I, X, Y, Z")
        pauli = "".join(_letter(code, name) for code in listed)
    length = len(pauli.lstrip("+-")) if isinstance(pauli, str) else 0
    return _validate.pauli(pauli, length if n is None else n, name)


def commute(a: str, b: str) -> bool:
    return sum(p != q and "I" not in (p, q) for p, q in zip(a, b, strict=True)) % 2 == 0


def _letter(code: Any, name: str) -> str:
    if not isinstance(code, (bool, np.bool_, np.ndarray)):
        try:
            number = operator.index(code)
        except TypeError:
            number = -1
        if 0 <= number < 4:
            return "IXYZ"[number]
    raise errors.PauliError(
        f"{name}: got the code {_validate.shown(code)}, wanted 0 to 3 for I, X, Y, Z"
    )


def _kind(value: Any) -> str:
    """Package and class, without importing the package."""
    of = type(value)
    return f"{_validate.package_of(of)}.{of.__name__}"


# --- lists of rotations -------------------------------------------------------------------------


def read(source: Any, n: int | None, order: str, repeated: str) -> Rotations:
    """Signs go into the angles. Angles of equal strings are added where everything between them
    commutes with them, and everywhere if the source has no order or ``repeated`` is "merge".
    Refuses lists for which ``order`` and ``repeated`` leave open what is meant."""
    listed = _listed(source)
    size = listed.n if n is None else _validate.qubit_count(n)
    strings: list[str] = []
    angles: list[Parameter] = []
    identity_angle = Parameter(0.0)
    for pauli, angle in listed.pairs:
        minus, letters = signed(pauli, size, "rotations")
        size = len(letters)
        value = parameter(angle, "rotations")
        value = -value if minus else value
        if letters.strip(_IDENTITY):
            strings.append(letters)
            angles.append(value)
        else:
            identity_angle = _sum(identity_angle, value)
    if len(set(strings)) < len(strings):
        in_order = listed.unordered is None and repeated == "refuse"
        strings, angles = _joined(strings, angles, in_order, order == "free")
    found = Rotations(size or 0, tuple(strings), tuple(angles), identity_angle)
    if listed.unordered is not None and order == "commuting":
        _refuse_clashes(found, listed.unordered)
    return found


def _joined(
    strings: Sequence[str], angles: Sequence[Parameter], in_order: bool, refuse: bool
) -> tuple[list[str], list[Parameter]]:
    """With ``in_order``, a repeated string is kept apart, or refused, where a string in between
    does not commute with it."""
    clashes = _Clashes(codes(strings, len(strings[0])))
    # The last row of each string, and its place among the kept ones. All that was added to a place
    # before that row commutes with it, so that the rows after it decide.
    last: dict[str, tuple[int, int]] = {}
    kept: list[str] = []
    sums: list[Parameter] = []
    for row, (string, angle) in enumerate(zip(strings, angles, strict=True)):
        before, place = last.get(string, (row, -1))
        clash = clashes.first(before + 1, row) if in_order and place >= 0 else None
        if clash is not None and refuse:
            raise errors.OptionError(
                f"rotations: got {string} again after {strings[clash]}, which does not commute "
                "with it: order='free' would make one step of several; wanted "
                "order='commuting', which keeps the product, or repeated='merge', which adds the "
                "angles of equal strings"
            )
        if place < 0 or clash is not None:
            place = len(kept)
            kept.append(string)
            sums.append(angle)
        else:
            sums[place] = _sum(sums[place], angle)
        last[string] = row, place
    return kept, sums


class _Clashes:
    """Which rows of strings do not commute."""

    def __init__(self, letters: npt.NDArray[np.uint8]) -> None:
        # Counts of letters are small integers, which float32 holds, and adds fast.
        self._x = ((letters == 1) | (letters == 2)).astype(np.float32)
        self._z = (letters > 1).astype(np.float32)

    def first(self, begin: int, row: int) -> int | None:
        """The first row from ``begin`` on and before ``row`` that does not commute with ``row``."""
        for start in range(begin, row, _STRIDE):
            some = slice(start, min(start + _STRIDE, row))
            odd = (self._x[some] @ self._z[row] + self._z[some] @ self._x[row]) % 2 > 0
            if odd.any():
                return start + int(odd.argmax())
        return None


def _refuse_clashes(rotations: Rotations, unordered: str) -> None:
    if (clash := _core._first_clash(rotations.letters())) is not None:
        a, b = (rotations.strings[k] for k in clash)
        raise errors.OptionError(
            f"order: got 'commuting' for {unordered}, which has no order, with {a} and {b}, which "
            "do not commute; wanted order='free', or a list of pairs"
        )


def _sum(a: Parameter, b: Parameter) -> Parameter:
    """Numbers are not reduced modulo 2 pi, which would lose a sign."""
    if a.is_symbolic or b.is_symbolic:
        return a + b
    return parameter(float(a) + float(b), "rotations")


def _listed(source: Any) -> _Listed:
    kind = _kind(source)
    if kind == "qiskit.PauliEvolutionGate":
        return _Listed(_foreign_rotations.of_evolution(source), None, source.num_qubits)
    if kind == "qiskit.SparsePauliOp":
        terms = _foreign_rotations.of_operator(source)
        return _Listed(terms, "a SparsePauliOp", source.num_qubits)
    if kind == "pytket.QubitPauliOperator":
        return _Listed(_foreign_rotations.of_pytket(source), "a QubitPauliOperator")
    if kind == "openfermion.QubitOperator":
        return _Listed(_foreign_rotations.of_openfermion(source), "a QubitOperator")
    if kind.startswith("pennylane."):
        return _Listed(_foreign_rotations.of_pennylane(source), "an operator of PennyLane")
    if isinstance(source, Mapping) and any(_kind(key) == _STRING for key in source):
        return _Listed(_by_qubits(source), "a mapping")
    if isinstance(source, (Mapping, ItemsView)):
        items = source.items() if isinstance(source, Mapping) else source
        return _Listed(items, "a mapping")
    if isinstance(source, tuple) and len(source) == 2 and isinstance(source[0], (list, np.ndarray)):
        strings = _validate.items(source[0], "rotations", "strings")
        angles = _validate.items(source[1], "rotations", "a list of angles beside the strings")
        if len(strings) != len(angles):
            raise errors.ShapeError(f"rotations: got {len(strings)} strings, {len(angles)} angles")
        return _Listed(zip(strings, angles, strict=True), None)
    return _Listed(_pairs(_validate.items(source, "rotations", "Pauli strings with angles")), None)


def _by_qubits(source: Mapping[Any, Any]) -> Iterator[tuple[str, Any]]:
    """Of QubitPauliStrings of pytket with their angles."""
    strings = list(source)
    for string in strings:
        if _kind(string) != _STRING:
            raise errors.DtypeError(
                f"rotations: got {_validate.shown(string)} among QubitPauliStrings, wanted these "
                "alone"
            )
    qubits = {qubit for string in strings for qubit in string.map}
    words = _foreign_rotations.words_of_pytket(strings, qubits)
    return zip(words, source.values(), strict=True)


def _pairs(items: list[Any]) -> Iterator[tuple[Any, Any]]:
    for pair in items:
        if isinstance(pair, (str, bytes)) or not isinstance(pair, Sequence) or len(pair) != 2:
            raise errors.ShapeError(
                f"rotations: got {_validate.shown(pair)}, wanted a string and its angle"
            )
        yield pair[0], pair[1]

"""Pauli rotations as other packages and people write them, in one form."""

from __future__ import annotations

from collections.abc import Iterable, Iterator, Mapping, Sequence
from dataclasses import dataclass
from typing import Any

import numpy as np
import numpy.typing as npt

from zeltbraidwerk import _validate, errors
from zeltbraidwerk.gates import Parameter

_CODES = str.maketrans("IXYZ", "\0\1\2\3")
_IDENTITY = "I"


@dataclass(frozen=True)
class Rotations:
    """Strings of letters, none of them the identity, and their angles, in the order given.
    ``global_angle`` is that of the identity strings together."""

    n: int
    strings: tuple[str, ...]
    angles: tuple[Parameter, ...]
    global_angle: Parameter

    def letters(self) -> npt.NDArray[np.uint8]:
        return codes(self.strings, self.n)


def codes(strings: Sequence[str], n: int) -> npt.NDArray[np.uint8]:
    """A row a string, 0 to 3 for I, X, Y, Z."""
    text = "".join(strings).translate(_CODES)
    return np.frombuffer(text.encode("latin-1"), dtype=np.uint8).reshape(len(strings), n)


def from_codes(letters: npt.NDArray[np.uint8]) -> list[str]:
    return ["".join("IXYZ"[code] for code in row) for row in letters.tolist()]


def read(source: Any, n: int | None, in_order: bool) -> Rotations:
    """Signs go into the angles, angles of equal strings are added: all of them, or with
    ``in_order`` those between which everything commutes."""
    size = None if n is None else _validate.qubit_count(n)
    strings: list[str] = []
    angles: list[Parameter] = []
    places: dict[str, int] = {}
    global_angle = Parameter(0.0)
    for pauli, angle in _pairs(source):
        minus, letters = signed(pauli, size, "rotations")
        size = len(letters)
        value = -Parameter(angle) if minus else Parameter(angle)
        if not letters.strip(_IDENTITY):
            global_angle = _sum(global_angle, value)
            continue
        place = places.get(letters)
        if place is not None and in_order and not _free(letters, strings[place + 1 :]):
            place = None
        if place is not None:
            angles[place] = _sum(angles[place], value)
            continue
        places[letters] = len(strings)
        strings.append(letters)
        angles.append(value)
    return Rotations(size or 0, tuple(strings), tuple(angles), global_angle)


def read_strings(source: Any, name: str) -> list[tuple[bool, str]]:
    """(True for minus, letters) of each, all of one length."""
    if isinstance(source, str) or not isinstance(source, Iterable):
        raise errors.DtypeError(f"{name}: got {type(source).__name__}, wanted Pauli strings")
    found: list[tuple[bool, str]] = []
    for pauli in source:
        found.append(signed(pauli, len(found[0][1]) if found else None, name))
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
        pauli = _from_list(pauli, name)
    length = len(pauli.lstrip("+-")) if isinstance(pauli, str) else 0
    return _validate.pauli(pauli, length if n is None else n, name)


def commute(a: str, b: str) -> bool:
    return sum(p != q and "I" not in (p, q) for p, q in zip(a, b, strict=True)) % 2 == 0


def _free(letters: str, between: Iterable[str]) -> bool:
    return all(commute(letters, other) for other in between)


def _sum(a: Parameter, b: Parameter) -> Parameter:
    """Of numbers, without the wrapping by 2 pi, which would cost a sign."""
    return a + b if a.is_symbolic or b.is_symbolic else Parameter(float(a) + float(b))


def _from_list(letters: Any, name: str) -> str:
    try:
        return "".join("IXYZ"[code] for code in letters if code in range(4) or _refuse(code, name))
    except TypeError:
        raise errors.PauliError(f"{name}: got {letters!r}, wanted codes 0 to 3") from None


def _refuse(code: Any, name: str) -> bool:
    raise errors.PauliError(f"{name}: got the code {code!r}, wanted 0 to 3 for I, X, Y, Z")


def _kind(value: Any) -> str:
    """Package and class, without importing the package."""
    of = type(value)
    return f"{of.__module__.partition('.')[0].lstrip('_')}.{of.__name__}"


def _pairs(source: Any) -> Iterator[tuple[Any, Any]]:
    readers = {
        "qiskit.SparsePauliOp": lambda op: _of_operator(op, 1.0),
        "qiskit.PauliEvolutionGate": _of_evolution,
        "pytket.QubitPauliOperator": _of_pytket,
    }
    if (reader := readers.get(_kind(source))) is not None:
        return reader(source)
    if isinstance(source, Mapping):
        return iter(source.items())
    if isinstance(source, tuple) and len(source) == 2 and isinstance(source[0], (list, np.ndarray)):
        strings, angles = list(source[0]), list(source[1])
        if len(strings) != len(angles):
            raise errors.ShapeError(f"rotations: got {len(strings)} strings, {len(angles)} angles")
        return zip(strings, angles, strict=True)
    return _of_list(source)


def _of_list(source: Any) -> Iterator[tuple[Any, Any]]:
    if isinstance(source, str) or not isinstance(source, Iterable):
        raise errors.DtypeError(
            f"rotations: got {type(source).__name__}, wanted Pauli strings with angles"
        )
    for pair in source:
        if isinstance(pair, str) or not isinstance(pair, Sequence) or len(pair) != 2:
            raise errors.ShapeError(f"rotations: got {pair!r}, wanted a string and its angle")
        yield pair[0], pair[1]


def _of_operator(operator: Any, time: float) -> Iterator[tuple[str, float]]:
    """exp(-i time c P) a term c P; labels have qubit 0 last."""
    for label, coefficient in operator.to_list():
        yield label[::-1], 2 * time * _real(coefficient)


def _of_evolution(gate: Any) -> Iterator[tuple[str, float]]:
    time = _real(gate.time)
    for operator in gate.operator if isinstance(gate.operator, list) else [gate.operator]:
        if _kind(operator) != "qiskit.SparsePauliOp":
            raise errors.DtypeError(f"rotations: got {_kind(operator)}, wanted a SparsePauliOp")
        yield from _of_operator(operator, time)


def _of_pytket(operator: Any) -> Iterator[tuple[str, float]]:
    """exp(-i pi/2 c P) a term c P, as where pytket makes Pauli gadgets of it."""
    qubits = sorted(operator.all_qubits)
    registers = {qubit.reg_name for qubit in qubits}
    if len(registers) == 1 and all(len(qubit.index) == 1 for qubit in qubits):
        place = {qubit: qubit.index[0] for qubit in qubits}
    else:
        place = {qubit: k for k, qubit in enumerate(qubits)}
    n = max(place.values(), default=-1) + 1
    for string, coefficient in operator._dict.items():
        letters = ["I"] * n
        for qubit, pauli in string.map.items():
            letters[place[qubit]] = pauli.name
        yield "".join(letters), np.pi * _real(coefficient)


def _real(value: Any) -> float:
    try:
        number = complex(value)
    except TypeError:
        raise errors.AngleError(f"rotations: got {value}, wanted a number") from None
    if number.imag:
        raise errors.AngleError(f"rotations: got {value}, wanted a real number")
    return number.real

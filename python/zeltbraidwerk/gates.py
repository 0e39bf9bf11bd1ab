"""Gates and their angles: immutable values, checked when they are built."""

from __future__ import annotations

import math
from collections.abc import Iterable, Sequence
from typing import Any

import numpy as np

from zeltbraidwerk import _core, _validate, errors
from zeltbraidwerk._parameter import NO_SOURCES, Parameter, Sources, parameter

__all__ = ["Gate", "Parameter"]

# Name: (number of qubits, or None for two and more; number of angles).
VOCABULARY: dict[str, tuple[int | None, int]] = {
    "CNOT": (2, 0), "CSIGN": (2, 0), "CZ": (2, 0),
    "H": (1, 0), "S": (1, 0), "D-S": (1, 0), "S*": (1, 0),
    "X": (1, 0), "Y": (1, 0), "Z": (1, 0), "I": (1, 0),
    "RX": (1, 1), "RY": (1, 1), "RZ": (1, 1), "PH": (1, 1),
    "XX": (None, 2),
    "T": (1, 0), "D-T": (1, 0), "SX": (1, 0), "D-SX": (1, 0), "U": (1, 3),
    "ECR": (2, 0), "ISWAP": (2, 0), "RZZ": (2, 1),
}  # fmt: skip

ROTATIONS = frozenset(("RX", "RY", "RZ", "PH"))
# Gates that are made of those before them in the vocabulary, by their names in OpenQASM, where
# they are defined. The compiled part has no gates of these names.
COMPOSED = {
    "T": "t", "D-T": "tdg", "SX": "sx", "D-SX": "sxdg", "U": "u", "ECR": "ecr", "ISWAP": "iswap",
    "RZZ": "rzz",
}  # fmt: skip
_TOLERANCE = 1e-9  # radians, as of the searches
_INVERSES = {
    "S": "D-S", "D-S": "S", "T": "D-T", "D-T": "T", "SX": "D-SX", "D-SX": "SX",
} | {name: name for name in ("CNOT", "CSIGN", "CZ", "ECR", "H", "X", "Y", "Z", "I")}  # fmt: skip
_QUARTER = Parameter._number(math.pi / 4)


def _listed(value: Any) -> Any:
    """A single value as a tuple. Text is a single value, and so is an array without dimensions."""
    if type(value) in (tuple, list):
        return value
    if type(value) in (int, float, str, Parameter) or not isinstance(value, Iterable):
        return (value,)
    one = isinstance(value, str) or (isinstance(value, np.ndarray) and value.ndim == 0)
    return (value,) if one else value


class Gate:
    """One named gate on a tuple of qubits, with its angles.

    The names are those of the library: ``CNOT`` (control, target), ``CSIGN`` and ``CZ`` (controlled
    Z), ``H``, ``S`` and its inverse ``D-S``, ``X``, ``Y``, ``Z``, ``I``, the rotations
    exp(-i angle P / 2) ``RX``, ``RY``, ``RZ`` and ``PH`` (as ``RZ``, up to a global phase), and
    ``XX``, a rotation by pi/2 on every pair of its qubits.

    These are made of the others, up to a global phase (:meth:`Circuit.elementary`), for circuits on
    their way out: ``T`` and its inverse ``D-T``, the root of X ``SX`` and its inverse ``D-SX``,
    ``U`` with the angles theta, phi, lambda (RZ by lambda, RY by theta, RZ by phi), and the gates
    of machines ``ECR`` (S on the first and SX on the second qubit, CNOT, X on the first), ``ISWAP``
    and ``RZZ``, exp(-i angle Z Z / 2).

    >>> Gate("CNOT", (0, 1))
    Gate('CNOT', (0, 1))
    >>> Gate.rz(2, 0.5).inverse()
    Gate('RZ', (2,), -0.5)
    """

    __slots__ = ("_name", "_params", "_qubits")

    def __init__(
        self,
        name: str,
        qubits: int | Iterable[int],
        params: Parameter | float | str | Iterable[Parameter | float | str] = (),
    ) -> None:
        if not isinstance(name, str) or name not in VOCABULARY:
            raise errors.GateError(
                f"name: got {_validate.shown(name)}, wanted one of {', '.join(VOCABULARY)}"
            )
        self._name = str(name)
        self._qubits = _validate.qubits(_listed(qubits), "qubits")
        angles = _validate.items(_listed(params), "params", "an angle or a list of angles")
        self._params = tuple(parameter(angle, "params") for angle in angles)
        wanted, wanted_params = VOCABULARY[name]
        if len(self._qubits) != wanted and (wanted or len(self._qubits) < 2):
            raise errors.GateError(
                f"qubits: got {len(self._qubits)} for {name}, wanted {wanted or 'two or more'}"
            )
        if len(self._params) != wanted_params:
            raise errors.GateError(
                f"params: got {len(self._params)} for {name}, wanted {wanted_params}"
            )

    @classmethod
    def _trusted(cls, name: str, qubits: tuple[int, ...], params: tuple[Parameter, ...]) -> Gate:
        """From parts that are known to be valid."""
        gate = cls.__new__(cls)
        gate._name, gate._qubits, gate._params = name, qubits, params
        return gate

    @property
    def name(self) -> str:
        """What the gate is called in the library, such as "CNOT" or "RZ"."""
        return self._name

    @property
    def qubits(self) -> tuple[int, ...]:
        """The qubits it acts on, controls first."""
        return self._qubits

    @property
    def params(self) -> tuple[Parameter, ...]:
        """Its angles, in radians."""
        return self._params

    @property
    def diag(self) -> bool:
        """True for a rotation about Z."""
        return self._name in ("RZ", "PH")

    @classmethod
    def cnot(cls, control: int, target: int) -> Gate:
        return cls("CNOT", (control, target))

    @classmethod
    def cz(cls, a: int, b: int) -> Gate:
        return cls("CSIGN", (a, b))

    @classmethod
    def h(cls, qubit: int) -> Gate:
        return cls("H", qubit)

    @classmethod
    def s(cls, qubit: int) -> Gate:
        return cls("S", qubit)

    @classmethod
    def rx(cls, qubit: int, angle: Parameter | float | str) -> Gate:
        return cls("RX", qubit, angle)

    @classmethod
    def ry(cls, qubit: int, angle: Parameter | float | str) -> Gate:
        return cls("RY", qubit, angle)

    @classmethod
    def rz(cls, qubit: int, angle: Parameter | float | str) -> Gate:
        return cls("RZ", qubit, angle)

    def inverse(self) -> Gate:
        """The gate that undoes this one. Of "ISWAP", "XX" and "S*" it is none of the gates."""
        if self._name in ROTATIONS or self._name == "RZZ":
            return Gate(self._name, self._qubits, -self._params[0])
        if self._name == "U":
            theta, phi, angle = self._params
            return Gate("U", self._qubits, (-theta, -angle, -phi))
        if self._name not in _INVERSES:
            raise errors.GateError(f"{self._name} has no inverse among the gates")
        return Gate(_INVERSES[self._name], self._qubits)

    def to_core(self) -> _core.Gate:
        """The gate as a value of :mod:`zeltbraidwerk.core`."""
        params = [angle.to_core() for angle in self._params]
        return _core.Gate(self._name, list(self._qubits), params, self.diag)

    @classmethod
    def from_core(cls, gate: _core.Gate) -> Gate:
        _validate.instance(gate, "gate", _core.Gate, "a gate of the core")
        return cls(gate.name, gate.qbits, [Parameter.from_core(p) for p in gate.params])

    @classmethod
    def _of_core(cls, gate: _core.Gate, sources: Sources = NO_SOURCES) -> Gate:
        """From a gate of the compiled part that is known to be valid. Symbols of other packages are
        known by their names there."""
        params = tuple([Parameter._of_core(angle, sources) for angle in gate.params])
        return cls._trusted(gate.name, tuple(gate.qbits), params)

    def __eq__(self, other: object) -> bool:
        return isinstance(other, Gate) and self._key() == other._key()

    def __hash__(self) -> int:
        return hash(self._key())

    def __repr__(self) -> str:
        params = [repr(p.expression if p.is_symbolic else float(p)) for p in self._params]
        angle = params[0] if len(params) == 1 else f"({', '.join(params)})"
        return f"Gate({self._name!r}, {self._qubits}{f', {angle}' if params else ''})"

    def __str__(self) -> str:
        return self.to_core().to_string()

    def __reduce__(self) -> tuple[Any, ...]:
        return Gate, self._key()

    def _key(self) -> tuple[str, tuple[int, ...], tuple[Parameter, ...]]:
        return self._name, self._qubits, self._params


def rotations(name: str, params: Sequence[Parameter]) -> list[Parameter]:
    """The angles that a gate turns by, without multiples of pi/2."""
    if name in ("T", "D-T"):
        return [_QUARTER]
    turns = params if name in ROTATIONS or name in ("U", "RZZ") else ()
    return [angle for angle in turns if angle.is_symbolic or not _is_multiple(float(angle), 0.5)]


def is_t(angle: Parameter) -> bool:
    """Whether it is an odd multiple of pi/4, of angles that are no multiples of pi/2."""
    return not angle.is_symbolic and _is_multiple(float(angle), 0.25)


def _is_multiple(angle: float, of: float) -> bool:
    """Of so many times pi."""
    return abs(math.remainder(angle, of * math.pi)) < _TOLERANCE

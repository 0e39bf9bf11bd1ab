"""Gates of this package as instructions of Qiskit, with their phase."""

from __future__ import annotations

import math
from collections.abc import Iterable
from typing import Any

from qiskit.circuit import QuantumCircuit

from zeltbraidwerk import _foreign_angles, _interop, errors
from zeltbraidwerk.gates import Gate, Parameter

_TOLERANCE = 1e-11  # radians, of an angle that is a multiple of pi/4 up to rounding
# diag(1, e^(i pi k/4)), and the square roots of X, by k.
_DIAGONAL = ((), ("t",), ("s",), ("s", "t"), ("z",), ("z", "t"), ("sdg",), ("tdg",))
_ABOUT_X = ((), ("sx",), ("x",), ("sxdg",))
_ABOUT_Y = ((), ("z", "h"), ("y",), ("h", "z"))


class Symbols:
    """Names for parameters of Qiskit, so that the circuit that is written has the caller's own:
    each has its name, and an expression that is no sum of them times numbers has one of ours."""

    def __init__(self) -> None:
        self._values: dict[str, Any] = {}
        self._opaque: dict[Any, Parameter] = {}

    def read(self, value: Any) -> Parameter:
        try:
            angle = Parameter(value)
        except errors.AngleError:
            return self._read_opaque(value)
        self._values |= {symbol.name: symbol for symbol in getattr(value, "parameters", ())}
        return angle

    def _read_opaque(self, value: Any) -> Parameter:
        if (negated := self._opaque.get(-value)) is not None:
            return -negated
        if value not in self._opaque:
            name = f"$expression-{len(self._opaque)}$"
            self._opaque[value], self._values[name] = Parameter(name), value
        return self._opaque[value]

    def write(self, angle: Parameter) -> Any:
        return _foreign_angles.to_qiskit(angle.constant, angle.coefficients.items(), self._values)

    def __len__(self) -> int:
        return len(self._values)


def append(circuit: QuantumCircuit, gates: Iterable[Gate], symbols: Symbols) -> None:
    """Appends the gates, phase and all: rotations by multiples of pi/4 about Z, and of pi/2 about
    X and Y, become gates without an angle."""
    phase = 0.0
    for gate in gates:
        name = _interop.QASM_NAMES[gate.name]
        if not gate.params or gate.name == "XX":
            angles = [float(_interop.angles(gate)[0])] if gate.name == "XX" else []
            getattr(circuit, name)(*angles, *gate.qubits)
        elif gate.params[0].is_symbolic:
            getattr(circuit, name)(symbols.write(gate.params[0]), *gate.qubits)
        else:
            phase += _rotation(circuit, gate.name, float(gate.params[0]), gate.qubits[0])
    circuit.global_phase += phase


def _rotation(circuit: QuantumCircuit, kind: str, angle: float, qubit: int) -> float:
    """Appends it up to the phase that is returned."""
    step = math.pi / 4 if kind in ("RZ", "PH") else math.pi / 2
    k = round(angle / step)
    if abs(angle - k * step) > _TOLERANCE:
        getattr(circuit, _interop.QASM_NAMES[kind])(angle, qubit)
        return 0.0
    table = {"RX": _ABOUT_X, "RY": _ABOUT_Y}.get(kind, _DIAGONAL)
    for name in table[k % len(table)]:
        getattr(circuit, name)(qubit)
    if kind == "PH":
        return 0.0
    if kind == "RY":  # by pi it is -i Y, by 2 pi -1, and by 3 pi/2 what it is by -pi/2 times -1
        return (0.0, 0.0, -math.pi / 2, math.pi)[k % 4] + math.pi * (k // 4)
    return -angle / 2

"""Gates of this package as instructions of Qiskit, with their phase."""

from __future__ import annotations

from collections.abc import Iterable
from typing import Any

from qiskit.circuit import QuantumCircuit

from zeltbraidwerk import _foreign_angles, errors
from zeltbraidwerk._interop import QASM_NAMES
from zeltbraidwerk._interop import angles as angles_of
from zeltbraidwerk._naming import names_of
from zeltbraidwerk.gates import ROTATIONS, Gate, Parameter


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
    """Appends the gates, phase and all, with names where there are names for angles."""
    phase = 0.0
    for gate in gates:
        names: tuple[str, ...] | None = None
        if gate.name in ROTATIONS and not gate.params[0].is_symbolic:
            names, turned = names_of(gate.name, float(gate.params[0]))
            phase += turned
        if names is None:
            angles = [symbols.write(a) if a.is_symbolic else float(a) for a in angles_of(gate)]
            getattr(circuit, QASM_NAMES[gate.name])(*angles, *gate.qubits)
            continue
        for name in names:
            getattr(circuit, QASM_NAMES[name])(*gate.qubits)
    circuit.global_phase += phase

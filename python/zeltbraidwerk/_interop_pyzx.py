"""Circuits to and from PyZX, and graphs of PyZX, which it extracts circuits from."""

from __future__ import annotations

import math
from collections.abc import Mapping
from fractions import Fraction
from typing import Any

from zeltbraidwerk import _foreign_angles, _interop, _names, _reading, errors
from zeltbraidwerk._header import check, table
from zeltbraidwerk._reading import Condition, Read, Reading
from zeltbraidwerk.gates import Gate, Parameter
from zeltbraidwerk.instructions import Measure, Register, Reset, WholeCircuit

# --- out ----------------------------------------------------------------------------------------

_NAMES = {
    "CNOT": "CNOT", "CSIGN": "CZ", "CZ": "CZ", "H": "HAD", "S": "S", "D-S": "S", "X": "NOT",
    "Y": "Y", "Z": "Z", "RX": "XPhase", "RY": "YPhase", "RZ": "ZPhase", "PH": "ZPhase", "XX": "RXX",
    "T": "T", "D-T": "T", "SX": "SX", "D-SX": "SX",
}  # fmt: skip
_PARTS = 2**10 * 3**2 * 5  # of pi: angles that are so many parts of it are written as these


def write(circuit: WholeCircuit) -> Any:
    pyzx, gates = _interop._package("pyzx"), _interop._package("pyzx.circuit.gates")
    bits = [name for register in circuit.classical for name in _names.of_register(register)]
    made = pyzx.Circuit(circuit.n, bit_amount=len(bits) or None)
    whole: dict[tuple[int, ...], Register] = {}
    first = 0
    for register in circuit.classical:
        whole[tuple(range(first, first + register.size))] = register
        first += register.size
    classes = {ours: getattr(gates, theirs) for ours, theirs in _NAMES.items()}
    for operation, condition in _interop.written(circuit, _NAMES):
        if operation.name in ("I", "barrier"):
            continue
        gate: Any
        if isinstance(operation, Measure):
            gate = gates.Measurement(operation.qubit, operation.bit, bits[operation.bit])
        elif isinstance(operation, Reset):
            gate = gates.Reset(operation.qubit)
        elif isinstance(operation, Gate):
            given: list[Any] = [_turn(angle) for angle in _interop.angles(operation)]
            if operation.name.startswith("D-"):
                given = [True]  # the adjoint
            gate = classes[operation.name](*operation.qubits, *given)
        if condition is not None:
            register = _register(condition, whole)
            gate = gates.ConditionalGate(register.name, condition[1], gate, register.size)
        made.gates.append(gate)
    return made


def _register(condition: Condition, whole: Mapping[tuple[int, ...], Register]) -> Register:
    bits, _ = condition
    if bits not in whole:
        raise errors.BitError(
            f"got a condition on bits {', '.join(map(str, bits))}, wanted all bits of a register "
            "in order, which is what PyZX has"
        )
    return whole[bits]


def _turn(angle: Parameter) -> Any:
    """In half turns: a fraction or, of symbols, a polynomial."""
    constant = _fraction(angle.constant / math.pi)
    if not angle.is_symbolic:
        return constant
    symbolic = _interop._package("pyzx.symbolic")
    total = symbolic.new_const(constant)
    for name, factor in angle.coefficients.items():
        total += symbolic.new_var(name, is_bool=False) * _fraction(factor / math.pi)
    return total


def _fraction(turn: float) -> Fraction:
    """The fraction of a small denominator that the number is the rounded value of, or else the
    number itself."""
    parts = round(turn * _PARTS) if math.isfinite(turn) else 0
    exact = abs(parts / _PARTS - turn) <= 4e-16 * abs(turn)
    return Fraction(parts, _PARTS) if exact else Fraction(turn)


# --- in -----------------------------------------------------------------------------------------

_ON = ("ctrl1", "ctrl2", "control", "target")


def read(source: Any) -> Read:
    """A circuit, or a graph, on a copy of which PyZX's own simplification and extraction run."""
    if any(base.__name__ == "BaseGraph" for base in type(source).__mro__):
        source = _extracted(source)
    _reading.wanted(source, "pyzx", "Circuit")
    reader = _Reader(source.gates)
    for place, gate in enumerate(source.gates):
        with _reading.located(f"gate {place}"):
            reader.gate(gate, f"gate {place}", None)
    return Read(source.qubits, reader.reading.operations, reader.registers(source.bits))


def _extracted(graph: Any) -> Any:
    pyzx = _interop._package("pyzx")
    copy = graph.copy()
    try:
        if not pyzx.simplify.is_graph_like(copy):
            pyzx.simplify.full_reduce(copy)
        return pyzx.extract_circuit(copy)
    except Exception as error:  # ValueError, plain Exception and others
        raise errors.GateError(
            f"circuit: got a graph that PyZX cannot extract a circuit from: {error}"
        ) from None


class _Reader:
    def __init__(self, gates: list[Any]) -> None:
        self.reading = Reading()
        self._sizes: dict[str, int] = {}  # of registers, in the order in which they come
        for gate in gates:
            self._declare(gate)
        starts, first = {}, 0
        for name, size in self._sizes.items():
            starts[name], first = first, first + size
        self._starts = starts

    def _declare(self, gate: Any) -> None:
        if gate.name == "Measurement":
            name, index = _bit(gate)
            self._sizes[name] = max(self._sizes.get(name, 0), index + 1)
        elif gate.name == "ConditionalGate":
            name, size = gate.condition_register, gate.register_size
            self._sizes[name] = max(self._sizes.get(name, 0), size)
            self._declare(gate.inner_gate)

    def registers(self, bits: int) -> list[Register]:
        """A single register has all bits of the circuit."""
        sizes = self._sizes
        if len(sizes) == 1:
            ((name, size),) = sizes.items()
            sizes = {name: max(size, bits)}
        return [Register(name, size) for name, size in sizes.items()]

    def gate(self, gate: Any, where: str, condition: Condition | None) -> None:
        if gate.name == "ConditionalGate":
            first = self._starts[gate.condition_register]
            bits = tuple(range(first, first + gate.register_size))
            self.gate(gate.inner_gate, where, (bits, gate.condition_value))
        elif gate.name == "Measurement":
            name, index = _bit(gate)
            measure = Measure(gate.target, self._starts[name] + index, where=where)
            self.reading.add(measure, where, condition)
        elif gate.name == "Reset":
            self.reading.add(Reset(gate.target, where=where), where, condition)
        elif (name := _name(gate)) in table():
            known = table()[name]
            on = tuple([getattr(gate, each) for each in _ON if hasattr(gate, each)])
            angles = [_angle(turn) for turn in _turns(gate)] if known.angles else []
            check(known, gate.name, on, angles)
            self.reading.gate(known, on, angles, where, condition)
        else:
            self._parts(gate, where, condition)

    def _parts(self, gate: Any, where: str, condition: Condition | None) -> None:
        parts = gate.to_basic_gates()
        if len(parts) == 1 and type(parts[0]) is type(gate):
            raise errors.GateError(f"got {gate.name}, wanted gates, measurements and resets")
        for part in parts:
            self.gate(part, where, condition)


def _name(gate: Any) -> str:
    """In OpenQASM."""
    name: str = gate.qasm_name_adjoint if getattr(gate, "adjoint", False) else gate.qasm_name
    return name


def _turns(gate: Any) -> list[Any]:
    return gate.phases if hasattr(gate, "phases") else [gate.phase]


def _bit(measurement: Any) -> tuple[str, int]:
    """The register and the index of the bit that a measurement is into."""
    if measurement.result_symbol is not None:
        name, index = _names.parts(measurement.result_symbol)
        return name, index[0] if index else 0
    if measurement.result_bit is None:
        raise errors.BitError(f"got a measurement of qubit {measurement.target} into no bit")
    return "c", measurement.result_bit


def _angle(turn: Any) -> float | Parameter:
    """In radians."""
    if not hasattr(turn, "terms"):
        return float(turn) * math.pi
    total: Any = 0.0
    for factor, term in turn.terms:
        if len(term.vars) > 1 or any(power != 1 for _, power in term.vars):
            raise errors.AngleError(
                f"got {turn}, wanted a number or a sum of symbols times numbers"
            )
        value = _foreign_angles.rounded(float(factor) * math.pi)
        total = total + (Parameter(term.vars[0][0].name) * value if term.vars else value)
    return _interop.number(total)

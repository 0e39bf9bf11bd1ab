"""Circuits to and from Cirq. Conditions and keys of measurements are in :mod:`._cirq_keys`."""

from __future__ import annotations

import math
import numbers
from collections.abc import Callable, Hashable, Mapping, Sequence
from functools import cache
from typing import Any

from zeltbraidwerk import (
    _cirq_keys,
    _foreign_angles,
    _interop,
    _names,
    _reading,
    errors,
    limits,
)
from zeltbraidwerk._definitions import short
from zeltbraidwerk._header import check, table
from zeltbraidwerk._reading import Condition, Read, Reading
from zeltbraidwerk.gates import Gate, Parameter
from zeltbraidwerk.instructions import Barrier, Measure, Reset, WholeCircuit

# --- out ----------------------------------------------------------------------------------------


_COMPOSED = ("T", "D-T", "SX", "D-SX", "ISWAP")  # of gates made of others, those that Cirq has


def write(circuit: WholeCircuit) -> Any:
    cirq = _interop._package("cirq")
    qubits = [_qubit(name) for name in circuit.qubit_names]
    keys = _cirq_keys.Writer(circuit)
    layers = _Layers()
    symbols = _interop.symbols(circuit, _foreign_angles.is_from_sympy, _symbol)
    operation_of = _operations(qubits, symbols)
    for place, (operation, condition) in enumerate(_interop.written(circuit, _COMPOSED)):
        on = tuple([qubits[qubit] for qubit in operation.qubits])
        if isinstance(operation, Barrier):
            layers.level(on)
            continue
        bits = [*condition[0]] if condition else []
        if isinstance(operation, Measure):
            if condition is not None:
                raise errors.GateError(
                    f"operation {place}: got measure under a condition, wanted a gate or a reset, "
                    "as Cirq can have it"
                )
            made = keys.measured(operation, on[0])
            bits += keys.together(operation)
        elif isinstance(operation, Reset):
            made = [cirq.ResetChannel().on(*on)]
        else:
            made = [operation_of(operation)]
        if condition is not None:
            controls = keys.controls(condition)
            made = [op.with_classical_controls(*controls) for op in made if controls is not None]
        layers.add(made, bits)
    layers.add([cirq.I(qubit) for qubit in qubits if qubit not in layers.used], ())  # else lost
    return cirq.Circuit.from_moments(*map(cirq.Moment, layers.layers))


class _Layers:
    """Operations in the first layer in which their qubits and bits are free, as Cirq puts them, in
    a third of its time."""

    def __init__(self) -> None:
        self.layers: list[list[Any]] = []
        self._free: dict[Any, int] = {}
        self.used: set[Any] = set()  # qubits

    def add(self, operations: Sequence[Any], bits: Sequence[int]) -> None:
        for operation in operations:
            self.used.update(operation.qubits)
            wires = [*operation.qubits, *bits]
            layer = max([self._free.get(wire, 0) for wire in wires])
            if layer >= len(self.layers):
                self.layers += [[] for _ in range(layer + 1 - len(self.layers))]
            self.layers[layer].append(operation)
            for wire in wires:
                self._free[wire] = layer + 1

    def level(self, wires: Sequence[Any]) -> None:
        """What comes later on these wires is after all that is on them now."""
        self._free.update(dict.fromkeys(wires, max([self._free.get(wire, 0) for wire in wires])))


def _qubit(name: str) -> Any:
    """The usual names are those of LineQubits, with two indices those of GridQubits."""
    cirq = _interop._package("cirq")
    register, index = _names.parts(name)
    kinds = {1: cirq.LineQubit, 2: cirq.GridQubit} if register == _names.REGISTER else {}
    return kinds[len(index)](*index) if len(index) in kinds else cirq.NamedQubit(name)


def _symbol(name: str) -> Any:
    return _interop._package("sympy").Symbol(name)


def _operations(qubits: Sequence[Any], symbols: Mapping[str, Any]) -> Callable[[Gate], Any]:
    """A function that makes operations of Cirq of gates on these qubits."""
    cirq = _interop._package("cirq")
    fixed = {
        "CNOT": cirq.CNOT, "CSIGN": cirq.CZ, "CZ": cirq.CZ, "H": cirq.H, "S": cirq.S,
        "D-S": cirq.S**-1, "X": cirq.X, "Y": cirq.Y, "Z": cirq.Z, "I": cirq.I,
        "T": cirq.T, "D-T": cirq.T**-1, "SX": cirq.X**0.5, "D-SX": cirq.X**-0.5,
        "ISWAP": cirq.ISWAP,
    }  # fmt: skip
    turned = {"RX": cirq.Rx, "RY": cirq.Ry, "RZ": cirq.Rz}

    known: dict[tuple[str, tuple[int, ...]], Any] = {}

    def made(gate: Gate) -> Any:
        key = gate.name, gate.qubits
        if (found := known.get(key)) is None:
            on = tuple([qubits[qubit] for qubit in gate.qubits])
            found = cirq.GateOperation(turned_gate(gate) if gate.params else fixed[gate.name], on)
            if not gate.params:
                known[key] = found
        return found

    def turned_gate(gate: Gate) -> Any:
        angle = gate.params[0]
        if gate.name in turned:
            return turned[gate.name](rads=_written(angle, symbols, _foreign_angles.to_sympy, 1))
        turn = _written(angle, symbols, _foreign_angles.to_half_turns, math.pi)
        if gate.name == "PH":
            return cirq.ZPowGate(exponent=turn)
        return cirq.XXPowGate(exponent=turn, global_shift=-0.5)

    return made


def _written(
    angle: Parameter, symbols: Mapping[str, Any], symbolic: Callable[..., Any], unit: float
) -> Any:
    """The angle in this unit; a symbolic one by this function."""
    if not angle.is_symbolic:
        return float(angle) / unit
    sympy, terms = _interop._package("sympy"), angle.coefficients.items()
    return symbolic(angle.constant, terms, symbols, sympy)


# --- in -----------------------------------------------------------------------------------------

# By the exponent of a gate, and what it is for other exponents, which is an angle in half turns.
_POWERS: dict[str, tuple[dict[float, str], str | None]] = {
    "Rx": ({}, "rx"), "Ry": ({}, "ry"), "Rz": ({}, "rz"),
    "XPowGate": ({1: "x", 0.5: "sx", -0.5: "sxdg"}, "rx"), "YPowGate": ({1: "y"}, "ry"),
    "ZPowGate": ({1: "z", 0.5: "s", -0.5: "sdg", 0.25: "t", -0.25: "tdg"}, "p"),
    "HPowGate": ({1: "h"}, None), "CXPowGate": ({1: "cx"}, None), "CZPowGate": ({1: "cz"}, "cp"),
    "SwapPowGate": ({1: "swap"}, None), "XXPowGate": ({}, "rxx"), "ZZPowGate": ({}, "rzz"),
    "CCXPowGate": ({1: "ccx"}, None), "CCZPowGate": ({1: "ccz"}, None),
    "CSwapGate": ({1: "cswap"}, None),
}  # fmt: skip
_PASSED_OVER = ("WaitGate", "GlobalPhaseGate")


def read(circuit: Any) -> Read:
    """Qubits are in the order of Cirq."""
    if not any(base.__name__ == "AbstractCircuit" for base in type(circuit).__mro__):
        _reading.wanted(circuit, "cirq", "Circuit")
    qubits = sorted(circuit.all_qubits())
    for qubit in qubits:
        if qubit.dimension != 2:
            raise errors.GateError(f"got {qubit} of {qubit.dimension} levels, wanted qubits")
    reader = _Reader(qubits)
    for place, operation in enumerate(circuit.all_operations()):
        reader.operation(operation, place)
    operations, registers = reader.keys.numbered(reader.reading.operations)
    return Read(len(qubits), operations, registers, _names.kept(map(_name, qubits)))


def _name(qubit: Any) -> str:
    match type(qubit).__name__:
        case "LineQubit":
            return _names.text(_names.REGISTER, [qubit.x])
        case "GridQubit":
            return _names.text(_names.REGISTER, [qubit.row, qubit.col])
    return str(qubit)


class _Reader:
    def __init__(self, qubits: Sequence[Any]) -> None:
        self.reading = Reading()
        self.keys = _cirq_keys.Reader()
        self._places = {qubit: place for place, qubit in enumerate(qubits)}

    def operation(self, operation: Any, place: int) -> None:
        """A gate of the table, or anything else."""
        gate = operation.gate
        try:
            known = None if gate is None else _known(gate)
            if known is None:
                self._other(operation, f"operation {place}", None, 0)
            else:
                name, angles = known
                on = tuple([self._places[qubit] for qubit in operation.qubits])
                self._gate(name, on, angles, f"operation {place}", None)
        except _reading.PLACED as error:
            raise _reading.at(f"operation {place}", error) from None

    def _gate(
        self, name: str, on: tuple[int, ...], angles: Sequence[float | Parameter], where: str,
        condition: Condition | None,
    ) -> None:  # fmt: skip
        gate = table()[name]
        if angles:
            check(gate, name, on, angles)
        self.reading.gate(gate, on, angles, where, condition)

    def _other(self, operation: Any, where: str, condition: Condition | None, depth: int) -> None:
        gate, kind = operation.gate, type(operation.gate).__name__
        on = tuple([self._places[qubit] for qubit in operation.qubits])
        if operation.classical_controls:
            inner = operation.without_classical_controls()
            for case in self.keys.cases(operation.classical_controls, condition):
                self._other(inner, where, case, depth)
        elif gate is not None and (known := _known(gate)) is not None:
            self._gate(*known[:1], on, known[1], where, condition)
        elif kind == "IdentityGate":
            for qubit in on:
                self._gate("id", (qubit,), (), where, condition)
        elif kind == "MeasurementGate":
            self._measure(operation.gate, on, where, condition)
        elif kind == "ResetChannel":
            self.reading.add(Reset(on[0], where=where), where, condition)
        elif kind not in _PASSED_OVER:
            limits.check_nesting(depth + 1, "got gates")
            for part in _parts(operation):
                self._other(part, where, condition, depth + 1)

    def _measure(
        self, gate: Any, on: tuple[int, ...], where: str, condition: Condition | None
    ) -> None:
        """An X before and after inverts the outcome."""
        if gate.confusion_map:
            raise errors.GateError("got a measurement with a confusion map, wanted one without")
        bits = self.keys.bits(str(gate.mkey), len(on))
        for qubit, bit, inverted in zip(on, bits, gate.full_invert_mask(), strict=True):
            flip = [("X", (qubit,), ())] if inverted else []
            self.reading.gates(flip, where, condition)
            self.reading.add(Measure(qubit, bit, where=where), where, condition)
            self.reading.gates(flip, where, condition)


def _known(gate: Any) -> tuple[str, Sequence[float | Parameter]] | None:
    """A gate of the table with its angles."""
    made_by: Any = type(gate)
    if (kind := _kind(made_by)) is None:
        return None
    exact, turned = kind
    turn = getattr(gate, "exponent", 1)
    is_number = isinstance(turn, numbers.Real)
    if is_number and (name := exact.get(float(turn))) is not None:
        return name, ()
    if turned is None:
        return None
    half_turns = _foreign_angles.HalfTurns
    return turned, [float(turn) * math.pi if is_number else _interop.number(half_turns(turn))]


@cache
def _kind(gate: Hashable) -> tuple[dict[float, str], str | None] | None:
    """Of a class of gates, by the first of its bases that is known."""
    for base in getattr(gate, "__mro__", ()):
        if base.__name__ in _POWERS and base.__module__.startswith("cirq."):
            return _POWERS[base.__name__]
    return None


def _size(circuit: Any, depth: int = 0) -> int:
    """The number of operations, those of repeated circuits as often as they are repeated."""
    limits.check_nesting(depth, "got circuits")
    cirq, total = _interop._package("cirq"), 0
    for operation in circuit.all_operations():
        inner = operation.untagged
        if not isinstance(inner, cirq.CircuitOperation):
            total += 1
        elif inner.repeat_until is not None or not isinstance(inner.repetitions, int):
            raise errors.GateError("got a circuit repeated until a condition, wanted a number")
        else:
            total += abs(inner.repetitions) * _size(inner.circuit, depth + 1)
    return total


def _parts(operation: Any) -> Sequence[Any]:
    cirq = _interop._package("cirq")
    inner = operation.untagged
    if isinstance(inner, cirq.CircuitOperation):
        limits.check_operations(_size(cirq.Circuit(inner)))
    text = short(" ".join(str(inner).split()))
    try:
        parts = cirq.decompose_once(inner, default=None)
    except (TypeError, ValueError) as error:
        raise errors.GateError(f"got {text}, which Cirq cannot take apart: {error}") from None
    if parts is None:
        raise errors.GateError(f"got {text}, which Cirq cannot take apart")
    return list(parts)

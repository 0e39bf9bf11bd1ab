"""Circuits to and from scripts of PennyLane."""

from __future__ import annotations

import copy
from collections.abc import Callable, Iterator, Sequence
from typing import Any

import numpy as np

from zeltbraidwerk import _interop, _names, _reading, errors, limits
from zeltbraidwerk._header import check, table
from zeltbraidwerk._reading import Condition, Read, Reading
from zeltbraidwerk.gates import Gate, Parameter
from zeltbraidwerk.instructions import Barrier, Measure, Register, Reset, WholeCircuit

# --- out ----------------------------------------------------------------------------------------

_NAMES = {
    "CNOT": "CNOT", "CSIGN": "CZ", "CZ": "CZ", "H": "Hadamard", "S": "S", "X": "PauliX",
    "Y": "PauliY", "Z": "PauliZ", "I": "Identity", "RX": "RX", "RY": "RY", "RZ": "RZ",
    "PH": "PhaseShift", "XX": "IsingXX", "T": "T", "SX": "SX", "U": "U3", "ECR": "ECR",
    "ISWAP": "ISWAP", "RZZ": "IsingZZ",
}  # fmt: skip
_RESET = "reset "  # begins the names of measurements whose outcomes are not used


def write(circuit: WholeCircuit) -> Any:
    qml = _interop._package("pennylane")
    wires = [_wire(name) for name in circuit.qubit_names]
    gate_of, measured = _gates(qml, wires), _Measured(qml, _names.of_bits(circuit.classical))
    made: list[Any] = []
    for place, (operation, condition) in enumerate(_interop.written(circuit)):
        on = [wires[qubit] for qubit in operation.qubits]
        if isinstance(operation, Gate):
            gate = gate_of(operation)
            made += [gate] if condition is None else measured.controlled(gate, condition)
        elif condition is not None:
            raise errors.GateError(
                f"operation {place}: got {operation.name} under a condition, wanted a gate, as "
                "PennyLane can have it"
            )
        elif isinstance(operation, Barrier):
            made.append(qml.Barrier(on))
        elif isinstance(operation, Measure):
            made.append(measured.measure(on, operation.bit))
        else:
            made.append(qml.ops.MidMeasure(on, reset=True, meas_uid=f"{_RESET}{place}"))
    used = {wire for operation in made for wire in operation.wires}
    idle = [wire for wire in wires if wire not in used]  # which a script does not keep
    return qml.tape.QuantumScript(made + [qml.Identity([wire]) for wire in idle])


class _Measured:
    """Measurements, named by their bits, and conditions on their values."""

    def __init__(self, qml: Any, names: Sequence[str]) -> None:
        self._qml, self._names = qml, names
        self._values: dict[int, Any] = {}  # of bits, that of their last measurement
        self._taken: set[str] = set()

    def measure(self, on: list[Any], bit: int) -> Any:
        name = _names.free(self._names[bit], self._taken)
        self._taken.add(name)
        made = self._qml.ops.MidMeasure(on, meas_uid=name)
        self._values[bit] = self._qml.ops.MeasurementValue([made])
        return made

    def controlled(self, gate: Any, condition: Condition) -> list[Any]:
        """Nothing for a condition that never holds: bits that were not measured are 0."""
        bits, value = condition
        total = None
        for k, bit in enumerate(bits):
            digit = value >> k & 1
            if bit in self._values:
                one = self._values[bit] if digit else ~self._values[bit]
                total = one if total is None else total & one
            elif digit:
                return []
        return [gate] if total is None else [self._qml.ops.Conditional(total, gate)]


def _wire(name: str) -> Any:
    """The usual names are those of wires 0, 1 and so on, and of tuples of numbers."""
    register, index = _names.parts(name)
    if register != _names.REGISTER or not index:
        return name
    return index[0] if len(index) == 1 else index


def _gates(qml: Any, wires: Sequence[Any]) -> Callable[[Gate], Any]:
    """A function that makes operators of gates. Making one by its class takes 20 us, copying one a
    microsecond."""
    known: dict[tuple[str, tuple[int, ...]], Any] = {}

    def made(gate: Gate) -> Any:
        angles = [float(angle) for angle in _interop.angles(gate)]
        key = gate.name, gate.qubits
        if key not in known:
            on = [wires[qubit] for qubit in gate.qubits]
            with qml.queuing.QueuingManager.stop_recording():
                known[key] = (
                    qml.adjoint(getattr(qml, _NAMES[gate.name[2:]])(on))
                    if gate.name.startswith("D-")
                    else getattr(qml, _NAMES[gate.name])(*angles, on)
                )
        if not angles:
            return known[key]
        found = copy.copy(known[key])
        found.data = tuple(angles)
        return found

    return made


# --- in -----------------------------------------------------------------------------------------

_KNOWN = {
    "CNOT": "cx", "CZ": "cz", "CY": "cy", "CH": "ch", "SWAP": "swap", "CSWAP": "cswap",
    "Toffoli": "ccx", "CCZ": "ccz", "Hadamard": "h", "S": "s", "Adjoint(S)": "sdg", "T": "t",
    "Adjoint(T)": "tdg", "SX": "sx", "Adjoint(SX)": "sxdg", "PauliX": "x", "PauliY": "y",
    "PauliZ": "z", "RX": "rx", "RY": "ry", "RZ": "rz", "PhaseShift": "p", "U1": "u1", "U2": "u2",
    "U3": "u3", "IsingXX": "rxx", "IsingZZ": "rzz", "CRX": "crx", "CRY": "cry", "CRZ": "crz",
    "ControlledPhaseShift": "cp",
}  # fmt: skip
_MOST_WIRES = 3  # of operators that are given by their matrices alone
_PASSED_OVER = ("GlobalPhase", "Snapshot")


def read(script: Any) -> Read:
    if type(script).__name__ == "QNode":
        raise errors.DtypeError(
            "circuit: got a QNode of PennyLane, wanted its tape: "
            "qml.workflow.construct_tape(qnode)(...) with the arguments of the QNode"
        )
    if not any(base.__name__ == "QuantumScript" for base in type(script).__mro__):
        _reading.wanted(script, "pennylane", "QuantumScript")
    operations = script.operations
    labels = [operation.wires.labels for operation in operations]
    extra = [measured.wires.labels for measured in script.measurements]
    wires = list(dict.fromkeys(label for each in (*labels, *extra) for label in each))
    if all(type(wire) is int and wire >= 0 for wire in wires):
        wires.sort()
    reader = _Reader()
    places = {wire: place for place, wire in enumerate(wires)}
    for place, (operation, each) in enumerate(zip(operations, labels, strict=True)):
        try:
            on = tuple([places[label] for label in each])
            reader.operation(operation, on, f"operation {place}", None)
        except _reading.PLACED as error:
            raise _reading.at(f"operation {place}", error) from None
    found, registers = reader.numbered()
    return Read(len(wires), found, registers, _names.kept(map(_name, wires)))


def _name(wire: Any) -> str:
    is_index = isinstance(wire, tuple) and len(wire) > 1 and all(type(k) is int for k in wire)
    if type(wire) is int or is_index:
        return _names.text(_names.REGISTER, wire if is_index else [wire])
    return str(wire)


class _Reader:
    def __init__(self) -> None:
        self.reading = Reading()
        self._bits: dict[str, int] = {}

    def operation(
        self, operation: Any, on: tuple[int, ...], where: str, condition: Condition | None,
        depth: int = 0,
    ) -> None:  # fmt: skip
        name = operation.name
        if (known := _KNOWN.get(name)) is not None:
            angles = [_number(angle) for angle in operation.data]
            gate = table()[known]
            check(gate, name, on, angles)
            self.reading.gate(gate, on, angles, where, condition)
        elif name == "Identity":
            for qubit in on:
                self.reading.gate(table()["id"], (qubit,), (), where, condition)
        elif name == "Barrier":
            if on:
                self.reading.add(Barrier(on, where=where), where, None)
        elif name == "MidMeasureMP":
            self._measure(operation, on[0], where)
        elif name.startswith("Conditional("):
            for case in self._cases(operation.meas_val):
                self.operation(operation.base, on, where, case, depth)
        elif name not in _PASSED_OVER:
            limits.check_nesting(depth + 1, "got gates")
            for part in _parts(operation):
                wires = tuple([on[k] for k in part.wires.labels])
                self.operation(part, wires, where, condition, depth + 1)

    def _measure(self, operation: Any, qubit: int, where: str) -> None:
        if operation.postselect is not None:
            raise errors.GateError("got a measurement with postselection, wanted one without")
        if not operation.meas_uid.startswith(_RESET):
            bit = self._bits.setdefault(operation.meas_uid, len(self._bits))
            self.reading.add(Measure(qubit, bit, where=where), where, None)
        if operation.reset:
            self.reading.add(Reset(qubit, where=where), where, None)

    def _cases(self, value: Any) -> Iterator[Condition]:
        """Conditions of which one holds where that of PennyLane does."""
        for each in value.measurements:
            if each.meas_uid not in self._bits:
                raise errors.GateError("got a condition on what is not measured before")
        bits = tuple(self._bits[each.meas_uid] for each in value.measurements)
        if len(bits) > _interop.MOST_BITS:
            raise errors.GateError(
                f"got a condition on {len(bits)} bits, wanted {_interop.MOST_BITS} at most"
            )
        for digits, holds in value.branches.items():
            if holds:
                yield bits, sum(int(digit) << k for k, digit in enumerate(digits))

    def numbered(self) -> tuple[list[Any], list[Register]]:
        """Measurements that :func:`write` made have the names of bits, others are in one register,
        "m"."""
        names = list(self._bits)
        if not all(_names.parts(name)[1] for name in names):
            names = [_names.text("m", [k]) for k in range(len(names))]
        order, registers = _names.bits(names)
        return _interop.renumbered(self.reading.operations, order), registers


def _number(angle: Any) -> float | Parameter:
    try:
        return float(angle)
    except (TypeError, ValueError):
        raise errors.AngleError(f"got the angle {angle}, wanted a number") from None


def _parts(operation: Any) -> Sequence[Any]:
    """The parts of an operator, wire k of them the k-th of it. PennyLane takes labels that are
    tuples for several wires, so that it gets numbers."""
    qml = _interop._package("pennylane")
    try:
        with qml.queuing.QueuingManager.stop_recording():
            if not operation.has_decomposition:
                operation = _matrix_of(operation, qml)
            numbers = {label: k for k, label in enumerate(operation.wires.labels)}
            found: Sequence[Any] = operation.map_wires(numbers).decomposition()
            return found
    except (qml.exceptions.DecompositionUndefinedError, TypeError, ValueError) as error:
        raise errors.GateError(
            f"got {operation.name}, which PennyLane cannot take apart: {error}"
        ) from None


def _matrix_of(operation: Any, qml: Any) -> Any:
    """An operator without a decomposition, on few wires, by its matrix."""
    if not operation.has_matrix or len(operation.wires) > _MOST_WIRES:
        raise ValueError("it has no decomposition")
    matrix = np.asarray(operation.matrix(), dtype=complex)
    if not np.allclose(matrix @ matrix.conj().T, np.eye(len(matrix))):
        raise ValueError("it is not unitary")
    return qml.QubitUnitary(matrix, operation.wires)

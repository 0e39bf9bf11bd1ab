"""Circuits to and from Qiskit."""

from __future__ import annotations

from collections.abc import Callable, Collection, Mapping, Sequence
from contextlib import ExitStack
from functools import cache
from typing import Any

from zeltbraidwerk import _foreign_angles, _interop, _names, _reading, errors, limits
from zeltbraidwerk._header import check, table
from zeltbraidwerk._reading import Condition, Read, Reading
from zeltbraidwerk.gates import Gate, Parameter
from zeltbraidwerk.instructions import (
    Barrier,
    Conditional,
    Measure,
    Operation,
    Register,
    Reset,
    WholeCircuit,
)

# --- out ----------------------------------------------------------------------------------------


def write(circuit: WholeCircuit, phase: float = 0.0) -> Any:
    qiskit = _interop._package("qiskit")
    names = [register.name for register in circuit.classical]
    quantum = _names.registers(circuit._names, circuit.n, names)
    wires = [qiskit.QuantumRegister(r.size, r.name) for r in quantum]
    made = qiskit.QuantumCircuit(*wires, global_phase=phase)
    for register in circuit.classical:
        made.add_register(qiskit.ClassicalRegister(register.size, register.name))
    symbols = _interop.symbols(circuit, _foreign_angles.is_from_qiskit, _symbol)
    registers = {tuple(made.find_bit(bit).index for bit in r): r for r in made.cregs}
    instruction = _instructions(made.qubits, symbols)
    for operation, condition in _interop.written(circuit):
        if condition is None and isinstance(operation, Gate):
            made._append(instruction(operation))
            continue
        with ExitStack() as inside:
            for test in _tests(made, registers, condition):
                inside.enter_context(made.if_test(test))
            if isinstance(operation, Gate):
                made.append(instruction(operation))
            elif isinstance(operation, Measure):
                made.measure(operation.qubit, operation.bit)
            else:
                getattr(made, operation.name)(list(operation.qubits))
    return made


@cache
def _symbol(name: str) -> Any:
    """One for each name, so that circuits that are written one by one share it."""
    return _interop._package("qiskit.circuit").Parameter(name)


def _angle(angle: Parameter, symbols: Mapping[str, Any]) -> Any:
    if not angle.is_symbolic:
        return float(angle)
    return _foreign_angles.to_qiskit(angle.constant, angle.coefficients.items(), symbols)


def _instructions(qubits: Sequence[Any], symbols: Mapping[str, Any]) -> Callable[[Gate], Any]:
    """A function that makes instructions of gates on these qubits."""
    kinds = _interop._package("qiskit.circuit")
    library = _interop._package("qiskit.circuit.library").get_standard_gate_name_mapping()
    classes = {ours: library[name].base_class for ours, name in _interop.QASM_NAMES.items()}
    fixed: dict[tuple[str, tuple[int, ...]], Any] = {}

    def made(gate: Gate) -> Any:
        key = gate.name, gate.qubits
        if (known := fixed.get(key)) is not None:
            return known
        angles = [_angle(p, symbols) for p in _interop.angles(gate)]
        on = tuple([qubits[q] for q in gate.qubits])
        instruction = kinds.CircuitInstruction(classes[gate.name](*angles), on)
        if not angles:
            fixed[key] = instruction
        return instruction

    return made


def _tests(
    made: Any, registers: Mapping[tuple[int, ...], Any], condition: Condition | None
) -> list[tuple[Any, int]]:
    """One condition for a whole register; otherwise nested conditions, one for each bit."""
    if condition is None:
        return []
    bits, value = condition
    if bits in registers:
        return [(registers[bits], value)]
    return [(made.clbits[bit], value >> k & 1) for k, bit in enumerate(bits)]


# --- in -----------------------------------------------------------------------------------------

# Qiskit's names of gates of the table.
STANDARD = {"rcccx": "rc3x", "c3sx": "c3sqrtx", "mcx": "c3x"}


@_reading.without_collection()
def read(circuit: Any, most_inner: int | None = None, lines: Sequence[int] | None = None) -> Read:
    """``most_inner`` bounds the instructions within definitions, which take long to unfold;
    ``lines`` are those that the instructions were read from."""
    _reading.wanted(circuit, "qiskit", "QuantumCircuit")
    reader = _Reader(most_inner, lines)
    bits = {bit: place for place, bit in enumerate(circuit.clbits)}
    reader.block(circuit, range(circuit.num_qubits), range(len(bits)), None, None)
    return Read(
        circuit.num_qubits, reader.reading.operations, _registers(circuit, bits), _named(circuit)
    )


def _named(circuit: Any) -> _names.Names | None:
    """Qubits that are in no register get one."""
    if [qubit for register in circuit.qregs for qubit in register] == circuit.qubits:
        return _names.of_registers((register.name, register.size) for register in circuit.qregs)
    loose = _names.free(_names.REGISTER, {register.name for register in circuit.qregs})
    homes = [circuit.find_bit(qubit).registers for qubit in circuit.qubits]
    alone = iter(range(len(homes)))
    return _names.kept(
        f"{home[0][0].name}[{home[0][1]}]" if home else f"{loose}[{next(alone)}]" for home in homes
    )


def _registers(circuit: Any, places: Mapping[Any, int]) -> list[Register]:
    """Bits without a register get one; where registers share bits, one register has all bits."""
    if sum(map(len, circuit.cregs)) > len({bit for r in circuit.cregs for bit in r}):
        return [Register("c", len(places))]
    starts = {places[r[0]]: r for r in circuit.cregs if len(r)}
    names = [register.name for register in circuit.cregs]
    empty = [Register(r.name, 0) for r in circuit.cregs if not len(r)]
    found: list[Register] = []
    loose = place = 0
    while place < len(places) or loose:
        register = starts.get(place)
        if place < len(places) and register is None:
            loose, place = loose + 1, place + 1
            continue
        if loose:
            name = _names.free("c", names)
            names.append(name)
            found.append(Register(name, loose))
            loose = 0
        if register is not None:
            if [places[bit] for bit in register] != list(range(place, place + len(register))):
                return [Register("c", len(places))]
            found.append(Register(register.name, len(register)))
            place += len(register)
    return found + empty


class _Reader:
    def __init__(self, most_inner: int | None, lines: Sequence[int] | None) -> None:
        self._lines = lines
        self.reading = Reading()
        self._inner = 0
        self._most_inner = most_inner
        self._circuit = _interop._package("qiskit.circuit")

    def block(
        self, circuit: Any, qubits: Any, bits: Any, where: str | None, condition: Condition | None,
        depth: int = 0,
    ) -> None:  # fmt: skip
        """A nested circuit; ``qubits`` and ``bits`` are its own in the numbers of the outermost
        one."""
        wires = dict(zip(circuit.qubits, qubits, strict=True))
        targets = dict(zip(circuit.clbits, bits, strict=True))
        known = table()
        fixed: dict[tuple[str, tuple[int, ...]], list[Operation]] = {}  # gates without angles
        for place, instruction in enumerate(circuit.data):
            here = where or (
                f"line {self._lines[place]}" if self._lines else f"instruction {place}"
            )
            on = tuple([wires[qubit] for qubit in instruction.qubits])
            self._inner += depth > 0
            if self._most_inner is not None and self._inner > self._most_inner:
                raise errors.GateError(
                    f"{here}: got more than {self._most_inner} operations in definitions"
                )
            if self._inner % 4096 == 1:
                with _reading.located(here):
                    limits.check_operations(self._inner)
            if instruction.is_standard_gate():
                name = STANDARD.get(instruction.name, instruction.name)
                if name in known:
                    if condition is None and (name, on) in fixed:
                        self.reading.extend(fixed[name, on])
                        continue
                    params = instruction.params
                    first = len(self.reading.operations)
                    self._gate(name, on, params, here, condition)
                    if not params and condition is None:
                        fixed[name, on] = self.reading.operations[first:]
                    continue
            into = tuple([targets[bit] for bit in instruction.clbits])
            self._instruction(instruction.operation, on, into, targets, here, condition, depth)

    def _gate(
        self, name: str, on: tuple[int, ...], params: Any, where: str, condition: Condition | None
    ) -> None:
        try:
            angles = [p if type(p) is float else _interop.number(p) for p in params]
            gate = table()[name]
            check(gate, name, on, angles)
            self.reading.gate(gate, on, angles, where, condition)
        except (errors.AngleError, errors.GateError) as error:
            raise _reading.at(where, error) from None

    def _instruction(
        self, operation: Any, on: tuple[int, ...], into: tuple[int, ...],
        targets: Mapping[Any, int], where: str, condition: Condition | None, depth: int,
    ) -> None:  # fmt: skip
        kinds = self._circuit
        if isinstance(operation, kinds.ControlFlowOp):
            self._control(operation, on, into, targets, where, condition, depth)
        elif isinstance(operation, kinds.Barrier):
            if on:
                self.reading.add(Barrier(on, where=where), where, None)
        elif isinstance(operation, kinds.Measure):
            self.reading.add(Measure(on[0], into[0], where=where), where, condition)
        elif isinstance(operation, kinds.Reset):
            self.reading.add(Reset(on[0], where=where), where, condition)
        elif isinstance(operation, _named_gate()):
            self._gate(operation.name, on, operation.params, where, condition)
        elif not isinstance(operation, kinds.Delay) and operation.name != "global_phase":
            limits.check_nesting(depth + 1, f"{where}: got gates such as {operation.name}")
            self.block(_parts(operation, where), on, into, where, condition, depth + 1)

    def _control(
        self, operation: Any, on: tuple[int, ...], into: tuple[int, ...],
        targets: Mapping[Any, int], where: str, condition: Condition | None, depth: int,
    ) -> None:  # fmt: skip
        """An ``if`` without an ``else``; a nested one has both conditions."""
        test = getattr(operation, "condition", None)
        if not isinstance(operation, self._circuit.IfElseOp) or not isinstance(test, tuple):
            is_if = isinstance(operation, self._circuit.IfElseOp)
            what = "if_test of an expression" if is_if else operation.name
            raise errors.GateError(f"{where}: got {what}, wanted if_test of one register or bit")
        if len(operation.blocks) > 1:
            raise errors.GateError(f"{where}: got if_test with an else, wanted if_test alone")
        source, value = test
        asked = [source] if isinstance(source, self._circuit.Clbit) else source
        bits = tuple([targets[bit] for bit in asked])
        inner: Condition = (bits, int(value))
        if condition is not None:
            if set(bits) & set(condition[0]):
                raise errors.GateError(f"{where}: got if within if on the same bits")
            inner = (condition[0] + bits, condition[1] | inner[1] << len(condition[0]))
        first = len(self.reading.operations)
        if value >> len(bits) == 0:
            self.block(operation.blocks[0], on, into, where, inner, depth + 1)
        _check_body(self.reading.operations[first:], bits, where)


def _check_body(body: list[Any], bits: tuple[int, ...], where: str) -> None:
    """Each operation in it gets the condition, so none of them may change its bits."""
    for operation in body[:-1]:
        inner = operation.operation if isinstance(operation, Conditional) else operation
        if isinstance(inner, Measure) and inner.bit in bits:
            raise errors.GateError(
                f"{where}: got a measurement, under a condition, into a bit of the condition"
            )


def _parts(operation: Any, where: str) -> Any:
    """The circuit of an instruction: from its definition, or from Qiskit's transpiler."""
    qiskit = _interop._package("qiskit")
    reason = "it has no definition"
    try:
        if (definition := getattr(operation, "definition", None)) is not None:
            return definition
        holder = qiskit.QuantumCircuit(operation.num_qubits, operation.num_clbits)
        holder.append(operation, range(operation.num_qubits), range(operation.num_clbits))
        parts = qiskit.transpile(holder, basis_gates=["cx", "u"], optimization_level=0)
        if all(inner.name != operation.name for inner in parts.data):
            return parts
    except (qiskit.exceptions.QiskitError, TypeError, ValueError) as error:
        reason = str(error).strip("\"'").partition("\n")[0]
    raise errors.GateError(
        f"{where}: got {operation.name}, which Qiskit cannot take apart: {reason}"
    )


# --- for Qiskit's reader of OpenQASM ------------------------------------------------------------


def _named_gate() -> Any:
    """Qiskit classes of gates defined by the table, whatever else Qiskit defines by these names."""
    if not _known_classes:
        gate = _interop._package("qiskit.circuit").Gate
        _known_classes.append(type("_NamedGate", (gate,), {}))
    return _known_classes[0]


_known_classes: list[Any] = []


def custom_instructions(names: Collection[str]) -> list[Any]:
    """For these gates of the table."""
    qasm2, made = _interop._package("qiskit.qasm2"), _named_gate()

    def instruction(name: str) -> Any:
        gate = table()[name]
        build = lambda *angles: made(name, gate.qubits, list(angles))  # noqa: E731
        return qasm2.CustomInstruction(name, gate.angles, gate.qubits, build, builtin=True)

    return [instruction(name) for name in sorted(names)]

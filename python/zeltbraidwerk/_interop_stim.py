"""Circuits to and from Stim."""

from __future__ import annotations

import math
from bisect import bisect_left
from collections.abc import Sequence
from dataclasses import dataclass
from functools import cache, cached_property
from typing import Any

from zeltbraidwerk import _interop, _reading, errors, limits
from zeltbraidwerk._definitions import Plain
from zeltbraidwerk._header import read_gate
from zeltbraidwerk._reading import Read, Reading
from zeltbraidwerk.gates import Gate, Parameter
from zeltbraidwerk.instructions import Barrier, Measure, Register, Reset, WholeCircuit

# --- out ----------------------------------------------------------------------------------------

_NAMES = {
    "CNOT": "CX", "CSIGN": "CZ", "CZ": "CZ", "H": "H", "S": "S", "D-S": "S_DAG", "X": "X",
    "Y": "Y", "Z": "Z", "I": "I", "SX": "SQRT_X", "D-SX": "SQRT_X_DAG", "ISWAP": "ISWAP",
}  # fmt: skip
_QUARTERS = {axis: ("I", f"SQRT_{axis}", axis, f"SQRT_{axis}_DAG") for axis in "XY"} | {
    "Z": ("I", "S", "Z", "S_DAG"), "ZZ": ("I", "SQRT_ZZ", "Z", "SQRT_ZZ_DAG"),
    "XX": ("I", "SQRT_XX", "X", "SQRT_XX_DAG"),
}  # fmt: skip


def write(circuit: WholeCircuit) -> Any:
    stim = _interop._package("stim")
    made = stim.Circuit()
    records: dict[int, int] = {}  # the number of the record that a bit holds
    count = 0
    for operation, condition in _interop.written(circuit, (*_NAMES, "RZZ")):
        if isinstance(operation, Barrier):
            made.append("TICK")
        elif condition is not None:
            _controlled(made, operation, condition, records, count)
        elif isinstance(operation, Measure):
            made.append("M", operation.qubits)
            records[operation.bit] = count
            count += 1
        elif isinstance(operation, Reset):
            made.append("R", operation.qubits)
        else:
            made.append(_name(operation), operation.qubits)
    if made.num_qubits < circuit.n:
        made.append("I", [circuit.n - 1])  # so that the number of qubits is kept
    return made


def _name(gate: Gate) -> str:
    if gate.name in _NAMES:
        return _NAMES[gate.name]
    angle = gate.params[0]
    quarters = math.nan if angle.is_symbolic else float(angle) / (math.pi / 2)
    if not abs(quarters - round(quarters) if math.isfinite(quarters) else math.nan) <= 1e-5:
        raise errors.NotCliffordError(
            f"circuit: got {gate.name}({angle}), wanted a multiple of pi/2"
        )
    axis = {"PH": "Z", "XX": "XX"}.get(gate.name) or gate.name[1:]
    return _QUARTERS[axis][round(quarters) % 4]


def _controlled(
    made: Any, operation: Any, condition: _reading.Condition, records: dict[int, int], count: int
) -> None:
    name = _name(operation) if isinstance(operation, Gate) else operation.name
    bits, value = condition
    one = name in ("I", "X", "Y", "Z") and len(operation.qubits) == 1
    if not one or len(bits) > 1 or bits[0] not in records:
        raise errors.GateError(
            f"circuit: got {name} on qubit {operation.qubits[-1]} under a condition on bits "
            f"{', '.join(map(str, bits))}, wanted X, Y or Z under one bit measured before, as "
            "Stim can write it"
        )
    if name == "I":
        return
    target = _interop._package("stim").target_rec(records[bits[0]] - count)
    made.append(f"C{name}", [target, *operation.qubits])
    if not value:
        made.append(name, operation.qubits)


# --- in -----------------------------------------------------------------------------------------

_KNOWN = {
    "CX": "cx", "CZ": "cz", "CY": "cy", "H": "h", "S": "s", "S_DAG": "sdg", "X": "x", "Y": "y",
    "Z": "z", "I": "id", "SWAP": "swap", "SQRT_X": "sx", "SQRT_X_DAG": "sxdg", "ISWAP": "iswap",
}  # fmt: skip
_TURNS = {"SQRT_Y": math.pi / 2, "SQRT_Y_DAG": -math.pi / 2}
_FEEDBACK = {"CX": "X", "CY": "Y", "CZ": "Z", "XCZ": "X", "YCZ": "Y"}
_PASSED_OVER = ("TICK", "QUBIT_COORDS", "SHIFT_COORDS")
# Gates that turn a Pauli operator into Z; in reverse order, with S for its inverse, they undo it.
_TO_Z = {"X": ("H",), "Y": ("D-S", "H"), "Z": ()}
# The measured letters, and the operation: measure, reset, or both.
_MEASURED = {
    "M": "Z", "MX": "X", "MY": "Y", "MR": "Z", "MRX": "X", "MRY": "Y", "R": "Z", "RX": "X",
    "RY": "Y", "MXX": "XX", "MYY": "YY", "MZZ": "ZZ",
}  # fmt: skip


@dataclass(frozen=True)
class _Step:
    """An instruction and the groups of its targets, or a body to repeat."""

    name: str
    where: str
    groups: Sequence[Sequence[Any]] = ()
    body: Sequence[_Step] = ()
    times: int = 1

    @cached_property
    def cost(self) -> int:
        return len(self.groups) + self.times * sum(step.cost for step in self.body)


def of_text(text: str) -> Any:
    """Stim's circuit of a text. Stim does not tell the line of an error, which is the first one
    with which the text up to it has the same error."""
    make = _interop._package("stim").Circuit
    lines = text.splitlines()

    def complaint(count: int) -> str:
        try:
            make("\n".join(lines[:count]))
        except (ValueError, IndexError) as error:
            return " ".join(str(error).split())
        return ""

    try:
        return make(text)
    except (ValueError, IndexError) as error:
        why = " ".join(str(error).split())
    line = bisect_left(range(len(lines)), True, key=lambda count: complaint(count) == why)
    raise errors.GateError(f"line {line}: {why}")


def read(circuit: Any) -> Read:
    _reading.wanted(circuit, "stim", "Circuit")
    steps, reader = _parsed(circuit, None, 0), _Reader()
    for step in steps:
        with _reading.located(step.where):
            limits.check_operations(step.cost)
    reader.steps(steps)
    registers = [Register("rec", reader.records)] if reader.records else []
    return Read(circuit.num_qubits, reader.reading.operations, registers)


def _parsed(circuit: Any, where: str | None, depth: int) -> list[_Step]:
    """Instructions without effect are left out, and so are bodies that hold no others."""
    limits.check_nesting(depth, f"{where}: got REPEAT")
    steps = []
    for place, instruction in enumerate(circuit):
        here = where or f"instruction {place}"
        if instruction.name == "REPEAT":
            body = _parsed(instruction.body_copy(), here, depth + 1)
            if body:
                steps.append(_Step("REPEAT", here, (), body, instruction.repeat_count))
        elif instruction.name not in _PASSED_OVER:
            _check(instruction, here)
            if groups := instruction.target_groups():
                steps.append(_Step(instruction.name, here, groups))
    return steps


def _check(instruction: Any, where: str) -> None:
    name = instruction.name
    products = ("MPP", "SPP", "SPP_DAG")
    known = name in _KNOWN or name in _MEASURED or name in products
    if not known and not _gate_data(name).is_unitary:
        raise errors.GateError(f"{where}: got {name}, wanted gates, measurements and resets")
    arguments = instruction.gate_args_copy()
    if any(arguments):
        raise errors.GateError(f"{where}: got {name}({arguments[0]:g}), wanted gates without noise")


class _Reader:
    def __init__(self) -> None:
        self.reading = Reading()
        self.records = 0

    def steps(self, steps: Sequence[_Step]) -> None:
        for step in steps:
            for _ in range(step.times if step.body else 0):
                self.steps(step.body)
            for group in step.groups:
                with _reading.located(step.where):
                    self._group(step.name, group, step.where)

    def _group(self, name: str, group: Sequence[Any], where: str) -> None:
        qubits = tuple(target.value for target in group)
        if name in _MEASURED:
            letters = dict(zip(qubits, _MEASURED[name], strict=True))
            inverted = sum(target.is_inverted_result_target for target in group) % 2 == 1
            is_reset = name[0] == "R" or name[:2] == "MR"
            self._measure(letters, inverted, name[0] == "M", is_reset, where)
        elif name in ("MPP", "SPP", "SPP_DAG"):
            letters, inverted = _product(group)
            if name == "MPP":
                self._measure(letters, inverted, True, False, where)
            elif letters:
                quarter = "S" if (name == "SPP") != inverted else "D-S"
                self._around(letters, [(quarter, (max(letters),), ())], where)
        elif any(target.is_measurement_record_target for target in group):
            self._feedback(name, group, where)
        elif not all(target.is_qubit_target for target in group):
            raise errors.GateError(f"got {name} on other targets than qubits and records")
        else:
            self.reading.gates(_gate(name, qubits), where)

    def _measure(
        self, letters: dict[int, str], inverted: bool, measures: bool, resets: bool, where: str
    ) -> None:
        """An X before and after inverts the outcome."""
        if not letters:
            raise errors.GateError("got the measurement of an identity, wanted Pauli operators")
        qubit = max(letters)
        flip: list[Plain] = [("X", (qubit,), ())] if inverted else []
        inner: list[Any] = [*flip] if measures else []
        if measures:
            inner.append(Measure(qubit, self.records, where=where))
            self.records += 1
        inner += [Reset(qubit, where=where)] if resets else flip
        self._around(letters, inner, where)

    def _around(self, letters: dict[int, str], inner: Sequence[Any], where: str) -> None:
        """The Pauli product is turned into Z of its last qubit, and back after the measurement."""
        last = max(letters)
        there: list[Plain] = [
            (name, (qubit,), ()) for qubit, letter in letters.items() for name in _TO_Z[letter]
        ]
        there += [("CNOT", (qubit, last), ()) for qubit in letters if qubit != last]
        back = [("S" if name == "D-S" else name, on, ()) for name, on, _ in reversed(there)]
        self.reading.gates(there if any(isinstance(i, (tuple, Measure)) for i in inner) else ())
        for item in inner:
            if isinstance(item, tuple):
                self.reading.gates([item])
            else:
                self.reading.add(item, where, None)
        self.reading.gates(back)

    def _feedback(self, name: str, group: Sequence[Any], where: str) -> None:
        controls = [t for t in group if t.is_measurement_record_target]
        targets = [t for t in group if t.is_qubit_target]
        if name not in _FEEDBACK or len(controls) != 1 or len(targets) != 1:
            raise errors.GateError(f"got {name} on a record, wanted CX, CY, CZ, XCZ or YCZ")
        bit = self.records + controls[0].value
        if bit < 0:
            raise errors.GateError(f"got rec[{controls[0].value}] after {self.records} records")
        gate: Plain = (_FEEDBACK[name], (targets[0].value,), ())
        self.reading.gates([gate], where, ((bit,), 1))


def _product(group: Sequence[Any]) -> tuple[dict[int, str], bool]:
    """The letters by qubit of a product of Pauli targets, and whether its sign is minus."""
    stim = _interop._package("stim")
    places = {qubit: place for place, qubit in enumerate(dict.fromkeys(t.value for t in group))}
    product = stim.PauliString(len(places))
    for target in group:
        factor = stim.PauliString(len(places))
        factor[places[target.value]] = target.pauli_type
        product *= -factor if target.is_inverted_result_target else factor
    letters = {qubit: "IXYZ"[product[place]] for qubit, place in places.items()}
    return {q: letter for q, letter in letters.items() if letter != "I"}, product.sign.real < 0


def _gate(name: str, qubits: tuple[int, ...]) -> list[Plain]:
    if name in _KNOWN:
        return read_gate(_KNOWN[name], qubits, [])
    if name in _TURNS:
        return [("RY", qubits, (Parameter(_TURNS[name]),))]
    return [
        (own, tuple(qubits[place] for place in places), params)
        for own, places, params in _of_tableau(name)
    ]


@cache
def _of_tableau(name: str) -> list[Plain]:
    found: list[Plain] = []
    for instruction in _gate_data(name).tableau.to_circuit():
        for group in instruction.target_groups():
            found += _gate(instruction.name, tuple(target.value for target in group))
    return found


def _gate_data(name: str) -> Any:
    return _interop._package("stim").gate_data(name)

"""Circuits to and from pytket."""

from __future__ import annotations

import math
from collections.abc import Collection, Iterator, Mapping, Sequence
from dataclasses import dataclass
from functools import cache, lru_cache
from typing import Any

from zeltbraidwerk import _foreign_angles, _interop, _names, _reading, errors
from zeltbraidwerk._header import table
from zeltbraidwerk._reading import Condition, Read, Reading
from zeltbraidwerk.gates import Parameter
from zeltbraidwerk.instructions import Barrier, Measure, Register, Reset, WholeCircuit

# --- out ----------------------------------------------------------------------------------------

_NAMES = {
    "CNOT": "CX", "CSIGN": "CZ", "CZ": "CZ", "H": "H", "S": "S", "D-S": "Sdg", "X": "X", "Y": "Y",
    "Z": "Z", "I": "noop", "RX": "Rx", "RY": "Ry", "RZ": "Rz", "PH": "U1", "XX": "XXPhase",
    "T": "T", "D-T": "Tdg", "SX": "SX", "D-SX": "SXdg", "U": "U3", "ECR": "ECR",
    "ISWAP": "ISWAPMax", "RZZ": "ZZPhase",
}  # fmt: skip


def write(circuit: WholeCircuit, phase: float) -> Any:
    tket = _interop._package("pytket.circuit")
    made = tket.Circuit()
    made.add_phase(phase / math.pi)
    symbols = _interop.symbols(circuit, _foreign_angles.is_from_sympy, _symbol)
    qubits, bits = units(circuit)
    for qubit in qubits:
        made.add_qubit(qubit)
    for bit in bits:
        made.add_bit(bit)
    for operation, condition in _interop.written(circuit):
        on = [qubits[qubit] for qubit in operation.qubits]
        if isinstance(operation, Barrier):
            made.add_barrier(on)
            continue
        turns = [_turn(p, symbols) for p in _interop.angles(operation)]
        kind = {"measure": "Measure", "reset": "Reset"}.get(operation.name) or _NAMES[
            operation.name
        ]
        if isinstance(operation, Measure):
            on.append(bits[operation.bit])
        options: dict[str, Any] = {}
        if condition is not None:
            options["condition_bits"] = [bits[bit] for bit in condition[0]]
            options["condition_value"] = condition[1]
        made.add_gate(getattr(tket.OpType, kind), turns, on, **options)
    return made


def units(circuit: WholeCircuit) -> tuple[list[Any], list[Any]]:
    """The qubits and bits of the circuit that :func:`write` makes, by their numbers in this one."""
    tket = _interop._package("pytket.circuit")
    bits = _named(_names.of_bits(circuit.classical), tket.Bit, ())
    return _named(circuit.qubit_names, tket.Qubit, {bit.reg_name for bit in bits}), bits


def _named(names: Sequence[str], make: Any, taken: Collection[str]) -> list[Any]:
    """Units of registers that are not ``taken``. In pytket all indices of a register are of one
    length; a name that does not fit is a register by itself."""
    split = [_names.parts(name) for name in names]
    lengths: dict[str, set[int]] = {}
    for register, index in split:
        lengths.setdefault(register, set()).add(len(index))
    used, found = {*taken, *lengths}, []
    instead = {register: _names.free(register, used) for register in lengths if register in taken}
    for name, (register, index) in zip(names, split, strict=True):
        fits = len(lengths[register]) == 1 and min(index, default=0) >= 0
        register, index = (register, index) if fits else (name, ())
        found.append(make(instead.get(register, register), list(index)))
    return found


def _turn(angle: Parameter, symbols: Mapping[str, Any]) -> Any:
    """In half turns."""
    if not angle.is_symbolic:
        return float(angle) / math.pi
    sympy = _interop._package("sympy")
    return _foreign_angles.to_half_turns(angle.constant, angle.coefficients.items(), symbols, sympy)


def _symbol(name: str) -> Any:
    return _interop._package("sympy").Symbol(name)


# --- in -----------------------------------------------------------------------------------------

_KNOWN = {
    "CX": "cx", "CZ": "cz", "CY": "cy", "CH": "ch", "CCX": "ccx", "SWAP": "swap", "CSWAP": "cswap",
    "H": "h", "S": "s", "Sdg": "sdg", "T": "t", "Tdg": "tdg", "X": "x", "Y": "y", "Z": "z",
    "noop": "id", "Rx": "rx", "Ry": "ry", "Rz": "rz", "U1": "u1", "U2": "u2", "U3": "u3",
    "V": "sx", "Vdg": "sxdg", "SX": "sx", "SXdg": "sxdg", "ZZPhase": "rzz", "XXPhase": "rxx",
    "CRz": "crz", "CRx": "crx", "CRy": "cry", "CU1": "cu1", "CU3": "cu3",
    "ECR": "ecr", "ISWAPMax": "iswap",
}  # fmt: skip
_OTHERS = ("TK1", "Phase", "Barrier", "Measure", "Reset")


@dataclass(frozen=True)
class Labelled:
    """A circuit as it is without the labels of its outputs: what is on qubit q at the end goes to
    the output of qubit ``permutation[q]``. ``source`` is the circuit of pytket that was read."""

    reading: Reading
    permutation: list[int]
    source: Any


def read(circuit: Any) -> Read:
    """A permutation that the circuit holds as labels of its outputs becomes gates."""
    found = read_labelled(circuit)
    for a, b in swaps(found.permutation):
        found.reading.gate(table()["swap"], (a, b), [], "")
    return read_of(circuit, found)


def read_of(circuit: Any, found: Labelled) -> Read:
    """Without the labels."""
    names = _names.kept(map(str, circuit.qubits))
    return Read(circuit.n_qubits, found.reading.operations, bits_of(circuit)[1], names)


@_reading.without_collection()
def read_labelled(circuit: Any) -> Labelled:
    _reading.wanted(circuit, "pytket", "Circuit")
    plain, reading = circuit, _operations(circuit, "")
    if reading is None:
        plain = _taken_apart(circuit)
        reading = _operations(plain, " after decomposition")
        assert reading is not None
    ends, place = list(range(circuit.n_qubits)), {q: k for k, q in enumerate(circuit.qubits)}
    if plain.has_implicit_wireswaps:
        ends = [place[plain.implicit_qubit_permutation()[qubit]] for qubit in circuit.qubits]
    return Labelled(reading, ends, plain)


def swaps(permutation: Sequence[int]) -> Iterator[tuple[int, int]]:
    """Swaps, in order, that bring what is on each wire to ``permutation`` of it."""
    goals = list(permutation)
    for wire in range(len(goals)):
        while (goal := goals[wire]) != wire:
            yield wire, goal
            goals[wire], goals[goal] = goals[goal], goal


def missing_phase(found: Labelled) -> Any:
    """In half turns, how far the operator of what was read is from that of the circuit: gates of
    the table are those of pytket up to a phase."""
    return found.source.phase + sum(_phase(command.op) for command in found.source)


def _phase(op: Any) -> Any:
    match op.type.name:
        case "SX":
            return 0.25
        case "SXdg":
            return -0.25
        case "U2" | "U3":
            return sum(op.params[-2:]) / 2
        case "CU3":
            return (op.params[1] - op.params[2]) / 4
        case "Phase":
            return op.params[0]
    return 0


def _operations(circuit: Any, after: str) -> Reading | None:
    """None where a gate is not known. ``after`` follows the number of a command in errors. Commands
    are taken one by one, as pytket frees and makes one faster than it makes a list of all."""
    qubits = {qubit: place for place, qubit in enumerate(circuit.qubits)}
    bits = bits_of(circuit)[0]
    reading, known = Reading(), _known()
    for place, command in enumerate(circuit):
        op = command.op
        try:
            if (gate := known.get(op.type)) is not None:
                on = tuple([qubits[qubit] for qubit in command.args])
                angles = [_angle(turn) for turn in op.params] if gate.angles else ()
                reading.gate(gate, on, angles, "")
            elif not _command(reading, command, qubits, bits, f"command {place}{after}"):
                return None
        except _reading.PLACED as error:
            raise _reading.at(f"command {place}{after}", error) from None
    return reading


@cache
def _known() -> dict[Any, _reading.Known]:
    kinds = _interop._package("pytket.circuit").OpType
    return {getattr(kinds, theirs): table()[name] for theirs, name in _KNOWN.items()}


def _taken_apart(circuit: Any) -> Any:
    """A copy in which all gates are known. Operations on bits alone are refused."""
    for place, command in enumerate(circuit):
        name = _inner(command.op).type.name
        if not command.qubits and command.bits and name != "Barrier":
            raise errors.GateError(f"command {place}: got {name}, wanted operations on qubits")
    tket, passes = _interop._package("pytket.circuit"), _interop._package("pytket.passes")
    plain = circuit.copy()
    gates = {getattr(tket.OpType, name) for name in (*_KNOWN, "TK1", "Measure", "Reset")}
    try:
        passes.DecomposeBoxes().apply(plain)
        passes.AutoRebase(gates).apply(plain)
    except RuntimeError as error:
        raise errors.GateError(f"got a gate that pytket cannot take apart: {error}") from None
    for place, command in enumerate(plain):
        if (name := _inner(command.op).type.name) not in _KNOWN and name not in _OTHERS:
            raise errors.GateError(
                f"command {place} after decomposition: got {name}, which pytket cannot take apart"
            )
    return plain


def _inner(op: Any) -> Any:
    while op.type.name == "Conditional":
        op = op.op
    return op


def bits_of(circuit: Any) -> tuple[dict[Any, int], list[Register]]:
    """The bits by their numbers, and the registers."""
    bits = circuit.bits
    order, registers = _names.bits([str(bit) for bit in bits])
    return {bits[place]: k for k, place in enumerate(order)}, registers


def _command(
    reading: Reading, command: Any, qubits: dict[Any, int], bits: dict[Any, int], where: str
) -> bool:
    """Reads a command that is no gate of the table by itself; False where it is not known."""
    op, arguments = command.op, command.args
    if not command.qubits and command.bits and op.type.name != "Barrier":
        return False
    condition: Condition | None = None
    name = op.type.name
    while name == "Conditional":
        asked = tuple(bits[bit] for bit in arguments[: op.width])
        before = condition or ((), 0)
        condition = (before[0] + asked, before[1] | op.value << len(before[0]))
        op, arguments = op.op, arguments[op.width :]
        name = op.type.name
    on = tuple([place for each in arguments if (place := qubits.get(each)) is not None])
    if name in _KNOWN:
        _gate(reading, _KNOWN[name], on, op.params, where, condition)
    elif name == "Barrier":
        if on:
            reading.add(Barrier(on, where=where), where, None)
    elif name == "Measure":
        reading.add(Measure(on[0], bits[arguments[-1]], where=where), where, condition)
    elif name == "Reset":
        reading.add(Reset(on[0], where=where), where, condition)
    elif name == "TK1":
        for turn, part in zip(reversed(op.params), ("rz", "rx", "rz"), strict=True):
            _gate(reading, part, on, [turn], where, condition)
    else:
        return bool(name == "Phase")
    return True


def _gate(
    reading: Reading, name: str, on: tuple[int, ...], turns: list[Any], where: str,
    condition: Condition | None,
) -> None:  # fmt: skip
    reading.gate(table()[name], on, [_angle(turn) for turn in turns], where, condition)


def _angle(turn: Any) -> float | Parameter:
    """In radians."""
    if type(turn) is not float:
        return _symbolic(turn)
    if not math.isfinite(turn):
        raise errors.AngleError(f"got the angle {turn}, wanted a finite number")
    return turn * math.pi


@lru_cache(maxsize=4096)
def _symbolic(turn: Any) -> float | Parameter:
    return _interop.number(_foreign_angles.HalfTurns(turn))

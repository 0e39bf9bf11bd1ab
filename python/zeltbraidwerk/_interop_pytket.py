"""Circuits to and from pytket."""

from __future__ import annotations

import math
from collections.abc import Mapping
from functools import lru_cache
from typing import Any

from zeltbraidwerk import _foreign_angles, _interop, _reading, errors
from zeltbraidwerk._header import check, table
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
    name = "q"
    while name in {register.name for register in circuit.classical}:
        name += "_"
    qubits = [tket.Qubit(name, k) for k in range(circuit.n)]
    bits = [tket.Bit(r.name, k) for r in circuit.classical for k in range(r.size)]
    made.add_q_register(name, circuit.n)
    for register in circuit.classical:
        made.add_c_register(register.name, register.size)
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


def read(circuit: Any) -> Read:
    _reading.wanted(circuit, "pytket", "Circuit")
    plain = _taken_apart(circuit)
    qubits = {qubit: place for place, qubit in enumerate(circuit.qubits)}
    bits, registers = bits_of(circuit)
    reading = Reading()
    for place, command in enumerate(plain.get_commands()):
        where = f"command {place}" if plain is circuit else f"command {place} after decomposition"
        try:
            _command(reading, command, qubits, bits, where)
        except (errors.AngleError, errors.GateError) as error:
            raise _reading.at(where, error) from None
    return circuit.n_qubits, reading.operations, registers


def _taken_apart(circuit: Any) -> Any:
    """The circuit, or a copy in which all gates are known and no wires are permuted."""
    tket, passes = _interop._package("pytket.circuit"), _interop._package("pytket.passes")
    plain = circuit
    if _has_others(circuit, tket.OpType):
        plain = circuit.copy()
        gates = {getattr(tket.OpType, name) for name in (*_KNOWN, "TK1", "Measure", "Reset")}
        try:
            passes.DecomposeBoxes().apply(plain)
            passes.AutoRebase(gates).apply(plain)
        except RuntimeError as error:
            raise errors.GateError(f"got a gate that pytket cannot take apart: {error}") from None
    # Otherwise a permutation that the circuit holds as labels of its outputs would be lost.
    wires = plain.implicit_qubit_permutation()
    if any(qubit != image for qubit, image in wires.items()):
        plain = circuit.copy() if plain is circuit else plain
        plain.replace_implicit_wire_swaps()
    return plain


def _has_others(circuit: Any, kinds: Any) -> bool:
    """Whether there are gates besides the known ones; operations on bits alone are refused."""
    known = {*_KNOWN, *_OTHERS}
    if sum(circuit.n_gates_of_type(getattr(kinds, name)) for name in known) == circuit.n_gates:
        return False
    strange = False
    for place, command in enumerate(circuit.get_commands()):
        name = _inner(command.op).type.name
        if not command.qubits and command.bits and name != "Barrier":
            raise errors.GateError(f"command {place}: got {name}, wanted operations on qubits")
        strange = strange or name not in known
    return strange


def _inner(op: Any) -> Any:
    while op.type.name == "Conditional":
        op = op.op
    return op


def bits_of(circuit: Any) -> tuple[dict[Any, int], list[Register]]:
    """Bits in the order of the registers; bits with other indices make one register."""
    registers = circuit.c_registers
    bits = [register[k] for register in registers for k in range(register.size)]
    if set(bits) != set(circuit.bits):
        bits = circuit.bits
        return dict(zip(bits, range(len(bits)), strict=True)), [Register("c", len(bits))]
    places = {bit: place for place, bit in enumerate(bits)}
    return places, [Register(register.name, register.size) for register in registers]


def _command(
    reading: Reading, command: Any, qubits: dict[Any, int], bits: dict[Any, int], where: str
) -> None:
    op, arguments = command.op, command.args
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
    elif name != "Phase":
        raise errors.GateError(f"got {name}, which pytket cannot take apart")


def _gate(
    reading: Reading, name: str, on: tuple[int, ...], turns: list[Any], where: str,
    condition: Condition | None,
) -> None:  # fmt: skip
    gate, angles = table()[name], [_angle(turn) for turn in turns]
    check(gate, name, on, angles)
    reading.gate(gate, on, angles, where, condition)


def _angle(turn: Any) -> float | Parameter:
    """In radians."""
    return turn * math.pi if type(turn) in (float, int) else _symbolic(turn)


@lru_cache(maxsize=4096)
def _symbolic(turn: Any) -> float | Parameter:
    return _interop.number(_foreign_angles.HalfTurns(turn))

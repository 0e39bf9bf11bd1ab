"""Circuits to and from pytket."""

from __future__ import annotations

import math
from typing import Any

from zeltbraidwerk import _interop, _reading, errors
from zeltbraidwerk._header import read_gate
from zeltbraidwerk._reading import Condition, Read, Reading
from zeltbraidwerk.gates import Parameter
from zeltbraidwerk.instructions import Barrier, Measure, Register, Reset, WholeCircuit

# --- out ----------------------------------------------------------------------------------------

_NAMES = {
    "CNOT": "CX", "CSIGN": "CZ", "CZ": "CZ", "H": "H", "S": "S", "D-S": "Sdg", "X": "X", "Y": "Y",
    "Z": "Z", "I": "noop", "RX": "Rx", "RY": "Ry", "RZ": "Rz", "PH": "U1", "XX": "XXPhase",
}  # fmt: skip


def write(circuit: WholeCircuit) -> Any:
    tket = _interop._package("pytket.circuit")
    made = tket.Circuit()
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
        turns = [_turn(p) for p in _interop.angles(operation)]
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


def _turn(angle: Parameter) -> Any:
    """In half turns."""
    return _interop.angle(angle, _interop._package("sympy").Symbol) / math.pi


# --- in -----------------------------------------------------------------------------------------

_KNOWN = {
    "CX": "cx", "CZ": "cz", "CY": "cy", "CH": "ch", "CCX": "ccx", "SWAP": "swap", "CSWAP": "cswap",
    "H": "h", "S": "s", "Sdg": "sdg", "T": "t", "Tdg": "tdg", "X": "x", "Y": "y", "Z": "z",
    "noop": "id", "Rx": "rx", "Ry": "ry", "Rz": "rz", "U1": "u1", "U2": "u2", "U3": "u3",
    "V": "sx", "Vdg": "sxdg", "SX": "sx", "SXdg": "sxdg", "ZZPhase": "rzz", "XXPhase": "rxx",
    "CRz": "crz", "CRx": "crx", "CRy": "cry", "CU1": "cu1", "CU3": "cu3",
}  # fmt: skip
_OTHERS = ("TK1", "Phase", "Barrier", "Measure", "Reset", "Conditional")


def read(circuit: Any) -> Read:
    _reading.wanted(circuit, "pytket", "Circuit")
    plain = _taken_apart(circuit)
    qubits = {qubit: place for place, qubit in enumerate(circuit.qubits)}
    bits, registers = _bits(circuit)
    reading = Reading()
    for place, command in enumerate(plain.get_commands()):
        where = f"command {place}" if plain is circuit else f"command {place} after decomposition"
        with _reading.located(where):
            _command(reading, command, qubits, bits, where)
    return circuit.n_qubits, reading.operations, registers


def _taken_apart(circuit: Any) -> Any:
    """The circuit, or a copy in which all gates are known and no wires are permuted."""
    tket, passes = _interop._package("pytket.circuit"), _interop._package("pytket.passes")
    plain, known = circuit, {*_KNOWN, *_OTHERS}
    strange = False
    for place, command in enumerate(circuit.get_commands()):
        op = _inner(command.op)
        if not command.qubits and command.bits and op.type.name != "Barrier":
            raise errors.GateError(
                f"command {place}: got {op.type.name}, wanted operations on qubits"
            )
        strange = strange or op.type.name not in known
    if strange:
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


def _inner(op: Any) -> Any:
    while op.type.name == "Conditional":
        op = op.op
    return op


def _bits(circuit: Any) -> tuple[dict[Any, int], list[Register]]:
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
    while op.type.name == "Conditional":
        asked = tuple(bits[bit] for bit in arguments[: op.width])
        before = condition or ((), 0)
        condition = (before[0] + asked, before[1] | op.value << len(before[0]))
        op, arguments = op.op, arguments[op.width :]
    on = tuple([qubits[argument] for argument in arguments if argument in qubits])
    name = op.type.name
    if name == "Barrier":
        if on:
            reading.add(Barrier(on, where=where), where, None)
    elif name == "Measure":
        reading.add(Measure(on[0], bits[arguments[-1]], where=where), where, condition)
    elif name == "Reset":
        reading.add(Reset(on[0], where=where), where, condition)
    elif name == "TK1":
        for turn, part in zip(reversed(op.params), ("rz", "rx", "rz"), strict=True):
            reading.gates(read_gate(part, on, [_angle(turn)]), where, condition)
    elif name in _KNOWN:
        angles = [_angle(turn) for turn in op.params]
        reading.gates(read_gate(_KNOWN[name], on, angles), where, condition)
    elif name != "Phase":
        raise errors.GateError(f"got {name}, which pytket cannot take apart")


def _angle(turn: Any) -> Parameter:
    """In radians. A symbol divided by pi and multiplied by it is the symbol again."""
    angle = turn * math.pi
    symbols = list(getattr(angle, "free_symbols", ()))
    if len(symbols) == 1:
        symbol = symbols[0]
        factor = (angle / symbol).simplify()
        if factor.is_number and abs(float(factor) - 1) < 1e-12:
            angle = symbol
    return _interop.number(angle)

"""Circuits of other packages and formats. Optional packages are imported when they are asked for.

All ways meet in one form, plain tuples of a gate's name in our vocabulary, its qubits and angles;
and all ways in share one table, keyed by the names of OpenQASM.
"""

from __future__ import annotations

import importlib
import math
from collections.abc import Callable, Iterable, Iterator
from typing import Any

from zeltbraidwerk import _qasm, errors
from zeltbraidwerk.gates import ROTATIONS, Parameter

Operation = tuple[str, tuple[int, ...], tuple[Parameter, ...]]

_QASM_NAMES = {
    "CNOT": "cx", "CSIGN": "cz", "CZ": "cz", "H": "h", "S": "s", "D-S": "sdg",
    "X": "x", "Y": "y", "Z": "z", "I": "id", "RX": "rx", "RY": "ry", "RZ": "rz", "PH": "p",
}  # fmt: skip


def _package(name: str) -> Any:
    try:
        return importlib.import_module(name)
    except ImportError:
        top = name.partition(".")[0]
        raise errors.MissingPackageError(
            f"this conversion needs the package {top}: pip install {top}"
        ) from None


def _plain(operations: Iterable[Operation]) -> Iterator[Operation]:
    """The operations without XX on three and more qubits, which no other package has."""
    for name, qubits, params in operations:
        if name == "S*":
            raise errors.GateError("the gate S* has no counterpart elsewhere")
        if name != "XX":
            yield name, qubits, params
            continue
        for place, first in enumerate(qubits):
            for second in qubits[place + 1 :]:
                yield name, (first, second), (params[0],)


# --- names of OpenQASM, read --------------------------------------------------------------------

_T = math.pi / 4
_TOFFOLI = (
    ("h", (2,)), ("cx", (1, 2)), ("tdg", (2,)), ("cx", (0, 2)), ("t", (2,)), ("cx", (1, 2)),
    ("tdg", (2,)), ("cx", (0, 2)), ("t", (1,)), ("t", (2,)), ("h", (2,)), ("cx", (0, 1)),
    ("t", (0,)), ("tdg", (1,)), ("cx", (0, 1)),
)  # fmt: skip

# Gates made of others; angles, where there are any, go to the rotation inside.
_MADE_OF: dict[str, tuple[tuple[str, tuple[int, ...]], ...]] = {
    "swap": (("cx", (0, 1)), ("cx", (1, 0)), ("cx", (0, 1))),
    "cy": (("sdg", (1,)), ("cx", (0, 1)), ("s", (1,))),
    "ccx": _TOFFOLI,
    "ccz": (("h", (2,)), *_TOFFOLI, ("h", (2,))),
    "rzz": (("cx", (0, 1)), ("rz", (1,)), ("cx", (0, 1))),
    "rxx": (("h", (0,)), ("h", (1,)), ("cx", (0, 1)), ("rz", (1,)), ("cx", (0, 1)), ("h", (0,)),
            ("h", (1,))),
    "cswap": (("cx", (2, 1)), *_TOFFOLI, ("cx", (2, 1))),
    "ch": (("s", (1,)), ("h", (1,)), ("t", (1,)), ("cx", (0, 1)), ("tdg", (1,)), ("h", (1,)),
           ("sdg", (1,))),
}  # fmt: skip
_FIXED_ANGLES = {
    "t": ("PH", _T), "tdg": ("PH", -_T), "sx": ("RX", 2 * _T), "sxdg": ("RX", -2 * _T),
    "sy": ("RY", 2 * _T), "sydg": ("RY", -2 * _T),
}  # fmt: skip
# Gates of several angles, or of halves of one: each part's place among the angles and its factor.
_WITH_ANGLES: dict[str, tuple[int, tuple[tuple[str, tuple[int, ...], int, float], ...]]] = {
    "u3": (3, (("rz", (0,), 2, 1.0), ("ry", (0,), 0, 1.0), ("rz", (0,), 1, 1.0))),
    "crz": (1, (("rz", (1,), 0, 0.5), ("cx", (0, 1), -1, 0.0), ("rz", (1,), 0, -0.5),
                ("cx", (0, 1), -1, 0.0))),
    "cu1": (1, (("p", (0,), 0, 0.5), ("p", (1,), 0, 0.5), ("cx", (0, 1), -1, 0.0),
                ("p", (1,), 0, -0.5), ("cx", (0, 1), -1, 0.0))),
}  # fmt: skip
_ALSO = {"u": "u3", "U": "u3", "cp": "cu1"}
_OWN_NAMES = {name: own for own, name in _QASM_NAMES.items() if own != "CZ"} | {"u1": "PH"}


def read_gate(name: str, qubits: tuple[int, ...], angles: tuple[Parameter, ...]) -> list[Operation]:
    """A gate by its name in OpenQASM, in our gates."""
    name = _ALSO.get(name, name)
    if name == "u2" and len(angles) == 2:
        name, angles = "u3", (Parameter(math.pi / 2), *angles)
    if name in _WITH_ANGLES:
        return _with_angles(name, qubits, angles)
    if name in _MADE_OF:
        parts = _MADE_OF[name]
        _wanted(name, qubits, 1 + max(max(places) for _, places in parts))
        made = []
        for part, places in parts:
            inner = angles if _OWN_NAMES.get(part) in ROTATIONS else ()
            made += read_gate(part, tuple(qubits[place] for place in places), inner)
        return made
    if name in _FIXED_ANGLES:
        own, angle = _FIXED_ANGLES[name]
        return [(own, qubits, (Parameter(angle),))]
    if name in _OWN_NAMES:
        return [(_OWN_NAMES[name], qubits, angles)]
    raise errors.GateError(f"the gate {name} is not known; decompose it before")


def _with_angles(
    name: str, qubits: tuple[int, ...], angles: tuple[Parameter, ...]
) -> list[Operation]:
    count, parts = _WITH_ANGLES[name]
    _wanted(name, qubits, 1 + max(max(places) for _, places, *_ in parts))
    if len(angles) != count:
        raise errors.GateError(f"got {len(angles)} angles for {name}, wanted {count}")
    made = []
    for part, places, place, factor in parts:
        inner: tuple[Parameter, ...] = ()
        if place >= 0:
            angle = angles[place]
            inner = (angle if factor == 1 else Parameter(factor * float(angle)),)
        made += read_gate(part, tuple(qubits[k] for k in places), inner)
    return made


def _wanted(name: str, qubits: tuple[int, ...], count: int) -> None:
    if len(qubits) != count:
        raise errors.GateError(f"got {len(qubits)} qubits for {name}, wanted {count}")


def _read_all(
    gates: Iterable[tuple[str, tuple[int, ...], tuple[Parameter, ...]]],
) -> list[Operation]:
    return [operation for gate in gates for operation in read_gate(*gate)]


# --- OpenQASM 2 ---------------------------------------------------------------------------------


def to_qasm(n: int, operations: Iterable[Operation]) -> str:
    lines = ["OPENQASM 2.0;", 'include "qelib1.inc";', f"qreg q[{n}];"]
    for name, qubits, params in _plain(operations):
        wires = ",".join(f"q[{qubit}]" for qubit in qubits)
        if name == "XX":
            a, b = qubits
            lines += [
                f"h q[{a}];",
                f"h q[{b}];",
                f"cx {wires};",
                f"rz({float(params[0])!r}) q[{b}];",
            ]
            lines += [f"cx {wires};", f"h q[{a}];", f"h q[{b}];"]
            continue
        angle = f"({float(params[0])!r})" if params else ""
        qasm_name = "u1" if name == "PH" else _QASM_NAMES[name]
        lines.append(f"{qasm_name}{angle} {wires};")
    return "\n".join(lines) + "\n"


def from_qasm(text: str) -> tuple[int, list[Operation]]:
    n, gates = _qasm.parse(text)
    operations = []
    for line, name, qubits, angles in gates:
        try:
            operations += read_gate(name, qubits, tuple(map(Parameter, angles)))
        except errors.GateError as error:
            raise errors.QasmError(f"line {line}: {error}") from None
    return n, operations


# --- Qiskit -------------------------------------------------------------------------------------


def to_qiskit(n: int, operations: Iterable[Operation]) -> Any:
    qiskit = _package("qiskit")
    circuit = qiskit.QuantumCircuit(n)
    for name, qubits, params in _plain(operations):
        angles = [_angle(p, _package("qiskit.circuit").Parameter) for p in params]
        method = "rxx" if name == "XX" else _QASM_NAMES[name]
        getattr(circuit, method)(*angles, *qubits)
    return circuit


def from_qiskit(circuit: Any) -> tuple[int, list[Operation]]:
    def gates() -> Iterator[Operation]:
        for instruction in circuit.data:
            operation = instruction.operation
            if operation.name == "barrier":
                continue
            qubits = tuple(circuit.find_bit(qubit).index for qubit in instruction.qubits)
            yield operation.name, qubits, tuple(_number(p) for p in operation.params)

    return circuit.num_qubits, _read_all(gates())


# --- pytket -------------------------------------------------------------------------------------

_TKET_NAMES = {
    "CNOT": "CX", "CSIGN": "CZ", "CZ": "CZ", "H": "H", "S": "S", "D-S": "Sdg", "X": "X", "Y": "Y",
    "Z": "Z", "I": "noop", "RX": "Rx", "RY": "Ry", "RZ": "Rz", "PH": "U1", "XX": "XXPhase",
}  # fmt: skip
_FROM_TKET = {
    "CX": "cx", "CZ": "cz", "CY": "cy", "CCX": "ccx", "SWAP": "swap", "H": "h", "S": "s",
    "Sdg": "sdg", "T": "t", "Tdg": "tdg", "X": "x", "Y": "y", "Z": "z", "noop": "id", "Rx": "rx",
    "Ry": "ry", "Rz": "rz", "U1": "u1", "V": "sx", "Vdg": "sxdg", "SX": "sx", "SXdg": "sxdg",
    "ZZPhase": "rzz",
}  # fmt: skip


def to_pytket(n: int, operations: Iterable[Operation]) -> Any:
    tket = _package("pytket.circuit")
    circuit = tket.Circuit(n)
    for name, qubits, params in _plain(operations):
        turns = [_angle(p, _package("sympy").Symbol) / math.pi for p in params]  # half turns
        circuit.add_gate(getattr(tket.OpType, _TKET_NAMES[name]), turns, list(qubits))
    return circuit


def from_pytket(circuit: Any) -> tuple[int, list[Operation]]:
    places = {qubit: place for place, qubit in enumerate(circuit.qubits)}

    def gates() -> Iterator[Operation]:
        for command in circuit.get_commands():
            name = command.op.type.name
            if name == "Barrier":
                continue
            angles = tuple(_number(turn * math.pi) for turn in command.op.params)
            qubits = tuple(places[qubit] for qubit in command.qubits)
            yield _FROM_TKET.get(name, name), qubits, angles

    # Permutations that the circuit holds as labels on its outputs would be lost.
    wires = circuit.implicit_qubit_permutation()
    if any(qubit != image for qubit, image in wires.items()):
        raise errors.GateError("the circuit renames its wires: call replace_implicit_wire_swaps()")
    return circuit.n_qubits, _read_all(gates())


# --- Stim ---------------------------------------------------------------------------------------

_STIM_NAMES = {
    "CNOT": "CX", "CSIGN": "CZ", "CZ": "CZ", "H": "H", "S": "S", "D-S": "S_DAG", "X": "X",
    "Y": "Y", "Z": "Z", "I": "I", "XX": "SQRT_XX",
}  # fmt: skip
_FROM_STIM = {
    "CX": "cx", "CZ": "cz", "CY": "cy", "H": "h", "S": "s", "S_DAG": "sdg", "X": "x", "Y": "y",
    "Z": "z", "I": "id", "SWAP": "swap", "SQRT_X": "sx", "SQRT_X_DAG": "sxdg", "SQRT_Y": "sy",
    "SQRT_Y_DAG": "sydg",
}  # fmt: skip
_QUARTERS = {axis: ("I", f"SQRT_{axis}", axis, f"SQRT_{axis}_DAG") for axis in "XY"} | {
    "Z": ("I", "S", "Z", "S_DAG")
}


def _stim_name(name: str, params: tuple[Parameter, ...]) -> str:
    if name not in ROTATIONS:
        return _STIM_NAMES[name]
    quarters = float(params[0]) / (math.pi / 2)
    if abs(quarters - round(quarters)) > 1e-5:
        raise errors.NotCliffordError(f"got {name}({params[0]}), wanted a multiple of pi/2")
    axis = "Z" if name == "PH" else name[1]
    return _QUARTERS[axis][round(quarters) % 4]


def to_stim(n: int, operations: Iterable[Operation]) -> Any:
    circuit = _package("stim").Circuit()
    for name, qubits, params in _plain(operations):
        circuit.append(_stim_name(name, params), qubits)
    if circuit.num_qubits < n:
        circuit.append("I", [n - 1])  # so that the number of qubits is kept
    return circuit


def from_stim(circuit: Any) -> tuple[int, list[Operation]]:
    def gates() -> Iterator[Operation]:
        for instruction in circuit.flattened():
            name = instruction.name
            if name in ("TICK", "QUBIT_COORDS"):
                continue
            for group in instruction.target_groups():
                if not all(target.is_qubit_target for target in group):
                    raise errors.GateError(f"got {name} on other targets than qubits")
                yield _FROM_STIM.get(name, name), tuple(target.value for target in group), ()

    return circuit.num_qubits, _read_all(gates())


# --- angles -------------------------------------------------------------------------------------


def _angle(parameter: Parameter, symbol: Callable[[str], Any]) -> Any:
    """A number, or the prefix expression built from another package's symbols."""
    if not parameter.is_symbolic:
        return float(parameter)
    tokens = iter(parameter.expression.split())

    def operand() -> Any:
        token = next(tokens)
        if token == "+":
            return operand() + operand()
        if token == "UMINUS":
            return -operand()
        try:
            return float(token)
        except ValueError:
            return symbols.setdefault(token, symbol(token))

    symbols: dict[str, Any] = {}
    try:
        return operand()
    except StopIteration:
        raise errors.AngleError(f"got the broken expression {parameter.expression!r}") from None


def _number(value: Any) -> Parameter:
    """A number, or another package's symbol that stands alone."""
    try:
        return Parameter(float(value))
    except TypeError:
        name = getattr(value, "name", None)
        if isinstance(name, str) and name.isidentifier():
            return Parameter(name)
        raise errors.AngleError(f"got the angle {value}, wanted a number") from None

"""OpenQASM 2, written, and read by Qiskit where it is installed, else by :mod:`._qasm`."""

from __future__ import annotations

import importlib.util
import re
from collections.abc import Sequence
from typing import Any

from zeltbraidwerk import _interop, _interop_qiskit, _names, _qasm, _validate, errors, limits
from zeltbraidwerk._definitions import NAME
from zeltbraidwerk._header import table
from zeltbraidwerk._reading import Condition, Read
from zeltbraidwerk.gates import Gate
from zeltbraidwerk.instructions import Measure, WholeCircuit

READERS = ("auto", "own", "qiskit")
# Reserved, besides the names of gates.
_KEYWORDS = (
    "barrier", "creg", "cos", "exp", "gate", "if", "include", "ln", "measure", "opaque", "pi",
    "qreg", "reset", "sin", "sqrt", "tan",
)  # fmt: skip

# Gates that the first qelib1.inc does not have, defined where they are used. Those of one qubit are
# read again as one gate.
_DEFINED = {
    "SX": "gate sx a { rx(pi/2) a; }",
    "D-SX": "gate sxdg a { rx(-pi/2) a; }",
    "ECR": "gate ecr a,b { s a; rx(pi/2) b; cx a,b; x a; }",
    "ISWAP": "gate iswap a,b { s a; s b; h a; cx a,b; cx b,a; h b; }",
    "RZZ": "gate rzz(theta) a,b { cx a,b; rz(theta) b; cx a,b; }",
}


# --- out ----------------------------------------------------------------------------------------


def write(circuit: WholeCircuit) -> str:
    names = _valid([register.name for register in circuit.classical], "c_")
    quantum = _names.registers(circuit._names, circuit.n, names)
    wires: list[str] = []
    used = {getattr(item, "operation", item).name for item in circuit}
    lines = ["OPENQASM 2.0;", 'include "qelib1.inc";']
    lines += [text for name, text in _DEFINED.items() if name in used]
    for name, register in zip(
        _valid([register.name for register in quantum], "q_", names), quantum, strict=True
    ):
        lines.append(f"qreg {name}[{register.size}];")
        wires += [f"{name}[{k}]" for k in range(register.size)]
    bits: list[str] = []
    ranges: dict[tuple[int, ...], str] = {}
    for name, register in zip(names, circuit.classical, strict=True):
        lines.append(f"creg {name}[{register.size}];")
        ranges[tuple(range(len(bits), len(bits) + register.size))] = name
        bits += [f"{name}[{k}]" for k in range(register.size)]
    for operation, condition in _interop.written(circuit):
        prefix = "" if condition is None else _condition(condition, ranges)
        on = [wires[qubit] for qubit in operation.qubits]
        if isinstance(operation, Measure):
            lines.append(f"{prefix}measure {on[0]} -> {bits[operation.bit]};")
        elif isinstance(operation, Gate):
            lines += [f"{prefix}{text};" for text in _gate(operation, on)]
        else:
            lines.append(f"{prefix}{operation.name} {','.join(on)};")
    return "\n".join(lines) + "\n"


def _gate(gate: Gate, on: list[str]) -> list[str]:
    if gate.name == "XX":  # the header of the standard has no rxx
        a, b = on
        turn = f"rz({float(gate.params[0])!r}) {b}"
        return [f"h {a}", f"h {b}", f"cx {a},{b}", turn, f"cx {a},{b}", f"h {a}", f"h {b}"]
    angle = f"({','.join([repr(float(angle)) for angle in gate.params])})" if gate.params else ""
    name = {"PH": "u1", "U": "u3"}.get(gate.name) or _interop.QASM_NAMES[gate.name]
    return [f"{name}{angle} {','.join(on)}"]


def _condition(condition: Condition, ranges: dict[tuple[int, ...], str]) -> str:
    bits, value = condition
    if bits not in ranges:
        raise errors.BitError(
            f"got a condition on bits {', '.join(map(str, bits))}, wanted all bits of a register "
            "in order, which is what OpenQASM 2 can write"
        )
    return f"if({ranges[bits]}=={value}) "


def _valid(given: list[str], prefix: str, taken: Sequence[str] = ()) -> list[str]:
    """Valid names of registers in OpenQASM that are not ``taken``; names that are valid are
    kept."""
    names: list[str] = []
    for name in given:
        fits = NAME.fullmatch(name) and name[0].islower() and name not in (*_KEYWORDS, *table())
        name = name if fits else prefix + re.sub(r"\W", "_", name, flags=re.ASCII)
        names.append(_names.free(name, {*names, *taken}))
    return names


# --- in -----------------------------------------------------------------------------------------

_HEADER = re.compile(r"""\binclude\s*["']qelib1\.inc["']""")
# In the usual header, but not in that of Qiskit, which reads id as a U.
MORE = (
    "ccz", "id", "u0", "u", "p", "sx", "sxdg", "swap", "cswap", "crx", "cry", "cp", "csx", "cu",
    "rxx", "rzz", "rccx", "rc3x", "c3x", "c3sqrtx", "c4x", "ecr", "iswap", "dcx",
)  # fmt: skip
_DECLARED = re.compile(r"\b(?:gate|opaque|qreg|creg)\s+(\w+)")
# What may crash a compiled reader: long expressions, large registers and numbers.
_STRANGE = re.compile(r"\([^;{}]{1000}|\[\s*\d{6}|==\s*\d{9}|OPENQASM\s+[^;\s]{9}")
_IF, _GATE = re.compile(r"\bif\s*\("), re.compile(r"\bgate\s")
_TELLS_PLACE = re.compile(r"\b(?:measure|reset|barrier|if)\b")
_SIZES = re.compile(r"\b([qc])reg\b[^;\[]*\[\s*0*(\d+)")
_MOST_BROADCAST = 1_000_000  # bits of all registers times statements
_MOST_INNER = 20_000  # a second or two


def read(text: Any, reader: str = "auto") -> Read:
    _validate.choice(reader, "reader", READERS)
    _validate.instance(text, "text", str, "OpenQASM 2 as a string")
    plain = _qasm.plain(text)
    if reader == "qiskit":
        if (most := max(_sizes(plain).values())) > limits.get("bits"):
            raise errors.QasmTooLargeError(
                f"got {most} qubits or bits, wanted {limits.get('bits')} at most; "
                f"{limits.told('bits')}"
            )
        return _by_qiskit(plain)
    if reader == "auto" and not _is_strange(plain) and _has_qiskit():
        try:
            return _by_qiskit(plain)
        except errors.Error:
            pass  # the other reader tells line and cause, and accepts more
    return _qasm.read(plain)


def _is_strange(text: str) -> bool:
    sizes = _sizes(text).values()
    is_large = max(sizes) > limits.get("bits") or sum(sizes) * text.count(";") > _MOST_BROADCAST
    # Qiskit copies all that a gate under a condition stands for.
    is_deep = _IF.search(text) is not None and _GATE.search(text) is not None
    return is_large or is_deep or bool(_STRANGE.search(text))


def _sizes(text: str) -> dict[str, int]:
    """The numbers of qubits and of bits, by the first letters of their registers; of numbers with
    many digits the first ones."""
    found = {"q": 0, "c": 0}
    for kind, digits in _SIZES.findall(text):
        found[kind] += int(digits[:18])
    return found


def _has_qiskit() -> bool:
    try:
        return importlib.util.find_spec("qiskit") is not None
    except ValueError:  # where sys.modules has None in its place
        return False


def _by_qiskit(text: str) -> Read:
    """Include paths are empty, so that no file is opened."""
    qasm2 = _interop._package("qiskit.qasm2")
    if not text.strip():
        raise errors.QasmError("got no statement, wanted OpenQASM 2")
    names = set(MORE) if _HEADER.search(text) else set(table()) - {"U", "CX"}
    instructions = _interop_qiskit.custom_instructions(names - set(_DECLARED.findall(text)))
    try:
        circuit = qasm2.loads(text, include_path=(), custom_instructions=instructions)
    except BaseException as error:  # also TypeError for "U q;", and panics, which are no Exception
        if isinstance(error, Exception) or type(error).__name__ == "PanicException":
            raise errors.QasmError(str(error)) from None
        raise
    lines = _qasm.lines_of(text) if _TELLS_PLACE.search(text) else []
    known = lines if len(lines) == len(circuit.data) else None
    return _interop_qiskit.read(circuit, _MOST_INNER, known)

"""A reader of OpenQASM 2: registers, gates of the standard header, arithmetic in angles."""

from __future__ import annotations

import ast
import math
import operator
import re
from collections.abc import Callable, Iterator
from typing import Any

from zeltbraidwerk.errors import QasmError

# Line, name, qubits, angles.
ParsedGate = tuple[int, str, tuple[int, ...], tuple[float, ...]]

_IGNORED = ("OPENQASM", "include", "creg", "barrier")
_REFUSED = ("measure", "reset", "if", "opaque", "gate")
_REGISTER = re.compile(r"qreg\s+(\w+)\s*\[\s*(\d+)\s*\]")
_GATE = re.compile(r"(\w+)\s*(?:\((.*)\))?\s*(.*)", re.DOTALL)
_OPERAND = re.compile(r"(\w+)\s*(?:\[\s*(\d+)\s*\])?")


def parse(text: str) -> tuple[int, list[ParsedGate]]:
    """The number of qubits, registers numbered through in order, and the gates."""
    registers: dict[str, range] = {}
    n = 0
    gates: list[ParsedGate] = []
    for line, statement in _statements(text):
        keyword = re.match(r"\w*", statement)[0]  # type: ignore[index]
        if keyword in _IGNORED:
            continue
        if keyword in _REFUSED:
            raise QasmError(f"line {line}: got {keyword!r}, wanted gates alone")
        if keyword == "qreg":
            match = _REGISTER.fullmatch(statement)
            if not match:
                raise QasmError(f"line {line}: cannot read {statement!r}")
            registers[match[1]] = range(n, n + int(match[2]))
            n += int(match[2])
            continue
        gates += _gates(line, statement, registers)
    return n, gates


def _statements(text: str) -> Iterator[tuple[int, str]]:
    line = 1
    plain = re.sub(r"//[^\n]*", "", text)
    for raw in re.split(r"[;{}]", plain):
        statement = raw.strip()
        if statement:
            yield line + raw[: len(raw) - len(raw.lstrip())].count("\n"), statement
        line += raw.count("\n")


def _gates(line: int, statement: str, registers: dict[str, range]) -> Iterator[ParsedGate]:
    match = _GATE.fullmatch(statement)
    if not match or not match[3]:
        raise QasmError(f"line {line}: cannot read {statement!r}")
    angles = tuple(_value(line, part) for part in match[2].split(",")) if match[2] else ()
    operands = [_operand(line, part.strip(), registers) for part in match[3].split(",")]
    wide = {len(operand) for operand in operands if len(operand) != 1}
    if len(wide) > 1:
        raise QasmError(f"line {line}: registers of unequal size in {statement!r}")
    for place in range(wide.pop() if wide else 1):
        qubits = tuple(o[place] if len(o) > 1 else o[0] for o in operands)
        if len(set(qubits)) < len(qubits):
            raise QasmError(f"line {line}: a qubit twice in {statement!r}")
        yield line, match[1], qubits, angles


def _operand(line: int, text: str, registers: dict[str, range]) -> range:
    match = _OPERAND.fullmatch(text)
    if not match or match[1] not in registers:
        raise QasmError(f"line {line}: got the operand {text!r}, wanted a qubit of a register")
    register = registers[match[1]]
    if match[2] is None:
        return register
    place = int(match[2])
    if place >= len(register):
        raise QasmError(f"line {line}: got {text}, wanted places 0 to {len(register) - 1}")
    return register[place : place + 1]


_BINARY: dict[type, Callable[[float, float], float]] = {
    ast.Add: operator.add, ast.Sub: operator.sub, ast.Mult: operator.mul,
    ast.Div: operator.truediv, ast.Pow: operator.pow,
}  # fmt: skip
_FUNCTIONS = {name: getattr(math, name) for name in ("sin", "cos", "tan", "exp", "sqrt")} | {
    "ln": math.log
}


def _value(line: int, text: str) -> float:
    def evaluate(node: Any) -> float:
        match node:
            case ast.Constant(value=int() | float() as value):
                return float(value)
            case ast.Name(id="pi"):
                return math.pi
            case ast.UnaryOp(op=ast.USub(), operand=inner):
                return -evaluate(inner)
            case ast.BinOp(left=left, op=op, right=right) if type(op) in _BINARY:
                return float(_BINARY[type(op)](evaluate(left), evaluate(right)))
            case ast.Call(func=ast.Name(id=name), args=[inner]) if name in _FUNCTIONS:
                return float(_FUNCTIONS[name](evaluate(inner)))
        raise ValueError

    try:
        return evaluate(ast.parse(text.strip().replace("^", "**"), mode="eval").body)
    except (SyntaxError, ValueError, ArithmeticError, TypeError, RecursionError):
        raise QasmError(f"line {line}: got the angle {text.strip()!r}, wanted a number") from None

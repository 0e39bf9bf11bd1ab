"""The arithmetic of angles in OpenQASM, without recursion, so that nesting may be of any depth."""

from __future__ import annotations

import math
import operator
import re
from collections.abc import Callable, Mapping
from typing import Any

from zeltbraidwerk import errors
from zeltbraidwerk.gates import Parameter

Angle = float | Parameter
# In postfix order: numbers, names in quotes, and operators with the number of their operands.
Step = float | str | tuple[Callable[..., Any], int]
Expression = tuple[Step, ...]

_TOKEN = re.compile(
    r"\s*(?:(?P<number>(?:\d+\.?\d*|\.\d+)(?:[eE][+-]?\d+)?)|(?P<name>[A-Za-z_]\w*)|(?P<sign>[-+*/^()]))",
    re.ASCII,
)
# Precedence and function. A sign binds less than a power: -2^2 is -4.
_BINARY: dict[str, tuple[int, Callable[..., Any]]] = {
    "+": (1, operator.add), "-": (1, operator.sub), "*": (2, operator.mul),
    "/": (2, operator.truediv), "^": (4, operator.pow),
}  # fmt: skip
_SIGNS: dict[str, tuple[int, Callable[..., Any]]] = {"-": (3, operator.neg), "+": (3, operator.pos)}
_FUNCTIONS: dict[str, Callable[..., Any]] = {
    name: getattr(math, name) for name in ("sin", "cos", "tan", "exp", "sqrt")
} | {"ln": math.log}
_OPEN = (0, operator.pos)
_NO_NUMBER = "got an angle that is not a finite number"


def read(text: str, names: tuple[str, ...] = ()) -> Expression:
    """The expression in postfix order; ``names`` are the symbols that it may hold besides pi.
    Raises a ValueError without a text where it is not an expression."""
    steps: list[Step] = []
    waiting: list[tuple[int, Callable[..., Any], int]] = []  # precedence, function, operands
    place, wants_value = 0, True
    text = text.rstrip()
    while place < len(text):
        match = _TOKEN.match(text, place)
        if not match:
            raise ValueError
        place = match.end()
        sign = match["sign"]
        if not wants_value and sign in _BINARY:
            precedence, function = _BINARY[sign]
            while waiting and waiting[-1][0] >= precedence + (sign == "^"):
                steps.append(waiting.pop()[1:])
            waiting.append((precedence, function, 2))
            wants_value = True
        elif not wants_value and sign == ")":
            _close(steps, waiting)
        elif not wants_value:
            raise ValueError
        elif sign in _SIGNS:
            waiting.append((*_SIGNS[sign], 1))
        elif sign == "(":
            waiting.append((*_OPEN, 0))
        elif match["name"] in _FUNCTIONS and match["name"] not in names:
            opened = _TOKEN.match(text, place)
            if not opened or opened["sign"] != "(":
                raise ValueError
            place = opened.end()
            waiting.append((0, _FUNCTIONS[match["name"]], 1))
        elif sign:
            raise ValueError
        else:
            steps.append(_value(match, names))
            wants_value = False
    if wants_value:
        raise ValueError
    while waiting:
        if not waiting[-1][0]:
            raise ValueError  # a parenthesis that is not closed
        steps.append(waiting.pop()[1:])
    return tuple(steps)


def _close(steps: list[Step], waiting: list[tuple[int, Callable[..., Any], int]]) -> None:
    while waiting and waiting[-1][0]:
        steps.append(waiting.pop()[1:])
    if not waiting:
        raise ValueError
    _, function, operands = waiting.pop()
    if operands:
        steps.append((function, operands))


def _value(match: re.Match[str], names: tuple[str, ...]) -> Step:
    name = match["name"]
    if name is None:
        return float(match["number"])
    if name in names:
        return str(name)
    if name == "pi":
        return math.pi
    raise ValueError


def evaluate(expression: Expression, values: Mapping[str, Angle]) -> Angle:
    """The value: a number, or a :class:`Parameter` where there are symbols, which allows sums and
    signs alone. Raises an AngleError."""
    stack: list[Any] = []
    for step in expression:
        if isinstance(step, float):
            stack.append(step)
        elif isinstance(step, str):
            stack.append(values[step])
        else:
            function, count = step
            operands = stack[len(stack) - count :]
            del stack[len(stack) - count :]
            stack.append(_applied(function, operands))
    (value,) = stack
    if isinstance(value, Parameter):
        return value
    if isinstance(value, complex) or not math.isfinite(value):
        raise errors.AngleError(_NO_NUMBER)
    return float(value)


def _applied(function: Callable[..., Any], operands: list[Any]) -> Any:
    symbols = [operand for operand in operands if isinstance(operand, Parameter)]
    if function is operator.pos:
        return operands[0]
    if symbols and function is operator.sub:
        return Parameter(operands[0]) - operands[1]
    if symbols and function not in (operator.add, operator.neg):
        raise errors.AngleError(f"got the symbolic angle {str(symbols[0])!r}, wanted a number")
    try:
        return function(*operands)
    except (ArithmeticError, TypeError, ValueError):
        raise errors.AngleError(_NO_NUMBER) from None

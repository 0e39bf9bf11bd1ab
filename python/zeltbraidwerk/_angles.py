"""Angles as text, of OpenQASM and with symbols, read without recursion, so that nesting may be of
any depth."""

from __future__ import annotations

import math
import operator
import re
from collections.abc import Callable, Mapping
from typing import Any

from zeltbraidwerk import errors

# In postfix order: numbers, names in quotes, and operators with the number of their operands.
Step = float | str | tuple[Callable[..., Any], int]
Expression = tuple[Step, ...]

# A name as in "theta" or "theta[0]", or one in dollars as in "$\\theta$".
SYMBOL = r"[^\W\d]\w*(?:\[\d+\])*|\$[^\s$]+\$"


def _token(name: str, flags: re.RegexFlag) -> re.Pattern[str]:
    number = r"(?:[0-9]+(?:\.[0-9]*)?|\.[0-9]+)(?:[eE][+-]?[0-9]+)?"
    return re.compile(rf"\s*(?:(?P<number>{number})|(?P<name>{name})|(?P<sign>[-+*/^()]))", flags)


_TOKEN = _token(r"[A-Za-z_]\w*", re.ASCII)
_TOKEN_WITH_SYMBOLS = _token(SYMBOL, re.NOFLAG)
# Precedence and function. A sign binds less than a power: -2^2 is -4.
_BINARY: dict[str, tuple[int, Callable[..., Any]]] = {
    "+": (1, operator.add), "-": (1, operator.sub), "*": (2, operator.mul),
    "/": (2, operator.truediv), "^": (4, operator.pow),
}  # fmt: skip
_SIGNS: dict[str, tuple[int, Callable[..., Any]]] = {"-": (3, operator.neg), "+": (3, operator.pos)}
_FUNCTIONS: dict[str, Callable[..., Any]] = {
    name: getattr(math, name) for name in ("sin", "cos", "tan", "exp", "sqrt")
} | {"ln": math.log}
_NOT_LINEAR = {function: f"{name} of" for name, function in _FUNCTIONS.items()} | {
    operator.pow: "a power with"
}
_OPEN = (0, operator.pos)
_NO_NUMBER = "got an angle that is not a finite number"


def read(text: str, names: tuple[str, ...] | None = ()) -> Expression:
    """The expression in postfix order; ``names`` are the symbols that it may hold besides pi, None
    for any. Raises a ValueError without a text where it is not an expression."""
    steps: list[Step] = []
    waiting: list[tuple[int, Callable[..., Any], int]] = []  # precedence, function, operands
    place, wants_value = 0, True
    token = _TOKEN_WITH_SYMBOLS if names is None else _TOKEN
    text = text.rstrip()
    while place < len(text):
        match = token.match(text, place)
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
        elif match["name"] in _FUNCTIONS and match["name"] not in (names or ()):
            opened = token.match(text, place)
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


def _value(match: re.Match[str], names: tuple[str, ...] | None) -> Step:
    name = match["name"]
    if name is None:
        return float(match["number"])
    if name in (names or ()):
        return str(name)
    if name in ("pi", "π"):
        return math.pi
    if names is not None or name.lower() in ("nan", "inf", "infinity", "uminus"):
        raise ValueError
    return str(name)


def evaluate(expression: Expression, values: Mapping[str, Any]) -> Any:
    """The value: a number, or a :class:`~zeltbraidwerk.Parameter` where there are symbols. Raises
    an AngleError."""
    stack: list[Any] = []
    for step in expression:
        if isinstance(step, float):
            stack.append(step)
        elif isinstance(step, str):
            stack.append(_plain(values[step]))
        else:
            function, count = step
            operands = stack[len(stack) - count :]
            del stack[len(stack) - count :]
            stack.append(_plain(_applied(function, operands)))
    (value,) = stack
    if hasattr(value, "is_symbolic"):
        return value
    if isinstance(value, complex) or not math.isfinite(value):
        raise errors.AngleError(_NO_NUMBER)
    return float(value)


def _plain(value: Any) -> Any:
    """A Parameter without symbols as a float, whose sums are not wrapped."""
    return value if getattr(value, "is_symbolic", True) else float(value)


def _applied(function: Callable[..., Any], operands: list[Any]) -> Any:
    if function in _NOT_LINEAR:
        for operand in operands:
            if hasattr(operand, "is_symbolic"):
                raise errors.AngleError(
                    f"got {_NOT_LINEAR[function]} the symbolic angle {operand.expression!r}, "
                    "wanted sums of symbols times numbers"
                )
    try:
        return function(*operands)
    except (ArithmeticError, TypeError, ValueError) as error:
        if isinstance(error, errors.Error):
            raise
        raise errors.AngleError(_NO_NUMBER) from None

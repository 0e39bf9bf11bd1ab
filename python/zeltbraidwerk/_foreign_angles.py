"""Angles with symbols of Qiskit and sympy. No package is imported before it is needed."""

from __future__ import annotations

import importlib
import math
from collections.abc import Hashable, Mapping
from functools import cache
from typing import Any

from zeltbraidwerk import _validate, errors

LinearForm = tuple[float, dict[str, float], dict[str, Any]]  # constant, coefficients, symbols


def linear_form(value: Any, name: str) -> LinearForm | None:
    """None for what is no expression of these packages. Raises an AngleError for an expression that
    is not linear."""
    kind = type(value)
    if kind is int:
        return None
    if is_from_qiskit(value):
        return _of_qiskit(value, name)
    if kind is HalfTurns:
        return _of_sympy(value.expression, value.unit, name)
    if is_from_sympy(value):
        return _of_sympy(value, 1, name)
    return None


class HalfTurns:
    """An angle of pytket: an expression of sympy, times pi."""

    def __init__(self, expression: Any) -> None:
        self.expression = expression
        self.unit = importlib.import_module("sympy").pi


def name_of(symbol: Any) -> str | None:
    """Of a Parameter of Qiskit or a symbol of sympy."""
    if not (is_from_qiskit(symbol) or is_from_sympy(symbol)):
        return None
    name = getattr(symbol, "name", None)
    return name if isinstance(name, str) else None


def is_from_qiskit(symbol: Any) -> bool:
    kind: Any = type(symbol)
    return _package_of(kind) == "qiskit"


def is_from_sympy(symbol: Any) -> bool:
    kind: Any = type(symbol)
    return _package_of(kind) == "sympy"


def are_different(one: Any, other: Any) -> bool:
    """Whether both are symbols of the same package, but not the same."""
    return other is not None and is_from_qiskit(one) == is_from_qiskit(other) and one != other


@cache
def _package_of(kind: Hashable) -> str:
    """ "qiskit" or "sympy" for a class of expressions, else nothing."""
    for base in getattr(kind, "__mro__", ()):
        package = _validate.package_of(base)
        if (package, base.__name__) in (("qiskit", "ParameterExpression"), ("sympy", "Expr")):
            return package
    return ""


def _refused(value: Any, name: str) -> errors.AngleError:
    try:
        text = str(value)
    except Exception:  # numbers of very many digits, expressions of very many levels
        text = f"an expression of type {type(value).__name__}"
    return errors.AngleError(
        f"{name}: got {_validate.shown(text)}, wanted a number or a sum of symbols times numbers"
    )


def _real(value: Any) -> float:
    number = complex(value)
    if number.imag or not math.isfinite(number.real):
        raise ValueError
    return number.real


def _of_qiskit(value: Any, name: str) -> LinearForm:
    if hasattr(value, "uuid"):
        return 0.0, {value.name: 1.0}, {value.name: value}
    symbols = list(value.parameters)
    try:
        # A derivative that is a number, by each of the symbols, makes it linear.
        factors = {symbol.name: _real(value.gradient(symbol)) for symbol in symbols}
        constant = _real(value.bind(dict.fromkeys(symbols, 0.0)) if symbols else value)
    except Exception:  # Qiskit has errors of several kinds for what has no such derivative
        raise _refused(value, name) from None
    return constant, factors, {symbol.name: symbol for symbol in symbols}


def _of_sympy(value: Any, unit: Any, name: str) -> LinearForm:
    """The value times the unit, a number of sympy."""
    symbols = sorted(value.free_symbols, key=str)
    if len({symbol.name for symbol in symbols}) < len(symbols):
        raise errors.AngleError(
            f"{name}: got two symbols of one name in {_validate.shown(value)}, wanted one"
        )
    try:
        factors = {symbol.name: rounded(_real(value.diff(symbol) * unit)) for symbol in symbols}
        constant = value.subs(dict.fromkeys(symbols, 0)) if symbols else value
        return (
            rounded(_real(constant * unit)),
            factors,
            {symbol.name: symbol for symbol in symbols},
        )
    except (TypeError, ValueError, AttributeError, OverflowError, RecursionError):
        raise _refused(value, name) from None


def rounded(value: float) -> float:
    """The decimal number of few digits next to it, if it differs by rounding alone: what is divided
    by pi and multiplied again is the same number then."""
    short = round(value, 12)
    return short if abs(short - value) <= 4e-16 * abs(value) else value


def to_qiskit(constant: float, terms: Any, symbols: Mapping[str, Any]) -> Any:
    """The expression of a sum that has a symbol."""
    total: Any = None
    for name, factor in terms:
        term = symbols[name] if factor == 1 else factor * symbols[name]
        total = term if total is None else total + term
    return total + constant if constant else total


def to_sympy(constant: float, terms: Any, symbols: Mapping[str, Any], sympy: Any) -> Any:
    """The same in sympy."""
    total = sympy.Float(constant) if constant else sympy.Integer(0)
    for name, factor in terms:
        total += _exact(factor, sympy) * symbols[name]
    return total


def to_half_turns(constant: float, terms: Any, symbols: Mapping[str, Any], sympy: Any) -> Any:
    """The same divided by pi."""
    total = sympy.Float(constant / math.pi) if constant else sympy.Integer(0)
    for name, factor in terms:
        total += _exact(factor, sympy) * symbols[name] / sympy.pi
    return total


def _exact(factor: float, sympy: Any) -> Any:
    return sympy.Integer(int(factor)) if factor.is_integer() else sympy.Float(factor)

"""Angles of rotations: numbers, and sums of symbols with coefficients."""

from __future__ import annotations

import math
import re
from collections.abc import Iterable, Mapping
from functools import lru_cache
from types import MappingProxyType
from typing import Any, SupportsFloat, SupportsIndex

from zeltbraidwerk import _angles, _core, _foreign_angles, _validate, errors

_FULL_TURN = 2 * math.pi
_CANCELS = 1e-12  # of the larger one of two summands; as in the compiled part
_NUMBER = re.compile(r"[+-]?(\d+(\.\d*)?|\.\d+)([eE][+-]?\d+)?", re.ASCII)
_NAME = re.compile(rf"(?!(?:(?i:nan|inf|infinity)|pi|π|UMINUS)$)(?:{_angles.SYMBOL})")
_OPERANDS = {"+": 2, "UMINUS": 1}

Terms = tuple[tuple[str, float], ...]  # names, ascending, with coefficients that are not 0
# Symbols of other packages by their names. They are handed back on the way out.
Sources = Mapping[str, Any]
NO_SOURCES: Sources = MappingProxyType({})


class Parameter:
    """A rotation angle in radians: a number, or a sum of symbols with coefficients and a number.

    It is made of a number, of a ParameterExpression of Qiskit, of an expression of sympy, or of
    text, such as ``"theta"``, ``"theta[0]"``, ``"-a"`` or ``"a + b/2 + pi/4"``. Text may also be in
    prefix notation, ``"+ a UMINUS b"``, as in the C++ library. Expressions that are not linear in
    their symbols, and text without a symbol, are refused.

    Angles add up, and are multiplied and divided by numbers. Coefficients are doubles; symbols
    whose coefficients cancel are gone. Sums of two numbers are wrapped into the open interval from
    -2 pi to 2 pi, other sums are not. Symbols are told apart by their names.

    >>> Parameter(0.5) + 1.0
    Parameter(1.5)
    >>> angle = 2 * Parameter("a") - "b/2" + 0.25
    >>> angle, -angle / 2
    (Parameter('2*a - 0.5*b + 0.25'), Parameter('-a + 0.25*b - 0.125'))
    >>> angle.bind({"a": 0.5}), angle.bind({"a": 0.5, "b": 1})
    (Parameter('-0.5*b + 1.25'), Parameter(0.75))
    """

    __slots__ = ("_constant", "_sources", "_terms")
    __array_ufunc__ = None  # numbers of numpy leave arithmetic to this class

    _constant: float
    _terms: Terms
    _sources: Sources

    def __init__(self, value: Parameter | SupportsFloat | SupportsIndex | str) -> None:
        read = parameter(value, "value")
        self._constant, self._terms, self._sources = read._constant, read._terms, read._sources

    @classmethod
    def _made(cls, constant: float, terms: Terms, sources: Sources = NO_SOURCES) -> Parameter:
        """From parts that are known to be valid. ``sources`` may hold other names as well."""
        made = cls.__new__(cls)
        made._constant, made._terms, made._sources = constant, terms, sources
        return made

    @classmethod
    def _number(cls, value: float) -> Parameter:
        made = cls.__new__(cls)
        made._constant, made._terms, made._sources = value, (), NO_SOURCES
        return made

    @property
    def is_symbolic(self) -> bool:
        """Whether the angle has symbols, and so is no number yet."""
        return bool(self._terms)

    @property
    def constant(self) -> float:
        """The number without the symbols."""
        return self._constant

    @property
    def coefficients(self) -> dict[str, float]:
        """The coefficients by the names of symbols, in the order of names; none is 0."""
        return dict(self._terms)

    @property
    def expression(self) -> str:
        """The sum as text, which reads back as the same angle; empty for a number."""
        return self._text(_digits) if self._terms else ""

    def bind(self, values: Mapping[Any, Any]) -> Parameter:
        """The angle with values in the place of symbols.

        Keys are names, Parameters of Qiskit or symbols of sympy; values are angles. Symbols without
        a value stay. Raises an AngleError for a symbol that the angle does not have.
        """
        return self._bound(bindings(values, [self]))

    def _bound(self, values: Mapping[str, Parameter]) -> Parameter:
        result = self._number(self._constant)
        for name, factor in self._terms:
            value = values.get(name) or self._made(0.0, ((name, 1.0),), self._sources)
            result = result._plus(value, factor)
        return result

    def __float__(self) -> float:
        if self._terms:
            raise errors.AngleError(f"got the symbolic angle {self.expression!r}, wanted a number")
        return self._constant

    def _plus(self, other: Parameter, times: float) -> Parameter:
        """Not wrapped."""
        constant = self._constant + times * other._constant
        if not math.isfinite(constant):
            raise errors.AngleError(f"got the angle {constant}, wanted a finite one")
        if not other._terms:
            return self._made(constant, self._terms, self._sources)
        terms = dict(self._terms)
        for name, factor in other._terms:
            before, added = terms.pop(name, 0.0), times * factor
            if abs(before + added) > _CANCELS * max(abs(before), abs(added)):
                terms[name] = before + added
        return _checked(constant, terms, _joined(self, other))

    def __add__(self, other: Any) -> Parameter:
        added = parameter(other, "angle")
        if self._terms or added._terms:
            return self._plus(added, 1.0)
        return self._number(math.fmod(self._constant + added._constant, _FULL_TURN))

    __radd__ = __add__

    def __neg__(self) -> Parameter:
        return self._made(
            -self._constant, tuple((name, -factor) for name, factor in self._terms), self._sources
        )

    def __pos__(self) -> Parameter:
        return self

    def __sub__(self, other: Any) -> Parameter:
        return self + -parameter(other, "angle")

    def __rsub__(self, other: Any) -> Parameter:
        return parameter(other, "angle") + -self

    def __mul__(self, other: Any) -> Parameter:
        factor = parameter(other, "factor")
        if factor._terms:
            if self._terms:
                raise errors.AngleError(
                    f"got the product of {self.expression!r} and {factor.expression!r}, "
                    "wanted sums of symbols times numbers"
                )
            return factor.__mul__(self._constant)
        times = factor._constant
        scaled = {name: times * own for name, own in self._terms if times * own}
        return _checked(times * self._constant, scaled, self._sources)

    __rmul__ = __mul__

    def __truediv__(self, other: Any) -> Parameter:
        divisor = parameter(other, "divisor")
        if divisor._terms or not divisor._constant:
            got = repr(divisor.expression) if divisor._terms else "0"
            raise errors.AngleError(f"divisor: got {got}, wanted a number that is not 0")
        divided = {name: own / divisor._constant for name, own in self._terms}
        terms = {name: own for name, own in divided.items() if own}
        return _checked(self._constant / divisor._constant, terms, self._sources)

    def __rtruediv__(self, other: Any) -> Parameter:
        return parameter(other, "angle") / self

    def __eq__(self, other: object) -> bool:
        if isinstance(other, (int, float)):
            return not self._terms and self._constant == other
        return (
            isinstance(other, Parameter)
            and self._constant == other._constant
            and self._terms == other._terms
        )

    def __hash__(self) -> int:
        return hash((self._constant, self._terms) if self._terms else self._constant)

    def __repr__(self) -> str:
        return f"Parameter({self.expression if self._terms else self._constant!r})"

    def __str__(self) -> str:
        """With six digits for each number."""
        return self._text("{:g}".format) if self._terms else f"{self._constant:g}"

    def __reduce__(self) -> tuple[Any, ...]:
        return _restored, (self._constant, self._terms, dict(self._sources))

    def _text(self, number: Any) -> str:
        parts = [
            ("-" if factor < 0 else "+", _term(name, abs(factor), number))
            for name, factor in self._terms
        ]
        if self._constant:
            parts.append(("-" if self._constant < 0 else "+", number(abs(self._constant))))
        text = " ".join(f"{sign} {part}" for sign, part in parts)
        return text[2:] if text.startswith("+") else f"-{text[2:]}"

    def to_core(self) -> _core.Parameter:
        """The angle of the core, whose text keeps all digits and has coefficients as in "0.5*a"."""
        if not self._terms:
            return _core.Parameter(self._constant)
        parts = [
            f"UMINUS {name}" if factor == -1 else _term(name, factor, _digits)
            for name, factor in self._terms
        ]
        if self._constant:
            parts.append(_digits(self._constant))
        return _core.Parameter(" ".join([f"+ {part}" for part in parts[:-1]] + parts[-1:]))

    @classmethod
    def from_core(cls, angle: _core.Parameter) -> Parameter:
        """The angle of a parameter of the core. Raises an AngleError for text that is no
        expression."""
        _validate.instance(angle, "angle", _core.Parameter, "a parameter of the core")
        return cls._of_core(angle, NO_SOURCES)

    @classmethod
    def _of_core(cls, angle: _core.Parameter, sources: Sources) -> Parameter:
        if not angle.is_abstract:
            return cls._number(angle.value)
        read = _of_prefix(angle.expression)
        if read is None:
            raise errors.AngleError(
                f"angle: got {_validate.shown(angle.expression)}, wanted an expression"
            )
        return cls._made(read._constant, read._terms, sources)


def _restored(constant: float, terms: Terms, sources: dict[str, Any]) -> Parameter:
    return Parameter._made(constant, terms, sources or NO_SOURCES)


def _digits(value: float) -> str:
    """The shortest text that reads as the same number."""
    return repr(value).removesuffix(".0")


def _term(name: str, factor: float, number: Any) -> str:
    return name if factor == 1 else f"{number(factor)}*{name}"


def _checked(constant: float, terms: Mapping[str, float], sources: Sources) -> Parameter:
    if not (math.isfinite(constant) and all(map(math.isfinite, terms.values()))):
        raise errors.AngleError("got an angle beyond the range of doubles, wanted a finite one")
    return Parameter._made(constant, tuple(sorted(terms.items())), sources)


# --- symbols ------------------------------------------------------------------------------------


def _joined(one: Parameter, other: Parameter) -> Sources:
    if one._sources is other._sources or not other._sources:
        return one._sources
    return sources_of((one, other))


def sources_of(angles: Iterable[Parameter]) -> Sources:
    """The symbols of other packages in the angles. Raises an AngleError for two of one name."""
    found: dict[str, Any] = {}
    for angle in angles:
        if not angle._sources:
            continue
        for name, _ in angle._terms:
            symbol = angle._sources.get(name)
            if symbol is not None and found.setdefault(name, symbol) != symbol:
                raise errors.AngleError(f"got two symbols of the name {name!r}, wanted one")
    return found or NO_SOURCES


def names_of(angles: Iterable[Parameter]) -> list[str]:
    """In their order."""
    return sorted({name for angle in angles for name, _ in angle._terms})


def bindings(values: Any, angles: Iterable[Parameter]) -> dict[str, Parameter]:
    """Values by the names of symbols of these angles; others are refused."""
    _validate.instance(values, "values", Mapping, "a mapping from symbols to angles")
    listed = [angle for angle in angles if angle._terms]
    names, sources = names_of(listed), sources_of(listed)
    found: dict[str, Parameter] = {}
    for key, value in values.items():
        name = key if isinstance(key, str) else _foreign_angles.name_of(key)
        if name is None:
            raise errors.DtypeError(
                f"values: got the key {_validate.shown(key)}, wanted the name of a symbol, a "
                "Parameter of Qiskit or a symbol of sympy"
            )
        if name not in names:
            raise errors.AngleError(
                f"values: got the symbol {name!r}, wanted one of {', '.join(names) or 'none'}"
            )
        if name in found:
            raise errors.AngleError(f"values: got the symbol {name!r} twice")
        if key is not name and _foreign_angles.are_different(key, sources.get(name)):
            raise errors.AngleError(
                f"values: got another Parameter of the name {name!r}, wanted the one of the angles"
            )
        found[name] = parameter(value, "values")
    return found


# --- reading ------------------------------------------------------------------------------------


def parameter(value: Any, name: str) -> Parameter:
    """The value as a Parameter; errors name the argument ``name``."""
    if isinstance(value, Parameter):
        return value
    if isinstance(value, str):
        return _of_text(str(value), name)
    if type(value) is not float and (form := _foreign_angles.linear_form(value, name)) is not None:
        constant, terms, sources = form
        for symbol in terms:
            if not _NAME.fullmatch(symbol):
                raise errors.AngleError(
                    f"{name}: got the symbol {symbol!r}, wanted a name such as theta or theta[0]"
                )
        return _checked(constant, {key: own for key, own in terms.items() if own}, sources)
    return Parameter._number(_validate.angle(value, name))


@lru_cache(maxsize=4096)
def _of_text(text: str, name: str) -> Parameter:
    read = from_text(text, name)
    if not read._terms:
        raise errors.AngleError(f"{name}: got {text!r}, wanted a number, not text")
    return read


def from_text(text: str, name: str) -> Parameter:
    """Of text in a file, which may be a number as well."""
    if _NAME.fullmatch(text):
        return Parameter._made(0.0, ((text, 1.0),))
    read = _of_prefix(text) or _of_infix(text, name)
    if read is None:
        raise errors.AngleError(
            f"{name}: got {_validate.shown(text)}, wanted an expression: a sum of names and "
            "numbers as in '2*a - b + pi/4', or prefix notation as in '+ a b'"
        )
    return read


def _of_infix(text: str, name: str) -> Parameter | None:
    if text != text.strip():
        return None
    try:
        steps = _angles.read(text, None)
    except ValueError:
        return None
    symbols = {step: Parameter._made(0.0, ((step, 1.0),)) for step in steps if type(step) is str}
    try:
        value = _angles.evaluate(steps, symbols)
    except errors.AngleError as error:
        raise errors.AngleError(f"{name}: {error}") from None
    return value if isinstance(value, Parameter) else Parameter._number(value)


@lru_cache(maxsize=4096)
def _of_prefix(text: str) -> Parameter | None:
    """None for text that is not in prefix notation."""
    signs = [1.0]  # of the operands that are still to come, the next one last
    constant, terms = 0.0, Parameter._number(0.0)
    for token in text.split(" "):
        if not signs:
            return None
        sign = signs.pop()
        if token in _OPERANDS:
            signs += [-sign] if token == "UMINUS" else [sign, sign]
        elif _NUMBER.fullmatch(token):
            constant += sign * float(token)
        else:
            factor, star, name = token.rpartition("*") if token[:1] != "$" else ("", "", token)
            if not _NAME.fullmatch(name) or (star and not _NUMBER.fullmatch(factor)):
                return None
            terms = terms._plus(Parameter._made(0.0, ((name, 1.0),)), sign * float(factor or 1))
    return (
        None
        if signs or not math.isfinite(constant)
        else terms._plus(Parameter._number(constant), 1.0)
    )

"""Gates made of other gates, as OpenQASM defines them, and their expansion."""

from __future__ import annotations

import re
from collections.abc import Mapping, Sequence
from dataclasses import dataclass, field
from typing import NamedTuple

from zeltbraidwerk import _angles, errors, limits
from zeltbraidwerk._parameter import Parameter

# A gate of this package, or a barrier: name, qubits, angles.
Plain = tuple[str, tuple[int, ...], tuple[Parameter, ...]]

NAME = re.compile(r"[A-Za-z_]\w*", re.ASCII)
APPLICATION = re.compile(r"([A-Za-z_]\w*)\s*(?:\((.*)\))?\s*([^()]*)", re.ASCII | re.DOTALL)


@dataclass(frozen=True, eq=False)
class Primitive:
    """A gate of this package, with its numbers of qubits and angles."""

    own_name: str
    qubits: int = 1
    angles: int = 0
    fixed: tuple[float, ...] = ()
    size = 1
    depth = 0


class Part(NamedTuple):
    """A gate of a definition; None for a barrier."""

    gate: Primitive | Definition | None
    angles: tuple[_angles.Expression, ...]
    places: tuple[int, ...]


@dataclass(frozen=True, eq=False)
class Definition:
    """``size`` is the number of operations after expansion. An opaque gate has no parts."""

    params: tuple[str, ...]
    qubits: int
    parts: tuple[Part, ...] | None
    size: int = field(init=False)
    depth: int = field(init=False)

    def __post_init__(self) -> None:
        inner = [part.gate for part in self.parts or () if part.gate]
        size = sum(gate.size for gate in inner) + len(self.parts or ()) - len(inner)
        object.__setattr__(self, "size", max(size, 1))  # an empty one counts too
        object.__setattr__(self, "depth", 1 + max((gate.depth for gate in inner), default=0))

    @property
    def angles(self) -> int:
        return len(self.params)


Known = Mapping[str, Primitive | Definition]


def expanded(
    gate: Primitive | Definition, qubits: Sequence[int], angles: Sequence[float | Parameter]
) -> list[Plain]:
    """The gates of this package for it. Raises what :func:`_angles.evaluate` does."""
    if isinstance(gate, Primitive):
        given = gate.fixed or angles
        params = tuple([a if isinstance(a, Parameter) else Parameter._number(a) for a in given])
        return [(gate.own_name, tuple(qubits), params)]
    values = dict(zip(gate.params, angles, strict=True))
    made: list[Plain] = []
    for inner, expressions, places in gate.parts or ():
        wires = tuple([qubits[place] for place in places])
        if inner is None:
            made.append(("barrier", wires, ()))
        else:
            given = [_angles.evaluate(expression, values) for expression in expressions]
            made += expanded(inner, wires, given)
    return made


def check_counts(gate: Primitive | Definition, name: str, qubits: int, angles: int) -> None:
    if qubits != gate.qubits:
        raise errors.GateError(f"got {qubits} qubits for {name}, wanted {gate.qubits}")
    if angles != gate.angles:
        raise errors.GateError(f"got {angles} angles for {name}, wanted {gate.angles}")


def define(
    head: str, body: Sequence[tuple[int, str]] | None, known: Known
) -> tuple[str, Definition]:
    """The gate that ``gate HEAD { BODY }`` defines, its statements with their lines. Its gates are
    known before it, so that no definition is recursive."""
    match = APPLICATION.fullmatch(head)
    if not match:
        raise errors.QasmError(f"cannot read the definition {short(head)!r}")
    name, params = match[1], _names(match[2] or "")
    wires = _names(match[3])
    if not wires:
        raise errors.QasmError(f"got the gate {name} without qubits")
    places = {wire: place for place, wire in enumerate(wires)}
    parts = (
        None if body is None else tuple(_part(line, s, params, places, known) for line, s in body)
    )
    gate = Definition(params, len(wires), parts)
    limits.check_nesting(gate.depth, f"got the gate {name}")
    return name, gate


def _names(text: str) -> tuple[str, ...]:
    names: dict[str, None] = {}
    for name in split(text):
        if not NAME.fullmatch(name):
            raise errors.QasmError(f"got {short(name)!r}, wanted a name")
        if name in names:
            raise errors.QasmError(f"got {short(name)!r} twice")
        names[name] = None
    return tuple(names)


def _part(
    line: int, text: str, params: tuple[str, ...], places: dict[str, int], known: Known
) -> Part:
    match = APPLICATION.fullmatch(text)
    if not match:
        raise errors.QasmError(f"line {line}: cannot read {short(text)!r}")
    name, operands = match[1], split(match[3])
    if name in ("measure", "reset", "if", "gate", "opaque", "qreg", "creg"):
        raise errors.QasmError(f"line {line}: got {name} in a definition, wanted gates alone")
    for operand in operands:
        if operand not in places:
            raise errors.QasmError(
                f"line {line}: got {short(operand)!r}, wanted a qubit of the definition"
            )
    wires = tuple(places[operand] for operand in operands)
    if name == "barrier":
        return Part(None, (), tuple(dict.fromkeys(wires)) or tuple(places.values()))
    if len(set(wires)) < len(wires):
        raise errors.QasmError(f"line {line}: got a qubit twice in {short(text)!r}")
    gate = known.get(name)
    if gate is None:
        raise errors.QasmError(f"line {line}: the gate {name} is not known")
    expressions = tuple(expression(line, part, params) for part in split(match[2] or ""))
    try:
        check_counts(gate, name, len(wires), len(expressions))
    except errors.GateError as error:
        raise errors.QasmError(f"line {line}: {error}") from None
    return Part(gate, expressions, wires)


def expression(line: int, text: str, names: tuple[str, ...] = ()) -> _angles.Expression:
    try:
        return _angles.read(text, names)
    except ValueError:
        raise errors.QasmError(
            f"line {line}: got the angle {short(text)!r}, wanted a number"
        ) from None


def split(text: str) -> list[str]:
    """At commas; one at the end is ignored."""
    parts = [part.strip() for part in text.split(",")]
    return parts if parts[-1] else parts[:-1]


def short(text: str) -> str:
    """For the texts of errors."""
    return text if len(text) <= 60 else f"{text[:57]}..."

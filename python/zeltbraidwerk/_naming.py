"""Rotations by multiples of pi/4 about Z, and of pi/2 about X and Y, as gates with names. All
writers of other formats and all pictures take circuits from here."""

from __future__ import annotations

import math
from collections.abc import Iterable

from zeltbraidwerk.gates import ROTATIONS, Gate, Parameter
from zeltbraidwerk.instructions import Conditional, Operation

_TOLERANCE = 1e-11  # radians; an angle as close as this to a multiple is one up to rounding
_EIGHTH = math.pi / 4
# By the axis: the least angle, and the names for each multiple of it, the first one acts first.
_NAMES: dict[str, tuple[float, tuple[tuple[str, ...], ...]]] = {
    "Z": (
        _EIGHTH,
        ((), ("T",), ("S",), ("S", "T"), ("Z",), ("Z", "T"), ("D-S",), ("D-T",)),
    ),
    "X": (2 * _EIGHTH, ((), ("SX",), ("X",), ("D-SX",))),
    "Y": (2 * _EIGHTH, ((), ("Z", "H"), ("Y",), ("H", "Z"))),
}
# The phases of rotations about Y by 0 to 3 quarter turns, which are 1, HZ, -iY and -ZH; those by
# 2 pi more are -1 times these.
_ABOUT_Y = (0.0, 0.0, -math.pi / 2, math.pi)


def named(given: Iterable[Operation]) -> tuple[list[Operation], float]:
    """The operations with names instead of angles wherever there are any, and a phase: what is
    given is exp(i phase) times the product of the gates. Gates under a condition have none in it.
    Angles farther than 1e-11 from a multiple stay as they are."""
    operations: list[Operation] = []
    phase = 0.0
    known: dict[tuple[str, tuple[int, ...], float], tuple[list[Gate], float]] = {}
    for item in given:
        if isinstance(item, Conditional):
            operations += _conditional(item)
        elif not isinstance(item, Gate) or item._name not in ROTATIONS or _is_odd(item._params[0]):
            operations.append(item)
        else:
            key = item._name, item._qubits, item._params[0]._constant
            if (made := known.get(key)) is None:
                made = known[key] = _by_names(item)
            operations += made[0]
            phase += made[1]
    return operations, phase


def _is_odd(angle: Parameter) -> bool:
    """Whether it has a symbol or is no multiple of pi/4."""
    eighths = angle._constant / _EIGHTH
    return bool(angle._terms) or abs(eighths - round(eighths)) > 2 * _TOLERANCE


def _conditional(item: Conditional) -> list[Operation]:
    gate = item.operation
    if not isinstance(gate, Gate) or gate.name not in ROTATIONS or _is_odd(gate.params[0]):
        return [item]
    made = _by_names(gate)[0]
    return [Conditional(part, item.bits, item.value, where=item.where) for part in made]


def _by_names(gate: Gate) -> tuple[list[Gate], float]:
    """Of a rotation by a number, and its phase."""
    names, phase = names_of(gate.name, float(gate.params[0]))
    if names is None:
        return [gate], 0.0
    return [Gate._trusted(name, gate.qubits, ()) for name in names], phase


def names_of(kind: str, angle: float) -> tuple[tuple[str, ...] | None, float]:
    """The names for RX, RY, RZ or PH by this angle, or None; the gate is exp(i phase) times their
    product."""
    axis = "Z" if kind == "PH" else kind[1]
    least, names = _NAMES[axis]
    k = round(angle / least)
    if abs(angle - k * least) > _TOLERANCE:
        return None, 0.0
    if kind == "PH":
        phase = 0.0
    elif axis == "Y":
        phase = _ABOUT_Y[k % 4] + math.pi * (k // 4)
    else:
        phase = -angle / 2
    return names[k % len(names)], phase

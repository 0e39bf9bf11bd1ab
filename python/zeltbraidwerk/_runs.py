"""Runs of gates on one qubit, and the few gates that are the same up to a global phase.

A gate on one qubit is a rotation of the sphere, a unit quaternion: w + xi + yj + zk stands for
w - i (x X + y Y + z Z), so that signs alone are left open. Gates with symbols stay gates.
"""

from __future__ import annotations

import math
from collections.abc import Iterable, Sequence
from functools import lru_cache
from itertools import chain

from zeltbraidwerk._header import elementary
from zeltbraidwerk._naming import names_of
from zeltbraidwerk.gates import Gate, Parameter
from zeltbraidwerk.instructions import Operation

Quaternion = tuple[float, float, float, float]
Run = list[Gate]
Turn = tuple[str, Parameter]  # an axis and an angle

_TOLERANCE = 1e-11  # of a component; what is smaller is rounding
_EIGHTH = math.pi / 4
_HALF = math.sqrt(0.5)
_AXES = "XYZ"
_MAY_CHANGE = frozenset(("RX", "RY", "RZ", "PH", "I", "U"))  # where they are alone
_OF_NAMES = {
    "X": ("X", 4), "Y": ("Y", 4), "Z": ("Z", 4), "S": ("Z", 2), "D-S": ("Z", -2), "T": ("Z", 1),
    "D-T": ("Z", -1), "SX": ("X", 2), "D-SX": ("X", -2),
}  # fmt: skip
_TURNS = {
    name: (axis, Parameter._number(eighths * _EIGHTH))
    for name, (axis, eighths) in _OF_NAMES.items()
}


def split(
    n: int, operations: Iterable[Operation]
) -> tuple[list[tuple[Operation, list[Run]]], list[Run]]:
    """The operations other than gates on one qubit, each with the runs before it on its qubits, and
    the runs that end the wires."""
    waiting: list[Run] = [[] for _ in range(n)]
    found: list[tuple[Operation, list[Run]]] = []
    for item in operations:
        if isinstance(item, Gate) and len(item._qubits) == 1 and item._name != "S*":
            waiting[item._qubits[0]].append(item)
            continue
        found.append((item, [waiting[q] for q in item.qubits]))
        for q in item.qubits:
            waiting[q] = []
    return found, waiting


def fused_run(run: Run) -> Run:
    """At most one gate, where no angle has a symbol. Otherwise gates without symbols move past
    rotations with symbols, where these are about X, Y or Z before as well, and are fused where they
    meet; so are rotations about one axis."""
    if not run or (len(run) == 1 and (run[0]._name not in _MAY_CHANGE or is_symbolic(run[0]))):
        return run
    (on,) = run[0].qubits
    done: Run = []
    waiting: Run = []  # without symbols, after what is done
    for gate in chain.from_iterable(
        elementary(gate) if is_symbolic(gate) else [gate] for gate in run
    ):
        if not is_symbolic(gate) or (turn := turn_of(gate)) is None:
            waiting.append(gate)
            continue
        axis, angle = turn
        before = _axis_before(waiting, axis)
        if before is None:
            _end(done, waiting, on)
            waiting = []
        elif waiting:
            axis, angle = before[0], before[1] * angle
        last = turn_of(done[-1]) if done and is_symbolic(done[-1]) else None
        if last is not None and last[0] == axis:
            angle = last[1] + angle
            done.pop()
        turned = Gate._trusted(f"R{axis}", (on,), (angle,))
        if angle.is_symbolic:
            done.append(turned)
        else:  # the symbols have cancelled
            waiting.insert(0, turned)
    _end(done, waiting, on)
    return done


def is_symbolic(gate: Gate) -> bool:
    return any(angle._terms for angle in gate._params)


def _axis_before(run: Run, axis: str) -> tuple[str, int] | None:
    """A rotation about the axis after the run is one about this axis before it, with this sign."""
    if not run:
        return axis, 1
    w, x, y, z = quaternion(run)
    point = (0.0, float(axis == "X"), float(axis == "Y"), float(axis == "Z"))
    turned = _times(_times((w, -x, -y, -z), point), (w, x, y, z))[1:]
    large = [k for k in range(3) if abs(turned[k]) > _TOLERANCE]
    return (_AXES[large[0]], 1 if turned[large[0]] > 0 else -1) if len(large) == 1 else None


def _end(done: Run, waiting: Run, on: int) -> None:
    """The gates that wait come next, into a rotation with symbols where that is about one axis."""
    gates = _as_one(waiting, on) if waiting else []
    turn = turn_of(gates[0]) if gates else None
    last = turn_of(done[-1]) if done and is_symbolic(done[-1]) else None
    if turn is not None and last is not None and turn[0] == last[0]:
        done[-1] = Gate._trusted(f"R{turn[0]}", (on,), (last[1] + turn[1],))
    else:
        done += gates


def turn_of(gate: Gate) -> Turn | None:
    """The axis and the angle of a gate that turns about X, Y or Z."""
    if gate._name in ("RX", "RY", "RZ"):
        return gate._name[1], gate._params[0]
    return ("Z", gate._params[0]) if gate._name == "PH" else _TURNS.get(gate._name)


# --- quaternions --------------------------------------------------------------------------------


def _as_one(run: Run, on: int) -> Run:
    """A run without symbols as one gate, or as none."""
    if len(run) == 1 and (turn := turn_of(run[0])) is not None:
        return about(*turn, on)  # with all digits of the angle
    return gate_of(quaternion(run), on)


def quaternion(run: Sequence[Gate]) -> Quaternion:
    """Of gates without symbols, the first of which acts first."""
    total = (1.0, 0.0, 0.0, 0.0)
    for gate in run:
        total = _times(_of_gate(gate._name, *[p._constant for p in gate._params]), total)
    return total


@lru_cache(maxsize=4096)
def _of_gate(name: str, *angles: float) -> Quaternion:
    if name == "H":
        return 0.0, _HALF, 0.0, _HALF
    if name == "I":
        return 1.0, 0.0, 0.0, 0.0
    if name == "U":
        theta, phi, angle = angles
        return _times(_of_gate("RZ", phi), _times(_of_gate("RY", theta), _of_gate("RZ", angle)))
    if name in _TURNS:
        axis, angle = _TURNS[name][0], float(_TURNS[name][1])
    else:
        axis, angle = "Z" if name == "PH" else name[1], angles[0]
    w, v = math.cos(angle / 2), math.sin(angle / 2)
    return w, v * (axis == "X"), v * (axis == "Y"), v * (axis == "Z")


def _times(a: Quaternion, b: Quaternion) -> Quaternion:
    """b acts first."""
    w, x, y, z = a
    s, p, q, r = b
    return (
        w * s - x * p - y * q - z * r,
        w * p + x * s + y * r - z * q,
        w * q - x * r + y * s + z * p,
        w * r + x * q - y * p + z * s,
    )


def about(axis: str, angle: Parameter, on: int) -> Run:
    """A rotation as one gate, or as none. It has a name, or is a U, where names would be two."""
    kind = f"R{axis}"
    if not angle.is_symbolic:
        names, _ = names_of(kind, float(angle))
        if names is not None and len(names) > 1:
            turn = Parameter._number(round(float(angle) / _EIGHTH) * _EIGHTH)
            none = Parameter._number(0.0)
            angles = (none, none, turn) if axis == "Z" else (turn, none, none)
            return [Gate._trusted("U", (on,), angles)]
        if names is not None:
            return [Gate._trusted(name, (on,), ()) for name in names]
    return [Gate._trusted(kind, (on,), (angle,))]


def gate_of(q: Quaternion, on: int) -> Run:
    w, *rest = q
    large = [k for k in range(3) if abs(rest[k]) > _TOLERANCE]
    if len(large) < 2:
        k = large[0] if large else 2
        return about(_AXES[k], Parameter._number(_wrapped(2 * math.atan2(rest[k], w))), on)
    if max(abs(w), abs(rest[1]), abs(rest[0] - rest[2])) < _TOLERANCE:
        return [Gate._trusted("H", (on,), ())]
    first, middle, last = euler(q, "Z", "Y")
    angles = tuple(Parameter._number(_whole(angle)) for angle in (middle, last, first))
    return [Gate._trusted("U", (on,), angles)]


def euler(q: Quaternion, outer: str, inner: str) -> tuple[float, float, float]:
    """Angles of rotations about the outer, the inner and the outer axis, the first acts first. The
    one in the middle is from 0 to pi."""
    o, i = _AXES.index(outer), _AXES.index(inner)
    third = 3 - o - i
    sign = 1 if (i + 1) % 3 == o else -1  # of inner times outer
    w, parts = q[0], q[1:]
    along, across = math.hypot(w, parts[o]), math.hypot(parts[i], parts[third])
    total, difference = 2 * math.atan2(parts[o], w), 2 * math.atan2(-sign * parts[third], parts[i])
    if along < _TOLERANCE:  # one of the outer rotations is enough
        total = difference
    elif across < _TOLERANCE:
        difference = total
    middle = 2 * math.atan2(across, along)
    return _wrapped((total - difference) / 2), middle, _wrapped((total + difference) / 2)


def _wrapped(angle: float) -> float:
    """From -pi, which it is not, to pi; signs of quaternions do not matter."""
    turned = math.remainder(angle, 2 * math.pi)
    return math.pi if turned <= -math.pi + _TOLERANCE else turned


def _whole(angle: float) -> float:
    """A multiple of pi/4 where it is one up to rounding."""
    k = round(angle / _EIGHTH)
    return k * _EIGHTH if abs(angle - k * _EIGHTH) < _TOLERANCE else angle

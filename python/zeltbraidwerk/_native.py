"""Circuits in the native gates of machines."""

from __future__ import annotations

import math
from collections.abc import Iterable, Iterator, Sequence
from dataclasses import replace

from zeltbraidwerk import _runs
from zeltbraidwerk._native_pairs import Basis, Pair, gate, with_pairs
from zeltbraidwerk._runs import Run, fused_run, split
from zeltbraidwerk.gates import Gate, Parameter
from zeltbraidwerk.instructions import Conditional, Operation, elementary

_NAMES = {"cx": "CNOT", "cz": "CSIGN", "ecr": "ECR", "iswap": "ISWAP", "rzz": "RZZ"}
BASES = tuple(_NAMES)

_QUARTER = Parameter._number(math.pi / 2)
_TOLERANCE = 1e-11  # radians


def in_basis(n: int, operations: Sequence[Operation], basis: Basis) -> list[Operation]:
    """The operations with all gates on two qubits in the basis."""
    converted: list[Operation] = []
    for item in with_pairs(n, _by_cnots(operations), basis):
        if isinstance(item, Conditional) and isinstance(item.operation, Gate):
            inner = in_basis(n, [item.operation], basis)
            converted += [replace(item, operation=part) for part in inner if isinstance(part, Gate)]
        elif isinstance(item, Gate) and item.name == "CNOT":
            converted += _cnot(item.qubits[0], item.qubits[1], basis)
        else:
            converted.append(item)
    made = [fused(n, converted, with_flips=flips) for flips in (False, True)]
    if all(len(item.qubits) == 1 or item.name == _NAMES[basis] for item in operations):
        made.append(fused(n, operations))
    return min(made, key=_size)


def _size(operations: Sequence[Operation]) -> tuple[int, int]:
    return sum(len(item.qubits) > 1 for item in operations), len(operations)


def _by_cnots(operations: Sequence[Operation]) -> Iterator[Operation]:
    for item in elementary(operations):
        if not isinstance(item, Gate) or len(item.qubits) == 1 or item.name == "CNOT":
            yield item
        elif item.name == "XX":
            for k, a in enumerate(item.qubits):
                for b in item.qubits[k + 1 :]:
                    yield from (gate("H", a), gate("H", b), gate("CNOT", a, b))
                    yield gate("RZ", b, by=item.params[0])
                    yield from (gate("CNOT", a, b), gate("H", a), gate("H", b))
        else:
            a, b = item.qubits
            yield from (gate("H", b), gate("CNOT", a, b), gate("H", b))


def _cnot(a: int, b: int, basis: Basis) -> list[Gate]:
    """One CNOT, by itself."""
    if basis == "cx":
        return [gate("CNOT", a, b)]
    if basis == "cz":
        return [gate("H", b), gate("CSIGN", a, b), gate("H", b)]
    if basis == "ecr":
        return [gate("D-S", a), gate("D-SX", b), gate("ECR", a, b), gate("X", a)]
    core = Pair(a, b, Parameter._number(0.0), _QUARTER)
    return [gate("H", b), gate("D-S", a), gate("D-S", b), *core.gates(basis), gate("H", b)]


# --- moving gates on one qubit past native gates ------------------------------------------------

# For each of the two wires of a native gate: rotations about this axis pass it, with this sign, to
# the wire with this place; ...
_AXES = {
    "CNOT": (("Z", 1, 0), ("X", 1, 1)), "CSIGN": (("Z", 1, 0), ("Z", 1, 1)),
    "ECR": (("Z", -1, 0), ("X", 1, 1)), "ISWAP": (("Z", 1, 1), ("Z", 1, 0)),
    "RZZ": (("Z", 1, 0), ("Z", 1, 1)),
}  # fmt: skip
# ... and this Pauli operator, which turns the axis round, is these two after it. RZZ has the
# opposite angle then.
_FLIPS = {
    "CNOT": (("X", "XX"), ("Z", "ZZ")), "CSIGN": (("X", "XZ"), ("X", "ZX")),
    "ECR": (("X", "YX"), ("Z", "ZY")), "ISWAP": (("X", "ZY"), ("X", "YZ")),
    "RZZ": (("X", "XI"), ("X", "IX")),
}  # fmt: skip


def fused(n: int, operations: Iterable[Operation], with_flips: bool = False) -> list[Operation]:
    """The operations with each run of gates on one qubit as few gates. Runs of rotations about the
    axis of a native gate are moved past it, to the next run; with flips, those that turn the axis
    round as well, at the price of Pauli gates. Without flips there are never more gates than
    before: each run that is moved leaves one place for another."""
    nodes, ends = split(n, operations)
    carried: list[Run] = [[] for _ in range(n)]
    made: list[Operation] = []
    for item, runs in nodes:
        coming = [fused_run([*carried[q], *run]) for q, run in zip(item.qubits, runs, strict=True)]
        for q in item.qubits:
            carried[q] = []
        for k, run in enumerate(coming):
            passed = _past(item, k, run, with_flips) if isinstance(item, Gate) else None
            if passed is None:
                made += run
                continue
            for each in passed[0]:
                carried[each.qubits[0]].append(each)
            if passed[1] and item.name == "RZZ":
                item = gate("RZZ", *item.qubits, by=-item.params[0])
        made.append(item)
    for run, more in zip(carried, ends, strict=True):
        made += fused_run([*run, *more])
    return made


def _past(item: Gate, place: int, run: Run, with_flips: bool) -> tuple[Run, bool] | None:
    """The gates after a native gate that a run before it on one of its wires is, and whether it
    turns the axis round; None where it has to stay."""
    if item.name not in _AXES:
        return None
    axis, sign, out = _AXES[item.name][place]
    on = item.qubits[out]
    turns = [_runs.turn_of(each) for each in run]
    if all(turn is not None and turn[0] == axis for turn in turns):
        angles = [turn[1] for turn in turns if turn is not None]
        return [gate(f"R{axis}", on, by=sign * angle) for angle in angles], False
    if not with_flips or len(run) != 1 or _runs.is_symbolic(run[0]):
        return None
    pauli, after = _FLIPS[item.name][place]
    rest = _runs.quaternion([run[0], gate(pauli, 0)])  # without the Pauli gate, its own inverse
    w, *parts = rest
    k = "XYZ".index(axis)
    if max(abs(part) for j, part in enumerate(parts) if j != k) > _TOLERANCE:
        return None
    angle = Parameter._number(sign * 2 * math.atan2(parts[k], w))
    flips = [gate(letter, q) for letter, q in zip(after, item.qubits, strict=True)]
    return [gate(f"R{axis}", on, by=angle), *flips], True

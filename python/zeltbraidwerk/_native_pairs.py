"""Two CNOTs on the same wires, merged into fewer native gates."""

from __future__ import annotations

import math
from collections.abc import Iterable, Iterator, Mapping, Sequence
from itertools import pairwise
from typing import Literal, NamedTuple

from zeltbraidwerk import _runs
from zeltbraidwerk._runs import Run, fused_run, split
from zeltbraidwerk.gates import Gate, Parameter
from zeltbraidwerk.instructions import Operation

Basis = Literal["cx", "cz", "ecr", "iswap", "rzz"]
Node = tuple[Operation, list[Run]]

_TOLERANCE = 1e-11  # radians


def gate(name: str, *on: int, by: Parameter | None = None) -> Gate:
    """A gate with one angle at most."""
    return Gate._trusted(name, on, () if by is None else (by,))


class Pair(NamedTuple):
    """exp(-i theta XX / 2) exp(-i phi ZZ / 2) on two qubits: a CNOT, RX by theta on its control and
    RZ by phi on its target, and the CNOT again. ``before`` and ``after`` are on one qubit."""

    a: int
    b: int
    theta: Parameter
    phi: Parameter
    before: Sequence[Gate] = ()
    after: Sequence[Gate] = ()

    def cost(self, basis: Basis) -> int:
        """The number of native gates."""
        turns = [_eighths(angle) for angle in (self.theta, self.phi)]
        if basis == "iswap":
            if all(k in (0, 4) for k in turns):
                return 0
            return 1 if all(k in (2, 6) for k in turns) else 2
        return sum(k not in (0, 4) for k in turns)

    def gates(self, basis: Basis) -> list[Gate]:
        core = self._by_iswap() if basis == "iswap" else self._by_rzz()
        return [*self.before, *core, *self.after]

    def _by_rzz(self) -> Iterator[Gate]:
        a, b = self.a, self.b
        yield from self._paulis(4)
        for axis, angle in (("X", self.theta), ("Z", self.phi)):
            frame = [gate("H", a), gate("H", b)] if axis == "X" else []
            if _eighths(angle) not in (0, 4):
                yield from (*frame, gate("RZZ", a, b, by=angle), *frame)

    def _by_iswap(self) -> Iterator[Gate]:
        """A CNOT followed by a SWAP is one ISWAP up to gates on one qubit, and so is a SWAP
        followed by a CNOT: the gates between the CNOTs change places."""
        a, b = self.a, self.b
        cost = self.cost("iswap")
        if cost == 0:
            yield from self._paulis(4)
        elif cost == 1:
            yield from self._one_iswap()
        else:
            yield from _two_cnots(b, a)
            yield gate("RX", b, by=self.theta)
            yield gate("RZ", a, by=self.phi)
            yield from _two_cnots(a, b)

    def _one_iswap(self) -> Iterator[Gate]:
        """ISWAP is exp(i pi/4 (XX + YY)); YY becomes ZZ by quarter turns about X."""
        yield from self._paulis(2)  # by which pi/2 differs from -pi/2
        yield from (gate("SX", self.a), gate("SX", self.b))
        yield gate("ISWAP", self.a, self.b)
        yield from (gate("D-SX", self.a), gate("D-SX", self.b))

    def _paulis(self, eighths: int) -> Iterator[Gate]:
        """XX and ZZ, where the angle about them is so many times pi/4."""
        for axis, angle in (("X", self.theta), ("Z", self.phi)):
            if _eighths(angle) == eighths:
                yield from (gate(axis, self.a), gate(axis, self.b))


def _two_cnots(a: int, b: int) -> Iterator[Gate]:
    """CNOT from a to b, then from b to a, as one ISWAP."""
    yield from (gate("H", a), gate("D-S", a), gate("D-S", b), gate("ISWAP", a, b))
    yield gate("H", b)


def _eighths(angle: Parameter) -> int | None:
    """The angle as 0 to 7 times pi/4 where it is a multiple of pi/4, modulo 2 pi."""
    if angle.is_symbolic:
        return None
    k = round(float(angle) / (math.pi / 4))
    return k % 8 if abs(float(angle) - k * math.pi / 4) < _TOLERANCE else None


def with_pairs(n: int, operations: Iterable[Operation], basis: Basis) -> list[Operation]:
    """Merges CNOTs with only gates on one qubit between where the two take fewer native gates than
    each by itself."""
    if basis not in ("rzz", "iswap"):
        return list(operations)
    nodes, ends = split(n, operations)
    merged: dict[int, Pair | None] = {}
    for chain in _chains(nodes):
        given = {k: nodes[k] for k in chain}
        choices = [(*_best_pairs(by, basis), by) for by in (given, _turned(given))]
        _, pairs, by = min(choices, key=lambda choice: choice[0])
        merged |= pairs
        for k in chain:
            nodes[k] = by[k]
    made: list[Operation] = []
    for k, (item, runs) in enumerate(nodes):
        for run in runs:
            made += () if k in merged and merged[k] is not None else run
        pair = merged.get(k)
        if k not in merged:
            made.append(item)
        elif pair is not None:
            made += pair.gates(basis)
    return made + [each for run in ends for each in run]


def _chains(nodes: Sequence[Node]) -> Iterable[list[int]]:
    """The numbers of CNOTs that follow each other on the same wires."""
    last: dict[int, int] = {}  # by wire
    found: dict[int, list[int]] = {}  # by the last one
    for k, (item, _) in enumerate(nodes):
        before = {last.get(q, -1) for q in item.qubits}
        if isinstance(item, Gate) and item.name == "CNOT":
            (j, *others) = before
            same = not others and j in found and set(nodes[j][0].qubits) == set(item.qubits)
            found[k] = found.pop(j) if same else []
            found[k].append(k)
        last.update(dict.fromkeys(item.qubits, k))
    return found.values()


def _turned(chain: Mapping[int, Node]) -> dict[int, Node]:
    """A chain with the three CNOTs of each SWAP the other way round."""
    turned, numbers = dict(chain), list(chain)
    place = 0
    while place + 2 < len(numbers):
        three = numbers[place : place + 3]
        one, *others = (chain[k] for k in three)
        ways = [item.qubits == one[0].qubits for item, _ in others]
        if ways == [False, True] and not any(run for _, runs in others for run in runs):
            for k in three:
                item, runs = chain[k]
                turned[k] = Gate._trusted("CNOT", item.qubits[::-1], ()), runs[::-1]
            place += 2
        place += 1
    return turned


def _best_pairs(chain: Mapping[int, Node], basis: Basis) -> tuple[int, dict[int, Pair | None]]:
    """The number of native gates, and the pairs of neighbours for that, by the numbers of nodes:
    None for the first CNOT of a pair, the pair for the second one."""
    alone = 2 if basis == "iswap" else 1
    costs = [0, alone]  # of the first nodes
    ends: list[Pair | None] = [None]  # the pairs that these end with
    for i, j in pairwise(chain):
        pair = _pair(chain[i], chain[j])
        costs.append(costs[-1] + alone)
        if pair is not None and costs[-3] + pair.cost(basis) < costs[-1]:
            costs[-1] = costs[-3] + pair.cost(basis)
            ends.append(pair)
        else:
            ends.append(None)
    found: dict[int, Pair | None] = {}
    numbers = list(chain)
    k = len(numbers) - 1
    while k >= 0:
        pair = ends[k]
        if pair is not None:
            found |= {numbers[k - 1]: None, numbers[k]: pair}
        k -= 1 if pair is None else 2
    return costs[-1], found


def _pair(one: Node, other: Node) -> Pair | None:
    """Two CNOTs on the same wires, None where symbols between them are in the way."""
    a, b = one[0].qubits
    runs = dict(zip(other[0].qubits, other[1], strict=True))
    turned = other[0].qubits != one[0].qubits
    frame = [gate("H", a), gate("H", b)] if turned else []
    on_control = _taken_apart([*runs[a], *frame[:1]], "Z", "X")
    on_target = _taken_apart([*runs[b], *frame[1:]], "X", "Z")
    if on_control is None or on_target is None:
        return None
    before = [*on_control[0], *on_target[0]]
    after = [*on_control[2], *on_target[2], *frame]
    return Pair(a, b, on_control[1], on_target[1], before, after)


def _taken_apart(run: Run, outer: str, inner: str) -> tuple[Run, Parameter, Run] | None:
    """A run as rotations about the outer axis, by an angle about the inner one, and about the outer
    one."""
    none = Parameter._number(0.0)
    gates = fused_run(run)
    parts = [_runs.turn_of(each) for each in gates]
    axes = [part[0] if part else "" for part in parts]
    if axes in ([], [outer]):
        return gates, none, []
    if len(gates) == 1 and axes != [inner] and not _runs.is_symbolic(gates[0]):
        (on,) = gates[0].qubits
        first, middle, last = _runs.euler(_runs.quaternion(gates), outer, inner)
        before, after = (gate(f"R{outer}", on, by=Parameter._number(x)) for x in (first, last))
        return [before], Parameter._number(middle), [after]
    start, end = int(axes[0] == outer), len(gates) - int(axes[-1] == outer)
    if axes[start:end] == [inner] and (part := parts[start]) is not None:
        return gates[:start], part[1], gates[end:]
    return None

"""Circuits routed by SWAP gates: each is the one that brings the next gates nearest to edges.

Literature: G. Li, Y. Ding, Y. Xie, "Tackling the qubit mapping problem for NISQ-era quantum
devices" (ASPLOS 2019).
"""

from __future__ import annotations

import random
from collections import defaultdict
from collections.abc import Callable, Iterator, Sequence
from dataclasses import dataclass, replace
from itertools import pairwise

from zeltbraidwerk._placement import Placement, distances, embedding, placements
from zeltbraidwerk.circuits import Circuit
from zeltbraidwerk.devices import Device
from zeltbraidwerk.gates import Gate
from zeltbraidwerk.instructions import Conditional, Operation

_AHEAD = 40  # two-qubit gates after the next ones that are looked at
_WEIGHT_AHEAD = 1.0  # of all of these, against the next ones
_LETTERS = {
    "CNOT": "ZX", "CSIGN": "ZZ", "CZ": "ZZ", "X": "X", "Y": "Y", "Z": "Z", "S": "Z", "D-S": "Z",
    "RX": "X", "RY": "Y", "RZ": "Z", "PH": "Z",
}  # fmt: skip
_REUSE = 0.1  # what a SWAP costs for each one on the same wire since the last gate
_SETTLED = 2_000  # first gates of a circuit that a placement is made better for
_SWEEPS = 4  # there and back over the circuit, for a better placement


@dataclass(frozen=True)
class Route:
    """A circuit on the wires of a device, where its qubits begin, and where each wire ends."""

    circuit: Circuit
    placement: Placement
    ends: Placement


Late = Callable[[], bool]
Router = Callable[[Circuit, Device, Placement | None, int, int, Late], Iterator[Route]]


class OutOfTimeError(Exception):
    """Raised amid a route when it is late."""


def routes(
    circuit: Circuit, device: Device, given: Placement | None, tries: int, seed: int,
    late: Late = lambda: False,
) -> Iterator[Route]:  # fmt: skip
    """Ways to route the gates of a circuit; one alone where a placement is found that takes no
    SWAP. Raises an OutOfTimeError when ``late`` says so."""
    rng = random.Random(seed)
    router = _Router(circuit, device, late)
    if given is None and (place := embedding(circuit, device, rng)) is not None:
        yield router.route(place, rng)
        return
    if given is None:
        near = list(placements(circuit, device, tries, seed, late))
        starts = [near[k // 2 % len(near)] if k % 2 == 0 else
                  tuple(rng.sample(range(device.n), circuit.n)) for k in range(tries)]  # fmt: skip
    else:
        starts = [given] * tries
    for start in starts:
        place = start if given is not None else router.settled(start, rng)
        yield router.route(place, rng)


def plainly(circuit: Circuit, device: Device) -> Circuit:
    """The circuit at once, long as it may be: around each gate that is on no edge, SWAPs bring its
    qubits together and back. Qubit q is on wire q before and after each operation."""
    made: list[Operation] = []
    for item in circuit.operations:
        there: list[Gate] = []
        if isinstance(item, Gate) and len(item.qubits) == 2:
            path = _path(device, *item.qubits)
            for a, b in pairwise(path[:-1]):
                there += _swap(a, b)
            item = Gate._trusted(item.name, (path[-2], path[-1]), item.params)
        made += [*there, item, *reversed(there)]
    return Circuit._trusted(device.n, tuple(made), circuit.classical)


def with_conditions_on_edges(circuit: Circuit, device: Device) -> Circuit:
    """Each classically controlled gate that is on no edge is put on one: around it, a SWAP
    exchanges its first qubit with a neighbor of the second. SWAPs may themselves be on no edge."""
    made: list[Operation] = []
    for item in circuit.operations:
        there: list[Gate] = []
        if isinstance(item, Conditional) and item.gate and len(item.qubits) == 2:
            a, b = item.qubits
            near = _path(device, a, b)[-2]
            if near != a:
                there = _swap(a, near)
                moved = Gate._trusted(item.gate.name, (near, b), item.gate.params)
                item = replace(item, operation=moved)
        made += [*there, item, *there]
    return Circuit._trusted(circuit.n, tuple(made), circuit.classical)


def _path(device: Device, start: int, end: int) -> list[int]:
    """A shortest one, both ends among it."""
    before = {start: start}
    front = [start]
    while end not in before:
        front = [b for a in front for b in device.neighbors(a) if before.setdefault(b, a) == a]
    path = [end]
    while path[-1] != start:
        path.append(before[path[-1]])
    return path[::-1]


def _swap(a: int, b: int) -> list[Gate]:
    return [Gate._trusted("CNOT", pair, ()) for pair in ((a, b), (b, a), (a, b))]


class _Router:
    def __init__(self, circuit: Circuit, device: Device, late: Late) -> None:
        self.late = late
        self.gates = circuit.unitary().gates
        self.device = device
        self.distances = distances(device).tolist()
        self.neighbors = [device.neighbors(wire) for wire in range(device.n)]

    def settled(self, place: Placement, rng: random.Random) -> Placement:
        """Where qubits end after routing the first gates there and back: a good place to begin."""
        there = self.gates[:_SETTLED]
        for _ in range(_SWEEPS):
            for gates in (there, there[::-1]):
                sweep = _Sweep(self, gates, place, rng)
                for _ in sweep.steps():
                    pass
                place = tuple(sweep.place)
        return place

    def route(self, place: Placement, rng: random.Random) -> Route:
        sweep = _Sweep(self, self.gates, place, rng)
        made: list[Gate] = []
        at = list(range(self.device.n))  # what is on each wire: the wire where it began
        for k, wires in sweep.steps():
            if k is None:
                a, b = wires
                at[a], at[b] = at[b], at[a]
                made += _swap(a, b)
            else:
                gate = self.gates[k]
                made.append(Gate._trusted(gate.name, wires, gate.params))
        ends = [0] * self.device.n
        for wire, start in enumerate(at):
            ends[start] = wire
        return Route(Circuit._trusted(self.device.n, tuple(made)), place, tuple(ends))


class _Sweep:
    """One pass over gates."""

    def __init__(self, router: _Router, gates: Sequence[Gate], place: Placement,
                 rng: random.Random) -> None:  # fmt: skip
        self.router, self.gates, self.rng = router, gates, rng
        self.place = list(place)
        self.content: list[int | None] = [None] * router.device.n
        for q, wire in enumerate(place):
            self.content[wire] = q
        self.left = _runs(gates, len(place))
        self.pairs = [k for k, gate in enumerate(gates) if len(gate.qubits) == 2]
        self.done = [False] * len(gates)
        self.first = 0  # of the pairs that are not all done

    def steps(self) -> Iterator[tuple[int | None, tuple[int, ...]]]:
        """The numbers of gates, None for SWAPs, and their wires."""
        front = [k for k in range(len(self.gates)) if self._is_next(k)]
        used: dict[int, int] = defaultdict(int)
        while front:
            waiting: list[int] = []
            while front:
                k = front.pop()
                wires = tuple(self.place[q] for q in self.gates[k].qubits)
                if len(wires) == 2 and self.router.distances[wires[0]][wires[1]] > 1:
                    waiting.append(k)
                    continue
                yield k, wires
                used.clear()
                self.done[k] = True
                front += self._after(k)
            if self.router.late():
                raise OutOfTimeError
            if waiting:
                a, b = self._best(waiting, used)
                yield None, (a, b)
                used[a] += 1
                used[b] += 1
                self._swap(a, b)
            front = waiting

    def _after(self, k: int) -> list[int]:
        """Gates that gate k was the last one to hold up."""
        freed: set[int] = set()
        for q in self.gates[k].qubits:
            runs = self.left[q]
            runs[-1].discard(k)
            if not runs[-1]:
                runs.pop()
                freed |= runs[-1] if runs else set()
        return sorted(each for each in freed if self._is_next(each))

    def _is_next(self, k: int) -> bool:
        return all(k in self.left[q][-1] for q in self.gates[k].qubits)

    def _swap(self, a: int, b: int) -> None:
        content = self.content
        content[a], content[b] = content[b], content[a]
        for wire in (a, b):
            if (q := content[wire]) is not None:
                self.place[q] = wire

    def _best(self, waiting: list[int], used: dict[int, int]) -> tuple[int, int]:
        """Ties are drawn. After many SWAPs without a gate, the first gate alone counts, so that it
        ends."""
        stuck = sum(used.values()) > 6 * self.router.device.n
        targets = [min(waiting)] if stuck else sorted(waiting)
        ahead = [] if stuck else self._ahead(waiting)
        pull: dict[int, list[tuple[int, float]]] = defaultdict(list)
        for listed, weight in ((targets, 1.0), (ahead, _WEIGHT_AHEAD)):
            for k in listed:
                a, b = self.gates[k].qubits
                pull[a].append((b, weight / len(listed)))
                pull[b].append((a, weight / len(listed)))
        best, lowest = (0, 0), float("inf")
        for wire in sorted({self.place[q] for k in targets for q in self.gates[k].qubits}):
            for other in self.router.neighbors[wire]:
                cost = self._change(wire, other, pull) + self.rng.random() * 1e-9
                if not stuck:
                    cost += _REUSE * (used[wire] + used[other])
                if cost < lowest:
                    best, lowest = (wire, other), cost
        return best

    def _change(self, a: int, b: int, pull: dict[int, list[tuple[int, float]]]) -> float:
        """Of the weighted distances, where a and b are exchanged."""
        change = 0.0
        for here, there in ((a, b), (b, a)):
            q, partner = self.content[here], self.content[there]
            if q is None or q not in pull:
                continue
            near, far = self.router.distances[here], self.router.distances[there]
            for other, weight in pull[q]:
                if other != partner:
                    wire = self.place[other]
                    change += weight * (far[wire] - near[wire])
        return change

    def _ahead(self, waiting: list[int]) -> list[int]:
        while self.done[self.pairs[self.first]]:
            self.first += 1
        found: list[int] = []
        for k in self.pairs[self.first :]:
            if len(found) == _AHEAD:
                break
            if not self.done[k] and k not in waiting:
                found.append(k)
        return found


def _runs(gates: Sequence[Gate], n: int) -> list[list[set[int]]]:
    """The gates of each qubit as runs that act there by the same Pauli letter, and so may change
    places; the first run last."""
    runs: list[list[set[int]]] = [[] for _ in range(n)]
    letters = [""] * n
    for k in reversed(range(len(gates))):
        gate = gates[k]
        for q, letter in zip(gate.qubits, _LETTERS.get(gate.name, ("", "")), strict=False):
            if not letter or letter != letters[q]:
                runs[q].append(set())
            runs[q][-1].add(k)
            letters[q] = letter
    return runs

"""Devices whose edges differ: what a circuit costs there, and where it costs least."""

from __future__ import annotations

from collections import Counter, defaultdict
from collections.abc import Iterator, Sequence
from dataclasses import dataclass
from typing import Any

import numpy as np

from zeltbraidwerk import _device_parts, _edge_costs, errors
from zeltbraidwerk._edge_costs import Costs, Edge
from zeltbraidwerk.devices import Device

# Parts of edges, the worst ones, that are left out in turn where the rest stays connected.
_LEFT_OUT = (0.0, 0.2, 0.4)
_MOST_PARTS = 12  # of which distances are measured
_MOST_NODES = 20_000  # of a search for places


@dataclass(frozen=True)
class Weights:
    """What a gate on each edge costs, and what of it a circuit takes."""

    objective: _edge_costs.Kind
    costs: Costs

    @classmethod
    def of(cls, device: Device | None, objective: _edge_costs.Kind) -> Weights:
        name = "edge_errors" if objective == "error" else "edge_durations"
        if device is None:
            raise errors.OptionError(
                f"objective: got {objective!r}, wanted 'count' or 'depth', or a device with {name}"
            )
        return cls(objective, device._costs(objective, "objective"))

    @property
    def searched(self) -> Any:
        """What a search that does not know the costs makes small."""
        return "count" if self.objective == "error" else "depth"

    def of_gates(self, gates: Sequence[Edge]) -> float:
        measure = _edge_costs.total if self.objective == "error" else _edge_costs.longest_path
        return measure(self.costs, gates)

    def of_circuit(self, circuit: Any) -> float:
        return self.of_gates(_edge_costs.gates_of(circuit))


# --- parts of a device --------------------------------------------------------------------------


def grounds(device: Device, n: int, costs: Costs) -> Iterator[Device]:
    """The device without edges of infinite cost, as it would be used without costs; then the part
    of n qubits that are nearest to each other, with fewer and fewer of its edges."""
    usable = [edge for edge in device.edges if costs[edge] < np.inf]
    plain = device.without([edge for edge in device.edges if costs[edge] == np.inf])
    yield plain
    near = _device_parts.neighbours_of(device.n, usable)
    parts = {_grown(near, costs, start, n) for start in range(device.n)} - {None}
    inner = {part: [e for e in usable if part.issuperset(e)] for part in parts if part is not None}
    by_edges = sorted(inner, key=lambda part: (-_conductance(inner[part], costs), sorted(part)))
    if n < 2 or not by_edges:
        return
    best = min(
        by_edges[:_MOST_PARTS],
        key=lambda part: (_mean_distance(sorted(part), inner[part], costs), sorted(part)),
    )
    seen = {plain.edges}
    for share in _LEFT_OUT:
        kept = _without_worst(sorted(best), inner[best], costs, share)
        ground = device.without(set(device.edges).difference(kept))
        if ground.edges not in seen:
            seen.add(ground.edges)
            yield ground


def _grown(
    near: _device_parts.Neighbours, costs: Costs, start: int, n: int
) -> frozenset[int] | None:
    """A connected part; the qubit that is joined to it best comes next."""
    part = {start}
    while len(part) < n:
        gains: defaultdict[int, float] = defaultdict(float)
        for a in part:
            for b in near[a] - part:
                gains[b] += _gain(costs[min(a, b), max(a, b)])
        if not gains:
            return None
        part.add(max(gains, key=lambda q: (gains[q], -q)))
    return frozenset(part)


def _gain(cost: float) -> float:
    return 1 / max(cost, 1e-12)


def _conductance(edges: Sequence[Edge], costs: Costs) -> float:
    return sum(_gain(costs[edge]) for edge in edges)


def _mean_distance(part: Sequence[int], edges: Sequence[Edge], costs: Costs) -> float:
    """Of all pairs, by the cheapest paths."""
    place = {qubit: k for k, qubit in enumerate(part)}
    far = np.full((len(part), len(part)), np.inf)
    np.fill_diagonal(far, 0)
    for a, b in edges:
        far[place[a], place[b]] = far[place[b], place[a]] = costs[a, b]
    for k in range(len(part)):
        far = np.minimum(far, far[:, k, None] + far[None, k])
    return float(far.mean())


def _without_worst(
    part: Sequence[int], edges: Sequence[Edge], costs: Costs, share: float
) -> list[Edge]:
    """Without that share of the edges, the worst ones without which the part stays connected."""
    kept = list(edges)
    for edge in sorted(edges, key=lambda each: (-costs[each], each)):
        if len(edges) - len(kept) >= round(share * len(edges)):
            break
        rest = [other for other in kept if other != edge]
        near = _device_parts.neighbours_of(part[-1] + 1, rest)
        if any(len(piece) == len(part) for piece in _device_parts.components(near)):
            kept = rest
    return kept


# --- places -------------------------------------------------------------------------------------


def places(circuit: Any, device: Device, weights: Weights) -> list[int]:
    """Where each qubit of the device is best moved to, all gates on edges: the cheapest of the
    first places that a search with bounds looks at, or none where that is no gain."""
    gates = _edge_costs.gates_of(circuit)
    uses = Counter((min(pair), max(pair)) for pair in gates)
    to = _Embedding(uses, device, weights.costs).best()
    stays = list(range(device.n))
    if not to:
        return stays
    left = sorted(set(stays).difference(to.values()))
    for q in stays:
        if q not in to and q in left:
            to[q] = q
            left.remove(q)
    for q in stays:
        if q not in to:
            to[q] = left.pop(0)
    moved = [(to[a], to[b]) for a, b in gates]
    return [to[q] for q in stays] if weights.of_gates(moved) < weights.of_gates(gates) else stays


class _Embedding:
    """Places for the qubits of a circuit, one after the other, each joined to those before."""

    def __init__(self, uses: Counter[Edge], device: Device, costs: Costs) -> None:
        self._costs, self._device = costs, device
        self._uses: dict[int, dict[int, int]] = {}
        for (a, b), count in uses.items():
            self._uses.setdefault(a, {})[b] = count
            self._uses.setdefault(b, {})[a] = count
        self._order: list[int] = []
        while len(self._order) < len(self._uses):
            rest = set(self._uses).difference(self._order)
            self._order.append(max(rest, key=self._attraction))
        self._least = sum(count * costs[edge] for edge, count in uses.items())
        self._best: dict[int, int] = {}
        self._nodes = 0

    def best(self) -> dict[int, int]:
        """Empty where none is cheaper."""
        self._extend({}, 0.0)
        return self._best

    def _attraction(self, q: int) -> tuple[int, int, int]:
        before = sum(self._uses[q].get(other, 0) for other in self._order)
        return before, sum(self._uses[q].values()), -q

    def _extend(self, place: dict[int, int], cost: float) -> None:
        if len(place) == len(self._order):
            self._least, self._best = cost, dict(place)
            return
        q = self._order[len(place)]
        for added, target in self._choices(q, place):
            self._nodes += 1
            if cost + added >= self._least * (1 - 1e-12) or self._nodes > _MOST_NODES:
                return
            place[q] = target
            self._extend(place, cost + added)
            del place[q]

    def _choices(self, q: int, place: dict[int, int]) -> list[tuple[float, int]]:
        """The cheapest first."""
        joined = [(place[other], count) for other, count in self._uses[q].items() if other in place]
        free = set(range(self._device.n)).difference(place.values())
        for there, _ in joined:
            free &= set(self._device.neighbors(there))
        return sorted(
            (sum(c * self._costs[min(t, there), max(t, there)] for there, c in joined), t)
            for t in free
        )

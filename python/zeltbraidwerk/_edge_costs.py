"""What gates on the edges of a device cost, and a circuit of them."""

from __future__ import annotations

import math
from collections.abc import Iterable, Mapping
from itertools import combinations
from typing import Any, Literal

Edge = tuple[int, int]
Costs = Mapping[Edge, float]  # of a gate on each edge, the lower qubit first
Kind = Literal["error", "duration"]


def of_errors(edges: Iterable[Edge], rates: Costs) -> dict[Edge, float]:
    """-log(1 - rate), infinite where gates always fail. Edges of unknown rate count as the worst
    that is known of the others."""
    worst = max((rate for rate in rates.values() if rate < 1), default=0.0)
    found = {}
    for edge in edges:
        rate = rates.get(edge, worst)
        found[edge] = math.inf if rate == 1 else -math.log1p(-rate)
    return found


def of_durations(edges: Iterable[Edge], seconds: Costs) -> dict[Edge, float]:
    """Edges of unknown duration count as the slowest that is known."""
    slowest = max(seconds.values(), default=0.0)
    return {edge: seconds.get(edge, slowest) for edge in edges}


def gates_of(circuit: Any) -> list[Edge]:
    """The pairs of qubits that have a gate, in order."""
    return [pair for _, qubits, _ in circuit._operations() for pair in combinations(qubits, 2)]


def total(costs: Costs, gates: Iterable[Edge]) -> float:
    return math.fsum(costs[min(a, b), max(a, b)] for a, b in gates)


def longest_path(costs: Costs, gates: Iterable[Edge]) -> float:
    """Each gate begins when both qubits are free."""
    ends: dict[int, float] = {}
    for a, b in gates:
        cost = costs[min(a, b), max(a, b)]
        ends[a] = ends[b] = max(ends.get(a, 0.0), ends.get(b, 0.0)) + cost
    return max(ends.values(), default=0.0)

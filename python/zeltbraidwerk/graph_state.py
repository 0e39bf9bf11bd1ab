"""Circuits that prepare graph states, with fewer gates than one an edge.

The graph state of a graph has every qubit in the state plus, and a CZ on every edge. For vertex i,
X on it times Z on its neighbours leaves the state as it is.

>>> import zeltbraidwerk as zb
>>> complete = [[int(i != j) for j in range(6)] for i in range(6)]  # 15 edges
>>> result = zb.graph_state.synthesize(complete, seed=1)
>>> result.count, result.verify()
(5, True)
"""

from __future__ import annotations

import secrets
import time
from collections.abc import Callable
from dataclasses import dataclass, field
from functools import partial
from typing import Any

import numpy as np
import numpy.typing as npt

from zeltbraidwerk import _core, _pauli_check, _search, _validate, errors
from zeltbraidwerk._operations import circuit_of
from zeltbraidwerk._results import HoldsCircuit
from zeltbraidwerk.circuits import Circuit
from zeltbraidwerk.linear import Objective

__all__ = ["GraphStateSynthesis", "methods", "synthesize"]

_METHODS = ("naive", "decoding")
_Found = tuple[str, npt.NDArray[np.int32], int, int]
_DEFAULT_RUNS = 10


def methods() -> tuple[str, ...]:
    """The names that ``method`` takes.

    >>> methods()
    ('auto', 'naive', 'decoding')
    """
    return ("auto", *_METHODS)


@dataclass(frozen=True, repr=False)
class GraphStateSynthesis(HoldsCircuit):
    """A circuit that turns all qubits, being 0, into a graph state, and how it came about."""

    circuit: Circuit
    graph: npt.NDArray[np.bool_] = field(compare=False)
    method: str
    seed: int | None
    runs: int = field(compare=False)
    seconds: float = field(compare=False)

    def verify(self) -> bool:
        """Follows the stabilisers of the graph state back through the circuit, gate by gate and
        apart from the library, to what leaves all qubits 0: Z alone, and no sign."""
        pulled = _pauli_check.PulledBack(self.n)
        for gate in self.circuit:
            pulled.append(gate)
        images = [pulled.image(stabiliser) for stabiliser in self.stabilisers()]
        return all(not minus and not set(letters) - set("IZ") for minus, letters in images)

    def stabilisers(self) -> list[str]:
        """X on a vertex, or Y where it has a loop, and Z on its neighbours."""
        return [
            "".join("XY"[entry] if k == i else "IZ"[entry] for k, entry in enumerate(row))
            for i, row in enumerate(self.graph.astype(int).tolist())
        ]

    def __repr__(self) -> str:
        edges = int(np.triu(self.graph, 1).sum())
        return (
            f"GraphStateSynthesis({self.method}: {self.n} qubits, {edges} edges, "
            f"{self.count} two-qubit gates, depth {self.depth}, {self.seconds:.2g} s)"
        )


def synthesize(
    graph: Any,
    *,
    method: str = "auto",
    objective: Objective = "count",
    tries: int = 100,
    seed: int | None = None,
    restarts: int | None = None,
    budget: float | None = None,
    jobs: int | None = 1,
    progress: Callable[[int], object] | None = None,
) -> GraphStateSynthesis:
    """A circuit of H, CZ, CNOT, S and Z gates that prepares a graph state from all qubits 0.

    ``graph`` is a symmetric 0/1 matrix, or a graph of networkx or rustworkx, whose nodes are
    numbered in their order. A one on the diagonal, a loop, is an S on that qubit.

    "naive" takes a CZ an edge. "decoding" builds the state vertex by vertex, each attached by few
    gates found by syndrome decoding with ``tries`` random restarts. "auto" takes the better.
    ``objective`` is "count" or "depth" of gates on two qubits. ``restarts`` is the number of runs,
    later ones in another order of the vertices; the other options are as in
    :func:`zeltbraidwerk.linear.synthesize`.
    """
    start = time.perf_counter()
    adjacency = _adjacency(graph)
    if method not in methods():
        raise errors.UnknownMethodError(
            f"method: got {method!r}, wanted one of {', '.join(methods())}"
        )
    _validate.choice(objective, "objective", ("count", "depth"))
    tries = _validate.integer(tries, "tries", 0, 2**31 - 1)
    effort = _search.Effort.checked(seed, restarts, budget, jobs)
    drawn = secrets.randbits(64) if effort.seed is None else effort.seed
    control = _core._SearchControl(effort.budget)
    by_depth = objective == "depth"

    def run(name: str, first: int, last: int) -> tuple[int, _Found] | None:
        found = _core._best_graph_state(
            adjacency, tries if name == "decoding" else -1, drawn, first, last, by_depth, control
        )
        return None if found is None else (found[0], (name, *found[1:]))

    def key(found: _Found) -> tuple[int, int]:
        *_, count, depth = found
        return (depth, count) if by_depth else (count, depth)

    runs = effort.restarts
    if runs is None and effort.budget is None:
        runs = _DEFAULT_RUNS
    trace = _search.Trace(by_depth, progress)
    lanes = [
        _search.Lane(partial(run, name), 1 if name == "naive" else runs)
        for name in (_METHODS if method == "auto" else (method,))
    ]

    def result(found: _Found, made: int) -> GraphStateSynthesis:
        name, operations, *_ = found
        return GraphStateSynthesis(
            circuit=circuit_of(len(adjacency), operations),
            graph=adjacency,
            method=name,
            seed=drawn,
            runs=made,
            seconds=time.perf_counter() - start,
        )

    return result(*_search.best_of(lanes, effort.jobs, control, key, result, trace))


def _adjacency(graph: Any) -> npt.NDArray[np.bool_]:
    package = type(graph).__module__.partition(".")[0]
    if package == "networkx":
        places = {node: k for k, node in enumerate(graph.nodes)}
        return _from_edges(len(places), [(places[a], places[b]) for a, b in graph.edges()])
    if package == "rustworkx":
        places = {node: k for k, node in enumerate(graph.node_indices())}
        edges = graph.edge_list()
        return _from_edges(len(places), [(places[a], places[b]) for a, b in edges])
    matrix = _validate.bit_matrix(graph, "graph")
    if not np.array_equal(matrix, matrix.T):
        i, j = np.argwhere(matrix != matrix.T)[0]
        raise errors.ShapeError(
            f"graph: got different entries at ({i}, {j}) and ({j}, {i}), wanted a symmetric matrix"
        )
    return _validate.frozen(matrix.copy())


def _from_edges(n: int, edges: list[tuple[int, int]]) -> npt.NDArray[np.bool_]:
    matrix = np.zeros((n, n), dtype=np.bool_)
    for a, b in edges:
        matrix[a, b] = matrix[b, a] = True
    return _validate.frozen(matrix)

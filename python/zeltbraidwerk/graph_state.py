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

from zeltbraidwerk import _core, _couplings, _search, _states, _validate, errors
from zeltbraidwerk._operations import circuit_of
from zeltbraidwerk._results import HoldsCircuit
from zeltbraidwerk.circuits import Circuit
from zeltbraidwerk.linear import Objective

__all__ = ["GraphStateSynthesis", "methods", "synthesize"]

_METHODS = ("naive", "decoding", "search")
_AUTO = ("naive", "search")
_DEFAULT_RUNS = 10
_TRIES = 100
_TAKERS = {
    "tries": ("decoding",),
    "restarts": ("auto", "decoding", "search"),
    "budget": ("auto", "decoding", "search"),
    "steps": ("auto", "search"),
}


def methods() -> tuple[str, ...]:
    """The names that ``method`` takes.

    >>> methods()
    ('auto', 'naive', 'decoding', 'search')
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
    trace: tuple[_search.Point, ...] = field(compare=False, default=())

    def verify(self) -> bool:
        """Follows the stabilisers of the graph state back through the circuit, gate by gate and
        apart from the library, to what leaves all qubits 0: Z alone, and no sign."""
        return _states.prepares(self.circuit, self.stabilisers())

    def stabilisers(self) -> list[str]:
        """X on a vertex, or Y where it has a loop, and Z on its neighbours."""
        return _stabilisers(self.graph)

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
    tries: int | None = None,
    seed: int | None = None,
    restarts: int | None = None,
    budget: float | None = None,
    steps: int | None = None,
    jobs: int | None = 1,
    progress: Callable[[_search.Progress], object] | None = None,
) -> GraphStateSynthesis:
    """A circuit of CNOT, CZ and gates on one qubit that prepares a graph state from all qubits 0.

    ``graph`` is a symmetric 0/1 matrix, or an undirected graph of networkx or rustworkx without
    parallel edges. Its nodes are numbered from 0: integers in ascending order, nodes of any other
    kind in the order of ``graph.nodes``. A one on the diagonal, or a loop, is an S on that qubit.
    A list of edges is refused; ``[[1, 0], [0, 1]]``, which may be one, must be an array of bool.

    "naive" takes one CZ per edge. "decoding" builds the state vertex by vertex, each attached by
    few gates found by syndrome decoding with ``tries`` random restarts (default: 100); ``restarts``
    is the number of its runs, later ones in another order of the vertices. "search" begins with one
    gate per edge and gets better for as long as it may go on, as in
    :func:`zeltbraidwerk.linear.synthesize`, which explains the other options too. "auto" takes the
    better of "naive" and "search". ``objective`` is "count" or "depth" of gates on two qubits.
    An option that the method does not take is refused.
    """
    start = time.perf_counter()
    adjacency = _adjacency(graph)
    _validate.method(method, methods())
    _validate.choice(objective, "objective", ("count", "depth"))
    _validate.options_of(
        method, _TAKERS, tries=tries, restarts=restarts, budget=budget, steps=steps
    )
    most_tries = _TRIES if tries is None else _validate.integer(tries, "tries", 0, 2**31 - 1)
    effort = _search.Effort.checked(seed, restarts, budget, jobs, steps, progress)
    drawn = secrets.randbits(64) if effort.seed is None else effort.seed
    control = _core._SearchControl(effort.budget)
    by_depth = objective == "depth"

    def run(name: str, first: int, last: int) -> tuple[int, _states.Found] | None:
        found = _core._best_graph_state(
            adjacency,
            most_tries if name == "decoding" else -1,
            drawn,
            first,
            last,
            by_depth,
            control,
        )
        if found is None:
            return None
        number, operations, count, depth = found
        return number, (name, circuit_of(len(adjacency), operations), count, depth)

    runs = effort.restarts
    if runs is None and effort.budget is None:
        runs = _DEFAULT_RUNS
    trace = _search.Trace(by_depth, progress)
    lanes: list[_search.Lane[_states.Found]] = []
    for name in _AUTO if method == "auto" else (method,):
        if name == "search":
            stabilisers = [(False, word) for word in _stabilisers(adjacency)]
            lane = _states.search_lane(stabilisers, by_depth, effort, drawn, control)
        else:
            lane = _search.Lane(partial(run, name), 1 if name == "naive" else runs)
        lanes.append(lane)

    def result(found: _states.Found, made: int) -> GraphStateSynthesis:
        name, circuit, *_ = found
        return GraphStateSynthesis(
            circuit=circuit,
            graph=adjacency,
            method=name,
            seed=drawn,
            runs=made,
            seconds=time.perf_counter() - start,
            trace=tuple(trace.points),
        )

    key = _states.by_depth if by_depth else _states.by_count
    return result(*_search.best_of(lanes, effort.jobs, control, key, result, trace))


def _stabilisers(graph: npt.NDArray[np.bool_]) -> list[str]:
    return [
        "".join("XY"[entry] if k == i else "IZ"[entry] for k, entry in enumerate(row))
        for i, row in enumerate(graph.astype(int).tolist())
    ]


def _adjacency(graph: Any) -> npt.NDArray[np.bool_]:
    if _couplings.is_graph(graph):
        nodes, edges = _couplings.graph(graph, "graph")
        place = _couplings.numbered(nodes)
        matrix = np.zeros((len(nodes), len(nodes)), dtype=np.bool_)
        for a, b in edges:
            matrix[place[a], place[b]] = matrix[place[b], place[a]] = True
        return _validate.frozen(matrix)
    _refuse_edges(graph)
    matrix = _validate.bit_matrix(graph, "graph")
    if not np.array_equal(matrix, matrix.T):
        i, j = np.argwhere(matrix != matrix.T)[0]
        raise errors.ShapeError(
            f"graph: got different entries at ({i}, {j}) and ({j}, {i}), wanted a symmetric matrix"
        )
    return _validate.frozen(matrix.copy())


def _refuse_edges(graph: Any) -> None:
    """Refuses pairs of vertices, and the one matrix that as pairs would be another graph."""
    rows = _validate.array(graph, "graph")
    if rows.ndim == 2 and rows.shape[1] == 2 != len(rows):
        raise errors.ShapeError(
            f"graph: got shape {rows.shape}, wanted a square matrix; of edges make a graph of "
            "networkx"
        )
    if rows.dtype != np.bool_ and np.array_equal(rows, [[1, 0], [0, 1]]):
        raise errors.GraphError(
            "graph: got [[1, 0], [0, 1]], which may be a matrix of two loops or one edge written "
            "twice; wanted an array of bool for the loops, or a graph of networkx"
        )

"""Circuits that prepare graph states, with fewer gates than one per edge.

The graph state of a graph has every qubit in the state plus, and a CZ on every edge. For vertex i,
X on it times Z on its neighbours leaves the state as it is.

>>> import zeltbraidwerk as zb
>>> complete = [[int(i != j) for j in range(6)] for i in range(6)]  # 15 edges
>>> result = zb.graph_state.synthesize(complete, seed=1)
>>> result.count, result.verify()
(5, True)
"""

from __future__ import annotations

from collections.abc import Callable, Iterable
from dataclasses import dataclass, field
from typing import Any

import numpy as np
import numpy.typing as npt

from zeltbraidwerk import (
    _calls,
    _core,
    _couplings,
    _renamed,
    _search,
    _states,
    _validate,
    errors,
    limits,
)
from zeltbraidwerk._family import Family, Found
from zeltbraidwerk._graph_classes import GraphStateClass, classes
from zeltbraidwerk._operations import circuit_of
from zeltbraidwerk._results import Objective, Permutation

__all__ = ["GraphStateClass", "GraphStateSynthesis", "classes", "methods", "synthesize"]

_FAMILY = Family(_core._graph_state_methods)


def methods(*, device: bool = False) -> tuple[str, ...]:
    """The names that ``method`` takes, without a device or with one.

    >>> methods(), methods(device=True)
    (('auto', 'naive', 'decoding', 'search'), ('auto', 'search'))
    """
    return _FAMILY.methods(device)


@dataclass(frozen=True, kw_only=True, repr=False)
class GraphStateSynthesis(_states.Preparation):
    """A circuit that prepares a graph state from qubits that are all 0, and how it was found.

    ``graph`` is the adjacency matrix. ``local`` holds the gates that the circuit leaves out with
    ``up_to="local"``, else None.
    """

    graph: npt.NDArray[np.bool_] = field(compare=False)

    stabilisers = _renamed.Field("stabilizers", lambda result: lambda: list(result.stabilizers))

    def verify(self) -> bool:
        """Follows the stabilizers of the graph state back through ``local`` and the circuit, gate
        by gate and without the library, to what leaves all qubits 0: Z alone, and no sign."""
        return self._prepares(self.stabilizers)

    @property
    def stabilizers(self) -> tuple[str, ...]:
        """For each vertex X, or Y where it has a loop, and Z on its neighbours."""
        return tuple(_stabilizers(self.graph))

    def _about(self) -> Iterable[str]:
        yield f"{int(np.triu(self.graph, 1).sum())} edges"
        yield from super()._about()


@_calls.recorded("graph_state.synthesize", "graph")
def synthesize(
    graph: Any,
    *,
    method: str = "auto",
    up_to: _states.UpTo = "phase",
    device: Any = None,
    objective: Objective = "count",
    permutation: Permutation = "exact",
    tries: int | None = None,
    seed: int | None = None,
    restarts: int | None = None,
    budget: float | None = None,
    steps: int | None = None,
    start: Any = None,
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
    gate per edge and finds shorter circuits the longer it runs, as in
    :func:`zeltbraidwerk.linear.synthesize`, which explains the other options too. "auto" takes the
    better of "naive" and "search".

    With ``up_to="local"`` the state is one that gates on single qubits after the circuit turn into
    the graph state: ``local`` of the result has them, for a machine that measures in any basis
    anyway. "search" finds the same number of gates on two qubits either way: it is that of the best
    circuit for any state equal up to local gates, so of all graphs that local complementations lead
    to; and often less than the edges of each of these graphs (:func:`classes`).

    With a ``device``, or what :meth:`zeltbraidwerk.Device.of` takes for one, every gate on two
    qubits is on one of its edges, found by "search". Of a larger device a connected part is taken:
    ``result.placement`` tells which. With ``permutation="free"`` the vertices stand on those of its
    qubits that suit them best, vertex v on ``result.placement[result.permutation[v]]``; with
    "exact", the default, in their order. Without a device both are the same.

    ``objective`` is "count" or "depth" of gates on two qubits, or on a device "error" or "duration"
    as for :func:`zeltbraidwerk.linear.synthesize`.
    An option that the method does not take is refused.
    """
    call = _FAMILY.call(
        method=method, device=device, objective=objective, permutation=permutation, seed=seed,
        restarts=restarts, budget=budget, steps=steps, jobs=jobs, progress=progress, start=start,
    )  # fmt: skip
    most = None if tries is None else _validate.integer(tries, "tries", 0, 2**31 - 1)
    _validate.choice(up_to, "up_to", ("phase", "local"))
    adjacency = _adjacency(graph)
    n = len(adjacency)
    call.place(n)

    def result(found: Found, gates: _core._HeldCliffords) -> GraphStateSynthesis:
        whole = circuit_of(call.width(n), gates, (), call.qubits(n))
        circuit, local = _states.parted(whole, up_to)
        return call.result(
            GraphStateSynthesis, found, n, circuit=circuit, local=local, graph=adjacency
        )

    return call.run(
        _core._synthesize_graph_state, result, adjacency, tries=most,
        outputs=_states.outputs_of(call),
    )  # fmt: skip


def _stabilizers(graph: npt.NDArray[np.bool_]) -> list[str]:
    return [
        "".join("XY"[entry] if k == i else "IZ"[entry] for k, entry in enumerate(row))
        for i, row in enumerate(graph.astype(int).tolist())
    ]


def _adjacency(graph: Any) -> npt.NDArray[np.bool_]:
    if _couplings.is_graph(graph):
        nodes, edges = _couplings.graph(graph, "graph")
        place = _couplings.numbered(nodes)
        limits.check_memory("graph", len(nodes), "nodes", 2 * len(nodes) ** 2)
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


_OF_EDGES = "of edges make a graph of networkx"


def _refuse_edges(graph: Any) -> None:
    """Refuses pairs of vertices, and the one matrix that as pairs would be another graph."""
    rows = _validate.array(graph, "graph")
    if rows.ndim == 2 and rows.shape[1] == 2 != len(rows):
        raise errors.ShapeError(
            f"graph: got shape {rows.shape}, wanted a square matrix; {_OF_EDGES}"
        )
    if rows.shape == (2, 2) and rows.dtype.kind in "iu" and (most := int(rows.max())) > 1:
        raise errors.EntryError(f"graph: got the entry {most}, wanted 0 and 1 alone; {_OF_EDGES}")
    if rows.dtype != np.bool_ and np.array_equal(rows, [[1, 0], [0, 1]]):
        raise errors.GraphError(
            "graph: got [[1, 0], [0, 1]], which may be a matrix of two loops or one edge written "
            "twice; wanted an array of bool for the loops, or a graph of networkx"
        )

"""Graphs of other packages, matrices and edges, as a number of qubits and pairs of them."""

from __future__ import annotations

from collections.abc import Hashable, Iterable, Mapping, Sequence
from dataclasses import dataclass
from typing import Any

import numpy as np

from zeltbraidwerk import _validate, errors

Graph = tuple[list[Any], list[tuple[Any, Any]]]  # nodes, and edges between them


@dataclass(frozen=True)
class Coupling:
    """What a device is made of: the number of its qubits, pairs of them, and what else is known."""

    n: int
    edges: list[tuple[int, int]]
    labels: Sequence[Hashable] | None = None
    edge_errors: Mapping[tuple[int, int], float] | None = None
    qubit_errors: Mapping[int, float] | None = None
    edge_durations: Mapping[tuple[int, int], float] | None = None


def is_graph(value: Any) -> bool:
    """Whether :func:`graph` reads it, or tells what is wrong with it."""
    return (_validate.comes_from(value, "networkx") and hasattr(value, "is_multigraph")) or (
        _validate.comes_from(value, "rustworkx") and hasattr(value, "node_indices")
    )


def graph(value: Any, name: str) -> Graph:
    """Nodes and edges of an undirected graph of networkx or rustworkx without parallel edges."""
    if not is_graph(value):
        raise errors.DtypeError(
            f"{name}: got {_validate.shown(value)}, wanted a graph of networkx or rustworkx"
        )
    if _validate.comes_from(value, "networkx"):
        directed, parallel, mended = value.is_directed(), value.is_multigraph(), "networkx.Graph(g)"
        nodes, edges = value.nodes, value.edges()
    else:
        directed, parallel = hasattr(value, "in_degree"), value.has_parallel_edges()
        mended = "g.to_undirected(multigraph=False)"
        nodes, edges = value.node_indices(), value.edge_list()
    if directed or parallel:
        kind = "directed graph" if directed else "graph with parallel edges"
        raise errors.GraphError(
            f"{name}: got a {kind}, wanted an undirected one with at most one edge between two "
            f"nodes, such as {mended}"
        )
    return list(nodes), [(a, b) for a, b in edges]


def numbered(nodes: Sequence[Any]) -> dict[Any, int]:
    """Numbers from 0 up: by integers in ascending order, by other nodes in the order given."""
    return {node: k for k, node in enumerate(sorted(nodes) if _integers(nodes) else nodes)}


def _integers(nodes: Iterable[Any]) -> bool:
    return all(isinstance(node, (int, np.integer)) and type(node) is not bool for node in nodes)


# --- devices ------------------------------------------------------------------------------------


def of_graph(value: Any, name: str) -> Coupling:
    """Integer nodes from 0 on, and indices of rustworkx, are the numbers of the qubits; missing
    numbers are qubits without an edge. Other nodes are numbered, and become labels."""
    nodes, edges = graph(value, name)
    is_indexed = _validate.comes_from(value, "rustworkx")
    kept = is_indexed or (_integers(nodes) and min(nodes, default=0) == 0)
    place = {node: int(node) for node in nodes} if kept else numbered(nodes)
    loop = next((a for a, b in edges if a == b), None)
    if loop is not None:
        raise errors.GraphError(f"{name}: got an edge from {loop!r} to itself, wanted none")
    most = _validate.integer(max(place.values(), default=-1), name, -1, 2**31 - 2)
    labels = _data_of_nodes(value, 1 + most) if is_indexed else None if kept else list(place)
    if labels is not None and _integers(labels):
        labels = list(map(int, labels))
    return Coupling(1 + most, [(place[a], place[b]) for a, b in edges], labels)


def _data_of_nodes(value: Any, n: int) -> list[Any] | None:
    """What a graph of rustworkx has for its nodes, where it tells them apart."""
    data = list(value.nodes())
    try:
        return data if len(set(data)) == len(data) == n else None
    except TypeError:
        return None


def is_adjacency(value: Any) -> bool:
    """Whether it is a sparse matrix, or a square array or list that cannot be one of pairs."""
    if _validate.comes_from(value, "scipy") and hasattr(value, "toarray"):
        return True
    if isinstance(value, (list, tuple)):
        rows = [len(row) for row in value if isinstance(row, (list, tuple))]
        return len(value) > 2 and rows == [len(value)] * len(value)
    shape = getattr(value, "shape", None)
    return isinstance(shape, tuple) and len(shape) == 2 and shape[0] == shape[1] != 2


def of_adjacency(value: Any, name: str) -> Coupling:
    """Of a symmetric matrix with 1 where there is an edge."""
    found = _validate.bit_matrix(value, name)
    if (found != found.T).any() or found.diagonal().any():
        raise errors.GraphError(
            f"{name}: got an adjacency matrix that is not symmetric or has edges from a qubit to "
            "itself, wanted a symmetric one with zeros on its diagonal"
        )
    return Coupling(len(found), [(int(a), int(b)) for a, b in np.argwhere(np.triu(found))])


def of_edges(value: Any, name: str) -> Coupling:
    """Of pairs, with the qubits 0 to the greatest number in them."""
    pairs = _validate.pairs(list(value) if isinstance(value, (set, frozenset)) else value, name)
    least = int(pairs.min(initial=2**31 - 1))
    if least < 0:
        raise errors.QubitError(f"{name}: got qubit {least}, wanted 0 or more")
    if len(pairs) and least > 0:
        raise errors.DeviceError(
            f"{name}: got {least} as the least qubit, wanted qubits from 0 up; where those below "
            f"{least} have no edge, say how many there are: Device(n, edges)"
        )
    return Coupling(1 + int(pairs.max(initial=-1)), pairs.tolist())

"""Graphs of other packages, and objects that have one, as a number of qubits and pairs of them."""

from __future__ import annotations

from collections.abc import Iterable, Sequence
from typing import Any

import numpy as np

from zeltbraidwerk import _validate, errors

Graph = tuple[list[Any], list[tuple[Any, Any]]]  # nodes, and edges between them
Couplings = tuple[int, list[tuple[int, int]]]  # number of qubits, and pairs of them


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


def of_graph(value: Any, name: str) -> Couplings:
    """Integer nodes from 0 on, and indices of rustworkx, are the numbers of the qubits; missing
    numbers are qubits without an edge. Other nodes are numbered."""
    nodes, edges = graph(value, name)
    kept = _validate.comes_from(value, "rustworkx") or (
        _integers(nodes) and min(nodes, default=0) == 0
    )
    place = {node: int(node) for node in nodes} if kept else numbered(nodes)
    loop = next((a for a, b in edges if a == b), None)
    if loop is not None:
        raise errors.GraphError(f"{name}: got an edge from {loop!r} to itself, wanted none")
    most = _validate.integer(max(place.values(), default=-1), name, -1, 2**31 - 2)
    return 1 + most, [(place[a], place[b]) for a, b in edges]


def of_qiskit(value: Any, name: str) -> Couplings:
    """Of a coupling map, or of a backend or target that has one."""
    found: Any = None
    if _validate.comes_from(value, "qiskit"):
        found = getattr(value, "coupling_map", None)
        if found is None and hasattr(value, "build_coupling_map"):
            found = value.build_coupling_map()
        found = value if found is None else found
    if not hasattr(found, "get_edges"):
        raise errors.DeviceError(
            f"{name}: got {_validate.shown(value)}, wanted a coupling map of Qiskit, or a backend "
            "or target that has one"
        )
    return found.size(), [(a, b) for a, b in found.get_edges()]


def of_pytket(value: Any, name: str) -> Couplings:
    """Of an architecture, whose nodes are numbered in their order."""
    if not (_validate.comes_from(value, "pytket") and hasattr(value, "coupling")):
        raise errors.DeviceError(
            f"{name}: got {_validate.shown(value)}, wanted an architecture of pytket"
        )
    place = {node: k for k, node in enumerate(value.nodes)}
    return len(place), [(place[a], place[b]) for a, b in value.coupling]


def is_adjacency(value: Any) -> bool:
    """Whether it is a sparse matrix, or a square array that cannot be one of pairs."""
    if _validate.comes_from(value, "scipy") and hasattr(value, "toarray"):
        return True
    shape = getattr(value, "shape", None)
    return isinstance(shape, tuple) and len(shape) == 2 and shape[0] == shape[1] != 2


def of_adjacency(value: Any, name: str) -> Couplings:
    """Of a symmetric matrix with 1 where there is an edge."""
    found = _validate.bit_matrix(value.toarray() if hasattr(value, "toarray") else value, name)
    if (found != found.T).any() or found.diagonal().any():
        raise errors.GraphError(
            f"{name}: got an adjacency matrix that is not symmetric or has edges from a qubit to "
            "itself, wanted a symmetric one with zeros on its diagonal"
        )
    return len(found), [(int(a), int(b)) for a, b in np.argwhere(np.triu(found))]


def of_edges(value: Any, name: str) -> Couplings:
    """Of pairs, with the qubits 0 to the greatest number in them."""
    pairs = _validate.pairs(list(value) if isinstance(value, (set, frozenset)) else value, name)
    least = int(pairs.min(initial=2**31 - 1))
    if len(pairs) and least > 0:
        raise errors.DeviceError(
            f"{name}: got {least} as the least qubit, wanted qubits from 0 up; where those below "
            f"{least} have no edge, say how many there are: Device(n, edges)"
        )
    return 1 + int(pairs.max(initial=-1)), pairs.tolist()

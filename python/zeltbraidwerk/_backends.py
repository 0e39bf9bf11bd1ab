"""Devices of Qiskit and pytket with the error rates and durations that they tell. Neither is
imported."""

from __future__ import annotations

from collections.abc import Iterable, Mapping
from itertools import combinations
from typing import Any

from zeltbraidwerk import _device_data, _validate, errors
from zeltbraidwerk._couplings import Coupling

# Not gates on a qubit.
_NO_GATES = frozenset(("measure", "reset", "delay"))


def of_qiskit(value: Any, name: str) -> Coupling:
    """Of a coupling map, or of a backend or target that has one."""
    found: Any = None
    target: Any = None
    if _validate.comes_from(value, "qiskit"):
        target = value if hasattr(value, "build_coupling_map") else getattr(value, "target", None)
        found = getattr(value, "coupling_map", None)
        if found is None and target is not None:
            found = target.build_coupling_map()
        found = value if found is None else found
    if not hasattr(found, "get_edges"):
        raise errors.DeviceError(
            f"{name}: got {_validate.shown(value)}, wanted a coupling map of Qiskit, or a backend "
            "or target that has one"
        )
    edges = [(a, b) for a, b in found.get_edges()]
    if target is None:
        return Coupling(found.size(), edges)
    return Coupling(found.size(), edges, None, *_rates_of_target(target, edges, name))


def _rates_of_target(
    target: Any, edges: Iterable[tuple[int, int]], name: str
) -> tuple[dict[tuple[int, int], float], dict[int, float], dict[tuple[int, int], float]]:
    pairs = {(min(edge), max(edge)) for edge in edges}
    on_edges, on_qubits, seconds = [], [], []
    for operation in target.operation_names:
        places = target[operation]
        if operation in _NO_GATES or not isinstance(places, Mapping):
            continue
        for qubits, properties in places.items():
            if qubits is None or properties is None:
                continue
            is_edge = len(qubits) == 2 and (min(qubits), max(qubits)) in pairs
            if (rate := properties.error) is not None and is_edge:
                on_edges.append(((min(qubits), max(qubits)), rate))
            elif rate is not None and len(qubits) == 1:
                on_qubits.append((qubits[0], rate))
            if properties.duration and is_edge:
                seconds.append(((min(qubits), max(qubits)), properties.duration))
    return (
        _least(on_edges, name, _device_data.rate),
        _greatest(on_qubits, name),
        _least(seconds, name, _device_data.seconds),
    )


def of_pytket(value: Any, name: str) -> Coupling:
    """Of an architecture, whose nodes are numbered in their order, or of a backend or its
    information, which have one."""
    info = getattr(value, "backend_info", value)
    architecture = getattr(info, "architecture", info)
    nodes = getattr(architecture, "nodes", None)
    if not _validate.comes_from(architecture, "pytket") or nodes is None:
        raise errors.DeviceError(
            f"{name}: got {_validate.shown(value)}, wanted an architecture of pytket, or a backend "
            "that has one"
        )
    place = {node: k for k, node in enumerate(nodes)}
    joined = getattr(architecture, "coupling", None)
    pairs = combinations(nodes, 2) if joined is None else joined  # fully connected
    edges = [(place[a], place[b]) for a, b in pairs]
    # The names that pytket gives tell no more than the numbers.
    numbered = all(node.index == [k] for node, k in place.items())
    labels = None if numbered else tuple(str(node) for node in nodes)
    if info is architecture:
        return Coupling(len(place), edges, labels)
    return Coupling(len(place), edges, labels, *_rates_of_pytket(info, place, edges, name))


def _rates_of_pytket(
    info: Any, place: Mapping[Any, int], edges: Iterable[tuple[int, int]], name: str
) -> tuple[dict[tuple[int, int], float], dict[int, float]]:
    pairs = {(min(edge), max(edge)) for edge in edges}
    on_edges, on_qubits = [], []
    for (a, b), rate in _by_place(info.all_edge_gate_errors, info.averaged_edge_gate_errors):
        edge = min(place[a], place[b]), max(place[a], place[b])
        if edge in pairs:
            on_edges.append((edge, rate))
    for node, rate in _by_place(info.all_node_gate_errors, info.averaged_node_gate_errors):
        on_qubits.append((place[node], rate))
    return _least(on_edges, name, _device_data.rate), _greatest(on_qubits, name)


def _by_place(
    by_gate: Mapping[Any, Mapping[Any, float]] | None, averaged: Mapping[Any, float] | None
) -> list[tuple[Any, float]]:
    if by_gate:
        return [(place, rate) for place, rates in by_gate.items() for rate in rates.values()]
    return list((averaged or {}).items())


def _least(
    values: Iterable[tuple[tuple[int, int], Any]], name: str, check: _device_data.Check
) -> dict[tuple[int, int], float]:
    """Of the gates on an edge, in both directions, the best is the one to take."""
    found: dict[tuple[int, int], float] = {}
    for edge, value in values:
        checked = check(value, name, edge)
        found[edge] = min(checked, found.get(edge, checked))
    return found


def _greatest(rates: Iterable[tuple[int, Any]], name: str) -> dict[int, float]:
    """Of the gates on a qubit some are made without a pulse, and without an error."""
    found: dict[int, float] = {}
    for qubit, value in rates:
        rate = _device_data.rate(value, name, qubit)
        found[qubit] = max(rate, found.get(qubit, rate))
    return found

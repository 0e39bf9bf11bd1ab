"""Bounds of results against breadth-first searches over all small instances, and the table of graph
states against one over all graphs with names."""

from collections import deque
from dataclasses import replace
from itertools import combinations, permutations

import numpy as np
import pytest

import zeltbraidwerk as zb

PAIRS = [(a, b) for a, b in permutations(range(3), 2)]
LINE = [(a, b) for a, b in PAIRS if abs(a - b) == 1]


def distances(first, moves):
    """From the states in ``first``: how many moves of cost 1, with any number of cost 0."""
    found = dict.fromkeys(first, 0)
    queue = deque(first)
    while queue:
        state = queue.popleft()
        for cost, child in moves(state):
            if found.get(child, 10**9) > found[state] + cost:
                found[child] = found[state] + cost
                (queue.append if cost else queue.appendleft)(child)
    return found


def after(rows, control, target):
    return tuple(row ^ rows[control] if r == target else row for r, row in enumerate(rows))


@pytest.mark.parametrize("device", [None, zb.Device.line(3)], ids=["all", "line"])
@pytest.mark.parametrize("permutation", ["exact", "free"])
def test_of_every_map_on_three_wires(device, permutation):
    # A layer on three wires is one gate: so layers and gates are as many.
    edges = PAIRS if device is None else LINE
    fewest = distances([(1, 2, 4)], lambda rows: [(1, after(rows, *edge)) for edge in edges])
    assert len(fewest) == 168
    proven = 0
    for number, (rows, gates) in enumerate(fewest.items()):
        if permutation == "free":
            gates = min(fewest[each] for each in permutations(rows))
        matrix = np.array([[row >> c & 1 for c in range(3)] for row in rows])
        objective = ("count", "depth")[number % 2]
        plain = "pmh" if device is None else "row_column"
        given = {"device": device, "permutation": permutation, "objective": objective, "seed": 1}
        for own in ({"method": "search", "steps": 200}, {"method": plain}):
            result = zb.linear.synthesize(matrix, **own, **given)
            value = getattr(result, objective)
            assert (result.bound or 0) <= gates <= value
            assert not result.is_optimal or value == gates
            proven += result.is_optimal
    assert proven > 168


def complemented(graph, n, v):
    around = [w for w in range(n) if w != v and graph >> bit(n, v, w) & 1]
    for a, b in combinations(around, 2):
        graph ^= 1 << bit(n, a, b)
    return graph


def bit(n, a, b):
    return max(a, b) * (max(a, b) - 1) // 2 + min(a, b)


@pytest.mark.parametrize("n", range(2, 7))
def test_of_every_graph_state(n):
    def moves(graph):
        yield from ((0, complemented(graph, n, v)) for v in range(n))
        yield from ((1, graph ^ (1 << k)) for k in range(n * (n - 1) // 2))

    fewest = distances([0], moves)
    assert len(fewest) == 2 ** (n * (n - 1) // 2)
    for found in zb.graph_state.classes(n):
        number = sum(1 << bit(n, a, b) for a, b in found.edges)
        assert fewest[number] == found.fewest_gates == found.circuit.two_qubit_count
        orbit = distances([number], lambda graph: [m for m in moves(graph) if m[0] == 0])
        assert min(graph.bit_count() for graph in orbit) == found.fewest_edges
        result = zb.clifford.synthesize_state(found.circuit, seed=1)
        assert result.bound == found.fewest_gates == result.count
        adjacency = np.zeros((n, n), dtype=bool)
        for a, b in found.edges:
            adjacency[a, b] = adjacency[b, a] = True
        for method in ("search", "naive"):
            result = zb.graph_state.synthesize(adjacency, method=method, seed=1)
            assert result.bound <= found.fewest_gates <= result.count
            assert not result.is_optimal or result.count == found.fewest_gates


def test_states_up_to_local_gates():
    for found in zb.graph_state.classes(6):
        adjacency = np.zeros((6, 6), dtype=bool)
        for a, b in found.edges:
            adjacency[a, b] = adjacency[b, a] = True
        for call, given in (
            (zb.graph_state.synthesize, adjacency),
            (zb.clifford.synthesize_state, found.circuit),
        ):
            exact, free = call(given, seed=1), call(given, seed=1, up_to="local")
            assert exact.local is None
            assert list(free.circuit + free.local) != []
            assert free.local.two_qubit_count == 0
            assert free.verify()
            assert (free.count, free.depth) == (exact.count, exact.depth)
            last = {q: len(gate.qubits) for gate in free.circuit for q in gate.qubits}
            assert set(last.values()) == {2}
            assert zb.from_json(free.to_json()) == free
            changed = replace(free, local=free.local + zb.Circuit(6, [zb.Gate.h(0)]))
            assert not changed.verify()


def test_of_every_family_is_told_alike():
    rotations = [("XXI", 0.3), ("IZZ", 0.1)]
    for result in (
        zb.linear.synthesize([[1, 1], [0, 1]], method="gauss"),
        zb.clifford.synthesize(zb.Circuit(2, [zb.Gate.cnot(0, 1)]), method="elimination"),
        zb.clifford.synthesize_encoder(["XX"], seed=1),
        zb.phase.synthesize({"11": 0.3}, method="gray", tail="return", seed=1),
        zb.phase.synthesize({"110": 0.3, "011": 0.1}, seed=1),
        zb.pauli.synthesize(rotations, method="ladder"),
        zb.pauli.synthesize(rotations, seed=1, objective="depth"),
    ):
        assert 1 <= result.bound <= (result.depth if result.objective == "depth" else result.count)
        told = "optimal" if result.is_optimal else f"bound {result.bound}"
        assert f", {told}, " in repr(result)
        assert told in result._repr_html_()
        assert f'"bound":{result.bound}' in result.to_json()
        assert zb.from_json(result.to_json()).bound == result.bound
    circuit = zb.Circuit(2, [zb.Gate.cnot(0, 1), zb.Gate.h(1), zb.Gate.cz(0, 1)])
    result = zb.optimize(circuit, steps=0, seed=1)
    assert result.bound is None
    assert not result.is_optimal
    assert "bound" not in repr(result)


@pytest.mark.parametrize(("n", "permutation"), [(6, "exact"), (6, "free"), (7, "free")])
def test_maps_on_six_and_seven_wires_are_proven(n, permutation):
    for number, matrix in enumerate(zb.gallery.random_invertible(n, 5, n)):
        result = zb.linear.synthesize(matrix, permutation=permutation, seed=number)
        assert result.verify()
        assert result.is_optimal
        # Not where there is no time for it, nor for layers.
        short = zb.linear.synthesize(matrix, permutation=permutation, seed=number, steps=1)
        assert short.verify()
        assert short.count >= result.count
    # Of two blocks the shortest circuits together are proven as well.
    blocks = np.kron(np.eye(3, dtype=int), [[1, 1], [0, 1]])
    result = zb.linear.synthesize(blocks, permutation=permutation, seed=1)
    assert (result.count, result.is_optimal) == (3, True)


def test_dense_maps_take_nearly_two_gates_per_wire():
    rng = np.random.default_rng(1)
    upper = np.triu(rng.integers(0, 2, (16, 16)), 1) + np.eye(16, dtype=int)
    matrix = upper @ upper.T % 2
    everywhere = zb.linear.synthesize(matrix, method="pmh")
    on_line = zb.linear.synthesize(matrix, method="row_column", device=zb.Device.line(16), seed=1)
    assert everywhere.bound >= 25
    assert on_line.bound >= 100
    assert on_line.least_depth >= 14

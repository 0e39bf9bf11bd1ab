"""Graph states against dense states and Stim, and at their edges."""

import numpy as np
import pytest

import zeltbraidwerk as zb
from zeltbraidwerk import core, gallery, graph_state


def test_forms_of_graphs():
    ring = np.roll(np.eye(5, dtype=int), 1, axis=0)
    ring += ring.T
    networkx = pytest.importorskip("networkx")
    from_networkx = graph_state.synthesize(networkx.cycle_graph(5), seed=1)
    assert from_networkx == graph_state.synthesize(ring, seed=1, jobs=2)
    assert from_networkx.count == 5
    assert graph_state.synthesize([]).circuit == zb.Circuit(0)


def test_core_functions():
    graph = gallery.random_graph(6).astype(int)
    circuit = core.graph_state_synthesis(graph, 6, 2)
    assert not core.simulate_circuit(graph, circuit, 6).any()
    core.check_circuit(graph, circuit, 6)
    with pytest.raises(RuntimeError):
        core.check_circuit(graph, circuit[1:], 6)
    vectors = [[1, 0, 0], [0, 1, 0], [0, 0, 1], [1, 1, 0]]
    assert core.solve_decoding_greedy(vectors, [1, 1, 0], 3) == [3]
    assert core.solve_syndrome(vectors, [1, 1, 1], 3, 2) == [2, 3]
    assert core.HammingXOR([1, 0, 1], [0, 0, 1], 3) == 1


def test_a_large_dense_graph_by_decoding():
    stim = pytest.importorskip("stim")
    graph = gallery.random_graph(150, 1).astype(int)
    result = graph_state.synthesize(graph, method="search", seed=1, steps=1500)
    simulator = stim.TableauSimulator()
    simulator.do(result.circuit.to_stim())
    for vertex, row in enumerate(graph):
        letters = np.where(row == 1, "Z", "_")
        letters[vertex] = "X"
        assert simulator.peek_observable_expectation(stim.PauliString("".join(letters))) == 1
    assert result.count < 1640

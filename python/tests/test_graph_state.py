"""Graph states against dense states and Stim, and at their edges."""

import numpy as np
import pytest
from hypothesis import given
from hypothesis import strategies as st
from support import unitary

import zeltbraidwerk as zb
from zeltbraidwerk import core, gallery, graph_state


@st.composite
def graphs(draw, most=5):
    n = draw(st.integers(0, most))
    bits = draw(st.lists(st.booleans(), min_size=n * n, max_size=n * n))
    upper = np.triu(np.array(bits, dtype=bool).reshape(n, n))
    return upper | upper.T


@given(graph=graphs(), method=st.sampled_from(graph_state.methods()), seed=st.integers(0, 9))
def test_against_the_dense_state(graph, method, seed):
    options = {"naive": {}, "decoding": {"restarts": 2, "tries": 3}}.get(method, {"restarts": 2})
    result = graph_state.synthesize(graph, method=method, seed=seed, **options)
    n = len(graph)
    assert result.verify()
    wanted = np.full(2**n, 2 ** (-n / 2), dtype=complex)
    for k in range(2**n):
        bits = np.array([k >> (n - 1 - q) & 1 for q in range(n)], dtype=int)
        edges = bits @ np.triu(graph, 1) @ bits
        wanted[k] *= (-1) ** int(edges) * 1j ** int(bits @ np.diag(graph))
    state = unitary(result.circuit)[:, 0]
    assert np.isclose(abs(np.vdot(state, wanted)), 1)
    assert result.count <= np.triu(graph, 1).sum() or method == "decoding"


@pytest.mark.parametrize(("n", "most"), [(8, 14), (20, 60), (40, 180)])
def test_random_graphs_cost_far_less_than_their_edges(n, most):
    stim = pytest.importorskip("stim")
    graph = gallery.random_graph(n)
    result = graph_state.synthesize(graph, seed=1, restarts=1)
    assert result.verify()
    assert result.count <= most < np.triu(graph).sum() or n == 8
    simulator = stim.TableauSimulator()
    simulator.do(result.circuit.to_stim())
    for stabiliser in result.stabilisers():
        assert simulator.peek_observable_expectation(stim.PauliString(stabiliser)) == 1


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

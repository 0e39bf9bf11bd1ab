"""The core: conversions between numpy and packed words, directions, what comes back as a result."""

import threading

import numpy as np
import pytest
from hypothesis import given
from hypothesis import strategies as st
from hypothesis.extra import numpy as nps
from support import invertible, product, replay

from zeltbraidwerk import core


def as_given(m):
    return m


FORMS = {
    "bool": as_given,
    "columns first": np.asfortranarray,
    "strided": lambda m: np.repeat(np.repeat(m, 2, axis=0), 3, axis=1)[::2, ::3],
    "reversed": lambda m: m[::-1, ::-1].copy()[::-1, ::-1],
    "read-only": lambda m: np.frombuffer(m.tobytes(), dtype=bool).reshape(m.shape),
    "int8": lambda m: m.astype(np.int8),
    "uint64": lambda m: m.astype(np.uint64),
    "list": lambda m: m.astype(int).tolist(),
}


@pytest.mark.parametrize("form", FORMS.values(), ids=FORMS)
@given(
    m=nps.arrays(bool, st.tuples(st.just(70), st.integers(0, 70)).map(max).map(lambda n: (n, n)))
)
def test_every_form_of_a_matrix_reads_alike(form, m):
    before = m.copy()
    n = len(m)
    assert np.array_equal(core.Table.from_matrix(form(m)).to_bool_bool(), m)
    assert core.count_bits(n, form(m)) == m.sum()
    assert np.array_equal(m, before)


@pytest.mark.parametrize("shape", [(1, 1), (7, 9), (8, 64), (65, 63), (130, 5)])
def test_products_of_odd_shapes(shape):
    rng = np.random.default_rng(shape)
    a = rng.integers(0, 2, shape)
    b = rng.integers(0, 2, shape[::-1])
    rows, inner = shape
    result = core.boolean_matrix_product(rows, rows, inner, a, b)
    assert result.dtype == bool
    assert np.array_equal(result, product(a, b))


INVERSE_CIRCUITS = {
    "pmh": lambda n, m: core.PMH_Algorithm(n, m, 2),
    "pairs": lambda n, m: core.GreedyGaussianElimination_faster(n, m)[0],
    "blocks": core.divide_and_conquer_synthesis,
}
FREE_CIRCUITS = {
    "ones": lambda n, m: core.greedy_synthesis_ones(n, m, 1, 1),
    "ones, ahead": lambda n, m: core.greedy_synthesis_ones(n, m, 2, 2),
    "inverse": lambda n, m: core.greedy_synthesis_ones_with_inv(n, m, 1, 1),
    "escape": lambda n, m: core.greedy_synthesis_ones_with_escape(n, m, 1, 1, 0),
    "log": lambda n, m: core.greedy_synthesis_log(n, m, 1, 1),
    "driver": lambda n, m: core.pathfinding_synthesis(n, m, "ones", True, 1, 1, 3, False),
}


@given(m=invertible())
def test_directions(m):
    n = len(m)
    for name, synthesise in INVERSE_CIRCUITS.items():
        circuit = synthesise(n, m)
        found = replay(n, circuit.getGates())
        assert np.array_equal(product(found, m), np.eye(n)), name
        if n:
            assert np.array_equal(circuit.Simulate(), found), name
    for name, synthesise in FREE_CIRCUITS.items():
        circuit, perm = synthesise(n, m)
        assert np.array_equal(replay(n, circuit.getGates())[perm], m), name
    circuit, perm = core.SyndromeSynthesis(n, m, 2, 2)
    wanted = np.zeros((n, n), dtype=bool)
    wanted[range(n), perm] = True
    assert np.array_equal(product(m, replay(n, circuit.getGates())), wanted)


def test_what_the_library_changes_in_place_comes_back():
    m = np.array([[1, 1, 0], [0, 1, 0], [1, 0, 1]])
    changed = core.RowOperation(m, 0, 2, 3)
    assert changed.astype(int).tolist() == [[1, 1, 0], [0, 1, 0], [0, 1, 1]]
    factors, rows, cols = core.LU(m, 3)
    assert sorted(rows) == sorted(cols) == [0, 1, 2]
    assert factors.shape == (3, 3)
    circuit, reduced = core.GreedyGaussianElimination_faster(3, m)
    assert np.array_equal(reduced, np.eye(3))
    assert len(circuit) > 0
    assert core.recursive_get_pairs_lower(3, m, 0, [0, 1, 2]) == ([(0, 2), (0, 1)], [0])
    rows, cols = core.create_cost_matrix_ones(2, [[1, 1], [0, 1]])
    assert rows.tolist() == [[-4, 0], [1, -4]]
    assert cols.tolist() == [[-4, 1], [0, -4]]
    after = core.RowOperation([[1, 1], [0, 1]], 1, 0, 2)
    updated = core.update_cost_matrix_ones(2, 1, 0, True, after, rows, cols)
    assert all(map(np.array_equal, updated, core.create_cost_matrix_ones(2, after)))
    assert core.compute_available_operation_ones(2, 1, 1, [[1, 1], [0, 1]], rows, cols) == [
        (3, (0, 1, True)), (2, (0, 1, False)), (2, (1, 0, True)), (3, (1, 0, False)),
    ]  # fmt: skip
    arguments = ([[1, 1, 0], [0, 1, 1], [0, 0, 1]], [1, 0, 1], 3)
    assert core.SyndromeDecodingSolver_heuristic(*arguments, 1, 1, [0, 1, 2]) == [2, 0, 1, 2]
    solved, states, result = core.create_queues(*arguments, 1, 2, [0, 1, 2])
    assert (solved, result) == (False, [])
    assert core.update_queues(*arguments, 1, 2, [0, 1, 2], states)[0]


def test_escapes_write_to_the_terminal_only_when_asked(dense, capfd):
    m = dense(16)
    core.pathfinding_synthesis(16, m, "ones", False, 1, 1, 3, True)
    assert capfd.readouterr().out == ""
    core.pathfinding_synthesis(16, m, "ones", False, 1, 1, 3, True, text=True)
    assert capfd.readouterr().out.startswith("On rentre au niveau 1\n")


def test_shared_draws_are_safe_from_several_threads():
    draws = [[] for _ in range(4)]

    def draw(mine):
        mine += [core.uniform(0, 2**31 - 1) for _ in range(2000)]

    threads = [threading.Thread(target=draw, args=(mine,)) for mine in draws]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    # Torn states of the generator would repeat words; chance alone gives a pair in 67 runs.
    assert len({word for mine in draws for word in mine}) > 7990


def test_results_are_plain_and_independent():
    circuit = core.CnotCircuit(2, np.array([[0, 1]]))
    gates = circuit.gates
    gates[0, 0] = 1
    assert circuit.getGates() == [(0, 1)]
    assert core.Parameter(1.0) == core.Parameter(1.0)
    assert core.Gate.S(2).to_string() == "RZ [2 ]1.5708 (diag)"
    tableau = core.OperatorTableau(2)
    tableau.cnot_left(0, 1)
    weyl = core.WeylOperator("XI")
    weyl.conjugate_with(tableau)
    assert weyl.to_pauli() == (False, "XX")
    table = core.Table.from_matrix([[1, 1], [0, 1]])
    table.cnot(1, 0)
    assert table.is_identity()

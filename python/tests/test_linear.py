"""linear.synthesize: directions, verification, seeds, budgets, stopping."""

import time

import numpy as np
import pytest
from support import graph_of, replaced

from zeltbraidwerk import CnotCircuit, Device, core, errors, linear, plot

METHODS = linear.methods()


def test_direction_on_an_asymmetric_matrix():
    # Outputs a, a + b and b + c of the inputs a, b, c: c is changed before b is.
    matrix = [[1, 0, 0], [1, 1, 0], [0, 1, 1]]
    for method in METHODS:
        result = linear.synthesize(matrix, method=method)
        assert list(result.circuit) == [(1, 2), (0, 1)], method
    # The first two outputs exchanged: free, nothing more to do.
    matrix = [[1, 1, 0], [1, 0, 0], [0, 1, 1]]
    free = linear.synthesize(matrix, permutation="free")
    assert (free.count, free.permutation) == (2, (1, 0, 2))


def test_wrong_results_do_not_verify(dense):
    good = linear.synthesize(dense(6), method="gauss")
    for wrong in (
        {"circuit": CnotCircuit(6, good.circuit.gates[1:])},
        {"permutation": (1, 0, 2, 3, 4, 5)},
    ):
        assert not replaced(good, **wrong).verify()
    with pytest.raises(ValueError, match="read-only"):
        good.matrix[0, 0] = False
    good = linear.synthesize(dense(4), device=Device.line(5), seed=1)
    for wrong in (
        {"device": Device(5, [(0, 4)])},
        {"placement": good.placement[::-1]},
        {"circuit": good.circuit + CnotCircuit(5, [(3, 4)])},
    ):
        assert good.verify()
        assert not replaced(good, **wrong).verify()


@pytest.mark.parametrize("n", [16, 40])
def test_plain_methods_are_those_of_the_library(dense, n):
    m = dense(n)
    plain = {
        "gauss": core.GaussianElimination(n, m),
        "pmh": core.optimized_PMH_Algorithm(n, m),
        "pairs": core.GreedyGaussianElimination_faster(n, m)[0],
    }
    for method, circuit in plain.items():
        assert list(linear.synthesize(m, method=method).circuit) == circuit.getGates()[::-1]
    section = linear.synthesize(m, method="pmh", section=3).circuit
    assert list(section) == core.PMH_Algorithm(n, m, 3).getGates()[::-1]
    circuit, perm = core.SyndromeSynthesis(n, m, 2, 1)
    result = linear.synthesize(m, method="syndrome", width=2, permutation="free")
    assert list(result.circuit) == circuit.getGates()[::-1]
    assert list(result.permutation) == perm


def test_steiner_is_that_of_the_library(dense):
    device, m = Device.grid(3, 4), dense(12)
    path = list(device.hamiltonian_path())
    gates = core.steiner_gauss_ham_path(core.Table.from_matrix(m), graph_of(device), path)
    result = linear.synthesize(m, device=device, method="steiner", restarts=1)
    assert list(result.circuit) == [tuple(gate.qbits) for gate in gates][::-1]


def test_same_seed_same_circuit_whatever_jobs_is(dense):
    m = dense(14)
    options = {"method": "auto", "seed": 2**63 + 1}
    results = {linear.synthesize(m, restarts=12, jobs=j, **options) for j in (1, 5, None)}
    (result,) = results
    assert result.count <= linear.synthesize(m, restarts=1, **options).count
    assert result.count <= linear.synthesize(m, method="pmh").count
    assert linear.synthesize(m, method="gauss").seed is None


def test_a_budget_may_end_before_a_circuit_is_found(dense):
    start = time.perf_counter()
    with pytest.raises(errors.UnfinishedError, match="none of 1 runs found a circuit"):
        linear.synthesize(dense(120), method="greedy_log", budget=0.05)
    assert time.perf_counter() - start < 10


def test_what_no_budget_leaves_of_many_wires(dense):
    """By pairs, or by "pmh" where that is shorter: on sparse matrices."""
    lines = np.eye(600, dtype=int)
    lines[:, 0] = 1
    for matrix in (dense(600), lines, lines.T):
        result = linear.synthesize(matrix, budget=0.001)
        assert result.verify()
        assert result.count <= linear.synthesize(matrix, method="pmh").count
    with_pairs = linear.synthesize(dense(600), method="pairs").count
    assert linear.synthesize(dense(600), budget=0.001).count == with_pairs


def test_windows_grow_with_the_budget(dense):
    assert linear.synthesize(dense(24), method="search", budget=0.6, seed=1).window == 5
    assert linear.synthesize(dense(24), method="search", budget=0.1).window == 4
    assert linear.synthesize(dense(4), method="gauss").window is None


def test_best_over_time_is_one_line_per_result(dense):
    class Axes:
        def __init__(self):
            self.lines = []

        def step(self, x, y, **options):
            self.lines.append((x, y))

        def __getattr__(self, name):
            return lambda *_, **__: None

    result = linear.synthesize(dense(9), method="search", seed=1, steps=5000)
    axes = Axes()
    assert plot.best_over_time(result, result, axes=axes) is axes
    assert axes.lines[1][1][-1] == result.count
    with pytest.raises(ValueError, match="value: got 'time', wanted one of 'count', 'depth'"):
        plot.best_over_time(result, value="time")


def test_ctrl_c_stops_at_once_with_the_best_so_far(ctrl_c, dense):
    start = time.perf_counter()
    with pytest.raises(errors.Interrupted) as caught:
        linear.synthesize(dense(16), budget=60, jobs=2, restarts=2)
    assert time.perf_counter() - start < 10
    assert isinstance(caught.value, KeyboardInterrupt)
    assert caught.value.best.verify()
    assert "best so far: LinearSynthesis(" in str(caught.value)

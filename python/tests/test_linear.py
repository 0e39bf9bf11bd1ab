"""linear.synthesize: directions, verification, seeds, budgets, stopping, refusals."""

import time
from itertools import pairwise

import numpy as np
import pytest

from zeltbraidwerk import CnotCircuit, Device, core, errors, linear, plot

METHODS = linear.methods()


def in_place(result):
    return result.permutation == tuple(range(result.n))


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
    wrong = {
        "circuit": CnotCircuit(6, good.circuit.gates[1:]),
        "permutation": (1, 0, 2, 3, 4, 5),
    }
    for name, value in wrong.items():
        broken = linear.LinearSynthesis(**{**vars(good), name: value})
        assert not broken.verify()


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


@pytest.mark.parametrize("objective", ["count", "depth"])
@pytest.mark.parametrize("permutation", ["exact", "free"])
def test_auto_is_never_worse_than_pmh_and_more_runs_never_hurt(dense, objective, permutation):
    options = {"objective": objective, "permutation": permutation, "seed": 1}
    for n in (1, 2, 5, 12, 24):
        for seed in range(3):
            m = dense(n, seed)
            auto = linear.synthesize(m, restarts=1, **options)
            pmh = linear.synthesize(m, method="pmh", **options)
            more = linear.synthesize(m, restarts=6, **options)
            sizes = [getattr(result, objective) for result in (more, auto, pmh)]
            assert sizes == sorted(sizes)


def test_same_seed_same_circuit_whatever_jobs_is(dense):
    m = dense(14)
    for method in ("greedy", "greedy_log", "pairs", "auto"):
        results = [
            linear.synthesize(m, method=method, seed=2**63 + 1, restarts=12, jobs=jobs)
            for jobs in (1, 2, 5, None)
        ]
        assert len(set(results)) == 1
    drawn = linear.synthesize(m, method="greedy", restarts=3)
    assert linear.synthesize(m, method="greedy", restarts=3, seed=drawn.seed) == drawn
    assert linear.synthesize(m, method="gauss").seed is None


def test_permutations_are_closed_by_fewer_cnots_than_three_a_swap(dense):
    m = dense(24)
    for method in ("syndrome", "greedy_log", "blocks"):
        free = linear.synthesize(m, method=method, permutation="free", seed=1)
        exact = linear.synthesize(m, method=method, seed=1)
        cycles, seen = 0, set()
        for start in range(24):
            cycles += start not in seen
            while start not in seen:
                seen.add(start)
                start = free.permutation[start]
        assert free.count < exact.count < free.count + 3 * (24 - cycles)
    swap = linear.synthesize([[0, 1], [1, 0]], method="syndrome")
    assert (swap.count, in_place(swap)) == (3, True)


def test_a_budget_may_end_before_a_circuit_is_found(dense):
    start = time.perf_counter()
    with pytest.raises(errors.UnfinishedError, match="none of 1 runs found a circuit"):
        linear.synthesize(dense(120), method="greedy_log", budget=0.05)
    assert time.perf_counter() - start < 10


def test_windows_grow_with_the_budget(dense):
    assert linear.synthesize(dense(24), method="search", budget=0.6, seed=1).window == 5
    assert linear.synthesize(dense(24), method="search", budget=0.1).window == 4
    assert linear.synthesize(dense(4), method="gauss").window is None


def test_front_trades_layers_for_gates(dense):
    result = linear.synthesize(
        dense(12), method="search", objective="depth", seed=2, steps=60_000, restarts=2
    )
    assert result.front[0].circuit == result.circuit
    for shallow, short in pairwise(result.front):
        assert shallow.depth < short.depth
        assert shallow.count > short.count
    assert all(one.verify() for one in result.front)


def test_outputs_stay_within_reach():
    device = Device.grid(3, 4)
    m = np.roll(np.eye(12, dtype=bool), 5, axis=0)
    for reach in (0, 1, 2):
        result = linear.synthesize(
            m, method="search", device=device, reach=reach, steps=20_000, seed=1
        )
        assert result.verify()
        near = np.linalg.matrix_power(np.eye(12, dtype=int) + device.adjacency(), reach)
        assert all(near[r, wire] for r, wire in enumerate(result.permutation))
    free = linear.synthesize(m, method="search", device=device, permutation="free", steps=0, seed=1)
    assert free.verify()


def test_best_over_time_is_drawn_a_line_a_result(dense):
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


def test_smallest_matrices():
    for n, matrix in ((0, []), (0, np.zeros((0, 0))), (1, [[1]]), (1, [[True]])):
        for method in METHODS:
            result = linear.synthesize(matrix, method=method)
            assert (result.n, result.count, result.permutation) == (n, 0, tuple(range(n)))


def test_results_print_in_one_line_and_cannot_be_changed(dense):
    result = linear.synthesize(dense(4), method="gauss")
    assert "\n" not in repr(result)
    assert "gauss: 4 qubits" in repr(result)
    with pytest.raises(AttributeError):
        result.method = "pmh"
    with pytest.raises(ValueError, match="read-only"):
        result.matrix[0, 0] = False

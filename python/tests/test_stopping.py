"""Long calls end soon after Ctrl-C and after their budget, whatever they are at, and leave no
thread. ``python test_stopping.py NAME stop JOBS COUNT SEED`` prints the times of more tries.

Times are those of the processor, so that a busy machine makes no difference.
"""

import random
import statistics
import subprocess
import sys
from functools import partial
from itertools import product

import numpy as np
import pytest
from long_calls import circuit, matrix, operator, overtime, parities, rotations, stopped, threads

import zeltbraidwerk as zb
from zeltbraidwerk import clifford, core, gallery, graph_state, linear, pauli, phase, routing

PROMISED = 0.1  # seconds of processor time to the end after Ctrl-C
SLACK = 0.05, 0.05  # of a budget: seconds, and a share of it
ENDLESS = {"seed": 1, "steps": 10**9}


def stabilizers(n):
    """Of a graph state, in the form of the core."""
    graph = gallery.random_graph(n)
    table = [[1 if q == k else 3 * int(graph[k, q]) for q in range(n)] for k in range(n)]
    return table, [core.Parameter(0.1)] * n


# What makes the input, and the call, which goes on for more than the second in which it is stopped.
SEARCHES = {
    "linear": (lambda: matrix(40), linear.synthesize, {}),
    "linear depth": (lambda: matrix(33), linear.synthesize, {"objective": "depth"}),
    "linear device": (lambda: matrix(64), linear.synthesize, {"device": zb.Device.grid(8, 8)}),
    "clifford": (lambda: operator(20), clifford.synthesize, {}),
    "clifford depth": (lambda: operator(150), clifford.synthesize, {"objective": "depth"}),
    "clifford device": (lambda: operator(49), clifford.synthesize,
                        {"device": zb.Device.grid(7, 7)}),
    "state device": (lambda: operator(64), clifford.synthesize_state, {"device": "grid:8x8"}),
    "encoder": (lambda: gallery.surface_code(5), clifford.synthesize_encoder, {}),
    "phase": (lambda: parities(40, 600), phase.synthesize, {}),
    "phase device": (lambda: parities(16, 60), phase.synthesize, {"device": zb.Device.grid(4, 4)}),
    "pauli": (lambda: rotations(16, 1500, 4), pauli.synthesize, {}),
    "pauli device": (lambda: rotations(25, 100, 15), pauli.synthesize,
                     {"device": zb.Device.grid(5, 5)}),
    "graph": (lambda: gallery.random_graph(40), graph_state.synthesize, {}),
    "circuit": (lambda: circuit(20, 1500), zb.optimize, {}),
    "circuit of pieces": (lambda: circuit(9, 900, 3), zb.optimize, {}),
    "circuit of pieces device": (lambda: circuit(16, 600, 3), zb.optimize, {"device": "grid:4x4"}),
    "circuit device": (lambda: circuit(16, 500), zb.optimize, {"device": zb.Device.grid(4, 4)}),
}  # fmt: skip
OTHERS = {
    "syndrome": (lambda: matrix(60), linear.synthesize, {"method": "syndrome", "restarts": 9**9}),
    "decoding": (lambda: gallery.random_graph(150), graph_state.synthesize, {"method": "decoding"}),
    "tableau": (lambda: operator(2500)._core, lambda t: t.inverse(), {}),
    "graph form": (lambda: stabilizers(200), lambda t: core.graph_state_codiag(*t, 0), {}),
    "elimination": (lambda: operator(2500), clifford.synthesize, {"method": "elimination"}),
    "shallow": (lambda: matrix(700), linear.synthesize, {"objective": "depth", **ENDLESS}),
    "matching": (lambda: np.arange(2500**2).reshape(2500, 2500) % 1009,
                 lambda w: core.BlossomAlgorithm(w, 2500), {}),
    "large circuit": (lambda: circuit(50, 100_000), zb.optimize, ENDLESS),
    "large operator": (lambda: operator(3000), clifford.synthesize, ENDLESS),
    "sets": (lambda: rotations(20, 800, 9), pauli.synthesize,
             {"method": "sets", "restarts": 9**9}),
    "route": (lambda: circuit(12, 900), lambda c, **own: routing.route(c, "grid:3x4", **own),
              {"lookahead": 1}),
}  # fmt: skip


def main(name, what, jobs, count, seed):
    """Prints the times of a number of tries of one call, each at another moment."""
    rng = random.Random(f"{name} {seed}")
    for _ in range(int(count)):
        make, function, own = (SEARCHES | OTHERS)[name]
        call = partial(function, make(), **own)
        if what == "stop":
            if name in SEARCHES:
                call = partial(call, **ENDLESS, jobs=int(jobs))
            late, has_best = stopped(call, 10 ** rng.uniform(-1, 0))
            print(late, int(has_best), flush=True)
        else:
            print(overtime(call, float(what)), 1, flush=True)


def in_a_process(name, what, jobs=1, count=3, seed=0):
    given = (name, what, jobs, count, seed)
    command = [sys.executable, __file__, *map(str, given)]
    done = subprocess.run(command, capture_output=True, text=True, timeout=120)
    assert (done.returncode, done.stderr) == (0, "")
    lines = [line.split() for line in done.stdout.splitlines()]
    return [float(late) for late, _ in lines], [best == "1" for _, best in lines]


@pytest.mark.parametrize("name", SEARCHES)
def test_ctrl_c_ends_a_search_with_its_best_result(name):
    late, has_best = in_a_process(name, "stop", jobs=1 + len(name) % 2)
    assert statistics.median(late) < PROMISED
    assert max(late) < 3 * PROMISED  # the machine may have taken the processor away amid a lock
    assert all(has_best)


@pytest.mark.parametrize("name", OTHERS)
def test_ctrl_c_ends_the_other_methods(name):
    late, _ = in_a_process(name, "stop")
    assert statistics.median(late) < PROMISED


@pytest.mark.parametrize(
    ("name", "budget"),
    [*product(SEARCHES, (0.05, 0.3)), ("large circuit", 0.05), ("large operator", 3.0)],
)
def test_budgets_are_kept(name, budget):
    late, _ = in_a_process(name, budget)
    assert statistics.median(late) < SLACK[0] + SLACK[1] * budget


class ToldError(Exception):
    pass


@pytest.mark.parametrize("jobs", [1, 4])
def test_progress_may_raise_and_may_search(jobs):
    given, before, inner = matrix(12), threads(), []
    own = {"method": "search", "steps": 3000, "seed": 1}

    def fail(best):
        raise ToldError

    def search(best):
        inner.append(linear.synthesize(matrix(4), seed=1).count)

    with pytest.raises(ToldError):
        linear.synthesize(given, jobs=jobs, progress=fail, **own)
    told = linear.synthesize(given, jobs=jobs, progress=search, **own)
    assert inner
    assert told.circuit == linear.synthesize(given, **own).circuit
    assert threads() <= before


def test_progress_hears_of_all_pieces():
    told = []
    result = zb.optimize(circuit(6, 300, 3), seed=1, steps=3000, progress=told.append)
    assert told == sorted(set(told), reverse=True)
    assert told[-1] == result.count


# A call in the child of a process that searches is right, or says why it cannot be.
FORKED = """
import os, threading, time
import zeltbraidwerk as zb
from zeltbraidwerk import clifford, core, gallery, linear

given = gallery.random_clifford(6, 1)[0]
stop = []
def search():
    while not stop:
        clifford.synthesize(given, method="search", steps=20_000, jobs=2, seed=1)
caller = threading.Thread(target=search)
caller.start()
for k in range(8):
    time.sleep(0.1 * k)
    child = os.fork()
    if child == 0:
        try:
            assert clifford.synthesize(given, steps=100, jobs=2, seed=1).verify()
        except zb.errors.UnfinishedError as error:
            assert "fork" in str(error)
        os._exit(0)
    assert os.waitpid(child, 0)[1] == 0
stop.append(True)
caller.join()
"""


def test_a_fork_amid_a_search():
    done = subprocess.run(
        [sys.executable, "-c", FORKED], capture_output=True, text=True, timeout=60
    )
    assert (done.returncode, done.stderr) == (0, "")


if __name__ == "__main__":
    main(*sys.argv[1:])

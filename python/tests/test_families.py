"""What every family does alike: seeds, jobs, steps, budgets, progress, traces, verification."""

import time

import numpy as np
import pytest
from support import replaced, spoilt

import zeltbraidwerk as zb
from zeltbraidwerk import Circuit, Gate, gallery

GRID = zb.Device.grid(3, 4)
MATRIX = gallery.random_invertible(12, 1)[0]
PARITIES = dict.fromkeys(gallery.random_parities(12, 40, 1)[0], 0.1)
OPERATOR = gallery.random_clifford(12, 1)[0]
CODE, LOGICALS = OPERATOR.images()[1][3:], tuple(side[:3] for side in OPERATOR.images())
STRINGS = [(string, 0.1) for string in gallery.random_paulis(6, 30)]
GRAPH = gallery.random_graph(20, 3)
DRAWN = np.random.default_rng(1).permutation(6 * list(GRID.edges)).tolist()
TURNS = (Gate.h, lambda q: Gate.rz(q, 0.3), lambda q: Gate.rz(q, np.pi / 4))
CIRCUIT = Circuit(12, [
    gate for k, (a, b) in enumerate(DRAWN)
    for gate in (Gate.cnot(a, b), *(turn(a) for turn in TURNS[k // 7 % 3 :][: k % 7 == 0]))
])  # fmt: skip
FAMILIES = {
    "linear": lambda **options: zb.linear.synthesize(MATRIX, **options),
    "linear, device": lambda **options: zb.linear.synthesize(MATRIX, device=GRID, **options),
    "phase": lambda **options: zb.phase.synthesize(PARITIES, **options),
    "phase, device": lambda **options: zb.phase.synthesize(PARITIES, device=GRID, **options),
    "clifford": lambda **options: zb.clifford.synthesize(OPERATOR, **options),
    "clifford, device": lambda **options: zb.clifford.synthesize(OPERATOR, device=GRID, **options),
    "state": lambda method, **options: zb.clifford.synthesize_state(
        zb.graph_state.synthesize(GRAPH, method="naive").stabilizers, **options
    ),
    "state, device": lambda method, **options: zb.clifford.synthesize_state(
        zb.gallery.logical_zero(zb.gallery.carbon_code()), device=GRID, **options
    ),
    "encoder": lambda method, **options: zb.clifford.synthesize_encoder(CODE, **options),
    "encoder, logicals": lambda method, **options: zb.clifford.synthesize_encoder(
        CODE, LOGICALS, **options
    ),
    "graph_state": lambda **options: zb.graph_state.synthesize(GRAPH, **options),
    "graph_state, device": lambda **options: zb.graph_state.synthesize(
        GRAPH[:12, :12], device=GRID, permutation="free", **options
    ),
    "pauli, any order": lambda **options: zb.pauli.synthesize(
        STRINGS, order="free", repeated="merge", **options
    ),
    "pauli, in order": lambda **options: zb.pauli.synthesize(STRINGS, **options),
    "optimize": lambda method, **options: zb.optimize(CIRCUIT, **options),
    "optimize, device": lambda method, **options: zb.optimize(CIRCUIT, device=GRID, **options),
}
family = pytest.mark.parametrize("synthesize", FAMILIES.values(), ids=FAMILIES)


@family
@pytest.mark.parametrize("objective", ["count", "depth"])
def test_seed_and_steps_decide_and_more_is_never_worse(synthesize, objective):
    options = {"method": "search", "objective": objective, "restarts": 3}
    made = []
    for steps in (0, 300, 6000):
        one, same = (synthesize(seed=2**63 + 1, steps=steps, jobs=j, **options) for j in (1, 3))
        assert one == same
        assert (one.runs, one.seed) == (3, 2**63 + 1)
        assert one.verify()
        assert "\n" not in repr(one)
        key = (one.depth, one.count) if objective == "depth" else (one.count, one.depth)
        assert [key, *made] == sorted([key, *made])
        made.insert(0, key)
    assert one.trace[-1].count == one.count
    assert synthesize(seed=1, steps=300, **options).circuit != one.circuit
    drawn = synthesize(steps=300, **options)
    assert synthesize(seed=drawn.seed, steps=300, **options) == drawn


@family
@pytest.mark.parametrize("method", ["auto", "search"])
def test_a_budget_ends_the_search_and_progress_shows_the_best(synthesize, method):
    synthesize(method=method, budget=0.3, seed=1)  # tables are built once
    told = []
    start = time.perf_counter()
    result = synthesize(method=method, budget=0.3, jobs=2, seed=1, progress=told.append)
    assert 0.25 < time.perf_counter() - start < 5
    assert told == sorted(told, reverse=True)
    assert told[-1] == told[-1].count == result.count
    assert 0 <= told[0].seconds <= told[-1].seconds
    assert synthesize(method=method, budget=1e-9).verify()  # there always is an answer

    def refuse(best):
        raise ZeroDivisionError

    start = time.perf_counter()
    with pytest.raises(ZeroDivisionError):
        synthesize(method=method, budget=60, jobs=2, progress=refuse)
    assert time.perf_counter() - start < 10


@family
def test_a_result_tells_a_wrong_circuit_and_cannot_be_changed(synthesize):
    result = synthesize(method="search", seed=1, steps=0)
    assert result.verify()
    for circuit in spoilt(result.circuit, only_turned=True):
        assert not replaced(result, circuit=circuit).verify()
    with pytest.raises(AttributeError):
        result.circuit = None
    assert np.all(np.array([point.depth for point in result.trace]) > 0)


@family
def test_sizes_without_the_gates_are_those_of_the_gates(synthesize):
    """The text of a result, as that of an exception, does not wait for millions of gates."""
    found = synthesize(method="auto", steps=0, seed=1).circuit
    names = "two_qubit_count", "two_qubit_depth", "one_qubit_count", "gate_count"
    told = [getattr(found, name) for name in names]
    written = Circuit(found.n, found.to_circuit().gates)
    assert told == [getattr(written, name) for name in names]

"""Searches end when nothing can be better, and what comes back does not depend on the threads."""

import time

import numpy as np
import pytest

import zeltbraidwerk as zb
from zeltbraidwerk import _search

ENDLESS = 2**62  # steps: who makes them all does not come back


class Control:
    """Of runs of which one is told that no circuit has fewer than 2 gates or 1 layer."""

    def __init__(self):
        self.stopped = False

    def stop(self):
        self.stopped = True

    def ended(self):
        return self.stopped

    def news(self):
        return []

    def bound(self):
        return 2, 1


@pytest.mark.parametrize("jobs", [1, 2, 5])
@pytest.mark.parametrize("engine_meets", [0, 3, None])
def test_the_first_run_that_meets_the_bound_is_the_answer(jobs, engine_meets):
    """Of the engine before other methods, whatever ends first."""
    made = []

    def lane(name, meets, slow, proves):
        def run(first, last):
            time.sleep(slow)
            made.append((name, first))
            size = (2, 1) if meets is not None and first >= meets else (3, 1)
            return first, (*size, name, first)

        return _search.Lane(run, 200, proves)

    lanes = [lane("plain", 5, 0.0005, False), lane("engine", engine_meets, 0.003, True)]
    for one in lanes:
        one.take = lambda one=one: (one.next, setattr(one, "next", one.next + 1) or one.next)
    best, _ = _search.best_of(
        lanes, jobs, Control(), lambda found: found[:2], lambda *_: None, _search.Trace(False, None)
    )
    assert best[2:] == (("plain", 5) if engine_meets is None else ("engine", engine_meets))
    if engine_meets is not None:
        assert len([name for name, _ in made if name == "engine"]) <= engine_meets + jobs


def nothing_to_do():
    swapped = np.eye(6, dtype=bool)[[1, 0, 2, 4, 3, 5]]
    grid = zb.Device.grid(2, 3)
    identity = zb.Circuit(5, [zb.Gate.h(1), zb.Gate.s(2)])
    weight_one = {"ZIII": 0.1, "IXII": 0.2}
    yield zb.linear.synthesize, np.eye(40, dtype=bool), {}
    yield zb.linear.synthesize, swapped, {"permutation": "free"}
    yield zb.linear.synthesize, np.eye(6, dtype=bool), {"device": grid}
    yield zb.clifford.synthesize, identity, {}
    yield zb.clifford.synthesize, identity, {"device": zb.Device.line(5)}
    yield zb.clifford.synthesize_state, ["ZII", "IXI", "-IIZ"], {}
    yield zb.graph_state.synthesize, np.zeros((9, 9), dtype=bool), {}
    yield zb.phase.synthesize, {"1000": 0.5, "0010": "a"}, {}
    yield zb.phase.synthesize, {"1000": 0.5}, {"device": zb.Device.line(4)}
    yield zb.pauli.synthesize, weight_one, {"order": "free"}
    yield zb.pauli.synthesize, weight_one, {"order": "free", "tail": "return"}


def little_to_do():
    sparse = np.eye(9, dtype=bool)
    sparse[1, 0] = sparse[4, 7] = sparse[5, 4] = True
    yield zb.linear.synthesize, sparse, {}
    yield zb.linear.synthesize, sparse, {"permutation": "free"}
    yield zb.linear.synthesize, sparse, {"objective": "depth"}
    yield zb.clifford.synthesize, zb.Circuit(7, [zb.Gate.cnot(0, 1), zb.Gate.cz(1, 2)]), {}
    yield zb.clifford.synthesize_state, ["XXX", "ZZI", "IZZ"], {"objective": "depth"}
    yield zb.phase.synthesize, {"1100": 0.5, "0011": "a"}, {}
    for rotations in ([("XYI", 0.1), ("IZZ", 0.2)], [("XXX", 0.1), ("IZY", 0.2)]):
        for order in ("free", "commuting"):
            yield zb.pauli.synthesize, rotations, {"order": order}


@pytest.mark.parametrize("objective", ["count", "depth"])
@pytest.mark.parametrize("method", ["auto", "search"])
def test_where_there_is_nothing_to_do_it_is_done_at_once(method, objective):
    for synthesize, given, options in nothing_to_do():
        if synthesize is not zb.clifford.synthesize_state:
            options = {**options, "method": method}
        found = [
            synthesize(given, seed=1, objective=objective, restarts=1000, steps=ENDLESS,
                       jobs=jobs, **options)
            for jobs in (1, 3)
        ]  # fmt: skip
        assert found[0] == found[1]
        assert found[0].verify()
        assert found[0].count == 0
        assert found[0].runs < 100


def test_what_is_proven_ends_a_search_that_has_no_other_end():
    for synthesize, given, options in little_to_do():
        result = synthesize(given, seed=1, steps=ENDLESS, **options)
        assert result.verify()
        assert result.count <= 6

"""Searches end when nothing can be better, and the result does not depend on the threads."""

import numpy as np
import pytest

import zeltbraidwerk as zb

ENDLESS = 2**62  # steps: who makes them all does not come back


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
    yield zb.clifford.synthesize_encoder, ["ZII", "-IIX"], {}
    yield zb.graph_state.synthesize, np.zeros((9, 9), dtype=bool), {}
    yield zb.phase.synthesize, {"1000": 0.5, "0010": "a"}, {}
    yield zb.phase.synthesize, {"1000": 0.5}, {"device": zb.Device.line(4)}
    yield zb.pauli.synthesize, weight_one, {"order": "free"}
    yield zb.pauli.synthesize, weight_one, {"order": "free", "tail": "return"}


@pytest.mark.parametrize("objective", ["count", "depth"])
@pytest.mark.parametrize("method", ["auto", "search"])
def test_where_there_is_nothing_to_do_it_is_done_at_once(method, objective):
    for synthesize, given, options in nothing_to_do():
        if synthesize not in (zb.clifford.synthesize_state, zb.clifford.synthesize_encoder):
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

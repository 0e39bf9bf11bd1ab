"""Instances of the sweep: every family and every method against independent oracles."""

import pytest
import sweep

import zeltbraidwerk as zb
from zeltbraidwerk import errors

METHODS = [
    (family, method)
    for family in ("linear", "phase", "pauli", "clifford", "graph_state")
    for method in getattr(zb, family).methods()
]
METHODS += [("linear", name) for name in ("steiner", "sorting", "row_column")]  # on devices alone


@pytest.mark.parametrize("family", sweep.FAMILIES)
def test_random_instances(family):
    for number in range(50):
        sweep.try_instance(family, number)


@pytest.mark.parametrize(("family", "method"), METHODS)
def test_small_instances_by_every_method(family, method):
    for number in range(60):
        if sweep.Draw(f"{family} {number}").size(number) < 10:
            try:
                sweep.try_instance(family, number, method)
            except errors.NoHamiltonianPathError:
                assert method in ("steiner", "sorting")

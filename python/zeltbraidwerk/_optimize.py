"""Whole circuits: shorter ones of the same operator."""

from __future__ import annotations

from collections.abc import Callable
from typing import Any

from zeltbraidwerk import _core, _search
from zeltbraidwerk._family import Family, Found
from zeltbraidwerk._optimize_results import Optimization
from zeltbraidwerk._results import Objective, Permutation
from zeltbraidwerk.circuits import Circuit
from zeltbraidwerk.gates import Gate, Parameter

_FAMILY = Family(lambda on_device: ("auto", "search"))


def optimize(
    circuit: Any,
    *,
    device: Any = None,
    objective: Objective = "count",
    permutation: Permutation = "exact",
    seed: int | None = None,
    restarts: int | None = None,
    budget: float | None = None,
    steps: int | None = None,
    jobs: int | None = 1,
    progress: Callable[[_search.Progress], object] | None = None,
) -> Optimization:
    """A shorter circuit that does the same."""
    call = _FAMILY.call(
        device=device, objective=objective, permutation=permutation, seed=seed,
        restarts=restarts, budget=budget, steps=steps, jobs=jobs, progress=progress,
    )  # fmt: skip
    source = Circuit.of(circuit)
    call.place(source.n)

    def result(found: Found, gates: list[_core.Gate], rounding: float) -> Optimization:
        made = Circuit._trusted(source.n, tuple(
            Gate._trusted(g.name, tuple(g.qbits), tuple(Parameter._wrap(p) for p in g.params))
            for g in gates
        ))
        return call.result(
            Optimization, found, source.n, circuit=made, source=source, rounding=rounding
        )

    return call.run(_core._optimize_circuit, result, source.n, source.to_core())

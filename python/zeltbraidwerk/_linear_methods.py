"""The methods for matrices, and their options checked."""

from __future__ import annotations

import os
from collections.abc import Callable
from dataclasses import dataclass, field
from functools import partial

from zeltbraidwerk import _validate, errors
from zeltbraidwerk._family import Family
from zeltbraidwerk._results import Objective, Permutation


@dataclass(frozen=True)
class Method:
    """What a method is good for. ``permutation`` is "free" where its own circuits leave outputs on
    other wires, so that CNOTs have to be added where the outputs must be in place."""

    name: str
    summary: str
    lowers: Objective
    permutation: Permutation
    draws: bool = False  # at random, in the first run too
    quick: bool = False  # ends in milliseconds, so that nobody needs to stop it
    options: frozenset[str] = frozenset()
    most: int = 2**31 - 1  # qubits
    # Bytes of the states of the beam, by number of qubits, width and lookahead.
    memory: Callable[[int, int, int], int] = field(default=lambda n, width, lookahead: 0)


def _greedy_memory(n: int, width: int, lookahead: int) -> int:
    states: int = width ** max(lookahead - 2, 0)
    return 16 * states * width + states * 12 * n * n


def _syndrome_memory(n: int, width: int, lookahead: int) -> int:
    states: int = width**lookahead
    return 2 * states * (12 + 4 * lookahead + n // 8)


_ELIMINATION = partial(Method, lowers="count", permutation="exact", quick=True)
_GREEDY = partial(
    Method, lowers="count", permutation="free", draws=True, most=16383,
    options=frozenset(("width", "lookahead")), memory=_greedy_memory,
)  # fmt: skip

_SEARCH = Method(
    "search",
    "beams, and walks through windows with known shortest circuits",
    "count",
    "exact",
    True,
)

# One entry per method; the code of each is in the compiled part.
METHODS = {
    method.name: method
    for method in (
        _ELIMINATION("gauss", "plain Gaussian elimination"),
        _ELIMINATION("pmh", "elimination in sections of columns", options=frozenset(("section",))),
        _ELIMINATION("pairs", "elimination by pairs of similar rows"),
        Method("blocks", "block recursion with matchings, for depth", "depth", "free"),
        Method(
            "syndrome", "LU factors, each row found by syndrome decoding", "count", "free",
            options=frozenset(("width", "lookahead")), memory=_syndrome_memory,
        ),
        _GREEDY("greedy", "greedy additions that lower the ones of the matrix"),
        _GREEDY("greedy_inverse", "the same, of the matrix and its inverse"),
        _GREEDY("greedy_escape", "the same as greedy, leaving dead ends through the inverse"),
        _GREEDY("greedy_log", "greedy additions that lower the logarithms of the row weights"),
        _SEARCH,
    )
}  # fmt: skip

# The same on a device, where every CNOT is on an edge.
ON_DEVICE = {
    method.name: method
    for method in (
        Method("row_column", "rows and columns cleared along Steiner trees", "count", "free", True),
        Method("steiner", "elimination along a Hamiltonian path", "count", "exact"),
        _SEARCH,
    )
}


_BEAM = ("section", "width", "lookahead")
_TAKERS: dict[str, tuple[str, ...]] = {
    option: tuple(name for name, each in METHODS.items() if option in each.options)
    for option in _BEAM
} | {"steps": ("auto", "search")}
FAMILY = Family(
    tuple(METHODS),
    tuple(ON_DEVICE),
    _TAKERS | {"reach": ("search on a device",)},
    # None of the options of the beam works on a device.
    _TAKERS
    | {option: (f"{', '.join(_TAKERS[option])} without a device",) for option in _BEAM}
    | {"reach": ("search",)},
)


def checked(method: str, n: int, values: dict[str, int | None]) -> dict[str, int]:
    """Those of the options that were given, each in its range."""
    limits = {"section": 30, "width": 2**31 - 1, "lookahead": 64}
    given = {
        name: _validate.integer(value, name, 1, limits[name])
        for name, value in values.items()
        if value is not None
    }
    if method in METHODS:
        if n > METHODS[method].most:
            raise errors.TooLargeError(
                f"matrix: got {n} qubits, wanted at most {METHODS[method].most} for {method!r}"
            )
        width, lookahead = given.get("width", 1), given.get("lookahead", 1)
        needed = METHODS[method].memory(n, width, lookahead)
        there = os.sysconf("SC_PAGE_SIZE") * os.sysconf("SC_PHYS_PAGES")
        if needed > there // 2 or width**lookahead > 2**31 - 1:
            raise errors.TooLargeError(
                f"width, lookahead: got {width} and {lookahead}, which would take "
                f"{width**lookahead:.3g} states and {needed / 1e9:.3g} GB of {there / 1e9:.3g} GB"
            )
    return given

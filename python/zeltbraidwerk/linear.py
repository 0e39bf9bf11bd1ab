"""CNOT circuits for invertible Boolean matrices.

A matrix stands for the linear map that a circuit of CNOTs carries out: row r marks the inputs whose
XOR stands on output r. :func:`synthesize` turns a matrix into a circuit.

>>> import zeltbraidwerk as zb
>>> result = zb.linear.synthesize([[1, 1, 0], [0, 1, 0], [0, 0, 1]])
>>> list(result.circuit)  # output 0 becomes input 0 XOR input 1: control 1, target 0
[(1, 0)]
>>> result.verify()
True
"""

from __future__ import annotations

import os
import secrets
import time
from collections.abc import Callable, Sequence
from dataclasses import dataclass, field
from functools import partial
from typing import Any, Literal

import numpy as np
import numpy.typing as npt

from zeltbraidwerk import _core, _search, _validate, errors
from zeltbraidwerk.circuits import CnotCircuit

__all__ = ["LinearSynthesis", "Method", "methods", "synthesize"]

Objective = Literal["count", "depth"]
Permutation = Literal["exact", "free"]
_Found = tuple[str, CnotCircuit, tuple[int, ...]]

_FACINGS = 4  # runs that differ without a draw


@dataclass(frozen=True)
class Method:
    """What a method is good for. ``permutation`` is what its own circuits leave to do: "free" ones
    come out on other wires, and are closed where the outputs must be in place."""

    name: str
    summary: str
    lowers: Objective
    permutation: Permutation
    draws: bool = False
    quick: bool = False  # too short to be stopped
    options: frozenset[str] = frozenset()
    most: int = 2**31 - 1  # qubits
    # Bytes of the beam's states, by size, width and lookahead.
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

# One line a method; what runs under the name stands in the table of the bindings.
_METHODS = {
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
    )
}  # fmt: skip

# What "auto" runs, up to which number of qubits, and with which beam.
_AUTO: dict[Objective, tuple[tuple[str, int, dict[str, int]], ...]] = {
    "count": (
        ("pmh", 1 << 30, {}),
        ("pairs", 1 << 30, {}),
        ("syndrome", 512, {}),
        ("syndrome", 256, {"width": 4, "lookahead": 2}),
        ("syndrome", 160, {"width": 4, "lookahead": 3}),
        ("greedy", 64, {}),
        ("greedy", 32, {"width": 4, "lookahead": 2}),
        ("greedy_inverse", 64, {}),
        ("greedy_log", 40, {}),
    ),
    "depth": (
        ("pmh", 1 << 30, {}),
        ("blocks", 512, {}),
        ("greedy_inverse", 64, {}),
        ("greedy_inverse", 32, {"width": 3, "lookahead": 3}),
    ),
}


def methods() -> tuple[str, ...]:
    """The names that ``method`` takes.

    >>> methods()
    ('auto', 'gauss', 'pmh', 'pairs', 'blocks', 'syndrome', 'greedy', 'greedy_inverse', \
'greedy_escape', 'greedy_log')
    """
    return ("auto", *_METHODS)


@dataclass(frozen=True, repr=False)
class LinearSynthesis:
    """A circuit for a matrix, and how it came about.

    Output r of the map stands on wire ``permutation[r]``: row ``permutation[r]`` of the circuit's
    matrix is row r of the matrix that was asked for.
    """

    circuit: CnotCircuit
    permutation: tuple[int, ...]
    method: str
    objective: Objective
    seed: int | None
    runs: int = field(compare=False)
    seconds: float = field(compare=False)
    matrix: npt.NDArray[np.bool_] = field(compare=False)

    @property
    def n(self) -> int:
        return self.circuit.n

    @property
    def count(self) -> int:
        return self.circuit.count

    @property
    def depth(self) -> int:
        return self.circuit.depth

    def verify(self) -> bool:
        """Replays the circuit, gate by gate and apart from the library, against the matrix."""
        wires = [1 << wire for wire in range(self.n)]
        for control, target in self.circuit:
            wires[target] ^= wires[control]
        wanted = [sum(1 << int(c) for c in np.flatnonzero(row)) for row in self.matrix]
        return [wires[wire] for wire in self.permutation] == wanted

    def __repr__(self) -> str:
        placed = self.permutation == tuple(range(self.n))
        return (
            f"LinearSynthesis({self.method}: {self.n} qubits, {self.count} CNOTs, "
            f"depth {self.depth}, {'outputs in place' if placed else 'outputs permuted'}, "
            f"{self.seconds:.2g} s)"
        )


def synthesize(
    matrix: npt.ArrayLike,
    *,
    method: str = "auto",
    objective: Objective = "count",
    permutation: Permutation = "exact",
    section: int | None = None,
    width: int | None = None,
    lookahead: int | None = None,
    seed: int | None = None,
    restarts: int | None = None,
    budget: float | None = None,
    jobs: int | None = 1,
    progress: Callable[[int], object] | None = None,
) -> LinearSynthesis:
    """A circuit of CNOTs that implements ``matrix``, not its inverse.

    ``matrix`` is square and invertible over GF(2): bool or 0/1 integers, as an array or a nested
    list. It is not changed. Row r marks the inputs whose XOR stands on output r:

    >>> import zeltbraidwerk as zb
    >>> matrix = [[1, 0, 0], [1, 1, 0], [0, 1, 1]]  # outputs a, a + b, b + c of inputs a, b, c
    >>> circuit = zb.linear.synthesize(matrix, method="gauss").circuit
    >>> list(circuit)
    [(1, 2), (0, 1)]
    >>> bool((circuit.matrix() == matrix).all())
    True

    ``method`` is one of :func:`methods`; "auto" takes the best of several and is never worse than
    "pmh". ``objective`` says what best means, fewest CNOTs or fewest layers; the other one decides
    between equals. With ``permutation="exact"``, the default, every output stands on the wire of
    its input; with "free" the circuit is shorter and leaves output r on wire
    ``result.permutation[r]``.

    ``restarts`` is the number of runs of the method: the first one is the method as it stands, the
    others work on the inverse, the transpose and renamed wires, and with their own draws.
    ``budget``, in seconds, ends the search; without ``restarts`` it is filled with runs. Runs go to
    ``jobs`` threads (None: one a core). The same ``seed`` gives the same circuit whatever ``jobs``
    is, unless a budget cuts the search short. ``progress`` is called with the best objective so far
    whenever it falls. Ctrl-C stops at once and raises :class:`zeltbraidwerk.errors.Interrupted`,
    which holds the best result so far.

    ``section`` is the number of columns that "pmh" clears together (default: the best).
    ``width`` and ``lookahead`` are the beam of the greedy searches and of "syndrome": how many
    continuations of each state are kept, and how many steps are looked ahead (defaults: 1).

    Raises :class:`~zeltbraidwerk.errors.SingularMatrixError` and other classes of
    :mod:`zeltbraidwerk.errors`, all ValueErrors or TypeErrors, for arguments that do not fit, and
    :class:`~zeltbraidwerk.errors.UnfinishedError` where no run found a circuit in its budget.
    """
    start = time.perf_counter()
    bits = _validate.invertible_matrix(matrix, "matrix")
    if method not in _METHODS and method != "auto":
        listed = ", ".join(methods())
        raise errors.UnknownMethodError(f"method: got {method!r}, wanted one of {listed}")
    _validate.choice(objective, "objective", ("count", "depth"))
    _validate.choice(permutation, "permutation", ("exact", "free"))
    options = _options(method, len(bits), section=section, width=width, lookahead=lookahead)
    runs = None if restarts is None else _validate.integer(restarts, "restarts", 1, 2**31 - 1)
    seconds = None if budget is None else _validate.seconds(budget, "budget")
    threads = (os.cpu_count() or 1) if jobs is None else _validate.integer(jobs, "jobs", 1, 1024)
    fixed_seed = None if seed is None else _validate.integer(seed, "seed", 0, 2**64 - 1)
    search = _LinearSearch(bits, objective, permutation == "exact", fixed_seed, seconds, start)

    if method == "auto":
        lanes = [
            search.lane(name, _auto_runs(name, len(bits), runs, seconds), beam)
            for name, most, beam in _AUTO[objective]
            if len(bits) <= most
        ]
    else:
        chosen = _METHODS[method]
        if chosen.quick and runs in (None, 1) and seconds is None:
            return search.single(method, options)
        lanes = [search.lane(method, _runs(chosen, runs, seconds), options)]
    return search.work(lanes, threads, progress)


def _options(method: str, n: int, **values: int | None) -> dict[str, int]:
    """Those of the options that were given, each in its range and known to the method."""
    limits = {"section": 30, "width": 2**31 - 1, "lookahead": 64}
    given = {
        name: _validate.integer(value, name, 1, limits[name])
        for name, value in values.items()
        if value is not None
    }
    known = _METHODS[method].options if method in _METHODS else frozenset[str]()
    for name in given:
        if name not in known:
            raise errors.OptionError(f"{name}: not an option of method {method!r}")
    if method in _METHODS:
        if n > _METHODS[method].most:
            raise errors.TooLargeError(
                f"matrix: got {n} qubits, wanted at most {_METHODS[method].most} for {method!r}"
            )
        width, lookahead = given.get("width", 1), given.get("lookahead", 1)
        needed = _METHODS[method].memory(n, width, lookahead)
        there = os.sysconf("SC_PAGE_SIZE") * os.sysconf("SC_PHYS_PAGES")
        if needed > there // 2 or width**lookahead > 2**31 - 1:
            raise errors.TooLargeError(
                f"width, lookahead: got {width} and {lookahead}, which would take "
                f"{width**lookahead:.3g} states and {needed / 1e9:.3g} GB of {there / 1e9:.3g} GB"
            )
    return given


def _runs(method: Method, restarts: int | None, budget: float | None) -> int | None:
    return 1 if restarts is None and budget is None else restarts


def _auto_runs(name: str, n: int, restarts: int | None, budget: float | None) -> int | None:
    """Without other orders "auto" ends in about a second up to 128 qubits."""
    if restarts is not None or budget is not None:
        return restarts
    if _METHODS[name].quick:
        return 2 * _FACINGS
    return 20 if n <= 32 else 4 if n <= 96 else 1


class _LinearSearch:
    """One call of synthesize: from lanes of runs to a result."""

    def __init__(
        self,
        bits: npt.NDArray[np.bool_],
        objective: Objective,
        exact: bool,
        seed: int | None,
        budget: float | None,
        start: float,
    ) -> None:
        self._bits = bits
        self._objective: Objective = objective
        self._exact = exact
        self._given_seed = seed
        self._seed = 0 if seed is None else seed
        self._start = start
        self._control = _core._SearchControl(budget)

    def _run(self, name: str, options: dict[str, int], first: int, last: int) -> Any:
        found = _core._best_of_runs(
            name, self._bits, options.get("section"), options.get("width", 1),
            options.get("lookahead", 1), self._seed, first, last, self._exact,
            self._objective == "depth", self._control,
        )  # fmt: skip
        if found is None:
            return None
        run, gates, permutation = found
        circuit = CnotCircuit._trusted(len(self._bits), gates)
        return run, (name, circuit, tuple(permutation))

    def single(self, name: str, options: dict[str, int]) -> LinearSynthesis:
        """Run 0 of a method that always finishes, without a thread."""
        return self._result(self._run(name, options, 0, 1)[1], 1)

    def lane(self, name: str, runs: int | None, options: dict[str, int]) -> _search.Lane[_Found]:
        if self._given_seed is None and (_METHODS[name].draws or (runs or _FACINGS + 1) > _FACINGS):
            self._given_seed = self._seed = secrets.randbits(64)
        return _search.Lane(partial(self._run, name, options), runs)

    def work(
        self,
        lanes: Sequence[_search.Lane[_Found]],
        jobs: int,
        progress: Callable[[int], object] | None,
    ) -> LinearSynthesis:
        search = _search.Search[_Found](self._key, self._control)
        try:
            search.work(lanes, jobs, lambda found: progress and progress(self._key(found)[0]))
        except KeyboardInterrupt:
            best = None if search.best is None else self._result(search.best, search.runs)
            raise errors.Interrupted(f"stopped, best so far: {best}", best) from None
        if search.best is None:
            raise errors.UnfinishedError(
                f"none of {search.runs} runs found a circuit in "
                f"{time.perf_counter() - self._start:.3g} s; "
                "wanted a larger budget, more restarts or another method"
            )
        return self._result(search.best, search.runs)

    def _key(self, found: _Found) -> tuple[int, int]:
        circuit = found[1]
        count, depth = circuit.count, circuit.depth
        return (count, depth) if self._objective == "count" else (depth, count)

    def _result(self, found: _Found, runs: int) -> LinearSynthesis:
        name, circuit, permutation = found
        return LinearSynthesis(
            circuit=circuit,
            permutation=permutation,
            method=name,
            objective=self._objective,
            seed=self._given_seed,
            runs=runs,
            seconds=time.perf_counter() - self._start,
            matrix=_validate.frozen(self._bits.copy()),
        )

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
from dataclasses import dataclass, field, replace
from functools import partial
from typing import Any, Literal

import numpy as np
import numpy.typing as npt

from zeltbraidwerk import _core, _search, _validate, errors
from zeltbraidwerk._site import Site
from zeltbraidwerk.circuits import CnotCircuit
from zeltbraidwerk.devices import Device

__all__ = ["LinearSynthesis", "Method", "methods", "synthesize"]

Objective = Literal["count", "depth"]
Permutation = Literal["exact", "free"]
_Found = tuple[str, CnotCircuit, tuple[int, ...]]

_FACINGS = 4  # runs that differ without a draw
_STEPS_A_QUBIT = 12_500  # of a search without a limit
_STEPS_FOR_DEPTH = 100_000  # the same up to 32 qubits; above, a step takes longer by their square
_SHORT_BUDGET = 0.25  # seconds; the tables of windows on five wires take a part of it to build


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

_SEARCH = Method(
    "search",
    "beams, and walks through windows with known shortest circuits",
    "count",
    "exact",
    True,
)

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
        _SEARCH,
    )
}  # fmt: skip

# The same on a device, where every CNOT is on an edge.
_ON_DEVICE = {
    method.name: method
    for method in (
        Method("row_column", "rows and columns cleared along Steiner trees", "count", "free", True),
        Method("steiner", "elimination along a Hamiltonian path", "count", "exact"),
        _SEARCH,
    )
}


# What "auto" runs beside the search, and up to which number of qubits.
_AUTO: dict[Objective, dict[str, int]] = {
    "count": {"pmh": 1 << 30, "pairs": 1 << 30, "syndrome": 512, "greedy": 64},
    "depth": {"pmh": 1 << 30, "blocks": 512, "greedy_inverse": 64},
}


def methods(*, device: bool = False) -> tuple[str, ...]:
    """The names that ``method`` takes, without a device or with one.

    >>> methods()
    ('auto', 'gauss', 'pmh', 'pairs', 'blocks', 'syndrome', 'greedy', 'greedy_inverse', \
'greedy_escape', 'greedy_log', 'search')
    >>> methods(device=True)
    ('auto', 'row_column', 'steiner', 'search')
    """
    return ("auto", *(_ON_DEVICE if _validate.flag(device, "device") else _METHODS))


@dataclass(frozen=True, repr=False)
class LinearSynthesis:
    """A circuit for a matrix, and how it came about.

    Output r of the map stands on wire ``permutation[r]``: row ``permutation[r]`` of the circuit's
    matrix is row r of the matrix that was asked for. On a device with more qubits than that, wire k
    is its qubit ``placement[k]``; elsewhere the two are the same.

    ``trace`` holds the moments of the search at which its best became better. ``window`` is the
    number of wires of the largest windows of the method "search", 4 where the budget was too short
    for the tables of 5, and None for other methods. ``front`` is what "search" found for the
    objective "depth": circuits from few layers to few gates, none both as shallow and as short as
    another.
    """

    circuit: CnotCircuit
    permutation: tuple[int, ...]
    method: str
    objective: Objective
    seed: int | None
    runs: int = field(compare=False)
    seconds: float = field(compare=False)
    matrix: npt.NDArray[np.bool_] = field(compare=False)
    placement: tuple[int, ...] = ()
    device: Device | None = None
    trace: tuple[_search.Point, ...] = field(compare=False, default=())
    window: int | None = field(compare=False, default=None)
    front: tuple[LinearSynthesis, ...] = field(compare=False, default=())

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
        """Replays the circuit, gate by gate and apart from the library, against the matrix; on a
        device, against its edges too."""
        wires = [1 << wire for wire in range(self.n)]
        for control, target in self.circuit:
            wires[target] ^= wires[control]
        place = self.placement or range(self.n)
        wanted = [1 << wire for wire in range(self.n)]
        for row, wire in zip(self.matrix, self.permutation, strict=True):
            wanted[place[wire]] = sum(1 << place[int(c)] for c in np.flatnonzero(row))
        return wires == wanted and (self.device is None or self.device.fits(self.circuit))

    def __repr__(self) -> str:
        placed = self.permutation == tuple(range(len(self.matrix)))
        return (
            f"LinearSynthesis({self.method}: {self.n} qubits, {self.count} CNOTs, "
            f"depth {self.depth}, {'outputs in place' if placed else 'outputs permuted'}, "
            f"{self.seconds:.2g} s)"
        )


def synthesize(
    matrix: npt.ArrayLike,
    *,
    method: str = "auto",
    device: Any = None,
    objective: Objective = "count",
    permutation: Permutation = "exact",
    section: int | None = None,
    width: int | None = None,
    lookahead: int | None = None,
    reach: int | None = None,
    seed: int | None = None,
    restarts: int | None = None,
    budget: float | None = None,
    steps: int | None = None,
    jobs: int | None = 1,
    progress: Callable[[_search.Progress], object] | None = None,
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

    With a ``device``, or what :meth:`zeltbraidwerk.Device.of` takes for one, every CNOT is on one
    of its edges. Of a larger device a connected part is taken: ``result.placement`` tells which.
    "row_column" works on every connected device; "steiner" needs a Hamiltonian path, which is
    searched for before work starts.

    >>> result = zb.linear.synthesize(matrix, device=zb.Device.line(3), seed=1)
    >>> result.circuit, result.device.fits(result.circuit)
    (CnotCircuit(3 qubits, 2 CNOTs, depth 2), True)

    ``restarts`` is the number of runs of the method: the first one is the method as it stands, the
    others work on the inverse, the transpose and renamed wires, and with their own draws.
    ``budget``, in seconds, ends the search; without ``restarts`` it is filled with runs. Runs go to
    ``jobs`` threads (None: one a core). The same ``seed`` gives the same circuit whatever ``jobs``
    is, unless a budget cuts the search short. ``progress`` is called with the best objective so far
    whenever it falls: an int that also has ``count``, ``depth`` and ``seconds``. Ctrl-C stops at
    once and raises :class:`zeltbraidwerk.errors.Interrupted`, which holds the best result so far.

    "search" gets better for as long as it may go on: ``steps`` steps a run, or to the end of the
    budget; without either it makes 12,500 steps a qubit, which take 0.1 s for 8 qubits and about
    1 s for 64, or for depth what takes about a second up to 100 qubits. What it does depends on the
    seed and the step alone: the same seed and steps give the same circuit on every machine, and
    more is never worse. With a budget and no ``restarts`` each job makes one run. With 0 steps
    there is no more than a greedy run, in a millisecond for 16 qubits, or a few on a sparse matrix;
    it is never worse than "pairs". A run ends before its steps where its circuit is proven to be
    the best. Its runs for the objective "depth" also give ``result.front``. On a device, ``reach``
    lets outputs end up so many edges from their places, between "exact" (0) and "free".

    >>> zb.linear.synthesize(zb.gallery.random_invertible(8, 1)[0], method="search", seed=1,
    ...                      permutation="free").count
    13

    ``section`` is the number of columns that "pmh" clears together (default: the best).
    ``width`` and ``lookahead`` are the beam of the greedy searches and of "syndrome": how many
    continuations of each state are kept, and how many steps are looked ahead (defaults: 1).

    Raises :class:`~zeltbraidwerk.errors.SingularMatrixError` and other classes of
    :mod:`zeltbraidwerk.errors`, all ValueErrors or TypeErrors, for arguments that do not fit, and
    :class:`~zeltbraidwerk.errors.UnfinishedError` where no run found a circuit in its budget.
    """
    start = time.perf_counter()
    bits = _validate.invertible_matrix(matrix, "matrix")
    _validate.choice(objective, "objective", ("count", "depth"))
    _validate.choice(permutation, "permutation", ("exact", "free"))
    ground = None if device is None else Device.of(device)
    on_device = ground is not None
    _validate.method(method, methods(device=on_device), on_device)
    given = {"section": section, "width": width, "lookahead": lookahead}
    _validate.options_of(method, _takers(on_device), steps=steps, reach=reach, **given)
    options = _options(method, len(bits), given)
    effort = _search.Effort.checked(seed, restarts, budget, jobs, steps, progress)
    reach = _reach(reach, permutation)
    exact = permutation == "exact"
    search = _LinearSearch(bits, objective, exact, effort, start)
    if ground is not None:
        sites = _sites(ground, method, len(bits), exact, effort.budget)
        for name, site in sites.items():
            search.place(name, site)
        lanes = [search.lane(name, _device_runs(effort), {}) for name in sites if name != "search"]
        if "search" in sites:
            lanes.append(search.search_lane(method == "auto", reach))
    elif method == "auto":
        lanes = [
            search.lane(name, _auto_runs(name, len(bits), effort), {})
            for name, most in _AUTO[objective].items()
            if len(bits) <= most
        ]
        lanes.append(search.search_lane(True, None))
    elif method == "search":
        lanes = [search.search_lane(False, None)]
        if effort.steps == 0 and effort.search_runs == 1:
            return search.greedy(lanes[0])
    else:
        chosen = _METHODS[method]
        if chosen.quick and effort.restarts in (None, 1) and effort.budget is None:
            return search.single(method, options)
        lanes = [search.lane(method, _runs(effort), options)]
    return search.work(lanes, progress)


def _sites(
    device: Device, method: str, n: int, exact: bool, budget: float | None
) -> dict[str, Site]:
    """Where each method works; refuses a device on which the method asked for cannot.

    A Hamiltonian path leaves the outputs where they are, so where they may move it gains nothing.
    """
    if method == "steiner":
        return {method: Site.with_path(device, n, 5.0 if budget is None else budget)}
    if method == "search":
        return {method: Site.of(device, n)}
    sites = {"row_column": Site.of(device, n)}
    if method == "auto" and exact and (path := sites["row_column"].quick_path()) is not None:
        sites["steiner"] = path
    if method == "auto":
        sites["search"] = sites["row_column"]
    return sites


def _takers(on_device: bool) -> dict[str, tuple[str, ...]]:
    """The methods that take each option that not all of them take."""
    takers = {
        option: tuple(name for name, each in _METHODS.items() if option in each.options)
        for option in ("section", "width", "lookahead")
    }
    if on_device:  # none of these works there
        takers = {
            option: (f"{', '.join(names)} without a device",) for option, names in takers.items()
        }
    takers["reach"] = ("search" if on_device else "search on a device",)
    return takers | {"steps": ("auto", "search")}


def _reach(reach: Any, permutation: Permutation) -> int | None:
    if reach is None:
        return None
    if permutation != "exact":
        raise errors.OptionError('reach: wanted with permutation="exact", which it relaxes')
    return _validate.integer(reach, "reach", 0, 2**31 - 1)


def _options(method: str, n: int, values: dict[str, int | None]) -> dict[str, int]:
    """Those of the options that were given, each in its range."""
    limits = {"section": 30, "width": 2**31 - 1, "lookahead": 64}
    given = {
        name: _validate.integer(value, name, 1, limits[name])
        for name, value in values.items()
        if value is not None
    }
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


def _runs(effort: _search.Effort) -> int | None:
    return 1 if effort.restarts is None and effort.budget is None else effort.restarts


def _auto_runs(name: str, n: int, effort: _search.Effort) -> int | None:
    """Without other orders "auto" ends in about a second up to 128 qubits. To the end of a budget
    goes the search."""
    if effort.restarts is not None:
        return effort.restarts
    if _METHODS[name].quick:
        return 2 * _FACINGS
    return 20 if n <= 32 else 4 if n <= 96 else 1


def _device_runs(effort: _search.Effort) -> int | None:
    return 100 if effort.restarts is None and effort.budget is None else effort.restarts


class _LinearSearch:
    """One call of synthesize: from lanes of runs to a result."""

    def __init__(
        self,
        bits: npt.NDArray[np.bool_],
        objective: Objective,
        exact: bool,
        effort: _search.Effort,
        start: float,
    ) -> None:
        self._bits = bits
        self._objective: Objective = objective
        self._exact = exact
        self._effort = effort
        self._given_seed = effort.seed
        self._seed = effort.seed or 0
        self._start = start
        self._sites: dict[str, Site] = {}
        self._fronts: list[_Found] = []
        self._control = _core._SearchControl(effort.budget)

    def place(self, name: str, site: Site) -> None:
        """The method is to work there."""
        self._sites[name] = site

    def _run(self, name: str, options: dict[str, int], first: int, last: int) -> Any:
        by_depth = self._objective == "depth"
        site = self._sites.get(name)
        if site is None:
            found = _core._best_of_runs(
                name, self._bits, options.get("section"), options.get("width", 1),
                options.get("lookahead", 1), self._seed, first, last, self._exact, by_depth,
                self._control,
            )  # fmt: skip
        else:
            found = _core._best_of_device_runs(
                self._bits, site.adjacency, site.path, self._seed, first, last, not self._exact,
                by_depth, self._control,
            )  # fmt: skip
        if found is None:
            return None
        run, gates, permutation = found
        n = len(self._bits)
        if site is not None:
            n, gates = site.device.n, site.placed(gates)
        return run, (name, CnotCircuit._trusted(n, gates), tuple(permutation))

    def single(self, name: str, options: dict[str, int]) -> LinearSynthesis:
        """Run 0 of a method that always finishes, without a thread."""
        return self._result(self._run(name, options, 0, 1)[1], 1)

    def greedy(self, lane: _search.Lane[_Found]) -> LinearSynthesis:
        """A search of no steps always finishes, and needs no thread."""
        made = lane.run(0, 1)
        assert made is not None
        return self._result(made[1], 1, self._front())

    def lane(self, name: str, runs: int | None, options: dict[str, int]) -> _search.Lane[_Found]:
        draws = name in _ON_DEVICE or _METHODS[name].draws
        if self._given_seed is None and (draws or (runs or _FACINGS + 1) > _FACINGS):
            self._given_seed = self._seed = secrets.randbits(64)
        return _search.Lane(partial(self._run, name, options), runs)

    def search_lane(self, within_auto: bool, reach: int | None) -> _search.Lane[_Found]:
        if self._given_seed is None:
            self._given_seed = self._seed = secrets.randbits(64)
        effort = self._effort
        steps = effort.steps
        if steps is None and effort.budget is None:
            n = len(self._bits)
            steps = _STEPS_A_QUBIT * max(n, 8)
            if self._objective == "depth":
                steps = min(_STEPS_FOR_DEPTH, _STEPS_FOR_DEPTH * 32 * 32 // max(n, 1) ** 2)
            if within_auto and effort.restarts is not None:
                # One run beside those of other methods, the longer the more there are of them.
                steps = steps * min(effort.restarts, 8) // 2
                effort = replace(effort, restarts=1)
        return _search.search_lane(partial(self._searched, reach, steps), self._key, effort)

    def _searched(self, reach: int | None, steps: int | None, run: int) -> _Found:
        """One run of the search."""
        site = self._sites.get("search")
        tail = (self._seed, run, steps, self._control)
        if site is not None:
            limit = (reach or 0) if self._exact else None
            gates, wires = _core._search_device_cnots(
                self._bits, site.adjacency, limit, self._objective == "depth", *tail
            )
            return "search", CnotCircuit._trusted(site.device.n, site.placed(gates)), tuple(wires)
        n = len(self._bits)
        if self._objective == "count":
            found = [_core._search_cnots(self._bits, self._exact, self._window(), *tail)]
        else:
            found = _core._search_shallow_cnots(self._bits, self._exact, *tail)
        front = [("search", CnotCircuit._trusted(n, gates), tuple(wires)) for gates, wires in found]
        if self._objective == "depth":
            self._fronts += front
        return min(front, key=self._key)

    def _window(self) -> int:
        effort = self._effort
        return 4 if effort.steps is None and (effort.budget or 1) < _SHORT_BUDGET else 5

    def _front(self) -> tuple[LinearSynthesis, ...]:
        """Of all runs together."""
        front: list[LinearSynthesis] = []
        for found in sorted(self._fronts, key=self._key):
            if not front or found[1].count < front[-1].count:
                front.append(self._result(found, 1, ()))
        return tuple(front)

    def work(
        self,
        lanes: Sequence[_search.Lane[_Found]],
        progress: Callable[[_search.Progress], object] | None,
    ) -> LinearSynthesis:
        trace = _search.Trace(self._objective == "depth", progress)

        def result(found: _Found, runs: int) -> LinearSynthesis:
            return self._result(found, runs, self._front(), tuple(trace.points))

        best = _search.best_of(lanes, self._effort.jobs, self._control, self._key, result, trace)
        return result(*best)

    def _key(self, found: _Found) -> tuple[int, int]:
        circuit = found[1]
        count, depth = circuit.count, circuit.depth
        return (count, depth) if self._objective == "count" else (depth, count)

    def _result(
        self,
        found: _Found,
        runs: int,
        front: tuple[LinearSynthesis, ...] = (),
        trace: tuple[_search.Point, ...] = (),
    ) -> LinearSynthesis:
        name, circuit, permutation = found
        site = self._sites.get(name)
        return LinearSynthesis(
            circuit=circuit,
            permutation=permutation,
            method=name,
            objective=self._objective,
            seed=self._given_seed,
            runs=runs,
            seconds=time.perf_counter() - self._start,
            matrix=_validate.frozen(self._bits.copy()),
            placement=site.qubits if site else tuple(range(len(self._bits))),
            device=site.device if site else None,
            trace=trace,
            window=self._window() if name == "search" else None,
            front=front,
        )

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
from zeltbraidwerk._site import Site
from zeltbraidwerk.circuits import CnotCircuit
from zeltbraidwerk.devices import Device

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

# The same on a device, where every CNOT is on an edge.
_ON_DEVICE = {
    method.name: method
    for method in (
        Method("row_column", "rows and columns cleared along Steiner trees", "count", "free", True),
        Method("steiner", "elimination along a Hamiltonian path", "count", "exact"),
    )
}


@dataclass(frozen=True)
class _Entrant:
    """What "auto" runs: a method with its beam, on so many qubits at most, where the matrix or its
    inverse has so many ones at most."""

    name: str
    qubits: int
    beam: dict[str, int] = field(default_factory=dict)
    ones: int = 1 << 60


_AUTO: dict[Objective, tuple[_Entrant, ...]] = {
    "count": (
        _Entrant("pmh", 1 << 30),
        _Entrant("pairs", 1 << 30),
        _Entrant("syndrome", 512),
        _Entrant("syndrome", 256, {"width": 4, "lookahead": 2}),
        _Entrant("syndrome", 160, {"width": 4, "lookahead": 3}),
        _Entrant("greedy", 64),
        # Wins on sparse matrices; on dense ones of this size it goes in circles, at a high price.
        _Entrant("greedy", 32, {"width": 4, "lookahead": 2}, ones=256),
        _Entrant("greedy_inverse", 64),
        _Entrant("greedy_log", 40),
    ),
    "depth": (
        _Entrant("pmh", 1 << 30),
        _Entrant("blocks", 512),
        _Entrant("greedy_inverse", 64),
        _Entrant("greedy_inverse", 32, {"width": 3, "lookahead": 3}),
    ),
}


def methods(*, device: bool = False) -> tuple[str, ...]:
    """The names that ``method`` takes, without a device or with one.

    >>> methods()
    ('auto', 'gauss', 'pmh', 'pairs', 'blocks', 'syndrome', 'greedy', 'greedy_inverse', \
'greedy_escape', 'greedy_log')
    >>> methods(device=True)
    ('auto', 'row_column', 'steiner')
    """
    return ("auto", *(_ON_DEVICE if device else _METHODS))


@dataclass(frozen=True, repr=False)
class LinearSynthesis:
    """A circuit for a matrix, and how it came about.

    Output r of the map stands on wire ``permutation[r]``: row ``permutation[r]`` of the circuit's
    matrix is row r of the matrix that was asked for. On a device with more qubits than that, wire k
    is its qubit ``placement[k]``; elsewhere the two are the same.
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
    _validate.choice(objective, "objective", ("count", "depth"))
    _validate.choice(permutation, "permutation", ("exact", "free"))
    ground = None if device is None else Device.of(device)
    if method not in methods(device=ground is not None):
        listed = ", ".join(methods(device=ground is not None))
        raise errors.UnknownMethodError(f"method: got {method!r}, wanted one of {listed}")
    options = _options(method, len(bits), section=section, width=width, lookahead=lookahead)
    effort = _search.Effort.checked(seed, restarts, budget, jobs)
    exact = permutation == "exact"
    search = _LinearSearch(bits, objective, exact, effort, start)
    if ground is not None:
        sites = _sites(ground, method, len(bits), exact, effort.budget)
        for name, site in sites.items():
            search.place(name, site)
        lanes = [search.lane(name, _device_runs(effort), {}) for name in sites]
    elif method == "auto":
        n = len(bits)
        ones = min(bits.sum(), _core.boolean_matrix_inverse(n, bits).sum())
        lanes = [
            search.lane(entrant.name, _auto_runs(entrant.name, n, effort), entrant.beam)
            for entrant in _AUTO[objective]
            if n <= entrant.qubits and ones <= entrant.ones
        ]
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
    sites = {"row_column": Site.of(device, n)}
    if method == "auto" and exact and (path := sites["row_column"].quick_path()) is not None:
        sites["steiner"] = path
    return sites


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


def _runs(effort: _search.Effort) -> int | None:
    return 1 if effort.restarts is None and effort.budget is None else effort.restarts


def _auto_runs(name: str, n: int, effort: _search.Effort) -> int | None:
    """Without other orders "auto" ends in about a second up to 128 qubits."""
    if effort.restarts is not None or effort.budget is not None:
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

    def lane(self, name: str, runs: int | None, options: dict[str, int]) -> _search.Lane[_Found]:
        draws = name in _ON_DEVICE or _METHODS[name].draws
        if self._given_seed is None and (draws or (runs or _FACINGS + 1) > _FACINGS):
            self._given_seed = self._seed = secrets.randbits(64)
        return _search.Lane(partial(self._run, name, options), runs)

    def work(
        self, lanes: Sequence[_search.Lane[_Found]], progress: Callable[[int], object] | None
    ) -> LinearSynthesis:
        best = _search.best_of(
            lanes, self._effort.jobs, self._control, self._key, self._result, progress
        )
        return self._result(*best)

    def _key(self, found: _Found) -> tuple[int, int]:
        circuit = found[1]
        count, depth = circuit.count, circuit.depth
        return (count, depth) if self._objective == "count" else (depth, count)

    def _result(self, found: _Found, runs: int) -> LinearSynthesis:
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
        )

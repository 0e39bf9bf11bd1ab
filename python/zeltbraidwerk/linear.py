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

from collections.abc import Callable, Iterable
from dataclasses import dataclass, field, replace
from functools import partial
from typing import Any

import numpy as np
import numpy.typing as npt

from zeltbraidwerk import _core, _search, _validate, errors
from zeltbraidwerk._family import Call, Found
from zeltbraidwerk._linear_methods import FAMILY, METHODS, ON_DEVICE, Method, checked
from zeltbraidwerk._results import Objective, Permutation, Result
from zeltbraidwerk._site import Site
from zeltbraidwerk.circuits import CnotCircuit
from zeltbraidwerk.devices import Device

__all__ = ["LinearSynthesis", "Method", "methods", "synthesize"]

_Found = Found[CnotCircuit]
_Lane = _search.Lane[_Found]

_FACINGS = 4  # runs that differ without a random draw
_STEPS_PER_QUBIT = 12_500  # of a search without a limit
_STEPS_FOR_DEPTH = 100_000  # the same up to 32 qubits; above, a step takes longer by their square
_SHORT_BUDGET = 0.25  # seconds; the tables of windows on five wires take a part of it to build

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
    return FAMILY.methods(device)


@dataclass(frozen=True, kw_only=True, repr=False)
class LinearSynthesis(Result):
    """A circuit for a matrix, and how it was found.

    Row ``permutation[r]`` of the circuit's matrix is row r of ``matrix``, which was asked for.
    ``window`` is the number of wires of the largest windows of the method "search", 4 where the
    budget was too short for the tables of 5, and None for other methods. ``front`` is what "search"
    found for the objective "depth": circuits from few layers to few gates, of which none has both
    at most as many layers and at most as many gates as another.
    """

    circuit: CnotCircuit
    matrix: npt.NDArray[np.bool_] = field(compare=False)
    window: int | None = field(compare=False, default=None)
    front: tuple[LinearSynthesis, ...] = field(compare=False, default=())

    def verify(self) -> bool:
        """Replays the circuit, gate by gate and without the library, against the matrix; on a
        device, checks its edges too."""
        wires = [1 << wire for wire in range(self.n)]
        for control, target in self.circuit:
            wires[target] ^= wires[control]
        place = self.placement
        wanted = [1 << wire for wire in range(self.n)]
        for row, wire in zip(self.matrix, self.permutation, strict=True):
            wanted[place[wire]] = sum(1 << place[int(c)] for c in np.flatnonzero(row))
        return wires == wanted and self._on_edges()


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
    of its edges. Of a larger device a connected part is used: ``result.placement`` tells which.
    "row_column" works on every connected device; "steiner" needs a Hamiltonian path, which is
    searched for before work starts.

    >>> result = zb.linear.synthesize(matrix, device=zb.Device.line(3), seed=1)
    >>> result.circuit, result.device.fits(result.circuit)
    (CnotCircuit(3 qubits, 2 CNOTs, depth 2), True)

    ``restarts`` is the number of runs of the method: the first one is the method itself, the others
    work on the inverse, the transpose and renamed wires, and with other random numbers. ``budget``,
    in seconds, ends the search; without ``restarts`` it is filled with runs. Runs go to ``jobs``
    threads (None: one per core). The same ``seed`` gives the same circuit whatever ``jobs`` is,
    unless a budget ends the search early. ``progress`` is called with the best objective so far
    whenever it falls: an int that also has ``count``, ``depth`` and ``seconds``. Ctrl-C stops at
    once and raises :class:`zeltbraidwerk.errors.Interrupted`, which holds the best result so far.

    "search" finds shorter circuits the longer it runs: ``steps`` steps per run, or to the end of
    the budget; without either it makes 12,500 steps per qubit, which take 0.1 s for 8 qubits and
    about 1 s for 64, or for depth what takes about a second up to 100 qubits. What it does depends
    on the seed and the step alone: the same seed and steps give the same circuit on every machine,
    and more is never worse. With a budget and no ``restarts`` each job makes one run. With 0 steps
    it makes one greedy run, which takes a millisecond for 16 qubits, or a few on a sparse matrix;
    it is never worse than "pairs". A run ends before its steps where its circuit is proven to be
    the best. Its runs for the objective "depth" also give ``result.front``. On a device, ``reach``
    is how many edges from its place an output may end, between "exact" (0) and "free".

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
    call = FAMILY.call(
        method=method, device=device, objective=objective, permutation=permutation, seed=seed,
        restarts=restarts, budget=budget, steps=steps, jobs=jobs, progress=progress,
        section=section, width=width, lookahead=lookahead, reach=reach,
    )  # fmt: skip
    bits = _validate.invertible_matrix(matrix, "matrix")
    given = {"section": section, "width": width, "lookahead": lookahead}
    options = checked(call.method, len(bits), given)
    return _LinearSearch(call, bits, options, _reach(reach, call)).work()


def _sites(call: Call, device: Device, n: int) -> dict[str, Site]:
    """Where each method works; refuses a device on which the method asked for cannot work.

    A Hamiltonian path leaves the outputs where they are, so where they may move it gains nothing.
    """
    if call.method == "steiner":
        budget = call.effort.budget
        return {"steiner": Site.with_path(device, n, 5.0 if budget is None else budget)}
    site = Site.of(device, n)
    if call.method != "auto":
        return {call.method: site}
    path = site.quick_path() if call.exact else None
    with_path = {} if path is None else {"steiner": path}
    return {"row_column": site} | with_path | {"search": site}


def _reach(reach: Any, call: Call) -> int | None:
    if reach is None:
        return None
    if not call.exact:
        raise errors.OptionError('reach: wanted with permutation="exact", which it relaxes')
    return _validate.integer(reach, "reach", 0, 2**31 - 1)


class _LinearSearch:
    """One call of synthesize: the lanes of its methods, and its result."""

    def __init__(
        self,
        call: Call,
        bits: npt.NDArray[np.bool_],
        options: dict[str, int],
        reach: int | None,
    ) -> None:
        self._call = call
        self._bits = bits
        self._n = len(bits)
        self._options = options
        self._reach = reach
        self._sites: dict[str, Site] = {}
        self._fronts: list[_Found] = []
        self._control = call.control  # the time of the budget begins here

    def work(self) -> LinearSynthesis:
        call = self._call
        names: Iterable[str] = (call.method,)
        if call.device is not None:
            names = self._sites = _sites(call, call.device, self._n)
        elif call.method == "auto":
            most = _AUTO[call.objective]
            names = [*(name for name in most if self._n <= most[name]), "search"]
        lanes = [self._lane(name) for name in names]
        if call.device is None and self._is_single():
            made = lanes[0].run(0, 1)
            assert made is not None
            return self._result(made[1], 1)
        return self._result(*call.best(lanes, self._result))

    def _is_single(self) -> bool:
        """Whether one run that always finishes is all there is to do, which needs no thread."""
        method, effort = self._call.method, self._call.effort
        if method == "search":
            return effort.steps == 0 and effort.search_runs == 1
        quick = method != "auto" and METHODS[method].quick
        return quick and effort.restarts in (None, 1) and effort.budget is None

    def _lane(self, name: str) -> _Lane:
        if name == "search":
            return self._search_lane()
        runs = self._runs(name)
        if name in ON_DEVICE or METHODS[name].draws or (runs or _FACINGS + 1) > _FACINGS:
            self._call.draw_seed()
        return _search.Lane(partial(self._run, name), runs)

    def _runs(self, name: str) -> int | None:
        """Without ``restarts`` "auto" ends in about a second up to 128 qubits, and leaves a budget
        to the search."""
        effort, on_device = self._call.effort, self._call.device is not None
        if effort.restarts is not None:
            return effort.restarts
        if on_device or self._call.method != "auto":
            return None if effort.budget is not None else 100 if on_device else 1
        if METHODS[name].quick:
            return 2 * _FACINGS
        return 20 if self._n <= 32 else 4 if self._n <= 96 else 1

    def _run(self, name: str, first: int, last: int) -> tuple[int, _Found] | None:
        call = self._call
        site = self._sites.get(name)
        if site is None:
            options = {} if call.method == "auto" else self._options
            found = _core._best_of_runs(
                name, self._bits, options.get("section"), options.get("width", 1),
                options.get("lookahead", 1), call.seed or 0, first, last, call.exact,
                call.by_depth, self._control,
            )  # fmt: skip
        else:
            found = _core._best_of_device_runs(
                self._bits, site.adjacency, site.path, call.seed or 0, first, last,
                not call.exact, call.by_depth, self._control,
            )  # fmt: skip
        if found is None:
            return None
        run, gates, permutation = found
        return run, self._found(name, gates, permutation)

    def _found(self, name: str, gates: npt.NDArray[np.int32], wires: list[int]) -> _Found:
        site = self._sites.get(name)
        n, pairs = (self._n, gates) if site is None else (site.device.n, site.placed(gates))
        circuit = CnotCircuit._trusted(n, pairs)
        return Found(name, circuit, tuple(wires), circuit.count, circuit.depth)

    def _search_lane(self) -> _Lane:
        call = self._call
        call.draw_seed()
        effort = call.effort
        steps = effort.steps
        if steps is None and effort.budget is None:
            steps = _STEPS_PER_QUBIT * max(self._n, 8)
            if call.by_depth:
                steps = min(_STEPS_FOR_DEPTH, _STEPS_FOR_DEPTH * 32 * 32 // max(self._n, 1) ** 2)
            if call.method == "auto" and effort.restarts is not None:
                # One run beside those of other methods, the longer the more there are of them.
                steps = steps * min(effort.restarts, 8) // 2
                effort = replace(effort, restarts=1)
        return call.search_lane(partial(self._searched, steps), effort)

    def _searched(self, steps: int | None, run: int) -> _Found:
        """One run of the search."""
        call = self._call
        site = self._sites.get("search")
        tail = (call.draw_seed(), run, steps, self._control)
        if site is not None:
            limit = (self._reach or 0) if call.exact else None
            return self._found("search", *_core._search_device_cnots(
                self._bits, site.adjacency, limit, call.by_depth, *tail
            ))  # fmt: skip
        if not call.by_depth:
            return self._found("search", *_core._search_cnots(
                self._bits, call.exact, self._window(), *tail
            ))  # fmt: skip
        found = _core._search_shallow_cnots(self._bits, call.exact, *tail)
        front = [self._found("search", gates, wires) for gates, wires in found]
        self._fronts += front
        return min(front, key=call.key)

    def _window(self) -> int:
        effort = self._call.effort
        return 4 if effort.steps is None and (effort.budget or 1) < _SHORT_BUDGET else 5

    def _front(self) -> tuple[LinearSynthesis, ...]:
        """Of all runs together."""
        front: list[LinearSynthesis] = []
        for found in sorted(self._fronts, key=self._call.key):
            if not front or found.count < front[-1].count:
                front.append(self._made(found, 1, trace=()))
        return tuple(front)

    def _result(self, found: _Found, runs: int) -> LinearSynthesis:
        return self._made(found, runs, front=self._front())

    def _made(self, found: _Found, runs: int, **own: Any) -> LinearSynthesis:
        self._call.site = self._sites.get(found.method)
        return self._call.result(
            LinearSynthesis, found, runs, self._n, circuit=found.made,
            matrix=_validate.frozen(self._bits.copy()),
            window=self._window() if found.method == "search" else None, **own,
        )  # fmt: skip

"""CNOT and phase circuits of phase polynomials.

A phase polynomial is a set of parities, each with an angle: the diagonal operator that turns the
phase by the angle where the XOR of the parity's qubits is 1. :func:`synthesize` turns it into a
circuit in which every parity comes up on some wire and gets its phase gate there.

>>> import zeltbraidwerk as zb
>>> result = zb.phase.synthesize({"110": 0.5, "011": "a", "111": 0.25}, seed=1)
>>> result.count, result.verify()
(4, True)
"""

from __future__ import annotations

import secrets
import time
from collections.abc import Callable, Iterator, Mapping, Sequence
from dataclasses import dataclass, field
from functools import partial
from typing import Any, Literal

import numpy as np
import numpy.typing as npt

from zeltbraidwerk import _core, _search, _validate, errors, linear
from zeltbraidwerk._results import HoldsCircuit
from zeltbraidwerk._site import Site
from zeltbraidwerk.circuits import Circuit, CnotCircuit
from zeltbraidwerk.devices import Device
from zeltbraidwerk.gates import Gate, Parameter, parameter
from zeltbraidwerk.instructions import gates_alone

__all__ = ["PhaseSynthesis", "methods", "polynomial_of", "synthesize"]

Terms = dict[int, Parameter]  # by parity, bit q for qubit q
_Found = tuple[str, npt.NDArray[np.int32], CnotCircuit, tuple[int, ...]]

_Ending = Literal["return", "exact", "free"]

_METHODS = ("gray", "greedy", "search")
_ON_DEVICE = ("gray", "search")
_MOST_SEARCHED = 16383  # qubits
_DEFAULT_RUNS = 20
_DEFAULT_RUNS_ON_DEVICE = 100  # which are quicker, and differ more
_CLOSING_SHARE = 0.25  # of the budget
_CLOSING_STEPS = 50_000  # of the search that closes, for each run
_MOST_CLOSING_STEPS = 1_000_000


def methods(*, device: bool = False) -> tuple[str, ...]:
    """The names that ``method`` takes, without a device or with one.

    >>> methods(), methods(device=True)
    (('auto', 'gray', 'greedy', 'search'), ('auto', 'gray', 'search'))
    """
    return ("auto", *(_ON_DEVICE if _validate.flag(device, "device") else _METHODS))


@dataclass(frozen=True, repr=False)
class PhaseSynthesis(HoldsCircuit):
    """A circuit for a phase polynomial, and how it came about.

    ``leftover`` is the linear map that the circuit leaves behind, row r the inputs whose XOR stands
    on wire r; None where it was closed. ``permutation`` tells on which wire each qubit then stands.
    On a larger device wire k is its qubit ``placement[k]``; elsewhere the two are the same.
    ``trace`` holds the moments of the search at which its best became better.
    """

    circuit: Circuit
    leftover: npt.NDArray[np.bool_] | None = field(compare=False)
    permutation: tuple[int, ...]
    global_phase: Parameter
    terms: tuple[tuple[int, Parameter], ...]
    method: str
    seed: int | None
    runs: int = field(compare=False)
    seconds: float = field(compare=False)
    placement: tuple[int, ...]
    device: Device | None = None
    trace: tuple[_search.Point, ...] = field(compare=False, default=())

    def verify(self) -> bool:
        """Follows the parities through the circuit, apart from the library: every one gets its
        angle once, the wires end as they should, and CNOTs are on edges where there is a device."""
        wires = [1 << wire for wire in range(self.n)]
        phases: dict[int, list[Parameter]] = {}
        for gate in self.circuit:
            if gate.name == "CNOT":
                control, target = gate.qubits
                wires[target] ^= wires[control]
            elif gate.name == "PH":
                phases.setdefault(wires[gate.qubits[0]], []).append(gate.params[0])
            else:
                return False
        wanted = {self._placed(parity): [angle] for parity, angle in self.terms}
        return (
            phases == wanted
            and wires == self._wanted_wires()
            and (self.device is None or self.device.fits(self.circuit))
        )

    def _placed(self, parity: int) -> int:
        return sum(1 << wire for k, wire in enumerate(self.placement) if parity >> k & 1)

    def _wanted_wires(self) -> list[int]:
        wires = [1 << wire for wire in range(self.n)]
        for k, wire in enumerate(self.permutation):
            row = 1 << k
            if self.leftover is not None:
                row = sum(1 << int(c) for c in np.flatnonzero(self.leftover[k]))
            wires[self.placement[wire]] = self._placed(row)
        return wires

    def __repr__(self) -> str:
        left = "" if self.leftover is None else ", a linear map left"
        return (
            f"PhaseSynthesis({self.method}: {len(self.placement)} qubits, "
            f"{len(self.terms)} phases, {self.count} CNOTs, depth {self.depth}{left}, "
            f"{self.seconds:.2g} s)"
        )


def synthesize(
    polynomial: Any,
    *,
    n: int | None = None,
    method: str = "auto",
    device: Any = None,
    leftover: Literal["close", "return"] = "close",
    permutation: linear.Permutation = "exact",
    objective: linear.Objective = "count",
    seed: int | None = None,
    restarts: int | None = None,
    budget: float | None = None,
    steps: int | None = None,
    jobs: int | None = 1,
    progress: Callable[[_search.Progress], object] | None = None,
) -> PhaseSynthesis:
    """A circuit of CNOT and PH gates for a phase polynomial.

    ``polynomial`` maps parities to angles, or is a tuple ``(parities, angles)`` of two lists, the
    first of which may be a 0/1 array with one row per parity. A parity is a tuple or a string of
    bits, one per qubit, or an int whose bit q stands for qubit q; ``n`` is the number of qubits
    where ints leave it open. Angles are numbers of radians or symbolic, and pass through untouched;
    those of equal parities are added. The zero parity stands on no wire: its angle is
    ``result.global_phase``.

    >>> import zeltbraidwerk as zb
    >>> result = zb.phase.synthesize({(1, 0): 0.5, (1, 1): 0.25, (0, 0): 1.0}, seed=1)
    >>> print(result.circuit.draw())
    q0: ──PH(0.5)──⊕──PH(0.25)──⊕──
                   │            │
    q1: ───────────●────────────●──
    >>> result.global_phase
    Parameter(1.0)

    CNOTs leave a linear map behind. With ``leftover="close"``, the default, it is undone, so that
    the circuit is diagonal; ``permutation="free"`` lets qubits end on other wires,
    ``result.permutation[k]`` for qubit k. With "return" it is handed back as ``result.leftover``.

    "gray" is GraySynth, "greedy" takes one of the lightest parities after the other; "search" grows
    circuits in ever wider beams and shortens the best one window by window, for as long as it may
    go on; "auto" takes the best. With a ``device`` every CNOT is on one of its edges, as in
    :func:`zeltbraidwerk.linear.synthesize`, which explains the other options too.

    >>> parities = zb.gallery.random_parities(8, 64, 1)[0]
    >>> polynomial = {parity: 0.1 for parity in parities}
    >>> [zb.phase.synthesize(polynomial, n=8, method="search", seed=1, steps=steps).count
    ...  for steps in (0, 50_000)]
    [89, 77]
    """
    start = time.perf_counter()
    terms, size = _terms(polynomial, n)
    global_phase = terms.pop(0, Parameter(0.0))
    ground = None if device is None else Device.of(device)
    known = methods(device=ground is not None)
    _validate.method(method, known, ground is not None)
    _validate.choice(leftover, "leftover", ("close", "return"))
    _validate.choice(permutation, "permutation", ("exact", "free"))
    _validate.choice(objective, "objective", ("count", "depth"))
    if leftover == "return" and permutation == "free":
        raise errors.OptionError("permutation: got 'free' with leftover='return', which is exact")
    _validate.options_of(method, {"steps": ("auto", "search")}, steps=steps)
    effort = _search.Effort.checked(seed, restarts, budget, jobs, steps, progress)
    names = known[1:] if method == "auto" else (method,)
    if size > _MOST_SEARCHED:
        if method == "search":
            raise errors.TooLargeError(
                f"polynomial: got {size} qubits, wanted at most {_MOST_SEARCHED} for 'search'"
            )
        names = tuple(name for name in names if name != "search")
    site = None if ground is None else Site.of(ground, size)
    ending: _Ending = "return" if leftover == "return" else permutation
    search = _PhaseSearch(terms, global_phase, size, site, objective, ending, effort, start)
    return search.work(names, progress)


def polynomial_of(circuit: Circuit) -> tuple[dict[int, Parameter], npt.NDArray[np.bool_]]:
    """Phase polynomial and linear map of a circuit of CNOTs, X gates and rotations about Z.

    X gates flip the angles behind them and leave the map as it is.

    >>> gates = [Gate.rz(0, 0.5), Gate.cnot(0, 1), Gate.rz(1, 0.25)]
    >>> polynomial_of(Circuit(2, gates))[0]
    {1: Parameter(0.5), 3: Parameter(0.25)}
    """
    _validate.instance(circuit, "circuit", Circuit, "a Circuit")
    wires = [1 << wire for wire in range(circuit.n)]
    flipped = [False] * circuit.n
    terms: Terms = {}
    fixed = {"Z": np.pi, "S": np.pi / 2, "D-S": -np.pi / 2}
    for gate in gates_alone(circuit, "circuit"):
        wire = gate.qubits[-1]
        if gate.name == "CNOT":
            wires[wire] ^= wires[gate.qubits[0]]
            flipped[wire] ^= flipped[gate.qubits[0]]
        elif gate.name == "X":
            flipped[wire] = not flipped[wire]
        elif gate.diag or gate.name in fixed:
            angle = gate.params[0] if gate.diag else Parameter(fixed[gate.name])
            _add(terms, wires[wire], -angle if flipped[wire] else angle)
        elif gate.name != "I":
            raise errors.GateError(f"circuit: got {gate.name}, wanted CNOTs and rotations about Z")
    rows = [[bool(wire >> c & 1) for c in range(circuit.n)] for wire in wires]
    return terms, np.array(rows, dtype=np.bool_).reshape(circuit.n, circuit.n)


def _add(terms: Terms, parity: int, angle: Parameter) -> None:
    terms[parity] = terms[parity] + angle if parity in terms else angle


def _terms(polynomial: Any, n: int | None) -> tuple[Terms, int]:
    """The angles by parity, those of equal ones added, and the number of qubits."""
    size = None if n is None else _validate.qubit_count(n)
    terms: Terms = {}
    widest = 0
    for key, angle in _pairs(polynomial):
        parity, length = _parity(key)
        if length is None:
            widest = max(widest, parity.bit_length())
        elif size is None:
            size = length
        elif length != size:
            raise errors.ParityError(
                f"polynomial: got the parity {key!r} of {length} bits, wanted {size}"
            )
        _add(terms, parity, parameter(angle, "polynomial"))
    if size is not None and widest > size:
        raise errors.ParityError(f"polynomial: got qubit {widest - 1}, wanted 0 to {size - 1}")
    return terms, widest if size is None else size


def _pairs(polynomial: Any) -> Iterator[tuple[Any, Any]]:
    if isinstance(polynomial, Mapping):
        yield from polynomial.items()
        return
    wanted = "a mapping from parities to angles, or a tuple of a list of parities and one of angles"
    # A list of two would as well be two parities without angles.
    _validate.instance(polynomial, "polynomial", tuple, wanted)
    if len(polynomial) != 2 or any(isinstance(part, str) for part in polynomial):
        raise errors.ParityError(f"polynomial: got {_validate.shown(polynomial)}, wanted {wanted}")
    keys, values = (_validate.items(part, "polynomial", wanted) for part in polynomial)
    if len(keys) != len(values):
        raise errors.ParityError(
            f"polynomial: got {len(keys)} parities and {len(values)} angles, wanted as many"
        )
    yield from zip(keys, values, strict=True)


def _parity(key: Any) -> tuple[int, int | None]:
    """The bits as an int, and how many there are where the key tells."""
    if isinstance(key, (int, np.integer)) and not isinstance(key, (bool, np.bool_)):
        return _validate.integer(key, "polynomial", 0), None
    wanted = "a tuple or string of bits 0 and 1, or an int"
    if not isinstance(key, (Sequence, np.ndarray)) or isinstance(key, np.ma.MaskedArray):
        raise errors.ParityError(
            f"polynomial: got the parity {_validate.shown(key)}, wanted {wanted}"
        )
    digits = [str(int(bit)) if isinstance(bit, (bool, np.bool_)) else str(bit) for bit in key]
    if set(digits) - {"0", "1"}:
        raise errors.ParityError(
            f"polynomial: got the parity {_validate.shown(key)}, wanted {wanted}"
        )
    return int("".join(digits)[::-1] or "0", 2), len(digits)


class _PhaseSearch:
    """One call of synthesize: from terms to a result."""

    def __init__(
        self,
        terms: Terms,
        global_phase: Parameter,
        n: int,
        site: Site | None,
        objective: linear.Objective,
        ending: _Ending,
        effort: _search.Effort,
        start: float,
    ) -> None:
        self._terms = tuple(terms.items())
        self._global_phase = global_phase
        self._n = n
        self._site = site
        self._objective: linear.Objective = objective
        self._ending: _Ending = ending
        self._effort = effort
        self._start = start
        self._seed = secrets.randbits(64) if effort.seed is None else effort.seed
        self._parities = np.array(
            [[bool(parity >> q & 1) for parity in terms] for q in range(n)], dtype=np.bool_
        ).reshape(n, len(terms))
        self._adjacency = np.zeros((0, 0), dtype=np.bool_) if site is None else site.adjacency

    def work(
        self, names: Sequence[str], progress: Callable[[_search.Progress], object] | None
    ) -> PhaseSynthesis:
        if not self._terms:
            nothing = np.zeros((0, 3), dtype=np.int32)
            return self._result((names[0], nothing, CnotCircuit(self._n), self._in_place()), 0)
        effort = self._effort
        searches = names[-1] == "search"
        share = 1.0 if searches or self._ending == "return" else 1 - _CLOSING_SHARE
        self._control = _core._SearchControl(effort.budget and share * effort.budget)
        trace = _search.Trace(self._objective == "depth", progress)
        found, made = _search.best_of(
            [self._lane(name, len(names) > 1) for name in names], effort.jobs, self._control,
            self._key, partial(self._result, trace=trace), trace,
        )  # fmt: skip
        if self._closes(found, searches):
            try:
                found = min(found, self._closed_anew(found), key=self._key)
            except errors.Interrupted:
                best = self._result(found, made, trace)
                raise errors.Interrupted(f"stopped, best so far: {best}", best) from None
            count, depth = self._size(found)
            trace.hear(_search.Point(time.perf_counter() - self._start, count, depth))
        return self._result(found, made, trace)

    def _closes(self, found: _Found, searches: bool) -> bool:
        """Whether there is time for another closing, and a circuit that wants one."""
        if self._ending == "return" or found[0] == "search":
            return False
        return not searches or self._effort.budget is None

    def _lane(self, name: str, within_auto: bool) -> _search.Lane[_Found]:
        effort = self._effort
        if name == "search":
            steps = effort.search_steps
            if within_auto and effort.steps is None and steps is not None and effort.restarts:
                steps //= 10  # there are other methods at work, and more runs
            return _search.search_lane(partial(self._run_search, steps), self._key, effort)
        runs = effort.restarts
        if runs is None and (within_auto or effort.budget is None):  # a budget is for the search
            runs = _DEFAULT_RUNS if self._site is None else _DEFAULT_RUNS_ON_DEVICE
        return _search.Lane(partial(self._run, name), runs)

    def _run_search(self, steps: int | None, run: int) -> _Found:
        """One run of the search, which closes what it leaves behind itself."""
        made, permutation = _core._search_parities(
            self._parities, self._adjacency, self._ending, self._objective == "depth", self._seed,
            run, steps, self._control,
        )  # fmt: skip
        return "search", made.reshape(-1, 3), CnotCircuit(self._n), tuple(permutation)

    def _in_place(self) -> tuple[int, ...]:
        return tuple(range(self._n))

    def _run(self, name: str, first: int, last: int) -> Any:
        found = _core._best_of_phase_runs(
            name, self._parities, self._adjacency, self._ending, self._seed, first, last,
            self._objective == "depth", self._control,
        )  # fmt: skip
        if found is None:
            return None
        run, steps, closing, permutation = found
        steps = steps.reshape(-1, 3)  # control, or -1 for a phase; target; term, or -1 for a CNOT
        return run, (name, steps, CnotCircuit._trusted(self._n, closing), tuple(permutation))

    def _closed_anew(self, found: _Found) -> _Found:
        """The same with what is left behind closed by a search of its own."""
        name, steps, _, _ = found
        effort = self._effort
        steps_to_close = min(_CLOSING_STEPS * (effort.restarts or 4), _MOST_CLOSING_STEPS)
        closing = linear.synthesize(
            self._network(steps).inverse().matrix(),
            device=None if self._site is None else self._site.device.part(self._site.qubits),
            permutation="free" if self._ending == "free" else "exact", objective=self._objective,
            seed=self._seed,
            restarts=1, jobs=effort.jobs,
            budget=None if effort.budget is None else _CLOSING_SHARE * effort.budget,
            steps=steps_to_close if effort.budget is None else None,
        )  # fmt: skip
        return name, steps, closing.circuit, closing.permutation

    def _network(self, steps: npt.NDArray[np.int32]) -> CnotCircuit:
        """The CNOTs among the steps."""
        return CnotCircuit._trusted(self._n, steps[steps[:, 2] < 0, :2].copy())

    def _size(self, found: _Found) -> tuple[int, int]:
        cnots = self._network(found[1]) + found[2]
        return cnots.count, cnots.depth

    def _key(self, found: _Found) -> tuple[int, int]:
        count, depth = self._size(found)
        return (count, depth) if self._objective == "count" else (depth, count)

    def _result(
        self, found: _Found, runs: int, trace: _search.Trace | None = None
    ) -> PhaseSynthesis:
        name, steps, closing, permutation = found
        site = self._site
        qubits = self._in_place() if site is None else site.qubits
        gates = []
        for control, target, term in [*steps.tolist(), *((c, t, -1) for c, t in closing)]:
            if term < 0:
                gates.append(Gate("CNOT", (qubits[control], qubits[target])))
            else:
                gates.append(Gate("PH", qubits[target], self._terms[term][1]))
        kept = self._ending == "return"
        return PhaseSynthesis(
            circuit=Circuit(self._n if site is None else site.device.n, gates),
            leftover=_validate.frozen(self._network(steps).matrix()) if kept else None,
            permutation=permutation,
            global_phase=self._global_phase,
            terms=self._terms,
            method=name,
            seed=self._seed,
            runs=runs,
            seconds=time.perf_counter() - self._start,
            placement=qubits,
            device=None if site is None else site.device,
            trace=() if trace is None else tuple(trace.points),
        )

"""CNOT and phase circuits of phase polynomials.

A phase polynomial is a set of parities, each with an angle: the diagonal operator that turns the
phase by the angle where the XOR of the parity's qubits is 1. :func:`synthesize` turns it into a
circuit in which every parity appears on some wire and gets its phase gate there.

>>> import zeltbraidwerk as zb
>>> result = zb.phase.synthesize({"110": 0.5, "011": "a", "111": 0.25}, seed=1)
>>> result.count, result.verify()
(4, True)
"""

from __future__ import annotations

from collections.abc import Callable, Iterable, Sequence
from dataclasses import dataclass, field
from functools import partial
from typing import Any

import numpy as np
import numpy.typing as npt

from zeltbraidwerk import _core, _parities, _renamed, _search, _validate, errors, linear
from zeltbraidwerk._family import Call, Family, Found
from zeltbraidwerk._parities import Terms, polynomial_of
from zeltbraidwerk._results import Objective, Permutation, Result, Tail
from zeltbraidwerk.circuits import Circuit, CnotCircuit
from zeltbraidwerk.gates import Gate, Parameter

__all__ = ["PhaseSynthesis", "methods", "polynomial_of", "synthesize"]

# Rows (control, or -1 for a phase; target; term, or -1 for a CNOT), and what closes them.
_Made = tuple[npt.NDArray[np.int32], CnotCircuit]
_Found = Found[_Made]

_FAMILY = Family(("gray", "greedy", "search"), ("gray", "search"), {"steps": ("auto", "search")})
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
    return _FAMILY.methods(device)


@dataclass(frozen=True, kw_only=True, repr=False)
class PhaseSynthesis(Result):
    """A circuit for a phase polynomial, and how it was found.

    The circuit is the diagonal operator followed by ``tail``, a linear map with the inputs whose
    XOR stands on wire r in row r; None where it was closed. ``terms`` are the angles by parity, bit
    q for qubit q. ``global_phase`` is the angle of the zero parity: what was asked for is
    exp(i ``global_phase``) times the operator of ``terms``, in radians.
    """

    circuit: Circuit
    tail: npt.NDArray[np.bool_] | None = field(compare=False)
    global_phase: Parameter
    terms: tuple[tuple[int, Parameter], ...]

    leftover = _renamed.Field("tail")

    def verify(self) -> bool:
        """Follows the parities through the circuit, without the library: every one gets its angle
        once, the wires end as they should, and CNOTs are on edges where there is a device."""
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
        return phases == wanted and wires == self._wanted_wires() and self._on_edges()

    def _placed(self, parity: int) -> int:
        return sum(1 << wire for k, wire in enumerate(self.placement) if parity >> k & 1)

    def _wanted_wires(self) -> list[int]:
        wires = [1 << wire for wire in range(self.n)]
        for k, wire in enumerate(self.permutation):
            row = 1 << k
            if self.tail is not None:
                row = sum(1 << int(c) for c in np.flatnonzero(self.tail[k]))
            wires[self.placement[wire]] = self._placed(row)
        return wires

    def _about(self) -> Iterable[str]:
        yield f"{len(self.terms)} phases"
        yield "tail closed" if self.tail is None else "tail returned"


@_renamed.options(leftover="tail")
def synthesize(
    polynomial: Any,
    *,
    n: int | None = None,
    method: str = "auto",
    device: Any = None,
    tail: Tail = "close",
    permutation: Permutation = "exact",
    objective: Objective = "count",
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
    those of equal parities are added. The zero parity stands on no wire: its angle is a
    global phase, exp(i angle) with ``result.global_phase``.

    >>> import zeltbraidwerk as zb
    >>> result = zb.phase.synthesize({(1, 0): 0.5, (1, 1): 0.25, (0, 0): 1.0}, seed=1)
    >>> print(result.circuit.draw())
    q0: ──PH(0.5)──●────────────●──
                   │            │
    q1: ───────────⊕──PH(0.25)──⊕──
    >>> result.global_phase
    Parameter(1.0)

    After all phases, CNOTs have changed the wires by a linear map. With ``tail="close"``, the
    default, it is undone, so that the circuit is diagonal; ``permutation="free"`` lets qubits end
    on other wires, ``result.permutation[k]`` for qubit k. With "return" the map is not undone and
    returned as ``result.tail``.

    "gray" is GraySynth, "greedy" realises one of the lightest remaining parities at a time;
    "search" builds circuits in wider and wider beams and shortens the best one window by window,
    and finds shorter circuits the longer it runs; "auto" takes the best. With a ``device`` every
    CNOT is on one of its edges, as in :func:`zeltbraidwerk.linear.synthesize`, which explains the
    other options too.

    >>> parities = zb.gallery.random_parities(8, 64, 1)[0]
    >>> polynomial = {parity: 0.1 for parity in parities}
    >>> [zb.phase.synthesize(polynomial, n=8, method="search", seed=1, steps=steps).count
    ...  for steps in (0, 50_000)]
    [89, 77]
    """
    call = _FAMILY.call(
        method=method, device=device, objective=objective, permutation=permutation, seed=seed,
        restarts=restarts, budget=budget, steps=steps, jobs=jobs, progress=progress,
    )  # fmt: skip
    _validate.choice(tail, "tail", ("close", "return"))
    if tail == "return" and not call.exact:
        raise errors.OptionError("permutation: got 'free' with tail='return', which is exact")
    terms, size = _parities.read(polynomial, n)
    global_phase = terms.pop(0, Parameter(0.0))
    if size > _MOST_SEARCHED:
        if method == "search":
            raise errors.TooLargeError(
                f"polynomial: got {size} qubits, wanted at most {_MOST_SEARCHED} for 'search'"
            )
        call.names = tuple(name for name in call.names if name != "search")
    call.place(size)
    return _PhaseSearch(call, terms, global_phase, size, tail == "return").work()


class _PhaseSearch:
    """One call of synthesize: the lanes of its methods, the closing of their tails, its result."""

    def __init__(
        self, call: Call, terms: Terms, global_phase: Parameter, n: int, left_open: bool
    ) -> None:
        self._call = call
        self._terms = tuple(terms.items())
        self._global_phase = global_phase
        self._n = n
        self._left_open = left_open
        self._ending = "return" if left_open else call.permutation
        self._seed = call.draw_seed()
        self._parities = np.array(
            [[bool(parity >> q & 1) for parity in terms] for q in range(n)], dtype=np.bool_
        ).reshape(n, len(terms))
        self._adjacency = call.adjacency
        self._searches = "search" in call.names
        if not self._searches and not left_open:
            call.budget_share = 1 - _CLOSING_SHARE

    def work(self) -> PhaseSynthesis:
        call = self._call
        if not self._terms:
            nothing = np.zeros((0, 3), dtype=np.int32), CnotCircuit(self._n)
            return self._result(Found(call.names[0], nothing, tuple(range(self._n)), 0, 0), 0)
        found, runs = call.best([self._lane(name) for name in call.names], self._result)
        if self._closes(found):
            try:
                found = min(found, self._closed_anew(found), key=call.key)
            except errors.Interrupted:
                best = self._result(found, runs)
                raise errors.Interrupted(f"stopped, best so far: {best}", best) from None
            call.trace.add(_search.Point(call.elapsed, found.count, found.depth))
        return self._result(found, runs)

    def _closes(self, found: _Found) -> bool:
        """Whether there is time for another closing, and a circuit that may gain by one."""
        if self._left_open or found.method == "search":
            return False
        return not self._searches or self._call.effort.budget is None

    def _lane(self, name: str) -> _search.Lane[_Found]:
        effort, within_auto = self._call.effort, len(self._call.names) > 1
        if name == "search":
            steps = effort.search_steps
            if within_auto and effort.steps is None and steps is not None and effort.restarts:
                steps //= 10  # there are other methods at work, and more runs
            return self._call.search_lane(partial(self._searched, steps))
        runs = effort.restarts
        if runs is None and (within_auto or effort.budget is None):  # a budget is for the search
            runs = _DEFAULT_RUNS if self._call.site is None else _DEFAULT_RUNS_ON_DEVICE
        return _search.Lane(partial(self._run, name), runs)

    def _searched(self, steps: int | None, run: int) -> _Found:
        """One run of the search, which closes its tail itself."""
        made, permutation = _core._search_parities(
            self._parities, self._adjacency, self._ending, self._call.by_depth, self._seed, run,
            steps, self._call.control,
        )  # fmt: skip
        return self._found("search", made, CnotCircuit(self._n), permutation)

    def _run(self, name: str, first: int, last: int) -> tuple[int, _Found] | None:
        found = _core._best_of_phase_runs(
            name, self._parities, self._adjacency, self._ending, self._seed, first, last,
            self._call.by_depth, self._call.control,
        )  # fmt: skip
        if found is None:
            return None
        run, rows, closing, permutation = found
        return run, self._found(name, rows, CnotCircuit._trusted(self._n, closing), permutation)

    def _found(
        self, name: str, rows: npt.NDArray[np.int32], closing: CnotCircuit, wires: Sequence[int]
    ) -> _Found:
        rows = rows.reshape(-1, 3)
        cnots = self._network(rows) + closing
        return Found(name, (rows, closing), tuple(wires), cnots.count, cnots.depth)

    def _closed_anew(self, found: _Found) -> _Found:
        """The same with its tail closed by a search of its own."""
        rows, _ = found.made
        site, effort = self._call.site, self._call.effort
        steps_to_close = min(_CLOSING_STEPS * (effort.restarts or 4), _MOST_CLOSING_STEPS)
        closing = linear.synthesize(
            self._network(rows).inverse().matrix(),
            device=None if site is None else site.device.part(site.qubits),
            permutation=self._call.permutation, objective=self._call.objective, seed=self._seed,
            restarts=1, jobs=effort.jobs,
            budget=None if effort.budget is None else _CLOSING_SHARE * effort.budget,
            steps=steps_to_close if effort.budget is None else None,
        )  # fmt: skip
        return self._found(found.method, rows, closing.circuit, closing.permutation)

    def _network(self, rows: npt.NDArray[np.int32]) -> CnotCircuit:
        """The CNOTs among the rows."""
        return CnotCircuit._trusted(self._n, rows[rows[:, 2] < 0, :2].copy())

    def _result(self, found: _Found, runs: int) -> PhaseSynthesis:
        rows, closing = found.made
        qubits = self._call.qubits(self._n)
        gates = []
        for control, target, term in [*rows.tolist(), *((c, t, -1) for c, t in closing)]:
            if term < 0:
                gates.append(Gate("CNOT", (qubits[control], qubits[target])))
            else:
                gates.append(Gate("PH", qubits[target], self._terms[term][1]))
        matrix = self._network(rows).matrix() if self._left_open else None
        return self._call.result(
            PhaseSynthesis, found, runs, self._n,
            circuit=Circuit(self._call.width(self._n), gates),
            tail=None if matrix is None else _validate.frozen(matrix),
            global_phase=self._global_phase, terms=self._terms,
        )  # fmt: skip

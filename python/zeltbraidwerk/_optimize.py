"""Whole circuits: shorter ones of the same operator."""

from __future__ import annotations

from collections.abc import Callable, Mapping, Sequence
from dataclasses import dataclass, replace
from itertools import zip_longest
from typing import Any, Literal

from zeltbraidwerk import _core, _search, _validate, errors
from zeltbraidwerk._family import Call, Family, Found
from zeltbraidwerk._operations import of_core
from zeltbraidwerk._optimize_results import CircuitCounts, Optimization, Stage, pieces_of
from zeltbraidwerk._results import Permutation
from zeltbraidwerk._routing_results import placed
from zeltbraidwerk.circuits import Circuit
from zeltbraidwerk.instructions import Operation

_FAMILY = Family(lambda on_device: ("auto", "search"))


def optimize(
    circuit: Any,
    *,
    device: Any = None,
    objective: Literal["count", "depth", "t"] = "count",
    permutation: Permutation = "exact",
    exact: bool = False,
    seed: int | None = None,
    restarts: int | None = None,
    budget: float | None = None,
    steps: int | None = None,
    jobs: int | None = 1,
    progress: Callable[[_search.Progress], object] | None = None,
) -> Optimization:
    """A circuit of the same operator that is shorter, and never longer, up to a global phase.

    ``circuit`` is whatever :meth:`zeltbraidwerk.Circuit.of` reads: a circuit of this package, of
    Qiskit, pytket or Stim, OpenQASM text, or the path of a file. The result has the circuit, what
    it takes before and after, and :meth:`~Optimization.verify`, which proves that both are the
    same operator.

    Rotations about the same Pauli string are merged wherever everything between commutes with
    them, and become Clifford gates where their angles add up to multiples of pi/2: T gates become
    fewer, never more. Then a search looks for fewer two-qubit gates (with ``objective="depth"``,
    fewer layers of these) that serve the same rotations and leave the same Clifford operator.
    Angles may be symbolic.

    Measurements and resets at the end go along. Those in the middle, barriers and classically
    controlled gates stay where they are; the gates between them are optimised by themselves.

    Where a rotation is by no multiple of pi/4, windows on two qubits are also replaced by numbers:
    any operator of two qubits takes at most three CNOTs. Angles are new then, right to 1e-10, and
    there may be more of them, which ``result.before`` and ``result.after`` tell. ``exact=True``
    keeps to sums of the given angles; ``objective="t"`` to no more rotations.

    With ``permutation="free"`` output q may end on wire ``result.permutation[q]``, and so do the
    measurements at the end. With a ``device``, the gates of the circuit are on its edges, qubit q
    on qubit q of the device, and stay on edges.

    ``steps`` are windows of three qubits, of about 7 microseconds; by default 200,000 and 30 per
    gate. With a ``budget``, in seconds, the search goes on to its end. ``seed``, ``restarts`` and
    ``progress`` are as in :func:`zeltbraidwerk.linear.synthesize`. ``jobs`` threads share the
    restarts, or the pieces of a circuit of more than 4,000 gates; the result does not depend on
    them. More steps are never worse. Ctrl-C raises an exception that holds the best circuit so far.

    >>> import zeltbraidwerk as zb
    >>> toffolis = "qreg q[4]; ccx q[0],q[1],q[2]; ccx q[1],q[2],q[3]; ccx q[0],q[1],q[2];"
    >>> result = zb.optimize(toffolis, seed=1)
    >>> result.before.two_qubit, result.count, result.verify()
    (18, 10, True)
    """
    _validate.choice(objective, "objective", ("count", "depth", "t"))
    _validate.flag(exact, "exact")
    call = _FAMILY.call(
        device=device, objective="count" if objective == "t" else objective, permutation=permutation, seed=seed,
        restarts=restarts, budget=budget, steps=steps, jobs=jobs, progress=progress,
    )  # fmt: skip
    source = Circuit.of(circuit)
    call.place(source.n, in_order=True)
    first, ending = source.split_ending()
    pieces, between = pieces_of(first)
    own = {"exact": bool(exact), "keep_rotations": objective == "t"}
    return _Assembly(call, source, pieces, between, ending, own).run()


@dataclass
class _Assembly:
    """The pieces of a circuit, optimised one after the other."""

    call: Call
    source: Circuit
    pieces: Sequence[Circuit]
    between: Sequence[Operation]
    ending: Circuit
    own: Mapping[str, bool]

    def run(self) -> Optimization:
        done: list[Optimization] = []
        total = max(sum(map(len, self.pieces)), 1)
        left = total
        for k, piece in enumerate(self.pieces):
            try:
                done.append(self._optimized(k, piece, len(piece) / total, left))
            except errors.Interrupted as stopped:
                if stopped.best is None:
                    raise
                best = self._whole([*done, stopped.best])
                raise errors.Interrupted(f"stopped, best so far: {best}", best) from None
            left = max(left - len(piece), 1)
        return self._whole(done)

    def _optimized(self, k: int, piece: Circuit, share: float, left: int) -> Optimization:
        call = self.call
        if len(self.pieces) > 1:
            effort = call.effort
            seconds = None if effort.budget is None else max(effort.budget - call.elapsed, 1e-3)
            effort = replace(
                effort,
                steps=None if effort.steps is None else int(effort.steps * share),
                budget=None if seconds is None else max(seconds * len(piece) / left, 1e-3),
            )
            last = k + 1 == len(self.pieces)
            call = replace(
                call, effort=effort, permutation=call.permutation if last else "exact",
                progress=None,
            )  # fmt: skip

        def result(
            found: Found, gates: list[_core.Gate], rounding: float, stages: list[Any]
        ) -> Optimization:
            return call.result(
                Optimization, found, piece.n,
                circuit=of_core(piece.n, gates), source=piece, rounding=rounding,
                _stages=(tuple(Stage.of(piece.n, *stage) for stage in stages),),
            )  # fmt: skip

        made = call.run(_core._optimize_circuit, result, piece.n, piece.to_core(), **self.own)
        self.call.effort = replace(self.call.effort, seed=call.effort.seed)
        return made

    def _whole(self, done: Sequence[Optimization]) -> Optimization:
        """Pieces that are not done yet stay as they were given."""
        operations: list[Operation] = []
        made = [result.circuit for result in done] + list(self.pieces[len(done) :])
        for circuit, item in zip_longest(made, self.between):
            operations.extend(circuit.operations)
            if item is not None:
                operations.append(item)
        n = self.source.n
        permutation = done[-1].permutation if len(done) == len(self.pieces) else tuple(range(n))
        operations.extend(self.ending.placed(permutation, n).operations)
        whole = Circuit._trusted(n, tuple(operations), self.source.classical)
        qubits, width = self.call.qubits(n), self.call.width(n)
        return replace(
            done[-1],
            circuit=placed(whole, qubits, width),
            source=self.source,
            permutation=permutation,
            runs=sum(result.runs for result in done),
            trace=done[0].trace if len(done) == 1 else (),
            seconds=self.call.elapsed,
            rounding=max(result.rounding for result in done),
            _stages=tuple(result._stages[0] for result in done),
        )


__all__ = ["CircuitCounts", "Optimization", "optimize"]

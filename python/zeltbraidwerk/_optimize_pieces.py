"""Circuits with measurements, resets, barriers and conditions, optimised between these."""

from __future__ import annotations

import time
from collections.abc import Callable, Mapping, Sequence
from dataclasses import dataclass, replace
from itertools import zip_longest
from typing import Any

from zeltbraidwerk import _core, errors
from zeltbraidwerk._family import Call, Found
from zeltbraidwerk._operations import of_held
from zeltbraidwerk._optimize_results import Optimization, Stage, pieces_of, split_last
from zeltbraidwerk._parameter import NO_SOURCES
from zeltbraidwerk._routing_results import placed
from zeltbraidwerk._search import Point, Progress
from zeltbraidwerk.circuits import Circuit
from zeltbraidwerk.instructions import Operation


@dataclass
class Assembly:
    """The pieces of a circuit between operations that are no gates, optimised one after the other.
    ``options`` are those of the compiled part alone. The last operations are the ending, so many
    as ``ending_size``; where it is not given, all that can be."""

    call: Call
    source: Circuit
    options: Mapping[str, Any]
    ending_size: int | None = None
    _told: int | None = None

    def __post_init__(self) -> None:
        first, self.ending = (
            self.source.split_ending()
            if self.ending_size is None
            else split_last(self.source, self.ending_size)
        )
        self.pieces, self.between = pieces_of(first)
        self.given = [_core._HeldSteps(piece.n, piece.operations) for piece in self.pieces]
        symbolic = any(given.has_symbols() for given in self.given)
        self.sources = self.source._sources() if symbolic else NO_SOURCES

    def run(self) -> Optimization:
        done: list[Optimization] = []
        total = max(sum(map(len, self.pieces)), 1)
        left = total
        try:
            for k, piece in enumerate(self.pieces):
                done.append(self._optimized(k, piece, len(piece) / total, left, done))
                left = max(left - len(piece), 1)
        except KeyboardInterrupt as stopped:
            last = getattr(stopped, "best", None)
            site = self.call.site
            whole: Optimization | None = self._whole([*done, last] if last is not None else done)
            if site is not None and whole and not site.device.fits(whole.circuit):
                whole = None  # a piece is not routed yet
            raise errors.Interrupted(best=whole) from None
        return self._whole(done)

    def _progress(
        self, k: int, done: Sequence[Optimization]
    ) -> Callable[[Progress], object] | None:
        """Adds up the pieces: those done, and those to come as they are given."""
        tell = self.call.progress
        if tell is None:
            return None
        later = self.pieces[k + 1 :]
        count = sum(r.count for r in done) + sum(piece.two_qubit_count for piece in later)
        depth = sum(r.depth for r in done) + sum(piece.two_qubit_depth for piece in later)

        def told(now: Progress) -> None:
            point = Point(self.call.elapsed, count + now.count, depth + now.depth)
            objective = point.depth if self.call.objective == "depth" else point.count
            if self._told is None or objective < self._told:
                self._told = objective
                tell(Progress(objective, point))

        return told

    def _optimized(
        self, k: int, piece: Circuit, share: float, left: int, done: Sequence[Optimization]
    ) -> Optimization:
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
                call, begin=time.perf_counter(), effort=effort, progress=self._progress(k, done),
                permutation=call.permutation if last else "exact",
            )  # fmt: skip

        def made(
            found: Found, steps: _core._HeldSteps, rounding: float, stages: list[Any], **own: Any
        ) -> Optimization:
            return call.result(
                Optimization, found, piece.n,
                circuit=of_held(piece.n, steps, self.sources), source=piece, rounding=rounding,
                _stages=(tuple(Stage.of(piece.n, *stage) for stage in stages),),
                least_count=0, least_depth=0,  # what is proven is for one piece and its rotations
                **own,
            )  # fmt: skip

        def result(found: Found, circuits: list[Any]) -> Optimization:
            parts = tuple(
                made(replace(found, permutation=tuple(wires), runs=1, trace=()), *circuit)
                for wires, *circuit in (circuits if call.objective == "depth" else ())
            )
            return made(found, *circuits[0][1:], front=parts)

        best = call.run(_core._optimize_circuit, result, self.given[k], **self.options)
        self.call.effort = replace(self.call.effort, seed=call.effort.seed)
        return best

    def _joined(self, done: Sequence[Optimization], permutation: Sequence[int]) -> Circuit:
        """The circuits of all pieces with what is between them, and the ending."""
        circuits = [result.circuit for result in done] + list(self.pieces[len(done) :])
        if len(circuits) == 1 and not self.ending.operations and not self.source.classical:
            return circuits[0]  # whose gates may not have been written yet
        operations: list[Operation] = []
        for circuit, item in zip_longest(circuits, self.between):
            operations.extend(circuit.operations)
            if item is not None:
                operations.append(item)
        operations.extend(self.ending.placed(permutation, self.source.n).operations)
        return Circuit._trusted(self.source.n, tuple(operations), self.source.classical)

    def _unchanged(self) -> Optimization:
        """The circuit as it was given."""
        found = Found("search", tuple(range(self.source.n)), self.call.effort.seed, runs=0)
        return self.call.result(
            Optimization, found, self.source.n, circuit=self.source, source=self.source
        )

    def _whole(self, done: Sequence[Optimization]) -> Optimization:
        """Pieces that are not done yet stay as they were given."""
        n = self.source.n
        base = done[-1] if done else self._unchanged()
        permutation = base.permutation if len(done) == len(self.pieces) else tuple(range(n))
        whole = self._joined(done, permutation)
        qubits, width = self.call.qubits(n), self.call.width(n)
        circuit = placed(whole, qubits, width)
        return replace(
            base,
            circuit=circuit._named(self.source._names) if self.call.device is None else circuit,
            source=self.source,
            permutation=permutation,
            runs=sum(result.runs for result in done),
            trace=done[0].trace if len(done) == 1 else (),
            seconds=self.call.elapsed,
            rounding=max((result.rounding for result in done), default=0.0),
            front=tuple(self._whole([each]) for each in base.front if len(self.pieces) == 1),
            _stages=tuple(result._stages[0] for result in done),
        )

"""Whole circuits on the edges of a device: placed, routed and made shorter there."""

from __future__ import annotations

import time
from collections.abc import Callable, Iterator, Mapping, Sequence
from dataclasses import dataclass, replace
from functools import cached_property, partial
from itertools import islice
from typing import Any

import numpy as np

from zeltbraidwerk import _core, _edge_costs, _qiskit_router, _swaps, errors, linear, routing
from zeltbraidwerk._family import Call, Movable
from zeltbraidwerk._optimize_pieces import Assembly
from zeltbraidwerk._optimize_results import CircuitCounts, Optimization, Stage, pieces_of
from zeltbraidwerk._placement import Placement, pairs_of, placements
from zeltbraidwerk._routed import Routed, two_qubit_cost
from zeltbraidwerk._search import Progress, falling
from zeltbraidwerk._site import Site
from zeltbraidwerk._weights import Weights
from zeltbraidwerk.circuits import Circuit
from zeltbraidwerk.devices import Device

_MOST_WORK = 2e7  # rotations times the square of the qubits: seconds for a first circuit

_LOGICAL = 3  # shorter circuits on no device, which are routed
_KEPT = 4  # ways to route each of them
_MOST_TRIES = 16  # of routing one of them
_STEPS_OF_TRY = 10_000
_MOST_ROUTED = 30_000  # gates in all tries for one circuit
_NETWORKS = 3  # placements for which circuits are made anew
_BEGINNINGS = 12  # of the search for placements
_MOST_PLAIN = 5_000  # operations of a circuit that Ctrl-C puts on the edges where it meets no other

# Shares of the effort. Circuits on the edges are walked in rounds: so many of the best, and what
# these get together.
_SOURCE_SHARE = 0.1  # to the end of routing the given circuit
_LOGICAL_SHARE = 0.25
_NETWORK_SHARE = 0.15
_ROUNDS = ((16, 0.15), (4, 0.15), (1, 0.3))


class _StoppedError(Exception):
    """By Ctrl-C, with what was found."""

    def __init__(self, found: Sequence[Routed]) -> None:
        super().__init__()
        self.found = found


@dataclass
class OnDevice:
    """Wires are the qubits of a connected part of the device."""

    call: Call
    source: Circuit
    options: Mapping[str, Any]
    weights: Weights | None = None
    _start: Placement | None = None  # of the caller
    _has_found: bool = False

    def run(self, placement: Any, router: str) -> Optimization:
        """Where outputs may be anywhere, circuits with outputs in place are searched first, with
        the same steps, so that no result is longer for being free; a budget is for one search."""
        assert self.call.device is not None
        self.call.site, self._start = Site.around(self.call.device, self.source.n, placement)
        found: list[Routed] = []
        one = self.call.exact or self.call.effort.budget is not None
        for search in (self,) if one else (self._in_place(), self):
            try:
                found.append(search._shortest(router))
            except _StoppedError as stopped:
                found += stopped.found
                best = self._placed(min(found, key=self._size)) if found else None
                raise errors.Interrupted(best=best) from None
        return self._placed(min(found, key=self._size))

    def _in_place(self) -> OnDevice:
        self.call.seed()  # the same for both
        call = replace(self.call, permutation="exact", progress=self.progress)
        return OnDevice(call, self.source, self.options, self.weights, self._start)

    def _shortest(self, router: str) -> Routed:
        n, given = self.source.n, self._start
        device = self._device()
        start = tuple(range(n)) if given is None else given
        if all(q < device.n for q in start) and device.fits(self.source.placed(start, device.n)):
            return self._best(self._made([start], 1.0, route=False), rounds=())
        if self.options["keep_depth"]:
            raise errors.OptionError(
                "keep_depth: got a circuit that has to be routed, wanted one on edges of the device"
            )
        return self._best(self._candidates(router, given), _ROUNDS)

    def _best(self, candidates: Iterator[Routed], rounds: Sequence[tuple[int, float]]) -> Routed:
        found: list[Routed] = []
        try:
            for routed in candidates:
                found.append(routed)
                self._has_found = True
                if self._is_over():
                    break
            if not found:
                found.append(self._plainly())
            for kept, share in rounds:
                found = sorted(found, key=self._size)[:kept]
                for k in range(len(found)):
                    if self._is_over(0.9):
                        break
                    self._walk(found, k, share / len(found))
        except KeyboardInterrupt:
            if not found and len(self.source) <= _MOST_PLAIN:
                found = [self._plainly()]
            raise _StoppedError(found) from None
        return min(found, key=self._size)

    def _walk(self, found: list[Routed], k: int, share: float) -> None:
        """Makes candidate k shorter on the edges. Its ending is that of the source."""
        ending = len(self.source.split_ending()[1].operations)
        walk = Assembly(self._with_share(share), found[k].found.circuit, self.options, ending)
        try:
            found[k] = found[k].then(walk.run())
        except errors.Interrupted as stopped:
            if stopped.best is not None:
                found[k] = found[k].then(stopped.best)
            raise

    # --- candidates ---------------------------------------------------------------------------

    def _candidates(self, router: str, given: Placement | None) -> Iterator[Routed]:
        if router == "qiskit":
            if self._has_pieces:
                raise errors.OptionError(
                    "router: got 'qiskit' for a circuit with operations other than gates in the "
                    "middle, wanted 'own'"
                )
            yield from self._by_swaps(_qiskit_router.routes, given)
            return
        is_long = CircuitCounts.of(self.source).rotations * self._device().n ** 2 > _MOST_WORK
        if is_long and not self._has_pieces:
            yield from self._by_trees()
            return
        if is_long and self.call.effort.budget is None:
            yield self._plainly()
            return
        routed = []
        for each in self._by_swaps(_swaps.routes, given) if not self._has_pieces else ():
            routed.append(each)
            yield each
        if self._is_late():
            return
        places = [each.placement for each in sorted(routed, key=self._size)[:1]]
        places += [given] if given is not None else self._placements()
        places = list(dict.fromkeys(places))[:_NETWORKS]
        yield from self._made(places, _NETWORK_SHARE, route=True)

    def _made(self, places: Sequence[Placement], share: float, route: bool) -> Iterator[Routed]:
        """The source, placed and optimised on the edges; with ``route`` made anew on them from its
        rotations."""
        for placement in places:
            if self._has_found and self._is_late():
                return
            wide = self.source.placed(placement, self._device().n)
            wide = _swaps.with_conditions_on_edges(wide, self._device())
            options = {**self.options, "route": route}
            try:
                found = Assembly(self._with_share(share / len(places)), wide, options).run()
            except errors.Interrupted as stopped:
                if stopped.best is not None:
                    yield Routed.of(stopped.best, placement)
                raise
            yield Routed.of(found, placement)

    def _plainly(self) -> Routed:
        """The source on the edges, made in milliseconds."""
        n = self._device().n
        start = tuple(range(self.source.n)) if self._start is None else self._start
        # Endings come last, also barriers on qubits that have no gate after them.
        first, ending = (part.placed(start, n) for part in self.source.split_ending())
        near = _swaps.with_conditions_on_edges(first, self._device())
        routed = _swaps.plainly(near, self._device())
        whole = Circuit._trusted(n, routed.operations + ending.operations, ending.classical)
        return Routed.of(replace(self._as_given(whole), _stages=()), start)

    def _by_trees(self) -> Iterator[Routed]:
        """As :func:`zeltbraidwerk.routing.route`, for circuits that would take too long."""
        try:
            found = routing.route(self.source, self._device(), budget=self._left())
        except errors.UnfinishedError:
            return
        yield Routed.of(self._as_given(found.circuit), found.placement)

    def _by_swaps(self, routes: _swaps.Router, given: Placement | None) -> Iterator[Routed]:
        """The source and the shorter circuits, each routed in those of several ways that take the
        fewest gates."""
        seed = self.call.seed()
        for shorter in self._to_route():
            gates = shorter.circuit.split_ending()[0].unitary()
            made: dict[tuple[Circuit, Placement], _swaps.Route] = {}
            tries = self._tries(len(gates))
            is_late = self._is_late_for_source if shorter.circuit is self.source else self._is_late
            try:
                for route in routes(gates, self._device(), given, tries, seed, is_late):
                    made[route.circuit, route.placement] = route
                    self._has_found = True
                    if is_late():
                        break
            except _swaps.OutOfTimeError:
                pass
            except KeyboardInterrupt:
                for route in made.values():
                    yield self._closed(shorter, route)
                raise
            for route in sorted(made.values(), key=lambda one: two_qubit_cost(one.circuit))[:_KEPT]:
                yield self._closed(shorter, route)

    def _to_route(self) -> Iterator[Optimization]:
        """The source first, so that Ctrl-C soon finds a circuit."""
        yield self._as_given(self.source)
        if not self._is_late():
            yield from self._logical

    def _closed(self, shorter: Optimization, route: _swaps.Route) -> Routed:
        """The route with the ending of the source. Unless outputs may be anywhere, qubits are
        brought back before it."""
        width, circuit, ends = self._device().n, route.circuit, route.ends
        if self.call.exact:
            circuit, ends = circuit + self._swaps_back(ends), tuple(range(width))
        ending = self.source.split_ending()[1]
        measured = ending.placed([ends[wire] for wire in route.placement], width)
        whole = Circuit._trusted(
            width, circuit.operations + measured.operations, measured.classical
        )
        stages = [stage.placed(route.placement, width) for stage in shorter._stages[0]]
        if stages:
            stages.append(Stage(circuit, ends, ()))
        found = replace(self._as_given(whole), permutation=ends, _stages=(tuple(stages),))
        return Routed(found, route.placement, ends)

    def _swaps_back(self, ends: Placement) -> Circuit:
        n = self._device().n
        back = np.zeros((n, n), dtype=np.bool_)
        back[range(n), ends] = True
        found = linear.synthesize(
            back, device=self._device(), method="search", seed=self.call.seed(), steps=0,
            budget=self._left(),
        )  # fmt: skip
        return found.circuit.to_circuit()

    @cached_property
    def _logical(self) -> list[Optimization]:
        """Shorter circuits on no device, every qubit in its place. The first has gates on the pairs
        of qubits of the source alone: most circuits have few of them, and a circuit that is as
        short on other pairs takes more SWAPs. Circuits in pieces are not routed but made anew, and
        need the first for its placements."""
        found: list[Optimization] = []
        is_one = self._has_pieces or len(self.source) >= _MOST_ROUTED
        for k in range(1 if is_one else _LOGICAL):
            if found and self._is_late():
                break
            call = replace(
                self._with_share(_LOGICAL_SHARE / _LOGICAL),
                device=None, site=None, permutation="exact", progress=None,
            )  # fmt: skip
            call.effort = replace(call.effort, seed=(self.call.seed() + k) % 2**64)
            own = Device(self.source.n, pairs_of(self.source))
            if k == 0 and own.is_connected:
                call = replace(call, device=own, site=Site(own, tuple(range(own.n))))
            found.append(Assembly(call, self.source, self.options).run())
        return found

    def _placements(self) -> list[Placement]:
        circuit = self._logical[0].circuit
        found = placements(circuit, self._device(), _BEGINNINGS, self.call.seed())
        return list(islice(found, _NETWORKS))

    # --- parts ------------------------------------------------------------------------------------

    @cached_property
    def _has_pieces(self) -> bool:
        """Whether operations other than gates are in the middle."""
        return len(pieces_of(self.source.split_ending()[0])[0]) > 1

    def _device(self) -> Device:
        """The wires."""
        site = self.call.site
        assert site is not None
        if site.qubits == tuple(range(site.device.n)):
            return site.device
        return site.device.part(site.qubits)

    def _as_given(self, circuit: Circuit) -> Optimization:
        """A circuit as a result that has changed nothing."""
        call = replace(self._with_share(0), progress=None)
        empty = Assembly(call, Circuit(self._device().n), self.options).run()
        return replace(empty, circuit=circuit, source=circuit, _stages=((),), front=())

    # --- effort -----------------------------------------------------------------------------------

    def _with_share(self, share: float) -> Call:
        """The call with a share of its effort."""
        effort, begin = self.call.effort, self.call.begin
        if share < 1:
            begin = time.perf_counter()
            steps, budget = self._steps(), effort.budget
            if budget is not None:
                budget = max(min(budget * share, budget - self.call.elapsed), 1e-3)
            steps = None if steps is None else int(steps * share)
            effort = replace(effort, steps=steps, budget=budget)
        device = self._device()
        return replace(
            self.call, begin=begin, effort=replace(effort, seed=self.call.seed()), device=device,
            site=Site(device, tuple(range(device.n))), progress=self.progress,
        )  # fmt: skip

    def _steps(self) -> int | None:
        effort = self.call.effort
        if effort.steps is None and effort.budget is None:
            return _core._optimize_steps(len(self.source))
        return effort.steps

    def _tries(self, gates: int) -> int:
        """Of routing a circuit."""
        steps = self._steps()
        tries = _MOST_TRIES if steps is None else steps // _STEPS_OF_TRY
        return max(min(tries, _MOST_TRIES, _MOST_ROUTED // max(gates, 1)), 1)

    def _is_late(self) -> bool:
        """Walks want half of the time, once there is a circuit."""
        share = 0.5 if self._has_found else 0.9
        return self._is_over(share)

    def _is_late_for_source(self) -> bool:
        """Shorter circuits are wanted most, once there is any."""
        return (self._has_found and self._is_over(_SOURCE_SHARE)) or self._is_late()

    def _is_over(self, share: float = 1.0) -> bool:
        budget = self.call.effort.budget
        return budget is not None and self.call.elapsed > budget * share

    def _left(self) -> float | None:
        """Of the budget, in seconds."""
        budget = self.call.effort.budget
        return None if budget is None else max(budget - self.call.elapsed, 1e-3)

    # --- results ----------------------------------------------------------------------------------

    def _size(self, routed: Routed) -> tuple[float, int]:
        count, depth = two_qubit_cost(routed.found.circuit), routed.found.depth
        if self.weights is not None:
            assert self.call.site is not None
            qubits = self.call.site.qubits
            gates = [(qubits[a], qubits[b]) for a, b in _edge_costs.gates_of(routed.found.circuit)]
            return self.weights.of_gates(gates), count
        return (depth, count) if self.call.objective == "depth" else (count, depth)

    @cached_property
    def progress(self) -> Callable[[Progress], object] | None:
        """The caller's, which hears of circuits on the device that are better than all before."""
        return falling(self.call.progress)

    def _placed(self, routed: Routed) -> Optimization:
        """The result on the device, of the source. Its front is that of the last search, or the
        circuit itself where there was no time for one."""
        whole = self._alone(routed)
        front = tuple(self._alone(each) for each in routed.front)
        if not front and self.call.objective == "depth" and not self._has_pieces:
            front = (whole,)
        return replace(whole, front=front)

    def _alone(self, routed: Routed) -> Optimization:
        """The same without a front. Where outputs may be anywhere, idle qubits of the device are
        wires as well, after those of the source."""
        site = self.call.site
        assert site is not None
        qubits, width = site.qubits, site.device.n
        starts = list(routed.placement)
        if not self.call.exact:
            starts += sorted(set(range(len(qubits))) - set(starts))
        ends = [starts.index(routed.wires[start]) for start in starts]
        return replace(
            routed.found,
            circuit=routed.found.circuit.placed(qubits, width),
            source=self.source,
            device=site.device,
            placement=tuple(qubits[wire] for wire in starts),
            permutation=tuple(ends),
            seconds=self.call.elapsed,
            front=(),
            _stages=tuple(
                tuple(stage.placed(qubits, width) for stage in stages)
                for stages in routed.found._stages
            ),
        )


def cheapest_on_device(
    call: Call, source: Circuit, options: Mapping[str, Any], placement: Any, router: str
) -> Optimization:
    """The same where the edges have costs."""
    weights = call.weights

    def run() -> Movable[Optimization]:
        found = OnDevice(replace(call), source, options, weights).run(placement, router)
        return found, partial(moved, found)

    def moved(found: Optimization, to: Sequence[int]) -> Optimization:
        assert call.device is not None
        n = call.device.n
        return replace(
            found,
            circuit=found.circuit.placed(to, n),
            device=call.device,
            objective=call.objective,
            placement=tuple(to[q] for q in found.placement),
            seconds=call.elapsed,
            front=tuple(moved(each, to) for each in found.front),
            _stages=tuple(
                tuple(stage.placed(to, n) for stage in stages) for stages in found._stages
            ),
        )

    fixed = placement is not None or options["keep_depth"]
    return call.cheapest(source.n, run, fixed, moves=not fixed)

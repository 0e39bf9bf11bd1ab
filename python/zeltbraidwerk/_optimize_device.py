"""Whole circuits on the edges of a device: placed, routed and made shorter there."""

from __future__ import annotations

from collections.abc import Callable, Iterator, Mapping, Sequence
from dataclasses import dataclass, replace
from functools import cached_property, partial
from itertools import islice
from typing import Any

import numpy as np

from zeltbraidwerk import _core, _interop, _validate, errors, linear, routing
from zeltbraidwerk._family import Call
from zeltbraidwerk._optimize_pieces import Assembly
from zeltbraidwerk._optimize_results import CircuitCounts, Optimization, pieces_of
from zeltbraidwerk._placement import placements
from zeltbraidwerk._search import Progress
from zeltbraidwerk._site import Site
from zeltbraidwerk.circuits import Circuit
from zeltbraidwerk.devices import Device

Placement = tuple[int, ...]

_BEGINNINGS = 12  # of the search for placements
_TRIED = 3  # placements for which circuits are made
_MOST_WORK = 2e7  # rotations times the square of the qubits: seconds for a first circuit
_SWAP_STEPS = 20_000  # of the search that brings qubits back


@dataclass
class OnDevice:
    """Wires are the qubits of a connected part of the device."""

    call: Call
    source: Circuit
    options: Mapping[str, Any]

    def run(self, placement: Any, router: str) -> Optimization:
        given = self._checked(placement)
        n, device = self.source.n, self._device()
        start = tuple(range(n)) if given is None else given
        if all(q < device.n for q in start) and device.fits(self.source.placed(start, device.n)):
            candidates = self._offered(
                lambda: self._optimized(self.source, start, 1.0),
                lambda made: _Routed.of(made, start),
            )
            return self._best_of(candidates, again=False)
        if router == "qiskit":
            candidates = self._by_qiskit(given)
        elif self._is_large():
            candidates = self._by_trees()
        else:
            candidates = self._by_rotations(given)
        return self._best_of(candidates, again=True)

    def _best_of(self, candidates: Iterator[_Routed], again: bool) -> Optimization:
        """The best candidate, optimised once more where ``again`` is set."""
        found: list[_Routed] = []
        best: _Routed | None = None
        try:
            for routed in candidates:
                found.append(routed)
            if again:
                best = self._best(found)
                found.append(best.then(self._optimized_wide(best.found.circuit, 0.5)))
        except KeyboardInterrupt as stopped:
            later = getattr(stopped, "best", None)
            if best is not None and later is not None:
                found.append(best.then(later))
            whole = self._placed(self._best(found)) if found else None
            raise errors.Interrupted(f"stopped, best so far: {whole}", whole) from None
        return self._placed(self._best(found))

    # --- candidates ---------------------------------------------------------------------------

    def _offered(
        self, make: Callable[[], Optimization], routed: Callable[[Optimization], _Routed]
    ) -> Iterator[_Routed]:
        """What is made, also where Ctrl-C ended it."""
        try:
            made = make()
        except errors.Interrupted as stopped:
            if stopped.best is not None:
                yield routed(stopped.best)
            raise
        yield routed(made)

    def _by_rotations(self, given: Placement | None) -> Iterator[_Routed]:
        """Made anew from the rotations, for some placements."""
        tried = [given] if given is not None else self._placements(self._logical())
        for placement in tried:
            yield from self._offered(
                partial(self._optimized, self.source, placement, 0.375 / len(tried), route=True),
                partial(_Routed.of, placement=placement),
            )

    def _by_trees(self) -> Iterator[_Routed]:
        """As :func:`zeltbraidwerk.routing.route`, for circuits that would take too long."""
        found = routing.route(self.source, self._device())
        yield from self._offered(
            lambda: self._optimized_wide(found.circuit, 0.375),
            lambda made: _Routed.of(made, found.placement),
        )

    def _by_qiskit(self, given: Placement | None) -> Iterator[_Routed]:
        """The circuit, and an optimised one."""
        if len(pieces_of(self.source.split_ending()[0])[0]) > 1:
            raise errors.OptionError(
                "router: got 'qiskit' for a circuit with operations other than gates in the "
                "middle, wanted 'own'"
            )
        for circuit in (self.source, self._logical()):
            routed, placement, wires = self._transpiled(circuit, given)
            made = _Routed(replace(self._as_given(routed), permutation=wires), placement, wires)
            yield from self._offered(partial(self._optimized_wide, routed, 0.1875), made.then)

    def _as_given(self, circuit: Circuit) -> Optimization:
        """A circuit on the wires as a result that has changed nothing."""
        call = replace(self._with_share(0), progress=None)
        return replace(
            Assembly(call, Circuit(circuit.n), self.options).run(), circuit=circuit, source=circuit
        )

    def _transpiled(
        self, circuit: Circuit, given: Placement | None
    ) -> tuple[Circuit, Placement, Placement]:
        """Placed and routed by Qiskit, which takes the gates as they are: the circuit, where qubits
        begin, and where each wire ends. Unless outputs may be anywhere, they are brought back."""
        device = self._device()
        gates, ending = circuit.split_ending()
        transpiler = _interop._package("qiskit.transpiler")
        passes = transpiler.generate_preset_pass_manager(
            optimization_level=3,
            coupling_map=transpiler.CouplingMap(
                [pair for a, b in device.edges for pair in ((a, b), (b, a))]
            ),
            basis_gates=["cx", "cz", "swap", "h", "s", "sdg", "x", "y", "z", "rx", "ry", "rz"],
            initial_layout=None if given is None else list(given),
            seed_transpiler=self.call.seed() % 2**31,
        )
        passes.init = passes.translation = passes.optimization = passes.scheduling = None
        found = passes.run(Circuit(gates.n, gates.unitary().gates).to_qiskit())
        first = tuple(found.layout.initial_index_layout())
        ends = found.layout.routing_permutation()
        last = tuple(ends[start] for start in first)
        routed = Circuit.from_qiskit(found)
        if self.call.exact:
            back = np.zeros((device.n, device.n), dtype=np.bool_)
            back[first, last] = True
            swaps = linear.synthesize(
                back, device=device, method="search", seed=self.call.seed(), steps=_SWAP_STEPS
            )
            routed, last = routed + swaps.circuit.to_circuit(), first
        measured = ending.placed(last[: ending.n], device.n)
        wires = [0] * device.n
        for start, end in zip(first, last, strict=True):
            wires[start] = end
        whole = Circuit._trusted(
            device.n, routed.operations + measured.operations, measured.classical
        )
        return whole, first[: circuit.n], tuple(wires)

    # --- parts ------------------------------------------------------------------------------------

    def _checked(self, placement: Any) -> Placement | None:
        """Chooses the part of the device; the placement on its wires."""
        device, n = self.call.device, self.source.n
        assert device is not None
        if n > device.n:
            raise errors.DeviceTooSmallError(f"device: got {device!r}, wanted at least {n} qubits")
        given = None
        if placement is not None:
            given = _validate.qubits(placement, "placement")
            if len(given) != n or len(set(given)) < n:
                raise errors.ShapeError(
                    f"placement: got {given}, wanted {n} qubits of the device, all different"
                )
            _validate.qubits_below(given, device.n, "placement")
        wanted = set(given) if given is not None else set()
        fitting = [part for part in device._pieces if wanted <= part and len(part) >= n]
        if device.n and not fitting:
            raise errors.DisconnectedDeviceError(
                f"device: got {device!r}, whose largest connected component has "
                f"{len(device._pieces[0])} qubits, wanted {n} connected qubits"
            )
        qubits = tuple(sorted(fitting[0])) if fitting else ()
        self.call.site = Site(device, qubits)
        return None if given is None else tuple(qubits.index(q) for q in given)

    def _device(self) -> Device:
        """The wires."""
        site = self.call.site
        assert site is not None
        if site.qubits == tuple(range(site.device.n)):
            return site.device
        return site.device.part(site.qubits)

    def _is_large(self) -> bool:
        return CircuitCounts.of(self.source).rotations * self._device().n ** 2 > _MOST_WORK

    def _logical(self) -> Circuit:
        """Shorter, on no device, every qubit in its place."""
        call = replace(
            self._with_share(0.125), device=None, site=None, permutation="exact", progress=None
        )
        return Assembly(call, self.source, {**self.options, "exact": True}).run().circuit

    def _placements(self, circuit: Circuit) -> list[Placement]:
        found = placements(circuit, self._device(), _BEGINNINGS, self.call.seed())
        return list(islice(found, _TRIED))

    def _optimized(
        self, circuit: Circuit, placement: Placement, share: float, route: bool = False
    ) -> Optimization:
        wide = circuit.placed(placement, self._device().n)
        options = {**self.options, "route": route}
        return Assembly(self._with_share(share), wide, options).run()

    def _optimized_wide(self, circuit: Circuit, share: float) -> Optimization:
        """Of a circuit on the edges, which ends with the ending of the source."""
        ending = len(self.source.split_ending()[1].operations)
        call = self._with_share(share)
        return Assembly(call, circuit, self.options, ending).run()

    def _with_share(self, share: float) -> Call:
        """The call with a share of its effort."""
        effort = self.call.effort
        if share < 1:
            steps = effort.steps
            if steps is None and effort.budget is None:
                steps = _core._optimize_steps(len(self.source))
            effort = replace(
                effort,
                steps=None if steps is None else int(steps * share),
                budget=None if effort.budget is None else effort.budget * share,
            )
        device = self._device()
        return replace(
            self.call, effort=replace(effort, seed=self.call.seed()), device=device,
            site=Site(device, tuple(range(device.n))), progress=self.progress,
        )  # fmt: skip

    def _best(self, found: Sequence[_Routed]) -> _Routed:
        """Ties: the latest."""
        by_depth = self.call.objective == "depth"

        def size(routed: _Routed) -> tuple[int, int]:
            count, depth = routed.found.count, routed.found.depth
            return (depth, count) if by_depth else (count, depth)

        return min(reversed(found), key=size)

    @cached_property
    def progress(self) -> Callable[[Progress], object] | None:
        """The caller's, which hears of circuits on the device that are better than all before."""
        tell = self.call.progress
        if tell is None:
            return None
        best: list[Progress] = []

        def filtered(now: Progress) -> None:
            if not best or now < best[-1]:
                best.append(now)
                tell(now)

        return filtered

    def _placed(self, routed: _Routed) -> Optimization:
        """The result on the device, of the source. Where outputs may be anywhere, idle qubits of
        the device are wires as well, after those of the source."""
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
            front=tuple(self._placed(each) for each in routed.front),
            _stages=tuple(
                tuple(stage.placed(qubits, width) for stage in stages)
                for stages in routed.found._stages
            ),
        )


@dataclass(frozen=True)
class _Routed:
    """A circuit on the wires, where the qubits of the source begin, and where each wire ends."""

    found: Optimization
    placement: Placement
    wires: Placement
    front: tuple[_Routed, ...] = ()

    @classmethod
    def of(cls, found: Optimization, placement: Placement) -> _Routed:
        front = tuple(cls.of(each, placement) for each in found.front)
        return cls(found, placement, found.permutation, front)

    def then(self, later: Optimization) -> _Routed:
        """The circuit made anew from this one. Its stages go on from those of this one."""
        first = self.found._stages or ((),) * len(later._stages)
        stages = tuple(
            before + tuple(stage.after(self.wires) for stage in after)
            for before, after in zip(first, later._stages, strict=True)
        )
        return _Routed(
            replace(later, _stages=stages), self.placement,
            tuple(later.permutation[wire] for wire in self.wires),
            tuple(self.then(each) for each in later.front),
        )  # fmt: skip

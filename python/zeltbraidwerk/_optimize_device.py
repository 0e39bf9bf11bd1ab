"""Whole circuits on the edges of a device: placed, routed and made shorter there."""

from __future__ import annotations

from collections.abc import Iterator, Mapping
from dataclasses import dataclass, replace
from itertools import islice
from typing import Any

import numpy as np

from zeltbraidwerk import _interop, _validate, errors, linear, routing
from zeltbraidwerk._family import Call
from zeltbraidwerk._optimize_pieces import Assembly
from zeltbraidwerk._optimize_results import CircuitCounts, Optimization, pieces_of
from zeltbraidwerk._placement import placements
from zeltbraidwerk._site import Site
from zeltbraidwerk.circuits import Circuit
from zeltbraidwerk.devices import Device

Placement = tuple[int, ...]

_BEGINNINGS = 12  # of the search for placements
_TRIED = 3  # placements for which circuits are made
_MOST_WORK = 2e7  # rotations times the square of the qubits: seconds for a first circuit
_DEFAULT_STEPS = 200_000
_STEPS_OF_GATE = 30
_SWAP_STEPS = 20_000  # of the search that brings qubits back


@dataclass
class OnDevice:
    """Wires are the qubits of a connected part of the device."""

    call: Call
    source: Circuit
    options: Mapping[str, bool]

    def run(self, placement: Any, router: str) -> Optimization:
        given = self._checked(placement)
        n, device = self.source.n, self._device()
        start = tuple(range(n)) if given is None else given
        if all(q < device.n for q in start) and device.fits(self.source.placed(start, device.n)):
            return self._placed(self._optimized(self.source, start, 1.0), start)
        if router == "qiskit":
            candidates = self._by_qiskit(given)
        elif self._is_large():
            candidates = self._by_trees()
        else:
            candidates = self._by_rotations(given)
        best = min(candidates, key=lambda found: self._size(found[0]))
        final = self._optimized_wide(best[0].circuit, 0.5)
        stages = zip(best[0]._stages, final._stages, strict=True)
        final = replace(final, _stages=tuple(before + after for before, after in stages))
        size = min((final, best[0]), key=self._size)
        return self._placed(size, best[1])

    # --- candidates: a circuit on the edges, and where qubits are ---------------------------------

    def _by_rotations(self, given: Placement | None) -> Iterator[tuple[Optimization, Placement]]:
        """Made anew from the rotations, for some placements."""
        tried = [given] if given is not None else self._placements(self._logical())
        for placement in tried:
            yield self._optimized(self.source, placement, 0.375 / len(tried), route=True), placement

    def _by_trees(self) -> Iterator[tuple[Optimization, Placement]]:
        """As :func:`zeltbraidwerk.routing.route`, for circuits that would take too long."""
        found = routing.route(self.source, self._device())
        yield self._optimized_wide(found.circuit, 0.375), found.placement

    def _by_qiskit(self, given: Placement | None) -> Iterator[tuple[Optimization, Placement]]:
        """The circuit, and an optimised one."""
        if len(pieces_of(self.source.split_ending()[0])[0]) > 1:
            raise errors.OptionError(
                "router: got 'qiskit' for a circuit with operations other than gates in the "
                "middle, wanted 'own'"
            )
        for circuit in (self.source, self._logical()):
            routed, placement = self._transpiled(circuit, given)
            yield self._optimized_wide(routed, 0.1875), placement

    def _transpiled(self, circuit: Circuit, given: Placement | None) -> tuple[Circuit, Placement]:
        """By Qiskit, and with every output brought back to where its qubit began."""
        qiskit = _interop._package("qiskit")
        device = self._device()
        gates, ending = circuit.split_ending()
        found = qiskit.transpile(
            Circuit(gates.n, gates.unitary().gates).to_qiskit(),
            coupling_map=qiskit.transpiler.CouplingMap(
                [pair for a, b in device.edges for pair in ((a, b), (b, a))]
            ),
            basis_gates=["cx", "rz", "sx", "x"],
            optimization_level=3,
            seed_transpiler=self.call.seed() % 2**31,
            initial_layout=None if given is None else list(given),
        )
        first = tuple(found.layout.initial_index_layout(filter_ancillas=True))
        last = tuple(found.layout.final_index_layout(filter_ancillas=True))
        routed = Circuit.from_qiskit(found)
        back = np.zeros((device.n, device.n), dtype=np.bool_)
        back[first, last] = True
        idle_first = sorted(set(range(device.n)) - set(first))
        idle_last = sorted(set(range(device.n)) - set(last))
        back[idle_first, idle_last] = True
        if first != last:
            swaps = linear.synthesize(
                back, device=device, method="search", seed=self.call.seed(), steps=_SWAP_STEPS
            )
            routed = routed + swaps.circuit.to_circuit()
        return self._with_ending(routed, ending.placed(first, device.n)), first

    @staticmethod
    def _with_ending(gates: Circuit, ending: Circuit) -> Circuit:
        return Circuit._trusted(
            gates.n, gates.operations + ending.operations, ending.classical
        )

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
        """Shorter, on no device."""
        call = replace(self._with_share(0.125), device=None, site=None)
        return Assembly(call, self.source, self.options).run().circuit

    def _placements(self, circuit: Circuit) -> list[Placement]:
        found = placements(circuit, self._device(), _BEGINNINGS, self.call.seed())
        return list(islice(found, _TRIED))

    def _optimized(
        self, circuit: Circuit, placement: Placement, share: float, route: bool = False
    ) -> Optimization:
        wide = circuit.placed(placement, self._device().n)
        options = {**self.options, "route": route}
        return self._on_wires(Assembly(self._with_share(share), wide, options).run())

    def _optimized_wide(self, circuit: Circuit, share: float) -> Optimization:
        """Of a circuit on the edges, which ends with the ending of the source."""
        ending = len(self.source.split_ending()[1].operations)
        call = self._with_share(share)
        return self._on_wires(Assembly(call, circuit, self.options, ending).run())

    def _on_wires(self, found: Optimization) -> Optimization:
        """The circuit on wires again."""
        site = self.call.site
        assert site is not None
        if site.qubits == tuple(range(site.device.n)):
            return found
        wire = {q: k for k, q in enumerate(site.qubits)}
        places = [wire.get(q, 0) for q in range(site.device.n)]
        return replace(found, circuit=found.circuit.placed(places, len(site.qubits)))

    def _with_share(self, share: float) -> Call:
        """The call with a share of its effort."""
        effort = self.call.effort
        if share < 1:
            steps = effort.steps
            if steps is None and effort.budget is None:
                steps = _DEFAULT_STEPS + _STEPS_OF_GATE * len(self.source)
            effort = replace(
                effort,
                steps=None if steps is None else int(steps * share),
                budget=None if effort.budget is None else effort.budget * share,
            )
        self.call.seed()
        return replace(self.call, effort=replace(effort, seed=self.call.effort.seed))

    def _size(self, found: Optimization) -> tuple[int, int]:
        by_depth = self.call.objective == "depth"
        return (found.depth, found.count) if by_depth else (found.count, found.depth)

    def _placed(self, found: Optimization, placement: Placement) -> Optimization:
        """The result on the device, of the source."""
        site = self.call.site
        assert site is not None
        qubits, width = site.qubits, site.device.n
        return replace(
            found,
            circuit=found.circuit.placed(qubits, width),
            source=self.source,
            placement=tuple(qubits[wire] for wire in placement),
            permutation=tuple(range(self.source.n)),
            _stages=tuple(
                tuple(stage.placed(qubits, width) for stage in stages) for stages in found._stages
            ),
            seconds=self.call.elapsed,
        )

"""What the ``synthesize`` of every family does alike.

A family is described once, as a :class:`Family`: its methods, which the compiled part lists. Its
``synthesize`` passes the options on to :meth:`Family.call`, reads its own input, and lets the
returned :class:`Call` run the family's function of the compiled part, which refuses options that
the method does not take. The family makes the result and adds its own fields.
"""

from __future__ import annotations

import secrets
import time
from collections.abc import Callable, Sequence
from dataclasses import dataclass, replace
from functools import partial
from typing import Any, TypeAlias, TypeVar

from zeltbraidwerk import _calls, _core, _renamed, _search, _start, _validate, _weights, errors
from zeltbraidwerk._results import Objective, Permutation, Result
from zeltbraidwerk._site import Site
from zeltbraidwerk.devices import Device

R = TypeVar("R", bound=Result)
# A result, and a function that makes it again with each qubit of the device moved to another one.
Movable: TypeAlias = tuple[R, Callable[[Sequence[int]], R]]


@dataclass(frozen=True, slots=True)
class Found:
    """What the result of every family needs to know of the circuit that was found."""

    method: str
    permutation: tuple[int, ...]
    seed: int | None = None
    runs: int = 1
    trace: tuple[_search.Point, ...] = ()
    least_count: int = 0
    least_depth: int = 0


@dataclass(frozen=True)
class Family:
    """``names(on_device)`` lists the methods: "auto", and what it stands for."""

    names: Callable[[bool], Sequence[str]]

    def methods(self, device: Any = False) -> tuple[str, ...]:
        return tuple(self.names(_validate.flag(device, "device")))

    def call(
        self,
        *,
        method: Any = "auto",
        device: Any = None,
        objective: Any = "count",
        permutation: Any = "exact",
        seed: Any = None,
        restarts: Any = None,
        budget: Any = None,
        steps: Any = None,
        jobs: Any = 1,
        progress: Any = None,
        start: Any = None,
    ) -> Call:
        """Checks the options that families share."""
        begin = time.perf_counter()
        _validate.choice(objective, "objective", ("count", "depth", "error", "duration"))
        _validate.choice(permutation, "permutation", ("exact", "free"))
        ground = None if device is None else Device.of(device)
        on_device = ground is not None
        known = self.methods(on_device)
        method = _validate.method(_renamed.value(method, known), known, on_device)
        effort = _search.Effort.checked(seed, restarts, budget, jobs, steps)
        _validate.callback(progress, "progress")
        given = None if start is None else _start.Known.of(start)
        plain = objective in ("count", "depth")
        weights = None if plain else _weights.Weights.of(ground, objective)
        return Call(begin, method, ground, objective, permutation, effort, progress, given, weights)


@dataclass
class Call:
    """One call of a family's ``synthesize``: its checked options, and what its result needs."""

    begin: float
    method: str
    device: Device | None
    objective: Objective
    permutation: Permutation
    effort: _search.Effort
    progress: Callable[[_search.Progress], object] | None
    known: _start.Known | None = None
    weights: _weights.Weights | None = None
    site: Site | None = None

    @property
    def exact(self) -> bool:
        return self.permutation == "exact"

    @property
    def elapsed(self) -> float:
        return time.perf_counter() - self.begin

    def seed(self) -> int:
        """The seed; it is drawn where none was given."""
        if self.effort.seed is None:
            self.effort = replace(self.effort, seed=secrets.randbits(64))
        assert self.effort.seed is not None
        return self.effort.seed

    def place(self, n: int) -> None:
        """Finds a connected part of the device for ``n`` wires."""
        self.site = None if self.device is None else Site.of(self.device, n)

    def qubits(self, n: int) -> tuple[int, ...]:
        """The qubits of the circuit on which ``n`` wires are placed."""
        return tuple(range(n)) if self.site is None else self.site.qubits

    def width(self, n: int) -> int:
        """The number of qubits of a circuit on ``n`` wires, those of the whole device."""
        return n if self.site is None else self.site.device.n

    def run(
        self,
        kernel: Callable[..., tuple[Any, ...]],
        make: Callable[..., R],
        *given: Any,
        outputs: _core._Outputs | None = None,
        **own: Any,
    ) -> R:
        """Runs a function of the compiled part on what is given, and makes the result of what it
        found: of a :class:`Found`, and of the circuit in the family's own form. On Ctrl-C the
        exception holds the result of the best circuit so far. Where edges have costs, it is run on
        several parts of the device."""
        if outputs is None:
            outputs = _core._Outputs.in_place if self.exact else _core._Outputs.anywhere
        once = partial(self._run, kernel, make, *given, outputs=outputs, **own)
        site = self.site
        if self.weights is None or site is None:
            return once()[0]
        fixed = self.known is not None or bool(site.path)

        def run() -> Movable[R]:
            if not fixed:
                self.place(len(site.qubits))
            return once()

        # Another place of the circuit is at other distances from where its outputs may be.
        moves = not fixed and outputs is not _core._Outputs.within_reach
        return self.cheapest(len(site.qubits), run, fixed, moves)

    def _run(
        self, kernel: Callable[..., tuple[Any, ...]], make: Callable[..., R], *given: Any,
        outputs: _core._Outputs, **own: Any,
    ) -> Movable[R]:  # fmt: skip
        """The result, and what makes it again with each qubit of the device moved."""
        effort, seed_given = self.effort, self.effort.seed
        options = _core._SynthesisOptions(
            self.method, getattr(_core._Objective, self.objective), outputs,
            None if self.site is None else self.site.adjacency, self.seed(), effort.restarts,
            self._budget(), effort.steps, effort.jobs,
            _search.teller(self.progress, self.objective == "depth"),
            None if self.known is None else self.known.on_wires(self.site),
        )  # fmt: skip

        def result_of(summary: Any, *made: Any) -> R:
            found = Found(
                summary.method,
                tuple(summary.permutation),
                summary.seed if seed_given is None else seed_given,
                summary.runs,
                tuple(_search.Point(*point) for point in summary.trace),
                summary.least_count,
                summary.least_depth,
            )
            return make(found, *made)

        site = self.site

        def moved(to: Sequence[int]) -> R:
            assert site is not None
            assert self.device is not None
            self.site = Site(self.device, tuple(to[q] for q in site.qubits), site.path)
            return result_of(*done[0])

        done: list[tuple[Any, ...]] = []
        stopped = False
        try:
            _calls.append_result(done, partial(kernel, *given, options, **own))
            result = result_of(*done[0])
            stopped = done[0][0].stopped
        except KeyboardInterrupt:  # within the kernel, or while its result is read
            stopped = True
        if not stopped:
            return result, moved
        best = result_of(*done[0]) if done else None
        raise errors.Interrupted(best=best)

    def cheapest(self, n: int, run: Callable[[], Movable[R]], fixed: bool, moves: bool) -> R:
        """The cheapest of several searches on n wires, where edges have costs; where wires are
        ``fixed`` to qubits, on these. ``run`` makes one by the options that the call has then.

        The same search is made on the device and on parts of it that are cheap; what it finds is
        placed where it costs least, if it ``moves``. The search itself looks at gates or layers.
        """
        weights, device, whole = self.weights, self.device, replace(self)
        assert weights is not None
        assert device is not None
        found: list[tuple[float, int, Movable[R]]] = []
        stopped = False
        grounds = [device] if fixed else list(_weights.grounds(device, n, weights.costs))
        self.objective, self.weights = weights.searched, None
        self.progress = _search.falling(self.progress)
        try:
            for k, ground in enumerate(grounds):
                if found and whole._is_over():
                    break
                effort = replace(whole._share(len(grounds) - k), seed=self.effort.seed)
                self.device, self.effort, self.begin = ground, effort, time.perf_counter()
                result, moved = run()
                cost = weights.of_circuit(result.circuit)
                found.append((cost, result.count, (result, moved)))
        except errors.Interrupted as at:
            stopped = True
            if not found:
                if at.best is None:
                    raise
                best = replace(at.best, device=device, objective=weights.objective)
                raise errors.Interrupted(best=best) from None
        finally:
            whole.effort = replace(whole.effort, seed=self.effort.seed)
            vars(self).update(vars(whole))
        result, moved = min(found, key=lambda each: each[:2])[2]
        stays = range(device.n)
        best = moved(_weights.places(result.circuit, device, weights) if moves else stays)
        # What was proven holds for the part of the device that was searched.
        best = replace(best, least_count=0, least_depth=0)
        if stopped:
            raise errors.Interrupted(best=best)
        return best

    def _is_over(self) -> bool:
        return self.effort.budget is not None and self.elapsed >= self.effort.budget

    def _share(self, searches: int) -> _search.Effort:
        """Of several searches that are to come. Steps are those of one; a budget is for all."""
        budget = self.effort.budget
        if budget is None:
            return self.effort
        return replace(self.effort, budget=max((budget - self.elapsed) / searches, 1e-3))

    def _budget(self) -> float | None:
        """Of the compiled part. What takes long to read takes longer to write, which comes after
        it; at most half of the time is kept for that."""
        if self.effort.budget is None:
            return None
        read = self.elapsed
        left = self.effort.budget - read
        return max(left - min(3 * read, left / 2), min(self.effort.budget, 1e-3))

    def result(self, kind: type[R], found: Found, n: int, **own: Any) -> R:
        """The result of a family for ``n`` wires; ``own`` has the circuit and the fields of the
        family, and overrules the others."""
        fields: dict[str, Any] = {
            "permutation": found.permutation,
            "placement": self.qubits(n),
            "device": None if self.site is None else self.site.device,
            "method": found.method,
            "objective": self.objective,
            "seed": found.seed,
            "runs": found.runs,
            "seconds": self.elapsed,
            "trace": found.trace,
            "least_count": found.least_count,
            "least_depth": found.least_depth,
        }
        return kind(**fields | own)

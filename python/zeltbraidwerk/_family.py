"""What the ``synthesize`` of every family does alike.

A family is described once, as a :class:`Family`: its methods, and which of them take which options.
Its ``synthesize`` passes the options on to :meth:`Family.call`, reads its own input, and gives the
returned :class:`Call` a list of lanes, one per method. A run of a lane hands over a :class:`Found`.
The call keeps the best one and makes the result, to which the family adds its own fields.
"""

from __future__ import annotations

import secrets
import time
from collections.abc import Callable, Collection, Mapping, Sequence
from dataclasses import dataclass, field
from functools import cached_property
from typing import Any, Generic, TypeVar

import numpy as np
import numpy.typing as npt

from zeltbraidwerk import _core, _renamed, _search, _validate
from zeltbraidwerk._results import Objective, Permutation, Result
from zeltbraidwerk._site import Site
from zeltbraidwerk.devices import Device

T = TypeVar("T")
R = TypeVar("R", bound=Result)

Takers = Mapping[str, Collection[str]]  # by option, the methods that take it; absent: all do


@dataclass(frozen=True, slots=True)
class Found(Generic[T]):
    """What a run found: ``made`` is the circuit in the family's own form."""

    method: str
    made: T
    permutation: tuple[int, ...]
    count: int
    depth: int


@dataclass(frozen=True)
class Family:
    """The methods of a family beside "auto", without a device and with one, and the options that
    only some of them take."""

    anywhere: Collection[str]
    on_device: Collection[str] = ()
    takers: Takers = field(default_factory=dict)
    takers_on_device: Takers | None = None  # where they differ

    def methods(self, device: Any = False) -> tuple[str, ...]:
        names = self.on_device if _validate.flag(device, "device") else self.anywhere
        return ("auto", *names) if names else ()

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
        **own: Any,
    ) -> Call:
        """Checks the options that families share; of the family's ``own`` ones, which are None
        where not given, that the method takes them."""
        start = time.perf_counter()
        _validate.choice(objective, "objective", ("count", "depth"))
        _validate.choice(permutation, "permutation", ("exact", "free"))
        ground = None if device is None else Device.of(device)
        on_device = ground is not None
        known = self.methods(on_device)
        method = _validate.method(_renamed.value(method, known), known, on_device)
        takers = self.takers
        if on_device and self.takers_on_device is not None:
            takers = self.takers_on_device
        _validate.options_of(method, takers, restarts=restarts, budget=budget, steps=steps, **own)
        effort = _search.Effort.checked(seed, restarts, budget, jobs, steps, progress)
        names = known[1:] if method == "auto" else (method,)
        return Call(
            start, method, names, ground, objective, permutation, effort, progress, effort.seed
        )


@dataclass
class Call:
    """One call of a family's ``synthesize``: its checked options, and what its result needs."""

    start: float
    method: str
    names: tuple[str, ...]  # the methods that "auto" stands for, or the one that was asked for
    device: Device | None
    objective: Objective
    permutation: Permutation
    effort: _search.Effort
    progress: Callable[[_search.Progress], object] | None
    seed: int | None  # given, or drawn
    site: Site | None = None
    budget_share: float = 1.0  # of the budget, for the lanes

    @property
    def by_depth(self) -> bool:
        return self.objective == "depth"

    @property
    def exact(self) -> bool:
        return self.permutation == "exact"

    @property
    def elapsed(self) -> float:
        return time.perf_counter() - self.start

    def draw_seed(self) -> int:
        """The seed; it is drawn where none was given."""
        if self.seed is None:
            self.seed = secrets.randbits(64)
        return self.seed

    def place(self, n: int) -> None:
        """Finds a connected part of the device for ``n`` wires."""
        self.site = None if self.device is None else Site.of(self.device, n)

    def qubits(self, n: int) -> tuple[int, ...]:
        """The qubits of the circuit on which ``n`` wires are placed."""
        return tuple(range(n)) if self.site is None else self.site.qubits

    def width(self, n: int) -> int:
        """The number of qubits of a circuit on ``n`` wires, those of the whole device."""
        return n if self.site is None else self.site.device.n

    @property
    def adjacency(self) -> npt.NDArray[np.bool_]:
        """Of the wires; an empty matrix without a device."""
        return np.zeros((0, 0), dtype=np.bool_) if self.site is None else self.site.adjacency

    @cached_property
    def control(self) -> Any:
        """The deadline begins when the first run asks for it."""
        budget = self.effort.budget
        return _core._SearchControl(None if budget is None else self.budget_share * budget)

    @cached_property
    def trace(self) -> _search.Trace:
        return _search.Trace(self.by_depth, self.progress)

    def key(self, found: Found[Any]) -> tuple[int, int]:
        """Less is better."""
        count, depth = found.count, found.depth
        return (depth, count) if self.by_depth else (count, depth)

    def search_lane(
        self, run: Callable[[int], Found[T]], effort: _search.Effort | None = None
    ) -> _search.Lane[Found[T]]:
        """The runs of the search engine."""
        return _search.search_lane(run, self.key, effort or self.effort)

    def best(
        self, lanes: Sequence[_search.Lane[Found[T]]], result: Callable[[Found[T], int], R]
    ) -> tuple[Found[T], int]:
        """The best of all runs, and their number. ``result`` makes the result of what was found so
        far, for the exception that Ctrl-C raises."""
        return _search.best_of(lanes, self.effort.jobs, self.control, self.key, result, self.trace)

    def result(self, kind: type[R], found: Found[Any], runs: int, n: int, **own: Any) -> R:
        """The result of a family for ``n`` wires; ``own`` has the circuit and the fields of the
        family, and overrules the others."""
        fields: dict[str, Any] = {
            "permutation": found.permutation,
            "placement": self.qubits(n),
            "device": None if self.site is None else self.site.device,
            "method": found.method,
            "objective": self.objective,
            "seed": self.seed,
            "runs": runs,
            "seconds": self.elapsed,
            "trace": tuple(self.trace.points),
        }
        return kind(**fields | own)

"""How long a search may go on, and what it tells on its way."""

from __future__ import annotations

import os
from collections.abc import Callable
from dataclasses import dataclass
from typing import Any

from zeltbraidwerk import _validate


@dataclass(frozen=True)
class Effort:
    """The options of the length of a search, checked."""

    seed: int | None
    restarts: int | None
    budget: float | None
    jobs: int
    steps: int | None = None

    @classmethod
    def checked(cls, seed: Any, restarts: Any, budget: Any, jobs: Any, steps: Any = None) -> Effort:
        return cls(
            None if seed is None else _validate.integer(seed, "seed", 0, 2**64 - 1),
            None if restarts is None else _validate.integer(restarts, "restarts", 1, 2**31 - 1),
            None if budget is None else _validate.seconds(budget, "budget"),
            (os.cpu_count() or 1) if jobs is None else _validate.integer(jobs, "jobs", 1, 1024),
            None if steps is None else _validate.integer(steps, "steps", 0, 2**63 - 1),
        )


@dataclass(frozen=True)
class Point:
    """The best circuit at a moment of a search."""

    seconds: float
    count: int
    depth: int


class Progress(int):
    """The objective of the best circuit so far as an int, with its count, depth and seconds."""

    count: int
    depth: int
    seconds: float

    def __new__(cls, objective: int, point: Point) -> Progress:
        self = super().__new__(cls, objective)
        self.seconds, self.count, self.depth = point.seconds, point.count, point.depth
        return self


def teller(
    progress: Callable[[Progress], object] | None, by_depth: bool
) -> Callable[[float, int, int], object] | None:
    """What the compiled part calls whenever the objective falls."""
    if progress is None:
        return None

    def tell(seconds: float, count: int, depth: int) -> None:
        progress(Progress(depth if by_depth else count, Point(seconds, count, depth)))

    return tell


def falling(progress: Callable[[Progress], object] | None) -> Callable[[Progress], object] | None:
    """Of several searches: hears of what is better than all before."""
    if progress is None:
        return None
    best: list[Progress] = []

    def tell(now: Progress) -> None:
        if not best or now < best[-1]:
            best.append(now)
            progress(now)

    return tell


def look_for_exceptions() -> None:
    """Does nothing: what is raised is an exception that waits for this thread."""

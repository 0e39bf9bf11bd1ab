"""Runs of randomised searches, distributed over threads.

A search is a list of lanes, one per method; a lane is a sequence of runs, numbered from 0, each of
which depends on its number alone. Threads take blocks of consecutive runs from the lanes. The
answer is the best run; ties: lowest lane, then lowest run. So it does not depend on the number of
threads, unless a deadline ends the search.

Runs of the search engine prove lower bounds on the number of gates and layers. Of the runs that
reach the bounds, one of the engine is preferred to those of other methods; when no remaining run
could become the answer, the search ends.
"""

from __future__ import annotations

import os
import time
from collections.abc import Callable, Sequence
from concurrent.futures import FIRST_COMPLETED, Future, ThreadPoolExecutor, wait
from dataclasses import dataclass
from typing import Any, Generic, Protocol, TypeVar

from zeltbraidwerk import _validate, errors

T = TypeVar("T")

_BLOCK_SECONDS = 0.02  # long compared with the start of a block, short for a person
_EXCESS = 0.05  # a lane whose best is longer than the best of all by this share gets half its time
_POLL_SECONDS = 0.05  # between two readings of the news of running kernels
SEARCH_STEPS = 200_000  # of a run of the search engine, without steps and budget


@dataclass(frozen=True)
class Effort:
    """The options of the length of a search, checked."""

    seed: int | None
    restarts: int | None
    budget: float | None
    jobs: int
    steps: int | None = None

    @classmethod
    def checked(
        cls,
        seed: Any,
        restarts: Any,
        budget: Any,
        jobs: Any,
        steps: Any = None,
        progress: Any = None,
    ) -> Effort:
        """``progress`` is only checked: the trace of the search keeps it."""
        _validate.callback(progress, "progress")
        return cls(
            None if seed is None else _validate.integer(seed, "seed", 0, 2**64 - 1),
            None if restarts is None else _validate.integer(restarts, "restarts", 1, 2**31 - 1),
            None if budget is None else _validate.seconds(budget, "budget"),
            (os.cpu_count() or 1) if jobs is None else _validate.integer(jobs, "jobs", 1, 1024),
            None if steps is None else _validate.integer(steps, "steps", 0, 2**63 - 1),
        )

    @property
    def search_steps(self) -> int | None:
        """Steps of a run of the search engine; None: to the end of the budget."""
        if self.steps is None and self.budget is None:
            return SEARCH_STEPS
        return self.steps

    @property
    def search_runs(self) -> int:
        """Runs of the search engine; with a budget and no number of steps, one per job."""
        if self.restarts is not None:
            return self.restarts
        return self.jobs if self.search_steps is None else 1


class Control(Protocol):
    """A deadline and a stop flag that all kernels of a search read, and the news that they
    write."""

    def stop(self) -> None: ...
    def ended(self) -> bool: ...
    def news(self) -> list[tuple[float, int, int]]:
        """Seconds, counts and depths of the circuits found since the last call."""
        ...

    def bound(self) -> tuple[int, int]:
        """The proven lower bounds on the numbers of gates and layers."""
        ...


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


class Trace:
    """Gets the size of each circuit found, and keeps and reports those better than all before."""

    def __init__(self, by_depth: bool, progress: Callable[[Progress], object] | None) -> None:
        self.points: list[Point] = []
        self.by_depth = by_depth
        self._progress = progress
        self._best: tuple[int, int] | None = None

    def add(self, point: Point) -> None:
        key = (point.depth, point.count) if self.by_depth else (point.count, point.depth)
        if self._best is not None and self._best <= key:
            return
        objective_fell = self._best is None or key[0] < self._best[0]
        self._best = key
        self.points.append(point)
        if self._progress is not None and objective_fell:
            self._progress(Progress(key[0], point))


class Lane(Generic[T]):
    """The runs of one method. ``run(first, last)`` returns the best of a block with its number, or
    None when none of them finished; ``runs`` is None for no limit but the deadline."""

    def __init__(
        self,
        run: Callable[[int, int], tuple[int, T] | None],
        runs: int | None,
        proves: bool = False,
    ) -> None:
        self.run = run
        self.runs = runs
        self.proves = proves  # the search engine, which proves bounds
        self.next = 0
        self.length = 1  # of the next block
        self.seconds = 0.0  # of work, done or begun
        self.best: float | None = None

    def open(self, ended: bool) -> bool:
        """Run 0 is always made, so that there is an answer."""
        return self.next == 0 or (not ended and (self.runs is None or self.next < self.runs))

    def take(self) -> tuple[int, int]:
        first, self.next = self.next, self.next + self.length
        if self.runs is not None:
            self.next = min(self.next, self.runs)
        return first, self.next

    def share(self, best: float | None) -> float:
        """Time spent, weighted by how much longer the best of the lane is than the best of all."""
        if best is None or self.next == 0:
            return self.seconds
        excess = 1.0 if self.best is None else self.best / max(best, 1) - 1
        return self.seconds * 2 ** min(excess / _EXCESS, 30)

    def timed(self, first: int, last: int) -> tuple[float, tuple[int, T] | None]:
        start = time.perf_counter()
        found = self.run(first, last)
        return time.perf_counter() - start, found


def search_lane(
    run: Callable[[int], T], key: Callable[[T], tuple[int, ...]], effort: Effort
) -> Lane[T]:
    """The runs of the search engine; each has its own stream of random numbers of the seed."""

    def block(first: int, last: int) -> tuple[int, T]:
        return min(((k, run(k)) for k in range(first, last)), key=lambda made: key(made[1]))

    return Lane(block, effort.search_runs, proves=True)


class Search(Generic[T]):
    """The best value so far, also when an exception ends the search."""

    def __init__(
        self,
        key: Callable[[T], tuple[int, ...]],
        control: Control,
        read_news: Callable[[], object],
        by_depth: bool,
    ) -> None:
        self.best: T | None = None
        self.runs = 0
        self._key = key
        self._control = control
        self._read_news = read_news
        self._by_depth = by_depth
        self._run: tuple[tuple[int, ...], int, int] | None = None  # of the best: key, lane, number

    def work(self, lanes: Sequence[Lane[T]], jobs: int, on_better: Callable[[T], object]) -> None:
        """Runs all lanes to their end or to the deadline; ``on_better`` is called from here."""
        running: dict[Future[tuple[float, tuple[int, T] | None]], tuple[int, int, int]] = {}
        with ThreadPoolExecutor(jobs, "zeltbraidwerk") as pool:
            try:
                while True:
                    while len(running) < jobs and (place := self._next_lane(lanes)) is not None:
                        first, last = lanes[place].take()
                        task = pool.submit(lanes[place].timed, first, last)
                        running[task] = (place, first, last)
                        lanes[place].seconds += _BLOCK_SECONDS
                    if not running:
                        return
                    if not any(self._may_win(lanes, *part[:2]) for part in running.values()):
                        self._control.stop()
                    ended = wait(running, _POLL_SECONDS, FIRST_COMPLETED).done
                    self._read_news()
                    for task in ended:
                        place, first, last = running.pop(task)
                        self.runs += last - first
                        if self._finish(lanes, place, last - first, *task.result()):
                            on_better(self.best)  # type: ignore[arg-type]
            except BaseException:
                self._control.stop()
                for task, (place, first, last) in running.items():  # what they have found counts
                    if not task.cancel() and task.exception() is None:
                        self._finish(lanes, place, last - first, *task.result())
                raise

    def _next_lane(self, lanes: Sequence[Lane[T]]) -> int | None:
        ended = self._control.ended()
        best = None if self._run is None else float(self._run[0][0])
        there = [
            place
            for place, lane in enumerate(lanes)
            if lane.open(ended) and self._may_win(lanes, place, lane.next)
        ]
        return min(there, key=lambda place: (lanes[place].share(best), place), default=None)

    def _rank(
        self, lanes: Sequence[Lane[T]], key: tuple[int, ...], place: int, run: int
    ) -> tuple[tuple[int, ...], bool, int, int]:
        """Less is better. The bound is known after the first run of the engine."""
        return key, not (lanes[place].proves and self._is_least(key)), place, run

    def _is_least(self, key: tuple[int, ...]) -> bool:
        bound = self._control.bound()
        return key[:2] <= (bound[::-1] if self._by_depth else bound)

    def _may_win(self, lanes: Sequence[Lane[T]], place: int, run: int) -> bool:
        """Whether a run of a lane, or a later one, can still be the answer."""
        if self._run is None or not self._is_least(self._run[0]):
            return True
        return self._rank(lanes, self._run[0], place, run) < self._rank(lanes, *self._run)

    def _finish(
        self,
        lanes: Sequence[Lane[T]],
        place: int,
        length: int,
        seconds: float,
        found: tuple[int, T] | None,
    ) -> bool:
        """True when the search has become better."""
        lane = lanes[place]
        lane.seconds += seconds - _BLOCK_SECONDS
        if seconds < _BLOCK_SECONDS / 2:
            lane.length = max(lane.length, 2 * length)
        if found is None:
            return False
        run, value = found
        key = self._key(value)
        lane.best = min(key[0], key[0] if lane.best is None else lane.best)
        before = self._run
        if before is not None and (
            self._rank(lanes, *before) <= self._rank(lanes, key, place, run)
        ):
            return False
        self._run, self.best = (key, place, run), value
        return before is None or before[0] > key


def best_of(
    lanes: Sequence[Lane[T]],
    jobs: int,
    control: Control,
    key: Callable[[T], tuple[int, ...]],
    result: Callable[[T, int], Any],
    trace: Trace,
) -> tuple[T, int]:
    """The best value and the number of runs. ``key`` gives count and depth, or depth and count, as
    in the trace. Raises UnfinishedError where nothing was found, and Interrupted after Ctrl-C, with
    the ``result`` of the best so far."""
    start = time.perf_counter()

    def better(found: T) -> None:
        first, second = key(found)[:2]
        count, depth = (second, first) if trace.by_depth else (first, second)
        trace.add(Point(time.perf_counter() - start, count, depth))

    def read_news() -> None:
        for point in control.news():
            trace.add(Point(*point))

    search = Search[T](key, control, read_news, trace.by_depth)
    try:
        search.work(lanes, jobs, better)
    except KeyboardInterrupt:
        best = None if search.best is None else result(search.best, search.runs)
        raise errors.Interrupted(f"stopped, best so far: {best}", best) from None
    if search.best is None:
        raise errors.UnfinishedError(
            f"none of {search.runs} runs found a circuit in "
            f"{time.perf_counter() - start:.3g} s; "
            "wanted a larger budget, more restarts or another method"
        )
    return search.best, search.runs

"""Many inputs, and one input with many seeds."""

from __future__ import annotations

import os
import pickle
from collections.abc import Callable, Iterable, Iterator, Sized
from contextlib import closing
from dataclasses import dataclass
from typing import Any

from zeltbraidwerk import _core, _validate, errors
from zeltbraidwerk.batch import _engines
from zeltbraidwerk.batch._file import ResultsFile, header_of
from zeltbraidwerk.batch._loop import Given, Loop, Same
from zeltbraidwerk.batch._progress import Progress, Teller
from zeltbraidwerk.batch._records import Record, Results
from zeltbraidwerk.batch._tasks import Task, seed_of

Path = str | os.PathLike[str]


def run(
    task: Any,
    inputs: Iterable[Any],
    *,
    executor: Any = None,
    results: Path = "runs.jsonl",
    seed: int | None = None,
    retries: int = 2,
    progress: bool | Callable[[Progress], object] = True,
    part: tuple[int, int] | None = None,
    workers: int | None = None,
    verify: bool = True,
    **options: Any,
) -> Results:
    """Runs a family's function on every input, and returns the records of all, in the order of the
    inputs.

    ``task`` is a function or its name: "optimize", "linear.synthesize", "phase.synthesize",
    "pauli.synthesize", "clifford.synthesize", "clifford.synthesize_state",
    "clifford.synthesize_encoder", "graph_state.synthesize" or "routing.route". ``options`` are
    those of the function, the same for all inputs: ``method``, ``steps``, ``budget``, ``device``
    and so on. ``inputs`` is any iterable, read as there is room for more, so that inputs need not
    fit in memory: what the function takes, or a :class:`pathlib.Path` of a file in a form that the
    command ``zeltbraidwerk`` reads.

    ``executor`` is None for a process pool of its own, with ``workers`` processes (default: one per
    core); or any executor of :mod:`concurrent.futures`; or a ``Client`` of Dask distributed. The
    last two stay open. A pool starts new processes, which import the main module of the program: a
    script makes this call under ``if __name__ == "__main__":``. Work whose process was lost is done
    again, at most ``retries`` times for each input, by itself the last time.

    ``results`` is a file with one JSON object per line: a header, then a line for each input, with
    its result or its error; one bad input does not stop the others. It is appended to as results
    are ready, and brought into the order of the inputs at the end. The same call on the same file
    goes on where it stopped, whatever ended it: what is in the file is not done again. A file of
    another task, of other options or inputs is refused, and so is one that another run writes to.

    The seed of an input is made of ``seed`` and its index alone, so that with steps and without a
    ``budget`` the same seed gives the same file but for seconds, whatever the executor. Where none
    is given it is drawn, once for the file. Every result is checked by its own ``verify()`` unless
    ``verify`` is False.

    ``part=(i, n)`` does the inputs i, i + n, i + 2 n, ... alone; :func:`merge` of the files of all
    n parts makes the file of the whole run. ``progress`` shows a line on a terminal, or is a
    function that is called with a :class:`Progress`.

    >>> import tempfile
    >>> import zeltbraidwerk as zb
    >>> matrices = zb.gallery.random_invertible(4, 3, seed=1)
    >>> with tempfile.TemporaryDirectory() as folder:
    ...     found = zb.batch.run("linear.synthesize", matrices, results=f"{folder}/runs.jsonl",
    ...                          seed=1, workers=1, method="pmh")
    ...     [(record.index, record.count) for record in found]
    [(0, 10), (1, 8), (2, 7)]

    Raises classes of :mod:`zeltbraidwerk.errors` before any work for arguments that do not fit; and
    what ``inputs`` raises, after the work on those before.
    """
    batch = _Batch(task, executor, results, seed, retries, progress, part, workers, verify, options)
    for _ in batch.records(inputs):
        pass
    return Results(batch.path)


def stream(
    task: Any,
    inputs: Iterable[Any],
    *,
    executor: Any = None,
    results: Path = "runs.jsonl",
    seed: int | None = None,
    retries: int = 2,
    progress: bool | Callable[[Progress], object] = False,
    part: tuple[int, int] | None = None,
    workers: int | None = None,
    verify: bool = True,
    **options: Any,
) -> Iterator[Record]:
    """The same as :func:`run`, but yields each record as soon as it is ready and in the file; first
    those that the file has already. Leaving the loop stops the work; the file can be gone on with.
    """
    batch = _Batch(task, executor, results, seed, retries, progress, part, workers, verify, options)
    return batch.records(inputs, from_file=True)


def race(
    task: Any,
    input: Any,
    *,
    seeds: Iterable[int] = range(1000),
    executor: Any = None,
    results: Path = "race.jsonl",
    goal: int | None = None,
    patience: int | None = None,
    retries: int = 2,
    progress: bool | Callable[[Progress], object] = True,
    workers: int | None = None,
    verify: bool = True,
    **options: Any,
) -> Results:
    """Runs a family's function on one input with many seeds; ``.best`` of what it returns is the
    record of the smallest result.

    The race ends when all ``seeds`` are done; or the objective is at most ``goal``, or proven to be
    the best; or after ``patience`` results without a smaller one. Work that is still going on then
    is stopped in a pool of its own, and called off in other executors. The file has a line for
    each seed that is done. The same call goes on from it, also with more seeds, another goal or
    another patience. The other arguments are those of :func:`run`; a budget holds for each seed.
    """
    batch = _Batch(task, executor, results, None, retries, progress, None, workers, verify, options)
    return batch.race(input, seeds, goal, patience)


class _Batch:
    """The checked arguments of a call."""

    def __init__(
        self, task: Any, executor: Any, results: Any, seed: Any, retries: Any, progress: Any,
        part: Any, workers: Any, verify: Any, options: dict[str, Any],
    ) -> None:  # fmt: skip
        self.task = Task.checked(task, options, verify)
        self.plain = self.task.plain()
        self.retries = _validate.integer(retries, "retries", 0, 1000)
        self.seed = None if seed is None else _validate.integer(seed, "seed", 0, 2**64 - 1)
        self.part = None if part is None else _part(part)
        self.teller = Teller(progress)
        data = pickle.dumps(self.task)
        self.engine = _engines.engine_of(executor, workers, self.retries, data, _core._version)
        self.path = results

    def _header(self, **own: Any) -> dict[str, Any]:
        return header_of({**own, "task": self.task.name, "options": self.plain})

    def records(self, inputs: Iterable[Any], from_file: bool = False) -> Iterator[Record]:
        """Checks what is left to check; then opens the file, and gives the records, as they are
        iterated over."""
        given = _iterable(inputs, "inputs")
        total = len(inputs) if isinstance(inputs, Sized) else None
        return self._records(given, total, from_file)

    def _numbered(self, inputs: Iterator[Any], seed: int) -> Iterator[Given]:
        first, step = self.part or (0, 1)
        for index, value in enumerate(inputs):
            if index % step == first:
                yield index, seed_of(seed, index), value

    def _records(
        self, inputs: Iterator[Any], total: int | None, from_file: bool
    ) -> Iterator[Record]:
        own: dict[str, Any] = {"kind": "run", "seed": self.seed}
        if self.part is not None:
            own["part"] = list(self.part)
        file = ResultsFile(self.path, self._header(**own))
        given = self._numbered(inputs, file.header["seed"])
        first, step = self.part or (0, 1)
        self.teller.begin(len(file.places), None if total is None else -(-(total - first) // step))
        with closing(file), closing(self.engine):
            self.engine.start()
            for index in list(file.places) if from_file else ():
                yield Record(file.header, file.line(index))
            loop = Loop(self.task, self.engine, file, given, self.retries)
            for done in loop.run():
                self.teller.tell(done)
                if from_file:
                    yield Record(file.header, done.line)
            file.finish()
        self.teller.end()

    def race(self, value: Any, seeds: Any, goal: Any, patience: Any) -> Results:
        _validate.integer(0 if goal is None else goal, "goal", 0)
        _validate.integer(1 if patience is None else patience, "patience", 1)
        if not self.task.has_seed:
            raise errors.OptionError(f"task: got {self.task.name}, wanted one that takes a seed")
        listed = _iterable(seeds, "seeds")
        total = len(seeds) if isinstance(seeds, Sized) else None
        same = Same.of(self.task, value)
        given = (
            (index, _validate.integer(seed, "seeds", 0, 2**64 - 1), same)
            for index, seed in enumerate(listed)
        )
        file = ResultsFile(self.path, self._header(kind="race", digest=same.digest))
        best = _Best(goal, patience)
        with closing(file), closing(self.engine):
            for index in file.places:
                best.recall(Record(file.header, file.line(index)))
            self.teller.begin(len(file.places), total)
            if not best.is_final():
                self.engine.start()
                loop = Loop(self.task, self.engine, file, given, self.retries)
                for done in loop.run():
                    best.take(done.size, done.proven)
                    self.teller.tell(done, best.value)
                    if best.is_final():
                        break
                file.finish()
        self.teller.end()
        return Results(file.path)


def _iterable(value: Any, name: str) -> Iterator[Any]:
    try:
        if isinstance(value, (str, bytes)):  # one input, or its path
            raise TypeError
        return iter(value)
    except TypeError:
        raise errors.DtypeError(
            f"{name}: got {_validate.shown(value)}, wanted a list or another iterable"
        ) from None


def _part(part: Any) -> tuple[int, int]:
    listed = _validate.items(part, "part", "(index, number of parts)")
    if len(listed) != 2:
        raise errors.ShapeError(f"part: got {len(listed)} numbers, wanted (index, number of parts)")
    parts = _validate.integer(listed[1], "part", 1, 2**31 - 1)
    return _validate.integer(listed[0], "part", 0, parts - 1), parts


@dataclass
class _Best:
    """The best size of a race, and when the race ends."""

    goal: int | None
    patience: int | None
    size: tuple[int, ...] | None = None
    waited: int = 0  # results since then
    proven: bool = False

    def take(self, size: tuple[int, ...] | None, proven: bool) -> None:
        self.waited += 1
        if size is not None and (self.size is None or size < self.size):
            self.size, self.waited = size, 0
        self.proven |= proven

    def recall(self, record: Record) -> None:
        """A record of the file; the patience begins anew with each call."""
        if record.error is None:
            self.take(record._size()[1:], record.is_proven)
        self.waited = 0

    @property
    def value(self) -> int | None:
        return None if self.size is None else self.size[0]

    def is_final(self) -> bool:
        return (
            self.proven
            or (self.goal is not None and self.value is not None and self.value <= self.goal)
            or (self.patience is not None and self.waited >= self.patience)
        )

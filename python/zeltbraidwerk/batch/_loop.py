"""The loop of a batch: inputs to an executor in chunks, results to the file as they are ready."""

from __future__ import annotations

import json
import pickle
from collections import deque
from collections.abc import Iterator
from dataclasses import dataclass, replace
from typing import Any

from zeltbraidwerk import _validate, errors
from zeltbraidwerk.batch import _work
from zeltbraidwerk.batch._engines import Engine, Job
from zeltbraidwerk.batch._file import ResultsFile
from zeltbraidwerk.batch._tasks import Task, opened

_MOST = 256  # inputs of a chunk
_MOST_BYTES = 1 << 20  # of a chunk
_WEIGHT = 0.2  # of the last chunk in the mean time of an input

Given = tuple[int, int, Any]  # index, seed, input


@dataclass(frozen=True)
class Same:
    """An input that comes again and again, made ready once."""

    item: _work.Item
    digest: str

    @classmethod
    def of(cls, task: Task, value: Any) -> Same:
        """Raises what the family raises for an input that does not fit."""
        try:
            value, name = opened(value)
            item = _work.Item(0, 0, pickle.dumps(value), name)
        except Exception as error:  # of files, and of classes that cannot be pickled
            raise errors.OptionError(f"input: got {_validate.shown(value)}: {error}") from None
        return cls(item, task.digest(_work.value_of(task, item)))


class Loop:
    """Hands inputs out and takes results in. ``given`` is read as there is room for more, so that
    inputs need not fit in memory."""

    def __init__(
        self, task: Task, engine: Engine, file: ResultsFile, given: Iterator[Given], retries: int
    ) -> None:  # fmt: skip
        self._task = task
        self._engine = engine
        self._file = file
        self._given = given
        self._retries = retries
        self._again: deque[_work.Item] = deque()
        self._ready: deque[_work.Done] = deque()  # without any work
        self._next: _work.Item | None = None
        self._mean: float | None = None  # seconds of an input
        self.failure: Exception | None = None

    def run(self) -> Iterator[_work.Done]:
        """Each result, once it is in the file."""
        engine = self._engine
        while True:
            while engine.room() and (job := self._job()) is not None:
                engine.submit(job)
            while self._ready:
                yield self._kept(self._ready.popleft())
            if engine.idle():
                break
            job, found = engine.next()
            if found is None:
                found = list(self._lost(job))
            else:
                self._measure(found)
            for done in found:
                yield self._kept(done)
        if self.failure is not None:
            raise self.failure

    def _kept(self, done: _work.Done) -> _work.Done:
        self._file.append(done.index, done.line)
        return done

    # --- jobs -------------------------------------------------------------------------------------

    def _job(self) -> Job | None:
        if self._again:
            item = self._again.popleft()
            return Job([item], alone=item.losses >= self._retries)
        items: list[_work.Item] = []
        size = 0
        while len(items) < self._chunk() and (coming := self._peek()) is not None:
            size += len(coming.value)
            if items and size > _MOST_BYTES:
                break
            items.append(coming)
            self._next = None
        return Job(items) if items else None

    def _chunk(self) -> int:
        if not self._mean:
            return 1
        return max(1, min(_MOST, int(self._engine.seconds / self._mean)))

    def _measure(self, found: list[_work.Done]) -> None:
        mean = max(sum(done.seconds for done in found) / len(found), 1e-6)
        self._mean = mean if self._mean is None else self._mean + _WEIGHT * (mean - self._mean)

    def _lost(self, job: Job) -> Iterator[_work.Done]:
        """The inputs of a job whose worker was lost: each is done again by itself."""
        for item in job.items:
            losses = item.losses + 1
            if losses <= self._retries:
                self._again.append(replace(item, losses=losses))
                continue
            times = "once" if losses == 1 else f"{losses} times"
            error = errors.UnfinishedError(
                f"the process that worked on it ended {times}; it was killed, or ran out of memory"
            )
            # Not read here for its digest: that may be what ended the process.
            yield _work.failed(item, None, error, 0.0)

    # --- inputs -----------------------------------------------------------------------------------

    def _peek(self) -> _work.Item | None:
        """The next input that is to be done; None after the last one."""
        while self._next is None and self.failure is None:
            try:
                index, seed, value = next(self._given)
            except StopIteration:
                break
            except Exception as error:  # of the caller's iterable: what is there is finished first
                self.failure = error
                break
            self._next = self._item(index, seed, value)
        return self._next

    def _item(self, index: int, seed: int, value: Any) -> _work.Item | None:
        """None where it is in the file already, or cannot be handed out."""
        item = _work.Item(index, seed, b"")
        try:
            if isinstance(value, Same):
                item = replace(value.item, index=index, seed=seed)
            else:
                value, name = opened(value)
                item = replace(item, name=name, value=pickle.dumps(value))
        except Exception as error:  # of files, and of classes that cannot be pickled
            if index not in self._file.places:
                self._ready.append(_work.failed(item, None, error, 0.0))
            return None
        if index not in self._file.places:
            return item
        self._compare(item, value)
        return None

    def _compare(self, item: _work.Item, value: Any) -> None:
        """Refuses a file of other inputs."""
        known = json.loads(self._file.line(item.index))
        digest = known.get("digest")
        if digest is not None:
            found = value.digest if isinstance(value, Same) else self._digest(item)
        if known.get("seed") == item.seed and (digest is None or digest == found):
            return
        raise errors.FileError(
            f"results: input {item.index} is not the one that {self._file.path.name} has; wanted "
            "the same inputs in the same order, or another file"
        )

    def _digest(self, item: _work.Item) -> str | None:
        try:
            return self._task.digest(_work.value_of(self._task, item))
        except Exception:  # an input that cannot be read has none
            return None

"""Executors, all driven alike: jobs go in, and come back through a queue when they are done.

Which process does what is left to each executor, and so is what it does about lost workers: Dask
gives the work of one that died to another, a process pool breaks and is made anew here.
"""

from __future__ import annotations

import os
import queue
import threading
import time
from collections.abc import Callable
from concurrent.futures import BrokenExecutor, Executor, Future
from dataclasses import dataclass, field
from typing import TYPE_CHECKING, Any

from zeltbraidwerk import _validate, errors, limits
from zeltbraidwerk.batch import _work
from zeltbraidwerk.batch._signals import uninterrupted

if TYPE_CHECKING:  # it brings multiprocessing along
    from concurrent.futures import ProcessPoolExecutor

_PER_WORKER = 2  # jobs in flight, so that none waits for the next
_RECOUNT = 5.0  # seconds between two counts of the workers of a cluster


@dataclass
class Job:
    """Some inputs that one worker does one after the other. ``alone``: in a process of its own,
    so that it is known which input ended a process."""

    items: list[_work.Item]
    alone: bool = False
    future: Any = None
    pool: Any = field(default=None, repr=False)  # the process pool that has it


class Engine:
    """Hands jobs to an executor. ``seconds`` is how long a job should take, so that what the
    executor adds to it does not count."""

    seconds = 0.1

    def __init__(self, task: bytes, version: str) -> None:
        self._given = task, version
        self._done: queue.SimpleQueue[Job] = queue.SimpleQueue()
        self._jobs: dict[int, Job] = {}  # in flight, by id

    def room(self) -> bool:
        """Whether another job should be handed out."""
        return len(self._jobs) < _PER_WORKER * self.workers()

    def idle(self) -> bool:
        return not self._jobs

    def submit(self, job: Job) -> None:
        with uninterrupted():
            self._jobs[id(job)] = job
            job.future = self._submit(job, _work.work, *self._given, limits.changed(), job.items)
            job.future.add_done_callback(lambda _: self._done.put(job))

    def next(self) -> tuple[Job, list[_work.Done] | None]:
        """A job that is done, and what came out; None where its worker was lost. Raises what
        stops all jobs, such as a package that the workers do not have."""
        job = self._done.get()
        with uninterrupted():
            del self._jobs[id(job)]
            return self._result(job)

    def _result(self, job: Job) -> tuple[Job, list[_work.Done] | None]:
        try:
            return job, job.future.result()
        except Exception as error:
            if self._is_lost(job, error):
                return job, None
            raise errors.Error(f"executor: {type(error).__name__}: {error}") from error
        finally:
            job.future = None

    def workers(self) -> int:
        raise NotImplementedError

    def _submit(self, job: Job, function: Callable[..., Any], *given: Any) -> Any:
        raise NotImplementedError

    def _is_lost(self, job: Job, error: Exception) -> bool:
        """Whether the worker was lost, and the job can be handed out again."""
        return False

    def start(self) -> None:
        """Before the first job."""

    def close(self) -> None:
        """After the last job, or when all stops: ends what can be ended."""
        for job in self._jobs.values():
            if job.future is not None:
                job.future.cancel()


class Futures(Engine):
    """Any executor of concurrent.futures that the caller made, and closes."""

    def __init__(self, executor: Executor, task: bytes, version: str) -> None:
        super().__init__(task, version)
        self._executor = executor

    def workers(self) -> int:
        return int(getattr(self._executor, "_max_workers", None) or os.cpu_count() or 1)

    def _submit(self, job: Job, function: Callable[..., Any], *given: Any) -> Any:
        try:
            return self._executor.submit(function, *given)
        except RuntimeError as error:  # closed, or broken
            raise self._ended(error) from None

    def _is_lost(self, job: Job, error: Exception) -> bool:
        if isinstance(error, BrokenExecutor):
            raise self._ended(error) from None
        return False

    @staticmethod
    def _ended(error: Exception) -> errors.Error:
        return errors.Error(
            f"executor: it takes no more work: {error}; the same call with a new one goes on where "
            "it stopped"
        )


class Pool(Engine):
    """A process pool of our own. When one of its processes ends, the pool is made anew.

    A thread starts it, which takes as long as the imports of the program: Ctrl-C does not wait for
    that, and leaves no process half started."""

    def __init__(self, workers: int, task: bytes, version: str) -> None:
        super().__init__(task, version)
        self._workers = workers
        self._pool: ProcessPoolExecutor | None = None

    def workers(self) -> int:
        return self._workers

    def start(self) -> None:
        from multiprocessing import get_context

        # Not by fork: that would copy locks that the threads of this process hold.
        self._context = get_context("forkserver")
        # Processes watch the other end, which nobody else has: it closes when this process ends.
        self._alive, self._held = self._context.Pipe(duplex=False)
        started: Future[int] = Future()
        with uninterrupted():
            self._pool = self._made(self._workers)
            self._starter = threading.Thread(target=self._start, args=(self._pool, started))
            self._starter.start()
        try:
            started.result()
        except BrokenExecutor:
            raise errors.Error(
                "executor: the processes of the pool end as they begin; a script has to make this "
                'call under if __name__ == "__main__":'
            ) from None

    @staticmethod
    def _start(pool: ProcessPoolExecutor, started: Future[int]) -> None:
        try:
            started.set_result(pool.submit(_work.here).result())
        except Exception as error:  # it is told where it is waited for, if it still is
            started.set_exception(error)

    def _made(self, workers: int) -> ProcessPoolExecutor:
        from concurrent.futures import ProcessPoolExecutor

        return ProcessPoolExecutor(
            workers, mp_context=self._context, initializer=_work.begin, initargs=(self._alive,)
        )

    def _submit(self, job: Job, function: Callable[..., Any], *given: Any) -> Any:
        if job.alone:
            job.pool = self._made(1)
            return job.pool.submit(function, *given)
        job.pool = self._pool
        try:
            return job.pool.submit(function, *given)
        except BrokenExecutor:  # noticed before its jobs have come back
            self._renew(job.pool)
            return self._submit(job, function, *given)

    def next(self) -> tuple[Job, list[_work.Done] | None]:
        job, found = super().next()
        if job.alone:
            job.pool.shutdown(wait=False)
        return job, found

    def _is_lost(self, job: Job, error: Exception) -> bool:
        if not isinstance(error, BrokenExecutor):
            return False
        if not job.alone:
            self._renew(job.pool)
        return True

    def _renew(self, broken: ProcessPoolExecutor) -> None:
        """Once for all jobs of a pool."""
        if broken is self._pool:
            broken.shutdown(wait=False)
            self._pool = self._made(self._workers)

    def close(self) -> None:
        super().close()
        if self._pool is None:
            return
        is_starting = self._starter.is_alive()
        if self._jobs or is_starting:
            self._held.close()  # ends the processes, whatever they do
        if is_starting:
            with uninterrupted():
                threading.Thread(target=self._end).start()
        else:
            self._end()

    def _end(self) -> None:
        self._starter.join()
        for pool in {self._pool, *(job.pool for job in self._jobs.values())}:
            pool.shutdown(wait=True, cancel_futures=True)
        self._held.close()
        self._alive.close()


class Dask(Engine):
    """A Client of Dask distributed, which the caller made, and closes."""

    seconds = 0.5

    def __init__(self, client: Any, retries: int, task: bytes, version: str) -> None:
        super().__init__(task, version)
        self._client = client
        self._retries = retries
        self._counted: tuple[float, int] | None = None

    def workers(self) -> int:
        now = time.monotonic()
        if self._counted is None or now - self._counted[0] > _RECOUNT:
            self._counted = now, sum(self._client.nthreads().values())
        return max(self._counted[1], 1)

    def _submit(self, job: Job, function: Callable[..., Any], *given: Any) -> Any:
        return self._client.submit(function, *given, pure=False, retries=self._retries)

    def _is_lost(self, job: Job, error: Exception) -> bool:
        return type(error).__name__ == "KilledWorker"


def engine_of(
    executor: Any, workers: int | None, retries: int, task: bytes, version: str
) -> Engine:
    """The engine for an executor: None, one of concurrent.futures, or a Client of Dask."""
    if executor is None:
        count = _cores() if workers is None else _validate.integer(workers, "workers", 1, 4096)
        return Pool(count, task, version)
    if workers is not None:
        raise errors.OptionError("workers: wanted without an executor, which has its own")
    if isinstance(executor, Executor):
        return Futures(executor, task, version)
    if _validate.comes_from(executor, "distributed") and hasattr(executor, "nthreads"):
        if getattr(executor, "asynchronous", False):
            raise errors.OptionError(
                "executor: got an asynchronous Client, wanted one with asynchronous=False"
            )
        return Dask(executor, retries, task, version)
    raise errors.DtypeError(
        f"executor: got {_validate.shown(executor)}, wanted None, an executor of "
        "concurrent.futures, or a Client of dask.distributed"
    )


def _cores() -> int:
    """Those that this process may use."""
    try:
        return len(os.sched_getaffinity(0))
    except AttributeError:
        return os.cpu_count() or 1

"""What runs in the processes of an executor: inputs in, lines of the results file out."""

from __future__ import annotations

import json
import os
import pickle
import signal
import threading
import time
from dataclasses import dataclass
from functools import lru_cache
from typing import Any

from zeltbraidwerk import _core, errors, limits
from zeltbraidwerk.batch._tasks import File, Task


@dataclass(frozen=True, slots=True)
class Item:
    """One input on its way: ``value`` is pickled. ``losses`` counts processes that ended while
    they worked on it."""

    index: int
    seed: int
    value: bytes
    name: str | None = None
    losses: int = 0


@dataclass(frozen=True, slots=True)
class Done:
    """One finished input: ``line`` goes to the results file. ``size`` orders results, smaller is
    better; None for an error. ``proven`` where no circuit is better by the objective."""

    index: int
    line: str
    seconds: float
    size: tuple[int, int] | None
    proven: bool = False


def work(task: bytes, version: str, changed: limits.Changed, items: list[Item]) -> list[Done]:
    """The chunk, one input after the other; an error of one does not stop the others. ``changed``
    are the limits that the process of the caller has set."""
    if version != _core._version:
        raise errors.Error(
            f"executor: its workers have zeltbraidwerk {_core._version}, wanted {version}"
        )
    limits.follow(changed)
    loaded = _loaded(task)
    return [done_by(loaded, item) for item in items]


@lru_cache(maxsize=4)
def _loaded(task: bytes) -> Task:
    found: Task = pickle.loads(task)
    return found


def value_of(task: Task, item: Item) -> Any:
    value = pickle.loads(item.value)
    return task.family.of_text(value.name, value.data) if isinstance(value, File) else value


def done_by(task: Task, item: Item) -> Done:
    digest = None
    start = time.perf_counter()
    try:
        value = value_of(task, item)
        digest = task.digest(value)
        start = time.perf_counter()
        result = task.run(value, item.seed)
        seconds = time.perf_counter() - start
        text = result.to_json()
    except Exception as error:  # whatever is wrong with one input, or with what it asks for
        return failed(item, digest, error, time.perf_counter() - start)
    size = result.count, result.depth
    if task.objective == "depth":
        size = result.depth, result.count
    if task.objective == "t":
        size = result.after.t, result.count
    least = {"count": result.least_count, "depth": result.least_depth}.get(task.objective, -1)
    fields = _fields(item, digest, seconds) | {
        "method": result.method, "count": result.count, "depth": result.depth,
        "proven": size[0] <= least, "verified": task.verify,
    }  # fmt: skip
    line = f'{_dumped(fields)[:-1]},"result":{text}}}'
    return Done(item.index, line, seconds, size, size[0] <= least)


def failed(item: Item, digest: str | None, error: BaseException, seconds: float) -> Done:
    """An error beside its input."""
    told = {"kind": type(error).__name__, "text": " ".join(str(error).split())}
    line = _dumped(_fields(item, digest, seconds) | {"error": told})
    return Done(item.index, line, seconds, None)


def _fields(item: Item, digest: str | None, seconds: float) -> dict[str, Any]:
    fields = {"index": item.index, "seed": item.seed, "digest": digest}
    if item.name is not None:
        fields["input"] = item.name
    return {**fields, "seconds": round(seconds, 6)}


def _dumped(fields: dict[str, Any]) -> str:
    return json.dumps(fields, allow_nan=False, separators=(",", ":"))


# --- processes of our own -----------------------------------------------------------------------


def begin(alive: Any) -> None:
    """Begins a process of the pool: Ctrl-C is for the first process alone, and the process ends
    when that one does, or closes its end of the pipe ``alive``."""
    signal.signal(signal.SIGINT, signal.SIG_IGN)
    threading.Thread(target=_end_with, args=(alive,), daemon=True).start()


def _end_with(alive: Any) -> None:
    from multiprocessing import connection, parent_process

    parent = parent_process()
    connection.wait([alive] if parent is None else [alive, parent.sentinel])
    os._exit(1)


def here() -> int:
    """The id of the process, which shows that it has started."""
    return os.getpid()

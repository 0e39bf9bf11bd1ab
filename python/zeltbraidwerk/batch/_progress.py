"""How far a batch is."""

from __future__ import annotations

import sys
import time
from contextlib import suppress
from typing import Any

from zeltbraidwerk import _validate
from zeltbraidwerk.batch._work import Done

_SHOWN = 0.5  # seconds between two lines of progress


class Progress(int):
    """How many inputs are done, as an int, with ``total``, how many there are (None where that is
    not known), ``errors`` among those done, ``seconds`` since the call, and ``best``, the best
    objective of a race."""

    total: int | None
    errors: int
    seconds: float
    best: int | None

    def __new__(
        cls, done: int, total: int | None = None, errors: int = 0, seconds: float = 0.0,
        best: int | None = None,
    ) -> Progress:  # fmt: skip
        self = super().__new__(cls, _validate.integer(done, "done", 0))
        self.total, self.errors, self.seconds, self.best = total, errors, seconds, best
        return self


class Teller:
    """Tells how far a batch is: to a function of the caller, or a line on a terminal."""

    def __init__(self, progress: Any) -> None:
        self._live = progress is True and sys.stderr.isatty()
        self._call = None
        if not isinstance(progress, bool):
            self._call = _validate.callback(progress, "progress")
        self._shown = 0.0
        self._now = Progress(0)

    def begin(self, done: int, total: int | None) -> None:
        self._start = time.perf_counter()
        self._now = Progress(done, total)
        self._show()

    def tell(self, done: Done, best: int | None = None) -> None:
        before = self._now
        self._now = Progress(
            before + 1, before.total, before.errors + (done.size is None),
            time.perf_counter() - self._start, best,
        )  # fmt: skip
        if self._call is not None:
            self._call(self._now)
        if self._now.seconds - self._shown > _SHOWN:
            self._show()

    def end(self) -> None:
        self._show("\n")

    def _show(self, end: str = "") -> None:
        if not self._live:
            return
        now = self._now
        self._shown = now.seconds
        total = "" if now.total is None else f" of {now.total}"
        errors = f", {now.errors} errors" if now.errors else ""
        best = "" if now.best is None else f", best {now.best}"
        with suppress(OSError):
            print(f"\r\033[K{now:d}{total} done{errors}{best}, {now.seconds:.0f} s", end=end,
                  file=sys.stderr, flush=True)  # fmt: skip

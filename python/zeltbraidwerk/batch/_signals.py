"""Ctrl-C outside of locks."""

from __future__ import annotations

import signal
import threading
from collections.abc import Iterator
from contextlib import contextmanager
from typing import Any


@contextmanager
def uninterrupted() -> Iterator[None]:
    """Ctrl-C waits for the end of what is done in here, which takes no long. A KeyboardInterrupt as
    a ``with lock:`` ends would release the lock twice, a RuntimeError; as a thread starts, it would
    leave the thread behind."""
    before = signal.getsignal(signal.SIGINT)
    if threading.current_thread() is not threading.main_thread() or not callable(before):
        yield
        return
    pressed: list[tuple[Any, ...]] = []
    signal.signal(signal.SIGINT, lambda *given: pressed.append(given))
    try:
        yield
    finally:
        signal.signal(signal.SIGINT, before)
    if pressed:
        before(*pressed[0])

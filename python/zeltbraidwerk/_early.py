"""Ctrl-C while the command is imported ends it as it ends other programs, without a traceback.

Imported first; what runs later has its own way with Ctrl-C.
"""

from __future__ import annotations

import os
import signal
import sys
import threading

_PROGRAM = "zeltbraidwerk"


def _is_command() -> bool:
    first = os.path.basename(sys.argv[0]) if getattr(sys, "argv", None) else ""
    return first == _PROGRAM or (first == "-m" and _PROGRAM in sys.orig_argv)


_at_once = (
    _is_command()
    and threading.current_thread() is threading.main_thread()
    and signal.getsignal(signal.SIGINT) is signal.default_int_handler  # else it is the caller's
)
if _at_once:
    signal.signal(signal.SIGINT, signal.SIG_DFL)


def imported() -> None:
    """From now on Ctrl-C raises a KeyboardInterrupt as usual."""
    if _at_once:
        signal.signal(signal.SIGINT, signal.default_int_handler)

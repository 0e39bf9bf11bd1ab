"""The command ``zeltbraidwerk``: files in, verified circuits out."""

from __future__ import annotations

import os
import sys
from argparse import Namespace
from collections.abc import Callable, Sequence
from typing import Any

from zeltbraidwerk import _shell_batch, _shell_compare, _shell_input, _shell_output, errors
from zeltbraidwerk._shell_commands import COMMANDS, Command
from zeltbraidwerk._shell_options import PROGRAM, options_of, parsed

FINE, FAILED, BAD, STOPPED, CLOSED = 0, 1, 2, 130, 141


def main(arguments: Sequence[str] | None = None) -> int:
    """Runs the command; the exit code."""
    for name, mode in (("stdin", "r"), ("stdout", "r"), ("stderr", "w")):
        if getattr(sys, name) is None:  # closed by the caller; standard output cannot be written
            setattr(sys, name, open(os.devnull, mode))  # noqa: SIM115
    try:
        return _run(arguments)
    except SystemExit as end:
        return end.code if isinstance(end.code, int) else FINE
    except BrokenPipeError:
        # Nothing is left to be written when Python ends.
        os.dup2(os.open(os.devnull, os.O_WRONLY), sys.stdout.fileno())
        return CLOSED
    except KeyboardInterrupt:
        _tell("stopped, no result was written")
        return STOPPED
    except errors.UnfinishedError as error:
        _tell(f"error: {error}")
        return FAILED
    except (errors.Error, _shell_input.InputError, OSError) as error:
        _tell(f"error: {error}")
        return BAD


def _run(arguments: Sequence[str] | None) -> int:
    given = parsed(arguments)
    comparing, batching = given.command == "compare", given.command == "batch"
    name = given.family if comparing or batching else given.command
    screen = Screen(given.quiet)
    if name == "merge":
        return FINE if _shell_batch.run(given, {}, given.quiet, screen.note) else FAILED
    command = COMMANDS[name]
    options = options_of(given, command)
    if "device" in options:
        options["device"] = _shell_input.device(options["device"])
    elif name == "route":
        raise _shell_input.InputError("--device: got none, wanted one, such as --device grid:4x4")
    if batching:
        return FINE if _shell_batch.run(given, options, given.quiet, screen.note) else FAILED
    if comparing:
        value = command.read(given.input)
        right = _shell_compare.run(name, command, value, options, screen.working)
        return FINE if right else FAILED
    _shell_output.check_place(given.output)
    format = _shell_output.format_of(given.output, given.format, command.formats)
    value = command.read(given.input)
    symbol = _shell_input.symbol(value)
    if format == "qasm" and symbol is not None:
        raise _shell_input.InputError(
            f"{given.input}: got the symbolic angle {symbol}, which OpenQASM 2 cannot hold; "
            "wanted --format json or svg"
        )
    return _made(given, command, value, options, format, screen)


def _made(
    given: Namespace, command: Command, value: Any, options: dict[str, Any], format: str,
    screen: Screen,
) -> int:  # fmt: skip
    """Makes, checks and writes the result; on Ctrl-C, the best so far."""
    if "progress" in command.parameters and screen.is_live:
        options["progress"] = screen.best_so_far(given.command)
    code = FINE
    try:
        result = command.function(value, **options)
    except errors.Interrupted as stopped:
        if stopped.best is None:
            raise
        result, code = stopped.best, STOPPED
    screen.clear()
    if not result.verify():
        _tell("error: the result failed its own check, nothing was written; please report this")
        return FAILED
    _shell_output.write(result, format, given.output)
    if code == STOPPED:
        _tell(f"warning: stopped; this is the best so far: {_shell_output.summary(result)}")
    else:
        screen.note(_shell_output.summary(result))
    return code


class Screen:
    """Standard error: a line of progress where it is a terminal, and notes unless they are not
    wanted."""

    def __init__(self, quiet: bool) -> None:
        self._quiet = quiet
        self.is_live = not quiet and sys.stderr.isatty()

    def note(self, text: str) -> None:
        if not self._quiet:
            _tell(text)

    def working(self, text: str) -> None:
        if self.is_live:
            print(f"\r\033[K{text}", end="", file=sys.stderr, flush=True)

    def clear(self) -> None:
        self.working("")

    def best_so_far(self, name: str) -> Callable[[Any], None]:
        """Of a search of that name, which calls what comes back."""
        self.working(f"{name} ...")
        return lambda best: self.working(
            f"{name} ... {best.count} two-qubit gates, depth {best.depth}, {best.seconds:.1f} s"
        )


def _tell(text: str) -> None:
    print(f"{PROGRAM}: {' '.join(text.split())}", file=sys.stderr)

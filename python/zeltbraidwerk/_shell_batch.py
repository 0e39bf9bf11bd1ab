"""Many files by one command, and results files put together."""

from __future__ import annotations

import time
from argparse import Namespace
from collections.abc import Callable
from pathlib import Path
from typing import Any

from zeltbraidwerk import _shell_input, batch, errors
from zeltbraidwerk.batch._tasks import FAMILIES

TASKS = {family.command: task for task, family in FAMILIES.items()}


def run(
    given: Namespace, options: dict[str, Any], quiet: bool, note: Callable[[str], None]
) -> bool:
    """Does what the command asks for; False where an input failed."""
    start = time.perf_counter()
    if given.family == "merge":
        found = batch.merge(given.input, given.output)
    else:
        found = batch.run(
            TASKS[given.family], _inputs(given), results=given.output, progress=not quiet,
            part=_part(given), workers=given.workers, retries=given.retries, **options,
        )  # fmt: skip
    done = failed = gates = 0
    first = None
    for record in found:
        done += 1
        gates += record.count or 0
        if record.error is not None:
            failed += 1
            first = first or f"{record.input or f'input {record.index}'}: {record.error}"
    note(
        f"{found.path}: {done - failed} results, {gates} two-qubit gates, "
        f"{time.perf_counter() - start:.2g} s"
    )
    if failed:
        note(f"warning: {failed} of {done} inputs failed, the first: {first}")
    return failed == 0


def _inputs(given: Namespace) -> list[Path]:
    names = list(given.input)
    if given.list is not None:
        text = _shell_input.text_of(given.list)
        names += [line.strip() for line in text.splitlines() if line.strip()]
    if not names:
        raise _shell_input.InputError("got no input, wanted files, or --list FILE with their names")
    return [Path(name) for name in names]


def _part(given: Namespace) -> tuple[int, int] | None:
    if (given.array_index is None) != (given.array_size is None):
        raise errors.OptionError("--array-index: wanted together with --array-size")
    return None if given.array_size is None else (given.array_index, given.array_size)

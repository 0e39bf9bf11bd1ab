"""Results files of many machines, put together."""

from __future__ import annotations

import json
import os
from collections.abc import Iterable, Iterator
from contextlib import ExitStack
from typing import Any

from zeltbraidwerk import _files, _validate, errors
from zeltbraidwerk.batch._file import Header, header_of
from zeltbraidwerk.batch._records import Record, Results, read, runs_of

_Best = dict[Any, tuple[tuple[int, ...], int, int]]  # by input: size, number of the file, place


def merge(files: Iterable[str | os.PathLike[str]], out: str | os.PathLike[str]) -> Results:
    """Puts results files together, the best record of each input, and writes them to ``out``.

    Of files that are parts of one run, as job arrays make them, it makes the file that the whole
    run would have made. Other files, of several seeds, options or machines, hold the same input
    where the digest is the same. The smallest result is kept, by the objective, and a result rather
    than an error; ties: the first file. All files have the same task and objective. ``out`` is
    written whole or not at all, and may be one of the files.

    Raises a :class:`~zeltbraidwerk.errors.FileError` for files that do not fit together.
    """
    sources = [read(path) for path in _validate.items(files, "files", "a list of paths")]
    if not sources:
        raise errors.OptionError("files: got none, wanted at least one results file")
    for source in sources:
        _refuse_others(source, sources[0])
    if _are_parts(sources):
        header = {name: value for name, value in sources[0].header.items() if name != "part"}
        best = _best(sources, by_index=True)
        ordered = sorted(best, key=lambda key: int(key))
        lines = (record.line for record in _records(sources, best, ordered))
    else:
        first = runs_of(sources[0].header)[0]
        runs = [run for source in sources for run in runs_of(source.header)]
        header = header_of({"kind": "merge", "task": first["task"], "runs": runs})
        best = _best(sources, by_index=False)
        begins = [sum(len(runs_of(s.header)) for s in sources[:k]) for k in range(len(sources))]
        lines = (
            _dumped(record._fields | {"index": k, "run": begins[best[key][1]] + record.run})
            for k, (key, record) in enumerate(
                zip(best, _records(sources, best, list(best)), strict=True)
            )
        )
    _files.save_lines(out, (line + "\n" for line in _headed(header, lines)))
    return read(out)


def _headed(header: Header, lines: Iterator[str]) -> Iterator[str]:
    yield _dumped(header)
    yield from lines


def _dumped(value: Any) -> str:
    return json.dumps(value, separators=(",", ":"))


def _refuse_others(source: Results, first: Results) -> None:
    wanted = _kind(runs_of(first.header)[0])
    for run in runs_of(source.header):
        if _kind(run) != wanted:
            raise errors.FileError(
                f"files: {source.path} has results of {_kind(run)}, wanted {wanted} as in "
                f"{first.path}"
            )


def _kind(run: Header) -> str:
    return f"{run['task']} by {run['options'].get('objective', 'count')}"


def _are_parts(sources: list[Results]) -> bool:
    """Whether all are parts of one run."""
    if any("part" not in source.header for source in sources):
        return False
    wholes = [
        {name: source.header[name] for name in source.header if name not in ("part", "versions")}
        | {"parts": source.header["part"][1]}
        for source in sources
    ]
    return all(whole == wholes[0] for whole in wholes)


def _best(sources: list[Results], by_index: bool) -> _Best:
    """In the order in which the inputs are met."""
    best: _Best = {}
    digests: dict[int, str | None] = {}
    for number, source in enumerate(sources):
        for place, record in source._places():
            if by_index and digests.setdefault(record.index, record.digest) != record.digest:
                raise errors.FileError(
                    f"files: {source.path} has another input {record.index} than the files before "
                    "it, wanted parts of one run"
                )
            key: Any = record.index if by_index else record.digest or (number, record.index)
            found = record._size(), number, place
            if key not in best or found[0] < best[key][0]:
                best[key] = found
    return best


def _records(sources: list[Results], best: _Best, keys: list[Any]) -> Iterator[Record]:
    with ExitStack() as files:
        opened = [files.enter_context(open(source.path, "rb")) for source in sources]
        for key in keys:
            _, number, place = best[key]
            opened[number].seek(place)
            line = opened[number].readline().decode().rstrip("\n")
            yield Record(sources[number].header, line)

"""Results files read again."""

from __future__ import annotations

import json
import os
from collections.abc import Iterator, Mapping
from dataclasses import dataclass, field
from functools import cached_property
from pathlib import Path
from typing import Any

from zeltbraidwerk import _files, _json, _validate, errors
from zeltbraidwerk.batch._file import Header, lines_of, parsed_header


@dataclass(frozen=True, repr=False)
class Record:
    """One input, and its result or its error.

    ``header`` is that of the file, ``line`` the JSON of the record.
    """

    header: Header = field(repr=False)
    line: str = field(repr=False)

    @cached_property
    def _fields(self) -> dict[str, Any]:
        fields: dict[str, Any] = json.loads(self.line)
        return fields

    @property
    def index(self) -> int:
        """The number of the input, from 0; of a race, that of the seed."""
        return int(self._fields["index"])

    @property
    def seed(self) -> int:
        """The seed of its search."""
        return int(self._fields["seed"])

    @property
    def digest(self) -> str | None:
        """The same for the same input everywhere; None for an input that cannot be read."""
        digest: str | None = self._fields["digest"]
        return digest

    @property
    def input(self) -> str | None:
        """The path of its file, where a path was given."""
        return self._fields.get("input")

    @property
    def seconds(self) -> float:
        """The time that the function took."""
        return float(self._fields["seconds"])

    @property
    def error(self) -> str | None:
        """Why there is no result; None where there is one."""
        told = self._fields.get("error")
        return None if told is None else f"{told['kind']}: {told['text']}"

    @property
    def count(self) -> int | None:
        """Number of two-qubit gates; None for an error."""
        return self._fields.get("count")

    @property
    def depth(self) -> int | None:
        """Number of layers of two-qubit gates; None for an error."""
        return self._fields.get("depth")

    @property
    def is_proven(self) -> bool:
        """Whether no circuit is better by the objective."""
        return bool(self._fields.get("proven"))

    @property
    def task(self) -> str:
        """The name of the function."""
        return str(self._source["task"])

    @property
    def options(self) -> Mapping[str, Any]:
        """The options of the function."""
        return dict(self._source["options"])

    @property
    def versions(self) -> Mapping[str, str]:
        """Of this package and those below it."""
        return dict(self._source["versions"])

    @cached_property
    def result(self) -> Any:
        """What the function returned, read from JSON when it is asked for; None for an error."""
        document = self._fields.get("result")
        return None if document is None else _json.from_json(json.dumps(document))

    @property
    def circuit(self) -> Any:
        """The circuit of the result; None for an error."""
        return None if self.result is None else self.result.circuit

    @property
    def run(self) -> int:
        """In a merged file, the number of the run that made it, among ``header["runs"]``."""
        return int(self._fields.get("run", 0))

    @property
    def _source(self) -> Header:
        return runs_of(self.header)[self.run]

    def _size(self) -> tuple[int, ...]:
        """Smaller is better, by the objective of the run; errors are last."""
        count, depth = self.count, self.depth
        if count is None or depth is None:
            return (1,)
        objective = self._source["options"].get("objective", "count")
        if objective == "t":
            return 0, int(self._fields["result"]["counts"]["t_count"]), count
        return (0, depth, count) if objective == "depth" else (0, count, depth)

    def __repr__(self) -> str:
        made = self.error or f"{self.count} two-qubit gates, depth {self.depth}"
        return f"Record({self.index}: {made}, {self.seconds:.2g} s)"


class Results:
    """The records of a results file, read from it each time they are iterated over."""

    def __init__(self, path: str | os.PathLike[str]) -> None:
        if not isinstance(path, (str, os.PathLike)):
            raise errors.DtypeError(f"path: got {_validate.shown(path)}, wanted the path of a file")
        self.path = Path(path)
        with _opened(self.path) as file:
            self.header = parsed_header(file.readline(), self.path.name)

    def __iter__(self) -> Iterator[Record]:
        return (record for _, record in self._places())

    def _places(self) -> Iterator[tuple[int, Record]]:
        """Each record, and where it is in the file."""
        lines = lines_of(self.path)
        next(lines, None)
        for place, line in lines:
            yield place, Record(self.header, line.decode().rstrip("\n"))

    def __len__(self) -> int:
        return max(sum(1 for _ in lines_of(self.path)) - 1, 0)

    @property
    def errors(self) -> list[Record]:
        """The records without a result."""
        return [record for record in self if record.error is not None]

    @property
    def best(self) -> Record | None:
        """The smallest result by the objective; ties: the lowest index. None without a result."""
        found = min(self, key=lambda record: (record._size(), record.index), default=None)
        return None if found is None or found.error is not None else found

    def __repr__(self) -> str:
        return f"Results({str(self.path)!r}, {len(self)} of {self.header.get('task')})"


def runs_of(header: Header) -> list[Header]:
    """The headers of the runs that made the results of a file."""
    runs: list[Header] = header.get("runs", [header])
    return runs


def _opened(path: Path) -> Any:
    try:
        return open(_files.opened(path), "rb")
    except (OSError, ValueError) as error:
        reason = getattr(error, "strerror", None) or error
        raise errors.FileError(f"results: cannot read {str(path)[:200]}: {reason}") from None


def read(path: str | os.PathLike[str]) -> Results:
    """The records of a results file, also of one that is still being written.

    Raises a :class:`~zeltbraidwerk.errors.FileError` for any other file.
    """
    return Results(path)

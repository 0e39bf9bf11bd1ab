"""The results file: a header, then one JSON object per line, each appended whole.

Lines come in the order in which results are ready, so that nothing waits in memory; when all are
there the file is written again in the order of the inputs. Whatever ends the program leaves whole
lines and at most one torn one at the end, which is cut off when the run goes on.
"""

from __future__ import annotations

import errno
import fcntl
import json
import os
import time
from array import array
from collections.abc import Iterator, Mapping
from pathlib import Path
from typing import IO, Any

from zeltbraidwerk import _core, _files, _validate, errors

FORMAT = "zeltbraidwerk-batch"
VERSION = 1
_SYNC = 1.0  # seconds between two calls that bring the file to the disk
_WITHOUT_LOCKS = {errno.ENOSYS, errno.ENOTSUP, errno.EOPNOTSUPP, errno.ENOLCK}

Header = dict[str, Any]


def header_of(fields: Mapping[str, Any]) -> Header:
    from platform import python_version

    from numpy import __version__ as numpy_version

    versions = {
        "zeltbraidwerk": _core._version, "python": python_version(), "numpy": numpy_version,
    }  # fmt: skip
    return {"format": FORMAT, "version": VERSION, **fields, "versions": versions}


def parsed_header(line: bytes, name: str) -> Header:
    """The header of a results file; refuses every other line."""
    try:
        header = json.loads(line)
    except ValueError:
        header = None
    if not isinstance(header, dict) or header.get("format") != FORMAT:
        raise errors.FileError(f"results: {name} is not a results file of this package")
    if header.get("version") != VERSION:
        raise errors.FileError(
            f"results: {name} has version {_validate.shown(header.get('version'))}, "
            f"wanted {VERSION}; a newer version of the package reads it"
        )
    return header


class ResultsFile:
    """A results file that this process alone writes to, locked until it is closed."""

    def __init__(self, path: Any, header: Header) -> None:
        """Opens the file, or makes it. ``header`` has what the call asks for; where its seed is
        None, that of the file is taken."""
        if not isinstance(path, (str, os.PathLike)):
            raise errors.DtypeError(
                f"results: got {_validate.shown(path)}, wanted the path of a file"
            )
        self.path = Path(os.path.abspath(path))
        self.header = header
        self.places: dict[int, int] = {}  # of the line of each index
        self._sorted = True
        self._synced = time.monotonic()
        try:
            self._file = self._locked()
        except errors.FileError:
            raise
        except OSError as error:
            raise errors.FileError(
                f"results: got {str(path)[:200]!r}, wanted a file that can be written: "
                f"{error.strerror}"
            ) from None
        try:
            self._resume()
        except BaseException:
            self._file.close()
            raise

    def _locked(self) -> IO[bytes]:
        while True:
            descriptor = _files.opened(self.path, os.O_RDWR | os.O_CREAT)
            file = os.fdopen(descriptor, "r+b", buffering=0)
            try:
                _lock(file, str(self.path))
                # Another run may have put its sorted file in the place of the one opened here.
                if os.path.samestat(os.fstat(descriptor), os.stat(self.path)):
                    return file
            except FileNotFoundError:
                pass
            except BaseException:
                file.close()
                raise
            file.close()

    # --- what is there ----------------------------------------------------------------------------

    def _resume(self) -> None:
        end = 0
        with open(self.path, "rb") as file:
            for number, line in enumerate(file):
                if not line.endswith(b"\n"):
                    break  # torn: the program ended while it was written
                if number == 0:
                    self._compare(parsed_header(line, self.path.name))
                else:
                    self._known(line, end, number)
                end += len(line)
            else:
                line = b""
        if end == 0:
            self._refuse_foreign(line)
            if self.header.get("seed", 0) is None:
                self.header["seed"] = int.from_bytes(os.urandom(7), "big")
        self._file.truncate(end)
        self._file.seek(end)
        self._end = end
        if end == 0:
            self._write(json.dumps(self.header, separators=(",", ":")))

    def _refuse_foreign(self, line: bytes) -> None:
        """A first line without an end must be the beginning of a header."""
        start = b'{"format":"%s"' % FORMAT.encode()
        if not (line.startswith(start) or start.startswith(line)):
            raise errors.FileError(
                f"results: {self.path.name} is not a results file of this package"
            )

    def _compare(self, found: Header) -> None:
        if self.header.get("seed", 0) is None:
            self.header["seed"] = found.get("seed")
        rest = sorted((self.header.keys() | found.keys()) - {"versions", "kind", "task"})
        for key in ("kind", "task", *rest):
            self._same(key, found.get(key), self.header.get(key))
        package = "zeltbraidwerk"
        versions = found.get("versions", {})
        self._same(f"version of {package}", versions.get(package), _core._version)
        self.header = found

    def _same(self, key: str, found: Any, wanted: Any) -> None:
        if found == wanted:
            return
        if isinstance(found, dict) and isinstance(wanted, dict):
            for name in sorted(found.keys() | wanted.keys()):
                self._same(name, found.get(name), wanted.get(name))
        raise errors.FileError(
            f"results: {self.path.name} was written with {key}={_validate.shown(found)}, this call "
            f"has {_validate.shown(wanted)}; wanted the same, or another file"
        )

    def _known(self, line: bytes, place: int, number: int) -> None:
        index = _index(line)
        if index is None or index in self.places:
            what = "no result" if index is None else f"a second result of input {index}"
            raise errors.FileError(
                f"results: line {number + 1} of {self.path.name} is {what}; wanted a file that "
                "was only appended to"
            )
        self._place(index, place)

    def _place(self, index: int, place: int) -> None:
        self._sorted &= not self.places or index > next(reversed(self.places))
        self.places[index] = place

    def line(self, index: int) -> str:
        """The line of a finished input."""
        return self._line_at(self.places[index])

    def _line_at(self, place: int) -> str:
        parts: list[bytes] = []
        while not (parts and b"\n" in parts[-1]):
            parts.append(os.pread(self._file.fileno(), 1 << 16, place))
            place += len(parts[-1])
        return b"".join(parts).partition(b"\n")[0].decode()

    # --- what comes in ----------------------------------------------------------------------------

    def append(self, index: int, line: str) -> None:
        self._place(index, self._end)
        self._write(line)
        if time.monotonic() - self._synced > _SYNC:
            self.sync()

    def _write(self, line: str) -> None:
        data = line.encode() + b"\n"
        left = memoryview(data)
        try:
            while left:  # one call, but where the disk is full or the write is interrupted
                left = left[self._file.write(left) :]
        except OSError as error:
            raise errors.FileError(
                f"results: {self.path} cannot be written: {error.strerror}; the same call goes on "
                "where it stopped"
            ) from None
        self._end += len(data)

    def sync(self) -> None:
        os.fsync(self._file.fileno())
        self._synced = time.monotonic()

    def finish(self) -> None:
        """All is done: brings the lines into the order of the inputs."""
        self.sync()
        if self._sorted:
            return
        part = self.path.with_name(f".{self.path.name}.{os.getpid()}")
        try:
            with open(part, "w+b") as file:
                _lock(file, str(part))
                file.write(self._line_at(0).encode() + b"\n")
                places = array("q")
                for index in sorted(self.places):
                    places.append(file.tell())
                    file.write(self.line(index).encode() + b"\n")
                file.flush()
                os.fsync(file.fileno())
                os.chmod(part, os.fstat(self._file.fileno()).st_mode & 0o777)
                os.replace(part, self.path)
        finally:
            part.unlink(missing_ok=True)
        self._sorted = True

    def close(self) -> None:
        self._file.close()


def _lock(file: IO[bytes], name: str) -> None:
    try:
        fcntl.flock(file, fcntl.LOCK_EX | fcntl.LOCK_NB)
    except OSError as error:
        if error.errno in (errno.EWOULDBLOCK, errno.EACCES):
            raise errors.FileError(
                f"results: {name} is being written by another run; wanted another file"
            ) from None
        if error.errno not in _WITHOUT_LOCKS:  # some file systems of clusters have no locks
            raise


def _index(line: bytes) -> int | None:
    """Of a line of a result; None for anything else. The whole line is read, as a crash of the
    machine may leave a hole in it."""
    try:
        fields = json.loads(line)
    except ValueError:
        return None
    index = fields.get("index") if isinstance(fields, dict) else None
    return index if type(index) is int and index >= 0 else None


def lines_of(path: Path) -> Iterator[tuple[int, bytes]]:
    """Place and bytes of each whole line; a torn one at the end is left out."""
    place = 0
    with open(path, "rb") as file:
        for line in file:
            if line.endswith(b"\n"):
                yield place, line
            place += len(line)

"""Text from files that hold a circuit, and text into files."""

from __future__ import annotations

import errno
import os
import stat
from collections.abc import Iterable
from pathlib import Path
from typing import BinaryIO

from zeltbraidwerk import _validate, errors, limits

_FIRST = 1 << 20  # bytes that are read at once, at first


def has_statements(text: str) -> bool:
    """Whether it may be OpenQASM: every program has a semicolon."""
    return ";" in text


def is_path(text: str) -> bool:
    return bool(text.strip()) and not has_statements(text) and "\n" not in text


def opened(path: str | os.PathLike[str], flags: int = os.O_RDONLY) -> int:
    """The descriptor of a regular file: others, such as pipes and devices, may have no end. Raises
    what ``open`` does, also for them."""
    # Opening a pipe would wait for a writer.
    descriptor = os.open(path, flags | os.O_NONBLOCK | os.O_CLOEXEC, 0o666)
    kind = os.fstat(descriptor).st_mode
    if not stat.S_ISREG(kind):
        os.close(descriptor)
        if stat.S_ISDIR(kind):
            raise IsADirectoryError(errno.EISDIR, os.strerror(errno.EISDIR))
        raise OSError(errno.EINVAL, "not a regular file")
    return descriptor


def bytes_of(path: str | os.PathLike[str]) -> bytes:
    """The bytes of a regular file. Raises what ``open`` does, and a TooLargeError."""
    with open(opened(path), "rb") as file:
        return within(file, limits.get("file_bytes"), str(path))


def within(file: BinaryIO, most: int, name: str) -> bytes:
    """All bytes of an open file that has not more."""
    data = file.read(min(most, _FIRST))
    while len(data) <= most and (more := file.read(min(most + 1 - len(data), len(data) + 1))):
        data += more
    if len(data) > most:
        raise errors.TooLargeError(
            f"{name}: got more than {most} bytes; {limits.told('file_bytes')}"
        )
    return data


def decoded(data: bytes) -> str:
    """Text in UTF-8, with or without a byte order mark, whose lines are made to end with a line
    feed: a carriage return alone would not end a comment."""
    return data.decode("utf-8-sig").replace("\r\n", "\n").replace("\r", "\n")


def text_of(path: str | os.PathLike[str]) -> str:
    try:
        return decoded(bytes_of(path))
    except UnicodeDecodeError:
        raise errors.QasmFileError(
            f"circuit: got the file {str(path)!r}, wanted text in UTF-8"
        ) from None
    except errors.TooLargeError as error:
        raise errors.QasmTooLargeError(f"circuit: {error}") from None
    except (OSError, ValueError) as error:
        reason = getattr(error, "strerror", None) or error
        raise errors.QasmFileError(
            f"circuit: got {str(path)[:200]!r}, wanted OpenQASM 2 or the path of a file of it: "
            f"{reason}"
        ) from None


def save(path: str | os.PathLike[str], text: str) -> None:
    """Writes a whole file at once: another program sees the old one or the new one, never a part.
    What is no file, such as a pipe, is written to as it stands."""
    save_lines(path, [text])


def save_lines(path: str | os.PathLike[str], lines: Iterable[str]) -> None:
    """The same of lines, each with its end, which need not fit in memory."""
    if not isinstance(path, (str, os.PathLike)):
        raise errors.DtypeError(f"path: got {_validate.shown(path)}, wanted the path of a file")
    try:
        _save(Path(path), lines)
    except (OSError, ValueError) as error:
        reason = getattr(error, "strerror", None) or error
        raise errors.FileError(
            f"path: got {str(path)[:200]!r}, wanted a file that can be written: {reason}"
        ) from None


def _save(target: Path, lines: Iterable[str]) -> None:
    if target.exists() and not target.is_file():
        with open(target, "w", encoding="utf-8") as file:
            file.writelines(lines)
        return
    target = Path(os.path.realpath(target))  # not of a pipe, such as /dev/stdout, which has none
    part = target.with_name(f".{target.name}.{os.getpid()}")
    try:
        with open(part, "w", encoding="utf-8") as file:
            file.writelines(lines)
        if target.exists():
            part.chmod(target.stat().st_mode & 0o777)
        part.replace(target)
    except BaseException:
        part.unlink(missing_ok=True)
        raise

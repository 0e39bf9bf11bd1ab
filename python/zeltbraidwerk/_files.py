"""Text from files that hold a circuit, and text into files."""

from __future__ import annotations

import os
from collections.abc import Iterable
from pathlib import Path

from zeltbraidwerk import _validate, errors


def has_statements(text: str) -> bool:
    """Whether it may be OpenQASM: every program has a semicolon."""
    return ";" in text


def is_path(text: str) -> bool:
    return bool(text.strip()) and not has_statements(text) and "\n" not in text


def text_of(path: str | os.PathLike[str]) -> str:
    try:
        return Path(path).read_text(encoding="utf-8-sig")
    except UnicodeDecodeError:
        raise errors.QasmFileError(
            f"circuit: got the file {str(path)!r}, wanted text in UTF-8"
        ) from None
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
        _save(Path(os.path.realpath(path)), lines)
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

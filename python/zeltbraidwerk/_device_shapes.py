"""Devices by name and by shape, as (number of qubits, edges, name)."""

from __future__ import annotations

import re
from collections.abc import Callable
from functools import cache
from pathlib import Path
from typing import Any

from zeltbraidwerk import _validate, errors

Edge = tuple[int, int]
Shape = tuple[int, list[Edge], str]


_EDGE = 200  # bytes, of a pair of integers in a list, before and after it is sorted


def line(n: Any) -> Shape:
    n = _validate.qubit_count(n)
    return n, [(q, q + 1) for q in range(n - 1)], f"line of {n}"


def grid(rows: Any, columns: Any) -> Shape:
    r, c = _validate.integer(rows, "rows", 1), _validate.integer(columns, "columns", 1)
    n = _validate.qubit_count(r * c, "rows, columns")
    across = [(q, q + 1) for q in range(n) if (q + 1) % c]
    return n, across + [(q, q + c) for q in range(n - c)], f"{r} x {c} grid"


def heavy_hex(rows: Any, length: Any) -> Shape:
    r, k = _validate.integer(rows, "rows", 1), _validate.integer(length, "length", 1)
    n = _validate.qubit_count(r * k, "rows, length")
    pairs = [(q, q + 1) for q in range(n) if (q + 1) % k]
    for row in range(r - 1):
        for place in range(2 * (row % 2), k, 4):
            pairs += [(row * k + place, n), (n, (row + 1) * k + place)]
            n += 1
    return n, pairs, f"heavy hex {r} x {k}"


def all_to_all(n: Any) -> Shape:
    n = _validate.qubit_count(n, square=_EDGE // 2)
    return n, [(a, b) for b in range(n) for a in range(b)], f"all to all of {n}"


_SIZE = re.compile(r"\d{1,9}(x\d{1,9})?", re.ASCII)
_SHAPES: dict[str, Callable[..., Shape]] = {
    "line": line,
    "grid": grid,
    "heavy-hex": heavy_hex,
    "all-to-all": all_to_all,
}


def known(name: Any, argument: str) -> Shape:
    """By a name, or by a shape and its size."""
    listed = _known_devices()
    shape, _, size = name.partition(":") if isinstance(name, str) else ("", "", "")
    if shape in _SHAPES and _SIZE.fullmatch(size):
        make, numbers = _SHAPES[shape], [int(number) for number in size.split("x")]
        if len(numbers) == 1 + (shape in ("grid", "heavy-hex")):
            return make(*numbers)
    if not isinstance(name, str) or name not in listed:
        other = () if shape in _SHAPES else _SHAPES  # a known shape of a wrong size
        raise errors.DeviceError(
            f"{argument}: got {_validate.shown(name)}, wanted one of {', '.join(listed)}, or "
            "a shape such as line:10, grid:4x4, heavy-hex:3x9 or all-to-all:8"
            f"{_validate.meant(name, listed) or _validate.meant(shape, other)}"
        )
    pairs = listed[name]
    return 1 + max(map(max, pairs)), list(pairs), name


def names() -> tuple[str, ...]:
    return tuple(_known_devices())


@cache
def _known_devices() -> dict[str, tuple[Edge, ...]]:
    text = (Path(__file__).parent / "data" / "devices.txt").read_text(encoding="ascii")
    lines = [line for line in text.splitlines() if not line.startswith("#")]
    found: dict[str, tuple[Edge, ...]] = {}
    name = ""
    for word in " ".join(lines).split():
        if word.endswith(":"):
            name = word[:-1]
            found[name] = ()
        else:
            a, b = map(int, word.split("-"))
            found[name] += ((a, b),)
    return found

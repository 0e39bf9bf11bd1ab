"""Matrices, Pauli rotations, parities, Pauli strings and edges as lines of text.

Blank lines and what follows a "#" are left out. Errors tell the line.
"""

from __future__ import annotations

import re
from collections.abc import Iterator

import numpy as np

from zeltbraidwerk import _validate, errors
from zeltbraidwerk._parameter import Parameter, from_text
from zeltbraidwerk._validate import BoolArray

_EDGE = re.compile(r"(\d{1,9})\s*[-,\s]\s*(\d{1,9})", re.ASCII)


def matrix(text: str) -> BoolArray:
    """A square matrix: one line per row, digits 0 and 1, with blanks or commas or without."""
    rows = [(number, re.sub(r"[\s,]", "", line)) for number, line in _lines(text)]
    width = len(rows[0][1]) if rows else 0
    for number, row in rows:
        if strange := row.strip("01"):
            raise errors.EntryError(f"line {number}: {strange[0]!r} is neither 0 nor 1")
        if len(row) != width:
            raise errors.ShapeError(
                f"line {number}: {len(row)} digits, but line {rows[0][0]} has {width}"
            )
    if len(rows) != width:
        raise errors.ShapeError(f"{len(rows)} rows of {width} digits are not a square matrix")
    return np.array([[digit == "1" for digit in row] for _, row in rows])


def weighted(text: str) -> list[tuple[str, Parameter]]:
    """Pauli strings or parities, one per line, each before its angle, such as "XXI pi/4"."""
    found = []
    for number, line in _lines(text):
        word, *rest = line.split(maxsplit=1)
        if not rest:
            raise errors.AngleError(f"line {number}: got {word!r} alone, wanted an angle after it")
        found.append((word, _angle(rest[0], number)))
    return found


def strings(text: str) -> list[str]:
    """Pauli strings, one per line."""
    return [line for _, line in _lines(text)]


def edges(text: str) -> list[tuple[int, int]]:
    """Pairs of numbers, one per line: "0 1", "0-1" or "0,1"."""
    found = []
    for number, line in _lines(text):
        pair = _EDGE.fullmatch(line)
        if pair is None:
            raise errors.GraphError(
                f"line {number}: got {_validate.shown(line)}, wanted two numbers"
            )
        found.append((int(pair[1]), int(pair[2])))
    return found


def graph(text: str) -> BoolArray:
    """The adjacency matrix of edges, or of a matrix. Two numbers on a line are an edge, so that a
    matrix of two rows has its digits without blanks."""
    if not any(_EDGE.fullmatch(line) for _, line in _lines(text)):
        return matrix(text)
    pairs = edges(text)
    size = _validate.qubit_count(1 + max(map(max, pairs)), "graph", square=2)
    found = np.zeros((size, size), dtype=np.bool_)
    for a, b in pairs:
        found[a, b] = found[b, a] = True
    return found


def _lines(text: str) -> Iterator[tuple[int, str]]:
    for number, line in enumerate(text.splitlines(), 1):
        if kept := line.partition("#")[0].strip():
            yield number, kept


def _angle(text: str, number: int) -> Parameter:
    """Arithmetic of numbers and pi, or text of a Parameter."""
    try:
        return from_text(text, "angle")
    except errors.AngleError as error:
        raise errors.AngleError(f"line {number}: {error}") from None

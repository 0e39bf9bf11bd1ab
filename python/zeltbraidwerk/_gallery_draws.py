"""What the functions of the gallery share: checks of their arguments, and random graphs."""

from __future__ import annotations

import random
from typing import Any

from zeltbraidwerk import _validate, errors, limits

MOST = 2**31 - 1


_GATE = 250  # bytes


def room(name: str, qubits: int, gates: float = 0, text: float = 0) -> None:
    """Refuses an instance that would not fit into memory: of so many gates, or bytes of text."""
    limits.check_memory(name, qubits, "qubits", _GATE * gates + text)


def strings(name: str, qubits: int, number: int) -> None:
    """The same for a number of Pauli strings; equal ones are stored once, but made one by one."""
    limits.check_memory(name, number, f"strings on {qubits} qubits", number * (qubits + 150))


def seeded(seed: Any) -> random.Random:
    return random.Random(_validate.integer(seed, "seed", 0, 2**64 - 1))


def number_of(value: Any, name: str) -> int:
    return _validate.integer(value, name, 0, MOST)


def even(value: Any, name: str, least: int, most: int) -> int:
    number = _validate.integer(value, name, least, most)
    if number % 2:
        raise errors.OptionError(f"{name}: got {number}, wanted an even number")
    return number


def regular_edges(n: int, degree: int, rng: random.Random) -> list[tuple[int, int]]:
    """Of a random graph whose vertices have the degree, which times n is even and below n: a
    circulant graph after random exchanges of the ends of two edges."""
    steps = [*range(1, degree // 2 + 1), *([n // 2] if degree % 2 else [])]
    ends = [(v, (v + k) % n) for k in steps for v in range(n)]
    edges = sorted({(min(pair), max(pair)) for pair in ends})
    joined = set(edges)
    for _ in range(10 * len(edges)):
        one, other = rng.randrange(len(edges)), rng.randrange(len(edges))
        (a, b), (c, d) = edges[one], rng.sample(edges[other], 2)
        exchanged = {(min(a, c), max(a, c)), (min(b, d), max(b, d))}
        if len({a, b, c, d}) == 4 and not exchanged & joined:
            joined = joined - {edges[one], edges[other]} | exchanged
            edges[one], edges[other] = exchanged
    return sorted(joined)

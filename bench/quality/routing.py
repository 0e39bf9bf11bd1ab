"""Routed circuits of the quality benchmark."""

from __future__ import annotations

import itertools
import random
import sys
from collections.abc import Iterator

import zeltbraidwerk as zb
from zeltbraidwerk import Gate, gallery

Row = tuple[tuple[str, str, str], tuple[int, int]]  # family, input, method; count, depth

DEVICES = {"grid_4x4": zb.Device.grid(4, 4)} | {
    name: zb.Device.named(name) for name in ("tokyo", "singapore")
}


def random_circuit(n: int, gates: int, seed: int) -> zb.Circuit:
    """Clifford gates, and rotations a fifth of them."""
    rng = random.Random(seed)
    drawn = []
    for _ in range(gates):
        a, b = rng.sample(range(n), 2)
        drawn.append(
            rng.choice((Gate.cnot(a, b), Gate.cnot(a, b), Gate.h(a), Gate.s(a), Gate.rz(a, 0.25)))
        )
    return zb.Circuit(n, drawn)


def inputs() -> Iterator[tuple[str, zb.Circuit]]:
    yield "gf16_mult", gallery.multiplier()
    yield "random_9_300", random_circuit(9, 300, 1)
    yield "random_16_600", random_circuit(16, 600, 2)


def routings() -> Iterator[Row]:
    """On devices with the tail handed back and closed; and on ions, where gates on any number of
    them count as one."""
    for (name, circuit), (on, device) in itertools.product(inputs(), DEVICES.items()):
        for depth, objective in itertools.product((0, 1), ("count", "depth")):
            for tail in ("return", "close"):
                result = zb.routing.route(
                    circuit, device, lookahead=depth, objective=objective, tail=tail
                )
                method = f"{objective} ahead {depth} {tail}"
                yield _row(f"{name}_{on}", method, result, result.count)
    for name, circuit in inputs():
        for shelving in (None, (0.01, 0.001)):
            result = zb.routing.route_ions(circuit, shelving=shelving)
            method = "ions" if shelving is None else "ions shelved"
            yield _row(name, method, result, result.entangling_count)


def _row(name: str, method: str, result: zb.routing.Routing, count: int) -> Row:
    if not result.verify():
        sys.exit(f"{method} on {name}: the circuit is wrong")
    return ("routing", name, method), (count, result.depth)

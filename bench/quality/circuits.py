"""Whole circuits of the quality benchmark, made shorter."""

from __future__ import annotations

import itertools
import sys
from collections.abc import Iterator
from pathlib import Path

import zeltbraidwerk as zb

Row = tuple[tuple[str, str, str], tuple[int, int]]  # family, input, method; count, depth

FOLDER = Path(__file__).parents[1] / "circuits"
STEPS = 20_000
DEVICES = {"grid_4x4": zb.Device.grid(4, 4), "tokyo": zb.Device.named("tokyo")}
ON_DEVICES = ("barenco_tof_5", "vbe_adder_3", "hwb6", "gf2^4_mult")


def on_all_qubits() -> Iterator[Row]:
    """Each at a fixed number of steps; the smaller ones by depth and with outputs anywhere too."""
    for file in sorted(FOLDER.glob("*.qasm")):
        circuit = zb.Circuit.of(file)
        yield _row(file.stem, "search", zb.optimize(circuit, seed=1, steps=STEPS))
        if len(circuit) > 300:
            continue
        result = zb.optimize(circuit, objective="depth", seed=1, steps=STEPS)
        yield _row(file.stem, "search depth", result)
        result = zb.optimize(circuit, permutation="free", seed=1, steps=STEPS)
        yield _row(file.stem, "search free", result)


def on_devices() -> Iterator[Row]:
    """Placed and routed by the library alone."""
    for name, (place, device) in itertools.product(ON_DEVICES, DEVICES.items()):
        for permutation in ("exact", "free"):
            result = zb.optimize(
                FOLDER / f"{name}.qasm", device=device, permutation=permutation, seed=1, steps=STEPS
            )
            yield _row(f"{name}_{place}", f"device {permutation}", result)


def _row(name: str, method: str, result: zb.Optimization) -> Row:
    if not result.verify():
        sys.exit(f"{method} on {name}: the circuit is wrong")
    return ("circuit", name, method), (result.count, result.depth)

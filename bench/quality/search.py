"""The searches of the quality benchmark, each of a fixed number of steps."""

from __future__ import annotations

import itertools
import sys
from collections.abc import Iterator
from typing import Any

import numpy as np

import zeltbraidwerk as zb
from zeltbraidwerk import gallery

Row = tuple[tuple[str, str, str], tuple[int, int]]  # family, input, method; count, depth

MATRICES = {8: (3, 100_000), 16: (3, 300_000), 32: (2, 400_000), 64: (1, 800_000), 128: (1, 20_000)}
DEVICES = (zb.Device.grid(3, 3), zb.Device.grid(4, 4), zb.Device.line(16), zb.Device.named("tokyo"))


def matrices() -> Iterator[Row]:
    for n, (count, steps) in MATRICES.items():
        for k, matrix in enumerate(gallery.random_invertible(n, count)):
            for wires in ("free", "exact"):
                yield _linear(f"random_{n}_{k}", matrix, steps, permutation=wires)
            yield _linear(f"random_{n}_{k}", matrix, 0, permutation="free")
            shallow = {"objective": "depth", "permutation": "free"}
            yield _linear(f"random_{n}_{k}", matrix, min(steps, 30_000), **shallow)


def ciphers() -> Iterator[Row]:
    for name, matrix in gallery.cipher_layers().items():
        yield _linear(name, matrix, 300_000, permutation="free")
        yield _linear(name, matrix, 300_000)


def on_devices() -> Iterator[Row]:
    for device in DEVICES:
        for k, matrix in enumerate(gallery.random_invertible(device.n, 2)):
            for wires in ("free", "exact"):
                name = f"{device.name or device.n}_{k}"
                yield _linear(name, matrix, 200_000, device=device, permutation=wires)


def parities() -> Iterator[Row]:
    for n, terms in ((8, 64), (16, 160), (20, 200)):
        poly = dict.fromkeys(gallery.random_parities(n, terms, 1)[0], 0.1)
        for steps in (0, 50_000):
            for wires in ("free", "exact"):
                result = zb.phase.synthesize(
                    poly, n=n, method="search", permutation=wires, seed=1, steps=steps
                )
                yield _row("phase", f"{n}_{terms}", f"{wires} {steps}", result)


def paulis() -> Iterator[Row]:
    inputs = {"uccsd_lih": gallery.uccsd(12, 4), "uccsd_nh3": gallery.uccsd(16, 10)}
    for name, rotations in inputs.items():
        for order in ("free", "commuting"):
            for steps in (0, 3_000):
                result = zb.pauli.synthesize(
                    list(rotations.items()), method="search", order=order, seed=1, steps=steps
                )
                yield _row("pauli", name, f"{order} {steps}", result)
    for device in (zb.Device.grid(4, 4), zb.Device.line(12)):
        for steps in (0, 3_000):
            result = zb.pauli.synthesize(
                inputs["uccsd_lih"], method="search", order="free", device=device, seed=1,
                steps=steps,
            )  # fmt: skip
            yield _row("pauli", f"uccsd_lih on {device.name or device.n}", str(steps), result)


def layers() -> Iterator[Row]:
    """Layers of QAOA, and Trotter steps on lattices, in order."""
    graph = gallery.random_graph(16, 1)
    edges = [("".join("IZ"[q in edge] for q in range(16)), 0.1) for edge in np.argwhere(graph)]
    inputs: dict[str, list[tuple[str, float]]] = {
        "labs_10": gallery.low_autocorrelation(10),
        "labs_10_x2": gallery.low_autocorrelation(10, 2),
        "maxcut_14_6": [(string, 0.1) for string in gallery.maxcut_regular(14, 6)],
        "heisenberg_4": gallery.heisenberg(4),
        "heisenberg_10_x3": gallery.heisenberg(10, 3),
        "heisenberg_3x3_x2": gallery.heisenberg((3, 3), 2),
        "xy_4x4": gallery.heisenberg((4, 4), couplings=(1, 1, 0)),
        "ising_20_x2": gallery.ising_chain(20, 2),
        "edges_16": edges,
    }
    for (name, rotations), steps in itertools.product(inputs.items(), (0, 20_000)):
        for objective in ("count", "depth"):
            result = zb.pauli.synthesize(
                rotations, method="search", order="commuting", objective=objective, seed=1,
                steps=steps,
            )  # fmt: skip
            yield _row("pauli", name, f"commuting {objective} {steps}", result)


def cliffords() -> Iterator[Row]:
    for n, steps in ((4, 1_000), (8, 100_000), (16, 100_000), (32, 50_000)):
        operator = gallery.random_clifford(n, 1)[0]
        for wires in ("free", "exact"):
            for most in (0, steps):
                result = zb.clifford.synthesize(
                    operator, method="search", permutation=wires, seed=1, steps=most
                )
                yield _row("clifford", f"random_{n}", f"{wires} {most}", result)
    for n, kind, options in (
        (16, "grid", {"device": zb.Device.grid(4, 4)}),
        (16, "depth", {"objective": "depth", "permutation": "free"}),
        (50, "depth", {"objective": "depth", "permutation": "free"}),
        (16, "line depth", {"objective": "depth", "device": zb.Device.line(16)}),
    ):
        operator = gallery.random_clifford(n, 1)[0]
        for steps in (0, 100_000):
            result = zb.clifford.synthesize(
                operator, method="search", seed=1, steps=steps, **options
            )
            yield _row("clifford", f"random_{n}", f"{kind} {steps}", result)


def states() -> Iterator[Row]:
    for n in (10, 20, 30, 50):
        for steps in (0, 100_000):
            result = zb.graph_state.synthesize(
                gallery.random_graph(n, 1), method="search", seed=1, steps=steps
            )
            yield _row("state", f"graph_{n}", str(steps), result)
    for n, device in ((9, DEVICES[0]), (16, DEVICES[1]), (16, DEVICES[2]), (20, DEVICES[3])):
        for wires in ("free", "exact"):
            result = zb.graph_state.synthesize(
                gallery.random_graph(n, 1), device=device, permutation=wires, seed=1, steps=50_000
            )
            yield _row("state", f"graph_{n} on {device.name or n}", f"{wires} 50000", result)
    for name, code in (("steane", gallery.steane_code()), ("carbon", gallery.carbon_code())):
        state = gallery.logical_zero(code)
        for device in DEVICES[: 1 if name == "steane" else 3]:
            if device.n < len(state):
                continue
            result = zb.clifford.synthesize_state(
                state, device=device, permutation="free", seed=1, steps=50_000
            )
            yield _row("state", f"{name} on {device.name or device.n}", "free 50000", result)


def _linear(name: str, matrix: gallery.BoolArray, steps: int, **options: Any) -> Row:
    result = zb.linear.synthesize(matrix, method="search", seed=1, steps=steps, **options)
    words = [str(option) for key, option in options.items() if key != "device"]
    return _row("linear", name, " ".join([*words, str(steps)]), result)


def _row(family: str, name: str, method: str, result: Any) -> Row:
    if not result.verify():
        sys.exit(f"{family} search on {name}: the circuit is wrong")
    return (f"{family} search", name, method), (result.count, result.depth)

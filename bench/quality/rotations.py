"""Pauli rotations and graph states of the quality benchmark."""

from __future__ import annotations

import itertools
import sys
from collections.abc import Iterator

import zeltbraidwerk as zb
from zeltbraidwerk import gallery

Row = tuple[tuple[str, str, str], tuple[int, int]]  # family, input, method; count, depth

MOLECULES = {"lih": (12, 4), "h2o": (14, 10), "nh3": (16, 10), "n2": (20, 14)}


def inputs() -> Iterator[tuple[str, dict[str, float]]]:
    for name, size in MOLECULES.items():
        yield f"uccsd_{name}", gallery.uccsd(*size)
    for n, terms in ((8, 64), (16, 160), (20, 200)):
        for parities in gallery.random_parities(n, terms, 1):
            strings = ["".join("IZ"[parity >> q & 1] for q in range(n)) for parity in parities]
            yield f"parities_{n}_{terms}", dict.fromkeys(strings, 0.1)


def pauli() -> Iterator[Row]:
    """One Trotter step with its tail closed, in place and on wires that may change; and exact
    products where they are quick."""
    for name, rotations in inputs():
        for method, wires in itertools.product(zb.pauli.methods(), ("exact", "free")):
            if method == "search":  # see search.py
                continue
            result = zb.pauli.synthesize(
                rotations, method=method, order="free", permutation=wires, seed=1
            )
            yield _row("pauli", name, f"{method} {wires}", result)
    ansatz = list(gallery.uccsd(12, 4).items())
    for method in ("auto", "greedy", "recursive"):
        result = zb.pauli.synthesize(ansatz, method=method, seed=1)
        yield _row("pauli", "uccsd_lih", f"{method} in order", result)


def graph_states() -> Iterator[Row]:
    for n, seed in itertools.product((10, 20, 30, 50), (1, 2)):
        graph = gallery.random_graph(n, seed)
        for method in zb.graph_state.methods():
            if method == "search":
                continue
            for runs in (1, 5):
                restarts = None if method == "naive" else runs
                result = zb.graph_state.synthesize(graph, method=method, seed=1, restarts=restarts)
                yield _row("graph_state", f"random_{n}_{seed}", f"{method} x{runs}", result)


def _row(family: str, name: str, method: str, result: object) -> Row:
    if not result.verify():
        sys.exit(f"{method} on {name}: the circuit is wrong")
    return (family, name, method), (result.count, result.depth)

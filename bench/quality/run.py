"""Counts and depths of every method on fixed inputs, against the committed baseline.

    run.py            compares; exit code 1 when a circuit got longer or deeper
    run.py --update   writes the baseline anew

Seeds are fixed and there are no budgets, so that a change in a number is a change in the code,
never in a draw or in the machine. The baseline gives the best of 1 and of 20 runs of each method.
"""

from __future__ import annotations

import argparse
import csv
import itertools
import os
import sys
from collections.abc import Callable, Iterator
from concurrent.futures import ProcessPoolExecutor
from pathlib import Path

import circuits
import rotations
import routing
import search

import zeltbraidwerk as zb
from zeltbraidwerk import gallery
from zeltbraidwerk.errors import NoHamiltonianPathError, UnfinishedError

BASELINE = Path(__file__).with_name("baseline.csv")
RANDOM = {8: 5, 16: 5, 32: 3, 64: 1}  # matrices by size

Key = tuple[str, str, str]  # family, input, method
Cost = tuple[int, int]  # count, depth


def linear_inputs() -> Iterator[tuple[str, gallery.BoolArray]]:
    for n, count in RANDOM.items():
        for k, matrix in enumerate(gallery.random_invertible(n, count)):
            yield f"random_{n}_{k}", matrix
    yield from gallery.cipher_layers().items()


def linear() -> Iterator[tuple[Key, Cost]]:
    for name, matrix in linear_inputs():
        for method, runs in itertools.product(zb.linear.methods(), (1, 20)):
            if method == "search":  # see search.py
                continue
            try:
                result = zb.linear.synthesize(
                    matrix, method=method, permutation="free", seed=1, restarts=runs
                )
            except UnfinishedError:  # a greedy search that went in circles
                continue
            if not result.verify():
                sys.exit(f"{method} on {name}: the circuit is wrong")
            yield ("linear", name, f"{method} x{runs}"), (result.count, result.depth)


DEVICES: dict[str, zb.Device] = {
    "grid_3x3": zb.Device.grid(3, 3),
    "grid_4x4": zb.Device.grid(4, 4),
    "line_16": zb.Device.line(16),
} | {name: zb.Device.named(name) for name in zb.Device.names()}


def devices() -> Iterator[tuple[Key, Cost]]:
    """Matrices on the edges of a device."""
    for name, device in DEVICES.items():
        for k, matrix in enumerate(gallery.random_invertible(device.n, 3)):
            for method, runs in itertools.product(zb.linear.methods(device=True), (1, 20)):
                if method == "search":
                    continue
                try:
                    result = zb.linear.synthesize(
                        matrix, device=device, method=method, seed=1, restarts=runs
                    )
                except NoHamiltonianPathError:
                    continue
                if not result.verify():
                    sys.exit(f"{method} on {name}: the circuit is wrong")
                yield ("device", f"{name}_{k}", f"{method} x{runs}"), (result.count, result.depth)


# Qubits and parities, and the device.
PHASES: tuple[tuple[int, int, str | None], ...] = (
    (8, 64, None), (16, 160, None), (20, 200, None), (9, 30, "grid_3x3"), (16, 40, "grid_4x4"),
)  # fmt: skip


def phases() -> Iterator[tuple[Key, Cost]]:
    """Phase polynomials, with what they leave undone."""
    for (n, terms, on), k in itertools.product(PHASES, range(2)):
        poly = dict.fromkeys(gallery.random_parities(n, terms, k + 1)[k], 0.1)
        device = None if on is None else DEVICES[on]
        methods = zb.phase.methods(device=device is not None)
        for method, wires, runs in itertools.product(methods, ("exact", "free"), (1, 20)):
            if method == "search":
                continue
            result = zb.phase.synthesize(
                poly, n=n, device=device, method=method, permutation=wires, seed=1, restarts=runs
            )
            name = f"{n}_{terms}_{k}" + (f"_{on}" if on else "")
            if not result.verify():
                sys.exit(f"{method} on {name}: the circuit is wrong")
            yield ("phase", name, f"{method} {wires} x{runs}"), (result.count, result.depth)


FAMILIES = (
    linear,
    devices,
    phases,
    rotations.pauli,
    rotations.graph_states,
    routing.routings,
    search.matrices,
    search.ciphers,
    search.on_devices,
    search.parities,
    search.paulis,
    search.layers,
    search.cliffords,
    search.states,
    circuits.on_all_qubits,
    circuits.on_devices,
)


def rows_of(family: Callable[[], Iterator[tuple[Key, Cost]]]) -> list[tuple[Key, Cost]]:
    return list(family())


def read() -> dict[Key, Cost]:
    if not BASELINE.exists():
        return {}
    with BASELINE.open(newline="", encoding="utf-8") as file:
        return {
            (row["family"], row["input"], row["method"]): (int(row["count"]), int(row["depth"]))
            for row in csv.DictReader(file)
        }


def write(costs: dict[Key, Cost]) -> None:
    with BASELINE.open("w", newline="", encoding="utf-8") as file:
        writer = csv.writer(file, lineterminator="\n")
        writer.writerow(("family", "input", "method", "count", "depth"))
        writer.writerows((*key, *cost) for key, cost in costs.items())
    print(f"{len(costs)} rows written to {BASELINE}")


def compare(old: dict[Key, Cost], new: dict[Key, Cost]) -> int:
    """Prints what moved; 1 when something got worse or is gone."""
    worse = better = added = 0
    for key, cost in new.items():
        if key not in old:
            added += 1
        elif cost != old[key]:
            bad = cost[0] > old[key][0] or cost[1] > old[key][1]
            worse, better = worse + bad, better + (not bad)
            print(
                f"{'WORSE ' if bad else 'better'} {' '.join(key)}: "
                f"count {old[key][0]} -> {cost[0]}, depth {old[key][1]} -> {cost[1]}"
            )
    gone = old.keys() - new.keys()
    for key in sorted(gone):
        print(f"GONE   {' '.join(key)}")
    same = len(new) - worse - better - added
    print(
        f"{same} circuits as before, {better} better, {worse} worse, {added} new, {len(gone)} gone"
    )
    if better or added or gone or worse:
        print("To take these numbers as the baseline: ./dev bench quality --update")
    return int(worse > 0 or bool(gone))


def main() -> int:
    parser = argparse.ArgumentParser(description="Circuit quality against the baseline.")
    parser.add_argument("--update", action="store_true", help="write the baseline anew")
    update = parser.parse_args().update
    with ProcessPoolExecutor(os.cpu_count()) as pool:
        costs = dict(itertools.chain.from_iterable(pool.map(rows_of, FAMILIES)))
    if update:
        write(costs)
        return 0
    return compare(read(), costs)


if __name__ == "__main__":
    sys.exit(main())

"""Many operators on the cores of this machine: time, overhead, and what a second process gains.

    run.py                10,000 random Clifford operators on 5 qubits, the method "auto"
    run.py --count N      so many

Times are wall-clock times, so the machine should do nothing else; the first line tells its load.
"""

from __future__ import annotations

import argparse
import os
import random
import tempfile
import time
from pathlib import Path
from typing import Any

import zeltbraidwerk as zb

QUBITS = 5
ROUNDS = 12  # of gates on all qubits
SCALED = 120  # operators that one process and two make


def operators(count: int) -> list[zb.CliffordTableau]:
    draw = random.Random(1)
    found = []
    for _ in range(count):
        gates = []
        for _ in range(ROUNDS * QUBITS):
            a, b = draw.sample(range(QUBITS), 2)
            gates.append(draw.choice((zb.Gate.h(a), zb.Gate.s(a), zb.Gate.cnot(a, b))))
        found.append(zb.CliffordTableau.from_circuit(zb.Circuit(QUBITS, gates)))
    return found


def timed(inputs: list[Any], workers: int, **options: Any) -> tuple[float, list[zb.batch.Record]]:
    """Seconds of the call, and its records."""
    with tempfile.TemporaryDirectory() as folder:
        start = time.perf_counter()
        found = zb.batch.run(
            "clifford.synthesize", inputs, results=Path(folder) / "runs.jsonl", seed=1,
            workers=workers, **options,
        )  # fmt: skip
        seconds = time.perf_counter() - start
        records = list(found)
    assert all(record.error is None for record in records)
    return seconds, records


def main() -> None:
    parser = argparse.ArgumentParser()
    parser.add_argument("--count", type=int, default=10_000)
    count = parser.parse_args().count
    print(f"load {os.getloadavg()[0]:.1f} on {os.cpu_count()} cores")
    idle = timed([], 2)[0]
    print(f"start and end of a pool of two: {idle:.2f} s")

    given = operators(count)
    seconds, records = timed(given, 1, method="elimination")
    extra = (seconds - idle - sum(record.seconds for record in records)) / count
    print(f"overhead, {count} inputs by elimination, one process: {1e3 * extra:.2f} ms per input")

    alone = timed(given[:SCALED], 1, method="search", steps=200_000)[0] - idle
    both = timed(given[:SCALED], 2, method="search", steps=200_000)[0] - idle
    print(f"{SCALED} inputs by search: one process {alone:.1f} s, two {both:.1f} s, "
          f"{alone / both:.2f} times as fast")  # fmt: skip

    seconds, records = timed(given, 2)
    gates = sum(record.count or 0 for record in records) / count
    print(f"{count} inputs by auto, two processes: {seconds:.0f} s, {gates:.2f} gates on average, "
          f"{sum(record.is_proven for record in records)} proven")  # fmt: skip


if __name__ == "__main__":
    main()

"""Many operators on the cores of this machine: time, overhead, and what a second process gains.

    run.py                10,000 random Clifford operators on 5 qubits, the method "auto"
    run.py --count N      so many

Every circuit is verified by the package's own tableaus, and by Stim where that is installed. Times
are wall-clock times, so the machine should do nothing else; the first line tells its load.
Processor time is measured in a process that does everything by itself.
"""

from __future__ import annotations

import argparse
import os
import random
import subprocess
import sys
import tempfile
import time
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path
from typing import Any

import zeltbraidwerk as zb

QUBITS = 5
ROUNDS = 12  # of gates on all qubits
SCALED = (8, 600, 20_000)  # qubits, operators that one process and two make, steps

# usage: PROGRAM, for the processor time of a first call in a new process
FIRST_CALL = """
import time
import zeltbraidwerk as zb
operator = zb.gallery.random_clifford({qubits}, 1)[0]
matrix = zb.gallery.random_invertible({qubits}, 1)[0]
for name, call in {{
    "clifford.synthesize": lambda: zb.clifford.synthesize(operator, seed=1),
    "linear.synthesize": lambda: zb.linear.synthesize(matrix, seed=1),
}}.items():
    start = time.process_time()
    call()
    print(f"  {{name}}: {{1e3 * (time.process_time() - start):.0f}} ms")
"""


def operators(qubits: int, count: int) -> list[zb.CliffordTableau]:
    draw = random.Random(1)
    found = []
    for _ in range(count):
        gates = []
        for _ in range(ROUNDS * qubits):
            a, b = draw.sample(range(qubits), 2)
            gates.append(draw.choice((zb.Gate.h(a), zb.Gate.s(a), zb.Gate.cnot(a, b))))
        found.append(zb.CliffordTableau.from_circuit(zb.Circuit(qubits, gates)))
    return found


def timed(inputs: list[Any], **options: Any) -> tuple[float, list[zb.batch.Record]]:
    """Seconds of the call, and its records."""
    with tempfile.TemporaryDirectory() as folder:
        start = time.perf_counter()
        found = zb.batch.run(
            "clifford.synthesize", inputs, results=Path(folder) / "runs.jsonl", seed=1, **options
        )
        seconds = time.perf_counter() - start
        records = list(found)
    assert all(record.error is None for record in records)
    return seconds, records


def is_right(operator: zb.CliffordTableau, circuit: zb.Circuit) -> bool:
    """By Stim, signs included."""
    import stim

    return bool(stim.Tableau.from_circuit(circuit.to_stim()) == operator.to_stim())


def first_calls() -> None:
    with tempfile.TemporaryDirectory() as folder:
        for label in ("builds its tables", "maps them from files"):
            print(f"processor time of a first call in a new process that {label}:", flush=True)
            subprocess.run(
                [sys.executable, "-c", FIRST_CALL.format(qubits=QUBITS)],
                env={**os.environ, "ZELTBRAIDWERK_CACHE": folder},
                check=True,
            )


def main() -> None:
    parser = argparse.ArgumentParser()
    parser.add_argument("--count", type=int, default=10_000)
    count = parser.parse_args().count
    print(f"load {os.getloadavg()[0]:.1f} on {os.cpu_count()} cores")
    first_calls()
    idle = timed([], workers=2)[0]
    print(f"start and end of a pool of two: {idle:.2f} s")

    given = operators(QUBITS, count)
    seconds, records = timed(given, workers=1, method="elimination")
    extra = (seconds - idle - sum(record.seconds for record in records)) / count
    print(f"overhead, {count} inputs by elimination, one process: {1e3 * extra:.2f} ms per input")

    qubits, scaled, steps = SCALED
    inputs = operators(qubits, scaled)
    alone = timed(inputs, workers=1, method="search", steps=steps)[0] - idle
    both = timed(inputs, workers=2, method="search", steps=steps)[0] - idle
    print(f"{scaled} operators on {qubits} qubits by search: one process {alone:.1f} s, "
          f"two {both:.1f} s, {alone / both:.2f} times as fast")  # fmt: skip

    some = given[: max(count // 10, 1)]
    before = time.process_time()
    with ThreadPoolExecutor(1) as executor:
        timed(some, executor=executor)
    used = (time.process_time() - before) / len(some)
    print(
        f"processor time by auto, all that the batch does included: {1e3 * used:.1f} ms per input"
    )

    seconds, records = timed(given, workers=2)
    gates = sum(record.count or 0 for record in records) / count
    print(f"{count} inputs by auto, two processes: {seconds:.0f} s, {gates:.2f} gates on average, "
          f"{sum(record.is_proven for record in records)} proven")  # fmt: skip
    results = [record.result for record in records]
    assert all(result.verify() for result in results)
    print("all verified by tableaus")
    try:
        import stim  # noqa: F401
    except ImportError:
        return
    assert all(map(is_right, given, (result.circuit for result in results)))
    print("all verified by Stim")


if __name__ == "__main__":
    main()

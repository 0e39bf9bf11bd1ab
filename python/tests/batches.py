"""What the tests of batches share: inputs, files without their seconds, and a program to stop."""

import json
import random

import zeltbraidwerk as zb

ROUNDS = 12  # of gates on all qubits, which make a random operator


def cliffords(n, count, seed=1):
    """Random Clifford operators, the same every time."""
    draw = random.Random(seed)
    found = []
    for _ in range(count):
        gates = []
        for _ in range(ROUNDS * n):
            a, b = draw.sample(range(n), 2)
            gates.append(draw.choice((zb.Gate.h(a), zb.Gate.s(a), zb.Gate.cnot(a, b))))
        found.append(zb.CliffordTableau.from_circuit(zb.Circuit(n, gates)))
    return found


def timeless(value):
    """JSON without the fields that tell seconds."""
    if isinstance(value, dict):
        return {name: timeless(part) for name, part in value.items() if name != "seconds"}
    return [timeless(part) for part in value] if isinstance(value, list) else value


def content(path):
    """The lines of a results file, without seconds."""
    return [timeless(json.loads(line)) for line in path.read_text().splitlines()]


# Some seconds of work, long enough to be stopped in the middle.
SLOW = {"method": "search", "seed": 5, "steps": 30_000}
SLOW_INPUTS = (8, 24)  # qubits, operators

# usage: PROGRAM RESULTS
PROGRAM = """
import sys
from batches import SLOW, SLOW_INPUTS, cliffords
import zeltbraidwerk as zb

if __name__ == "__main__":
    zb.batch.run("clifford.synthesize", cliffords(*SLOW_INPUTS), results=sys.argv[1], workers=2,
                 progress=False, **SLOW)
"""

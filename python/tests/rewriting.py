"""Random circuits, rewritten by identities or spoilt, for the tests of checks."""

import math
from functools import lru_cache
from itertools import combinations

import numpy as np
from support import gate_matrix

from zeltbraidwerk import Gate

PI = math.pi
ANGLES = [0.3, -1.2, PI / 4, -PI / 4, 3 * PI / 4, PI / 2, -PI / 2, PI, 2 * PI, 0.0, 0.01]
ROTATIONS = ("RX", "RY", "RZ", "PH")


cached_matrix = lru_cache(maxsize=500)(gate_matrix)


def random_gate(rng, n, angles=ANGLES):
    kinds = ["H", "S", "D-S", "X", "Y", "Z", *ROTATIONS, *ROTATIONS]
    kind = rng.choice(kinds + ["CNOT", "CNOT", "CNOT", "CZ", "CSIGN", "XX"] * (n > 1))
    if kind in ("CNOT", "CZ", "CSIGN"):
        return Gate(kind, rng.sample(range(n), 2))
    if kind == "XX":
        qubits = rng.sample(range(n), min(n, rng.choice((2, 2, 3))))
        return Gate("XX", qubits, (rng.choice(angles), 0.0))
    return Gate(kind, rng.randrange(n), rng.choice(angles) if kind in ROTATIONS else ())


def random_gates(rng, n, count, angles=ANGLES):
    return [random_gate(rng, n, angles) for _ in range(count)]


def distance(a, b):
    """The largest difference of an entry, up to a global phase."""
    overlap = np.vdot(a, b)
    return np.abs(b - a * overlap / abs(overlap)).max() if abs(overlap) > 1e-6 else 2.0


def replacements(rng, gate):
    """Lists of gates that are the gate, up to a global phase."""
    q, last = gate.qubits[0], gate.qubits[-1]
    if gate.name in ROTATIONS:
        angle, letter = float(gate.params[0]), "Z" if gate.diag else gate.name[1]
        name, part = f"R{letter}", rng.choice([PI / 4, PI / 2, 0.7, angle])
        flip = Gate("X" if letter == "Z" else "Z", q)
        yield [Gate(name, q, part), Gate(gate.name, q, angle - part)]
        yield [flip, Gate(name, q, -angle), flip]
        yield [Gate(name, q, angle - rng.choice((-2, 2)) * PI)]
        yield [Gate(letter, q), Gate(name, q, angle + PI)]
        if letter == "Y":
            yield [Gate("D-S", q), Gate.rx(q, angle), Gate.s(q)]
        else:
            yield [Gate.h(q), Gate("RX" if letter == "Z" else "RZ", q, angle), Gate.h(q)]
    elif gate.name in ("S", "Z", "D-S"):
        turns = {"S": 1, "Z": 2, "D-S": 3}[gate.name]
        yield [Gate("PH", q, turns * PI / 4)] * 2
        yield [Gate.s(q)] * turns
    elif gate.name == "H":
        yield [Gate.rz(q, PI / 2), Gate.rx(q, PI / 2), Gate.s(q)]
    elif gate.name == "CNOT":
        yield [Gate.h(last), Gate.cz(q, last), Gate.h(last)]
    elif gate.name in ("CZ", "CSIGN"):
        yield [Gate.h(q), Gate.cnot(last, q), Gate.h(q)]
    elif gate.name == "XX":
        made = []
        for pair in combinations(gate.qubits, 2):
            a, b = rng.sample(pair, 2)
            ladder = [Gate.cnot(a, b)]
            made += [*ladder, Gate.rx(a, gate.params[0]), *ladder]
        yield made


def rewritten(rng, n, gates, steps):
    """An equal circuit by random identities, and the wire of each output."""
    gates, wires = list(gates), list(range(n))
    for _ in range(steps):
        at, kind = rng.randrange(len(gates) + 1), rng.randrange(6)
        pair = gates[at : at + 2]
        if kind == 0:
            gate = random_gate(rng, n)
            gates[at:at] = [gate, gate.inverse()] if gate.name != "XX" else []
        elif kind == 1 and n > 1:
            a, b = rng.sample(range(n), 2)
            swapped = {a: b, b: a}
            wires = [swapped.get(wire, wire) for wire in wires]
            later = [
                Gate(gate.name, [swapped.get(q, q) for q in gate.qubits], gate.params)
                for gate in gates[at:]
            ]
            gates[at:] = [Gate.cnot(a, b), Gate.cnot(b, a), Gate.cnot(a, b), *later]
        elif kind == 2 and pair:
            gates[at : at + 1] = rng.choice([*replacements(rng, pair[0]), pair[:1]])
        elif len(pair) == 2 and pair[0].name == pair[1].name and pair[0].name in ROTATIONS:
            if pair[0].qubits == pair[1].qubits:
                total = float(pair[0].params[0]) + float(pair[1].params[0])
                gates[at : at + 2] = [Gate(pair[0].name, pair[0].qubits, total)]
        elif len(pair) == 2:
            a, b = (cached_matrix(gate, n) for gate in pair)
            if np.abs(a @ b - b @ a).max() < 1e-12:
                gates[at : at + 2] = pair[::-1]
    return gates, wires


# --- faults -------------------------------------------------------------------------------------


def drop(rng, gates):
    del gates[rng.randrange(len(gates))]


def turn_a_little(rng, gates):
    at = rng.choice([k for k, gate in enumerate(gates) if gate.params])
    change_angle(gates, at, float(gates[at].params[0]) + rng.choice((-1e-6, 1e-6)))


def turn_backwards(rng, gates):
    at = rng.choice([k for k, gate in enumerate(gates) if gate.params])
    change_angle(gates, at, -float(gates[at].params[0]))


def change_angle(gates, at, angle):
    gates[at] = Gate(gates[at].name, gates[at].qubits, (angle, *gates[at].params[1:]))


def swap_neighbours(rng, gates):
    at = rng.randrange(len(gates) - 1)
    gates[at : at + 2] = gates[at + 1], gates[at]


def reverse_a_cnot(rng, gates):
    at = rng.choice([k for k, gate in enumerate(gates) if gate.name == "CNOT"])
    gates[at] = Gate("CNOT", gates[at].qubits[::-1])


def insert_a_letter(rng, gates):
    gates.insert(rng.randrange(len(gates) + 1), Gate(rng.choice("XYZ"), rng.randrange(3)))


def exchange_wires(rng, gates):
    a, b = rng.sample(range(3), 2)
    swapped = {a: b, b: a}
    gates[:] = [Gate(g.name, [swapped.get(q, q) for q in g.qubits], g.params) for g in gates]


FAULTS = (
    drop, turn_a_little, turn_backwards, swap_neighbours, reverse_a_cnot, insert_a_letter,
    exchange_wires,
)  # fmt: skip

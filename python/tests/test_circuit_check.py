"""The check that two circuits are one operator, judged by dense matrices."""

import math
import random
import time
from functools import lru_cache
from itertools import combinations

import numpy as np
import pytest
from support import gate_matrix, unitary

from zeltbraidwerk import Barrier, Circuit, Gate, Measure, errors
from zeltbraidwerk._circuit_check import same_operator

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


def matrix(n, gates, wires):
    """Of the circuit with its output q taken to wire ``wires[q]``."""
    order = [wires.index(q) for q in range(n)]
    outputs = unitary(Circuit(n, gates)).reshape([2] * n + [2**n])
    return outputs.transpose([*order, n]).reshape(2**n, 2**n)


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


@pytest.mark.parametrize("n", [1, 2, 3, 4, 5, 6])
def test_rewritten_circuits_are_accepted(n):
    for seed in range(30 if n < 5 else 4):
        rng = random.Random(seed)
        source = random_gates(rng, n, 20)
        gates, wires = rewritten(rng, n, source, 80)
        assert distance(unitary(Circuit(n, source)), matrix(n, gates, invert(wires))) < 1e-8
        assert same_operator(Circuit(n, source), Circuit(n, gates), wires)
        assert same_operator(Circuit(n, gates), Circuit(n, source), invert(wires))


def invert(wires):
    return [wires.index(q) for q in range(len(wires))]


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


@pytest.mark.parametrize(
    "mutate",
    [
        drop, turn_a_little, turn_backwards, swap_neighbours, reverse_a_cnot, insert_a_letter,
        exchange_wires,
    ],
)  # fmt: skip
def test_a_circuit_that_differs_is_refused(mutate):
    differing = 0
    for seed in range(60):
        rng = random.Random(seed)
        source = random_gates(rng, 3, 20, [*ANGLES[:6], 0.9, 2.2])
        source += [Gate.cnot(0, 1), Gate.rz(1, 0.2)]
        gates, wires = rewritten(rng, 3, source, 40)
        mutate(rng, gates)
        wanted = unitary(Circuit(3, source))
        if distance(wanted, matrix(3, gates, invert(wires))) > 1e-8:
            differing += 1
            assert not same_operator(Circuit(3, source), Circuit(3, gates), wires)
    assert differing > 20


def test_rotations_far_apart():
    """Gates on qubit 0, spread among thousands of rotations that commute with them, decide."""
    rng = random.Random(1)
    others = []
    for _ in range(2500):
        others += [Gate.cnot(*rng.sample(range(1, 14), 2)), Gate.rz(rng.randrange(1, 14), 0.3)]
    found = []
    for k in range(24):
        source = [Gate(rng.choice(("RX", "RZ")), 0, rng.choice((0.3, PI / 4))) for _ in range(4)]
        gates = list(source)
        if k % 3:
            swap_neighbours(rng, gates)
        gates, _ = rewritten(rng, 1, gates, 10)
        circuits = []
        for word in (source, gates):
            cuts = sorted(rng.choice((k, 4999 - k, rng.randrange(5000))) for _ in word)
            spread = []
            for gate, start, stop in zip(word, [0, *cuts], [*cuts, 5000], strict=False):
                spread += [*others[start:stop], gate]
            circuits.append(Circuit(14, spread + others[cuts[-1] :]))
        found.append(distance(unitary(Circuit(1, source)), unitary(Circuit(1, gates))) < 1e-8)
        assert same_operator(*circuits) == found[-1]
    assert 6 < sum(found) < 18


def test_a_permutation_has_a_direction():
    """Output q of the first circuit stands on wire permutation[q] of the second."""
    source = Circuit(3, [Gate.rx(0, 0.3), Gate.cnot(0, 1), Gate.rz(2, 0.7), Gate.h(2)])
    turn = [Gate.cnot(a, b) for a, b in ((0, 1), (1, 0), (0, 1), (1, 2), (2, 1), (1, 2))]
    for wires in ([2, 0, 1], [1, 2, 0]):
        gates = [*source, *turn]
        right = distance(unitary(source), matrix(3, gates, invert(wires))) < 1e-8
        assert same_operator(source, Circuit(3, gates), wires) == right
        assert right == (wires == [2, 0, 1])


@pytest.mark.parametrize(
    ("one", "other", "equal"),
    [
        ([("Z", "a"), ("Z", "b")], [("Z", "+ b a")], True),
        ([("Z", "a"), ("X", 0.0), ("Z", "UMINUS a")], [], True),
        ([("Z", "+ a UMINUS + b 0.5"), ("Z", "b")], [("Z", "+ a -0.5")], True),
        ([("Z", f"+ a {PI / 2!r}"), ("X", "b")], [("Z", "a"), ("Z", PI / 2), ("X", "b")], True),
        ([("X", PI), ("Z", "a")], [("Z", "UMINUS a"), ("X", -PI)], True),
        ([("X", PI / 2), ("Z", "a")], [("Y", "a"), ("X", PI / 2)], True),
        ([("Z", "a[0]")], [("Z", "a[1]")], False),
        ([("Z", "a"), ("Z", "a")], [("Z", "a")], False),
        ([("Z", "a")], [("Z", "UMINUS a")], False),
        ([("Z", "a"), ("X", "b")], [("X", "b"), ("Z", "a")], False),
        ([("Z", "+ a 1e-6")], [("Z", "a")], False),
        ([("Z", "a")], [("Z", 0.3)], False),
        ([("Z", PI / 2 - 5e-10), ("X", 0.3)], [("Z", PI / 2), ("X", 0.3)], True),
        ([("Z", PI / 2 + 5e-10), ("X", 0.3)], [("Z", PI / 2), ("X", 0.3)], True),
        ([("X", 0.3), ("Z", 5e-10), ("X", 0.4)], [("X", 0.7)], True),
        ([("Z", 0.3), ("X", 0.4)], [("Z", 0.3 + 5e-10), ("X", 0.4)], True),
        ([("Z", 4e-9)], [], False),
    ],
)
def test_symbols_and_angles_near_quarter_turns(one, other, equal):
    a, b = (Circuit(1, [Gate(f"R{p}", 0, angle) for p, angle in gates]) for gates in (one, other))
    assert same_operator(a, b) == same_operator(b, a) == equal


def test_large_circuits_take_seconds():
    rng = random.Random(1)
    gates = [random_gate(rng, 60, [PI / 4, -PI / 4, 0.3]) for _ in range(30000)]
    gates = [gate for gate in gates if gate.name != "XX" or len(gate.qubits) == 2]
    places = [k for k in range(1, len(gates)) if not {*gates[k].qubits} & {*gates[k - 1].qubits}]
    other = list(gates)
    for k in places:
        if not {*other[k].qubits} & {*other[k - 1].qubits}:
            other[k - 1 : k + 1] = other[k], other[k - 1]
    start = time.perf_counter()
    assert same_operator(Circuit(60, gates), Circuit(60, other))
    assert time.perf_counter() - start < 30
    at = next(k for k in range(15000, 30000) if other[k].params)
    change_angle(other, at, float(other[at].params[0]) + 1e-6)
    assert not same_operator(Circuit(60, gates), Circuit(60, other))


def test_what_is_compared():
    empty = Circuit(2)
    assert same_operator(Circuit(0), Circuit(0), [])
    assert same_operator(empty, Circuit(2, [Barrier((0, 1)), Gate("I", 0)]))
    for after, permutation, error, text in (
        (Circuit(3), None, errors.ShapeError, "after: got 3 qubits, wanted 2"),
        (Circuit(2, [Measure(0, 0)]), None, errors.NotUnitaryError, "after: got a measurement"),
        (empty, [0], errors.ShapeError, "permutation: got 1 wires, wanted 2"),
        (empty, [0, 0], errors.QubitError, "permutation: got .* distinct"),
        (empty, [0, 2], errors.QubitError, "permutation: got qubit 2"),
    ):
        with pytest.raises(error, match=text):
            same_operator(empty, after, permutation)

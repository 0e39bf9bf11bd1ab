"""The check by normal forms that two circuits are one operator, judged by dense matrices."""

import random
import time

import pytest
from rewriting import (
    ANGLES,
    FAULTS,
    PI,
    change_angle,
    distance,
    random_gate,
    random_gates,
    rewritten,
    swap_neighbours,
)
from support import unitary

from zeltbraidwerk import Barrier, Circuit, Gate, Measure, errors
from zeltbraidwerk._circuit_check import same_operator


def matrix(n, gates, wires):
    """Of the circuit with its output q taken to wire ``wires[q]``."""
    order = [wires.index(q) for q in range(n)]
    outputs = unitary(Circuit(n, gates)).reshape([2] * n + [2**n])
    return outputs.transpose([*order, n]).reshape(2**n, 2**n)


def invert(wires):
    return [wires.index(q) for q in range(len(wires))]


@pytest.mark.parametrize("n", [1, 2, 3, 4, 5, 6])
def test_rewritten_circuits_are_accepted(n):
    for seed in range(30 if n < 5 else 4):
        rng = random.Random(seed)
        source = random_gates(rng, n, 20)
        gates, wires = rewritten(rng, n, source, 80)
        assert distance(unitary(Circuit(n, source)), matrix(n, gates, invert(wires))) < 1e-8
        assert same_operator(Circuit(n, source), Circuit(n, gates), wires)
        assert same_operator(Circuit(n, gates), Circuit(n, source), invert(wires))


@pytest.mark.parametrize("mutate", FAULTS)
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
        (Circuit(2, [Gate("S*", 0)]), None, errors.GateError, r"got S\*"),
        (empty, [0], errors.ShapeError, "permutation: got 1 wires, wanted 2"),
        (empty, [0, 0], errors.QubitError, "permutation: got .* distinct"),
        (empty, [0, 2], errors.QubitError, "permutation: got qubit 2"),
    ):
        with pytest.raises(error, match=text):
            same_operator(empty, after, permutation)

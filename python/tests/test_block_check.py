"""The check of circuits with replaced blocks, judged by dense matrices."""

import random

import numpy as np
import pytest
from rewriting import (
    distance,
    drop,
    random_gates,
    rewritten,
    swap_neighbours,
    turn_a_little,
    turn_backwards,
)
from support import unitary

from zeltbraidwerk import Circuit, Gate
from zeltbraidwerk._block_check import same_blocks


def replaced_blocks(rng, n, gates, steps, mutate=None):
    """The circuit after random blocks were rewritten, the last one wrongly, and the log."""
    numbered, log = list(enumerate(gates)), []
    while len(log) < steps:
        at = rng.randrange(len(numbered))
        wires = rng.sample(range(n), 2)
        block = block_from(numbered, at, wires)
        if not any(len(gate.qubits) == 2 for _, gate in block):
            wires = wires[:1]
            block = block_from(numbered, at, wires)
        if not block:
            continue
        local = [Gate(g.name, [wires.index(q) for q in g.qubits], g.params) for _, g in block]
        made, outputs = rewritten(rng, len(wires), local, 12)
        if outputs == [1, 0]:
            made += [Gate.cnot(0, 1), Gate.cnot(1, 0), Gate.cnot(0, 1)]
        made = [Gate(gate.name, [wires[q] for q in gate.qubits], gate.params) for gate in made]
        if mutate and len(log) == steps - 1:
            made += [Gate.rz(wires[0], 0.3), Gate.rz(wires[0], -0.3)]
            mutate(rng, made)
        log.append((wires, [number for number, _ in block], made))
        first = len(gates) + sum(len(entry[2]) for entry in log[:-1])
        numbered[at:at] = enumerate(made, first)
        numbered = [entry for entry in numbered if entry not in block]
    return [gate for _, gate in numbered], log


def block_from(numbered, at, wires):
    """What acts on these wires alone from a place on, up to other gates on them."""
    block, free = [], set(wires)
    for number, gate in numbered[at:]:
        if free.issuperset(gate.qubits):
            block.append((number, gate))
        else:
            free -= set(gate.qubits)
    return block


def test_replaced_blocks_are_proven_with_the_phase():
    for seed in range(30):
        rng = random.Random(seed)
        source = random_gates(rng, 4, 25)
        gates, log = replaced_blocks(rng, 4, source, 15)
        before, after = Circuit(4, source), Circuit(4, gates)
        proof = same_blocks(before, after, log)
        assert proof
        assert np.allclose(unitary(after), np.exp(1j * proof.phase) * unitary(before))
        assert not same_blocks(before, Circuit(4, gates[:-1]), log)


@pytest.mark.parametrize("mutate", [drop, turn_a_little, turn_backwards, swap_neighbours])
def test_a_wrong_block_is_refused(mutate):
    differing = 0
    for seed in range(20):
        rng = random.Random(seed)
        source = random_gates(rng, 3, 20)
        gates, log = replaced_blocks(rng, 3, source, 3, mutate)
        before, after = Circuit(3, source), Circuit(3, gates)
        if distance(unitary(before), unitary(after)) > 1e-8:
            differing += 1
            assert not same_blocks(before, after, log)
    assert differing > 5


H, RX, CZ = Gate.h, Gate.rx, Gate.cz
R, C20, C21 = RX(0, 0.7), Gate.cnot(2, 0), Gate.cnot(2, 1)
PATH = [H(0), CZ(0, 2), CZ(2, 1), H(1)]
XX = Gate("XX", (0, 1), (0.3, 0.0))
MOVE = ((0, 1), [0, 0, 2], (), True)
TRIANGLE = [CZ(0, 1), Gate.cnot(0, 2), Gate.cnot(2, 1)]
FOUR = [H(0), CZ(0, 1), CZ(0, 1), H(1)]


@pytest.mark.parametrize(
    ("before", "log", "after", "proven"),
    [
        # Equal matrices, but other gates in between, or in another order.
        ([RX(0, 0.3), CZ(1, 0), RX(0, 0.4)], [([0], [0, 2], [R])], [R, CZ(1, 0)], False),
        ([RX(0, 0.3), RX(0, 0.4), H(0)], [([0], [0, 2], [R, H(0)])], [R, H(0), H(0)], False),
        ([H(0), RX(0, 0.7)], [([0], [1, 0], [R, H(0)])], [R, H(0)], False),
        ([CZ(0, 1), H(1), CZ(0, 1)], [([0, 1], [0, 2], [])], [H(1)], False),
        # Gates on two wires that others have to act between.
        (PATH, [([0, 1], [0, 3], [H(1), H(0)])], PATH, True),
        (PATH, [([0, 1], [0, 3], FOUR), ([0, 1], [4, 5, 6, 7], [H(0), H(1)])], PATH, False),
        (PATH, [([0, 1], [0], [Gate("Z", 1), H(0), Gate("Z", 1)])], PATH, False),
        # Numbers of gates that are gone, or that came.
        ([H(0), H(0)], [([0], [0, 1], [])], [], True),
        ([H(0), H(0)], [([0], [0, 0], [])], [H(0)], False),
        ([H(0)], [([0], [0], [H(0)]), ([0], [0], [H(0)])], [H(0)], False),
        ([H(0)], [([0], [0], [H(0)]), ([0], [1], [H(0)])], [H(0)], True),
        ([H(0)], [([0], [1], [])], [H(0)], False),
        ([H(0)], [([1], [], [H(1), H(1)]), ([1], [1, 2], [])], [H(0)], False),
        # Wires.
        ([H(0), H(0)], [([1], [0, 1], [])], [], False),
        ([H(0), H(0)], [([0, 1, 2], [0, 1], [])], [], True),
        ([H(0), H(0)], [([0, 1, 2], [0, 1], [H(2), H(2)])], [H(2), H(2)], False),
        ([CZ(0, 1), CZ(1, 2), CZ(0, 1)], [([2, 0, 1], [0, 1, 2], [CZ(2, 1)])], [CZ(2, 1)], True),
        ([CZ(0, 1), CZ(1, 2), CZ(0, 1)], [([2, 0, 1], [0, 1, 2], [CZ(2, 0)])], [CZ(2, 0)], False),
        # The second gate of three leads from the first on wire 0 to the last on wire 2.
        (TRIANGLE, [([0, 1, 2], [0, 2], [TRIANGLE[0], TRIANGLE[2]])], TRIANGLE, False),
        ([CZ(0, 1), CZ(1, 0)], [([0, 1], [0, 1], [])], [], True),
        ([CZ(0, 1)], [([0, 1], [0], [CZ(0, 2)])], [CZ(0, 2)], False),
        ([CZ(0, 1)], [([0, 0], [], [])], [CZ(0, 1)], False),
        # The last gate comes to stand after two others, past gates with its letter on each wire.
        ([CZ(0, 1), CZ(0, 2), CZ(0, 1)], [MOVE], [CZ(0, 1), CZ(0, 1), CZ(0, 2)], True),
        ([CZ(0, 1), RX(2, "a"), CZ(0, 1)], [MOVE], [CZ(0, 1), CZ(0, 1), RX(2, "a")], True),
        ([CZ(0, 1), C20, CZ(0, 1)], [MOVE], [CZ(0, 1), CZ(0, 1), C20], False),
        ([CZ(0, 1), H(0), XX], [MOVE], [CZ(0, 1), XX, H(0)], False),
        ([CZ(0, 1), H(1), CZ(0, 1)], [MOVE], [CZ(0, 1), CZ(0, 1), H(1)], False),
        ([CZ(0, 1), CZ(0, 2), CZ(0, 1)], [((0, 1), [0, 2], (), True)], [CZ(0, 1)], False),
        ([CZ(0, 1), CZ(0, 2), R], [MOVE], [CZ(0, 1), R, CZ(0, 2)], False),
        ([CZ(0, 1)], [MOVE], [CZ(0, 1)], False),
        # Symbols are kept outside of blocks.
        ([RX(0, "a"), H(0), H(0)], [([0], [1, 2], [])], [RX(0, "a")], True),
        ([RX(0, "a")], [([0], [0], [RX(0, "a")])], [RX(0, "a")], False),
        # Order along the wires decides, not the order of the list.
        ([H(0), CZ(1, 2)], [], [CZ(1, 2), H(0)], True),
        ([R, CZ(1, 0)], [], [CZ(1, 0), R], False),
        ([CZ(0, 1), CZ(0, 1)], [], [CZ(0, 1), CZ(1, 0)], False),
        ([C21, CZ(0, 1), C21], [], [CZ(0, 1), C21, C21], False),
    ],
)
def test_a_log_of_blocks(before, log, after, proven):
    assert bool(same_blocks(Circuit(3, before), Circuit(3, after), log)) == proven


def test_a_moved_gate_keeps_the_operator():
    """After a move that is proven, the gates that the two others wait for come first, then the
    moved one, then the rest."""
    kinds, accepted = ("CNOT", "CZ", "RZ", "RX", "S", "H"), 0
    for seed in range(6000):
        rng = random.Random(seed)
        gates = []
        for _ in range(7):
            kind = rng.choice((*kinds[:2] * 3, *kinds[2:]))
            qubits = rng.sample(range(3), 2 if kind in kinds[:2] else 1)
            gates.append(Gate(kind, qubits, 0.3 if kind[0] == "R" else ()))
        numbers = [*rng.choices(range(6), k=2), rng.randrange(1, 7)]
        last = numbers[2]
        first = waited_for(gates, numbers[:2])
        moved = [gate for k, gate in enumerate(gates) if k in first]
        moved += [gates[last]] * (last not in first)
        moved += [gate for k, gate in enumerate(gates) if k not in first and k != last]
        before, after = Circuit(3, gates), Circuit(3, moved)
        if same_blocks(before, after, [((0, 1), numbers, (), True)]):
            accepted += moved != gates
            assert distance(unitary(before), unitary(after)) < 1e-8
    assert accepted > 20


def waited_for(gates, numbers):
    """These gates and all that act before them on the way to them."""
    found, wires = set(numbers), set()
    for k in reversed(range(len(gates))):
        if k in found or (wires & set(gates[k].qubits)):
            found.add(k)
            wires |= set(gates[k].qubits)
    return found

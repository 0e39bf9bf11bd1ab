"""The circuits of the gallery against the operators that they are decompositions of."""

import math

import numpy as np
import pytest
from support import rotation_matrix, same_up_to_phase, unitary

from zeltbraidwerk import Circuit, Gate, gallery
from zeltbraidwerk._gallery_circuits import multiplexed


@pytest.mark.parametrize("n", range(6))
def test_fourier_transform(n):
    powers = np.outer(np.arange(2**n), np.arange(2**n))
    wanted = np.exp(2j * math.pi * powers / 2**n) / math.sqrt(2**n)
    assert same_up_to_phase(unitary(gallery.qft(n)), wanted)
    reversed_rows = [int(f"{k:0{n}b}"[::-1], 2) for k in range(2**n)]
    assert same_up_to_phase(unitary(gallery.qft(n, swaps=False)), wanted[reversed_rows])


@pytest.mark.parametrize(
    ("bits", "phase", "found", "least"),
    [
        (4, 5 / 16, 5, 1), (4, -5 / 16, 11, 1), (1, 0.5, 1, 1), (3, 2.0, 0, 1), (0, 0.3, 0, 1),
        (5, 0.3, 10, 0.4), (4, 1.99, 0, 0.4),
    ],
)  # fmt: skip
def test_phase_estimation_finds_the_phase(bits, phase, found, least):
    odds = np.abs(unitary(gallery.phase_estimation(bits, phase))[:, 0]) ** 2
    assert np.isclose(odds[1::2].sum(), 1)  # the eigenstate stays
    assert odds[2 * found + 1] > least - 1e-9


@pytest.mark.parametrize("name", ["RY", "RZ"])
@pytest.mark.parametrize("controls", [[], [0], [1, 0], [0, 2, 1]])
def test_multiplexed_rotations(name, controls):
    n, angles = len(controls) + 1, np.random.default_rng(1).uniform(-4, 4, 2 ** len(controls))
    matrix = unitary(Circuit(n, multiplexed(name, controls, n - 1, angles)))
    wanted = np.zeros_like(matrix, dtype=complex)
    for word in range(2 ** (n - 1)):  # qubit 0 is its highest bit
        k = sum((word >> (n - 2 - q) & 1) << j for j, q in enumerate(controls))
        block = slice(2 * word, 2 * word + 2)
        wanted[block, block] = rotation_matrix(name[1], angles[k])
    assert np.allclose(matrix, wanted)


def test_controlled_rotations_never_turn_the_first_qubit():
    matrix = unitary(gallery.controlled_rotations(3))
    assert np.allclose(matrix[4:, :4], 0)
    assert np.allclose(matrix[:4, 4:], 0)
    assert not np.allclose(np.abs(matrix[:4, :4]), np.abs(matrix[4:, 4:]))
    assert gallery.controlled_rotations(3, seed=2) != gallery.controlled_rotations(3)
    assert len(gallery.controlled_rotations(1)) == len(gallery.controlled_rotations(0)) == 0


@pytest.mark.parametrize(("entangler", "n", "pairs"), [
    ("linear", 4, [(0, 1), (1, 2), (2, 3)]), ("ring", 4, [(0, 1), (1, 2), (2, 3), (3, 0)]),
    ("full", 4, [(0, 1), (0, 2), (0, 3), (1, 2), (1, 3), (2, 3)]), ("ring", 2, [(0, 1)]),
    ("ring", 1, []), ("linear", 0, []),
])  # fmt: skip
def test_hardware_efficient_ansatz(entangler, n, pairs):
    numbers = gallery.hardware_efficient(n, 2, entangler=entangler, seed=3)
    symbols = gallery.hardware_efficient(n, 2, entangler=entangler, symbolic=True)
    for circuit in (numbers, symbols):
        layer = [(name, (q,)) for q in range(n) for name in ("RY", "RZ")]
        cnots = [("CNOT", pair) for pair in pairs]
        wanted = layer + 2 * (cnots + layer)
        assert [(gate.name, gate.qubits) for gate in circuit] == wanted
    angles = [str(gate.params[0]) for gate in symbols if gate.params]
    assert angles == [f"theta[{k}]" for k in range(6 * n)]
    assert len({float(gate.params[0]) for gate in numbers if gate.params}) == 6 * n


def test_qaoa_has_degree_three_and_one_angle_for_each_kind_and_layer():
    circuit = gallery.qaoa(8, 3, seed=2)
    gates = list(circuit)
    for layer in range(3):
        start = 8 + layer * 44
        edges = [gates[k].qubits for k in range(start, start + 36, 3)]
        assert sorted(q for edge in edges for q in edge) == sorted(3 * [*range(8)])
        assert len({frozenset(edge) for edge in edges}) == 12
        for kind, count in (("RZ", 12), ("RX", 8)):
            angles = [g.params[0] for g in gates[start : start + 44] if g.name == kind]
            assert angles == [angles[0]] * count
    assert len({gate.params[0] for gate in gates if gate.params}) == 6
    mixer, last = gates[-8:], gates[-11:-8]
    assert [gate.name for gate in last] == ["CNOT", "RZ", "CNOT"]
    wanted = rotation_matrix("ZZ", float(last[1].params[0]))
    a, _ = last[0].qubits
    pair = [Gate(g.name, [int(q != a) for q in g.qubits], g.params) for g in last]
    assert same_up_to_phase(unitary(Circuit(2, pair)), wanted)
    assert [gate.qubits for gate in mixer] == [(q,) for q in range(8)]

"""Whole circuits of the gallery, of Clifford gates and rotations as textbooks write them."""

from __future__ import annotations

import math
import random
from collections.abc import Iterator, Sequence
from itertools import combinations
from typing import Literal

from zeltbraidwerk import _validate
from zeltbraidwerk._gallery_draws import MOST, even, number_of, regular_edges, room, seeded
from zeltbraidwerk._header import read_gate
from zeltbraidwerk.circuits import Circuit
from zeltbraidwerk.gates import Gate

_MOST_CONTROLS = 3  # of a multiplexed rotation


def hardware_efficient(
    n: int,
    layers: int,
    *,
    entangler: Literal["linear", "ring", "full"] = "linear",
    seed: int = 1,
    symbolic: bool = False,
) -> Circuit:
    """A hardware-efficient ansatz (A. Kandala et al., Nature 549, 2017): each layer is RY and RZ on
    every qubit, then CNOTs; RY and RZ on every qubit end the circuit.

    The CNOTs join neighbours on a line, also the last qubit with the first ("ring"), or each pair
    ("full"). Angles are uniform from -pi to pi, or with ``symbolic`` the names theta[0],
    theta[1], ... in order.

    >>> hardware_efficient(4, 2)
    Circuit(4 qubits, 30 gates, 6 two-qubit, depth 11)
    >>> print(hardware_efficient(2, 1, symbolic=True).draw())
    q0: ──RY(theta[0])──RZ(theta[1])──●──RY(theta[4])──RZ(theta[5])──
                                      │
    q1: ──RY(theta[2])──RZ(theta[3])──⊕──RY(theta[6])──RZ(theta[7])──
    """
    n, layers = _validate.qubit_count(n), number_of(layers, "layers")
    chosen = _validate.choice(entangler, "entangler", ("linear", "ring", "full"))
    rng, symbolic = seeded(seed), _validate.flag(symbolic, "symbolic")
    room("n, layers", n, (layers + 1) * (2 * n + (n * n / 2 if chosen == "full" else n)))
    pairs = [(q, q + 1) for q in range(n - 1)]
    if chosen == "full":
        pairs = list(combinations(range(n), 2))
    if chosen == "ring" and n > 2:
        pairs.append((n - 1, 0))
    gates: list[Gate] = []
    for layer in range(layers + 1):
        for q in range(n):
            for k, name in enumerate(("RY", "RZ")):
                number = 2 * (layer * n + q) + k
                angle = f"theta[{number}]" if symbolic else _drawn(rng)
                gates.append(Gate(name, q, angle))
        if layer < layers:
            gates += [Gate.cnot(*pair) for pair in pairs]
    return Circuit(n, gates)


def controlled_rotations(n: int, seed: int = 1) -> Circuit:
    """Controlled and multiplexed rotations, decomposed into CNOTs and rotations.

    Each qubit but the first gets a controlled RY, RZ and U3, with the qubit before it as control,
    and then a multiplexed RY and RZ: up to three qubits before it select the angle (M. Mottonen,
    J. Vartiainen, V. Bergholm, M. Salomaa, Physical Review Letters 93, 2004). Angles are uniform
    from -pi to pi.

    >>> controlled_rotations(4)
    Circuit(4 qubits, 110 gates, 46 two-qubit, depth 105)
    """
    n, rng = _validate.qubit_count(n), seeded(seed)
    room("n", n, 50 * n)
    gates: list[Gate] = []
    for target in range(1, n):
        for name, angles in (("cry", 1), ("crz", 1), ("cu3", 3)):
            gates += _read(name, (target - 1, target), [_drawn(rng) for _ in range(angles)])
        controls = range(max(0, target - _MOST_CONTROLS), target)
        for name in ("RY", "RZ"):
            drawn = [_drawn(rng) for _ in range(2 ** len(controls))]
            gates += multiplexed(name, controls, target, drawn)
    return Circuit(n, gates)


def multiplexed(
    name: str, controls: Sequence[int], target: int, angles: Sequence[float]
) -> Iterator[Gate]:
    """The rotation RY or RZ by ``angles[k]`` where the controls hold k, bit j of k on
    ``controls[j]``: a rotation and a CNOT for each k, in the order of a Gray code."""
    for place in range(len(angles)):
        gray = place ^ place >> 1
        signed = (-a if (k & gray).bit_count() % 2 else a for k, a in enumerate(angles))
        yield Gate(name, target, sum(signed) / len(angles))
        # The bit in which the next word of the code differs; at the end, the top one.
        changed = (place + 1 & -(place + 1)).bit_length() - 1
        if controls:
            yield Gate.cnot(controls[min(changed, len(controls) - 1)], target)


def qft(n: int, swaps: bool = True) -> Circuit:
    """The quantum Fourier transform, qubit 0 the highest bit: ``|j>`` becomes the sum over k of
    exp(2 pi i j k / 2^n) ``|k>`` / 2^(n/2).

    Controlled phases are two CNOTs and three PH each, and the qubits are reversed at the end by
    three CNOTs for each pair, unless ``swaps`` is False.

    >>> qft(4)
    Circuit(4 qubits, 40 gates, 18 two-qubit, depth 25)
    """
    n, swaps = _validate.qubit_count(n), _validate.flag(swaps, "swaps")
    room("n", n, 2.5 * n * n)
    gates: list[Gate] = []
    for q in range(n):
        gates.append(Gate.h(q))
        for other in range(q + 1, n):
            gates += _read("cp", (other, q), [math.ldexp(math.pi, q - other)])
    for q in range(n // 2 if swaps else 0):
        gates += _read("swap", (q, n - 1 - q), [])
    return Circuit(n, gates)


def phase_estimation(bits: int, phase: float | None = None, seed: int = 1) -> Circuit:
    """Phase estimation with ``bits`` qubits that count, of a phase gate on one more qubit, its
    eigenstate ``|1>``: controlled powers of the gate and the inverse of :func:`qft`.

    The gate is diag(1, exp(2 pi i phase)), with the phase in turns, by default drawn uniformly
    from 0 to 1. From ``|0...0>``, the qubits that count end in the number phase 2^bits, modulo
    2^bits, where that is an integer, and otherwise most likely in the nearest one; qubit 0 is the
    highest bit.

    >>> phase_estimation(3, 0.375)
    Circuit(4 qubits, 40 gates, 15 two-qubit, depth 30)
    """
    bits, rng = number_of(bits, "bits"), seeded(seed)
    room("bits", bits, 7 * bits * bits)
    turns = math.fmod(rng.random() if phase is None else _validate.angle(phase, "phase"), 1.0)
    gates = [Gate("X", bits), *(Gate.h(q) for q in range(bits))]
    for q in reversed(range(bits)):
        gates += _read("cp", (q, bits), [2 * math.pi * turns])
        turns = math.fmod(2 * turns, 1.0)
    return Circuit(bits + 1, [*gates, *qft(bits).inverse()])


def qaoa(n: int, layers: int, seed: int = 1) -> Circuit:
    """QAOA (E. Farhi, J. Goldstone, S. Gutmann, arXiv:1411.4028, 2014) for the largest cut of a
    random graph of degree three, n even and at least 4.

    H on every qubit; then in each layer CNOT, RZ, CNOT for each edge and RX on every qubit, with
    one angle each per layer, uniform from -pi to pi.

    >>> qaoa(6, 2)
    Circuit(6 qubits, 72 gates, 36 two-qubit, depth 39)
    """
    n, layers, rng = even(n, "n", 4, MOST), number_of(layers, "layers"), seeded(seed)
    room("n, layers", n, layers * 6 * n + 4 * n)
    edges = regular_edges(n, 3, rng)
    gates = [Gate.h(q) for q in range(n)]
    for _ in range(layers):
        gamma, beta = _drawn(rng), _drawn(rng)
        for a, b in edges:
            gates += [Gate.cnot(a, b), Gate.rz(b, gamma), Gate.cnot(a, b)]
        gates += [Gate.rx(q, beta) for q in range(n)]
    return Circuit(n, gates)


def _drawn(rng: random.Random) -> float:
    return rng.uniform(-math.pi, math.pi)


def _read(name: str, qubits: Sequence[int], angles: Sequence[float]) -> list[Gate]:
    """A gate of the header of OpenQASM, decomposed as the readers do."""
    return [Gate._trusted(*plain) for plain in read_gate(name, qubits, angles)]

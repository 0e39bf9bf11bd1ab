"""How many two-qubit gates, or layers of them, random inputs take whatever the method.

There are only so many circuits. Where those of fewer than k gates are less than a hundredth of the
operators on n qubits, 99 of 100 random operators take k gates or more. Circuits that differ in the
order of gates that commute are counted once: their numbers by length are the coefficients of
1 / M(x), with M the sum of (-x)^j over the sets of j gates that commute with each other
(P. Cartier, D. Foata, "Problèmes combinatoires de commutation et réarrangements", 1969). So for
each x below the first root of M there are at most x^-k / M(x) circuits of up to k gates.

Unlike the bounds that results carry, these hold for most inputs and for none in particular.
"""

from __future__ import annotations

from collections.abc import Callable
from math import comb, factorial, lgamma, log, log2

import mpmath as mp
import numpy as np
import numpy.typing as npt

import zeltbraidwerk as zb

RARE = log2(100)  # at most one input in so many may take fewer


def maps(n: int, free: bool) -> int:
    """CNOTs of invertible matrices."""
    return _fewest(_all_maps(n, free), lambda x: _commuting_cnots(n, x), 2 * n - 3)


def operators(n: int) -> int:
    """Gates of Clifford operators, up to gates on one qubit, outputs anywhere. A gate is one of
    nine on its qubits, by a Pauli letter on each."""
    return _fewest(_all_operators(n), lambda x: _commuting_letters(n, x), 12 * n - 16)


def graph_states(n: int) -> int:
    """The same for graph states, and with them for all stabilizer states."""
    return _fewest(_all_states(n), lambda x: _commuting_letters(n, x), 12 * n - 16)


def maps_on(device: zb.Device) -> int:
    """CNOTs of matrices on the edges of a device, outputs in place."""
    degree = max(sum(v in edge for edge in device.edges) for v in range(device.n))
    return _fewest(_all_maps(device.n, False), lambda x: _commuting_on(device, x), 2 * degree - 1)


def map_layers(n: int, free: bool) -> int:
    """Layers of CNOTs."""
    return _least(_all_maps(n, free), _layers(n, 2))


def operator_layers(n: int) -> int:
    """Layers of Clifford operators."""
    return _least(_all_operators(n), _layers(n, 9))


def graph_state_layers(n: int) -> int:
    """Layers of graph states."""
    return _least(_all_states(n), _layers(n, 9))


def _all_maps(n: int, free: bool) -> float:
    """log2 of their number."""
    number = n * n + sum(log2(1 - 2.0**-i) for i in range(1, n + 1))
    return number - (log2(factorial(n)) if free else 0)


def _all_operators(n: int) -> float:
    number = n * n + sum(2 * i + log2(1 - 4.0**-i) for i in range(1, n + 1))
    return number - n * log2(6) - log2(factorial(n))


def _all_states(n: int) -> float:
    return sum(log2(1 + 2.0**-i) + i for i in range(1, n + 1)) - n * log2(6)


def _commuting_cnots(n: int, x: mp.mpf) -> mp.mpf:
    """CNOTs commute where each qubit is a control alone, one of s, or a target alone; one without a
    gate is counted as both, and taken off once."""
    return mp.fsum(comb(n, s) * ((1 - x) ** s - 1) ** (n - s) for s in range(n + 1))


def _commuting_letters(n: int, x: mp.mpf) -> mp.mpf:
    """Gates commute where they agree on a letter of each qubit, one of three; what a qubit without
    a gate is counted too often is taken off."""
    return mp.fsum(
        comb(n, m) * 3**m * (-2) ** (n - m) * (1 - x) ** comb(m, 2) for m in range(n + 1)
    )


def _commuting_on(device: zb.Device, x: mp.mpf) -> mp.mpf:
    """Edge by edge: a qubit has no gate yet, or is a control, or a target. The qubits whose edges
    have begun but not ended are axes of an array."""
    last = {v: k for k, edge in enumerate(device.edges) for v in edge}
    axes: list[int] = []
    sums: npt.NDArray[np.float64] = np.ones(())
    for k, edge in enumerate(device.edges):
        for v in edge:
            if v not in axes:
                axes.append(v)
                sums = np.stack([sums, np.zeros_like(sums), np.zeros_like(sums)], axis=-1)
        ends = [axes.index(v) for v in edge]
        moved = np.moveaxis(sums, ends, (0, 1)).copy()
        for a, b in ((1, 2), (2, 1)):
            moved[a, b] -= float(x) * (moved[0, 0] + moved[a, 0] + moved[0, b] + moved[a, b])
        sums = np.moveaxis(moved, (0, 1), ends)
        for v in edge:
            if last[v] == k:
                sums = sums.sum(axis=axes.index(v))
                axes.remove(v)
    return mp.mpf(float(sums))


def _fewest(number: float, commuting: Callable[[mp.mpf], mp.mpf], in_conflict: int) -> int:
    """The most k that x^-k / M(x) circuits allow, over x in steps from where M is known to be
    positive (J. Shearer, "On a problem of Spencer", 1985); `in_conflict` is the number of gates
    that a gate does not commute with."""
    d = in_conflict
    best = 0.0
    with mp.workprec(4096):
        x = (mp.mpf(d - 1) / d) ** (d - 1) / d
        while (m := commuting(x)) > 0:
            best = max(best, float((number - RARE + mp.log(m, 2)) / -mp.log(x, 2)))
            x *= mp.mpf("1.01")
    return int(best) + 1


def _layers(n: int, kinds: int) -> float:
    """log2 of the number of sets of gates on disjoint pairs of qubits."""
    pairs = (
        (lgamma(n + 1) - lgamma(j + 1) - lgamma(n - 2 * j + 1)) / log(2) + j * log2(kinds / 2)
        for j in range(n // 2 + 1)
    )
    return float(np.logaddexp2.reduce(list(pairs)))


def _least(number: float, each: float) -> int:
    return int((number - RARE) / each) + 1

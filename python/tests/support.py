"""Oracles and generators that the tests share. None of them calls the library's own synthesis."""

import numpy as np
from hypothesis import strategies as st


def replay(n, gates):
    """The matrix of a list of CNOTs, row operation by row operation."""
    matrix = np.eye(n, dtype=bool)
    for control, target in gates:
        matrix[target] ^= matrix[control]
    return matrix


def product(a, b):
    """Over GF(2)."""
    return np.asarray(a, dtype=int) @ np.asarray(b, dtype=int) % 2 == 1


@st.composite
def cnots(draw, n):
    """A list of CNOTs on n qubits; empty where there is no pair of qubits."""
    if n < 2:
        return []
    pairs = st.tuples(st.integers(0, n - 1), st.integers(0, n - 2))
    return [(a, b + (b >= a)) for a, b in draw(st.lists(pairs, max_size=4 * n))]


@st.composite
def invertible(draw, most=12):
    """An invertible matrix: a shuffled identity after random row operations."""
    n = draw(st.integers(0, most))
    order = draw(st.permutations(range(n)))
    return replay(n, draw(cnots(n)))[list(order)]


@st.composite
def device_edges(draw, least=1, most=8):
    """(n, edges) of a connected graph: a random tree with more edges thrown in."""
    n = draw(st.integers(least, most))
    tree = [(draw(st.integers(0, v - 1)), v) for v in range(1, n)]
    pairs = [(a, b) for b in range(n) for a in range(b)]
    more = draw(st.lists(st.sampled_from(pairs), max_size=n)) if pairs else []
    names = draw(st.permutations(range(n)))
    return n, [(names[a], names[b]) for a, b in tree + more]

"""The shortest circuits found so far for mixing layers of ciphers, and how to compute them
again."""

from __future__ import annotations

import random
from collections.abc import Sequence
from dataclasses import dataclass
from functools import reduce
from operator import xor

from zeltbraidwerk import gallery, linear
from zeltbraidwerk._results import Objective, Permutation
from zeltbraidwerk.linear import LinearSynthesis


@dataclass(frozen=True)
class Layer:
    """A matrix over a field of 2^bits elements, as the cipher defines it. Element x is the bits
    of an int; the polynomial is that by which products are reduced."""

    rows: Sequence[Sequence[int]]
    polynomial: int

    def times(self, words: Sequence[int]) -> list[int]:
        return [reduce(xor, map(self._product, row, words)) for row in self.rows]

    @property
    def bits(self) -> int:
        return self.polynomial.bit_length() - 1

    def _product(self, a: int, b: int) -> int:
        product = 0
        while b:
            product ^= a * (b & 1)
            b >>= 1
            a <<= 1
            if a >> self.bits:
                a ^= self.polynomial
        return product


def _circulant(*first: int) -> list[list[int]]:
    size = len(first)
    return [[first[(c - r) % size] for c in range(size)] for r in range(size)]


def _hadamard(*first: int) -> list[list[int]]:
    size = len(first)
    return [[first[r ^ c] for c in range(size)] for r in range(size)]


LAYERS = {
    "aes_mixcolumns": Layer(_circulant(2, 3, 1, 1), 0x11B),
    "aes_inv_mixcolumns": Layer(_circulant(0xE, 0xB, 0xD, 9), 0x11B),
    "aes_small_scale": Layer(_circulant(2, 3, 1, 1), 0x13),
    "anubis": Layer(_hadamard(1, 2, 4, 6), 0x11D),
    "clefia_m1": Layer(_hadamard(1, 8, 2, 0xA), 0x11D),
    "joltik": Layer(_hadamard(1, 4, 9, 0xD), 0x13),
    "khazad": Layer(_hadamard(1, 3, 4, 5, 6, 8, 0xB, 7), 0x11D),
}


@dataclass(frozen=True)
class Record:
    layer: str
    published: str  # the best published circuit that we know of
    seed: int
    steps: int
    permutation: Permutation = "free"
    objective: Objective = "count"

    def find(self) -> LinearSynthesis:
        return linear.synthesize(
            gallery.cipher_layers()[self.layer], method="search", permutation=self.permutation,
            objective=self.objective, seed=self.seed, steps=self.steps,
        )  # fmt: skip


RECORDS = (
    Record("aes_mixcolumns", "91", 2, 6_000_000),
    Record("aes_inv_mixcolumns", "91", 1, 6_000_000),
    Record("aes_mixcolumns", "-", 1, 5_000_000, "exact"),
    Record("aes_mixcolumns", "-", 2, 1_500_000, "free", "depth"),
    Record("aes_mixcolumns", "9 layers, 111", 1, 1_000_000, "exact", "depth"),
    Record("aes_small_scale", "43", 1, 1_000_000),
    Record("joltik", "44", 1, 4_000_000),
    Record("anubis", "99", 1, 8_000_000),
    Record("clefia_m1", "103", 4, 6_000_000),
    Record("khazad", "366", 5, 30_000_000),
)


def keeps_to_definition(result: LinearSynthesis, layer: str, samples: int = 64) -> bool:
    """Compares the circuit with the arithmetic of the cipher, on unit vectors and random words."""
    definition = LAYERS[layer]
    bits, size = definition.bits, len(definition.rows)
    draw = random.Random(1)
    states = [1 << k for k in range(bits * size)]
    states += [draw.getrandbits(bits * size) for _ in range(samples)]
    for state in states:
        words = [state >> (bits * k) & ((1 << bits) - 1) for k in range(size)]
        wires = state
        for control, target in result.circuit:
            wires ^= (wires >> control & 1) << target
        outputs = sum((wires >> wire & 1) << r for r, wire in enumerate(result.permutation))
        wanted = sum(word << (bits * k) for k, word in enumerate(definition.times(words)))
        if outputs != wanted:
            return False
    return True

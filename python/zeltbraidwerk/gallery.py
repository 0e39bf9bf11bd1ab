"""Matrices worth synthesising: linear layers of ciphers from their definitions, random ones.

All are square numpy arrays of bool in the convention of the package: row r marks the inputs whose
XOR stands on output r. The words of a cipher's state follow each other, lowest bit first.
"""

from __future__ import annotations

import random
import re
from pathlib import Path

import numpy as np
import numpy.typing as npt

from zeltbraidwerk.circuits import Circuit

BoolArray = npt.NDArray[np.bool_]


def circulant(first_row: list[int], polynomial: int) -> BoolArray:
    """The circulant of field elements, each row the one above turned right by one place.

    Entries are elements of GF(2)[x] modulo ``polynomial``, bit k the coefficient of x^k.

    >>> circulant([2, 3], 0b111).astype(int)
    array([[0, 1, 1, 1],
           [1, 1, 1, 0],
           [1, 1, 0, 1],
           [1, 0, 1, 1]])
    """
    size = len(first_row)
    return _over_bits(
        [[first_row[(c - r) % size] for c in range(size)] for r in range(size)], polynomial
    )


def hadamard(first_row: list[int], polynomial: int) -> BoolArray:
    """The Hadamard matrix of field elements: entry (r, c) is element r XOR c of the first row."""
    size = len(first_row)
    return _over_bits([[first_row[r ^ c] for c in range(size)] for r in range(size)], polynomial)


def aes_mixcolumns() -> BoolArray:
    """MixColumns of AES, 32 by 32: circulant 2 3 1 1 over x^8 + x^4 + x^3 + x + 1."""
    return circulant([2, 3, 1, 1], 0x11B)


def cipher_layers() -> dict[str, BoolArray]:
    """Mixing layers of block ciphers and hashes, 16 to 64 bits, by name."""
    return {
        "aes_mixcolumns": aes_mixcolumns(),
        "aes_inv_mixcolumns": circulant([0xE, 0xB, 0xD, 0x9], 0x11B),
        "aes_small_scale": circulant([2, 3, 1, 1], 0x13),
        "anubis": hadamard([1, 2, 4, 6], 0x11D),
        "clefia_m1": hadamard([1, 8, 2, 0xA], 0x11D),
        "joltik": hadamard([1, 4, 9, 0xD], 0x13),
        "khazad": hadamard([1, 3, 4, 5, 6, 8, 0xB, 7], 0x11D),
        "whirlpool": circulant([1, 1, 4, 1, 8, 5, 2, 9], 0x11D),
    }


def random_invertible(n: int, count: int, seed: int | None = None) -> list[BoolArray]:
    """``count`` invertible n by n matrices, uniform; the same ones for the same seed.

    >>> random_invertible(3, 1)[0].astype(int)
    array([[1, 0, 1],
           [1, 1, 1],
           [1, 1, 0]])
    """
    rng = random.Random(7000 + n if seed is None else seed)
    found: list[BoolArray] = []
    while len(found) < count:
        rows = [rng.getrandbits(n) for _ in range(n)] if n else []
        if rank(rows) == n:
            bits = [[row >> c & 1 for c in range(n)] for row in rows]
            found.append(np.array(bits, dtype=bool).reshape(n, n))
    return found


def multiplier() -> Circuit:
    """Multiplication in GF(16) with the Hadamards moved out: CCZs, taken apart, and three CNOTs.

    The Toffolis' targets carry a Hadamard at each end of the circuit alone; between the two, a
    Toffoli is a CCZ, and a CNOT from target to target is turned round.
    """
    text = (Path(__file__).parent / "data" / "gf16_mult.qasm").read_text(encoding="ascii")
    text = re.sub(r"\bcx (\S+),(\S+);", r"cx \2,\1;", text).replace("ccx", "ccz")
    # A CCZ is taken apart with Hadamards around its Toffoli, which cancel those within.
    circuit = Circuit.from_qasm(text)
    return Circuit(circuit.n, [gate for gate in circuit if gate.name != "H"])


def rank(rows: list[int]) -> int:
    """Rank over GF(2) of rows written as ints, a bit a column."""
    basis: dict[int, int] = {}
    for row in rows:
        while row and (top := row.bit_length()) in basis:
            row ^= basis[top]
        if row:
            basis[row.bit_length()] = row
    return len(basis)


def _over_bits(elements: list[list[int]], polynomial: int) -> BoolArray:
    """Replaces every field element by the matrix over GF(2) of the multiplication by it."""
    return np.block([[_multiplication(e, polynomial) for e in row] for row in elements])


def _multiplication(element: int, polynomial: int) -> BoolArray:
    degree = polynomial.bit_length() - 1
    columns = []
    for _ in range(degree):
        columns.append([bool(element >> bit & 1) for bit in range(degree)])
        element <<= 1
        if element >> degree:
            element ^= polynomial
    return np.array(columns, dtype=bool).T

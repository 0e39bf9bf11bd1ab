"""Inputs worth synthesising: matrices, Pauli rotations, graphs, codes and circuits, each from its
definition.

Matrices are linear layers of ciphers, and random ones. All are square numpy arrays of bool in the
convention of the package: row r marks the inputs whose XOR stands on output r. The words of a
cipher's state follow each other, lowest bit first.
"""

from __future__ import annotations

import math
import random
import re
from collections.abc import Iterator, Sequence
from pathlib import Path
from typing import Any

import numpy as np
import numpy.typing as npt

from zeltbraidwerk import _validate, errors
from zeltbraidwerk._gallery_circuits import (
    controlled_rotations,
    hardware_efficient,
    phase_estimation,
    qaoa,
    qft,
)
from zeltbraidwerk._gallery_codes import stabilizer_codes, surface_code
from zeltbraidwerk._gallery_css import (
    bicycle_code,
    carbon_code,
    color_code,
    color_code_17,
    golay_code,
    logical_zero,
    steane_code,
    toric_code,
)
from zeltbraidwerk._gallery_draws import MOST, even, number_of, regular_edges, room, seeded, strings
from zeltbraidwerk.circuits import Circuit
from zeltbraidwerk.clifford import CliffordTableau
from zeltbraidwerk.gates import Gate

__all__ = [
    "aes_mixcolumns",
    "bicycle_code",
    "carbon_code",
    "cipher_layers",
    "circulant",
    "color_code",
    "color_code_17",
    "controlled_rotations",
    "golay_code",
    "hadamard",
    "hardware_efficient",
    "heisenberg",
    "ising_chain",
    "logical_zero",
    "low_autocorrelation",
    "maxcut",
    "maxcut_regular",
    "multiplier",
    "phase_estimation",
    "qaoa",
    "qft",
    "random_clifford",
    "random_graph",
    "random_invertible",
    "random_parities",
    "random_paulis",
    "rank",
    "stabilizer_codes",
    "steane_code",
    "surface_code",
    "toric_code",
    "uccsd",
]

BoolArray = npt.NDArray[np.bool_]


def circulant(first_row: list[int], polynomial: int) -> BoolArray:
    """The circulant matrix of field elements: each row is the one above rotated right by one place.

    Entries are elements of GF(2)[x] modulo ``polynomial``, of degree at most 64, bit k the
    coefficient of x^k.

    >>> circulant([2, 3], 0b111).astype(int)
    array([[0, 1, 1, 1],
           [1, 1, 1, 0],
           [1, 1, 0, 1],
           [1, 0, 1, 1]])
    """
    row = _elements(first_row, polynomial)
    size = len(row)
    return _over_bits([[row[(c - r) % size] for c in range(size)] for r in range(size)], polynomial)


def hadamard(first_row: list[int], polynomial: int) -> BoolArray:
    """The Hadamard matrix of field elements: entry (r, c) is element r XOR c of the first row,
    whose length is a power of two."""
    row = _elements(first_row, polynomial)
    size = len(row)
    if size & (size - 1):
        raise errors.ShapeError(f"first_row: got {size} elements, wanted a power of two")
    return _over_bits([[row[r ^ c] for c in range(size)] for r in range(size)], polynomial)


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
    n, count = _validate.qubit_count(n), number_of(count, "count")
    room("n, count", n, text=count * (n * n + 200) + 10 * n * n)
    rng = seeded(7000 + n if seed is None else seed)
    found: list[BoolArray] = []
    while len(found) < count:
        rows = [rng.getrandbits(n) for _ in range(n)] if n else []
        if rank(rows) == n:
            bits = [[row >> c & 1 for c in range(n)] for row in rows]
            found.append(np.array(bits, dtype=bool).reshape(n, n))
    return found


def uccsd(
    qubits: int, electrons: int, amplitudes: Sequence[float] | None = None
) -> dict[str, float]:
    """Rotations of the ansatz of unitary coupled clusters, singles and doubles, of a closed shell.

    Under Jordan-Wigner, spin orbitals interleaved (even up, odd down), the lowest ones filled: for
    every excitation T that conserves spin, exp(amplitude (T - T-dagger)) as a product of rotations,
    in one order. Both numbers are even. Without ``amplitudes``, one per excitation, all are 1. LiH,
    H2O, NH3 and N2 in minimal bases are (12, 4), (14, 10), (16, 10) and (20, 14).

    >>> uccsd(4, 2)
    {'YZXI': -1.0, 'XZYI': 1.0, 'IYZX': -1.0, 'IXZY': 1.0, 'YXXX': -0.25, 'XYXX': -0.25, \
'XXYX': 0.25, 'YYYX': -0.25, 'XXXY': 0.25, 'YYXY': -0.25, 'YXYY': 0.25, 'XYYY': 0.25}
    """
    qubits = even(qubits, "qubits", 0, MOST)
    electrons = even(electrons, "electrons", 0, qubits)
    pairs = math.comb(electrons, 2) * math.comb(qubits - electrons, 2)
    strings("qubits, electrons", qubits, 8 * pairs + 2 * electrons * (qubits - electrons))
    excitations = list(_excitations(qubits, electrons))
    factors = [1.0] * len(excitations)
    if amplitudes is not None:
        listed = _validate.items(amplitudes, "amplitudes", "a list of numbers")
        factors = [_validate.angle(amplitude, "amplitudes") for amplitude in listed]
    if len(factors) != len(excitations):
        raise errors.ShapeError(
            f"amplitudes: got {len(factors)}, wanted {len(excitations)}, one per excitation"
        )
    rotations: dict[str, float] = {}
    for (filled, empty), amplitude in zip(excitations, factors, strict=True):
        product: dict[tuple[int, int], complex] = {(0, 0): 1.0}
        for orbital, raises in [(a, True) for a in empty] + [(i, False) for i in filled[::-1]]:
            product = _ladder(product, orbital, raises)
        for (x, z), factor in sorted(product.items()):
            # T - T-dagger is twice the imaginary part: exp(i 2 c P) is a rotation by -4 c.
            ys = (x & z).bit_count()
            coefficient = (factor * (-1j) ** ys).imag
            if coefficient:
                letters = "".join("IXZY"[(x >> q & 1) + 2 * (z >> q & 1)] for q in range(qubits))
                rotations[letters] = rotations.get(letters, 0.0) - 4 * coefficient * amplitude
    return rotations


def _excitations(qubits: int, electrons: int) -> Iterator[tuple[tuple[int, ...], tuple[int, ...]]]:
    filled, empty = range(electrons), range(electrons, qubits)
    for i in filled:
        yield from (((i,), (a,)) for a in empty if (i - a) % 2 == 0)
    for i in filled:
        for j in range(i + 1, electrons):
            for a in empty:
                for b in range(a + 1, qubits):
                    if i % 2 + j % 2 == a % 2 + b % 2:
                        yield (i, j), (a, b)


def _ladder(
    product: dict[tuple[int, int], complex], orbital: int, raises: bool
) -> dict[tuple[int, int], complex]:
    """A sum of X^x Z^z times Z..Z (X -/+ iY)/2, which raises or lowers the orbital's occupation:
    X (1 +/- Z)/2 after Z on the orbitals below."""
    below, bit = (1 << orbital) - 1, 1 << orbital
    result: dict[tuple[int, int], complex] = {}
    for (x, z), factor in product.items():
        for own, half in ((0, 0.5), (bit, 0.5 if raises else -0.5)):
            # Z to the left of X on the orbital itself costs a sign, on others there is no X.
            sign = -1 if (z & bit) else 1
            key = (x ^ bit, z ^ below ^ own)
            result[key] = result.get(key, 0) + factor * half * sign
    return {key: factor for key, factor in result.items() if factor}


def random_paulis(n: int, terms: int, seed: int = 1) -> list[str]:
    """``terms`` strings of Paulis on n qubits, uniform.

    >>> random_paulis(4, 3)
    ['XIYI', 'ZZZZ', 'XIZI']
    """
    n, terms, rng = _validate.qubit_count(n), number_of(terms, "terms"), seeded(seed)
    strings("n, terms", n, terms)
    return ["".join(rng.choice("IXYZ") for _ in range(n)) for _ in range(terms)]


def maxcut(n: int, seed: int = 1) -> list[str]:
    """The strings of one layer of QAOA for the largest cut of a random graph of degree three, n
    even and at least 4: ZZ on its edges, then X on every qubit."""
    n, rng = even(n, "n", 4, MOST), seeded(seed)
    strings("n", n, 5 * n // 2)
    edges: set[tuple[int, ...]] = set()
    while len(edges) < 3 * n // 2:
        ends = rng.sample(3 * list(range(n)), 3 * n)
        edges = {(min(pair), max(pair)) for pair in zip(ends[::2], ends[1::2], strict=True)}
        edges = {(a, b) for a, b in edges if a != b}
    pairs = ["".join("Z" if q in edge else "I" for q in range(n)) for edge in sorted(edges)]
    return pairs + ["".join("X" if q == p else "I" for q in range(n)) for p in range(n)]


def random_graph(n: int, seed: int = 1) -> BoolArray:
    """A symmetric matrix, with an edge between each pair of vertices with probability 1/2."""
    n, rng = _validate.qubit_count(n, square=1), seeded(seed)
    graph = np.zeros((n, n), dtype=bool)
    for i in range(n):
        for j in range(i):
            graph[i, j] = graph[j, i] = rng.random() < 0.5
    return graph


def random_clifford(n: int, count: int) -> list[CliffordTableau]:
    """``count`` Clifford operators of random gates, enough to make all operators about equally
    likely; the same ones every time.

    >>> random_clifford(2, 1)[0].n
    2
    """
    n, count = _validate.qubit_count(n), number_of(count, "count")
    room("n, count", n, 18 * n * n, text=count * (8 * n * n + 500))
    rng = random.Random(9000 + n)
    found = []
    for _ in range(count):
        gates = []
        for _ in range(6 * n * n):
            gates += [rng.choice((Gate.h, Gate.s))(rng.randrange(n)) for _ in range(2)]
            if n > 1:
                gates.append(Gate.cnot(*rng.sample(range(n), 2)))
        found.append(CliffordTableau.from_circuit(Circuit(n, gates)))
    return found


def multiplier() -> Circuit:
    """Multiplication in GF(16) as decomposed CCZ gates and three CNOTs, without Hadamards at the
    ends.

    The targets of the Toffoli gates have a Hadamard at each end of the circuit, which is left out;
    between the two, a Toffoli is a CCZ, and control and target of a CNOT between targets change.
    """
    text = (Path(__file__).parent / "data" / "gf16_mult.qasm").read_text(encoding="ascii")
    text = re.sub(r"\bcx (\S+),(\S+);", r"cx \2,\1;", text).replace("ccx", "ccz")
    # The Hadamards around the Toffoli of a CCZ cancel those in its decomposition.
    circuit = Circuit.from_qasm(text, reader="own")
    return Circuit(circuit.n, [gate for gate in circuit if gate.name != "H"])


def random_parities(n: int, terms: int, count: int) -> list[list[int]]:
    """``count`` sets of different parities of n qubits, at most 63, bit q of an int for qubit q,
    none zero.

    >>> random_parities(3, 2, 1)
    [[5, 2]]
    """
    n, count = _validate.integer(n, "n", 0, 63), number_of(count, "count")
    terms = _validate.integer(terms, "terms", 0, 2**n - 1)
    room("n, terms, count", n, text=count * (100 + 60 * terms) + 200 * terms)
    rng = random.Random(8000 + terms)
    return [rng.sample(range(1, 2**n), terms) for _ in range(count)]


def rank(rows: list[int]) -> int:
    """Rank over GF(2) of rows written as ints, one bit per column."""
    basis: dict[int, int] = {}
    for row in _validate.items(rows, "rows", "a list of ints"):
        row = _validate.integer(row, "rows", 0)
        while row and (top := row.bit_length()) in basis:
            row ^= basis[top]
        if row:
            basis[row.bit_length()] = row
    return len(basis)


def _elements(first_row: Any, polynomial: Any) -> list[int]:
    """Elements of the field of the polynomial, at least one."""
    degree = _validate.integer(polynomial, "polynomial", 2, 2**65 - 1).bit_length() - 1
    row = _validate.items(first_row, "first_row", "a list of field elements as ints")
    if not row:
        raise errors.ShapeError("first_row: got no elements, wanted at least one")
    return [_validate.integer(element, "first_row", 0, 2**degree - 1) for element in row]


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


Rotations = list[tuple[str, float]]


def low_autocorrelation(
    n: int, layers: int = 1, gamma: float = 0.5, beta: float = 0.5
) -> Rotations:
    """Rotations of QAOA for low autocorrelation binary sequences (LABS) of length n.

    The energy of a sequence s of n signs is the sum over k = 1 .. n - 1 of the squares of the
    autocorrelations, the sums over i of s[i] s[i + k]: terms of weight 2 and 4 (J. Bernasconi,
    Journal de Physique 48, 1987). Each layer is exp(-i gamma energy), one rotation per term, equal
    terms added and constants dropped, then exp(-i beta X) on every qubit.

    >>> low_autocorrelation(3)
    [('ZIZ', 2.0), ('XII', 1.0), ('IXI', 1.0), ('IIX', 1.0)]
    """
    n, layers = _validate.qubit_count(n), number_of(layers, "layers")
    angles = 2 * _validate.angle(gamma, "gamma"), 2 * _validate.angle(beta, "beta")
    energy_terms = n**3 / 12 + n**2  # about
    strings("n, layers", n, int(energy_terms * 3) + n)
    room("n, layers", n, text=8 * layers * (energy_terms + n))
    terms: dict[frozenset[int], int] = {}
    for k in range(1, n):
        for i in range(n - k):
            for j in range(i):
                term = frozenset({i, i + k}) ^ frozenset({j, j + k})
                terms[term] = terms.get(term, 0) + 2
    energy = [(_string("Z", sorted(term), n), angles[0] * c) for term, c in terms.items()]
    mixers = [(_string("X", [q], n), angles[1]) for q in range(n)]
    return layers * (energy + mixers)


def maxcut_regular(n: int, degree: int, seed: int = 1) -> list[str]:
    """The strings of one layer of QAOA for the largest cut of a random regular graph on n vertices:
    ZZ on its edges, then X on every qubit. n times the degree is even.

    The graph is a circulant one after random exchanges of the ends of two edges.

    >>> maxcut_regular(4, 3)
    ['ZZII', 'ZIZI', 'ZIIZ', 'IZZI', 'IZIZ', 'IIZZ', 'XIII', 'IXII', 'IIXI', 'IIIX']
    """
    n, rng = _validate.qubit_count(n), seeded(seed)
    degree = _validate.integer(degree, "degree", 0, max(n, 1) - 1)
    if n * degree % 2 != 0:
        raise errors.OptionError(f"degree: got {degree} for {n} vertices, wanted an even product")
    strings("n, degree", n, 2 * n * degree + n)
    pairs = [_string("Z", edge, n) for edge in regular_edges(n, degree, rng)]
    return pairs + [_string("X", [q], n) for q in range(n)]


def heisenberg(
    shape: int | Sequence[int],
    steps: int = 1,
    couplings: Sequence[float] = (1.0, 1.0, 1.0),
    time: float = 1.0,
) -> Rotations:
    """Rotations of a Trotter formula of first order for the Heisenberg model, on a chain of
    ``shape`` qubits or a grid of any number of sides, open at its ends.

    The Hamiltonian is the sum over the edges of couplings[0] XX + couplings[1] YY +
    couplings[2] ZZ: XXZ with the first two alike, XY with the last one 0. Each step is
    exp(-i H time / steps) with one rotation for every coupling other than 0, edge by edge.

    >>> heisenberg(3, couplings=(1, 1, 0))
    [('XXI', 2.0), ('YYI', 2.0), ('IXX', 2.0), ('IYY', 2.0)]
    """
    listed = shape
    if not isinstance(shape, (int, np.integer)):
        listed = _validate.items(shape, "shape", "an integer or a list of integers")
    sides = [
        number_of(side, "shape") for side in (listed if isinstance(listed, list) else [listed])
    ]
    size = number_of(math.prod(sides), "shape")
    steps = _validate.integer(steps, "steps", 1, MOST)
    wanted = "the three numbers of XX, YY and ZZ"
    strengths = [
        _finite(each, "couplings") for each in _validate.items(couplings, "couplings", wanted)
    ]
    if len(strengths) != 3:
        raise errors.OptionError(f"couplings: got {len(strengths)} numbers, wanted {wanted}")
    strings("shape", size, 3 * size * len(sides))
    room("shape, steps", size, text=24 * steps * size * len(sides))
    turn = 2 * _finite(time, "time") / steps
    sites = np.arange(size).reshape(sides)
    edges = [
        (int(a), int(b))
        for axis in range(len(sides))
        for a, b in zip(
            sites.take(range(max(sides[axis] - 1, 0)), axis).flat,
            sites.take(range(1, sides[axis]), axis).flat,
            strict=True,
        )
    ]
    return steps * [
        (_string(letter, edge, sites.size), coupling * turn)
        for edge in sorted(edges)
        for letter, coupling in zip("XYZ", strengths, strict=True)
        if coupling != 0
    ]


def ising_chain(
    n: int, steps: int = 1, coupling: float = 1.0, field: float = 1.0, time: float = 1.0
) -> Rotations:
    """Rotations of a Trotter formula of first order for the Ising model in a transverse field, on
    an open chain: each step has ZZ on neighbours, then X on every qubit.

    >>> ising_chain(2)
    [('ZZ', 2.0), ('XI', 2.0), ('IX', 2.0)]
    """
    n, steps = _validate.qubit_count(n), _validate.integer(steps, "steps", 1, MOST)
    strings("n", n, 2 * n)
    room("n, steps", n, text=16 * steps * n)
    turn = 2 * _finite(time, "time") / steps
    pair, single = _finite(coupling, "coupling") * turn, _finite(field, "field") * turn
    pairs = [(_string("Z", (q, q + 1), n), pair) for q in range(n - 1)]
    return steps * (pairs + [(_string("X", [q], n), single) for q in range(n)])


def _string(letter: str, qubits: Sequence[int], n: int) -> str:
    return "".join(letter if q in qubits else "I" for q in range(n))


def _finite(value: Any, name: str) -> float:
    number = _validate.real(value, name, "a finite number")
    if not math.isfinite(number):
        raise errors.OptionError(f"{name}: got {number}, wanted a finite number")
    return number

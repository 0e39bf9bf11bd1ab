"""CSS codes of the gallery, by their check matrices."""

from __future__ import annotations

from collections.abc import Iterable, Sequence

import numpy as np
import numpy.typing as npt

from zeltbraidwerk import _validate, errors

Checks = npt.NDArray[np.bool_]
CssCode = tuple[Checks, Checks]


def steane_code() -> CssCode:
    """H_X and H_Z of the Steane code, [[7,1,3]]: twice the Hamming code. Source: A. M. Steane,
    "Error correcting codes in quantum theory", Phys. Rev. Lett. 77 (1996).

    >>> [checks.shape for checks in steane_code()]
    [(3, 7), (3, 7)]
    """
    return _twice(_matrix(7, ([v - 1 for v in range(1, 8) if v >> bit & 1] for bit in range(3))))


def golay_code() -> CssCode:
    """H_X and H_Z of the Golay code, [[23,1,7]]: twice the words of even weight of the binary Golay
    code. Source: A. M. Steane, "Overhead and noise threshold of fault-tolerant quantum error
    correction", Phys. Rev. A 68 (2003).

    >>> [checks.shape for checks in golay_code()]
    [(11, 23), (11, 23)]
    """
    # x + 1 times x^11 + x^9 + x^7 + x^6 + x^5 + x + 1, and its shifts
    powers = [0, 2, 5, 8, 9, 10, 11, 12]
    return _twice(_matrix(23, ([power + shift for power in powers] for shift in range(11))))


def color_code(d: int) -> CssCode:
    """H_X and H_Z of the colour code of odd distance ``d``, 3 to 101, on a triangle of hexagons:
    [[7,1,3]], [[19,1,5]], [[37,1,7]] and so on. Source: H. Bombin, M. A. Martin-Delgado,
    "Topological quantum distillation", Phys. Rev. Lett. 97 (2006).

    >>> [checks.shape for checks in color_code(5)]
    [(9, 19), (9, 19)]
    """
    d = _validate.integer(d, "d", 3, 101)
    if d % 2 == 0:
        raise errors.ShapeError(f"d: got {d}, wanted an odd number")
    side = 3 * (d - 1) // 2
    places = [(i, j) for i in range(side + 1) for j in range(side + 1 - i)]
    # Of the places of a triangular lattice every third is a check, on the qubits around it.
    qubits = {place: q for q, place in enumerate(p for p in places if (p[0] - p[1]) % 3 != 1)}
    around = [(1, 0), (-1, 0), (0, 1), (0, -1), (1, -1), (-1, 1)]
    checks = [
        [qubits[i + a, j + b] for a, b in around if (i + a, j + b) in qubits]
        for i, j in places
        if (i, j) not in qubits
    ]
    return _twice(_matrix(len(qubits), checks))


def color_code_17() -> CssCode:
    """H_X and H_Z of the colour code [[17,1,5]] of an octagon and squares. Source: A. Bermudez et
    al., "Assessing the progress of trapped-ion processors towards fault-tolerant quantum
    computation", Phys. Rev. X 7 (2017).

    >>> [checks.shape for checks in color_code_17()]
    [(8, 17), (8, 17)]
    """
    checks = [
        [0, 1, 2, 3], [0, 2, 4, 5], [4, 5, 8, 9], [6, 7, 10, 11], [8, 9, 12, 13],
        [10, 11, 14, 15], [7, 11, 15, 16], [2, 3, 5, 6, 9, 10, 13, 14],
    ]  # fmt: skip
    return _twice(_matrix(17, checks))


def carbon_code() -> CssCode:
    """H_X and H_Z of the code [[12,2,4]] that is called carbon: three blocks of [[4,2,2]] within a
    code of six qubits. Source: E. Knill, "Quantum computing with realistically noisy devices",
    Nature 434 (2005).

    >>> [checks.shape for checks in carbon_code()]
    [(5, 12), (5, 12)]
    """
    blocks = [[4 * block + q for q in range(4)] for block in range(3)]
    # Logical operators of a block; the product of both is on qubits 0 and 3.
    x, z = ([0, 1], [1, 3]), ([0, 2], [2, 3])

    def outer(pair: tuple[list[int], list[int]]) -> list[list[int]]:
        first, second, both = *pair, sorted(set(pair[0]) ^ set(pair[1]))
        rows = ((first, second, both), (both, first, second))
        return [[4 * block + q for block, part in enumerate(row) for q in part] for row in rows]

    return _matrix(12, blocks + outer(x)), _matrix(12, blocks + outer(z))


def toric_code(d: int) -> CssCode:
    """H_X and H_Z of the rotated toric code of even distance ``d``, of 2 or more, on d by d qubits,
    which encodes two: [[4,2,2]], [[16,2,4]] and so on. Qubit ``row * d + column``; checks are on
    squares, X and Z in turns, but for the last of each kind, which is a product of the others.
    Source: H. Bombin, M. A. Martin-Delgado, "Optimal resources for topological two-dimensional
    stabilizer codes", Phys. Rev. A 76 (2007).

    >>> [checks.shape for checks in toric_code(4)]
    [(7, 16), (7, 16)]
    """
    d = _validate.integer(d, "d", 2, 100)
    if d % 2:
        raise errors.ShapeError(f"d: got {d}, wanted an even number")
    checks: tuple[list[set[int]], list[set[int]]] = ([], [])
    for row in range(d):
        for column in range(d):
            below, right = (row + 1) % d, (column + 1) % d
            corners = [(row, column), (row, right), (below, column), (below, right)]
            checks[(row + column) % 2].append({r * d + c for r, c in corners})
    x, z = (_independent(_matrix(d * d, each)) for each in checks)
    return x, z


def bicycle_code(
    length: int = 12,
    height: int = 6,
    a: Sequence[tuple[int, int]] = ((3, 0), (0, 1), (0, 2)),
    b: Sequence[tuple[int, int]] = ((0, 3), (1, 0), (2, 0)),
) -> CssCode:
    """H_X and H_Z of a bivariate bicycle code on 2 * ``length`` * ``height`` qubits, those of
    [[144,12,12]] where nothing is given. ``a`` and ``b`` are polynomials in x and y, as pairs of
    exponents; H_X is (A | B), H_Z its mirror image (B transposed | A transposed), both without the
    rows that are products of others. Source: S. Bravyi et al., "High-threshold and low-overhead
    fault-tolerant quantum memory", Nature 627 (2024).

    >>> [checks.shape for checks in bicycle_code()]
    [(66, 144), (66, 144)]
    """
    length = _validate.integer(length, "length", 1, 30)
    height = _validate.integer(height, "height", 1, 30)
    x = np.kron(_shift(length), np.eye(height, dtype=int))
    y = np.kron(np.eye(length, dtype=int), _shift(height))

    def sum_of(terms: Sequence[tuple[int, int]], name: str) -> npt.NDArray[np.int_]:
        total = np.zeros_like(x)
        for i, j in _validate.pairs(terms, name).tolist():
            total ^= np.linalg.matrix_power(x, i % length) @ np.linalg.matrix_power(y, j % height)
        return total

    first, second = sum_of(a, "a"), sum_of(b, "b")
    return (
        _independent(np.hstack([first, second]).astype(bool)),
        _independent(np.hstack([second.T, first.T]).astype(bool)),
    )


def logical_zero(code: tuple[npt.ArrayLike, npt.ArrayLike]) -> list[str]:
    """Stabilizers of the state of a CSS code with all logical qubits 0, for
    :func:`zeltbraidwerk.clifford.synthesize_state`: the X checks, and all products of Z that
    commute with them.

    >>> logical_zero(([[1, 1, 1, 1]], [[1, 1, 1, 1]]))
    ['XXXX', 'ZZII', 'ZIZI', 'ZIIZ']
    """
    pair = _validate.items(code, "code", "a pair of matrices H_X, H_Z")
    if len(pair) != 2:
        raise errors.ShapeError(f"code: got {len(pair)} items, wanted the matrices H_X and H_Z")
    checks = [_validate.bits(each, "code") for each in pair]
    if any(each.ndim != 2 for each in checks) or checks[0].shape[1] != checks[1].shape[1]:
        raise errors.ShapeError(
            f"code: got shapes {checks[0].shape} and {checks[1].shape}, wanted (checks, qubits)"
        )
    x = _independent(checks[0])
    if (checks[0].astype(int) @ checks[1].T.astype(int) % 2).any():
        raise errors.PauliError("code: got checks of X and Z that do not commute")
    z = _kernel(x)
    return [
        "".join(letter if bit else "I" for bit in row)
        for letter, rows in (("X", x), ("Z", z))
        for row in rows
    ]


def _twice(checks: Checks) -> CssCode:
    return checks, checks.copy()


def _matrix(n: int, rows: Iterable[Iterable[int]]) -> Checks:
    listed = [list(row) for row in rows]
    matrix = np.zeros((len(listed), n), dtype=np.bool_)
    for r, row in enumerate(listed):
        matrix[r, row] = True
    return matrix


def _shift(size: int) -> npt.NDArray[np.int_]:
    return np.roll(np.eye(size, dtype=int), 1, axis=1)


def _reduced(matrix: Checks) -> tuple[Checks, list[int], list[int]]:
    """In row echelon form; the pivot columns, and the rows of the matrix that are no sums of rows
    before them."""
    rows: list[npt.NDArray[np.bool_]] = []
    pivots: list[int] = []
    kept: list[int] = []
    for r, given in enumerate(matrix):
        row = given.copy()
        for pivot, other in zip(pivots, rows, strict=True):
            if row[pivot]:
                row ^= other
        if not row.any():
            continue
        pivot = int(row.argmax())
        for other in rows:
            if other[pivot]:
                other ^= row
        rows.append(row)
        pivots.append(pivot)
        kept.append(r)
    return np.array(rows, dtype=np.bool_).reshape(-1, matrix.shape[1]), pivots, kept


def _independent(matrix: Checks) -> Checks:
    return matrix[_reduced(matrix)[2]]


def _kernel(matrix: Checks) -> Checks:
    """A basis of what has an even number of bits in common with every row."""
    rows, pivots, _ = _reduced(matrix)
    free = [c for c in range(matrix.shape[1]) if c not in set(pivots)]
    basis = np.zeros((len(free), matrix.shape[1]), dtype=np.bool_)
    for k, column in enumerate(free):
        basis[k, column] = True
        basis[k, pivots] = rows[:, column]
    return basis

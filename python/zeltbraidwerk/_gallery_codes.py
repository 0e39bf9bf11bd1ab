"""Stabilizer codes of the gallery, by their generators."""

from __future__ import annotations

from itertools import combinations

from zeltbraidwerk import _validate


def stabilizer_codes() -> dict[str, list[str]]:
    """Small codes by name, as generators of their stabilizers: n qubits encode k with distance d.

    The five-qubit code, those of Steane and Shor, the codes of four qubits and of a cube, the
    Reed-Muller codes of 15 and 16 qubits, and the one that encodes three qubits into eight with
    distance 3. Source: D. Gottesman, "Stabilizer codes and quantum error correction" (1997), and
    for the cube E. T. Campbell, "The smallest interesting colour code" (2016).

    >>> {name: len(generators) for name, generators in stabilizer_codes().items()}
    ... # doctest: +NORMALIZE_WHITESPACE
    {'[[4,2,2]]': 2, '[[5,1,3]]': 4, '[[7,1,3]]': 6, '[[8,3,2]]': 5, '[[8,3,3]]': 5,
     '[[9,1,3]]': 8, '[[15,1,3]]': 14, '[[16,6,4]]': 10}
    """
    cube = [set(range(8))], [{v for v in range(8) if v >> a & 1} for a in range(3)]
    bits = _hamming(4)
    hypercube = [set(range(16))] + [{v for v in range(16) if v >> a & 1} for a in range(4)]
    return {
        "[[4,2,2]]": ["XXXX", "ZZZZ"],
        "[[5,1,3]]": ["XZZXI", "IXZZX", "XIXZZ", "ZXIXZ"],
        "[[7,1,3]]": _css(7, _hamming(3), _hamming(3)),
        "[[8,3,2]]": _css(8, cube[0], cube[0] + cube[1]),
        "[[8,3,3]]": ["XXXXXXXX", "ZZZZZZZZ", "IXIXYZYZ", "IXZYIXZY", "IYXZXZIY"],
        "[[9,1,3]]": _css(9, [set(range(6)), set(range(3, 9))], _pairs_in_threes()),
        "[[15,1,3]]": _css(15, bits, bits + [a & b for a, b in combinations(bits, 2)]),
        "[[16,6,4]]": _css(16, hypercube, hypercube),
    }


def surface_code(d: int) -> list[str]:
    """Generators of the rotated surface code of distance ``d``, of 2 or more, on a grid of d by d
    qubits, which encodes one qubit. Qubit ``row * d + column``; X checks come first. Source: H.
    Bombin, M. A. Martin-Delgado, "Optimal resources for topological two-dimensional stabilizer
    codes", Phys. Rev. A 76 (2007).

    >>> surface_code(2)
    ['XXXX', 'ZIZI', 'IZIZ']
    """
    d = _validate.integer(d, "d", 2, 1000)
    checks: tuple[list[set[int]], list[set[int]]] = ([], [])
    for row in range(d + 1):
        for column in range(d + 1):
            corners = [(row - a, column - b) for a in (1, 0) for b in (1, 0)]
            qubits = {r * d + c for r, c in corners if 0 <= r < d and 0 <= c < d}
            kind = (row + column) % 2
            # Half of the checks on each side of the grid have two qubits: X above and below.
            on_side = row % d == 0 if kind == 0 else column % d == 0
            if len(qubits) == 4 or (len(qubits) == 2 and on_side):
                checks[kind].append(qubits)
    return _css(d * d, *checks)


def _hamming(a: int) -> list[set[int]]:
    return [{v - 1 for v in range(1, 1 << a) if v >> bit & 1} for bit in range(a)]


def _pairs_in_threes() -> list[set[int]]:
    return [{q, q + 1} for q in range(8) if q % 3 < 2]


def _css(n: int, x: list[set[int]], z: list[set[int]]) -> list[str]:
    return [
        "".join(letter if q in qubits else "I" for q in range(n))
        for letter, checks in (("X", x), ("Z", z))
        for qubits in checks
    ]

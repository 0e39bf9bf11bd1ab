"""Connected parts of coupling graphs."""

from __future__ import annotations

from collections.abc import Iterator, Sequence

Neighbours = Sequence[frozenset[int]]  # by qubit


def neighbours_of(n: int, edges: Sequence[tuple[int, int]]) -> tuple[frozenset[int], ...]:
    found: list[set[int]] = [set() for _ in range(n)]
    for a, b in edges:
        found[a].add(b)
        found[b].add(a)
    return tuple(map(frozenset, found))


def components(neighbours: Neighbours) -> tuple[frozenset[int], ...]:
    """The largest first."""
    left, pieces = set(range(len(neighbours))), []
    while left:
        piece = [min(left)]
        for qubit in piece:
            left.discard(qubit)
            piece += sorted(neighbours[qubit] & left - set(piece))
        pieces.append(frozenset(piece))
    return tuple(sorted(pieces, key=lambda piece: (-len(piece), min(piece))))


def connected_parts(
    neighbours: Neighbours, pieces: Sequence[frozenset[int]], n: int
) -> Iterator[tuple[int, ...]]:
    """Connected sets of ``n`` qubits, those with many edges among them first. At most one set for
    each qubit to start from; it is extended by the neighbour with the most edges to the set."""
    if n == 0:
        yield ()
    edges: dict[tuple[int, ...], int] = {}
    for piece in pieces:
        for start in sorted(piece) if 0 < n <= len(piece) else ():
            part = _grown(neighbours, start, n)
            edges[part] = sum(len(neighbours[q] & set(part)) for q in part)
    yield from sorted(edges, key=lambda part: (-edges[part], part))


def _grown(neighbours: Neighbours, start: int, n: int) -> tuple[int, ...]:
    part, ties = {start}, dict.fromkeys(neighbours[start], 1)
    while len(part) < n:
        best = max(ties, key=lambda q: (ties[q], -len(neighbours[q]), -q))
        part.add(best)
        del ties[best]
        for q in neighbours[best] - part:
            ties[q] = ties.get(q, 0) + 1
    return tuple(sorted(part))

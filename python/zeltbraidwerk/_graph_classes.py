"""The table of all graph states on a few qubits up to local Clifford operations."""

from __future__ import annotations

import csv
from dataclasses import dataclass
from functools import cache
from pathlib import Path

from zeltbraidwerk import _validate
from zeltbraidwerk.circuits import Circuit
from zeltbraidwerk.gates import Gate


@dataclass(frozen=True)
class GraphStateClass:
    """All connected graphs on ``n`` vertices whose states are equal up to local Clifford operations
    and names of the qubits.

    ================  ==============================================================================
    field             what it holds
    ================  ==============================================================================
    ``n``             number of vertices
    ``edges``         the edges of one of its graphs, which has the fewest
    ``graphs``        number of its graphs, where those that differ in names count once
    ``fewest_gates``  the fewest two-qubit Clifford gates, of any kind, that make its states from
                      qubits that are all 0
    ``circuit``       a circuit with as many CNOTs; its state is one of the class
    ================  ==============================================================================
    """

    n: int
    edges: tuple[tuple[int, int], ...]
    graphs: int
    fewest_gates: int
    circuit: Circuit

    @property
    def fewest_edges(self) -> int:
        """The fewest edges of its graphs: what one CZ per edge takes."""
        return len(self.edges)


def classes(n: int) -> tuple[GraphStateClass, ...]:
    """The classes of connected graph states on ``n`` qubits, 2 to 9, by gates, then by edges.

    They were found, and the gates proven to be the fewest, by breadth-first search over all classes
    of stabilizer states on as many qubits: ``./dev bench graph_states`` makes the table again in
    half a minute. Where qubits have names, a gate that is a CNOT and a SWAP, such as iSWAP, counts
    as a CNOT. For the numbers of classes see L. E. Danielsen, M. G. Parker, "On the classification
    of all self-dual additive codes over GF(4) of length up to 12", J. Comb. Theory A 113 (2006).

    >>> [len(classes(n)) for n in range(2, 10)]
    [1, 1, 2, 4, 11, 26, 101, 440]
    >>> sum(found.fewest_gates < found.fewest_edges for found in classes(9))
    308
    """
    n = _validate.integer(n, "n", 2, 9)
    return tuple(found for found in _table() if found.n == n)


@cache
def _table() -> tuple[GraphStateClass, ...]:
    path = Path(__file__).parent / "data" / "graph_states.csv"
    with path.open(encoding="ascii", newline="") as file:
        return tuple(
            GraphStateClass(
                int(row["vertices"]), _edges(row["graph6"]), int(row["graphs"]),
                int(row["gates"]), _circuit(int(row["vertices"]), row["circuit"].split()),
            )
            for row in csv.DictReader(file)
        )  # fmt: skip


def _edges(graph6: str) -> tuple[tuple[int, int], ...]:
    bits = "".join(f"{ord(letter) - 63:06b}" for letter in graph6[1:])
    pairs = [(a, b) for b in range(1, ord(graph6[0]) - 63) for a in range(b)]
    return tuple(pair for pair, bit in zip(pairs, bits, strict=False) if bit == "1")


def _circuit(n: int, pairs: list[str]) -> Circuit:
    """Of gates such as "X0Y1", which multiply what anticommutes with X on qubit 0 by Y on qubit 1,
    and the other way round."""
    gates: list[Gate] = []
    for pair in pairs:
        a, b = int(pair[1]), int(pair[3])
        turned = [*_turns(pair[0], a, to="Z"), *_turns(pair[2], b, to="X")]
        gates += [*turned, Gate.cnot(a, b), *reversed(turned)]
    return Circuit(n, gates)


def _turns(letter: str, qubit: int, to: str) -> list[Gate]:
    """Gates that make one letter of the other, up to a sign, and backward the other way round."""
    if letter == to:
        return []
    if letter == "Y":
        return [Gate.s(qubit)] if to == "X" else [Gate.s(qubit), Gate.h(qubit)]
    return [Gate.h(qubit)]

"""Devices: which pairs of qubits may have a two-qubit gate.

>>> import zeltbraidwerk as zb
>>> device = zb.Device.grid(2, 3)
>>> device
Device('2 x 3 grid': 6 qubits, 7 edges)
>>> device.hamiltonian_path()
(0, 3, 4, 1, 2, 5)
>>> device.fits(zb.CnotCircuit(6, [(0, 3), (3, 0)])), device.fits(zb.CnotCircuit(6, [(0, 5)]))
(True, False)
"""

from __future__ import annotations

import re
from collections.abc import Callable, Iterable, Iterator
from functools import cache, cached_property
from pathlib import Path
from typing import Any

import numpy as np
import numpy.typing as npt

from zeltbraidwerk import _core, _couplings, _draw_device, _json, _validate, errors
from zeltbraidwerk.circuits import Circuit, CnotCircuit

__all__ = ["Device"]

Edge = tuple[int, int]


class Device(_json.Stored):
    """The coupling graph of a device: ``n`` qubits from 0 up, and the pairs that may have a
    two-qubit gate.

    Edges have no direction. Devices are immutable; two are equal when their edges are.
    """

    def __init__(self, n: int, edges: Iterable[tuple[int, int]], name: str = "") -> None:
        self._n = _validate.qubit_count(n)
        listed = list(edges) if isinstance(edges, (set, frozenset)) else edges
        pairs = _validate.cnots(listed, self._n, "edges").tolist()
        self._edges: tuple[Edge, ...] = tuple(sorted({(min(pair), max(pair)) for pair in pairs}))
        self._name = _validate.text(name, "name")

    @classmethod
    def from_edges(cls, edges: Iterable[tuple[int, int]], name: str = "") -> Device:
        """A device with the qubits 0 to the greatest number in the edges.

        Edges are pairs of qubits, one per row where they are an array; :meth:`of` takes adjacency
        matrices too, of three and more qubits or sparse.
        Edges without qubit 0 are refused, since they probably count from 1.
        """
        return cls(*_couplings.of_edges(edges, "edges"), name)

    @classmethod
    def from_networkx(cls, graph: Any) -> Device:
        """An undirected graph of networkx without parallel edges and loops.

        Nodes that are integers, 0 the least, are the qubits of those numbers; numbers in between
        that are no nodes are qubits without an edge. Other integers, such as 1 to n, are numbered
        from 0 in ascending order, and nodes of any other kind in the order of ``graph.nodes``.
        """
        return cls(*_couplings.of_graph(graph, "graph"))

    @classmethod
    def from_rustworkx(cls, graph: Any) -> Device:
        """An undirected graph of rustworkx without parallel edges and loops; the indices of its
        nodes are the qubits."""
        return cls(*_couplings.of_graph(graph, "graph"))

    @classmethod
    def from_qiskit(cls, source: Any) -> Device:
        """A coupling map of Qiskit, or a backend or target that has one. Directions are dropped."""
        return cls(*_couplings.of_qiskit(source, "source"))

    @classmethod
    def from_pytket(cls, architecture: Any) -> Device:
        """An architecture of pytket; its nodes are numbered in their order."""
        return cls(*_couplings.of_pytket(architecture, "architecture"))

    @classmethod
    def line(cls, n: int) -> Device:
        """``n`` qubits in a line, each joined to the next."""
        n = _validate.qubit_count(n)
        return cls(n, [(q, q + 1) for q in range(n - 1)], f"line of {n}")

    @classmethod
    def grid(cls, rows: int, columns: int) -> Device:
        """Qubit ``row * columns + column``, connected to its neighbours in row and column."""
        r, c = _validate.integer(rows, "rows", 1), _validate.integer(columns, "columns", 1)
        n = _validate.qubit_count(r * c, "rows, columns")
        across = [(q, q + 1) for q in range(n) if (q + 1) % c]
        return cls(n, across + [(q, q + c) for q in range(n - c)], f"{r} x {c} grid")

    @classmethod
    def heavy_hex(cls, rows: int, length: int) -> Device:
        """``rows`` lines of ``length`` qubits, connected through single qubits at every fourth
        place, alternately from place 0 and from place 2 on. Lines are numbered first."""
        r, k = _validate.integer(rows, "rows", 1), _validate.integer(length, "length", 1)
        n = _validate.qubit_count(r * k, "rows, length")
        pairs = [(q, q + 1) for q in range(n) if (q + 1) % k]
        for row in range(r - 1):
            for place in range(2 * (row % 2), k, 4):
                pairs += [(row * k + place, n), (n, (row + 1) * k + place)]
                n += 1
        return cls(n, pairs, f"heavy hex {r} x {k}")

    @classmethod
    def all_to_all(cls, n: int) -> Device:
        """``n`` qubits, each joined to all others."""
        n = _validate.qubit_count(n)
        return cls(n, [(a, b) for b in range(n) for a in range(b)], f"all to all of {n}")

    @classmethod
    def named(cls, name: str) -> Device:
        """A device by its name, or by its shape and size: "line:10", "grid:4x4",
        "heavy-hex:3x9" (rows and length), "all-to-all:8".

        >>> Device.named("tokyo")
        Device('tokyo': 20 qubits, 43 edges)
        >>> Device.named("grid:2x3")
        Device('2 x 3 grid': 6 qubits, 7 edges)
        """
        return cls._known(name, "name")

    @classmethod
    def _known(cls, name: Any, argument: str) -> Device:
        known = _known_devices()
        shape, _, size = name.partition(":") if isinstance(name, str) else ("", "", "")
        if shape in _SHAPES and _SIZE.fullmatch(size):
            make, numbers = _SHAPES[shape], [int(number) for number in size.split("x")]
            if len(numbers) == 1 + (shape in ("grid", "heavy-hex")):
                return make(*numbers)
        if not isinstance(name, str) or name not in known:
            raise errors.DeviceError(
                f"{argument}: got {_validate.shown(name)}, wanted one of {', '.join(known)}, or "
                "a shape such as line:10, grid:4x4, heavy-hex:3x9 or all-to-all:8"
                f"{_validate.meant(name, known)}"
            )
        pairs = known[name]
        return cls(1 + max(map(max, pairs)), pairs, name)

    @classmethod
    def names(cls) -> tuple[str, ...]:
        """The names of devices that :meth:`named` knows, beside those of shapes."""
        return tuple(_known_devices())

    @classmethod
    def of(cls, source: Any) -> Device:
        """A device of anything that describes one: a Device, a name, an object of networkx,
        rustworkx, Qiskit or pytket, or edges, each read as by the method named after it; or an
        adjacency matrix, as a sparse one of scipy or an array other than 2 by 2, which is one of
        pairs."""
        if isinstance(source, Device):
            return source
        if isinstance(source, str):
            return cls._known(source, "device")
        if _couplings.is_graph(source):
            return cls(*_couplings.of_graph(source, "device"))
        if _validate.comes_from(source, "qiskit"):
            return cls(*_couplings.of_qiskit(source, "device"))
        if _validate.comes_from(source, "pytket"):
            return cls(*_couplings.of_pytket(source, "device"))
        if _couplings.is_adjacency(source):
            return cls(*_couplings.of_adjacency(source, "device"))
        if isinstance(source, Iterable) and not isinstance(source, (bytes, bytearray, dict)):
            return cls(*_couplings.of_edges(source, "device"))
        raise errors.DeviceError(
            f"device: got {_validate.shown(source)}, wanted a Device, a name, edges or a graph"
        )

    @property
    def n(self) -> int:
        """Number of qubits."""
        return self._n

    @property
    def edges(self) -> tuple[Edge, ...]:
        """Each once, the smaller qubit first, ascending."""
        return self._edges

    @property
    def name(self) -> str:
        """What the device is called, such as "grid 4x4"."""
        return self._name

    @cached_property
    def _neighbours(self) -> tuple[frozenset[int], ...]:
        found: list[set[int]] = [set() for _ in range(self._n)]
        for a, b in self._edges:
            found[a].add(b)
            found[b].add(a)
        return tuple(map(frozenset, found))

    def neighbors(self, qubit: int) -> tuple[int, ...]:
        """The qubits that share an edge with ``qubit``."""
        return tuple(sorted(self._neighbours[_validate.integer(qubit, "qubit", 0, self._n - 1)]))

    def adjacency(self) -> npt.NDArray[np.bool_]:
        """The symmetric matrix of the edges."""
        matrix = np.zeros((self._n, self._n), dtype=np.bool_)
        for a, b in self._edges:
            matrix[a, b] = matrix[b, a] = True
        return matrix

    @property
    def is_connected(self) -> bool:
        """Whether edges join every qubit to every other; an empty device is not connected."""
        return self._n > 0 and len(self._pieces[0]) == self._n

    @cached_property
    def _pieces(self) -> tuple[frozenset[int], ...]:
        """The connected parts, the largest first."""
        left, pieces = set(range(self._n)), []
        while left:
            piece = [min(left)]
            for qubit in piece:
                left.discard(qubit)
                piece += sorted(self._neighbours[qubit] & left - set(piece))
            pieces.append(frozenset(piece))
        return tuple(sorted(pieces, key=lambda piece: (-len(piece), min(piece))))

    def hamiltonian_path(self, seconds: float = 5.0) -> tuple[int, ...] | None:
        """A path along edges through all qubits; None when there is none.

        Raises :class:`~zeltbraidwerk.errors.UnfinishedError` when the search, which is exact, has
        no answer in its time.
        """
        limit = _validate.seconds(seconds, "seconds")
        outcome, path = self._search_path(2**31 - 1, limit)
        if outcome == "unfinished":
            raise errors.UnfinishedError(
                f"no Hamiltonian path of {self!r} was found in {limit:g} s, nor shown not to exist"
            )
        return path if outcome == "found" else None

    def _search_path(self, steps: int, seconds: float | None) -> tuple[str, tuple[int, ...]]:
        """ "found" with the path, "none", or "unfinished" after that many steps or seconds."""
        if self._path is not None:
            return self._path
        outcome, path = _core._hamiltonian_path(self.adjacency(), steps, seconds)
        if outcome != "unfinished":
            self._path = outcome, tuple(path)
        return outcome, tuple(path)

    _path: tuple[str, tuple[int, ...]] | None = None  # once the search was completed

    def fits(self, circuit: Circuit | CnotCircuit) -> bool:
        """Whether every gate on several qubits is on edges."""
        if _circuit(circuit).n > self._n:
            return False
        return all(
            b in self._neighbours[a]
            for _, qubits, _ in circuit._operations()
            for place, a in enumerate(qubits)
            for b in qubits[place + 1 :]
        )

    def part(self, qubits: Iterable[int]) -> Device:
        """The device of these qubits alone, numbered in the order given."""
        chosen = _validate.qubits(qubits, "qubits")
        _validate.qubits_below(chosen, self._n, "qubits")
        places = {qubit: place for place, qubit in enumerate(chosen)}
        inner = [(places[a], places[b]) for a, b in self._edges if a in places and b in places]
        return Device(len(chosen), inner, f"part of {self._name}" if self._name else "")

    def connected_parts(self, n: int) -> Iterator[tuple[int, ...]]:
        """Connected sets of ``n`` qubits, those with many edges among them first.

        At most one set for each qubit to start from; it is extended by the neighbour with the most
        edges to the set.
        """
        return self._connected_parts(_validate.qubit_count(n))

    def _connected_parts(self, n: int) -> Iterator[tuple[int, ...]]:
        if n == 0:
            yield ()
        grown: dict[tuple[int, ...], int] = {}
        for piece in self._pieces:
            for start in sorted(piece) if 0 < n <= len(piece) else ():
                part = self._grown(start, n)
                grown[part] = len(self.part(part).edges)
        yield from sorted(grown, key=lambda part: (-grown[part], part))

    def _grown(self, start: int, n: int) -> tuple[int, ...]:
        part, ties = {start}, dict.fromkeys(self._neighbours[start], 1)
        while len(part) < n:
            best = max(ties, key=lambda q: (ties[q], -len(self._neighbours[q]), -q))
            part.add(best)
            del ties[best]
            for q in self._neighbours[best] - part:
                ties[q] = ties.get(q, 0) + 1
        return tuple(sorted(part))

    def draw(self, circuit: Circuit | CnotCircuit | None = None) -> str:
        """A picture (SVG); with a circuit, edges are drawn by how often the circuit uses them."""
        used: dict[Edge, int] = {}
        operations = () if circuit is None else _circuit(circuit)._operations()
        if circuit is not None and circuit.n > self._n:
            raise errors.DeviceTooSmallError(
                f"circuit: got {circuit.n} qubits, wanted at most {self._n}"
            )
        for _, qubits, _ in operations:
            for place, a in enumerate(qubits):
                for b in qubits[place + 1 :]:
                    used[min(a, b), max(a, b)] = used.get((min(a, b), max(a, b)), 0) + 1
        return _draw_device.svg(self._n, self._edges, used)

    def _repr_svg_(self) -> str:
        return self.draw()

    def _to_plain(self) -> dict[str, Any]:
        return {"n": self._n, "edges": [list(edge) for edge in self._edges], "name": self._name}

    @classmethod
    def _of_plain(cls, plain: Any, where: str) -> Device:
        table = _json.fields(plain, where)
        return _json.built(where, cls, table.get("n"), table.get("edges"), table.get("name", ""))

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, Device):
            return NotImplemented
        return (self._n, self._edges) == (other._n, other._edges)

    def __hash__(self) -> int:
        return hash((self._n, self._edges))

    def __repr__(self) -> str:
        name = f"{self._name!r}: " if self._name else ""
        return f"Device({name}{self._n} qubits, {len(self._edges)} edges)"

    def __reduce__(self) -> tuple[Any, ...]:
        return Device, (self._n, self._edges, self._name)


_SIZE = re.compile(r"\d{1,9}(x\d{1,9})?", re.ASCII)
_SHAPES: dict[str, Callable[..., Device]] = {
    "line": Device.line,
    "grid": Device.grid,
    "heavy-hex": Device.heavy_hex,
    "all-to-all": Device.all_to_all,
}


def _circuit(circuit: Any) -> Circuit | CnotCircuit:
    kinds = (Circuit, CnotCircuit)
    found: Circuit | CnotCircuit = _validate.instance(circuit, "circuit", kinds, "a circuit")
    return found


@cache
def _known_devices() -> dict[str, tuple[Edge, ...]]:
    text = (Path(__file__).parent / "data" / "devices.txt").read_text(encoding="ascii")
    lines = [line for line in text.splitlines() if not line.startswith("#")]
    found: dict[str, tuple[Edge, ...]] = {}
    name = ""
    for word in " ".join(lines).split():
        if word.endswith(":"):
            name = word[:-1]
            found[name] = ()
        else:
            a, b = map(int, word.split("-"))
            found[name] += ((a, b),)
    return found

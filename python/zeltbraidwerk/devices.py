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

from collections.abc import Hashable, Iterable, Mapping
from functools import cached_property
from typing import Any

from zeltbraidwerk import (
    _backends,
    _couplings,
    _device_data,
    _device_shapes,
    _draw_device,
    _edge_costs,
    _json,
    _validate,
    errors,
)
from zeltbraidwerk._coupling_graph import CouplingGraph, Edge
from zeltbraidwerk.circuits import Circuit, CnotCircuit

__all__ = ["Device"]


class Device(CouplingGraph, _json.Stored):
    """The coupling graph of a device: ``n`` qubits from 0 up, and the pairs that may have a
    two-qubit gate.

    Edges have no direction. ``labels`` are what the qubits are called, one for each.
    ``edge_errors`` maps edges, and ``qubit_errors`` qubits, to the probability that a gate there
    goes wrong, from 0 to 1, where it is known; ``edge_durations`` maps edges to the seconds that a
    gate on both qubits takes. Searches use those of edges with ``objective="error"`` and
    ``"duration"``.

    Devices are immutable. Two are equal when their edges, rates and durations are, whatever they
    and their qubits are called.
    """

    def __init__(
        self,
        n: int,
        edges: Iterable[tuple[int, int]],
        name: str = "",
        *,
        labels: Iterable[Hashable] | None = None,
        edge_errors: Mapping[tuple[int, int], float] | None = None,
        qubit_errors: Mapping[int, float] | Iterable[float | None] | None = None,
        edge_durations: Mapping[tuple[int, int], float] | None = None,
    ) -> None:
        self._n = _validate.qubit_count(n)
        self._edges: tuple[Edge, ...] = tuple(sorted(_pairs(edges, self._n)))
        self._name = _validate.text(name, "name")
        self._labels = _device_data.labels_of(labels, self._n)
        self._edge_rates = _device_data.of_edges(
            edge_errors, self._edges, "edge_errors", _device_data.rate
        )
        self._edge_seconds = _device_data.of_edges(
            edge_durations, self._edges, "edge_durations", _device_data.seconds
        )
        self._qubit_rates = _device_data.qubit_rates(qubit_errors, self._n)

    @classmethod
    def _of(cls, found: _couplings.Coupling, name: str = "") -> Device:
        return cls(
            found.n, found.edges, name, labels=found.labels, edge_errors=found.edge_errors,
            qubit_errors=found.qubit_errors, edge_durations=found.edge_durations,
        )  # fmt: skip

    @classmethod
    def from_edges(cls, edges: Iterable[tuple[int, int]], name: str = "") -> Device:
        """A device with the qubits 0 to the greatest number in the edges.

        Edges are pairs of qubits, one per row where they are an array; :meth:`of` takes adjacency
        matrices too, of three and more qubits or sparse.
        Edges without qubit 0 are refused, since they probably count from 1.
        """
        return cls._of(_couplings.of_edges(edges, "edges"), name)

    @classmethod
    def from_networkx(cls, graph: Any) -> Device:
        """An undirected graph of networkx without parallel edges and loops.

        Nodes that are integers, 0 the least, are the qubits of those numbers; numbers in between
        that are no nodes are qubits without an edge. Other integers, such as 1 to n, are numbered
        from 0 in ascending order, and nodes of any other kind in the order of ``graph.nodes``;
        these nodes become the labels.

        >>> import networkx
        >>> Device.from_networkx(networkx.path_graph(["left", "middle", "right"])).labels
        ('left', 'middle', 'right')
        """
        return cls._of(_couplings.of_graph(graph, "graph"))

    @classmethod
    def from_rustworkx(cls, graph: Any) -> Device:
        """An undirected graph of rustworkx without parallel edges and loops; the indices of its
        nodes are the qubits. The data of the nodes become the labels where they tell the nodes
        apart."""
        return cls._of(_couplings.of_graph(graph, "graph"))

    @classmethod
    def from_qiskit(cls, source: Any) -> Device:
        """A coupling map of Qiskit, or a backend or target that has one. Directions are dropped.

        Targets, and backends by theirs, tell error rates: of an edge, that of the two-qubit gate,
        in either direction, that has the least; of a qubit, the greatest of its one-qubit gates,
        some of which are made without a pulse. Measurements do not count. They tell durations of
        edges in the same way.
        """
        return cls._of(_backends.of_qiskit(source, "source"))

    @classmethod
    def from_pytket(cls, architecture: Any) -> Device:
        """An architecture of pytket, or a backend or its BackendInfo, which have one; its nodes are
        numbered in their order.

        Names of nodes become labels where they are no plain numbers. Rates are taken as by
        :meth:`from_qiskit`; where there are only averages of all gates, these.
        """
        return cls._of(_backends.of_pytket(architecture, "architecture"))

    @classmethod
    def line(cls, n: int) -> Device:
        """``n`` qubits in a line, each joined to the next."""
        return cls(*_device_shapes.line(n))

    @classmethod
    def grid(cls, rows: int, columns: int) -> Device:
        """Qubit ``row * columns + column``, connected to its neighbours in row and column."""
        return cls(*_device_shapes.grid(rows, columns))

    @classmethod
    def heavy_hex(cls, rows: int, length: int) -> Device:
        """``rows`` lines of ``length`` qubits, connected through single qubits at every fourth
        place, alternately from place 0 and from place 2 on. Lines are numbered first."""
        return cls(*_device_shapes.heavy_hex(rows, length))

    @classmethod
    def all_to_all(cls, n: int) -> Device:
        """``n`` qubits, each joined to all others."""
        return cls(*_device_shapes.all_to_all(n))

    @classmethod
    def named(cls, name: str) -> Device:
        """A device by its name, or by its shape and size: "line:10", "grid:4x4",
        "heavy-hex:3x9" (rows and length), "all-to-all:8".

        >>> Device.named("tokyo")
        Device('tokyo': 20 qubits, 43 edges)
        >>> Device.named("grid:2x3")
        Device('2 x 3 grid': 6 qubits, 7 edges)
        """
        return cls(*_device_shapes.known(name, "name"))

    @classmethod
    def names(cls) -> tuple[str, ...]:
        """The names of devices that :meth:`named` knows, beside those of shapes."""
        return _device_shapes.names()

    @classmethod
    def of(cls, source: Any) -> Device:
        """A device of anything that describes one: a Device, a name, an object of networkx,
        rustworkx, Qiskit or pytket, or edges, each read as by the method named after it; or an
        adjacency matrix, as a sparse one of scipy or an array or nested lists other than 2 by 2,
        which are pairs."""
        if isinstance(source, Device):
            return source
        if isinstance(source, str):
            return cls(*_device_shapes.known(source, "device"))
        if _couplings.is_graph(source):
            return cls._of(_couplings.of_graph(source, "device"))
        if _validate.comes_from(source, "qiskit"):
            return cls._of(_backends.of_qiskit(source, "device"))
        if _validate.comes_from(source, "pytket"):
            return cls._of(_backends.of_pytket(source, "device"))
        if _couplings.is_adjacency(source):
            return cls._of(_couplings.of_adjacency(source, "device"))
        if isinstance(source, Iterable) and not isinstance(source, (bytes, bytearray, dict)):
            return cls._of(_couplings.of_edges(source, "device"))
        raise errors.DeviceError(
            f"device: got {_validate.shown(source)}, wanted a Device, a name, edges or a graph"
        )

    @property
    def name(self) -> str:
        """What the device is called, such as "grid 4x4"."""
        return self._name

    @property
    def labels(self) -> tuple[Hashable, ...]:
        """What each qubit is called: its number, where the source has no other name for it."""
        return tuple(range(self._n)) if self._labels is None else self._labels

    def qubit(self, label: Hashable) -> int:
        """The number of the qubit with that label."""
        try:
            return self._places[label]
        except (KeyError, TypeError):
            raise errors.DeviceError(
                f"label: got {_validate.shown(label)}, wanted one of the labels of {self!r}"
            ) from None

    @cached_property
    def _places(self) -> dict[Hashable, int]:
        return {label: qubit for qubit, label in enumerate(self.labels)}

    @property
    def edge_errors(self) -> dict[Edge, float] | None:
        """The probability of an error of a gate, by edge, of the edges for which it is known; None
        where none is."""
        return self._by_edge(self._edge_rates)

    @property
    def edge_durations(self) -> dict[Edge, float] | None:
        """The seconds that a gate takes, by edge, as :attr:`edge_errors`."""
        return self._by_edge(self._edge_seconds)

    def _by_edge(self, values: _device_data.Rates | None) -> dict[Edge, float] | None:
        if values is None:
            return None
        listed = zip(self._edges, values, strict=True)
        return {edge: each for edge, each in listed if each is not None}

    @property
    def qubit_errors(self) -> dict[int, float] | None:
        """The probability of an error of a gate on one qubit, by qubit, as :attr:`edge_errors`."""
        if self._qubit_rates is None:
            return None
        return {q: rate for q, rate in enumerate(self._qubit_rates) if rate is not None}

    def error(self, circuit: Circuit | CnotCircuit) -> float:
        """The sum of -log(1 - e) over the two-qubit gates of a circuit on edges, e the error rate
        of the edge: exp(-error) is the probability that none of these gates fails. Edges of unknown
        rate count as the worst that is known.

        >>> device = Device(3, [(0, 1), (1, 2)], edge_errors={(0, 1): 0.01, (1, 2): 0.02})
        >>> round(device.error(CnotCircuit(3, [(0, 1), (2, 1)])), 4)
        0.0303
        """
        return _edge_costs.total(self._costs("error", "circuit"), self._pairs(circuit))

    def duration(self, circuit: Circuit | CnotCircuit) -> float:
        """The seconds that the two-qubit gates of a circuit on edges take, each begun when both of
        its qubits are free. Edges of unknown duration count as the slowest that is known."""
        return _edge_costs.longest_path(self._costs("duration", "circuit"), self._pairs(circuit))

    def _costs(self, kind: _edge_costs.Kind, name: str) -> dict[Edge, float]:
        known = self.edge_errors if kind == "error" else self.edge_durations
        if known is None and self._edges:  # without edges there is nothing to know
            raise errors.DeviceError(
                f"{name}: wanted a device with edge_{kind}s for {kind!r}, got {self!r}"
            )
        make = _edge_costs.of_errors if kind == "error" else _edge_costs.of_durations
        return make(self._edges, known or {})

    def _pairs(self, circuit: Circuit | CnotCircuit) -> list[Edge]:
        if not self.fits(circuit):
            raise errors.DeviceError("circuit: got gates that are on no edge, wanted one that fits")
        return _edge_costs.gates_of(circuit)

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
        inner = [edge for edge in self._edges if edge[0] in places and edge[1] in places]
        errors_of, seconds_of = self.edge_errors or {}, self.edge_durations or {}
        return Device(
            len(chosen),
            [(places[a], places[b]) for a, b in inner],
            f"part of {self._name}" if self._name else "",
            labels=None if self._labels is None else [self._labels[q] for q in chosen],
            edge_errors={(places[a], places[b]): errors_of[a, b]
                         for a, b in inner if (a, b) in errors_of},
            qubit_errors=self._qubit_rates and [self._qubit_rates[q] for q in chosen],
            edge_durations={(places[a], places[b]): seconds_of[a, b]
                            for a, b in inner if (a, b) in seconds_of},
        )  # fmt: skip

    def without(self, edges: Iterable[tuple[int, int]]) -> Device:
        """The device without these edges; its qubits keep their numbers."""
        gone = _pairs(edges, self._n)
        if unknown := gone.difference(self._edges):
            raise errors.DeviceError(f"edges: got {min(unknown)}, wanted edges of the device")
        kept = [edge for edge in self._edges if edge not in gone]
        errors_of, seconds_of = self.edge_errors, self.edge_durations
        return Device(
            self._n, kept, self._name, labels=self._labels, qubit_errors=self._qubit_rates,
            edge_errors=errors_of and {e: errors_of[e] for e in kept if e in errors_of},
            edge_durations=seconds_of and {e: seconds_of[e] for e in kept if e in seconds_of},
        )  # fmt: skip

    def draw(self, circuit: Circuit | CnotCircuit | None = None) -> str:
        """A picture (SVG) with labels and rates; with a circuit, edges are drawn by how often the
        circuit uses them."""
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
        return _draw_device.svg(self, used)

    def _repr_svg_(self) -> str:
        return self.draw()

    def _to_plain(self) -> dict[str, Any]:
        """What is not known is left out."""
        found: dict[str, Any] = {
            "n": self._n, "edges": [list(edge) for edge in self._edges], "name": self._name,
        }  # fmt: skip
        if self._labels is not None:
            found["labels"] = [_device_data.plain_label(label) for label in self._labels]
        for key, values in zip(_VALUES, self._values(), strict=True):
            if values is not None:
                found[key] = list(values)
        return found

    @classmethod
    def _of_plain(cls, plain: Any, where: str) -> Device:
        table = _json.fields(plain, where)
        bare = _json.built(where, cls, table.get("n"), table.get("edges"), table.get("name", ""))
        labels = table.get("labels")
        if isinstance(labels, list):
            labels = [_device_data.label_of_plain(label) for label in labels]
        return _json.built(where, _device, bare, labels, *map(table.get, _VALUES))

    def _values(self) -> tuple[_device_data.Rates | None, ...]:
        return self._edge_rates, self._qubit_rates, self._edge_seconds

    def _key(self) -> tuple[Any, ...]:
        return self._n, self._edges, *self._values()

    def __eq__(self, other: object) -> bool:
        return self._key() == other._key() if isinstance(other, Device) else NotImplemented

    def __hash__(self) -> int:
        return hash(self._key())

    def __repr__(self) -> str:
        name = f"{self._name!r}: " if self._name else ""
        rates = _device_data.about(*self._values())
        return f"Device({name}{self._n} qubits, {len(self._edges)} edges{rates})"

    def __reduce__(self) -> tuple[Any, ...]:
        bare = self._n, self._edges, self._name
        return _restored, (bare, self._labels, *self._values())


_VALUES = ("edge_errors", "qubit_errors", "edge_durations")


def _pairs(edges: Any, n: int) -> set[Edge]:
    """The lower qubit first."""
    listed = list(edges) if isinstance(edges, (set, frozenset)) else edges
    pairs = _validate.cnots(listed, n, "edges").tolist()
    return {(min(pair), max(pair)) for pair in pairs}


def _restored(bare: Any, labels: Any, *values: Any) -> Device:
    return _device(Device(*bare), labels, *values)


def _device(
    bare: Device, labels: Any, edge_rates: Any, qubit_rates: Any, edge_seconds: Any = None
) -> Device:
    """With values in the order of the edges."""
    return Device(
        bare.n, bare.edges, bare.name, labels=labels, qubit_errors=qubit_rates,
        edge_errors=_device_data.listed(edge_rates, bare.edges, "edge_errors"),
        edge_durations=_device_data.listed(edge_seconds, bare.edges, "edge_durations"),
    )  # fmt: skip


def _circuit(circuit: Any) -> Circuit | CnotCircuit:
    kinds = (Circuit, CnotCircuit)
    found: Circuit | CnotCircuit = _validate.instance(circuit, "circuit", kinds, "a circuit")
    return found

"""What the results of all families share."""

from __future__ import annotations

import os
from abc import abstractmethod
from collections.abc import Hashable, Iterable, Sequence
from dataclasses import dataclass, field
from typing import Any, Literal, Self

from zeltbraidwerk import _html, _json, errors, plot
from zeltbraidwerk._search import Point
from zeltbraidwerk.circuits import Circuit, CnotCircuit
from zeltbraidwerk.devices import Device

Objective = Literal["count", "depth", "error", "duration"]
Permutation = Literal["exact", "free"]
Tail = Literal["close", "return"]


@dataclass(frozen=True, kw_only=True, repr=False)
class Result(_json.Stored):
    """A circuit, and how it was found. The same fields mean the same in every family:

    ==================  ============================================================================
    field               what it holds
    ==================  ============================================================================
    ``circuit``         the circuit, on the qubits of the device where there is one
    ``permutation``     output k stands on wire ``permutation[k]``; ascending where all are in place
    ``placement``       wire k is qubit ``placement[k]`` of the circuit; ascending without a device
    ``device``          the device on whose edges the gates are, or None
    ``method``          the method that found the circuit; never "auto"
    ``objective``       what was minimised: "count" or "depth" of two-qubit gates, and on a device
                        ``error`` or ``duration``
    ``seed``            the seed, given or drawn; None where nothing was drawn at random
    ``runs``            the number of runs of all methods together
    ``seconds``         the time of the call
    ``trace``           the moments at which the best circuit became better; empty where there was
                        no search
    ``bound``           proven: no circuit has a lower value of the objective; None where nothing is
                        known
    ``is_optimal``      whether the circuit meets that bound
    ``least_count``     proven: no circuit has fewer two-qubit gates; 0 where nothing is known
    ``least_depth``     proven: no circuit has fewer layers of these; 0 where nothing is known
    ``call``            the call that makes the result again, as text, with the seed that was drawn;
                        with a budget, which ends by the clock, it may make another circuit
    ==================  ============================================================================

    A result cannot be changed. Two are equal when circuit, permutation, placement, device, method,
    objective, seed and what the family adds are; ``runs``, ``seconds``, ``trace``, both bounds
    and ``call`` do not count.
    """

    circuit: Circuit | CnotCircuit
    permutation: tuple[int, ...]
    placement: tuple[int, ...]
    device: Device | None = None
    method: str
    objective: Objective
    seed: int | None = None
    runs: int = field(compare=False, default=1)
    seconds: float = field(compare=False)
    trace: tuple[Point, ...] = field(compare=False, default=())
    least_count: int = field(compare=False, default=0)
    least_depth: int = field(compare=False, default=0)
    call: str = field(compare=False, default="")

    @property
    def n(self) -> int:
        """Number of qubits of the circuit, those of the whole device where there is one."""
        return self.circuit.n

    @property
    def count(self) -> int:
        """Number of two-qubit gates of the circuit; an XX gate on k qubits counts as its
        k (k - 1) / 2 pairs. The circuit tells ``one_qubit_count`` and ``gate_count`` too."""
        return self.circuit.two_qubit_count

    @property
    def depth(self) -> int:
        """Number of layers of two-qubit gates; gates on one qubit take no time."""
        return self.circuit.two_qubit_depth

    @property
    def bound(self) -> int | None:
        """A proven lower bound: no circuit for what was asked has fewer two-qubit gates, or with
        ``objective="depth"`` fewer layers of them. None where nothing is known.

        It is for circuits of the kind that the family makes, with the same permutation of outputs
        (exact or free) and tail, on the edges of the device as it was placed: CNOTs for matrices,
        CNOTs and one gate per term or rotation for phase polynomials and rotations, Clifford gates
        counted in CNOTs for operators and states. Routing and ``optimize`` prove nothing, but that
        no circuit has fewer than 0; and nothing is proven of errors and durations. On how bounds
        are proven see the documentation, "Certificates".
        """
        by_depth = self.objective == "depth"
        if not by_depth and self.objective != "count":
            return None
        least = self.least_depth if by_depth else self.least_count
        return None if least == 0 and self._value() > 0 else least

    @property
    def is_optimal(self) -> bool:
        """Whether it is proven that no circuit has a lower value of the objective."""
        return self.bound is not None and self._value() <= self.bound

    def _value(self) -> int:
        return self.depth if self.objective == "depth" else self.count

    def _certificate(self) -> Iterable[str]:
        """What is proven, in a word or two."""
        if self.bound is not None:
            yield "optimal" if self.is_optimal else f"bound {self.bound}"

    @property
    def error(self) -> float | None:
        """What :meth:`zeltbraidwerk.Device.error` tells; None without a device that has
        ``edge_errors``."""
        known = self.device is not None and self.device.edge_errors
        return self.device.error(self.circuit) if self.device is not None and known else None

    @property
    def duration(self) -> float | None:
        """What :meth:`zeltbraidwerk.Device.duration` tells, in seconds; None without a device that
        has ``edge_durations``."""
        known = self.device is not None and self.device.edge_durations
        return self.device.duration(self.circuit) if self.device is not None and known else None

    @property
    def placement_labels(self) -> tuple[Hashable, ...]:
        """Wire k is on the qubit that the device calls ``placement_labels[k]``: a node of the graph
        that the device came from, or its number."""
        if self.device is None:
            return self.placement
        labels = self.device.labels
        return tuple(labels[qubit] for qubit in self.placement)

    @abstractmethod
    def verify(self) -> bool:
        """Whether the circuit does what was asked for, checked gate by gate without the library."""

    def draw(self, width: int = 100) -> str:
        """The circuit as text, in lines of at most ``width`` characters where gates allow it."""
        return self.circuit.draw(width)

    def save_svg(self, path: str | os.PathLike[str]) -> None:
        """Writes a picture of the circuit to a file, as :meth:`zeltbraidwerk.Circuit.save_svg`."""
        self.circuit.save_svg(path)

    def _repr_html_(self) -> str:
        rows = [
            *self.circuit._rows(),
            ("outputs", _html.listed(self.permutation)),
            *([("device", repr(self.device)), ("qubits", _html.listed(self.placement))]
              if self.device is not None else []),
            ("", ", ".join(self._about())),
            ("proven", ", ".join(self._certificate())),
            ("method", self.method),
            ("seconds", f"{self.seconds:.2g}"),
        ]  # fmt: skip
        shown = [row for row in rows if row[1] != ""]
        return _html.page(self.circuit._repr_svg_(), shown, self.call)

    def _counts(self) -> dict[str, int]:
        proven = {} if self.bound is None else {"bound": self.bound, "is_optimal": self.is_optimal}
        return self.circuit._counts() | proven

    @classmethod
    def _of_plain(cls, plain: Any, where: str) -> Self:
        found = super()._of_plain(plain, where)
        outputs, qubits = found.permutation, found.placement
        if sorted(outputs) != list(range(len(outputs))):
            raise errors.JsonError(f"{where}.permutation: got {outputs}, wanted each wire once")
        if len(set(qubits)) < len(qubits) or not set(qubits) <= set(range(found.n)):
            raise errors.JsonError(
                f"{where}.placement: got {qubits}, wanted different qubits below {found.n}"
            )
        return found

    def plot(self, *, axes: Any = None, value: Literal["count", "depth"] | None = None) -> Any:
        """Draws the best count, or depth, against the seconds of the search, by matplotlib. Without
        ``value`` it is the objective. Returns the axes: those given, or new ones."""
        by_depth = self.objective in ("depth", "duration")
        usual: Literal["count", "depth"] = "depth" if by_depth else "count"
        return plot.best_over_time(self, axes=axes, value=usual if value is None else value)

    def _on_edges(self) -> bool:
        return self.device is None or self.device.fits(self.circuit)

    def _about(self) -> Iterable[str]:
        """What the family adds to the text of ``repr``."""
        return ()

    def __repr__(self) -> str:
        parts = [f"{self.count} two-qubit gates", f"depth {self.depth}"]
        parts += [*self._certificate(), *self._about()]
        if self.permutation != tuple(range(len(self.permutation))):
            parts.append("outputs permuted")
        return (
            f"{type(self).__name__}({self.method}: {len(self.placement)} qubits, "
            f"{', '.join(parts)}, {self.seconds:.2g} s)"
        )


def spread(letters: str, placement: Sequence[int], n: int) -> str:
    """A Pauli string on wires as one on ``n`` qubits: letter k goes to ``placement[k]``."""
    placed = ["I"] * n
    for letter, qubit in zip(letters, placement, strict=True):
        placed[qubit] = letter
    return "".join(placed)

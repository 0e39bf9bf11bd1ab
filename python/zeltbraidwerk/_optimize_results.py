"""The result of optimising a whole circuit."""

from __future__ import annotations

from collections.abc import Iterable, Sequence
from dataclasses import dataclass, field, replace
from functools import cached_property
from typing import Any

from zeltbraidwerk import _block_check, _circuit_check, _core
from zeltbraidwerk._operations import of_core
from zeltbraidwerk._results import Result
from zeltbraidwerk._routing_results import placed
from zeltbraidwerk.circuits import Circuit
from zeltbraidwerk.gates import Gate
from zeltbraidwerk.instructions import Operation


@dataclass(frozen=True)
class CircuitCounts:
    """How large a circuit is.

    ``one_qubit`` counts all other gates, ``rotations`` those of them that are by no multiple of
    pi/2, and ``t`` the rotations by an odd multiple of pi/4.
    """

    two_qubit: int
    depth: int
    one_qubit: int
    rotations: int
    t: int

    @classmethod
    def of(cls, circuit: Circuit) -> CircuitCounts:
        return cls(
            circuit.two_qubit_count, circuit.two_qubit_depth, circuit.one_qubit_count,
            circuit.rotation_count, circuit.t_count,
        )  # fmt: skip


@dataclass(frozen=True)
class Stage:
    """A circuit on the way from the source, by exact rewriting of the one before or, where there is
    a log, by what that lists. ``permutation`` is against the source."""

    circuit: Circuit
    permutation: tuple[int, ...]
    log: tuple[_block_check.Step, ...]

    @classmethod
    def of(
        cls, n: int, gates: Sequence[_core.Gate], permutation: Sequence[int], log: Sequence[Any]
    ) -> Stage:
        """From the compiled part."""
        return cls(of_core(n, gates), tuple(permutation), tuple(
            _block_check.Step(tuple(q for q in qubits if q >= 0), tuple(before),
                              of_core(n, after).gates, moves)
            for qubits, moves, before, after in log
        ))  # fmt: skip

    def after(self, wires: Sequence[int]) -> Stage:
        """The same against a source whose output q was on ``wires[q]``."""
        return replace(self, permutation=tuple(self.permutation[wire] for wire in wires))

    def placed(self, qubits: Sequence[int], n: int) -> Stage:
        """The same on ``n`` qubits: what is on qubit k goes to ``qubits[k]``."""
        wires = list(range(n))
        for q, wire in enumerate(self.permutation):
            wires[qubits[q]] = qubits[wire]
        return Stage(
            self.circuit.placed(qubits, n), tuple(wires),
            tuple(step.placed(qubits) for step in self.log),
        )  # fmt: skip


@dataclass(frozen=True, kw_only=True, repr=False)
class Optimization(Result):
    """A shorter circuit, and how it was found.

    ``source`` is the circuit that was given. ``before`` and ``after`` tell how large both are.
    ``rounding`` is the farthest that an angle was from the multiple of pi/2 that it was taken for,
    at most 1e-9; 0 where none was rounded. The operator is that of the source up to
    a global phase, with output q on wire ``permutation[q]``.
    """

    circuit: Circuit
    source: Circuit
    rounding: float = 0.0
    # Of each piece, the circuits on the way to it, on the qubits of the circuit; none where all is
    # exact rewriting.
    _stages: tuple[tuple[Stage, ...], ...] = field(compare=False, default=())

    @cached_property
    def before(self) -> CircuitCounts:
        """Of the source."""
        return CircuitCounts.of(self.source)

    @cached_property
    def after(self) -> CircuitCounts:
        """Of the circuit."""
        return CircuitCounts.of(self.circuit)

    def verify(self) -> bool:
        """Compares both circuits by signed normal forms, gate by gate and without the library:
        the same rotations with their angles, in the same order where they do not commute, and the
        same Clifford operator, piece by piece between measurements, resets, conditions and
        barriers, which are those of the source; and gates are on edges. Windows that were replaced
        by numbers are compared by their matrices, and the circuits between such replacements by
        normal forms."""
        source, ending = placed(self.source, self.placement[: self.source.n], self.n).split_ending()
        circuit, found_ending = split_last(self.circuit, len(ending.operations))
        wires = self._wires()
        pieces, between = pieces_of(source)
        found, found_between = pieces_of(circuit)
        last = len(pieces) - 1
        return (
            between == found_between
            and ending.placed(wires, self.n).operations == found_ending.operations
            and all(
                self._same(k, piece, made, wires if k == last else list(range(self.n)))
                for k, (piece, made) in enumerate(zip(pieces, found, strict=True))
            )
            and self._on_edges()
        )

    def _same(self, k: int, source: Circuit, made: Circuit, wires: list[int]) -> bool:
        """Through the stages of piece k, and from the last of them to the circuit."""
        now, there = source, list(range(self.n))
        stages = self._stages[k] if k < len(self._stages) else ()
        for stage in (*stages, Stage(made, tuple(wires), ())):
            if stage.log:
                if not _block_check.same_blocks(now, stage.circuit, stage.log):
                    return False
            else:
                turned = [0] * self.n
                for q, wire in enumerate(there):
                    turned[wire] = stage.permutation[q]
                if not _circuit_check.same_operator(now, stage.circuit, turned):
                    return False
                there = list(stage.permutation)
            now = stage.circuit
        return True

    def _wires(self) -> list[int]:
        """Where output q of the placed source is, for all qubits of the device."""
        wires = list(range(self.n))
        for wire, place in enumerate(self.placement):
            wires[place] = self.placement[self.permutation[wire]]
        return wires

    def _about(self) -> Iterable[str]:
        yield f"{self.before.two_qubit} before"
        yield f"{self.after.rotations} rotations"
        if self.after.t:
            yield f"{self.after.t} T gates"


def split_last(circuit: Circuit, count: int) -> tuple[Circuit, Circuit]:
    """The circuit without its last operations, and these: the ending of an optimised circuit. More
    operations could count as its ending where the gates after them have vanished."""
    end = max(len(circuit.operations) - count, 0)
    parts = circuit.operations[:end], circuit.operations[end:]
    first, ending = (Circuit._trusted(circuit.n, part, circuit.classical) for part in parts)
    return first, ending


def pieces_of(circuit: Circuit) -> tuple[list[Circuit], list[Operation]]:
    """The gates before, between and after the operations of other kinds, and these."""
    pieces: list[list[Gate]] = [[]]
    between: list[Operation] = []
    for item in circuit:
        if isinstance(item, Gate):
            pieces[-1].append(item)
        else:
            between.append(item)
            pieces.append([])
    return [Circuit._trusted(circuit.n, tuple(piece)) for piece in pieces], between

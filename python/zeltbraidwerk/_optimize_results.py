"""The result of optimising a whole circuit."""

from __future__ import annotations

import math
from collections.abc import Iterable, Iterator, Sequence
from dataclasses import dataclass, field, replace
from functools import cached_property
from typing import Any

from zeltbraidwerk import _block_check, _circuit_check, _core
from zeltbraidwerk._operations import Held, of_core, of_held
from zeltbraidwerk._results import Result
from zeltbraidwerk._routing_results import placed
from zeltbraidwerk.circuits import Circuit
from zeltbraidwerk.gates import Gate
from zeltbraidwerk.instructions import Conditional, Operation


@dataclass(frozen=True)
class CircuitCounts:
    """How large a circuit is.

    ``one_qubit`` counts all other gates, ``rotations`` those of them that are by no multiple of
    pi/2, and ``t`` the rotations by an odd multiple of pi/4. ``fused`` is what ``one_qubit`` is
    after :meth:`~zeltbraidwerk.Circuit.fused`.
    """

    two_qubit: int
    depth: int
    one_qubit: int
    rotations: int
    t: int
    fused: int

    @classmethod
    def of(cls, circuit: Circuit) -> CircuitCounts:
        """The counts of a circuit."""
        return cls(
            circuit.two_qubit_count, circuit.two_qubit_depth, circuit.one_qubit_count,
            circuit.rotation_count, circuit.t_count, circuit.fused().one_qubit_count,
        )  # fmt: skip


@dataclass(frozen=True)
class Stage:
    """A circuit on the way from the source, by exact rewriting of the one before or, where there is
    a log, by what that lists: exp(i ``phase``) times it is the one before then. ``permutation`` is
    against the source."""

    circuit: Circuit
    permutation: tuple[int, ...]
    log: tuple[_block_check.Step, ...]
    phase: float = 0.0

    @classmethod
    def of(
        cls,
        n: int,
        gates: Held,
        permutation: Sequence[int],
        log: Sequence[Any],
        phase: float,
    ) -> Stage:
        """From the compiled part."""
        return cls(of_held(n, gates), tuple(permutation), tuple(
            _block_check.Step(tuple(q for q in qubits if q >= 0), tuple(before),
                              of_core(n, after).gates, moves)
            for qubits, moves, before, after in log
        ), phase)  # fmt: skip

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
            tuple(step.placed(qubits) for step in self.log), self.phase,
        )  # fmt: skip


@dataclass(frozen=True, kw_only=True, repr=False)
class Optimization(Result):
    """A shorter circuit, and how it was found.

    ``source`` is the circuit that was given. ``before`` and ``after`` tell how large both are.
    ``rounding`` is the farthest that an angle was from the multiple of pi/2 that it was taken for,
    at most 1e-9; 0 where none was rounded. The operator is that of the source up to
    a global phase, ``global_phase``, with output q on wire ``permutation[q]``.

    ``front`` is for the objective "depth" and circuits of one piece, without other operations than
    gates in the middle: circuits from few layers to few two-qubit gates, of which none has both at
    most as many layers and at most as many gates as another. The first is as large as the result.
    """

    circuit: Circuit
    source: Circuit
    rounding: float = 0.0
    front: tuple[Optimization, ...] = field(compare=False, default=())
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
        source, circuit, ending, found_ending = self._parts()
        return (
            pieces_of(source)[1] == pieces_of(circuit)[1]
            and ending.placed(self._wires(), self.n).operations == found_ending.operations
            and all(
                _block_check.same_blocks(before, stage.circuit, stage.log)
                if stage.log
                else _circuit_check.same_operator(before, stage.circuit, wires)
                for before, stage, wires in self._changes(source, circuit)
            )
            and self._on_edges()
        )

    @cached_property
    def global_phase(self) -> float | None:
        """The operator of ``source`` is exp(i ``global_phase``) times that of ``circuit``, where
        output q of the source is on wire ``permutation[q]`` (with a device, on qubit
        ``placement[permutation[q]]``). In radians, above -pi and at most pi.

        Gates are the matrices that other packages have for them: S is diag(1, i), and PH by an
        angle a is diag(1, exp(i a)). None where PH by a symbol became RZ, so that the phase has a
        symbol in it; other symbolic angles leave the phase a number. Readers of other formats take
        gates apart up to a global phase, so that ``source`` may lack one itself.

        It is computed when it is asked for: O(n / 64) for each gate on two qubits and O(n^2 / 64)
        for each H, less than a second for 10^5 gates on 100 qubits.
        """
        source, circuit, _, _ = self._parts()
        phase = sum(
            stage.phase
            if stage.log
            else _core._rewriting_phase(self.n, before._held(), stage.circuit._held(), list(wires))
            for before, stage, wires in self._changes(source, circuit)
        )
        symbols, shift = _circuit_check.plus(_phase_angle(source), _phase_angle(circuit), -1)
        if symbols:
            return None
        phase = math.remainder(phase + shift / 2, 2 * math.pi)
        return math.pi if phase <= -math.pi else phase

    def _parts(self) -> tuple[Circuit, Circuit, Circuit, Circuit]:
        """The placed source and the circuit without their endings, and these."""
        source, ending = placed(self.source, self.placement[: self.source.n], self.n).split_ending()
        circuit, found_ending = split_last(self.circuit, len(ending.operations))
        return _exchanged(source, circuit), circuit, ending, found_ending

    def _changes(
        self, source: Circuit, circuit: Circuit
    ) -> Iterator[tuple[Circuit, Stage, list[int]]]:
        """Piece by piece through its stages, and from the last of them to the circuit: what was
        before, the stage, and where each wire of the one before is in it."""
        pieces, found = pieces_of(source)[0], pieces_of(circuit)[0]
        in_place = tuple(range(self.n))
        for k, (now, made) in enumerate(zip(pieces, found, strict=True)):
            there = in_place
            wires = tuple(self._wires()) if k + 1 == len(pieces) else in_place
            stages = self._stages[k] if k < len(self._stages) else ()
            for stage in (*stages, Stage(made, wires, ())):
                turned = [0] * self.n
                for q, wire in enumerate(there):
                    turned[wire] = stage.permutation[q]
                yield now, stage, turned
                if not stage.log:
                    there = stage.permutation
                now = stage.circuit

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


def _exchanged(source: Circuit, circuit: Circuit) -> Circuit:
    """The source with its controlled gates between the qubits where ``circuit`` has them: where the
    first qubit is another one, both are exchanged before the gate and after it."""
    there = iter(pieces_of(circuit)[1])
    made: list[Operation] = []
    for item in source:
        swap: list[Gate] = []
        if not isinstance(item, Gate) and isinstance(found := next(there, None), Conditional):
            (a, *rest), (b, *others) = item.qubits, found.qubits
            if isinstance(item, Conditional) and a != b and len(rest) == 1 and rest == others:
                swap = [Gate.cnot(a, b), Gate.cnot(b, a), Gate.cnot(a, b)]
                item = item._placed([b if q == a else q for q in range(source.n)])
        made += [*swap, item, *swap]
    return Circuit._trusted(source.n, tuple(made), source.classical)


def _phase_angle(circuit: Circuit) -> _circuit_check.Angle:
    """Twice the phase of the gates as matrices against those of the compiled part, where S, D-S
    and PH are rotations about Z."""
    total: _circuit_check.Angle = ((), 0.0)
    for gate in circuit.gates:
        if gate.name == "PH":
            total = _circuit_check.plus(total, _circuit_check.angle_of(gate.params[0]), 1)
        elif gate.name in ("S", "D-S"):
            quarter = math.pi / 2 if gate.name == "S" else -math.pi / 2
            total = total[0], total[1] + quarter
    return total


def split_last(circuit: Circuit, count: int) -> tuple[Circuit, Circuit]:
    """The circuit without its last operations, and these: the ending of an optimised circuit. More
    operations could count as its ending where the gates after them have vanished."""
    end = max(len(circuit.operations) - count, 0)
    parts = circuit.operations[:end], circuit.operations[end:]
    first, ending = (Circuit._trusted(circuit.n, part, circuit.classical) for part in parts)
    return first, ending


def pieces_of(circuit: Circuit) -> tuple[list[Circuit], list[Operation]]:
    """The gates before, between and after the operations of other kinds, and these."""
    if circuit._is_plain:
        return [Circuit._trusted(circuit.n, circuit.operations)], []
    pieces: list[list[Gate]] = [[]]
    between: list[Operation] = []
    for item in circuit:
        if isinstance(item, Gate):
            pieces[-1].append(item)
        else:
            between.append(item)
            pieces.append([])
    return [Circuit._trusted(circuit.n, tuple(piece)) for piece in pieces], between

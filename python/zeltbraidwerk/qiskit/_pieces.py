"""A circuit of Qiskit cut into pieces of gates that this package can read, and the rest."""

from __future__ import annotations

import cmath
import math
from collections.abc import Iterable, Iterator
from dataclasses import dataclass, field
from typing import Any

import numpy as np
from qiskit.circuit import Gate as QiskitGate
from qiskit.circuit import ParameterExpression, QuantumCircuit
from qiskit.quantum_info import Operator

from zeltbraidwerk import _interop_qiskit, errors
from zeltbraidwerk._header import read_gate, table
from zeltbraidwerk.circuits import Circuit
from zeltbraidwerk.gates import Gate, Parameter
from zeltbraidwerk.qiskit._gates import Symbols, append

_TURN = Parameter(math.pi / 2)
# Gates with angles that the table has with their phase.
_WITH_PHASE = frozenset(
    ("rx", "ry", "rz", "p", "u1", "rxx", "rzz", "crx", "cry", "crz", "cp", "cu1")
)
_MOST_SEEN = 6  # qubits of a gate whose phase is found by its matrix
_MOST_INNER = 10_000  # gates of a definition; a gate of more is left as it is
_MOST_NESTED = 100


@dataclass
class Piece:
    """Gates between cuts: the instructions, as gates of this package on the same qubits, and the
    instructions that come after them."""

    instructions: list[Any] = field(default_factory=list)
    gates: list[Gate] = field(default_factory=list)
    symbols: Symbols = field(default_factory=Symbols)
    # The phase of the instructions before the gates: a number, and what may have symbols.
    number: float = 0.0
    phase: Any = 0.0
    cuts: list[Any] = field(default_factory=list)


def pieces_of(circuit: QuantumCircuit) -> list[Piece]:
    """All instructions of the circuit, one piece after the other with its cuts, in an order that is
    that of the circuit on each qubit and bit.

    A cut is what cannot be read: measurements, resets, barriers, control flow, delays, and gates
    without a definition. It separates what is before it on its qubits and bits from what is
    after; others may change places with it.
    """
    place = {qubit: index for index, qubit in enumerate(circuit.qubits)}
    # Cuts may depend on each other by variables.
    shared = ["variables"] if circuit.num_vars or circuit.num_stretches else []
    levels: dict[Any, int] = {}
    pieces = [Piece()]
    reader = _Reader()
    for instruction in circuit.data:
        wires = [*instruction.qubits, *instruction.clbits]
        level = max((levels.get(wire, 0) for wire in wires), default=0)
        if reader.read(instruction, [place[q] for q in instruction.qubits], pieces[level]):
            levels.update(dict.fromkeys(wires, level))
            continue
        level = max([level, *(levels.get(wire, 0) for wire in shared)])
        pieces[level].cuts.append(instruction)
        levels.update(dict.fromkeys(wires, level + 1), **dict.fromkeys(shared, level))
        if level + 1 == len(pieces):
            pieces.append(Piece())
    return pieces


class _Reader:
    """Keeps what gates without parameters become, by their name, as they are read many times."""

    def __init__(self) -> None:
        self._fixed: dict[str, list[Gate]] = {}
        self._phases: dict[Any, float] = {}
        self._number = 0.0  # the phase of a gate: a number, and ...
        self._symbols: list[Any] = []  # ... what has symbols

    def read(self, instruction: Any, on: list[int], piece: Piece) -> bool:
        """Adds it to the piece; False for what is no gate or cannot be read."""
        if not on or not (
            instruction.is_standard_gate() or isinstance(instruction.operation, QiskitGate)
        ):
            return False
        self._number, self._symbols = 0.0, []
        try:
            gates = list(self._gates(instruction, on, piece.symbols, 0))
        except errors.Error:
            return False
        piece.instructions.append(instruction)
        piece.gates.extend(gates)
        piece.number += self._number
        for symbolic in self._symbols:
            piece.phase = piece.phase + symbolic
        return True

    def _gates(
        self, instruction: Any, on: list[int], symbols: Symbols, depth: int
    ) -> Iterator[Gate]:
        name, params = instruction.name, instruction.params
        name = _interop_qiskit.STANDARD.get(name, name)
        known = instruction.is_standard_gate() and name in table()
        symbolic = any(isinstance(p, ParameterExpression) and p.parameters for p in params)
        if known and not params:
            if name not in self._fixed:
                self._fixed[name] = list(_fixed(name))
            for gate in self._fixed[name]:
                yield Gate._trusted(gate.name, tuple(on[q] for q in gate.qubits), gate.params)
            self._count_phase(name, instruction.operation, self._fixed[name])
        elif known and not symbolic:
            angles = [float(p) for p in params]
            for plain in read_gate(name, on, angles):
                yield Gate._trusted(*plain)
            if name not in _WITH_PHASE:
                local = [Gate._trusted(*plain) for plain in read_gate(name, range(len(on)), angles)]
                self._count_phase((name, *angles), instruction.operation, local)
        elif not symbolic:
            local = _by_qiskit(instruction.operation)
            for gate in local:
                yield Gate._trusted(gate.name, tuple(on[q] for q in gate.qubits), gate.params)
            self._count_phase(None, instruction.operation, local)
        elif known and len(on) == 1:
            yield from self._symbolic(name, on[0], params, symbols)
        else:
            yield from self._defined(instruction.operation, on, symbols, depth)

    def _count_phase(self, key: Any, operation: Any, gates: list[Gate]) -> None:
        """Of the operation before the gates, on the same qubits; kept by the key."""
        if key is None or key not in self._phases:
            self._phases[key] = _phase_before(operation, gates)
        self._number += self._phases[key]

    def _symbolic(self, name: str, on: int, params: Any, symbols: Symbols) -> Iterator[Gate]:
        """Rotations alone, so that what is left is the same phase for every value."""
        angles = [symbols.read(p) for p in params]
        if name in ("rx", "ry", "rz"):
            turns = [(name.upper(), angles[0])]
        elif name in ("p", "u1"):
            self._symbols.append(params[0] / 2)
            turns = [("RZ", angles[0])]
        elif name in ("u", "U", "u3", "u2"):
            theta = _TURN if name == "u2" else angles[0]
            self._symbols.append((params[-2] + params[-1]) / 2)
            turns = [("RZ", angles[-1]), ("RY", theta), ("RZ", angles[-2])]
        else:
            raise errors.GateError(f"got {name} with a symbolic angle")
        for kind, angle in turns:
            yield Gate._trusted(kind, (on,), (angle,))

    def _defined(
        self, operation: Any, on: list[int], symbols: Symbols, depth: int
    ) -> Iterator[Gate]:
        definition = operation.definition
        if definition is None or depth > _MOST_NESTED:
            raise errors.GateError(f"got the gate {operation.name}, which has no definition")
        self._symbols.append(definition.global_phase)
        for inner in definition.data:
            places = [on[definition.find_bit(qubit).index] for qubit in inner.qubits]
            if not isinstance(inner.operation, QiskitGate):
                raise errors.GateError(f"got {inner.name} in {operation.name}")
            if places:
                yield from self._gates(inner, places, symbols, depth + 1)
            else:
                self._symbols.append(inner.params[0])


def _fixed(name: str) -> Iterable[Gate]:
    """A gate without parameters, on qubits from 0."""
    for plain in read_gate(name, range(table()[name].qubits), []):
        yield Gate._trusted(*plain)


def _by_qiskit(operation: Any) -> list[Gate]:
    """Whatever the reader of circuits takes apart, on qubits from 0."""
    n = operation.num_qubits
    holder = QuantumCircuit(n)
    holder.append(operation, range(n))
    return list(Circuit._of_read(_interop_qiskit.read(holder, _MOST_INNER)).unitary())


def _phase_before(operation: Any, gates: list[Gate]) -> float:
    """The operation is the gates up to this phase; 0 where it is too large to see."""
    n = operation.num_qubits
    if n > _MOST_SEEN:
        return 0.0
    made = QuantumCircuit(n)
    append(made, gates, Symbols())
    # An evolution is the product that defines it.
    definition = operation.definition if operation.name == "PauliEvolution" else None
    wanted = Operator(operation if definition is None else definition)
    return cmath.phase(complex(np.vdot(Operator(made).data, wanted.data)))

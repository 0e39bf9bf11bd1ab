"""Circuits: immutable values that draw themselves and convert to other packages' formats."""

from __future__ import annotations

import os
from abc import abstractmethod
from collections.abc import Iterable, Iterator
from functools import cached_property
from pathlib import Path
from typing import TYPE_CHECKING, Any, Self

import numpy as np
import numpy.typing as npt

from zeltbraidwerk import _core, _draw, _interop, _validate, errors
from zeltbraidwerk.gates import ROTATIONS, Gate, Parameter

if TYPE_CHECKING:
    import pytket.circuit
    import qiskit
    import stim

__all__ = ["Circuit", "CnotCircuit", "Gate", "Parameter"]


class _CircuitBase:
    """What all circuits share: pictures, and the ways out and in."""

    _n: int

    @property
    def n(self) -> int:
        """Number of qubits."""
        return self._n

    @abstractmethod
    def _operations(self) -> Iterable[_interop.Operation]:
        """The gates as plain tuples, for writers and pictures."""

    @classmethod
    @abstractmethod
    def _from_operations(cls, n: int, operations: Iterable[_interop.Operation]) -> Self:
        """The way back; raises where a gate does not fit the kind of circuit."""

    def draw(self, width: int = 100) -> str:
        """The circuit as text, in lines of at most ``width`` characters where gates allow it."""
        width = _validate.integer(width, "width", 1)
        return _draw.text(self._n, map(_box, self._operations()), width)

    def _repr_svg_(self) -> str:
        return _draw.svg(self._n, list(map(_box, self._operations())))

    def to_qasm(self) -> str:
        """OpenQASM 2."""
        return _interop.to_qasm(self._n, self._operations())

    @classmethod
    def from_qasm(cls, text: str) -> Self:
        """Reads OpenQASM 2. Registers are numbered through, Toffolis and swaps taken apart.

        Unitary gates of ``qelib1.inc`` up to three qubits are read; measurements and gate
        definitions are refused. Global phases are not kept.
        """
        return cls._from_operations(*_interop.from_qasm(text))

    def to_qiskit(self) -> qiskit.QuantumCircuit:
        return _interop.to_qiskit(self._n, self._operations())

    @classmethod
    def from_qiskit(cls, circuit: qiskit.QuantumCircuit) -> Self:
        """Reads a circuit of Qiskit; gates that are not known must be decomposed before."""
        return cls._from_operations(*_interop.from_qiskit(circuit))

    def to_pytket(self) -> pytket.circuit.Circuit:
        return _interop.to_pytket(self._n, self._operations())

    @classmethod
    def from_pytket(cls, circuit: pytket.circuit.Circuit) -> Self:
        """Reads a circuit of pytket; gates that are not known must be rebased before."""
        return cls._from_operations(*_interop.from_pytket(circuit))

    def to_stim(self) -> stim.Circuit:
        """Clifford circuits alone; rotations by multiples of pi/2 become Clifford gates."""
        return _interop.to_stim(self._n, self._operations())

    @classmethod
    def from_stim(cls, circuit: stim.Circuit) -> Self:
        """Reads a unitary circuit of Stim."""
        return cls._from_operations(*_interop.from_stim(circuit))


def _box(operation: _interop.Operation) -> _draw.Box:
    name, qubits, params = operation
    if name == "CNOT":
        return _draw.Box(qubits, (_draw.CONTROL, _draw.TARGET))
    if name in ("CSIGN", "CZ"):
        return _draw.Box(qubits, (_draw.CONTROL, _draw.CONTROL))
    label = f"{name}({params[0]})" if name in ROTATIONS else name
    return _draw.Box(qubits, (label,) * len(qubits))


class CnotCircuit(_CircuitBase):
    """A circuit of CNOTs on ``n`` qubits: (control, target) pairs, the first acts first.

    >>> circuit = CnotCircuit(3, [(0, 1), (1, 2)])
    >>> circuit
    CnotCircuit(3 qubits, 2 CNOTs, depth 2)
    >>> list(circuit)
    [(0, 1), (1, 2)]
    >>> circuit.matrix().astype(int)  # row r lists the inputs whose XOR stands on output r
    array([[1, 0, 0],
           [1, 1, 0],
           [1, 1, 1]])
    >>> print(circuit.draw())
    q0: ──●─────
          │
    q1: ──⊕──●──
             │
    q2: ─────⊕──
    """

    def __init__(self, n: int, gates: Iterable[tuple[int, int]] | npt.NDArray[Any] = ()) -> None:
        self._n = _validate.qubit_count(n)
        self._gates = _validate.cnots(gates, self._n, "gates")

    @classmethod
    def _trusted(cls, n: int, gates: npt.NDArray[np.int32]) -> CnotCircuit:
        """Of an array that nobody else holds and whose entries are known to be right."""
        circuit = cls.__new__(cls)
        circuit._n = n
        circuit._gates = _validate.frozen(gates)
        return circuit

    @classmethod
    def from_core(cls, circuit: _core.CnotCircuit) -> CnotCircuit:
        _validate.instance(circuit, "circuit", _core.CnotCircuit, "a circuit of the core")
        return cls._trusted(circuit.nbqbits, circuit.gates)

    def to_core(self) -> _core.CnotCircuit:
        return _core.CnotCircuit(self._n, self._gates)

    @property
    def gates(self) -> npt.NDArray[np.int32]:
        """The (control, target) pairs as a read-only (count, 2) array."""
        return self._gates

    @property
    def count(self) -> int:
        """Number of CNOTs."""
        return len(self._gates)

    @cached_property
    def depth(self) -> int:
        """Number of layers when every CNOT is placed as soon as its qubits are free."""
        return self.to_core().depth()

    def matrix(self) -> npt.NDArray[np.bool_]:
        """The linear map: row r marks the inputs whose XOR stands on output r."""
        return self.to_core().Simulate()

    def inverse(self) -> CnotCircuit:
        return self._trusted(self._n, self._gates[::-1].copy())

    def to_circuit(self) -> Circuit:
        """The same gates as a general circuit."""
        return Circuit(self._n, (Gate("CNOT", pair) for pair in self))

    def __add__(self, later: CnotCircuit) -> CnotCircuit:
        """This circuit, then the other."""
        if not isinstance(later, CnotCircuit):
            return NotImplemented
        _same_size(self, later)
        return self._trusted(self._n, np.concatenate((self._gates, later._gates)))

    def __len__(self) -> int:
        return len(self._gates)

    def __iter__(self) -> Iterator[tuple[int, int]]:
        return map(tuple, self._gates.tolist())

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, CnotCircuit):
            return NotImplemented
        return self._n == other._n and np.array_equal(self._gates, other._gates)

    def __hash__(self) -> int:
        return hash((self._n, self._gates.tobytes()))

    def __repr__(self) -> str:
        return f"CnotCircuit({self._n} qubits, {self.count} CNOTs, depth {self.depth})"

    def __reduce__(self) -> tuple[Any, ...]:
        return CnotCircuit, (self._n, self._gates)

    def _operations(self) -> Iterator[_interop.Operation]:
        return (("CNOT", pair, ()) for pair in self)

    @classmethod
    def _from_operations(cls, n: int, operations: Iterable[_interop.Operation]) -> CnotCircuit:
        pairs = []
        for name, qubits, _ in operations:
            if name not in ("CNOT", "I"):
                raise errors.NotLinearError(f"got the gate {name}, wanted CNOTs alone")
            if name == "CNOT":
                pairs.append((qubits[0], qubits[1]))
        return cls(n, pairs)


class Circuit(_CircuitBase):
    """A circuit of :class:`Gate` on ``n`` qubits, the first acts first.

    >>> bell = Circuit(2, [Gate.h(0), Gate.cnot(0, 1)])
    >>> bell
    Circuit(2 qubits, 2 gates, 1 two-qubit, depth 2)
    >>> print(bell.draw())
    q0: ──H──●──
             │
    q1: ─────⊕──
    >>> print(bell.to_qasm())
    OPENQASM 2.0;
    include "qelib1.inc";
    qreg q[2];
    h q[0];
    cx q[0],q[1];
    <BLANKLINE>
    """

    def __init__(self, n: int, gates: Iterable[Gate] = ()) -> None:
        self._n = _validate.qubit_count(n)
        self._gates = tuple(gates)
        for gate in self._gates:
            if not isinstance(gate, Gate):
                raise errors.DtypeError(f"gates: got {gate!r}, wanted a Gate")
            _validate.qubits_below(gate.qubits, self._n, "gates")

    @classmethod
    def of(cls, source: Any) -> Circuit:
        """Whatever stands for a circuit: one of these, a CnotCircuit, a circuit of Qiskit, pytket
        or Stim, text in OpenQASM 2, or the path of a file of it."""
        if isinstance(source, Circuit):
            return source
        if isinstance(source, CnotCircuit):
            return source.to_circuit()
        if isinstance(source, os.PathLike) or (isinstance(source, str) and _is_path(source)):
            try:
                source = Path(source).read_text(encoding="utf-8")
            except UnicodeDecodeError:
                raise errors.QasmError(f"circuit: {source} is no text") from None
        if isinstance(source, str):
            return cls.from_qasm(source)
        kind = type(source).__module__.partition(".")[0].lstrip("_")
        if kind == "qiskit":
            return cls.from_qiskit(source)
        if kind == "pytket":
            return cls.from_pytket(source)
        if kind == "stim":
            return cls.from_stim(source)
        raise errors.DtypeError(
            f"circuit: got {type(source).__name__}, wanted a Circuit, OpenQASM 2, or a circuit of "
            "Qiskit, pytket or Stim"
        )

    @classmethod
    def _trusted(cls, n: int, gates: tuple[Gate, ...]) -> Circuit:
        """Of gates that are known to be right."""
        circuit = cls.__new__(cls)
        circuit._n, circuit._gates = n, gates
        return circuit

    @classmethod
    def from_core(cls, n: int, gates: Iterable[_core.Gate]) -> Circuit:
        listed = _validate.items(gates, "gates", "gates of the core")
        return cls(n, [Gate.from_core(gate) for gate in listed])

    def to_core(self) -> list[_core.Gate]:
        return [gate.to_core() for gate in self._gates]

    @property
    def gates(self) -> tuple[Gate, ...]:
        return self._gates

    @property
    def count(self) -> int:
        """Number of gates."""
        return len(self._gates)

    @property
    def two_qubit_count(self) -> int:
        """Number of two-qubit gates; an XX on k qubits counts its k (k - 1) / 2 pairs."""
        sizes = [len(gate.qubits) for gate in self._gates]
        return sum(size * (size - 1) // 2 for size in sizes)

    @cached_property
    def depth(self) -> int:
        """Number of layers when every gate is placed as soon as its qubits are free."""
        return _depth(self._n, self._gates)

    @cached_property
    def two_qubit_depth(self) -> int:
        """The depth when gates on one qubit take no time."""
        return _depth(self._n, [gate for gate in self._gates if len(gate.qubits) > 1])

    def inverse(self) -> Circuit:
        return Circuit(self._n, [gate.inverse() for gate in reversed(self._gates)])

    def to_cnot_circuit(self) -> CnotCircuit:
        """The same circuit where all gates are CNOTs."""
        return CnotCircuit._from_operations(self._n, self._operations())

    def __add__(self, later: Circuit) -> Circuit:
        """This circuit, then the other."""
        if not isinstance(later, Circuit):
            return NotImplemented
        _same_size(self, later)
        return Circuit(self._n, self._gates + later._gates)

    def __len__(self) -> int:
        return len(self._gates)

    def __iter__(self) -> Iterator[Gate]:
        return iter(self._gates)

    def __getitem__(self, index: int) -> Gate:
        return self._gates[index]

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, Circuit):
            return NotImplemented
        return self._n == other._n and self._gates == other._gates

    def __hash__(self) -> int:
        return hash((self._n, self._gates))

    def __repr__(self) -> str:
        return (
            f"Circuit({self._n} qubits, {self.count} gates, "
            f"{self.two_qubit_count} two-qubit, depth {self.depth})"
        )

    def __str__(self) -> str:
        return "\n".join(map(str, self._gates))

    def __reduce__(self) -> tuple[Any, ...]:
        return Circuit, (self._n, self._gates)

    def _operations(self) -> Iterator[_interop.Operation]:
        return ((gate.name, gate.qubits, gate.params) for gate in self._gates)

    @classmethod
    def _from_operations(cls, n: int, operations: Iterable[_interop.Operation]) -> Circuit:
        return cls(n, [Gate(*operation) for operation in operations])


def _is_path(text: str) -> bool:
    return text.endswith(".qasm") and "\n" not in text


def _depth(n: int, gates: Iterable[Gate]) -> int:
    layers = [0] * n
    for gate in gates:
        layer = 1 + max(layers[qubit] for qubit in gate.qubits)
        for qubit in gate.qubits:
            layers[qubit] = layer
    return max(layers, default=0)


def _same_size(first: _CircuitBase, second: _CircuitBase) -> None:
    if first.n != second.n:
        raise errors.ShapeError(f"got circuits on {first.n} and {second.n} qubits, wanted the same")

"""What all circuits share: counts, pictures, and conversion to and from other formats."""

from __future__ import annotations

import os
from abc import abstractmethod
from collections import Counter
from collections.abc import Iterable, Iterator, Sequence
from functools import cached_property
from typing import TYPE_CHECKING, Literal, Self

from zeltbraidwerk import (
    _boxes,
    _draw,
    _files,
    _html,
    _interop_cirq,
    _interop_pennylane,
    _interop_pytket,
    _interop_pyzx,
    _interop_qasm,
    _interop_qasm3,
    _interop_qiskit,
    _interop_stim,
    _validate,
)
from zeltbraidwerk._json import Stored
from zeltbraidwerk._native_pairs import Basis
from zeltbraidwerk._reading import Read
from zeltbraidwerk.gates import Parameter, is_t, rotations
from zeltbraidwerk.instructions import WholeCircuit

if TYPE_CHECKING:
    import cirq
    import pennylane.tape
    import pytket.circuit
    import pyzx
    import qiskit
    import stim


class CircuitBase(Stored):
    """What all circuits share: counts, pictures, and conversion to and from other formats."""

    _n: int

    @property
    def n(self) -> int:
        """Number of qubits."""
        return self._n

    @abstractmethod
    def _operations(self) -> Iterable[tuple[str, tuple[int, ...], tuple[Parameter, ...]]]:
        """The gates as plain tuples, those under a condition as well."""

    @cached_property
    def _sizes(self) -> Counter[int]:
        """How many gates there are by their number of qubits."""
        return Counter(len(qubits) for _, qubits, _ in self._operations())

    @property
    def gate_count(self) -> int:
        """Number of gates, classically controlled ones included."""
        return self._sizes.total()

    @property
    def one_qubit_count(self) -> int:
        """Number of gates on one qubit."""
        return self._sizes[1]

    @property
    def two_qubit_count(self) -> int:
        """Number of two-qubit gates; an XX gate on k qubits counts as its k (k - 1) / 2 pairs."""
        return sum(size * (size - 1) // 2 * gates for size, gates in self._sizes.items())

    @property
    def entangling_count(self) -> int:
        """Number of gates on two or more qubits, an XX gate on k qubits counted once."""
        return self.gate_count - self.one_qubit_count

    @cached_property
    def _turns(self) -> tuple[int, int]:
        """The numbers of rotations and of T gates."""
        turns = [
            angle for name, _, params in self._operations() for angle in rotations(name, params)
        ]
        return len(turns), sum(map(is_t, turns))

    @property
    def rotation_count(self) -> int:
        """Number of angles that gates turn by and that are no multiples of pi/2, T gates included.
        A gate U has up to three."""
        return self._turns[0]

    @property
    def t_count(self) -> int:
        """Number of T gates: rotations by an odd multiple of pi/4."""
        return self._turns[1]

    @property
    @abstractmethod
    def depth(self) -> int:
        """Number of layers of gates."""

    @property
    @abstractmethod
    def two_qubit_depth(self) -> int:
        """Number of layers of two-qubit gates."""

    @abstractmethod
    def to_circuit(self) -> WholeCircuit:
        """The same gates as a general circuit."""

    @abstractmethod
    def _written(self, basis: Basis | None = None) -> tuple[WholeCircuit, float]:
        """For writers: with named gates, in a basis where one is given, and the phase that it is to
        be multiplied by."""

    def _whole(self, basis: Basis | None = None) -> WholeCircuit:
        """The same for pictures, and for writers of formats without a phase."""
        return self._written(basis)[0]

    @classmethod
    @abstractmethod
    def _of_read(cls, read: Read) -> Self:
        """From the output of a reader; raises where an operation does not fit the kind of
        circuit."""

    def draw(self, width: int = 100) -> str:
        """The circuit as text, in lines of at most ``width`` characters where gates allow it."""
        width = _validate.integer(width, "width", 1)
        return _draw.text(self._wires(), _boxes.boxes(self._whole()), width)

    def save_svg(self, path: str | os.PathLike[str]) -> None:
        """Writes a picture to a file, whole or not at all: the first 3,000 operations, and the
        number of the others."""
        _files.save(path, self._repr_svg_())

    def _repr_svg_(self) -> str:
        return _draw.svg(self._wires(), _boxes.boxes(self._whole()))

    def _wires(self) -> Sequence[str]:
        """The names of the qubits in pictures."""
        names = self._whole()._names
        return [f"q{k}" for k in range(self._n)] if names is None else names

    def _repr_html_(self) -> str:
        return _html.page(self._repr_svg_(), self._rows())

    def _rows(self) -> Iterator[tuple[str, int]]:
        """What a notebook shows of the circuit."""
        for name, value in self._counts().items():
            if value or name not in ("t_count", "rotation_count", "one_qubit_count"):
                yield name.replace("_", " "), value

    def _counts(self) -> dict[str, int]:
        names = (
            "two_qubit_count", "two_qubit_depth", "depth", "one_qubit_count", "rotation_count",
            "t_count",
        )  # fmt: skip
        return {"qubits": self._n} | {name: getattr(self, name) for name in names}

    def to_qasm(self, *, basis: Basis | None = None) -> str:
        """OpenQASM 2. A condition must be one on all bits of a register. Gates that the first
        ``qelib1.inc`` does not have, such as sx, are defined in the text.

        Here and in the other formats Clifford gates and T gates are written by their names, never
        as rotations; ``basis`` is that of :meth:`in_basis`.
        """
        return _interop_qasm.write(self._whole(basis))

    @classmethod
    def from_qasm(cls, text: str, *, reader: Literal["auto", "own", "qiskit"] = "auto") -> Self:
        """Reads all of OpenQASM 2: several registers, numbered in their order, the gates of the
        common ``qelib1.inc``, gate definitions, measurements, resets, barriers
        and ``if``.

        Gates are decomposed into those of :class:`Gate`, up to a global phase; definitions in the
        text win over the header's, whose gates are known without ``include`` as well. An ``if``
        whose condition can never hold is left out. Block comments are read too. What is beyond
        one of :mod:`zeltbraidwerk.limits` raises a
        :class:`~zeltbraidwerk.errors.QasmTooLargeError`.

        ``include`` of any other file and other versions are refused. A
        :class:`~zeltbraidwerk.errors.QasmError` tells the line.

        ``reader`` is "own" for the reader of this package, "qiskit", or "auto": Qiskit's where it
        is installed and accepts the text, else the own one. Both read the same circuit.
        """
        return cls._of_read(_interop_qasm.read(text, reader))

    def to_qasm3(self, *, basis: Basis | None = None) -> str:
        """OpenQASM 3, written by Qiskit; symbols of angles become its inputs."""
        return _interop_qasm3.write(self._whole(basis))

    @classmethod
    def from_qasm3(cls, text: str) -> Self:
        """Reads OpenQASM 3 by Qiskit's importer, the package ``qiskit-qasm3-import``, as far as it
        goes and :meth:`from_qiskit` takes what it reads. Inputs become symbols. Files other than
        ``stdgates.inc`` are not included. About 0.3 ms per gate.

        A :class:`~zeltbraidwerk.errors.QasmError` says what the importer did not understand.
        """
        return cls._of_read(_interop_qasm3.read(text))

    def to_qiskit(self, *, basis: Basis | None = None) -> qiskit.QuantumCircuit:
        """A circuit of Qiskit, with the classical registers by their names. The phase is that of
        the gates."""
        return _interop_qiskit.write(*self._written(basis))

    @classmethod
    def from_qiskit(cls, circuit: qiskit.QuantumCircuit) -> Self:
        """Reads any circuit that Qiskit can decompose: by the definitions of its gates and, where a
        gate has none, by the transpiler at level 0.

        Measurements, resets, barriers and ``if_test`` with a register or bit and without an else
        are kept, and so are classical registers; delays are left out. Other control flow, and gates
        that cannot be decomposed, are refused with the index of the instruction; so are
        angles that are not linear in their Parameters. :meth:`to_qiskit` gives the same Parameters
        back.
        """
        return cls._of_read(_interop_qiskit.read(circuit))

    def to_pytket(self, *, basis: Basis | None = None) -> pytket.circuit.Circuit:
        """A circuit of pytket, with the classical registers by their names. The phase is that of
        the gates."""
        return _interop_pytket.write(*self._written(basis))

    @classmethod
    def from_pytket(cls, circuit: pytket.circuit.Circuit) -> Self:
        """Reads any circuit that pytket can decompose, with qubits in the order of
        ``circuit.qubits``.

        Boxes are decomposed and gates rebased on a copy; a permutation of wires becomes gates.
        Measurements, resets, barriers, conditions and classical registers are kept. Operations on
        classical bits alone are refused with the index of the command.
        """
        return cls._of_read(_interop_pytket.read(circuit))

    def to_stim(self) -> stim.Circuit:
        """Clifford circuits alone; rotations by multiples of pi/2 become Clifford gates.

        Barriers become TICKs. Records are in the order of the measurements; a Pauli gate, CNOT
        excepted, may be under a condition of one bit.
        """
        return _interop_stim.write(self.to_circuit())

    @classmethod
    def from_stim(cls, circuit: stim.Circuit) -> Self:
        """Reads a circuit of Stim: all unitary gates, measurements and resets in any basis,
        measurements of Pauli products, and Pauli gates controlled by records.

        Records are the bits of one register, "rec". TICK, QUBIT_COORDS and SHIFT_COORDS are
        not operations and are left out. Noise, detectors and observables are refused with the index
        of the instruction.
        """
        return cls._of_read(_interop_stim.read(circuit))

    def to_pyzx(self) -> pyzx.Circuit:
        """A circuit of PyZX. Angles are fractions of pi where they are close to small ones.

        PyZX has no names of qubits and no barriers, and conditions on all bits of a register alone.
        """
        return _interop_pyzx.write(self._whole())

    @classmethod
    def from_pyzx(cls, source: pyzx.Circuit | pyzx.graph.base.BaseGraph) -> Self:
        """Reads a circuit of PyZX, with its measurements, resets and conditions, or a graph.

        A circuit is extracted from a copy of the graph by PyZX's ``extract_circuit``, after its
        ``full_reduce`` where the graph is not in that form. Angles with variables are sums of these
        times numbers. Ancillas, post-selection and gates that PyZX does not take apart are refused
        with the index of the gate.
        """
        return cls._of_read(_interop_pyzx.read(source))

    def to_cirq(self) -> cirq.Circuit:
        """A circuit of Cirq. Qubits named "q[k]" are LineQubits, those named "q[row, column]" are
        GridQubits, and others NamedQubits.

        A classical register that is measured at once is one key, else each bit has a key. Cirq has
        no barriers. Qubits without a gate get an identity gate, so that they are kept.
        """
        return _interop_cirq.write(self._whole())

    @classmethod
    def from_cirq(cls, circuit: cirq.AbstractCircuit) -> Self:
        """Reads any circuit that Cirq can decompose, with qubits in Cirq's order.

        Keys of measurements are classical registers; resets and classical controls are kept.
        Symbols of sympy stay where angles are linear in them. Noise is refused with the index of
        the operation, and so is what Cirq cannot take apart.
        """
        return cls._of_read(_interop_cirq.read(circuit))

    def to_pennylane(self) -> pennylane.tape.QuantumScript:
        """A QuantumScript of PennyLane without measurement processes: measurements are those in the
        middle of a circuit. The wire of a qubit named "q[k]" is k, of another one its name.

        Angles must be numbers. Qubits without a gate get an identity gate, so that they are kept.
        """
        return _interop_pennylane.write(self._whole())

    @classmethod
    def from_pennylane(cls, script: pennylane.tape.QuantumScript) -> Self:
        """Reads the operations of a QuantumScript or tape of PennyLane: all that PennyLane can
        decompose, measurements in the middle and what ``qml.cond`` does by their outcomes.

        Wires that are integers are in their order, others as they come. What a script measures at
        the end (``script.measurements``) is not read, and is combined with the operations of
        another circuit by ``script.copy(operations=...)``. Angles are numbers afterwards, and may
        not be batched.
        """
        return cls._of_read(_interop_pennylane.read(script))

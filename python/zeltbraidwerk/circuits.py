"""Circuits: immutable values that can be drawn and converted to the formats of other packages."""

from __future__ import annotations

import os
from collections import Counter
from collections.abc import Callable, Iterable, Iterator, Mapping, Sequence
from functools import cached_property
from typing import Any, cast

import numpy as np
import numpy.typing as npt

from zeltbraidwerk import (
    _core,
    _files,
    _interop_qasm3,
    _interop_stim,
    _json,
    _names,
    _naming,
    _native,
    _parameter,
    _renamed,
    _validate,
    errors,
    limits,
)
from zeltbraidwerk._circuit_base import CircuitBase
from zeltbraidwerk._native_pairs import Basis
from zeltbraidwerk._reading import Read
from zeltbraidwerk.gates import COMPOSED, Gate, Parameter
from zeltbraidwerk.instructions import (
    Barrier,
    Conditional,
    Instruction,
    Measure,
    Operation,
    Register,
    Reset,
    are_elementary,
    are_plain,
    bits_of,
    bound,
    elementary,
    gates_alone,
    placed,
    registers_of,
    told,
)  # fmt: skip

__all__ = ["Circuit", "CnotCircuit", "Gate", "Parameter"]

# The packages whose circuits are read.
READ_PACKAGES = ("qiskit", "pytket", "stim", "pyzx", "cirq", "pennylane")


class CnotCircuit(CircuitBase):
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
        """From an array that nobody else holds and whose entries are known to be valid."""
        circuit = cls.__new__(cls)
        circuit._n = n
        circuit._gates = _validate.frozen(gates)
        return circuit

    @classmethod
    def from_core(cls, circuit: _core.CnotCircuit) -> CnotCircuit:
        """The same circuit, from :class:`zeltbraidwerk.core.CnotCircuit`."""
        _validate.instance(circuit, "circuit", _core.CnotCircuit, "a circuit of the core")
        return cls._trusted(circuit.nbqbits, circuit.gates)

    def to_core(self) -> _core.CnotCircuit:
        """The circuit as a value of :mod:`zeltbraidwerk.core`."""
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

    @property
    def two_qubit_depth(self) -> int:
        """The same as ``depth``."""
        return self.depth

    @cached_property
    def _sizes(self) -> Counter[int]:
        return Counter({2: len(self._gates)})

    @cached_property
    def _turns(self) -> tuple[int, int]:
        return 0, 0

    def matrix(self) -> npt.NDArray[np.bool_]:
        """The linear map: row r marks the inputs whose XOR stands on output r."""
        limits.check_memory("circuit", self._n, "qubits", 2 * self._n**2)
        return self.to_core().Simulate()

    def inverse(self) -> CnotCircuit:
        """The circuit of the inverse operator: its gates in reverse order."""
        return self._trusted(self._n, self._gates[::-1].copy())

    def to_circuit(self) -> Circuit:
        """The same gates as a general circuit."""
        return Circuit._trusted(self._n, tuple(Gate._trusted("CNOT", pair, ()) for pair in self))

    def in_basis(self, basis: Basis) -> Circuit:
        """The circuit in the native gates of a machine, as of :meth:`Circuit.in_basis`."""
        return self.to_circuit().in_basis(basis)

    def _written(self, basis: Basis | None = None) -> tuple[Circuit, float]:
        return self.to_circuit()._written(basis)

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

    def _operations(self) -> Iterator[tuple[str, tuple[int, ...], tuple[Parameter, ...]]]:
        return (("CNOT", pair, ()) for pair in self)

    @classmethod
    def _of_read(cls, read: Read) -> CnotCircuit:
        return Circuit._of_read(read).to_cnot_circuit()

    def _to_plain(self) -> dict[str, Any]:
        return {"n": self._n, "gates": self._gates.tolist()}

    @classmethod
    def _of_plain(cls, plain: Any, where: str) -> CnotCircuit:
        table = _json.fields(plain, where)
        return _json.built(where, cls, table.get("n"), table.get("gates"))


class Circuit(CircuitBase):
    """A circuit of :class:`Gate` on ``n`` qubits, the first acts first.

    It may hold the operations of :mod:`zeltbraidwerk.instructions` as well: measurements, resets,
    barriers and classically controlled gates. ``classical`` are registers of bits, or pairs of a
    name and a size; without, the bits that are used make one register, "c". ``qubit_names`` are
    names such as "a[0]" or "ancilla", one per qubit, or registers in the same way; without, qubit k
    is "q[k]". Readers keep names and writers use them; circuits that differ in the names of qubits
    alone are equal.

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

    def __init__(
        self,
        n: int,
        gates: Iterable[Operation] = (),
        classical: Iterable[Register | tuple[str, int]] | None = None,
        qubit_names: Iterable[str | Register | tuple[str, int]] | None = None,
    ) -> None:
        self._n = _validate.qubit_count(n)
        self._items = tuple(_validate.items(gates, "gates", "gates in order"))
        for operation in self._items:
            _validate.instance(operation, "gates", (Gate, Instruction), "a Gate")
            _validate.qubits_below(operation.qubits, self._n, "gates")
        self._classical = registers_of(classical, self._items)
        self._names = _names.checked(qubit_names, self._n)

    @classmethod
    def of(cls, source: Any) -> Circuit:
        """A circuit of anything that describes one: a Circuit, a CnotCircuit, a circuit of Qiskit,
        pytket, Stim, PyZX or Cirq, a script of PennyLane, a graph of PyZX, text in OpenQASM 2 or 3,
        or the path of a file with such text, or with Stim's if it ends in ``.stim``. Its gates are
        those of :meth:`elementary`."""
        if isinstance(source, Circuit):
            return source.elementary()
        if isinstance(source, CnotCircuit):
            return source.to_circuit()
        if isinstance(source, os.PathLike) or (isinstance(source, str) and _files.is_path(source)):
            text = _files.text_of(source)
            is_stim = os.fsdecode(source).endswith(".stim")
            source = _interop_stim.of_text(text) if is_stim else text
        if isinstance(source, str):
            version_3 = _interop_qasm3.is_version_3(source)
            return cls.from_qasm3(source) if version_3 else cls.from_qasm(source)
        for package in READ_PACKAGES:
            if _validate.comes_from(source, package):
                found: Circuit = getattr(cls, f"from_{package}")(source)
                return found
        has_one = isinstance(getattr(source, "circuit", None), (Circuit, CnotCircuit))
        raise errors.DtypeError(
            f"circuit: got {type(source).__name__}, wanted "
            + ("its .circuit, " if has_one else "")
            + "a Circuit, OpenQASM, or a circuit of Qiskit, pytket, Stim, PyZX, Cirq or PennyLane"
        )

    @classmethod
    def _trusted(
        cls,
        n: int,
        operations: tuple[Operation, ...],
        classical: tuple[Register, ...] = (),
        names: _names.Names | None = None,
    ) -> Circuit:
        """From parts that are known to be valid."""
        circuit = cls.__new__(cls)
        circuit._n, circuit._items, circuit._classical = n, operations, classical
        circuit._names = names
        return circuit

    @classmethod
    def _later(
        cls,
        n: int,
        make: Callable[[], tuple[Gate, ...]],
        sizes: Callable[[], tuple[int, npt.NDArray[np.int32]]] | None = None,
    ) -> Circuit:
        """Of gates that are made when they are first asked for; known to be valid. ``sizes`` tells
        without them how many are on one qubit, and the pairs of those on two."""
        circuit = cls.__new__(cls)
        circuit._n, circuit._make, circuit._classical, circuit._names = n, make, (), None
        circuit._told = sizes
        return circuit

    _make: Callable[[], tuple[Gate, ...]]
    _told: Callable[[], tuple[int, npt.NDArray[np.int32]]] | None = None

    @cached_property
    def _sizes(self) -> Counter[int]:
        if self._told is None:
            return Counter(len(qubits) for _, qubits, _ in self._operations())
        single, pairs = self._told()
        return Counter({1: single, 2: len(pairs)})

    @cached_property
    def _items(self) -> tuple[Operation, ...]:
        """The operations. All circuits but those made by ``_later`` are made with them."""
        return self._make()

    @classmethod
    def from_core(cls, n: int, gates: Iterable[_core.Gate]) -> Circuit:
        """A circuit on ``n`` qubits of gates of :mod:`zeltbraidwerk.core`."""
        listed = _validate.items(gates, "gates", "gates of the core")
        return cls(n, [Gate.from_core(gate) for gate in listed])

    def to_core(self) -> list[_core.Gate]:
        """The gates, barriers left out; other operations are refused."""
        return [gate.to_core() for gate in gates_alone(self, "circuit")]

    def _held(self) -> _core._HeldGates:
        """The same for functions of the compiled part that take whole circuits."""
        return _core._HeldGates(gates_alone(self, "circuit"))

    @property
    def operations(self) -> tuple[Operation, ...]:
        """All operations in order; what the circuit iterates over."""
        return self._items

    @cached_property
    def gates(self) -> tuple[Gate, ...]:
        """The gates without a condition, and no other operations."""
        if self._is_plain:
            return cast("tuple[Gate, ...]", self._items)
        return tuple(item for item in self._items if isinstance(item, Gate))

    @cached_property
    def _is_plain(self) -> bool:
        return are_plain(self._items)

    @property
    def classical(self) -> tuple[Register, ...]:
        """The classical registers; their bits are numbered from 0 in this order."""
        return self._classical

    @property
    def qubit_names(self) -> tuple[str, ...]:
        """The name of each qubit, such as "q[0]"; see :meth:`with_qubit_names`."""
        return _names.all_of(self._names, self._n)

    def with_qubit_names(self, names: Iterable[str | Register | tuple[str, int]] | None) -> Circuit:
        """The same circuit under other names of its qubits: one name per qubit, or registers, or
        pairs of a name and a size; None for the usual names.

        >>> circuit = Circuit(3, [Gate.cnot(0, 2)]).with_qubit_names([("a", 2), ("b", 1)])
        >>> circuit.qubit_names
        ('a[0]', 'a[1]', 'b[0]')
        """
        return self._named(_names.checked(names, self._n))

    def _named(self, names: _names.Names | None) -> Circuit:
        if names is self._names:
            return self
        return Circuit._trusted(self._n, self._items, self._classical, names)

    @property
    def bit_count(self) -> int:
        """Number of classical bits."""
        return sum(register.size for register in self._classical)

    count = _renamed.Field("gate_count")

    @cached_property
    def depth(self) -> int:
        """Number of layers when every gate is placed as soon as its qubits are free.

        Measurements and resets take no time. A gate after a barrier waits for all that is before it
        on the barrier's qubits; one under a condition, for the measurements into its bits.
        """
        return self._depth(1)

    @cached_property
    def two_qubit_depth(self) -> int:
        """The depth when gates on one qubit take no time."""
        pairs = self._pairs()
        return self._depth(2) if pairs is None else _core.CnotCircuit(self._n, pairs).depth()

    def _pairs(self) -> npt.NDArray[np.int32] | None:
        """The qubits of gates on two, where there is nothing else that these wait for."""
        if self._told is not None:
            return self._told()[1]
        if not self._is_plain or max(self._sizes, default=0) > 2:
            return None
        found = [item.qubits for item in self._items if len(item.qubits) == 2]
        return np.array(found, dtype=np.int32).reshape(-1, 2)

    def _depth(self, least: int) -> int:
        """Of gates on at least ``least`` qubits."""
        layers = [0] * (self._n + self.bit_count)
        for item in self._items:
            wires = [*item.qubits, *(self._n + bit for bit in bits_of(item))]
            gate = item.operation if isinstance(item, Conditional) else item
            takes_time = isinstance(gate, Gate) and len(gate.qubits) >= least
            layer = max([layers[wire] for wire in wires]) + takes_time
            for wire in wires:
                layers[wire] = layer
        return max(layers, default=0)

    @property
    def symbols(self) -> tuple[str, ...]:
        """The names of the symbols in the angles, in their order."""
        return tuple(_parameter.names_of(self._angles()))

    def _sources(self) -> _parameter.Sources:
        """The symbols of Qiskit and sympy that the angles were read from, by their names. Raises an
        AngleError for two of one name."""
        return _parameter.sources_of(self._angles())

    def _angles(self) -> Iterator[Parameter]:
        return (
            angle
            for item in self._items
            if type(item) is not Gate or item._params  # a quick look: most have none
            for angle in item.params
        )

    def bind(self, values: Mapping[Any, Any]) -> Circuit:
        """The circuit with values in the place of symbols.

        Keys are names, Parameters of Qiskit or symbols of sympy; values are angles. Symbols without
        a value stay. Raises an AngleError for a symbol that the circuit does not have.

        >>> circuit = Circuit(1, [Gate.rz(0, "2*a + b")])
        >>> circuit.bind({"a": 0.25}).gates
        (Gate('RZ', (0,), 'b + 0.5'),)
        """
        given = _parameter.bindings(values, self._angles())
        return Circuit._trusted(
            self._n,
            tuple([bound(item, given) for item in self._items]),
            self._classical,
            self._names,
        )

    def split_ending(self) -> tuple[Circuit, Circuit]:
        """The circuit without what ends it, and the ending: measurements and resets after which
        neither a gate uses their qubit nor a condition their bit, and barriers among them.

        The first followed by the second is the circuit, up to the order of operations on different
        qubits and the places of barriers. Functions that need gates alone take the first.

        >>> circuit = Circuit(2, [Measure(0, 0), Gate.h(1), Measure(1, 1)])
        >>> circuit.split_ending()[0], [str(item) for item in circuit.split_ending()[1]]
        (Circuit(2 qubits, 1 gates, 0 two-qubit, depth 1), ['measure 0 -> 0', 'measure 1 -> 1'])
        """
        if len(self.gates) == len(self._items):
            return self, self._with(())
        parts: tuple[list[Operation], list[Operation]] = ([], [])
        busy: set[int] = set()  # used by later gates and conditions; bit b is -1 - b
        for item in reversed(self._items):
            bits = {-1 - bit for bit in bits_of(item)}
            ends = isinstance(item, (Measure, Reset, Barrier)) and busy.isdisjoint(
                bits.union(item.qubits)
            )
            parts[ends].append(item)
            if not ends and not isinstance(item, Barrier):
                busy.update(item.qubits, bits)
        first, ending = (tuple(reversed(part)) for part in parts)
        return (
            Circuit._trusted(self._n, first, self._classical, self._names),
            Circuit._trusted(self._n, ending, self._classical, self._names),
        )

    def named(self) -> Circuit:
        """The circuit with rotations by multiples of pi/4 about Z, and of pi/2 about X and Y, as
        gates with names, up to a global phase. This is what is written and drawn.

        Angles within 1e-11 of a multiple count as such. By 3 pi/4 about Z and pi/2 about Y it takes
        two gates. Gates with names stay; rotations by 0 vanish.

        >>> import math
        >>> gates = [Gate.rz(0, "a"), Gate.rx(0, math.pi / 2), Gate.rz(0, 3 * math.pi / 4)]
        >>> Circuit(1, gates).named().gates
        (Gate('RZ', (0,), 'a'), Gate('SX', (0,)), Gate('S', (0,)), Gate('T', (0,)))
        """
        return self._written()[0]

    def fused(self) -> Circuit:
        """The circuit with at most one gate on each wire between gates on two qubits, up to a
        global phase: a gate with a name where there is one, else a rotation about an axis, else
        one U. Rotations that commute with a gate on two qubits are moved past it, to where they are
        fused with others.

        Measurements, resets, barriers and gates under a condition end a run of gates as those on
        two qubits do. Symbols: rotations about one axis become one rotation; other gates of a run
        are fused before, between and after them. T gates that are fused into a U with other angles
        are no longer counted as such.

        >>> gates = [Gate.h(0), Gate.s(0), Gate.h(0), Gate.cnot(0, 1), Gate.h(1), Gate.rz(1, 0.5)]
        >>> [gate.name for gate in Circuit(2, gates).fused()]
        ['SX', 'CNOT', 'U']
        """
        return self._with(_native.fused(self._n, self._items))

    def in_basis(self, basis: Basis) -> Circuit:
        """The circuit with all gates on two qubits in the native gate of a machine, and the others
        fused, up to a global phase.

        ``basis`` is "cx", "cz", "ecr" (the first qubit is the one that an X is on afterwards),
        "iswap" or "rzz". A CNOT takes one gate of these, two for "iswap". For "rzz", a CNOT, a
        rotation and a CNOT on the same wires become one RZZ by its angle; for "iswap", two CNOTs on
        the same wires with any gates on one qubit between become two gates, or one where that is
        enough, as for a CNOT and a SWAP. ``two_qubit_count`` of the result counts native gates,
        ``one_qubit_count`` those between. Rotations that commute with native gates are moved past
        them to where they are fused with others, so that few gates are left.

        Takes time linear in the gates.

        >>> step = Circuit(2, [Gate.cnot(0, 1), Gate.rz(1, "gamma"), Gate.cnot(0, 1)])
        >>> step.in_basis("rzz").gates
        (Gate('RZZ', (0, 1), 'gamma'),)
        """
        _validate.choice(basis, "basis", _native.BASES)
        return self._with(_native.in_basis(self._n, self._items, basis))

    def elementary(self) -> Circuit:
        """The circuit with T, D-T, SX, D-SX, U, ECR, ISWAP and RZZ as other gates, up to a global
        phase: an ISWAP takes two CNOTs, an RZZ two, an ECR one. All functions that work on circuits
        take them so."""
        if self._is_plain and are_elementary(self._items):
            return self
        if COMPOSED.keys().isdisjoint([name for name, _, _ in self._operations()]):
            return self
        return self._with(elementary(self._items))

    def unitary(self) -> Circuit:
        """The gates alone, barriers left out; other operations are refused."""
        gates_alone(self, "circuit")
        return Circuit._trusted(self._n, self.gates, (), self._names)

    def placed(self, qubits: Sequence[int], n: int) -> Circuit:
        """The same operations on ``n`` qubits with the usual names: what is on qubit k goes to
        ``qubits[k]``."""
        n = _validate.qubit_count(n)
        places = _validate.qubits(qubits, "qubits")
        if len(places) != self._n:
            raise errors.ShapeError(f"qubits: got {len(places)}, wanted {self._n}")
        _validate.qubits_below(places, n, "qubits")
        return Circuit._trusted(
            n, tuple(placed(item, places) for item in self._items), self._classical
        )

    def inverse(self) -> Circuit:
        """The inverse gates and the barriers in reverse order; other operations have no inverse.
        That of ISWAP is one between two Z."""
        gates_alone(self, "circuit")
        made: list[Operation] = []
        for item in reversed(self._items):
            if item.name == "ISWAP":
                flip = Gate("Z", item.qubits[0])
                made += [flip, item, flip]
            else:
                made.append(item.inverse() if isinstance(item, Gate) else item)
        return self._with(made)

    def to_cnot_circuit(self) -> CnotCircuit:
        """The same circuit where all gates are CNOTs; barriers are left out."""
        pairs = []
        for place, gate in enumerate(self.unitary().gates):
            if gate.name not in ("CNOT", "I"):
                raise errors.NotLinearError(
                    f"circuit: got the gate {gate.name} (gate {place}), wanted CNOTs alone"
                )
            if gate.name == "CNOT":
                pairs.append((gate.qubits[0], gate.qubits[1]))
        return CnotCircuit(self._n, pairs)

    def __add__(self, later: Circuit) -> Circuit:
        """This circuit, then the other, with the same classical registers or one without. Qubits
        keep the names that this one has, or else those of the other."""
        if not isinstance(later, Circuit):
            return NotImplemented
        _same_size(self, later)
        if self._classical and later._classical and self._classical != later._classical:
            raise errors.BitError(
                f"got circuits with {told(self._classical)} and {told(later._classical)}, wanted "
                "the same classical registers"
            )
        return self._trusted(
            self._n,
            self._items + later._items,
            self._classical or later._classical,
            later._names if self._names is None else self._names,
        )

    def __len__(self) -> int:
        return len(self._items)

    def __iter__(self) -> Iterator[Any]:
        return iter(self._items)

    def __getitem__(self, index: int) -> Any:
        return self._items[index]

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, Circuit):
            return NotImplemented
        return self._key() == other._key()

    def __hash__(self) -> int:
        return hash(self._key())

    def _key(self) -> tuple[Any, ...]:
        return self._n, self._items, self._classical

    def __repr__(self) -> str:
        others = len(self._items) - self.gate_count
        return (
            f"Circuit({self._n} qubits, {self.gate_count} gates, "
            f"{self.two_qubit_count} two-qubit, depth {self.depth}"
            f"{f', {others} other operations' if others else ''})"
        )

    def __str__(self) -> str:
        return "\n".join(map(str, self._items))

    def __reduce__(self) -> tuple[Any, ...]:
        return Circuit, (*self._key(), self._names)

    def _operations(self) -> Iterator[tuple[str, tuple[int, ...], tuple[Parameter, ...]]]:
        for item in self._items:
            gate = item.operation if isinstance(item, Conditional) else item
            if isinstance(gate, Gate):
                yield gate.name, gate.qubits, gate.params

    def to_circuit(self) -> Circuit:
        """The circuit itself."""
        return self

    def _written(self, basis: Basis | None = None) -> tuple[Circuit, float]:
        circuit = self if basis is None else self.in_basis(basis)
        operations, phase = _naming.named(circuit._items)
        return circuit._with(operations), phase

    def _with(self, operations: Iterable[Operation]) -> Circuit:
        """Other operations on the same qubits and bits."""
        return Circuit._trusted(self._n, tuple(operations), self._classical, self._names)

    @classmethod
    def _of_read(cls, read: Read) -> Circuit:
        return cls._trusted(read.n, tuple(read.operations), tuple(read.classical), read.names)

    def _to_plain(self) -> dict[str, Any]:
        found = {
            "n": self._n,
            "operations": [_json.operation_out(item) for item in self._items],
            "classical": [[register.name, register.size] for register in self._classical],
        }
        return found if self._names is None else found | {"qubit_names": list(self._names)}

    @classmethod
    def _of_plain(cls, plain: Any, where: str) -> Circuit:
        table = _json.fields(plain, where)
        listed = _json.items(table.get("operations"), f"{where}.operations")
        operations = [
            _json.operation_in(item, f"{where}.operations[{k}]") for k, item in enumerate(listed)
        ]
        registers = _json.items(table.get("classical", []), f"{where}.classical")
        names = table.get("qubit_names")  # texts of older versions have none
        if names is not None:
            names = _json.items(names, f"{where}.qubit_names")
        return _json.built(where, cls, table.get("n"), operations, registers, names)


def _same_size(first: CircuitBase, second: CircuitBase) -> None:
    if first.n != second.n:
        raise errors.ShapeError(f"got circuits on {first.n} and {second.n} qubits, wanted the same")

"""What a circuit holds besides gates: measurements, resets, barriers, classically controlled gates.

They are immutable values and share ``name``, ``qubits`` and ``params`` with
:class:`~zeltbraidwerk.Gate`, so that one loop can treat all. None has the name of a gate.

>>> Measure(0, 1), Reset(0), Barrier((0, 1))
(Measure(qubit=0, bit=1), Reset(qubit=0), Barrier(qubits=(0, 1)))
>>> Conditional(Gate("X", 2), (0, 1), 3)  # an X where bits 0 and 1 are both set
Conditional(operation=Gate('X', (2,)), bits=(0, 1), value=3)
"""

from __future__ import annotations

from collections.abc import Iterable, Iterator, Mapping, Sequence
from dataclasses import dataclass, field, replace
from operator import attrgetter
from typing import TYPE_CHECKING, Any, ClassVar, Protocol, Self, TypeAlias

from zeltbraidwerk import _header, _validate, errors, limits
from zeltbraidwerk.gates import COMPOSED, Gate, Parameter

__all__ = ["Barrier", "Conditional", "Instruction", "Measure", "Register", "Reset"]


_BYTES_PER_BIT = 200  # of names, wires and layers


@dataclass(frozen=True)
class Register:
    """``size`` classical bits with a ``name``. The bits of all registers of a circuit are numbered
    from 0."""

    name: str
    size: int

    def __post_init__(self) -> None:
        _validate.instance(self.name, "name", str, "a string")
        if not self.name:
            raise errors.OptionError("name: got '', wanted a name for the register")
        _set(self, size=_validate.integer(self.size, "size", 0, 2**31 - 1))


@dataclass(frozen=True)
class Instruction:
    """Base of all operations other than gates.

    ``where`` tells where the operation was read, such as "line 12", for error messages; it
    is not compared.
    """

    name: ClassVar[str]
    params: ClassVar[tuple[Parameter, ...]] = ()
    where: str = field(default="", compare=False, repr=False, kw_only=True)

    if TYPE_CHECKING:  # fields or properties below; a property here would be a field's default

        @property
        def qubits(self) -> tuple[int, ...]: ...

        @property
        def bits(self) -> tuple[int, ...]:
            """The classical bits that are read or written."""

        @property
        def description(self) -> str:
            """Such as "a measurement of qubit 3", for the texts of errors."""

    def _placed(self, places: Sequence[int]) -> Self:
        """The same on other qubits: what is on qubit q goes to ``places[q]``."""
        raise NotImplementedError


@dataclass(frozen=True)
class Measure(Instruction):
    """A measurement of Z on ``qubit``: ``bit`` becomes 0 for ``|0>`` and 1 for ``|1>``."""

    name: ClassVar[str] = "measure"
    qubit: int
    bit: int

    def __post_init__(self) -> None:
        _set(self, qubit=_index(self.qubit, "qubit"), bit=_index(self.bit, "bit"))

    @property
    def qubits(self) -> tuple[int, ...]:
        """The qubits it acts on."""
        return (self.qubit,)

    @property
    def bits(self) -> tuple[int, ...]:
        """The classical bits that are read or written."""
        return (self.bit,)

    def _placed(self, places: Sequence[int]) -> Measure:
        return replace(self, qubit=places[self.qubit])

    @property
    def description(self) -> str:
        """Such as "a measurement of qubit 3", for the texts of errors."""
        return f"a measurement of qubit {self.qubit}"

    def __str__(self) -> str:
        return f"measure {self.qubit} -> {self.bit}"


@dataclass(frozen=True)
class Reset(Instruction):
    """Puts ``qubit`` into ``|0>``, whatever it was."""

    name: ClassVar[str] = "reset"
    bits: ClassVar[tuple[int, ...]] = ()
    qubit: int

    def __post_init__(self) -> None:
        _set(self, qubit=_index(self.qubit, "qubit"))

    @property
    def qubits(self) -> tuple[int, ...]:
        """The qubits it acts on."""
        return (self.qubit,)

    def _placed(self, places: Sequence[int]) -> Reset:
        return replace(self, qubit=places[self.qubit])

    @property
    def description(self) -> str:
        """Such as "a measurement of qubit 3", for the texts of errors."""
        return f"a reset of qubit {self.qubit}"

    def __str__(self) -> str:
        return f"reset {self.qubit}"


@dataclass(frozen=True)
class Barrier(Instruction):
    """Separates what is before it on ``qubits`` from what is after it; it does nothing itself."""

    name: ClassVar[str] = "barrier"
    bits: ClassVar[tuple[int, ...]] = ()
    qubits: tuple[int, ...]

    def __post_init__(self) -> None:
        qubits = self.qubits if isinstance(self.qubits, Iterable) else (self.qubits,)
        _set(self, qubits=_validate.qubits(qubits, "qubits"))
        if not self.qubits:
            raise errors.QubitError("qubits: got none, wanted one or more")

    def _placed(self, places: Sequence[int]) -> Barrier:
        return replace(self, qubits=tuple(places[qubit] for qubit in self.qubits))

    @property
    def description(self) -> str:
        """Such as "a measurement of qubit 3", for the texts of errors."""
        return f"a barrier on qubits {', '.join(map(str, self.qubits))}"

    def __str__(self) -> str:
        return f"barrier {' '.join(map(str, self.qubits))}"


@dataclass(frozen=True)
class Conditional(Instruction):
    """An ``operation``, which is a gate, a measurement or a reset, carried out where ``bits`` have
    ``value``.

    ``bits[k]`` is the binary digit 2^k of ``value``.
    """

    name: ClassVar[str] = "conditional"
    operation: Gate | Measure | Reset
    bits: tuple[int, ...]
    value: int = 1

    def __post_init__(self) -> None:
        kinds = (Gate, Measure, Reset)
        _validate.instance(self.operation, "operation", kinds, "a Gate, a Measure or a Reset")
        given = self.bits if isinstance(self.bits, Iterable) else (self.bits,)
        listed = _validate.items(given, "bits", "an integer or a list of integers")
        bits = tuple([_index(bit, "bits") for bit in listed])
        if not bits or len(set(bits)) < len(bits):
            raise errors.BitError(f"bits: got {bits}, wanted one or more, none of them twice")
        value = _validate.integer(self.value, "value", 0, (1 << len(bits)) - 1)
        _set(self, bits=bits, value=value)

    @property
    def gate(self) -> Gate | None:
        """The gate; None where a measurement or a reset is controlled."""
        return self.operation if isinstance(self.operation, Gate) else None

    @property
    def qubits(self) -> tuple[int, ...]:
        """The qubits it acts on."""
        return self.operation.qubits

    @property
    def params(self) -> tuple[Parameter, ...]:  # type: ignore[override]
        return self.operation.params

    def _placed(self, places: Sequence[int]) -> Conditional:
        return replace(self, operation=placed(self.operation, places))

    @property
    def description(self) -> str:
        """Such as "a measurement of qubit 3", for the texts of errors."""
        what = "gate" if self.gate else self.operation.name
        return f"a classically controlled {what} on qubit {self.qubits[-1]}"

    def __str__(self) -> str:
        return f"if {' '.join(map(str, self.bits))} == {self.value}: {self.operation}"


Operation: TypeAlias = Gate | Instruction


class WholeCircuit(Protocol):
    """What pictures and writers of other formats read of a :class:`~zeltbraidwerk.Circuit`."""

    @property
    def n(self) -> int: ...
    @property
    def classical(self) -> tuple[Register, ...]: ...
    @property
    def qubit_names(self) -> tuple[str, ...]: ...
    @property
    def _names(self) -> tuple[str, ...] | None: ...
    def __iter__(self) -> Iterator[Any]: ...


def placed(operation: Any, places: Sequence[int]) -> Any:
    """The operation on other qubits: what is on qubit q goes to ``places[q]``."""
    if isinstance(operation, Gate):
        qubits = tuple(places[qubit] for qubit in operation.qubits)
        return Gate._trusted(operation.name, qubits, operation.params)
    return operation._placed(places)


def bound(operation: Any, values: Mapping[str, Parameter]) -> Any:
    """The operation with values in the place of symbols."""
    if isinstance(operation, Conditional):
        return replace(operation, operation=bound(operation.operation, values))
    if not any(angle.is_symbolic for angle in operation.params):
        return operation
    params = tuple(angle._bound(values) for angle in operation.params)
    return Gate._trusted(operation.name, operation.qubits, params)


def gates_alone(operations: Iterable[Operation], name: str) -> list[Gate]:
    """The gates, as those of the library, barriers left out; any other operation is refused by its
    name and place."""
    listed = list(operations)
    if are_plain(listed) and are_elementary(listed):
        return [item for item in listed if isinstance(item, Gate)]
    for place, operation in enumerate(listed):
        if isinstance(operation, (Gate, Barrier)):
            continue
        if not isinstance(operation, Instruction):
            got = _validate.shown(operation)
            raise errors.DtypeError(f"{name}: got {got}, wanted a Gate")
        where = operation.where or f"operation {place}"
        last = not any(set(operation.qubits) & set(rest.qubits) for rest in listed[place + 1 :])
        ending = last and not isinstance(operation, Conditional)
        raise errors.NotUnitaryError(
            f"{name}: got {operation.description} {'at the end' if ending else 'in the middle'} "
            f"({where}), wanted gates alone"
            + ("; Circuit.split_ending takes it off" if ending else "")
        )
    return [item for item in elementary(listed) if isinstance(item, Gate)]


def are_plain(operations: Iterable[Any]) -> bool:
    """Whether all are gates: a quick look, as circuits may have millions."""
    return set(map(type, operations)) <= {Gate}


def are_elementary(gates: Iterable[Any]) -> bool:
    """Whether none of the gates is made of others: as quick."""
    return COMPOSED.keys().isdisjoint(map(attrgetter("_name"), gates))


def elementary(operations: Sequence[Operation]) -> Sequence[Operation]:
    """The operations with gates of the library alone."""
    made: list[Operation] = []
    for item in operations:
        gate = item.operation if isinstance(item, Conditional) else item
        if not isinstance(gate, Gate) or gate.name not in COMPOSED:
            made.append(item)
        elif isinstance(item, Conditional):
            made += [replace(item, operation=part) for part in _header.elementary(gate)]
        else:
            made += _header.elementary(gate)
    return made


def registers_of(given: Any, operations: Sequence[Operation]) -> tuple[Register, ...]:
    """The registers, checked; where none are given, one named c for the bits that are used."""
    used = 1 + max((bit for item in operations for bit in bits_of(item)), default=-1)
    limits.check_memory("gates", used, "classical bits", _BYTES_PER_BIT * used)
    if given is None:
        return (Register("c", used),) if used else ()
    try:
        pairs = given.items() if isinstance(given, Mapping) else given
        registers = tuple([r if isinstance(r, Register) else Register(*r) for r in pairs])
    except errors.Error as error:
        raise type(error)(f"classical: {error}") from None
    except TypeError:
        got = _validate.shown(given)
        raise errors.DtypeError(
            f"classical: got {got}, wanted registers or pairs of a name and a size"
        ) from None
    names = [register.name for register in registers]
    if len(set(names)) < len(names):
        raise errors.BitError(f"classical: got the names {', '.join(names)}, wanted each one once")
    size = sum(register.size for register in registers)
    limits.check_memory("classical", size, "bits", _BYTES_PER_BIT * size)
    if used > size:
        raise errors.BitError(f"gates: got bit {used - 1}, wanted one of {size} bits")
    return registers


def bits_of(item: Operation) -> tuple[int, ...]:
    """The bits that an operation reads or writes."""
    if isinstance(item, Gate):
        return ()
    return item.bits + (bits_of(item.operation) if isinstance(item, Conditional) else ())


def told(registers: Sequence[Register]) -> str:
    return ", ".join(f"{register.name}[{register.size}]" for register in registers)


def _index(value: Any, name: str) -> int:
    return _validate.integer(value, name, 0, 2**31 - 1)


def _set(built: Any, /, **fields: Any) -> None:
    """Sets fields of a frozen value while it is built."""
    for name, entry in fields.items():
        object.__setattr__(built, name, entry)

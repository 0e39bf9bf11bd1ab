"""Measurements of Cirq, whose outcomes are under keys, as bits of registers.

A key of several qubits is a register. Keys such as "c[0]" and "c[1]" are the bits of a register c,
and so they are written where a register is not measured at once.
"""

from __future__ import annotations

from collections import Counter
from collections.abc import Iterable, Iterator, Sequence
from typing import Any

from zeltbraidwerk import _interop, _names, errors
from zeltbraidwerk._reading import Condition
from zeltbraidwerk.instructions import Conditional, Measure, Operation, Register, WholeCircuit

# --- out ----------------------------------------------------------------------------------------


class Writer:
    """A register is one key if its bits are measured once, one after the other, and conditions are
    on all of them in order; otherwise each bit has a key."""

    def __init__(self, circuit: WholeCircuit) -> None:
        self._cirq = _interop._package("cirq")
        self._home: list[tuple[int, int]] = []  # of each bit: the first of its register, its size
        self._keys: list[str] = []
        for register in circuit.classical:
            first = len(self._home)
            self._home += [(first, register.size)] * register.size
            is_one = register.size == 1
            self._keys += [register.name] if is_one else _names.of_register(register)
        self._whole = _measured_at_once(circuit, self._home)
        self._names = {self._home[bit]: self._keys[bit].rpartition("[")[0] for bit in self._whole}
        self._waiting: dict[int, Any] = {}
        self._measured: set[int] = set()

    def measured(self, measure: Measure, qubit: Any) -> list[Any]:
        bit = measure.bit
        self._measured.add(bit)
        if bit not in self._whole:
            return [self._cirq.measure(qubit, key=self._keys[bit])]
        first, size = self._home[bit]
        self._waiting[bit] = qubit
        bits = range(first, first + size)
        if not all(each in self._waiting for each in bits):
            return []
        qubits = [self._waiting[each] for each in bits]
        return [self._cirq.measure(*qubits, key=self._names[first, size])]

    def together(self, measure: Measure) -> Sequence[int]:
        """The bits that are under one key with that of the measurement."""
        bit = measure.bit
        return range(self._home[bit][0], sum(self._home[bit])) if bit in self._whole else [bit]

    def controls(self, condition: Condition) -> list[Any] | None:
        """None for a condition that never holds: bits that were not measured are 0."""
        cirq, sympy = self._cirq, _interop._package("sympy")
        bits, value = condition
        found: list[Any] = []
        for group in _grouped(bits, self._home):
            digits = [value >> bits.index(bit) & 1 for bit in group]
            if group[0] in self._whole:
                number = int("".join(map(str, digits)), 2)  # the first bit is the highest
                name = sympy.Symbol(self._names[self._home[group[0]]])
                found.append(cirq.SympyCondition(sympy.Eq(name, number)))
                continue
            for bit, digit in zip(group, digits, strict=True):
                key = self._keys[bit]
                if digit and bit not in self._measured:
                    return None
                if digit:
                    found.append(cirq.KeyCondition(cirq.MeasurementKey(key)))
                elif bit in self._measured:
                    found.append(cirq.SympyCondition(sympy.Eq(sympy.Symbol(key), 0)))
        return found


def _grouped(bits: Sequence[int], home: Sequence[tuple[int, int]]) -> Iterator[list[int]]:
    """The bits of whole registers in order, and single ones."""
    place = 0
    while place < len(bits):
        first, size = home[bits[place]]
        whole = list(range(first, first + size))
        group = whole if list(bits[place : place + size]) == whole else [bits[place]]
        yield group
        place += len(group)


def _measured_at_once(circuit: WholeCircuit, home: Sequence[tuple[int, int]]) -> set[int]:
    """The bits of the registers of two and more bits that are one key."""
    listed = list(circuit)
    counts = Counter(item.bit for item in listed if isinstance(item, Measure))
    split: set[int] = set()
    measured: set[int] = set()
    for item in listed:
        if isinstance(item, Measure):
            measured.add(item.bit)
        if isinstance(item, Conditional):
            for group in _grouped(item.bits, home):
                whole = len(group) == home[group[0]][1] and group[0] in measured
                split.update(() if whole else group)
    runs: set[tuple[int, int]] = set()
    run: list[Measure] = []
    for item in [*listed, None]:
        if isinstance(item, Measure) and (not run or home[run[0].bit] == home[item.bit]):
            run.append(item)
            continue
        bits = sorted(measure.bit for measure in run)
        is_of_many = len({measure.qubit for measure in run}) == len(run) > 1
        if is_of_many and bits == list(range(home[bits[0]][0], sum(home[bits[0]]))):
            runs.add(home[bits[0]])
        run = [item] if isinstance(item, Measure) else []
    parted = {home[bit] for bit in split}
    return {bit for bit in counts if home[bit] in runs - parted and counts[bit] == 1}


# --- in -----------------------------------------------------------------------------------------


class Reader:
    """Numbers bits in the order in which they are measured first; ``numbered`` changes that to the
    order of registers."""

    def __init__(self) -> None:
        self._bits: dict[str, range] = {}
        self._count = 0

    def bits(self, key: str, size: int) -> range:
        if key not in self._bits:
            self._bits[key] = range(self._count, self._count + size)
            self._count += size
        if len(self._bits[key]) != size:
            raise errors.GateError(
                f"got the key {key} for {len(self._bits[key])} and for {size} qubits"
            )
        return self._bits[key]

    def cases(self, controls: Iterable[Any], outer: Condition | None) -> Iterator[Condition]:
        """Conditions of which one holds where all of Cirq's hold: one for each value of their
        bits."""
        cirq = _interop._package("cirq")
        ordered = sorted(controls, key=str)
        keys = list(dict.fromkeys(str(key) for each in ordered for key in each.keys))
        for key in keys:
            if key not in self._bits:
                raise errors.GateError(f"got a condition on {key}, which is not measured before")
        bits = tuple(bit for key in keys for bit in self._bits[key])
        if len(bits) > _interop.MOST_BITS:
            raise errors.GateError(
                f"got a condition on {len(bits)} bits, wanted {_interop.MOST_BITS} at most"
            )
        for value in range(1 << len(bits)):
            digit = {bit: value >> k & 1 for k, bit in enumerate(bits)}
            records = {
                cirq.MeasurementKey.parse_serialized(key): [[digit[b] for b in self._bits[key]]]
                for key in keys
            }
            store = cirq.ClassicalDataDictionaryStore(_records=records)
            if not all(each.resolve(store) for each in controls):
                continue
            if (both := _both(outer, (bits, value))) is not None:
                yield both

    def numbered(self, operations: list[Operation]) -> tuple[list[Operation], list[Register]]:
        """The operations with bits in the order of registers, and these."""
        names: list[str] = []
        for key, bits in self._bits.items():
            names += [key] if len(bits) == 1 else [_names.text(key, [k]) for k in range(len(bits))]
        order, registers = _names.bits(names)
        return _interop.renumbered(operations, order), registers


def _both(outer: Condition | None, inner: Condition) -> Condition | None:
    """Both conditions; None where they contradict each other."""
    if outer is None:
        return inner
    digits = {bit: outer[1] >> k & 1 for k, bit in enumerate(outer[0])}
    for k, bit in enumerate(inner[0]):
        if digits.setdefault(bit, inner[1] >> k & 1) != inner[1] >> k & 1:
            return None
    return tuple(digits), sum(digit << k for k, digit in enumerate(digits.values()))

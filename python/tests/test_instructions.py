"""Circuits that hold measurements, resets, barriers and classically controlled gates."""

import dataclasses
import math
import pickle
import xml.etree.ElementTree as ET

import pytest
from hypothesis import given
from hypothesis import strategies as st

from zeltbraidwerk import (
    Circuit,
    CliffordTableau,
    CnotCircuit,
    Device,
    Gate,
    clifford,
    errors,
    phase,
    routing,
)
from zeltbraidwerk.instructions import Barrier, Conditional, Measure, Register, Reset

X, CNOT = Gate("X", 0), Gate.cnot(0, 1)
EIGHTHS = [k * math.pi / 4 for k in range(-5, 6)]


@st.composite
def dynamic_circuits(draw, n=3, bits=4):
    """On two registers of two bits, in the middle of which anything may be."""
    qubit, bit = st.integers(0, n - 1), st.integers(0, bits - 1)
    pair = st.permutations(range(n)).map(lambda order: order[:2])
    gates = st.one_of(
        st.builds(Gate, st.sampled_from(["H", "S", "D-S", "X", "Y", "Z", "I"]), qubit),
        st.builds(Gate, st.sampled_from(["CNOT", "CSIGN"]), pair),
        st.builds(Gate, st.sampled_from(["RX", "RY", "RZ"]), qubit, st.floats(-3, 3)),
        st.builds(Gate, st.sampled_from(["RX", "RY", "RZ"]), qubit, st.sampled_from(EIGHTHS)),
    )
    simple = st.one_of(gates, st.builds(Measure, qubit, bit), st.builds(Reset, qubit))
    conditions = st.sampled_from([(0, 1), (2, 3)])
    conditional = st.builds(Conditional, simple, conditions, st.integers(0, 3))
    barriers = st.builds(Barrier, st.sets(qubit, min_size=1).map(sorted))
    items = draw(st.lists(st.one_of(simple, simple, conditional, barriers), max_size=15))
    return Circuit(n, items, [("low", 2), ("high", bits - 2)])


@given(circuit=dynamic_circuits())
def test_operations_are_kept(circuit):
    for copy in (
        Circuit(circuit.n, circuit.operations, circuit.classical),
        pickle.loads(pickle.dumps(circuit)),
        circuit.placed([2, 0, 1], 3).placed([1, 2, 0], 3),
    ):
        assert copy == circuit
        assert hash(copy) == hash(circuit)
    assert Circuit.from_qasm(circuit.to_qasm(), reader="own").named() == circuit.named()
    moved = circuit.placed([4, 0, 2], 5)
    for before, after in zip(circuit, moved, strict=True):
        assert after.qubits == tuple([4, 0, 2][qubit] for qubit in before.qubits)
        assert (after.name, after.params) == (before.name, before.params)
    lines = circuit.draw(400).split("\n")
    assert len(set(map(len, lines[::2]))) == 1
    ET.fromstring(circuit._repr_svg_())
    assert circuit.gate_count == sum(
        isinstance(getattr(item, "operation", item), Gate) for item in circuit
    )
    assert circuit.two_qubit_depth <= circuit.depth <= circuit.gate_count


def per_wire(circuit):
    """What is on each qubit and bit, in order: equal for circuits that differ by the order of
    operations that do not meet. Barriers are left out."""
    wires, writes = {}, {}
    for item in circuit:
        if isinstance(item, Barrier):
            continue
        inner = getattr(item, "operation", item)
        for qubit in item.qubits:
            wires.setdefault(("qubit", qubit), []).append(item)
        for bit in item.bits if isinstance(item, Conditional) else ():
            asked = wires.setdefault(("asked", bit, writes.get(bit, 0)), [])
            asked.append(item)
            asked.sort(key=str)
        if isinstance(inner, Measure):
            wires.setdefault(("written", inner.bit), []).append(item)
            writes[inner.bit] = writes.get(inner.bit, 0) + 1
    return wires


@given(circuit=dynamic_circuits())
def test_the_ending_splits_off(circuit):
    first, ending = circuit.split_ending()
    assert per_wire(first + ending) == per_wire(circuit)
    assert all(isinstance(item, (Measure, Reset, Barrier)) for item in ending)
    # Nothing that could be in the ending is left in front of it.
    again, more = first.split_ending()
    assert again == first
    assert not len(more)


def test_the_ending_of_a_circuit():
    items = [
        Measure(0, 0), Gate.h(1), Barrier((0, 1, 2)), Measure(1, 1), Reset(1), Measure(2, 2),
        Conditional(Gate("X", 3), 2), Barrier((1, 3)), Measure(3, 3), Barrier((0, 1)),
    ]  # fmt: skip
    first, ending = Circuit(4, items).split_ending()
    assert list(first) == [items[k] for k in (1, 2, 5, 6)]
    assert list(ending) == [items[k] for k in (0, 3, 4, 7, 8, 9)]
    written_twice = Circuit(2, [Measure(0, 0), Measure(1, 0), Gate.h(1)])
    assert not len(written_twice.split_ending()[1])  # the first record must not come last


def test_counts_and_layers():
    items = [
        Gate.h(0), Measure(0, 0), Barrier((0, 1)), Gate.h(1), Conditional(CNOT, 0), Reset(1),
        Gate.h(2),
    ]  # fmt: skip
    circuit = Circuit(3, items)
    assert (circuit.gate_count, circuit.two_qubit_count, len(circuit)) == (4, 1, 7)
    assert (circuit.depth, circuit.two_qubit_depth) == (3, 1)
    assert repr(circuit) == ("Circuit(3 qubits, 4 gates, 1 two-qubit, depth 3, 3 other operations)")
    # A gate waits for the measurement that it asks for, though on another qubit.
    assert Circuit(2, [Gate.h(0), Measure(0, 0), Conditional(Gate("X", 1), 0)]).depth == 2
    assert Device.line(3).fits(circuit)
    assert not Device(3, [(0, 2), (1, 2)]).fits(circuit)


def test_picture():
    items = [Gate.h(0), Measure(0, 1), Barrier((0, 1)), Conditional(CNOT, (0, 1), 2), Reset(1)]
    circuit = Circuit(2, items, [Register("c", 2)])
    assert circuit.draw() == (
        "q0: ──H──M c[1]──░──● if c=2───────\n"
        "                 │     │\n"
        "q1: ─────────────░─────⊕──────|0>──"
    )
    later = Circuit(2, [Gate.h(0), Measure(0, 0), Conditional(Gate("X", 1), 0)])
    assert later.draw().endswith("q1: ─────────────X if c=1──")  # not before the measurement


def test_registers():
    assert Circuit(1, [Measure(0, 2)]).classical == (Register("c", 3),)
    assert Circuit(1, [], {"a": 1, "b": 0}).classical == (Register("a", 1), Register("b", 0))
    assert Circuit(1, [Measure(0, 0)]) != Circuit(1, [Measure(0, 0)], [("d", 1)])
    both = Circuit(1, [X]) + Circuit(1, [Measure(0, 0)], [("d", 1)])
    assert both == Circuit(1, [X, Measure(0, 0)], [("d", 1)])
    assert Measure(0, 0, where="line 3") == Measure(0, 0)
    # Names that OpenQASM does not take are changed, and do not meet that of the qubits.
    named = Circuit(1, [Measure(0, 0)], [("q", 1), ("Meas", 1), ("if", 1), ("cx", 1)])
    read = Circuit.from_qasm(named.to_qasm())
    assert [register.name for register in read.classical] == ["q", "c_Meas", "c_if", "c_cx"]
    assert read.operations == named.operations


def test_inverse_keeps_barriers():
    circuit = Circuit(2, [Gate.h(0), Barrier((0, 1)), Gate.s(1)])
    assert list(circuit.inverse()) == [Gate("D-S", 1), Barrier((0, 1)), Gate.h(0)]


MIDDLE = Circuit(2, [Measure(1, 0, where="line 17"), CNOT])
ENDING = Circuit(2, [CNOT, Measure(1, 0)])


@pytest.mark.parametrize("call", [
    Circuit.to_core, Circuit.inverse, Circuit.to_cnot_circuit, CliffordTableau.from_circuit,
    CliffordTableau(2).apply, clifford.synthesize, clifford.synthesize_state, phase.polynomial_of,
    routing.normalize, routing.route_ions,
    lambda circuit: CnotCircuit.from_qasm(circuit.to_qasm(), reader="own"),
])  # fmt: skip
def test_where_gates_alone_are_wanted(call):
    middle = r"got a measurement of qubit 1 in the middle \(line \d+\), wanted gates alone$"
    with pytest.raises(errors.NotUnitaryError, match=middle):
        call(MIDDLE)
    with pytest.raises(errors.NotUnitaryError, match=r"of qubit 1 at the end .*split_ending"):
        call(ENDING)
    with pytest.raises(errors.NotUnitaryError, match="a classically controlled gate on qubit 1"):
        call(Circuit(2, [Conditional(CNOT, 0)]))
    call(Circuit(2, [Gate.cnot(0, 1), Barrier((0, 1)), Gate.cnot(0, 1)]))


ROUTED = Circuit(
    4,
    [
        Gate.cnot(0, 2), Measure(3, 2), Gate.rz(2, 0.3), Barrier((0, 1, 2)), Gate.cnot(2, 1),
        Gate.h(0), Measure(0, 0), Barrier((0, 3)), Reset(2), Measure(2, 1),
    ],
    [("c", 2), ("d", 1)],
)  # fmt: skip


@pytest.mark.parametrize("size", [4, 6])
def test_routing_takes_the_ending_along(size):
    device = Device(size, [(k, k + 1) for k in range(1, size - 1)] + [(0, size - 1)])
    result = routing.route(ROUTED, device, steps=0)
    first, ending = result.circuit.split_ending()
    assert first.operations == first.gates
    assert ending == ROUTED.split_ending()[1].placed(result.placement, size)
    assert result.entangling_count == sum(len(gate.qubits) > 1 for gate in first)
    assert result.verify()
    wrong = Circuit(size, [*first, *reversed(ending.operations)], ending.classical)
    assert not dataclasses.replace(result, circuit=wrong).verify()
    with pytest.raises(errors.OptionError, match=r"tail: got 'return' .* a measurement of qubit 3"):
        routing.route(ROUTED, device, tail="return")
    with pytest.raises(errors.NotUnitaryError, match="qubit 1 in the middle"):
        routing.route(MIDDLE, Device.line(2))
    gates = ROUTED.split_ending()[0]
    assert routing.route(gates, device, tail="return").verify()
    assert routing.normalize(gates).verify()

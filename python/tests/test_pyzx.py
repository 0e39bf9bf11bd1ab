"""Circuits and graphs of PyZX, by its own matrices."""

import math
from fractions import Fraction

import pytest
from hypothesis import given
from support import same_up_to_phase, unitary
from test_instructions import dynamic_circuits, per_wire

import zeltbraidwerk as zb
from zeltbraidwerk import Circuit, Conditional, Gate, Measure, Register, Reset, errors

THIRD, SEVENTH, LONG = Fraction(1, 3), Fraction(1, 7), Fraction(0.123456789)

# Classes of gates, with qubits and phases.
GATES = {
    "ZPhase": (2, THIRD), "XPhase": (2, THIRD), "YPhase": (2, THIRD), "Z": (2,), "S": (2,),
    "T": (2,), "SX": (2,), "Y": (1,), "NOT": (1,), "HAD": (1,), "CNOT": (2, 0), "CZ": (2, 0),
    "CY": (2, 0), "XCX": (2, 0), "SWAP": (2, 0), "CRX": (2, 0, THIRD), "CRY": (2, 0, THIRD),
    "CRZ": (2, 0, THIRD), "RXX": (2, 0, THIRD), "RZZ": (2, 0, THIRD), "CPhase": (2, 0, THIRD),
    "CHAD": (2, 0), "CSX": (2, 0), "CCZ": (2, 0, 1), "Tofolli": (2, 0, 1), "CSWAP": (2, 0, 1),
    "U2": (1, THIRD, SEVENTH), "U3": (1, THIRD, SEVENTH, LONG), "PhaseGadget": (THIRD, 2, 1),
    "CU3": (2, 0, THIRD, SEVENTH, LONG), "CU": (2, 0, THIRD, SEVENTH, LONG, Fraction(1, 9)),
    "ParityPhase": (THIRD, 0, 2, 1),
}  # fmt: skip


def test_gates_and_their_adjoints(pyzx):
    for name, given_as in GATES.items():
        gate = getattr(pyzx.circuit.gates, name)(*given_as)
        for each in (gate, gate.to_adjoint()):
            source = pyzx.Circuit(3)
            source.add_gate(each)
            read = Circuit.from_pyzx(source)
            assert same_up_to_phase(source.to_matrix(), unitary(read)), each
            assert same_up_to_phase(source.to_matrix(), read.to_pyzx().to_matrix()), each


def test_graphs_are_extracted_and_stay_as_they_are(pyzx):
    source = pyzx.generate.CNOT_HAD_PHASE_circuit(4, 40, seed=1)
    reduced = source.to_graph()
    pyzx.full_reduce(reduced)
    for graph in (source.to_graph(), reduced, pyzx.teleport_reduce(source.to_graph())):
        before = graph.num_vertices(), graph.num_edges()
        read = Circuit.of(graph)
        assert (graph.num_vertices(), graph.num_edges()) == before
        assert same_up_to_phase(source.to_matrix(), unitary(read))
    result = zb.optimize(reduced, seed=1, steps=500)
    assert result.verify()
    measured = pyzx.Circuit(1, bit_amount=1)
    measured.add_gate("Measurement", 0, 0)
    with pytest.raises(errors.GateError, match="PyZX cannot extract a circuit"):
        Circuit.of(measured.to_graph())


@given(circuit=dynamic_circuits())
def test_operations_through_pyzx_and_back(circuit):
    pytest.importorskip("pyzx")
    # PyZX has registers in order of use, up to the last bit that is used.
    used = [Measure(0, bit) for bit in range(4)]
    circuit = Circuit(circuit.n, [*used, *circuit], circuit.classical)
    back = per_wire(Circuit.from_pyzx(circuit.to_pyzx()).named())
    kept = [item for item in circuit.named() if getattr(item, "operation", item).name != "I"]
    wanted = per_wire(Circuit(circuit.n, kept, circuit.classical))
    assert back.keys() == wanted.keys()
    for wire, items in wanted.items():
        for ours, theirs in zip(items, back[wire], strict=True):
            assert str(ours).split("]")[0] == str(theirs).split("]")[0]
            for one, other in zip(ours.params, theirs.params, strict=True):
                assert float(one) == pytest.approx(float(other), abs=1e-12)


def test_angles_are_fractions_and_polynomials(pyzx):
    read = Circuit(1, [Gate.rz(0, 3 * math.pi / 8), Gate.rx(0, 0.3), Gate.rz(0, "a/2 - b + 0.25")])
    written = read.to_pyzx()
    assert written.gates[0].phase == Fraction(3, 8)
    assert float(written.gates[1].phase) == 0.3 / math.pi
    assert Circuit.from_pyzx(written) == Circuit(1, [*read[:2], Gate.rz(0, "0.5*a - b + 0.25")])
    squared = pyzx.symbolic.new_var("a", False) * pyzx.symbolic.new_var("b", False)
    written.add_gate("ZPhase", 0, squared)
    with pytest.raises(errors.AngleError, match=r"gate 3: got a.b, wanted a number or a sum"):
        Circuit.from_pyzx(written)


def test_bits_and_what_is_refused(pyzx):
    gates = pyzx.circuit.gates
    source = pyzx.Circuit(2, bit_amount=3)
    source.gates += [
        gates.Measurement(1, 2), gates.ConditionalGate("c", 5, gates.NOT(0), 3), gates.Reset(1)
    ]  # fmt: skip
    read = Circuit.from_pyzx(source)
    assert read.classical == (Register("c", 3),)
    assert list(read) == [Measure(1, 2), Conditional(Gate("X", 0), (0, 1, 2), 5), Reset(1)]
    part = Circuit(1, [Measure(0, 0), Conditional(Gate.h(0), 0)], [("c", 2)])
    with pytest.raises(errors.BitError, match="all bits of a register"):
        part.to_pyzx()
    for gate in (
        gates.InitAncilla(0),
        gates.PostSelect(0),
        gates.FSim(0, 1, Fraction(1, 2), THIRD),
    ):
        source.gates[0] = gate
        with pytest.raises(errors.GateError, match=f"gate 0: got {gate.name}"):
            Circuit.from_pyzx(source)
    with pytest.raises(TypeError, match="wanted a Circuit of pyzx"):
        Circuit.from_pyzx(3)

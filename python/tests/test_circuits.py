"""Circuits, gates and angles as values; pictures; the ways to other packages and back."""

import math
import pickle
import sys
import xml.etree.ElementTree as ET

import numpy as np
import pytest
from hypothesis import given
from hypothesis import strategies as st
from support import cnots, replay

from zeltbraidwerk import Circuit, CliffordTableau, CnotCircuit, Gate, Parameter


@st.composite
def gates(draw, n, clifford=True):
    """A gate that every format has, on n qubits."""
    name = draw(
        st.sampled_from(["CNOT", "CSIGN", "H", "S", "D-S", "X", "Y", "Z", "RX", "RY", "RZ"])
    )
    count = 2 if name in ("CNOT", "CSIGN") else 1
    qubits = draw(st.permutations(range(n)))[:count]
    if not name.startswith("R"):
        return Gate(name, qubits)
    quarters = st.integers(-5, 5).map(lambda k: k * math.pi / 2)
    return Gate(name, qubits, draw(quarters if clifford else st.floats(-7, 7)))


@st.composite
def circuits(draw, clifford=True):
    n = draw(st.integers(2, 5))
    return Circuit(n, draw(st.lists(gates(n, clifford), max_size=20)))


@given(data=st.data(), n=st.integers(0, 9))
def test_cnot_circuit_is_a_value(data, n):
    pairs = data.draw(cnots(n))
    circuit = CnotCircuit(n, pairs)
    assert list(circuit) == pairs
    assert (circuit.n, circuit.count, len(circuit)) == (n, len(pairs), len(pairs))
    assert np.array_equal(circuit.matrix(), replay(n, pairs))
    assert np.array_equal((circuit + circuit.inverse()).matrix(), np.eye(n))
    assert circuit.depth == circuit.to_circuit().depth <= circuit.count
    for copy in (
        CnotCircuit(n, circuit.gates),
        CnotCircuit.from_core(circuit.to_core()),
        circuit.to_circuit().to_cnot_circuit(),
        CnotCircuit.from_qasm(circuit.to_qasm()),
        pickle.loads(pickle.dumps(circuit)),
    ):
        assert copy == circuit
        assert hash(copy) == hash(circuit)
    assert CnotCircuit(n + 1, pairs) != circuit


def test_gates_cannot_be_changed_from_outside():
    given = np.array([[0, 1], [1, 2]], dtype=np.int32)
    circuit = CnotCircuit(3, given)
    given[0] = 2, 0
    assert list(circuit) == [(0, 1), (1, 2)]
    with pytest.raises(ValueError, match="read-only"):
        circuit.gates[0, 0] = 2
    with pytest.raises(AttributeError):
        circuit.n = 4


def test_angles_add_as_in_the_library():
    assert float(Parameter(4.0) + 4.0) == math.fmod(8.0, 2 * math.pi)
    assert 1.0 + Parameter(0.5) == 1.5
    assert str(Gate.rz(2, math.pi / 2)) == "RZ [2 ]1.5708 (diag)"
    assert pickle.loads(pickle.dumps(Gate.rx(1, "a"))) == Gate.rx(1, "a")
    assert len({Gate.rx(1, 0.5), Gate("RX", [1], Parameter(0.5)), Gate.rx(1, "a")}) == 2


@given(circuit=circuits(clifford=False))
def test_general_circuits(circuit):
    assert Circuit.from_core(circuit.n, circuit.to_core()) == circuit
    assert Circuit.from_qasm(circuit.to_qasm()).named() == circuit.named()
    assert pickle.loads(pickle.dumps(circuit)) == circuit
    assert circuit.inverse().inverse() == circuit
    assert circuit.two_qubit_depth <= circuit.depth <= circuit.gate_count
    assert str(circuit).count("\n") == max(circuit.gate_count - 1, 0)


@given(circuit=circuits(), width=st.integers(1, 60))
def test_pictures(circuit, width):
    drawn = circuit.draw(width)
    lines = drawn.split("\n")
    period = 2 * circuit.n  # one line per wire, joints between them, an empty line between blocks
    for start in range(0, len(lines), period):
        wires = lines[start : start + period : 2]
        assert [wire[:4] for wire in wires] == [f"q{q}: " for q in range(circuit.n)]
        assert len(set(map(len, wires))) == 1
    shapes = sum(drawn.count(mark) for mark in "●⊕")
    assert shapes == 2 * circuit.two_qubit_count
    picture = ET.fromstring(circuit._repr_svg_())
    circles = picture.findall(".//{http://www.w3.org/2000/svg}circle")
    assert len(circles) == shapes


def test_picture_of_a_crossing_and_of_a_long_circuit():
    circuit = Circuit(3, [Gate.cnot(2, 0), Gate.h(1), Gate.rz(0, 0.5)])
    assert circuit.draw() == (
        "q0: ──⊕──RZ(0.5)──\n"
        "      │\n"
        "q1: ──┼─────H─────\n"
        "      │\n"
        "q2: ──●───────────"
    )  # fmt: skip
    long = CnotCircuit(2, [(0, 1)] * 5000)
    assert len(long._repr_svg_()) < 2_000_000
    assert "and 2000 more gates" in long._repr_svg_()
    assert CnotCircuit(0).draw() == ""
    ET.fromstring(CnotCircuit(0)._repr_svg_())


@given(circuit=circuits())
def test_there_and_back_through_qiskit(circuit):
    pytest.importorskip("qiskit")
    from qiskit.quantum_info import Clifford

    there = circuit.to_qiskit()
    assert Circuit.from_qiskit(there).named() == circuit.named()
    # Qiskit's own simulation of it: images of X and Z as strings, highest qubit first.
    theirs = CliffordTableau.from_circuit(circuit)
    for images, labels in zip(
        theirs.images(), (Clifford(there).to_labels(mode="D"), Clifford(there).to_labels(mode="S")),
        strict=True,
    ):  # fmt: skip
        assert [image[0] + image[:0:-1] for image in images] == labels


def test_sums_of_symbols_for_qiskit():
    pytest.importorskip("qiskit")
    symbolic = Circuit(1, [Gate.rz(0, Parameter("a") + 1.0)]).to_qiskit()
    assert [p.name for p in symbolic.parameters] == ["a"]


@pytest.mark.parametrize(
    ("package", "on_pypi"),
    [("qiskit", "qiskit"), ("pytket", "pytket"), ("stim", "stim"), ("pyzx", "pyzx"),
     ("cirq", "cirq-core"), ("pennylane", "pennylane")],
)  # fmt: skip
def test_a_missing_package_is_named(monkeypatch, package, on_pypi):
    monkeypatch.setitem(sys.modules, package, None)
    text = f"needs the package {package}: pip install {on_pypi}, or zeltbraidwerk.interop. "
    with pytest.raises(ImportError, match=text):
        getattr(Circuit(1), f"to_{package}")()

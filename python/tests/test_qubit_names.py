"""Names of qubits, from and to every format, and what keeps them."""

import pickle

import pytest

import zeltbraidwerk as zb
from zeltbraidwerk import Circuit, Device, Gate, Measure, Register, errors

SOURCE = """
qreg b[2]; qreg a[1]; creg q[1];
ccx b[0],b[1],a[0]; ccx b[0],b[1],a[0]; cx b[0],a[0]; measure a[0] -> q[0];
"""
NAMES = ("b[0]", "b[1]", "a[0]")


def test_what_keeps_names():
    circuit = Circuit.of(SOURCE)
    assert circuit.qubit_names == NAMES
    first, ending = circuit.split_ending()
    result = zb.optimize(circuit, seed=1, steps=100)
    for kept in (
        circuit.bind({}), first, ending, first.unitary(), first.inverse(), first + ending,
        Circuit(3) + first, first + Circuit(3), pickle.loads(pickle.dumps(circuit)),
        zb.from_json(circuit.to_json()), result.circuit, result.source,
        zb.from_json(result.to_json()).circuit, zb.optimize(circuit, permutation="free").circuit,
        Circuit.from_qasm(circuit.to_qasm(), reader="own"), Circuit(3, circuit, None, NAMES),
        Circuit(3).with_qubit_names([("b", 2), Register("a", 1)]),
    ):  # fmt: skip
        assert kept.qubit_names == NAMES
    usual = ("q[0]", "q[1]", "q[2]")
    for plain in (
        circuit.placed([0, 1, 2], 3), circuit.with_qubit_names(None),
        zb.optimize(circuit, device=Device.line(3), seed=1, steps=100).circuit,
        zb.routing.route(first, Device.line(3), steps=100).circuit,
        zb.from_json(circuit.to_json().replace(',"qubit_names":["b[0]","b[1]","a[0]"]', "")),
    ):  # fmt: skip
        assert plain.qubit_names == usual
    assert circuit == circuit.with_qubit_names(None)
    assert hash(circuit) == hash(circuit.with_qubit_names(None))


def test_pictures_show_names():
    circuit = Circuit(2, [Gate.cnot(0, 1)]).with_qubit_names(["<in>", "ancilla"])
    lines = circuit.draw().split("\n")
    assert [line[:9] for line in lines] == ["   <in>: ", "         ", "ancilla: "]
    assert ">&lt;in&gt;</text>" in circuit._repr_svg_()


def test_names_in_openqasm():
    """A free or changed name where OpenQASM does not have one, or the classical register has it."""
    for names, classical, written in (
        (["q[0]", "q[1]", "q[2]"], "c", "qreg q[3];"),
        (["q[0]", "q[1]", "q[2]"], "q", "qreg q_[3];"),
        (["a[0]", "b[0]", "b[1]"], "b", "qreg a[1];\nqreg b_[2];"),
        (["a[1]", "a[0]", "b[0]"], "c", "qreg q[2];\nqreg b[1];"),
        (["a[0]", "b[0]", "a[1]"], "c", "qreg q[1];\nqreg b[1];\nqreg q_[1];"),
        (["q[1, 2]", "q[-3]", "work"], "c", "qreg q_[2];\nqreg work[1];"),
        (["Alice", "x", "b c"], "q_x", "qreg q_Alice[1];\nqreg q_x_[1];\nqreg q_b_c[1];"),
    ):
        circuit = Circuit(3, [Measure(0, 0)], [(classical, 1)], names)
        assert f"{written}\ncreg " in circuit.to_qasm(), names
        assert Circuit.of(circuit.to_qasm()) == circuit


def test_wrong_names():
    for names, error in (
        (["a", "a"], errors.QubitError), (["a", ""], errors.QubitError),
        (["a"], errors.ShapeError), ([("a", 3)], errors.ShapeError),
        (3, TypeError), ([1, 2], TypeError), (["a", ("b", 1)], TypeError),
    ):  # fmt: skip
        with pytest.raises(error, match="qubit_names: got"):
            Circuit(2, qubit_names=names)


def test_names_of_qiskit(qiskit):
    circuit = Circuit(3, [Gate.h(0)]).with_qubit_names([("b", 2), ("a", 1)])
    written = circuit.to_qiskit()
    assert [(register.name, register.size) for register in written.qregs] == [("b", 2), ("a", 1)]
    assert Circuit.of(written).qubit_names == NAMES
    assert Circuit.of(circuit.to_qasm3()).qubit_names == NAMES
    bits = [qiskit.circuit.Qubit() for _ in range(2)]
    register = qiskit.QuantumRegister(2, "q")
    mixed = qiskit.QuantumCircuit(bits[:1], register, bits[1:])
    assert Circuit.of(mixed).qubit_names == ("q_[0]", "q[0]", "q[1]", "q_[1]")
    alias = qiskit.QuantumRegister(name="alias", bits=[bits[1], register[0]])
    mixed.add_register(alias)
    assert Circuit.of(mixed).qubit_names == ("q_[0]", "q[0]", "q[1]", "alias[0]")


def test_names_of_pytket(tket):
    """With indices of any length, in pytket's own order."""
    source = tket.Circuit()
    for name, index in (("b", [0]), ("grid", [1, 2]), ("grid", [0, 1]), ("one", []), ("a b", [7])):
        source.add_qubit(tket.Qubit(name, index))
    for name, index in (("m", [0]), ("m", [1]), ("z", [3]), ("pair", [1, 0])):
        source.add_bit(tket.Bit(name, index))
    read = Circuit.of(source)
    assert read.qubit_names == ("a b[7]", "b[0]", "grid[0, 1]", "grid[1, 2]", "one")
    assert read.classical == (Register("m", 2), Register("pair[1, 0]", 1), Register("z[3]", 1))
    written = read.to_pytket()
    assert (written.qubits, written.bits) == (source.qubits, source.bits)
    # A classical register of the same name, and indices of different lengths.
    clash = Circuit(3, [Measure(0, 0)], [("a", 1)], ["a[0]", "b[0]", "b[0, 1]"])
    assert {str(qubit) for qubit in clash.to_pytket().qubits} == {"a_[0]", "b[0]", "b[0, 1]"}


def test_names_through_other_packages(tket, qiskit, cirq, qml):
    """Qubits may be in another order there; each one has its gates still."""
    gates = [Gate.h(0), Gate.cnot(1, 2), Gate.cnot(2, 3), Gate.h(0)]
    for names in (
        [("b", 3), ("a", 1)], ["q[3]", "q[1]", "q[2]", "q[10]"],
        ["left", "q[1, 2]", "q[0, 1]", "right"],
    ):  # fmt: skip
        circuit = Circuit(4, gates, qubit_names=names)

        def named(read):
            return {
                (gate.name, tuple(read.qubit_names[qubit] for qubit in gate.qubits))
                for gate in read
            }

        for package in ("pytket", "cirq", "pennylane", *["qiskit"] * isinstance(names[0], tuple)):
            written = getattr(circuit, f"to_{package}")()
            assert named(Circuit.of(written)) == named(circuit), package
            shorter = zb.optimize(written, seed=1, steps=100).circuit
            assert set(shorter.qubit_names) == set(circuit.qubit_names)

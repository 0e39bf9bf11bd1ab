"""Matrices, sums of Pauli strings and graphs as other packages have them. Classes of packages that
are not installed here are stood in for."""

import numpy as np
import pytest

import zeltbraidwerk as zb
from zeltbraidwerk import CliffordTableau, errors

CNOTS = "qreg q[3]; cx q[0],q[1]; cx q[1],q[2];"
WANTED = {"XIZ": 0.5, "IYI": -1.0}
MAP = [[1, 0, 0], [1, 1, 0], [1, 1, 1]]  # neither its own inverse nor its own transpose


def stand_in(package, name, base=object, **members):
    return type(name, (base,), {"__module__": f"{package}.inner", **members})


def is_map(value):
    result = zb.linear.synthesize(value, method="pmh")
    return result.matrix.tolist() == MAP and result.verify()


def test_matrices(tmp_path):
    path = tmp_path / "cnots.qasm"
    path.write_text(CNOTS)
    circuit = zb.Circuit.of(CNOTS)
    for value in (
        MAP, np.array(MAP, dtype=np.uint8), ["100", "110", "111"], "1 0 0\n1 1 0\n1,1,1",
        CNOTS, str(path), circuit, circuit.to_cnot_circuit(),
    ):  # fmt: skip
        assert is_map(value), value
    with pytest.raises(errors.ShapeError, match=r"matrix: line 2: 2 digits"):
        zb.linear.synthesize(["100", "11", "111"])
    with pytest.raises(errors.NotLinearError, match="gate H"):
        zb.linear.synthesize("qreg q[1]; h q[0];")


def test_matrices_of_qiskit(qiskit):
    from qiskit.circuit.library import LinearFunction

    circuit = zb.Circuit.of(CNOTS).to_qiskit()
    assert is_map(circuit)
    assert is_map(LinearFunction(circuit))


def test_matrices_of_other_packages(tket, stim, pyzx, cirq, qml, galois):
    circuit = zb.Circuit.of(CNOTS)
    for package in ("pytket", "stim", "pyzx", "cirq", "pennylane"):
        written = getattr(circuit, f"to_{package}")()
        assert is_map(written), package
        made = zb.clifford.synthesize(written, seed=1, steps=0).circuit
        assert CliffordTableau.from_circuit(made) == CliffordTableau.from_circuit(circuit), package
    assert is_map(pyzx.Mat2(MAP))
    assert is_map(galois.GF(2)(MAP))


def test_matrices_of_galois():
    galois = pytest.importorskip("galois")
    assert is_map(galois.GF2(MAP))
    parities = galois.GF2([[1, 1, 0], [0, 1, 1]])
    result = zb.phase.synthesize((parities, [0.5, 0.25]), seed=1)
    assert [parity for parity, _ in result.terms] == [0b011, 0b110]
    path = galois.GF2([[0, 1, 0], [1, 0, 1], [0, 1, 0]])
    assert zb.Device.of(path) == zb.Device.line(3)
    assert zb.graph_state.synthesize(path, seed=1).count == 2
    with pytest.raises(errors.EntryError, match="matrix: got the entry 2"):
        zb.linear.synthesize(galois.GF(3)([[2, 0], [0, 1]]))


def test_sparse_matrices():
    sparse = pytest.importorskip("scipy.sparse")
    assert is_map(sparse.csr_matrix(np.array(MAP)))
    path = sparse.coo_matrix(([1] * 4, ([0, 1, 1, 2], [1, 0, 2, 1])))
    assert zb.Device.of(path) == zb.Device(3, [(0, 1), (1, 2)])
    assert zb.Device.of(sparse.csr_matrix(np.array([[0, 1], [1, 0]]))) == zb.Device(2, [(0, 1)])


def rotations(operator):
    result = zb.pauli.synthesize(operator, order="free", seed=1)
    assert result.verify()
    return {string: float(angle) for string, angle in result.rotations}


def test_sums_of_openfermion():
    """exp(-i c P) is a rotation by 2 c; qubit 0 is the first letter."""
    operator = stand_in("openfermion", "QubitOperator")()
    operator.terms = {((0, "X"), (2, "Z")): 0.25, ((1, "Y"),): -0.5 + 0j, (): 1.0}
    assert rotations(operator) == WANTED
    operator.terms = {((0, "X"),): 0.5j}
    with pytest.raises(errors.AngleError, match="wanted a real number"):
        zb.pauli.synthesize(operator)


def test_sums_of_pennylane(qml):
    x, y, z = qml.X(0), qml.Y(1), qml.Z(2)
    total = 0.25 * (x @ z) - 0.5 * y + 1.0 * qml.I(0)
    numbers = qml.X(np.int64(0)) @ qml.Z(np.int64(2))
    for operator in (
        total, total.pauli_rep, qml.Hamiltonian([0.25, -0.5], [x @ z, y]), 0.25 * numbers - 0.5 * y
    ):  # fmt: skip
        assert rotations(operator) == WANTED
    assert rotations(y) == rotations(qml.pauli.PauliWord({1: "Y"})) == {"IY": 2.0}
    named = 0.25 * (qml.X("b") @ qml.Z("a")) - 0.5 * qml.Y("c")
    assert rotations(named) == {"XZI": 0.5, "IIY": -1.0}
    with pytest.raises(errors.OptionError, match="RX of PennyLane"):
        zb.pauli.synthesize(qml.RX(0.1, 0))


def test_strings_of_pytket(tket):
    from pytket.pauli import Pauli, QubitPauliString

    def string(letters):
        return QubitPauliString({tket.Qubit(q): pauli for q, pauli in letters.items()})

    given = {string({0: Pauli.X, 2: Pauli.Z}): 0.5, string({1: Pauli.Y}): -1.0}
    assert rotations(given) == WANTED
    with pytest.raises(TypeError, match="QubitPauliString"):
        zb.pauli.synthesize({**given, "XIZ": 0.1})


def test_adjacency_matrices():
    path = np.array([[0, 1, 0], [1, 0, 1], [0, 1, 0]])
    assert zb.Device.of(path) == zb.Device.of(path.astype(bool)) == zb.Device(3, [(0, 1), (1, 2)])
    assert zb.Device.of(path.tolist()) == zb.Device.of(path)
    for strange in (np.triu(path), np.ones((3, 3), dtype=int)):
        with pytest.raises(errors.GraphError, match="device: got an adjacency matrix"):
            zb.Device.of(strange)


def test_cliffords_as_text_and_in_files(tmp_path):
    circuit = zb.Circuit(3, [zb.Gate.h(2), zb.Gate.cnot(2, 0), zb.Gate.s(0), zb.Gate.cz(1, 2)])
    path = tmp_path / "clifford.qasm"
    path.write_text(circuit.to_qasm())
    for synthesize in (zb.clifford.synthesize, zb.clifford.synthesize_state):
        wanted = synthesize(circuit, seed=1)
        for given in (circuit.to_qasm(), path, str(path)):
            assert synthesize(given, seed=1).circuit == wanted.circuit

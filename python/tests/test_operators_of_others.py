"""Matrices, sums of Pauli strings and graphs as other packages have them. Classes of packages that
are not installed here are stood in for."""

import numpy as np
import pytest

import zeltbraidwerk as zb
from zeltbraidwerk import errors

CNOTS = "qreg q[3]; cx q[0],q[1]; cx q[1],q[2];"
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
    mat2 = stand_in("pyzx", "Mat2", data=MAP)()
    for value in (
        MAP, np.array(MAP, dtype=np.uint8), ["100", "110", "111"], "1 0 0\n1 1 0\n1,1,1",
        CNOTS, str(path), circuit, circuit.to_cnot_circuit(), mat2,
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


def test_matrices_of_pytket_and_stim(tket, stim):
    circuit = zb.Circuit.of(CNOTS)
    assert is_map(circuit.to_pytket())
    assert is_map(circuit.to_stim())


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


def test_sums_of_openfermion_and_pennylane():
    """exp(-i c P) is a rotation by 2 c; qubit 0 is the first letter."""
    operator = stand_in("openfermion", "QubitOperator")()
    operator.terms = {((0, "X"), (2, "Z")): 0.25, ((1, "Y"),): -0.5 + 0j, (): 1.0}
    wanted = {"XIZ": 0.5, "IYI": -1.0}
    assert rotations(operator) == wanted
    word = stand_in("pennylane", "PauliWord", dict, __hash__=lambda self: id(self))
    sentence = stand_in("pennylane", "PauliSentence", dict)
    terms = {word({0: "X", 2: "Z"}): 0.25, word({1: "Y"}): -0.5, word(): 1.0}
    assert rotations(sentence(terms)) == wanted
    assert rotations(stand_in("pennylane", "Sum", pauli_rep=sentence(terms))()) == wanted
    numbers = {word({np.int64(2): "Z", np.int64(0): "X"}): 0.25, word({np.int64(1): "Y"}): -0.5}
    assert rotations(sentence(numbers)) == wanted
    alone = stand_in("pennylane", "PauliWord", dict, pauli_rep=sentence({word({1: "Y"}): 1.0}))
    assert rotations(alone({1: "Y"})) == {"IY": 2.0}
    named = sentence({word({"b": "X", "a": "Z"}): 0.25, word({"c": "Y"}): -0.5})
    assert rotations(named) == {"XZI": 0.5, "IIY": -1.0}
    with pytest.raises(errors.OptionError, match="Hermitian of PennyLane"):
        zb.pauli.synthesize(stand_in("pennylane", "Hermitian", pauli_rep=None)())
    operator.terms = {((0, "X"),): 0.5j}
    with pytest.raises(errors.AngleError, match="wanted a real number"):
        zb.pauli.synthesize(operator)


def test_strings_of_pytket(tket):
    from pytket.pauli import Pauli, QubitPauliString

    def string(letters):
        return QubitPauliString({tket.Qubit(q): pauli for q, pauli in letters.items()})

    given = {string({0: Pauli.X, 2: Pauli.Z}): 0.5, string({1: Pauli.Y}): -1.0}
    assert rotations(given) == {"XIZ": 0.5, "IYI": -1.0}
    with pytest.raises(TypeError, match="QubitPauliString"):
        zb.pauli.synthesize({**given, "XIZ": 0.1})


def test_adjacency_matrices():
    path = np.array([[0, 1, 0], [1, 0, 1], [0, 1, 0]])
    assert zb.Device.of(path) == zb.Device.of(path.astype(bool)) == zb.Device(3, [(0, 1), (1, 2)])
    for strange in (np.triu(path), np.ones((3, 3), dtype=int)):
        with pytest.raises(errors.GraphError, match="device: got an adjacency matrix"):
            zb.Device.of(strange)

"""Circuits for Clifford operators against dense ones and Stim, from all forms, at their edges."""

import numpy as np
import pytest
from hypothesis import given
from hypothesis import strategies as st
from support import unitary
from test_states import cliffords

import zeltbraidwerk as zb
from zeltbraidwerk import CliffordTableau, Gate, clifford


def permuted(matrix, wires):
    """The operator whose qubit q stands on wire wires[q] of this one."""
    n = len(wires)
    tensor = matrix.reshape((2,) * n + (-1,))
    return tensor.transpose([*wires, n]).reshape(matrix.shape)


@given(
    circuit=cliffords(),
    method=st.sampled_from(clifford.methods()),
    objective=st.sampled_from(("count", "depth")),
    permutation=st.sampled_from(("exact", "free")),
    steps=st.sampled_from((0, 300)),
    seed=st.integers(0, 9),
)
def test_against_the_dense_operator(circuit, method, objective, permutation, steps, seed):
    options = {"objective": objective, "permutation": permutation, "seed": seed}
    if method != "elimination":
        options["steps"] = steps
    result = clifford.synthesize(circuit, method=method, **options)
    assert result.verify()
    assert permutation == "free" or result.permutation == tuple(range(circuit.n))
    found = permuted(unitary(result.circuit), result.permutation)
    overlap = np.vdot(found, unitary(circuit)) / 2**circuit.n
    assert np.isclose(abs(overlap), 1)


@pytest.mark.parametrize("n", [0, 1, 6, 21, 40])
def test_random_tableaus_of_stim(n):
    stim = pytest.importorskip("stim")
    tableau = stim.Tableau.random(n)
    result = clifford.synthesize(tableau, steps=1000, seed=1)
    assert result.verify()
    assert CliffordTableau.from_circuit(result.circuit).to_stim() == tableau
    plain = clifford.synthesize(tableau, method="elimination")
    assert result.count <= plain.count
    free = clifford.synthesize(tableau, permutation="free", steps=1000, seed=1)
    assert free.verify()
    assert free.count <= result.count
    device = zb.Device.grid(6, 7)
    placed = clifford.synthesize(tableau, device=device, steps=50, seed=1)
    assert placed.verify()
    assert len(placed.placement) == n
    assert device.fits(placed.circuit)


def test_a_large_tableau_of_stim():
    stim = pytest.importorskip("stim")
    tableau = stim.Tableau.random(100)
    result = clifford.synthesize(tableau, steps=0, seed=1)
    assert CliffordTableau.from_circuit(result.circuit).to_stim() == tableau
    assert result.count < 0.7 * clifford.synthesize(tableau, method="elimination").count


# An operator that tells directions, signs and qubits apart.
CIRCUIT = zb.Circuit(3, [Gate("X", 0), Gate.h(2), Gate.cnot(2, 1), Gate.s(1), Gate.cnot(1, 0)])
IMAGES = CliffordTableau.from_circuit(CIRCUIT).images()


@pytest.mark.parametrize(
    ("package", "form"),
    [
        ("zeltbraidwerk", lambda _: CIRCUIT),
        ("zeltbraidwerk", lambda _: CliffordTableau.from_circuit(CIRCUIT)),
        ("zeltbraidwerk", lambda _: IMAGES),
        ("stim", lambda _: CIRCUIT.to_stim()),
        ("stim", lambda _: CIRCUIT.to_stim().to_tableau()),
        ("stim", lambda stim: tuple([stim.PauliString(p) for p in side] for side in IMAGES)),
        ("qiskit", lambda _: CIRCUIT.to_qiskit()),
        ("qiskit.quantum_info", lambda info: info.Clifford(CIRCUIT.to_qiskit())),
        ("pytket", lambda _: CIRCUIT.to_pytket()),
        ("pytket.tableau", lambda tableau: tableau.UnitaryTableau(CIRCUIT.to_pytket())),
    ],
)
def test_forms(package, form):
    result = clifford.synthesize(form(pytest.importorskip(package)), seed=1)
    assert result.images == (*IMAGES[0], *IMAGES[1])
    assert result.verify()
    assert CliffordTableau.from_circuit(result.circuit) == CliffordTableau.from_circuit(CIRCUIT)

"""Circuits for Clifford operators against dense ones and Stim, from all forms, at their edges."""

import pytest

import zeltbraidwerk as zb
from zeltbraidwerk import CliffordTableau, Gate, clifford


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

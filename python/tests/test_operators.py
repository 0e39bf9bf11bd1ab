"""Operators and states of qubits from all forms, of this package and of others."""

import pytest
from long_calls import operator

import zeltbraidwerk as zb
from zeltbraidwerk import CliffordTableau, Gate, clifford
from zeltbraidwerk._states import prepares


def test_a_large_tableau_of_stim():
    stim = pytest.importorskip("stim")
    tableau = stim.Tableau.random(100)
    result = clifford.synthesize(tableau, steps=0, seed=1)
    assert CliffordTableau.from_circuit(result.circuit).to_stim() == tableau
    assert result.count < 0.7 * clifford.synthesize(tableau, method="elimination").count


@pytest.mark.parametrize(
    ("name", "most"), [("dense", 400_000), ("chain", 5000), ("pairs", 550), ("signs", 0)]
)
def test_what_no_budget_leaves_of_many_qubits(name, most):
    """Of dense operators and of those with long images a layered form, of light ones less."""
    n = 1100
    operators = {
        "dense": lambda: operator(n),
        "chain": lambda: zb.Circuit(n, [Gate.cnot(k, k + 1) for k in range(n - 1)]),
        "pairs": lambda: zb.Circuit(
            n, [g for k in range(0, n, 2) for g in (Gate.h(k), Gate.cnot(k, k + 1), Gate.s(k + 1))]
        ),
        "signs": lambda: zb.Circuit(n, [Gate("XYZ"[k % 3], k) for k in range(n)]),
    }
    result = clifford.synthesize(operators[name](), budget=0.001)
    assert result.verify()
    assert result.count <= most


# An operator that tells directions, signs and qubits apart, and so does what it makes of zeros.
CIRCUIT = zb.Circuit(3, [Gate("X", 0), Gate.h(2), Gate.cnot(2, 1), Gate.s(1), Gate.cnot(1, 0)])
IMAGES = CliffordTableau.from_circuit(CIRCUIT).images()
STABILISERS = IMAGES[1]


def _simulator(stim):
    simulator = stim.TableauSimulator()
    simulator.do(CIRCUIT.to_stim())
    return simulator


FORMS = [
    ("zeltbraidwerk", lambda _: CIRCUIT),
    ("zeltbraidwerk", lambda _: CliffordTableau.from_circuit(CIRCUIT)),
    ("stim", lambda _: CIRCUIT.to_stim()),
    ("stim", lambda _: CIRCUIT.to_stim().to_tableau()),
    ("qiskit.quantum_info", lambda _: CIRCUIT.to_qiskit()),
    ("qiskit.quantum_info", lambda info: info.Clifford(CIRCUIT.to_qiskit())),
    ("pytket.tableau", lambda _: CIRCUIT.to_pytket()),
    ("pytket.tableau", lambda tableau: tableau.UnitaryTableau(CIRCUIT.to_pytket())),
]
OF_OPERATORS = [
    ("zeltbraidwerk", lambda _: IMAGES),
    ("stim", lambda stim: tuple([stim.PauliString(p) for p in side] for side in IMAGES)),
]
OF_STATES = [
    ("zeltbraidwerk", lambda _: iter(STABILISERS)),
    ("stim", lambda stim: [stim.PauliString(text) for text in STABILISERS]),
    ("stim", _simulator),
    ("qiskit.quantum_info", lambda info: info.StabilizerState(CIRCUIT.to_qiskit())),
    ("qiskit.quantum_info", lambda info: [info.Pauli(s[0] + s[:0:-1]) for s in STABILISERS]),
]


@pytest.mark.parametrize(("package", "form"), FORMS + OF_OPERATORS)
def test_forms_of_operators(package, form):
    result = clifford.synthesize(form(pytest.importorskip(package)), seed=1)
    assert result.images == (*IMAGES[0], *IMAGES[1])
    assert result.verify()
    assert CliffordTableau.from_circuit(result.circuit) == CliffordTableau.from_circuit(CIRCUIT)


@pytest.mark.parametrize(("package", "form"), FORMS + OF_STATES)
def test_forms_of_states(package, form):
    result = clifford.synthesize_state(form(pytest.importorskip(package)), seed=1)
    assert prepares(result.circuit, STABILISERS)
    assert result.count == 2


def test_a_state_of_cnots_is_zeros():
    assert clifford.synthesize_state(zb.CnotCircuit(3, [(0, 1)])).count == 0

"""Stabilizer states against dense states and Stim, from all forms, and at their edges."""

import numpy as np
import pytest
from hypothesis import given
from hypothesis import strategies as st
from support import unitary

import zeltbraidwerk as zb
from zeltbraidwerk._states import prepares
from zeltbraidwerk.clifford import CliffordTableau, synthesize_state
from zeltbraidwerk.gates import Gate


@st.composite
def cliffords(draw, most=4):
    n = draw(st.integers(1, most))
    qubits = st.integers(0, n - 1)
    gates = []
    for _ in range(draw(st.integers(0, 4 * n))):
        a, b = draw(qubits), draw(qubits)
        kind = draw(st.sampled_from(("h", "s", "x", "cnot")))
        if kind != "cnot":
            gates.append(getattr(Gate, kind)(a) if kind != "x" else Gate("X", a))
        elif a != b:
            gates.append(Gate.cnot(a, b))
    return zb.Circuit(n, gates)


@given(
    circuit=cliffords(),
    objective=st.sampled_from(("count", "depth")),
    steps=st.sampled_from((0, 10, 300)),
    seed=st.integers(0, 9),
)
def test_against_the_dense_state(circuit, objective, steps, seed):
    result = synthesize_state(circuit, objective=objective, steps=steps, seed=seed)
    assert result.verify()
    assert result.count <= circuit.n * (circuit.n - 1) // 2
    found, wanted = unitary(result.circuit)[:, 0], unitary(circuit)[:, 0]
    assert np.isclose(abs(np.vdot(found, wanted)), 1)


@pytest.mark.parametrize("n", [0, 1, 12, 40, 70])
def test_random_tableaus_of_stim(n):
    stim = pytest.importorskip("stim")
    tableau = stim.Tableau.random(n)
    result = synthesize_state(tableau, steps=500, seed=1)
    assert result.verify()
    simulator = stim.TableauSimulator()
    simulator.do(result.circuit.to_stim())
    for q in range(n):
        assert simulator.peek_observable_expectation(tableau.z_output(q)) == 1


# What this circuit makes of zeros tells signs and qubits apart.
CIRCUIT = zb.Circuit(3, [Gate("X", 0), Gate.cnot(0, 1), Gate.h(2), Gate.cnot(2, 1)])
STABILISERS = ("-ZII", "+ZZZ", "+IXX")


def _simulator(stim):
    simulator = stim.TableauSimulator()
    simulator.do(CIRCUIT.to_stim())
    return simulator


@pytest.mark.parametrize(
    ("package", "form"),
    [
        ("zeltbraidwerk", lambda _: CIRCUIT),
        ("zeltbraidwerk", lambda _: CliffordTableau.from_circuit(CIRCUIT)),
        ("zeltbraidwerk", lambda _: iter(STABILISERS)),
        ("zeltbraidwerk", lambda _: zb.CnotCircuit(3, [])),
        ("stim", lambda stim: [stim.PauliString(text) for text in STABILISERS]),
        ("stim", lambda _: CIRCUIT.to_stim()),
        ("stim", lambda _: CIRCUIT.to_stim().to_tableau()),
        ("stim", _simulator),
        ("pytket.tableau", lambda _: CIRCUIT.to_pytket()),
        ("pytket.tableau", lambda tableau: tableau.UnitaryTableau(CIRCUIT.to_pytket())),
        ("qiskit.quantum_info", lambda _: CIRCUIT.to_qiskit()),
        ("qiskit.quantum_info", lambda info: info.Clifford(CIRCUIT.to_qiskit())),
        ("qiskit.quantum_info", lambda info: info.StabilizerState(CIRCUIT.to_qiskit())),
        ("qiskit.quantum_info", lambda info: [info.Pauli(s[0] + s[:0:-1]) for s in STABILISERS]),
    ],
)
def test_forms_of_states(package, form):
    state = form(pytest.importorskip(package))
    result = synthesize_state(state, seed=1)
    empty = isinstance(state, zb.CnotCircuit)
    assert prepares(result.circuit, ["ZII", "IZI", "IIZ"] if empty else STABILISERS)
    assert result.count == (0 if empty else 1)


def test_options_of_the_search():
    graph = zb.gallery.random_graph(24, 3)
    strings = zb.graph_state.synthesize(graph, method="naive").stabilisers()
    first = synthesize_state(strings, seed=5, steps=3000, restarts=3)
    shallow = synthesize_state(strings, seed=5, steps=20000, objective="depth")
    assert shallow.verify()
    assert shallow.depth < first.depth
    searched = zb.graph_state.synthesize(graph, method="search", seed=5, steps=3000, restarts=3)
    assert searched.circuit == first.circuit

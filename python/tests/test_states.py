"""Stabilizer states against dense states and Stim, from all forms, and at their edges."""

import pytest

import zeltbraidwerk as zb
from zeltbraidwerk._states import prepares
from zeltbraidwerk.clifford import CliffordTableau, synthesize_state
from zeltbraidwerk.gates import Gate

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

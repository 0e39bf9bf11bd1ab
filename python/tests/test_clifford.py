"""Clifford tableaus against Stim, and as values."""

import pickle

import pytest
from hypothesis import given
from hypothesis import strategies as st
from test_circuits import circuits

from zeltbraidwerk import Circuit, CliffordTableau, CnotCircuit, Gate


@given(circuit=circuits(), data=st.data())
def test_against_stim(circuit, data):
    stim = pytest.importorskip("stim")
    ours = CliffordTableau.from_circuit(circuit)
    there = circuit.to_stim()
    assert there.num_qubits == circuit.n
    assert CliffordTableau.from_circuit(Circuit.from_stim(there)) == ours
    theirs = there.to_tableau()
    assert ours.to_stim() == theirs
    assert CliffordTableau.from_stim(theirs) == ours
    assert ours.inverse().to_stim() == theirs.inverse()
    letters = data.draw(st.text("IXYZ", min_size=circuit.n, max_size=circuit.n))
    image = ours.conjugate("-" + letters)
    assert stim.PauliString(image) == theirs(stim.PauliString("-" + letters))


@given(a=circuits(), b=circuits())
def test_composition(a, b):
    n = max(a.n, b.n)
    a, b = Circuit(n, a), Circuit(n, b)
    first, second = CliffordTableau.from_circuit(a), CliffordTableau.from_circuit(b)
    both = CliffordTableau.from_circuit(a + b)
    assert first.then(second) == second @ first == both
    assert hash(first.then(second)) == hash(both)
    assert both @ both.inverse() == CliffordTableau(n)
    assert pickle.loads(pickle.dumps(both)) == both
    assert CliffordTableau.from_core(both.to_core()) == both


def test_equal_operators_with_unequal_entries_are_equal():
    twice = CliffordTableau(1).apply([Gate.h(0), Gate.h(0)])
    assert twice == CliffordTableau(1)
    assert twice.to_core() != CliffordTableau(1).to_core()
    assert CliffordTableau(1).apply(Gate("X", 0)) != CliffordTableau(1)


def test_directions():
    cnot = CliffordTableau.from_circuit(CnotCircuit(2, [(0, 1)]))
    assert [cnot.conjugate(p) for p in ("XI", "IX", "ZI", "+IZ", "-Y_")] == [
        "+XX", "+IX", "+ZI", "+ZZ", "-YX",
    ]  # fmt: skip
    assert cnot.images() == (["+XX", "+IX"], ["+ZI", "+ZZ"])
    assert str(cnot) == "X0 -> +XX   Z0 -> +ZI\nX1 -> +IX   Z1 -> +ZZ"
    s_then_h = CliffordTableau(1).apply([Gate.s(0), Gate.h(0)])
    assert s_then_h.conjugate("X") == "-Y"

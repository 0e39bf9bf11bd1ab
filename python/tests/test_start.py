"""Searches that go on from a circuit which was found before."""

import functools

import numpy as np
import pytest
from batches import cliffords

import zeltbraidwerk as zb
from zeltbraidwerk import Device, errors

MATRIX, OTHER = zb.gallery.random_invertible(12, 2, seed=1)
PARITIES = dict.fromkeys(zb.gallery.random_parities(8, 40, 1)[0], 0.1)
OPERATOR, STATE = cliffords(8, 2)
ANSATZ = [*zb.gallery.uccsd(6, 2).items()][:24]
ANSATZ += [("XYIIIZ", "theta"), ("ZZIIII", np.pi / 2)]
RINGS = [("".join("Z" if q in (k, (k + s) % 8) else "I" for q in range(8)), 0.1 * s)
         for s in (1, 2, 3) for k in range(8)]  # fmt: skip
MIXERS = [("".join("X" if q == k else "I" for q in range(8)), 0.7) for k in range(8)]
GRAPH = zb.gallery.random_graph(12, seed=2)
GRID = Device.grid(4, 4)

linear = functools.partial(zb.linear.synthesize, MATRIX, method="search")
few_wires = functools.partial(zb.linear.synthesize, np.eye(5)[[1, 3, 0, 2, 4]].astype(bool),
                              method="search")  # fmt: skip
clifford = functools.partial(zb.clifford.synthesize, OPERATOR, method="search")
state = functools.partial(zb.clifford.synthesize_state, STATE)
graph_state = functools.partial(zb.graph_state.synthesize, GRAPH, method="search")
phase = functools.partial(zb.phase.synthesize, PARITIES, n=8, method="search")
pauli = functools.partial(zb.pauli.synthesize, ANSATZ, method="search")
blocks = functools.partial(zb.pauli.synthesize, RINGS + MIXERS, method="search")

CASES = [
    (linear, {}),
    (linear, {"permutation": "free"}),
    (linear, {"objective": "depth"}),
    (linear, {"device": GRID}),
    (linear, {"device": GRID, "objective": "depth", "permutation": "free"}),
    (linear, {"device": GRID, "reach": 2}),
    (few_wires, {}),
    (clifford, {}),
    (clifford, {"permutation": "free"}),
    (clifford, {"objective": "depth"}),
    (clifford, {"device": Device.grid(3, 3)}),
    (clifford, {"device": GRID, "permutation": "free", "objective": "depth"}),
    (state, {"objective": "depth"}),
    (state, {"device": Device.grid(3, 3)}),
    (graph_state, {}),
    (graph_state, {"device": GRID, "permutation": "free", "objective": "depth"}),
    (phase, {}),
    (phase, {"permutation": "free"}),
    (phase, {"tail": "return"}),
    (phase, {"device": GRID, "objective": "depth"}),
    (pauli, {}),
    (pauli, {"tail": "return", "objective": "depth"}),
    (pauli, {"order": "free", "permutation": "free"}),
    (pauli, {"tail": cliffords(6, 1)[0]}),
    (pauli, {"device": GRID, "order": "free"}),
    (blocks, {}),
    (blocks, {"tail": "return", "objective": "depth"}),
]


def size(result):
    by_depth = result.objective == "depth"
    return (result.depth, result.count) if by_depth else (result.count, result.depth)


@pytest.mark.parametrize(("search", "options"), CASES)
def test_no_result_is_larger_than_the_start(search, options):
    """Nor after a single step; and a start by a search of its own is better than none."""
    known = search(**options, seed=1, steps=20_000)
    for steps in (0, 1, 5_000):
        found = search(**options, seed=2, steps=steps, start=known)
        assert found.verify()
        assert size(found) <= size(known)
        assert found == search(**options, seed=2, steps=steps, start=known)
    assert size(search(**options, seed=2, steps=0)) >= size(search(**options, seed=2, start=known,
                                                                   steps=0))  # fmt: skip


def test_search_walks_on_from_the_start():
    """To where neither it nor the same search without it has come."""
    known = phase(seed=1, steps=20_000)
    for seed in (2, 3, 4):
        cold = phase(seed=seed, steps=10_000)
        assert phase(seed=seed, steps=10_000, start=known).count < min(known.count, cold.count)


def test_circuits_of_others_are_starts():
    graph = zb.graph_state.synthesize(GRAPH, method="naive").circuit  # of CZ gates
    assert graph_state(seed=1, steps=10, start=graph).verify()
    operator = zb.clifford.synthesize(OPERATOR, seed=3, steps=30_000)
    gates = operator.circuit.to_qasm()
    found = clifford(seed=1, steps=0, start=gates)
    assert found.verify()
    assert found.count <= operator.count
    shorter = pauli(seed=1, steps=20_000)
    found = pauli(seed=1, steps=0, start=shorter.circuit)
    assert found.verify()
    assert found.count <= shorter.count


def test_rotations_of_a_start_are_matched_by_string_sign_and_angle():
    """Equal ones in turn, quarter turns as rotations or Clifford gates, angles modulo 2 pi."""
    rz, rx, h, cnot = zb.Gate.rz, zb.Gate.rx, zb.Gate.h, zb.Gate.cnot

    def x(qubit):
        return zb.Gate("X", [qubit])

    rotations = [("ZZ", 0.3), ("XI", 0.2), ("ZZ", -0.3), ("IZ", np.pi / 2)]
    conjugated = [cnot(0, 1), rz(1, 0.3 + 2 * np.pi), cnot(0, 1), rx(0, 0.2),
                  cnot(0, 1), x(1), rz(1, 0.3), x(1), cnot(0, 1)]  # fmt: skip
    search = functools.partial(zb.pauli.synthesize, rotations, method="search", steps=0, seed=1)
    for last in ([rz(1, np.pi / 2)], [h(1), rx(1, np.pi / 2), h(1)]):
        found = search(start=zb.Circuit(2, conjugated + last))
        assert found.verify()
        assert found.count <= 4
    swapped = zb.Circuit(2, conjugated[4:] + conjugated[3:4] + conjugated[:3] + [rz(1, np.pi / 2)])
    wrong = [
        swapped,
        zb.Circuit(2, conjugated),
        zb.Circuit(2, [*conjugated, rz(1, -np.pi / 2)]),
        zb.Circuit(2, [*conjugated, rz(1, np.pi / 2), rz(0, 0.1)]),
        zb.Circuit(2, [*conjugated, rz(1, np.pi / 2), x(0)]),
        zb.Circuit(2, [*conjugated, rz(1, np.pi / 2), cnot(0, 1)]),
        zb.Circuit(2, [*conjugated[:1], rz(1, 0.4), *conjugated[2:], rz(1, np.pi / 2)]),
    ]
    for start in wrong:
        with pytest.raises(errors.OptionError, match="start: got a circuit of another operation"):
            search(start=start)
    assert search(start=wrong[5], tail="return").verify()


def test_clifford_gates_of_a_start_are_not_taken_for_rotations():
    """They are quarter turns as well, about the same strings."""
    rotations = [("YY", np.pi / 2), ("IX", 5 * np.pi / 2)]
    known = zb.pauli.synthesize(rotations, method="greedy", seed=874)
    assert zb.pauli.synthesize(rotations, method="search", steps=1, start=known).verify()


@pytest.mark.parametrize(
    ("search", "options", "complaint"),
    [
        (linear, {"start": zb.linear.synthesize(OTHER, steps=0)}, "circuit of another operation"),
        (linear, {"start": zb.CnotCircuit(3)}, "wanted CNOTs and gates on one qubit, on 12 qubits"),
        (linear, {"start": zb.Circuit(12, [zb.Gate.h(0)])}, "circuit of another operation"),
        (linear, {"start": linear(steps=0), "method": "pmh"}, "start: not an option of method"),
        (linear, {"start": linear(steps=0, permutation="free", seed=1)}, "another operation"),
        (linear, {"start": linear(steps=0), "device": GRID}, "start: got"),
        (linear, {"start": linear(steps=0, device=GRID)}, "start: got a result on a device"),
        (linear, {"start": 3}, "start: got 3, wanted a result or a circuit"),
        (clifford, {"start": linear(steps=0)}, "on 8 qubits"),
        (clifford, {"start": zb.Circuit(8)}, "circuit of another operation"),
        (clifford, {"start": zb.Circuit(8, [zb.Gate.rz(0, 0.1)])}, "another operation"),
        (state, {"start": zb.Circuit(8)}, "circuit of another operation"),
        (phase, {"start": zb.Circuit(8)}, "circuit of another operation"),
        (graph_state, {"start": zb.Circuit(12), "method": "naive"}, "start: not an option of"),
        (pauli, {"start": zb.Circuit(6)}, "circuit of another operation"),
        (pauli, {"start": zb.Circuit(5)}, "on 6 qubits"),
        (pauli, {"start": zb.Circuit(6), "method": "greedy"}, "start: not an option of"),
    ],
)  # fmt: skip
def test_refusals(search, options, complaint):
    with pytest.raises((errors.Error, ValueError), match=complaint) as told:
        search(steps=None if "method" in options else 0, **options)
    assert isinstance(told.value, errors.Error)

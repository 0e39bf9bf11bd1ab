"""Whole circuits on devices: placements, SWAPs, and what comes back."""

import random
from dataclasses import replace
from itertools import pairwise

import numpy as np
import pytest
from support import same_up_to_phase, unitary

import zeltbraidwerk as zb
from zeltbraidwerk import Circuit, Device, Gate, _optimize_device, _placement, _swaps, errors

GRID = Device.grid(3, 3)


def chain(order):
    """Gates of generic rotations along the qubits in this order."""
    gates = []
    for k, (a, b) in enumerate([*pairwise(order), *pairwise(order[::-1])]):
        gates += [Gate.rx(a, 0.3 + k), Gate.cnot(a, b), Gate.rz(b, 0.7 * k), Gate.ry(b, 0.2)]
    return Circuit(len(order), gates)


def drawn(n, length, seed):
    rng = random.Random(seed)
    gates = []
    for _ in range(length):
        a, b = rng.sample(range(n), 2)
        gates += [rng.choice((Gate.cnot(a, b), Gate.cnot(a, b), Gate.cz(a, b))),
                  rng.choice((Gate.h(a), Gate.s(a), Gate.rz(a, 0.3), Gate.rx(b, 0.4)))]  # fmt: skip
    return Circuit(n, gates)


# --- placements ---------------------------------------------------------------------------------


@pytest.mark.parametrize(
    ("pairs", "device", "fits"),
    [
        ([(2, 0), (0, 3), (3, 1)], Device.line(5), True),
        ([(0, 1), (1, 2), (2, 3), (3, 0)], GRID, True),
        ([(0, 1), (1, 2), (2, 0)], GRID, False),  # no odd cycle is in a grid
        ([(0, k) for k in range(1, 5)], GRID, True),
        ([(0, k) for k in range(1, 6)], GRID, False),
        ([(0, 1), (2, 3)], Device(5, [(0, 2), (3, 4), (4, 1)]), True),
        ([], Device.line(4), True),
    ],
)
def test_placements_without_swaps_are_found(pairs, device, fits):
    circuit = Circuit(max([3, *map(max, pairs)]) + 1 if pairs else 4,
                      [Gate.cnot(a, b) for a, b in pairs])  # fmt: skip
    for seed in range(5):
        place = _placement.embedding(circuit, device, random.Random(seed))
        assert (place is not None) == fits
        if place is not None:
            assert len(set(place)) == circuit.n
            assert device.fits(circuit.placed(place, device.n))


def test_no_single_move_makes_a_placement_better():
    circuit = Circuit(
        4, [Gate.cnot(a, b) for a, b in [(0, 1)] * 5 + [(1, 2)] * 3 + [(0, 3), (2, 3)]]
    )
    distances = _placement.distances(Device.grid(2, 3))

    def cost(place):
        return sum(distances[place[a], place[b]] for a, b in [g.qubits for g in circuit])

    for place in _placement.placements(circuit, Device.grid(2, 3), 8, 1):
        assert len(set(place)) == 4
        for q in range(4):
            for target in range(6):
                moved = [place[q] if p == target else p for p in place]
                moved[q] = target
                assert cost(moved) >= cost(place), (place, q, target)


# --- routers ------------------------------------------------------------------------------------


@pytest.mark.parametrize(
    "device",
    [
        Device.line(5),
        Device(5, [(k, (k + 1) % 5) for k in range(5)]),
        Device(4, [(0, 1), (0, 2), (0, 3)]),
    ],
)
def test_swaps_keep_the_operator(device):
    """With every qubit where the route says that it begins and ends."""
    for seed in range(6):
        circuit = drawn(4, 12, seed)
        for route in _swaps.routes(circuit, device, None, 3, seed):
            assert device.fits(route.circuit)
            there = Circuit(device.n, circuit.placed(route.placement, device.n))
            at = list(range(device.n))
            for wire in range(device.n):  # brings every wire to its end
                here, end = at.index(wire), route.ends[wire]
                if here != end:
                    pairs = ((here, end), (end, here), (here, end))
                    there = there + Circuit(device.n, [Gate.cnot(*pair) for pair in pairs])
                    at[here], at[end] = at[end], at[here]
            assert same_up_to_phase(unitary(there), unitary(route.circuit))


@pytest.mark.parametrize("router", ["own", "qiskit"])
def test_circuits_that_fit_elsewhere_take_no_swaps(router):
    if router == "qiskit":
        pytest.importorskip("qiskit")
    source = chain([3, 0, 4, 1, 2])
    device = Device(7, [(6, 2), (2, 5), (5, 0), (0, 1), (1, 4), (4, 3)])
    options = {"device": device, "router": router, "seed": 1, "steps": 2000}
    result = zb.optimize(source, **options)
    assert result.count <= source.two_qubit_count
    assert result.verify()
    assert zb.optimize(source, jobs=2, **options) == result


def test_gates_routed_by_qiskit_keep_their_phase():
    """RZ by -7 pi/4 is a T with a phase of its own."""
    pytest.importorskip("qiskit")
    gates = [Gate.rz(0, -7 * np.pi / 4), Gate.cnot(1, 2), Gate.cnot(0, 2), Gate.cnot(0, 1)]
    source = Circuit(3, [*gates, Gate.rz(2, 3 * np.pi / 4), Gate.rx(2, 9 * np.pi / 4)])
    result = zb.optimize(source, device=Device.line(3), router="qiskit", seed=1, steps=0)
    placed = source.placed(result.placement, 3)
    distance = np.exp(1j * result.global_phase) * unitary(result.circuit) - unitary(placed)
    assert np.abs(distance).max() < 1e-9


def test_idle_qubits_stand_where_they_did_in_the_call_before():
    pytest.importorskip("qiskit")
    edges = [(0, 3), (0, 12), (1, 4), (1, 11), (2, 6), (2, 10), (3, 8), (5, 7), (5, 13), (6, 7),
             (8, 10), (9, 13), (11, 12)]  # fmt: skip
    source = Circuit(9, [Gate.cnot(0, 6), Gate.h(2), Gate.cnot(8, 2)])
    options = {"device": Device(14, edges), "router": "qiskit", "seed": 1, "steps": 8}
    first = zb.optimize(source, **options)
    assert first.verify()
    for _ in range(8):
        assert zb.optimize(source, **options).placement == first.placement


@pytest.mark.parametrize("permutation", ["exact", "free"])
@pytest.mark.parametrize("router", ["own", "qiskit"])
def test_windows_of_numbers_before_and_after_routing_are_proven(router, permutation):
    if router == "qiskit":
        pytest.importorskip("qiskit")
    gates = [
        gate
        for a, b in ((0, 1), (2, 3), (0, 2), (1, 3))
        for k in range(5)
        for gate in (
            Gate.rz(a, 0.3 + a + k), Gate.rx(a, 0.2 + k), Gate.rz(b, 0.4 * b - k),
            Gate.rx(b, k + 0.7), Gate.cnot(a, b),
        )
    ]  # fmt: skip
    source = Circuit(4, gates)
    result = zb.optimize(
        source, device=Device.line(4), router=router, permutation=permutation, seed=1, steps=4000
    )
    assert any(stage.log for stage in result._stages[0])
    assert result.verify()


@pytest.mark.parametrize("permutation", ["exact", "free"])
@pytest.mark.parametrize("qubits", [(0, 1, 2, 3, 4), (3, 0, 4, 1, 2)])
def test_ctrl_c_leaves_a_circuit_on_the_edges(qubits, permutation, ctrl_c):
    """Both where the circuit fits as it stands and where it does not."""
    source = chain(qubits) + chain(qubits)
    device = Device(7, [(0, 1), (1, 2), (2, 3), (3, 4), (5, 6)])
    with pytest.raises(errors.Interrupted) as caught:
        zb.optimize(source, device=device, permutation=permutation, seed=1, steps=2**62)
    best = caught.value.best
    assert best.source == source
    assert best.circuit.n == 7
    assert best.verify()


def test_no_time_gives_the_circuit_with_its_ending():
    """A barrier on a qubit without gates belongs to the ending, wherever it stands."""
    early = "creg c[1]; barrier q[1]; cx q[0],q[3]; cx q[3],q[2]; barrier q; measure q[1] -> c[0];"
    result = zb.optimize("qreg q[4];" + early, device=Device.line(4), budget=1e-6, seed=1)
    assert result.verify()
    assert result.global_phase == 0


CONTROLLED = """qreg q[4]; creg c[1]; cx q[0],q[1]; t q[1]; cx q[1],q[2]; if(c==1) cx q[0],q[2];
h q[2]; cx q[2],q[3]; if(c==1) cx q[3],q[0]; if(c==1) cz q[1],q[3]; cx q[0],q[3];
measure q[0] -> c[0];"""


@pytest.mark.parametrize("effort", [{"steps": 500}, {"budget": 1e-6}])
@pytest.mark.parametrize("permutation", ["exact", "free"])
@pytest.mark.parametrize("device", [Device.line(4), Device(4, [(3, 0), (3, 1), (3, 2)])])
def test_controlled_gates_are_on_edges(device, permutation, effort):
    source = Circuit.of(CONTROLLED)
    result = zb.optimize(source, device=device, permutation=permutation, seed=1, **effort)
    assert device.fits(result.circuit)
    assert result.verify()
    assert zb.from_json(result.to_json()).verify()
    assert result.circuit.operations[-1].qubit == result.placement[result.permutation[0]]
    for bit in (0, 1):
        wanted = Circuit(4, gates_where(source, bit)).placed(result.placement, 4)
        found = Circuit(4, gates_where(result.circuit, bit))
        wires = [0] * 4
        for q, wire in enumerate(result.permutation):
            wires[result.placement[wire]] = result.placement[q]
        assert same_up_to_phase(unitary(wanted), permuted(unitary(found), wires))
    wrong = [Gate.cnot(*device.edges[0]), *result.circuit]
    assert not replace(result, circuit=Circuit(4, wrong, source.classical)).verify()


def test_long_circuits_with_a_measurement_in_the_middle(monkeypatch):
    monkeypatch.setattr(_optimize_device, "_MOST_WORK", 10)
    result = zb.optimize(CONTROLLED, device=Device.line(4), seed=1, steps=500)
    assert result.verify()


def gates_where(circuit, bit):
    """Those that are carried out where the bit has that value all the time."""
    kept = []
    for item in circuit:
        if isinstance(item, zb.Conditional) and item.value == bit:
            kept.append(item.gate)
        elif isinstance(item, Gate):
            kept.append(item)
    return kept


def permuted(matrix, wires):
    """With output w on wire ``wires[w]``."""
    exchange = Circuit(4)  # by SWAPs
    at = list(wires)
    for wire in range(4):
        while at[wire] != wire:
            a, b = wire, at[wire]
            exchange = exchange + Circuit(4, [Gate.cnot(a, b), Gate.cnot(b, a), Gate.cnot(a, b)])
            at[a], at[b] = at[b], at[a]
    return unitary(exchange) @ matrix

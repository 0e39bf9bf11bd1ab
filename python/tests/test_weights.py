"""Objectives "error" and "duration" on devices whose edges differ."""

import math
import pickle
import random
from itertools import permutations

import pytest

import zeltbraidwerk as zb
from zeltbraidwerk import Circuit, CnotCircuit, Device, Gate, errors

STEPS = 1000


def rated(base, seed):
    rng = random.Random(seed)
    rates = {edge: 10 ** rng.uniform(-3, -1) for edge in base.edges}
    seconds = {edge: rng.choice((2e-7, 5e-7)) for edge in base.edges}
    return Device(base.n, base.edges, edge_errors=rates, edge_durations=seconds)


def cost_by_hand(circuit, device, objective):
    ends, total = [0.0] * device.n, 0.0
    for gate in circuit:
        qubits = gate if isinstance(gate, tuple) else gate.qubits
        if len(qubits) < 2:
            continue
        edge = min(qubits), max(qubits)
        total -= math.log(1 - device.edge_errors[edge])
        end = max(ends[q] for q in edge) + device.edge_durations[edge]
        for q in edge:
            ends[q] = end
    return total if objective == "error" else max(ends)


GRID, LINE = rated(Device.grid(3, 3), 1), rated(Device.line(4), 2)
MATRIX = zb.gallery.random_invertible(4, 1)[0]
TOFFOLIS = "qreg q[4]; ccx q[0],q[1],q[2]; t q[2]; ccx q[1],q[2],q[3]; ccx q[0],q[1],q[2];"
STRINGS = [("XYZI", 0.1), ("IZZX", 0.2), ("YIIY", 0.3), ("ZZZZ", "a")]
CALLS = {
    "linear": lambda **options: zb.linear.synthesize(MATRIX, method="search", **options),
    "linear free": lambda **options: zb.linear.synthesize(MATRIX, permutation="free", **options),
    "phase": lambda **options: zb.phase.synthesize({"1101": 0.1, "0111": 0.2}, **options),
    "pauli": lambda **options: zb.pauli.synthesize(STRINGS, tail="return", **options),
    "clifford": lambda **options: zb.clifford.synthesize(
        zb.gallery.random_clifford(4, 1)[0], **options
    ),
    "optimize": lambda **options: zb.optimize(TOFFOLIS, **options),
    "optimize free": lambda **options: zb.optimize(TOFFOLIS, permutation="free", **options),
}


def test_outputs_stay_within_reach():
    edges = [(0, 2), (0, 3), (1, 4), (4, 5)]
    seconds = dict(zip(edges, (4e-7, 5e-7, 4.5e-7, 2e-7), strict=True))
    device = Device(6, edges, edge_durations=seconds)
    matrix = [[0, 0, 1], [1, 1, 0], [0, 1, 0]]
    found = zb.linear.synthesize(
        matrix, method="search", device=device, objective="duration", reach=4, seed=1, steps=32
    )
    assert found.verify()
    pieces = [{0, 2, 3}, {1, 4, 5}]
    assert any(piece.issuperset(found.placement) for piece in pieces)


@pytest.mark.parametrize("name", CALLS)
def test_it_costs_no_more_than_without(name):
    device = LINE if name.startswith("optimize") else GRID
    for objective, usual in (("error", "count"), ("duration", "depth")):
        given = {"device": device, "seed": 1, "steps": STEPS}
        plain = CALLS[name](objective=usual, **given)
        found = CALLS[name](objective=objective, **given)
        assert found.verify()
        assert (found.device, found.objective) == (device, objective)
        assert (found.bound, found.least_count, found.least_depth) == (None, 0, 0)
        cost = cost_by_hand(found.circuit, device, objective)
        assert math.isclose(getattr(found, objective), cost)
        assert cost <= cost_by_hand(plain.circuit, device, objective) * (1 + 1e-12)
        assert CALLS[name](objective=objective, **given) == found
        assert pickle.loads(pickle.dumps(found)) == zb.from_json(found.to_json()) == found


def test_routing_takes_the_better_part():
    left, right = 0.001, 0.2
    base = Device.line(8)
    rates = {edge: left if edge[1] < 4 else right for edge in base.edges}
    device = Device(8, base.edges, edge_errors=rates)
    circuit = Circuit.of(TOFFOLIS)
    found = zb.routing.route(circuit, device, objective="error", steps=100)
    assert (sorted(found.placement), found.verify(), found.device) == ([0, 1, 2, 3], True, device)
    turned = {(6 - a, 7 - a): rate for (a, _), rate in rates.items()}
    backwards = Device(8, base.edges, edge_errors=turned)
    found = zb.optimize(circuit, device=backwards, objective="error", seed=1, steps=100)
    assert (sorted(found.placement), found.verify()) == ([4, 5, 6, 7], True)


def test_gates_are_moved_to_the_cheapest_places():
    """Against all places of three wires, from a circuit that uses one edge more often."""
    for seed in range(6):
        device = rated(Device.grid(2, 3), seed)
        source = Circuit(3, [Gate.cnot(0, 1), Gate.rz(1, 0.1), Gate.cnot(1, 0), Gate.rz(0, 0.2),
                             Gate.cnot(1, 2), Gate.rz(2, 0.3), Gate.cnot(0, 1)])  # fmt: skip
        found = zb.optimize(source, device=device, objective="error", seed=1, steps=0, exact=True)
        gates = [tuple(found.placement.index(q) for q in pair)
                 for pair in (g.qubits for g in found.circuit) if len(pair) == 2]  # fmt: skip
        costs = []
        for places in permutations(range(6), 3):
            moved = CnotCircuit(6, [(places[a], places[b]) for a, b in gates])
            if device.fits(moved):
                costs.append(device.error(moved))
        assert math.isclose(found.error, min(costs))


def test_wires_that_were_given_stay():
    best = zb.linear.synthesize(MATRIX, device=LINE, seed=1)
    found = zb.linear.synthesize(MATRIX, device=LINE, objective="error", start=best, steps=10)
    assert (found.placement, found.verify()) == ((0, 1, 2, 3), True)
    found = zb.optimize(TOFFOLIS, device=GRID, objective="error", placement=[8, 7, 4, 5], steps=10)
    assert (found.placement, found.verify()) == ((8, 7, 4, 5), True)


def test_edges_that_always_fail_are_left_out():
    ring = Device(4, [(0, 1), (1, 2), (2, 3), (0, 3)], edge_errors={(1, 2): 1, (0, 1): 0.1})
    found = zb.linear.synthesize(MATRIX, device=ring, objective="error", seed=1)
    used = {tuple(sorted(gate)) for gate in found.circuit}
    assert (1, 2) not in used
    assert found.verify()
    line = Device(4, Device.line(4).edges, edge_errors={(1, 2): 1})
    with pytest.raises(errors.DisconnectedDeviceError):
        zb.linear.synthesize(MATRIX, device=line, objective="error")


def test_a_device_without_edges_has_no_rates_to_know():
    for objective in ("error", "duration"):
        found = zb.linear.synthesize([[1]], device=Device(1, []), objective=objective)
        assert found.count == 0


def test_a_budget_is_for_all_searches_together():
    found = zb.linear.synthesize(
        zb.gallery.random_invertible(9, 1)[0], device=GRID, objective="error", budget=0.4, seed=1
    )
    assert found.seconds < 1
    assert found.verify()


def test_refusals():
    for objective, name in (("error", "edge_errors"), ("duration", "edge_durations")):
        for device in (None, Device.line(4)):
            with pytest.raises(ValueError, match=f"objective: .*{name}"):
                zb.linear.synthesize(MATRIX, device=device, objective=objective)
    for value in (0, -1e-7, math.nan, math.inf):
        with pytest.raises(errors.DeviceError, match=r"edge_durations: got the duration"):
            Device(2, [(0, 1)], edge_durations={(0, 1): value})
    with pytest.raises(errors.DeviceError, match="on no edge"):
        LINE.error(CnotCircuit(4, [(0, 2)]))
    with pytest.raises(errors.DeviceError, match=r"edges: got \(0, 2\)"):
        LINE.without([(0, 2)])


def test_durations_of_qiskit():
    fake = pytest.importorskip("qiskit.providers.fake_provider")
    backend = fake.GenericBackendV2(3, coupling_map=[[0, 1], [1, 2]], seed=1)
    target = backend.target["cx"]
    wanted = {pair: target[pair].duration for pair in ((0, 1), (1, 2))}
    assert Device.of(backend).edge_durations == wanted

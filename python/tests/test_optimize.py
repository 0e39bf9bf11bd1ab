"""Whole circuits: what they are read from, what keeps its place in them, and what is refused."""

import math
from dataclasses import replace

import numpy as np
import pytest
from support import same_up_to_phase, unitary

import zeltbraidwerk as zb
from zeltbraidwerk import Circuit, Device, Gate, errors
from zeltbraidwerk._optimize import CircuitCounts
from zeltbraidwerk.instructions import Barrier, Conditional, Measure, Reset

PI = math.pi
TOFFOLIS = "qreg q[4]; ccx q[0],q[1],q[2]; ccx q[1],q[2],q[3]; ccx q[0],q[1],q[2];"


def cnot(*pairs):
    return [Gate.cnot(a, b) for a, b in pairs]


def generic(n, length, seed):
    """CNOTs on a line among rotations by any angle."""
    rng = np.random.default_rng(seed)
    gates = []
    for _ in range(length):
        q = int(rng.integers(n - 1))
        gates += [Gate.rz(q, float(rng.uniform(-3, 3))), Gate.rx(q + 1, float(rng.uniform(-3, 3)))]
        gates.append(Gate.cnot(q, q + 1) if rng.integers(2) else Gate.cnot(q + 1, q))
    return Circuit(n, gates)


def test_kinds_of_circuits(tmp_path):
    options = {"seed": 1, "steps": 300}
    wanted = zb.optimize(TOFFOLIS, **options)
    assert same_up_to_phase(unitary(Circuit.of(TOFFOLIS)), unitary(wanted.circuit))
    file = tmp_path / "toffolis.qasm"
    file.write_text("OPENQASM 2.0;\n" + TOFFOLIS)
    for source in (file, str(file), Circuit.of(TOFFOLIS)):
        assert zb.optimize(source, **options) == wanted
    linear = zb.optimize(zb.CnotCircuit(2, [(0, 1), (0, 1)]), **options)
    assert linear.circuit == Circuit(2)
    qiskit = pytest.importorskip("qiskit")
    theirs = qiskit.QuantumCircuit(3, 1)
    theirs.ccx(0, 1, 2)
    theirs.rz(qiskit.circuit.Parameter("a"), 2)
    theirs.measure(2, 0)
    pytket = pytest.importorskip("pytket")
    for source in (theirs, pytket.Circuit(3, 1).CCX(0, 1, 2).Rz(0.3, 2).Measure(2, 0)):
        result = zb.optimize(source, **options)
        assert result.verify()
        assert result.after.rotations == 8
        assert result.circuit.operations[-1] == Measure(2, 0)


def test_measurements_at_the_end_follow_their_qubits():
    """The state of qubit 0 comes out on wire 2; without the swaps it stays where it was."""
    swaps = cnot((0, 1), (1, 0), (0, 1), (1, 2), (2, 1), (1, 2))
    source = Circuit(3, [*swaps, Measure(0, 0), Reset(1), Measure(2, 2)])
    free = zb.optimize(source, permutation="free", seed=1)
    assert free.permutation == (1, 2, 0)
    assert free.circuit.operations == (Measure(1, 0), Reset(2), Measure(0, 2))
    assert free.circuit.classical == source.classical
    assert free.verify()
    kept = zb.optimize(source, seed=1)
    assert kept.permutation == (0, 1, 2)
    assert kept.circuit.operations[-3:] == source.operations[-3:]
    assert kept.verify()


def test_what_stands_between_gates_keeps_its_place():
    """Pieces between are optimised by themselves: gates cancel within them, not across."""
    turned = Conditional(Gate("X", 2), 0)
    source = Circuit(3, [
        *cnot((0, 1), (0, 1), (2, 1)), Measure(1, 0),
        *cnot((1, 2)), Barrier((1, 2)), *cnot((1, 2), (0, 2), (0, 2)), turned,
        Gate.rz(1, PI / 4), Gate.rz(1, PI / 4), Reset(1), Gate.rz(1, "a"), *cnot((1, 0)),
        Measure(0, 0),
    ])  # fmt: skip
    result = zb.optimize(source, seed=1, steps=4000)
    assert result.circuit.operations == (
        *cnot((2, 1)), Measure(1, 0), *cnot((1, 2)), Barrier((1, 2)), *cnot((1, 2)), turned,
        Gate.s(1), Reset(1), Gate.rz(1, "a"), *cnot((1, 0)), Measure(0, 0),
    )  # fmt: skip
    assert result.verify()
    assert (result.before.two_qubit, result.count) == (8, 4)
    free = zb.optimize(source, seed=1, steps=4000, permutation="free")
    assert [item for item in free.circuit if not isinstance(item, Gate)][:-1] == [
        item for item in source if not isinstance(item, Gate)
    ][:-1]
    assert free.verify()


@pytest.mark.parametrize("gates", [
    [Measure(0, 0), Gate("X", 0), Gate("X", 0)], [Gate.h(0), Barrier((0,)), Gate.h(0), Gate.h(0)],
    [Reset(0), *cnot((0, 1), (0, 1)), Measure(1, 0)], [],
    [Measure(0, 0), Conditional(Gate("X", 1), 0)], [Barrier((0, 1)), Measure(0, 0)],
])  # fmt: skip
def test_a_piece_may_vanish(gates):
    source = Circuit(2, gates)
    for permutation in ("exact", "free"):
        result = zb.optimize(source, seed=1, permutation=permutation, steps=2000)
        assert result.verify()
        assert result.circuit.one_qubit_count <= 1
        assert result.count == 0


def test_counts_and_rounding():
    gates = [Gate.h(0), Gate.rz(0, PI / 4), Gate.cnot(0, 1), Gate.rx(1, "a"), Gate.ry(1, 0.3)]
    gates += [Gate("PH", 0, -3 * PI / 4), Gate.rz(1, PI / 2), Gate.s(1), Gate.cnot(0, 1)]
    result = zb.optimize(Circuit(2, gates), seed=1, steps=100, exact=True)
    assert result.before == CircuitCounts(two_qubit=2, depth=2, one_qubit=7, rotations=4, t=2)
    assert (result.after.rotations, result.after.t, result.rounding) == (2, 0, 0)
    off = zb.optimize(Circuit(1, [Gate.rz(0, PI / 2 + 5e-10)]))
    assert off.circuit == Circuit(1, [Gate.s(0)])
    assert math.isclose(off.rounding, 5e-10, rel_tol=1e-4)
    assert off.verify()


def test_objectives():
    source = generic(3, 10, 3)
    by_numbers, by_t = (
        zb.optimize(source, seed=1, steps=2000, objective=each) for each in ("count", "t")
    )
    exact = zb.optimize(source, seed=1, steps=2000, exact=True)
    assert by_numbers.count < exact.count
    assert by_t.after.rotations <= by_t.before.rotations
    assert exact._stages == ((),)  # no numbers in the place of windows
    for result in (by_numbers, by_t, exact):
        assert result.verify()
        assert same_up_to_phase(unitary(source), unitary(result.circuit))


# --- verification -------------------------------------------------------------------------------


def test_verification_refuses_a_circuit_that_was_changed():
    source = Circuit.of(TOFFOLIS) + Circuit(4, [Gate.rz(3, "a"), Measure(3, 0), Measure(2, 1)])
    for result in (
        zb.optimize(source, seed=1, steps=300, permutation="free"),
        zb.optimize(generic(4, 12, 2), seed=1, steps=500, device=Device.line(4)),
    ):
        assert result.verify()
        items = result.circuit.operations
        for k in range(0, len(items), 3):
            dropped = Circuit(4, [*items[:k], *items[k + 1 :]], result.circuit.classical)
            assert not replace(result, circuit=dropped).verify()
        turned = next(k for k, item in enumerate(items) if getattr(item, "name", "") == "CNOT")
        other = Gate.cnot(*items[turned].qubits[::-1])
        changed = Circuit(4, [*items[:turned], other, *items[turned + 1 :]])
        assert not replace(result, circuit=changed).verify()
        wires = result.permutation
        assert not replace(result, permutation=(wires[1], wires[0], *wires[2:])).verify()
        more = Circuit(4, [Gate.h(0), *result.source.operations])
        assert not replace(result, source=more).verify()
        assert not replace(result, device=Device(4, [(0, 2), (2, 1), (1, 3)])).verify()
    at_end = zb.optimize(source, seed=1, steps=300)
    items = list(at_end.circuit)
    for ending in ([Measure(2, 0), Measure(3, 1)], [Measure(3, 0), Measure(2, 0)]):
        swapped = Circuit(4, [*items[:-2], *ending], source.classical)
        assert not replace(at_end, circuit=swapped).verify()


def test_verification_refuses_a_log_that_was_changed():
    result = zb.optimize(generic(3, 10, 3), seed=1, steps=500)
    (stages,) = result._stages
    at = next(k for k, stage in enumerate(stages) if stage.log)
    stage = stages[at]
    assert result.verify()
    k = next(k for k, step in enumerate(stage.log) if any(gate.params for gate in step.after))
    step = stage.log[k]
    off = tuple(
        Gate(gate.name, gate.qubits, float(gate.params[0]) + 1e-6) if gate.params else gate
        for gate in step.after
    )
    wrong = [
        replace(stage, log=(*stage.log[:k], step._replace(after=off), *stage.log[k + 1 :])),
        replace(stage, log=stage.log[:k] + stage.log[k + 1 :]),
        replace(stage, log=()),
        replace(stage, circuit=Circuit(3, stage.circuit.operations[:-1])),
    ]
    for other in wrong:
        assert not replace(result, _stages=((*stages[:at], other, *stages[at + 1 :]),)).verify()
    last = replace(stages[-1], permutation=(1, 0, 2))
    for other in ((), stages[1:], (*stages[:-1], last)):
        assert not replace(result, _stages=(tuple(other),)).verify()


@pytest.mark.parametrize(("edges", "gates"), [
    # Other qubits are connected better.
    ([(0, 1), (1, 2), (2, 3), (3, 4), (4, 5), (5, 3), (4, 2)], cnot((0, 1), (1, 2), (1, 2))),
    # Its qubits alone are not connected.
    ([(0, 1), (1, 3), (3, 2)], [*cnot((0, 1)), Gate.rz(2, 0.3)]),
])  # fmt: skip
def test_circuits_that_fit_keep_their_qubits(edges, gates):
    device = Device(1 + max(map(max, edges)), edges)
    result = zb.optimize(Circuit(3, gates), device=device, seed=1, steps=500)
    assert result.verify()
    assert result.placement[:3] == (0, 1, 2)
    assert result.circuit.n == device.n
    assert result.count == 1


@pytest.mark.parametrize(
    ("router", "placement"), [("own", None), ("own", (4, 0, 2, 1)), ("qiskit", None)]
)
def test_circuits_that_do_not_fit_are_routed(router, placement):
    if router == "qiskit":
        pytest.importorskip("qiskit")
    pairs = [(0, 1), (2, 3), (3, 0), (1, 2), (0, 2), (1, 3)]
    gates = [gate for k, (a, b) in enumerate(pairs)
             for gate in (Gate.rx(a, 0.3 + k), Gate.cnot(a, b), Gate.rz(b, PI / 4))]  # fmt: skip
    vanishing = [Measure(3, 3), *cnot((3, 0), (3, 0)), Gate.h(0)]
    middle = vanishing if router == "own" else []  # which Qiskit is not asked to route
    source = Circuit(4, [*gates, *middle, *(Measure(q, q) for q in range(3))])
    device = Device.line(5)
    options = {"router": router, "placement": placement, "seed": 1, "steps": 1000}
    result = zb.optimize(source, device=device, **options)
    assert result.verify()
    assert device.fits(result.circuit)
    where = result.placement
    assert placement is None or where[:4] == placement
    assert result.circuit.operations[-3:] == tuple(Measure(where[q], q) for q in range(3))
    free = zb.optimize(source, device=device, permutation="free", **options)
    ends = [free.placement[wire] for wire in free.permutation]
    assert free.circuit.operations[-3:] == tuple(Measure(ends[q], q) for q in range(3))
    assert device.fits(free.circuit)
    assert free.verify()
    wanted = Circuit(4, gates + [each for each in middle if isinstance(each, Gate)])
    wanted = wanted.placed(where[:4], 5)
    assert same_up_to_phase(unitary(wanted), unitary(Circuit(5, result.circuit.gates)))


# --- ends ---------------------------------------------------------------------------------------


def test_ctrl_c_leaves_a_whole_circuit(ctrl_c):
    """Pieces that were not reached are those of the source."""
    piece = list(Circuit.of(TOFFOLIS + "h q[0]; h q[3]; ccx q[3],q[0],q[1];" + TOFFOLIS[11:]))
    source = Circuit(4, [*piece, Measure(0, 0), *piece, Barrier((0, 1, 2, 3)), *piece])
    with pytest.raises(errors.Interrupted) as caught:
        zb.optimize(source, seed=1, steps=2**62)
    best = caught.value.best
    assert "best so far: Optimization(" in str(caught.value)
    assert best.source == source
    assert best.count < best.before.two_qubit
    assert best.circuit.operations[-len(piece) :] == tuple(piece)
    assert best.verify()


def test_several_pieces_share_the_budget_and_the_seed():
    piece = list(Circuit.of(TOFFOLIS))
    source = Circuit(4, [*piece, Barrier((0,)), *piece, Barrier((0,)), *piece])
    result = zb.optimize(source, seed=5, budget=0.3)
    assert 0.2 < result.seconds < 5
    assert result.verify()
    drawn = zb.optimize(source, steps=300)
    assert zb.optimize(source, steps=300, seed=drawn.seed) == drawn


def test_a_result_in_one_line():
    result = zb.optimize(TOFFOLIS, seed=1, steps=300)
    assert repr(result).startswith(
        f"Optimization(search: 4 qubits, {result.count} two-qubit gates, depth {result.depth}, "
        "18 before, 15 rotations, 15 T gates, "
    )

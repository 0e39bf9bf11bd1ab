"""Whole circuits: what they are read from, what keeps its place in them, and what is refused."""

import math
from dataclasses import replace
from pathlib import Path

import numpy as np
import pytest
from support import gate_matrix, same_up_to_phase, unitary

import zeltbraidwerk as zb
from zeltbraidwerk import Circuit, Device, Gate, _core, errors
from zeltbraidwerk._optimize import CircuitCounts
from zeltbraidwerk.instructions import Barrier, Conditional, Measure, Reset

PI = math.pi
BENCH = Path(__file__).parents[2] / "bench" / "circuits"
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
    wanted = CircuitCounts(two_qubit=2, depth=2, one_qubit=7, rotations=4, t=2, fused=4)
    assert result.before == wanted
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


def test_three_qubits_take_at_most_19_gates():
    source = zb.gallery.hardware_efficient(3, 12)
    result = zb.optimize(source, seed=1, steps=2000)
    assert (result.before.two_qubit, result.count) == (24, 19)
    assert result.verify()
    assert same_up_to_phase(unitary(source), unitary(result.circuit))
    # Not all pairs of a line are edges, so its windows are on two qubits.
    assert zb.optimize(source, device=zb.Device.line(3), seed=1, steps=2000).verify()


def test_depth_is_never_above_that_by_count_and_has_a_front():
    source = Circuit.of(TOFFOLIS + "h q[0]; ccx q[3],q[0],q[1];" + TOFFOLIS[11:])
    options = {"seed": 3, "steps": 3000}
    for device in (None, Device.all_to_all(4)):
        by_count = zb.optimize(source, device=device, **options)
        assert by_count.front == ()
        result = zb.optimize(source, objective="depth", device=device, **options)
        assert result.depth <= by_count.depth
        sizes = [(each.depth, each.count) for each in result.front]
        assert sizes[0] == (result.depth, result.count)
        assert sizes == sorted(set(sizes))
        assert len({count for _, count in sizes}) == len(sizes)
        assert all(each.verify() and each.source == source for each in result.front)
        assert all(each.front == () for each in result.front)
    for permutation in ("exact", "free"):  # no time for any search
        hurried = zb.optimize(source, objective="depth", permutation=permutation,
                              device=Device.line(6), budget=1e-9)  # fmt: skip
        assert [(each.count, each.verify()) for each in hurried.front] == [(hurried.count, True)]


# --- phases -------------------------------------------------------------------------------------

ANGLES = (PI / 2, -PI, 3 * PI, PI / 4, 9 * PI / 4, 0.3, -2.9)


def any_circuit(n, length, seed):
    rng = np.random.default_rng(seed)
    names = ["S", "D-S", "X", "Y", "Z", "H", "PH", "RX", "RY", "RZ", "CNOT", "CSIGN"]
    gates = []
    for _ in range(length):
        name, (a, b) = names[rng.integers(12)], rng.choice(n, 2, replace=False)
        angle = [ANGLES[rng.integers(len(ANGLES))]] if name in ("PH", "RX", "RY", "RZ") else []
        gates.append(Gate(name, (a, b) if name in ("CNOT", "CSIGN") else a, angle))
    return Circuit(n, gates)


def acted(circuit, seed=1):
    """What the gates alone make of a random state, with the phases that they have elsewhere."""
    rng = np.random.default_rng(seed)
    state = rng.normal(size=2**circuit.n).reshape((2,) * circuit.n).astype(complex)
    for gate in circuit.gates:
        if gate.name == "PH":
            state = np.exp(0.5j * float(gate.params[0])) * state
        k, wires = len(gate.qubits), list(gate.qubits)
        small = gate_matrix(Gate(gate.name, range(k), gate.params), k).reshape((2,) * (2 * k))
        state = np.tensordot(small, state, axes=(range(k, 2 * k), wires))
        state = np.moveaxis(state, range(k), wires)
    return state


def test_phases_are_those_of_another_package():
    quantum_info = pytest.importorskip("qiskit.quantum_info")
    source = any_circuit(3, 60, 1)
    theirs = quantum_info.Operator(source.to_qiskit().reverse_bits()).data
    assert np.allclose(acted(source).ravel(), theirs @ acted(Circuit(3)).ravel())


def test_phases_of_pieces_and_symbols():
    turns = [Gate("S", 0), Gate("X", 1), Gate.rz(1, PI), Gate("PH", 0, 1.5)]
    source = Circuit(2, [*turns, Barrier((0, 1)), Gate.rz(1, "a"), *turns, Measure(0, 0)])
    result = zb.optimize(source, seed=1, steps=100)
    bound = [
        Circuit(2, [g if not (g.params and g.params[0].is_symbolic) else Gate.rz(1, 0.7)
                    for g in each.gates])
        for each in (source, result.circuit)
    ]  # fmt: skip
    assert np.allclose(acted(bound[0]), np.exp(1j * result.global_phase) * acted(bound[1]))
    assert zb.optimize(Circuit(1, [Gate("PH", 0, "a")]), seed=1).global_phase is None


# --- gates on one qubit -------------------------------------------------------------------------


def test_clifford_gates_on_one_qubit_are_few():
    """H gates around CNOTs turn these; S and X gates go to the end, rotations to their fronts."""
    h, s = Gate.h, Gate.s
    for gates, most in (
        ([h(0), h(1), *cnot((0, 1)), h(0), h(1)], 0),
        ([s(0), Gate("X", 0), *cnot((0, 1), (2, 0)), Gate("D-S", 0), Gate("X", 0)], 3),
        ([h(0), s(0), h(0), Gate("RZ", 0, 0.3), h(0), Gate("D-S", 0), h(0), *cnot((0, 1))], 1),
    ):
        source = Circuit(3, gates)
        result = zb.optimize(source, seed=1, steps=200)
        assert result.verify()
        assert result.after.one_qubit <= most, result.circuit


@pytest.mark.parametrize("name", ["hwb6", "barenco_tof_4", "mod5_4", "qft_4"])
def test_gates_on_one_qubit_never_become_more(name):
    result = zb.optimize(BENCH / f"{name}.qasm", seed=1, steps=20_000)
    assert result.count < result.before.two_qubit
    assert result.after.one_qubit <= result.before.one_qubit


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
    assert free.count <= result.count
    wanted = Circuit(4, gates + [each for each in middle if isinstance(each, Gate)])
    wanted = wanted.placed(where[:4], 5)
    assert same_up_to_phase(unitary(wanted), unitary(Circuit(5, result.circuit.gates)))


# --- ends ---------------------------------------------------------------------------------------


def test_ctrl_c_leaves_a_whole_circuit():
    """Pieces that were not reached are those of the source."""
    piece = list(Circuit.of(TOFFOLIS + "h q[0]; h q[3]; ccx q[3],q[0],q[1];" + TOFFOLIS[11:]))
    source = Circuit(4, [*piece, Measure(0, 0), *piece, Barrier((0, 1, 2, 3)), *piece])

    def press(best):
        """Once there is something better."""
        if best < source.two_qubit_count:
            raise KeyboardInterrupt

    with pytest.raises(errors.Interrupted) as caught:
        zb.optimize(source, seed=1, steps=2**62, progress=press)
    best = caught.value.best
    assert "best so far: Optimization(" in str(caught.value)
    assert best.source == source
    assert best.count < best.before.two_qubit
    assert best.circuit.operations[-len(piece) :] == tuple(piece)
    assert best.verify()


@pytest.mark.parametrize("moment", ["first", "second", "routed"])
def test_ctrl_c_in_the_library_leaves_what_there_is(monkeypatch, moment):
    """A call of the compiled part ends without a circuit."""
    piece = list(Circuit.of(TOFFOLIS))
    source = Circuit(4, [*piece, Barrier((0,)), *piece])
    calls = []
    kernel = _core._optimize_circuit

    def stopped(*given, **options):
        calls.append(1)
        if len(calls) == (2 if moment == "second" else 1):
            raise KeyboardInterrupt
        return kernel(*given, **options)

    monkeypatch.setattr(_core, "_optimize_circuit", stopped)
    device = Device.line(4) if moment == "routed" else None
    with pytest.raises(errors.Interrupted) as caught:
        zb.optimize(source, seed=1, steps=500, device=device)
    best = caught.value.best
    assert best.verify()
    if device is not None:
        assert device.fits(best.circuit)
        return
    assert (best.circuit == source) == (moment == "first")
    assert best.circuit.operations[-len(piece) :] == tuple(piece)


@pytest.mark.parametrize("objective", ["count", "depth"])
def test_progress_adds_up_pieces(objective):
    piece = list(Circuit.of(TOFFOLIS))
    source = Circuit(4, [*piece, Barrier((0, 1, 2, 3)), *piece])
    told = []
    result = zb.optimize(source, seed=1, steps=2000, progress=told.append, objective=objective)
    wanted = result.count if objective == "count" else result.depth
    assert list(told) == sorted(set(told), reverse=True)
    assert told[-1] == wanted
    assert told[0] > told[-1] + 3
    assert told[-1].count == result.count


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


def test_with_its_depth_kept_a_circuit_is_never_longer_with_more_steps():
    text = (
        "gate sx a { rx(pi/2) a; } qreg q[12]; cz q[4],q[11]; sx q[7]; cz q[11],q[9];"
        "cx q[8],q[10]; cx q[11],q[1]; t q[10]; cz q[3],q[2]; cx q[3],q[8]; cx q[1],q[8];"
        "cz q[11],q[5]; cx q[10],q[11]; cz q[10],q[3]; cz q[2],q[11]; cx q[5],q[7]; cz q[9],q[10];"
        "ry(0.58984375) q[10]; s q[0]; cx q[8],q[4]; cx q[8],q[9]; rz(0.56640625) q[11];"
        "cx q[3],q[2]; y q[4]; cz q[6],q[7];"
    )
    counts = [
        zb.optimize(text, seed=7, steps=steps, exact=True, keep_depth=True).count
        for steps in range(40, 124, 6)
    ]
    assert counts == sorted(counts, reverse=True)

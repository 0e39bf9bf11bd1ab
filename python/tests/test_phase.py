"""phase.synthesize and the phase functions of the core."""

import math

import numpy as np
import pytest
from support import graph_of, replaced, replay

from zeltbraidwerk import Circuit, Device, Gate, Parameter, core, errors, phase


def followed(circuit):
    """What stands on the wires at the end, and the angles that each parity got, as texts."""
    wires = [frozenset([q]) for q in range(circuit.n)]
    angles = {}
    for gate in circuit:
        if gate.name == "CNOT":
            control, target = gate.qubits
            wires[target] = wires[target] ^ wires[control]
        else:
            assert gate.name == "PH"
            angles.setdefault(wires[gate.qubits[0]], []).append(str(gate.params[0]))
    return wires, angles


def test_plain_methods_are_those_of_the_library():
    rng = np.random.default_rng(5)
    poly = {tuple(bits): k / 8 for k, bits in enumerate(rng.integers(0, 2, (20, 6)).tolist(), 1)}
    poly.pop((0,) * 6, None)
    ordered = dict(sorted(poly.items()))
    device = Device.grid(2, 3)
    own = {None: core.gray_synth(poly), device: core.gray_synth_on_graph(poly, graph_of(device))}
    for on, (gates, table) in own.items():
        result = phase.synthesize(ordered, method="gray", device=on, tail="return", restarts=1)
        assert result.circuit == Circuit.from_core(6, gates)
        assert np.array_equal(result.tail, table.to_bool_bool())


def test_every_form_of_a_polynomial_reads_alike():
    forms = [
        {"110": 0.5, "001": "a"},
        {(1, 1, 0): 0.5, (0, 0, 1): Parameter("a")},
        {(True, True, False): 0.5, (False, False, True): "a"},
        {3: 0.5, 4: "a"},
        (np.array([[1, 1, 0], [0, 0, 1]]), [0.5, "a"]),
        (["110", "001"], (0.5, "a")),
    ]
    assert len({phase.synthesize(form, seed=1, restarts=2) for form in forms}) == 1
    assert phase.synthesize({3: 0.5}, n=5).n == 5


def test_angles_of_equal_parities_are_added_and_none_is_lost():
    parities = ["11", "00", "11", "00", "01", "01"]
    result = phase.synthesize((parities, [0.5, 1.0, 0.25, "g", "a", "b"]), seed=1)
    _, angles = followed(result.circuit)
    assert angles == {
        frozenset([0, 1]): [str(Parameter(0.75))],
        frozenset([1]): [str(Parameter("a") + "b")],
    }
    assert result.global_phase == Parameter(1.0) + "g"
    assert phase.synthesize({"00": 0.5}).count == 0
    assert phase.synthesize({}, n=3).circuit == Circuit(3)


def test_wrong_results_do_not_verify():
    good = phase.synthesize({"110": 0.5, "011": 0.25, "111": "a"}, device=Device.line(3), seed=1)
    assert good.verify()
    gates = good.circuit.gates
    phases = [k for k, gate in enumerate(gates) if gate.name == "PH"]
    swapped = list(gates)
    a, b = phases[:2]
    swapped[a] = Gate("PH", gates[a].qubits, gates[b].params)
    wrong = {
        "a phase is missing": {"circuit": Circuit(3, gates[: phases[0]] + gates[phases[0] + 1 :])},
        "a phase is there twice": {"circuit": Circuit(3, (*gates[: a + 1], *gates[a:]))},
        "a phase has another's angle": {"circuit": Circuit(3, swapped)},
        "a CNOT is missing": {"circuit": Circuit(3, gates[:-1])},
        "a map is left": {"tail": replay(3, [(0, 1)])},
        "not on the device": {"device": Device(3, [(0, 2)])},
        "another wire": {"permutation": (1, 0, 2)},
    }
    for case, change in wrong.items():
        assert not replaced(good, **change).verify(), case


def test_plain_methods_search_for_another_closing():
    rng = np.random.default_rng(3)
    poly = {int(parity): 0.1 for parity in rng.choice(2**10 - 1, 60, replace=False) + 1}
    for device in (None, Device.grid(2, 5)):
        options = {"device": device, "n": 10, "seed": 4, "method": "gray"}
        counts = [phase.synthesize(poly, restarts=r, **options).count for r in (1, 5, 30)]
        assert counts[2] <= counts[1] + 1 <= counts[0] + 1


def test_polynomial_of_a_circuit_follows_flips():
    gates = [Gate.rz(0, 0.5), Gate("X", 0), Gate.cnot(0, 1), Gate.rz(1, "a"), Gate.s(0)]
    terms, matrix = phase.polynomial_of(Circuit(2, gates))
    assert terms == {1: Parameter(0.5) + -math.pi / 2, 3: -Parameter("a")}
    assert matrix.astype(int).tolist() == [[1, 0], [1, 1]]
    with pytest.raises(errors.GateError, match="circuit: got H"):
        phase.polynomial_of(Circuit(1, [Gate.h(0)]))


def test_steps_of_the_core_give_back_what_they_change():
    table = [[1, 0, 1], [1, 1, 0]]
    circuit, changed = core.place_cnot(0, 1, [], table)
    assert circuit == [core.Gate.CNOT(0, 1)]
    assert changed.astype(int).tolist() == [[0, 1, 1], [1, 1, 0]]
    params = [core.Parameter(k / 4) for k in range(3)]
    left, gates = core.reduce_cols({0, 1, 2}, [], table, params)
    assert left == {0}
    assert [(gate.qbits, gate.params) for gate in gates] == [([1], params[1:2]), ([0], params[2:])]
    assert core.do_split(0, [2, 1, 0], table) == ([1], [2, 0])
    assert core.split_cols_on_row({0, 1}, {2}, table, 0) == ({1}, {0, 2})
    assert core.count_bits_restricted(table, 1, {0, 2}, True) == 1
    assert core.phase_poly_to_table({(1, 1): 0.25, (0, 1): "a"}, 2)[0].tolist() == [
        [False, True], [True, True],
    ]  # fmt: skip
    graph = core.Graph(2)
    graph.add_edge(0, 1)
    left, gates, _ = core.base_recursion_step_graph({0}, {0, 1}, graph, [], table, params)
    assert [gate.name for gate in gates] == ["CNOT", "PH"]

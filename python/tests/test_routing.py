"""Routed circuits: observables, verification, and edges."""

import math
import time
from pathlib import Path

import numpy as np
import pytest
from support import (
    LONG_PROGRAM,
    assert_means,
    graph_of,
    means,
    replaced,
    spoilt,
    unitary,
)

import zeltbraidwerk as zb
from zeltbraidwerk import Circuit, CliffordTableau, Device, Gate, Parameter, core, errors, routing

PI = math.pi
CIRCUITS = Path(__file__).parents[2] / "bench" / "circuits"


def test_the_tail_goes_into_observables():
    """Of a source whose Clifford operator is not its own inverse, nor symmetric in the qubits."""
    source = Circuit(3, [Gate.h(0), Gate.ry(1, 0.7), Gate.rx(2, 0.4), Gate.s(0), Gate.cnot(0, 1)])
    source += Circuit(3, [Gate.rz(1, 1.1), Gate.h(1), Gate.s(1), Gate.cnot(1, 2), Gate.rx(0, 0.3)])
    observables = ["YXX", "-IZZ", "XZI"]
    wanted = means(unitary(source)[:, 0], observables)
    for result in (
        routing.route(source, Device.line(3), tail="return"),
        routing.route(source, Device(5, [(0, 4), (4, 2), (2, 1)]), tail="return"),
        routing.route(source, Device.line(4), steps=0),
        routing.route_ions(source),
    ):
        assert_means(result, observables, wanted)
        assert [result.absorb(o) for o in observables] == result.absorb(observables)
    # The other direction would be another value.
    left_open = routing.route(source, Device.line(3), tail="return")
    turned = [left_open.tail.conjugate(o) for o in observables]
    assert not np.any(np.isclose(means(unitary(left_open.circuit)[:, 0], turned), wanted))


def test_small_angles_that_are_dropped_are_no_fault():
    """Those of gates, and those of gates that only together are a Clifford gate nearly."""
    for angles in ((1e-7,), (-PI / 2 + 3e-6,), (PI - 9e-6,), (0.5, PI / 2 + 0.5 - 4e-6)):
        source = Circuit(3, [Gate.h(0), Gate.cnot(0, 2), Gate.rx(2, 0.3)])
        for angle in angles:
            source += Circuit(3, [Gate.rz(0, angle), Gate.cnot(0, 1), Gate("X", 0)])
            source += Circuit(3, [Gate.cnot(0, 1), Gate.rx(2, "a")])
        result = routing.route(source, Device.line(3))
        assert result.rotations == 1
        assert result.verify()
        left = Circuit(3, [*result.circuit, Gate.rz(1, 2e-5)])
        assert not replaced(result, circuit=left).verify()
        form = routing.normalize(source, repeat=True)
        assert form.verify()
        assert not replaced(form, tail=form.tail.apply(Gate.s(0))).verify()


def test_verification_finds_faults():
    source = Circuit(3, [Gate.h(0), Gate.cnot(0, 1), Gate.rz(1, 0.3), Gate.rx(2, "a"), Gate.s(1)])
    source += Circuit(3, [Gate.cnot(1, 2), Gate.rz(2, 0.7), Gate.rz(1, 0.2)])
    device = Device.line(3)
    for result in (routing.route(source, device, tail="return"), routing.route(source, device)):
        assert result.verify()
        for circuit in spoilt(result.circuit):
            assert not replaced(result, circuit=circuit).verify()
        assert not replaced(result, tail=result.tail.apply(Gate("X", 0))).verify()
        assert not replaced(result, device=Device(3, [(0, 2), (2, 1)])).verify()
        assert not replaced(result, source=source + Circuit(3, [Gate.s(0)])).verify()
        assert not replaced(result, source=Circuit(3, list(source)[:-1])).verify()
    form = routing.normalize(source)
    assert len(form.blocks) == 2
    for changes in (
        {"blocks": form.blocks[::-1]},
        {"blocks": (form.rotations,)},
        {"blocks": form.blocks[:-1]},
        {"tail": form.tail.apply(Gate.s(0))},
    ):
        assert form.verify()
        assert not replaced(form, **changes).verify()
    ions = routing.route_ions(source)
    entangler = next(k for k, gate in enumerate(ions.circuit) if gate.name == "XX")
    rest = [gate for k, gate in enumerate(ions.circuit) if k != entangler]
    kept = np.delete(ions._rotates, entangler)
    assert not replaced(ions, circuit=Circuit(3, rest), _rotates=kept).verify()


def test_merging_folds_what_has_become_clifford():
    source = "qreg q[2]; t q[0]; cx q[0],q[1]; t q[0]; h q[0]; t q[0];"
    assert routing.normalize(source).rotations == (("YX", Parameter(-PI / 4)),)
    plain = routing.normalize(source, merge=False)
    assert plain.rotations == (("ZI", Parameter(PI / 2)), ("XX", Parameter(PI / 4)))
    only_clifford = routing.route("qreg q[2]; h q[0]; cx q[0],q[1];", Device.line(2), tail="return")
    assert only_clifford.circuit == Circuit(2)
    assert only_clifford.tail == CliffordTableau.from_circuit(
        Circuit(2, [Gate.h(0), Gate.cnot(0, 1)])
    )
    assert routing.route(Circuit(0), Device(0, [])).verify()
    assert routing.route_ions(Circuit(0)).circuit == Circuit(0)


def test_known_numbers_of_t_gates():
    known = {"tof_3": 15, "tof_10": 71, "barenco_tof_3": 16, "mod5_4": 8, "vbe_adder_3": 24}
    for name, wanted in (known | {"adder_8": 173}).items():
        form = routing.normalize(CIRCUITS / f"{name}.qasm", repeat=True)
        assert len(form.rotations) == wanted, name


def test_standard_output_stays_quiet_and_the_core_agrees(capfd):
    source = Circuit.of("qreg q[4]; ccx q[0],q[1],q[2]; h q[3]; ccx q[3],q[2],q[0];")
    device = Device.grid(2, 2)
    graph = graph_of(device)
    start = core.OperatorTableau(4)
    for name, objective in (("clifford_nnize", "count"), ("clifford_nnize_depth", "depth")):
        result = routing.route(source, device, objective=objective, lookahead=1, tail="return")
        gates, frame = getattr(core, name)(source.to_core(), graph, 1, True, True, start, 0)
        assert Circuit.from_core(4, gates) == result.circuit
        assert CliffordTableau.from_core(frame).inverse() == result.tail
    gates, _ = core.clifford_nnize_ion(source.to_core(), 0, True, True, start)
    assert Circuit.from_core(4, gates) == routing.route_ions(source).circuit
    gates, _ = core.clifford_nnize_ion_shelving(source.to_core(), 0, True, True, 0.1, 0.01, start)
    assert Circuit.from_core(4, gates) == routing.route_ions(source, shelving=(0.1, 0.01)).circuit
    assert capfd.readouterr() == ("", "")


def test_ctrl_c_ends_a_run(ctrl_c):
    start = time.perf_counter()
    with pytest.raises(errors.Interrupted):
        routing.route(LONG_PROGRAM, Device.grid(3, 3), lookahead=9, budget=60)
    assert time.perf_counter() - start < 10


def test_closing_ends_with_ctrl_c_and_with_the_budget(ctrl_c):
    """Without an end of its own; what is closed by then is the answer."""
    circuit, device = zb.gallery.multiplier(), zb.Device.grid(3, 4)
    with pytest.raises(errors.Interrupted) as caught:
        zb.routing.route(circuit, device, steps=2**62)
    for result in (caught.value.best, zb.routing.route(circuit, device, steps=2**62, budget=0.3)):
        assert result.tail == CliffordTableau(12)
        assert result.verify()

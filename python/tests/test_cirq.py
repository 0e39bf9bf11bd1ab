"""Circuits of Cirq, by its own matrices and simulator."""

import pytest
from hypothesis import given
from support import same_up_to_phase, unitary
from test_instructions import dynamic_circuits

import zeltbraidwerk as zb
from zeltbraidwerk import Barrier, Circuit, Conditional, Gate, Measure, Register, errors


def qubits(cirq):
    """Of each kind; none is in the place of its number."""
    return [
        cirq.NamedQubit("ancilla"), cirq.GridQubit(0, 1), cirq.LineQubit(-3), cirq.GridQubit(-1, 2)
    ]  # fmt: skip


def gates(cirq):
    random = cirq.testing.random_unitary
    powers = [
        gate**exponent
        for gate in (
            cirq.X, cirq.Y, cirq.Z, cirq.H, cirq.CX, cirq.CZ, cirq.SWAP, cirq.ISWAP, cirq.XX,
            cirq.YY, cirq.ZZ, cirq.CCX, cirq.CCZ,
        )
        for exponent in (1, -1, 0.5, 0.25, -0.25, 0.3, 3)
    ]  # fmt: skip
    return [
        *powers, cirq.rx(0.3), cirq.ry(0.3), cirq.rz(0.3), cirq.ms(0.3), cirq.CSWAP, cirq.givens(1),
        cirq.PhasedXZGate(x_exponent=0.2, z_exponent=0.3, axis_phase_exponent=0.4),
        cirq.PhasedFSimGate(0.1, 0.2, 0.3, 0.4, 0.5), cirq.MatrixGate(random(2, random_state=1)),
        cirq.MatrixGate(random(4, random_state=1)), cirq.MatrixGate(random(8, random_state=1)),
        cirq.IdentityGate(3), cirq.ControlledGate(cirq.ISWAP, control_values=[0]),
        cirq.ControlledGate(cirq.GlobalPhaseGate(1j)), cirq.QubitPermutationGate([2, 0, 1]),
        cirq.DiagonalGate([0.1, 0.2, 0.3, 0.4]), cirq.QuantumFourierTransformGate(3),
        cirq.ParallelGate(cirq.T, 2), cirq.BooleanHamiltonianGate(["x", "y"], ["x & y"], 0.3),
    ]  # fmt: skip


def same(cirq, source):
    """Whether it is read and written as the same operator on the same qubits."""
    read = Circuit.from_cirq(source)
    written = read.to_cirq()
    assert written.all_qubits() == source.all_qubits()
    assert read.qubit_names == Circuit.from_cirq(written).qubit_names
    wanted = source.unitary()
    return same_up_to_phase(wanted, unitary(read)) and same_up_to_phase(wanted, written.unitary())


def test_gates_and_qubits(cirq):
    a, b, c, d = qubits(cirq)
    for gate in gates(cirq):
        on = [a, d, c][: cirq.num_qubits(gate)]
        assert same(cirq, cirq.Circuit(cirq.IdentityGate(4).on(a, b, c, d), gate.on(*on))), gate
    inner = cirq.FrozenCircuit(cirq.H(a), cirq.CX(a, b))
    for operation in (
        cirq.CircuitOperation(inner, repetitions=3).with_tags("tag"), cirq.H(a).controlled_by(b),
        (cirq.X(a) * cirq.Y(b)) ** 0.3, cirq.PauliString({a: "X", b: "Y"}),
    ):  # fmt: skip
        assert same(cirq, cirq.Circuit(operation)), operation
    assert same(cirq, inner)
    assert Circuit.from_cirq(cirq.Circuit(cirq.CX(c, a))).qubit_names == ("q[-3]", "ancilla")
    # Qubits without gates: none at all, a barrier, a condition that never holds.
    for rest in ([], [Barrier((0, 1))], [Measure(1, 0), Conditional(Gate.h(0), 1)]):
        written = Circuit(2, [Gate.h(1), *rest], [("c", 2)]).to_cirq()
        assert written.all_qubits() == set(cirq.LineQubit.range(2))


def test_symbols(cirq):
    sympy = pytest.importorskip("sympy")
    s, t = sympy.symbols("s t")
    a, b = cirq.LineQubit.range(2)
    source = cirq.Circuit(
        cirq.rx(2 * s + 0.25)(a), cirq.Z(b) ** s, cirq.CZ(a, b) ** (s / 3),
        cirq.ZZ(a, b) ** (s - 1), (cirq.X(b) ** t).controlled_by(a), cirq.XX(a, b) ** t,
    )  # fmt: skip
    read = Circuit.from_cirq(source)
    assert read.symbols == ("s", "t")
    assert read[0] == Gate.rx(0, "2*s + 0.25")
    result = zb.optimize(source, seed=1, steps=500)
    assert result.verify()
    values = {"s": 0.37, "t": 1.3}
    wanted = cirq.resolve_parameters(source, values).unitary()
    for circuit in (read, result.circuit):
        written = cirq.resolve_parameters(circuit.to_cirq(), values)
        assert same_up_to_phase(wanted, written.unitary())
    assert next(read.to_cirq().all_operations()) == cirq.rx(2 * s + 0.25)(a)


def test_measurements_and_conditions_do_the_same(cirq):
    """On all inputs of 0 and 1, where every outcome is certain."""
    sympy = pytest.importorskip("sympy")
    q = cirq.LineQubit.range(3)
    mask = cirq.BitMaskKeyCondition("m", bitmask=2)
    operations = [
        cirq.measure(q[0], q[1], key="m"), cirq.X(q[2]).with_classical_controls("m"),
        cirq.Y(q[2]).with_classical_controls(sympy.Eq(sympy.Symbol("m"), 1)), cirq.reset(q[0]),
        cirq.measure(q[2], key="k", invert_mask=(True,)),
        cirq.X(q[1]).with_classical_controls("k", mask), cirq.measure(q[1], key="c[1]"),
        cirq.measure(q[0], key="c[0]"),
    ]  # fmt: skip
    read = Circuit.from_cirq(cirq.Circuit(operations))
    assert read.classical == (Register("m", 2), Register("c", 2), Register("k", 1))
    written = list(read.to_cirq().all_operations())
    for inputs in range(8):
        flips = [cirq.X(q[k]) for k in range(3) if inputs >> k & 1]
        one, other = (
            cirq.Simulator(seed=1).run(cirq.Circuit(flips, ops)) for ops in (operations, written)
        )
        assert one == other


@given(circuit=dynamic_circuits())
def test_operations_through_cirq_and_back(circuit):
    """A register of which the first bit alone is measured is a register of one afterwards."""
    pytest.importorskip("cirq")
    items = [item for item in circuit if not isinstance(getattr(item, "operation", None), Measure)]
    circuit = Circuit(circuit.n, items, circuit.classical)
    written = Circuit.from_cirq(circuit.to_cirq()).to_cirq()
    assert Circuit.from_cirq(written).to_cirq() == written


def test_keys(cirq):
    """A register that is measured at once is one key, also in conditions on all of it."""
    ending = [Measure(k, k) for k in range(3)]
    for registers, keys in (
        ([("m", 3)], {"m"}), ([("m", 2), ("n", 1)], {"m", "n"}),
        ([("m", 4)], {"m[0]", "m[1]", "m[2]"}),
    ):  # fmt: skip
        circuit = Circuit(3, ending, registers)
        assert circuit.to_cirq().all_measurement_key_names() == keys
        back = Circuit.from_cirq(circuit.to_cirq())
        assert list(back) == ending


def test_what_is_refused(cirq):
    sympy = pytest.importorskip("sympy")
    a, b = cirq.LineQubit.range(2)
    confused = cirq.measure(a, key="m", confusion_map={(0,): cirq.testing.random_unitary(2).real})
    twice = [cirq.H(a)]
    for _ in range(2):
        inner = cirq.FrozenCircuit(twice)
        twice = [cirq.CircuitOperation(inner, repetitions=10_000)]
    for operations, error, text in (
        (twice, errors.TooLargeError, "operation 0: got more than 4000000 operations"),
        ([cirq.H(a), cirq.depolarize(0.1)(a)], errors.GateError, "operation 1: got depolarize"),
        ([cirq.rx(sympy.Symbol("s") ** 2)(a)], errors.AngleError, "operation 0: angle: got"),
        ([cirq.X(a).with_classical_controls("m")], errors.GateError, "not measured before"),
        ([confused], errors.GateError, "operation 0: got a measurement with a confusion map"),
        ([cirq.IdentityGate(1, (3,)).on(cirq.LineQid(0, 3))], errors.GateError, "of 3 levels"),
    ):  # fmt: skip
        with pytest.raises(error, match=text):
            Circuit.from_cirq(cirq.Circuit(operations))
    with pytest.raises(TypeError, match="wanted a Circuit of cirq"):
        Circuit.from_cirq(b)

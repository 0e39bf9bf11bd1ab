"""Scripts and tapes of PennyLane, by its own matrices and simulator."""

import numpy as np
import pytest
from hypothesis import given
from support import same_up_to_phase, unitary
from test_instructions import dynamic_circuits

import zeltbraidwerk as zb
from zeltbraidwerk import Circuit, Conditional, Gate, Measure, Register, errors

WIRES = ["a", 2, (1, 2), "x"]
NAMES = ["a", "q[2]", "q[1, 2]", "x"]
A, B, C, D = WIRES


def operators(qml):
    sum_of_strings = qml.dot([0.2, 0.3], [qml.X(A) @ qml.X(B), qml.Z([C])])
    return [
        qml.SX(A), qml.S(B), qml.adjoint(qml.S(B)), qml.adjoint(qml.SX(A)), qml.T([C]),
        qml.PhaseShift(0.3, A), qml.U1(0.3, A), qml.U2(0.3, 0.4, A), qml.U3(0.3, 0.4, 0.5, A),
        qml.Rot(0.3, 0.4, 0.5, A), qml.CH([A, C]), qml.CY([A, C]), qml.CSWAP([C, A, B]),
        qml.Toffoli([C, A, B]), qml.CCZ([C, A, B]), qml.IsingXX(0.3, [A, C]),
        qml.IsingYY(0.3, [A, C]), qml.IsingZZ(0.3, [A, C]), qml.IsingXY(0.3, [A, C]),
        qml.CRX(0.3, [A, C]), qml.CRY(0.3, [A, C]), qml.CRZ(0.3, [A, C]), qml.SWAP([A, B]),
        qml.CRot(0.3, 0.4, 0.5, [A, C]), qml.ControlledPhaseShift(0.3, [A, C]), qml.ISWAP([A, B]),
        qml.ECR([A, B]), qml.MultiRZ(0.3, [A, B, D]), qml.PauliRot(0.3, "XYZ", [A, B, D]),
        qml.MultiControlledX([A, B, C, D], control_values=[0, 1, 1]), qml.X(A) ** 0.3,
        qml.ctrl(qml.RX(0.3, A), [B, D]), qml.QubitUnitary(qml.QFT.compute_matrix(2), [A, B]),
        qml.QubitUnitary(qml.QFT.compute_matrix(3), [A, B, D]), qml.QFT([A, B, C, D]),
        qml.DoubleExcitation(0.3, [A, B, C, D]), qml.GroverOperator([A, B, C]),
        qml.exp(qml.X(A) @ qml.Z(B), 0.3j), qml.X(A) @ qml.RX(0.2, B), qml.prod(qml.H(A), qml.S(A)),
        qml.TrotterProduct(sum_of_strings, 0.4), qml.GlobalPhase(0.3),
        qml.ctrl(qml.GlobalPhase(0.3), A), qml.ctrl(qml.S(A), B, control_values=[0]),
        qml.RX(np.float32(0.3), A),
    ]  # fmt: skip


def test_operators_and_wires(qml):
    for operator in operators(qml):
        script = qml.tape.QuantumScript([*(qml.Identity([wire]) for wire in WIRES), operator])
        read = Circuit.from_pennylane(script)
        assert read.qubit_names == tuple(NAMES)
        wanted = qml.matrix(script, wire_order=WIRES)
        assert same_up_to_phase(wanted, unitary(read)), operator
        written = read.to_pennylane()
        assert written.wires.tolist() == WIRES
        assert same_up_to_phase(wanted, qml.matrix(written, wire_order=WIRES)), operator
    # A condition that never holds leaves its qubits without gates.
    never = Circuit(2, [Measure(1, 0), Conditional(Gate.h(0), 1)], [("c", 2)]).to_pennylane()
    assert set(never.wires) == {0, 1}


def test_a_tape_of_a_qnode_is_made_shorter(qml):
    device = qml.device("default.qubit")

    @qml.qnode(device)
    def energy(angle):
        qml.Hadamard(2)
        for _ in range(2):
            qml.CNOT([2, 0])
            qml.RZ(angle, 0)
            qml.CNOT([2, 0])
        return qml.expval(qml.X(2) @ qml.Z(0))

    tape = qml.workflow.construct_tape(energy)(0.3)
    result = zb.optimize(tape, seed=1)
    assert (result.before.two_qubit, result.count, result.verify()) == (4, 2, True)
    assert result.circuit.qubit_names == ("q[0]", "q[2]")
    shorter = tape.copy(operations=result.circuit.to_pennylane().operations)
    assert np.allclose(*(qml.execute([each], device) for each in (tape, shorter)))
    with pytest.raises(TypeError, match=r"wanted its tape: qml\.workflow\.construct_tape"):
        zb.optimize(energy)


def test_measurements_and_conditions_do_the_same(qml):
    device = qml.device("default.qubit")

    def operations(inputs):
        for wire in range(2):
            if inputs >> wire & 1:
                qml.X(wire)
        first, second = qml.measure(0, reset=True), qml.measure(1)
        qml.cond(first, qml.X, qml.H)(2)
        qml.cond((first + second) == 1, qml.RY)(0.3, 2)
        qml.cond(~first | second, qml.CNOT)([2, 0])
        return qml.probs(wires=[0, 1, 2])

    for inputs in range(4):
        tape = qml.workflow.construct_tape(qml.QNode(operations, device))(inputs)
        read = Circuit.from_pennylane(tape)
        assert read.classical == (Register("m", 2),)
        written = tape.copy(operations=read.to_pennylane().operations)
        one, other = (
            qml.execute(qml.defer_measurements(each)[0], device) for each in (tape, written)
        )
        assert np.allclose(one, other)


@given(circuit=dynamic_circuits())
def test_operations_through_pennylane_and_back(circuit):
    """Bits that are not measured are 0, so conditions on them are not written."""
    pytest.importorskip("pennylane")
    items = [item for item in circuit if isinstance(getattr(item, "operation", Gate.h(0)), Gate)]
    once = Circuit.from_pennylane(Circuit(circuit.n, items, circuit.classical).to_pennylane())
    assert Circuit.from_pennylane(once.to_pennylane()) == once


def test_bits_have_names(qml):
    items = [Measure(1, 2), Measure(0, 0), Measure(2, 1), Conditional(Gate.h(0), (0, 2), 2)]
    circuit = Circuit(3, items, [("r", 2), ("s", 1)], ["x", "y", "z"])
    back = Circuit.from_pennylane(circuit.to_pennylane())
    assert back.classical == (Register("s", 1), Register("r", 2))  # in the order in which they come
    assert [item.bit for item in back[:3]] == [0, 1, 2]
    assert back.qubit_names == ("y", "x", "z")


def test_what_is_refused(qml):
    for operation, error, text in (
        (qml.DepolarizingChannel(0.1, 0), errors.GateError, "operation 0: got Depolarizing"),
        (qml.RX(np.array([0.1, 0.2]), 0), errors.AngleError, "got the angle .*, wanted a number"),
        (qml.Hermitian(np.diag([1, 2]), 0), errors.GateError, "which PennyLane cannot take apart"),
        (qml.ops.MidMeasure([0], postselect=1), errors.GateError, "with postselection"),
    ):
        with pytest.raises(error, match=text):
            Circuit.from_pennylane(qml.tape.QuantumScript([operation]))
    with pytest.raises(TypeError, match="wanted a QuantumScript of pennylane"):
        Circuit.from_pennylane(3)
    with pytest.raises(errors.AngleError, match="symbolic"):
        Circuit(1, [Gate.rz(0, "a")]).to_pennylane()
    with pytest.raises(errors.GateError, match="got measure under a condition"):
        Circuit(1, [Measure(0, 0), Conditional(Measure(0, 0), 0)]).to_pennylane()

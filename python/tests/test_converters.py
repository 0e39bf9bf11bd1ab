"""Circuits of Qiskit, pytket and Stim, read and written, by the matrices and flows of those
packages."""

import math

import numpy as np
import pytest
from hypothesis import given
from support import same_up_to_phase, unitary
from test_instructions import dynamic_circuits, per_wire

import zeltbraidwerk as zb
from zeltbraidwerk import (
    Barrier,
    Circuit,
    CliffordTableau,
    Conditional,
    Device,
    Gate,
    Measure,
    Register,
    Reset,
    errors,
)

X1 = Gate("X", 1)


def refused(error, match, read, *arguments):
    with pytest.raises(error, match=match):
        read(*arguments)


# --- Qiskit -------------------------------------------------------------------------------------


def theirs(circuit):
    from qiskit.quantum_info import Operator

    return Operator(circuit.reverse_bits()).data


def compound_gates():
    """Gates of Qiskit on up to four qubits that are none of ours, with the qubits they are on."""
    from qiskit import QuantumCircuit
    from qiskit.circuit import library as lib
    from qiskit.quantum_info import SparsePauliOp, random_clifford, random_unitary

    inner = QuantumCircuit(2, name="inner")
    inner.h(0)
    inner.crz(0.3, 1, 0)
    outer = QuantumCircuit(3, name="h")  # named as a gate of ours that it is not
    outer.append(inner.to_gate(), [2, 0])
    outer.t(1)
    evolution = lib.PauliEvolutionGate(SparsePauliOp(["XYZ", "ZZI"], [0.3, 0.4]), 0.7)
    return {
        "unitary on 1": (lib.UnitaryGate(random_unitary(2, seed=1)), [2]),
        "unitary on 3": (lib.UnitaryGate(random_unitary(8, seed=1)), [3, 0, 1]),
        "controls": (lib.MCXGate(3), [2, 0, 3, 1]),
        "control at 0": (lib.CXGate(ctrl_state=0), [2, 0]),
        "controls at 0 and 1": (lib.CCXGate(ctrl_state=1), [3, 0, 1]),
        "evolution": (evolution, [1, 2, 0]),
        "clifford": (random_clifford(3, seed=3), [2, 0, 3]),
        "nested": (outer.to_gate(), [3, 1, 0]),
        "nested, controlled": (outer.to_gate().control(1), [3, 1, 0, 2]),
        "power": (inner.to_gate().power(0.5), [1, 0]),
        "linear": (lib.LinearFunction([[1, 1, 0], [0, 1, 0], [1, 0, 1]]), [2, 0, 3]),
        "paulis": (lib.PauliGate("XYZ"), [3, 1, 0]),
        "phase": (lib.GlobalPhaseGate(0.3), []),
    }


def test_whatever_qiskit_takes_apart(qiskit):
    for name, (gate, on) in compound_gates().items():
        circuit = qiskit.QuantumCircuit(4)
        circuit.append(gate, on)
        plain = qiskit.transpile(circuit, basis_gates=["u", "cx"], optimization_level=0)
        assert same_up_to_phase(theirs(plain), unitary(Circuit.from_qiskit(circuit))), name


def test_a_gate_named_as_another_is_what_its_definition_says(qiskit):
    named = qiskit.circuit.Gate("x", 1, [])
    named.definition = qiskit.QuantumCircuit(1)
    named.definition.s(0)
    circuit = qiskit.QuantumCircuit(2)
    circuit.append(named, [1])
    assert Circuit.from_qiskit(circuit) == Circuit(2, [Gate.s(1)])


def test_initialize_resets(qiskit):
    circuit = qiskit.QuantumCircuit(2)
    circuit.initialize([0.6, 0, 0, 0.8])
    found = Circuit.from_qiskit(circuit)
    assert found.operations[:2] == (Reset(0), Reset(1))
    state = unitary(Circuit(2, found.gates))[:, 0]
    assert np.allclose(abs(state), [0.6, 0, 0, 0.8])


def test_operations_of_qiskit(qiskit):
    circuit = qiskit.QuantumCircuit(
        qiskit.QuantumRegister(2, "a"), qiskit.ClassicalRegister(2, "m"),
        qiskit.ClassicalRegister(1, "k"),
    )  # fmt: skip
    circuit.measure(0, 1)
    with circuit.if_test((circuit.cregs[0], 2)):
        circuit.x(1)
    with circuit.if_test((circuit.clbits[2], 0)):
        circuit.cx(1, 0)
        with circuit.if_test((circuit.clbits[0], 1)):
            circuit.reset(0)
    circuit.delay(100, 0)
    circuit.barrier(0)
    circuit.measure_all()
    found = Circuit.from_qiskit(circuit)
    assert found.classical == (Register("m", 2), Register("k", 1), Register("meas", 2))
    assert found.operations == (
        Measure(0, 1), Conditional(X1, (0, 1), 2), Conditional(Gate.cnot(1, 0), 2, 0),
        Conditional(Reset(0), (2, 0), 2), Barrier(0), Barrier((0, 1)), Measure(0, 3), Measure(1, 4),
    )  # fmt: skip
    assert found[0].where == "instruction 0"


@given(circuit=dynamic_circuits())
def test_operations_through_qiskit_and_back(circuit):
    pytest.importorskip("qiskit")
    assert Circuit.from_qiskit(circuit.to_qiskit()).named() == circuit.named()


def test_a_circuit_laid_out_by_qiskit(qiskit):
    source = qiskit.QuantumCircuit(3)
    source.h(0)
    source.ccx(0, 2, 1)
    line = [[k, k + 1] for k in range(4)]
    routed = qiskit.transpile(
        source, coupling_map=line, basis_gates=["rz", "sx", "cx"], initial_layout=[4, 0, 2],
        seed_transpiler=1,
    )  # fmt: skip
    found = Circuit.from_qiskit(routed)
    assert found.n == 5
    assert same_up_to_phase(theirs(routed), unitary(found))


def test_classical_bits_of_qiskit(qiskit):
    clbit = qiskit.circuit.Clbit
    circuit = qiskit.QuantumCircuit([clbit()])
    c = qiskit.ClassicalRegister(2, "c")
    circuit.add_register(c)
    circuit.add_bits([clbit()])
    sizes = [(register.name, register.size) for register in Circuit.from_qiskit(circuit).classical]
    assert sizes == [("c_", 1), ("c", 2), ("c__", 1)]
    circuit.add_register(qiskit.ClassicalRegister(name="shared", bits=[c[0]]))
    assert Circuit.from_qiskit(circuit).classical == (Register("c", 4),)


def test_symbols_of_qiskit(qiskit):
    """The caller's own Parameters come back, with every gate that is taken apart."""
    a, v = qiskit.circuit.Parameter("$a$"), qiskit.circuit.ParameterVector("v", 2)
    circuit = qiskit.QuantumCircuit(2)
    circuit.rz(2 * a + 0.1234567891, 0)
    circuit.crz(v[1], 0, 1)
    circuit.cu(a, -v[0], v[1] / 3, 0.2, 0, 1)
    circuit.cp((a - v[0]) / 2, 1, 0)
    circuit.crx(a, 0, 1)
    circuit.rxx(a, 0, 1)
    circuit.ry(a - a + 0.5, 0)
    read = Circuit.from_qiskit(circuit)
    assert read[0] == Gate.rz(0, "2*$a$ + 0.1234567891")
    assert read.symbols == ("$a$", "v[0]", "v[1]")
    written = read.to_qiskit()
    assert set(written.parameters) == {a, *v}
    values = {a: 0.7, v: [0.3, -1.1]}
    wanted = qiskit.quantum_info.Operator(circuit.assign_parameters(values))
    assert wanted.equiv(written.assign_parameters(values))
    assert wanted.equiv(read.bind({a: 0.7, v[0]: 0.3, "v[1]": -1.1}).to_qiskit())
    other = qiskit.circuit.Parameter("$a$")
    refused(errors.AngleError, "another Parameter of the name", read.bind, {other: 1})
    both = read + Circuit(2, [Gate.rz(0, other)])
    refused(errors.AngleError, "two symbols of the name", both.to_qiskit)
    for angle in (a * v[0], a.sin(), a**2):
        wrong = circuit.copy()
        wrong.rz(angle, 0)
        refused(errors.AngleError, r"instruction 7: angle: got .*a\$", Circuit.from_qiskit, wrong)


def test_symbols_through_every_family(qiskit):
    """QAOA with two gates per edge: merged as linear forms, and still the caller's Parameters."""
    gamma, beta = qiskit.circuit.ParameterVector("g", 2), qiskit.circuit.Parameter("beta")
    circuit = qiskit.QuantumCircuit(4)
    for layer in range(2):
        for k in range(4):
            for angle in (2 * gamma[layer], beta / 3 - 0.1234567891):
                circuit.rzz(angle, k, (k + 1) % 4)
        circuit.rx(2 * beta, range(4))
    values = {gamma[0]: 0.3, gamma[1]: -1.7, beta: 0.9}
    wanted = qiskit.quantum_info.Operator(circuit.assign_parameters(values))
    rotations = zb.routing.normalize(circuit).rotations
    line = Device.line(4)
    for found in (
        zb.optimize(circuit, seed=1), zb.optimize(circuit, device=line, seed=1, steps=2000),
        zb.optimize(circuit, device=line, router="qiskit", seed=1, steps=2000),
        zb.routing.route(circuit, line, steps=2000),
        zb.pauli.synthesize(rotations, seed=1, steps=2000),
    ):  # fmt: skip
        assert found.verify()
        assert len([gate for gate in found.circuit.gates if gate.params]) <= 24
        written = found.circuit.to_qiskit()
        assert set(written.parameters) == set(values)
        back = Circuit.from_qiskit(written.assign_parameters(values))
        inside = [found.placement.index(q) for q in range(4)]
        assert wanted.equiv(back.placed(inside, 4).to_qiskit())
    assert zb.routing.normalize(circuit, repeat=True).verify()
    assert zb.routing.route(circuit, line, tail="return").verify()


def test_what_qiskit_has_and_we_do_not(qiskit):
    from qiskit.circuit.classical import expr

    def with_else(circuit):
        with circuit.if_test((circuit.clbits[0], 1)) as otherwise:
            circuit.x(0)
        with otherwise:
            circuit.y(0)

    def in_a_loop(circuit):
        with circuit.while_loop((circuit.clbits[0], 1)):
            circuit.x(0)

    def by_an_expression(circuit):
        with circuit.if_test(expr.equal(circuit.cregs[0], 1)):
            circuit.x(0)

    def into_its_condition(circuit):
        with circuit.if_test((circuit.clbits[0], 1)):
            circuit.measure(0, 0)
            circuit.x(0)

    def unknown(circuit):
        circuit.append(qiskit.circuit.Gate("foo", 1, []), [0])

    for add, text in (
        (with_else, "instruction 1: got if_test with an else"),
        (in_a_loop, "instruction 1: got while_loop, wanted if_test"),
        (by_an_expression, "instruction 1: got if_test of an expression, wanted if_test"),
        (into_its_condition, "instruction 1: got a measurement, under a condition, into a bit"),
        (unknown, "instruction 1: got foo, which Qiskit cannot take apart"),
    ):
        circuit = qiskit.QuantumCircuit(1, 1)
        circuit.h(0)
        add(circuit)
        refused(errors.GateError, text, Circuit.from_qiskit, circuit)


# --- pytket -------------------------------------------------------------------------------------


def test_whatever_pytket_takes_apart(tket):
    from pytket.pauli import Pauli

    box = tket.PauliExpBox([Pauli.X, Pauli.Y], 0.3)
    circuit = tket.Circuit(4).add_pauliexpbox(box, [3, 1])
    circuit.add_unitary1qbox(tket.Unitary1qBox(np.array([[0.6, 0.8j], [0.8j, 0.6]])), 2)
    kind = tket.OpType
    for name, turns, on in (
        (kind.TK2, [0.1, 0.2, 0.3], [3, 1]), (kind.ISWAP, [0.3], [1, 2]), (kind.ECR, [], [2, 0]),
        (kind.PhasedX, [0.1, 0.2], [2]), (kind.CnRy, [0.3], [2, 1, 3, 0]),
        (kind.CnX, [], [0, 3, 1, 2]), (kind.XXPhase3, [0.3], [3, 0, 1]), (kind.Phase, [0.2], []),
        (kind.NPhasedX, [0.1, 0.2], [0, 1, 3]), (kind.BRIDGE, [], [3, 1, 0]),
        (kind.GPI, [0.1], [1]), (kind.AAMS, [0.1, 0.2, 0.3], [2, 1]),
    ):  # fmt: skip
        circuit.add_gate(name, turns, on)
    before = circuit.get_commands()
    assert same_up_to_phase(circuit.get_unitary(), unitary(Circuit.from_pytket(circuit)))
    assert circuit.get_commands() == before


def test_gates_of_pytket_that_we_know(tket):
    from zeltbraidwerk._interop_pytket import _KNOWN

    for name in (*_KNOWN, "TK1"):
        kind = getattr(tket.OpType, name)
        for qubits in ([2], [2, 0], [2, 0, 1]):
            for turns in ([], [0.13], [0.13, 0.27], [0.13, 0.27, 0.41]):
                circuit = tket.Circuit(3)
                try:
                    circuit.add_gate(kind, turns, qubits)
                except (RuntimeError, IndexError):  # fewer than that
                    continue
                found = Circuit.from_pytket(circuit)
                assert same_up_to_phase(circuit.get_unitary(), unitary(found)), name


def test_wires_that_pytket_permutes(tket):
    circuit = tket.Circuit(3).SWAP(0, 1).H(1).SWAP(1, 2).CX(0, 2)
    matrix = circuit.get_unitary()
    circuit.replace_SWAPs()
    assert same_up_to_phase(matrix, unitary(Circuit.from_pytket(circuit)))
    assert any(a != b for a, b in circuit.implicit_qubit_permutation().items())  # as it was


def test_operations_of_pytket(tket):
    circuit = tket.Circuit()
    b, a = circuit.add_q_register("b", 2), circuit.add_q_register("a", 2)
    m, k = circuit.add_c_register("m", 3), circuit.add_c_register("k", 1)
    circuit.CX(b[0], a[1]).Measure(b[0], m[1]).X(a[0], condition=m[1])
    circuit.CX(a[0], a[1], condition_bits=[m[0], m[2]], condition_value=2)
    circuit.Measure(b[0], k[0], condition_bits=[m[0]], condition_value=0)
    circuit.Reset(b[1]).add_barrier([b[0], a[0]])
    found = Circuit.from_pytket(circuit)
    # Qubits and registers in pytket's order, by their names.
    assert found.classical == (Register("k", 1), Register("m", 3))
    assert per_wire(found) == per_wire(
        Circuit(4, [
            Gate.cnot(2, 1), Measure(2, 2), Conditional(Gate("X", 0), 2),
            Conditional(Gate.cnot(0, 1), (1, 3), 2), Conditional(Measure(2, 0), 1, 0), Reset(3),
        ])
    )  # fmt: skip
    assert Barrier((2, 0)) in found.operations
    circuit.add_gate(tket.OpType.CnZ, [*a, *b], condition_bits=[m[0]], condition_value=1)
    assert isinstance(Circuit.from_pytket(circuit)[-1], Conditional)


@given(circuit=dynamic_circuits())
def test_operations_through_pytket_and_back(circuit):
    pytest.importorskip("pytket")
    registers = [("a", 2), ("b", 2)]  # in the order of their names
    named = Circuit(circuit.n, circuit.operations, registers)
    back = Circuit.from_pytket(named.to_pytket())
    assert back.classical == named.classical
    assert _rounded(per_wire(back.named())) == _rounded(per_wire(named.named()))


def _rounded(wires):
    """pytket counts in half turns, from 0 to 4."""

    def turned(angle):
        return round(math.remainder(float(angle), 4 * math.pi), 9) + 0.0

    return {
        wire: [(str(item).split("]")[0], [turned(p) for p in item.params]) for item in items]
        for wire, items in wires.items()
    }


def test_symbols_of_pytket(tket):
    sympy = pytest.importorskip("sympy")
    x, y = sympy.symbols("x y", real=True)
    circuit = tket.Circuit(2).Rz(x / sympy.pi, 0).Rx(2 * x - y / 3 + 0.25, 1).ZZPhase(-2 * y, 0, 1)
    circuit.add_gate(tket.OpType.CRz, [x], [0, 1]).ZZPhase(y, 0, 1).H(0).ZZPhase(0.25 * y, 0, 1)
    read = Circuit.from_pytket(circuit)
    assert read[0] == Gate.rz(0, "x")
    assert read[1].params[0].coefficients["x"] == 2 * math.pi
    assert read[1].params[0].constant == 0.25 * math.pi
    shorter = zb.optimize(read, seed=1)
    assert shorter.verify()
    assert shorter.count < read.two_qubit_count
    values = {"x": 0.3, "y": -1.7}
    circuit.symbol_substitution({symbol: values[symbol.name] for symbol in circuit.free_symbols()})
    for symbolic in (read, shorter.circuit):
        written = symbolic.to_pytket()
        written.symbol_substitution({s: values[s.name] for s in written.free_symbols()})
        for numbers in (Circuit.from_pytket(written), symbolic.bind(values)):
            assert zb.optimize(Circuit.from_pytket(circuit) + numbers.inverse(), seed=1).count == 0
    circuit.Rz(x * y, 0)
    refused(errors.AngleError, "command 7: angle: got", Circuit.from_pytket, circuit)


def test_what_pytket_has_and_we_do_not(tket):
    circuit = tket.Circuit(1, 2).H(0).add_c_setbits([True], [1])
    refused(errors.GateError, "command 0: got SetBits", Circuit.from_pytket, circuit)
    circuit = tket.Circuit(1, 2)
    circuit.X(0, condition=circuit.bits[0] & circuit.bits[1])
    refused(errors.GateError, "command 0: got ClExpr", Circuit.from_pytket, circuit)


# --- Stim ---------------------------------------------------------------------------------------


def test_files_of_stim(stim, tmp_path):
    path = tmp_path / "circuit.stim"
    path.write_bytes(b"H 1  # a comment\rREPEAT 2 {\nCX 1 0\n}\r\n")
    assert Circuit.of(path) == Circuit.of(str(path)) == Circuit(
        2, [Gate.h(1), Gate.cnot(1, 0), Gate.cnot(1, 0)]
    )  # fmt: skip
    path.write_text("H 0\nREPEAT 2 {\nCX 0 1\nCX 0 1 2\n}\nFOO 1\n")
    with pytest.raises(errors.GateError, match=r"^line 4: Two qubit gate CX"):
        Circuit.of(path)


def test_all_unitary_gates_of_stim(stim):
    for name, data in stim.gate_data().items():
        if not data.is_unitary or name.startswith("SPP"):
            continue
        circuit = stim.Circuit()
        circuit.append(name, [2, 0] if data.is_two_qubit_gate else [1])
        circuit.append("I", [2])
        found = CliffordTableau.from_circuit(Circuit.from_stim(circuit))
        assert found.to_stim() == circuit.to_tableau(), name
    nothing = stim.Circuit("REPEAT 1000000000000 {\nREPEAT 1000000000000 {\nTICK\n}\n}")
    assert Circuit.from_stim(nothing) == Circuit(0)
    products = stim.Circuit(
        "SPP X0*!Y2*Z1 !X1\nSPP_DAG !X1*Z0 Y2\nREPEAT 3 {\nC_XYZ 1\nSPP X0*Y0*Z0*Z1*Y0*Z0*X0\n}"
    )
    found = CliffordTableau.from_circuit(Circuit.from_stim(products))
    assert found.to_stim() == products.to_tableau()


# Lines of Stim's are parted by semicolons.
MEASURED = """
    H 0; CX 0 1; M !0 1; MX 2; MY !2; MR !0; MRX !1; MRY 2; R 0; RX 1; RY 2; TICK
    MPP X0*Y1*!Z2 !Z0 Z0*X2*Z2*!X2*Z2; MXX 0 !1; MYY !1 2; MZZ 0 2; CX rec[-1] 1
    REPEAT 2 {; CZ 2 rec[-2]; XCZ 0 rec[-3]; YCZ 0 rec[-1]; M 1; }
    CY rec[-4] 2; QUBIT_COORDS(1, 2) 0; SHIFT_COORDS(3)
"""


def test_measurements_of_stim(stim):
    """Flows tell what becomes of every Pauli operator, which records it takes, and its sign."""
    circuit = stim.Circuit(MEASURED.replace(";", "\n"))
    found = Circuit.from_stim(circuit)
    assert found.classical == (Register("rec", circuit.num_measurements),)
    assert {str(f) for f in found.to_stim().flow_generators()} == {
        str(f) for f in circuit.flow_generators()
    }
    assert Circuit.from_stim(found.to_stim()) == found


def test_conditions_for_stim(stim):
    items = [Measure(0, 1), Measure(1, 0), Conditional(Gate.rz(1, math.pi), 1, 0), Barrier(0)]
    text = "M 0 1\nCZ rec[-2] 1\nZ 1\nTICK"
    assert Circuit(2, items).to_stim() == stim.Circuit(text)
    for item in (Gate.h(1), Gate.cnot(0, 1), Reset(1)):
        circuit = Circuit(2, [Measure(0, 0), Conditional(item, 0)])
        refused(errors.GateError, "qubit 1 under a condition on bits 0", circuit.to_stim)
    for name, angles in (("RZZ", 0.3), ("XX", (0.3, 2))):
        circuit = Circuit(2, [Gate(name, (0, 1), angles)])
        refused(errors.NotCliffordError, "wanted a multiple", circuit.to_stim)
    symbolic = Circuit(1, [Gate.rz(0, "a")])
    refused(errors.NotCliffordError, r"got RZ\(a\)", symbolic.to_stim)


@pytest.mark.parametrize(
    ("text", "complaint"),
    [
        ("H 0\nX_ERROR(0.1) 0", "instruction 1: got X_ERROR, wanted gates"),
        ("M(0.1) 0", r"instruction 0: got M\(0.1\), wanted gates without noise"),
        ("M 0\nDETECTOR rec[-1]", "instruction 1: got DETECTOR"),
        ("M 0\nOBSERVABLE_INCLUDE(0) rec[-1]", "instruction 1: got OBSERVABLE_INCLUDE"),
        ("MPAD 0", "instruction 0: got MPAD"),
        ("H 0\nREPEAT 2 {\nH 0\nDEPOLARIZE1(0.1) 0\n}", "instruction 1: got DEPOLARIZE1"),
        ("CX sweep[0] 1", "instruction 0: got CX on other targets"),
        ("MPP X0*X0", "instruction 0: got the measurement of an identity"),
        ("CX rec[-1] 0", r"instruction 0: got rec\[-1\] after 0 records"),
    ],
)
def test_what_stim_has_and_we_do_not(stim, text, complaint):
    refused(errors.GateError, complaint, Circuit.from_stim, stim.Circuit(text))


def test_long_repetitions_of_stim_are_refused(stim):
    circuit = stim.Circuit("REPEAT 9999 {\nREPEAT 9999 {\nH 0\n}\n}")
    complaint = "instruction 0: got more than 4000000"
    refused(errors.TooLargeError, complaint, Circuit.from_stim, circuit)

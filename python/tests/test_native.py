"""Gates with names instead of angles, fused gates on one qubit, and native gates of machines, by
their matrices."""

import math

import numpy as np
import pytest
from hypothesis import given
from hypothesis import strategies as st
from support import same_up_to_phase, unitary
from test_instructions import EIGHTHS

import zeltbraidwerk as zb
from zeltbraidwerk import Barrier, Circuit, Conditional, Gate, Measure
from zeltbraidwerk.gates import ROTATIONS, VOCABULARY

NATIVE = {"cx": "CNOT", "cz": "CSIGN", "ecr": "ECR", "iswap": "ISWAP", "rzz": "RZZ"}
FIXED = [name for name, (qubits, angles) in VOCABULARY.items() if qubits == 1 and not angles]
VALUES = {"a": 0.7, "b": -1.3}
NUMBERS = st.one_of(st.sampled_from(EIGHTHS), st.floats(-7, 7))
FORMS = st.sampled_from(["a", "-a", "b", "2*a - b", "b + pi/4"])


@st.composite
def circuits(draw, angles=NUMBERS, n=3):
    """Of all gates. CNOTs on one pair of wires follow each other often."""
    pairs = [(0, 1), (1, 0), (0, 1), (1, 0), (2, 0), (1, 2)]
    one, pair = st.integers(0, n - 1), st.sampled_from(pairs)
    fixed = sorted({*FIXED} - {"S*"})
    gates = st.one_of(
        st.builds(Gate, st.sampled_from(["CNOT", "CNOT", "CNOT", "CZ", "ECR", "ISWAP"]), pair),
        st.builds(Gate, st.sampled_from(fixed), one),
        st.builds(Gate, st.sampled_from(sorted(ROTATIONS)), one, angles),
        st.builds(Gate, st.just("U"), one, st.tuples(angles, angles, angles)),
        st.builds(Gate, st.just("RZZ"), pair, angles),
        st.builds(Gate, st.just("XX"), pair, st.just((math.pi / 2, 2))),
    )
    return Circuit(n, draw(st.lists(gates, max_size=16)))


def forms(circuit):
    """The circuit in all forms that keep its operator, by what is promised of them."""
    return {"fused": circuit.fused()} | {name: circuit.in_basis(name) for name in NATIVE}


def runs(circuit):
    """The most gates on one qubit that follow each other on a wire."""
    longest, now = 0, [0] * circuit.n
    for item in circuit:
        for q in item.qubits:
            now[q] = now[q] + 1 if len(item.qubits) == 1 and isinstance(item, Gate) else 0
            longest = max(longest, now[q])
    return longest


@given(circuit=circuits())
def test_forms_of_a_circuit(circuit):
    wanted = unitary(circuit)
    assert same_up_to_phase(wanted, unitary(circuit.elementary()))
    assert circuit.t_count == circuit.named().t_count == circuit.elementary().t_count
    for name, made in forms(circuit).items():
        assert same_up_to_phase(wanted, unitary(made)), name
        assert runs(made) <= 1
        assert len(made.named()) == len(made)  # a gate for each that is counted
        if name in NATIVE:
            assert {gate.name for gate in made if len(gate.qubits) > 1} <= {NATIVE[name]}
            again = made.in_basis(name)
            assert (again.two_qubit_count, again.one_qubit_count) <= (
                made.two_qubit_count, made.one_qubit_count
            )  # fmt: skip
    no_xx = Circuit(3, [gate for gate in circuit if gate.name != "XX"])
    assert same_up_to_phase(unitary(no_xx).conj().T, unitary(no_xx.inverse()))


@given(circuit=circuits(st.one_of(FORMS, FORMS, NUMBERS)))
def test_forms_with_symbols(circuit):
    def bound(made):
        return unitary(made.bind({name: VALUES[name] for name in made.symbols}))

    wanted = bound(circuit)
    for name, made in forms(circuit).items():
        assert same_up_to_phase(wanted, bound(made)), name
    assert circuit.fused().one_qubit_count <= circuit.elementary().one_qubit_count


@given(circuit=circuits())
def test_written_gates_have_the_phase_of_the_circuit(circuit):
    """Through Qiskit, pytket and OpenQASM, and back."""
    pytest.importorskip("qiskit")
    pytest.importorskip("pytket")
    from qiskit import QuantumCircuit, qasm2
    from qiskit.quantum_info import Operator

    for made in (circuit, circuit.fused(), circuit.in_basis("ecr"), circuit.in_basis("iswap")):
        # The oracle takes PH for RZ.
        turned = sum(float(gate.params[0]) for gate in made if gate.name == "PH")
        wanted, text = np.exp(0.5j * turned) * unitary(made), made.to_qasm()
        there = made.to_qiskit()
        assert np.allclose(Operator(there.reverse_bits()).data, wanted)
        assert np.allclose(made.to_pytket().get_unitary(), wanted)
        for read in (qasm2.loads(text), QuantumCircuit.from_qasm_str(text)):
            assert same_up_to_phase(Operator(read.reverse_bits()).data, wanted)
        for back in (
            Circuit.from_qiskit(there), Circuit.from_pytket(made.to_pytket()),
            Circuit.from_qasm(text, reader="own"), Circuit.from_qasm(text, reader="qiskit"),
            zb.from_json(made.to_json()),
        ):  # fmt: skip
            assert same_up_to_phase(unitary(back), wanted)
            assert back.t_count == made.t_count
        for gate in there.data:
            if gate.name in ("rz", "p", "rx", "ry"):
                eighths = float(gate.params[0]) / (math.pi / 4)
                step = 1 if gate.name in ("rz", "p") else 2
                assert abs(eighths / step - round(eighths / step)) > 1e-11


@given(circuit=circuits(st.sampled_from(EIGHTHS[1::2])))
def test_clifford_circuits_through_stim(circuit):
    pytest.importorskip("stim")
    clifford = Circuit(3, [gate for gate in circuit if gate.name not in ("T", "D-T")])
    wanted = unitary(clifford)
    for made in (clifford, *forms(clifford).values()):
        matrix = made.to_stim().to_tableau().to_unitary_matrix(endian="big")
        assert abs(np.vdot(matrix, wanted)) == pytest.approx(8, abs=1e-4)
        assert same_up_to_phase(unitary(Circuit.from_stim(made.to_stim())), wanted)


SWAP = [Gate.cnot(0, 1), Gate.cnot(1, 0), Gate.cnot(0, 1)]
MOVED = [Gate.cnot(0, 1), Gate.ry(0, 0.3), Gate.rx(1, 0.2), Gate.cnot(1, 0)]
STEP = [Gate.cnot(0, 1), Gate.rz(1, "g"), Gate.cnot(0, 1)]


@pytest.mark.parametrize(("gates", "cz", "ecr", "iswap", "rzz"), [
    ([Gate.cnot(0, 1)], (1, 2), (1, 2), (2, 3), (1, 3)),
    ([Gate.cnot(1, 0)], (1, 2), (1, 2), (2, 3), (1, 3)),
    ([Gate("ECR", (1, 0))], (1, 3), (1, 0), (2, 2), (1, 3)),
    ([Gate("ISWAP", (0, 1))], (2, 6), (2, 4), (1, 0), (2, 6)),
    (SWAP, (3, 6), (3, 4), (3, 3), (3, 6)),
    ([*SWAP, Gate.cnot(0, 1)], (4, 6), (4, 3), (1, 3), (2, 4)),  # a SWAP, then a CNOT
    ([Gate.cnot(1, 0), *SWAP], (4, 8), (4, 5), (1, 3), (2, 4)),
    (STEP, (2, 3), (2, 3), (2, 5), (1, 0)),
    ([Gate.h(0), *STEP, Gate.h(0)], (2, 5), (2, 5), (2, 6), (1, 2)),
    (MOVED, (2, 4), (2, 3), (2, 5), (2, 4)),
])  # fmt: skip
def test_counts_of_native_gates(gates, cz, ecr, iswap, rzz):
    found = {}
    for name in ("cz", "ecr", "iswap", "rzz"):
        made = Circuit(2, gates).in_basis(name)
        found[name] = made.two_qubit_count, made.one_qubit_count
        values = dict.fromkeys(made.symbols, 0.3)
        source = Circuit(2, gates)
        assert same_up_to_phase(
            unitary(made.bind(values)), unitary(source.bind(dict.fromkeys(source.symbols, 0.3)))
        )
    assert found == {"cz": cz, "ecr": ecr, "iswap": iswap, "rzz": rzz}


def test_the_table_of_names():
    """One gate for each quarter turn, and each eighth about Z, with what is written for it."""
    eighths = [Gate.rz(0, k * math.pi / 4) for k in range(8)]
    quarters = [kind(0, k * math.pi / 2) for kind in (Gate.rx, Gate.ry) for k in range(1, 4)]
    names = [[gate.name for gate in Circuit(1, [gate]).named()] for gate in eighths + quarters]
    assert names == [
        [], ["T"], ["S"], ["S", "T"], ["Z"], ["Z", "T"], ["D-S"], ["D-T"],
        ["SX"], ["X"], ["D-SX"], ["Z", "H"], ["Y"], ["H", "Z"],
    ]  # fmt: skip
    assert Circuit(1, eighths[1:2]).to_qasm().endswith("\nt q[0];\n")
    assert Circuit(1, [Gate.rx(0, -math.pi / 2)]).draw() == "q0: ──D-SX──"
    near = Circuit(1, [Gate.rz(0, math.pi / 4 + 1e-10)])  # farther away than rounding
    assert near.named() == near


def test_fusing_ends_where_something_else_is():
    gates = [
        Gate.h(0), Gate.h(1), Barrier((0,)), Gate.h(0), Gate.s(1), Gate.s(1), Measure(0, 0),
        Conditional(Gate.rz(1, 3 * math.pi / 4), 0), Gate.h(1), Gate.h(0), Gate.h(0),
    ]  # fmt: skip
    made = Circuit(2, gates).fused()
    kinds = [getattr(item, "operation", item).name for item in made]
    assert kinds == ["H", "barrier", "H", "measure", "U", "RZ", "H"]
    in_basis = Circuit(2, [Measure(0, 0), Conditional(Gate.cnot(0, 1), 0, 0)]).in_basis("cz")
    assert list(in_basis)[1:] == [
        Conditional(gate, 0, 0) for gate in (Gate.h(1), Gate.cz(0, 1), Gate.h(1))
    ]


def test_everything_takes_native_gates():
    circuit = Circuit(3, [
        Gate.h(0), Gate("ECR", (0, 1)), Gate("U", 2, (0.1, 0.2, 0.3)), Gate("RZZ", (1, 2), 0.3),
        Gate("T", 1), Gate("ISWAP", (2, 0)), Gate("D-SX", 0),
    ])  # fmt: skip
    assert zb.optimize(circuit, seed=1, steps=1000).verify()
    assert zb.routing.route(circuit, zb.Device.line(3), steps=1000).verify()
    assert same_up_to_phase(unitary(Circuit.from_core(3, circuit.to_core())), unitary(circuit))
    clifford = Circuit(3, [gate for gate in circuit if not gate.params and gate.name != "T"])
    tableau = zb.CliffordTableau.from_circuit(clifford)
    assert tableau == zb.CliffordTableau.from_circuit(clifford.elementary())
    assert zb.clifford.synthesize(clifford, seed=1, steps=100).verify()

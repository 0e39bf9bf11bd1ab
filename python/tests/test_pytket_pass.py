"""The pass for pytket, by the unitaries and simulators of pytket."""

import doctest
import subprocess
import sys

import numpy as np
import pytest


def same(a, b):
    """Two unitaries, up to a phase."""
    return abs(np.trace(a.conj().T @ b)) == pytest.approx(len(a))


def named(tket):
    """Qubits of two registers, the second first by name, whose roles differ."""
    circuit = tket.Circuit("mine")
    b, a = circuit.add_q_register("b", 2), circuit.add_q_register("a", 2)
    for qubits in ((b[0], b[1], a[0]), (b[1], a[0], a[1]), (b[0], b[1], a[0])):
        circuit.CCX(*qubits)
    circuit.Rz(0.3, a[1]).CX(a[1], b[0])
    inner = tket.Circuit(2).CX(0, 1).T(1).CX(0, 1)
    circuit.add_circbox(tket.CircBox(inner), [b[1], a[1]])
    circuit.SWAP(a[0], b[0])
    return circuit


def test_a_pass_keeps_operator_and_names(tket):
    from pytket.passes import RemoveRedundancies, SequencePass

    from zeltbraidwerk.pytket import optimize_pass

    circuit = named(tket)
    made = circuit.copy()
    assert SequencePass([RemoveRedundancies(), optimize_pass(seed=1, steps=20_000)]).apply(made)
    assert made.qubits == circuit.qubits
    assert made.name == "mine"
    assert same(circuit.get_unitary(), made.get_unitary())
    assert made.n_2qb_gates() < 20
    for options in (
        {"objective": "depth"}, {"objective": "t"}, {"exact": True}, {"keep_depth": True}
    ):  # fmt: skip
        other = circuit.copy()
        optimize_pass(seed=1, steps=2000, **options).apply(other)
        assert same(circuit.get_unitary(), other.get_unitary())


def test_permutations_and_phases_stay(tket):
    """Wires that pytket permutes by labels take no gates, and unitaries are equal with phase."""
    from zeltbraidwerk.pytket import optimize_pass

    kind = tket.OpType
    for seed in range(6):
        rng = np.random.default_rng(seed)
        circuit = tket.Circuit().add_phase(0.3)
        qubits = [*circuit.add_q_register("b", 2), *circuit.add_q_register("a", 2)]
        for _ in range(12):
            a, b, c, d = (qubits[k] for k in rng.permutation(4))
            circuit.SWAP(a, b).CCX(b, c, d).SX(a).V(b).T(c).CX(a, b).CX(b, a)
            circuit.add_gate(kind.U3, rng.uniform(0, 2, 3), [d])
            circuit.add_gate(kind.U2, rng.uniform(0, 2, 2), [a])
            circuit.add_gate(kind.CU3, rng.uniform(0, 2, 3), [b, d]).add_gate(kind.SXdg, [], [c])
            circuit.add_gate(kind.TK2, rng.uniform(0, 2, 3), [a, b])
        circuit.replace_SWAPs()
        made = circuit.copy()
        assert circuit.has_implicit_wireswaps
        assert optimize_pass(seed=1, steps=500).apply(made)
        assert made.implicit_qubit_permutation() == circuit.implicit_qubit_permutation()
        assert made.n_gates_of_type(kind.SWAP) == 0
        assert np.allclose(circuit.get_unitary(), made.get_unitary())


def test_every_gate_keeps_its_phase(tket):
    from zeltbraidwerk import Circuit, _interop_pytket

    for name in (*_interop_pytket._KNOWN, "TK1", "Phase"):
        for qubits in range(4):
            for angles in range(4):
                circuit = tket.Circuit(3)
                turns = [0.13, 0.27, 0.41][:angles]
                try:
                    circuit.add_gate(getattr(tket.OpType, name), turns, [2, 0, 1][:qubits])
                except (RuntimeError, IndexError):  # other numbers
                    continue
                found = _interop_pytket.read_labelled(circuit)
                written = Circuit.from_pytket(circuit).to_pytket()
                written.add_phase(_interop_pytket.missing_phase(found))
                assert np.allclose(circuit.get_unitary(), written.get_unitary()), name


def test_bits_measurements_and_conditions_stay(tket):
    from zeltbraidwerk.pytket import optimize_pass

    circuit = named(tket)
    m, bit = circuit.add_c_register("m", 2), tket.Bit("z", 3)
    circuit.add_bit(bit)
    a, b = (circuit.get_q_register(name) for name in "ab")
    circuit.Measure(a[0], m[1])
    circuit.X(b[1], condition=bit)
    circuit.CX(a[1], b[1]).Measure(b[0], bit)
    made = circuit.copy()
    assert optimize_pass(seed=1, steps=2000).apply(made)
    assert made.qubits == circuit.qubits
    assert set(made.bits) == set(circuit.bits)

    def kept(of):
        return [
            (c.op.type.name, c.args) for c in of if c.op.type.name in ("Measure", "Conditional")
        ]

    assert sorted(kept(made)) == sorted(kept(circuit))


def test_on_an_architecture_gates_stay_on_edges(tket):
    from pytket.architecture import Architecture
    from pytket.passes import AutoRebase, DecomposeBoxes, DefaultMappingPass
    from pytket.predicates import ConnectivityPredicate

    from zeltbraidwerk.pytket import optimize_pass

    line = Architecture([(5, 2), (2, 7), (7, 3)])
    circuit = named(tket)
    DecomposeBoxes().apply(circuit)
    AutoRebase({tket.OpType.CX, tket.OpType.TK1}).apply(circuit)
    DefaultMappingPass(line).apply(circuit)
    made = circuit.copy()
    assert optimize_pass(architecture=line, seed=1, steps=5000).apply(made)
    assert made.n_2qb_gates() < circuit.n_2qb_gates()
    assert ConnectivityPredicate(line).verify(made)
    assert same(circuit.get_unitary(), made.get_unitary())


def test_what_cannot_become_shorter_or_be_read_stays(tket):
    from sympy import Symbol, sin

    from zeltbraidwerk import errors
    from zeltbraidwerk.pytket import optimize_pass

    short = tket.Circuit(2).ZZPhase(0.3, 0, 1)
    strange = tket.Circuit(2).Rx(sin(Symbol("a")), 0).CX(0, 1).CX(0, 1)
    for circuit in (short, strange, tket.Circuit()):
        made = circuit.copy()
        optimize_pass(seed=1, steps=500).apply(made)
        assert made == circuit
    with pytest.raises(errors.OptionError, match="steps"):
        optimize_pass(steps=-1)
    with pytest.raises(TypeError, match="architecture"):
        optimize_pass(architecture=[(0, 1)])


def test_symbols_are_the_callers(tket):
    from sympy import Symbol

    from zeltbraidwerk.pytket import optimize_pass

    a = Symbol("a")
    circuit = tket.Circuit(3).CX(0, 1).Rz(2 * a, 1).CX(0, 1).CX(0, 1).Rz(a + 0.25, 1).CX(0, 1)
    circuit.CX(2, 0)
    made = circuit.copy()
    assert optimize_pass(seed=1, steps=500).apply(made)
    assert made.n_2qb_gates() == 3
    for each in (circuit, made):
        each.symbol_substitution({a: 0.37})
    assert same(circuit.get_unitary(), made.get_unitary())


def test_examples(tket):
    from zeltbraidwerk.pytket import _pass

    assert doctest.testmod(_pass).failed == 0


def test_without_pytket_one_line_tells_what_to_install():
    code = "import sys; sys.modules['pytket'] = None; import zeltbraidwerk.pytket"
    done = subprocess.run([sys.executable, "-c", code], capture_output=True, text=True, check=False)
    assert "MissingPackageError: zeltbraidwerk.pytket needs the package pytket" in done.stderr

"""The plugins of Qiskit's transpiler, by the matrices and flows of Qiskit."""

import doctest
import subprocess
import sys

import numpy as np
import pytest

from zeltbraidwerk import errors

RING = [(1, 0), (1, 2), (3, 2), (3, 4), (4, 5), (0, 5)]  # of six qubits, each edge in one direction
BASIS = ["cx", "rz", "sx", "x"]


@pytest.fixture
def qk(qiskit):
    """Qiskit, with its plugins found."""
    return qiskit


def layers(circuit):
    return circuit.depth(lambda gate: len(gate.qubits) > 1)


def two_qubit(circuit):
    return sum(len(each.qubits) == 2 for each in circuit.data if each.name != "barrier")


def matrix(circuit):
    """On the qubits of the source, wherever they were placed and ended; idle ones have index 0."""
    from qiskit.quantum_info import Operator

    return Operator.from_circuit(circuit).data


def bound(circuit):
    return circuit.assign_parameters({p: 0.3 + 0.1 * k for k, p in enumerate(circuit.parameters)})


def evolutions():
    """Products with letters, weights and angles that are all different."""
    from qiskit.circuit import Parameter
    from qiskit.circuit.library import PauliEvolutionGate
    from qiskit.quantum_info import SparsePauliOp
    from qiskit.synthesis import LieTrotter, SuzukiTrotter

    t, u = Parameter("t"), Parameter("u")
    terms = SparsePauliOp(["XYZI", "ZZII", "IIXX", "IIII", "YIIZ"], [0.3, -0.4, 0.7, 0.25, 0.11])
    for time in (0.37, np.pi / 4, t, 2 * t - u / 3 + 0.3):
        for formula in (LieTrotter(), LieTrotter(reps=2), SuzukiTrotter(order=2)):
            yield PauliEvolutionGate(terms, time, synthesis=formula)


def objects(qiskit):
    """Objects that are not their own inverse, transpose or mirror image, each with its plugin and
    a circuit for it."""
    from qiskit.circuit.library import LinearFunction, PermutationGate
    from qiskit.quantum_info import random_clifford

    from zeltbraidwerk import qiskit as plugins

    def alone(gate):
        circuit = qiskit.QuantumCircuit(gate.num_qubits)
        circuit.append(gate, range(gate.num_qubits))
        return circuit

    linear = LinearFunction([[1, 1, 0, 0], [0, 1, 0, 1], [1, 0, 1, 0], [0, 0, 0, 1]])
    clifford = random_clifford(4, seed=3)
    yield plugins.CliffordSynthesis, clifford, clifford.to_circuit()
    yield plugins.LinearFunctionSynthesis, linear, alone(linear)
    permutation = PermutationGate([2, 0, 3, 1])
    yield plugins.PermutationSynthesis, permutation, alone(permutation)
    for gate in evolutions():
        yield plugins.PauliEvolutionSynthesis, gate, gate.definition


def fits(circuit, edges):
    """In the direction of the edges."""
    found = [tuple(circuit.find_bit(q).index for q in each.qubits) for each in circuit.data]
    return {on for on in found if len(on) > 1} <= set(edges)


def test_each_object_is_what_qiskit_says_it_is(qk):
    from qiskit.transpiler import CouplingMap, Target

    from zeltbraidwerk.qiskit._cost import cost

    path = [(1, 0), (1, 2), (3, 2)]  # the edges on these qubits of the ring
    asked = {"coupling_map": CouplingMap(RING), "qubits": (0, 1, 2, 3)}
    everywhere = Target.from_configuration(BASIS, 6)
    for plugin, wanted, circuit in objects(qk):
        expected = matrix(bound(circuit))
        found = {}
        for name, where in (
            ("free", {}), ("on edges", asked), ("target", asked | {"target": everywhere})
        ):  # fmt: skip
            found[name] = made = plugin().run(wanted, seed=1, steps=2000, **where)
            assert made.parameters == circuit.parameters
            overlap = np.vdot(matrix(bound(made)), expected) / 16
            # A Clifford operator has no phase; all others keep theirs.
            wrong = abs(overlap) if plugin.__name__.startswith("Clifford") else overlap
            assert wrong == pytest.approx(1), (name, wanted)
            assert name != "on edges" or fits(made, path)
        default = plugin()._default(wanted, None, None, None, {})
        ours, theirs = (cost(each, "count") for each in (found["free"], default))
        assert ours[0] <= theirs[0]
        assert ours[1] <= theirs[1]
        for by in ("count", "depth"):
            made = plugin().run(wanted, seed=1, steps=2000, objective=by)
            assert cost(made, by)[0] <= cost(default, by)[0], (by, wanted)
        assert cost(found["target"], "count") == cost(found["free"], "count")


def test_what_a_plugin_cannot_do_is_none_and_unknown_options_are_refused(qk):
    from qiskit.circuit.library import PauliEvolutionGate
    from qiskit.quantum_info import SparseObservable, SparsePauliOp, random_clifford
    from qiskit.synthesis import LieTrotter
    from qiskit.transpiler import CouplingMap

    from zeltbraidwerk import qiskit as plugins

    apart = {"coupling_map": CouplingMap([(0, 1), (2, 3)]), "qubits": (0, 1, 2, 3)}
    clifford = random_clifford(4, seed=3)
    assert plugins.CliffordSynthesis().run(clifford, **apart) is None
    assert plugins.CliffordSynthesis().run("a circuit") is None
    make, given = plugins.PauliEvolutionSynthesis(), {"device": None, "options": {}}
    projector = PauliEvolutionGate(SparseObservable("1XZ"), 0.3)
    barriers = PauliEvolutionGate(SparsePauliOp(["XX", "ZZ"]), 1, synthesis=LieTrotter(1, True))
    for gate in (projector, barriers):
        assert make._synthesized(gate, **given) is None
    for options, match in (
        ({"sede": 1}, "sede: not an option of zeltbraidwerk for clifford, wanted one of obj"),
        ({"preserve_order": True}, "preserve_order: not an option"),
        ({"objective": "size"}, "objective: got 'size'"),
        ({"steps": -1}, "steps: got -1"),
    ):
        with pytest.raises(errors.OptionError, match=match):
            plugins.CliffordSynthesis().run(clifford, **options)
    with pytest.raises(errors.DtypeError, match=r"target: got CouplingMap.*, wanted a Target"):
        plugins.Optimize(target=apart["coupling_map"])


def test_all_objects_through_transpile(qk):
    """The names are found by Qiskit; one circuit holds all objects on qubits out of order."""
    from qiskit.transpiler.passes.synthesis.high_level_synthesis import HLSConfig

    circuit = qk.QuantumCircuit(4)
    some = list(objects(qk))
    for k, (_, wanted, _) in enumerate([*some[:4], some[10]]):
        circuit.append(wanted, [(1, 3, 2, 0), (3, 1, 0, 2)][k % 2])
    ours = ("zeltbraidwerk", {"seed": 1, "steps": 2000})
    config = HLSConfig(
        clifford=[ours], linear_function=[ours], permutation=[ours], PauliEvolution=[ours]
    )
    plain, made = (
        qk.transpile(circuit, basis_gates=BASIS, optimization_level=1, hls_config=hls)
        for hls in (None, config)
    )
    assert made.parameters == circuit.parameters
    assert abs(np.vdot(matrix(bound(plain)), matrix(bound(made)))) / 16 == pytest.approx(1)
    assert two_qubit(made) < two_qubit(plain)


# --- whole circuits -----------------------------------------------------------------------------


def dynamic(qk):
    """Named registers, measurements in the middle, and all that is no gate; three blocks of gates
    that can be made shorter."""
    from qiskit.circuit import Gate, Parameter

    a, b = qk.QuantumRegister(2, "a"), qk.QuantumRegister(3, "b")
    c = qk.ClassicalRegister(3, "c")
    circuit = qk.QuantumCircuit(a, b, c, name="dynamic", metadata={"kept": 1}, global_phase=0.4)
    t = Parameter("t")

    def block(x, y, z):
        for _ in range(2):
            circuit.ccx(x, y, z)
            circuit.cp(2 * t, x, z)
            circuit.u(t / 3, 0.3, t, y)
            circuit.ecr(y, z)
            circuit.cp(-2 * t, x, z)

    block(a[0], b[2], b[1])
    circuit.measure(a[0], c[0])
    with circuit.if_test((c[0], 1)):
        circuit.x(b[0])
    block(b[1], a[1], b[2])
    circuit.barrier(b)
    circuit.append(Gate("opaque", 2, []), [b[0], a[1]])
    circuit.delay(100, b[0])
    block(b[0], b[1], b[2])
    circuit.measure(b, c)
    return circuit


def test_a_pass_changes_gates_alone(qk):
    from zeltbraidwerk.qiskit import Optimize

    source = dynamic(qk)
    made = Optimize(seed=1, steps=6000)(source)
    assert (made.qregs, made.cregs, made.name) == (source.qregs, source.cregs, source.name)
    assert (made.metadata, made.parameters) == (source.metadata, source.parameters)
    others = ("measure", "if_else", "barrier", "opaque", "delay")
    before, after = (
        sorted(str((each.name, each.qubits, each.clbits)) for each in circuit.data
               if each.name in others)
        for circuit in (source, made)
    )  # fmt: skip
    assert before == after
    assert two_qubit(made) < two_qubit(source.decompose(["ccx", "cp"], reps=1))


def pieces(circuit):
    """The gates as Qiskit runs them, with each other operation in its place, as a matrix."""
    from qiskit.circuit.library import XGate

    plain = circuit.copy_empty_like()
    for each in circuit.data:
        if each.name == "opaque":
            plain.crx(0.9, *each.qubits)
        elif each.name in ("measure", "if_else"):  # a gate that commutes with nothing before it
            plain.append(XGate().power(0.3), [each.qubits[0]])
        elif each.name not in ("barrier", "delay"):
            plain.append(each)
    plain.remove_final_measurements()
    return matrix(bound(plain))


@pytest.mark.parametrize("most_work", [0, 1e8], ids=["large", "small"])
def test_a_pass_keeps_the_operator_with_its_phase(qk, monkeypatch, most_work):
    """Small circuits are compared by states too, which sets the phase anew."""
    from zeltbraidwerk.qiskit import Optimize, _pass

    monkeypatch.setattr(_pass, "_MOST_WORK", most_work)
    source = dynamic(qk)
    for options in ({}, {"objective": "depth"}, {"objective": "t", "exact": True}):
        made = Optimize(seed=1, steps=3000, **options)(source)
        np.testing.assert_allclose(pieces(made), pieces(source), atol=1e-8)


def test_gates_are_read_with_their_phase(qk):
    """Every standard gate of Qiskit, alone and with a symbol, and gates that Qiskit takes apart."""
    from qiskit.circuit import Gate, Parameter
    from qiskit.circuit.library import UnitaryGate, get_standard_gate_name_mapping
    from qiskit.quantum_info import random_unitary

    from zeltbraidwerk.qiskit._gates import append
    from zeltbraidwerk.qiskit._pieces import pieces_of

    t = Parameter("t")
    gates = [UnitaryGate(random_unitary(4, seed=2)), next(iter(evolutions()))]
    for gate in get_standard_gate_name_mapping().values():
        if isinstance(gate, Gate) and gate.num_qubits:
            angles = [0.3 + 0.2 * k for k in range(len(gate.params))]
            gates.append(gate.base_class(*angles))
            if angles and gate.name not in ("xx_minus_yy", "xx_plus_yy"):
                gates.append(gate.base_class(*(angle * t for angle in angles)))
    assert len(gates) > 60
    for gate in gates:
        circuit = qk.QuantumCircuit(gate.num_qubits + 1)
        circuit.append(gate, range(gate.num_qubits, 0, -1))
        (piece,) = pieces_of(circuit)
        made = qk.QuantumCircuit(circuit.num_qubits, global_phase=piece.phase + piece.number)
        append(made, piece.gates, piece.symbols)
        if gate.name == "PauliEvolution":
            circuit = circuit.decompose()
        np.testing.assert_allclose(
            matrix(bound(made)), matrix(bound(circuit)), atol=1e-9, err_msg=str(gate)
        )


def test_a_pass_keeps_to_the_edges_that_a_circuit_is_on(qk):
    from qiskit.transpiler import CouplingMap

    from zeltbraidwerk.qiskit import Optimize

    edges = [(a, b) for pair in RING for a, b in (pair, pair[::-1])]
    circuit = qk.QuantumCircuit(8)  # two blocks of qubits that no edge joins, and an idle qubit
    coupling = CouplingMap([*edges, (6, 7), (7, 6)])
    for a, b in 4 * [(0, 1), (1, 2), (0, 1), (3, 4), (1, 2), (6, 7), (7, 6)]:
        circuit.cx(a, b)
        circuit.t(b)
    made = Optimize(coupling_map=coupling, seed=1, steps=3000)(circuit)
    assert two_qubit(made) < two_qubit(circuit)
    assert fits(made, coupling.get_edges())
    np.testing.assert_allclose(matrix(made), matrix(circuit), atol=1e-8)
    circuit.cx(0, 4)  # on no edge: not placed yet
    made = Optimize(coupling_map=coupling, seed=1, steps=3000)(circuit)
    np.testing.assert_allclose(matrix(made), matrix(circuit), atol=1e-8)


TOFFOLIS = """OPENQASM 2.0; include "qelib1.inc"; qreg q[4]; creg c[2];
ccx q[0],q[1],q[2]; rz(0.3) q[1]; ccx q[1],q[2],q[3]; crx(0.7) q[3],q[0]; ccx q[0],q[1],q[2];
swap q[1],q[3]; ccx q[3],q[0],q[2];
"""


@pytest.mark.parametrize("basis", [BASIS, ["ecr", "rz", "sx", "x"], ["rzz", "rz", "sx", "x"]])
def test_the_stage_is_never_worse_than_without(qk, basis):
    """Edges, their direction and the gates of the target hold, and the operator with the layout
    and the permutation of the routing."""
    from qiskit.transpiler import CouplingMap, generate_preset_pass_manager

    source = qk.QuantumCircuit.from_qasm_str(TOFFOLIS)
    directed = RING if basis[0] != "rzz" else [(a, b) for p in RING for a, b in (p, p[::-1])]
    fewer = 0
    for edges, level in ((None, 1), (directed, 1), (directed, 3), (None, 0)):
        options = {
            "basis_gates": basis, "seed_transpiler": 5, "optimization_level": level,
            "coupling_map": None if edges is None else CouplingMap(edges),
        }  # fmt: skip
        plain, made = (
            generate_preset_pass_manager(optimization_method=method, **options).run(source)
            for method in ("default", "zeltbraidwerk")
        )
        assert {each.name for each in made.data} <= set(basis)
        assert edges is None or fits(made, edges)
        assert two_qubit(made) <= two_qubit(plain)
        assert layers(made) <= layers(plain)
        fewer += two_qubit(made) < two_qubit(plain)
        n = made.num_qubits - source.num_qubits
        idle = qk.QuantumCircuit(*source.qregs, qk.QuantumRegister(n, "idle")) if n else source
        wanted = matrix(idle.compose(source, source.qubits) if n else source)
        np.testing.assert_allclose(matrix(made), wanted, atol=1e-7)
    assert fewer >= 2


def test_a_circuit_with_everything_through_transpile(qk):
    """Cut at what is no gate; a stage that fails leaves the circuit to Qiskit's own."""
    from qiskit.transpiler import CouplingMap

    source = dynamic(qk)
    source.data = [each for each in source.data if each.name != "opaque"]
    options = {"basis_gates": BASIS, "coupling_map": CouplingMap(RING), "seed_transpiler": 5}
    plain, made = (
        qk.transpile(source, optimization_level=1, optimization_method=method, **options)
        for method in (None, "zeltbraidwerk")
    )
    assert two_qubit(made) < two_qubit(plain)
    assert [made.count_ops()[name] for name in ("measure", "if_else", "barrier", "delay")] == [
        plain.count_ops()[name] for name in ("measure", "if_else", "barrier", "delay")
    ]
    assert (made.cregs, made.parameters) == (source.cregs, source.parameters)
    clifford_t = qk.QuantumCircuit(3)
    clifford_t.ccx(0, 1, 2)
    clifford_t.ccx(1, 0, 2)
    for level in (1, 2):
        made = qk.transpile(
            clifford_t, basis_gates=["cx", "h", "t", "tdg", "s", "sdg", "x"], seed_transpiler=1,
            optimization_level=level, optimization_method="zeltbraidwerk",
        )  # fmt: skip
        assert abs(np.trace(matrix(made))) == pytest.approx(8)


def test_examples(qk):
    from zeltbraidwerk.qiskit import _pass

    assert doctest.testmod(_pass).failed == 0


def test_without_qiskit_one_line_tells_what_to_install():
    code = "import sys; sys.modules['qiskit'] = None; import zeltbraidwerk.qiskit"
    done = subprocess.run([sys.executable, "-c", code], capture_output=True, text=True, check=False)
    assert done.stderr.splitlines()[-1].endswith(
        "MissingPackageError: zeltbraidwerk.qiskit needs the package qiskit: pip install qiskit, "
        "or pip install 'zeltbraidwerk[interop]'"
    )

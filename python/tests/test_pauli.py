"""Pauli rotations against dense unitaries, against other packages, and at their edges."""

import math

import numpy as np
import pytest
from support import (
    assert_means,
    gate_matrix,
    letters_matrix,
    means,
    replaced,
    rotation_matrix,
    same_up_to_phase,
    spoilt,
    unitary,
)

import zeltbraidwerk as zb
from zeltbraidwerk import Parameter, core, errors, gallery, pauli


def product(listed):
    """The first acts first."""
    whole = np.eye(2 ** len(listed[0][0].lstrip("+-")))
    for string, angle in listed:
        whole = rotation_matrix(string, angle) @ whole
    return whole


def test_verification_finds_faults():
    given = [("XX", 0.5), ("ZI", "a"), ("YY", 0.25)]
    result = pauli.synthesize(given, tail="return", method="greedy")
    assert result.verify()
    for circuit in spoilt(result.circuit):
        assert not replaced(result, circuit=circuit).verify()
    assert not replaced(result, rotations=result.rotations[::-1]).verify()
    assert not replaced(result, tail_option="close").verify()
    assert not replaced(result, rotations=result.rotations[:2]).verify()


def evolved(gates, state):
    """The state after gates, or after pairs of a Pauli string and an angle."""
    n = len(state).bit_length() - 1
    for gate in gates:
        matrix = gate_matrix(gate, n) if isinstance(gate, zb.Gate) else rotation_matrix(*gate)
        state = matrix @ state
    return state


def test_a_layer_of_qaoa_keeps_its_energy():
    strings = gallery.maxcut(6)
    edges = [string for string in strings if "Z" in string]
    layer = [(string, 0.6 if "Z" in string else 0.8) for string in strings]
    start = np.full(64, 1 / 8)

    def energy(state):
        return sum(np.vdot(state, letters_matrix(edge) @ state).real for edge in edges)

    wanted = energy(evolved(layer, start))
    assert abs(wanted) > 2
    for options in ({}, {"objective": "depth"}, {"device": zb.Device.grid(2, 3)}):
        result = pauli.synthesize(layer, seed=1, steps=2000, **options)
        assert result.verify()
        assert result.order == "commuting"
        assert np.isclose(energy(evolved(result.circuit, start)), wanted)
    # In any order, as asked for by name, the energy is another one, which is why.
    free = pauli.synthesize(layer, order="free", method="search", seed=1, steps=2000)
    assert free.order == "free"
    assert free.verify()
    assert not np.isclose(energy(evolved(free.circuit, start)), wanted)
    assert not replaced(free, order="commuting").verify()


def test_angles_of_equal_strings():
    def angles(given, **options):
        return [float(angle) for _, angle in pauli.synthesize(given, **options).rotations]

    steps = 3 * [("ZZ", 0.1), ("XI", 0.2)]
    assert angles(steps) == [0.1, 0.2, 0.1, 0.2, 0.1, 0.2]
    with pytest.raises(errors.OptionError, match=r"got ZZ again after XI.*repeated='merge'"):
        pauli.synthesize(steps, order="free")
    assert np.allclose(angles(steps, order="free", repeated="merge"), [0.3, 0.6])
    # Nothing between that does not commute: added either way, across other strings and itself.
    meeting = [("ZZ", 6.0), ("XX", 1.0), ("-ZZ", -6.0), ("xx", 2.0), ("+ZZ", 0.5), ("XI", 1.0)]
    assert angles(meeting) == angles(meeting, order="free") == [12.5, 3.0, 1.0]
    # Of a mapping, which has no order, always.
    mapping = {"-XI": 0.25, "ZI": 0.5, "X_": 1.0, "Z_": 0.25, "XI": 2.0}
    assert angles(mapping, order="free") == [2.75, 0.75]
    assert angles(mapping | {"ZI": 0.5, "Z_": -0.5}, order="free") == [2.75, 0.0]


def test_long_lists_keep_their_order():
    """Longer than what is looked at together."""
    rows = [format(k, "012b").translate({48: "I", 49: "Z"}) for k in range(1, 3000)]
    listed = [(row, 1.0) for row in rows]
    options = {"method": "search", "steps": 0}
    twice = pauli.synthesize(listed + listed, **options)
    assert [float(angle) for _, angle in twice.rotations] == len(rows) * [2.0]
    mixer = ("X" + 11 * "I", 1.0)  # does not commute with rows from 2048 on
    both = pauli.synthesize([*listed, mixer, *listed], method="recursive")
    assert len(both.rotations) == len(rows) + 1 + 3000 - 2048
    assert both.verify()
    others = [rotation for rotation in both.rotations if rotation[0] != mixer[0]]
    assert not replaced(both, rotations=(*others, (mixer[0], Parameter(1.0)))).verify()


def test_what_has_no_order_is_refused_where_it_matters():
    info = pytest.importorskip("qiskit.quantum_info")
    pytest.importorskip("pytket")
    from pytket.circuit import Qubit
    from pytket.pauli import Pauli, QubitPauliString
    from pytket.utils import QubitPauliOperator

    def of_pytket(*words):
        terms = [{Qubit(q): Pauli[p] for q, p in enumerate(word)} for word in words]
        return QubitPauliOperator({QubitPauliString(term): 0.5 for term in terms})

    for clashing, commuting, name in (
        ({"XI": 0.5, "ZZ": 0.5}, {"XX": 0.5, "ZZ": 0.5}, "a mapping"),
        ({"XI": 0.5, "ZZ": 0.5}.items(), {"XX": 0.5, "ZZ": 0.5}.items(), "a mapping"),
        (info.SparsePauliOp(["IX", "ZZ"]), info.SparsePauliOp(["XX", "ZZ"]), "a SparsePauliOp"),
        (of_pytket("XI", "ZZ"), of_pytket("XX", "ZZ"), "a QubitPauliOperator"),
    ):
        with pytest.raises(
            errors.OptionError, match=rf"order: .*for {name}.*(XI and ZZ|ZZ and XI)"
        ):
            pauli.synthesize(clashing)
        assert pauli.synthesize(clashing, order="free").verify()
        exact = pauli.synthesize(commuting)
        assert exact.order == "commuting"
        assert exact.verify()


def test_readout_gives_the_same_values_as_the_observables():
    listed = [("XXI", 0.4), ("IYZ", 1.1), ("ZZZ", -0.7), ("YIX", 0.2)]
    observables = ["ZZI", "-XXI", "YYX"]
    for tail in ("return", "close"):
        result = pauli.synthesize(listed, tail=tail, method="recursive")
        wanted = means(product(listed)[:, 0], observables)
        assert_means(result, observables, wanted)
        absorbed = result.absorb(dict(zip(observables, (1.0, 2.0, 4.0), strict=True)))
        found = means(unitary(result.circuit)[:, 0], absorbed)
        assert np.isclose(np.dot(found, list(absorbed.values())), np.dot(wanted, (1.0, 2.0, 4.0)))


def test_methods_end_in_the_given_operator_in_all_their_runs():
    """Later runs rename the qubits."""
    listed = [("XXI", 0.4), ("IYZ", 1.1), ("ZZZ", -0.7), ("YIX", 0.2)]
    tail = zb.Circuit(3, [zb.Gate.h(0), zb.Gate.s(1), zb.Gate.cnot(0, 2), zb.Gate.cnot(2, 1)])
    wanted = unitary(tail) @ product(listed)
    for method in pauli.methods()[2:-1]:
        for seed in range(8):
            found = pauli.synthesize(
                listed, method=method, tail=zb.CliffordTableau.from_circuit(tail), restarts=4,
                seed=seed,
            )  # fmt: skip
            assert same_up_to_phase(unitary(found.circuit), wanted), (method, seed)


def test_strings_that_clash_have_no_common_basis():
    assert pauli.codiagonalize(["-XX", "ZZ"], device=zb.Device.line(3)).verify()
    with pytest.raises(errors.PauliError, match="commute pairwise"):
        pauli.codiagonalize(["XX", "ZI"])


def codes(letters):
    return ["IXYZ".index(letter) for letter in letters]


def test_forms_of_rotations():
    forms = [
        {"XYI": 0.5, "-IZZ": "a"},
        [("XYI", 0.5), ((0, 3, 3), "UMINUS a")],
        (["+XYI", "_ZZ"], [0.5, "UMINUS a"]),
        (np.array([[1, 2, 0], [0, 3, 3]], dtype=np.uint8), [0.5, "UMINUS a"]),
    ]
    stim = pytest.importorskip("stim")
    forms.append([(stim.PauliString("XY_"), 0.5), (stim.PauliString("-_ZZ"), "a")])
    read = [pauli.synthesize(form, order="free", method="ladder").rotations for form in forms]
    assert all(each == read[0] for each in read)
    with pytest.raises(errors.PauliError, match="wanted the sign"):
        pauli.synthesize([(stim.PauliString("iX"), 0.5)])


HAMILTONIANS = [
    (["XXIY", "IYYI", "ZIZX", "IIII", "YIIZ"], [0.3, -0.2, 0.7, 0.4, -0.15], 0.9),
    (["IIXZ", "ZYII", "IXIY", "IXIY"], [-0.6, 0.35, 0.2, 0.5], -0.4),
]


@pytest.mark.parametrize("kept", [True, False])
@pytest.mark.parametrize("kind", ["lie 1", "lie 3", "suzuki 2", "suzuki 4", "grouped", "drift"])
@pytest.mark.parametrize(("labels", "weights", "time"), HAMILTONIANS)
def test_an_evolution_gate_of_qiskit_is_its_own_circuit(labels, weights, time, kind, kept):
    info = pytest.importorskip("qiskit.quantum_info")
    library = pytest.importorskip("qiskit.circuit.library")
    synthesis = pytest.importorskip("qiskit.synthesis")
    name, _, number = kind.partition(" ")
    formula = {
        "lie": lambda: synthesis.LieTrotter(int(number), preserve_order=kept),
        "suzuki": lambda: synthesis.SuzukiTrotter(int(number), reps=2, preserve_order=kept),
        "grouped": lambda: synthesis.LieTrotter(2, preserve_order=kept),
        "drift": lambda: synthesis.QDrift(2, seed=5, preserve_order=kept),
    }[name]
    operator = info.SparsePauliOp(labels, weights)
    if name == "grouped":
        operator = operator.group_commuting()

    def gate():
        return library.PauliEvolutionGate(operator, time, synthesis=formula())

    result = pauli.synthesize(gate(), method="greedy", seed=1)
    assert result.verify()
    # A draw of QDrift comes again from a new object with the same seed.
    theirs = info.Operator(gate().definition).reverse_qargs().data
    assert same_up_to_phase(unitary(result.circuit), theirs)
    assert same_up_to_phase(product(listed(result)), theirs)


def test_operators_of_qiskit():
    info = pytest.importorskip("qiskit.quantum_info")
    library = pytest.importorskip("qiskit.circuit.library")
    synthesis = pytest.importorskip("qiskit.synthesis")
    operator = info.SparsePauliOp(["XXI", "IYY", "ZIZ"], [0.3, -0.2, 0.7])
    terms = pauli.synthesize(operator, order="free", method="ladder").rotations
    assert terms == (("IXX", 0.6), ("YYI", -0.4), ("ZIZ", 1.4))
    gate = library.PauliEvolutionGate(operator, synthesis=synthesis.MatrixExponential())
    with pytest.raises(errors.OptionError, match="MatrixExponential, which is not a product"):
        pauli.synthesize(gate)
    steps = library.PauliEvolutionGate(operator, synthesis=synthesis.LieTrotter(3))
    with pytest.raises(errors.OptionError, match="again after"):
        pauli.synthesize(steps, order="free")
    merged = pauli.synthesize(steps, order="free", repeated="merge", method="ladder").rotations
    assert [string for string, _ in merged] == [string for string, _ in terms]
    time = pytest.importorskip("qiskit.circuit").Parameter("t")
    timed = pauli.synthesize(library.PauliEvolutionGate(operator, time / 2), method="ladder")
    plain = pauli.synthesize(library.PauliEvolutionGate(operator, 0.25), method="ladder")
    assert timed.circuit.bind({time: 0.5}) == plain.circuit
    assert set(timed.circuit.to_qiskit().parameters) == {time}
    with pytest.raises(errors.AngleError, match=r"rotations: got '.*t\*\*2"):
        pauli.synthesize(library.PauliEvolutionGate(operator, time**2))
    nothing = library.PauliEvolutionGate(operator, 0, synthesis=synthesis.QDrift())
    assert pauli.synthesize(nothing).circuit == zb.Circuit(3)
    with pytest.raises(errors.AngleError, match="real number"):
        pauli.synthesize(operator * 1j, order="free")
    assert pauli.codiagonalize([info.Pauli("-XXI"), info.Pauli("ZZI")]).strings == ("-IXX", "+IZZ")
    long = pauli.partition([info.Pauli("X" + 69 * "I")])
    assert long == [[69 * "I" + "X"]]


def test_rotations_of_pytket():
    pytest.importorskip("pytket")
    import sympy
    from pytket.circuit import Circuit, Qubit
    from pytket.pauli import Pauli, QubitPauliString
    from pytket.utils import QubitPauliOperator, gen_term_sequence_circuit

    terms = {
        QubitPauliString({Qubit(0): Pauli.X, Qubit(2): Pauli.Y}): 0.3,
        QubitPauliString({Qubit(1): Pauli.Z, Qubit(0): Pauli.Z}): -0.45,
    }
    operator = QubitPauliOperator(terms)
    result = pauli.synthesize(operator, order="free")
    theirs = gen_term_sequence_circuit(operator, Circuit(3)).get_unitary()
    orders = [product(order) for order in (listed(result), listed(result)[::-1])]
    assert any(same_up_to_phase(theirs, order) for order in orders)
    assert any(same_up_to_phase(unitary(result.circuit), order) for order in orders)
    for power in (1, 2):
        operator = QubitPauliOperator({string: sympy.Symbol("a") ** power for string in terms})
        if power == 1:
            angles = {angle for _, angle in pauli.synthesize(operator, order="free").rotations}
            assert angles == {math.pi * Parameter("a")}
            continue
        with pytest.raises(errors.AngleError, match=r"got 'a\*\*2', wanted a number"):
            pauli.synthesize(operator, order="free")


def listed(result):
    return [(string, float(angle)) for string, angle in result.rotations]


def test_edges():
    empty = pauli.synthesize({})
    assert (empty.circuit, empty.tail) == (zb.Circuit(0), None)
    assert pauli.synthesize({}, n=3, tail="return").tail == zb.CliffordTableau(3)
    result = pauli.synthesize({"II": 0.5, "-II": "a", "ZI": 1.0}, method="greedy")
    assert result.identity_angle == Parameter(0.5) + -Parameter("a")
    assert result.rotations == (("ZI", Parameter(1.0)),)
    assert pauli.partition([]) == []
    assert pauli.codiagonalize([]).verify()


def test_uccsd_is_the_exponential_of_its_excitations():
    sizes = {(4, 2): (12, 64), (12, 4): (640, 6976), (16, 10): (2340, 31760)}
    for arguments, (strings, cnots) in sizes.items():
        ansatz = gallery.uccsd(*arguments)
        assert len(ansatz) == strings
        assert pauli.synthesize(ansatz, order="free", method="ladder").count == cnots

    def lowering(q, n=4):
        string = "Z" * q + "{}" + "I" * (n - q - 1)
        return (letters_matrix(string.format("X")) + 1j * letters_matrix(string.format("Y"))) / 2

    a = [lowering(q) for q in range(4)]
    raises = [m.conj().T for m in a]
    assert np.allclose(a[0] @ raises[1] + raises[1] @ a[0], 0)
    excitations = [raises[2] @ a[0], raises[3] @ a[1], raises[2] @ raises[3] @ a[1] @ a[0]]
    amplitudes = [0.3, -0.8, 0.5]
    wanted = np.eye(16)
    for t, amplitude in zip(excitations, amplitudes, strict=True):
        values, vectors = np.linalg.eigh(1j * (t - t.conj().T))
        turn = vectors @ np.diag(np.exp(-1j * amplitude * values)) @ vectors.conj().T
        wanted = turn @ wanted
    ansatz = gallery.uccsd(4, 2, amplitudes)
    assert np.allclose(product(list(ansatz.items())), wanted)


def test_core_functions_agree_with_the_package():
    ansatz = gallery.uccsd(4, 2)
    keyed = {tuple(codes(string)): Parameter(f"a{k}").to_core() for k, string in enumerate(ansatz)}
    circuit, tableau = core.greedy_pauli_synth(keyed, core.OperatorTableau(4))
    names = {string: f"a{k}" for k, string in enumerate(ansatz)}
    ours = pauli.synthesize(names, order="free", method="greedy", tail="return")
    assert zb.Circuit.from_core(4, circuit) == ours.circuit
    assert zb.CliffordTableau.from_core(tableau) == ours.clifford
    tail = zb.Circuit.from_core(4, core.clifford_circuit(tableau))
    assert zb.CliffordTableau.from_circuit(tail) == ours.tail
    circuit, tableau = core.pauli_synth(keyed, core.OperatorTableau(4))
    recursive = pauli.synthesize(names, order="free", method="recursive", tail="return")
    assert zb.Circuit.from_core(4, circuit) == recursive.circuit
    closed = zb.Circuit.from_core(4, core.commute_pauli_synth(keyed, 0))
    assert closed == pauli.synthesize(names, order="free", method="sets_closed").circuit


def test_steps_of_the_core():
    params = [core.Parameter(1.0), core.Parameter(2.0)]
    table, angles, circuit = core.bring_to_z([[2, 1], [1, 3]], params, 0, 2)
    assert (table, [gate.name for gate in circuit]) == ([[3, 1], [1, 3]], ["RX"])
    table, angles, circuit = core.apply_cnot(table, angles, 0, 1)
    again, flipped = core.conjugate_table_with_circuit(circuit, table, angles)
    assert again == [[3, 1], [1, 3]]
    assert flipped == params
    assert core.find_common_pauli([[0, 1], [3, 1]], 1) == 1
    assert core.weight_sort([[1, 1], [0, 1]], params) == ([[0, 1], [1, 1]], params[::-1])
    table, _, active, circuit = core.update_single_qubits([[1, 3]], params[:1], {0, 1})
    assert (table, active, len(circuit)) == ([[3, 3]], set(), 1)
    assert core.coloration_lf([[0, 1], [1, 0]]) == [[1], [0]]
    (move,) = core.find_best_moves([[1, 1], [3, 0]], 2)
    assert {move.control, move.target} == {0, 1}
    with pytest.raises(ValueError, match="got the code 7"):
        core.weight_sort([[7]], params[:1])
    with pytest.raises(IndexError):
        core.bring_to_z([[1]], params[:1], 1, 1)


def test_energies_of_the_gallery():
    for n in range(2, 8):
        listed = gallery.low_autocorrelation(n, 2, gamma=0.5, beta=0.25)
        assert listed[: len(listed) // 2] == listed[len(listed) // 2 :]
        terms = [(s, angle) for s, angle in listed[: len(listed) // 2] if "X" not in s]
        energies = set()
        for bits in range(2**n):
            signs = [1 - 2 * (bits >> q & 1) for q in range(n)]
            sidelobes = [sum(signs[i] * signs[i + k] for i in range(n - k)) for k in range(1, n)]
            found = sum(
                angle * math.prod(signs[q] for q in range(n) if string[q] == "Z")
                for string, angle in terms
            )
            energies.add(sum(c * c for c in sidelobes) - found)
        assert len(energies) == 1  # the constant that was dropped
        assert listed[-n:] == [("I" * q + "X" + "I" * (n - 1 - q), 0.5) for q in range(n)]

    for n, degree in ((1, 0), (4, 3), (7, 4), (10, 9), (20, 12)):
        strings = gallery.maxcut_regular(n, degree, 3)
        assert len(set(strings)) == n * degree // 2 + n
        assert all(sum(s[q] == "Z" for s in strings) == degree for q in range(n))
    assert gallery.maxcut_regular(20, 12) != gallery.maxcut_regular(20, 12, 2)

    grid = [s for s, angle in gallery.heisenberg((2, 3), 2, (1, 0, 0.5)) if angle == 1]
    assert sorted(grid) == sorted(
        2 * ["XXIIII", "IXXIII", "IIIXXI", "IIIIXX", "XIIXII", "IXIIXI", "IIXIIX"]
    )
    assert len(gallery.heisenberg((3, 4, 5))) == 3 * (2 * 4 * 5 + 3 * 3 * 5 + 3 * 4 * 4)
    assert gallery.heisenberg(0) == gallery.ising_chain(0) == gallery.low_autocorrelation(0) == []

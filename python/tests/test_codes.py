"""Encoders of stabilizer codes, checked by Stim; forms of codes; codes of the gallery."""

import itertools

import numpy as np
import pytest

import zeltbraidwerk as zb
from zeltbraidwerk import clifford, errors, gallery

stim = pytest.importorskip("stim")

FIVE = ["XZZXI", "IXZZX", "XIXZZ", "ZXIXZ"]


def pulled_back(result):
    """The map from operators after the circuit to those before it, by Stim."""
    circuit = result.circuit.to_stim()
    circuit.append("I", [result.n - 1])
    return stim.Tableau.from_circuit(circuit).inverse()


def assert_encodes(result, stabilizers, logicals=None):
    """Stim finds the stabilizers, signs included, among the products of Z on wires of zeros, and as
    they are independent they are all; and X and Z on the logical wires up to such products."""
    back, wires = pulled_back(result), result.logical_wires
    assert len(set(wires)) == len(wires) == result.n - len(stabilizers)
    wanted = [("I", 0, each) for each in stabilizers]
    for letter, each in zip("XZ", logicals or result.logicals, strict=True):
        wanted += [(letter, *pair) for pair in zip(wires, each, strict=True)]
    for letter, wire, string in wanted:
        before = back(stim.PauliString(string))
        assert before.sign == 1
        for q in range(result.n):
            own = letter if q == wire else "I"
            assert "IXYZ"[before[q]] in (own if q in wires else "IZ")
    assert result.verify()


def code(n, k, seed):
    """Signed generators and logical operators of a random code, and an operator that encodes."""
    rng = np.random.default_rng(seed)
    circuit = stim.Circuit(f"I {n - 1}")
    for _ in range(3 * n):
        circuit.append(rng.choice(["H", "S", "X", "Z", "SQRT_X"]), [rng.integers(n)])
        if n > 1:
            circuit.append(rng.choice(["CX", "CZ"]), rng.permutation(n)[:2])
    tableau = stim.Tableau.from_circuit(circuit)
    strings = [tableau.z_output(q) for q in range(k, n)]
    for _ in range(n - k):  # other generators
        a, b = rng.integers(n - k, size=2)
        if a != b:
            strings[a] *= strings[b]
    logicals = [tableau.x_output(q) for q in range(k)], [tableau.z_output(q) for q in range(k)]
    return strings, logicals, tableau


@pytest.mark.parametrize(("n", "k"), [(40, 6), (20, 15), (70, 5), (70, 66)])
def test_large_codes_are_shorter_than_the_whole_operator(n, k):
    stabilizers, logicals, operator = code(n, k, n)
    some = stim.Tableau.from_stabilizers(stabilizers, allow_underconstrained=True)
    for wanted, whole in ((None, some), (logicals, operator)):
        plain = clifford.synthesize(whole, permutation="free", seed=1, steps=0)
        result = clifford.synthesize_encoder(stabilizers, wanted, seed=1, steps=500)
        assert_encodes(result, stabilizers, wanted)
        assert result.count < plain.count


# Of the codes of the gallery: the most gates of their encoders.
MOST = {
    "[[4,2,2]]": 4,
    "[[5,1,3]]": 6,
    "[[7,1,3]]": 9,
    "[[8,3,2]]": 11,
    "[[8,3,3]]": 11,
    "[[9,1,3]]": 8,
    "[[15,1,3]]": 24,
    "[[16,6,4]]": 30,
    "surface 3": 9,
    "surface 5": 29,
}
CODES = gallery.stabilizer_codes() | {f"surface {d}": gallery.surface_code(d) for d in (3, 5)}


@pytest.mark.parametrize("name", CODES)
def test_codes_of_the_gallery(name):
    code = CODES[name]
    result = clifford.synthesize_encoder(code, seed=1)
    assert_encodes(result, code)
    assert result.count <= MOST[name]
    if not name.startswith("surface"):
        n, k, d = map(int, name.strip("[]").split(","))
        assert (result.n, result.k) == (n, k)
        assert distance(code, n, d) == d


# n, k, d, and the most gates of an encoder and of the logical 0.
CSS = {
    "steane_code": (gallery.steane_code(), 7, 1, 3, 9, 8),
    "golay_code": (gallery.golay_code(), 23, 1, 7, 47, 45),
    "color_code(5)": (gallery.color_code(5), 19, 1, 5, 28, 27),
    "color_code_17": (gallery.color_code_17(), 17, 1, 5, 24, 23),
    "carbon_code": (gallery.carbon_code(), 12, 2, 4, 18, 16),
    "toric_code(4)": (gallery.toric_code(4), 16, 2, 4, 22, 21),
    "bicycle_code": (gallery.bicycle_code(), 144, 12, 12, 435, 330),
}


@pytest.mark.parametrize("name", CSS)
def test_css_codes_of_the_gallery(name):
    code, n, k, d, encoder, zero = CSS[name]
    assert [checks.shape[1] for checks in code] == [n, n]
    assert sum(map(len, code)) == n - k
    if n < 30:
        assert (css_distance(*code), css_distance(*code[::-1])) == (d, d)
    result = clifford.synthesize_encoder(code, seed=1)
    assert (result.k, result.verify()) == (k, True)
    assert result.count <= encoder
    state = gallery.logical_zero(code)
    result = clifford.synthesize_state(state, seed=1)
    assert result.verify()
    assert result.count <= zero


def test_a_logical_zero_is_one_of_the_code():
    assert len(gallery.logical_zero(gallery.carbon_code())) == 12
    with pytest.raises(errors.PauliError, match="do not commute"):
        gallery.logical_zero(([[1, 0]], [[1, 0]]))
    with pytest.raises(errors.ShapeError, match="H_X and H_Z"):
        gallery.logical_zero([[[1, 1]]])


def css_distance(kind, other):
    """The least weight of an operator of the kind that commutes with the checks of the other kind
    and is no product of checks."""
    n = kind.shape[1]
    others, own = ([int("".join("01"[b] for b in row), 2) for row in m.astype(int)]
                   for m in (other, kind))  # fmt: skip
    products = {0}
    for row in own:
        products |= {row ^ each for each in products}
    for weight in range(1, n + 1):
        for qubits in itertools.combinations(range(n), weight):
            word = sum(1 << q for q in qubits)
            if all((word & row).bit_count() % 2 == 0 for row in others) and word not in products:
                return weight
    return n


def distance(code, n, most):
    """The least weight of an operator that commutes with all generators and is no product."""
    strings = [stim.PauliString(each) for each in code]
    back = stim.Tableau.from_stabilizers(strings, allow_underconstrained=True).inverse()
    for weight in range(1, most + 1):
        for qubits in itertools.combinations(range(n), weight):
            for letters in itertools.product("XYZ", repeat=weight):
                error = stim.PauliString(n)
                for q, letter in zip(qubits, letters, strict=True):
                    error[q] = letter
                if all(error.commutes(each) for each in strings):
                    before = back(error)
                    if any(before[q] for q in range(len(code), n)):
                        return weight
    return most + 1


# The same code in all forms.
STRINGS = ["+XXIII", "+ZZXII", "+IIIYI"]
MATRIX = np.array([
    [1, 1, 0, 0, 0, 0, 0, 0, 0, 0],
    [0, 0, 1, 0, 0, 1, 1, 0, 0, 0],
    [0, 0, 0, 1, 0, 0, 0, 0, 1, 0],
])  # fmt: skip


@pytest.mark.parametrize(
    ("package", "form"),
    [
        ("numpy", lambda _: iter(STRINGS)),
        ("numpy", lambda _: MATRIX),
        ("numpy", lambda _: MATRIX.astype(bool).tolist()),
        ("stim", lambda stim: [stim.PauliString(each) for each in STRINGS]),
        ("qiskit.quantum_info", lambda info: [info.Pauli(each[:0:-1]) for each in STRINGS]),
        (
            "qiskit.quantum_info",
            lambda info: info.PauliList([each[0] + each[:0:-1] for each in STRINGS]),
        ),
        ("scipy.sparse", lambda sparse: sparse.csr_array(MATRIX)),
        ("galois", lambda galois: galois.GF2(MATRIX)),
    ],
)
def test_forms_of_codes(package, form):
    result = clifford.synthesize_encoder(form(pytest.importorskip(package)), seed=1, steps=0)
    assert result.stabilizers == tuple(STRINGS)
    assert_encodes(result, STRINGS)


def test_matrices_of_css_codes():
    h_x, h_z = [[1, 1, 0, 0], [0, 0, 1, 1]], [[1, 1, 1, 1]]
    wanted = ("+XXII", "+IIXX", "+ZZZZ")
    sparse = pytest.importorskip("scipy.sparse")
    for make in (list, np.array, sparse.coo_array, pytest.importorskip("galois").GF2):
        pair = tuple(make(h) for h in (h_x, h_z))
        for logicals in (None, (make([[1, 0, 1, 0]]), make([[1, 1, 0, 0]]))):
            result = clifford.synthesize_encoder(pair, logicals, seed=1, steps=0)
            assert result.stabilizers == wanted
            assert_encodes(result, wanted, logicals and (["XIXI"], ["ZZII"]))
    both = [[1, 0, 1, 0, 1, 1, 0, 0]], [[0, 0, 0, 0, 1, 1, 0, 0]]
    result = clifford.synthesize_encoder((h_x, h_z), both, seed=1, steps=0)
    assert result.logicals == (("+YZXI",), ("+ZZII",))
    assert_encodes(result, wanted, result.logicals)


def test_a_tableau_is_a_state():
    tableau = gallery.random_clifford(4, 1)[0]
    result = clifford.synthesize_encoder(tableau, seed=1, steps=0)
    assert (result.k, result.logicals) == (0, ((), ()))
    assert_encodes(result, tableau.images()[1])


def test_verification_finds_faults():
    result = clifford.synthesize_encoder(FIVE, (["XXXXX"], ["ZZZZZ"]), seed=1)
    wire = result.logical_wires[0]
    zero = (wire + 1) % 5
    changed = [zb.Gate("X", zero), zb.Gate("X", wire), zb.Gate("Z", wire), zb.Gate.h(wire)]
    for gate in changed:
        circuit = zb.Circuit(5, [gate, *result.circuit])
        wrong = type(result)(**{**vars(result), "circuit": circuit})
        assert not wrong.verify(), gate
    fine = zb.Circuit(5, [zb.Gate("Z", zero), zb.Gate.cz(zero, wire), *result.circuit])
    assert type(result)(**{**vars(result), "circuit": fine}).verify()
    moved = type(result)(**{**vars(result), "logical_wires": (zero,)})
    assert not moved.verify()

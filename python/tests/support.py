"""Oracles, generators and inputs that the tests share. None calls the library's own synthesis."""

import numpy as np
from hypothesis import strategies as st

from zeltbraidwerk import Circuit, Gate, core
from zeltbraidwerk.gates import COMPOSED

_LAYER = "".join(
    f"h q[{k}]; cx q[{k}],q[{(k + 4) % 9}]; rz(0.3) q[{(k + 1) % 9}]; t q[{k}];" for k in range(9)
)
LONG_PROGRAM = "qreg q[9];" + 40 * _LAYER


def graph_of(device):
    """As the core takes it."""
    graph = core.Graph(device.n)
    for edge in device.edges:
        graph.add_edge(*edge)
    return graph


def replaced(result, **changes):
    """The same result with other fields, which are not checked."""
    fields = {name: getattr(result, name) for name in result.__dataclass_fields__}
    return type(result)(**{**fields, **changes})


def spoilt(circuit, only_turned=False):
    """The circuit with its first and its last CNOT turned round, or nothing in its place, and
    with all angles negated."""
    gates = list(circuit)
    is_pair = [isinstance(gate, tuple) or gate.name == "CNOT" for gate in gates]
    for at in (is_pair.index(True), len(gates) - 1 - is_pair[::-1].index(True)):
        pair = gates[at]
        turned = pair[::-1] if isinstance(pair, tuple) else Gate("CNOT", pair.qubits[::-1])
        for instead in (turned,) if only_turned else (turned, Gate("I", 0)):
            yield type(circuit)(circuit.n, [*gates[:at], instead, *gates[at + 1 :]])
    if not only_turned:
        yield Circuit(circuit.n, [gate.inverse() if gate.params else gate for gate in gates])


def replay(n, gates):
    """The matrix of a list of CNOTs, row operation by row operation."""
    matrix = np.eye(n, dtype=bool)
    for control, target in gates:
        matrix[target] ^= matrix[control]
    return matrix


def product(a, b):
    """Over GF(2)."""
    return np.asarray(a, dtype=int) @ np.asarray(b, dtype=int) % 2 == 1


@st.composite
def cnots(draw, n):
    """A list of CNOTs on n qubits; empty where there is no pair of qubits."""
    if n < 2:
        return []
    pairs = st.tuples(st.integers(0, n - 1), st.integers(0, n - 2))
    return [(a, b + (b >= a)) for a, b in draw(st.lists(pairs, max_size=4 * n))]


@st.composite
def invertible(draw, most=12):
    """An invertible matrix: a shuffled identity after random row operations."""
    n = draw(st.integers(0, most))
    order = draw(st.permutations(range(n)))
    return replay(n, draw(cnots(n)))[list(order)]


@st.composite
def device_edges(draw, least=1, most=8):
    """(n, edges) of a connected graph: a random tree with more edges thrown in."""
    n = draw(st.integers(least, most))
    tree = [(draw(st.integers(0, v - 1)), v) for v in range(1, n)]
    pairs = [(a, b) for b in range(n) for a in range(b)]
    more = draw(st.lists(st.sampled_from(pairs), max_size=n)) if pairs else []
    names = draw(st.permutations(range(n)))
    return n, [(names[a], names[b]) for a, b in tree + more]


_LETTERS = {
    "I": np.eye(2),
    "X": np.array([[0, 1], [1, 0]]),
    "Y": np.array([[0, -1j], [1j, 0]]),
    "Z": np.diag([1, -1]),
}


def letters_matrix(string):
    """The matrix of a Pauli string with or without a sign; qubit 0 is the leading factor."""
    matrix = np.array([[-1.0 if string.startswith("-") else 1.0]])
    for letter in string.lstrip("+-"):
        matrix = np.kron(matrix, _LETTERS[letter])
    return matrix


def rotation_matrix(string, angle):
    """exp(-i angle P / 2)."""
    matrix = letters_matrix(string)
    return np.cos(angle / 2) * np.eye(len(matrix)) - 1j * np.sin(angle / 2) * matrix


def gate_matrix(gate, n):
    def on(letters):
        return letters_matrix("".join(letters.get(q, "I") for q in range(n)))

    a, b = gate.qubits[0], gate.qubits[-1]
    name = {"PH": "RZ"}.get(gate.name, gate.name)
    if name in ("RX", "RY", "RZ"):
        string = "".join(name[1] if q == a else "I" for q in range(n))
        return rotation_matrix(string, float(gate.params[0]))
    if name in ("CNOT", "CSIGN", "CZ"):
        other = on({b: "X" if name == "CNOT" else "Z"})
        return (on({}) + on({a: "Z"}) + other - on({a: "Z"}) @ other) / 2
    if name == "XX":
        matrix = on({})
        for place, a in enumerate(gate.qubits):
            for b in gate.qubits[place + 1 :]:
                string = "".join("X" if q in (a, b) else "I" for q in range(n))
                matrix = rotation_matrix(string, float(gate.params[0])) @ matrix
        return matrix
    if name in ("S", "D-S"):
        return (on({}) + on({a: "Z"})) / 2 + (1j if name == "S" else -1j) * (
            on({}) - on({a: "Z"})
        ) / 2
    if name == "H":
        return (on({a: "X"}) + on({a: "Z"})) / np.sqrt(2)
    if name in COMPOSED:
        return composed_matrix(name, [float(angle) for angle in gate.params], a, b, on)
    return on({a: name})


def composed_matrix(name, angles, a, b, on):
    """As Qiskit defines them, phase and all."""
    one = on({})
    if name == "ECR":
        return (on({a: "X"}) - on({a: "Y", b: "X"})) / np.sqrt(2)
    if name == "ISWAP":
        zz = on({a: "Z", b: "Z"})
        return (one + zz) / 2 + 1j * (on({a: "X", b: "X"}) + on({a: "Y", b: "Y"})) / 2
    if name == "RZZ":
        return np.cos(angles[0] / 2) * one - 1j * np.sin(angles[0] / 2) * on({a: "Z", b: "Z"})
    if name == "U":
        theta, phi, angle = np.array(angles) / 2
        turns = [np.cos(t) * one - 1j * np.sin(t) * on({a: letter})
                 for t, letter in ((phi, "Z"), (theta, "Y"), (angle, "Z"))]  # fmt: skip
        return np.exp(1j * (phi + angle)) * turns[0] @ turns[1] @ turns[2]
    axis, turn = ("X", np.pi / 2) if name.endswith("SX") else ("Z", np.pi / 4)
    root = np.exp(-1j * turn if name.startswith("D-") else 1j * turn)
    return (one + on({a: axis})) / 2 + root * (one - on({a: axis})) / 2


def unitary(circuit):
    """Gate by gate, for few qubits."""
    matrix = np.eye(2**circuit.n)
    for gate in circuit:
        matrix = gate_matrix(gate, circuit.n) @ matrix
    return matrix


def means(state, observables):
    return [(state.conj() @ letters_matrix(o) @ state).real for o in observables]


def assert_means(result, observables, wanted):
    """That observables, absorbed or read out of bits, have these values after the circuit."""
    state = unitary(result.circuit)[:, 0]
    assert np.allclose(means(state, result.absorb(observables)), wanted)
    readout = result.readout(observables)
    odds = np.abs(unitary(result.circuit + readout.circuit)[:, 0]) ** 2
    bits = (np.arange(2**result.n)[:, None] >> np.arange(result.n)[::-1]) & 1
    assert np.allclose(odds @ readout.values(bits), wanted)


def same_up_to_phase(a, b):
    return np.isclose(abs(np.vdot(a, b)), len(a)) and np.allclose(a.conj().T @ a, np.eye(len(a)))

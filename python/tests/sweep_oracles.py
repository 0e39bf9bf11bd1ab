"""Oracles of the sweep, which share nothing with the library but its results: Stim for Clifford
operators, bits of integers for linear maps."""

import math
from collections import Counter, defaultdict

import stim

TOLERANCE = 1e-9

# Axis of a rotation, and a quarter turn.
TURNS = {"RX": ("x", "sqrt_x"), "RY": ("y", "sqrt_y"), "RZ": ("z", "s"), "PH": ("z", "s")}
FIXED = {
    "CNOT": "cx", "CSIGN": "cz", "CZ": "cz", "H": "h", "S": "s", "D-S": "s_dag",
    "X": "x", "Y": "y", "Z": "z",
}  # fmt: skip
SYMBOLS = {f"t{k}": math.sqrt(k + 2) / 64 for k in range(300)}


def value(angle):
    """A number for an angle."""
    return angle.constant + sum(f * SYMBOLS[name] for name, f in angle.coefficients.items())


def simulator(n):
    sim = stim.TableauSimulator()
    sim.set_num_qubits(n)
    return sim


def tableau(xs, zs):
    """Of the images of X and of Z."""
    texts = [stim.PauliString(text) for text in (*xs, *zs)]
    return stim.Tableau.from_conjugated_generators(xs=texts[: len(xs)], zs=texts[len(xs) :])


def unfolded(circuit):
    """The operator of the Clifford gates, and the rotations as they stand in front of them: strings
    with signs in their angles. Turns by multiples of pi/2 are Clifford gates."""
    sim, rotations = simulator(circuit.n), []
    for gate in circuit:
        if gate.name in FIXED:
            getattr(sim, FIXED[gate.name])(*gate.qubits)
            continue
        axis, turn = TURNS[gate.name]
        angle = value(gate.params[0])
        quarters = round(angle / (math.pi / 2))
        if abs(angle - quarters * math.pi / 2) < TOLERANCE:
            for _ in range(quarters % 4):
                getattr(sim, turn)(gate.qubits[0])
        else:
            pauli = getattr(sim.current_inverse_tableau(), f"{axis}_output")(gate.qubits[0])
            rotations.append((str(pauli)[1:], angle * pauli.sign.real))
    return sim.current_inverse_tableau().inverse(), rotations


def in_order(rotations):
    """The product of rotations in a unique form: equal ones are added wherever all between them
    commutes, those by 0 dropped, and what is left is in layers, each as early as can be."""
    word = []
    for letters, angle in rotations:
        pauli, place = stim.PauliString(letters), len(word) - 1
        while place >= 0 and word[place][0] != pauli and word[place][0].commutes(pauli):
            place -= 1
        if place < 0 or word[place][0] != pauli:
            place = len(word)
            word.append([pauli, 0.0])
        word[place][1] += angle
        if abs(word[place][1]) < TOLERANCE:
            del word[place]
    layers, found = [], {}
    for pauli, angle in word:
        layer = 1 + max((k for other, k in layers if not other.commutes(pauli)), default=0)
        layers.append((pauli, layer))
        found[layer, str(pauli)] = angle
    return found


def in_any_order(terms):
    total = defaultdict(float)
    for key, angle in terms:
        total[key] += angle
    return {key: angle for key, angle in total.items() if abs(angle) > TOLERANCE}


def assert_terms(found, wanted, turn=2 * math.pi):
    """That the angles of each key add up to the same, up to whole turns."""
    found, wanted = in_any_order(found), in_any_order(wanted)
    assert_alike(found, wanted, turn)


def signed(rotations):
    """The same with signs in the angles."""
    for text, angle in rotations:
        pauli = stim.PauliString(text)
        yield str(pauli)[1:], angle * pauli.sign.real


def assert_rotations(found, wanted, wires, kept):
    """That these are the same, once each, or their product where the order is kept."""
    found = [(on_wires(stim.PauliString(text), wires)[1:], angle) for text, angle in found]
    assert kept or len(found) == len({text for text, _ in found})
    form = in_order if kept else in_any_order
    assert_alike(form(found), form(wanted))


def assert_alike(found, wanted, turn=math.inf):
    assert found.keys() == wanted.keys(), ("by one of two alone", found.keys() ^ wanted.keys())
    for key, angle in wanted.items():
        assert abs(math.remainder(found[key] - angle, turn)) < TOLERANCE, key


def on_wires(pauli, wires):
    """The letters on these wires; there are none on others."""
    text = str(pauli)
    assert pauli.weight == sum(text[1 + wire] != "_" for wire in wires), (text, wires)
    return text[0] + "".join(text[1 + wire] for wire in wires)


def assert_operator(found, wanted, inputs, outputs):
    """That wires ``inputs`` go to wires ``outputs`` as wanted."""
    for q, wire in enumerate(inputs):
        assert on_wires(found.x_output(wire), outputs) == str(wanted.x_output(q)), f"X on {q}"
        assert on_wires(found.z_output(wire), outputs) == str(wanted.z_output(q)), f"Z on {q}"


def assert_state(circuit, stabilisers):
    """That zeros come out with these stabilisers."""
    operator, rotations = unfolded(circuit)
    assert not rotations
    inverse = operator.inverse()
    for text in stabilisers:
        assert set(str(inverse(stim.PauliString(text)))) <= set("+_Z"), text


def assert_encoder(circuit, wires, stabilisers_and_logicals):
    """That X and Z on the wires, and zeros on all others, come out as the code wants it."""
    operator, rotations = unfolded(circuit)
    assert not rotations
    inverse = operator.inverse()
    for letter, strings in zip("_XZ", stabilisers_and_logicals, strict=True):
        for k, text in enumerate(strings):
            found = str(inverse(stim.PauliString(text)))
            sign, before = found[0], found[1:]
            assert sign == "+", text
            wanted = [letter if j == k else "_" for j in range(len(wires))]
            assert [before[wire] for wire in wires] == wanted, text
            assert {before[q] for q in range(circuit.n) if q not in wires} <= set("_Z"), text


def spread(bits, wires):
    return sum(1 << wire for k, wire in enumerate(wires) if bits >> k & 1)


def assert_map(wires, rows, inputs, outputs):
    """That bits of inputs stand on wires as rows want it on the outputs, all else where it was."""
    wanted = [1 << wire for wire in range(len(wires))]
    for row, wire in zip(rows, outputs, strict=True):
        wanted[wire] = spread(row, inputs)
    assert wires == wanted


def assert_report(result, n, ground, free=False):
    """Edges, places, wires, count and depth; returns the wires of the inputs and the outputs."""
    gates = [gate if isinstance(gate, tuple) else gate.qubits for gate in result.circuit]
    pairs = [tuple(sorted(gate)) for gate in gates if len(gate) > 1]
    places = getattr(result, "placement", range(n))
    wires = getattr(result, "permutation", range(n))
    assert len(places) == len(set(places)) == n
    assert {wire for gate in gates for wire in gate} <= set(places)
    assert sorted(wires) == list(range(n))
    assert free or list(wires) == list(range(n))
    if ground is None:
        assert result.n == n
        assert list(places) == list(range(n))
    else:
        assert result.n == ground[0]
        assert ground[1].issuperset(pairs), set(pairs) - ground[1]
    layers = Counter()
    for a, b in pairs:
        layers[a] = layers[b] = 1 + max(layers[a], layers[b])
    size = (len(pairs), max(layers.values(), default=0))
    assert size == (result.count, result.depth)
    for last in getattr(result, "trace", ())[-1:]:
        assert size == (last.count, last.depth), "trace"
    return list(places), [places[wire] for wire in wires]


def near(ground, places, start, steps):
    """The places within that number of edges of one, along places."""
    found = {start}
    for _ in range(steps):
        found |= {a for edge in ground[1] if found & set(edge) for a in edge} & set(places)
    return found

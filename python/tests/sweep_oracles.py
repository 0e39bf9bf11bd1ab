"""Oracles of the sweep, which share nothing with the library but its results: bits of integers for
linear maps and Pauli strings, and Stim for the inverse of a Clifford operator."""

import math
from collections import Counter, defaultdict
from itertools import combinations, repeat

import stim

from zeltbraidwerk import Circuit, Gate
from zeltbraidwerk.instructions import Barrier

TOLERANCE = 1e-9
QUARTER = math.pi / 2
SYMBOLS = {f"t{k}": math.sqrt(k + 2) / 64 for k in range(300)}

# Axis, and number of quarter turns about it.
TURNS = {
    "S": ("Z", 1), "D-S": ("Z", 3), "SX": ("X", 1), "D-SX": ("X", 3),
    "X": ("X", 2), "Y": ("Y", 2), "Z": ("Z", 2), "I": ("Z", 0),
}  # fmt: skip
EIGHTHS = {"T": math.pi / 4, "D-T": -math.pi / 4}
AXES = {"RX": "X", "RY": "Y", "RZ": "Z", "PH": "Z"}


def value(angle):
    """A number for an angle."""
    return angle.constant + sum(f * SYMBOLS[name] for name, f in angle.coefficients.items())


def spread(bits, wires):
    return sum(1 << wire for k, wire in enumerate(wires) if bits >> k & 1)


# --- Pauli strings: (k, x, z) is i^k X^x Z^z -----------------------------------------------------

BITS = {letter: str.maketrans("_IXYZ", bits) for letter, bits in (("X", "00110"), ("Z", "00011"))}


def read(text, wires=None):
    """Letter q on wire q, or on wires[q]."""
    letters = text.lstrip("+-")
    x, z = (int("0" + letters.translate(BITS[axis])[::-1], 2) for axis in "XZ")
    if wires is not None:
        x, z = spread(x, wires), spread(z, wires)
    return (letters.count("Y") + 2 * text.startswith("-")) % 4, x, z


def times(a, b, k=0):
    flips = (a[2] & b[1]).bit_count()
    return (a[0] + b[0] + k + 2 * flips) & 3, a[1] ^ b[1], a[2] ^ b[2]


def is_minus(pauli):
    k, x, z = pauli
    odd, twice = (k - (x & z).bit_count()) & 1, (k - (x & z).bit_count()) & 2
    assert not odd, "a string with the sign i"
    return twice == 2


def commute(a, b):
    return not ((a[1] & b[2]).bit_count() + (a[2] & b[1]).bit_count()) & 1


def turned(pauli, by, quarters):
    """What the string is before quarter turns about another."""
    if commute(pauli, by) or not quarters & 3:
        return pauli
    if quarters & 3 == 2:
        return (pauli[0] + 2) & 3, pauli[1], pauli[2]
    return times(pauli, by, 3 if quarters & 3 == 1 else 1)


class Frame:
    """What X and Z on each wire are before the Clifford gates so far."""

    def __init__(self, n):
        self.x = [(0, 1 << q, 0) for q in range(n)]
        self.z = [(0, 0, 1 << q) for q in range(n)]

    @classmethod
    def of(cls, inverse, n, wires):
        """Of the inverse of an operator, a tableau of Stim, on these of n wires."""
        frame = cls(n)
        for q, wire in enumerate(wires):
            frame.x[wire] = read(str(inverse.x_output(q)), wires)
            frame.z[wire] = read(str(inverse.z_output(q)), wires)
        return frame

    def letter(self, axis, q):
        if axis == "Y":
            return times(self.x[q], self.z[q], 1)
        return (self.x if axis == "X" else self.z)[q]

    def image(self, pauli):
        k, x, z = pauli
        found = k, 0, 0
        for bits, rows in ((x, self.x), (z, self.z)):
            while bits:
                found = times(found, rows[(bits & -bits).bit_length() - 1])
                bits &= bits - 1
        return found

    def turn(self, axis, qubits, quarters):
        """About the product of the letter on these qubits."""
        about = 0, 0, 0
        for q in qubits:
            about = times(about, self.letter(axis, q))
        for rows in (self.x, self.z):
            for q in qubits:
                rows[q] = turned(rows[q], about, quarters)

    def pair(self, name, a, b):
        x, z = self.x, self.z
        if name == "CNOT":
            x[a], z[b] = times(x[a], x[b]), times(z[a], z[b])
        else:
            x[a], x[b] = times(x[a], z[b]), times(x[b], z[a])


class Unfolded:
    """The operator of the Clifford gates of a circuit, as a frame, and the rotations as they stand
    in front of them: turns by no multiple of pi/2, or those that ``rotates`` marks."""

    def __init__(self, circuit, n=None, places=None, rotates=None, within=TOLERANCE):
        self.frame, self.rotations = Frame(circuit.n if n is None else n), []
        self.within = within
        for gate, kept in zip(circuit, repeat(False) if rotates is None else rotates, strict=False):
            if isinstance(gate, Gate):
                qubits = gate.qubits if places is None else [places[q] for q in gate.qubits]
                self.add(gate, qubits, kept)

    def add(self, gate, qubits, kept):
        frame, name, q = self.frame, gate.name, qubits[0]
        if name in ("CNOT", "CSIGN", "CZ"):
            frame.pair(name, *qubits)
        elif name == "H":
            frame.x[q], frame.z[q] = frame.z[q], frame.x[q]
        elif name == "XX":
            for pair in combinations(qubits, 2):
                frame.turn("X", pair, round(value(gate.params[0]) / QUARTER))
        elif name in TURNS:
            frame.turn(TURNS[name][0], (q,), TURNS[name][1])
        else:
            axis = AXES.get(name, "Z")
            angle = EIGHTHS[name] if name in EIGHTHS else value(gate.params[0])
            quarters = round(angle / QUARTER)
            if abs(angle - quarters * QUARTER) < self.within and not kept:
                frame.turn(axis, (q,), quarters)
            else:
                self.rotations.append(plain(frame.letter(axis, q), angle))


def plain(pauli, angle):
    """The sign in the angle."""
    minus = is_minus(pauli)
    return ((pauli[1] & pauli[2]).bit_count() & 3, *pauli[1:]), -angle if minus else angle


def left_of(rotations, within):
    """The quarter turns that are left when rotations that meet are added; no other may be left.
    Sums that are multiples of pi/2 pass to the end, where all of them are."""
    within += rounding(angle for _, angle in rotations)
    word, turns = [], []
    for pauli, angle in rotations:
        for by, quarters in turns:
            pauli = turned(pauli, by, quarters)
        pauli, angle = plain(pauli, angle)
        place = len(word) - 1
        while place >= 0 and word[place][0] != pauli and commute(word[place][0], pauli):
            place -= 1
        if place < 0 or word[place][0] != pauli:
            place = len(word)
            word.append((pauli, 0.0))
        total = word[place][1] + angle
        quarters = round(total / QUARTER)
        if abs(total - quarters * QUARTER) < within:
            del word[place]
            if quarters & 3:
                turns.append((pauli, quarters))
        else:
            word[place] = pauli, total
    assert not word, f"{len(word)} rotations differ: {word[:3]}"
    return turns


def assert_same(found, wanted, pairs):
    """That both are the same operator, by rewriting alone; ``pairs`` has for each output its wires
    in wanted and in found."""
    undone = [(pauli, -angle) for pauli, angle in reversed(found.rotations)]
    turns = left_of(undone + wanted.rotations, wanted.within)
    for before, after in pairs:
        for axis in "XZ":
            pauli = wanted.frame.letter(axis, before)
            for by, quarters in turns:
                pauli = turned(pauli, by, quarters)
            assert pauli == found.frame.letter(axis, after), f"{axis} on {before}"


def rounding(angles):
    """How far sums of the angles may be off; far below the smallest that is drawn, but 1e-17."""
    return min(1e-15 * sum(map(abs, angles)), 5e-8)


def assert_terms(found, wanted):
    """That the angles of each key add up to the same, up to whole turns."""
    angles = defaultdict(list)
    for terms, sign in ((found, 1), (wanted, -1)):
        for key, angle in terms:
            angles[key].append(sign * angle)
    for key, listed in angles.items():
        difference = math.remainder(math.fsum(listed), 2 * math.pi)
        assert abs(difference) < TOLERANCE + rounding(listed), key


# --- states, codes, maps ------------------------------------------------------------------------


def assert_state(circuit, stabilizers, wires):
    """That zeros come out with these stabilizers on the wires, and as zeros on the others."""
    found = Unfolded(circuit)
    assert not found.rotations
    others = set(range(circuit.n)).difference(wires)
    zeros = [read("Z", (wire,)) for wire in sorted(others)]
    for pauli in [*(read(text, wires) for text in stabilizers), *zeros]:
        k, x, _ = found.frame.image(pauli)
        assert (k, x) == (0, 0), pauli


def assert_encoder(circuit, wires, stabilizers_and_logicals):
    """That X and Z on the wires, and zeros on all others, come out as the code wants it."""
    found, logical = Unfolded(circuit), spread(-1, wires)
    assert not found.rotations
    for letter, strings in zip("_XZ", stabilizers_and_logicals, strict=True):
        for k, text in enumerate(strings):
            phase, x, z = found.frame.image(read(text))
            bit = 1 << wires[k] if letter != "_" else 0
            wanted = (bit, 0) if letter == "X" else (0, bit)
            assert phase == 0, text
            assert (x, z & logical) == wanted, text


def assert_map(wires, rows, inputs, outputs):
    """That bits of inputs stand on wires as rows want it on the outputs, all else where it was."""
    wanted = [1 << wire for wire in range(len(wires))]
    for row, wire in zip(rows, outputs, strict=True):
        wanted[wire] = spread(row, inputs)
    assert wires == wanted


# --- reports ------------------------------------------------------------------------------------


def assert_report(result, n, ground, free=False):
    """Edges, places, wires, count and depth; returns the wires of the inputs and the outputs."""
    places, wires = list(result.placement), list(result.permutation)
    assert len(places) == len(set(places)) >= n
    assert sorted(wires) == list(range(len(places)))
    assert free or wires == sorted(wires)
    if ground is None:
        assert result.n == n
        assert places == list(range(n))
    else:
        assert result.n == ground[0]
        gates = [gate if isinstance(gate, tuple) else gate.qubits for gate in result.circuit
                 if isinstance(gate, tuple | Gate)]  # fmt: skip
        pairs = {tuple(sorted(gate)) for gate in gates if len(gate) > 1}
        assert ground[1].issuperset(pairs), pairs - ground[1]
    size = size_of(result.circuit)
    assert size == (result.count, result.depth)
    assert result.least_count <= size[0]
    assert result.least_depth <= size[1]
    for last in result.trace[-1:]:
        assert size == (last.count, last.depth), "trace"
    return places, [places[wire] for wire in wires]


def size_of(circuit):
    """Number of gates on two qubits, and of layers; a layer does not go past a barrier."""
    count, layers = 0, Counter()
    for item in circuit:
        qubits = item if isinstance(item, tuple) else item.qubits
        is_pair = isinstance(item, tuple | Gate) and len(qubits) > 1
        if is_pair or isinstance(item, Barrier):
            count += is_pair
            last = is_pair + max(layers[q] for q in qubits)
            for q in qubits:
                layers[q] = last
    return count, max(layers.values(), default=0)


def near(ground, places, start, steps):
    """The places within that number of edges of one, along places."""
    found = {start}
    for _ in range(steps):
        found |= {a for edge in ground[1] if found & set(edge) for a in edge} & set(places)
    return found


def inverse_of(xs, zs):
    """The inverse of the operator with these images of X and of Z, as a tableau of Stim."""
    texts = [stim.PauliString(text) for text in (*xs, *zs)]
    halves = texts[: len(xs)], texts[len(xs) :]
    return stim.Tableau.from_conjugated_generators(xs=halves[0], zs=halves[1]).inverse()


def identity(n):
    return Unfolded(Circuit(n))

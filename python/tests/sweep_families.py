"""The families of the sweep: a random call of each public function, and what must be true of its
result."""

from collections.abc import Callable
from dataclasses import dataclass, replace
from itertools import pairwise
from typing import Any

import numpy as np
import stim
from sweep_oracles import (
    Frame,
    Unfolded,
    assert_encoder,
    assert_map,
    assert_report,
    assert_same,
    assert_state,
    assert_terms,
    identity,
    inverse_of,
    near,
    plain,
    read,
    spread,
    value,
)

import zeltbraidwerk as zb
from zeltbraidwerk import CliffordTableau

BASES = ("cx", "cz", "ecr", "iswap", "rzz")
DENSE = 5  # qubits up to which operators are compared as matrices


@dataclass
class Case:
    """A call, and what must be true of its result."""

    search: Callable[..., Any]
    given: Any
    options: dict[str, Any]
    check: Callable[[Any], None]
    in_pieces: bool = False  # layers are those of each piece, not of all together

    def call(self, **changes):
        return self.search(self.given, **self.options | changes)

    def size(self, result):
        """What more steps, and a start, never make worse."""
        by_depth = self.options.get("objective") == "depth"
        if self.in_pieces:
            return () if by_depth else (result.count,)
        return (result.depth, result.count) if by_depth else (result.count, result.depth)


def assert_front(result, check):
    """From few layers to few gates; the results in it are checked as well."""
    for one, other in pairwise(result.front):
        assert one.depth < other.depth
        assert one.count > other.count
    for one in result.front:
        check(replace(one, front=()))


def unfolded_of(inverse, n, wires):
    """A Clifford operator, by its inverse, on these of n wires."""
    wanted = identity(n)
    wanted.frame = Frame.of(inverse, n, wires)
    return wanted


# --- maps and parities --------------------------------------------------------------------------


def linear(draw, n):
    rows = draw.rows(n)
    ground = draw.ground(n)
    method = draw.method(zb.linear, n, ground)
    options = draw.options(ground, method, permutation=["exact", "free"])
    may_reach = ground is not None and options["permutation"] == "exact" and method == "search"
    if may_reach and draw.chance(0.5):
        options["reach"] = draw.randint(0, 4)
    if method == "pmh" and draw.chance(0.5):
        options["section"] = draw.randint(1, 30)
    if method in ("syndrome", "greedy", "greedy_inverse") and draw.chance(0.3):
        options |= {"width": draw.randint(1, 4), "lookahead": draw.randint(1, 2)}
    reach = options.get("reach", 0)

    def check(result):
        free = options["permutation"] == "free" or reach > 0
        inputs, outputs = assert_report(result, n, ground, free)
        wires = [1 << wire for wire in range(result.n)]
        for control, target in result.circuit:
            wires[target] ^= wires[control]
        assert_map(wires, rows, inputs, outputs)
        if reach:
            assert all(
                b in near(ground, inputs, a, reach) for a, b in zip(inputs, outputs, strict=True)
            )
        assert_front(result, check)

    texts = ["".join(str(row >> c & 1) for c in range(n)) for row in rows]
    matrix = np.array([[bit == "1" for bit in text] for text in texts], dtype=bool).reshape(n, n)
    return Case(zb.linear.synthesize, texts if n and draw.chance(0.2) else matrix, options, check)


def phase(draw, n):
    parities = draw.parities(n)
    terms = list(zip(parities, draw.angles(len(parities)), strict=True))
    if draw.chance(0.5):
        given = dict(terms)
        terms = list(given.items())
    else:
        texts = ["".join(str(parity >> q & 1) for q in range(n)) for parity in parities]
        given = texts, [angle for _, angle in terms]
    ground = draw.ground(n)
    options = draw.options(
        ground, draw.method(zb.phase, n, ground), n=[n], permutation=["exact", "free"],
        tail=["close", "close", "return"],
    )  # fmt: skip
    if options["tail"] == "return":
        options["permutation"] = "exact"

    def check(result):
        inputs, outputs = assert_report(result, n, ground, options["permutation"] == "free")
        wires, found = [1 << wire for wire in range(result.n)], []
        for gate in result.circuit:
            if gate.name == "CNOT":
                wires[gate.qubits[1]] ^= wires[gate.qubits[0]]
            else:
                assert gate.name == "PH"
                found.append((wires[gate.qubits[0]], value(gate.params[0])))
        assert len(found) == len({parity for parity, _ in terms} - {0})
        found.append((0, value(result.global_phase)))
        wanted = [(spread(parity, inputs), value(zb.Parameter(angle))) for parity, angle in terms]
        assert_terms(found, wanted)
        rows = [1 << k for k in range(n)]
        if options["tail"] == "return":
            rows = [sum(1 << int(c) for c in np.flatnonzero(row)) for row in result.tail]
        assert_map(wires, rows, inputs, outputs)

    return Case(zb.phase.synthesize, given, options, check)


# --- Pauli strings ------------------------------------------------------------------------------


def pauli(draw, n):
    strings = draw.strings(n)
    angles = draw.angles(len(strings))
    ground = draw.ground(n) if n <= 24 or draw.chance(0.01) else None  # seconds
    options = draw.options(
        ground, draw.method(zb.pauli, n, ground), n=[n], permutation=["exact", "free"],
        order=["free", "commuting"], tail=["close", "close", "return", "given"],
    )  # fmt: skip
    if ground is not None or options["tail"] == "return":
        options["permutation"] = "exact"
    if options["order"] == "free":
        options["repeated"] = "merge"
    left = stim.Tableau(n)
    if options["tail"] == "given":
        left = draw.clifford(n)
        options["tail"] = CliffordTableau.from_images(*images(left))

    def check(result):
        inputs, outputs = assert_report(result, n, ground, options["permutation"] == "free")
        found = Unfolded(result.circuit, rotates=result._rotates)
        inverse = left.inverse()
        if options["tail"] == "return":
            assert result.tail.n == result.n
            inverse, inputs_of_tail = inverse_of(*result.tail.images()), range(result.n)
            pairs = [(wire, wire) for wire in range(result.n)]
        else:
            inputs_of_tail, pairs = inputs, list(zip(inputs, outputs, strict=True))
            assert (result.tail is None) == (options["tail"] == "close")
        wanted = unfolded_of(inverse, result.n, inputs_of_tail)
        known = [value(zb.Parameter(angle)) for angle in angles]
        whole = [plain(read(text, inputs), angle)
                 for text, angle in zip(strings, known, strict=True)]  # fmt: skip
        rotations = [one for one in whole if one[0] != (0, 0, 0)]
        identities = [((0, 0, 0), angle) for one, angle in whole if one == (0, 0, 0)]
        assert_terms([((0, 0, 0), value(result.identity_angle))], identities)
        assert len(found.rotations) <= len(rotations)
        if options["order"] == "free":
            assert len(found.rotations) == len({one for one, _ in rotations})
            assert_terms(found.rotations, rotations)
            found.rotations = []
        else:
            wanted.rotations = rotations
        assert_same(found, wanted, pairs)

    # Of blocks that are searched for one by one, gates add up and layers do not.
    in_blocks = options.get("objective") != "depth"
    if options["order"] == "free" and len(set(strings)) == len(strings) and draw.chance(0.3):
        given = dict(zip(strings, angles, strict=True))
        return Case(zb.pauli.synthesize, given, options, check, in_blocks)
    given = list(zip(strings, angles, strict=True))
    if strings and draw.chance(0.3):
        given = strings, angles
    return Case(zb.pauli.synthesize, given, options, check, in_blocks)


def diagonal(draw, n):
    """Strings that commute made diagonal, and any strings in groups that commute."""
    strings = draw.commuting(n)
    n = n if strings else 0
    others = [text for text in draw.strings(n) if n]
    ground = draw.ground(n, 0.25) if strings else None
    names = ("auto", "greedy") if ground else ("auto", "greedy", "graph", "decoding")
    options = {"method": draw.choice(names), "seed": draw.getrandbits(8)}
    if ground:
        options["device"] = zb.Device(ground[0], sorted(ground[1]))

    def check(result):
        inputs, _ = assert_report(result, n, ground)
        frame = Unfolded(result.circuit).frame
        for before, after in zip(strings, result.images, strict=True):
            wanted = read(after, inputs)
            assert wanted[1] == 0, f"{after} is not diagonal"
            assert frame.image(wanted) == read(before, inputs), before
        groups = zb.pauli.partition(others)
        found = [text for group in groups for text in group]
        assert sorted(found) == sorted(t.strip("+-").replace("_", "I") for t in others)
        for group in groups:
            paulis = [stim.PauliString(text) for text in group]
            assert all(a.commutes(b) for a in paulis for b in paulis)

    return Case(zb.pauli.codiagonalize, strings, options, check)


# --- Clifford operators, states, codes ----------------------------------------------------------


def images(operator):
    outputs = (operator.x_output, operator.z_output)
    return tuple([str(output(q)) for q in range(len(operator))] for output in outputs)


def clifford(draw, n):
    wanted = draw.clifford(n)
    ground = draw.ground(n) if n <= 40 or draw.chance(0.1) else None
    method = draw.method(zb.clifford, n, ground)
    options = draw.options(ground, method, permutation=["exact", "free"])

    def check(result):
        inputs, outputs = assert_report(result, n, ground, options["permutation"] == "free")
        found = Unfolded(result.circuit)
        whole = unfolded_of(wanted.inverse(), result.n, inputs)
        assert_same(found, whole, list(zip(inputs, outputs, strict=True)))

    given = draw.choice((wanted, images(wanted), CliffordTableau.from_images(*images(wanted))))
    return Case(zb.clifford.synthesize, given, options, check)


def state(draw, n):
    given = draw.clifford(n)
    wanted = images(given)[1]
    kind = draw.randrange(4)
    if kind:
        given = wanted = draw.generators(wanted if kind < 3 else stabilizers(draw.graph(n)))
    ground = draw.ground(n) if n <= 40 or draw.chance(0.1) else None
    options = draw.options(ground, permutation=["exact", "free"])
    del options["method"]

    def check(result):
        _, outputs = assert_report(result, n, ground, options["permutation"] == "free")
        assert_state(result.circuit, wanted, outputs)

    return Case(zb.clifford.synthesize_state, given, options, check)


def encoder(draw, n):
    operator = draw.clifford(max(n, 1))
    k = draw.randrange(max(n, 1))
    xs, zs = images(operator)
    logicals = draw.choice((None, (xs[:k], zs[:k])))
    given = code = draw.generators(zs[k:])
    options = draw.options(None)
    del options["method"]
    if draw.chance(0.2):  # a check matrix: all signs are plus
        code, logicals = [text.replace("-", "+") for text in code], None
        bits = [[int(c in pair) for pair in ("XY", "ZY") for c in text[1:]] for text in code]
        given = np.array(bits, dtype=bool)

    def check(result):
        assert_report(result, len(xs), None)
        assert_encoder(result.circuit, result.logical_wires, [code, *(logicals or result.logicals)])

    def search(given, **own):
        return zb.clifford.synthesize_encoder(given, logicals, **own)

    return Case(search, given, options, check)


def stabilizers(graph):
    return [
        "".join("XY"[x] if a == b else "IZ"[x] for b, x in enumerate(row))
        for a, row in enumerate(graph)
    ]


def graph_state(draw, n):
    graph = draw.graph(n)
    ground = draw.ground(n) if n <= 40 or draw.chance(0.1) else None
    method = draw.method(zb.graph_state, n, ground)
    options = draw.options(ground, method, permutation=["exact", "free"])
    if method == "decoding" and draw.chance(0.5):
        options["tries"] = draw.randint(0, 20)

    def check(result):
        _, outputs = assert_report(result, n, ground, options["permutation"] == "free")
        assert_state(result.circuit, stabilizers(graph), outputs)

    given = np.array(graph, dtype=bool).reshape(n, n)
    return Case(zb.graph_state.synthesize, given, options, check)

"""Random instances of every search against oracles that share nothing with the library: Stim for
Clifford operators and states, bits of integers for linear maps, dense unitaries of few qubits.

    sweep.py [N]                          N instances a family, 1000 by default
    sweep.py --only pauli --first 17 1    instance 17 of one family, as a fault names it

An instance is made from its family and number alone.
"""

import argparse
import pickle
import sys
import time
import traceback
from collections.abc import Callable
from dataclasses import dataclass, replace
from itertools import pairwise
from typing import Any

import numpy as np
import stim
from support import same_up_to_phase, unitary
from sweep_draws import Draw
from sweep_oracles import (
    assert_encoder,
    assert_map,
    assert_operator,
    assert_report,
    assert_rotations,
    assert_state,
    assert_terms,
    near,
    signed,
    spread,
    tableau,
    unfolded,
    value,
)

import zeltbraidwerk as zb
from zeltbraidwerk import Circuit, Gate


@dataclass
class Case:
    """A call of a search, and what must be true of its result."""

    search: Callable[..., Any]
    given: Any
    options: dict[str, Any]
    check: Callable[[Any], None]

    def size(self, result):
        """What more steps never make worse. The tail of a routed circuit is closed for count."""
        if self.search is zb.routing.route:
            return result.count
        by_depth = self.options["objective"] == "depth"
        return (result.depth, result.count) if by_depth else (result.count, result.depth)


# --- families -----------------------------------------------------------------------------------


def linear(draw, n):
    rows = [1 << k for k in range(n)]
    for a, b in draw.pairs(n):
        rows[a] ^= rows[b]
    if draw.chance(0.5):
        draw.shuffle(rows)
    ground = draw.ground(n)
    method = draw.method(zb.linear, n, ground)
    options = draw.options(ground, method, permutation=["exact", "free"])
    may_reach = ground is not None and options["permutation"] == "exact" and method == "search"
    if may_reach and draw.chance(0.5):
        options["reach"] = draw.randint(0, 4)
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
        for one, other in pairwise(result.front):
            assert one.depth < other.depth
            assert one.count > other.count
        for one in result.front:
            check(replace(one, front=()))

    bits = [[row >> c & 1 for c in range(n)] for row in rows]
    matrix = np.array(bits, dtype=bool).reshape(n, n)
    return Case(zb.linear.synthesize, matrix, options, check)


def phase(draw, n):
    odds, most = draw.choice((0.1, 0.5)), draw.terms(n)
    parities = [sum(draw.chance(odds) << q for q in range(n)) for _ in range(most)]
    if parities and draw.chance(0.3):
        parities = draw.choices(parities, k=most)
    terms = list(zip(parities, draw.angles(most), strict=True))
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


def pauli(draw, n):
    strings = draw.strings(n)
    given = list(zip(strings, draw.angles(len(strings)), strict=True))
    ground = draw.ground(n)
    options = draw.options(
        ground, draw.method(zb.pauli, n, ground), n=[n], permutation=["exact", "free"],
        order=["free", "commuting"], tail=["close", "return"],
    )  # fmt: skip
    if ground is not None or options["tail"] == "return":
        options["permutation"] = "exact"
    if options["order"] == "free":
        options["repeated"] = "merge"

    def check(result):
        inputs, outputs = assert_report(result, n, ground, options["permutation"] == "free")
        operator, found = unfolded(result.circuit)
        wanted = signed((text, value(zb.Parameter(angle))) for text, angle in given)
        found.append(("_" * result.n, value(result.identity_angle)))
        assert_rotations(found, wanted, inputs, options["order"] == "commuting")
        if options["tail"] == "return":
            assert operator == tableau(*result.tail.images())
        else:
            assert result.tail is None
            assert_operator(operator, stim.Tableau(n), inputs, outputs)

    return Case(zb.pauli.synthesize, given, options, check)


def clifford(draw, n):
    wanted = draw.clifford(n)
    ground = draw.ground(n)
    method = draw.method(zb.clifford, n, ground)
    options = draw.options(ground, method, permutation=["exact", "free"])

    def check(result):
        inputs, outputs = assert_report(result, n, ground, options["permutation"] == "free")
        operator, rotations = unfolded(result.circuit)
        assert not rotations
        assert_operator(operator, wanted, inputs, outputs)

    given = draw.choice((wanted, images(wanted)))
    return Case(zb.clifford.synthesize, given, options, check)


def images(operator):
    outputs = (operator.x_output, operator.z_output)
    return tuple([str(output(q)) for q in range(len(operator))] for output in outputs)


def state(draw, n):
    given = draw.clifford(n)
    wanted = images(given)[1]
    kind = draw.randrange(4)
    if kind:
        given = wanted = draw.generators(wanted if kind < 3 else stabilisers(draw.graph(n)))
    options = draw.options(None)
    del options["method"]

    def check(result):
        assert_report(result, n, None)
        assert_state(result.circuit, wanted)

    return Case(zb.clifford.synthesize_state, given, options, check)


def encoder(draw, n):
    operator = draw.clifford(max(n, 1))
    k = draw.randrange(max(n, 1))
    xs, zs = images(operator)
    logicals = draw.choice((None, (xs[:k], zs[:k])))
    code = draw.generators(zs[k:])
    options = draw.options(None)
    del options["method"]

    def check(result):
        assert_report(result, len(xs), None)
        wanted = [code, *(logicals or result.logicals)]
        assert_encoder(result.circuit, result.logical_wires, wanted)

    return Case(
        lambda given, **own: zb.clifford.synthesize_encoder(given, logicals, **own),
        code, options, check,
    )  # fmt: skip


def stabilisers(graph):
    return [
        "".join("XY"[x] if a == b else "IZ"[x] for b, x in enumerate(row))
        for a, row in enumerate(graph)
    ]


def graph_state(draw, n):
    graph = draw.graph(n)

    def check(result):
        assert_report(result, n, None)
        assert_state(result.circuit, stabilisers(graph))

    options = draw.options(None, draw.method(zb.graph_state, n, None))
    given = np.array(graph, dtype=int).reshape(n, n)
    return Case(zb.graph_state.synthesize, given, options, check)


def routing(draw, n):
    n = max(n, 1)
    ground = draw.ground(n, 1)
    options = draw.options(ground, lookahead=[0, 0, 1], tail=["close", "close", "return"])
    kept = {name: options[name] for name in ("objective", "lookahead", "tail", "device")}
    # Where unitaries are small, rotations may add up to Clifford gates.
    dense = ground[0] <= 5 and kept["tail"] == "close"
    source = Circuit(n, [draw.gate(n, dense) for _ in range(draw.choice((3, 2 * n, 60)))])

    def check(result):
        places, _ = assert_report(result, n, ground)
        if dense:
            moved = [Gate(g.name, [places[q] for q in g.qubits], g.params) for g in source]
            whole = unitary(Circuit(result.n, moved))
            assert same_up_to_phase(unitary(result.circuit), whole)
            return
        operator, found = unfolded(result.circuit)
        left, wanted = unfolded(source)
        assert_rotations(found, wanted, places, True)
        tail = tableau(*result.tail.images())
        assert_operator(operator.then(tail), left, places, places)
        assert kept["tail"] == "return" or tail == stim.Tableau(result.n)

    if kept["tail"] == "close":
        kept["steps"] = options.get("steps", 10)
    return Case(zb.routing.route, source, kept, check)


# --- running ------------------------------------------------------------------------------------

FAMILIES = {
    family.__name__: family
    for family in (linear, phase, pauli, clifford, state, encoder, graph_state, routing)
}


def instance(name, number, method=None):
    draw = Draw(f"{name} {number}")
    draw.only = method
    n = draw.size(number)
    return draw, n, FAMILIES[name](draw, n)


def try_instance(name, number, method=None):
    """The size; raises where something is wrong. Of every eighth instance, effort is looked at."""
    draw, n, case = instance(name, number, method)
    result = case.search(case.given, **case.options)
    case.check(result)
    assert pickle.loads(pickle.dumps(result)) == result
    if draw.chance(0.125) and "steps" in case.options:
        again = case.search(case.given, **case.options)
        assert again.circuit == result.circuit, "the same call gave another circuit"
        more = case.options | {"steps": case.options["steps"] + int(500 * draw.random() ** 2) + 1}
        longer = case.search(case.given, **more)
        case.check(longer)
        sizes = [case.size(one) for one in (longer, result)]
        assert sizes[0] <= sizes[1], f"{more['steps']} steps were worse: {sizes}"
    return n


def sweep(name, first, count):
    """The number of faults, each told as it is found."""
    start, sizes, faults = time.process_time(), set(), 0
    for number in range(first, first + count):
        try:
            sizes.add(try_instance(name, number))
        except Exception:
            faults += 1
            _, n, case = instance(name, number)
            options = ", ".join(f"{key}={value!r}" for key, value in case.options.items())
            print(traceback.format_exc(limit=-2), f"{n} qubits, {options}", sep="\n")
            print(f"again: ./dev test sweep --only {name} --first {number} 1", flush=True)
    seconds = time.process_time() - start
    told = f"{count:7} instances, {len(sizes)} sizes, {faults} faults, {seconds:.0f} s"
    print(f"{name:12}{told}", flush=True)
    return faults


def main():
    parser = argparse.ArgumentParser(description=__doc__.partition("\n\n")[0])
    parser.add_argument("count", nargs="?", type=int, default=1000, help="instances a family")
    parser.add_argument("--only", choices=FAMILIES, action="append", help="these families")
    parser.add_argument("--first", type=int, default=0, help="number of the first instance")
    arguments = parser.parse_args()
    names = arguments.only or FAMILIES
    sys.exit(sum(sweep(name, arguments.first, arguments.count) for name in names) > 0)


if __name__ == "__main__":
    main()

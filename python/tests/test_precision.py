"""Symbolic angles keep all digits of doubles, wherever they are added, turned or passed on."""

import math
import random

import numpy as np
import pytest
from support import rotation_matrix, unitary

import zeltbraidwerk as zb
from zeltbraidwerk import Circuit, Gate, Parameter

VALUES = {"a": 1 / 3, "b": math.pi**3, "c": -math.e}
CLOSE = 1e-12


def angle(rng):
    """Numbers of 17 digits, most with a symbol or two."""
    found = Parameter(rng.uniform(-3, 3))
    for name in rng.sample(sorted(VALUES), rng.randrange(3)):
        found += Parameter(name) * rng.uniform(-2, 2)
    return found


def circuit(rng, n=3, count=20):
    gates = []
    for _ in range(count):
        q, other = rng.sample(range(n), 2)
        name = rng.choice(["RX", "RY", "RZ", "PH", "H", "S", "CNOT", "CNOT"])
        if name == "CNOT":
            gates.append(Gate.cnot(q, other))
        else:
            gates.append(Gate(name, q, *([] if name in "HS" else [angle(rng)])))
    return Circuit(n, gates)


def number(value):
    value = Parameter(value)
    return float(value.bind({name: VALUES[name] for name in value.coefficients}))


def operator(circuit):
    return unitary(circuit.bind({name: VALUES[name] for name in circuit.symbols}).elementary())


def apart(found, wanted):
    """The largest difference of entries, up to a phase."""
    phase = np.vdot(found, wanted)
    return np.abs(found * phase / abs(phase) - wanted).max()


MADE = {
    "bind of a part": lambda c, seed: c.bind({"a": VALUES["a"]} if "a" in c.symbols else {}),
    "fused": lambda c, seed: c.fused(),
    "named": lambda c, seed: c.named(),
    "rzz": lambda c, seed: c.in_basis("rzz"),
    "json": lambda c, seed: zb.from_json(c.to_json()),
    "core": lambda c, seed: Circuit.from_core(c.n, c.to_core()),
    "optimize": lambda c, seed: zb.optimize(c, steps=1000, seed=seed).circuit,
    "route": lambda c, seed: zb.routing.route(c, zb.Device.line(3)).circuit,
}


@pytest.mark.parametrize("name", MADE)
def test_circuits(name):
    rng = random.Random(5)
    for seed in range(6):
        given = circuit(rng)
        assert apart(operator(MADE[name](given, seed)), operator(given)) < CLOSE


@pytest.mark.parametrize("order", ["given", "repeated"])
def test_pauli_rotations(order):
    rng = random.Random(7)
    strings = ["".join(rng.choices("IXYZ", k=3)) for _ in range(7)]
    strings = [string for string in strings if string != "III"]
    strings += strings[-1:] * 3 if order == "repeated" else []
    rotations = [(rng.choice("+-") + string, angle(rng)) for string in strings]
    wanted = np.eye(8, dtype=complex)
    for string, turn in rotations:
        sign = -1 if string[0] == "-" else 1
        wanted = rotation_matrix(string[1:], sign * number(turn)) @ wanted
    for method in ("search", "auto"):
        result = zb.pauli.synthesize(rotations, method=method, seed=1, steps=500)
        assert apart(operator(result.circuit), wanted) < CLOSE


def test_terms_and_rows_of_equal_angles_are_added():
    rng = random.Random(9)
    turns = [angle(rng) for _ in range(40)]
    exact = math.fsum(map(number, turns))
    polynomial = zb.phase.synthesize((["11"] * 40, turns), seed=1, steps=0)
    (found,) = [gate.params[0] for gate in polynomial.circuit if gate.params]
    assert number(found) == pytest.approx(exact, abs=1e-11)
    normal = zb.routing.normalize(Circuit(1, [Gate.rz(0, turn) for turn in turns]))
    ((_, found),) = normal.rotations
    assert math.sin((number(found) - exact) / 2) == pytest.approx(0, abs=1e-11)

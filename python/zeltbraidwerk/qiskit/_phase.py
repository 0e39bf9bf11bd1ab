"""The phase of a circuit of Clifford gates, which tableaus leave out."""

from __future__ import annotations

import math
from collections.abc import Iterable, Iterator

from zeltbraidwerk import errors
from zeltbraidwerk.gates import Gate

_Form = tuple[int, int]  # the variables, as bits, and the constant of a linear form modulo 2


def phase_of_identity(n: int, gates: Iterable[Gate]) -> float:
    """The angle of the number that a circuit which does nothing else multiplies states by.

    The circuit is run on the state of all zeros. A state is kept as the sum over all values of some
    variables of i^(...) |linear forms>, after N. de Beaudrap and S. Herbert, "Fast stabiliser
    simulation with quadratic form expansions" (Quantum 6, 2022), but that variables are summed over
    at the end alone. Takes O(m) words per gate and O(m^3) bits at the end, for m gates H.
    """
    state = _Sum(n)
    for gate in gates:
        for name, qubits, turns in _parts(gate):
            state.apply(name, qubits, turns)
    return state.phase() % (2 * math.pi)


def _parts(gate: Gate) -> Iterator[tuple[str, tuple[int, ...], int]]:
    """H, S (turns), CNOT, CZ, X, and P: a phase of so many times pi/4."""
    a = gate.qubits[0]
    kind = {"CZ": "CSIGN", "PH": "S"}.get(gate.name, gate.name)
    if kind in ("I",):
        return
    if kind in ("CNOT", "CSIGN", "H", "X"):
        yield kind, gate.qubits, 1
    elif kind in ("S", "D-S", "Z") and gate.name != "PH":
        yield "S", (a,), {"S": 1, "Z": 2, "D-S": 3}[kind]
    elif kind == "Y":  # i X Z
        yield from (("S", (a,), 2), ("X", (a,), 1), ("P", (), 2))
    elif gate.name in ("RX", "RY", "RZ", "PH"):
        turns = round(float(gate.params[0]) / (math.pi / 2))
        around = {"RX": [("H", (a,), 1)], "RY": [("S", (a,), 3), ("H", (a,), 1)]}.get(gate.name, [])
        yield from around
        yield "S", (a,), turns
        if gate.name != "PH":
            yield "P", (), -turns
        yield from reversed([(k, on, 4 - t if k == "S" else t) for k, on, t in around])
    else:
        raise errors.NotCliffordError(f"got the gate {gate.name}, wanted Clifford gates")


class _Sum:
    """sum over x of e^(i pi k/4) i^(l x) (-1)^(x Q x) |forms of x>, up to a positive factor."""

    def __init__(self, n: int) -> None:
        self._forms: list[_Form] = [(0, 0)] * n
        self._eighths = 0
        self._powers: list[int] = []  # of i for each variable
        self._pairs: list[int] = []  # the variables that each has a product with

    def apply(self, name: str, qubits: tuple[int, ...], turns: int) -> None:
        forms = self._forms
        first = qubits[0] if qubits else 0
        if name == "P":
            self._eighths += turns
        elif name == "X":
            forms[first] = (forms[first][0], forms[first][1] ^ 1)
        elif name == "S":
            self._power(forms[first], turns)
        elif name == "CNOT":
            (u, a), (v, b) = forms[first], forms[qubits[1]]
            forms[qubits[1]] = (u ^ v, a ^ b)
        elif name == "CSIGN":
            self._product(forms[first], forms[qubits[1]])
        else:
            fresh = (1 << len(self._powers), 0)
            self._powers.append(0)
            self._pairs.append(0)
            self._product(fresh, forms[first])
            forms[first] = fresh

    def phase(self) -> float:
        """Of the amplitude of all zeros, which must not vanish: every form is made zero, then
        every variable is summed over."""
        left = list(self._forms)
        while left:
            variables, constant = left.pop()
            if variables:
                u, rest = _highest(variables), (variables, constant)
                self._substitute(u, rest)
                left = [_without(form, u, rest) for form in left]
            elif constant:
                raise errors.NotCliffordError("got a circuit that is not the identity")
        for v in reversed(range(len(self._powers))):
            self._sum_over(v)
        return self._eighths * math.pi / 4

    def _power(self, form: _Form, turns: int) -> None:
        """Multiplies by i^(turns f), f in 0 and 1."""
        variables, constant = form
        if constant:  # i^(t (1 - f)) = i^t i^(-t f)
            self._eighths += 2 * turns
            turns = -turns
        indices = list(_bits(variables))
        for v in indices:
            self._powers[v] = (self._powers[v] + turns) % 4
        if turns % 2:  # the sum less twice the products of pairs
            for v in indices:
                self._pairs[v] ^= variables & ~(1 << v)

    def _product(self, first: _Form, second: _Form) -> None:
        """Multiplies by (-1)^(f g)."""
        (u, a), (v, b) = first, second
        for x in _bits(u):
            self._pairs[x] ^= v & ~(1 << x)
        for y in _bits(v):
            self._pairs[y] ^= u & ~(1 << y)
        for x in _bits(u & v):
            self._powers[x] = (self._powers[x] + 2) % 4
        if b:
            self._power((u, 0), 2)
        if a:
            self._power((v, 0), 2)
        self._eighths += 4 * (a & b)

    def _substitute(self, u: int, zero: _Form) -> None:
        """Takes variable u, which is in the form, for what makes the form zero."""
        value = (zero[0] & ~(1 << u), zero[1])
        power, partners = self._taken(u)
        self._power(value, power)
        self._product(value, (partners, 0))

    def _sum_over(self, v: int) -> None:
        power, partners = self._taken(v)
        if power % 2:  # 1 + i^p (-1)^f is sqrt 2 times e^(i pi/4 s) i^(-s f), s = 1 or -1
            sign = 1 if power == 1 else -1
            self._eighths += sign
            self._power((partners, 0), -sign)
        elif partners:
            self._substitute(_highest(partners), (partners, power // 2))
        elif power:
            raise errors.NotCliffordError("got a circuit that is not the identity")

    def _taken(self, v: int) -> tuple[int, int]:
        """Removes a variable from the exponent; its power and its partners."""
        power, partners = self._powers[v], self._pairs[v]
        for other in _bits(partners):
            self._pairs[other] &= ~(1 << v)
        self._powers[v] = self._pairs[v] = 0
        return power, partners


def _without(form: _Form, u: int, zero: _Form) -> _Form:
    return (form[0] ^ zero[0], form[1] ^ zero[1]) if form[0] >> u & 1 else form


def _highest(variables: int) -> int:
    return variables.bit_length() - 1


def _bits(variables: int) -> Iterator[int]:
    while variables:
        low = variables & -variables
        yield low.bit_length() - 1
        variables ^= low

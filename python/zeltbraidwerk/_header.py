"""The gates that OpenQASM 2 and Qiskit know by name, each as one of ours or by a definition.

All readers share this table, so that a Toffoli gate of any format becomes the same fifteen gates.
Each is right up to a global phase.
"""

from __future__ import annotations

import math
import re
from collections.abc import Sequence
from functools import cache

from zeltbraidwerk import errors
from zeltbraidwerk._definitions import (
    Definition,
    Known,
    Plain,
    Primitive,
    check_counts,
    define,
    expanded,
)
from zeltbraidwerk.gates import COMPOSED, Gate, Parameter

_T = math.pi / 4
_PRIMITIVES = {
    "cx": Primitive("CNOT", 2), "CX": Primitive("CNOT", 2), "cz": Primitive("CSIGN", 2),
    "h": Primitive("H"), "s": Primitive("S"), "sdg": Primitive("D-S"), "x": Primitive("X"),
    "y": Primitive("Y"), "z": Primitive("Z"), "id": Primitive("I"),
    "rx": Primitive("RX", 1, 1), "ry": Primitive("RY", 1, 1), "rz": Primitive("RZ", 1, 1),
    "p": Primitive("PH", 1, 1), "u1": Primitive("PH", 1, 1),
    "t": Primitive("PH", fixed=(_T,)), "tdg": Primitive("PH", fixed=(-_T,)),
    "sx": Primitive("RX", fixed=(2 * _T,)), "sxdg": Primitive("RX", fixed=(-2 * _T,)),
}  # fmt: skip
_DEFINITIONS = """
gate u0(gamma) a { id a; }
gate u3(theta,phi,lambda) a { rz(lambda) a; ry(theta) a; rz(phi) a; }
gate u(theta,phi,lambda) a { u3(theta,phi,lambda) a; }
gate U(theta,phi,lambda) a { u3(theta,phi,lambda) a; }
gate u2(phi,lambda) a { u3(pi/2,phi,lambda) a; }
gate swap a,b { cx a,b; cx b,a; cx a,b; }
gate cy a,b { sdg b; cx a,b; s b; }
gate ch a,b { s b; h b; t b; cx a,b; tdg b; h b; sdg b; }
gate crz(lambda) a,b { rz(lambda/2) b; cx a,b; rz(-lambda/2) b; cx a,b; }
gate cry(theta) a,b { ry(theta/2) b; cx a,b; ry(-theta/2) b; cx a,b; }
gate crx(theta) a,b { h b; crz(theta) a,b; h b; }
gate cu1(lambda) a,b { p(lambda/2) a; p(lambda/2) b; cx a,b; p(-lambda/2) b; cx a,b; }
gate cp(lambda) a,b { cu1(lambda) a,b; }
gate csx a,b { h b; cu1(pi/2) a,b; h b; }
gate cu3(theta,phi,lambda) a,b {
  p((lambda+phi)/2) a; p((lambda-phi)/2) b; cx a,b;
  u3(-theta/2,0,-(phi+lambda)/2) b; cx a,b; u3(theta/2,phi,0) b;
}
gate cu(theta,phi,lambda,gamma) a,b { p(gamma) a; cu3(theta,phi,lambda) a,b; }
gate rzz(theta) a,b { cx a,b; rz(theta) b; cx a,b; }
gate ecr a,b { s a; sx b; cx a,b; x a; }
gate iswap a,b { s a; s b; h a; cx a,b; cx b,a; h b; }
gate dcx a,b { cx a,b; cx b,a; }
gate rxx(theta) a,b { h a; h b; cx a,b; rz(theta) b; cx a,b; h a; h b; }
gate ccx a,b,c {
  h c; cx b,c; tdg c; cx a,c; t c; cx b,c; tdg c; cx a,c; t b; t c; h c; cx a,b; t a; tdg b; cx a,b;
}
gate ccz a,b,c { h c; ccx a,b,c; h c; }
gate cswap a,b,c { cx c,b; ccx a,b,c; cx c,b; }
gate rccx a,b,c { h c; t c; cx b,c; tdg c; cx a,c; t c; cx b,c; tdg c; h c; }
gate rc3x a,b,c,d {
  h d; t d; cx c,d; tdg d; h d; cx a,d; t d; cx b,d; tdg d; cx a,d; t d; cx b,d; tdg d; h d; t d;
  cx c,d; tdg d; h d;
}
gate c3x a,b,c,d {
  h d; p(pi/8) a; p(pi/8) b; p(pi/8) c; p(pi/8) d;
  cx a,b; p(-pi/8) b; cx a,b;
  cx b,c; p(-pi/8) c; cx a,c; p(pi/8) c; cx b,c; p(-pi/8) c; cx a,c;
  cx c,d; p(-pi/8) d; cx b,d; p(pi/8) d; cx c,d; p(-pi/8) d; cx a,d; p(pi/8) d;
  cx c,d; p(-pi/8) d; cx b,d; p(pi/8) d; cx c,d; p(-pi/8) d; cx a,d; h d;
}
gate c3sqrtx a,b,c,d {
  h d; cu1(pi/8) a,d; cx a,b; cu1(-pi/8) b,d; cx a,b; cu1(pi/8) b,d;
  cx b,c; cu1(-pi/8) c,d; cx a,c; cu1(pi/8) c,d; cx b,c; cu1(-pi/8) c,d; cx a,c; cu1(pi/8) c,d; h d;
}
gate c4x a,b,c,d,e {
  h e; cu1(pi/2) d,e; h e; c3x a,b,c,d; h e; cu1(-pi/2) d,e; h e; c3x a,b,c,d; c3sqrtx a,b,c,e;
}
"""


@cache
def table() -> Known:
    """By the names of OpenQASM."""
    known: dict[str, Primitive | Definition] = dict(_PRIMITIVES)
    for head, body in re.findall(r"gate ([^{]*){([^}]*)}", _DEFINITIONS):
        statements = [(0, text.strip()) for text in body.split(";") if text.strip()]
        name, gate = define(head.strip(), statements, known)
        known[name] = gate
    return known


def read_gate(name: str, qubits: Sequence[int], angles: Sequence[float | Parameter]) -> list[Plain]:
    """A gate of the table, as gates of this package."""
    gate = table().get(name)
    if gate is None:
        raise errors.GateError(f"the gate {name} is not known")
    check(gate, name, qubits, angles)
    return expanded(gate, qubits, angles)


def elementary(gate: Gate) -> list[Gate]:
    """A gate of :data:`COMPOSED` as gates of the library; any other as it is."""
    if gate.name not in COMPOSED:
        return [gate]
    parts = expanded(table()[COMPOSED[gate.name]], gate.qubits, gate.params)
    return [Gate._trusted(*part) for part in parts]


def check(
    gate: Primitive | Definition, name: str, qubits: Sequence[int],
    angles: Sequence[float | Parameter],
) -> None:  # fmt: skip
    """Refuses wrong numbers of qubits and angles, and numbers that are not finite."""
    check_counts(gate, name, len(qubits), len(angles))
    for angle in angles:
        if type(angle) is float and not math.isfinite(angle):
            raise errors.AngleError(f"got the angle {angle} of {name}, wanted a finite number")

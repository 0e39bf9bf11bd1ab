"""Circuits from outside: OpenQASM 2 by both readers, Qiskit, pytket, Stim, and what is none."""

import math
import re
import sys

import numpy as np
import pytest
from hypothesis import given
from hypothesis import strategies as st
from qasm_files import FILES, HEAD
from support import same_up_to_phase, unitary

from zeltbraidwerk import Circuit, CnotCircuit, Gate, _validate, errors, pauli
from zeltbraidwerk._header import table
from zeltbraidwerk.instructions import Barrier, Conditional, Measure, Register, Reset

# --- OpenQASM 2 ---------------------------------------------------------------------------------


def places(circuit):
    """The lines that operations come from; gates keep none."""
    return [getattr(item, "where", "") for item in circuit]


@pytest.mark.parametrize("name", FILES)
def test_programs_are_the_same_by_both_readers(name):
    pytest.importorskip("qiskit")
    own = Circuit.from_qasm(FILES[name], reader="own")
    assert Circuit.from_qasm(FILES[name], reader="qiskit") == own
    assert Circuit.from_qasm(FILES[name]) == own
    assert places(Circuit.from_qasm(FILES[name])) == places(own)
    again = Circuit.from_qasm(own.to_qasm(), reader="own")
    assert again.named().operations == own.named().operations
    assert again.classical == own.classical


def test_a_program_in_our_operations():
    x2 = Gate("X", 2)
    assert Circuit.from_qasm(FILES["teleport"], reader="own").operations[3:] == (
        Gate.h(1), Gate.cnot(1, 2), Barrier((0, 1, 2)), Gate.cnot(0, 1), Gate.h(0), Measure(0, 0),
        Measure(1, 1), Conditional(Gate("Z", 2), 0), Conditional(x2, 1), Measure(2, 2),
    )  # fmt: skip
    assert Circuit.from_qasm(FILES["conditions"], reader="own").operations[:4] == (
        Measure(0, 0), Measure(1, 1), Conditional(Gate.cnot(0, 1), (0, 1), 3),
        Conditional(Reset(0), 2),
    )  # fmt: skip
    several = Circuit.from_qasm(FILES["several"], reader="own")
    assert several.classical == (Register("c", 1), Register("d", 2))
    assert several.operations == (Gate.h(1), Gate.cnot(1, 2), Measure(2, 2), Measure(0, 0))
    assert [item.where for item in several[2:]] == ["line 4", "line 4"]


# For Qiskit. Those of ecr and iswap are others than ours, by rotations of both qubits.
OF_NO_HEADER = {
    "ccz": "gate ccz a,b,c { h c; ccx a,b,c; h c; }",
    "dcx": "gate dcx a,b { cx a,b; cx b,a; }",
    "ecr": """gate rzx(t) a,b { h b; cx a,b; rz(t) b; cx a,b; h b; }
              gate ecr a,b { rzx(pi/4) a,b; x a; rzx(-pi/4) a,b; }""",
    "iswap": "gate iswap a,b { rxx(-pi/2) a,b; s a; s b; rxx(-pi/2) a,b; sdg a; sdg b; }",
}


@pytest.mark.parametrize("end", ["\r\n", "\r"])
@pytest.mark.parametrize("reader", ["own", "auto"])
def test_texts_of_other_systems(end, reader):
    """A comment that would not end at its line would swallow the gate after it."""
    text = "\ufeff" + end.join(["OPENQASM 2.0;", "qreg q[2];  // two", "CX q[0],q[1];", ""])
    assert Circuit.from_qasm(text, reader=reader) == Circuit(2, [Gate.cnot(0, 1)])
    with pytest.raises(errors.QasmError, match=r"^line 4: the gate foo"):
        Circuit.from_qasm(text + "foo q[0];", reader=reader)


def test_gates_of_the_header_by_their_matrices():
    """Those of Qiskit, which has its own definitions."""
    qasm2 = pytest.importorskip("qiskit.qasm2")
    from qiskit.quantum_info import Operator

    for name, gate in table().items():
        if name == "u0":  # a delay, which has no matrix
            continue
        angles = listed(f"0.{k + 3}" for k in range(gate.angles))
        wires = ",".join(f"q[{(2 * k + 1) % 5}]" for k in range(gate.qubits))
        more = OF_NO_HEADER.get(name, "")
        text = f"qreg q[5]; {name}{angles} {wires};"
        theirs = qasm2.loads(
            f"{HEAD}{more} {text}", custom_instructions=qasm2.LEGACY_CUSTOM_INSTRUCTIONS
        )
        matrix = Operator(theirs.reverse_bits()).data
        assert same_up_to_phase(matrix, unitary(Circuit.from_qasm(HEAD + text, reader="own"))), name


def listed(items):
    """In parentheses where there are any."""
    text = ",".join(items)
    return f"({text})" if text else ""


QUBITS = [f"{register}[{k}]" for register in "ab" for k in range(3)]
NUMBERS = st.one_of(
    st.sampled_from(["pi", "2", "0.5", "1e-2", "3.", ".25"]), st.integers(0, 9).map(str)
)


def terms(names):
    leaves = st.one_of(NUMBERS, st.sampled_from(names)) if names else NUMBERS
    return st.recursive(
        leaves,
        lambda inner: st.one_of(
            st.builds("{}{}{}".format, inner, st.sampled_from([" + ", "-", "*", "/"]), inner),
            st.builds("-{}".format, inner),
            st.builds("({})".format, inner),
            st.builds("({})^2".format, inner),
            st.builds("{}({})".format, st.sampled_from(["sin", "cos", "exp"]), inner),
        ),
        max_leaves=4,
    )


@st.composite
def applications(draw, gates, wires, names=()):
    name = draw(st.sampled_from(sorted(gates)))
    qubits, angles = gates[name]
    on = draw(st.permutations(wires))[:qubits]
    given_angles = draw(st.lists(terms(names), min_size=angles, max_size=angles))
    return f"{name}{listed(given_angles)} {','.join(on)};"


@st.composite
def programs(draw):
    gates = {name: (gate.qubits, gate.angles) for name, gate in table().items()}
    gates = {name: counts for name, counts in gates.items() if counts[0] < 4}
    lines = ["OPENQASM 2.0;", 'include "qelib1.inc";']
    for k in range(draw(st.integers(0, 3))):
        wires, names = "xyz"[: draw(st.integers(1, 3))], "tu"[: draw(st.integers(0, 2))]
        fitting = {name: counts for name, counts in gates.items() if counts[0] <= len(wires)}
        body = draw(st.lists(applications(fitting, list(wires), list(names)), max_size=3))
        head = f"gate own{k}{listed(names)} {','.join(wires)}"
        lines.append(f"{head} {{ {' '.join(body)} }}")
        gates[f"own{k}"] = len(wires), len(names)
    lines.append("qreg a[3]; qreg b[3]; creg c[2]; creg d[3];")
    one = {name: counts for name, counts in gates.items() if counts == (1, 0)}
    simple = st.one_of(
        applications(gates, QUBITS),
        applications(one, ["a", "b"]),
        st.builds("measure {} -> d[{}];".format, st.sampled_from(QUBITS), st.integers(0, 2)),
        st.sampled_from(["reset a;", "reset b[1];", "measure b -> d;", "cx a,b;", "cx a[1],b;"]),
    )
    others = st.one_of(
        st.builds("if({}=={}) {}".format, st.sampled_from("cd"), st.integers(0, 9), simple),
        st.sampled_from(["barrier a,b[1];", "barrier b;", "// nothing", "/* of\nall */"]),
    )
    return "\n".join([*lines, *draw(st.lists(st.one_of(simple, simple, others), max_size=8))])


@given(text=programs())
def test_random_programs_are_the_same_by_both_readers(text):
    pytest.importorskip("qiskit")
    found = []
    for reader in ("own", "auto", "qiskit"):
        try:
            found.append(Circuit.from_qasm(text, reader=reader))
        except errors.Error:  # a division by zero
            found.append(None)
    assert found[0] == found[1]
    assert places(found[0] or ()) == places(found[1] or ())
    # Qiskit looks at the numbers of definitions that are not used as well.
    assert found[2] is None or found[2] == found[0]


BAD_PROGRAMS = [
    ("OPENQASM 3;\nqreg q[1];", "line 1: got version 3 of OpenQASM, wanted 2.0"),
    ("qreg q[1];\nOPENQASM 2.0;", "line 2: got OPENQASM after other statements"),
    ('OPENQASM 2.0;\ninclude "stdgates.inc";', "line 2: .* wanted no file but"),
    ('include "/etc/passwd";', "line 1: .* wanted no file but"),
    ("qreg q[1];\nh q[0]", r"line 2: got 'h q\[0\]' without its semicolon"),
    ("qreg q[1];\nqreg q[2];", "line 2: got the register q twice"),
    ("qreg q[2];\ncx q[0],q[0];", r"line 2: got a qubit twice in 'cx q\[0\],q\[0\]'"),
    ("qreg q[2]; qreg r[3];\ncx q,r;", "line 2: got registers of unequal size"),
    ("qreg q[1];\nfoo q[0];", "line 2: the gate foo is not known"),
    ("qreg q[3];\n\nccx q[0],q[1];", "line 3: got 2 qubits for ccx, wanted 3"),
    ("qreg q[1];\nrz(1,2) q[0];", "line 2: got 2 angles for rz, wanted 1"),
    ("qreg q[1];\nU q;", "line 2: got 0 angles for U, wanted 3"),
    ("OPENQASM 2.99999999999999999999999;\nqreg q[1];", r"line 1: got version 2\.9"),
    ("qreg q[1]; // \ud800\nh \ud800;", "line 2: got the operand"),
    ("qreg q[1];\nrz(a) q[0];", "line 2: got the angle 'a', wanted a number"),
    ("qreg q[1];\nrz(1/0) q[0];", "line 2: got the angle '1/0', wanted a number"),
    ("qreg q[1];\nrz(9^9^9) q[0];", "line 2: got the angle"),
    ("qreg q[2];\ncu(1,2,3,exp(999)) q[0],q[1];", "line 2: got the angle 'exp.999.'"),
    ("qreg q[2];\ncu3(1,1e308,1e308) q[0],q[1];", "line 2: got an angle of cu3 that is no"),
    ("gate g(t) a { rz(1/t) a; }\nqreg q[1];\ng(0) q[0];", "line 3: got an angle of g"),
    ("qreg q[1];\nh q[1];", r"line 2: got q\[1\], wanted places 0 to 0"),
    ("qreg q[1]; creg c[1];\nmeasure q[0] -> c[1];", r"line 2: got c\[1\], wanted places 0 to 0"),
    ("qreg q[2]; creg c[3];\nmeasure q -> c;", "line 2: got 2 qubits and 3 bits"),
    ("qreg q[1]; creg c[1];\nmeasure q[0];", "line 2: cannot read 'measure"),
    ("qreg q[1]; creg c[1];\nif(q==1) x q[0];", "line 2: got 'q', wanted a classical register"),
    ("qreg q[1]; creg c[1];\nif(c==1) barrier q;", "line 2: the gate barrier is not known"),
    ("opaque magic a;\nqreg q[1];\nmagic q[0];", "line 3: the gate magic is opaque"),
    ("gate g a { g a; }", "line 1: the gate g is not known"),
    ("gate g a\n{\n  h b;\n}", "line 3: got 'b', wanted a qubit of the definition"),
    ("gate g a {\nmeasure a -> c;\n}", "line 2: got measure in a definition"),
    ("gate g a { h a; }\ngate g a { x a; }", "line 2: got the gate g twice"),
    ("gate g a { h a; ", "line 1: got '{' without its '}'"),
    ("qreg q[1];\n}", "line 2: got '}' without its '{'"),
    ("qreg q[1]; /* h q[0];\nh q[0];", r"line 1: got /\* without its \*/"),
    ("qreg q[1];\n§ q[0];", "line 2: cannot read"),
    ("", "got no statement, wanted OpenQASM 2"),
    ("qreg q[1];\nmeasure q[0] -> c[0];", r"line 2: got the operand 'c\[0\]', wanted a bit"),
    ("qreg q; h q;", "cannot read 'qreg q'"),
    ("circuit.qasm.gz", "line 1: got 'circuit.qasm.gz' without its semicolon"),
]


@pytest.mark.parametrize(("text", "complaint"), BAD_PROGRAMS)
def test_bad_programs_are_refused_with_their_line(text, complaint):
    for reader in ("own", "auto"):
        with pytest.raises(errors.QasmError, match=complaint):
            Circuit.from_qasm(text, reader=reader)
    if "qiskit" in sys.modules:
        with pytest.raises(errors.Error):
            Circuit.from_qasm(text, reader="qiskit")


def doubling(depth, inner="h a; "):
    """Gates each of which is two of the one before it."""
    lines = [f"gate g0 a {{ {inner}}}"]
    lines += [f"gate g{k} a {{ g{k - 1} a; g{k - 1} a; }}" for k in range(1, depth + 1)]
    return "\n".join([*lines, f"qreg q[1];\ng{depth} q[0];"])


@pytest.mark.parametrize(
    ("text", "complaint"),
    [
        (doubling(30), "line 33: got more than 4000000 operations"),
        (
            doubling(30).replace("\ng30", " creg c[1]; if(c==1) g30"),
            "line 32: got more than 4000000 operations",
        ),
        (doubling(60, inner=""), "line 63: got more than 4000000 operations"),
        (doubling(150), "line 101: got the gate g100 nested more than 100 deep"),
        ("qreg q[1000000000];", "line 1: got 1000000000 qubits, wanted 1000000 at most"),
        ("qreg q[1]; creg c[99999999];", "got 99999999 bits"),
        (
            "".join(f"qreg {name}[99999];" for name in "abcde") + "c4x a,b,c,d,e;",
            "got more than 4000000 operations",
        ),
        ("qreg q[999999];" + "barrier q;" * 9, "got more than 4000000 operations"),
        ("qreg q[" + "9" * 5000 + "];", "got a number of 5000 digits"),
        ("qreg q[1]; creg c[1]; if(c==" + "9" * 5000 + ") h q;", "a number of 5000 digits"),
        ("qreg q[1]; rz(" + "(" * 100_000 + ") q[0];", "got the angle"),
        ("qreg q[1]; rz(" + "2^" * 100_000 + "2) q[0];", "got the angle"),
    ],
)
def test_hostile_programs_end_soon(text, complaint):
    with pytest.raises(errors.QasmError, match=complaint) as caught:
        Circuit.from_qasm(text)
    if "angle" not in complaint:
        assert isinstance(caught.value, errors.TooLargeError)
        assert "; the limit is set by limits.set(" in str(caught.value)


def test_deep_expressions_are_read():
    for text in ("(" * 100_000 + "1" + ")" * 100_000, "-" * 100_000 + "1"):
        assert Circuit.from_qasm(f"qreg q[1]; rz({text}) q[0];")[0] == Gate.rz(0, 1.0)


# --- what is no circuit ---------------------------------------------------------------------------


@pytest.mark.parametrize("thing", [None, 5, object(), b"qreg q[1];", ["h"], int, math, np.eye(2)])
@pytest.mark.parametrize("kind", [Circuit, CnotCircuit])
def test_no_circuit(kind, thing):
    name = re.escape(_validate.shown(thing))
    for read, wanted in (
        (kind.from_qasm, f"text: got {name}, wanted OpenQASM 2 as a string"),
        (kind.from_qiskit, f"circuit: got {name}, wanted a QuantumCircuit of qiskit"),
        (kind.from_pytket, f"circuit: got {name}, wanted a Circuit of pytket"),
        (kind.from_stim, f"circuit: got {name}, wanted a Circuit of stim"),
        (Circuit.of, f"circuit: got {type(thing).__name__}, wanted a Circuit"),
    ):
        with pytest.raises(errors.DtypeError, match=wanted):
            read(thing)


def test_no_circuit_but_a_gate_whose_class_has_no_module(qiskit):
    gate = qiskit.circuit.library.CXGate()
    with pytest.raises(errors.DtypeError, match=r"circuit: got .*, wanted a QuantumCircuit"):
        Circuit.of(gate)
    with pytest.raises(errors.DtypeError, match=r"rotations: got .*CXGate"):
        pauli.synthesize([(gate, 0.5)])


def test_files(tmp_path):
    good = tmp_path / "good.qasm"
    good.write_text("\ufeffOPENQASM 2.0; // naïve\nqreg q[1]; h q[0];", encoding="utf-8")
    assert Circuit.of(good) == Circuit.of(str(good)) == Circuit(1, [Gate.h(0)])
    empty, binary, latin = (tmp_path / name for name in ("empty", "binary", "latin"))
    empty.write_text("")
    binary.write_bytes(bytes(range(256)))
    latin.write_bytes("qreg q[1]; // naïve".encode("latin-1"))
    for path, complaint in (
        (tmp_path / "missing.qasm", "wanted OpenQASM 2 or the path of a file .*No such file"),
        (tmp_path, "Is a directory"),
        (binary, "wanted text in UTF-8"),
        (latin, "wanted text in UTF-8"),
    ):
        for given_path in (path, str(path)):
            with pytest.raises(errors.QasmFileError, match=complaint):
                Circuit.of(given_path)
    for text in ("no such file", "x\0y", "x" * 10_000):
        with pytest.raises(errors.QasmFileError, match="circuit: got '"):
            Circuit.of(text)
    with pytest.raises(errors.QasmError, match="got no statement"):
        Circuit.of(empty)
    with pytest.raises(errors.OptionError, match="reader: got 'mine', wanted one of 'auto'"):
        Circuit.from_qasm("qreg q[1];", reader="mine")


def test_without_qiskit_our_own_reader_does(monkeypatch):
    monkeypatch.setitem(sys.modules, "qiskit", None)
    assert Circuit.from_qasm(FILES["ghz"]).gate_count == 3
    with pytest.raises(errors.MissingPackageError, match="pip install qiskit"):
        Circuit.from_qasm(FILES["ghz"], reader="qiskit")

"""OpenQASM 3, read and written, against programs of ours in OpenQASM 2."""

import numpy as np
import pytest
from support import same_up_to_phase, unitary
from test_converters import theirs

from zeltbraidwerk import Circuit, errors
from zeltbraidwerk.gates import Gate

PROGRAM = """
// a comment
OPENQASM 3.0; include "stdgates.inc";
qubit[2] a; qubit b; bit[2] c; input float w;
gate twice(x) q { rz(x) q; rz(2*x) q; }
h a[0]; cx a[0],a[1]; twice(pi/3) b; inv @ s b; ctrl @ x a[1],b; rz(w) b;
c[1] = measure a[0]; if (c[1]) { x b; } reset b;
"""


def test_a_program(tmp_path):
    pytest.importorskip("qiskit_qasm3_import")
    circuit = Circuit.of(PROGRAM)
    assert Circuit.of("\ufeff" + PROGRAM) == circuit
    angle = np.pi / 3
    wanted = Circuit.from_qasm(
        f"qreg q[3]; h q[0]; cx q[0],q[1]; rz({angle}) q[2]; rz({2 * angle}) q[2]; sdg q[2]; "
        "cx q[1],q[2];"
    )
    assert circuit.gates[: len(wanted)] == wanted.gates
    assert circuit.gates[len(wanted)] == Gate("RZ", 2, "w")
    assert [op.name for op in circuit.operations[-3:]] == ["measure", "conditional", "reset"]
    assert circuit.operations[-3].bit == 1
    path = tmp_path / "program.qasm"
    path.write_text(circuit.to_qasm3())
    assert Circuit.of(path) == circuit


def test_gates_of_ours_are_those_of_theirs():
    pytest.importorskip("qiskit_qasm3_import")
    from qiskit import qasm3

    gates = [Gate("XX", (2, 0), (0.3, 0)), Gate("PH", 1, 0.4), Gate("D-S", 0), Gate("CNOT", (2, 1))]
    circuit = Circuit(3, gates)
    text = circuit.to_qasm3()
    assert same_up_to_phase(theirs(qasm3.loads(text)), unitary(circuit))
    assert same_up_to_phase(unitary(Circuit.from_qasm3(text)), unitary(circuit))


@pytest.mark.parametrize(
    ("text", "complaint"),
    [
        ("OPENQASM 3; qubit q; foo q;", "^line 1: gate 'foo' is not defined"),
        ("OPENQASM 3; qubit[", "^line 1: cannot read on at '<EOF>'"),
        ("OPENQASM 3; qubit q;\nU(0, 0, 1) q\nU(0, 0, 2) q;", "^line 3: cannot read on at 'U'"),
        ("OPENQASM 3; qubit[2] q;\n\nU(0, 0, 1) q[2];", "^line 3: index out of range"),
        ("OPENQASM 3; qubit[2] q;\nctrl @ U(0, 0, 1) q[1], q[1];", "^line 2: duplicate bit"),
        ("OPENQASM 3; qubit q;\nU(0, 0, 1/0) q;", "^line 2: integer division"),
        ("OPENQASM 3; qubit q; \\", "^OpenQASM 3: token recognition error"),
        ("\nqubit[2] q;", "^line 2: .* begins with 'OPENQASM 3.0;'"),
        ('include "stdgates.inc";', "begins with 'OPENQASM 3.0;'"),
        ('OPENQASM 3; include "other.inc"; qubit q;', "stdgates.inc alone"),
        ("OPENQASM 3; int x = 5;", "type 'int'"),
    ],
)
def test_what_is_refused(text, complaint):
    pytest.importorskip("qiskit_qasm3_import")
    with pytest.raises(errors.QasmError, match=complaint):
        Circuit.of(text)

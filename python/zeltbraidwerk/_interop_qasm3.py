"""OpenQASM 3, written by Qiskit and read by its importer."""

from __future__ import annotations

import contextlib
import io
import re
from typing import Any

from zeltbraidwerk import _interop, _interop_qiskit, _qasm, _validate, errors, limits
from zeltbraidwerk._reading import Read
from zeltbraidwerk.instructions import WholeCircuit

_SIZES = re.compile(r"\b(?:qubit|bit|qreg|creg)\b[^;\[]*\[\s*0*(\d+)")
_VERSION = re.compile(r"\s*OPENQASM\s+3")


def is_version_3(text: str) -> bool:
    """Whether the text says that it is; a version has to be its first statement."""
    return "OPENQASM" in text and _VERSION.match(_qasm.without_comments(text)) is not None


def write(circuit: WholeCircuit) -> str:
    text: str = _interop._package("qiskit.qasm3").dumps(_interop_qiskit.write(circuit))
    return text


def read(text: Any) -> Read:
    _validate.instance(text, "text", str, "OpenQASM 3 as a string")
    if re.search(r'\binclude\s*"(?!stdgates\.inc")', text):
        raise errors.QasmError("got the include of a file, wanted stdgates.inc alone")
    largest = max([int(digits[:18]) for digits in _SIZES.findall(text)], default=0)
    if largest > (most := limits.get("bits")):
        raise errors.QasmTooLargeError(
            f"got a register of {largest}, wanted {most} at most; {limits.told('bits')}"
        )
    qasm3 = _interop._package("qiskit.qasm3")
    _interop._package("qiskit_qasm3_import")
    said = io.StringIO()  # by the parser, which tells the place there alone
    try:
        with contextlib.redirect_stderr(said):
            circuit = qasm3.loads(text)
    except Exception as error:  # of the importer, of its parser, and of gates that do not fit
        cause = " ".join((str(error) or said.getvalue()).split())
        raise errors.QasmError(f"OpenQASM 3, line and column: {cause}") from None
    return _interop_qiskit.read(circuit)

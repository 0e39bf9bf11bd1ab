"""OpenQASM 3, written by Qiskit and read by its importer."""

from __future__ import annotations

import contextlib
import io
import re
import traceback
from typing import Any

from zeltbraidwerk import _interop, _interop_qiskit, _qasm, _validate, errors, limits
from zeltbraidwerk._reading import Read
from zeltbraidwerk.instructions import WholeCircuit

_SIZES = re.compile(r"\b(?:qubit|bit|qreg|creg)\b[^;\[]*\[\s*0*(\d+)")
_VERSION = re.compile(r"\s*OPENQASM\s+3")


def is_version_3(text: str) -> bool:
    """Whether the text says that it is; a version has to be its first statement."""
    return "OPENQASM" in text and _VERSION.match(_qasm.plain(text)) is not None


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
    try:
        with contextlib.redirect_stderr(io.StringIO()):  # where the parser repeats its errors
            circuit = qasm3.loads(text.removeprefix("\ufeff"))
    except Exception as error:  # of the importer, of its parser, and of gates that do not fit
        raise errors.QasmError(_told(error)) from None
    return _interop_qiskit.read(circuit)


def _told(error: Exception) -> str:
    """Where the importer, or its parser, has stopped, and why. Most errors do not tell the line: it
    is that of the token, or of the innermost node that was visited."""
    cause = error.__cause__ or error
    if token := getattr(next(iter(cause.args), None), "offendingToken", None):
        return f"line {token.line}: cannot read on at {_validate.shown(token.text)}"
    place = "OpenQASM 3"
    for frame, _ in traceback.walk_tb(cause.__traceback__):
        if span := getattr(frame.f_locals.get("node"), "span", None):
            place = f"line {span.start_line}"
    why = " ".join(str(getattr(error, "message", error)).split())
    return f"{place}: {re.sub(r'^[0-9]+,[0-9]+: |^L[0-9]+:C[0-9]+: ', '', why)}"

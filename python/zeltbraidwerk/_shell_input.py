"""What the command reads: files and standard input, in the forms that each family takes."""

from __future__ import annotations

import os
import sys
from collections.abc import Iterator
from contextlib import contextmanager, nullcontext
from pathlib import Path
from typing import Any

import numpy as np

from zeltbraidwerk import _files, _interop_stim, _json, _texts, _validate, errors, limits, phase
from zeltbraidwerk.circuits import Circuit, CnotCircuit
from zeltbraidwerk.devices import Device
from zeltbraidwerk.gates import Parameter


class InputError(Exception):
    """What the user gave cannot be used; the text says why in one line."""


def text_of(path: str) -> str:
    """The text of a file or a pipe, such as one of "<(command)", or of standard input for "-"."""
    try:
        with nullcontext(sys.stdin.buffer) if path == "-" else open(path, "rb") as file:
            data = _files.within(file, limits.get("file_bytes"), _shown(path))
    except errors.TooLargeError as error:
        raise InputError(str(error)) from None
    except (OSError, ValueError) as error:
        reason = getattr(error, "strerror", None) or error
        raise InputError(f"cannot read {path}: {reason}") from None
    return decoded(data, path)


def decoded(data: bytes, path: str) -> str:
    """The text of a file whose bytes these are."""
    shown = _shown(path)
    try:
        text = _files.decoded(data)
    except UnicodeDecodeError:
        text = "\0"
    if "\0" in text:
        raise InputError(f"{shown}: got binary data, wanted text in UTF-8")
    if not text.strip():
        raise InputError(f"{shown}: got no text")
    return text


def _shown(path: str) -> str:
    return "standard input" if path == "-" else path


@contextmanager
def located(path: str) -> Iterator[None]:
    """Adds the file to the errors of readers."""
    try:
        yield
    except errors.Error as error:
        raise InputError(f"{_shown(path)}: {error}") from None


def device(text: str) -> Device:
    """By a name or a shape, or from a file of edges."""
    try:
        return Device.of(text)
    except errors.DeviceError as error:
        if not os.path.exists(text):
            raise InputError(f"{error}; nor is there a file {text!r} of edges") from None
    content = text_of(text)
    with located(text):
        return Device.from_edges(_texts.edges(content), Path(text).stem)


# --- by family: each takes the name of the file, and its text ------------------------------------


def circuit(path: str, text: str) -> Circuit:
    found = _circuit(path, text)
    return Circuit.from_qasm(text) if found is None else found


def _circuit(path: str, text: str) -> Circuit | None:
    """Of OpenQASM, JSON of this package, or Stim's format; None for other text."""
    if path.endswith(".stim"):
        return Circuit.from_stim(_interop_stim.of_text(text))
    if text.lstrip().startswith("{"):
        value = _json.from_json(text)
        return Circuit.of(getattr(value, "circuit", value))
    return Circuit.of(text) if _files.has_statements(text) else None


def matrix(path: str, text: str) -> Any:
    """Of rows of 0 and 1, or of a circuit of CNOTs."""
    found = _circuit(path, text)
    if found is None:
        return _texts.matrix(text)
    cnots: CnotCircuit = found.to_cnot_circuit()
    return cnots.matrix()


def polynomial(path: str, text: str) -> Any:
    """Of parities before their angles, or of a diagonal circuit of CNOTs and rotations about Z."""
    found = _circuit(path, text)
    if found is None:
        pairs = _texts.weighted(text)
        return [word for word, _ in pairs], [angle for _, angle in pairs]
    terms, left = phase.polynomial_of(found)
    if not np.array_equal(left, np.eye(found.n, dtype=np.bool_)):
        raise InputError(
            f"{_shown(path)}: got a circuit that is not diagonal; the command optimize takes it"
        )
    bits = {_bits(parity, found.n): angle for parity, angle in terms.items()}
    return list(bits), list(bits.values())


def _bits(parity: int, n: int) -> str:
    return "".join(str(parity >> q & 1) for q in range(n))


def rotations(path: str, text: str) -> Any:
    """Of Pauli strings before their angles; the first acts first."""
    if _files.has_statements(text):
        raise InputError(
            f"{_shown(path)}: got OpenQASM, wanted a Pauli string and an angle on each line; "
            "the command optimize takes circuits"
        )
    return _texts.weighted(text)


def operator(path: str, text: str) -> Any:
    """Of a circuit of Clifford gates, or of the images of X, then of Z, on each qubit."""
    found = _circuit(path, text)
    if found is not None:
        return found
    images = _texts.strings(text)
    if len(images) % 2:
        raise InputError(
            f"{_shown(path)}: got {len(images)} lines, wanted the images of X on each qubit, "
            "then those of Z"
        )
    return images[: len(images) // 2], images[len(images) // 2 :]


def state(path: str, text: str) -> Any:
    """Of a circuit of Clifford gates, or of one stabilizer per qubit."""
    found = _circuit(path, text)
    return _texts.strings(text) if found is None else found


def code(path: str, text: str) -> Any:
    """Of one stabilizer on each line."""
    return _texts.strings(text)


def graph(path: str, text: str) -> Any:
    """Of edges, or of an adjacency matrix."""
    return _texts.graph(text)


def symbol(value: Any) -> str | None:
    """A symbolic angle of what was read, which some formats cannot hold; None without one."""
    if isinstance(value, Circuit):
        value = [angle for _, _, angles in value._operations() for angle in angles]
    if isinstance(value, (list, tuple)):
        return next((found for part in value if (found := symbol(part))), None)
    is_symbolic = isinstance(value, Parameter) and value.is_symbolic
    return _validate.shown(str(value)) if is_symbolic else None

"""Matrices over GF(2) in the forms that users and other packages have. None is imported."""

from __future__ import annotations

from typing import Any

from zeltbraidwerk import _texts, _validate, errors
from zeltbraidwerk.circuits import READ_PACKAGES, Circuit, CnotCircuit

_DIGITS = frozenset("01 ,\t\r\n")


def matrix_of(value: Any, name: str) -> Any:
    """What :mod:`._validate` reads as a matrix: an array or nested lists as they are, and the
    matrices of texts, circuits, and the classes that other packages have for linear maps."""
    if isinstance(value, str):
        return _of_text(value, name) if set(value) <= _DIGITS else _of_circuit(value)
    if isinstance(value, (list, tuple)) and value and all(isinstance(row, str) for row in value):
        return _of_text("\n".join(value), name)
    if isinstance(value, (Circuit, CnotCircuit)):
        return _of_circuit(value)
    if _validate.comes_from(value, "pyzx") and hasattr(value, "data"):  # a Mat2
        return value.data
    if any(_validate.comes_from(value, package) for package in READ_PACKAGES):
        # A LinearFunction of Qiskit has its matrix, row r the inputs of output r.
        linear = getattr(value, "linear", None)
        return _of_circuit(value) if linear is None else linear
    return value


def _of_text(text: str, name: str) -> Any:
    try:
        return _texts.matrix(text)
    except errors.Error as error:
        raise type(error)(f"{name}: {error}") from None


def _of_circuit(source: Any) -> Any:
    return Circuit.of(source).to_cnot_circuit().matrix()

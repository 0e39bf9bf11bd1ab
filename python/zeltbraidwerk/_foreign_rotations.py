"""Pauli rotations in the form of Qiskit and of pytket. Neither package is imported."""

from __future__ import annotations

import math
from collections.abc import Iterator
from typing import Any

from zeltbraidwerk import errors
from zeltbraidwerk._parameter import Parameter, parameter

Pair = tuple[str, float | Parameter]


def of_operator(operator: Any) -> Iterator[Pair]:
    """exp(-i c P) for each term c P of a SparsePauliOp; its labels have qubit 0 last."""
    for label, coefficient in operator.to_list():
        yield label[::-1], 2 * _real(coefficient)


def of_evolution(gate: Any) -> Iterator[Pair]:
    """The product of rotations that Qiskit expands a PauliEvolutionGate into: Qiskit's circuit has
    the same rotations in the same order."""
    if not callable(expand := getattr(gate.synthesis, "expand", None)):
        raise errors.OptionError(
            f"rotations: got a PauliEvolutionGate with {type(gate.synthesis).__name__}, which is "
            "not a product of rotations, wanted a synthesis such as LieTrotter or SuzukiTrotter"
        )
    try:
        terms = expand(gate)
    except (TypeError, ValueError, ArithmeticError) as fault:
        raise errors.AngleError(
            f"rotations: got a PauliEvolutionGate that Qiskit cannot expand: {fault}"
        ) from None
    for letters, qubits, angle in terms:
        word = ["I"] * gate.num_qubits
        for letter, qubit in zip(letters, qubits, strict=True):
            word[qubit] = letter
        yield "".join(word), _real(angle)


def of_pytket(operator: Any) -> Iterator[Pair]:
    """exp(-i pi/2 c P) for each term c P, as in the Pauli gadgets of pytket."""
    qubits = sorted(operator.all_qubits)
    registers = {qubit.reg_name for qubit in qubits}
    if len(registers) == 1 and all(len(qubit.index) == 1 for qubit in qubits):
        place = {qubit: qubit.index[0] for qubit in qubits}
    else:
        place = {qubit: k for k, qubit in enumerate(qubits)}
    n = max(place.values(), default=-1) + 1
    for string, coefficient in operator._dict.items():
        letters = ["I"] * n
        for qubit, pauli in string.map.items():
            letters[place[qubit]] = pauli.name
        yield "".join(letters), math.pi * _real(coefficient)


def _real(value: Any) -> float | Parameter:
    """A number, or a sum of symbols."""
    try:
        number = complex(value)
    except (TypeError, ValueError):
        return parameter(value, "rotations")
    if number.imag:
        raise errors.AngleError(f"rotations: got {value}, wanted a real number")
    return number.real

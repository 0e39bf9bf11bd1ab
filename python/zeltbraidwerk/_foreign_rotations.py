"""Pauli rotations in the forms of other packages, none of which is imported."""

from __future__ import annotations

import math
from collections.abc import Iterable, Iterator, Mapping
from typing import Any

import numpy as np

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
    terms = list(operator._dict.items())
    words = words_of_pytket([string for string, _ in terms], operator.all_qubits)
    for word, (_, coefficient) in zip(words, terms, strict=True):
        yield word, math.pi * _real(coefficient)


def words_of_pytket(strings: Iterable[Any], qubits: Iterable[Any]) -> list[str]:
    """Of QubitPauliStrings. Qubits of one register are at their indices, others in their order."""
    ordered = sorted(qubits)
    registers = {qubit.reg_name for qubit in ordered}
    is_one = len(registers) == 1 and all(len(qubit.index) == 1 for qubit in ordered)
    place = {qubit: qubit.index[0] if is_one else k for k, qubit in enumerate(ordered)}
    return _words(
        {place[qubit]: pauli.name for qubit, pauli in string.map.items()} for string in strings
    )


def of_openfermion(operator: Any) -> Iterator[Pair]:
    """exp(-i c P) for each term c P of a QubitOperator."""
    words = _words(dict(factors) for factors in operator.terms)
    for word, coefficient in zip(words, operator.terms.values(), strict=True):
        yield word, 2 * _real(coefficient)


def of_pennylane(operator: Any) -> Iterator[Pair]:
    """exp(-i c P) for each term c P of a PauliSentence, or of an operator that has one. Wires that
    are no integers from 0 up are in their order."""
    rep = getattr(operator, "pauli_rep", None)
    sentence = operator if rep is None else rep
    is_sum = isinstance(sentence, Mapping) and all(isinstance(word, Mapping) for word in sentence)
    if not is_sum:
        raise errors.OptionError(
            f"rotations: got {type(operator).__name__} of PennyLane, which is no sum of Pauli "
            "strings, wanted one"
        )
    wires = list(dict.fromkeys(wire for word in sentence for wire in word))
    is_numbered = all(isinstance(wire, (int, np.integer)) and wire >= 0 for wire in wires)
    place = {wire: int(wire) if is_numbered else k for k, wire in enumerate(wires)}
    words = _words({place[wire]: letter for wire, letter in word.items()} for word in sentence)
    for word, coefficient in zip(words, sentence.values(), strict=True):
        yield word, 2 * _real(coefficient)


def _words(factors: Iterable[Mapping[int, str]]) -> list[str]:
    """Strings of letters for qubits with letters, as long as the highest qubit wants."""
    listed = list(factors)
    n = 1 + max((qubit for word in listed for qubit in word), default=-1)
    return ["".join(word.get(qubit, "I") for qubit in range(n)) for word in listed]


def _real(value: Any) -> float | Parameter:
    """A number, or a sum of symbols."""
    try:
        number = complex(value)
    except (TypeError, ValueError):
        return parameter(value, "rotations")
    if number.imag:
        raise errors.AngleError(f"rotations: got {value}, wanted a real number")
    return number.real

"""Circuits that encode qubits into a stabilizer code."""

from __future__ import annotations

from collections.abc import Callable, Sequence
from dataclasses import dataclass, field
from typing import Any

import numpy as np
import numpy.typing as npt

from zeltbraidwerk import _calls, _codes, _core, _pauli_check, _rotations, _search
from zeltbraidwerk._family import Family, Found
from zeltbraidwerk._operations import circuit_of
from zeltbraidwerk._results import Objective, Result
from zeltbraidwerk._tableau import CliffordTableau
from zeltbraidwerk.circuits import Circuit

__all__ = ["EncoderSynthesis", "synthesize_encoder"]

_FAMILY = Family(_core._state_methods)


@dataclass(frozen=True, kw_only=True, repr=False)
class EncoderSynthesis(Result):
    """A circuit that encodes qubits into a code, and how it was found.

    Logical qubit i comes in on wire ``logical_wires[i]``, and 0 on all other wires. Every qubit of
    the code comes out on its own wire. ``stabilizers`` are those of the code, signed, in the order
    given. ``logicals`` are two lists, the logical operators that X and that Z on each logical qubit
    become: those that were asked for, which the circuit has up to products with stabilizers, or
    else those that it has.
    """

    circuit: Circuit
    logical_wires: tuple[int, ...]
    stabilizers: tuple[str, ...] = field(compare=False)
    logicals: tuple[tuple[str, ...], tuple[str, ...]] = field(compare=False)

    @property
    def k(self) -> int:
        """Number of logical qubits."""
        return len(self.logical_wires)

    def verify(self) -> bool:
        """Follows stabilizers and logical operators back through the circuit, gate by gate and
        without the library: the ones to Z on wires of zeros, the others to X or Z on the wire of
        their qubit, but for Z on wires of zeros, all with the sign plus."""
        pulled = _pauli_check.PulledBack(self.n)
        for gate in self.circuit:
            pulled.append(gate)
        wanted = [("I", 0, string) for string in self.stabilizers]
        for letter, strings in zip("XZ", self.logicals, strict=True):
            wanted += [(letter, *pair) for pair in zip(self.logical_wires, strings, strict=True)]
        return all(
            self._is_up_to_zeros(pulled.image(string[1:]), string[0] == "-", letter, wire)
            for letter, wire, string in wanted
        )

    def _is_up_to_zeros(
        self, image: _pauli_check.Pauli, minus: bool, letter: str, wire: int
    ) -> bool:
        alone = "I" * wire + letter + "I" * (self.n - wire - 1)
        logical = set(self.logical_wires)
        return image[0] == minus and all(
            found == own if q in logical else found in "IZ"
            for q, (found, own) in enumerate(zip(image[1], alone, strict=True))
        )

    def _about(self) -> Sequence[str]:
        return (f"{self.k} logical",)


@_calls.recorded("clifford.synthesize_encoder", "stabilizers")
def synthesize_encoder(
    stabilizers: Any,
    logicals: Any = None,
    *,
    objective: Objective = "count",
    seed: int | None = None,
    restarts: int | None = None,
    budget: float | None = None,
    steps: int | None = None,
    jobs: int | None = 1,
    progress: Callable[[_search.Progress], object] | None = None,
) -> EncoderSynthesis:
    """A circuit of CNOTs and gates on one qubit that encodes k logical qubits into a code on n
    qubits, up to a global phase.

    Logical qubit i comes in on wire ``result.logical_wires[i]``, and 0 on all other wires. What
    comes out has the stabilizers, each with its sign, and qubit q of the code is on wire q.

    ``stabilizers`` are n - k independent ones that commute, in one of these forms:

    - signed strings of letters, or Paulis of Stim or Qiskit;
    - a check matrix of n - k rows and 2n columns of 0 and 1: those of row r tell on which qubits
      stabilizer r has X, then on which it has Z, and both make Y; all signs are plus;
    - a pair of matrices H_X, H_Z of n columns: the checks of X and those of Z of a CSS code;
    - a tableau or a Clifford circuit, as :func:`synthesize_state` takes it: a state, with k = 0.

    Matrices are arrays, nested lists, sparse matrices of scipy or arrays of galois.

    Without ``logicals`` the logical operators are left to the search, which makes the circuit
    shorter; ``result.logicals`` tells them. Otherwise ``logicals`` is a pair of lists, what X and
    what Z on each logical qubit becomes, as signed strings; or of two matrices, of n columns for
    X alone and Z alone, or of 2n. The circuit has them up to products with stabilizers.

    >>> result = synthesize_encoder(["XZZXI", "IXZZX", "XIXZZ", "ZXIXZ"], seed=1)
    >>> result.k, result.count, result.verify()
    (1, 6, True)
    >>> steane = [[0, 0, 0, 1, 1, 1, 1], [0, 1, 1, 0, 0, 1, 1], [1, 0, 1, 0, 1, 0, 1]]
    >>> synthesize_encoder((steane, steane), (["XXXXXXX"], ["ZZZZZZZ"]), seed=1).count
    9

    ``objective`` is "count" or "depth" of gates on two qubits. The other options are those of the
    method "search" of :func:`zeltbraidwerk.linear.synthesize`. There is no ``device``: hand the
    circuit to :func:`zeltbraidwerk.optimize` with one.

    Raises classes of :mod:`zeltbraidwerk.errors`, all ValueErrors or TypeErrors, for strings that
    do not commute or are products of others, for logical operators that do not fit, and for other
    arguments that do not. Source of encoders by elimination: D. Gottesman, "Stabilizer codes and
    quantum error correction" (1997).
    """
    call = _FAMILY.call(
        objective=objective, seed=seed, restarts=restarts, budget=budget, steps=steps, jobs=jobs,
        progress=progress,
    )  # fmt: skip
    code = _codes.read(stabilizers, logicals)

    def result(found: Found, gates: _core._HeldCliffords, wires: Sequence[int]) -> EncoderSynthesis:
        circuit = circuit_of(code.n, gates)
        return call.result(
            EncoderSynthesis, found, code.n, circuit=circuit, logical_wires=tuple(wires),
            stabilizers=_texts(code.stabilizers), logicals=_logicals(code, circuit, wires),
        )  # fmt: skip

    return call.run(
        _core._synthesize_encoder, result,
        *_plain(code.stabilizers, code.n), *_plain(code.logicals, code.n),
    )  # fmt: skip


def _plain(strings: Sequence[_codes.Signed], n: int) -> tuple[npt.NDArray[np.uint8], list[bool]]:
    return _rotations.codes([word for _, word in strings], n), [minus for minus, _ in strings]


def _texts(strings: Sequence[_codes.Signed]) -> tuple[str, ...]:
    return tuple("+-"[minus] + word for minus, word in strings)


def _logicals(
    code: _codes.Code, circuit: Circuit, wires: Sequence[int]
) -> tuple[tuple[str, ...], tuple[str, ...]]:
    """Those that were asked for, or those of the circuit."""
    if code.logicals:
        return _texts(code.logicals[: code.k]), _texts(code.logicals[code.k :])
    xs, zs = CliffordTableau.from_circuit(circuit).images()
    return tuple(xs[wire] for wire in wires), tuple(zs[wire] for wire in wires)

"""Observables after a circuit whose tail, a Clifford operator, is left open."""

from __future__ import annotations

import math
import numbers
from collections.abc import Iterable, Mapping
from dataclasses import dataclass
from functools import cached_property
from typing import Any

import numpy as np
import numpy.typing as npt

from zeltbraidwerk import _core, _rotations, _validate, errors
from zeltbraidwerk._operations import circuit_of
from zeltbraidwerk._results import Result, spread
from zeltbraidwerk._tableau import CliffordTableau
from zeltbraidwerk.circuits import Circuit


@dataclass(frozen=True, kw_only=True, repr=False)
class MovesObservables(Result):
    """Base of the results whose circuit may differ from what was wanted by a Clifford operator;
    ``_to_circuit`` tells in which direction."""

    def _to_circuit(self) -> CliffordTableau:
        """The operator C such that an observable O after what was wanted has the expectation value
        of C O C-dagger after the circuit."""
        raise NotImplementedError

    @cached_property
    def _moving(self) -> CliffordTableau:
        return self._to_circuit()

    def absorb(self, observables: Any) -> Any:
        """What to measure after the circuit in place of observables after what was wanted.

        A string, a list of strings, or a mapping from strings to coefficients; the same form comes
        back, as signed strings, or with the signs in the coefficients. Letter q of an observable
        acts on qubit q of what was wanted. An observable has the same expectation value there as
        its image has after the circuit.

        >>> import zeltbraidwerk as zb
        >>> result = zb.pauli.synthesize({"XX": 0.5}, method="greedy", tail="return")
        >>> result.circuit
        Circuit(2 qubits, 2 gates, 1 two-qubit, depth 2)
        >>> result.absorb({"ZI": 1.0, "YY": 0.5})
        {'ZZ': 1.0, 'ZX': -0.5}
        """
        if isinstance(observables, Mapping):
            total: dict[str, Any] = {}
            for pauli, coefficient in observables.items():
                image = self._image(pauli)
                value = _coefficient(coefficient, image[0] == "-")
                total[image[1:]] = total.get(image[1:], 0) + value
            return total
        if _rotations.is_string(observables):
            return self._image(observables)
        return self._images(observables)

    def readout(self, observables: Iterable[Any]) -> Readout:
        """A final basis change that measures observables, which commute, after what was wanted.

        >>> import zeltbraidwerk as zb
        >>> result = zb.pauli.synthesize({"XX": 0.5}, method="greedy", tail="return")
        >>> result.readout(["ZZ", "XX"]).qubits
        ((0,), (1,))
        """
        listed = self._images(observables)
        letters = _rotations.codes([image[1:] for image in listed], self.n)
        if (clash := _core._first_clash(letters)) is not None:
            raise errors.PauliError(
                f"observables: number {clash[0]} and {clash[1]} do not commute, "
                "wanted observables that do"
            )
        operations, images, negative = _core._codiagonalised(letters, 0, None, 0)
        return Readout(
            circuit=circuit_of(self.n, operations),
            qubits=tuple(tuple(map(int, np.flatnonzero(row))) for row in images),
            signs=tuple(
                -1 if turned != (image[0] == "-") else 1
                for turned, image in zip(negative, listed, strict=True)
            ),
        )

    def _placed(self, letters: str) -> str:
        return spread(letters, self.placement, self.n)

    def _images(self, observables: Any) -> list[str]:
        listed = _rotations.read_strings(observables, "observables", len(self.placement))
        return [self._conjugated(minus, letters) for minus, letters in listed]

    def _image(self, pauli: Any) -> str:
        return self._conjugated(*_rotations.signed(pauli, len(self.placement), "observables"))

    def _conjugated(self, minus: bool, letters: str) -> str:
        return self._moving.conjugate("+-"[minus] + self._placed(letters))


def _coefficient(value: Any, minus: bool) -> Any:
    """A finite number, or a symbol of any package, with its sign."""
    try:
        if isinstance(value, (bool, np.bool_, np.ndarray)):
            raise TypeError
        if isinstance(value, numbers.Number) and not _is_finite(value):
            raise errors.AngleError(f"observables: got the coefficient {value}, wanted finite ones")
        return -value if minus else 0 + value
    except TypeError:
        raise errors.DtypeError(
            f"observables: got the coefficient {_validate.shown(value)}, wanted a number"
        ) from None


def _is_finite(value: Any) -> bool:
    parts = (value.real, value.imag) if isinstance(value, numbers.Complex) else (value,)
    return all(isinstance(part, numbers.Rational) or math.isfinite(part) for part in parts)


@dataclass(frozen=True)
class Readout:
    """A basis change, ``circuit``, to append before all qubits are measured. The value of
    observable k is then ``signs[k]``, times -1 for each of ``qubits[k]`` that is measured as 1."""

    circuit: Circuit
    qubits: tuple[tuple[int, ...], ...]
    signs: tuple[int, ...]

    def values(self, bits: npt.ArrayLike) -> npt.NDArray[np.int64]:
        """1 or -1 by shot and observable, of measured bits, bool or 0 and 1, by shot and qubit."""
        shots = _validate.bits(bits, "bits")
        if shots.ndim != 2 or shots.shape[1] != self.circuit.n:
            raise errors.ShapeError(
                f"bits: got shape {shots.shape}, wanted (shots, {self.circuit.n})"
            )
        columns = [
            sign * (1 - 2 * (shots[:, list(qubits)].sum(axis=1) % 2))
            for sign, qubits in zip(self.signs, self.qubits, strict=True)
        ]
        return np.array(columns, dtype=np.int64).reshape(len(columns), len(shots)).T

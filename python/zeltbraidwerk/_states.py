"""Circuits that prepare a stabilizer state from qubits that are all 0."""

from __future__ import annotations

from collections.abc import Callable, Sequence
from dataclasses import dataclass, field
from typing import Any

import numpy as np
import numpy.typing as npt

from zeltbraidwerk import _calls, _core, _pauli_check, _renamed, _rotations, _search, errors
from zeltbraidwerk._family import Family, Found
from zeltbraidwerk._operations import circuit_of
from zeltbraidwerk._operators import tableau_of
from zeltbraidwerk._results import Objective, Result
from zeltbraidwerk.circuits import Circuit

__all__ = ["StateSynthesis", "synthesize_state"]

_Stabilizer = tuple[bool, str]  # true for minus

_FAMILY = Family(_core._state_methods)


@dataclass(frozen=True, kw_only=True, repr=False)
class StateSynthesis(Result):
    """A circuit that prepares a state from qubits that are all 0, and how it was found.

    ``stabilizers`` are signed strings that leave the state as it is, in the order given.
    """

    circuit: Circuit
    stabilizers: tuple[str, ...] = field(compare=False)

    stabilisers = _renamed.Field("stabilizers")

    def verify(self) -> bool:
        """Follows the stabilizers back through the circuit, gate by gate and without the library,
        to what leaves all qubits 0: Z alone, with the sign plus."""
        return prepares(self.circuit, self.stabilizers)


@_calls.recorded("clifford.synthesize_state", "state")
def synthesize_state(
    state: Any,
    *,
    objective: Objective = "count",
    seed: int | None = None,
    restarts: int | None = None,
    budget: float | None = None,
    steps: int | None = None,
    start: Any = None,
    jobs: int | None = 1,
    progress: Callable[[_search.Progress], object] | None = None,
) -> StateSynthesis:
    """A circuit of CNOTs and gates on one qubit that prepares a stabilizer state from all qubits 0,
    up to a global phase.

    ``state`` is a list of stabilizers, one per qubit, as signed strings of letters or Paulis of
    Stim or Qiskit; or a tableau or a circuit of Clifford gates, of this package, Stim, Qiskit or
    pytket, of which only the image of the state with all qubits 0 counts.

    ``objective`` is "count" or "depth" of gates on two qubits. The other options are those of the
    method "search" of :func:`zeltbraidwerk.linear.synthesize`.

    >>> synthesize_state(["XXX", "ZZI", "-IZZ"], seed=1).count
    2
    """
    call = _FAMILY.call(
        objective=objective, seed=seed, restarts=restarts, budget=budget, steps=steps, jobs=jobs,
        progress=progress, start=start,
    )  # fmt: skip
    stabilizers = read(state)
    n = len(stabilizers)
    letters = _rotations.codes([word for _, word in stabilizers], n)
    minus = [sign for sign, _ in stabilizers]

    def result(found: Found, operations: npt.NDArray[np.int32]) -> StateSynthesis:
        return call.result(
            StateSynthesis, found, n, circuit=circuit_of(n, operations),
            stabilizers=tuple("+-"[minus] + letters for minus, letters in stabilizers),
        )  # fmt: skip

    return call.run(_core._synthesize_state, result, letters, minus)


def prepares(circuit: Circuit, stabilizers: Sequence[str]) -> bool:
    """Whether the circuit turns qubits that are all 0 into the state of these stabilizers."""
    pulled = _pauli_check.PulledBack(circuit.n)
    for gate in circuit:
        pulled.append(gate)
    for stabilizer in stabilizers:
        minus, letters = pulled.image(stabilizer.lstrip("+-"))
        if minus != stabilizer.startswith("-") or set(letters) - set("IZ"):
            return False
    return True


# --- states of other forms ----------------------------------------------------------------------


def read(state: Any) -> list[_Stabilizer]:
    """The stabilizers of a state, checked."""
    images = _of_operator(state)
    stabilizers = _rotations.read_strings(state if images is None else images, "state")
    n = len(stabilizers[0][1]) if stabilizers else 0
    if len(stabilizers) != n:
        raise errors.ShapeError(
            f"state: got {len(stabilizers)} stabilizers of {n} letters, wanted {n}"
        )
    _check(stabilizers)
    return stabilizers


def _of_operator(state: Any) -> list[Any] | None:
    """The images of Z under a tableau or a circuit; None for what is neither."""
    package, _, kind = _rotations._kind(state).partition(".")
    if package == "qiskit" and kind == "StabilizerState":
        state, kind = state.clifford, "Clifford"
    if package == "qiskit" and kind == "Clifford":
        return [label[0] + label[:0:-1] for label in state.to_labels(mode="S")]
    if package == "stim" and kind == "Tableau":
        return [state.z_output(q) for q in range(len(state))]
    if package == "stim" and kind == "TableauSimulator":
        return list(state.canonical_stabilizers())
    tableau = tableau_of(state)
    return None if tableau is None else list(tableau.images()[1])


def _check(stabilizers: Sequence[_Stabilizer]) -> None:
    """Refuses strings that do not commute and those that are products of others."""
    n = len(stabilizers)
    words = np.array([list(letters) for _, letters in stabilizers], dtype="U1").reshape(n, n)
    has_x, has_z = np.isin(words, ("X", "Y")), np.isin(words, ("Z", "Y"))
    odd = (has_x.astype(int) @ has_z.T.astype(int) + has_z.astype(int) @ has_x.T.astype(int)) % 2
    if odd.any():
        i, j = np.argwhere(odd)[0]
        raise errors.PauliError(
            f"state: got {stabilizers[i][1]} and {stabilizers[j][1]}, which do not commute"
        )
    reduced: dict[int, int] = {}  # by highest bit
    for (_, letters), x, z in zip(stabilizers, has_x, has_z, strict=True):
        row = int.from_bytes(np.packbits(np.concatenate([x, z])).tobytes(), "big")
        while row and row.bit_length() in reduced:
            row ^= reduced[row.bit_length()]
        if not row:
            raise errors.PauliError(
                f"state: got {letters}, which is a product of the strings before it"
            )
        reduced[row.bit_length()] = row

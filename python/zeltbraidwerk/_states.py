"""Circuits that turn qubits, all of them 0, into a stabilizer state."""

from __future__ import annotations

import secrets
import time
from collections.abc import Callable, Sequence
from dataclasses import dataclass, field
from typing import Any

import numpy as np

from zeltbraidwerk import _core, _pauli_check, _rotations, _search, _validate, errors
from zeltbraidwerk._operations import circuit_of
from zeltbraidwerk._results import HoldsCircuit
from zeltbraidwerk.circuits import Circuit, CnotCircuit
from zeltbraidwerk.linear import Objective

__all__ = ["StateSynthesis", "synthesize_state"]

_Stabiliser = tuple[bool, str]  # true for minus
Found = tuple[str, Circuit, int, int]  # method, circuit, count, depth


@dataclass(frozen=True, repr=False)
class StateSynthesis(HoldsCircuit):
    """A circuit that turns all qubits, being 0, into a state, and how it came about.

    ``stabilisers`` are signed strings that leave the state as it is, in the order given.
    """

    circuit: Circuit
    stabilisers: tuple[str, ...] = field(compare=False)
    method: str
    seed: int | None
    runs: int = field(compare=False)
    seconds: float = field(compare=False)
    trace: tuple[_search.Point, ...] = field(compare=False, default=())

    def verify(self) -> bool:
        """Follows the stabilisers back through the circuit, gate by gate and apart from the
        library, to what leaves all qubits 0: Z alone, with the sign plus."""
        return prepares(self.circuit, self.stabilisers)

    def __repr__(self) -> str:
        return (
            f"StateSynthesis({self.method}: {self.n} qubits, {self.count} two-qubit gates, "
            f"depth {self.depth}, {self.seconds:.2g} s)"
        )


def synthesize_state(
    state: Any,
    *,
    objective: Objective = "count",
    seed: int | None = None,
    restarts: int | None = None,
    budget: float | None = None,
    steps: int | None = None,
    jobs: int | None = 1,
    progress: Callable[[_search.Progress], object] | None = None,
) -> StateSynthesis:
    """A circuit of CNOTs and gates on one qubit that prepares a stabilizer state from all qubits 0,
    up to a global phase.

    ``state`` is a list of stabilisers, one a qubit, as signed strings of letters or Paulis of Stim
    or Qiskit; or a tableau or a circuit of Clifford gates, of this package, Stim, Qiskit or pytket,
    of which only what it makes of zeros counts.

    ``objective`` is "count" or "depth" of gates on two qubits. The other options are those of the
    method "search" of :func:`zeltbraidwerk.linear.synthesize`.

    >>> synthesize_state(["XXX", "ZZI", "-IZZ"], seed=1).count
    2
    """
    start = time.perf_counter()
    stabilisers = read(state)
    _validate.choice(objective, "objective", ("count", "depth"))
    effort = _search.Effort.checked(seed, restarts, budget, jobs, steps, progress)
    drawn = secrets.randbits(64) if effort.seed is None else effort.seed
    control = _core._SearchControl(effort.budget)
    trace = _search.Trace(objective == "depth", progress)

    def result(found: Found, runs: int) -> StateSynthesis:
        return StateSynthesis(
            circuit=found[1],
            stabilisers=tuple("+-"[minus] + letters for minus, letters in stabilisers),
            method=found[0],
            seed=drawn,
            runs=runs,
            seconds=time.perf_counter() - start,
            trace=tuple(trace.points),
        )

    lanes = [search_lane(stabilisers, objective == "depth", effort, drawn, control)]
    key = by_depth if objective == "depth" else by_count
    return result(*_search.best_of(lanes, effort.jobs, control, key, result, trace))


def by_count(found: Found) -> tuple[int, int]:
    return found[2], found[3]


def by_depth(found: Found) -> tuple[int, int]:
    return found[3], found[2]


def search_lane(
    stabilisers: Sequence[_Stabiliser],
    shallow: bool,
    effort: _search.Effort,
    seed: int,
    control: Any,
) -> _search.Lane[Found]:
    """The runs of the search for a state."""
    letters = _rotations.codes([word for _, word in stabilisers], len(stabilisers))
    minus = [sign for sign, _ in stabilisers]
    steps = effort.search_steps
    if effort.steps is None and steps is not None:
        steps = _usual_steps(len(minus))

    def run(number: int) -> Found:
        operations, count, depth = _core._search_state(
            letters, minus, shallow, seed, number, steps, control
        )
        return "search", circuit_of(len(minus), operations), count, depth

    return _search.search_lane(run, by_depth if shallow else by_count, effort)


def _usual_steps(n: int) -> int:
    """A second or less: steps are the dearer the more qubits. Enough for a greedy run at least."""
    return min(50_000, max(40_000_000 // max(n * n, 1), n * n // 8))


def prepares(circuit: Circuit, stabilisers: Sequence[str]) -> bool:
    """Whether zeros come out with these stabilisers."""
    pulled = _pauli_check.PulledBack(circuit.n)
    for gate in circuit:
        pulled.append(gate)
    for stabiliser in stabilisers:
        minus, letters = pulled.image(stabiliser.lstrip("+-"))
        if minus != stabiliser.startswith("-") or set(letters) - set("IZ"):
            return False
    return True


# --- states of other forms ----------------------------------------------------------------------


def read(state: Any) -> list[_Stabiliser]:
    """The stabilisers of a state, checked."""
    images = _of_operator(state)
    stabilisers = _rotations.read_strings(state if images is None else images, "state")
    n = len(stabilisers[0][1]) if stabilisers else 0
    if len(stabilisers) != n:
        raise errors.ShapeError(
            f"state: got {len(stabilisers)} stabilisers of {n} letters, wanted {n}"
        )
    _check(stabilisers)
    return stabilisers


def _of_operator(state: Any) -> list[Any] | None:
    """The images of Z under a tableau or a circuit; None for what is neither."""
    from zeltbraidwerk.clifford import CliffordTableau

    package, _, kind = _rotations._kind(state).partition(".")
    if package == "qiskit" and kind == "StabilizerState":
        state, kind = state.clifford, "Clifford"
    if package == "qiskit" and kind == "Clifford":
        return [label[0] + label[:0:-1] for label in state.to_labels(mode="S")]
    if package == "stim" and kind == "Tableau":
        return [state.z_output(q) for q in range(len(state))]
    if package == "stim" and kind == "TableauSimulator":
        return list(state.canonical_stabilizers())
    if package == "pytket" and kind == "UnitaryTableau":
        state, kind = state.to_circuit(), "Circuit"
    if package in _CIRCUITS and kind in ("Circuit", "QuantumCircuit"):
        state = _CIRCUITS[package](state)
    if isinstance(state, (Circuit, CnotCircuit)):
        state = CliffordTableau.from_circuit(state)
    if isinstance(state, CliffordTableau):
        return list(state.images()[1])
    return None


_CIRCUITS: dict[str, Callable[[Any], Circuit]] = {
    "stim": Circuit.from_stim,
    "qiskit": Circuit.from_qiskit,
    "pytket": Circuit.from_pytket,
}


def _check(stabilisers: Sequence[_Stabiliser]) -> None:
    """Refuses strings that do not commute and those that are products of others."""
    n = len(stabilisers)
    words = np.array([list(letters) for _, letters in stabilisers], dtype="U1").reshape(n, n)
    has_x, has_z = np.isin(words, ("X", "Y")), np.isin(words, ("Z", "Y"))
    odd = (has_x.astype(int) @ has_z.T.astype(int) + has_z.astype(int) @ has_x.T.astype(int)) % 2
    if odd.any():
        i, j = np.argwhere(odd)[0]
        raise errors.PauliError(
            f"state: got {stabilisers[i][1]} and {stabilisers[j][1]}, which do not commute"
        )
    reduced: dict[int, int] = {}  # by highest bit
    for (_, letters), x, z in zip(stabilisers, has_x, has_z, strict=True):
        row = int.from_bytes(np.packbits(np.concatenate([x, z])).tobytes(), "big")
        while row and row.bit_length() in reduced:
            row ^= reduced[row.bit_length()]
        if not row:
            raise errors.PauliError(
                f"state: got {letters}, which is a product of the strings before it"
            )
        reduced[row.bit_length()] = row

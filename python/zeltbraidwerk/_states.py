"""Circuits that prepare a stabilizer state from qubits that are all 0."""

from __future__ import annotations

from collections.abc import Callable, Iterable, Sequence
from dataclasses import dataclass, field
from typing import Any, Literal

from zeltbraidwerk import (
    _calls,
    _codes,
    _core,
    _operator_forms,
    _pauli_check,
    _renamed,
    _rotations,
    _search,
    _validate,
    errors,
)
from zeltbraidwerk._family import Call, Family, Found
from zeltbraidwerk._operations import circuit_of
from zeltbraidwerk._results import Objective, Permutation, Result, spread
from zeltbraidwerk.circuits import Circuit
from zeltbraidwerk.gates import Gate

__all__ = ["StateSynthesis", "synthesize_state"]

_FAMILY = Family(_core._state_methods)


UpTo = Literal["phase", "local"]


@dataclass(frozen=True, kw_only=True, repr=False)
class Preparation(Result):
    """What results of states have in common. ``local`` holds the gates on one qubit that the
    circuit leaves out with ``up_to="local"``: after the circuit they make the state that was asked
    for. None with ``up_to="phase"``."""

    circuit: Circuit
    local: Circuit | None = field(compare=False, default=None)

    def _prepares(self, stabilizers: Sequence[str]) -> bool:
        """On a device also that all gates are on its edges. Qubit q of the state is where output q
        is; the other qubits of the device stay 0."""
        local = self.local or Circuit(self.circuit.n, [])
        places = [self.placement[wire] for wire in self.permutation]
        signs = ["-" if string.startswith("-") else "" for string in stabilizers]
        words = [spread(string.lstrip("+-"), places, self.n) for string in stabilizers]
        others = set(range(self.n)).difference(places)
        zeros = [spread("Z", (q,), self.n) for q in sorted(others)]
        wanted = [*map("".join, zip(signs, words, strict=True)), *zeros]
        return (
            local.two_qubit_count == 0
            and prepares(self.circuit + local, wanted)
            and self._on_edges()
        )

    def _about(self) -> Iterable[str]:
        if self.local is not None:
            yield "up to local gates"


@dataclass(frozen=True, kw_only=True, repr=False)
class StateSynthesis(Preparation):
    """A circuit that prepares a state from qubits that are all 0, and how it was found.

    ``stabilizers`` are signed strings that leave the state as it is, in the order given. ``local``
    holds the gates that the circuit leaves out with ``up_to="local"``, else None.
    """

    stabilizers: tuple[str, ...] = field(compare=False)

    stabilisers = _renamed.Field("stabilizers")

    def verify(self) -> bool:
        """Follows the stabilizers back through ``local`` and the circuit, gate by gate and without
        the library, to what leaves all qubits 0: Z alone, with the sign plus."""
        return self._prepares(self.stabilizers)


@_calls.recorded("clifford.synthesize_state", "state")
def synthesize_state(
    state: Any,
    *,
    up_to: UpTo = "phase",
    device: Any = None,
    objective: Objective = "count",
    permutation: Permutation = "exact",
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
    pytket, also as OpenQASM or the path of a file, of which only the image of the state with all
    qubits 0 counts.

    With ``up_to="local"`` the state is one that gates on single qubits after the circuit turn into
    the one asked for: ``local`` of the result has them. Gates on one qubit do not count, so that no
    state equal to it up to such gates takes fewer gates on two qubits; the circuit is the same
    but for those at its end.

    With a ``device``, or what :meth:`zeltbraidwerk.Device.of` takes for one, every CNOT is on one
    of its edges. Of a larger device a connected part is taken: ``result.placement`` tells which.
    With ``permutation="free"`` the qubits of the state stand on those of its qubits that suit them
    best, qubit q on ``result.placement[result.permutation[q]]``; with "exact", the default, in
    their order. Without a device both are the same.

    ``objective`` is "count" or "depth" of gates on two qubits, or on a device "error" or "duration"
    as for :func:`zeltbraidwerk.linear.synthesize`. The other options are those of the method
    "search" of that function.

    >>> synthesize_state(["XXX", "ZZI", "-IZZ"], seed=1).count
    2
    """
    call = _FAMILY.call(
        device=device, objective=objective, permutation=permutation, seed=seed, restarts=restarts,
        budget=budget, steps=steps, jobs=jobs, progress=progress, start=start,
    )  # fmt: skip
    _validate.choice(up_to, "up_to", ("phase", "local"))
    stabilizers = read(state)
    n = len(stabilizers)
    call.place(n)
    letters = _rotations.codes([word for _, word in stabilizers], n)
    minus = [sign for sign, _ in stabilizers]

    def result(found: Found, gates: _core._HeldCliffords) -> StateSynthesis:
        whole = circuit_of(call.width(n), gates, (), call.qubits(n))
        circuit, local = parted(whole, up_to)
        return call.result(
            StateSynthesis, found, n, circuit=circuit, local=local,
            stabilizers=tuple("+-"[minus] + letters for minus, letters in stabilizers),
        )  # fmt: skip

    try:
        return call.run(_core._synthesize_state, result, letters, minus, outputs=outputs_of(call))
    except errors.OptionError:
        _codes.check_stabilizers(stabilizers, "state")  # names those that do not fit
        raise


def outputs_of(call: Call) -> _core._Outputs:
    """Where the qubits of a state may be. Without a device they are in place at no price."""
    free = call.device is not None and not call.exact
    return _core._Outputs.anywhere if free else _core._Outputs.in_place


def parted(circuit: Circuit, up_to: UpTo) -> tuple[Circuit, Circuit | None]:
    """The circuit; where local gates are left out, without those on one qubit after the last gate
    on two, and these."""
    if up_to == "phase":
        return circuit, None
    parts: tuple[list[Gate], list[Gate]] = ([], [])
    coupled: set[int] = set()  # qubits with later gates on two qubits
    for gate in reversed(list(circuit)):
        at_end = len(gate.qubits) == 1 and gate.qubits[0] not in coupled
        parts[at_end].append(gate)
        if not at_end:
            coupled.update(gate.qubits)
    first, local = (Circuit(circuit.n, part[::-1]) for part in parts)
    return first, local


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


def read(state: Any) -> list[_codes.Signed]:
    """The stabilizers of a state, whether they fit together or not."""
    images = _operator_forms.images_of_zeros(state)
    stabilizers = _rotations.read_strings(state if images is None else images, "state")
    n = len(stabilizers[0][1]) if stabilizers else 0
    if len(stabilizers) != n:
        raise errors.ShapeError(
            f"state: got {len(stabilizers)} stabilizers of {n} letters, wanted {n}"
        )
    return stabilizers

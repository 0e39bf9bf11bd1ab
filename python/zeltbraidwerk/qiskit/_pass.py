"""Whole circuits in Qiskit's transpiler."""

from __future__ import annotations

import cmath
from collections.abc import Iterable, Iterator
from typing import Any

from qiskit.circuit import QuantumCircuit
from qiskit.converters import circuit_to_dag, dag_to_circuit
from qiskit.quantum_info import Statevector
from qiskit.transpiler import Target, TransformationPass

from zeltbraidwerk import _core, _validate, errors
from zeltbraidwerk._optimize import Optimization, optimize
from zeltbraidwerk.circuits import Circuit
from zeltbraidwerk.devices import Device
from zeltbraidwerk.gates import Gate
from zeltbraidwerk.qiskit._cost import cost
from zeltbraidwerk.qiskit._gates import append
from zeltbraidwerk.qiskit._pieces import Piece, pieces_of

_LEAST_SECONDS = 1e-3
_MOST_WORK = 1e8  # amplitudes times gates, up to which states are compared once more
_TOLERANCE = 1e-6  # of the overlap of two states that are the same


class Optimize(TransformationPass):  # type: ignore[misc]
    """Makes a circuit shorter, by :func:`zeltbraidwerk.optimize`, and never longer.

    Runs before a circuit is placed on a device, or after. With a ``target``, or else a
    ``coupling_map``, a circuit whose gates are all on its edges keeps to them, in any direction;
    translation to the gates of the target comes after this pass. Every qubit stays in its place.

    Measurements, resets, barriers, control flow, delays and gates that cannot be read stay as they
    are, and the gates between them are made shorter piece by piece; a piece that does not become
    shorter stays as it is. Angles may be expressions of parameters.

    ``objective``, ``exact``, ``keep_depth``, ``seed``, ``steps``, ``restarts``, ``budget`` and
    ``jobs`` are as in :func:`zeltbraidwerk.optimize`; ``steps`` and ``budget`` are for the whole
    circuit.

    The circuit is the same operator, and its global phase is kept as well.

    >>> from qiskit import QuantumCircuit
    >>> circuit = QuantumCircuit(4)
    >>> for qubits in ((0, 1, 2), (1, 2, 3), (0, 1, 2)):
    ...     _ = circuit.ccx(*qubits)
    >>> Optimize(seed=1)(circuit).count_ops()["cx"]
    11
    """

    def __init__(
        self,
        *,
        coupling_map: Any = None,
        target: Any = None,
        objective: str = "count",
        exact: bool = False,
        keep_depth: bool = False,
        seed: int | None = None,
        steps: int | None = None,
        restarts: int | None = None,
        budget: float | None = None,
        jobs: int | None = 1,
    ) -> None:
        super().__init__()
        if target is not None:
            _validate.instance(target, "target", Target, "a Target of Qiskit, as in backend.target")
            coupling_map = target.build_coupling_map()
        self._device = None if coupling_map is None else Device.of(coupling_map)
        self._native = frozenset(() if target is None else target.operation_names)
        self._objective = _validate.choice(objective, "objective", ("count", "depth", "t"))
        self._effort: dict[str, Any] = {"steps": steps, "budget": budget}
        self._options: dict[str, Any] = {
            "objective": objective, "exact": exact, "keep_depth": keep_depth, "seed": seed,
            "restarts": restarts, "jobs": jobs,
        }  # fmt: skip
        optimize(Circuit(0), **self._effort, **self._options)  # refuses bad options now

    def run(self, dag: Any) -> Any:
        """The shorter circuit of a circuit, both as the transpiler holds them (DAGCircuit)."""
        circuit = dag_to_circuit(dag, copy_operations=False)
        pieces = pieces_of(circuit)
        total = max(sum(len(piece.gates) for piece in pieces), 1)
        device = self._device if self._fits(pieces, circuit) else None
        made = circuit.copy_empty_like()
        for piece in pieces:
            better = self._optimized(piece, circuit, device, total)
            if better is None:
                for instruction in piece.instructions:
                    made._append(instruction)
            else:
                qubits, inner = better
                made.compose(inner, qubits, inplace=True, copy=False)
            for instruction in piece.cuts:
                made._append(instruction)
        return circuit_to_dag(made, copy_operations=False)

    def _fits(self, pieces: Iterable[Piece], circuit: QuantumCircuit) -> bool:
        if self._device is None:
            return False
        gates = [gate for piece in pieces for gate in piece.gates]
        return self._device.fits(Circuit._trusted(circuit.num_qubits, tuple(gates)))

    def _optimized(
        self, piece: Piece, circuit: QuantumCircuit, device: Device | None, total: int
    ) -> tuple[list[int], QuantumCircuit] | None:
        """The qubits of the piece and a better circuit for it; None where there is none."""
        qubits = sorted({q for gate in piece.gates for q in gate.qubits})
        place = {q: k for k, q in enumerate(qubits)}
        given = QuantumCircuit(len(qubits))
        for instruction in piece.instructions:
            on = [place[circuit.find_bit(q).index] for q in instruction.qubits]
            given._append(instruction.replace(
                qubits=tuple(given.qubits[q] for q in on), clbits=()))  # fmt: skip
        made = QuantumCircuit(len(qubits), global_phase=piece.phase + piece.number)
        fewer_t = False
        for part, inner in _blocks(piece.gates, qubits, device):
            try:
                found = self._call(inner, part, device, total)
            except (errors.TooLargeError, errors.UnfinishedError):
                return None
            wires = QuantumCircuit(len(part))
            append(wires, found.circuit, piece.symbols)
            wires.global_phase += found.global_phase or 0.0
            made.compose(wires, [place[q] for q in part], inplace=True, copy=False)
            fewer_t |= found.after.t < found.before.t
        better = self._cost(made) < self._cost(given) or (self._objective == "t" and fewer_t)
        if not better or not _in_phase(given, made):
            return None
        return qubits, made

    def _cost(self, circuit: QuantumCircuit) -> tuple[int, ...]:
        return cost(circuit, self._objective, self._native)

    def _call(
        self, gates: list[Gate], qubits: list[int], device: Device | None, total: int
    ) -> Optimization:
        """With the share of the effort that is due to the gates."""
        place = {q: k for k, q in enumerate(qubits)}
        source = Circuit._trusted(len(qubits), tuple(
            Gate._trusted(gate.name, tuple(place[q] for q in gate.qubits), gate.params)
            for gate in gates
        ))  # fmt: skip
        share = len(gates) / total
        steps, budget = self._effort["steps"], self._effort["budget"]
        if steps is None and budget is None:
            steps = _core._optimize_steps(total)
        return optimize(
            source, device=None if device is None else device.part(qubits),
            steps=None if steps is None else int(steps * share),
            budget=None if budget is None else max(budget * share, _LEAST_SECONDS),
            **self._options,
        )  # fmt: skip


def _blocks(
    gates: list[Gate], qubits: list[int], device: Device | None
) -> Iterator[tuple[list[int], list[Gate]]]:
    """On a device, the gates of each connected part of the qubits by themselves."""
    if device is None:
        yield qubits, gates
        return
    for part in device.part(qubits)._pieces:
        inside = {qubits[k] for k in part}
        yield sorted(inside), [gate for gate in gates if gate.qubits[0] in inside]


def _in_phase(given: QuantumCircuit, made: QuantumCircuit) -> bool:
    """Gives ``made`` the phase of ``given`` where both are small; False where they are not the
    same operator there. What symbols add to the phase has been counted, so that one value of each
    tells the rest."""
    if 2.0**given.num_qubits * max(len(given), len(made)) > _MOST_WORK:
        return True
    values = {p: 0.1 + 0.01 * k for k, p in enumerate(given.parameters)}
    states = [
        Statevector(circuit.assign_parameters(values, strict=False).decompose(["PauliEvolution"]))
        for circuit in (made, given)
    ]
    overlap = complex(states[0].inner(states[1]))
    made.global_phase += cmath.phase(overlap)
    return abs(abs(overlap) - 1) < _TOLERANCE

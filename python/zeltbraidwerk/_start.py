"""The option ``start``: a circuit that was found before, which a search goes on from."""

from __future__ import annotations

import math
from collections.abc import Iterator
from dataclasses import dataclass
from typing import Any

from zeltbraidwerk import _core, _validate, errors
from zeltbraidwerk._results import Result
from zeltbraidwerk._site import Site
from zeltbraidwerk.circuits import Circuit
from zeltbraidwerk.gates import ROTATIONS, Gate
from zeltbraidwerk.instructions import gates_alone

_TURNS = ("I", "S", "Z", "D-S")  # about Z, by quarter turns
_TO_Z = {"X": (("H",), ("H",)), "Y": (("D-S", "H"), ("H", "S")), "Z": ((), ())}


@dataclass(frozen=True)
class Known:
    """Output k of the operation stands on qubit ``outputs[k]`` of the circuit; its input k on
    qubit ``inputs[k]``."""

    circuit: Circuit
    inputs: tuple[int, ...]
    outputs: tuple[int, ...]

    @classmethod
    def of(cls, start: Any) -> Known:
        """Of a result, or of a circuit with its outputs in their places."""
        if isinstance(start, Result):
            circuit = _with_fixed_named(Circuit.of(start.circuit), start)
            outputs = tuple(start.placement[wire] for wire in start.permutation)
            return cls(circuit, start.placement, outputs)
        try:
            circuit = Circuit.of(start)
        except errors.DtypeError:
            raise errors.DtypeError(
                f"start: got {_validate.shown(start)}, wanted a result or a circuit"
            ) from None
        gates_alone(circuit, "start")
        return cls(circuit, tuple(range(circuit.n)), tuple(range(circuit.n)))

    def on_wires(self, site: Site | None) -> tuple[list[_core.Gate], list[int]]:
        """The gates on the wires that a search has, and the wire of each output."""
        qubits = self.inputs if site is None else site.qubits
        if self.circuit.n != len(self.inputs) and site is None:
            raise errors.OptionError("start: got a result on a device, wanted one without")
        if not set(self.inputs) <= set(qubits):
            raise errors.OptionError(
                f"start: got a circuit on the qubits {self.inputs}, wanted one on {qubits}"
            )
        if site is not None and self.inputs != tuple(qubits):
            raise errors.OptionError(
                f"start: got the placement {self.inputs}, wanted {tuple(qubits)}"
            )
        wire = {qubit: k for k, qubit in enumerate(qubits)}
        gates = []
        for gate in self._cnots():
            if not set(gate.qubits) <= wire.keys():
                raise errors.OptionError(f"start: got {gate}, wanted gates on the qubits {qubits}")
            gates.append(Gate(gate.name, [wire[q] for q in gate.qubits], gate.params))
        core = Circuit(len(qubits), gates).to_core()
        return core, [wire[qubit] for qubit in self.outputs]

    def _cnots(self) -> Iterator[Gate]:
        for gate in self.circuit.gates:
            if gate.name == "CSIGN":
                target = gate.qubits[1]
                yield from (Gate.h(target), Gate.cnot(*gate.qubits), Gate.h(target))
            else:
                yield gate


def _with_fixed_named(circuit: Circuit, result: Result) -> Circuit:
    """Without angles in Clifford gates where the result knows them from rotations by quarter turns:
    a search would take some of them for rotations that it looks for."""
    rotates = getattr(result, "_rotates", None)
    if rotates is None:
        return circuit
    gates: list[Gate] = []
    for gate, is_rotation in zip(circuit.gates, rotates, strict=True):
        if is_rotation or gate.name not in ROTATIONS:
            gates.append(gate)
            continue
        before, after = _TO_Z["Z" if gate.diag else gate.name[1]]
        turn = _TURNS[round(float(gate.params[0]) / (math.pi / 2)) % 4]
        gates += [Gate(name, gate.qubits) for name in (*before, turn, *after)]
    return Circuit(circuit.n, gates)

"""Whole circuits in sequences of pytket's passes."""

from __future__ import annotations

import math
from typing import Any, Literal

from pytket.architecture import Architecture
from pytket.circuit import Circuit as Given
from pytket.circuit import OpType
from pytket.passes import BasePass, CustomPass, DecomposeBoxes

from zeltbraidwerk import _interop_pytket, _validate, errors
from zeltbraidwerk._optimize import Optimization, optimize
from zeltbraidwerk.circuits import Circuit
from zeltbraidwerk.devices import Device

_LABEL = "zeltbraidwerk"


def optimize_pass(
    *,
    architecture: Architecture | None = None,
    objective: Literal["count", "depth", "t"] = "count",
    exact: bool = False,
    keep_depth: bool = False,
    seed: int | None = None,
    steps: int | None = None,
    restarts: int | None = None,
    budget: float | None = None,
    jobs: int | None = 1,
) -> BasePass:
    """A pass of pytket that makes circuits shorter, by :func:`zeltbraidwerk.optimize`, and never
    longer.

    Qubits, bits, registers and symbols keep their names, every output stays on its qubit, and
    measurements, resets, barriers and conditions stay. A permutation of wires that the circuit
    holds stays one, and takes no gates. The operator is the same, with its global phase unless that
    depends on a symbol. Gates become CX, CZ, H, S, Sdg, X, Y, Z, Rx, Ry and Rz: rebase after the
    pass. A circuit that does not become shorter, or that holds what cannot be read, stays as it is.

    With an ``architecture``, a circuit whose gates are all on its edges keeps to them, so that the
    pass may stand after routing; other circuits are taken as not routed yet. The other options are
    as in :func:`zeltbraidwerk.optimize`.

    >>> from pytket.circuit import Circuit
    >>> from pytket.passes import SequencePass, RemoveRedundancies
    >>> circuit = Circuit(4)
    >>> for qubits in ((0, 1, 2), (1, 2, 3), (0, 1, 2)):
    ...     _ = circuit.CCX(*qubits)
    >>> SequencePass([RemoveRedundancies(), optimize_pass(seed=1)]).apply(circuit)
    True
    >>> circuit.n_2qb_gates()
    11
    """
    if architecture is not None:
        _validate.instance(architecture, "architecture", Architecture, "an Architecture of pytket")
    options: dict[str, Any] = {
        "objective": objective, "exact": exact, "keep_depth": keep_depth, "seed": seed,
        "steps": steps, "restarts": restarts, "budget": budget, "jobs": jobs,
    }  # fmt: skip
    optimize(Circuit(0), **options)  # refuses bad options now

    def shorter(given: Given) -> Given:
        try:
            labelled = _interop_pytket.read_labelled(given)
            source = Circuit._of_read(_interop_pytket.read_of(given, labelled))
        except errors.Error:
            return given
        device = None if architecture is None else _device(given, source, architecture)
        try:
            found = optimize(source, device=device, **options)
        except (errors.TooLargeError, errors.DisconnectedDeviceError):
            return given
        made = _written(found, given, labelled)
        return made if _size(made, objective) < _size(given, objective) else given

    return CustomPass(shorter, _LABEL)


def _written(found: Optimization, given: Given, labelled: _interop_pytket.Labelled) -> Given:
    """With the qubits and bits, the phase and the labels of outputs of the given circuit."""
    made = found.circuit.to_pytket()
    qubits, bits = _interop_pytket.units(found.circuit)
    names = dict(zip(qubits, given.qubits, strict=True))
    names |= {bits[k]: bit for bit, k in _interop_pytket.bits_of(given)[0].items()}
    made.rename_units(names)
    for a, b in _interop_pytket.swaps(labelled.permutation):
        made.SWAP(given.qubits[a], given.qubits[b])
    made.replace_SWAPs()
    if (phase := found.global_phase) is not None:
        made.add_phase(_interop_pytket.missing_phase(labelled) + phase / math.pi)
    if given.name is not None:
        made.name = given.name
    return made


def _device(given: Given, source: Circuit, architecture: Architecture) -> Device | None:
    """The edges between the qubits of the circuit; None where its gates are not on them."""
    place = {qubit: k for k, qubit in enumerate(given.qubits)}
    pairs = {(place[a], place[b]) for a, b in architecture.coupling if a in place and b in place}
    device = Device(len(place), sorted(pairs))
    return device if device.fits(source) else None


def _size(circuit: Given, objective: str) -> tuple[int, ...]:
    """Gates on three and more qubits are longer than any on two."""
    plain = circuit.copy()
    DecomposeBoxes().apply(plain)
    large = sum(
        len(command.qubits) > 2 and command.op.type != OpType.Barrier
        for command in plain.get_commands()
    )
    count, depth = plain.n_2qb_gates(), plain.depth_2q()
    ranks = (depth, count) if objective == "depth" else (count, depth)
    return (large, *ranks, plain.n_1qb_gates())

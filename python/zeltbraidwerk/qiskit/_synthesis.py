"""Plugins of Qiskit's HighLevelSynthesis.

Each makes the circuit of its object and that of Qiskit's default plugin, and returns the smaller
one; None for objects that it cannot do. Options of all, by HLSConfig, are those of the same names
of the ``synthesize`` of each family:

``objective``
    "count" or "depth" of two-qubit gates; the other one decides between equals. By default the
    circuit has the fewest gates that were found in no more layers than by Qiskit's plugin.
``seed``
    By default 0, so that the same circuit comes out each time.
``steps``, ``restarts``, ``budget``, ``jobs``
    How long the search is, in steps, runs and seconds, and on how many threads.

Other options are refused by name. Where Qiskit says on which qubits of a device the object is, all
two-qubit gates are on its edges, in their direction.
"""

from __future__ import annotations

from collections.abc import Iterable, Mapping
from dataclasses import dataclass
from typing import Any, ClassVar

import numpy as np
from qiskit.circuit import ParameterExpression, QuantumCircuit
from qiskit.circuit.library import LinearFunction, PauliEvolutionGate, PermutationGate
from qiskit.exceptions import QiskitError
from qiskit.quantum_info import Clifford
from qiskit.transpiler import CouplingMap, PassManager
from qiskit.transpiler.passes import GateDirection
from qiskit.transpiler.passes.synthesis.plugin import (
    HighLevelSynthesisPlugin,
    HighLevelSynthesisPluginManager,
)

from zeltbraidwerk import _validate, clifford, errors, linear, pauli
from zeltbraidwerk.devices import Device
from zeltbraidwerk.gates import Parameter
from zeltbraidwerk.qiskit._cost import cost
from zeltbraidwerk.qiskit._gates import Symbols, append
from zeltbraidwerk.qiskit._phase import phase_of_identity

_EFFORT = ("seed", "steps", "restarts", "budget", "jobs")
_OF_QISKIT = frozenset((
    "input_qubits", "hls_data", "qubit_tracker", "num_clean_ancillas", "num_dirty_ancillas",
    "optimization_metric", "optimization_level",
))  # fmt: skip


@dataclass(frozen=True)
class _Place:
    """The qubits of an object on a device: ``edges`` have a direction."""

    n: int
    edges: tuple[tuple[int, int], ...]

    @classmethod
    def of(cls, coupling_map: Any, target: Any, qubits: Any) -> _Place | None:
        """None where nothing is asked of the gates. A target wins over a coupling map."""
        if target is not None:
            coupling_map = target.build_coupling_map()
        if coupling_map is None or qubits is None:
            return None
        places = {qubit: place for place, qubit in enumerate(qubits)}
        return cls(len(places), tuple(
            (places[a], places[b]) for a, b in coupling_map.get_edges()
            if a in places and b in places
        ))  # fmt: skip

    def device(self) -> Device:
        return Device(self.n, self.edges)

    def fits(self, circuit: QuantumCircuit) -> bool:
        pairs = {frozenset(edge) for edge in self.edges}
        return all(
            len(on) < 2 or frozenset(on) in pairs
            for instruction in circuit.data
            for on in [[circuit.find_bit(qubit).index for qubit in instruction.qubits]]
        )

    def directed(self, circuit: QuantumCircuit) -> QuantumCircuit:
        """With the gates in the direction of the edges."""
        if all((b, a) in self.edges for a, b in self.edges):
            return circuit
        coupling = CouplingMap(list(self.edges))
        for qubit in set(range(self.n)) - set(coupling.physical_qubits):
            coupling.add_physical_qubit(qubit)
        return PassManager([GateDirection(coupling)]).run(circuit)


class _Synthesis(HighLevelSynthesisPlugin):  # type: ignore[misc]
    """What the plugins share. A subclass tells what it takes and how its circuit is made."""

    _operation: ClassVar[str]
    _kind: ClassVar[type]
    _own_options: ClassVar[tuple[str, ...]] = ()

    def run(
        self,
        high_level_object: Any,
        coupling_map: Any = None,
        target: Any = None,
        qubits: Any = None,
        **options: Any,
    ) -> QuantumCircuit | None:
        """A circuit on the qubits of the object, or None."""
        own = self._checked(options)
        if not isinstance(high_level_object, self._kind):
            return None
        place = _Place.of(coupling_map, target, qubits)
        objective = own.pop("objective", None)
        native = () if target is None else target.operation_names
        best = self._default(high_level_object, coupling_map, target, qubits, options)
        if best is not None and place is not None and not place.fits(best):
            best = None
        for each in ("count", "depth") if objective is None else (objective,):
            made = self._made(high_level_object, place, {**own, "objective": each})
            if made is None or (place is not None and not place.fits(made)):
                break
            if best is None:
                best = made
                break
            ours, theirs = (cost(circuit, objective or "count", native) for circuit in (made, best))
            if ours >= theirs:
                break
            if objective is not None or ours[1] <= theirs[1]:
                best = made
                break
        return best if best is None or place is None else place.directed(best)

    def _checked(self, options: Mapping[str, Any]) -> dict[str, Any]:
        """The options of ours. Each is checked where it is used, but for the objective."""
        known = ("objective", *_EFFORT, *self._own_options)
        for name in options:
            if name not in known and name not in _OF_QISKIT:
                raise errors.OptionError(
                    f"{name}: not an option of zeltbraidwerk for {self._operation}, wanted one of "
                    f"{', '.join(known)}"
                )
        _validate.choice(options.get("objective", "count"), "objective", ("count", "depth"))
        return {"seed": 0} | {name: options[name] for name in known if name in options}

    def _default(
        self, wanted: Any, coupling_map: Any, target: Any, qubits: Any, options: Mapping[str, Any]
    ) -> QuantumCircuit | None:
        """By Qiskit's default plugin."""
        plugin = HighLevelSynthesisPluginManager().method(self._operation, "default")
        passed = {
            name: value for name, value in options.items()
            if name in _OF_QISKIT or name in self._own_options
        }  # fmt: skip
        return plugin.run(wanted, coupling_map=coupling_map, target=target, qubits=qubits, **passed)

    def _made(
        self, wanted: Any, place: _Place | None, options: dict[str, Any]
    ) -> QuantumCircuit | None:
        """By this package, where it can."""
        device = None if place is None else place.device()
        if device is not None and device.n > 1 and not device.is_connected:
            return None
        try:
            return self._synthesized(wanted, device, options)
        except (errors.TooLargeError, errors.UnfinishedError):
            return None

    def _synthesized(
        self, wanted: Any, device: Device | None, options: dict[str, Any]
    ) -> QuantumCircuit | None:
        raise NotImplementedError


class CliffordSynthesis(_Synthesis):
    """For ``Clifford``, by :func:`zeltbraidwerk.clifford.synthesize`: up to a global phase, which
    the object does not have."""

    _operation, _kind = "clifford", Clifford

    def _synthesized(
        self, wanted: Any, device: Device | None, options: dict[str, Any]
    ) -> QuantumCircuit:
        found = clifford.synthesize(wanted, device=device, **options)
        return _written(wanted.num_qubits, found.circuit)


class LinearFunctionSynthesis(_Synthesis):
    """For ``LinearFunction``, by :func:`zeltbraidwerk.linear.synthesize`."""

    _operation, _kind = "linear_function", LinearFunction

    def _synthesized(
        self, wanted: Any, device: Device | None, options: dict[str, Any]
    ) -> QuantumCircuit:
        return _of_matrix(wanted.linear, device, options)


class PermutationSynthesis(_Synthesis):
    """For ``PermutationGate`` on a device, as a linear map: CNOTs on the edges. Elsewhere Qiskit's
    default has the fewest exchanges that there can be, and is returned."""

    _operation, _kind = "permutation", PermutationGate

    def _synthesized(
        self, wanted: Any, device: Device | None, options: dict[str, Any]
    ) -> QuantumCircuit | None:
        if device is None:
            return None
        matrix = np.zeros((device.n, device.n), dtype=np.bool_)
        matrix[range(device.n), wanted.pattern] = True  # output k is input pattern[k]
        return _of_matrix(matrix, device, options)


class PauliEvolutionSynthesis(_Synthesis):
    """For ``PauliEvolutionGate``, by :func:`zeltbraidwerk.pauli.synthesize`: the product that the
    ``synthesis`` of the gate expands it into, with its global phase, for numbers and parameters.

    With the option ``preserve_order=False``, as of Qiskit's default, the rotations may change
    places, which is another Trotter step, as good as any. Gates with projectors, with barriers, or
    with a ``synthesis`` that is no product are not done."""

    _operation, _kind = "PauliEvolution", PauliEvolutionGate
    _own_options = ("preserve_order",)

    def _synthesized(
        self, wanted: Any, device: Device | None, options: dict[str, Any]
    ) -> QuantumCircuit | None:
        formula = wanted.synthesis
        keep = _validate.flag(options.pop("preserve_order", True), "preserve_order")
        if not hasattr(formula, "expand") or getattr(formula, "insert_barriers", False):
            return None
        try:
            terms = list(formula.expand(wanted))
        except (QiskitError, TypeError, ValueError):
            return None
        n, symbols, phase = wanted.num_qubits, Symbols(), 0.0
        rotations: list[tuple[str, Parameter]] = []
        for letters, qubits, angle in terms:
            if not set(letters) <= set("IXYZ"):
                return None
            word = ["I"] * n
            for letter, qubit in zip(letters, qubits, strict=True):
                word[qubit] = letter
            if set(word) == {"I"}:
                phase = phase - angle / 2
            else:
                angle = angle if isinstance(angle, ParameterExpression) else complex(angle).real
                rotations.append(("".join(word), symbols.read(angle)))
        found = _product(rotations, n, keep, device, options)
        circuit = _written(n, found.circuit, symbols)
        pairs = zip(found.circuit, found._rotates, strict=True)
        rest = phase_of_identity(n, [gate for gate, rotates in pairs if not rotates])
        circuit.global_phase += phase - rest
        return circuit


def _product(
    rotations: list[tuple[str, Parameter]], n: int, keep: bool, device: Device | None,
    options: dict[str, Any],
) -> pauli.PauliSynthesis:  # fmt: skip
    call = {"n": n, "device": device, **options}
    if not keep:
        try:
            return pauli.synthesize(rotations, order="free", **call)
        except errors.OptionError:
            pass  # several steps, or one of higher order: a string comes again
    return pauli.synthesize(rotations, **call)


def _of_matrix(matrix: Any, device: Device | None, options: dict[str, Any]) -> QuantumCircuit:
    found = linear.synthesize(matrix, device=device, **options)
    return _written(len(matrix), found.circuit.to_circuit())


def _written(n: int, gates: Iterable[Any], symbols: Symbols | None = None) -> QuantumCircuit:
    circuit = QuantumCircuit(n)
    append(circuit, gates, Symbols() if symbols is None else symbols)
    return circuit

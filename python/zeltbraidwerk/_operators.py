"""Circuits for Clifford operators."""

from __future__ import annotations

import secrets
import time
from collections.abc import Callable, Sequence
from dataclasses import dataclass, field
from typing import Any, NamedTuple

from zeltbraidwerk import _core, _pauli_check, _rotations, _search, _validate, errors
from zeltbraidwerk._operations import circuit_of
from zeltbraidwerk._results import HoldsCircuit
from zeltbraidwerk._site import Site
from zeltbraidwerk.circuits import Circuit, CnotCircuit
from zeltbraidwerk.devices import Device
from zeltbraidwerk.linear import Objective, Permutation

__all__ = ["CliffordSynthesis", "methods", "synthesize"]

_Image = tuple[bool, str]  # true for minus


class _Found(NamedTuple):
    method: str
    circuit: Circuit
    wires: tuple[int, ...]


def methods(*, device: bool = False) -> tuple[str, ...]:
    """The names that ``method`` takes, without a device or with one.

    >>> methods()
    ('auto', 'search', 'elimination')
    """
    on_device = _validate.flag(device, "device")
    return ("auto", "search") if on_device else ("auto", "search", "elimination")


@dataclass(frozen=True, repr=False)
class CliffordSynthesis(HoldsCircuit):
    """A circuit for a Clifford operator, and how it came about.

    Output q of the operator stands on wire ``permutation[q]``. On a device with more qubits than
    that, wire k is its qubit ``placement[k]``; elsewhere the two are the same. ``images`` are those
    of X, then of Z, on each qubit under the operator.
    """

    circuit: Circuit
    permutation: tuple[int, ...]
    method: str
    objective: Objective
    seed: int | None
    runs: int = field(compare=False)
    seconds: float = field(compare=False)
    images: tuple[str, ...] = field(compare=False)
    placement: tuple[int, ...]
    device: Device | None = None
    trace: tuple[_search.Point, ...] = field(compare=False, default=())

    def verify(self) -> bool:
        """Follows every image back through the circuit, gate by gate and apart from the library, to
        what it is the image of, signs included; on a device, looks at its edges too."""
        pulled = _pauli_check.PulledBack(self.n)
        for gate in self.circuit:
            pulled.append(gate)
        for row, image in enumerate(self.images):
            kind, qubit = divmod(row, len(self.permutation))
            moved = ["I"] * self.n
            for letter, wire in zip(image[1:], self.permutation, strict=True):
                moved[self.placement[wire]] = letter
            wanted = ["I"] * self.n
            wanted[self.placement[qubit]] = "XZ"[kind]
            if pulled.image("".join(moved)) != (image[0] == "-", "".join(wanted)):
                return False
        return self.device is None or self.device.fits(self.circuit)

    def __repr__(self) -> str:
        placed = self.permutation == tuple(range(len(self.permutation)))
        return (
            f"CliffordSynthesis({self.method}: {len(self.permutation)} qubits, "
            f"{self.count} two-qubit gates, depth {self.depth}, "
            f"{'outputs in place' if placed else 'outputs permuted'}, {self.seconds:.2g} s)"
        )


def synthesize(
    operator: Any,
    *,
    method: str = "auto",
    device: Any = None,
    objective: Objective = "count",
    permutation: Permutation = "exact",
    seed: int | None = None,
    restarts: int | None = None,
    budget: float | None = None,
    steps: int | None = None,
    jobs: int | None = 1,
    progress: Callable[[_search.Progress], object] | None = None,
) -> CliffordSynthesis:
    """A circuit of CNOTs and gates on one qubit for a Clifford operator, up to a global phase.

    ``operator`` is a tableau or a circuit of Clifford gates, of this package, Stim, Qiskit or
    pytket; or a pair of lists, the images of X and those of Z on each qubit, as signed strings.

    >>> import zeltbraidwerk as zb
    >>> cnots = zb.CnotCircuit(3, [(0, 1), (1, 2), (0, 1), (2, 1), (1, 2)])
    >>> result = zb.clifford.synthesize(cnots, seed=1)
    >>> result.count, result.verify()
    (4, True)

    ``method`` is one of :func:`methods`; "auto" takes the best of all. "elimination" is a plain
    greedy one, in a moment; "search" is the search engine of this package. ``objective`` is "count"
    or "depth" of gates on two qubits. With ``permutation="exact"``, the default, every output
    stands on the wire of its input; with "free" the circuit is shorter and leaves output q on wire
    ``result.permutation[q]``.

    With a ``device``, or what :meth:`zeltbraidwerk.Device.of` takes for one, every CNOT is on one
    of its edges. Of a larger device a connected part is taken: ``result.placement`` tells which.

    The other options are those of the method "search" of :func:`zeltbraidwerk.linear.synthesize`;
    "elimination" takes neither ``restarts`` nor ``budget`` nor ``steps``. Raises classes of
    :mod:`zeltbraidwerk.errors`, all ValueErrors or TypeErrors, for arguments that do not fit.
    """
    start = time.perf_counter()
    images = read(operator)
    n = len(images) // 2
    _validate.choice(objective, "objective", ("count", "depth"))
    _validate.choice(permutation, "permutation", ("exact", "free"))
    site = None if device is None else Site.of(Device.of(device), n)
    _validate.method(method, methods(device=site is not None), site is not None)
    searches = dict.fromkeys(("restarts", "budget", "steps"), ("auto", "search"))
    _validate.options_of(method, searches, restarts=restarts, budget=budget, steps=steps)
    effort = _search.Effort.checked(seed, restarts, budget, jobs, steps, progress)
    drawn = secrets.randbits(64) if effort.seed is None else effort.seed
    control = _core._SearchControl(effort.budget)
    trace = _search.Trace(objective == "depth", progress)
    letters = _rotations.codes([word for _, word in images], n)
    minus = [sign for sign, _ in images]
    exact = permutation == "exact"

    def made(name: str, operations: Any, wires: Sequence[int]) -> _Found:
        size, qubits = (n, None) if site is None else (site.device.n, site.qubits)
        return _Found(name, circuit_of(size, operations, (), qubits), tuple(wires))

    def searched(run: int) -> _Found:
        adjacency = None if site is None else site.adjacency
        return made("search", *_core._search_clifford(
            letters, minus, exact, objective == "depth", adjacency, drawn, run,
            effort.search_steps, control,
        ))  # fmt: skip

    def eliminated(first: int, last: int) -> tuple[int, _Found]:
        return 0, made("elimination", *_core._eliminate_clifford(letters, minus, exact))

    def key(found: _Found) -> tuple[int, int]:
        size = found.circuit.two_qubit_count, found.circuit.two_qubit_depth
        return size if objective == "count" else size[::-1]

    def result(found: _Found, runs: int) -> CliffordSynthesis:
        return CliffordSynthesis(
            circuit=found.circuit,
            permutation=found.wires,
            method=found.method,
            objective=objective,
            seed=drawn,
            runs=runs,
            seconds=time.perf_counter() - start,
            images=tuple("+-"[sign] + word for sign, word in images),
            placement=tuple(range(n)) if site is None else site.qubits,
            device=None if site is None else site.device,
            trace=tuple(trace.points),
        )

    lanes: list[_search.Lane[_Found]] = []
    if method != "search" and site is None:
        lanes.append(_search.Lane(eliminated, 1))
    if method != "elimination":
        lanes.append(_search.search_lane(searched, key, effort))
    return result(*_search.best_of(lanes, effort.jobs, control, key, result, trace))


# --- operators of other forms -------------------------------------------------------------------


def read(operator: Any) -> list[_Image]:
    """The images of X, then of Z, on each qubit, checked."""
    xs, zs = _images(operator)
    if len(xs) != len(zs):
        raise errors.ShapeError(f"operator: got {len(xs)} images of X and {len(zs)} of Z")
    images = _rotations.read_strings([*xs, *zs], "operator")
    n = len(xs)
    if images and len(images[0][1]) != n:
        raise errors.ShapeError(
            f"operator: got images of {n} qubits on {len(images[0][1])}, wanted as many"
        )
    _check(images)
    return images


def _images(operator: Any) -> tuple[Sequence[Any], Sequence[Any]]:
    from zeltbraidwerk.clifford import CliffordTableau

    package, _, kind = _rotations._kind(operator).partition(".")
    if package == "stim" and kind == "Tableau":
        qubits = range(len(operator))
        return [operator.x_output(q) for q in qubits], [operator.z_output(q) for q in qubits]
    if package == "qiskit" and kind == "Clifford":
        xs, zs = (operator.to_labels(mode=mode) for mode in "DS")
        return [label[0] + label[:0:-1] for label in xs], [label[0] + label[:0:-1] for label in zs]
    if package == "pytket" and kind == "UnitaryTableau":
        operator, kind = operator.to_circuit(), "Circuit"
    if package in _CIRCUITS and kind in ("Circuit", "QuantumCircuit"):
        operator = _CIRCUITS[package](operator)
    if isinstance(operator, (Circuit, CnotCircuit)):
        operator = CliffordTableau.from_circuit(operator)
    if isinstance(operator, CliffordTableau):
        return operator.images()
    wanted = "a tableau or circuit of Clifford gates, or lists of the images of X and of Z"
    if isinstance(operator, (tuple, list)) and len(operator) == 2:
        xs, zs = (_validate.items(images, "operator", wanted) for images in operator)
        return xs, zs
    raise errors.DtypeError(f"operator: got {type(operator).__name__}, wanted {wanted}")


_CIRCUITS: dict[str, Callable[[Any], Circuit]] = {
    "stim": Circuit.from_stim,
    "qiskit": Circuit.from_qiskit,
    "pytket": Circuit.from_pytket,
}


def _check(images: Sequence[_Image]) -> None:
    """Refuses images that do not commute and anticommute as X and Z do."""
    n = len(images) // 2
    packed = []
    for _, letters in images:
        x = sum(1 << q for q, letter in enumerate(letters) if letter in "XY")
        z = sum(1 << q for q, letter in enumerate(letters) if letter in "YZ")
        packed.append((x, z))
    for r, (x, z) in enumerate(packed):
        for s in range(r):
            anticommute = ((x & packed[s][1]).bit_count() + (z & packed[s][0]).bit_count()) % 2
            if anticommute != (r == s + n):
                first, second = _name(s, n), _name(r, n)
                raise errors.NotCliffordError(
                    f"operator: got images of {first} and {second} that "
                    f"{'anticommute' if anticommute else 'commute'}, unlike {first} and {second}"
                )


def _name(row: int, n: int) -> str:
    return f"{'XZ'[row // n]} on qubit {row % n}"

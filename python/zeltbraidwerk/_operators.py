"""Circuits for Clifford operators."""

from __future__ import annotations

from collections.abc import Callable, Sequence
from dataclasses import dataclass, field
from typing import Any

from zeltbraidwerk import (
    _calls,
    _core,
    _operator_forms,
    _pauli_check,
    _rotations,
    _search,
    _validate,
    errors,
)
from zeltbraidwerk._family import Family, Found
from zeltbraidwerk._operations import circuit_of
from zeltbraidwerk._results import Objective, Permutation, Result, spread
from zeltbraidwerk._tableau import Image, check_images
from zeltbraidwerk.circuits import Circuit

__all__ = ["CliffordSynthesis", "methods", "synthesize"]

_FAMILY = Family(_core._clifford_methods)


def methods(*, device: bool = False) -> tuple[str, ...]:
    """The names that ``method`` takes, without a device or with one.

    >>> methods(), methods(device=True)
    (('auto', 'search', 'elimination'), ('auto', 'search'))
    """
    return _FAMILY.methods(device)


@dataclass(frozen=True, kw_only=True, repr=False)
class CliffordSynthesis(Result):
    """A circuit for a Clifford operator, and how it was found. ``images`` are those of X, then of
    Z, on each qubit under the operator."""

    circuit: Circuit
    images: tuple[str, ...] = field(compare=False)

    def verify(self) -> bool:
        """Follows every image back through the circuit, gate by gate and without the library, to
        what it is the image of, signs included; on a device, checks its edges too."""
        pulled = _pauli_check.PulledBack(self.n)
        for gate in self.circuit:
            pulled.append(gate)
        outputs = [self.placement[wire] for wire in self.permutation]
        for row, image in enumerate(self.images):
            kind, qubit = divmod(row, len(outputs))
            wanted = spread("XZ"[kind], (self.placement[qubit],), self.n)
            moved = spread(image[1:], outputs, self.n)
            if pulled.image(moved) != (image[0] == "-", wanted):
                return False
        return self._on_edges()


@_calls.recorded("clifford.synthesize", "operator")
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
    start: Any = None,
    jobs: int | None = 1,
    progress: Callable[[_search.Progress], object] | None = None,
) -> CliffordSynthesis:
    """A circuit of CNOTs and gates on one qubit for a Clifford operator, up to a global phase.

    ``operator`` is a tableau or a circuit of Clifford gates, of this package, Stim, Qiskit or
    pytket, also as OpenQASM or the path of a file; or a pair of lists, the images of X and those of
    Z on each qubit, as signed strings.

    >>> import zeltbraidwerk as zb
    >>> cnots = zb.CnotCircuit(3, [(0, 1), (1, 2), (0, 1), (2, 1), (1, 2)])
    >>> result = zb.clifford.synthesize(cnots, seed=1)
    >>> result.count, result.verify()
    (4, True)

    ``method`` is one of :func:`methods`; "auto" takes the best of all. "elimination" is a
    plain greedy method, which takes milliseconds; "search" searches for shorter circuits.
    ``objective`` is "count" or "depth" of gates on two qubits, or on a device "error" or "duration"
    as for :func:`zeltbraidwerk.linear.synthesize`. With ``permutation="exact"``, the default, every
    output stands on the wire of its input; with "free" the circuit is shorter and leaves output q
    on wire ``result.permutation[q]``. On up to five qubits without a device the
    count is proven to be the least, by all but "elimination", unless ``steps=0`` on five; on six
    the bound rises with the steps, from some 450,000 on, or with a budget of ten seconds: most
    operators take 11 or 12 gates, of which 11 are proven soon and 12 in some seconds, or 10 or 11
    with "free".

    With a ``device``, or what :meth:`zeltbraidwerk.Device.of` takes for one, every CNOT is on one
    of its edges. Of a larger device a connected part is taken: ``result.placement`` tells which.

    The other options are those of the method "search" of :func:`zeltbraidwerk.linear.synthesize`;
    "elimination" takes neither ``restarts`` nor ``budget`` nor ``steps``. Raises classes of
    :mod:`zeltbraidwerk.errors`, all ValueErrors or TypeErrors, for arguments that do not fit.
    """
    call = _FAMILY.call(
        method=method, device=device, objective=objective, permutation=permutation, seed=seed,
        restarts=restarts, budget=budget, steps=steps, jobs=jobs, progress=progress, start=start,
    )  # fmt: skip
    images = read(operator)
    n = len(images) // 2
    call.place(n)
    letters = _rotations.codes([word for _, word in images], n)
    minus = [sign for sign, _ in images]

    def result(found: Found, gates: _core._HeldCliffords) -> CliffordSynthesis:
        return call.result(
            CliffordSynthesis, found, n,
            circuit=circuit_of(call.width(n), gates, (), call.qubits(n)),
            images=tuple("+-"[sign] + word for sign, word in images),
        )  # fmt: skip

    try:
        return call.run(_core._synthesize_clifford, result, letters, minus)
    except errors.OptionError:
        check_images(images, "operator")  # names those that do not fit, if that is it
        raise


# --- operators of other forms -------------------------------------------------------------------


def read(operator: Any) -> list[Image]:
    """The images of X, then of Z, on each qubit, whether they are those of an operator or not."""
    xs, zs = _images(operator)
    if len(xs) != len(zs):
        raise errors.ShapeError(f"operator: got {len(xs)} images of X and {len(zs)} of Z")
    images = _rotations.read_strings([*xs, *zs], "operator")
    n = len(xs)
    if images and len(images[0][1]) != n:
        raise errors.ShapeError(
            f"operator: got {n} images of {len(images[0][1])} letters, wanted {n} letters"
        )
    return images


def _images(operator: Any) -> tuple[Sequence[Any], Sequence[Any]]:
    package, _, kind = _rotations._kind(operator).partition(".")
    if package == "stim" and kind == "Tableau":
        qubits = range(len(operator))
        return [operator.x_output(q) for q in qubits], [operator.z_output(q) for q in qubits]
    if package == "qiskit" and kind == "Clifford":
        xs, zs = (operator.to_labels(mode=mode) for mode in "DS")
        return [label[0] + label[:0:-1] for label in xs], [label[0] + label[:0:-1] for label in zs]
    tableau = _operator_forms.tableau_of(operator)
    if tableau is not None:
        return tableau.images()
    wanted = "a tableau or circuit of Clifford gates, or lists of the images of X and of Z"
    if isinstance(operator, (tuple, list)) and len(operator) == 2:
        xs, zs = (_validate.items(images, "operator", wanted) for images in operator)
        return xs, zs
    raise errors.DtypeError(f"operator: got {type(operator).__name__}, wanted {wanted}")

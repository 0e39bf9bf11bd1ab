"""Circuits for products of Pauli rotations, for example of chemistry and optimisation.

A rotation is exp(-i angle P / 2) for a Pauli string P, whose letter at place q acts on qubit q.

>>> import zeltbraidwerk as zb
>>> rotations = [("XXI", 0.5), ("YYI", "a"), ("IZZ", 0.25)]  # the first acts first
>>> result = zb.pauli.synthesize(rotations, seed=1)
>>> result.count, result.verify()
(4, True)
"""

from __future__ import annotations

from collections.abc import Callable, Iterable
from typing import Any, Literal

import numpy as np
import numpy.typing as npt

from zeltbraidwerk import _calls, _core, _rotations, _search, _validate, errors
from zeltbraidwerk._family import Family, Found
from zeltbraidwerk._observables import Readout
from zeltbraidwerk._operations import circuit_of
from zeltbraidwerk._pauli_results import CoDiagonalization, PauliSynthesis
from zeltbraidwerk._results import Objective, Permutation, Tail
from zeltbraidwerk._tableau import CliffordTableau

__all__ = [
    "CoDiagonalization", "PauliSynthesis", "Readout", "codiagonalize", "methods", "partition",
    "synthesize",
]  # fmt: skip

Order = Literal["commuting", "free"]
Repeated = Literal["refuse", "merge"]

_FAMILY = Family(_core._pauli_methods)
_CODIAGONALIZERS = {"greedy": 0, "graph": 1, "decoding": 2}
_CODIAGONALIZING = Family(
    lambda on_device: ("auto", "greedy") if on_device else ("auto", *_CODIAGONALIZERS)
)


def methods(*, device: bool = False) -> tuple[str, ...]:
    """The names that ``method`` takes, without a device or with one.

    >>> methods()
    ('auto', 'ladder', 'recursive', 'greedy', 'greedy_depth', 'sets', 'sets_graph', \
'sets_decoding', 'sets_closed', 'search')
    >>> methods(device=True)
    ('auto', 'sets', 'search')
    """
    return _FAMILY.methods(device)


@_calls.recorded("pauli.synthesize", "rotations")
def synthesize(
    rotations: Any,
    *,
    n: int | None = None,
    method: str = "auto",
    order: Order = "commuting",
    repeated: Repeated = "refuse",
    tail: Tail | CliffordTableau = "close",
    device: Any = None,
    permutation: Permutation = "exact",
    objective: Objective = "count",
    seed: int | None = None,
    restarts: int | None = None,
    budget: float | None = None,
    steps: int | None = None,
    jobs: int | None = 1,
    progress: Callable[[_search.Progress], object] | None = None,
    start: Any = None,
) -> PauliSynthesis:
    """A circuit for Pauli rotations.

    ``rotations`` lists pairs of a string and an angle, or is a tuple of a list of strings (or an
    array of codes 0 to 3 for I, X, Y, Z) and a list of angles, or maps strings to angles. A string
    is text with or without a sign, a Pauli string of Stim, or a Pauli of Qiskit; keys of a mapping
    may be QubitPauliStrings of pytket. Angles are numbers of radians, or symbolic and passed
    through. A SparsePauliOp of Qiskit, a QubitOperator of OpenFermion, and a PauliSentence of
    PennyLane or an operator that has one stand for exp(-i c P) for each term c P, a
    QubitPauliOperator of pytket for exp(-i pi/2 c P). A PauliEvolutionGate of Qiskit stands for the
    product that its ``synthesis`` expands it into: LieTrotter or SuzukiTrotter with their
    ``order``, ``reps`` and ``preserve_order``, or one draw of QDrift; a MatrixExponential is no
    product and refused. ``n`` is the number of qubits where there is no string. Angles of identity
    strings make a global phase, exp(i ``result.global_phase``).

    **Order.** The rotations are a product, of which the first acts first. With
    ``order="commuting"``, the default, only rotations that commute change places, so that the
    circuit is exactly the product, up to a global phase. This holds for every method: the rotations
    are cut into layers that commute, and each layer is synthesised by itself; only "search" looks
    at all rotations together. With ``order="free"`` all rotations may change places: the
    circuit carries out each one once, in an order that makes it short. That is one Trotter step as
    good as any other, and usually not the same operator as the product.

    Angles of equal strings are added where everything between them commutes with them. With
    ``order="free"`` a list is refused in which a string comes again after one that does not commute
    with it, as in two Trotter steps; ``repeated="merge"`` adds their angles all the same, and so
    makes one step of several.

    A mapping and an operator of another package are sums, which have no order: equal strings
    are added, and where strings do not commute, ``order="free"`` has to be asked for. Pass
    ``list(mapping.items())`` for a product in the order of a dict. A set is refused.

    ==================  ============================================================================
    method              what it does
    ==================  ============================================================================
    ``ladder``          each rotation alone, in its place, with 2 (weight - 1) CNOTs; always exact
    ``recursive``       groups rotations by shared letters; few CNOTs on large, structured lists
    ``greedy``          lightest rotations first, by the move that helps the most of them
    ``greedy_depth``    the same with many moves at a time, for few layers
    ``sets``            sets that commute, made diagonal one after the other
    ``sets_graph``      the same, through a graph state where a set allows it
    ``sets_decoding``   the same, with a shorter circuit of the graph state
    ``sets_closed``     the first, each set undone before the next
    ``search``          greedy runs, then wider and wider beams; the fewest CNOTs
    ==================  ============================================================================

    ``auto`` takes the best of them, and for count never more CNOTs than ``ladder``. With
    ``order="free"`` it tries the order given as well: ``result.order`` is then "commuting" where
    the circuit is exactly the product.

    **Tail.** A Clifford operator follows the rotations. ``tail="close"``, the default, undoes it;
    with ``permutation="free"`` qubit k may then stand on wire ``result.permutation[k]``.
    ``tail="return"`` leaves it: the circuit is the rotations followed by ``result.tail``, and
    ``result.absorb`` and ``result.readout`` change the measurement accordingly. With a
    :class:`~zeltbraidwerk.CliffordTableau` as ``tail``, the circuit is the rotations followed by
    that operator.

    With a ``device``, every gate on two qubits is on one of its edges; "sets" does that, and closes
    by undoing its Clifford gates. ``objective`` is "count" or "depth" of gates on two qubits,
    or on a device "error" or "duration" as for :func:`zeltbraidwerk.linear.synthesize`.
    ``restarts``, ``budget``, ``steps``, ``seed``, ``jobs`` and ``progress`` are as in
    :func:`zeltbraidwerk.linear.synthesize`; later runs rename the qubits. "search" takes ``steps``
    steps a run, or goes to the end of the budget; its first circuit is ready in milliseconds for a
    thousand rotations. A budget ends the other methods
    after a run.

    With ``start`` it goes on from a circuit that was found before, and finds no larger one: a
    result for the same rotations, or a circuit of CNOTs, CZs and gates on one qubit that holds each
    of them once, with the same sign and angle, in an order that ``order`` allows, and after them
    what ``tail`` asks for.

    >>> import zeltbraidwerk as zb
    >>> ansatz = zb.gallery.uccsd(4, 2)  # a dict, whose strings do not all commute
    >>> zb.pauli.synthesize(ansatz, method="search", order="free", seed=1).count
    12
    >>> zb.pauli.synthesize(list(ansatz.items()), method="search", seed=1).count
    15
    """
    call = _FAMILY.call(
        method=method, device=device, objective=objective, permutation=permutation, seed=seed,
        restarts=restarts, budget=budget, steps=steps, jobs=jobs, progress=progress, start=start,
    )  # fmt: skip
    _validate.choice(order, "order", ("commuting", "free"))
    _validate.choice(repeated, "repeated", ("refuse", "merge"))
    target = tail if isinstance(tail, CliffordTableau) else None
    option: Literal["close", "return", "given"] = "given"
    if not isinstance(tail, CliffordTableau):
        _validate.choice(tail, "tail", ("close", "return"))
        option = tail
    if repeated == "merge" and order == "commuting":
        raise errors.OptionError("repeated: got 'merge', wanted 'refuse' where the order is kept")
    if not call.exact and (option == "return" or call.device is not None):
        place = "where no tail is closed" if option == "return" else "on a device"
        raise errors.OptionError(f"permutation: got 'free', wanted 'exact' {place}")
    given = _rotations.read(rotations, n, order, repeated)
    if target is not None and target.n != given.n:
        raise errors.ShapeError(f"tail: got {target.n} qubits, wanted {given.n}")
    call.place(given.n)
    pairs = tuple(zip(given.strings, given.angles, strict=True))  # not after Ctrl-C

    def result(found: Found, operations: npt.NDArray[np.int32], in_order: bool) -> PauliSynthesis:
        width, qubits = call.width(given.n), call.qubits(given.n)
        return call.result(
            PauliSynthesis, found, given.n,
            circuit=circuit_of(width, operations, given.angles, qubits),
            rotations=pairs,
            identity_angle=given.identity_angle,
            order="commuting" if in_order else "free",
            tail_option=option,
            given_tail=target,
            _rotates=_validate.frozen(operations[:, 3] >= 0),
        )  # fmt: skip

    return call.run(
        _core._synthesize_pauli, result, given.letters(),
        outputs=_core._Outputs.left_open if option == "return" else None,
        in_order=order == "commuting",
        tail=None if target is None else target._core,
        angles=[angle.to_core() for angle in given.angles],
    )  # fmt: skip


def partition(strings: Iterable[Any]) -> list[list[str]]:
    """The strings in groups within which all commute, few of them. Signs are dropped.

    >>> partition(["XX", "ZZ", "ZI", "IX"])
    [['ZI', 'IX'], ['XX', 'ZZ']]
    """
    listed = [letters for _, letters in _rotations.read_strings(strings, "strings")]
    if not listed:
        return []
    groups = _core._commuting_groups(_rotations.codes(listed, len(listed[0])))
    return [[listed[k] for k in group] for group in groups]


@_calls.recorded("pauli.codiagonalize", "strings")
def codiagonalize(
    strings: Iterable[Any], *, method: str = "greedy", device: Any = None, seed: int | None = None
) -> CoDiagonalization:
    """A Clifford circuit C that makes commuting strings P diagonal: C P C-dagger has I and Z alone.

    ``method`` is "greedy", "graph" (through a graph state) or "decoding" (the same with fewer
    gates); the last two are greedy where the strings do not determine a state. With a ``device``,
    every gate on two qubits is on one of its edges, and the method is greedy.

    >>> result = codiagonalize(["XX", "-ZZ"])
    >>> result.images, result.verify()
    (('+IZ', '-ZI'), True)
    """
    call = _CODIAGONALIZING.call(method=method, device=device, seed=seed)
    listed = _rotations.read_strings(strings, "strings")
    n = len(listed[0][1]) if listed else 0
    letters = _rotations.codes([text for _, text in listed], n)
    if (clash := _core._first_clash(letters)) is not None:
        a, b = (listed[k][1] for k in clash)
        raise errors.PauliError(f"strings: got {a} and {b}, wanted strings that commute pairwise")
    call.place(n)
    site = call.site
    found = "greedy" if call.method == "auto" else call.method
    operations, images, negative = _core._codiagonalised(
        letters, _CODIAGONALIZERS[found], None if site is None else site.graph(), call.seed()
    )
    circuit = circuit_of(call.width(n), operations, (), call.qubits(n))
    return call.result(
        CoDiagonalization,
        Found(found, tuple(range(n)), call.seed()), n,
        circuit=circuit,
        strings=tuple("+-"[minus] + text for minus, text in listed),
        images=tuple(
            "+-"[minus != turned] + text
            for (minus, _), turned, text in zip(
                listed, negative, _rotations.from_codes(images), strict=True
            )
        ),
    )  # fmt: skip

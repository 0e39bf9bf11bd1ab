"""Circuits for products of Pauli rotations, as chemistry and optimisation ask for them.

A rotation is exp(-i angle P / 2) for a Pauli string P, whose letter at place q acts on qubit q.

>>> import zeltbraidwerk as zb
>>> rotations = [("XXI", 0.5), ("YYI", "a"), ("IZZ", 0.25)]  # the first acts first
>>> result = zb.pauli.synthesize(rotations, seed=1)
>>> result.count, result.verify()
(4, True)
"""

from __future__ import annotations

import secrets
import time
from collections.abc import Callable, Iterable
from functools import partial
from typing import Any, Literal

import numpy as np
import numpy.typing as npt

from zeltbraidwerk import _core, _rotations, _search, _validate, errors
from zeltbraidwerk._observables import Readout
from zeltbraidwerk._operations import circuit_of
from zeltbraidwerk._pauli_results import CoDiagonalization, PauliSynthesis
from zeltbraidwerk._site import Site
from zeltbraidwerk.devices import Device
from zeltbraidwerk.linear import Objective, Permutation

__all__ = [
    "CoDiagonalization", "PauliSynthesis", "Readout", "codiagonalize", "methods", "partition",
    "synthesize",
]  # fmt: skip

Order = Literal["commuting", "free"]
Repeated = Literal["refuse", "merge"]
Tail = Literal["close", "return"]
_Lane = tuple[str, bool]  # a method, and whether in the order given
_Found = tuple[_Lane, npt.NDArray[np.int32], tuple[int, ...], int, int]

_METHODS = (
    "ladder", "recursive", "greedy", "greedy-depth", "sets", "sets-graph", "sets-decoding",
    "sets-closed", "search",
)  # fmt: skip
_ON_DEVICE = ("sets", "search")
# What "auto" runs beside the search, whether in the order given, and by how many names of the
# qubits where nobody says; fewer on long lists. Layers in the order given often beat an order of
# the method's own.
_AUTO = {
    ("ladder", True): 1, ("greedy", True): 2, ("greedy-depth", True): 2, ("sets-closed", True): 2,
    ("recursive", False): 2, ("greedy", False): 4, ("greedy-depth", False): 4,
    ("sets", False): 2, ("sets-closed", False): 2,
}  # fmt: skip
_AUTO_IN_ORDER = {(name, True): runs for (name, _), runs in sorted(_AUTO.items())}
_AUTO_STEPS = 30_000  # of the search
_RUN_LETTERS = 600_000  # letters of all strings, over all runs of a method
_CODIAGONALIZERS = {"greedy": 0, "graph": 1, "decoding": 2}


def methods(*, device: bool = False) -> tuple[str, ...]:
    """The names that ``method`` takes, without a device or with one.

    >>> methods()
    ('auto', 'ladder', 'recursive', 'greedy', 'greedy-depth', 'sets', 'sets-graph', \
'sets-decoding', 'sets-closed', 'search')
    >>> methods(device=True)
    ('auto', 'sets', 'search')
    """
    return ("auto", *(_ON_DEVICE if _validate.flag(device, "device") else _METHODS))


def synthesize(
    rotations: Any,
    *,
    n: int | None = None,
    method: str = "auto",
    order: Order = "commuting",
    repeated: Repeated = "refuse",
    tail: Tail = "close",
    device: Any = None,
    permutation: Permutation = "exact",
    objective: Objective = "count",
    seed: int | None = None,
    restarts: int | None = None,
    budget: float | None = None,
    steps: int | None = None,
    jobs: int | None = 1,
    progress: Callable[[_search.Progress], object] | None = None,
) -> PauliSynthesis:
    """A circuit for Pauli rotations.

    ``rotations`` lists pairs of a string and an angle, or is a tuple of a list of strings (or an
    array of codes 0 to 3 for I, X, Y, Z) and a list of angles, or maps strings to angles. A string
    is text with or without a sign, a Pauli string of Stim, or a Pauli of Qiskit. Angles are numbers
    of radians, or symbolic and passed through. A SparsePauliOp of Qiskit stands for exp(-i c P) for
    each term c P, a QubitPauliOperator of pytket for exp(-i pi/2 c P). A PauliEvolutionGate of
    Qiskit stands for the product that its ``synthesis`` expands it into: LieTrotter or
    SuzukiTrotter with their ``order``, ``reps`` and ``preserve_order``, or one draw of QDrift; a
    MatrixExponential is no product and refused. ``n`` is the number of qubits where there is no
    string to tell it. Angles of identity strings are global phases, exp(-i angle / 2) with
    ``result.global_angle``.

    **Order.** The rotations are a product, of which the first acts first. With
    ``order="commuting"``, the default, only rotations that commute change places, so that the
    circuit is exactly the product, up to a global phase. This holds for every method: the rotations
    are cut into layers that commute, and each is synthesised by itself, but for "search", which
    looks at all of them together. With ``order="free"`` all rotations may change places: the
    circuit carries out each one once, in an order that makes it short. That is one Trotter step as
    good as any other, and mostly another operator than the product.

    Angles of equal strings are added where everything between them commutes with them. With
    ``order="free"`` a list is refused in which a string comes again after one that does not commute
    with it, as in two Trotter steps; ``repeated="merge"`` adds their angles all the same, and so
    makes one step of several.

    A mapping, a SparsePauliOp and a QubitPauliOperator are sums, which have no order: equal strings
    are added, and where strings do not commute, ``order="free"`` has to be asked for. Pass
    ``list(mapping.items())`` for a product in the order of a dict. A set is refused.

    ==================  ============================================================================
    method              what it does
    ==================  ============================================================================
    ``ladder``          each rotation alone, in its place, with 2 (weight - 1) CNOTs; always exact
    ``recursive``       groups rotations by shared letters; few CNOTs on large, structured lists
    ``greedy``          lightest rotations first, by the move that helps the most of them
    ``greedy-depth``    the same with many moves at a time, for few layers
    ``sets``            sets that commute, made diagonal one after the other
    ``sets-graph``      the same, through a graph state where a set allows it
    ``sets-decoding``   the same, with a shorter circuit of the graph state
    ``sets-closed``     the first, each set undone before the next
    ``search``          greedy runs, then wider and wider beams; the fewest CNOTs
    ==================  ============================================================================

    ``auto`` takes the best of them, and for count never more CNOTs than ``ladder``. With
    ``order="free"`` it tries the order given as well: ``result.order`` is then "commuting" where
    the circuit is exactly the product.

    **Tail.** Clifford gates stay behind the rotations. ``tail="close"``, the default, undoes them;
    with ``permutation="free"`` qubit k may then stand on wire ``result.permutation[k]``.
    ``tail="return"`` leaves them: the circuit is the rotations followed by ``result.clifford``, and
    ``result.absorb`` and ``result.readout`` take that into what is measured.

    With a ``device``, every gate on two qubits is on one of its edges; "sets" does that, and closes
    by undoing its Clifford gates. ``objective`` is "count" or "depth" of gates on two qubits.
    ``restarts``, ``budget``, ``steps``, ``seed``, ``jobs`` and ``progress`` are as in
    :func:`zeltbraidwerk.linear.synthesize`; later runs rename the qubits. "search" takes ``steps``
    steps a run, or goes to the end of the budget; its first circuit is ready in milliseconds for a
    thousand rotations. Ctrl-C and a budget end the other methods between two runs.

    >>> import zeltbraidwerk as zb
    >>> ansatz = zb.gallery.uccsd(4, 2)  # a dict, whose strings do not all commute
    >>> zb.pauli.synthesize(ansatz, method="search", order="free", seed=1).count
    12
    >>> zb.pauli.synthesize(list(ansatz.items()), method="search", seed=1).count
    15
    """
    start = time.perf_counter()
    _validate.choice(order, "order", ("commuting", "free"))
    _validate.choice(repeated, "repeated", ("refuse", "merge"))
    _validate.choice(tail, "tail", ("close", "return"))
    _validate.choice(permutation, "permutation", ("exact", "free"))
    _validate.choice(objective, "objective", ("count", "depth"))
    ground = None if device is None else Device.of(device)
    on_device = ground is not None
    _validate.method(method, methods(device=on_device), on_device)
    if repeated == "merge" and order == "commuting":
        raise errors.OptionError("repeated: got 'merge', wanted 'refuse' where the order is kept")
    if permutation == "free" and (tail == "return" or ground is not None):
        raise errors.OptionError("permutation: got 'free', wanted 'exact' where no tail is closed")
    given = _rotations.read(rotations, n, order, repeated)
    effort = _search.Effort.checked(seed, restarts, budget, jobs, steps, progress)
    takers = {
        "steps": ("auto", "search"),
        # Each run of a ladder would be the same.
        "restarts": tuple(name for name in methods(device=on_device) if name != "ladder"),
    }
    _validate.options_of(method, takers, steps=steps, restarts=restarts)
    site = None if ground is None else Site.of(ground, given.n)
    search = _PauliSearch(given, order, tail, permutation, objective, site, effort, start)
    return search.work(method, progress)


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


def codiagonalize(
    strings: Iterable[Any], *, method: str = "greedy", device: Any = None, seed: int | None = None
) -> CoDiagonalization:
    """A Clifford circuit C behind which commuting strings hold only I and Z: C P C-dagger.

    ``method`` is "greedy", "graph" (through a graph state) or "decoding" (the same with fewer
    gates); the last two are greedy where the strings do not determine a state. With a ``device``,
    every gate on two qubits is on one of its edges, and the method is greedy.

    >>> result = codiagonalize(["XX", "-ZZ"])
    >>> result.images, result.verify()
    (['+IZ', '-ZI'], True)
    """
    _validate.choice(method, "method", tuple(_CODIAGONALIZERS))
    ground = None if device is None else Device.of(device)
    if ground is not None and method != "greedy":
        raise errors.OptionError(f"method: got {method!r}, wanted 'greedy' on a device")
    listed = _rotations.read_strings(strings, "strings")
    n = len(listed[0][1]) if listed else 0
    letters = _rotations.codes([text for _, text in listed], n)
    if (clash := _core._first_clash(letters)) is not None:
        a, b = (listed[k][1] for k in clash)
        raise errors.PauliError(f"strings: got {a} and {b}, wanted strings that commute pairwise")
    site = None if ground is None else Site.of(ground, n)
    drawn = secrets.randbits(64) if seed is None else _validate.integer(seed, "seed", 0, 2**64 - 1)
    operations, images, negative = _core._codiagonalised(
        letters, _CODIAGONALIZERS[method], None if site is None else site.graph(), drawn
    )
    qubits = tuple(range(n)) if site is None else site.qubits
    width = n if site is None else site.device.n
    return CoDiagonalization(
        circuit=circuit_of(width, operations, (), qubits),
        strings=["+-"[minus] + text for minus, text in listed],
        images=[
            "+-"[minus != turned] + text
            for (minus, _), turned, text in zip(
                listed, negative, _rotations.from_codes(images), strict=True
            )
        ],
        placement=qubits,
        device=None if site is None else site.device,
    )


class _PauliSearch:
    """One call of synthesize: from rotations to the best circuit."""

    def __init__(
        self,
        given: _rotations.Rotations,
        order: Order,
        tail: Tail,
        permutation: Permutation,
        objective: Objective,
        site: Site | None,
        effort: _search.Effort,
        start: float,
    ) -> None:
        self._given = given
        self._start = start
        self._order: Order = order
        self._tail: Tail = tail
        self._ending = 0 if tail == "return" else 2 if permutation == "free" else 1
        self._by_depth = objective == "depth"
        self._site = site
        self._effort = effort
        self._seed = secrets.randbits(64) if effort.seed is None else effort.seed
        self._letters = given.letters()
        self._graph = None if site is None else site.graph()
        self._control = _core._SearchControl(effort.budget)

    def work(
        self, method: str, progress: Callable[[_search.Progress], object] | None
    ) -> PauliSynthesis:
        lanes = [] if method == "search" else self._plain_lanes(method)
        if method in ("auto", "search"):
            lanes.append(self._search_lane(method == "auto"))
        trace = _search.Trace(self._by_depth, progress)

        def result(found: _Found, runs: int) -> PauliSynthesis:
            return self._result(found, runs, tuple(trace.points))

        best = _search.best_of(lanes, self._effort.jobs, self._control, self._key, result, trace)
        return result(*best)

    def _plain_lanes(self, method: str) -> list[_search.Lane[_Found]]:
        in_order = self._order == "commuting"
        if method != "auto":
            found: dict[_Lane, int | None] = {
                (method, in_order): None if self._effort.budget is not None else 1
            }
        elif self._site is not None:
            found = {("sets", in_order): 1}
        else:
            found = dict(_AUTO_IN_ORDER if in_order else _AUTO)
        return [_search.Lane(partial(self._run, lane), self._runs(r)) for lane, r in found.items()]

    def _runs(self, wished: int | None) -> int | None:
        if self._effort.restarts is not None or wished is None:
            return self._effort.restarts
        return max(1, min(wished, _RUN_LETTERS // max(self._letters.size, 1)))

    def _search_lane(self, within_auto: bool) -> _search.Lane[_Found]:
        steps = self._effort.search_steps
        if within_auto and self._effort.steps is None and steps is not None:
            steps = _AUTO_STEPS if self._effort.restarts is None else _AUTO_STEPS // 10
        return _search.search_lane(partial(self._searched, steps), self._key, self._effort)

    def _searched(self, steps: int | None, run: int) -> _Found:
        adjacency = np.zeros((0, 0), dtype=bool) if self._site is None else self._site.adjacency
        in_order = self._order == "commuting"
        operations, wires, count, depth = _core._search_network(
            self._letters, in_order, self._ending, adjacency, self._by_depth, self._seed, run,
            steps, self._control,
        )  # fmt: skip
        return ("search", in_order), operations, tuple(wires), count, depth

    def _run(self, lane: _Lane, first: int, last: int) -> tuple[int, _Found] | None:
        name, in_order = lane
        found = _core._best_network(
            name, self._letters, in_order, self._ending, self._graph, self._seed, first, last,
            self._by_depth, self._control,
        )  # fmt: skip
        if found is None:
            return None
        run, operations, wires, count, depth = found
        return run, (lane, operations, tuple(wires), count, depth)

    def _key(self, found: _Found) -> tuple[int, int]:
        *_, count, depth = found
        return (depth, count) if self._by_depth else (count, depth)

    def _result(self, found: _Found, runs: int, trace: tuple[_search.Point, ...]) -> PauliSynthesis:
        (name, in_order), operations, wires, *_ = found
        given, site = self._given, self._site
        qubits = tuple(range(given.n)) if site is None else site.qubits
        width = given.n if site is None else site.device.n
        return PauliSynthesis(
            circuit=circuit_of(width, operations, given.angles, qubits),
            rotations=tuple(zip(given.strings, given.angles, strict=True)),
            global_angle=given.global_angle,
            permutation=wires,
            method=name,
            order="commuting" if in_order else "free",
            tail=self._tail,
            seed=self._seed,
            runs=runs,
            seconds=time.perf_counter() - self._start,
            placement=qubits,
            device=None if site is None else site.device,
            _rotates=_validate.frozen(operations[:, 3] >= 0),
            trace=trace,
        )

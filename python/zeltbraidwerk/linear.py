"""CNOT circuits for invertible Boolean matrices.

A matrix stands for the linear map that a circuit of CNOTs carries out: row r marks the inputs whose
XOR stands on output r. :func:`synthesize` turns a matrix into a circuit.

>>> import zeltbraidwerk as zb
>>> result = zb.linear.synthesize([[1, 1, 0], [0, 1, 0], [0, 0, 1]])
>>> list(result.circuit)  # output 0 becomes input 0 XOR input 1: control 1, target 0
[(1, 0)]
>>> result.verify()
True
"""

from __future__ import annotations

from collections.abc import Callable
from dataclasses import dataclass, field, replace
from typing import Any

import numpy as np
import numpy.typing as npt

from zeltbraidwerk import _calls, _core, _matrices, _search, _validate, errors
from zeltbraidwerk._family import Call, Family, Found
from zeltbraidwerk._results import Objective, Permutation, Result
from zeltbraidwerk._site import Site
from zeltbraidwerk.circuits import CnotCircuit

__all__ = ["LinearSynthesis", "methods", "synthesize"]

_FAMILY = Family(_core._linear_methods)
_PATH_SECONDS = 5.0  # to search for a Hamiltonian path, where there is no budget
_LIMITS = {"section": 30, "width": 2**31 - 1, "lookahead": 64}


def methods(*, device: bool = False) -> tuple[str, ...]:
    """The names that ``method`` takes, without a device or with one.

    >>> methods()
    ('auto', 'gauss', 'pmh', 'pairs', 'blocks', 'syndrome', 'greedy', 'greedy_inverse', \
'greedy_escape', 'greedy_log', 'search')
    >>> methods(device=True)
    ('auto', 'row_column', 'steiner', 'sorting', 'search')
    """
    return _FAMILY.methods(device)


@dataclass(frozen=True, kw_only=True, repr=False)
class LinearSynthesis(Result):
    """A circuit for a matrix, and how it was found.

    Row ``permutation[r]`` of the circuit's matrix is row r of ``matrix``, which was asked for.
    ``window`` is the number of wires of the largest windows of the method "search", 4 where the
    budget was too short for the tables of 5, and None for other methods. ``front`` is what "search"
    found for the objective "depth": circuits from few layers to few gates, of which none has both
    at most as many layers and at most as many gates as another.
    """

    circuit: CnotCircuit
    matrix: npt.NDArray[np.bool_] = field(compare=False)
    window: int | None = field(compare=False, default=None)
    front: tuple[LinearSynthesis, ...] = field(compare=False, default=())

    def verify(self) -> bool:
        """Replays the circuit, gate by gate and without the library, against the matrix; on a
        device, checks its edges too."""
        wires = [1 << wire for wire in range(self.n)]
        for control, target in self.circuit:
            wires[target] ^= wires[control]
        place = self.placement
        wanted = [1 << wire for wire in range(self.n)]
        for row, wire in zip(self.matrix, self.permutation, strict=True):
            wanted[place[wire]] = sum(1 << place[int(c)] for c in np.flatnonzero(row))
        return wires == wanted and self._on_edges()

    def to_xor_program(self) -> str:
        """The circuit as lines of XORs in place, then one line per output: x0, x1, ... are the
        inputs, y0, y1, ... the outputs.

        >>> print(synthesize([[1, 1], [0, 1]]).to_xor_program())
        x0 ^= x1
        y0 = x0
        y1 = x1
        """
        wire = {qubit: k for k, qubit in enumerate(self.placement)}
        steps = [f"x{wire[target]} ^= x{wire[control]}" for control, target in self.circuit]
        outputs = [f"y{k} = x{place}" for k, place in enumerate(self.permutation)]
        return "\n".join(steps + outputs)


@_calls.recorded("linear.synthesize", "matrix")
def synthesize(
    matrix: Any,
    *,
    method: str = "auto",
    device: Any = None,
    objective: Objective = "count",
    permutation: Permutation = "exact",
    section: int | None = None,
    width: int | None = None,
    lookahead: int | None = None,
    reach: int | None = None,
    seed: int | None = None,
    restarts: int | None = None,
    budget: float | None = None,
    steps: int | None = None,
    start: Any = None,
    jobs: int | None = 1,
    progress: Callable[[_search.Progress], object] | None = None,
) -> LinearSynthesis:
    """A circuit of CNOTs that implements ``matrix``, not its inverse.

    ``matrix`` is square and invertible over GF(2): bool or 0/1 integers, as an array, a sparse one
    of scipy, one of galois, a nested list, or rows of text such as "101"; a LinearFunction of
    Qiskit or a Mat2 of PyZX; or whatever :meth:`zeltbraidwerk.Circuit.of` reads as a circuit of
    CNOTs. It is not changed. Row r marks the inputs whose XOR stands on output r:

    >>> import zeltbraidwerk as zb
    >>> matrix = [[1, 0, 0], [1, 1, 0], [0, 1, 1]]  # outputs a, a + b, b + c of inputs a, b, c
    >>> circuit = zb.linear.synthesize(matrix, method="gauss").circuit
    >>> list(circuit)
    [(1, 2), (0, 1)]
    >>> bool((circuit.matrix() == matrix).all())
    True

    ``method`` is one of :func:`methods`; "auto" takes the best of several and is never worse than
    "pmh". ``objective`` says what best means, "count" of CNOTs or "depth" in layers; the other one
    decides between equals. On a device it may also be "error" or "duration", by the rates and
    durations of its edges: :meth:`zeltbraidwerk.Device.error` and ``duration`` tell the sums. With
    ``permutation="exact"``, the default, every output stands on the wire of its input; with "free"
    the circuit is shorter and leaves output r on wire ``result.permutation[r]``.

    With a ``device``, or what :meth:`zeltbraidwerk.Device.of` takes for one, every CNOT is on one
    of its edges. Of a larger device a connected part is used: ``result.placement`` tells which.
    "row_column" works on every connected device; "steiner", for few CNOTs, and "sorting", for few
    layers, at most 5 n, need a Hamiltonian path, which is searched for before work starts.

    >>> result = zb.linear.synthesize(matrix, device=zb.Device.line(3), seed=1)
    >>> result.circuit, result.device.fits(result.circuit)
    (CnotCircuit(3 qubits, 2 CNOTs, depth 2), True)

    ``restarts`` is the number of runs of the method: the first one is the method itself, the others
    work on the inverse, the transpose and renamed wires, and with other random numbers. ``budget``,
    in seconds, ends the search; without ``restarts`` it is filled with runs. Runs go to ``jobs``
    threads (None: one per core). The same ``seed`` gives the same circuit whatever ``jobs`` is,
    unless a budget ends the search early. ``progress`` is called with the best objective so far
    whenever it falls: an int that also has ``count``, ``depth`` and ``seconds``. Ctrl-C stops at
    once and raises :class:`zeltbraidwerk.errors.Interrupted`, which holds the best result so far.

    "search" finds shorter circuits the longer it runs: ``steps`` steps per run, or to the end of
    the budget; without either it makes 12,500 steps per qubit, which take 0.1 s for 8 qubits and
    about 1 s for 64, or for depth what takes about a second up to 100 qubits. What it does depends
    on the seed and the step alone: the same seed and steps give the same circuit on every machine,
    and more is never worse. With a budget and no ``restarts`` each job makes one run. With 0 steps
    it makes one greedy run, which takes a millisecond for 16 qubits, or a few on a sparse matrix;
    it is never worse than "pairs". A run ends before its steps where its circuit is proven to be
    the best. Its runs for the objective "depth" also give ``result.front``. On a device, ``reach``
    is how many edges from its place an output may end, between "exact" (0) and "free".

    ``start`` is a result found before, or its circuit with outputs in place, for the same matrix,
    device and placement: the search goes on from it, with other draws for another ``seed``, and
    finds no larger one.

    >>> zb.linear.synthesize(zb.gallery.random_invertible(8, 1)[0], method="search", seed=1,
    ...                      permutation="free").count
    13

    ``section`` is the number of columns that "pmh" clears together (default: the best).
    ``width`` and ``lookahead`` are the beam of the greedy searches and of "syndrome": how many
    continuations of each state are kept, and how many steps are looked ahead (defaults: 1).

    Raises :class:`~zeltbraidwerk.errors.SingularMatrixError` and other classes of
    :mod:`zeltbraidwerk.errors`, all ValueErrors or TypeErrors, for arguments that do not fit, and
    :class:`~zeltbraidwerk.errors.UnfinishedError` where no run found a circuit in its budget.
    """
    call = _FAMILY.call(
        method=method, device=device, objective=objective, permutation=permutation, seed=seed,
        restarts=restarts, budget=budget, steps=steps, jobs=jobs, progress=progress, start=start,
    )  # fmt: skip
    given = {"section": section, "width": width, "lookahead": lookahead}
    beam = {
        name: None if value is None else _validate.integer(value, name, 1, _LIMITS[name])
        for name, value in given.items()
    }
    outputs = None if reach is None else _core._Outputs.within_reach
    edges = _reach(reach, call)
    bits = _validate.invertible_matrix(_matrices.matrix_of(matrix, "matrix"), "matrix")
    n = len(bits)
    _place(call, n)

    def made(gates: npt.NDArray[np.int32], found: Found, **own: Any) -> LinearSynthesis:
        pairs = gates if call.site is None else call.site.placed(gates)
        circuit = CnotCircuit._trusted(call.width(n), pairs)
        return call.result(
            LinearSynthesis, found, n, circuit=circuit, matrix=_validate.frozen(bits.copy()), **own
        )

    def result(
        found: Found,
        gates: npt.NDArray[np.int32],
        window: int,
        front: list[tuple[npt.NDArray[np.int32], list[int]]],
    ) -> LinearSynthesis:
        parts = tuple(
            made(pairs, replace(found, permutation=tuple(wires), runs=1, trace=()), window=window)
            for pairs, wires in front
        )
        return made(gates, found, window=window or None, front=parts)

    path = () if call.site is None else call.site.path
    return call.run(
        _core._synthesize_linear, result, bits, outputs=outputs, **beam, reach=edges, path=path
    )


def _place(call: Call, n: int) -> None:
    if call.method not in ("steiner", "sorting"):
        call.place(n)
    elif call.device is not None:
        budget = call.effort.budget
        call.site = Site.with_path(call.device, n, _PATH_SECONDS if budget is None else budget)


def _reach(reach: Any, call: Call) -> int:
    if reach is None:
        return 0
    if not call.exact:
        raise errors.OptionError('reach: wanted with permutation="exact", which it relaxes')
    return _validate.integer(reach, "reach", 0, 2**31 - 1)

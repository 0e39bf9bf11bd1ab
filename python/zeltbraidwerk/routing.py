"""Circuits taken apart into Pauli rotations, and put back on the edges of a device.

>>> import zeltbraidwerk as zb
>>> toffoli = "qreg q[3]; ccx q[0],q[1],q[2];"
>>> result = zb.routing.route(toffoli, zb.Device.line(3))
>>> result.count, result.verify()
(8, True)
>>> left_open = zb.routing.route(toffoli, zb.Device.line(3), tail="return")
>>> left_open.count, left_open.absorb("ZZZ")
(6, '+ZXX')
"""

from __future__ import annotations

import time
from collections.abc import Callable
from contextlib import suppress
from dataclasses import replace
from functools import partial
from typing import Any

import numpy as np

from zeltbraidwerk import _calls, _core, _operators, _renamed, _validate, errors, limits
from zeltbraidwerk._family import Call, Family, Found, Movable
from zeltbraidwerk._operations import of_core, of_held
from zeltbraidwerk._optimize_pieces import Assembly
from zeltbraidwerk._optimize_results import Optimization
from zeltbraidwerk._results import Objective, Tail
from zeltbraidwerk._routing_results import NormalForm, Routing, placed
from zeltbraidwerk._site import Site
from zeltbraidwerk._tableau import CliffordTableau
from zeltbraidwerk.circuits import Circuit
from zeltbraidwerk.devices import Device
from zeltbraidwerk.gates import Parameter, rotations
from zeltbraidwerk.instructions import Barrier, gates_alone
from zeltbraidwerk.instructions import placed as moved

__all__ = ["NormalForm", "Routing", "methods", "normalize", "route", "route_ions"]

_Routed = tuple[_core._HeldGates, _core.OperatorTableau]

_NO_NORMAL_FORM = ("XX", "S*")
_FAMILY = Family(lambda on_device: ("auto", "trees" if on_device else "global_gates"))
_MOST_PLANS = 1e8  # hours of time
_STEPS = 100_000
# Of the search that closes a tail where the caller tells the steps of the walk after it: always as
# many, since from another closing a longer walk may end at more gates.
_CLOSING_STEPS = 4_000
_TIME_OF_PLAIN = 0.04  # seconds
_SHORTEST = 1e-3  # seconds; the first circuit that closes a tail is made in any case


def methods(*, device: bool = False) -> tuple[str, ...]:
    """The names that ``method`` of :func:`route_ions` takes, or with a device that of
    :func:`route`.

    >>> methods(), methods(device=True)
    (('auto', 'global_gates'), ('auto', 'trees'))
    """
    return _FAMILY.methods(device)


def normalize(circuit: Any, *, merge: bool = True, repeat: bool = False) -> NormalForm:
    """A circuit as Pauli rotations followed by one Clifford operator.

    ``circuit`` is whatever :meth:`zeltbraidwerk.Circuit.of` reads. Clifford gates, and rotations by
    0, pi/2 and pi with either sign, to 1e-5, pass to the end; angles may be symbolic. With
    ``merge``, rotations about the same string are added where others let them meet, and sums that
    have become Clifford pass to the end as well. With ``repeat`` this is done again until nothing
    changes, as :func:`zeltbraidwerk.optimize` does, and sums are taken modulo 2 pi. Barriers are
    left out; a circuit that holds measurements, resets or conditions is refused:
    :meth:`zeltbraidwerk.Circuit.split_ending` takes off those at its end.

    >>> normalize("qreg q[2]; h q[0]; rz(0.5) q[0]; cx q[0],q[1]; rz(0.25) q[1];").blocks
    ((('XI', Parameter(0.5)), ('XZ', Parameter(0.25))),)
    """
    start = time.perf_counter()
    _validate.instance(merge, "merge", (bool, np.bool_), "True or False")
    _validate.instance(repeat, "repeat", (bool, np.bool_), "True or False")
    if repeat and not merge:
        raise errors.OptionError("repeat: got True, wanted False where rotations are not merged")
    source = _read(circuit)
    gates = source._held()
    if repeat:
        gates = _core._fold_circuit(source.n, gates)
    blocks, tableau = _core._normal_form(gates, source.n, bool(merge))
    sources = source._sources()
    return NormalForm(
        source=source,
        blocks=tuple(
            tuple((letters, Parameter._of_core(angle, sources)) for letters, angle in block)
            for block in blocks
            if block
        ),
        tail=CliffordTableau._wrap(tableau.inverse()),
        merged=bool(merge),
        repeated=bool(repeat),
        seconds=time.perf_counter() - start,
    )


@_renamed.options(depth="lookahead")
@_calls.recorded("routing.route", "circuit", "device")
def route(
    circuit: Any,
    device: Any,
    *,
    method: str = "auto",
    lookahead: int = 0,
    objective: Objective = "count",
    tail: Tail = "close",
    budget: float | None = None,
    steps: int | None = None,
) -> Routing:
    """A circuit on the edges of a device, without SWAP gates.

    ``circuit`` is whatever :meth:`zeltbraidwerk.Circuit.of` reads, ``device`` whatever
    :meth:`zeltbraidwerk.Device.of` does. The circuit is normalised, where angles within 1e-5 of a
    multiple of pi/2 count as that, and only its rotations are emitted, each as CNOTs along a tree
    of the device and one RZ. This leaves a Clifford operator.
    With ``tail="close"``, the default, a short search appends it as gates on the edges, and another
    one shortens the whole as :func:`zeltbraidwerk.optimize` does, which starts from routings of its
    own and gets further. The circuit does what the source does, up to a global phase, every qubit
    in its place, and ``result.tail`` is the identity. With ``tail="return"`` the circuit has to be
    followed by ``result.tail``; ``result.absorb`` and ``result.readout`` take that into what is
    measured.

    Measurements and resets that end the circuit go along, each to the qubit that its qubit is
    placed on; with ``tail="return"``, and elsewhere in the circuit, they are refused. Barriers
    before them are left out.

    ``lookahead`` is how many rotations ahead the choice of the root of a tree looks: each more
    multiplies the work by the number of qubits of a rotation. ``objective`` is what that choice
    minimises, "count" or "depth" of CNOTs; with "error" or "duration" the cheapest of several parts
    of the device is taken. ``method`` is "trees", or "auto" for the same, as no
    other one is there yet. ``budget`` is in seconds; a run that does not end in it raises
    :class:`~zeltbraidwerk.errors.UnfinishedError`, and closing takes what is left of it. ``steps``
    are those of the search that shortens the whole; more are never worse, and 0 leave it as it was
    closed, which takes 4,000 steps. If not given, both make 100,000. Ctrl-C ends a run: the
    exception holds the best circuit so far, before there is any one without lookahead if that takes
    little time.
    """
    call = _FAMILY.call(
        method=method, device=Device.of(device), objective=objective, budget=budget, steps=steps
    )
    _validate.choice(tail, "tail", ("close", "return"))
    levels = _validate.integer(lookahead, "lookahead", 0, 2**31 - 1)
    if steps is not None and tail == "return":
        got = _validate.shown(steps)
        raise errors.OptionError(f"steps: got {got}, wanted None where no tail is closed")
    whole = Circuit.of(circuit)
    first, ending = whole.split_ending()
    source = _read(first)
    if tail == "return":
        _refuse_ending(ending)
    if call.effort.budget is None:
        _refuse_endless(source, levels)

    def result(call: Call, gates: _core._HeldGates, frame: _core.OperatorTableau) -> Routing:
        left = _result(call, whole, gates, frame)
        if tail == "return":
            return left
        return _closed(call, left, CliffordTableau._wrap(frame.inverse()))

    def once() -> Routing:
        call.place(source.n)
        assert call.site is not None
        kernel = partial(_core._routed, source._held(), call.site.graph())
        return _run(kernel, (levels, call.objective == "depth"), call, result)

    if call.weights is None:
        return once()

    def run() -> Movable[Routing]:
        found = once()
        return found, lambda _: replace(found, device=call.device, objective=call.objective)

    return call.cheapest(source.n, run, fixed=False, moves=True)


@_renamed.options(depth="lookahead")
@_calls.recorded("routing.route_ions", "circuit")
def route_ions(
    circuit: Any,
    *,
    method: str = "auto",
    shelving: tuple[float, float] | None = None,
    lookahead: int = 0,
    budget: float | None = None,
) -> Routing:
    """A circuit for an ion machine: one XX gate per rotation, on all of its ions at once.

    The next rotation is one with the fewest pairs of ions; with ``shelving=(pair_error,
    shelve_error)`` the one with the highest fidelity, where an entangling gate loses ``pair_error``
    for each pair and ``shelve_error`` for each ion that changes between shelved and active.
    ``result.entangling_count`` is the number of XX gates. The Clifford operator ``result.tail`` is
    always left over, as by :func:`route` with ``tail="return"``, since this machine has no CNOTs
    between two ions, which would close it. ``result.absorb`` and ``result.readout`` take it into
    what is measured. ``lookahead`` and ``budget`` are as for :func:`route`.

    >>> route_ions("qreg q[3]; ccx q[0],q[1],q[2];").entangling_count
    4
    """
    call = _FAMILY.call(method=method, budget=budget)
    levels = _validate.integer(lookahead, "lookahead", 0, 2**31 - 1)
    rates = None if shelving is None else _error_rates(shelving)
    source = _read(circuit)
    if call.effort.budget is None:
        _refuse_endless(source, levels)
    kernel = partial(_core._routed_for_ions, source._held(), source.n)
    return _run(kernel, (levels, rates), call, lambda call, *made: _result(call, source, *made))


def _read(circuit: Any) -> Circuit:
    """Gates alone, barriers left out."""
    source = Circuit.of(circuit)
    limits.check_memory("circuit", source.n, "qubits", 40 * source.n**2)
    gates = gates_alone(source, "circuit")
    turns = sum(1 for gate in gates if gate.params)
    size = 4 * source.n * turns
    limits.check_memory("circuit", turns, f"rotations on {source.n} qubits", size)
    for gate in gates:
        if gate.name in _NO_NORMAL_FORM:
            raise errors.GateError(
                f"circuit: got {gate}, wanted Clifford gates on at most two qubits and rotations"
            )
    return source if len(gates) == len(source) else source.unitary()


def _refuse_ending(ending: Circuit) -> None:
    for operation in ending:
        if not isinstance(operation, Barrier):
            raise errors.OptionError(
                f"tail: got 'return' for a circuit that ends with {operation.description}, which "
                "would come before the tail; wanted 'close', or circuit.split_ending()[0] and "
                "result.readout"
            )


def _error_rates(shelving: Any) -> tuple[float, float]:
    wanted = "(pair_error, shelve_error)"
    rates = [
        _validate.real(rate, "shelving", wanted)
        for rate in _validate.items(shelving, "shelving", wanted)
    ]
    if len(rates) != 2:
        raise errors.ShapeError(f"shelving: got {len(rates)} numbers, wanted {wanted}")
    for rate in rates:
        if not 0 <= rate <= 1:
            raise errors.OptionError(f"shelving: got the rate {rate}, wanted 0 to 1")
    return rates[0], rates[1]


def _refuse_endless(source: Circuit, lookahead: int) -> None:
    """A level of lookahead tries every qubit of a rotation as its root."""
    if lookahead == 0:
        return
    weights = [source.n - letters.count("I") for letters, _ in normalize(source).rotations]
    if not weights:
        return
    ahead = min(lookahead, len(weights))
    plans = len(weights) * max(sum(weights) / len(weights), 1.0) ** min(ahead, 300)
    if plans > _MOST_PLANS:
        raise errors.TooLargeError(
            f"lookahead: got {lookahead}, which makes about {plans:.0e} plans of {len(weights)} "
            "rotations, "
            f"wanted at most {_MOST_PLANS:.0e}, or a budget"
        )


def _run(
    kernel: Callable[..., _Routed],
    options: tuple[int, Any],
    call: Call,
    result: Callable[..., Routing],
) -> Routing:
    """The result of what the kernel makes with its options, of which the first is the lookahead.
    Where Ctrl-C ends it, the best so far is one without lookahead, if that takes little time."""
    try:
        made = kernel(*options, call.effort.budget)
    except KeyboardInterrupt:
        best = None
        with suppress(errors.UnfinishedError):
            quick = replace(call.effort, steps=0, budget=call.elapsed + _TIME_OF_PLAIN)
            made = kernel(0, options[1], _TIME_OF_PLAIN)
            best = result(replace(call, effort=quick), *made)
        raise errors.Interrupted(best=best) from None
    return result(call, *made)


def _result(
    call: Call, source: Circuit, gates: _core._HeldGates, frame: _core.OperatorTableau
) -> Routing:
    """With the tail left over."""
    operator = CliffordTableau._wrap(frame.inverse())
    n = source.n
    qubits, width = call.qubits(n), call.width(n)
    routed = placed(of_held(n, gates, source._sources()), qubits, width)
    rotates = np.array([gate.name == "RZ" for gate in routed], dtype=np.bool_)
    if qubits != tuple(range(width)):
        left = of_core(n, _core.clifford_circuit(operator._core))
        operator = CliffordTableau(width).apply(placed(left, qubits, width))
    found = Found("global_gates" if call.site is None else "trees", tuple(range(n)))
    return call.result(
        Routing, found, n, circuit=routed, source=source, tail=operator,
        rotations=int(rotates.sum()), _rotates=_validate.frozen(rotates),
    )  # fmt: skip


def _closed(call: Call, left: Routing, operator: CliffordTableau) -> Routing:
    """The result with the operator appended, which is its tail on the wires of the source, and then
    walked from on the edges: by searches that are the same every time unless the budget ends
    them."""
    site = call.site
    assert site is not None

    def by(gates: Circuit) -> Routing:
        """Gates on wires, the tail among them."""
        whole = placed(gates, site.qubits, left.n)
        ending = placed(left.source.split_ending()[1], site.qubits, left.n)
        return replace(
            left,
            circuit=Circuit._trusted(left.n, whole.gates + ending.operations, ending.classical),
            tail=CliffordTableau(left.n),
            rotations=gates.rotation_count,
            seconds=call.elapsed,
            _rotates=_validate.frozen(
                np.array([bool(rotations(gate.name, gate.params)) for gate in whole], np.bool_)
            ),
        )

    part = site.device.part(site.qubits)
    wire = {q: k for k, q in enumerate(site.qubits)}
    places = [wire.get(q, 0) for q in range(left.n)]
    routed = tuple(moved(gate, places) for gate in left.circuit.gates)
    steps, budget = call.effort.steps, call.effort.budget
    steps, closing_steps = (_STEPS, _STEPS) if steps is None else (steps, _CLOSING_STEPS)
    known: Circuit | None = None
    try:
        closing = _operators.synthesize(
            operator, device=part, seed=0, steps=closing_steps,
            budget=None if budget is None else max(budget - call.elapsed, _SHORTEST),
        )  # fmt: skip
        known = Circuit._trusted(part.n, routed + closing.circuit.gates)
        if steps == 0:
            return by(known)
        seconds = None if budget is None else max(budget - call.elapsed, _SHORTEST)
        walk = replace(
            call, begin=time.perf_counter(), method="auto", device=part,
            site=Site(part, tuple(range(part.n))),
            effort=replace(call.effort, seed=0, steps=steps, budget=seconds),
        )  # fmt: skip
        options = {"exact": True, "keep_rotations": True, "keep_depth": False, "route": False}
        return by(Assembly(walk, known, options).run().circuit)
    except errors.Interrupted as stopped:
        if isinstance(stopped.best, Optimization):
            known = stopped.best.circuit
        elif stopped.best is not None:
            known = Circuit._trusted(part.n, routed + stopped.best.circuit.gates)
        best = None if known is None else by(known)
        raise errors.Interrupted(best=best) from None

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
from dataclasses import replace
from functools import partial
from typing import Any, Literal

import numpy as np

from zeltbraidwerk import _core, _operators, _search, _validate, errors
from zeltbraidwerk._routing_results import NormalForm, Routing, placed
from zeltbraidwerk._site import Site
from zeltbraidwerk.circuits import Circuit
from zeltbraidwerk.clifford import CliffordTableau
from zeltbraidwerk.devices import Device
from zeltbraidwerk.gates import Gate, Parameter
from zeltbraidwerk.instructions import Barrier, gates_alone
from zeltbraidwerk.linear import Objective

__all__ = ["NormalForm", "Routing", "normalize", "route", "route_ions"]

Tail = Literal["close", "return"]
_Routed = tuple[list[_core.Gate], _core.OperatorTableau]

_NO_NORMAL_FORM = ("XX", "S*")
_MOST_PLANS = 1e8  # hours of work
_CLOSING_STEPS = 100_000
_SHORTEST = 1e-3  # seconds; the first circuit that closes a tail is made in any case


def normalize(circuit: Any, *, merge: bool = True) -> NormalForm:
    """A circuit as Pauli rotations followed by one Clifford operator.

    ``circuit`` is whatever :meth:`zeltbraidwerk.Circuit.of` reads. Clifford gates, and rotations by
    0, pi/2 and pi with either sign, pass to the end; angles may be symbolic. With ``merge``,
    rotations about the same string are added where others let them meet, and sums that have become
    Clifford pass to the end as well. Barriers are left out; a circuit that holds measurements,
    resets or conditions is refused: :meth:`zeltbraidwerk.Circuit.split_ending` takes off those at
    its end.

    >>> normalize("qreg q[2]; h q[0]; rz(0.5) q[0]; cx q[0],q[1]; rz(0.25) q[1];").blocks
    ((('XI', Parameter(0.5)), ('XZ', Parameter(0.25))),)
    """
    start = time.perf_counter()
    _validate.instance(merge, "merge", (bool, np.bool_), "True or False")
    source = _read(circuit)
    blocks, tableau = _core.normalize_circuit(
        source.to_core(), _core.OperatorTableau(source.n), True, bool(merge)
    )
    return NormalForm(
        source=source,
        blocks=tuple(
            tuple((letters, Parameter._wrap(angle)) for letters, angle in block)
            for block in blocks
            if block
        ),
        tail=CliffordTableau._wrap(tableau.inverse()),
        merged=bool(merge),
        seconds=time.perf_counter() - start,
    )


def route(
    circuit: Any,
    device: Any,
    *,
    depth: int = 0,
    objective: Objective = "count",
    tail: Tail = "close",
    budget: float | None = None,
    steps: int | None = None,
) -> Routing:
    """A circuit on the edges of a device, without SWAP gates.

    ``circuit`` is whatever :meth:`zeltbraidwerk.Circuit.of` reads, ``device`` whatever
    :meth:`zeltbraidwerk.Device.of` does. The circuit is normalised, and only its rotations are
    emitted, each as CNOTs along a tree of the device and one RZ. This leaves a Clifford operator.
    With ``tail="close"``, the default, a short search appends it as gates on the edges: the circuit
    does what the source does, up to a global phase, every qubit in its place, and ``result.tail``
    is the identity. With ``tail="return"`` the circuit is shorter and has to be followed by
    ``result.tail``; ``result.absorb`` and ``result.readout`` take that into what is measured.

    Measurements and resets that end the circuit go along, each to the qubit that its qubit is
    placed on; with ``tail="return"``, and elsewhere in the circuit, they are refused. Barriers
    before them are left out.

    ``depth`` is how many rotations ahead the choice of a root looks: each level makes the work
    longer by the number of qubits of a rotation. ``objective`` is what that choice weighs, "count"
    or "depth" of CNOTs. ``budget`` is in seconds; a run that does not end in it raises
    :class:`~zeltbraidwerk.errors.UnfinishedError`, and closing takes what is left of it. Closing
    searches for ``steps`` steps, 100,000 if not given; with 0, the first circuit is taken. Ctrl-C
    ends a run; while the tail is being closed, the exception holds a finished result.
    """
    start = time.perf_counter()
    _validate.choice(objective, "objective", ("count", "depth"))
    _validate.choice(tail, "tail", ("close", "return"))
    levels = _validate.integer(depth, "depth", 0, 2**31 - 1)
    limit = None if budget is None else _validate.seconds(budget, "budget")
    if steps is not None and tail == "return":
        got = _validate.shown(steps)
        raise errors.OptionError(f"steps: got {got}, wanted None where no tail is closed")
    effort = _CLOSING_STEPS if steps is None else _validate.integer(steps, "steps", 0, 2**63 - 1)
    ground = Device.of(device)
    whole = Circuit.of(circuit)
    first, ending = whole.split_ending()
    source = _read(first)
    if tail == "return":
        _refuse_ending(ending)
    site = Site.of(ground, source.n)
    if limit is None:
        _refuse_endless(source, levels)
    graph = site.graph()
    kernel = partial(_core._routed, source.to_core(), graph, levels, objective == "depth")
    gates, frame = _run(kernel, limit)
    left = _result(whole, gates, frame, start, site)
    if tail == "return":
        return left
    rest = None if limit is None else max(limit - (time.perf_counter() - start), _SHORTEST)
    return _closed(left, CliffordTableau._wrap(frame.inverse()), site, effort, rest)


def route_ions(
    circuit: Any,
    *,
    shelving: tuple[float, float] | None = None,
    depth: int = 0,
    budget: float | None = None,
) -> Routing:
    """A circuit for an ion machine: one XX gate a rotation, on all of its ions at once.

    The next rotation is one with the fewest pairs of ions; with ``shelving=(pair_error,
    shelve_error)`` the one with the highest fidelity, where an entangling gate loses ``pair_error``
    a pair and ``shelve_error`` an ion that changes between shelved and active. Otherwise as
    :func:`route` with ``tail="return"``, with ``result.entangling_count`` XX gates: the Clifford
    operator ``result.tail`` is always left over, since CNOTs between two ions, which would close
    it, are no gates of this machine. ``result.absorb`` and ``result.readout`` take it into what is
    measured.

    >>> route_ions("qreg q[3]; ccx q[0],q[1],q[2];").entangling_count
    4
    """
    start = time.perf_counter()
    levels = _validate.integer(depth, "depth", 0, 2**31 - 1)
    limit = None if budget is None else _validate.seconds(budget, "budget")
    rates = None if shelving is None else _error_rates(shelving)
    source = _read(circuit)
    if limit is None:
        _refuse_endless(source, levels)
    kernel = partial(_core._routed_for_ions, source.to_core(), source.n, levels, rates)
    gates, frame = _run(kernel, limit)
    return _result(source, gates, frame, start, None)


def _read(circuit: Any) -> Circuit:
    """Gates alone, barriers left out."""
    source = Circuit.of(circuit)
    gates = gates_alone(source, "circuit")
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


def _refuse_endless(source: Circuit, depth: int) -> None:
    """A level of lookahead tries every qubit of a rotation as its root."""
    if depth == 0:
        return
    weights = [source.n - letters.count("I") for letters, _ in normalize(source).rotations]
    if not weights:
        return
    ahead = min(depth, len(weights))
    plans = len(weights) * max(sum(weights) / len(weights), 1.0) ** min(ahead, 300)
    if plans > _MOST_PLANS:
        raise errors.TooLargeError(
            f"depth: got {depth}, which makes about {plans:.0e} plans of {len(weights)} rotations, "
            f"wanted at most {_MOST_PLANS:.0e}, or a budget"
        )


def _run(kernel: Callable[..., _Routed | None], budget: float | None) -> _Routed:
    """In a thread, so that Ctrl-C is heard."""
    control = _core._SearchControl(budget)

    def run(first: int, last: int) -> tuple[int, _Routed] | None:
        found = kernel(control)
        return None if found is None else (0, found)

    lane = _search.Lane(run, 1)
    trace = _search.Trace(False, None)
    found, _ = _search.best_of([lane], 1, control, lambda _: (0, 0), lambda *_: None, trace)
    return found


def _result(
    source: Circuit,
    gates: list[_core.Gate],
    frame: _core.OperatorTableau,
    start: float,
    site: Site | None,
) -> Routing:
    """With the tail left over."""
    operator = CliffordTableau._wrap(frame.inverse())
    qubits = tuple(range(source.n)) if site is None else site.qubits
    width = source.n if site is None else site.device.n
    routed = placed(_circuit(source.n, gates), qubits, width)
    rotates = np.array([gate.name == "RZ" for gate in routed], dtype=np.bool_)
    if qubits != tuple(range(width)):
        left = _circuit(source.n, _core.clifford_circuit(operator._core))
        operator = CliffordTableau(width).apply(placed(left, qubits, width))
    return Routing(
        circuit=routed,
        source=source,
        tail=operator,
        rotations=int(rotates.sum()),
        seconds=time.perf_counter() - start,
        placement=qubits,
        device=None if site is None else site.device,
        _rotates=_validate.frozen(rotates),
    )


def _closed(
    left: Routing, operator: CliffordTableau, site: Site, steps: int, budget: float | None
) -> Routing:
    """The result with the operator appended, which is its tail on the wires of the source: by a
    search, which is the same every time unless the budget ends it."""
    start = time.perf_counter()

    def by(closing: _operators.CliffordSynthesis) -> Routing:
        tail = placed(closing.circuit, site.qubits, left.n)
        ending = placed(left.source.split_ending()[1], site.qubits, left.n)
        return replace(
            left,
            circuit=Circuit._trusted(
                left.n, left.circuit.gates + tail.gates + ending.operations, ending.classical
            ),
            tail=CliffordTableau(left.n),
            seconds=left.seconds + time.perf_counter() - start,
            _rotates=_validate.frozen(np.pad(left._rotates, (0, len(tail)))),
        )

    ground = site.device.part(site.qubits)
    try:
        return by(
            _operators.synthesize(operator, device=ground, seed=0, steps=steps, budget=budget)
        )
    except errors.Interrupted as stopped:
        best = None if stopped.best is None else by(stopped.best)
        raise errors.Interrupted(f"stopped, best so far: {best}", best) from None


def _circuit(n: int, gates: list[_core.Gate]) -> Circuit:
    return Circuit._trusted(
        n,
        tuple(
            Gate._trusted(
                gate.name, tuple(gate.qbits), tuple(Parameter._wrap(p) for p in gate.params)
            )
            for gate in gates
        ),
    )

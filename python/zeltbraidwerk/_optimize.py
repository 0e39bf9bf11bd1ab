"""Whole circuits: shorter ones of the same operator."""

from __future__ import annotations

from collections.abc import Callable, Sequence
from typing import Any, Literal

from zeltbraidwerk import _calls, _search, _validate, errors
from zeltbraidwerk._family import Family
from zeltbraidwerk._optimize_device import OnDevice, cheapest_on_device
from zeltbraidwerk._optimize_pieces import Assembly
from zeltbraidwerk._optimize_results import CircuitCounts, Optimization
from zeltbraidwerk._results import Permutation
from zeltbraidwerk.circuits import Circuit

_FAMILY = Family(lambda on_device: ("auto", "search"))


@_calls.recorded("optimize", "circuit")
def optimize(
    circuit: Any,
    *,
    device: Any = None,
    objective: Literal["count", "depth", "t", "error", "duration"] = "count",
    placement: Sequence[int] | None = None,
    router: Literal["own", "qiskit"] = "own",
    permutation: Permutation = "exact",
    exact: bool = False,
    keep_depth: bool = False,
    seed: int | None = None,
    restarts: int | None = None,
    budget: float | None = None,
    steps: int | None = None,
    jobs: int | None = 1,
    progress: Callable[[_search.Progress], object] | None = None,
) -> Optimization:
    """A circuit of the same operator that is shorter, and never longer, up to a global phase.

    ``circuit`` is whatever :meth:`zeltbraidwerk.Circuit.of` reads: a circuit of this package, of
    Qiskit, pytket, Stim, PyZX, Cirq or PennyLane, OpenQASM text, or the path of a file. The result
    has the circuit, with the names of qubits of the given one unless there is a device, what it
    takes before and after, and :meth:`~Optimization.verify`, which proves that both are the
    same operator.

    Rotations about the same Pauli string are merged wherever everything between commutes with
    them, and become Clifford gates where their angles add up to multiples of pi/2: T gates become
    fewer, never more. Then a search looks for fewer two-qubit gates (with ``objective="depth"``,
    fewer layers of these) that serve the same rotations and leave the same Clifford operator.
    Angles may be symbolic. At last Clifford gates on one qubit are moved along their wires, past
    rotations and two-qubit gates, to where few of them are left: with as many two-qubit gates and
    layers as before there are never more gates on one qubit.

    ``result.global_phase`` is the phase by which both operators differ.

    Measurements and resets at the end go along. Those in the middle, barriers and classically
    controlled gates stay where they are; the gates between them are optimised by themselves.

    Where a rotation is by no multiple of pi/4, windows on two and three qubits are also replaced by
    numbers: any operator of two qubits takes at most three CNOTs, of three qubits at most 19.
    Angles are new then, right to 1e-10, and there may be more of them, which ``result.before`` and
    ``result.after`` tell. ``exact=True`` keeps to sums of the given angles; ``objective="t"`` to no
    more rotations. ``keep_depth=True`` keeps to no more layers of two-qubit gates than given, in
    each piece between operations that stay in their places; not for circuits that are routed.

    With ``permutation="free"`` output q may end on wire ``result.permutation[q]``, and so do the
    measurements at the end.

    With a ``device``, all two-qubit gates of the result are on its edges, and qubit q of the
    circuit is qubit ``result.placement[q]`` of the device, before and after. A circuit that fits as
    it stands, qubit q on qubit q or on ``placement[q]``, stays there and is optimised on the edges.
    Another one is placed, where no ``placement`` is given, and routed in several ways, as it is and
    made shorter first: with ``router="own"`` without SWAPs where a placement allows it, by SWAPs,
    and anew on the edges from its rotations; with "qiskit" by the placement and routing of Qiskit's
    level 3, with several seeds. All are optimised on the edges, the best for longest.
    With ``permutation="free"`` outputs may end on other qubits: idle qubits of the device are wires
    of ``result.placement`` and ``result.permutation`` then, after those of the circuit. Without a
    budget outputs in place are searched as well, for as many steps: free ones never take more.

    With ``objective="error"`` or ``"duration"``, and a device that has rates or durations of gates
    on its edges, their sum or the seconds become small: the search is made on several parts of the
    device, and qubits are then moved to where gates cost least, unless there is a ``placement``.

    With ``objective="depth"``, a search by count comes first, with as many steps or half of the
    budget, and the result is never deeper than what that one found; ``result.front`` has both.

    ``steps`` are windows of three qubits, of some microseconds; by default 200,000 and 30 per gate.
    With a ``budget``, in seconds, the search goes on to its end. ``seed``, ``restarts`` and
    ``progress`` are as in :func:`zeltbraidwerk.linear.synthesize`; ``progress`` hears of the gates,
    and of the layers, of all pieces added up. ``jobs`` threads share the restarts, or the pieces of
    a circuit of more than 4,000 gates; the result does not depend on them. More steps are never
    worse, but where a circuit is routed. Ctrl-C raises an exception whose ``best`` is the best
    whole circuit so far: pieces that were not reached are as given. On a device, qubits of
    gates that are not on the edges yet are brought together by SWAPs; above 5,000 operations it is
    None instead.

    Raises a :class:`~zeltbraidwerk.errors.TooLargeError` for more than 16,384 qubits.

    >>> import zeltbraidwerk as zb
    >>> toffolis = "qreg q[4]; ccx q[0],q[1],q[2]; ccx q[1],q[2],q[3]; ccx q[0],q[1],q[2];"
    >>> result = zb.optimize(toffolis, seed=1)
    >>> result.before.two_qubit, result.count, result.verify()
    (18, 11, True)
    """
    _validate.choice(objective, "objective", ("count", "depth", "t", "error", "duration"))
    _validate.choice(router, "router", ("own", "qiskit"))
    _validate.flag(exact, "exact")
    _validate.flag(keep_depth, "keep_depth")
    by = "count" if objective == "t" else objective
    call = _FAMILY.call(
        device=device, objective=by, permutation=permutation, seed=seed,
        restarts=restarts, budget=budget, steps=steps, jobs=jobs, progress=progress,
    )  # fmt: skip
    source = Circuit.of(circuit)
    options = {
        "exact": bool(exact), "keep_rotations": objective == "t", "keep_depth": bool(keep_depth),
        "route": False,
    }  # fmt: skip
    if call.device is None:
        if placement is not None or router != "own":
            name = "router" if placement is None else "placement"
            raise errors.OptionError(f"{name}: not an option without a device")
        return Assembly(call, source, options).run()
    if call.weights is None:
        return OnDevice(call, source, options).run(placement, router)
    return cheapest_on_device(call, source, options, placement, router)


__all__ = ["CircuitCounts", "Optimization", "optimize"]

"""CNOT and phase circuits of phase polynomials.

A phase polynomial is a set of parities, each with an angle: the diagonal operator that turns the
phase by the angle where the XOR of the parity's qubits is 1. :func:`synthesize` turns it into a
circuit in which every parity appears on some wire and gets its phase gate there.

>>> import zeltbraidwerk as zb
>>> result = zb.phase.synthesize({"110": 0.5, "011": "a", "111": 0.25}, seed=1)
>>> result.count, result.verify()
(4, True)
"""

from __future__ import annotations

from collections.abc import Callable, Iterable
from dataclasses import dataclass, field
from typing import Any

import numpy as np
import numpy.typing as npt

from zeltbraidwerk import _calls, _core, _parities, _renamed, _search, _validate, errors, limits
from zeltbraidwerk._family import Family, Found
from zeltbraidwerk._parities import polynomial_of
from zeltbraidwerk._results import Objective, Permutation, Result, Tail
from zeltbraidwerk.circuits import Circuit, CnotCircuit
from zeltbraidwerk.gates import Gate, Parameter

__all__ = ["PhaseSynthesis", "methods", "polynomial_of", "synthesize"]

_FAMILY = Family(_core._phase_methods)


def methods(*, device: bool = False) -> tuple[str, ...]:
    """The names that ``method`` takes, without a device or with one.

    >>> methods(), methods(device=True)
    (('auto', 'gray', 'greedy', 'search'), ('auto', 'gray', 'search'))
    """
    return _FAMILY.methods(device)


@dataclass(frozen=True, kw_only=True, repr=False)
class PhaseSynthesis(Result):
    """A circuit for a phase polynomial, and how it was found.

    The circuit is the diagonal operator followed by ``tail``, a linear map with the inputs whose
    XOR stands on wire r in row r; None where it was closed. ``terms`` are the angles by parity, bit
    q for qubit q. ``global_phase`` is the angle of the zero parity: what was asked for is
    exp(i ``global_phase``) times the operator of ``terms``, in radians.
    """

    circuit: Circuit
    tail: npt.NDArray[np.bool_] | None = field(compare=False)
    global_phase: Parameter
    terms: tuple[tuple[int, Parameter], ...]

    leftover = _renamed.Field("tail")

    def verify(self) -> bool:
        """Follows the parities through the circuit, without the library: every one gets its angle
        once, the wires end as they should, and CNOTs are on edges where there is a device."""
        wires = [1 << wire for wire in range(self.n)]
        phases: dict[int, list[Parameter]] = {}
        for gate in self.circuit:
            if gate.name == "CNOT":
                control, target = gate.qubits
                wires[target] ^= wires[control]
            elif gate.name == "PH":
                phases.setdefault(wires[gate.qubits[0]], []).append(gate.params[0])
            else:
                return False
        wanted = {self._placed(parity): [angle] for parity, angle in self.terms}
        return phases == wanted and wires == self._wanted_wires() and self._on_edges()

    def _placed(self, parity: int) -> int:
        return sum(1 << wire for k, wire in enumerate(self.placement) if parity >> k & 1)

    def _wanted_wires(self) -> list[int]:
        wires = [1 << wire for wire in range(self.n)]
        for k, wire in enumerate(self.permutation):
            row = 1 << k
            if self.tail is not None:
                row = sum(1 << int(c) for c in np.flatnonzero(self.tail[k]))
            wires[self.placement[wire]] = self._placed(row)
        return wires

    def _about(self) -> Iterable[str]:
        yield f"{len(self.terms)} phases"
        yield "tail closed" if self.tail is None else "tail returned"


@_renamed.options(leftover="tail")
@_calls.recorded("phase.synthesize", "polynomial")
def synthesize(
    polynomial: Any,
    *,
    n: int | None = None,
    method: str = "auto",
    device: Any = None,
    tail: Tail = "close",
    permutation: Permutation = "exact",
    objective: Objective = "count",
    seed: int | None = None,
    restarts: int | None = None,
    budget: float | None = None,
    steps: int | None = None,
    start: Any = None,
    jobs: int | None = 1,
    progress: Callable[[_search.Progress], object] | None = None,
) -> PhaseSynthesis:
    """A circuit of CNOT and PH gates for a phase polynomial.

    ``polynomial`` maps parities to angles, or is a tuple ``(parities, angles)`` of two lists, the
    first of which may be a 0/1 array with one row per parity. A parity is a tuple or a string of
    bits, one per qubit, or an int whose bit q stands for qubit q; ``n`` is the number of qubits
    where ints leave it open. Angles are numbers of radians or symbolic, and pass through untouched;
    those of equal parities are added. The zero parity stands on no wire: its angle is a
    global phase, exp(i angle) with ``result.global_phase``.

    >>> import zeltbraidwerk as zb
    >>> result = zb.phase.synthesize({(1, 0): 0.5, (1, 1): 0.25, (0, 0): 1.0}, seed=1)
    >>> print(result.circuit.draw())
    q0: ──PH(0.5)──●────────────●──
                   │            │
    q1: ───────────⊕──PH(0.25)──⊕──
    >>> result.global_phase
    Parameter(1.0)

    After all phases, CNOTs have changed the wires by a linear map. With ``tail="close"``, the
    default, it is undone, so that the circuit is diagonal; ``permutation="free"`` lets qubits end
    on other wires, ``result.permutation[k]`` for qubit k. With "return" the map is not undone and
    returned as ``result.tail``.

    "gray" is GraySynth, "greedy" realises one of the lightest remaining parities at a time;
    "search" builds circuits in wider and wider beams and shortens the best one window by window,
    and finds shorter circuits the longer it runs; "auto" takes the best, without "greedy" where
    that takes seconds, from some hundred parities on 100 qubits on. With a ``device`` every CNOT
    is on one of its edges, as in :func:`zeltbraidwerk.linear.synthesize`, which explains the other
    options too.

    >>> parities = zb.gallery.random_parities(8, 64, 1)[0]
    >>> polynomial = {parity: 0.1 for parity in parities}
    >>> [zb.phase.synthesize(polynomial, n=8, method="search", seed=1, steps=steps).count
    ...  for steps in (0, 50_000)]
    [87, 80]
    """
    call = _FAMILY.call(
        method=method, device=device, objective=objective, permutation=permutation, seed=seed,
        restarts=restarts, budget=budget, steps=steps, jobs=jobs, progress=progress, start=start,
    )  # fmt: skip
    _validate.choice(tail, "tail", ("close", "return"))
    if tail == "return" and not call.exact:
        raise errors.OptionError("permutation: got 'free' with tail='return', which is exact")
    terms, size = _parities.read(polynomial, n)
    global_phase = terms.pop(0, Parameter(0.0))
    listed = tuple(terms.items())
    call.place(size)
    limits.check_memory("polynomial", size, "qubits", 2 * size**2)
    entries = size * len(terms)
    limits.check_memory("polynomial", len(terms), f"parities on {size} qubits", 10 * entries)
    parities = np.array(
        [[bool(parity >> q & 1) for parity in terms] for q in range(size)], dtype=np.bool_
    ).reshape(size, len(terms))

    def result(found: Found, rows: npt.NDArray[np.int32]) -> PhaseSynthesis:
        rows = rows.reshape(-1, 3)  # control, or -1 for a phase; target; term, or -1 for a CNOT
        qubits = call.qubits(size)

        def gates() -> tuple[Gate, ...]:
            return tuple([
                Gate._trusted("CNOT", (qubits[control], qubits[target]), ())
                if term < 0
                else Gate._trusted("PH", (qubits[target],), (listed[term][1],))
                for control, target, term in rows.tolist()
            ])  # fmt: skip

        left = None
        if tail == "return":
            cnots = CnotCircuit._trusted(size, rows[rows[:, 2] < 0, :2].copy())
            left = _validate.frozen(cnots.matrix())
        return call.result(
            PhaseSynthesis, found, size, circuit=Circuit._later(call.width(size), gates),
            tail=left, global_phase=global_phase, terms=listed,
        )  # fmt: skip

    left_open = _core._Outputs.left_open if tail == "return" else None
    return call.run(_core._synthesize_phase, result, parities, size, len(terms), outputs=left_open)

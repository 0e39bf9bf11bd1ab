"""Quantum circuits with few two-qubit gates, or few layers of them.

What you have, and what makes a short circuit of it:

    a circuit                         zb.optimize(circuit)
    an invertible matrix over GF(2)   zb.linear.synthesize(matrix)
    a Clifford operator               zb.clifford.synthesize(tableau)
    a stabilizer state                zb.clifford.synthesize_state(stabilizers)
    generators of a stabilizer code   zb.clifford.synthesize_encoder(stabilizers)
    a graph                           zb.graph_state.synthesize(graph)
    parities with angles              zb.phase.synthesize(polynomial)
    Pauli rotations                   zb.pauli.synthesize(rotations)
    commuting Pauli strings           zb.pauli.codiagonalize(strings)
    a circuit and a device            zb.optimize(circuit, device=device), zb.routing.route

Each takes device=, objective="count" or "depth" (on a device also "error" or "duration"),
permutation="exact" or "free", seed=, steps=, budget= (seconds), restarts= and jobs=, as far as they
mean something there, and gives a result with .circuit, .count, .depth, .permutation and .verify().

    zb.batch               many inputs, or many seeds, in a process pool or on a cluster
    zb.Circuit.of(x)       reads circuits: OpenQASM text or file, Qiskit, pytket, Stim, PyZX, Cirq,
                           PennyLane
    zb.Device              coupling graphs: .grid(4, 4), .line(8), names, edges
    zb.CliffordTableau     Clifford operators: images of X and Z
    zb.from_json(text)     what .to_json() of circuits and results wrote
    zb.gallery             inputs to try: matrices, rotations, graphs, circuits
    zb.errors              the exceptions, one class per cause
    zb.limits              how much memory calls may take, and how large texts may be
    zb.plot                pictures of searches
    zb.core                the functions of the C++ library under their own names
    zb.circuits, zb.gates, zb.instructions, zb.devices
                           the classes of circuits, gates, measurements and devices
    zb.qiskit, zb.pytket   plugins and passes for their transpilers, to be imported by name

The pages of the documentation, in the folder docs of the sources; ./dev docs builds it:

    start                  quickstart.md, circuits.md, shell.md, errors.md
    your tools             qiskit.md, pytket.md, pyzx.md, cirq.md, pennylane.md, stim.md, cpp.md
    families               choosing.md, codes.md, searching.md, devices.md, batch.md
    reference              python.md, tested.md, and the folder reference

>>> import zeltbraidwerk as zb
>>> result = zb.optimize("qreg q[3]; ccx q[0],q[1],q[2]; cx q[0],q[1]; ccx q[0],q[1],q[2];", seed=1)
>>> result.before.two_qubit, result.count, result.verify()
(13, 2, True)
"""

import sys

from zeltbraidwerk import _early  # isort: split

from zeltbraidwerk import (
    _public,
    batch,
    clifford,
    core,
    errors,
    gallery,
    graph_state,
    limits,
    linear,
    pauli,
    phase,
    plot,
    routing,
)
from zeltbraidwerk._core import _version as __version__
from zeltbraidwerk._json import from_json
from zeltbraidwerk._optimize import optimize
from zeltbraidwerk.circuits import Circuit, CnotCircuit
from zeltbraidwerk.clifford import CliffordTableau
from zeltbraidwerk.devices import Device
from zeltbraidwerk.gates import Gate, Parameter
from zeltbraidwerk.instructions import Barrier, Conditional, Measure, Register, Reset

__all__ = [
    "Barrier",
    "Circuit",
    "CliffordTableau",
    "CnotCircuit",
    "Conditional",
    "Device",
    "Gate",
    "Measure",
    "Parameter",
    "Register",
    "Reset",
    "__version__",
    "batch",
    "clifford",
    "core",
    "errors",
    "from_json",
    "gallery",
    "graph_state",
    "limits",
    "linear",
    "optimize",
    "pauli",
    "phase",
    "plot",
    "routing",
]

_public.tidy(
    clifford, core, errors, gallery, graph_state, limits, linear, pauli, phase, plot, routing
)  # fmt: skip
_public.tidy(sys.modules[__name__])
_early.imported()

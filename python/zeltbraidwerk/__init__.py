"""Synthesis of quantum circuits."""

from zeltbraidwerk import (
    clifford,
    core,
    errors,
    gallery,
    graph_state,
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
    "clifford",
    "core",
    "errors",
    "from_json",
    "gallery",
    "graph_state",
    "linear",
    "optimize",
    "pauli",
    "phase",
    "plot",
    "routing",
]

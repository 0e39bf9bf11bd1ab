"""Every public callable of the package takes objects of all wrong kinds, one argument at a time.

A call must end quickly: it succeeds, or it raises a ValueError or TypeError that is a class of the
package or names the argument. Callables are found by walking the public modules, so a new one fails
here until ARGUMENTS, or INSTANCES for a class, says how it is called.
"""

import inspect
import math
import signal
import types
from functools import cached_property
from pathlib import Path

import numpy as np
import pytest

import zeltbraidwerk as zb
from zeltbraidwerk import Circuit, CliffordTableau, CnotCircuit, Device, Gate, core, errors

MATRIX = [[1, 1], [0, 1]]
BELL = Circuit(2, [Gate.h(0), Gate.cnot(0, 1)])
CNOTS = CnotCircuit(2, [(0, 1)])
QUICK = {"method": "search", "steps": 0, "seed": 1}


class Unprintable:
    def __repr__(self):
        raise RuntimeError


WRONG = {
    "None": lambda: None,
    "bool": lambda: True,
    "negative": lambda: -1,
    "huge": lambda: 10**30,
    "many digits": lambda: 10**5000,
    "fraction": lambda: 0.5,
    "nan": lambda: math.nan,
    "inf": lambda: math.inf,
    "complex": lambda: 1j,
    "no text": lambda: "",
    "text": lambda: "abc",
    "bytes": lambda: b"x",
    "object": object,
    "unprintable": Unprintable,
    "empty list": list,
    "empty tuple": tuple,
    "empty mapping": dict,
    "mapping": lambda: {"a": "b"},
    "set": lambda: {1},
    "ragged": lambda: [[1], [1, 2]],
    "nested": lambda: [[[[1]]]],
    "list of None": lambda: [None, None],
    "list of text": lambda: ["ab", "c"],
    "list of huge": lambda: [10**30, -1],
    "pair of huge": lambda: [(0, 10**30)],
    "three dimensions": lambda: np.ones((2, 2, 2), dtype=int),
    "array of float": lambda: np.array([[0.5, math.nan]]),
    "array of text": lambda: np.array(["a", "b"]),
    "array of object": lambda: np.array([[1, None], [None, object()]]),
    "array of one": lambda: np.array(0),
    "masked": lambda: np.ma.array([[1, 0], [0, 1]], mask=[[1, 0], [0, 0]]),
    "generator": lambda: (each for each in (1, "a")),
    "function": lambda: lambda *_: None,
    "directory": lambda: Path("/"),
    "directory as text": lambda: "/",
    "class": lambda: int,
    "module": lambda: math,
}

# What belongs to a class when one of its methods is called, and of the fields of a dataclass.
INSTANCES = {
    "Barrier": lambda: zb.Barrier((0, 1)),
    "Circuit": CNOTS.to_circuit,
    "Conditional": lambda: zb.Conditional(Gate.h(0), 0),
    "Measure": lambda: zb.Measure(0, 0),
    "Register": lambda: zb.Register("c", 1),
    "Reset": lambda: zb.Reset(0),
    "CliffordTableau": lambda: CliffordTableau(2),
    "CnotCircuit": lambda: CNOTS,
    "Device": lambda: Device.line(3),
    "Gate": lambda: Gate.h(0),
    "Parameter": lambda: zb.Parameter(0.5),
    "LinearSynthesis": lambda: zb.linear.synthesize(MATRIX, **QUICK),
    "PhaseSynthesis": lambda: zb.phase.synthesize({"11": 0.5}, **QUICK),
    "CliffordSynthesis": lambda: zb.clifford.synthesize(BELL, **QUICK),
    "StateSynthesis": lambda: zb.clifford.synthesize_state(["XX", "ZZ"], steps=0),
    "GraphStateSynthesis": lambda: zb.graph_state.synthesize([[0, 1], [1, 0]], **QUICK),
    "PauliSynthesis": lambda: zb.pauli.synthesize({"XX": 0.5}, **QUICK),
    "CoDiagonalization": lambda: zb.pauli.codiagonalize(["XX", "ZZ"]),
    "Readout": lambda: zb.pauli.synthesize({"XX": 0.5}, **QUICK).readout(["ZZ"]),
    "NormalForm": lambda: zb.routing.normalize(BELL),
    "Routing": lambda: zb.routing.route(BELL, Device.line(2)),
}

# By callable, the arguments of calls that work; each gives values for what has no default. What
# reads objects of other packages takes one argument alone, and needs none that works.
ARGUMENTS = {
    "Circuit": [{"n": 2, "gates": BELL.gates}],
    "Circuit.draw": [{}],
    "Circuit.from_core": [{"n": 2, "gates": BELL.to_core()}],
    "Circuit.from_pytket": [],
    "Circuit.from_qasm": [{"text": BELL.to_qasm()}],
    "Circuit.from_qiskit": [],
    "Circuit.from_stim": [],
    "Circuit.of": [{"source": BELL}],
    "Circuit.placed": [{"qubits": [1, 0], "n": 2}],
    "CliffordTableau": [{"n": 2}],
    "CliffordTableau.apply": [{"gates": BELL}],
    "CliffordTableau.conjugate": [{"pauli": "XY"}],
    "CliffordTableau.from_circuit": [{"circuit": BELL}],
    "CliffordTableau.from_core": [{"tableau": core.OperatorTableau(2)}],
    "CliffordTableau.from_stim": [],
    "CliffordTableau.then": [{"later": CliffordTableau(2)}],
    "CnotCircuit": [{"n": 2, "gates": [(0, 1)]}],
    "CnotCircuit.draw": [{}],
    "CnotCircuit.from_core": [{"circuit": core.CnotCircuit(2)}],
    "CnotCircuit.from_pytket": [],
    "CnotCircuit.from_qasm": [{"text": CNOTS.to_qasm()}],
    "CnotCircuit.from_qiskit": [],
    "CnotCircuit.from_stim": [],
    "Device": [{"n": 2, "edges": [(0, 1)]}],
    "Device.all_to_all": [{"n": 2}],
    "Device.connected_parts": [{"n": 2}],
    "Device.draw": [{}],
    "Device.fits": [{"circuit": BELL}],
    "Device.from_edges": [{"edges": [(0, 1)]}],
    "Device.from_networkx": [],
    "Device.from_pytket": [],
    "Device.from_qiskit": [],
    "Device.from_rustworkx": [],
    "Device.grid": [{"rows": 2, "columns": 2}],
    "Device.hamiltonian_path": [{}],
    "Device.heavy_hex": [{"rows": 2, "length": 3}],
    "Device.line": [{"n": 2}],
    "Device.named": [{"name": "tokyo"}],
    "Device.neighbors": [{"qubit": 0}],
    "Device.of": [{"source": "tokyo"}],
    "Device.part": [{"qubits": [1, 0]}],
    "Gate": [{"name": "RZ", "qubits": 0, "params": 0.5}, {"name": "CNOT", "qubits": (0, 1)}],
    "Gate.cnot": [{"control": 0, "target": 1}],
    "Gate.cz": [{"a": 0, "b": 1}],
    "Gate.from_core": [{"gate": core.Gate.H(0)}],
    "Gate.h": [{"qubit": 0}],
    "Gate.rx": [{"qubit": 0, "angle": 0.5}],
    "Gate.ry": [{"qubit": 0, "angle": 0.5}],
    "Gate.rz": [{"qubit": 0, "angle": 0.5}],
    "Gate.s": [{"qubit": 0}],
    "Parameter": [{"value": 0.5}],
    "PauliSynthesis.absorb": [{"observables": "ZZ"}],
    "PauliSynthesis.readout": [{"observables": ["ZZ"]}],
    "Readout.values": [{"bits": [[0, 1]]}],
    "Routing.absorb": [{"observables": "ZZ"}],
    "Routing.readout": [{"observables": ["ZZ"]}],
    "clifford.methods": [{}],
    "clifford.synthesize": [{"operator": BELL} | QUICK],
    "clifford.synthesize_state": [{"state": ["XX", "ZZ"], "steps": 0}],
    "gallery.circulant": [{"first_row": [2, 3], "polynomial": 7}],
    "gallery.controlled_rotations": [{"n": 3, "seed": 1}],
    "gallery.hadamard": [{"first_row": [2, 3], "polynomial": 7}],
    "gallery.hardware_efficient": [
        {"n": 2, "layers": 1, "entangler": "ring", "seed": 1, "symbolic": True}
    ],
    "gallery.heisenberg": [{"shape": [2, 2], "steps": 1, "couplings": [1, 1, 1], "time": 1.0}],
    "gallery.ising_chain": [{"n": 2, "steps": 1, "coupling": 1.0, "field": 1.0, "time": 1.0}],
    "gallery.low_autocorrelation": [{"n": 3, "layers": 1, "gamma": 0.5, "beta": 0.5}],
    "gallery.maxcut": [{"n": 4}],
    "gallery.maxcut_regular": [{"n": 4, "degree": 3, "seed": 1}],
    "gallery.phase_estimation": [{"bits": 3, "phase": 0.25, "seed": 1}],
    "gallery.qaoa": [{"n": 4, "layers": 1, "seed": 1}],
    "gallery.qft": [{"n": 3, "swaps": True}],
    "gallery.random_clifford": [{"n": 2, "count": 1}],
    "gallery.random_graph": [{"n": 2}],
    "gallery.random_invertible": [{"n": 2, "count": 1}],
    "gallery.random_parities": [{"n": 2, "terms": 1, "count": 1}],
    "gallery.random_paulis": [{"n": 2, "terms": 1}],
    "gallery.rank": [{"rows": [1, 2]}],
    "gallery.uccsd": [{"qubits": 4, "electrons": 2}],
    "graph_state.methods": [{}],
    "graph_state.synthesize": [
        {"graph": [[0, 1], [1, 0]]} | QUICK,
        {"graph": [[0, 1], [1, 0]], "method": "decoding", "restarts": 1},
    ],
    "linear.methods": [{}],
    "linear.synthesize": [
        {"matrix": MATRIX} | QUICK,
        {"matrix": MATRIX, "method": "pmh"},
        {"matrix": MATRIX, "method": "syndrome"},
        {"matrix": MATRIX, "device": Device.line(2)} | QUICK,
    ],
    "pauli.codiagonalize": [{"strings": ["XX", "ZZ"], "seed": 1}],
    "pauli.methods": [{}],
    "pauli.partition": [{"strings": ["XX", "ZI"]}],
    "pauli.synthesize": [{"rotations": {"XX": 0.5}} | QUICK],
    "phase.methods": [{}],
    "phase.polynomial_of": [{"circuit": CNOTS.to_circuit()}],
    "phase.synthesize": [{"polynomial": {"11": 0.5}} | QUICK],
    "plot.best_over_time": [],
    "routing.methods": [{}],
    "routing.normalize": [{"circuit": BELL}],
    "routing.route": [{"circuit": BELL, "device": Device.line(2)}],
    "routing.route_ions": [{"circuit": BELL}],
} | {
    f"{result}.{picture}": [{}]
    for result in (
        *(name for name in INSTANCES if "Synthesis" in name),
        "CoDiagonalization",
        "Routing",
    )
    for picture in ("draw", "plot")
}


def public(module):
    """The public objects of a module by name, and those of its public modules."""
    names = getattr(module, "__all__", None) or [
        name for name, each in vars(module).items() if _defined_in(each, module) and name[0] != "_"
    ]
    for name in names:
        each = getattr(module, name)
        if isinstance(each, types.ModuleType):
            if each is not core:
                yield from public(each)
        elif callable(each) and not (inspect.isclass(each) and issubclass(each, BaseException)):
            where = module.__name__.removeprefix("zeltbraidwerk").lstrip(".")
            yield f"{where}.{name}" if inspect.isfunction(each) else name, each


def _defined_in(each, module):
    return getattr(each, "__module__", None) == module.__name__


def instance(name):
    if name not in INSTANCES:
        pytest.fail(f"add one of {name} to INSTANCES")
    return INSTANCES[name]()


def members(cls):
    """The public methods and properties of a class."""
    for name in dir(cls):
        where = next((base for base in cls.__mro__ if name in vars(base)), object)
        is_field = name in getattr(cls, "__dataclass_fields__", ())
        if name[0] != "_" and not is_field and where.__module__.startswith("zeltbraidwerk"):
            yield name, inspect.getattr_static(cls, name)


def callables():
    """By name, what to call, and its parameters without a value of their own class."""
    found = {}
    for name, each in public(zb):
        found[name] = lambda each=each: each, parameters(each)
        for method, how in members(each) if inspect.isclass(each) else ():
            label = f"{name}.{method}"
            if isinstance(how, (classmethod, staticmethod)):
                found[label] = (
                    lambda c=each, m=method: getattr(c, m),
                    parameters(getattr(each, method)),
                )
            elif inspect.isfunction(how):
                found[label] = (
                    lambda c=name, m=method: getattr(instance(c), m),
                    parameters(how)[1:],
                )
            elif isinstance(how, (property, cached_property)):
                found[label] = lambda c=name, m=method: lambda: getattr(instance(c), m), []
    return found


def parameters(function):
    return list(inspect.signature(function).parameters.values())


CALLABLES = callables()


def calls(name, given):
    """The calls with one wrong argument: what it is, its name, and the arguments."""
    for parameter in CALLABLES[name][1]:
        for kind, make in WRONG.items():
            value = make()
            if parameter.kind is parameter.VAR_POSITIONAL:
                yield kind, parameter.name, (value,), given
            elif value is not None or parameter.default is not None:
                yield kind, parameter.name, (), given | {parameter.name: value}


def complaint(function, argument, args, options):
    """What is wrong with how a call ends; None where nothing is. Without an argument that is wrong,
    it has to succeed."""
    try:
        outcome = function(*args, **options)
        if inspect.isgenerator(outcome):
            list(outcome)
    except (ValueError, TypeError) as error:
        named = isinstance(error, errors.Error) or str(argument) in str(error)
        return None if argument and named else f"does not name {argument}: {error!r}"[:200]
    except errors.MissingPackageError:
        return None
    except Exception as error:
        return repr(error)[:200]
    return None


@pytest.fixture
def soon():
    """Breaks off what does not end."""

    def late(*_):
        raise RuntimeError("the call goes on and on")

    before = signal.signal(signal.SIGALRM, late)
    signal.setitimer(signal.ITIMER_REAL, 60)
    yield
    signal.setitimer(signal.ITIMER_REAL, 0)
    signal.signal(signal.SIGALRM, before)


@pytest.mark.parametrize("name", CALLABLES)
def test_wrong_arguments_are_refused(name, soon):
    make, wanted = CALLABLES[name]
    function = make()
    if inspect.isclass(function) and hasattr(function, "__dataclass_fields__"):
        made = instance(name)
        given = [{p.name: getattr(made, p.name) for p in wanted}]
    elif not wanted:
        given = [{}]
    elif name in ARGUMENTS:
        given = ARGUMENTS[name]
    else:
        pytest.fail(f"add calls of {name} to ARGUMENTS, with {[p.name for p in wanted]}")
    for options in given:
        assert complaint(function, None, (), options) is None, options
    found = [
        f"{argument} = {kind}: {problem}"
        for options in given or [{}]
        for kind, argument, args, changed in calls(name, options)
        if (problem := complaint(function, argument, args, changed))
    ]
    assert not found, "\n".join(found)

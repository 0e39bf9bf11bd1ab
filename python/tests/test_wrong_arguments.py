"""Every public callable of the package takes objects of all wrong kinds, one argument at a time.

A call must end quickly: it succeeds, or it raises a ValueError or TypeError that is a class of the
package or names the argument. Callables are found by walking the public modules, so a new one fails
here until VALUES or ARGUMENTS, or INSTANCES for a class, says how it is called.
"""

import inspect
import math
import signal
import types
from concurrent.futures import ThreadPoolExecutor
from functools import cached_property
from pathlib import Path

import numpy as np
import pytest

import zeltbraidwerk as zb
from zeltbraidwerk import Circuit, CliffordTableau, CnotCircuit, Device, Gate, core, errors

MATRIX = [[1, 1], [0, 1]]
BELL = Circuit(2, [Gate.h(0), Gate.cnot(0, 1)])
CNOTS = CnotCircuit(2, [(0, 1)])
RATED = Device(3, [(0, 1), (1, 2)], edge_errors={(0, 1): 0.1}, edge_durations={(1, 2): 1e-7})
QUICK = {"method": "search", "steps": 0, "seed": 1}
THREADS = ThreadPoolExecutor(1)


class Unprintable:
    def __repr__(self):
        raise RuntimeError


WRONG = {
    "None": lambda: None, "bool": lambda: True, "negative": lambda: -1, "huge": lambda: 10**30,
    "many digits": lambda: 10**5000, "fraction": lambda: 0.5, "nan": lambda: math.nan,
    "inf": lambda: math.inf, "complex": lambda: 1j, "no text": lambda: "", "text": lambda: "abc",
    "bytes": lambda: b"x", "object": object, "unprintable": Unprintable, "empty list": list,
    "empty tuple": tuple, "empty mapping": dict, "mapping": lambda: {"a": "b"},
    "set": lambda: {1}, "ragged": lambda: [[1], [1, 2]], "nested": lambda: [[[[1]]]],
    "list of None": lambda: [None, None], "list of text": lambda: ["ab", "c"],
    "list of huge": lambda: [10**30, -1], "pair of huge": lambda: [(0, 10**30)],
    "three dimensions": lambda: np.ones((2, 2, 2), dtype=int),
    "array of float": lambda: np.array([[0.5, math.nan]]),
    "array of text": lambda: np.array(["a", "b"]),
    "array of object": lambda: np.array([[1, None], [None, object()]]),
    "array of one": lambda: np.array(0),
    "masked": lambda: np.ma.array([[1, 0], [0, 1]], mask=[[1, 0], [0, 0]]),
    "generator": lambda: (each for each in (1, "a")), "function": lambda: lambda *_: None,
    "directory": lambda: Path("/"), "directory as text": lambda: "/", "class": lambda: int,
    "module": lambda: math,
}  # fmt: skip

# What belongs to a class when one of its methods is called, and of the fields of a dataclass.
INSTANCES = {
    "Barrier": lambda: zb.Barrier((0, 1)), "Circuit": CNOTS.to_circuit,
    "Conditional": lambda: zb.Conditional(Gate.h(0), 0), "Measure": lambda: zb.Measure(0, 0),
    "Register": lambda: zb.Register("c", 1), "Reset": lambda: zb.Reset(0),
    "CliffordTableau": lambda: CliffordTableau(2), "CnotCircuit": lambda: CNOTS,
    "Device": lambda: RATED, "Limits": zb.limits.current, "Gate": lambda: Gate.h(0),
    "Parameter": lambda: zb.Parameter(0.5),
    "LinearSynthesis": lambda: zb.linear.synthesize(MATRIX, **QUICK),
    "PhaseSynthesis": lambda: zb.phase.synthesize({"11": 0.5}, **QUICK),
    "CliffordSynthesis": lambda: zb.clifford.synthesize(BELL, **QUICK),
    "StateSynthesis": lambda: zb.clifford.synthesize_state(["XX", "ZZ"], steps=0),
    "EncoderSynthesis": lambda: zb.clifford.synthesize_encoder(["XX"], steps=0),
    "GraphStateClass": lambda: zb.graph_state.classes(2)[0],
    "GraphStateSynthesis": lambda: zb.graph_state.synthesize([[0, 1], [1, 0]], **QUICK),
    "PauliSynthesis": lambda: zb.pauli.synthesize({"XX": 0.5}, **QUICK),
    "CoDiagonalization": lambda: zb.pauli.codiagonalize(["XX", "ZZ"]),
    "Readout": lambda: zb.pauli.synthesize({"XX": 0.5}, **QUICK).readout(["ZZ"]),
    "NormalForm": lambda: zb.routing.normalize(BELL),
    "Routing": lambda: zb.routing.route(BELL, Device.line(2)),
}  # fmt: skip


def results():
    return zb.batch.run("optimize", [BELL, "?"], results="made.jsonl", executor=THREADS, seed=1)


INSTANCES |= {
    "Progress": lambda: zb.batch.Progress(1), "Results": results,
    "Record": lambda: next(iter(results())),
}  # fmt: skip
BATCH = {"task": "linear.synthesize", "executor": THREADS, "results": "runs.jsonl", "steps": 0}

# Arguments that work, by the name of the parameter: of every callable that has not its own below.
VALUES = {
    "a": 0, "angle": 0.5, "b": 1, "basis": "cz", "bits": [[0, 1]], "circuit": BELL, "columns": 2,
    "control": 0,
    "count": 1, "d": 3, "degree": 3, "device": Device.line(2), "edges": [(0, 1)], "electrons": 2,
    "first_row": [2, 3], "gates": BELL.gates, "graph": [[0, 1], [1, 0]],
    "later": CliffordTableau(2), "layers": 1, "length": 3, "matrix": MATRIX, "n": 2,
    "name": "tokyo", "observables": ["ZZ"], "operator": BELL, "pauli": "XY",
    "polynomial": {"11": 0.5}, "qubit": 0, "qubits": [1, 0], "rotations": {"XX": 0.5}, "rows": 2,
    "shape": [2, 2], "stabilizers": ["XX"], "state": ["XX", "ZZ"], "strings": ["XX", "ZZ"],
    "tableau": core.OperatorTableau(2), "target": 1, "terms": 1, "text": CNOTS.to_qasm(),
    "value": 0.5,
}  # fmt: skip

# By callable, other arguments, one mapping per call; where the name is not that of a function, of
# all whose name ends so. What reads objects of other packages takes one argument alone, and needs
# none that works.
ARGUMENTS = {
    "Device": [
        {"labels": ["a", "b"], "edge_errors": {(0, 1): 0.1}, "qubit_errors": [0.1, None]},
    ],
    "Device.qubit": [{"label": 0}],
    "from_cirq": [], "from_networkx": [], "from_pennylane": [], "from_pytket": [], "from_pyzx": [],
    "from_qiskit": [], "from_rustworkx": [], "from_stim": [], "from_json": [], "from_qasm3": [],
    "best_over_time": [],
    "Progress": [{"done": 1}],
    "Record": [{"header": {}, "line": "{}"}],
    "Results": [],
    "batch.merge": [{"files": ["made.jsonl"], "out": "merged.jsonl"}],
    "batch.read": [],
    "batch.run": [BATCH | {"inputs": [MATRIX], "seed": 1}],
    "batch.stream": [BATCH | {"inputs": [MATRIX], "seed": 1, "results": "other.jsonl"}],
    "batch.race": [BATCH | {"input": MATRIX, "seeds": [1, 2]}],
    "save_svg": [{"path": "circuit.svg"}],
    "clifford.synthesize": [QUICK],
    "gallery.toric_code": [{"d": 4}],
    "gallery.logical_zero": [{"code": ([[1, 1]], [[1, 1]])}],
    "graph_state.synthesize": [QUICK, {"method": "decoding", "restarts": 1}],
    "linear.synthesize": [
        QUICK, {"method": "pmh"}, {"method": "syndrome"}, {"device": Device.line(2)} | QUICK,
    ],
    "pauli.synthesize": [QUICK],
    "phase.synthesize": [QUICK],
    "phase.polynomial_of": [{"circuit": CNOTS.to_circuit()}],
    "synthesize_encoder": [{"steps": 0}, {"steps": 0, "logicals": (["XI"], ["ZZ"])}],
    "synthesize_state": [{"steps": 0}],
    "CnotCircuit": [{"gates": [(0, 1)]}],
    "CnotCircuit.from_core": [{"circuit": core.CnotCircuit(2)}],
    "Circuit.from_core": [{"gates": BELL.to_core()}],
    "Circuit.of": [{"source": BELL}],
    "Circuit.placed": [{"n": 2}],
    "CliffordTableau.from_images": [{"xs": ["+X"], "zs": ["-Z"]}],
    "Device.of": [{"source": "tokyo"}],
    "Gate": [{"name": "RZ", "qubits": 0, "params": 0.5}, {"name": "CNOT", "qubits": (0, 1)}],
    "Gate.from_core": [{"gate": core.Gate.H(0)}],
    "Circuit.bind": [{"values": {}}],
    "Circuit.with_qubit_names": [{"names": None}],
    "Parameter.bind": [{"values": {}}],
    "Parameter.from_core": [{"angle": core.Parameter(0.5)}],
    "circulant": [{"polynomial": 7}],
    "hadamard": [{"polynomial": 7}],
    "hardware_efficient": [{"entangler": "ring", "seed": 1, "symbolic": True}],
    "low_autocorrelation": [{"n": 3, "layers": 1, "gamma": 0.5, "beta": 0.5}],
    "maxcut": [{"n": 4}],
    "maxcut_regular": [{"n": 4, "seed": 1}],
    "phase_estimation": [{"bits": 3, "phase": 0.25, "seed": 1}],
    "qaoa": [{"n": 4, "seed": 1}],
    "rank": [{"rows": [1, 2]}],
    "uccsd": [{"qubits": 4}],
}  # fmt: skip


def arguments(name, wanted):
    """The arguments of calls that work."""
    own = ARGUMENTS.get(name, ARGUMENTS.get(name.rpartition(".")[2], [{}]))
    several = (inspect.Parameter.VAR_POSITIONAL, inspect.Parameter.VAR_KEYWORD)
    needed = [p.name for p in wanted if p.default is p.empty and p.kind not in several]
    for given in own:
        lacking = [each for each in needed if each not in given and each not in VALUES]
        if lacking:
            pytest.fail(f"add {lacking} of {name} to VALUES or ARGUMENTS")
    return [{each: VALUES[each] for each in needed if each not in given} | given for given in own]


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
def test_wrong_arguments_are_refused(name, soon, tmp_path, monkeypatch):
    monkeypatch.chdir(tmp_path)
    make, wanted = CALLABLES[name]
    function = make()
    if name == "batch.merge":
        results()
    if inspect.isclass(function) and hasattr(function, "__dataclass_fields__"):
        made = instance(name)
        given = [{p.name: getattr(made, p.name) for p in wanted}]
    else:
        given = arguments(name, wanted)
    for options in given:
        assert complaint(function, None, (), options) is None, options
    found = [
        f"{argument} = {kind}: {problem}"
        for options in given or [{}]
        for kind, argument, args, changed in calls(name, options)
        if (problem := complaint(function, argument, args, changed))
    ]
    assert not found, "\n".join(found)

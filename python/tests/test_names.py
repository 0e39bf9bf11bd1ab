"""Modules import each other one way, and old names work, warn at the caller's line, and no more."""

# ruff: noqa: E501

import ast
import functools
import graphlib
from pathlib import Path

import numpy as np
import pytest
from test_validation import FAMILIES

import zeltbraidwerk as zb
from zeltbraidwerk import Device, Parameter, errors

FOLDER = Path(zb.__file__).parent
SOURCES = {  # by the names of modules in the package, "batch" and "batch._run"
    ".".join(path.relative_to(FOLDER).with_suffix("").parts).removesuffix(".__init__"): path
    for path in FOLDER.rglob("*.py")
}
TOFFOLI = "qreg q[3]; ccx q[0],q[1],q[2];"
ROTATIONS = {"ZZ": 0.5, "II": 0.25}
GRAPH = np.array([[0, 1], [1, 0]])


def imported(path):
    """The modules of the package that a module imports: at its top, in functions, for types."""
    for node in ast.walk(ast.parse(path.read_text())):
        names = [alias.name for alias in node.names] if isinstance(node, ast.Import) else []
        if isinstance(node, ast.ImportFrom):
            names = [f"{node.module}.{alias.name}" for alias in node.names]
        for name in names:
            package, _, rest = name.partition(".")
            if package == "zeltbraidwerk" and rest.partition(".")[0] != "_core":
                parts = rest.split(".")
                known = (".".join(parts[:k]) for k in range(len(parts), 0, -1))
                yield next((module for module in known if module in SOURCES), "__init__")


def test_imports_run_in_no_circle():
    arrows = {name: set(imported(path)) for name, path in SOURCES.items()}
    assert "linear" in arrows["__init__"]
    assert "_validate" in arrows["linear"]
    list(graphlib.TopologicalSorter(arrows).static_order())  # raises CycleError, which tells it


def phase(**options):
    return zb.phase.synthesize({"110": 0.5, "011": 0.25}, method="gray", seed=1, **options)


def pauli(**options):
    return zb.pauli.synthesize(ROTATIONS, seed=1, **{"method": "greedy"} | options)


def graph_state():
    return zb.graph_state.synthesize(GRAPH, method="naive", seed=1)


def state():
    return zb.clifford.synthesize_state(["XX", "ZZ"], steps=0)


def route(**options):
    return zb.routing.route(TOFFOLI, Device.line(3), tail="return", **options).circuit


def ions(**options):
    return zb.routing.route_ions(TOFFOLI, **options)


# An old call, a new one, and what the warning says.
OLD = """
route(depth=1) == route(lookahead=1): option depth is now called lookahead
ions(depth=1) == ions(lookahead=1): option depth is now called lookahead
phase(leftover='return') == phase(tail='return'): option leftover is now called tail
phase(tail='return').leftover.all() == phase(tail='return').tail.all(): PhaseSynthesis.leftover is now called tail
pauli().global_angle == Parameter(0.25): PauliSynthesis.global_angle is now called global_phase
pauli(method='greedy-depth') == pauli(method='greedy_depth'): 'greedy-depth' is now called 'greedy_depth'
pauli(method='sets-graph') == pauli(method='sets_graph'): 'sets-graph' is now called 'sets_graph'
pauli(method='sets-decoding') == pauli(method='sets_decoding'): 'sets-decoding' is now called 'sets_decoding'
pauli(method='sets-closed') == pauli(method='sets_closed'): 'sets-closed' is now called 'sets_closed'
graph_state().stabilisers() == list(graph_state().stabilizers): GraphStateSynthesis.stabilisers is now called stabilizers
state().stabilisers == ('+XX', '+ZZ'): StateSynthesis.stabilisers is now called stabilizers
zb.Circuit(1, [zb.Gate.h(0)]).count == 1: Circuit.count is now called gate_count
"""  # fmt: skip


@pytest.mark.parametrize("case", OLD.strip().split("\n"))
def test_old_names_mean_what_they_did_and_warn_at_the_caller(case):
    call, text = case.split(": ", 1)
    with pytest.warns(DeprecationWarning, match=text) as caught:
        assert eval(compile(call, __file__, "eval"), globals())
    assert [Path(each.filename).name for each in caught] == [Path(__file__).name]


def test_an_old_and_a_new_name_together_are_refused():
    with pytest.raises(errors.OptionError, match="leftover: got it together with tail"):
        phase(leftover="return", tail="return")
    with pytest.raises(errors.UnknownMethodError, match="'greedy-nothing'"):
        pauli(method="greedy-nothing")


def test_a_global_phase_is_one_in_every_family():
    """exp(i phase): a rotation about the identity turns by minus half its angle."""
    assert pauli().global_phase == Parameter(-0.125)
    assert zb.phase.synthesize({"00": 0.25, "01": 1.0}, seed=1).global_phase == Parameter(0.25)
    assert zb.pauli.synthesize({"II": "a"}, method="greedy").global_phase == Parameter("-a/2")


RESULTS = {name: functools.partial(call, seed=1) for name, call in FAMILIES.items()} | {
    "codiagonalize": lambda: zb.pauli.codiagonalize(["XX", "ZZ"], seed=1),
    "naive": graph_state,
    "device": lambda: zb.routing.route(TOFFOLI, Device.grid(2, 3)),
    "ions": ions,
}


@pytest.mark.parametrize("family", RESULTS)
def test_results_of_all_families_have_the_same_fields(family):
    result, again = RESULTS[family](), RESULTS[family]()
    gates = [2 if isinstance(gate, tuple) else len(gate.qubits) for gate in result.circuit]
    assert result.count == sum(size * (size - 1) // 2 for size in gates)
    assert result.circuit.one_qubit_count == gates.count(1)
    assert result.depth == result.circuit.two_qubit_depth <= result.count
    wires = range(len(result.placement))
    assert sorted(result.permutation) == list(wires)
    assert set(result.placement) <= set(range(result.n))
    assert result.device is None or result.device.fits(result.circuit)
    assert result.method != "auto"
    assert result.objective == "count"
    assert result.runs >= 1
    assert result.seconds > 0
    assert all(point.count >= result.count for point in result.trace)
    assert result.verify()
    assert result.draw() == result.circuit.draw()
    assert result == again
    assert hash(result) == hash(again)
    assert repr(result).startswith(
        f"{type(result).__name__}({result.method}: {len(wires)} qubits, "
    )
    with pytest.raises(AttributeError):
        result.seed = 7


@pytest.mark.parametrize(
    "family", [zb.linear, zb.phase, zb.pauli, zb.clifford, zb.graph_state, zb.routing]
)
def test_methods_are_listed_with_and_without_a_device(family):
    for names in (family.methods(), family.methods(device=True)):
        assert names == () or names[0] == "auto"
        assert not [name for name in names if "-" in name]

"""Nothing of the compiled module outlives the interpreter, which would say so on standard error."""

import subprocess
import sys

import pytest
from hypothesis import given
from hypothesis import strategies as st

import zeltbraidwerk as zb

# Every family, with searches on threads and callbacks; what is made stays in the module's names, in
# a cycle as well, until the interpreter ends.
PROGRAM = """
import numpy as np
import zeltbraidwerk as zb
from zeltbraidwerk import clifford, core, gallery, graph_state, linear, pauli, phase, routing

told, device = [], zb.Device.grid(2, 3)
options = {"seed": 1, "steps": 100, "restarts": 2, "jobs": 2, "progress": told.append}
parities = {"110110": 0.5, "011000": "theta"}
rotations = [("XXIIII", 0.5), ("IZZIII", "theta"), ("YIYIII", 0.25)]
turns = [zb.Gate.rz(5, "theta"), zb.Gate.rz(5, 1)]
circuit = zb.Circuit(6, [zb.Gate.h(0), zb.Gate.cnot(0, 5), *turns])
matrix = gallery.random_invertible(6, 1)[0]
kept = [
    linear.synthesize(matrix, method="search", **options),
    linear.synthesize(matrix, device=device, seed=1),
    phase.synthesize(parities, method="search", **options),
    phase.synthesize(parities, device=device, seed=1),
    graph_state.synthesize(gallery.random_graph(6), method="search", **options),
    clifford.synthesize(gallery.random_clifford(6, 1)[0], **options),
    clifford.synthesize_state(["XZI", "ZXZ", "-IZX"], **options),
    clifford.synthesize_encoder(["XZZXI", "IXZZX", "XIXZZ", "ZXIXZ"], **options),
    pauli.synthesize(rotations, **options),
    routing.route(circuit, device, lookahead=1),
    routing.route_ions(circuit),
    zb.optimize(circuit, **options),
]
assert told and all(result.verify() for result in kept)
kept += [pauli.partition(["XX", "ZZ"]), pauli.codiagonalize(["XX", "ZZ"])]
kept.append(routing.normalize(circuit))
try:
    linear.synthesize(np.zeros((2, 2)))
except zb.errors.Error as error:
    kept.append(error)
graph = core.Graph(3)
graph.add_edge(0, 1)
graph.add_edge(1, 2)
graph.set_shortest_paths()
kept += [core.Parameter("a"), core.Gate.CNOT(0, 1), core.Table(2), core.CnotCircuit(2)]
kept += [core.OperatorTableau(2), graph, graph.steiner_tree([0, 2]), core.Graph.steiner_tree]
kept.append(kept)
"""


def test_a_program_of_every_family_leaves_nothing():
    done = subprocess.run([sys.executable, "-c", PROGRAM], capture_output=True, text=True)
    assert (done.returncode, done.stdout, done.stderr) == (0, "", "")


@pytest.mark.parametrize("gate", [zb.Gate.rz(0, 0.3)])
@given(n=st.integers(1, 3))
def test_drawn_beside_an_angle(gate, n):
    """An angle among the cases of a test of hypothesis."""
    assert len(zb.Circuit(n, [gate])) == 1


def test_a_run_of_drawn_tests_leaves_nothing():
    command = [sys.executable, "-m", "pytest", "-q", "-k", "drawn_beside_an_angle", __file__]
    done = subprocess.run(command, capture_output=True, text=True)
    assert (done.returncode, done.stderr) == (0, ""), done.stdout

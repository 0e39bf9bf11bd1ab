"""Devices, and the graph functions of the core."""

import itertools
import math
import pickle
import xml.etree.ElementTree as ElementTree

import numpy as np
import pytest
from hypothesis import given
from hypothesis import strategies as st
from support import device_edges, graph_of, replay

import zeltbraidwerk as zb
from zeltbraidwerk import Circuit, CnotCircuit, Device, Gate, core, errors

LINE_AND_DOT = Device(4, [(0, 1), (1, 2)])  # qubit 3 stands alone
STAR = Device(4, [(0, 1), (0, 2), (0, 3)])


def on_edges(device, gates):
    return all(tuple(sorted(gate)) in device.edges for gate in gates)


# --- devices ------------------------------------------------------------------------------------


def test_shapes():
    assert Device.line(4).edges == ((0, 1), (1, 2), (2, 3))
    assert Device.grid(2, 2).edges == ((0, 1), (0, 2), (1, 3), (2, 3))
    assert len(Device.all_to_all(5).edges) == 10
    hexes = Device.heavy_hex(3, 9)
    assert (hexes.n, hexes.is_connected) == (27 + 3 + 2, True)
    assert max(len(hexes.neighbors(q)) for q in range(hexes.n)) == 3
    assert [len(hexes.neighbors(q)) for q in range(27, 32)] == [2] * 5
    assert [Device.named(name).n for name in Device.names()] == [16, 16, 20, 20]
    assert Device.grid(1, 1).is_connected
    assert not Device(0, []).is_connected
    assert not LINE_AND_DOT.is_connected
    for none in (Device(0, []), Device.line(0), Device.all_to_all(0)):
        assert (none.n, none.edges, none.hamiltonian_path()) == (0, (), ())


def test_a_device_is_a_value():
    device = Device(3, np.array([[2, 1], [0, 1], [1, 2]]), "mine")
    assert device == Device.line(3)
    assert hash(device) == hash(Device.line(3))
    assert device != Device(4, device.edges)
    assert pickle.loads(pickle.dumps(device)).name == "mine"
    assert repr(device) == "Device('mine': 3 qubits, 2 edges)"
    with pytest.raises(AttributeError):
        device.n = 5


def test_devices_of_other_packages():
    wanted = Device.grid(2, 3)
    assert Device.of(wanted) is wanted
    assert Device.of(list(wanted.edges)) == wanted
    assert Device.of("tokyo") == Device.named("tokyo")
    networkx = pytest.importorskip("networkx")
    assert Device.of(networkx.Graph(wanted.edges)) == wanted
    rustworkx = pytest.importorskip("rustworkx")
    graph = rustworkx.PyGraph()
    graph.add_nodes_from(range(6))
    graph.add_edges_from_no_data(list(wanted.edges))
    assert Device.of(graph) == wanted
    transpiler = pytest.importorskip("qiskit.transpiler")
    coupling = transpiler.CouplingMap(wanted.edges)
    assert Device.of(coupling) == wanted
    target = transpiler.Target.from_configuration(["cx"], 6, coupling)
    assert Device.of(target) == wanted
    architecture = pytest.importorskip("pytket.architecture")
    assert Device.of(architecture.Architecture(list(wanted.edges))) == wanted


# --- labels and error rates ---------------------------------------------------------------------

KNOWN = Device(
    3, [(1, 0), (2, 1)], "mine", labels=["a", ("b", 1), 7],
    edge_errors={(1, 0): 0.01, (1, 2): 0.02}, qubit_errors=[0.001, None, 0],
)  # fmt: skip


def test_labels_and_rates_are_part_of_the_value():
    assert (KNOWN.labels, KNOWN.qubit(("b", 1))) == (("a", ("b", 1), 7), 1)
    assert KNOWN.edge_errors == {(0, 1): 0.01, (1, 2): 0.02}
    assert KNOWN.qubit_errors == {0: 0.001, 2: 0.0}
    rates = "errors 0.01 to 0.02 on edges, errors 0 to 0.001 on qubits"
    text = f"Device('mine': 3 qubits, 2 edges, {rates})"
    assert repr(KNOWN) == text
    for again in (pickle.loads(pickle.dumps(KNOWN)), zb.from_json(KNOWN.to_json())):
        assert (again, hash(again), repr(again)) == (KNOWN, hash(KNOWN), text)
        assert again.labels == KNOWN.labels
    KNOWN.edge_errors.clear()
    assert len(KNOWN.edge_errors) == 2
    plain = Device.line(3)
    assert (plain.labels, plain.edge_errors, plain.qubit_errors) == ((0, 1, 2), None, None)
    rates = {"edge_errors": {(0, 1): 0.5}}, {"qubit_errors": {2: 0.5}}
    rated = [Device(3, KNOWN.edges, **given) for given in rates]
    assert len({plain, KNOWN, *rated}) == 4
    for labels in (range(3), ["a", "b", "c"]):
        same = Device(3, KNOWN.edges, labels=labels, edge_errors={}, qubit_errors=[None] * 3)
        assert same == plain
    part = KNOWN.part([2, 1])
    assert (part.labels, part.edge_errors) == ((7, ("b", 1)), {(0, 1): 0.02})
    assert part.qubit_errors == {0: 0.0}


def test_labels_and_rates_are_drawn():
    texts = [each.text for each in ElementTree.fromstring(KNOWN.draw()).iter() if each.text]
    assert {"a", "1", "7", "('b', 1)", "error 0.02", "a, error 0.001"} <= set(texts)


def test_nodes_become_labels():
    networkx, rustworkx = pytest.importorskip("networkx"), pytest.importorskip("rustworkx")
    nodes = ["<left>", 2.5, (1, "x"), frozenset({3})]
    edges = list(itertools.pairwise(nodes))
    device = Device.of(networkx.Graph(edges))
    assert (device.edges, device.labels) == (Device.line(4).edges, tuple(nodes))
    assert zb.from_json(device.to_json()).labels == (*nodes[:3], "frozenset({3})")
    assert "&lt;left&gt;" in device.draw()
    graph = rustworkx.PyGraph()
    graph.add_nodes_from(nodes)
    graph.add_edges_from_no_data([(0, 1), (1, 2), (2, 3)])
    assert Device.of(graph) == device
    graph[1] = graph[0]  # no longer told apart
    assert Device.of(graph) == Device.line(4)
    assert Device.of(networkx.Graph([(3, 1), (2, 3)])).labels == (1, 2, 3)
    result = zb.linear.synthesize([[1, 1], [0, 1]], device=networkx.Graph(edges), seed=1)
    assert result.placement_labels == tuple(nodes[q] for q in result.placement)
    assert zb.linear.synthesize([[1, 1], [0, 1]], seed=1).placement_labels == (0, 1)


def test_error_rates_of_qiskit():
    qiskit = pytest.importorskip("qiskit")
    from qiskit.circuit.library import CXGate, CZGate, Measure, RZGate, SXGate
    from qiskit.providers.fake_provider import GenericBackendV2
    from qiskit.transpiler import InstructionProperties as Rate
    from qiskit.transpiler import Target

    target = Target(num_qubits=3)
    target.add_instruction(
        CXGate(), {(0, 1): Rate(error=0.3), (1, 0): Rate(error=0.1), (1, 2): None}
    )
    target.add_instruction(CZGate(), {(1, 0): Rate(error=0.2)})
    target.add_instruction(SXGate(), {(0,): Rate(error=0.01), (2,): Rate(error=None)})
    target.add_instruction(RZGate(qiskit.circuit.Parameter("t")), {(0,): Rate(error=0.0)})
    target.add_instruction(Measure(), {(2,): Rate(error=0.5)})
    found = Device.of(target)
    assert (found.edges, found.edge_errors) == (((0, 1), (1, 2)), {(0, 1): 0.1})
    assert found.qubit_errors == {0: 0.01}
    backend = GenericBackendV2(5, coupling_map=[[0, 1], [1, 2], [1, 3], [3, 4]], seed=1)
    device = Device.of(backend)
    assert device == Device.of(backend.target) != Device(5, device.edges)
    for a, b in device.edges:
        assert device.edge_errors[a, b] == backend.target["cx"][a, b].error
    worst = [max(backend.target[gate][q,].error for gate in ("x", "sx", "id")) for q in range(5)]
    assert list(device.qubit_errors.values()) == worst
    target["cx"][0, 1].error = math.nan
    with pytest.raises(errors.DeviceError, match=r"got the error rate nan for \(0, 1\)"):
        Device.of(target)


def test_error_rates_and_names_of_pytket():
    architecture = pytest.importorskip("pytket.architecture")
    from pytket.backends.backendinfo import BackendInfo
    from pytket.circuit import Node, OpType

    a, b, c = nodes = [Node("grid", k, 0) for k in range(3)]
    path = architecture.Architecture([(a, b), (b, c)])

    def device(**rates):
        return Device.of(BackendInfo("", "", "", path, {OpType.CX}, **rates))

    labels = tuple(map(str, nodes))
    assert device().labels == Device.of(path).labels == labels
    assert device() == Device(3, Device.line(3).edges, labels=labels)
    by_gate = device(
        all_edge_gate_errors={(a, b): {OpType.CX: 0.1, OpType.CZ: 0.2}, (b, a): {OpType.CX: 0.05}},
        all_node_gate_errors={a: {OpType.X: 0.01, OpType.Rz: 0}},
        averaged_node_gate_errors={c: 0.5},
    )
    assert (by_gate.edge_errors, by_gate.qubit_errors) == ({(0, 1): 0.05}, {0: 0.01})
    averaged = device(averaged_edge_gate_errors={(b, c): 0.1}, averaged_node_gate_errors={c: 0.5})
    assert (averaged.edge_errors, averaged.qubit_errors) == ({(1, 2): 0.1}, {2: 0.5})
    assert Device.of(architecture.FullyConnected(3)) == Device.all_to_all(3)
    info = BackendInfo("", "", "", path, {OpType.CX}, averaged_node_gate_errors={b: 0.25})
    backend = type("Backend", (), {"__module__": "pytket.backends", "backend_info": info})()
    assert Device.of(backend) == Device.from_pytket(info) == Device(
        3, [(0, 1), (1, 2)], qubit_errors={1: 0.25}
    )  # fmt: skip


def test_a_search_for_a_path_ends_in_its_time():
    # Connected, colours balanced, few dead ends: only a long search can tell that there is none.
    ring = [(k, (k + 1) % 40) for k in range(40)]
    spikes = [(k, 40 + k) for k in range(40)]
    tips = [(40 + k, 40 + (k + 7) % 40) for k in range(0, 40, 2)]
    device = Device(80, ring + spikes + tips)
    with pytest.raises(errors.UnfinishedError, match="no Hamiltonian path of Device"):
        device.hamiltonian_path(1e-9)
    assert Device.grid(12, 12).hamiltonian_path(5) is not None


@given(device_edges(), st.data())
def test_parts_of_a_device_are_connected(case, data):
    device = Device(*case)
    size = data.draw(st.integers(1, device.n))
    parts = list(device.connected_parts(size))
    assert parts
    for part in parts:
        assert len(part) == size
        assert device.part(part).is_connected
    edges = [len(device.part(part).edges) for part in parts]
    assert edges == sorted(edges, reverse=True)


def test_pictures_and_fits():
    used = Circuit(4, [Gate.cnot(0, 1), Gate.cnot(0, 1), Gate.h(3), Gate.cz(2, 3)])
    assert not STAR.fits(used)
    assert STAR.fits(Circuit(4, used.gates[:3]))
    assert not STAR.fits(CnotCircuit(5))
    assert not STAR.fits(Circuit(4, [Gate("XX", (0, 1, 2), (0.1, 0.2))]))
    picture = ElementTree.fromstring(STAR.draw(used))
    lines = [line.get("class") for line in picture if line.tag.endswith("line")]
    assert sorted(lines) == ["e", "e", "u", "x"]
    assert sum(1 for each in picture if each.tag.endswith("circle")) == 4
    for device in (Device(0, []), Device.line(1), LINE_AND_DOT, Device.named("tokyo")):
        ElementTree.fromstring(device._repr_svg_())
    # Neighbours on paper are neighbours on the device.
    places = [
        (float(c.get("cx")), float(c.get("cy")))
        for c in ElementTree.fromstring(Device.grid(3, 4).draw())
        if c.tag.endswith("circle")
    ]
    edges = Device.grid(3, 4).edges
    longest = max(math.dist(places[a], places[b]) for a, b in edges)
    pairs = itertools.combinations(range(12), 2)
    assert longest < min(math.dist(places[a], places[b]) for a, b in pairs if (a, b) not in edges)


# --- the core -----------------------------------------------------------------------------------


@given(device_edges(most=10), st.data())
def test_trees_join_their_terminals(case, data):
    device = Device(*case)
    graph = graph_of(device)
    graph.set_shortest_paths()
    vertices = st.integers(0, device.n - 1)
    terminals = data.draw(st.lists(vertices, min_size=1, unique=True))
    for tree in (graph.steiner_tree(terminals), core.steiner_good(graph, terminals)):
        assert set(terminals) <= tree.vertices
        assert len(tree.edges()) == len(tree.vertices) - 1
        assert on_edges(device, tree.edges())
        gates = [g.qbits for g in core.fan_in_on_tree(tree, terminals, terminals[0])]
        assert on_edges(device, gates)
        assert set(np.flatnonzero(replay(device.n, gates)[terminals[0]])) == set(terminals)


def test_graphs_answer_as_the_library_does():
    graph = graph_of(STAR)
    graph.set_shortest_paths()
    assert graph.shortest_paths[1][2] == [1, 0, 2]
    assert graph.shortest_paths == core.compute_all_shortest_paths_lemon(graph_of(STAR))
    assert (graph.is_connected(), graph.is_non_cutting(0), graph.is_non_cutting(1)) == (1, 0, 1)
    graph.disconnect(2)
    graph.update_shortest_paths()
    assert (graph.shortest_paths[1][2], graph.nb_vertices()) == ([], 4)
    assert core.BlossomAlgorithm([[0, 5, 1], [0, 0, 1], [0, 0, 0]], 3) == (5.0, [(0, 1)])
    assert [len(seeds) <= 2**k for k, seeds in enumerate(core.get_seed_sets(17))] == [True] * 4

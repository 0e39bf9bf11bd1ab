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

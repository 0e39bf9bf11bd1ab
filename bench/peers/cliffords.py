"""Clifford operators, graph states, and rotations on the edges of devices, side by side with other
packages.

Their circuits leave the qubits where they please; ours on a device start and end in place. Ours are
verified; of theirs on a device the edges are checked.
"""

from __future__ import annotations

import sys
from collections.abc import Callable, Sequence
from functools import partial
from statistics import mean
from typing import Any

import rotations
from pytket import Circuit as PytketCircuit
from pytket.passes import GreedyPauliSimp
from qiskit import QuantumCircuit
from qiskit.quantum_info import Clifford
from routing import DEVICES, Cost, Timer, pytket_on, qiskit_on

import zeltbraidwerk as zb
from zeltbraidwerk import gallery

Method = Callable[[Any, zb.Device, Timer], Cost]


def _plain(operator: zb.CliffordTableau) -> zb.Circuit:
    return zb.clifford.synthesize(operator, method="elimination").circuit


def _in_qiskit(given: Any) -> QuantumCircuit:
    if isinstance(given, dict):
        return rotations.to_qiskit(given)
    source = QuantumCircuit(given.n)
    source.append(Clifford(_plain(given).to_qiskit()), range(given.n))
    return source


def _in_pytket(given: Any) -> PytketCircuit:
    if isinstance(given, dict):
        return rotations.to_pytket(given)
    if isinstance(given, zb.CliffordTableau):
        return _plain(given).to_pytket()
    source = PytketCircuit(len(given))
    for q in range(len(given)):
        source.H(q)
    for a, b in zip(*given.nonzero(), strict=True):
        if a < b:
            source.CZ(int(a), int(b))
    return source


def qiskit_default(given: Any, device: zb.Device, timed: Timer) -> Cost:
    return qiskit_on(_in_qiskit(given), device, timed)


def pytket_greedy(given: Any, device: zb.Device, timed: Timer) -> Cost:
    """GreedyPauliSimp, and on a device its default routing of that."""
    return pytket_on(_in_pytket(given), device, timed, [GreedyPauliSimp()])


def ours(seconds: float, **options: object) -> Method:
    def run(given: Any, device: zb.Device, timed: Timer) -> Cost:
        if isinstance(given, dict):
            synthesize = partial(zb.pauli.synthesize, order="free")
        elif isinstance(given, zb.CliffordTableau):
            synthesize = zb.clifford.synthesize
        else:
            synthesize = zb.graph_state.synthesize
        chosen = {"method": "search", "seed": 1, "budget": seconds} | options
        if not _everywhere(device):
            chosen["device"] = device
        result, spent = timed(lambda: synthesize(given, **chosen))
        if not result.verify():
            sys.exit("ours: the circuit is wrong")
        return result.count, result.depth, spent

    return run


def _everywhere(device: zb.Device) -> bool:
    return 2 * len(device.edges) == device.n * (device.n - 1)


def _line(label: str, given: Sequence[Any], device: zb.Device, timed: Timer, our: Method) -> None:
    cells = []
    for method in (qiskit_default, pytket_greedy, our):
        if isinstance(given[0], (dict, zb.CliffordTableau)) or method is not qiskit_default:
            costs = [method(one, device, timed) for one in given]
            count, depth, seconds = (mean(column) for column in zip(*costs, strict=True))
            cells.append(f"{count:.1f}/{depth:.1f}/{seconds:.2f}")
        else:
            cells.append("-")
    print(" ".join([label.ljust(30), *(cell.rjust(22) for cell in cells)]), flush=True)


def main(timed: Timer, quick: bool) -> None:
    print("\nClifford operators, graph states, UCCSD on devices: CNOTs / depth / s")
    heads = ("Qiskit, level 3", "pytket, greedy", "search")
    print(" ".join(["input".ljust(30), *(head.rjust(22) for head in heads)]))
    few = 2 if quick else 5
    free = ours(1, permutation="free")
    for n in (8, 16, 32):
        everywhere = zb.Device.all_to_all(n)
        _line(f"Clifford {n}", gallery.random_clifford(n, few), everywhere, timed, free)
    for n in (20, 30, 50):
        graphs = [gallery.random_graph(n, seed) for seed in range(1, few + 1)]
        _line(f"graph state {n}", graphs, zb.Device.all_to_all(n), timed, ours(1))
    devices = {name: DEVICES[name] for name in ("4 x 4 grid", "line of 16", "tokyo")}
    for name, device in devices.items():
        operators = gallery.random_clifford(device.n, few)
        _line(f"Clifford on {name}", operators, device, timed, ours(5))
    for molecule, size in list(rotations.MOLECULES.items())[: 1 if quick else 3]:
        strings = rotations.small_angles(gallery.uccsd(*size))
        for name, device in devices.items():
            _line(f"UCCSD {molecule} on {name}", [strings], device, timed, ours(30))

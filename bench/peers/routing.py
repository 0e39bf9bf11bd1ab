"""Circuits on the edges of devices, side by side with other packages.

Their circuits do all that the source does, up to where its qubits stand; ours with the tail handed
back leave a Clifford operator to whoever reads out, so that closed ones stand beside them. Ours are
verified; of theirs the edges are checked.
"""

from __future__ import annotations

import random
import sys
from collections.abc import Callable, Iterator, Sequence
from pathlib import Path
from statistics import mean

from pytket import Circuit as PytketCircuit
from pytket.architecture import Architecture
from pytket.passes import BasePass, DecomposeBoxes, DefaultMappingPass, SynthesiseTket
from pytket.transform import Transform
from qiskit import QuantumCircuit, transpile
from qiskit.transpiler import CouplingMap

import zeltbraidwerk as zb
from zeltbraidwerk import Gate, gallery

Timer = Callable[..., tuple[object, float]]
Cost = tuple[int, int, float]  # CNOTs, depth, seconds

DEVICES = {
    "4 x 4 grid": zb.Device.grid(4, 4),
    "line of 16": zb.Device.line(16),
    "tokyo": zb.Device.named("tokyo"),
    "singapore": zb.Device.named("singapore"),
}
MOST_GATES = 2000


def random_circuit(n: int, gates: int, seed: int) -> zb.Circuit:
    rng = random.Random(seed)
    drawn = []
    for _ in range(gates):
        a, b = rng.sample(range(n), 2)
        drawn.append(rng.choice((Gate.cnot(a, b), Gate.cnot(a, b), Gate.h(a), Gate.rz(a, 0.25))))
    return zb.Circuit(n, drawn)


def inputs(quick: bool, folder: Path | None) -> Iterator[tuple[str, zb.Circuit]]:
    yield "multiplier, GF(16)", gallery.multiplier()
    if quick:
        return
    yield "random, 9 qubits", random_circuit(9, 300, 1)
    yield "random, 16 qubits", random_circuit(16, 600, 2)
    for file in sorted(folder.glob("*.qasm")) if folder else ():
        circuit = zb.Circuit.of(file)
        if circuit.gate_count <= MOST_GATES:
            yield file.stem, circuit


def qiskit_routed(
    source: QuantumCircuit, device: zb.Device, timed: Timer
) -> tuple[QuantumCircuit, float]:
    """Level 3, to CX and gates on one qubit on the device's edges."""
    couplings = CouplingMap([pair for a, b in device.edges for pair in ((a, b), (b, a))])
    return timed(
        lambda: transpile(
            source, coupling_map=couplings, basis_gates=["cx", "rz", "sx", "x"],
            optimization_level=3, seed_transpiler=1,
        )
    )  # fmt: skip


def qiskit_on(source: QuantumCircuit, device: zb.Device, timed: Timer) -> Cost:
    found, seconds = qiskit_routed(source, device, timed)
    pairs = [
        tuple(found.find_bit(qubit).index for qubit in gate.qubits)
        for gate in found.data
        if len(gate.qubits) == 2
    ]
    return _cost(pairs, device, seconds)


def pytket_on(
    source: PytketCircuit, device: zb.Device, timed: Timer, first: Sequence[BasePass] = ()
) -> Cost:
    """The passes ``first``, then the default placement and routing."""
    architecture = Architecture(list(device.edges))
    passes = (DecomposeBoxes(), *first, DefaultMappingPass(architecture))

    def run() -> PytketCircuit:
        routed = source.copy()
        for one in passes:
            one.apply(routed)
        Transform.DecomposeSWAPtoCX(architecture).apply(routed)
        Transform.DecomposeBRIDGE().apply(routed)
        SynthesiseTket().apply(routed)
        return routed

    found, seconds = timed(run)
    pairs = [
        tuple(qubit.index[0] for qubit in command.qubits)
        for command in found
        if len(command.qubits) == 2
    ]
    return _cost(pairs, device, seconds)


def qiskit_default(circuit: zb.Circuit, device: zb.Device, timed: Timer) -> Cost:
    return qiskit_on(circuit.to_qiskit(), device, timed)


def pytket_default(circuit: zb.Circuit, device: zb.Device, timed: Timer) -> Cost:
    return pytket_on(circuit.to_pytket(), device, timed)


def ours(**options: object):
    def run(circuit: zb.Circuit, device: zb.Device, timed: Timer) -> Cost:
        result, seconds = timed(lambda: zb.routing.route(circuit, device, **options))
        if not result.verify():
            sys.exit(f"{options}: the circuit is wrong")
        return result.count, result.depth, seconds

    return run


def _cost(pairs: list[tuple[int, ...]], device: zb.Device, seconds: float) -> Cost:
    circuit = zb.CnotCircuit(device.n, pairs)
    if not device.fits(circuit):
        sys.exit("a CNOT that is on no edge")
    return circuit.count, circuit.depth, seconds


PEERS = (
    ("Qiskit, level 3", qiskit_default),
    ("pytket, default", pytket_default),
    ("handed back", ours(tail="return")),
    ("one step ahead", ours(lookahead=1, tail="return")),
    ("two steps ahead", ours(lookahead=2, tail="return")),
    ("for depth", ours(objective="depth", tail="return")),
    ("closed", ours()),
    ("two, closed", ours(lookahead=2)),
)


def main(timed: Timer, quick: bool, folder: Path | None = None) -> None:
    for name, device in DEVICES.items():
        print(f"\nCircuits on the edges of {name}: CNOTs / depth / ms")
        heads = ["input".ljust(20), "CNOTs before", *(peer.rjust(18) for peer, _ in PEERS)]
        print(" ".join(heads))
        before, after = [], []
        for label, circuit in inputs(quick, folder):
            if circuit.n > device.n:
                continue
            costs = [method(circuit, device, timed) for _, method in PEERS]
            before.append(circuit.two_qubit_count)
            after.append([count for count, *_ in costs])
            cells = [f"{count}/{depth}/{1e3 * s:.1f}".rjust(18) for count, depth, s in costs]
            print(" ".join([label.ljust(20), str(before[-1]).rjust(12), *cells]), flush=True)
        totals = [sum(column) / sum(before) for column in zip(*after, strict=True)]
        ratios = [f"{total:.2f}".rjust(18) for total in totals]
        print(" ".join(["all, after / before".ljust(20), f"{mean(before):.0f}".rjust(12), *ratios]))

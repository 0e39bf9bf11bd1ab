"""Whole circuits side by side with other packages: those of bench/circuits, circuits of generic
rotations, and both on devices.

Every package gets the same OpenQASM text. Its circuit does all that the source does. Outputs of
pytket may change places, and so may ours in the column "wires free"; the permutation is known.
Their circuits of up to MOST_SIMULATED qubits are compared with the source by what they do to a
random state; ours are verified at every size. Packages that take minutes are left out of larger
circuits, by the limits below. Ours gets BUDGET seconds, for large circuits LARGE_BUDGET: what it
finds in them depends a little on the machine.
"""

from __future__ import annotations

import sys
from collections.abc import Callable, Iterator, Sequence
from dataclasses import dataclass
from functools import partial
from pathlib import Path

import pyzx
import routing
from published import published
from pytket import Circuit as PytketCircuit
from pytket.circuit import OpType
from pytket.passes import AutoRebase, BasePass, FullPeepholeOptimise, GreedyPauliSimp
from pytket.qasm import circuit_from_qasm_str
from qiskit import QuantumCircuit, transpile
from qiskit.quantum_info import Statevector, random_statevector

import zeltbraidwerk as zb
from zeltbraidwerk import gallery

Timer = Callable[..., tuple[object, float]]

FOLDER = Path(__file__).parents[1] / "circuits"
BUDGET = 5.0  # seconds
LARGE = 1700  # two-qubit gates; such circuits get
LARGE_BUDGET = 30.0
MOST_SIMULATED = 12  # qubits
QUICK = 60  # two-qubit gates, with --quick

# The most two-qubit gates of a circuit that a package gets.
MOST_QISKIT = 100_000
MOST_PYTKET = 2_000
MOST_GREEDY = 700  # GreedyPauliSimp
MOST_PYZX = 700
MOST_EXTRACTED = 120  # full_optimize, and full_reduce with extraction


@dataclass(frozen=True)
class Input:
    name: str
    text: str  # OpenQASM 2
    circuit: zb.Circuit

    @property
    def before(self) -> int:
        return self.circuit.two_qubit_count


@dataclass(frozen=True)
class Outcome:
    """Two-qubit gates, and the processor time of one run."""

    count: int
    seconds: float

    def __str__(self) -> str:
        return f"{self.count} / {self.seconds:.1f}"


Peer = Callable[[Input, Timer], "Outcome | None"]


def of_folder(most: int) -> list[Input]:
    inputs = []
    for file in FOLDER.glob("*.qasm"):
        text = file.read_text(encoding="ascii")
        inputs.append(Input(file.stem, text, zb.Circuit.of(text)))
    return sorted((one for one in inputs if one.before <= most), key=lambda one: one.before)


def generic(quick: bool) -> Iterator[Input]:
    """Circuits most of whose rotations are no multiples of pi/4."""
    made = {
        "hardware-efficient 4, 3": gallery.hardware_efficient(4, 3),
        "controlled rotations 4": gallery.controlled_rotations(4),
        "phase estimation 4": gallery.phase_estimation(4),
        "QAOA 6, 2": gallery.qaoa(6, 2),
    }
    if not quick:
        made |= {
            "hardware-efficient 8, 4": gallery.hardware_efficient(8, 4),
            "ring 8, 4": gallery.hardware_efficient(8, 4, entangler="ring"),
            "full 6, 3": gallery.hardware_efficient(6, 3, entangler="full"),
            "controlled rotations 8": gallery.controlled_rotations(8),
            "phase estimation 8": gallery.phase_estimation(8),
            "QAOA 12, 3": gallery.qaoa(12, 3),
        }
    for name, circuit in made.items():
        yield Input(name, circuit.to_qasm(), circuit)


def qiskit_level_3(source: Input, timed: Timer) -> Outcome | None:
    if source.before > MOST_QISKIT:
        return None
    given = QuantumCircuit.from_qasm_str(source.text)
    found, seconds = timed(
        lambda: transpile(
            given, basis_gates=["cx", "rz", "sx", "x"], optimization_level=3, seed_transpiler=1
        )
    )
    wires = found.layout.final_index_layout() if found.layout else range(source.circuit.n)
    check("Qiskit", source, found, wires)
    return Outcome(sum(len(gate.qubits) == 2 for gate in found.data), seconds)


def pytket_best(source: Input, timed: Timer) -> Outcome | None:
    """FullPeepholeOptimise, alone and after GreedyPauliSimp: the better count, both times."""
    if source.before > MOST_PYTKET:
        return None
    given = circuit_from_qasm_str(source.text)
    found = [pytket_by((FullPeepholeOptimise(),), given, timed)]
    if source.before <= MOST_GREEDY:
        plain = AutoRebase({OpType.CX, OpType.Rz, OpType.Rx})  # GreedyPauliSimp takes no Toffolis
        found.append(pytket_by((plain, GreedyPauliSimp(), FullPeepholeOptimise()), given, timed))
    for circuit, _ in found:
        check("pytket", source, zb.Circuit.from_pytket(circuit).to_qiskit())
    return Outcome(
        min(circuit.n_2qb_gates() for circuit, _ in found), sum(seconds for _, seconds in found)
    )


def pytket_by(
    passes: Sequence[BasePass], given: PytketCircuit, timed: Timer
) -> tuple[PytketCircuit, float]:
    def run() -> PytketCircuit:
        circuit = given.copy()
        for one in passes:
            one.apply(circuit)
        return circuit

    return timed(run)


def pyzx_best(source: Input, timed: Timer) -> Outcome | None:
    """teleport_reduce; for small circuits also full_optimize, and full_reduce with extraction."""
    if source.before > MOST_PYZX:
        return None
    given = pyzx.Circuit.from_qasm(source.text).to_basic_gates()
    methods = [teleported]
    if source.before <= MOST_EXTRACTED:
        methods += [lambda circuit: pyzx.full_optimize(circuit, quiet=True), extracted]
    outcomes = []
    for method in methods:
        circuit, seconds = timed(lambda method=method: method(given.copy()))
        circuit = circuit.to_basic_gates()
        check("PyZX", source, zb.Circuit.of(circuit.to_qasm()).to_qiskit())
        outcomes.append(Outcome(circuit.twoqubitcount(), seconds))
    return Outcome(min(one.count for one in outcomes), sum(one.seconds for one in outcomes))


def teleported(circuit: pyzx.Circuit) -> pyzx.Circuit:
    graph = pyzx.teleport_reduce(circuit.to_graph())
    return pyzx.basic_optimization(pyzx.Circuit.from_graph(graph).to_basic_gates(), quiet=True)


def extracted(circuit: pyzx.Circuit) -> pyzx.Circuit:
    graph = circuit.to_graph()
    pyzx.full_reduce(graph)
    found = pyzx.extract_circuit(graph.copy()).to_basic_gates()
    return pyzx.basic_optimization(found, quiet=True)


def check(
    name: str, source: Input, found: QuantumCircuit, wires: Sequence[int] | None = None
) -> None:
    """Ends the program where a random state shows that the circuit is another operator.

    Qubit q of the source ends on wire ``wires[q]``.
    """
    n = source.circuit.n
    if n > MOST_SIMULATED:
        return
    start = random_statevector(2**n, seed=1)
    wanted, state = (start.evolve(circuit) for circuit in (source.circuit.to_qiskit(), found))
    if wires is not None:
        axes = [n - 1 - wires[n - 1 - k] for k in range(n)]  # qubit 0 is the last axis
        state = Statevector(state.data.reshape([2] * n).transpose(axes).reshape(-1))
    if abs(wanted.inner(state)) < 1 - 1e-6:
        sys.exit(f"{name} on {source.name}: the circuit is wrong")


def budget(source: Input) -> float:
    return LARGE_BUDGET if source.before >= LARGE else BUDGET


def ours(source: Input, timed: Timer, **options: object) -> tuple[zb.Optimization, float]:
    result, seconds = timed(lambda: zb.optimize(source.circuit, seed=1, **options), runs=1)
    if not result.verify():
        sys.exit(f"ours on {source.name}: the circuit is wrong")
    return result, seconds


PEERS: tuple[tuple[str, Peer], ...] = (
    ("Qiskit, level 3", qiskit_level_3),
    ("pytket", pytket_best),
    ("PyZX", pyzx_best),
)
HEADS = ("circuit", "qubits", "before", *(name for name, _ in PEERS), "published",
         "ours, default", f"in {BUDGET:g} s", "wires free", "rotations", "T")  # fmt: skip
WIDTHS = (24, 6, 7, 15, 15, 15, 12, 15, 15, 15, 15, 13)


def compare(title: str, inputs: Sequence[Input], peers: Sequence[tuple[str, Peer]],
            timed: Timer) -> None:  # fmt: skip
    """One row per circuit, then the sums of each package beside ours on the same circuits."""
    print(f"\n{title}: two-qubit gates / seconds\n{_line(HEADS)}")
    rows: list[tuple[int, int, dict[str, Outcome]]] = []  # before, ours, peers
    for source in inputs:
        found = {name: outcome for name, peer in peers if (outcome := peer(source, timed))}
        short, short_seconds = ours(source, timed)
        result, seconds = ours(source, timed, budget=budget(source))
        free, free_seconds = ours(source, timed, budget=budget(source), permutation="free")
        before, after = result.before, result.after
        cells = [str(found.get(name, "-")) for name, _ in PEERS]
        print(_line((
            source.name, source.circuit.n, source.before, *cells, published(source.name),
            Outcome(short.count, short_seconds), Outcome(result.count, seconds),
            Outcome(free.count, free_seconds),
            f"{before.rotations} -> {after.rotations}", f"{before.t} -> {after.t}",
        )), flush=True)  # fmt: skip
        rows.append((source.before, result.count, found))
    before, our = sum(row[0] for row in rows), sum(row[1] for row in rows)
    print(f"all {len(rows)}: before {before}, ours {our}")
    for name, _ in peers:
        on = [(before, found[name].count, our) for before, our, found in rows if name in found]
        before, theirs, our = (sum(column) for column in zip(*on, strict=True))
        print(f"the {len(on)} that {name} got: before {before}, {name} {theirs}, ours {our}")


# Circuits and devices.
ON_DEVICES = (
    ("barenco_tof_5", "4 x 4 grid"),
    ("vbe_adder_3", "4 x 4 grid"),
    ("vbe_adder_3", "line of 16"),
    ("rc_adder_6", "4 x 4 grid"),
    ("gf2^4_mult", "4 x 4 grid"),
    ("grover_5", "4 x 4 grid"),
    ("mod_red_21", "tokyo"),
    ("hwb6", "tokyo"),
    ("csla_mux_3", "tokyo"),
    ("tof_5", "heavy hex"),
    ("barenco_tof_4", "heavy hex"),
    ("mod5_4", "line of 16"),
    ("qft_4", "4 x 4 grid"),
    ("mod_mult_55", "heavy hex"),
    ("random, 9 qubits", "4 x 4 grid"),
)
DEVICES = routing.DEVICES | {"heavy hex": zb.Device.heavy_hex(3, 5)}


def for_devices() -> dict[str, Input]:
    """The circuits that ON_DEVICES names, and others."""
    drawn = routing.random_circuit(9, 300, 1)
    inputs = {source.name: source for source in of_folder(1000)}
    return inputs | {"random, 9 qubits": Input("random, 9 qubits", drawn.to_qasm(), drawn)}


def on_devices(timed: Timer, quick: bool) -> None:
    """From a circuit to one on the edges of a device. The packages' qubits end where they leave
    them, and so do ours where outputs are free; in place, each ends where it started."""
    methods = (
        ("Qiskit, level 3", lambda one, device: routing.qiskit_default(one.circuit, device, timed)),
        ("pytket, default", lambda one, device: routing.pytket_default(one.circuit, device, timed)),
        *(
            (f"{router}, {ends}",
             partial(ours_on, timed=timed, router=router, permutation=permutation))
            for ends, permutation in (("free", "free"), ("in place", "exact"))
            for router in ("own", "qiskit")
        ),
    )  # fmt: skip
    heads, widths = ("circuit", "device", "before", *(name for name, _ in methods)), (24, 12, 7)
    widths += (16,) * len(methods)
    print(f"\nOn the edges of devices: two-qubit gates / seconds\n{_line(heads, widths)}")
    inputs = for_devices()
    rows = []
    for name, place in ON_DEVICES[:2] if quick else ON_DEVICES:
        source, device = inputs[name], DEVICES[place]
        costs = [method(source, device) for _, method in methods]
        cells = [Outcome(count, seconds) for count, _, seconds in costs]
        print(_line((name, place, source.before, *cells), widths), flush=True)
        rows.append([source.before, *(count for count, *_ in costs)])
    print(_line(("all", "", *map(sum, zip(*rows, strict=True))), widths))


def ours_on(source: Input, device: zb.Device, timed: Timer, **options: object) -> routing.Cost:
    result, seconds = ours(source, timed, device=device, budget=BUDGET, **options)
    return result.count, result.depth, seconds


def main(timed: Timer, quick: bool) -> None:
    most = QUICK if quick else sys.maxsize
    compare("Whole circuits", of_folder(most), PEERS, timed)
    compare("Circuits of generic rotations", list(generic(quick)), PEERS[:2], timed)
    on_devices(timed, quick)


def _line(cells: Sequence[object], widths: Sequence[int] = WIDTHS) -> str:
    return " ".join(str(cell).rjust(width) for cell, width in zip(cells, widths, strict=True))

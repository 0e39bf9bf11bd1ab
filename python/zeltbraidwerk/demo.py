"""Shows the package at work: ``python -m zeltbraidwerk.demo [file]``, or ``records`` for a file.

Without a file it makes three circuits shorter, and synthesises MixColumns of AES and other inputs
by every method. A file holds another matrix, one line of 0 and 1 per row. "records" computes the
shortest known circuits of ciphers again, from their seeds, in a few minutes. Every circuit is
checked by replaying it gate by gate, without the code that built it.
"""

from __future__ import annotations

import argparse
import os
import sys
import time
from collections.abc import Callable, Iterable, Iterator, Sequence
from dataclasses import dataclass
from pathlib import Path
from typing import Any

import numpy as np

import zeltbraidwerk as zb
from zeltbraidwerk import CnotCircuit, _files, _records, _texts, gallery
from zeltbraidwerk.errors import Error, UnfinishedError
from zeltbraidwerk.gallery import BoolArray
from zeltbraidwerk.linear import LinearSynthesis

SMALL = np.array([[1, 0, 1, 0], [1, 1, 0, 0], [0, 1, 1, 1], [1, 1, 1, 1]], dtype=bool)
DRAWN_WIRES = 8  # what fits into a terminal
RUNS: dict[str, Any] = {"restarts": 20, "budget": 1.0}  # of one method
AUTO: dict[str, Any] = {"restarts": 1000, "budget": 2.0, "jobs": None}
DEVICE_RUNS: dict[str, dict[str, Any]] = {  # where it is not one run of each method
    "steiner": {"restarts": 200},
    "row_column": {"restarts": 200},
    "search": {"steps": 200_000},
}


# Qubit 8 changes where qubits 0 to 4 are all 1; qubits 5 to 7 are 0 before and after.
TOFFOLI = """
qreg q[9];
ccx q[0],q[1],q[5]; ccx q[2],q[5],q[6]; ccx q[3],q[6],q[7];
ccx q[4],q[7],q[8];
ccx q[3],q[6],q[7]; ccx q[2],q[5],q[6]; ccx q[0],q[1],q[5];
"""


class InputError(Exception):
    """The user's file does not hold an invertible matrix; the text says why."""


class Screen:
    """Standard output, with colour and a progress line where a person looks at it."""

    def __init__(self) -> None:
        self.live = sys.stdout.isatty()
        self.colour = self.live and not os.environ.get("NO_COLOR")
        self.unicode = "utf" in (sys.stdout.encoding or "").lower()

    def style(self, text: str, code: str) -> str:
        return f"\033[{code}m{text}\033[0m" if self.colour else text

    def title(self, text: str) -> None:
        print("\n" + self.style(text, "1"))

    def note(self, text: str) -> None:
        print(self.style(text, "2"))

    def progress(self, text: str) -> None:
        if self.live:
            print(f"\r\033[K{self.style(text, '2')}", end="", flush=True)

    def counting(self, name: str, unit: str) -> Callable[[int], None]:
        """Shows that ``name`` is at work; what it returns shows the best found so far."""
        self.progress(f"{name} ...")
        return lambda best: self.progress(f"{name} ... {best} {unit} so far")

    def table(self, heads: Sequence[str], rows: Iterable[Sequence[str]]) -> None:
        """Prints rows as they come, each over the progress line that led to it."""
        widths = [max(len(head), 9) for head in heads]
        widths[0] = 18
        rule = ("─" if self.unicode else "-") * (sum(widths) + 2 * len(widths) - 2)
        print(self.style(_aligned(heads, widths), "1"))
        print(self.style(rule, "2"))
        for row in rows:
            self.progress("")
            print(_aligned(row, widths), flush=True)


@dataclass(frozen=True)
class Section:
    """One family of the package. ``run`` gets None as matrix when the user brought none."""

    name: str
    takes_matrix: bool
    run: Callable[[Screen, BoolArray | None, Path], bool]


def linear_section(screen: Screen, matrix: BoolArray | None, picture: Path) -> bool:
    """Every method on one matrix; True when each circuit was found right."""
    if matrix is None:
        matrix = gallery.aes_mixcolumns()
        screen.title("CNOT circuits of AES MixColumns, 32 qubits")
    else:
        screen.title(f"CNOT circuits of your matrix, {len(matrix)} qubits")
    screen.note(f"The best of {RUNS['restarts']} runs each; outputs may change places.")
    found: list[LinearSynthesis] = []
    wrong: list[str] = []

    def rows() -> Iterator[tuple[str, ...]]:
        single = [(name, RUNS) for name in zb.linear.methods() if name != "auto"]
        for method, options in [*single, ("auto", AUTO)]:
            start = time.perf_counter()
            result = _synthesised(screen, matrix, method, options)
            milliseconds = f"{1e3 * (time.perf_counter() - start):.2f}"
            if result is None:
                yield method, "-", "-", milliseconds, "not found"
                continue
            right = _replay(result.circuit, result.permutation) == _as_ints(matrix)
            found.append(result)
            wrong.extend([] if right else [method])
            verdict = "yes" if right else "NO"
            yield method, str(result.count), str(result.depth), milliseconds, verdict

    screen.table(("method", "CNOTs", "depth", "ms", "verified"), rows())
    best = min(found, key=lambda result: (result.count, result.depth))
    print(f"Shortest: {best.method}, {best.count} CNOTs at depth {best.depth}.")

    if len(matrix) <= DRAWN_WIRES:
        shown, name = best, "The shortest circuit"
    else:
        shown, name = zb.linear.synthesize(SMALL, seed=1), "A small circuit, on four qubits"
    screen.title(name)
    print(shown.circuit.draw())
    picture.write_text(best.circuit._repr_svg_(), encoding="utf-8")
    print(f"\nPicture of the shortest circuit: {picture}")
    return not wrong


def circuit_section(screen: Screen, matrix: BoolArray | None, picture: Path) -> bool:
    """Three circuits made shorter; True when each is the same operator as before."""
    screen.title("Whole circuits made shorter: zb.optimize")
    screen.note("The same operator, every output in its place.")
    right: list[bool] = []

    def rows() -> Iterator[tuple[str, ...]]:
        for name, circuit in (
            ("Toffoli, 5 controls", TOFFOLI),
            ("adder, 4 bits", _adder(4)),
            ("multiplier, GF(16)", gallery.multiplier()),
        ):
            result = zb.optimize(
                circuit, seed=1, steps=50_000, progress=screen.counting(name, "two-qubit gates")
            )
            right.append(result.verify())
            before, after = result.before, result.after
            yield (
                name, str(before.two_qubit), str(after.two_qubit), str(before.depth),
                str(after.depth), str(before.t), str(after.t), f"{1e3 * result.seconds:.0f}",
                "yes" if right[-1] else "NO",
            )  # fmt: skip

    heads = ("circuit", "2-qubit", "now", "depth", "now", "T", "now", "ms", "verified")
    screen.table(heads, rows())
    return all(right)


def device_section(screen: Screen, matrix: BoolArray | None, picture: Path) -> bool:
    """A matrix on the edges of a device; True when each circuit was found right and on edges."""
    matrix = gallery.cipher_layers()["aes_small_scale"]
    device = zb.Device.grid(4, 4)
    screen.title("MixColumns of small-scale AES, 16 qubits, on a 4 x 4 grid")
    screen.note("Every CNOT joins two neighbours, every output is in its place.")
    right: list[bool] = []
    best: CnotCircuit | None = None

    def rows() -> Iterator[tuple[str, ...]]:
        nonlocal best
        for method in zb.linear.methods(device=True):
            result = zb.linear.synthesize(
                matrix, device=device, method=method, seed=1,
                progress=screen.counting(method, "CNOTs"), **DEVICE_RUNS.get(method, {}),
            )  # fmt: skip
            replayed = _replay(result.circuit, result.permutation) == _as_ints(matrix)
            right.append(replayed and all(_joined(device, *pair) for pair in result.circuit))
            if best is None or result.count < best.count:
                best = result.circuit
            yield _row(method, result.count, result.depth, result.seconds, right[-1])

    screen.table(("method", "CNOTs", "depth", "ms", "verified"), rows())
    place = picture.with_name(f"{picture.stem}-device.svg")
    place.write_text(device.draw(best), encoding="utf-8")
    print(f"Picture of the device and how often each edge is used: {place}")
    return all(right)


def phase_section(screen: Screen, matrix: BoolArray | None, picture: Path) -> bool:
    """The phase polynomial of a real circuit; True when each circuit was found right."""
    original = gallery.multiplier()
    terms, _ = zb.phase.polynomial_of(original)
    screen.title(f"Phases of a multiplier in GF(16), {len(terms)} parities of {original.n} qubits")
    screen.note("Its Toffoli gates make one phase polynomial; the map of the CNOTs is undone.")
    right: list[bool] = []

    def rows() -> Iterator[tuple[str, ...]]:
        yield "as it was", str(original.two_qubit_count), str(original.two_qubit_depth), "-", "-"
        grid = zb.Device.grid(3, 4)
        runs = [(method, None) for method in zb.phase.methods()] + [("auto, 3 x 4 grid", grid)]
        for name, device in runs:
            result = zb.phase.synthesize(
                terms, n=original.n, method=name.partition(",")[0], device=device,
                progress=screen.counting(name, "CNOTs"),
                restarts=200 if name in ("gray", "greedy") else None, seed=1,
            )  # fmt: skip
            again, left = zb.phase.polynomial_of(result.circuit)
            on_edges = device is None or device.fits(result.circuit)
            right.append(again == terms and bool((left == np.eye(original.n)).all()) and on_edges)
            yield _row(name, result.count, result.depth, result.seconds, right[-1])

    screen.table(("method", "CNOTs", "depth", "ms", "verified"), rows())
    return all(right)


def pauli_section(screen: Screen, matrix: BoolArray | None, picture: Path) -> bool:
    """Every method on an ansatz of chemistry; "ladder" is each rotation alone."""
    ansatz = gallery.uccsd(12, 4)
    screen.title(f"The UCCSD ansatz of LiH: {len(ansatz)} Pauli rotations on 12 qubits")
    screen.note("One Trotter step each; the Clifford operator after it is undone.")
    right = _every_method(
        screen,
        zb.pauli.methods(),
        lambda name, progress: zb.pauli.synthesize(
            ansatz, method=name, order="free", seed=1, progress=progress
        ),
    )
    left_open = zb.pauli.synthesize(ansatz, method="greedy", order="free", tail="return", seed=1)
    observable = "Z" * left_open.n
    print(
        f"Not undone, by greedy: {left_open.count} CNOTs; instead of {observable} after the "
        f"rotations,\nmeasure {left_open.absorb([observable])[0]} after the circuit."
    )
    return right and left_open.verify()


def graph_state_section(screen: Screen, matrix: BoolArray | None, picture: Path) -> bool:
    """A random graph; "naive" is one gate per edge."""
    graph = gallery.random_graph(30)
    screen.title(f"Graph state of a random graph, 30 vertices, {int(np.triu(graph).sum())} edges")
    return _every_method(
        screen,
        zb.graph_state.methods(),
        lambda name, progress: zb.graph_state.synthesize(
            graph, method=name, seed=1, progress=progress
        ),
    )


def routing_section(screen: Screen, matrix: BoolArray | None, picture: Path) -> bool:
    """A real circuit on a grid and on an ion machine; True when each was found right."""
    original = gallery.multiplier()
    device = zb.Device.grid(4, 4)
    rotations = len(zb.routing.normalize(original).rotations)
    screen.title(
        f"A multiplier in GF(16), {original.n} qubits, {rotations} rotations, on a 4 x 4 grid"
    )
    screen.note("No SWAP gates. The remaining Clifford operator is returned, or closed.")
    best = zb.routing.route(original, device, lookahead=1, tail="return")
    right: list[bool] = []

    def rows() -> Iterator[tuple[str, ...]]:
        yield "anywhere", str(original.two_qubit_count), str(original.two_qubit_depth), "-", "-"
        for name, routed in (
            ("returned", lambda: zb.routing.route(original, device, tail="return")),
            ("one step ahead", lambda: best),
            ("closed", lambda: zb.routing.route(original, device)),
            ("ions, global gates", lambda: zb.routing.route_ions(original)),
        ):
            screen.progress(f"{name} ...")
            result = routed()
            right.append(result.verify())
            count = result.entangling_count
            yield _row(name, count, result.depth, result.seconds, right[-1])

    screen.table(("tail", "2-qubit", "depth", "ms", "verified"), rows())
    place = picture.with_name(f"{picture.stem}-routing.svg")
    place.write_text(device.draw(best.circuit), encoding="utf-8")
    print(f"Picture of the device and how often each edge is used: {place}")
    screen.title("A Toffoli gate on a line of three qubits, and the Clifford operator that remains")
    toffoli = zb.routing.route("qreg q[3]; ccx q[0],q[1],q[2];", zb.Device.line(3), tail="return")
    right.append(toffoli.verify())
    print(f"{toffoli.circuit.draw()}\n{toffoli.tail}")
    return all(right)


def records_section(screen: Screen, matrix: BoolArray | None, picture: Path) -> bool:
    """Circuits of ciphers, each from its seed; True when each is what the cipher defines."""
    screen.title("The shortest circuits found so far for mixing layers of ciphers")
    screen.note("Outputs change places unless it says exact. Checked by the cipher's arithmetic.")
    right: list[bool] = []

    def rows() -> Iterator[tuple[str, ...]]:
        for record in _records.RECORDS:
            screen.progress(f"{record.layer} ...")
            result = record.find()
            right.append(_records.keeps_to_definition(result, record.layer))
            goal = "exact" if record.permutation == "exact" else record.objective
            yield (
                record.layer, goal, str(result.count), str(result.depth), record.published,
                str(record.seed), f"{record.steps:,}", f"{result.seconds:.0f} s",
                "yes" if right[-1] else "NO",
            )  # fmt: skip

    heads = ("layer", "goal", "CNOTs", "depth", "published", "seed", "steps", "time", "verified")
    screen.table(heads, rows())
    return all(right)


def _every_method(
    screen: Screen,
    methods: Sequence[str],
    synthesised: Callable[[str, Callable[[int], None]], Any],
) -> bool:
    """A table of results that verify themselves, the best last; True when each is right."""
    right: list[bool] = []

    def rows() -> Iterator[tuple[str, ...]]:
        for method in [*methods[1:], methods[0]]:
            result = synthesised(method, screen.counting(method, "gates"))
            right.append(result.verify())
            yield _row(method, result.count, result.depth, result.seconds, right[-1])

    screen.table(("method", "2-qubit", "depth", "ms", "verified"), rows())
    return all(right)


SECTIONS = (
    Section("circuit", False, circuit_section),
    Section("linear", True, linear_section),
    Section("device", False, device_section),
    Section("phase", False, phase_section),
    Section("pauli", False, pauli_section),
    Section("graph state", False, graph_state_section),
    Section("routing", False, routing_section),
)


def read_matrix(path: Path) -> BoolArray:
    """The invertible matrix in a file; InputError in one line otherwise."""
    try:
        text = _files.bytes_of(path).decode("ascii")
    except Error as error:
        raise InputError(str(error)) from None
    except OSError as error:
        raise InputError(f"cannot read {path}: {error.strerror}") from None
    except UnicodeDecodeError:
        raise InputError(f"{path} is not a text of 0 and 1") from None
    if not text.strip():
        raise InputError(f"{path} is empty")
    try:
        matrix = _texts.matrix(text)
    except Error as error:
        raise InputError(f"{path}: {error}") from None
    width = len(matrix)
    if (rank := gallery.rank(_as_ints(matrix))) < width:
        raise InputError(f"{path}: the matrix is singular, of rank {rank} instead of {width}")
    return matrix


def main(arguments: Sequence[str] | None = None) -> int:
    parser = argparse.ArgumentParser(prog="demo", description="Synthesises, verifies, draws.")
    parser.add_argument(
        "file", nargs="?", type=Path, help='a matrix, one line of 0 and 1 per row; or "records"'
    )
    parser.add_argument("--picture", type=Path, help="where the picture goes (SVG)")
    options = parser.parse_args(arguments)
    records = options.file == Path("records")
    try:
        matrix = read_matrix(options.file) if options.file and not records else None
    except InputError as error:
        print(f"demo: {error}", file=sys.stderr)
        return 2
    picture = options.picture or Path("build" if Path("build").is_dir() else ".") / "demo.svg"
    screen = Screen()
    print(f"zeltbraidwerk {zb.__version__}")
    sections = [section for section in SECTIONS if matrix is None or section.takes_matrix]
    if records:
        sections = [Section("records", False, records_section)]
    try:
        # Every section runs, also after one that failed.
        outcomes = [section.run(screen, matrix, picture) for section in sections]
    except KeyboardInterrupt:
        print("\nstopped", file=sys.stderr)
        return 130
    except OSError as error:
        print(f"demo: cannot write {error.filename}: {error.strerror}", file=sys.stderr)
        return 2
    return 0 if all(outcomes) else 1


def _synthesised(
    screen: Screen, matrix: BoolArray, method: str, options: dict[str, Any]
) -> LinearSynthesis | None:
    """None when no run ended within the budget."""
    try:
        return zb.linear.synthesize(
            matrix, method=method, permutation="free", seed=1,
            progress=screen.counting(method, "CNOTs"), **options,
        )  # fmt: skip
    except UnfinishedError:
        return None


def _adder(bits: int) -> str:
    """OpenQASM of b + a into b, and the carry into the last qubit, by carries that ripple
    (S. Cuccaro et al., arXiv:quant-ph/0410184, 2004). Qubits: a carry, then b and a by turns."""
    carried = [(2 * k, 2 * k + 1, 2 * k + 2) for k in range(bits)]
    lines = [f"qreg q[{2 * bits + 2}];"]
    lines += [f"cx q[{c}],q[{b}]; cx q[{c}],q[{a}]; ccx q[{a}],q[{b}],q[{c}];"
              for a, b, c in carried]  # fmt: skip
    lines += [f"cx q[{2 * bits}],q[{2 * bits + 1}];"]
    lines += [f"ccx q[{a}],q[{b}],q[{c}]; cx q[{c}],q[{a}]; cx q[{a}],q[{b}];"
              for a, b, c in reversed(carried)]  # fmt: skip
    return "\n".join(lines)


def _replay(circuit: CnotCircuit, permutation: Sequence[int]) -> list[int]:
    """The map of a circuit, output by output, each the inputs in it as bits of an int."""
    wires = [1 << wire for wire in range(circuit.n)]
    for control, target in circuit:
        wires[target] ^= wires[control]
    return [wires[wire] for wire in permutation]


def _joined(device: zb.Device, a: int, b: int) -> bool:
    return (min(a, b), max(a, b)) in device.edges


def _row(name: str, count: int, depth: int, seconds: float, right: bool) -> tuple[str, ...]:
    return name, str(count), str(depth), f"{1e3 * seconds:.2f}", "yes" if right else "NO"


def _as_ints(matrix: BoolArray) -> list[int]:
    return [sum(1 << int(c) for c in np.flatnonzero(row)) for row in matrix]


def _aligned(cells: Sequence[str], widths: Sequence[int]) -> str:
    return "  ".join(
        [
            cells[0].ljust(widths[0]),
            *(cell.rjust(width) for cell, width in zip(cells[1:], widths[1:], strict=True)),
        ]
    )


if __name__ == "__main__":
    sys.exit(main())

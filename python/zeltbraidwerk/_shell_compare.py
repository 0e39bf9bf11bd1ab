"""The same input by all methods of a family, and circuits by other packages that are installed."""

from __future__ import annotations

import importlib.util
import time
from collections.abc import Callable, Iterator, Mapping
from typing import Any

from zeltbraidwerk import _interop, errors
from zeltbraidwerk._optimize import optimize
from zeltbraidwerk._shell_commands import Command
from zeltbraidwerk.circuits import Circuit
from zeltbraidwerk.devices import Device

_HEADS = ("method", "two-qubit", "depth", "one-qubit", "T", "seconds", "verified")
_WIDTH = 22  # of the first column

Make = Callable[[], Any]


def run(
    name: str, command: Command, value: Any, options: Mapping[str, Any],
    working: Callable[[str], None],
) -> bool:  # fmt: skip
    """Prints a table, row by row; False where a result failed its own check."""
    right = True
    print(_line(_HEADS), flush=True)
    for label, make in _rows(name, command, value, options):
        working(f"{label} ...")
        start = time.perf_counter()
        try:
            made = make()
        except errors.UnfinishedError:
            made = None
        seconds = time.perf_counter() - start
        circuit: Any = getattr(made, "circuit", made)
        checked = made.verify() if hasattr(made, "verify") else None
        right &= checked is not False
        working("")
        verdict = {None: "-", True: "yes", False: "NO"}[checked]
        cells = ("-",) * 4 if circuit is None else (
            circuit.two_qubit_count, circuit.two_qubit_depth, circuit.one_qubit_count,
            circuit.t_count,
        )  # fmt: skip
        told = "-" if made is value else f"{seconds:.2f}"
        print(_line((label, *map(str, cells), told, verdict)), flush=True)
    return right


def _line(cells: tuple[str, ...]) -> str:
    first, *rest = cells
    return "  ".join([first.ljust(_WIDTH), *(cell.rjust(9) for cell in rest)])


def _rows(
    name: str, command: Command, value: Any, options: Mapping[str, Any]
) -> Iterator[tuple[str, Make]]:
    """What each row is called, and what makes it."""
    function = command.function
    if isinstance(value, Circuit) and name in ("optimize", "route"):
        yield "as given", lambda: value
        for extra in _EXTRA[name]:
            label = " ".join([name, *(f"{key} {extra[key]}" for key in extra)])
            yield label, lambda extra=extra: function(value, **{**options, **extra})  # type: ignore[misc]
        device = options.get("device")
        if name == "route":
            yield "optimize", lambda: optimize(value, device=device)
        yield from _peers(value, device)
    elif command.methods is None:
        yield name, lambda: function(value, **options)
    else:
        methods = command.methods(device="device" in options)
        for method in [*methods[1:], *methods[:1]]:
            yield method, lambda method=method: function(value, method=method, **options)  # type: ignore[misc]


_EXTRA: dict[str, tuple[dict[str, Any], ...]] = {
    "optimize": ({}, {"objective": "depth"}, {"permutation": "free"}),
    "route": ({}, {"lookahead": 1}),
}


# --- other packages -----------------------------------------------------------------------------


def _peers(circuit: Circuit, device: Device | None) -> Iterator[tuple[str, Make]]:
    """Their defaults; where outputs end is left to them. Their circuits are not verified."""
    for package, label, make in (
        ("qiskit", "Qiskit, level 3", _qiskit),
        ("pytket", "pytket", _pytket),
    ):
        if importlib.util.find_spec(package) is not None:
            yield label, lambda make=make: make(circuit, device)  # type: ignore[misc]


def _qiskit(circuit: Circuit, device: Device | None) -> Circuit:
    edges = None
    if device is not None:
        edges = _interop._package("qiskit.transpiler").CouplingMap(
            [pair for a, b in device.edges for pair in ((a, b), (b, a))]
        )
    found = _interop._package("qiskit").transpile(
        circuit.to_qiskit(), basis_gates=["cx", "rz", "sx", "x"], optimization_level=3,
        coupling_map=edges, seed_transpiler=1,
    )  # fmt: skip
    return Circuit.from_qiskit(found)


def _pytket(circuit: Circuit, device: Device | None) -> Circuit:
    passes = _interop._package("pytket.passes")
    found = circuit.to_pytket()
    passes.FullPeepholeOptimise().apply(found)
    if device is not None:
        architecture = _interop._package("pytket.architecture").Architecture(list(device.edges))
        passes.DefaultMappingPass(architecture).apply(found)
        passes.SynthesiseTket().apply(found)
    return Circuit.from_pytket(found)

"""The families as commands: what each reads, calls and writes."""

from __future__ import annotations

import inspect
from collections.abc import Callable, Collection, Sequence
from dataclasses import dataclass
from typing import Any

from zeltbraidwerk import _shell_input, clifford, graph_state, linear, pauli, phase, routing
from zeltbraidwerk._optimize import optimize

_FORMATS = ("qasm", "json", "svg")


@dataclass(frozen=True)
class Command:
    """``function`` takes what ``reader`` makes of the name of a file and its text; ``file`` is an
    input by example."""

    about: str
    function: Callable[..., Any]
    reader: Callable[[str, str], Any]
    input: str
    file: str
    examples: Sequence[str]
    methods: Callable[..., Sequence[str]] | None = None
    formats: tuple[str, ...] = _FORMATS

    @property
    def parameters(self) -> Collection[str]:
        """The names of the arguments of the function."""
        return inspect.signature(self.function).parameters

    def read(self, path: str, text: str | None = None) -> Any:
        """What the function takes, from a file or standard input, or from its text."""
        text = _shell_input.text_of(path) if text is None else text
        with _shell_input.located(path):
            return self.reader(path, text)


COMMANDS = {
    "optimize": Command(
        "a shorter circuit of the same operator",
        optimize, _shell_input.circuit,
        "a circuit: OpenQASM 2 or 3, JSON of this package, or a .stim file", "circuit.qasm",
        (
            "optimize circuit.qasm -o shorter.qasm --seed 1",
            "optimize circuit.qasm --device grid:3x3 --objective depth -o shorter.json",
            "optimize - --budget 60 --jobs all < circuit.qasm > shorter.qasm",
        ),
    ),
    "linear": Command(
        "CNOTs for an invertible matrix over GF(2)",
        linear.synthesize, _shell_input.matrix,
        "a matrix, rows of 0 and 1, row r the inputs of output r; or a circuit of CNOTs",
        "matrix.txt",
        (
            "linear matrix.txt --permutation free -o circuit.qasm",
            "linear matrix.txt --method search --steps 1000000 --seed 1 -o program.xor",
            "linear matrix.txt --device line:4",
        ),
        linear.methods, (*_FORMATS, "xor"),
    ),
    "phase": Command(
        "CNOTs and phase gates for a phase polynomial",
        phase.synthesize, _shell_input.polynomial,
        'a parity and its angle on each line, as in "110 pi/4"; or a diagonal circuit',
        "phases.txt",
        ("phase phases.txt -o circuit.qasm", "phase phases.txt --tail return -o circuit.json"),
        phase.methods,
    ),
    "pauli": Command(
        "a circuit for Pauli rotations",
        pauli.synthesize, _shell_input.rotations,
        'a Pauli string and its angle on each line, as in "XXI 0.5", the first acts first',
        "rotations.txt",
        (
            "pauli rotations.txt -o circuit.qasm",
            "pauli rotations.txt --order free --method search --budget 10 -o circuit.json",
        ),
        pauli.methods,
    ),
    "clifford": Command(
        "a circuit for a Clifford operator",
        clifford.synthesize, _shell_input.operator,
        "a Clifford circuit; or the images of X on each qubit, then of Z, one per line",
        "clifford.txt",
        (
            "clifford clifford.txt -o circuit.qasm --seed 1",
            "clifford clifford.txt --device line:3 --objective depth",
        ),
        clifford.methods,
    ),
    "state": Command(
        "a circuit that prepares a stabilizer state",
        clifford.synthesize_state, _shell_input.state,
        "one stabilizer per line, as in +XXX; or a Clifford circuit", "stabilizers.txt",
        ("state stabilizers.txt -o circuit.qasm",),
    ),
    "encoder": Command(
        "a circuit that encodes into a stabilizer code",
        clifford.synthesize_encoder, _shell_input.code,
        "one stabilizer per line, as in +XZZXI, fewer than there are qubits", "code.txt",
        ("encoder code.txt -o encoder.qasm --seed 1", "encoder code.txt --objective depth"),
    ),
    "graph-state": Command(
        "a circuit that prepares a graph state",
        graph_state.synthesize, _shell_input.graph,
        'an edge on each line, as in "0 1"; or rows of 0 and 1 of an adjacency matrix',
        "graph.txt",
        ("graph-state graph.txt -o circuit.svg",),
        graph_state.methods,
    ),
    "route": Command(
        "a circuit on the edges of a device, from its rotations",
        routing.route, _shell_input.circuit,
        "a circuit: OpenQASM 2 or 3, JSON of this package, or a .stim file", "circuit.qasm",
        ("route circuit.qasm --device grid:3x3 -o routed.qasm",),
    ),
}  # fmt: skip

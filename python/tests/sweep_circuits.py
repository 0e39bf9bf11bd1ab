"""The families of the sweep that take whole circuits, and batches."""

import tempfile
from concurrent.futures import ThreadPoolExecutor
from dataclasses import replace
from functools import lru_cache
from pathlib import Path

import numpy as np
from support import gate_matrix
from sweep_draws import EXACT, KINDS
from sweep_families import Case, assert_front, graph_state, identity, linear, pauli, phase
from sweep_oracles import (
    AXES,
    Frame,
    Unfolded,
    assert_report,
    assert_same,
    inverse_of,
    near,
    plain,
    read,
    size_of,
    value,
)

import zeltbraidwerk as zb
from zeltbraidwerk import Circuit, CliffordTableau, Gate
from zeltbraidwerk.instructions import Barrier

PACKAGES = ("qasm3", "qiskit", "pytket", "pyzx", "cirq", "pennylane")
BASES = ("cx", "cz", "ecr", "iswap", "rzz")
DENSE = 5  # qubits up to which operators are compared as matrices
CLOSE = 1e-8  # entries of matrices


# --- matrices -----------------------------------------------------------------------------------


@lru_cache(maxsize=4096)
def matrix_of(name, qubits, n):
    return gate_matrix(Gate(name, qubits), n)


def columns(circuit, places=None, n=None):
    """What the circuit makes of all states of few qubits, or of three random ones."""
    n = circuit.n if n is None else n
    draws = np.random.default_rng(n)
    state = np.eye(2**n, dtype=complex)
    if n > 3:
        state = draws.normal(size=(2**n, 3)) + 1j * draws.normal(size=(2**n, 3))
        state /= np.linalg.norm(state, axis=0)
    for gate in circuit:
        if not isinstance(gate, Gate):
            continue
        qubits = gate.qubits if places is None else tuple(places[q] for q in gate.qubits)
        if gate.name in AXES:
            angle = value(gate.params[0])
            axis = matrix_of(AXES[gate.name], qubits, n)
            phase = np.exp(0.5j * angle) if gate.name == "PH" else 1.0
            state = phase * (np.cos(angle / 2) * state - 1j * np.sin(angle / 2) * (axis @ state))
        elif gate.params:
            angles = [value(angle) for angle in gate.params]
            state = gate_matrix(Gate(gate.name, qubits, angles), n) @ state
        else:
            state = matrix_of(gate.name, qubits, n) @ state
    return state


def assert_columns(found, wanted, n, pairs=(), phase=None):
    """That both are alike; up to a phase where none is given. ``pairs`` as for assert_same."""
    order = list(range(n))
    for before, after in pairs:
        order[before] = after
    found = found.reshape((2,) * n + (-1,)).transpose([*order, n]).reshape(wanted.shape)
    if phase is None:
        phase = np.angle(np.vdot(found, wanted))
    distance = np.abs(np.exp(1j * phase) * found - wanted).max(initial=0.0)
    assert distance < CLOSE, f"entries differ by {distance:.1e}"


# --- whole circuits -----------------------------------------------------------------------------


def largest_part(ground):
    """The qubits of the largest connected part of a device."""
    parts = [near(ground, range(ground[0]), q, ground[0]) for q in range(ground[0])]
    return sorted(max(parts, key=len))


def source_circuit(draw, n, width, most):
    """With angles that windows of numbers leave alone where the operator is not compared as a
    matrix."""
    kind = draw.choice((None, "eighths", *(KINDS if width <= DENSE else EXACT)))
    return Circuit(n, draw.circuit_gates(n, draw.choice((3, 2 * n, most)), kind))


def optimized(draw, n):
    draw.used = n = max(min(n, 40), 1)
    ground = draw.ground(n, 0.15) if n <= 10 else None
    width = n if ground is None else ground[0]
    exact = draw.chance(0.3)
    source = source_circuit(draw, n, 0 if exact else width, 40)
    options = draw.options(ground, objective=["count", "depth", "t"], permutation=["exact", "free"])
    options |= {"objective": draw.choice(("count", "depth", "t")), "exact": exact}
    options["keep_depth"] = ground is None and draw.chance(0.2)
    del options["method"]
    if ground is not None:
        options["steps"] = min(options.get("steps", 0), 50)
        if draw.chance(0.3):
            options["placement"] = draw.sample(largest_part(ground), n)
    basis = draw.choice(BASES)
    gates, ending = list(source), draw.ending(n) if draw.chance(0.1) else []
    if draw.chance(0.1):
        place = draw.randint(0, len(gates))
        gates.insert(place, Barrier(draw.sample(range(n), draw.randint(1, n))))
    given = Circuit(n, gates + ending)
    in_pieces = any(isinstance(gate, Barrier) for gate in gates)
    if ground is not None and not in_pieces and draw.chance(0.1):
        options["router"] = "qiskit"

    def check(result):
        free = options["permutation"] == "free"
        places, outputs = assert_report(replace(result, trace=()), n, ground, free)
        pairs = {wire: wire for wire in range(result.n)} | dict(zip(places, outputs, strict=True))
        pairs = list(pairs.items())
        if width <= DENSE:
            wanted = columns(result.source, places, result.n)
            phase = result.global_phase
            assert_columns(columns(result.circuit), wanted, result.n, pairs, phase)
            assert_columns(columns(result.circuit.in_basis(basis)), wanted, result.n, pairs)
        else:
            assert_same(Unfolded(result.circuit), Unfolded(source.elementary(), result.n, places),
                        pairs)  # fmt: skip
        ends = [(gate.qubits[0], gate.bit) for gate in result.circuit if hasattr(gate, "bit")]
        wanted = [(dict(pairs)[places[gate.qubit]], gate.bit) for gate in ending
                  if hasattr(gate, "bit")]  # fmt: skip
        assert sorted(ends) == sorted(wanted)
        assert options["objective"] != "t" or result.after.rotations <= result.before.rotations

    def check_all(result):
        check(result)
        assert_front(result, check)
        for first in result.front[:1]:
            assert (first.count, first.depth) == (result.count, result.depth)
        before = size_of(given)
        by_depth = options["objective"] == "depth"
        if ground is None and not by_depth:
            assert result.count <= before[0]
        # Layers are kept in each piece between barriers, not in all together.
        if ground is None and not in_pieces and (by_depth or options["keep_depth"]):
            assert result.depth <= before[1]

    return Case(zb.optimize, given, options, check_all, in_pieces)


def routed(draw, n):
    """On the edges of a device, for ions, or taken apart alone."""
    draw.used = n = max(min(n, 20), 1)
    kind = draw.choice(("route", "route", "ions", "normalize"))
    ground = (draw.ground(n, 1) if n <= 8 or kind == "route" else None) if kind == "route" else None
    angles = draw.choice(("dyadic", "eighths", "any"))
    source = Circuit(n, draw.circuit_gates(n, draw.choice((3, 2 * n, 30)), angles))
    options = {"lookahead": draw.choice((0, 0, 1) if n > 4 else (0, 1, 2))}
    if kind == "route":
        options |= {"objective": draw.choice(("count", "depth")),
                    "tail": draw.choice(("close", "return", "return")),
                    "device": zb.Device(ground[0], sorted(ground[1]))}  # fmt: skip
        if options["tail"] == "close":
            options["steps"] = draw.choice((0, draw.randint(1, 60)))
    elif kind == "normalize":
        merge = draw.chance(0.7)
        options = {"merge": merge, "repeat": merge and draw.chance(0.5)}
    elif draw.chance(0.5):
        options["shelving"] = draw.random(), draw.random()

    def check(result):
        places = assert_report(result, n, ground)[0] if kind == "route" else list(range(n))
        # Angles count as multiples of pi/2 to 1e-5 here.
        wanted = Unfolded(source.elementary(), result.n, places, within=1e-5)
        tail = Frame.of(inverse_of(*result.tail.images()), result.n, range(result.n))
        if kind == "normalize":
            found = identity(n)
            found.rotations = [plain(read(text), value(angle)) for text, angle in result.rotations]
        else:
            found = Unfolded(result.circuit, within=1e-5)
        for rows in (tail.x, tail.z):
            rows[:] = [found.frame.image(row) for row in rows]
        found.frame = tail
        assert_same(found, wanted, [(wire, wire) for wire in places])
        assert options.get("tail") != "close" or result.tail == CliffordTableau(result.n)

    return Case({"route": zb.routing.route, "ions": zb.routing.route_ions,
                 "normalize": zb.routing.normalize}[kind], source, options, check)  # fmt: skip


def formats(draw, n):
    """A circuit written and read, in the gates of machines, and fused."""
    draw.used = n = max(min(n, 30), 1)
    kind = draw.choice((None, "eighths", "any", "dyadic", "floats"))
    source = Circuit(n, draw.circuit_gates(n, draw.choice((3, 2 * n, 30)), kind))
    small = n <= DENSE
    made = draw.choice(("qasm", "json", "stim", "basis", "fused", "named", "inverse"))
    basis = draw.choice(BASES)
    if draw.chance(0.5):
        made = draw.choice((*PACKAGES, made))

    def turn(circuit):
        if made in PACKAGES:
            return through(made, circuit)
        if made == "qasm":
            text = "" if circuit.symbols else circuit.to_qasm()
            return Circuit.from_qasm(text, reader="own") if text else circuit
        if made == "json":
            return Circuit.from_json(circuit.to_json())
        if made == "stim":
            return Circuit.from_stim(circuit.to_stim()) if kind is None else circuit
        if made == "basis":
            return circuit.in_basis(basis)
        return circuit.inverse().inverse() if made == "inverse" else getattr(circuit, made)()

    def check(result):
        assert made != "json" or result == source
        if made == "basis":
            wanted = {"cx": "CNOT", "cz": "CSIGN"}.get(basis, basis.upper())
            assert {gate.name for gate in result if len(gate.qubits) > 1} <= {wanted}
        if made in ("basis", "fused"):
            assert small or made == "basis" or result.two_qubit_count == source.two_qubit_count
        if small:
            assert_columns(columns(result), columns(source), n)
        elif made not in ("basis", "fused") or kind is None:
            wires = [(q, q) for q in range(n)]
            assert_same(Unfolded(result.elementary()), Unfolded(source.elementary()), wires)

    return Case(turn, source, {}, check)


def through(package, circuit):
    """The circuit as an object of a package, or in OpenQASM 3, and back. Some leave out idle
    qubits, or put qubits in the order of their names."""
    if package == "pennylane" and circuit.symbols:
        return circuit
    found = getattr(Circuit, f"from_{package}")(getattr(circuit, f"to_{package}")())
    places = {name: q for q, name in enumerate(circuit.qubit_names)}
    return found.placed([places[name] for name in found.qubit_names], circuit.n)


TASKS = {
    "linear": ("linear.synthesize", linear), "phase": ("phase.synthesize", phase),
    "pauli": ("pauli.synthesize", pauli), "graph_state": ("graph_state.synthesize", graph_state),
}  # fmt: skip


def batch(draw, n):
    """One input some times in a batch, each with a seed of its own; the file is read again."""
    task, family = TASKS[draw.choice(sorted(TASKS))]
    draw.used = max(min(n, 12), 1)
    case = family(draw, draw.used)
    options = {key: own for key, own in case.options.items() if key not in ("seed", "budget")}

    def search(given, seed, **own):
        with tempfile.TemporaryDirectory() as folder, ThreadPoolExecutor(1) as executor:
            path = Path(folder) / "runs.jsonl"
            again = [
                [record.result for record in zb.batch.run(
                    task, [given] * 3, executor=executor, results=path, seed=seed, progress=False,
                    **own)]
                for _ in range(2)
            ]  # fmt: skip
        assert again[0] == again[1], "the file was not gone on with"
        return again[0]

    def check(results):
        for result in results:
            case.check(result)
            alone = case.search(case.given, **options | {"seed": result.seed})
            assert alone == result, "another result alone"

    return Case(search, case.given, options | {"seed": draw.getrandbits(16)}, check)

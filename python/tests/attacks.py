"""Hostile inputs, each in a process of its own with little memory and time.

    attacks.py                 the whole table, one row per call: what came back, seconds, memory
    attacks.py --quick         without the calls that take seconds
    attacks.py --gigabytes 8   with more memory than 2 GB

A call may be refused by an error of this package, or a ValueError, TypeError or IndexError with a
text of its own; it may return; and after so many seconds it must answer Ctrl-C. It may not end its
process, run out of memory, hang, or raise anything else. The end tells how many did, and is 1 then.
"""

# ruff: noqa: E501

import argparse
import json
import os
import pickle
import random
import re
import resource
import signal
import sys
import tempfile
import time
from dataclasses import dataclass

import numpy as np
from fuzz_core import wrong_kind

import zeltbraidwerk as zb
from zeltbraidwerk import core, errors

SECONDS = 5.0  # of processor time, after which Ctrl-C comes
GRACE = 1.0  # from then to the end of the call
WAITING = 120.0  # of the clock, for what waits and takes no processor time

# Each raises a TooLargeError.
TOO_LARGE = r"""
# circuits
zb.Circuit(HUGE)
zb.Circuit(2, [zb.Gate.cnot(0, 1)]).placed([0, 1], HUGE)
zb.Circuit(1, [zb.Measure(0, HUGE)])
zb.Circuit(1, [], [("c", HUGE)])
zb.CnotCircuit(HUGE)
zb.CnotCircuit(100_000, [(0, 1)]).matrix()
zb.Circuit(100_000, [zb.Gate.cnot(k, 99_999 - k) for k in range(10_000)]).draw()
zb.Circuit(100_000, [zb.Gate.cnot(k, 99_999 - k) for k in range(3_000)])._repr_svg_()
zb.from_json(JSON % ("Circuit", '{"n": 1000000000, "operations": []}'))
# operators
zb.CliffordTableau(20_000)
zb.CliffordTableau(HUGE)
zb.CliffordTableau.from_circuit(zb.Circuit(20_000, [zb.Gate.h(0)]))
zb.clifford.synthesize(zb.Circuit(20_000, [zb.Gate.h(0)]))
zb.clifford.synthesize_state(zb.Circuit(20_000, [zb.Gate.h(0)]))
zb.clifford.synthesize(zb.Circuit(2_500, [zb.Gate.h(0)]), steps=0, jobs=16)
zb.clifford.synthesize(zb.Circuit(6, [zb.Gate.cnot(0, 1)]), steps=10**7, jobs=64)
# families
zb.optimize(zb.Circuit(16_385), steps=0)
zb.linear.synthesize(np.eye(16_385, dtype=bool), method="search")
zb.linear.synthesize(np.broadcast_to(np.False_, (100_000, 100_000)))
zb.linear.synthesize(np.eye(6, dtype=bool), method="greedy", width=2**31 - 1, lookahead=64)
zb.graph_state.synthesize(np.broadcast_to(np.False_, (100_000, 100_000)))
zb.phase.synthesize({3: 0.5}, n=HUGE)
zb.phase.synthesize({1 << HUGE: 0.5})
zb.phase.synthesize({1 << 1_000_000: 0.5})
zb.phase.polynomial_of(zb.Circuit(1_000_000))
zb.pauli.synthesize([], n=HUGE)
zb.routing.normalize(zb.Circuit(20_000, [zb.Gate.cnot(0, 1)]))
# devices
zb.Device(HUGE, [(0, 1)])
zb.Device.named("grid:100000x100000")
zb.Device.named("line:999999999")
zb.Device.all_to_all(100_000)
zb.Device.heavy_hex(99_999, 99_999)
zb.Device.line(50_000).adjacency()
zb.Device.line(20_000).draw()
# inputs to try
zb.gallery.random_invertible(HUGE, 1)
zb.gallery.random_invertible(3, HUGE)
zb.gallery.random_paulis(1000, HUGE)
zb.gallery.maxcut(1_000_000)
zb.gallery.maxcut_regular(100_000, 4)
zb.gallery.random_graph(100_000)
zb.gallery.random_clifford(20_000, 1)
zb.gallery.random_parities(60, HUGE, 1)
zb.gallery.uccsd(1000, 500)
zb.gallery.low_autocorrelation(2000)
zb.gallery.heisenberg([100_000, 100])
zb.gallery.heisenberg(4, HUGE)
zb.gallery.ising_chain(100_000)
zb.gallery.qft(100_000)
zb.gallery.hardware_efficient(1000, 100_000)
zb.gallery.qaoa(100_000, 100)
zb.gallery.phase_estimation(HUGE)
# readers
zb.Circuit.of("qreg q[2000000000]; h q;")
zb.Circuit.of("qreg q[2]; h q[" + "9" * 10**6 + "];")
zb.Circuit.of("qreg q[999999]; " + "barrier q;" * 9)
zb.Circuit.of(SPARSE)
zb.Circuit.of("qreg q[1]; creg c[2000000000]; measure q[0]->c[5];")
"""

# Each raises an error whose class and text match what is after the arrow.
REFUSED = r"""
# files that are none, or never end
zb.Circuit.of("/dev/zero") -> QasmFileError: .*not a regular file
zb.Circuit.of(PIPE) -> QasmFileError: .*not a regular file
zb.Circuit.of(FOLDER) -> QasmFileError: .*Is a directory
zb.batch.read("/dev/zero") -> FileError: .*not a regular file
zb.batch.run("linear.synthesize", [], results=PIPE) -> FileError: .*not a regular file
# nesting, digits and counts
zb.Circuit.of("qreg q[1]; rz(" + "(" * 10**6 + ") q[0];") -> QasmError: .*angle
zb.Circuit.of("qreg q[1]; rz(" + "2^" * 10**5 + "2) q[0];") -> QasmError: .*angle
zb.Circuit.of("qreg q[1]; if(c==" + "9" * 10**5 + ") h q;") -> QasmError
zb.Circuit(1, [zb.Gate.rz(0, "(" * 10**6)]) -> AngleError
zb.Circuit(1, [zb.Gate.rz(0, "1e" + "9" * 10**6)]) -> AngleError
zb.from_json("[" * 10**6) -> JsonError: .*nested
zb.from_json(JSON % ("Circuit", "[" * 10**5 + "]" * 10**5)) -> JsonError: .*nested
zb.from_json(JSON % ("Circuit", '{"n": 1e400, "operations": []}')) -> Error
zb.from_json(JSON % ("CnotCircuit", '{"n": 2, "gates": [[0, 1e300]]}')) -> Error
zb.from_json(JSON % ("CliffordTableau", '{"n": 1000000000}')) -> Error
pickle.loads(REDUCED) -> TooLargeError
# arguments of the core that do not fit together
core.addPermutation(2, core.CnotCircuit(2), [6, 3, 5, 7, 1, 0, 4, 2]) -> perm: got 8 entries, wanted 2
core.setup(2, MATRIX, [1, 1]) -> perm: got 1 twice
core.RowOperation(MATRIX, 0, 5, 2) -> got 5
core.ColumnOperation(MATRIX, 5, 0, 2) -> got 5
core.SavingRowOperation(MATRIX, -1, 0, 2) -> got -1
core.SavingColumnOperation(MATRIX, 0, 2**31 - 1, 2) -> got 2147483647
core.boolean_matrix_inverse(-2, MATRIX) -> m: its size is given as -2
core.count_bits(3, MATRIX) -> m: got shape .2, 2., wanted at least .3, 3.
core.findmax(HUGE, MATRIX) -> got shape
core.SynthesizeWestSouthBlock([[]], MATRIX, core.CnotCircuit(2), 2, -1, 3, [0, 1]) -> h: got -1
core.SynthesizeWestSouthBlock([[1]], MATRIX, core.CnotCircuit(1), 2, 1, 1, [0, 1]) -> c: qubits: got 1
core.compute_available_operation_ones(2, 1, 2, MATRIX, [[2**31 - 1] * 2] * 2, TABLE) -> R: holds 2147483647
core.compute_available_operation_log(2, 1, 2, MATRIX, [[np.nan] * 2] * 2, TABLE) -> R: holds nan
core.compute_available_operation_ones_with_inv(2, 1, 1, MATRIX, [[1]], TABLE, TABLE, TABLE, TABLE) -> got shape
core.update_cost_matrix_ones(2, 1, 1, True, MATRIX, TABLE, TABLE) -> a, b: got the same qubit
core.create_queues(MATRIX, [1, 0, 1], 3, 1, 1, [0, 1]) -> length: got 3, wanted at most 2
core.mult_left(np.zeros((5, 5), int), 2, np.zeros((2, 2), int), [0, 9]) -> got 9
core.OperatorTableau(0).multiply_right(EMPTY) -> other: got one without entries
core.WeylOperator("X").conjugate_with(TWO) -> t: got 2 qubits, wanted 1
core.clifford_nnize_ion([], 0, True, True, EMPTY) -> frame: got one without entries
core.duncan_co_diag([[1, 0], [1]], [core.Parameter(0.1)] * 2) -> got
core.phase_poly_to_table({}, -1) -> n: got -1
core.OperatorTableau(100_000) -> TooLargeError: n: got 100000, which would take 40 GB of memory, wanted
core.random_graph(2_000_000_000) -> n: got 2000000000, which would take
core.Table(2**31 - 1) -> n: got 2147483647, which would take
core.CnotCircuit(10**9).Simulate() -> nbqbits: got 1000000000, which would take
core.greedy_synthesis_ones(30, np.eye(30, dtype=bool), 1000, 9) -> width, depth: got 1000 and
core.get_seed_sets(20_000) -> n: got 20000, wanted at most
"""

# These take long, or are refused: both will do.
SLOW = r"""
zb.Circuit.of("qreg q[1]; rz(" + "-" * 10**6 + "1) q[0];")
zb.Circuit(1, [zb.Gate.rz(0, "- " * 10**6 + "a")])
zb.pauli.synthesize([(format(k, "020b").replace("0", "Z").replace("1", "X"), 0.1) for k in range(10**6)])
zb.phase.synthesize({k: 0.1 for k in range(1, 10**6)}, n=20)
zb.clifford.synthesize(clifford(3000))
zb.clifford.synthesize_state(clifford(3000))
zb.optimize(zb.gallery.qft(1000))
zb.routing.route(zb.gallery.qft(300), "grid:20x20")
zb.linear.synthesize(zb.gallery.random_invertible(2000, 1)[0])
zb.graph_state.synthesize(zb.gallery.random_graph(2000))
zb.Circuit(100_000, [zb.Gate.cnot(k, k + 1) for k in range(99_999)]).draw()
zb.from_json("[" + "0," * 10**7 + "0]")
core.boolean_matrix_inverse(16_000, np.eye(16_000, dtype=bool)[::-1])
core.BlossomAlgorithm(np.arange(9_000_000).reshape(3000, 3000) % 1009, 3000)
core.graph_state_codiag([[3 if q == k else 1 for q in range(400)] for k in range(400)], [core.Parameter(0.1)] * 400, 0)
core.OperatorTableau(3000).inverse()
"""

PLACE = tempfile.mkdtemp()
SPARSE, PIPE, FOLDER = (os.path.join(PLACE, name) for name in ("sparse.qasm", "pipe", "folder"))


def clifford(n: int) -> zb.Circuit:
    draw, gates = random.Random(n), []
    for _ in range(8 * n):
        a, b = draw.sample(range(n), 2)
        gates += [zb.Gate.cnot(a, b), zb.Gate.h(a), zb.Gate.s(b)]
    return zb.Circuit(n, gates)


# What the calls know.
NAMES = {
    "zb": zb, "core": core, "np": np, "pickle": pickle, "clifford": clifford, "HUGE": 10**9,
    "JSON": '{"format":"zeltbraidwerk","version":1,"kind":"%s","content":%s}',
    "REDUCED": b"czeltbraidwerk\nCircuit\n(I1000000000\n(ltR.",
    "SPARSE": SPARSE, "PIPE": PIPE, "FOLDER": FOLDER, "MATRIX": [[1, 0], [0, 1]],
    "TABLE": [[0, 0], [0, 0]], "EMPTY": core.OperatorTableau(), "TWO": core.OperatorTableau(2),
}  # fmt: skip


def make_files() -> None:
    """A file of holes, a pipe that nobody writes to, and a folder."""
    with open(SPARSE, "wb") as file:
        file.truncate(10**10)
    os.mkfifo(PIPE)
    os.mkdir(FOLDER)


@dataclass
class Row:
    call: str
    wanted: str | None  # a pattern of class and text; None where all will do

    def is_right(self, kind: str, text: str) -> bool:
        if self.wanted is None:
            return kind in ("returned", "refused", "stopped")
        return kind == "refused" and re.search(self.wanted, text) is not None


def rows(quick: bool) -> list[Row]:
    limited = r"TooLargeError: .*(limits\.set\(|at most 16384)"
    tables = [(TOO_LARGE, limited), (REFUSED, ""), (SLOW, None)]
    found = []
    for table, wanted in tables[: 2 if quick else 3]:
        for line in table.splitlines():
            if line and line[0] != "#":
                call, _, told = line.partition(" -> ")
                found.append(Row(call, told or wanted))
    return found


def called(call: str) -> tuple[str, str]:
    """How a call ends: returned, refused, stopped, or wrong; and the text."""
    try:
        value = eval(call, NAMES)
        return "returned", type(value).__name__
    except BaseException as error:
        text = f"{type(error).__name__}: {error}"
        if isinstance(error, KeyboardInterrupt):
            return "stopped", text
        own = isinstance(error, errors.Error) or wrong_kind(error) is None
        return "refused" if own else "wrong", text


def run(row: Row, gigabytes: float) -> tuple[str, str, float, float]:
    """How the call ends in a child, with its processor seconds and megabytes."""
    reader, writer = os.pipe()
    child = os.fork()
    if child == 0:
        os.close(reader)
        resource.setrlimit(resource.RLIMIT_AS, (int(gigabytes * 2**30),) * 2)
        resource.setrlimit(resource.RLIMIT_CPU, (int(SECONDS + GRACE) + 1,) * 2)
        resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
        signal.signal(signal.SIGPROF, signal.default_int_handler)
        signal.setitimer(signal.ITIMER_PROF, SECONDS)
        kind, text = called(row.call)
        os.write(writer, json.dumps([kind, text[:300]]).encode())
        os._exit(0)
    os.close(writer)
    end, deadline = None, time.monotonic() + WAITING
    while end is None:
        done, status, usage = os.wait4(child, os.WNOHANG)
        if done:
            end = os.waitstatus_to_exitcode(status)
        elif time.monotonic() > deadline:
            os.kill(child, signal.SIGKILL)
        else:
            time.sleep(0.005)
    with os.fdopen(reader) as told:
        text = told.read()
    kind, text = json.loads(text) if text else ("killed", signal.Signals(-end).name if end else "")
    return kind, text, usage.ru_utime + usage.ru_stime, usage.ru_maxrss / 1024


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__.partition("\n\n")[0])
    parser.add_argument("--quick", action="store_true", help="without calls that take seconds")
    parser.add_argument("--gigabytes", type=float, default=2, help="memory of each call")
    options = parser.parse_args()
    np.eye(2) @ np.eye(2)  # its threads, and their memory
    make_files()
    wrong = 0
    for row in rows(options.quick):
        kind, text, seconds, megabytes = run(row, options.gigabytes)
        is_right = row.is_right(kind, text)
        wrong += not is_right
        print(f"{'' if is_right else 'WRONG '}{row.call:.90}\n    {kind}, {seconds:.2f} s, "
              f"{megabytes:.0f} MB: {text:.120}", flush=True)  # fmt: skip
    print(f"{len(rows(options.quick))} attacks, {wrong} wrong")
    sys.exit(wrong > 0)


if __name__ == "__main__":
    main()

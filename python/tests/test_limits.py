"""What is too large is refused before memory is taken for it, and says how to change the limit."""

import os
import resource
import subprocess
import sys

import pytest

import zeltbraidwerk as zb
from zeltbraidwerk import errors, limits

HUGE = 10**9

# One call per line, all in one process that may have 2 GB; each raises a TooLargeError.
ATTACKS = r"""
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
"""
SETTING = r"""
import os, sys
import numpy as np
import zeltbraidwerk as zb
from zeltbraidwerk import errors
HUGE, SPARSE = 10**9, sys.argv[1]
JSON = '{"format":"zeltbraidwerk","version":1,"kind":"%s","content":%s}'
for line in sys.stdin.read().splitlines():
    if not line or line[0] == "#":
        continue
    try:
        eval(line)
        print("taken:", line)
    except errors.TooLargeError as error:
        if "limits.set(" not in str(error) and "at most 16384" not in str(error):
            print("text of", line, error)
    except BaseException as error:
        print(line, repr(error))
"""


def small():
    resource.setrlimit(resource.RLIMIT_AS, (2 * 2**30,) * 2)
    resource.setrlimit(resource.RLIMIT_CPU, (120,) * 2)


def test_attacks_are_refused(tmp_path):
    sparse = tmp_path / "sparse.qasm"
    with open(sparse, "wb") as file:
        file.truncate(10**10)
    done = subprocess.run(
        [sys.executable, "-c", SETTING, str(sparse)], input=ATTACKS, preexec_fn=small, text=True,
        capture_output=True, check=False, env=os.environ | {"OPENBLAS_NUM_THREADS": "1"},
    )  # fmt: skip
    assert (done.returncode, done.stdout) == (0, ""), done.stderr


@pytest.mark.parametrize("make", ["/dev/zero", "pipe", "folder"])
def test_only_regular_files_are_read(make, tmp_path):
    path = tmp_path / "input"
    if make == "pipe":
        os.mkfifo(path)
    elif make == "folder":
        path.mkdir()
    else:
        path = make
    with pytest.raises(errors.QasmFileError, match=r"not a regular file|Is a directory"):
        zb.Circuit.of(str(path))


def test_limits_are_set_and_come_back():
    usual = limits.current()
    assert usual == limits.Limits(memory=usual.memory)
    with limits.using(memory=10_000_000.0, digits=2), limits.using(digits=3):
        assert (limits.current().memory, limits.current().digits) == (10_000_000.0, 3)
        with pytest.raises(errors.TooLargeError, match=r"n: got 2000 qubits, .* wanted 10 MB at"):
            zb.CliffordTableau(2000)
        matrix = zb.gallery.random_invertible(1, 1)[0]
        assert zb.linear.synthesize(matrix).count == 0
    assert limits.current() == usual
    assert zb.CliffordTableau(2000).n == 2000
    with pytest.raises(ZeroDivisionError), limits.using(operations=1):
        _ = 1 / 0
    assert limits.current() == usual


@pytest.mark.parametrize(
    "given", [{"memory": 0}, {"memory": float("nan")}, {"bits": -(10**5000)}, {"digits": 0},
              {"bits": 2.5}, {"width": 1}, {"operations": True}, {"nesting": "5"}]
)  # fmt: skip
def test_limits_that_mean_nothing(given):
    before = limits.current()
    with pytest.raises(errors.OptionError):
        limits.set(digits=7, **given) if "digits" not in given else limits.set(**given)
    assert limits.current() == before


def test_the_environment_sets_limits():
    variables = {"ZELTBRAIDWERK_LIMIT_MEMORY": "0.25", "ZELTBRAIDWERK_LIMIT_BITS": "7",
                 "ZELTBRAIDWERK_LIMIT_DIGITS": "many"}  # fmt: skip
    code = "import zeltbraidwerk as zb; print(zb.limits.current())"
    done = subprocess.run(
        [sys.executable, "-c", code], capture_output=True, text=True, check=True,
        env=os.environ | variables,
    )  # fmt: skip
    assert "ZELTBRAIDWERK_LIMIT_DIGITS: got 'many', wanted an integer above 0" in done.stderr
    assert "memory=0.25," in done.stdout
    assert "bits=7," in done.stdout
    assert "digits=4000)" in done.stdout

import gc
import inspect
import os
import re
import shutil
import signal
import tempfile
import threading

import numpy as np
import pytest
from hypothesis import settings
from support import product

settings.register_profile("default", deadline=None, max_examples=40, derandomize=True)
settings.load_profile("default")

# Tables that take long to build are shared by the processes of this session alone: files of an
# earlier one may be of other code.
TABLES = tempfile.mkdtemp(prefix="tables-")
os.environ["ZELTBRAIDWERK_CACHE"] = TABLES

# A test tests a conversion if it asks for another package in this way, or by the fixture of one.
# mypy is a tool, not a peer.
ASKS = re.compile(r'importorskip\((?!"mypy)')


def package(name):
    return pytest.fixture(lambda: pytest.importorskip(name), scope="session")


PACKAGES = {
    "qiskit": "qiskit", "tket": "pytket.circuit", "stim": "stim", "pyzx": "pyzx", "cirq": "cirq",
    "qml": "pennylane", "galois": "galois",
}  # fmt: skip
qiskit, tket, stim, pyzx, cirq, qml, galois = map(package, PACKAGES.values())


def pytest_collection_modifyitems(items):
    for item in items:
        asked = PACKAGES.keys() & {*item.fixturenames}
        if asked or ASKS.search(inspect.getsource(item.function)):
            item.add_marker("interop")


@pytest.hookimpl(wrapper=True)
def pytest_runtest_makereport(item, call):
    """Where everything is installed, which `./dev test` says, nothing may be skipped."""
    report = yield
    if report.skipped and os.environ.get("ZELTBRAIDWERK_NO_SKIPS"):
        report.outcome = "failed"
        report.longrepr = f"skipped, which may not be: {call.excinfo.value}"
    return report


def pytest_unconfigure():
    """Hypothesis registers a callback of the garbage collector for good, and what it can reach, the
    cases of all test modules among them, would outlive the interpreter.
    """
    shutil.rmtree(TABLES, ignore_errors=True)
    gc.callbacks[:] = [
        call for call in gc.callbacks if not (call.__module__ or "").startswith("hypothesis.")
    ]


@pytest.fixture
def dense():
    """A random invertible matrix by size, the same one every time."""

    def build(n, seed=0):
        rng = np.random.default_rng([n, seed])
        lower = np.tril(rng.integers(0, 2, (n, n)), -1) + np.eye(n, dtype=int)
        upper = np.triu(rng.integers(0, 2, (n, n)), 1) + np.eye(n, dtype=int)
        return product(lower, upper)[rng.permutation(n)]

    return build


@pytest.fixture
def ctrl_c():
    """Presses Ctrl-C in half a second, also where the tests were started with it ignored."""
    before = signal.signal(signal.SIGINT, signal.default_int_handler)
    timer = threading.Timer(0.5, os.kill, (os.getpid(), signal.SIGINT))
    timer.start()
    yield
    timer.join()
    signal.signal(signal.SIGINT, before)

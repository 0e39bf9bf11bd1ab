"""Calls of the core whose arguments do not fit together, and the program that draws such calls."""

import re
import subprocess
import sys
import time
from pathlib import Path

import fuzz_core
import numpy as np
import pytest
from core_calls import Draw
from core_stub import LEFT_OUT, read_targets

from zeltbraidwerk import core, errors

LONG = {
    "restarts": lambda: core.pathfinding_synthesis(
        12, np.eye(12, dtype=bool)[::-1], "ones", False, 1, 1, 10**9, False),
    "look-ahead": lambda: core.greedy_synthesis_ones(
        40, np.tri(40, dtype=bool) ^ np.eye(40, k=1, dtype=bool), 30, 4),
    "tries": lambda: core.solve_syndrome(np.eye(24, dtype=bool), [1] * 24, 24, 10**9),
}  # fmt: skip


@pytest.mark.parametrize("name", LONG)
def test_ctrl_c_ends_a_long_call(name, ctrl_c):
    start = time.perf_counter()
    with pytest.raises(errors.Interrupted):
        LONG[name]()
    assert time.perf_counter() - start < 5
    assert core.uniform(1, 1) == 1


def test_every_target_of_the_stub_is_called_and_a_call_comes_again():
    targets = read_targets(fuzz_core.load(None))
    names = {target.name.partition(".")[0].rstrip("()") for target in targets}
    constants = {name for name in core.__all__ if isinstance(getattr(core, name), np.ndarray)}
    assert names == set(core.__all__) - constants - LEFT_OUT
    lines = [Draw(f"3 {k}").line(target) for k, target in enumerate(targets)]
    assert lines == [Draw(f"3 {k}").line(target) for k, target in enumerate(targets)]
    assert all(compile(line, "call", "exec") for line in lines)


def test_faults_are_told_with_the_line_that_makes_them_again(tmp_path):
    """A call that kills its process, one that raises what it may not, one that hangs."""
    planted = {
        "abort": "import os; os.abort()", "raise": "raise MemoryError", "hang": HANG,
        "foreign": "raise ValueError('vector::_M_default_append')",
    }  # fmt: skip
    program = tmp_path / "planted.py"
    for name, text in planted.items():
        program.write_text(PLANTED.format(tests=str(Path(__file__).parent), text=text))
        run = subprocess.run([sys.executable, program], capture_output=True, text=True, timeout=60)
        kind = {"abort": "SIGABRT", "raise": "MemoryError", "foreign": "ValueError"}.get(name, name)
        assert run.returncode == 1, run.stderr
        assert re.search(rf"^2: {kind} in RowOperation: ", run.stdout), run.stdout
        assert "7 calls of 1 targets" in run.stdout


HANG = "import signal; signal.signal(signal.SIGINT, signal.SIG_IGN)\nwhile True: pass"
PLANTED = """
import sys
sys.path.insert(0, {tests!r})
import core_calls
import fuzz_core

fuzz_core.GRACE = 0.2
draw = core_calls.Draw.line
def line(self, target):
    return {text!r} if self.number == "2" else draw(self, target)
def seeded(self, seed, init=core_calls.Draw.__init__):
    init(self, seed)
    self.number = seed.split()[1]
core_calls.Draw.line, core_calls.Draw.__init__ = line, seeded
sys.argv[1:] = ["7", "--only", "RowOperation", "--limit", "0.2"]
fuzz_core.main()
"""


def test_random_calls():
    command = [sys.executable, fuzz_core.__file__, "3000", "--seed", "5"]
    run = subprocess.run(command, capture_output=True, text=True, timeout=300)
    assert run.returncode == 0, run.stdout

"""What is too large is refused before memory is taken for it, and says how to change the limit."""

import os
import subprocess
import sys

import attacks
import pytest

import zeltbraidwerk as zb
from zeltbraidwerk import errors, limits


def test_attacks_are_refused():
    """The quick part of the table; ``./dev test attacks`` tries all of it."""
    done = subprocess.run(
        [sys.executable, attacks.__file__, "--quick"], text=True, capture_output=True,
        check=False, env=os.environ | {"OPENBLAS_NUM_THREADS": "1"},
    )  # fmt: skip
    wrong = [line for line in done.stdout.splitlines() if "WRONG" in line]
    assert (done.returncode, wrong) == (0, []), done.stdout + done.stderr


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

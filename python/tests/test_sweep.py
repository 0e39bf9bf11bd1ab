"""The sweep itself: it finds what is wrong, by every method, and goes on after it was stopped."""

import os
import signal

import pytest
import sweep
import sweep_instances
from support import replaced, spoilt
from sweep_instances import FAMILIES, Row, instance, try_instance

import zeltbraidwerk as zb
from zeltbraidwerk import Circuit, errors

METHODS = [
    (family, method)
    for family in ("linear", "phase", "pauli", "clifford", "graph_state")
    for method in getattr(zb, family).methods()
]
METHODS += [("linear", name) for name in ("steiner", "sorting", "row_column")]  # on devices alone


def wrong(result):
    """The result with a CNOT turned round."""
    if isinstance(result, list):
        return [wrong(one) for one in result]
    circuit = result if isinstance(result, Circuit) else result.circuit
    (turned, *_) = spoilt(circuit, only_turned=True)
    return turned if circuit is result else replaced(result, circuit=turned)


@pytest.mark.parametrize("family", FAMILIES)
def test_wrong_results_are_found(family):
    """Not all: some do the same with a CNOT turned round, and large ones in native gates are not
    looked at."""
    found = []
    for number in range(3 if family == "batch" else 30):
        try_instance(family, number)
        _, _, case = instance(family, number)
        try:
            planted = wrong(case.call())
        except (ValueError, AttributeError, errors.Error):  # no CNOT, no circuit
            continue
        try:
            case.check(planted)
        except Exception:
            found.append(True)
        else:
            found.append(False)
    assert sum(found) > 0.6 * len(found) > 0


@pytest.mark.parametrize(("family", "method"), METHODS)
def test_small_instances_by_every_method(family, method):
    for number in range(60):
        if sweep_instances.Draw(f"{family} {number}").size(number) < 10:
            try_instance(family, number, method)


@pytest.mark.parametrize(
    ("family", "number"),
    [("pauli", 98093), ("pauli", 101246), ("pauli", 102510), ("routed", 1239)],
)
def test_more_steps_are_never_worse_where_they_were(family, number):
    """Rotations with a tail, whose ladders drew differently after more steps; and a routing, which
    was closed by as many steps as it was then walked from."""
    _, _, case = instance(family, number)
    assert "tail" in case.options
    steps = [case.options["steps"] + more for more in (0, 10, 16, 30, 49, 59)]
    sizes = [case.size(case.call(steps=each)) for each in steps]
    assert sizes == sorted(sizes, reverse=True)


def test_a_run_goes_on_and_tells_what_ended_a_process(tmp_path, monkeypatch, capfd):
    monkeypatch.setattr(sweep, "CHUNK", 5)
    monkeypatch.setattr(sweep, "LIMIT", 0.5)
    path, done = tmp_path / "state.jsonl", tmp_path / "done"

    def work():
        def one(index):
            with done.open("a") as file:
                file.write(f"{index}\n")
            if index == 7:
                os.kill(os.getpid(), signal.SIGKILL)
            while index == 13:
                pass
            return Row("linear", index, 3, 0.25, "wrong" if index == 2 else None)

        return one

    def lost(index, how):
        return Row("linear", index, None, 0.0, how)

    def run(fresh=False):
        done.write_text("")
        status = sweep.run(work, lost, range(23), 2, sweep.Record(path, fresh))
        out = capfd.readouterr().out
        again = {f"again: ./dev test sweep 1 --only linear --first {k}" for k in (2, 7, 13)}
        assert status == 1
        assert again <= set(out.splitlines())
        assert "linear              23       3" in out
        return sorted(map(int, done.read_text().split())), out

    calls, out = run()
    assert calls == list(range(23))
    assert "the process ended: SIGKILL" in out
    assert "no end after 0.5 s" in out
    *lines, last = path.read_text().splitlines(keepends=True)
    path.write_text("".join(lines) + last[:20])  # stopped while it wrote
    calls, _ = run()
    assert set(range(15)) <= set(calls)  # with faults
    assert len(calls) in (15, 18, 20)
    assert run()[0] == list(range(15))
    assert run(fresh=True)[0] == list(range(23))

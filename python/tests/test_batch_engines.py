"""Batches on real executors, which lose processes half-way, and programs that are stopped."""

import functools
import json
import multiprocessing
import os
import random
import signal
import subprocess
import sys
import time
from concurrent.futures import ProcessPoolExecutor, ThreadPoolExecutor
from pathlib import Path

import pytest
from batches import PROGRAM, SLOW, SLOW_INPUTS, cliffords, content

import zeltbraidwerk as zb

run = functools.partial(zb.batch.run, "clifford.synthesize")


@pytest.fixture(scope="module")
def whole(tmp_path_factory):
    """What every executor has to make of the slow inputs: by threads of this process."""
    path = tmp_path_factory.mktemp("whole") / "runs.jsonl"
    with ThreadPoolExecutor(2) as executor:
        found = run(cliffords(*SLOW_INPUTS), executor=executor, results=path, **SLOW)
    assert len(found) == SLOW_INPUTS[1]
    assert all(record.result.verify() for record in found)
    return content(path)


def once_at(done, act):
    """A function for progress that acts when so many inputs are done."""
    acted = []

    def told(now):
        if now >= done and not acted:
            acted.append(now)
            act()

    return told, acted


def kill_a_child():
    os.kill(random.choice(multiprocessing.active_children()).pid, signal.SIGKILL)


def test_killed_process_of_a_pool_loses_nothing(whole, tmp_path):
    path = tmp_path / "runs.jsonl"
    kill, killed = once_at(8, kill_a_child)
    run(cliffords(*SLOW_INPUTS), results=path, workers=2, progress=kill, **SLOW)
    assert killed
    assert content(path) == whole
    assert multiprocessing.active_children() == []


def test_without_retries_what_was_lost_is_an_error_and_the_rest_goes_on(whole, tmp_path):
    path = tmp_path / "runs.jsonl"
    kill, _ = once_at(8, kill_a_child)
    found = run(cliffords(*SLOW_INPUTS), results=path, workers=2, progress=kill, retries=0, **SLOW)
    lost = {record.index for record in found.errors}
    assert 1 <= len(lost) <= SLOW_INPUTS[1] - 8  # all jobs that were handed out
    assert all("ended once" in record.error for record in found.errors)
    kept = [line for line in content(path)[1:] if line["index"] not in lost]
    assert kept == [line for line in whole[1:] if line["index"] not in lost]


class Deadly:
    """An input that ends every process which reads it."""

    def __reduce__(self):
        return os._exit, (1,)


def test_processes_that_are_there_already_follow_the_limits(tmp_path):
    given = [zb.CliffordTableau(500)]
    with ProcessPoolExecutor(1) as executor:
        for k, memory in enumerate((0.5, 17e6, 0.5)):
            with zb.limits.using(memory=memory):
                (record,) = run(given, executor=executor, results=tmp_path / f"{k}", steps=0)
            assert (record.error is not None) == (memory == 17e6)


def test_input_that_ends_its_process_is_the_only_error(tmp_path):
    inputs = cliffords(3, 40)
    inputs[20] = Deadly()
    found = run(inputs, results=tmp_path / "runs.jsonl", workers=2, seed=1, method="elimination")
    assert [(record.index, record.error) for record in found.errors] == [
        (20, "UnfinishedError: the process that worked on it ended 3 times; it was killed, or ran "
             "out of memory")
    ]  # fmt: skip
    assert len(found) == 40


def test_pool_of_the_caller_that_breaks_ends_the_run_which_goes_on_with_another(whole, tmp_path):
    path = tmp_path / "runs.jsonl"
    context = multiprocessing.get_context("forkserver")
    kill, _ = once_at(8, kill_a_child)
    given = cliffords(*SLOW_INPUTS)
    with (
        ProcessPoolExecutor(2, mp_context=context) as executor,
        pytest.raises(zb.errors.Error, match="it takes no more work: A process"),
    ):
        run(given, executor=executor, results=path, progress=kill, **SLOW)
    assert 9 <= len(path.read_text().splitlines()) < len(whole)
    with ProcessPoolExecutor(2, mp_context=context) as executor:
        run(given, executor=executor, results=path, **SLOW)
    assert content(path) == whole


@pytest.mark.filterwarnings("default")  # of the cluster, and the packages below it
def test_killed_worker_of_a_dask_cluster_loses_nothing(whole, tmp_path):
    distributed = pytest.importorskip("distributed")
    path = tmp_path / "runs.jsonl"
    with (
        distributed.LocalCluster(
            n_workers=2, threads_per_worker=1, processes=True, dashboard_address=None,
            silence_logs=50,
        ) as cluster,
        distributed.Client(cluster) as client,
    ):  # fmt: skip
        kill, killed = once_at(8, lambda: os.kill(cluster.workers[0].pid, signal.SIGKILL))
        run(cliffords(*SLOW_INPUTS), executor=client, results=path, progress=kill, **SLOW)
        assert killed
        assert content(path) == whole
        with pytest.raises(zb.errors.OptionError, match="workers: wanted without an executor"):
            run([], executor=client, results=path, workers=2)


# --- programs that are stopped ------------------------------------------------------------------


def started(path):
    """The program, in a session of its own, with its folder in the path of Python."""
    folder = Path(__file__).parent
    script = path.with_suffix(".py")
    script.write_text(PROGRAM)
    return subprocess.Popen(
        [sys.executable, script, path], start_new_session=True, stderr=subprocess.PIPE, text=True,
        env={**os.environ, "PYTHONPATH": str(folder)}, preexec_fn=_with_ctrl_c,
    )  # fmt: skip


def _with_ctrl_c():
    signal.signal(signal.SIGINT, signal.default_int_handler)  # it may be ignored around the tests


def wait_for(condition, what):
    for _ in range(1200):
        if condition():
            return
        time.sleep(0.05)
    pytest.fail(f"a minute without {what}")


def lines(path):
    return path.read_bytes().count(b"\n") if path.exists() else 0


def alive_in(session):
    """The processes of a session, without those that have ended and are not yet waited for."""
    found = []
    for entry in Path("/proc").glob("[0-9]*/stat"):
        try:
            fields = entry.read_text().rpartition(")")[2].split()
        except OSError:
            continue
        if int(fields[3]) == session and fields[0] != "Z":
            found.append(int(entry.parent.name))
    return found


@pytest.mark.parametrize("how", ["kill", "Ctrl-C"])
def test_stopped_program_leaves_no_process_and_a_file_to_go_on_from(how, whole, tmp_path):
    path = tmp_path / "runs.jsonl"
    program = started(path)
    wait_for(lambda: lines(path) > 8, "results")
    if how == "kill":
        program.kill()
    else:
        os.killpg(program.pid, signal.SIGINT)
    told = program.communicate(timeout=60)[1]
    assert told.count("Traceback") == (how == "Ctrl-C")
    wait_for(lambda: not alive_in(program.pid), "an end of all processes")
    with path.open("r+b") as file:  # and the last line is torn
        file.truncate(path.stat().st_size - 40)
    before = dict(enumerate(path.read_text().splitlines()[:-1]))
    assert 8 <= len(before) < len(whole)
    run(cliffords(*SLOW_INPUTS), results=path, workers=2, **SLOW)
    assert content(path) == whole
    after = path.read_text().splitlines()
    assert set(before.values()) <= set(after)  # with their seconds: nothing was done again


def test_script_without_a_guard_is_told_what_it_lacks(tmp_path):
    script = tmp_path / "script.py"
    script.write_text(
        "import zeltbraidwerk as zb\n"
        f"zb.batch.run('optimize', [], results={str(tmp_path / 'runs.jsonl')!r}, workers=1)\n"
    )
    done = subprocess.run([sys.executable, script], capture_output=True, text=True, check=False)
    assert done.returncode == 1
    assert done.stderr.splitlines()[-1] == (
        "zeltbraidwerk.errors.Error: executor: the processes of the pool end as they begin; a "
        'script has to make this call under if __name__ == "__main__":'
    )


def test_some_hundred_operators_on_a_pool(tmp_path, stim):
    """`bench batch` does ten thousand. All get the fewest gates."""
    path = tmp_path / "runs.jsonl"
    inputs = cliffords(5, 400)
    found = run(iter(inputs), results=path, workers=2, seed=1)
    assert [record.index for record in found] == list(range(400))
    assert all(record.error is None for record in found)
    for record, operator in zip(found, inputs, strict=True):
        assert record.is_proven
        assert stim.Tableau.from_circuit(record.result.circuit.to_stim()) == operator.to_stim()
    for record in list(found)[::40]:
        alone = zb.clifford.synthesize(inputs[record.index], seed=record.seed)
        assert record.result == alone
    assert json.loads(path.read_text().splitlines()[0])["options"] == {}


STOPPED_AT_ONCE = """
import os, signal, sys, threading, time
if __name__ != "__main__":
    time.sleep(2)  # so long takes the start of a process
import zeltbraidwerk as zb

if __name__ == "__main__":
    threading.Timer(0.5, os.kill, (os.getpid(), signal.SIGINT)).start()
    start = time.monotonic()
    try:
        zb.batch.race("linear.synthesize", [[1, 1], [0, 1]], results=sys.argv[1], progress=False)
    except KeyboardInterrupt:
        print(time.monotonic() - start)
"""


def test_ctrl_c_does_not_wait_for_the_start_of_processes(tmp_path):
    script = tmp_path / "race.py"
    script.write_text(STOPPED_AT_ONCE)
    run = subprocess.run(
        [sys.executable, script, tmp_path / "race.jsonl"], capture_output=True, text=True,
        preexec_fn=_with_ctrl_c,
    )  # fmt: skip
    assert run.stderr == ""
    assert 0.4 < float(run.stdout) < 1.5

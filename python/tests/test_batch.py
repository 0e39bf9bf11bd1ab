"""Batches by threads: every family, results files, races, merged files, the command, refusals."""

import functools
import re
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor
from itertools import count, islice
from pathlib import Path

import numpy as np
import pytest
from batches import cliffords, content

import zeltbraidwerk as zb
from zeltbraidwerk import _shell, batch, errors

MATRICES = zb.gallery.random_invertible(5, 6, seed=3)
TOFFOLI = "qreg q[3]; ccx q[0],q[1],q[2]; ccx q[0],q[1],q[2]; cx q[0],q[1];"
GRAPH = zb.gallery.random_graph(5)
FAMILIES = [  # task, the same input in several forms, options
    ("optimize", (TOFFOLI, zb.Circuit.from_qasm(TOFFOLI)), {"steps": 100, "objective": "t"}),
    ("linear.synthesize", (MATRICES[0], MATRICES[0].astype(int).tolist()), {"device": "line:5"}),
    ("phase.synthesize", ({"110": 0.5, "011": "a"}, (["110", (0, 1, 1)], [0.5, "a"])),
     {"tail": "return"}),
    ("pauli.synthesize", ([("XXI", 0.5), ("IZZ", "b")], (["XXI", "IZZ"], [0.5, "b"])),
     {"order": "free"}),
    ("clifford.synthesize", ((["IX", "XI"], ["IZ", "ZI"]),
                             zb.CliffordTableau.from_images(["IX", "XI"], ["IZ", "ZI"])), {}),
    ("clifford.synthesize_state", (["XXX", "ZZI", "-IZZ"], ("+XXX", "+ZZI", "-IZZ")), {}),
    ("clifford.synthesize_encoder", (["XXXX", "+ZZZZ"], ([[1] * 4], [[1] * 4])), {}),
    ("graph_state.synthesize", (GRAPH, GRAPH.astype(int).tolist()), {"objective": "depth"}),
    ("routing.route", (TOFFOLI, zb.Circuit.from_qasm(TOFFOLI)), {"device": zb.Device.line(4)}),
]  # fmt: skip


@pytest.fixture(scope="module")
def threads():
    with ThreadPoolExecutor(2) as executor:
        yield executor


@pytest.fixture
def run(threads, tmp_path):
    """batch.run by threads, into a file of the test's own."""
    return functools.partial(batch.run, executor=threads, results=tmp_path / "runs.jsonl")


@pytest.mark.parametrize(("task", "forms", "options"), FAMILIES, ids=[f[0] for f in FAMILIES])
def test_families(run, task, forms, options):
    found = list(run(task, forms, seed=7, **options))
    assert [record.error for record in found] == [None, None]
    assert found[0].digest == found[1].digest
    function = functools.reduce(getattr, task.split("."), zb)
    for record, form in zip(found, forms, strict=True):
        seed = {} if task == "routing.route" else {"seed": record.seed}
        alone = function(form, **seed, **options)
        assert record.result == alone
        assert record.result.verify()
        assert (record.count, record.depth) == (alone.count, alone.depth)
        assert record.task == task
        assert record.versions["zeltbraidwerk"] == zb.__version__
    assert found[0].seed != found[1].seed


def test_inputs_that_fail_stand_beside_those_that_do_not(run, tmp_path):
    (tmp_path / "good.txt").write_text("11\n01\n")
    (tmp_path / "bad.txt").write_text("no matrix\n")
    given = [
        MATRICES[0], np.ones((2, 2), dtype=int), tmp_path / "good.txt", tmp_path / "bad.txt",
        tmp_path / "none.txt", (lambda: 0), "text", MATRICES[1],
    ]  # fmt: skip
    found = list(run("linear.synthesize", given, seed=1, method="pmh"))
    assert [record.index for record in found] == list(range(len(given)))
    told = [record.error for record in found]
    assert [told[k] for k in (0, 2, 7)] == [None] * 3
    for k, text in {
        1: "SingularMatrixError: matrix: got a singular",
        3: "InputError: .*bad.txt: line 1",
        4: "FileNotFoundError: .*none.txt",
        5: "lambda",
        6: "QasmFileError: circuit: got 'text'",
    }.items():
        assert re.search(text, told[k])
        assert found[k].result is found[k].circuit is found[k].count is None
    assert found[2].input == str(tmp_path / "good.txt")
    assert [record.digest is None for record in found] == [
        False, True, False, True, True, True, True, False,
    ]  # fmt: skip
    again = run("linear.synthesize", given, method="pmh")  # goes on with the seed of the file
    assert [record.line for record in again] == [record.line for record in found]


def test_inputs_stream_and_results_come_as_they_are_ready(threads, tmp_path):
    path = tmp_path / "runs.jsonl"
    taken = []

    def endless():
        for k in count():
            taken.append(k)
            yield MATRICES[k % len(MATRICES)]

    call = functools.partial(batch.stream, "linear.synthesize", executor=threads, results=path,
                             seed=1, method="pmh")  # fmt: skip
    first = list(islice(call(endless()), 20))
    assert len({record.index for record in first}) == 20
    assert len(taken) < 3000  # some chunks for each thread
    again = list(islice(call(endless()), 25))
    assert [record.line for record in again[:20]] == [record.line for record in first]
    assert len({record.index for record in again}) == 25


def test_error_of_the_iterable_comes_after_the_work_before_it(run, tmp_path):
    def broken():
        yield from MATRICES[:3]
        raise ZeroDivisionError

    with pytest.raises(ZeroDivisionError):
        run("linear.synthesize", broken(), seed=1, method="pmh")
    assert len(batch.read(tmp_path / "runs.jsonl")) == 3
    assert len(run("linear.synthesize", MATRICES, seed=1, method="pmh")) == 6


# --- results files ------------------------------------------------------------------------------


def test_file_cut_anywhere_is_gone_on_with(run, tmp_path):
    path = tmp_path / "runs.jsonl"
    call = functools.partial(run, "linear.synthesize", MATRICES, seed=1, method="pmh")
    call()
    whole, lines = content(path), path.read_bytes()
    ends = [k + 1 for k, byte in enumerate(lines) if byte == ord("\n")]
    for end in (0, 1, 30, ends[0], ends[0] + 1, ends[2] - 1, ends[2], ends[2] + 200, len(lines)):
        path.write_bytes(lines[:end])
        call()
        assert content(path) == whole
        kept = [line for line in ends if line <= end]
        assert path.read_bytes()[: max(kept, default=0)] == lines[: max(kept, default=0)]


def test_lines_in_any_order_are_put_in_order_without_work(run, tmp_path):
    path = tmp_path / "runs.jsonl"
    call = functools.partial(run, "linear.synthesize", MATRICES, seed=1, method="pmh")
    call()
    header, *lines = path.read_text().splitlines()
    path.write_text("\n".join([header, *reversed(lines)]) + "\n")
    path.chmod(0o640)
    call()
    assert path.read_text().splitlines() == [header, *lines]
    assert path.stat().st_mode & 0o777 == 0o640
    assert [each.name for each in tmp_path.iterdir()] == ["runs.jsonl"]


def test_other_runs_are_refused_by_name_and_change_nothing(run, tmp_path):
    path = tmp_path / "runs.jsonl"
    good = {"seed": 1, "method": "pmh", "section": 2}
    run("linear.synthesize", MATRICES, **good)
    before = path.read_bytes()
    for task, inputs, options, complaint in [
        ("linear.synthesize", MATRICES, {"section": 3}, "section=2, this call has 3; wanted the"),
        ("linear.synthesize", MATRICES, {"method": "gauss", "section": None}, "method='pmh', this"),
        ("linear.synthesize", MATRICES, {"seed": 2}, "seed=1, this call has 2"),
        ("linear.synthesize", MATRICES, {"part": (0, 2)}, "part=None, this call has"),
        ("linear.synthesize", MATRICES, {"device": "line:5", "method": "auto", "section": None},
         "device=None, this call has"),
        ("optimize", [TOFFOLI], {"method": None, "section": None}, "linear.synthesize"),
        ("linear.synthesize", MATRICES[::-1], {}, "input 0 is not the one that runs.jsonl has"),
    ]:  # fmt: skip
        given = {name: value for name, value in {**good, **options}.items() if value is not None}
        with pytest.raises(errors.FileError, match=complaint):
            run(task, inputs, **given)
        assert path.read_bytes() == before


@pytest.mark.parametrize(
    ("text", "complaint"),
    [
        ("hello", "runs.jsonl is not a results file"),
        ("hello\n", "runs.jsonl is not a results file"),
        ("{}\n", "runs.jsonl is not a results file"),
        ('{"format":"zeltbraidwerk-batch","version":9}\n', "has version 9, wanted 1; a newer"),
        ("HEADER\nnoise\n", "line 2 of runs.jsonl is no result"),
        ('HEADER\n{"index":-1}\n', "line 2 of runs.jsonl is no result"),
        ('HEADER\n{"index":1}\n{"index":1}\n', "line 3 of runs.jsonl is a second result of input"),
    ],
)
def test_foreign_files_are_refused_and_stay_as_they_are(run, tmp_path, text, complaint):
    path = tmp_path / "runs.jsonl"
    run("linear.synthesize", [], seed=1)
    path.write_text(text.replace("HEADER\n", path.read_text()))
    before = path.read_bytes()
    with pytest.raises(errors.FileError, match=complaint):
        run("linear.synthesize", MATRICES, seed=1)
    assert path.read_bytes() == before


def test_two_runs_do_not_write_one_file(run, tmp_path):
    path = tmp_path / "runs.jsonl"
    held = batch.stream("linear.synthesize", MATRICES, results=path, seed=1, workers=1)
    next(held)
    with pytest.raises(errors.FileError, match="is being written by another run"):
        run("linear.synthesize", MATRICES, seed=1)
    held.close()
    assert len(run("linear.synthesize", MATRICES, seed=1)) == 6


# --- many files ---------------------------------------------------------------------------------


def test_parts_of_a_run_make_the_file_of_the_whole(run, tmp_path):
    given = cliffords(3, 10)
    options = {"seed": 1, "method": "elimination"}
    run("clifford.synthesize", given, **options)
    parts = [tmp_path / f"part-{k}.jsonl" for k in range(3)]
    for k, part in enumerate(parts):
        found = run("clifford.synthesize", given, results=part, part=(k, 3), **options)
        assert [record.index for record in found] == list(range(10))[k::3]
    merged = batch.merge(parts[::-1], tmp_path / "all.jsonl")
    assert content(merged.path) == content(tmp_path / "runs.jsonl")


def test_merged_files_keep_the_best_of_each_input(run, tmp_path):
    given = [MATRICES[0], np.ones((2, 2), dtype=int), *MATRICES[1:]]
    paths = [tmp_path / f"{k}.jsonl" for k in range(3)]
    for path, inputs, method in zip(
        paths, (given, given[::-1], given[:3]), ("gauss", "greedy", "pmh"), strict=True
    ):
        run("linear.synthesize", inputs, results=path, seed=1, method=method)
    merged = batch.merge(paths[:2], tmp_path / "some.jsonl")
    merged = batch.merge([merged.path, paths[2]], merged.path)  # of merged files, in place
    records = {path: {record.digest: record for record in batch.read(path)} for path in paths}
    assert [record.index for record in merged] == list(range(len(merged)))
    found = [record for record in merged if record.error is None]
    assert len(found) == len(MATRICES)
    for record in found:
        known = [found[record.digest] for found in records.values() if record.digest in found]
        assert record.count == min(each.count for each in known)
        assert record.result.verify()
        source = paths[("gauss", "greedy", "pmh").index(record.options["method"])]
        assert records[source][record.digest].circuit == record.circuit
    assert {record.options["method"] for record in found} > {"greedy"}
    run("linear.synthesize", given, results=tmp_path / "deep.jsonl", objective="depth", seed=1)
    with pytest.raises(errors.FileError, match=r"synthesize by depth, wanted linear.*count"):
        batch.merge([paths[0], tmp_path / "deep.jsonl"], merged.path)
    with pytest.raises(errors.OptionError, match="files: got none"):
        batch.merge([], merged.path)


# --- races --------------------------------------------------------------------------------------


def test_races_end_early_and_go_on(threads, tmp_path):
    operator = cliffords(6, 1)[0]
    race = functools.partial(batch.race, "clifford.synthesize", operator, executor=threads,
                             results=tmp_path / "race.jsonl", method="search",
                             steps=300)  # fmt: skip
    found = race(seeds=range(100, 112))
    assert [record.seed for record in found] == list(range(100, 112))
    counts = [zb.clifford.synthesize(operator, method="search", steps=300, seed=s).count
              for s in range(100, 112)]  # fmt: skip
    assert [record.count for record in found] == counts
    assert len(set(counts)) > 1
    assert found.best.seed == 100 + counts.index(min(counts)) or found.best.count == min(counts)
    before = found.path.read_bytes()
    assert len(race(seeds=range(100, 120), goal=min(counts))) == 12  # reached already
    assert found.path.read_bytes() == before
    assert 12 < len(race(seeds=count(100), patience=3)) < 200
    with pytest.raises(errors.FileError, match="input 0 is not the one"):
        race(seeds=range(5))
    with pytest.raises(errors.FileError, match="digest="):
        batch.race("clifford.synthesize", cliffords(6, 2)[1], executor=threads,
                   results=found.path, method="search", steps=300)  # fmt: skip


def test_race_goes_on_from_the_best_of_another(threads, tmp_path):
    matrix = zb.gallery.random_invertible(9, 1, seed=1)[0]
    race = functools.partial(batch.race, "linear.synthesize", matrix, executor=threads,
                             method="search", steps=100)  # fmt: skip
    best = race(seeds=range(3), results=tmp_path / "1.jsonl").best
    found = race(seeds=range(3, 6), results=tmp_path / "2.jsonl", start=best.result)
    assert all(record.count <= best.count for record in found)
    again = race(seeds=range(3, 7), results=tmp_path / "2.jsonl", start=best.result)
    assert len(again) == 4


def test_race_ends_where_nothing_can_be_better(threads, tmp_path):
    told = []
    found = batch.race(
        "linear.synthesize", [[1, 1, 0], [0, 1, 1], [0, 0, 1]], seeds=count(), executor=threads,
        results=tmp_path / "race.jsonl", progress=told.append, method="search",
    )  # fmt: skip
    assert len(found) <= 4
    assert found.best.is_proven
    assert found.best.count == found.best.result.least_count == 2
    assert told[-1].best == 2


# --- the command --------------------------------------------------------------------------------


def test_command(tmp_path, monkeypatch, capsys):
    monkeypatch.chdir(tmp_path)
    for k, matrix in enumerate(MATRICES):
        rows = ["".join(map(str, row)) for row in matrix.astype(int)]
        Path(f"m{k}.txt").write_text("\n".join(rows))
    Path("bad.txt").write_text("11\n11\n")
    Path("names.txt").write_text("m3.txt\nm4.txt\n\nm5.txt\n")

    def shell(line):
        code = _shell.main(line.split())
        return code, capsys.readouterr().err

    command = "batch linear m0.txt m1.txt m2.txt --list names.txt --method pmh --seed 1 -o"
    code, told = shell(f"{command} all.jsonl --workers 1")
    assert code == 0
    assert told.startswith("zeltbraidwerk: all.jsonl: 6 results, ")
    for k in range(2):
        code = shell(f"{command} p{k}.jsonl --workers 1 --array-index {k} --array-size 2 --quiet")
        assert code == (0, "")
    assert shell("batch merge p0.jsonl p1.jsonl -o merged.jsonl --quiet") == (0, "")
    assert content(Path("merged.jsonl")) == content(Path("all.jsonl"))
    code, told = shell("batch linear m0.txt bad.txt --seed 1 -o some.jsonl --workers 1")
    assert code == 1
    assert "1 of 2 inputs failed, the first: bad.txt: SingularMatrixError" in told
    for line, complaint in {
        "batch": "got no command",
        "batch liner m0.txt": "did you mean 'linear'?",
        "batch linear -o x.jsonl": "got no input, wanted files, or --list FILE",
        "batch linear m0.txt": "required: -o/--output",
        "batch linear m0.txt -o x.jsonl --aray-size 2": "did you mean '--array-size'?",
        "batch linear m0.txt -o x.jsonl --array-size 2": "--array-index: wanted together",
        "batch linear m0.txt -o x.jsonl --array-size 2 --array-index 2": "part: got 2, wanted 0 to",
        "batch linear m0.txt -o m0.txt": "m0.txt is not a results file",
        "batch merge m0.txt -o x.jsonl": "m0.txt is not a results file",
        "batch merge nowhere -o x.jsonl": "cannot read nowhere: No such file",
    }.items():
        code, told = shell(line)
        assert (code, told.count("\n")) == (2, 1), told
        assert complaint in told
    assert not Path("x.jsonl").exists()


# --- what is refused before any work -------------------------------------------------------------


class Unpicklable(str):
    def __reduce__(self):
        raise TypeError("not this one")


@pytest.mark.parametrize(
    ("task", "options", "kind", "complaint"),
    [
        ("cliford.synthesize", {}, errors.OptionError, "mean 'clifford.synthesize'?"),
        (lambda matrix: matrix, {}, errors.OptionError, "cannot be sent to other processes"),
        (zb.pauli.codiagonalize, {}, errors.OptionError, "wanted one of optimize, linear"),
        ("optimize", {"stepz": 3}, errors.OptionError, "not an option of optimize; did you mean"),
        ("optimize", {"steps": -1}, errors.OptionError, "steps: got -1, wanted 0 to"),
        ("optimize", {"objective": "size"}, errors.OptionError, "objective: got 'size'"),
        ("linear.synthesize", {"method": "gaus"}, errors.UnknownMethodError, "mean 'gauss'?"),
        ("linear.synthesize", {"method": Unpicklable("pmh")}, errors.OptionError,
         "method: .* cannot be sent to other processes: not this one"),
        ("linear.synthesize", {"device": "tokio"}, errors.DeviceError, "did you mean 'tokyo'?"),
        ("routing.route", {}, errors.OptionError, "device: got None, wanted one"),
        ("optimize", {"inputs": 3}, errors.DtypeError, "inputs: got 3, wanted a list"),
        ("optimize", {"inputs": "a.qasm"}, errors.DtypeError, "inputs: got 'a.qasm', wanted"),
        ("optimize", {"executor": 4}, errors.DtypeError, "executor: got 4, wanted None, an exec"),
        ("optimize", {"executor": "dask"}, errors.DtypeError, "executor: got 'dask'"),
        ("optimize", {"workers": 0}, errors.OptionError, "workers: got 0, wanted 1 to 4096"),
        ("optimize", {"retries": -1}, errors.OptionError, "retries: got -1"),
        ("optimize", {"seed": 1.5}, errors.DtypeError, "seed: got 1.5"),
        ("optimize", {"part": (2, 2)}, errors.OptionError, "part: got 2, wanted 0 to 1"),
        ("optimize", {"progress": 3}, errors.DtypeError, "progress: got 3"),
        ("optimize", {"results": None}, errors.DtypeError, "results: got None, wanted the path"),
        ("optimize", {"results": "/nowhere/runs.jsonl"}, errors.FileError, "No such file"),
        ("optimize", {"results": "."}, errors.FileError, "results: got '.', .*: Is a directory"),
    ],
)  # fmt: skip
def test_refusals(tmp_path, monkeypatch, task, options, kind, complaint):
    monkeypatch.chdir(tmp_path)
    given = {"inputs": [], "results": "runs.jsonl", **options}
    with pytest.raises(kind, match=complaint.replace("?", r"\?")) as told:
        batch.run(task, **given)
    assert "\n" not in str(told.value)
    assert list(tmp_path.iterdir()) == []


def test_closed_executor_is_refused(tmp_path):
    executor = ThreadPoolExecutor(1)
    executor.shutdown()
    with pytest.raises(errors.Error, match="executor: it takes no more work"):
        batch.run("optimize", [TOFFOLI], executor=executor, results=tmp_path / "runs.jsonl")


def test_nothing_of_clusters_or_pools_is_imported_with_the_package():
    code = (
        "import sys, zeltbraidwerk\n"
        "print({'distributed', 'dask', 'multiprocessing'} & set(sys.modules))"
    )
    done = subprocess.run([sys.executable, "-c", code], capture_output=True, text=True, check=True)
    assert done.stdout == "set()\n"

"""The command: every family from text to a verified circuit; what it refuses, in one line."""

import io
import json
import os
import re
import signal
import subprocess
import sys
from types import SimpleNamespace

import pytest

import zeltbraidwerk as zb
from zeltbraidwerk import _files, _shell, linear

FILES = {
    "c.qasm": "qreg q[4]; ccx q[0],q[1],q[2]; ccx q[1],q[2],q[3]; ccx q[0],q[1],q[2];",
    "cnots.qasm": "qreg q[3]; cx q[0],q[1]; cx q[1],q[2];",
    "phases.qasm": "qreg q[2]; cx q[0],q[1]; rz(0.5) q[1]; cx q[0],q[1];",
    "m.txt": "# rows\n1 1 0\n0,1,0\n\n001\n",
    "big.txt": "\n".join("".join("01"[bit] for bit in row) for row in
                         zb.gallery.aes_mixcolumns().astype(int).tolist()),
    "p.txt": "XXI 0.5\nYYI 2*theta + pi/4\n-IZZ -pi/4  # T\n",
    "n.txt": "XXI 0.5\nIZZ pi / 4\nZIZ 2*π/4",
    "short.txt": "XXI 0.5\nXX 0.5\n",
    "ph.txt": "110 0.5\n011 pi/4\n",
    "cl.txt": "IX\nXI\nIZ\n-ZI\n",
    "s.txt": "XXX\nZZI\n-IZZ\n",
    "code.txt": "XZZXI\nIXZZX\nXIXZZ\nZXIXZ\n",
    "g.txt": "0 1\n1-2\n0,2\n",
    "gm.txt": "011\n101\n110\n",
    "edges.txt": "0 1\n1 2\n2 3\n",
    "empty.txt": " \n",
    "singular.txt": "110\n011\n101\n",
    "bad.qasm": "qreg q[1];\nfoo q[0];",
    "bad.json": '{"a": 1}',
    "odd.txt": "X\nZ\nX\n",
    "ragged.txt": "10\n1\n",
}  # fmt: skip


@pytest.fixture
def shell(tmp_path, monkeypatch, capsys):
    """Runs the command among these files: exit code, standard output, standard error."""
    monkeypatch.chdir(tmp_path)
    for name, text in FILES.items():
        (tmp_path / name).write_text(text)
    (tmp_path / "binary").write_bytes(b"\x00\xff\xfe")
    (tmp_path / "folder").mkdir()

    def run(line, given=""):
        stdin = SimpleNamespace(buffer=io.BytesIO(given.encode()))
        monkeypatch.setattr(sys, "stdin", stdin)
        code = _shell.main(line.split())
        return code, *capsys.readouterr()

    return run


@pytest.mark.parametrize(
    ("line", "kind", "count"),
    [
        ("optimize c.qasm --objective depth --steps 2000", "Optimization", 11),
        ("optimize c.qasm --device grid:2x3 --placement 0,1,4,3 --steps 100", "Optimization", None),
        ("linear m.txt", "LinearSynthesis", 1),
        ("linear cnots.qasm --device line:3 --method search", "LinearSynthesis", 2),
        ("phase ph.txt --tail return", "PhaseSynthesis", 2),
        ("phase phases.qasm", "PhaseSynthesis", 2),
        ("pauli p.txt --order free --jobs all", "PauliSynthesis", 4),
        ("clifford cl.txt --permutation free", "CliffordSynthesis", 0),
        ("clifford cnots.qasm", "CliffordSynthesis", 2),
        ("state s.txt --steps 100", "StateSynthesis", 2),
        ("encoder code.txt", "EncoderSynthesis", 6),
        ("graph-state g.txt --method naive", "GraphStateSynthesis", 3),
        ("graph-state gm.txt --method naive", "GraphStateSynthesis", 3),
        ("route c.qasm --device edges.txt --tail return", "Routing", None),
    ],
)
def test_families(shell, line, kind, count):
    code, out, err = shell(f"{line} --format json" + ("" if "route" in line else " --seed 1"))
    assert code == 0
    assert re.fullmatch(r"zeltbraidwerk: \w+: \d+ two-qubit gates.*, verified, .* s\n", err)
    result = zb.from_json(out)
    assert type(result).__name__ == kind
    assert result.verify()
    assert count is None or result.count == count


def test_files_of_every_kind_and_back(shell, tmp_path):
    for suffix in ("qasm", "json", "svg", "xor"):
        assert shell(f"linear m.txt --seed 1 --quiet -o out.{suffix}") == (0, "", "")
    written = {path.suffix: path.read_text() for path in tmp_path.glob("out.*")}
    assert written[".svg"].startswith("<svg")
    result = zb.from_json(written[".json"])
    assert zb.Circuit.of(written[".qasm"]) == result.circuit.to_circuit()
    values = {"x0": 5, "x1": 9, "x2": 2}
    exec(written[".xor"], values)
    assert [values[f"y{k}"] for k in range(3)] == [5 ^ 9, 9, 2]
    assert shell("optimize - --seed 1 --quiet", written[".json"])[1].count("cx") == 1
    assert shell("linear - --seed 1 --quiet", FILES["m.txt"])[1] == written[".qasm"]
    assert len(list(tmp_path.iterdir())) == len(FILES) + 2 + 4  # and no part of a file


def test_pi_is_a_number(shell):
    code, out, _ = shell("pauli n.txt --format json --quiet --seed 1")
    assert (code, zb.from_json(out).circuit.symbols) == (0, ())
    assert zb.Parameter("a + π/2") == zb.Parameter("a + pi/2")


def test_comments_tell_places(shell):
    out = shell("linear m.txt --seed 1 --device grid:2x3 --permutation free --quiet")[1]
    circuit = zb.Circuit.of(out)
    made = re.search(r"zeltbraidwerk\.linear.*", out)[0]
    result = eval(made, {"zeltbraidwerk": zb, "device": "grid:2x3",
                         "matrix": [[1, 1, 0], [0, 1, 0], [0, 0, 1]]})  # fmt: skip
    assert circuit == result.circuit.to_circuit()
    places = re.search(r"inputs are on qubits ([\d ]+)", out)[1].split()
    assert tuple(map(int, places)) == result.placement
    logical = re.search(r"logical qubits come in on qubits (\d)", shell("encoder code.txt")[1])[1]
    assert logical in "01234"
    assert "a tail is left over" in shell("phase ph.txt --tail return --quiet")[1]


@pytest.mark.parametrize(
    ("line", "complaint"),
    [
        ("", "got no command, wanted one of optimize, linear"),
        ("optimise c.qasm", "got the command 'optimise'; did you mean 'optimize'?"),
        ("xyz", "got the command 'xyz', wanted one of optimize"),
        ("compare", "got no command, wanted one of optimize, .*, route; --help"),
        ("compare liner m.txt", "did you mean 'linear'?"),
        ("compare linear m.txt --method pmh", "option '--method'"),
        ("optimize", "required: input"),
        ("optimize c.qasm --bugdet 3", "got the option '--bugdet'; did you mean '--budget'?"),
        ("route c.qasm --devise line:4", "did you mean '--device'?"),
        ("linear m.txt m.txt", "got one more argument, 'm.txt'"),
        ("linear m.txt --seed x", "--seed: got 'x', wanted an integer"),
        ("linear m.txt --budget -1", "budget: got -1.0, wanted a positive number"),
        (
            "linear m.txt --method gaus",
            "method: got 'gaus', wanted one of auto, gauss.*; did you mean 'gauss'?",
        ),
        ("linear m.txt --objective t", "objective: got 't', wanted one of 'count', 'depth'"),
        ("linear nowhere.txt", "cannot read nowhere.txt: No such file"),
        ("linear folder", "cannot read folder: Is a directory"),
        ("linear empty.txt", "empty.txt: got no text"),
        ("linear -", "standard input: got no text"),
        ("linear binary", "binary: got binary data, wanted text in UTF-8"),
        ("linear singular.txt", "singular 3 by 3 matrix"),
        ("linear ragged.txt", "ragged.txt: line 2: 1 digits, but line 1 has 2"),
        ("linear c.qasm", "c.qasm: circuit: got the gate H"),
        ("phase cnots.qasm", "not diagonal; the command optimize takes it"),
        ("pauli c.qasm", "the command optimize takes circuits"),
        ("pauli s.txt", "s.txt: line 1: got 'XXX' alone, wanted an angle"),
        ("pauli short.txt", "got 'XX' of 2 letters, wanted 3"),
        ("pauli p.txt", "p.txt: got the symbolic angle .*theta.*, which OpenQASM 2 cannot hold"),
        ("clifford odd.txt", "odd.txt: got 3 lines, wanted the images"),
        ("state odd.txt", "wanted 1"),
        ("graph-state p.txt", "line 1"),
        ("optimize bad.qasm", "bad.qasm: line 2: the gate foo is not known"),
        ("optimize bad.json", "bad.json: text: got .*, wanted an object with"),
        ("route c.qasm", "--device: got none"),
        (
            "route c.qasm --device gird:2x2",
            "wanted one of qx5, .* nor is there a file 'gird:2x2'",
        ),
        ("route c.qasm --device tokio", "did you mean 'tokyo'?"),
        ("route c.qasm --device grid:4", "a shape such as"),
        ("route c.qasm --device p.txt", "p.txt: line 1: got .*, wanted two numbers"),
        ("route c.qasm --device line:2", "wanted at least 4 qubits"),
        ("linear m.txt -o x.txt", "got the suffix '.txt' of x.txt, wanted one of .qasm"),
        ("linear m.txt --format xro", "format: got 'xro', wanted one of qasm"),
        ("optimize c.qasm -o x.xor", "format: got 'xor'"),
        ("linear m.txt -o nowhere/x.qasm", "cannot write nowhere/x.qasm: No such directory"),
        ("linear m.txt -o folder", "cannot write folder: Is a directory"),
    ],
)
def test_bad_input_is_one_line_and_exit_code_2(shell, line, complaint):
    code, out, err = shell(line)
    assert (code, out, err.count("\n")) == (2, "", 1)
    assert err.startswith("zeltbraidwerk: error: ")
    assert re.search(complaint.replace("?", r"\?"), err)


def test_help_and_version(shell):
    assert shell("--version")[:2] == (0, f"zeltbraidwerk {zb.__version__}\n")
    assert "exit codes" in shell("--help")[1]
    for name in ("optimize", "graph-state", "compare", "compare linear"):
        code, out, _ = shell(f"{name} --help")
        assert code == 0
        assert f"examples:\n  zeltbraidwerk {name.split()[0]} " in out


def test_compare(shell):
    code, out, err = shell("compare linear m.txt --seed 1")
    rows = [line.split() for line in out.splitlines()[1:]]
    assert (code, err) == (0, "")
    assert [row[0] for row in rows] == [*linear.methods()[1:], "auto"]
    assert {row[-1] for row in rows} == {"yes"}
    pytest.importorskip("qiskit")
    pytest.importorskip("pytket")
    for line in ("optimize c.qasm --steps 100", "route c.qasm --device line:4 --steps 0"):
        code, out, _ = shell(f"compare {line}")
        assert code == 0
        assert re.search(r"^as given +18 ", out, re.MULTILINE)
        assert re.search(r"^Qiskit, level 3 +\d+ .*-$", out, re.MULTILINE)
        assert re.search(r"^pytket +\d+ .*-$", out, re.MULTILINE)


def test_what_fails_its_check_is_not_written(shell, monkeypatch, tmp_path):
    monkeypatch.setattr(linear.LinearSynthesis, "verify", lambda self: False)
    code, out, err = shell("linear m.txt -o out.qasm")
    assert (code, out) == (1, "")
    assert "failed its own check" in err
    assert not (tmp_path / "out.qasm").exists()
    code, out, _ = shell("compare linear m.txt")
    assert code == 1
    assert " NO" in out


def test_without_a_circuit_in_time_the_exit_code_is_1(shell):
    line = "linear big.txt --method greedy_inverse --budget 1e-9 --quiet"
    code, out, err = shell(line)
    assert code in (0, 1)  # the first run may end in any budget
    assert bool(out) == (code == 0)
    assert err.startswith("zeltbraidwerk: error") == (code == 1)


def test_ctrl_c_writes_the_best_so_far(shell, ctrl_c, tmp_path):
    code, out, err = shell("linear big.txt --method search --budget 60 -o out.json")
    assert (code, out) == (130, "")
    assert err.startswith("zeltbraidwerk: warning: stopped; this is the best so far: search")
    assert zb.from_json((tmp_path / "out.json").read_text()).verify()


def test_progress_is_for_terminals_alone(shell, monkeypatch):
    line = "linear big.txt --seed 1 --steps 100000 --method search --permutation free"
    assert "\r" not in shell(line)[2]
    monkeypatch.setattr(sys.stderr.__class__, "isatty", lambda self: True, raising=False)
    code, out, err = shell(line)
    counts = re.findall(r"\r\x1b\[Klinear \.\.\. (\d+) two-qubit gates", err)
    assert (code, len(counts) > 1) == (0, True)
    assert counts == sorted(counts, key=int, reverse=True)
    assert "\r" not in out
    assert shell("linear m.txt --quiet --seed 1")[2] == ""


def test_a_file_is_never_half_written(tmp_path, monkeypatch):
    file = tmp_path / "out.qasm"
    file.write_text("old")
    monkeypatch.setattr(_files.Path, "replace", lambda *paths: 1 / 0)
    with pytest.raises(ZeroDivisionError):
        _files.save(file, "new")
    assert [path.read_text() for path in tmp_path.iterdir()] == ["old"]


def test_as_a_process(tmp_path):
    """A reader that goes away is no error to tell; a full disk is."""
    (tmp_path / "m.txt").write_text(FILES["big.txt"])
    command = [sys.executable, "-m", "zeltbraidwerk", "linear", "m.txt", "--method", "pmh"]
    run = subprocess.Popen(
        [*command, "--quiet"], cwd=tmp_path, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
        preexec_fn=lambda: signal.signal(signal.SIGPIPE, signal.SIG_IGN),
    )  # fmt: skip
    run.stdout.close()
    assert (run.stderr.read(), run.wait()) == (b"", 141)
    run.stderr.close()
    with open("/dev/full", "w") as full:
        done = subprocess.run([*command, "--quiet"], cwd=tmp_path, stdout=full, check=False,
                              stderr=subprocess.PIPE, text=True)  # fmt: skip
    assert (done.returncode, done.stderr.count("\n")) == (2, 1)
    done = subprocess.run([*command, "--format", "json"], cwd=tmp_path, capture_output=True,
                          text=True, check=True)  # fmt: skip
    assert json.loads(done.stdout)["kind"] == "LinearSynthesis"


def test_pipes_and_closed_streams(tmp_path):
    (tmp_path / "m.txt").write_text(FILES["m.txt"])
    command = f"{sys.executable} -m zeltbraidwerk linear --quiet --seed 1 --format json"
    for line, code, told in (
        ("<(cat m.txt) -o /dev/stdout | cat", 0, ""),
        ("- <&-", 2, "standard input: got no text"),
        ("m.txt >&-", 2, "error: "),
        ("m.txt 2>&-", 0, ""),
    ):
        run = subprocess.run(
            ["bash", "-c", f"set -o pipefail; {command} {line}"],
            cwd=tmp_path, capture_output=True, text=True,
        )  # fmt: skip
        assert (run.returncode, run.stderr.count("\n")) == (code, bool(told)), run.stderr
        assert told in run.stderr
        assert code or zb.from_json(run.stdout).verify()


@pytest.mark.parametrize("arguments", [["-m", "zeltbraidwerk"], ["-c", "import zeltbraidwerk"]])
def test_ctrl_c_while_the_command_is_imported(tmp_path, arguments):
    """It ends the command without a traceback; in other programs it is a KeyboardInterrupt."""
    (tmp_path / "numpy.py").write_text("import os, signal; os.kill(os.getpid(), signal.SIGINT)")
    run = subprocess.run(
        [sys.executable, *arguments], env={**os.environ, "PYTHONPATH": str(tmp_path)},
        preexec_fn=lambda: signal.signal(signal.SIGINT, signal.default_int_handler),
        capture_output=True, text=True,
    )  # fmt: skip
    assert run.returncode == -signal.SIGINT
    assert run.stderr.endswith("KeyboardInterrupt\n") if arguments[0] == "-c" else not run.stderr

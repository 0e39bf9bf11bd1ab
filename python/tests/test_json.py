"""JSON of everything that has it: the same value comes back, verifies, and bad text is refused."""

import dataclasses
import json

import numpy as np
import pytest

import zeltbraidwerk as zb
from zeltbraidwerk import Circuit, CnotCircuit, Device, Gate, errors, gallery
from zeltbraidwerk._json import Stored
from zeltbraidwerk._results import Result
from zeltbraidwerk.instructions import Barrier, Conditional, Measure, Reset

TEXT = "qreg q[3]; ccx q[0],q[1],q[2]; rx(0.3) q[0]; cx q[0],q[1]; ry(0.7) q[0]; cx q[1],q[0];"
MIXED = Circuit(
    3,
    [
        Gate.rz(0, "theta[0]"), Gate("XX", (0, 1, 2), (1.5, 2)), Barrier((0, 2)), Measure(0, 2),
        Conditional(Gate.rx(1, -0.0), (0, 1), 2), Conditional(Reset(2), 2), Reset(1),
    ],
    [("a", 2), ("<b>", 1)],
)  # fmt: skip
MATRIX = gallery.random_invertible(6, 1)[0]
GRID = Device.grid(2, 3)
CLIFFORD = gallery.random_clifford(3, 1)[0]
ROTATIONS = [("XXI", 0.5), ("YYI", "a"), ("III", 1), ("IZZ", 0.25)]


# One of each family, with and without device, tail, symbols and steps by numbers.
RESULTS = [
    lambda: zb.linear.synthesize(MATRIX, seed=1, method="search", objective="depth", steps=5000),
    lambda: zb.linear.synthesize(MATRIX, device=Device.grid(3, 3), steps=100, permutation="free"),
    lambda: zb.phase.synthesize({"110": 0.5, "011": "a", "000": 1}, seed=1, tail="return"),
    lambda: zb.pauli.synthesize(ROTATIONS, tail="return", seed=2**64 - 1),
    lambda: zb.pauli.synthesize(ROTATIONS, tail=CLIFFORD, method="greedy"),
    lambda: zb.pauli.codiagonalize(["XX", "-ZZ"]),
    lambda: zb.clifford.synthesize(CLIFFORD, seed=3),
    lambda: zb.clifford.synthesize_state(["XXX", "ZZI", "-IZZ"], seed=1),
    lambda: zb.clifford.synthesize_encoder(["XXXX", "-ZZZZ"], seed=1),
    lambda: zb.graph_state.synthesize(np.ones((5, 5), int) - np.eye(5, dtype=int), seed=1),
    lambda: zb.routing.route(TEXT, Device.line(3), tail="return"),
    lambda: zb.routing.route_ions(TEXT),
    lambda: zb.routing.normalize(TEXT, repeat=True),
    lambda: zb.optimize(TEXT + "creg c[3]; measure q -> c;", seed=1, steps=9, permutation="free"),
    lambda: zb.optimize(TEXT, device=GRID, seed=2, steps=1000),
    lambda: zb.linear.synthesize([]),
]


@pytest.mark.parametrize("make", RESULTS)
def test_results_come_back(make):
    result = make()
    text = result.to_json()
    again = zb.from_json(text)
    assert type(again) is type(result)
    assert again == result
    assert again.to_json() == text
    assert again.verify()
    for field in dataclasses.fields(result):  # also those that == passes over
        first, second = getattr(result, field.name), getattr(again, field.name)
        assert np.array_equal(first, second) if isinstance(first, np.ndarray) else first == second
    assert "\n" not in text
    assert json.loads(text)["counts"] == result._counts()


@pytest.mark.parametrize(
    "value",
    [MIXED, Circuit(0), CnotCircuit(3, [(0, 1), (2, 1)]), CnotCircuit(0), GRID, Device(2, [], "é"),
     *gallery.random_clifford(4, 3), zb.CliffordTableau(0)],
    ids=lambda value: type(value).__name__,
)  # fmt: skip
def test_values_come_back(value):
    again = type(value).from_json(value.to_json())
    assert again == value
    assert repr(again) == repr(value)


def test_every_kind_is_tested():
    kinds = {kind for kind in Stored._kinds.values() if not kind.__subclasses__()}
    tested = {type(make()) for make in RESULTS}
    assert kinds - tested == {Circuit, CnotCircuit, Device, zb.CliffordTableau}


def test_tableaus_read_from_images_multiply_as_others_do():
    for n in (1, 2, 5):
        first, second = gallery.random_clifford(n, 2)
        again = zb.CliffordTableau.from_images(*first.images())
        assert again @ second == first @ second
        assert again.inverse() @ first == zb.CliffordTableau(n)


def test_a_result_of_another_version_of_the_package_is_read():
    """With a field less, which takes its default, and one more, which is passed over."""
    result = zb.linear.synthesize([[1, 1], [0, 1]], seed=1)
    document = json.loads(result.to_json())
    del document["content"]["call"]
    document["content"]["news"] = {"a": 1}
    again = zb.from_json(json.dumps(document))
    assert again == result
    assert again.call == ""


def changed(**values):
    """A result with other content at places such as ``circuit__gates``."""
    result = zb.linear.synthesize([[1, 1], [0, 1]], seed=1)
    document = json.loads(result.to_json())
    for path, value in values.items():
        *way, last = path.split("__")
        place = document
        for step in way:
            place = place[step]
        place[last] = value
    return json.dumps(document)


@pytest.mark.parametrize(
    ("text", "complaint"),
    [
        ("", "text: got .*, wanted JSON"),
        ("[" * 100_000, "text: got .*, wanted JSON"),
        ("{}", "text: got '{}', wanted an object"),
        ('{"format": "zeltbraidwerk"}', "version: got None"),
        (changed(version=2), "version: got 2, wanted 1 at most"),
        (changed(version=True, kind="x"), "kind: got 'x'"),
        (changed(kind="Circuit"), "content.operations: got None, wanted a list"),
        (changed(content=[]), "content: got .*, wanted an object"),
        (changed(content={}), "content: missing"),
        (changed(content__circuit__gates=[[0, 2]]), "content.circuit: gates: got qubit 2"),
        (changed(content__circuit__n=-1), "content.circuit: n: got -1"),
        (changed(content__permutation=[0, 0]), "content.permutation: got .*, wanted each wire"),
        (changed(content__permutation="01"), "content.permutation: got '01', wanted a list"),
        (changed(content__placement=[0, 7]), "content.placement: got"),
        (changed(content__objective="size"), "content.objective: got 'size'"),
        (changed(content__runs=True), "content.runs: got True, wanted an integer"),
        (changed(content__seconds="1"), "content.seconds: got '1', wanted a number"),
        (changed(content__matrix=["10", "0"]), "content.matrix: got .*, wanted text of 0 and 1"),
        (changed(content__trace=[{}]), r"content.trace\[0\]: missing"),
        (changed(content__device={"n": 1, "edges": [[0, 1]]}), "content.device: edges"),
    ],
)
def test_bad_text_is_refused_with_the_place(text, complaint):
    with pytest.raises(errors.JsonError, match=complaint):
        zb.from_json(text)


def test_another_kind_is_refused():
    with pytest.raises(errors.JsonError, match="kind: got 'CnotCircuit', wanted Circuit"):
        Circuit.from_json(CnotCircuit(1).to_json())
    assert isinstance(Result.from_json(zb.pauli.codiagonalize(["X"]).to_json()), Result)
    bad = MIXED.to_json().replace('"RZ"', '"RQ"')
    with pytest.raises(errors.JsonError, match=r"content.operations\[0\]: name: got 'RQ'"):
        zb.from_json(bad)


def test_the_call_makes_the_result_again():
    names = {"zeltbraidwerk": zb, "matrix": MATRIX, "rotations": ROTATIONS, "tail": CLIFFORD}
    for result in (
        zb.linear.synthesize(MATRIX, permutation="free", progress=print, budget=None),
        zb.pauli.synthesize(ROTATIONS, tail=CLIFFORD, method="greedy"),
    ):
        assert f"seed={result.seed}" in result.call
        assert "progress" not in result.call
        assert eval(result.call, names) == result


def test_notebook_and_picture(tmp_path):
    """Names are escaped; the picture is in the page, and in a file that is whole."""
    device = Device.line(3)
    named = Device(3, device.edges, "<script>")
    result = zb.routing.route("qreg q[3]; ccx q[0],q[1],q[2];", named)
    page = result._repr_html_()
    assert "<script>" not in page
    assert "&lt;script&gt;" in page
    assert "zeltbraidwerk.routing.route(circuit, device)" in page
    for shown in (result, MIXED, CnotCircuit(0)):
        assert "data:image/svg+xml;base64," in shown._repr_html_()
    file = tmp_path / "circuit.svg"
    file.write_text("old")
    file.chmod(0o640)
    result.save_svg(file)
    assert file.read_text() == result.circuit._repr_svg_()
    assert file.stat().st_mode & 0o777 == 0o640
    with pytest.raises(errors.FileError, match="No such file"):
        result.save_svg(tmp_path / "no" / "circuit.svg")
    assert list(tmp_path.iterdir()) == [file]


def test_counts_by_kind():
    gates = [Gate.rz(0, angle) for angle in (0.0, np.pi / 4, -3 * np.pi / 4, np.pi / 2, 0.3, "a")]
    circuit = Circuit(2, [*gates, Conditional(Gate.rx(0, np.pi / 4), 0), Gate.cnot(0, 1)])
    assert (circuit.rotation_count, circuit.t_count) == (5, 3)
    assert (circuit.one_qubit_count, circuit.two_qubit_count) == (7, 1)
    assert CnotCircuit(2, [(0, 1)]).rotation_count == 0

"""What looks like a valid argument but is none is refused by name, not taken for something else."""

import math
import pickle
from itertools import product as every

import numpy as np
import pytest
from hypothesis import given
from hypothesis import strategies as st

import zeltbraidwerk as zb
from zeltbraidwerk import Device, Gate, Parameter, errors

MATRIX = [[1, 1], [0, 1]]
FAMILIES = {
    "linear": lambda **options: zb.linear.synthesize(MATRIX, **options),
    "phase": lambda **options: zb.phase.synthesize({"11": 0.5}, **options),
    "clifford": lambda **options: zb.clifford.synthesize((["X"], ["Z"]), **options),
    "state": lambda **options: zb.clifford.synthesize_state(["XX", "ZZ"], **options),
    "encoder": lambda **options: zb.clifford.synthesize_encoder(["XX"], **options),
    "graph_state": lambda **options: zb.graph_state.synthesize([[0, 1], [1, 0]], **options),
    "pauli": lambda **options: zb.pauli.synthesize({"XX": 0.5}, **options),
    "optimize": lambda **options: zb.optimize("qreg q[2]; cx q[0],q[1];", **options),
}


def masked(values):
    return np.ma.array(values, mask=np.zeros(np.shape(values)))


# --- angles -------------------------------------------------------------------------------------


@pytest.mark.parametrize(
    "text", ["0.5", "1", "-1", "1e-3", ".5", "UMINUS 0.5", "+ 1 2", "pi/2", "a - a"]
)
def test_numbers_as_text_are_no_angles(text):
    with pytest.raises(errors.AngleError, match=r"value: got '.*', wanted a number, not text"):
        Parameter(text)


@pytest.mark.parametrize(
    "text",
    ["a b", "+ a b c", "+", "UMINUS", "UMINUS a b", " a",
     "a ", "+  a b", "a\n", "a\tb", "a[b]", "nan",
     "inf", "+ a -inf", "+ NaN a", "3a", "2**a", "a+", "(a", "a,b", "$a b$"],
)  # fmt: skip
def test_text_that_is_no_expression(text):
    with pytest.raises(
        errors.AngleError, match=r"value: got '.*', wanted an expression: .*'\+ a b"
    ):
        Parameter(text)
    with pytest.raises(errors.AngleError, match=r"params: got '.*', wanted an expression"):
        Gate.rz(0, text)
    with pytest.raises(errors.AngleError, match=r"polynomial: got '.*', wanted an expression"):
        zb.phase.synthesize({"1": text})


@pytest.mark.parametrize(
    "text", ["a*b", "sin(a)", "a^2", "2^a", "1/a", "a*(b+1)", "a/0", "1e308*a*10"]
)
def test_text_that_is_not_linear(text):
    with pytest.raises(
        errors.AngleError, match=r"value: .*got .*, wanted (sums|a number|a finite)"
    ):
        Parameter(text)


@pytest.mark.parametrize(
    ("text", "expression", "core"),
    [
        ("a", "a", "a"), ("theta[0]", "theta[0]", "theta[0]"), ("\u03b8", "\u03b8", "\u03b8"),
        ("_x1", "_x1", "_x1"), ("infinite", "infinite", "infinite"),
        (r"$\theta_{a-b}$", r"$\theta_{a-b}$", r"$\theta_{a-b}$"),
        ("+ 0.5 a", "a + 0.5", "+ a 0.5"), ("+ + a b c", "a + b + c", "+ a + b c"),
        ("UMINUS + a -2.500000", "-a + 2.5", "+ UMINUS a 2.5"),
        ("2*a", "2*a", "2*a"), ("- gamma", "-gamma", "UMINUS gamma"),
        ("a + b/2 + pi/4", "a + 0.5*b + 0.7853981633974483", "+ a + 0.5*b 0.7853981633974483"),
        ("-2*(b - 3*a)/4 - 1e-7", "1.5*a - 0.5*b - 1e-07", "+ 1.5*a + -0.5*b -1e-07"),
        ("0.1*a + 0.2*a + b - 0.3*a", "b", "b"),
    ],
)  # fmt: skip
def test_expressions(text, expression, core):
    angle = Parameter(text)
    assert (angle.expression, angle.to_core().expression) == (expression, core)
    assert Parameter(expression) == Parameter(core) == Parameter.from_core(angle.to_core()) == angle


def test_angles_are_bound():
    a, b = Parameter("a"), Parameter("b")
    angle = 2 * a - b / 4 + 0.5
    assert angle.coefficients == {"a": 2, "b": -0.25}
    assert angle.constant == 0.5
    assert angle.bind({"a": 0.25}) == 1 - b / 4
    assert angle.bind({"a": b / 8, "b": 1}) == b / 4 + 0.25
    assert 1 - a == -(a - 1)
    assert hash(1 - a) == hash(-(a - 1))
    assert a * 0 == 0.0
    assert np.float64(2) * a == a * np.int64(2) == a + a
    circuit = zb.Circuit(1, [Gate.rz(0, angle), Gate.h(0)])
    assert circuit.symbols == ("a", "b")
    assert circuit.bind({"b": 2, "a": 0.5})[0] == Gate.rz(0, 1.0)
    wrong = [
        ({"c": 1}, "got the symbol 'c', wanted one of a, b"),
        ({"a": math.nan}, "values: got nan"),
        ({1: 1}, "got the key 1"),
    ]
    for values, kind in wrong:
        with pytest.raises(errors.Error, match=kind):
            circuit.bind(values)
    for refused in (lambda: a * b, lambda: 1 / a, lambda: a / 0, lambda: a * math.inf):
        with pytest.raises(errors.AngleError, match="got"):
            refused()


def sums(parts):
    return st.one_of(
        st.builds(lambda a, b: a + b, parts, parts), st.builds(lambda a: a * 0.3, parts)
    )


@given(
    st.recursive(
        st.one_of(st.sampled_from(("a", "b", "theta[0]")), st.floats(-1e6, 1e6)).map(Parameter),
        sums,
    )
)
def test_what_the_library_writes_reads_back(angle):
    if angle.is_symbolic:
        assert Parameter(angle.expression) == Parameter.from_core(angle.to_core()) == angle
    assert pickle.loads(pickle.dumps(angle)) == angle


@pytest.mark.parametrize("value", [True, np.True_, b"1", 1j, np.array([0.5]), np.array("1"), [1]])
def test_what_is_no_number_is_no_angle(value):
    with pytest.raises(errors.DtypeError, match=r"value: got .*, wanted a number of radians"):
        Parameter(value)


# --- options ------------------------------------------------------------------------------------


@pytest.mark.parametrize("family", FAMILIES)
def test_efforts_are_numbers_and_functions(family):
    for budget in ("5", "1 s", b"5", True, np.True_, [5], masked(5.0)):
        with pytest.raises(errors.DtypeError, match=r"budget: got .*, wanted seconds"):
            FAMILIES[family](budget=budget)
    for budget in (math.nan, math.inf, -1, 0, 10**400):
        with pytest.raises(errors.OptionError, match=r"budget: got .*, wanted a positive number"):
            FAMILIES[family](budget=budget)
    for name, value in every(("seed", "steps", "restarts", "jobs"), (True, "1", 1.0, masked(1))):
        with pytest.raises(errors.DtypeError, match=f"{name}: got .*, wanted an integer"):
            FAMILIES[family](**{name: value})
    with pytest.raises(errors.DtypeError, match="progress: got 5, wanted a function or None"):
        FAMILIES[family](progress=5)


@pytest.mark.parametrize(("family", "methods", "options"), [
    ("linear", ["gauss", "pmh", "pairs", "blocks", "syndrome", "greedy"], ["steps", "reach"]),
    ("linear", ["auto", "search", "gauss", "blocks"], ["section", "width", "lookahead"]),
    ("phase", ["gray", "greedy"], ["steps"]), ("graph_state", ["decoding"], ["steps"]),
    ("clifford", ["elimination"], ["steps", "restarts", "budget"]),
    ("graph_state", ["naive"], ["tries", "steps", "restarts", "budget"]),
    ("graph_state", ["auto", "search"], ["tries"]),
])  # fmt: skip
def test_options_that_a_method_does_not_take(family, methods, options):
    for method, option in every(methods, options):
        with pytest.raises(
            errors.OptionError, match=f"{option}: not an option of method '{method}'"
        ):
            FAMILIES[family](method=method, **{option: 1})


# --- arrays -------------------------------------------------------------------------------------


class Field(np.ndarray):
    """As galois has them: an array that forbids what its field does not have."""

    def astype(self, *_, **__):
        raise TypeError

    __ne__ = __eq__ = astype


def test_what_holds_an_array_is_one():
    wanted = zb.linear.synthesize(MATRIX, method="gauss")
    whole = np.array(MATRIX)
    sparse = pytest.importorskip("scipy.sparse")
    for matrix in (whole.view(Field), sparse.csr_array(whole), tuple(MATRIX)):
        assert zb.linear.synthesize(matrix, method="gauss") == wanted


# --- graphs -------------------------------------------------------------------------------------


def test_graphs_with_directions_parallel_edges_and_loops():
    networkx, rustworkx = pytest.importorskip("networkx"), pytest.importorskip("rustworkx")
    parallel, directed, loop = rustworkx.PyGraph(), rustworkx.PyDiGraph(), networkx.Graph([(0, 0)])
    for graph, edges in ((parallel, [(0, 1), (1, 0)]), (directed, [(0, 1)])):
        graph.add_nodes_from(range(2))
        graph.add_edges_from_no_data(edges)
    directions = {"a directed": (networkx.DiGraph([(0, 1), (1, 0)]), directed)}
    kinds = directions | {"parallel edges": (networkx.MultiGraph([(0, 1), (0, 1)]), parallel)}
    for kind, graphs in kinds.items():
        for graph in graphs:
            for read, name in ((Device.of, "device"), (zb.graph_state.synthesize, "graph")):
                with pytest.raises(
                    errors.GraphError, match=f"{name}: got .*{kind}.*, wanted an und"
                ):
                    read(graph)
    with pytest.raises(errors.GraphError, match="device: got an edge from 0 to itself"):
        Device.of(loop)


def test_numbers_of_nodes():
    networkx = pytest.importorskip("networkx")
    one_based = networkx.Graph([(3, 1), (1, 2)])
    assert Device.of(one_based) == Device(3, [(0, 2), (0, 1)])
    assert Device.of(networkx.Graph([(4, 2), (2, 0)])) == Device(5, [(2, 4), (0, 2)])
    assert Device.of(networkx.grid_2d_graph(2, 3)) == Device.grid(2, 3)
    assert Device.of(networkx.Graph([("b", "a"), ("a", "c")])) == Device(3, [(0, 1), (1, 2)])
    stabilisers = zb.graph_state.synthesize(one_based).stabilizers
    assert stabilisers == ("XZZ", "ZXI", "ZIX")


def test_edges_that_count_from_one():
    text = r"got 1 as the least qubit, wanted qubits from 0 up; .*Device\(n, edges\)"
    for read, name in ((Device.from_edges, "edges"), (Device.of, "device")):
        with pytest.raises(errors.DeviceError, match=f"{name}: {text}"):
            read([(1, 2), (2, 3)])
    assert Device(4, [(1, 2), (2, 3)]).n == 4
    assert Device.of({(0, 1), (1, 2)}) == Device.line(3)


def test_a_matrix_of_loops_may_be_of_bool():
    assert zb.graph_state.synthesize(np.eye(2, dtype=bool)).stabilizers == ("YI", "IY")

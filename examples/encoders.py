"""Two-qubit gates and layers of encoders, beside those of the whole Clifford operators that other
ways make of a code; then those of CSS codes and of their states with all logical qubits 0: tables.

encoders.py            needs Stim, and for the last column Qiskit
encoders.py SECONDS    CSS codes once more with that budget, 14 searches
"""

import importlib.util
import sys
from collections.abc import Iterator
from typing import Any

import stim

import zeltbraidwerk as zb
from zeltbraidwerk import Circuit, gallery

HEADS = ("code", "encoder", "its logicals given", "for depth", "operator", "Qiskit, operator")


def main() -> None:
    show([HEADS, *(tuple(row(name, code)) for name, code in codes().items())])
    print()
    budgets = [None, *map(float, sys.argv[1:])]
    heads = [kind if budget is None else f"{kind}, {budget:g} s"
             for kind in ("encoder", "logical 0") for budget in budgets]  # fmt: skip
    rows = [tuple(css_row(name, code, budgets)) for name, code in css_codes().items()]
    show([("CSS code", *heads), *rows])


def show(rows: list[tuple[str, ...]]) -> None:
    widths = [max(map(len, column)) for column in zip(*rows, strict=True)]
    for cells in rows:
        padded = (cell.ljust(width) for cell, width in zip(cells, widths, strict=True))
        print("  ".join(padded).rstrip())


def codes() -> dict[str, list[str]]:
    surface = {f"surface, distance {d}": gallery.surface_code(d) for d in (3, 5)}
    # The first so many generators of the states of random Clifford operators.
    operators = {n: gallery.random_clifford(n, 1)[0] for n in (10, 20, 30)}
    drawn = {
        f"random [[{n},{k}]]": operators[n].images()[1][: n - k]
        for n, k in ((10, 2), (20, 10), (30, 5))
    }
    return gallery.stabilizer_codes() | surface | drawn


def css_codes() -> dict[str, Any]:
    return {
        "[[7,1,3]], Steane": gallery.steane_code(),
        "[[12,2,4]], carbon": gallery.carbon_code(),
        "[[16,2,4]], torus": gallery.toric_code(4),
        "[[17,1,5]], octagon": gallery.color_code_17(),
        "[[19,1,5]], hexagons": gallery.color_code(5),
        "[[23,1,7]], Golay": gallery.golay_code(),
        "[[144,12,12]], bicycle": gallery.bicycle_code(),
    }


def css_row(name: str, code: Any, budgets: list[float | None]) -> Iterator[str]:
    yield name
    for make, given in (
        (zb.clifford.synthesize_encoder, code),
        (zb.clifford.synthesize_state, gallery.logical_zero(code)),
    ):
        for budget in budgets:
            result = make(given, seed=1, budget=budget)
            assert result.verify()
            yield f"{result.count} / {result.depth}"


def row(name: str, code: list[str]) -> Iterator[str]:
    # An operator that has the generators, and with them logical operators; Stim chooses both.
    strings = [stim.PauliString(each) for each in code]
    operator = stim.Tableau.from_stabilizers(strings, allow_underconstrained=True)
    own = range(len(code), len(operator))
    logicals = [operator.x_output(q) for q in own], [operator.z_output(q) for q in own]
    yield name
    for result in (
        zb.clifford.synthesize_encoder(code, seed=1),
        zb.clifford.synthesize_encoder(code, logicals, seed=1),
        zb.clifford.synthesize_encoder(code, seed=1, objective="depth"),
        zb.clifford.synthesize(operator, permutation="free", seed=1),
    ):
        assert result.verify()
        yield f"{result.count} / {result.depth}"
    yield by_qiskit(operator)


def by_qiskit(operator: stim.Tableau) -> str:
    if importlib.util.find_spec("qiskit") is None:
        return "-"
    from qiskit.quantum_info import Clifford
    from qiskit.synthesis import synth_clifford_full

    whole = Circuit.from_stim(operator.to_circuit("elimination")).to_qiskit()
    found = Circuit.from_qiskit(synth_clifford_full(Clifford(whole)))
    return f"{found.two_qubit_count} / {found.two_qubit_depth}"


if __name__ == "__main__":
    main()

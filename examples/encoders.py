"""Two-qubit gates and layers of encoders, beside those of the whole Clifford operators that other
ways make of a code: a table.

encoders.py      needs Stim, and for the last column Qiskit
"""

import importlib.util
from collections.abc import Iterator

import stim

import zeltbraidwerk as zb
from zeltbraidwerk import Circuit, gallery

HEADS = ("code", "encoder", "its logicals given", "for depth", "operator", "Qiskit, operator")


def main() -> None:
    rows = [HEADS, *(tuple(row(name, code)) for name, code in codes().items())]
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

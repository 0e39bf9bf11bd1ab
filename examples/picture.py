"""Draws the README's picture: a matrix over GF(2) beside the CNOT circuit that computes it.

picture.py [file]     the picture goes to the file, or to picture.svg
"""

import re
import sys
from pathlib import Path

import zeltbraidwerk as zb
from zeltbraidwerk import gallery

CELL, MARGIN, GAP = 30, 16, 64
INK, PAPER, LINE = "#1f5fbf", "#ffffff", "#c8d0da"


def main() -> None:
    wanted = gallery.random_invertible(8, 1)[0]
    # Outputs may change places: the rows are shown in the order in which the wires carry them.
    circuit = zb.linear.synthesize(wanted, permutation="free", restarts=20, seed=7).circuit
    matrix = circuit.matrix()
    drawing = circuit._repr_svg_()

    side = CELL * len(matrix)
    cells = "".join(
        f'<rect x="{MARGIN + c * CELL}" y="{MARGIN + r * CELL}" width="{CELL}" height="{CELL}" '
        f'fill="{INK if matrix[r, c] else PAPER}" stroke="{LINE}"/>'
        for r in range(len(matrix))
        for c in range(len(matrix))
    )
    # The circuit, a picture of its own, scaled to the height of the matrix.
    size = re.search(r'width="([\d.]+)" height="([\d.]+)"', drawing)
    assert size is not None
    width = side * float(size[1]) / float(size[2])
    place = f'x="{MARGIN + side + GAP}" y="{MARGIN}" width="{width:.1f}" height="{side}"'
    drawing = drawing.replace(size[0], place, 1)

    total, tall, arrow = 2 * MARGIN + side + GAP + width, 2 * MARGIN + side, MARGIN + side + 20
    picture = (
        f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {total:.1f} {tall}" '
        f'width="{total:.1f}" height="{tall}"><rect width="100%" height="100%" fill="{PAPER}"/>'
        f'{cells}<path d="M{arrow} {tall / 2}h24m-8 -8l8 8l-8 8" fill="none" stroke="{INK}" '
        f'stroke-width="3"/>{drawing}</svg>\n'
    )
    file = Path(sys.argv[1] if len(sys.argv) > 1 else "picture.svg")
    file.write_text(picture, encoding="utf-8")
    print(f"{file}: {circuit.count} CNOTs, depth {circuit.depth}")


if __name__ == "__main__":
    main()

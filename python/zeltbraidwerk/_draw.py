"""Pictures of circuits, as text and as SVG, from one layout: columns of gates whose vertical spans
do not touch, each gate in the first column that has room for it."""

from __future__ import annotations

from collections.abc import Callable, Iterable, Sequence
from dataclasses import dataclass, field
from html import escape

from zeltbraidwerk import limits

CONTROL, TARGET, BARRIER = "●", "⊕", "░"


@dataclass(frozen=True)
class Box:
    """One gate of a picture, with a label for each of its wires. Boxes that share a classical bit
    are drawn in different columns."""

    qubits: tuple[int, ...]
    labels: tuple[str, ...]
    bits: tuple[int, ...] = ()


@dataclass
class Column:
    """Gates that are drawn one above the other."""

    labels: dict[int, str] = field(default_factory=dict)
    bonds: set[int] = field(default_factory=set)  # wire w is joined to wire w + 1

    @property
    def width(self) -> int:
        return max(len(label) for label in self.labels.values())


def columns(boxes: Iterable[Box]) -> list[Column]:
    listed = list(boxes)
    crossed = sum(max(box.qubits) - min(box.qubits) + 1 for box in listed)
    limits.check_memory("circuit", crossed, "crossings of wires in its picture", 150 * crossed)
    found: list[Column] = []
    free: dict[int, int] = {}  # the first column with room on a wire; bit b is wire -1 - b
    for box in listed:
        low, high = min(box.qubits), max(box.qubits)
        wires = [*range(low, high + 1), *(-1 - bit for bit in box.bits)]
        place = max(free.get(wire, 0) for wire in wires)
        if place == len(found):
            found.append(Column())
        found[place].labels.update(zip(box.qubits, box.labels, strict=True))
        found[place].bonds.update(range(low, high))
        free.update((wire, place + 1) for wire in wires)
    return found


def blocks(
    items: list[Column], room: float, width_of: Callable[[Column], float]
) -> list[list[Column]]:
    """The columns in blocks that fit into a line; at least one block, at least one column each."""
    found: list[list[Column]] = [[]]
    used = 0.0
    for column in items:
        width = width_of(column)
        if found[-1] and used + width > room:
            found.append([])
            used = 0.0
        found[-1].append(column)
        used += width
    return found


def text(wires: Sequence[str], boxes: Iterable[Box], width: int) -> str:
    """One line per wire, with the connections between them; long circuits continue below."""
    names = [f"{wire}: " for wire in wires]
    margin = max(map(len, names), default=0)
    cut = blocks(columns(boxes), width - margin - 2, lambda column: column.width + 2)
    letters = len(names) * sum(sum(column.width + 2 for column in block) + margin for block in cut)
    limits.check_memory("circuit", letters, "letters in its picture", 12 * letters)
    return "\n\n".join(_text_block(names, margin, block) for block in cut)


def _text_block(names: list[str], margin: int, block: list[Column]) -> str:
    lines = []
    for wire, name in enumerate(names):
        line = name.rjust(margin) + "─"
        below = " " * (margin + 1)
        for column in block:
            crossing = "┼" if wire in column.bonds or wire - 1 in column.bonds else "─"
            size = column.width
            line += "─" + column.labels.get(wire, crossing).center(size, "─") + "─"
            below += " " + ("│" if wire in column.bonds else " ").center(size) + " "
        lines.append(line + "─")
        if wire + 1 < len(names):
            lines.append(below.rstrip())
    return "\n".join(lines)


STEP, ROW, GAP = 28, 32, 24  # of the SVG, in its units
_STYLE = (
    "<style>.w{stroke:#8a94a6;stroke-width:1}.b{stroke:#1f5fbf;stroke-width:2}"
    ".c{fill:#1f5fbf}.t{fill:#fff;stroke:#1f5fbf;stroke-width:2}"
    ".g{fill:#eaf1fb;stroke:#1f5fbf;stroke-width:1.5}"
    "text{font:13px ui-monospace,Menlo,Consolas,monospace;fill:#1b2430}</style>"
)


def svg(wires: Sequence[str], boxes: list[Box], room: int = 1000, most: int = 3000) -> str:
    """A complete SVG file, on white. After ``most`` gates it ends with the number of the others."""
    margin = max([44, *(8 * len(wire) + 20 for wire in wires)])
    cut = blocks(columns(boxes[:most]), room - margin, _step)
    lines = len(wires) * len(cut)
    limits.check_memory("circuit", lines, "lines of wires in its picture", 600 * lines)
    height = len(wires) * ROW
    right = margin + max(sum(map(_step, block)) for block in cut) + 12
    parts = []
    for index, block in enumerate(cut):
        parts += _svg_block(wires, block, (margin, right), index * (height + GAP))
    total = len(cut) * (height + GAP) - GAP + 8
    if len(boxes) > most:
        parts.append(f'<text x="8" y="{total + 8}">and {len(boxes) - most} more gates</text>')
        total += 20
    return (
        f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {right} {total}" '
        f'width="{right}" height="{total}">{_STYLE}'
        f'<rect width="{right}" height="{total}" fill="#fff"/>{"".join(parts)}</svg>'
    )


def _step(column: Column) -> int:
    return max(STEP, 8 * column.width + 20)


def _svg_block(
    wires: Sequence[str], block: list[Column], sides: tuple[int, int], top: int
) -> list[str]:
    def level(wire: int) -> int:
        return top + wire * ROW + ROW // 2 + 4

    parts = []
    left, right = sides
    for wire, name in enumerate(wires):
        y = level(wire)
        parts.append(f'<text x="8" y="{y + 4}">{escape(name)}</text>')
        parts.append(f'<line class="w" x1="{left - 8}" x2="{right - 8}" y1="{y}" y2="{y}"/>')
    for column in block:
        x = left + _step(column) / 2
        for wire in sorted(column.bonds):
            ends = f'y1="{level(wire)}" y2="{level(wire + 1)}"'
            parts.append(f'<line class="b" x1="{x:g}" x2="{x:g}" {ends}/>')
        for wire, label in sorted(column.labels.items()):
            parts.append(_svg_label(x, level(wire), label))
        left += _step(column)
    return parts


def _svg_label(x: float, y: int, label: str) -> str:
    if label == CONTROL:
        return f'<circle class="c" cx="{x:g}" cy="{y}" r="5"/>'
    if label == TARGET:
        cross = f"M{x - 9:g} {y}h18M{x:g} {y - 9}v18"
        return f'<circle class="t" cx="{x:g}" cy="{y}" r="9"/><path class="b" d="{cross}"/>'
    half = 4 * len(label) + 6
    return (
        f'<rect class="g" x="{x - half:g}" y="{y - 11}" width="{2 * half}" height="22" rx="3"/>'
        f'<text x="{x:g}" y="{y + 4}" text-anchor="middle">{escape(label)}</text>'
    )

"""Pictures of devices: qubits laid out so that distances on paper are those along edges."""

from __future__ import annotations

import html
from collections.abc import Mapping, Sequence
from typing import Any

import numpy as np
import numpy.typing as npt

from zeltbraidwerk import limits

STEP, MARGIN, RADIUS = 56, 28, 13  # of the SVG, in its units
LONGEST = 3  # characters in a circle
_STYLE = (
    "<style>.e{stroke:#b4bdca;stroke-width:2}.x{stroke:#c0392b;stroke-width:2;stroke-dasharray:4}"
    ".u{stroke:#1f5fbf}.q{fill:#eaf1fb;stroke:#1f5fbf;stroke-width:1.5}"
    "text{font:12px ui-monospace,Menlo,Consolas,monospace;fill:#1b2430;text-anchor:middle}</style>"
)


def svg(device: Any, used: Mapping[tuple[int, int], int]) -> str:
    """``used`` counts gates by edge; edges with more gates are wider. Pairs that are no edge are
    dashed red. Labels that are too long for their circle, and rates, are shown where the pointer
    is."""
    n, edges, labels = device.n, device.edges, device.labels
    edge_errors, qubit_errors = device.edge_errors or {}, device.qubit_errors or {}
    places = _layout(n, edges) * STEP + MARGIN
    width, height = (places.max(axis=0) + MARGIN) if n else (2 * MARGIN, 2 * MARGIN)
    most = max(used.values(), default=1)
    parts = []
    for a, b in sorted({*edges, *used}):
        ends = "x1='{:.1f}' y1='{:.1f}' x2='{:.1f}' y2='{:.1f}'".format(*places[a], *places[b])
        if (a, b) not in edges:
            parts.append(f"<line class='x' {ends}>{_title(used[a, b], 'no edge')}</line>")
        elif (a, b) in used:
            wide = 3 + 6 * used[a, b] / most
            title = _title(used[a, b], _error(edge_errors.get((a, b))))
            parts.append(f"<line class='u' stroke-width='{wide:.1f}' {ends}>{title}</line>")
        else:
            title = _title(_error(edge_errors.get((a, b))))
            parts.append(f"<line class='e' {ends}>{title}</line>")
    for qubit, (x, y) in enumerate(places):
        label, error = str(labels[qubit]), _error(qubit_errors.get(qubit))
        title = _title(label if label != str(qubit) else "", error)
        shown = label if len(label) <= LONGEST else str(qubit)
        parts.append(f"<circle class='q' cx='{x:.1f}' cy='{y:.1f}' r='{RADIUS}'>{title}</circle>")
        parts.append(f"<text x='{x:.1f}' y='{y + 4:.1f}'>{html.escape(shown)}{title}</text>")
    return (
        f"<svg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 {width:.0f} {height:.0f}' "
        f"width='{width:.0f}' height='{height:.0f}'>{_STYLE}"
        f"<rect width='{width:.0f}' height='{height:.0f}' fill='#fff'/>{''.join(parts)}</svg>"
    )


def _title(*parts: object) -> str:
    text = ", ".join(str(part) for part in parts if part != "")
    return f"<title>{html.escape(text)}</title>" if text else ""


def _error(rate: float | None) -> str:
    return "" if rate is None else f"error {rate:.2g}"


def _layout(n: int, edges: Sequence[tuple[int, int]]) -> npt.NDArray[np.float64]:
    """Stress majorisation from a start by the two main axes of the distances (E. R. Gansner,
    Y. Koren, S. North, 2004). The same picture every time."""
    if n < 2:
        return np.zeros((n, 2))
    limits.check_memory("device", n, "qubits in its picture", 120 * n**2)
    far = _distances(n, edges)
    centred = -0.5 * (far**2 - (far**2).mean(0) - (far**2).mean(1)[:, None] + (far**2).mean())
    values, vectors = np.linalg.eigh(centred)
    places = vectors[:, -2:][:, ::-1] * np.sqrt(np.maximum(values[-2:][::-1], 0))
    # Qubits with equal coordinates are moved apart.
    angle = 2.4 * np.arange(n)
    places += 0.05 * np.stack((np.cos(angle), np.sin(angle)), axis=1)
    weight = 1 / np.maximum(far, 1) ** 2
    np.fill_diagonal(weight, 0)
    inverse = np.linalg.pinv(np.diag(weight.sum(1)) - weight)
    for _ in range(60):
        gaps = np.linalg.norm(places[:, None] - places[None], axis=2)
        ratio = weight * far / np.maximum(gaps, 1e-9)
        places = inverse @ (np.diag(ratio.sum(1)) - ratio) @ places
    return np.asarray(places - places.min(axis=0))


def _distances(n: int, edges: Sequence[tuple[int, int]]) -> npt.NDArray[np.float64]:
    """Numbers of edges; components are a little further apart than the device is wide."""
    step = np.eye(n, dtype=np.bool_)
    for a, b in edges:
        step[a, b] = step[b, a] = True
    far = np.full((n, n), -1.0)
    reached = np.eye(n, dtype=np.bool_)
    for hops in range(n):
        far[reached & (far < 0)] = hops
        wider = reached.astype(np.float32) @ step > 0
        if np.array_equal(wider, reached):
            break
        reached = wider
    far[far < 0] = far.max() + 2
    return far

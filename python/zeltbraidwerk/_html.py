"""Circuits and results in a notebook: a picture, what there is to know in a table, and code."""

from __future__ import annotations

import binascii
from collections.abc import Iterable, Sequence
from html import escape

_MOST = 64  # numbers of a list that are shown


def page(svg: str, rows: Iterable[tuple[str, object]], code: str = "") -> str:
    """The picture is an image of its own, so that its styles do not reach the rest of the page."""
    data = binascii.b2a_base64(svg.encode(), newline=False).decode()
    cells = "".join(
        f'<tr><td style="text-align:left">{escape(name)}</td>'
        f'<td style="text-align:left">{escape(str(value))}</td></tr>'
        for name, value in rows
    )
    repeat = f"<pre>{escape(code)}</pre>" if code else ""
    return (
        f"<div><table><tbody>{cells}</tbody></table>{repeat}"
        f'<img alt="circuit" src="data:image/svg+xml;base64,{data}"/></div>'
    )


def listed(numbers: Sequence[int]) -> str:
    """Where things are: "in place", or the numbers, the first of many."""
    if list(numbers) == list(range(len(numbers))):
        return "in place"
    shown = " ".join(map(str, numbers[:_MOST]))
    return shown if len(numbers) <= _MOST else f"{shown} ... ({len(numbers)})"

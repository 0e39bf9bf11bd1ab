"""Values in the texts of errors."""

from __future__ import annotations

from typing import Any

_MOST = 80  # characters


def shown(value: Any) -> str:
    """The value for the text of an error: short and on one line, even where its ``repr`` fails."""
    try:
        text = " ".join(repr(value).split())
    except Exception:  # also of an int with too many digits
        text = f"a value of type {type(value).__name__}"
    return text if len(text) <= _MOST else f"{text[: _MOST - 3]}..."

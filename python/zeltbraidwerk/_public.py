"""What modules show of themselves: public names alone, and the nearest one for a name they lack."""

from __future__ import annotations

import difflib
from types import ModuleType
from typing import NoReturn


def tidy(*modules: ModuleType) -> None:
    """``dir`` of each module, and so completion, lists its ``__all__``, or the public names that it
    defines itself."""
    for module in modules:
        _tidy(module)


def _tidy(module: ModuleType) -> None:
    own = [name for name, value in vars(module).items()
           if name[0] != "_" and getattr(value, "__module__", None) == module.__name__]  # fmt: skip
    public = sorted(getattr(module, "__all__", own))

    def unknown(name: str) -> NoReturn:
        text = f"module {module.__name__!r} has no attribute {name!r}"
        # Names with two underscores are what Python and its tools ask every module for.
        near = [] if name.startswith("__") else difflib.get_close_matches(name, public, n=1)
        raise AttributeError(f"{text}; did you mean {near[0]!r}?" if near else text)

    vars(module).update(__dir__=lambda: public, __getattr__=unknown)

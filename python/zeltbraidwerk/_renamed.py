"""Old names, which work for one release more and warn.

An option, a value of an option, or a field of a result that got another name is listed where the
new one is defined, by one of the three helpers here.
"""

from __future__ import annotations

import functools
import sys
import warnings
from collections.abc import Callable, Collection
from pathlib import Path
from typing import Any, ParamSpec, TypeVar

from zeltbraidwerk import errors

P = ParamSpec("P")
R = TypeVar("R")

_PACKAGE = str(Path(__file__).parent)


def warn(old: str, new: str) -> None:
    """The warning points at the line of the user's code that called the package."""
    level = 1
    frame = sys._getframe()
    while frame.f_back is not None and frame.f_code.co_filename.startswith(_PACKAGE):
        frame = frame.f_back
        level += 1
    text = f"{old} is now called {new}; the old name will be removed in the next release"
    warnings.warn(text, DeprecationWarning, stacklevel=level)


def options(**new_names: str) -> Callable[[Callable[P, R]], Callable[P, R]]:
    """Decorates a function whose keyword-only options have new names: ``old="new"``. Both names in
    one call are refused."""

    def decorate(function: Callable[P, R]) -> Callable[P, R]:
        @functools.wraps(function)
        def call(*args: P.args, **given: P.kwargs) -> R:
            for old, new in new_names.items():
                if old in given:
                    if new in given:
                        raise errors.OptionError(
                            f"{old}: got it together with {new}, its new name; wanted {new} alone"
                        )
                    warn(f"the option {old}", new)
                    given[new] = given.pop(old)
            return function(*args, **given)

        return call

    return decorate


def value(given: Any, known: Collection[str]) -> Any:
    """The value of an option, with a hyphen of an old spelling replaced by an underscore."""
    if isinstance(given, str) and given not in known and given.replace("-", "_") in known:
        warn(repr(given), repr(given.replace("-", "_")))
        return given.replace("-", "_")
    return given


class Field:
    """The old name of a field, in the class that has the new one. Where the two do not mean the
    same, ``read`` makes the old value of the object."""

    def __init__(self, new: str, read: Callable[[Any], Any] | None = None) -> None:
        self._new = new
        self._read = read or (lambda owner: getattr(owner, new))

    def __set_name__(self, owner: type, name: str) -> None:
        self._old = f"{owner.__name__}.{name}"

    def __get__(self, owner: Any, kind: type | None = None) -> Any:
        if owner is None:
            return self
        warn(self._old, self._new)
        return self._read(owner)

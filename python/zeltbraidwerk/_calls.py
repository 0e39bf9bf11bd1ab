"""How a result is made again: the call with all its options, as text."""

from __future__ import annotations

import functools
from collections.abc import Callable, Mapping
from itertools import starmap
from typing import Any, ParamSpec, TypeVar

from zeltbraidwerk import errors

P = ParamSpec("P")
R = TypeVar("R")

_WRITTEN = (bool, int, float, str)  # values that are shown; others are shown as their name
_LONGEST = 60  # characters of a value


def append_result(done: list[R], function: Callable[[], R]) -> None:
    """Appends what the function returns. Ctrl-C cannot come between both, where what was made
    would be lost: nothing here runs the interpreter after the function has returned."""
    done.extend(starmap(function, [()]))


def recorded(name: str, *positional: str) -> Callable[[Callable[P, R]], Callable[P, R]]:
    """Decorates a function that returns a result: the field ``call`` of the result, or of the best
    so far where Ctrl-C ends the call, becomes the text of the call, with the seed that was
    drawn. Wherever in the call Ctrl-C comes, an Interrupted is raised; where memory runs out, a
    TooLargeError."""

    def decorate(function: Callable[P, R]) -> Callable[P, R]:
        @functools.wraps(function)
        def call(*args: P.args, **given: P.kwargs) -> R:
            done: list[R] = []
            try:
                append_result(done, functools.partial(function, *args, **given))
                return _noted(done[0], name, positional, given)
            except MemoryError:  # in spite of the limit, where others have taken what there was
                raise errors.TooLargeError(
                    "memory: there is not enough for this input and these options; a smaller "
                    "input, fewer jobs or another method takes less"
                ) from None
            except KeyboardInterrupt as stopped:
                best = done[0] if done else getattr(stopped, "best", None)
            if best is not None:
                _noted(best, name, positional, given)
            raise errors.Interrupted(best=best)

        return call

    return decorate


def _noted(result: R, name: str, positional: tuple[str, ...], given: Mapping[str, Any]) -> R:
    options = {
        option: value
        for option, value in given.items()
        if option not in (*positional, "progress") and value is not None
    }
    seed = getattr(result, "seed", None)
    if seed is not None:
        options["seed"] = seed
    parts = [*positional, *(f"{option}={_shown(option, options[option])}" for option in options)]
    object.__setattr__(result, "call", f"zeltbraidwerk.{name}({', '.join(parts)})")
    return result


def _shown(option: str, value: Any) -> str:
    plain = isinstance(value, _WRITTEN) or (
        isinstance(value, tuple) and all(isinstance(part, _WRITTEN) for part in value)
    )
    text = repr(value)
    return text if plain and len(text) <= _LONGEST else option

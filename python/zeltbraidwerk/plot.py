"""Pictures of results, for a notebook. They need matplotlib."""

from __future__ import annotations

from typing import TYPE_CHECKING, Any, Literal, Protocol

from zeltbraidwerk import _interop, _validate, errors

if TYPE_CHECKING:
    from collections.abc import Sequence

    from zeltbraidwerk._search import Point

__all__ = ["best_over_time"]


class Traced(Protocol):
    """A result of any family; ``trace`` holds the moments at which its best became better."""

    @property
    def trace(self) -> Sequence[Point]: ...
    @property
    def seconds(self) -> float: ...
    @property
    def count(self) -> int: ...
    @property
    def depth(self) -> int: ...


def best_over_time(
    *results: Traced, axes: Any = None, value: Literal["count", "depth"] = "count"
) -> Any:
    """Draws the best count, or depth, of each result against the seconds of its search, one line
    per result; one point for a result without a search. Returns the axes: those given, or new
    ones.

    >>> import zeltbraidwerk as zb
    >>> matrix = zb.gallery.random_invertible(8, 1)[0]
    >>> result = zb.linear.synthesize(matrix, method="search", seed=1)
    >>> axes = zb.plot.best_over_time(result)  # doctest: +SKIP
    """
    _validate.choice(value, "value", ("count", "depth"))
    for result in results:
        # Arrays have a method of the name.
        if not isinstance(getattr(result, "trace", None), tuple):
            raise errors.DtypeError(
                f"results: got {_validate.shown(result)}, wanted results of a search"
            )
    if axes is None:
        axes = _interop._package("matplotlib.pyplot").figure().add_subplot()
    elif not callable(getattr(axes, "step", None)):
        raise errors.DtypeError(
            f"axes: got {_validate.shown(axes)}, wanted axes of matplotlib or None"
        )
    for k, result in enumerate(results):
        points = result.trace or (result,)
        seconds = [point.seconds for point in points]
        values = [getattr(point, value) for point in points]
        label = f"{k}: {getattr(result, 'method', '')}".rstrip(": ")
        axes.step(seconds, values, where="post", label=label, marker=".")
    axes.set_xscale("log")
    axes.set_xlabel("seconds")
    axes.set_ylabel("gates on two qubits" if value == "count" else "layers")
    if len(results) > 1:
        axes.legend()
    return axes

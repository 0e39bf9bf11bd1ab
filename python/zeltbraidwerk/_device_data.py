"""What a device may say of its qubits and edges beside the edges: labels, rates, durations."""

from __future__ import annotations

import math
from collections.abc import Callable, Hashable, Mapping, Sequence
from typing import Any

from zeltbraidwerk import _validate, errors

Label = Hashable
Rates = tuple[float | None, ...]  # None where it is not known
Check = Callable[[Any, str, Any], float]


def labels_of(value: Any, n: int) -> tuple[Label, ...] | None:
    """One per qubit, all different; None for the numbers of the qubits."""
    if value is None:
        return None
    found = tuple(_validate.items(value, "labels", "one label per qubit"))
    try:
        distinct = len(set(found))
    except TypeError:
        raise errors.DtypeError(
            f"labels: got {_validate.shown(found)}, wanted labels that can be keys of a dict"
        ) from None
    if len(found) != n:
        raise errors.ShapeError(f"labels: got {len(found)}, wanted {n}, one per qubit")
    if distinct < n:
        twice = next(label for k, label in enumerate(found) if label in found[:k])
        raise errors.DeviceError(f"labels: got {_validate.shown(twice)} twice, wanted it once")
    numbers = all(type(label) is int and label == q for q, label in enumerate(found))
    return None if numbers else found


def qubit_rates(value: Any, n: int) -> Rates | None:
    """Of a mapping from qubits to rates, or one rate or None per qubit."""
    if value is None:
        return None
    if not isinstance(value, Mapping):
        listed = _validate.items(value, "qubit_errors", "rates by qubit")
        if len(listed) != n:
            raise errors.ShapeError(f"qubit_errors: got {len(listed)}, wanted {n}, one per qubit")
        value = {qubit: each for qubit, each in enumerate(listed) if each is not None}
    found: list[float | None] = [None] * n
    for qubit, each in value.items():
        place = _validate.qubits((qubit,), "qubit_errors")
        _validate.qubits_below(place, n, "qubit_errors")
        found[place[0]] = rate(each, "qubit_errors", place[0])
    return _or_none(found)


def of_edges(value: Any, edges: Sequence[tuple[int, int]], name: str, check: Check) -> Rates | None:
    """Of a mapping from edges, in either order, to rates or durations."""
    if value is None:
        return None
    if not isinstance(value, Mapping):
        raise errors.DtypeError(
            f"{name}: got {_validate.shown(value)}, wanted a mapping from edges to numbers"
        )
    place = {edge: k for k, edge in enumerate(edges)}
    found: list[float | None] = [None] * len(edges)
    for edge, each in value.items():
        pair = _validate.qubits(edge, name)
        k = place.get((min(pair), max(pair))) if len(pair) == 2 else None
        if k is None:
            raise errors.DeviceError(
                f"{name}: got {_validate.shown(edge)}, wanted an edge of the device"
            )
        checked = check(each, name, edge)
        if found[k] not in (None, checked):
            raise errors.DeviceError(
                f"{name}: got {found[k]:g} and {checked:g} for the edge {edges[k]}, which has "
                "no direction, wanted one number"
            )
        found[k] = checked
    return _or_none(found)


def rate(value: Any, name: str, where: Any) -> float:
    """The probability of an error of a gate on that qubit or edge."""
    found = _validate.real(value, name, "a rate from 0 to 1")
    if not 0 <= found <= 1:  # which is not true of nan
        raise errors.DeviceError(
            f"{name}: got the error rate {found} for {where}, wanted a rate from 0 to 1"
        )
    return found


def seconds(value: Any, name: str, where: Any) -> float:
    """The duration of a gate on that edge."""
    found = _validate.real(value, name, "a number of seconds")
    if not 0 < found < math.inf:
        raise errors.DeviceError(
            f"{name}: got the duration {found} for {where}, wanted seconds above 0"
        )
    return found


def listed(value: Any, edges: Sequence[tuple[int, int]], name: str) -> Any:
    """Numbers in the order of the edges as a mapping from edges."""
    if value is None:
        return None
    found = _validate.items(value, name, "numbers by edge")
    if len(found) != len(edges):
        raise errors.ShapeError(f"{name}: got {len(found)}, wanted {len(edges)}")
    return {edge: each for edge, each in zip(edges, found, strict=True) if each is not None}


def _or_none(rates: Sequence[float | None]) -> Rates | None:
    return None if all(each is None for each in rates) else tuple(rates)


def about(
    edge_errors: Rates | None, qubit_errors: Rates | None, edge_durations: Rates | None
) -> str:
    """For the text of a device."""
    parts = []
    for what, rates, place in (
        ("errors", edge_errors, "edges"), ("errors", qubit_errors, "qubits"),
        ("seconds", edge_durations, "edges"),
    ):  # fmt: skip
        if rates is not None:
            known = [each for each in rates if each is not None]
            least, most = f"{min(known):.2g}", f"{max(known):.2g}"
            span = least if least == most else f"{least} to {most}"
            parts.append(f", {what} {span} on {place}")
    return "".join(parts)


# --- as JSON ------------------------------------------------------------------------------------


def plain_label(label: Any) -> Any:
    """Text, numbers and tuples of these as they are, others as their text."""
    if isinstance(label, tuple):
        return [plain_label(part) for part in label]
    if isinstance(label, float):
        return label if math.isfinite(label) else str(label)
    return label if label is None or isinstance(label, (str, bool, int)) else str(label)


def label_of_plain(value: Any) -> Any:
    return tuple(map(label_of_plain, value)) if isinstance(value, list) else value

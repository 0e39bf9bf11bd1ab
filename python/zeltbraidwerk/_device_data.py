"""What a device may say of its qubits and edges beside the edges: labels and error rates."""

from __future__ import annotations

import math
from collections.abc import Hashable, Mapping, Sequence
from typing import Any

from zeltbraidwerk import _validate, errors

Label = Hashable
Rates = tuple[float | None, ...]  # None where the rate is not known


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


def edge_rates(value: Any, edges: Sequence[tuple[int, int]]) -> Rates | None:
    """Of a mapping from edges, in either order, to rates."""
    if value is None:
        return None
    if not isinstance(value, Mapping):
        raise errors.DtypeError(
            f"edge_errors: got {_validate.shown(value)}, wanted a mapping from edges to rates"
        )
    place = {edge: k for k, edge in enumerate(edges)}
    found: list[float | None] = [None] * len(edges)
    for edge, each in value.items():
        pair = _validate.qubits(edge, "edge_errors")
        k = place.get((min(pair), max(pair))) if len(pair) == 2 else None
        if k is None:
            raise errors.DeviceError(
                f"edge_errors: got {_validate.shown(edge)}, wanted an edge of the device"
            )
        checked = rate(each, "edge_errors", edge)
        if found[k] not in (None, checked):
            raise errors.DeviceError(
                f"edge_errors: got {found[k]:g} and {checked:g} for the edge {edges[k]}, which has "
                "no direction, wanted one rate"
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


def _or_none(rates: Sequence[float | None]) -> Rates | None:
    return None if all(each is None for each in rates) else tuple(rates)


def about(edge_errors: Rates | None, qubit_errors: Rates | None) -> str:
    """For the text of a device."""
    parts = []
    for rates, place in ((edge_errors, "edges"), (qubit_errors, "qubits")):
        if rates is not None:
            known = [each for each in rates if each is not None]
            least, most = f"{min(known):.2g}", f"{max(known):.2g}"
            span = least if least == most else f"{least} to {most}"
            parts.append(f", errors {span} on {place}")
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

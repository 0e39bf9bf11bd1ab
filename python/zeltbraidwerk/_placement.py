"""Where the qubits of a circuit start on a device, so that those with many gates between them are
near each other."""

from __future__ import annotations

import random
from collections.abc import Callable, Iterator

import numpy as np
import numpy.typing as npt

from zeltbraidwerk.circuits import Circuit
from zeltbraidwerk.devices import Device

Placement = tuple[int, ...]

_MOST_NODES = 20_000


def placements(
    circuit: Circuit, device: Device, tries: int, seed: int, late: Callable[[], bool] | None = None
) -> Iterator[Placement]:
    """Places for the qubits, the best first: from random beginnings, moves of one qubit and
    exchanges of two as long as the sum over all two-qubit gates of the distance falls. Fewer than
    ``tries`` when ``late`` says so."""
    rng = random.Random(seed)
    weights = _weights(circuit)
    lengths = distances(device)
    found = {}
    for _ in range(tries):
        place = _improved(weights, lengths, rng)
        found[tuple(place)] = _cost(weights, lengths, np.array(place))
        if late is not None and late():
            break
    yield from sorted(found, key=lambda place: (found[place], place))


def embedding(circuit: Circuit, device: Device, rng: random.Random) -> Placement | None:
    """A placement that puts all two-qubit gates on edges, where one is found in _MOST_NODES tries
    of a place: qubit after qubit, the one with most gates to those before next, on free neighbors
    of all these."""
    joined = [set[int]() for _ in range(circuit.n)]
    for a, b in pairs_of(circuit):
        joined[a].add(b)
        joined[b].add(a)
    near = [set(device.neighbors(wire)) for wire in range(device.n)]
    degrees, room = (sorted(map(len, sets), reverse=True) for sets in (joined, near))
    if any(wanted > there for wanted, there in zip(degrees, room, strict=False)):
        return None
    order: list[int] = []
    while len(order) < circuit.n:
        rest = set(range(circuit.n)).difference(order)
        order.append(max(rest, key=lambda q: (len(joined[q] & set(order)), len(joined[q]), -q)))
    place: dict[int, int] = {}
    choices: list[list[int]] = []
    for _ in range(_MOST_NODES):
        if len(choices) == len(place):
            if len(place) == circuit.n:
                return tuple(place[q] for q in range(circuit.n))
            q = order[len(place)]
            free = set(range(device.n)).difference(place.values())
            for other in joined[q] & place.keys():
                free &= near[place[other]]
            free = {wire for wire in free if len(near[wire]) >= len(joined[q])}
            choices.append(rng.sample(sorted(free), len(free)))
        if choices[-1]:
            place[order[len(place)]] = choices[-1].pop()
            continue
        choices.pop()
        if not choices:
            return None
        del place[order[len(place) - 1]]
    return None


def pairs_of(circuit: Circuit) -> set[tuple[int, int]]:
    """Qubits with a gate on both, the lower one first."""
    return {
        (min(qubits), max(qubits)) for _, qubits, _ in circuit._operations() if len(qubits) == 2
    }


def _weights(circuit: Circuit) -> npt.NDArray[np.int64]:
    weights = np.zeros((circuit.n, circuit.n), dtype=np.int64)
    for _, qubits, _ in circuit._operations():
        if len(qubits) == 2:
            weights[qubits[0], qubits[1]] += 1
            weights[qubits[1], qubits[0]] += 1
    return weights


def distances(device: Device) -> npt.NDArray[np.int64]:
    """Between all qubits, in edges; of qubits that no path joins, more than any."""
    far = 4 * device.n
    lengths = np.full((device.n, device.n), far, dtype=np.int64)
    for start in range(device.n):
        lengths[start, start] = 0
        front, length = [start], 0
        while front:
            length += 1
            front = [b for a in front for b in device.neighbors(a) if lengths[start, b] == far]
            front = list(dict.fromkeys(front))
            lengths[start, front] = length
    return lengths


def _cost(
    weights: npt.NDArray[np.int64], distances: npt.NDArray[np.int64], place: npt.NDArray[np.int64]
) -> int:
    return int((weights * distances[np.ix_(place, place)]).sum())


def _improved(
    weights: npt.NDArray[np.int64], distances: npt.NDArray[np.int64], rng: random.Random
) -> list[int]:
    n, width = len(weights), len(distances)
    place = np.array(rng.sample(range(width), n), dtype=np.int64)
    costs = distances[:, place] @ weights  # what qubit k costs on place x, the others as they are

    def move(q: int, target: int) -> None:
        change = distances[:, target] - distances[:, place[q]]
        costs[:] += np.outer(change, weights[q])
        place[q] = target

    better = True
    while better:
        better = False
        for q in rng.sample(range(n), n):
            here = int(place[q])
            gains = costs[here, q] - costs[:, q]
            # The qubit that is there comes here. What both have between them stays as it is.
            gains[place] += costs[place, np.arange(n)] - costs[here]
            gains[place] -= 2 * weights[q] * distances[place, here]
            gains[here] = 0
            target = int(gains.argmax())
            if gains[target] <= 0:
                continue
            for other in np.flatnonzero(place == target):
                move(int(other), here)
            move(q, target)
            better = True
    return [int(p) for p in place]

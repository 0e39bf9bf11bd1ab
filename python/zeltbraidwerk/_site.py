"""The qubits of a device that a circuit uses: chosen, or refused, before work starts."""

from __future__ import annotations

from dataclasses import dataclass
from typing import Any

import numpy as np
import numpy.typing as npt

from zeltbraidwerk import _core, _validate, errors
from zeltbraidwerk._placement import Placement
from zeltbraidwerk.devices import Device


@dataclass(frozen=True)
class Site:
    """Connected qubits of a device, wire k on ``qubits[k]``, and for some methods a Hamiltonian
    path through the wires."""

    device: Device
    qubits: tuple[int, ...]
    path: tuple[int, ...] = ()

    @classmethod
    def of(cls, device: Device, n: int) -> Site:
        _refuse_small(device, n)
        if n == device.n and (n == 0 or device.is_connected):
            return cls(device, tuple(range(n)))
        for qubits in device.connected_parts(n):
            return cls(device, qubits)
        raise _disconnected(device, n)

    @classmethod
    def around(cls, device: Device, n: int, placement: Any) -> tuple[Site, Placement | None]:
        """A whole connected component with room for ``n`` qubits, and the placement on its wires;
        the largest one where no placement is given."""
        _refuse_small(device, n)
        given = None
        if placement is not None:
            given = _validate.qubits(placement, "placement")
            if len(given) != n or len(set(given)) < n:
                raise errors.ShapeError(
                    f"placement: got {given}, wanted {n} qubits of the device, all different"
                )
            _validate.qubits_below(given, device.n, "placement")
        wanted = set(given) if given is not None else set()
        fitting = [part for part in device._pieces if wanted <= part and len(part) >= n]
        if device.n and not fitting:
            if given is None or len(device._pieces[0]) < n:
                raise _disconnected(device, n)
            raise errors.DisconnectedDeviceError(
                f"placement: got {given}, wanted qubits of one connected component of {device!r}"
            )
        qubits = tuple(sorted(fitting[0])) if fitting else ()
        places = None if given is None else tuple(qubits.index(q) for q in given)
        return cls(device, qubits), places

    @classmethod
    def with_path(cls, device: Device, n: int, seconds: float) -> Site:
        """The first connected part with a path; each part gets the same share of the time."""
        _refuse_small(device, n)
        whole = n == device.n and (n == 0 or device.is_connected)
        parts = [tuple(range(n))] if whole else list(device.connected_parts(n))
        if not parts:
            raise _disconnected(device, n)
        unfinished = False
        for qubits in parts:
            try:
                path = device.part(qubits).hamiltonian_path(seconds / len(parts))
            except errors.UnfinishedError:
                unfinished = True
                continue
            if path is not None:
                return cls(device, qubits, path)
        reason = f"none was found in {seconds:g} s" if unfinished else "there is none"
        raise errors.NoHamiltonianPathError(
            f"device: got {device!r}, wanted one with a Hamiltonian path through {n} qubits, "
            f"which the method needs, but {reason}; 'row_column' works without"
        )

    @property
    def adjacency(self) -> npt.NDArray[np.bool_]:
        places = {qubit: place for place, qubit in enumerate(self.qubits)}
        matrix = np.zeros((len(places), len(places)), dtype=np.bool_)
        for a, b in self.device.edges:
            if a in places and b in places:
                matrix[places[a], places[b]] = matrix[places[b], places[a]] = True
        return matrix

    def graph(self) -> _core.Graph:
        """The edges among the wires."""
        graph = _core.Graph(len(self.qubits))
        for i, j in np.argwhere(np.triu(self.adjacency)).tolist():
            graph.add_edge(i, j)
        return graph

    def placed(self, gates: npt.NDArray[np.int32]) -> npt.NDArray[np.int32]:
        """Pairs of wires as pairs of qubits."""
        return np.array(self.qubits, dtype=np.int32)[gates]


def _refuse_small(device: Device, n: int) -> None:
    if n > device.n:
        raise errors.DeviceTooSmallError(f"device: got {device!r}, wanted at least {n} qubits")


def _disconnected(device: Device, n: int) -> errors.DisconnectedDeviceError:
    return errors.DisconnectedDeviceError(
        f"device: got {device!r}, whose largest connected component has "
        f"{len(device._pieces[0])} qubits, wanted {n} connected qubits"
    )

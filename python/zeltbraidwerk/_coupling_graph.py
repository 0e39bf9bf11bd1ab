"""The graph that a device is: qubits, and the pairs of them that are joined."""

from __future__ import annotations

from collections.abc import Iterator
from functools import cached_property

import numpy as np
import numpy.typing as npt

from zeltbraidwerk import _core, _device_parts, _validate, errors, limits

Edge = tuple[int, int]


class CouplingGraph:
    """What devices know by their edges alone."""

    _n: int
    _edges: tuple[Edge, ...]

    @property
    def n(self) -> int:
        """Number of qubits."""
        return self._n

    @property
    def edges(self) -> tuple[Edge, ...]:
        """Each once, the smaller qubit first, ascending."""
        return self._edges

    @cached_property
    def _neighbours(self) -> tuple[frozenset[int], ...]:
        return _device_parts.neighbours_of(self._n, self._edges)

    def neighbors(self, qubit: int) -> tuple[int, ...]:
        """The qubits that share an edge with ``qubit``."""
        return tuple(sorted(self._neighbours[_validate.integer(qubit, "qubit", 0, self._n - 1)]))

    def adjacency(self) -> npt.NDArray[np.bool_]:
        """The symmetric matrix of the edges."""
        limits.check_memory("device", self._n, "qubits", 2 * self._n**2)
        matrix = np.zeros((self._n, self._n), dtype=np.bool_)
        for a, b in self._edges:
            matrix[a, b] = matrix[b, a] = True
        return matrix

    @property
    def is_connected(self) -> bool:
        """Whether edges join every qubit to every other; an empty device is not connected."""
        return self._n > 0 and len(self._pieces[0]) == self._n

    @cached_property
    def _pieces(self) -> tuple[frozenset[int], ...]:
        """The connected parts, the largest first."""
        return _device_parts.components(self._neighbours)

    def hamiltonian_path(self, seconds: float = 5.0) -> tuple[int, ...] | None:
        """A path along edges through all qubits; None when there is none.

        Raises :class:`~zeltbraidwerk.errors.UnfinishedError` when the search, which is exact, has
        no answer in its time.
        """
        limit = _validate.seconds(seconds, "seconds")
        outcome, path = self._search_path(2**31 - 1, limit)
        if outcome == "unfinished":
            raise errors.UnfinishedError(
                f"no Hamiltonian path of {self!r} was found in {limit:g} s, nor shown not to exist"
            )
        return path if outcome == "found" else None

    def _search_path(self, steps: int, seconds: float | None) -> tuple[str, tuple[int, ...]]:
        """ "found" with the path, "none", or "unfinished" after that many steps or seconds."""
        if self._path is not None:
            return self._path
        outcome, path = _core._hamiltonian_path(self.adjacency(), steps, seconds)
        if outcome != "unfinished":
            self._path = outcome, tuple(path)
        return outcome, tuple(path)

    _path: tuple[str, tuple[int, ...]] | None = None  # once the search was completed

    def connected_parts(self, n: int) -> Iterator[tuple[int, ...]]:
        """Connected sets of ``n`` qubits, those with many edges among them first.

        At most one set for each qubit to start from; it is extended by the neighbour with the most
        edges to the set.
        """
        size = _validate.qubit_count(n)
        return _device_parts.connected_parts(self._neighbours, self._pieces, size)

"""Which of many Pauli strings anticommute."""

from __future__ import annotations

import numpy as np
import numpy.typing as npt

from zeltbraidwerk import _core

# Where the strings have X or Y, and where Z or Y; one row per string.
Planes = tuple[npt.NDArray[np.bool_], npt.NDArray[np.bool_]]


def anticommuting(a: Planes, b: Planes) -> npt.NDArray[np.bool_]:
    """Entry (r, s): whether string r of ``a`` and string s of ``b`` anticommute."""
    return _meetings(a[0], b[1]) ^ _meetings(a[1], b[0])


def anticommuting_among(a: Planes) -> npt.NDArray[np.bool_]:
    """The same of the strings of ``a`` with each other."""
    meetings = _meetings(a[0], a[1])
    return meetings ^ meetings.T


def _meetings(one: npt.NDArray[np.bool_], other: npt.NDArray[np.bool_]) -> npt.NDArray[np.bool_]:
    rows, inner = one.shape
    return _core.boolean_matrix_product(rows, len(other), inner, one, other.T)

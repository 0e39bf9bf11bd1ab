"""The library's functions and value types under their own names.

This layer is thin. Matrices go in as numpy arrays of bool, as 0/1 integers or as nested lists, and
come out as numpy arrays of bool; the caller's arrays are never changed. What a function of the
library changes in place or fills for its caller comes back as a result instead: ``RowOperation``
returns the changed matrix, ``LU(m, n)`` the triple (factors, rows, cols).

Shapes, entries and indices are checked, so that no call writes outside of its arrays; invertibility
and angles are not. Arguments that do not fit raise a ValueError or TypeError, an index out of range
an IndexError, sizes that take more than half of the memory a
:class:`~zeltbraidwerk.errors.TooLargeError`. A RuntimeError is the library's own: its algorithm has
no answer. Long calls free the interpreter lock; Ctrl-C ends searches, with an
:class:`~zeltbraidwerk.errors.Interrupted` without a result. What draws from the library's one
generator runs one call at a time.

>>> from zeltbraidwerk import core
>>> circuit = core.GaussianElimination(2, [[1, 1], [0, 1]])
>>> circuit.getGates()
[(1, 0)]
>>> core.RowOperation([[1, 0], [0, 1]], 0, 1, 2).astype(int)
array([[1, 0],
       [1, 1]])
"""

from zeltbraidwerk import _core
from zeltbraidwerk._core import *  # noqa: F403

__all__ = [name for name in dir(_core) if name[0] != "_"]

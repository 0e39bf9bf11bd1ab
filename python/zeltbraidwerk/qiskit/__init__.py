"""Plugins for Qiskit's transpiler. Importing this module imports Qiskit.

Qiskit finds the plugins by their name, ``zeltbraidwerk``, without this module being imported:
:func:`qiskit.transpile` takes ``optimization_method="zeltbraidwerk"``, and an ``HLSConfig`` takes
the name as a method for ``clifford``, ``linear_function``, ``permutation`` and ``PauliEvolution``.
"""

from zeltbraidwerk import errors

try:
    import qiskit as _qiskit  # noqa: F401
except ImportError:
    raise errors.MissingPackageError(
        "zeltbraidwerk.qiskit needs the package qiskit: pip install qiskit, or "
        "pip install 'zeltbraidwerk[interop]'"
    ) from None

from zeltbraidwerk.qiskit._pass import Optimize
from zeltbraidwerk.qiskit._stage import OptimizationStage
from zeltbraidwerk.qiskit._synthesis import (
    CliffordSynthesis,
    LinearFunctionSynthesis,
    PauliEvolutionSynthesis,
    PermutationSynthesis,
)

__all__ = [
    "CliffordSynthesis",
    "LinearFunctionSynthesis",
    "OptimizationStage",
    "Optimize",
    "PauliEvolutionSynthesis",
    "PermutationSynthesis",
]

"""The exceptions of the package, one class per cause.

Every text names the argument, its value and what is wanted. All classes derive from :class:`Error`
and from the built-in class that fits, so that ``except ValueError`` works too.
"""

from __future__ import annotations

from typing import Any


class Error(Exception):
    """Base of all errors of the package."""


class DtypeError(Error, TypeError):
    """An argument of the wrong type: entries that are not bits, qubits that are not integers."""


class EntryError(Error, ValueError):
    """A matrix with entries other than 0 and 1."""


class ShapeError(Error, ValueError):
    """A matrix that is not square, or of the wrong size."""


class SingularMatrixError(Error, ValueError):
    """A matrix without an inverse, which no circuit of CNOTs implements."""


class QubitError(Error, ValueError):
    """A qubit out of range, or named twice in one gate."""


class AngleError(Error, ValueError):
    """An angle that is not a finite number."""


class GateError(Error, ValueError):
    """An unknown gate, or one with the wrong number of qubits or angles."""


class BitError(Error, ValueError):
    """A classical bit out of range or named twice, or registers that do not fit together."""


class NotUnitaryError(Error, ValueError):
    """A measurement, a reset or a classically controlled gate where gates alone are wanted."""


class PauliError(Error, ValueError):
    """A Pauli string with a letter other than I, X, Y and Z, or of the wrong length."""


class NotCliffordError(Error, ValueError):
    """A gate or angle outside the Clifford group where one inside is wanted."""


class NotLinearError(Error, ValueError):
    """A gate other than CNOT where a circuit of CNOTs is wanted."""


class ParityError(Error, ValueError):
    """Parities that cannot be read, or of unequal length."""


class GraphError(Error, ValueError):
    """A graph with directions, parallel edges or loops where a plain one is wanted."""


class DeviceError(Error, ValueError):
    """Not a device, or an edge that does not join two of its qubits."""


class DeviceTooSmallError(DeviceError):
    """A device with fewer qubits than the circuit needs."""


class DisconnectedDeviceError(DeviceError):
    """A disconnected device without a connected component that is large enough."""


class NoHamiltonianPathError(DeviceError):
    """A device without a path through all its qubits, where the method needs one."""


class QasmError(Error, ValueError):
    """OpenQASM text that cannot be read; the text gives the line."""


class QasmFileError(QasmError, OSError):
    """A file of OpenQASM that cannot be read."""


class JsonError(Error, ValueError):
    """JSON that is not of the form that this package writes; the text tells the place."""


class FileError(Error, ValueError, OSError):
    """A file that cannot be written."""


class UnknownMethodError(Error, ValueError):
    """A method that is not in the family's list."""


class OptionError(Error, ValueError):
    """An option out of its range, or one that the method does not have."""


class TooLargeError(OptionError):
    """An input or options that need more memory or time than there is; the text gives the size."""


class QasmTooLargeError(QasmError, TooLargeError):
    """OpenQASM beyond one of :mod:`zeltbraidwerk.limits`; the text tells which."""


class UnfinishedError(Error, RuntimeError):
    """A search that ended, by its budget or its cap of operations, before it had any circuit."""


class MissingPackageError(Error, RuntimeError, ImportError):
    """An optional package that a conversion needs is not installed."""


class Interrupted(KeyboardInterrupt):
    """Ctrl-C during a call. ``best`` is the best result so far, or None.

    A KeyboardInterrupt and not an :class:`Error`: it ends a program that does not catch it.
    """

    def __init__(self, text: str = "stopped, best so far", best: Any = None) -> None:
        super().__init__(text)
        self.best = best

    def __str__(self) -> str:
        # Written when it is shown: the text of a result has its size, which takes long to count.
        text = str(self.args[0])
        return f"{text}: {self.best}" if text.endswith("best so far") else text

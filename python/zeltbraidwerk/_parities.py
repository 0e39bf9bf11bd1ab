"""Phase polynomials as people write them, in one form, and those of circuits."""

from __future__ import annotations

from collections.abc import Iterator, Mapping, Sequence
from typing import Any

import numpy as np
import numpy.typing as npt

from zeltbraidwerk import _validate, errors, limits
from zeltbraidwerk._parameter import Parameter, parameter
from zeltbraidwerk.circuits import Circuit
from zeltbraidwerk.instructions import gates_alone

Terms = dict[int, Parameter]  # by parity, bit q for qubit q


def polynomial_of(circuit: Circuit) -> tuple[dict[int, Parameter], npt.NDArray[np.bool_]]:
    """Phase polynomial and linear map of a circuit of CNOTs, X gates and rotations about Z.

    X gates flip the angles after them and leave the map as it is.

    >>> from zeltbraidwerk import Gate
    >>> gates = [Gate.rz(0, 0.5), Gate.cnot(0, 1), Gate.rz(1, 0.25)]
    >>> polynomial_of(Circuit(2, gates))[0]
    {1: Parameter(0.5), 3: Parameter(0.25)}
    """
    _validate.instance(circuit, "circuit", Circuit, "a Circuit")
    limits.check_memory("circuit", circuit.n, "qubits", 10 * circuit.n**2)
    wires = [1 << wire for wire in range(circuit.n)]
    flipped = [False] * circuit.n
    terms: Terms = {}
    fixed = {"Z": np.pi, "S": np.pi / 2, "D-S": -np.pi / 2}
    for gate in gates_alone(circuit, "circuit"):
        wire = gate.qubits[-1]
        if gate.name == "CNOT":
            wires[wire] ^= wires[gate.qubits[0]]
            flipped[wire] ^= flipped[gate.qubits[0]]
        elif gate.name == "X":
            flipped[wire] = not flipped[wire]
        elif gate.diag or gate.name in fixed:
            angle = gate.params[0] if gate.diag else Parameter(fixed[gate.name])
            _add(terms, wires[wire], -angle if flipped[wire] else angle)
        elif gate.name != "I":
            raise errors.GateError(f"circuit: got {gate.name}, wanted CNOTs and rotations about Z")
    rows = [[bool(wire >> c & 1) for c in range(circuit.n)] for wire in wires]
    return terms, np.array(rows, dtype=np.bool_).reshape(circuit.n, circuit.n)


def _add(terms: Terms, parity: int, angle: Parameter) -> None:
    terms[parity] = terms[parity] + angle if parity in terms else angle


def read(polynomial: Any, n: int | None) -> tuple[Terms, int]:
    """The angles by parity, those of equal ones added, and the number of qubits."""
    size = None if n is None else _validate.qubit_count(n)
    terms: Terms = {}
    widest = 0
    for key, angle in _pairs(polynomial):
        parity, length = _parity(key)
        bits = parity.bit_length()
        limits.check_memory("polynomial", bits, "bits of a parity", 1000 * bits)
        if length is None:
            widest = max(widest, parity.bit_length())
        elif size is None:
            size = length
        elif length != size:
            raise errors.ParityError(
                f"polynomial: got the parity {key!r} of {length} bits, wanted {size}"
            )
        _add(terms, parity, parameter(angle, "polynomial"))
    if size is not None and widest > size:
        raise errors.ParityError(f"polynomial: got qubit {widest - 1}, wanted 0 to {size - 1}")
    return terms, widest if size is None else size


def _pairs(polynomial: Any) -> Iterator[tuple[Any, Any]]:
    if isinstance(polynomial, Mapping):
        yield from polynomial.items()
        return
    wanted = "a mapping from parities to angles, or a tuple of a list of parities and one of angles"
    # A list of two would as well be two parities without angles.
    _validate.instance(polynomial, "polynomial", tuple, wanted)
    if len(polynomial) != 2 or any(isinstance(part, str) for part in polynomial):
        raise errors.ParityError(f"polynomial: got {_validate.shown(polynomial)}, wanted {wanted}")
    keys, values = (_validate.items(part, "polynomial", wanted) for part in polynomial)
    if len(keys) != len(values):
        raise errors.ParityError(
            f"polynomial: got {len(keys)} parities and {len(values)} angles, wanted one for each"
        )
    yield from zip(keys, values, strict=True)


def _parity(key: Any) -> tuple[int, int | None]:
    """The bits as an int, and how many there are where the key tells."""
    if isinstance(key, (int, np.integer)) and not isinstance(key, (bool, np.bool_)):
        return _validate.integer(key, "polynomial", 0), None
    if isinstance(key, str) and not key.strip("01"):
        return int(key[::-1] or "0", 2), len(key)
    wanted = "a tuple or string of bits 0 and 1, or an int"
    if not isinstance(key, (Sequence, np.ndarray)) or isinstance(key, np.ma.MaskedArray):
        raise errors.ParityError(
            f"polynomial: got the parity {_validate.shown(key)}, wanted {wanted}"
        )
    digits = [str(int(bit)) if isinstance(bit, (bool, np.bool_)) else str(bit) for bit in key]
    if set(digits) - {"0", "1"}:
        raise errors.ParityError(
            f"polynomial: got the parity {_validate.shown(key)}, wanted {wanted}"
        )
    return int("".join(digits)[::-1] or "0", 2), len(digits)

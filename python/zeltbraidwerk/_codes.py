"""Stabilizer codes in the forms that users write, read into one form and checked."""

from __future__ import annotations

from collections.abc import Iterator, Sequence
from dataclasses import dataclass
from typing import Any

import numpy as np
import numpy.typing as npt

from zeltbraidwerk import _matrices, _operator_forms, _planes, _rotations, _validate, errors

Signed = tuple[bool, str]  # true for minus, and letters

_WANTED = "Pauli strings in a list, a check matrix, or a pair of matrices H_X, H_Z"


@dataclass(frozen=True)
class Code:
    """``logicals`` are the images of X, then of Z, on the k logical qubits, or none."""

    n: int
    stabilizers: tuple[Signed, ...]
    logicals: tuple[Signed, ...]

    @property
    def k(self) -> int:
        return self.n - len(self.stabilizers)


def read(stabilizers: Any, logicals: Any) -> Code:
    """Refuses what are no stabilizers, or no logical operators, of one code."""
    checks = _checks(stabilizers)
    if not checks:
        raise errors.ShapeError("stabilizers: got none, wanted at least one")
    n = len(checks[0][1])
    check_stabilizers(checks, "stabilizers")
    code = Code(n, tuple(checks), ())
    return code if logicals is None else Code(n, code.stabilizers, _logicals(logicals, code))


def check_stabilizers(stabilizers: Sequence[Signed], name: str) -> None:
    """Refuses strings that do not commute and those that are products of others."""
    if not stabilizers:
        return
    has_x, has_z = _planes_of(stabilizers)
    odd = _planes.anticommuting_among((has_x, has_z))
    if odd.any():
        i, j = np.argwhere(odd)[0]
        raise errors.PauliError(
            f"{name}: got {stabilizers[i][1]} and {stabilizers[j][1]}, which do not commute"
        )
    reduced: dict[int, int] = {}  # by highest bit
    for (_, letters), x, z in zip(stabilizers, has_x, has_z, strict=True):
        row = int.from_bytes(np.packbits(np.concatenate([x, z])).tobytes(), "big")
        while row and row.bit_length() in reduced:
            row ^= reduced[row.bit_length()]
        if not row:
            raise errors.PauliError(
                f"{name}: got {letters}, which is a product of the strings before it"
            )
        reduced[row.bit_length()] = row


def _planes_of(strings: Sequence[Signed]) -> _planes.Planes:
    """Where the strings have X or Y, and where Z or Y."""
    letters = _rotations.codes([word for _, word in strings], len(strings[0][1]))
    return (letters == 1) | (letters == 2), letters > 1


# --- stabilizers --------------------------------------------------------------------------------


def _checks(source: Any) -> list[Signed]:
    of_state = _operator_forms.images_of_zeros(source)
    if of_state is not None:
        return _rotations.read_strings(of_state, "stabilizers")
    pair = _as_pair(source)
    if pair is not None:
        return _css(pair)
    if _is_matrix(source):
        matrix = _bits(source, "stabilizers")
        if matrix.shape[1] % 2 or not matrix.shape[1]:
            raise errors.ShapeError(
                f"stabilizers: got a check matrix of shape {matrix.shape}, wanted 2n columns, "
                "those of X, then of Z"
            )
        return list(_of_halves(matrix))
    if _rotations.is_string(source):
        raise errors.DtypeError(f"stabilizers: got {_validate.shown(source)}, wanted {_WANTED}")
    return _rotations.read_strings(source, "stabilizers")


def _css(pair: tuple[Any, Any]) -> list[Signed]:
    h_x, h_z = (_bits(each, "stabilizers") for each in pair)
    if h_x.shape[1] != h_z.shape[1]:
        raise errors.ShapeError(
            f"stabilizers: got H_X of {h_x.shape[1]} columns and H_Z of {h_z.shape[1]}, wanted as "
            "many"
        )
    return [*_of_letter("X", h_x), *_of_letter("Z", h_z)]


def _as_pair(source: Any) -> tuple[Any, Any] | None:
    """Two matrices; None for anything else, as for a matrix of two rows."""
    if isinstance(source, (tuple, list)) and len(source) == 2 and all(map(_is_matrix, source)):
        return source[0], source[1]
    return None


def _is_matrix(value: Any) -> bool:
    """Whether the value has rows of numbers, rather than strings or Paulis of other packages."""
    shape = getattr(value, "shape", None)
    if isinstance(shape, tuple):  # a PauliList of Qiskit has one as well
        return len(shape) == 2 and not _validate.comes_from(value, "qiskit")
    if not isinstance(value, (tuple, list)) or not value:
        return False
    row = value[0]
    if isinstance(row, np.ndarray):
        return row.ndim == 1
    return isinstance(row, (tuple, list)) and not any(
        isinstance(each, (str, tuple, list, np.ndarray)) for each in row
    )


def _bits(value: Any, name: str) -> npt.NDArray[np.bool_]:
    bits = _validate.bits(_matrices.matrix_of(value, name), name)
    if bits.ndim != 2:
        raise errors.ShapeError(f"{name}: got shape {bits.shape}, wanted a matrix")
    return bits


def _of_letter(letter: str, rows: npt.NDArray[np.bool_]) -> Iterator[Signed]:
    for row in rows.tolist():
        yield False, "".join(letter if bit else "I" for bit in row)


def _of_halves(rows: npt.NDArray[np.bool_]) -> Iterator[Signed]:
    n = rows.shape[1] // 2
    for x, z in zip(rows[:, :n].tolist(), rows[:, n:].tolist(), strict=True):
        yield False, "".join("IXZY"[a + 2 * b] for a, b in zip(x, z, strict=True))


# --- logical operators --------------------------------------------------------------------------


def _logicals(source: Any, code: Code) -> tuple[Signed, ...]:
    wanted = "a pair of lists, what X and what Z on each logical qubit becomes"
    if not isinstance(source, (tuple, list)) or len(source) != 2:
        raise errors.DtypeError(f"logicals: got {_validate.shown(source)}, wanted {wanted}")
    xs, zs = (_operators(letter, part, code.n) for letter, part in zip("XZ", source, strict=True))
    if len(xs) != code.k or len(zs) != code.k:
        raise errors.ShapeError(
            f"logicals: got {len(xs)} for X and {len(zs)} for Z, wanted {code.k} each, as many as "
            f"{code.n} qubits with {len(code.stabilizers)} stabilizers encode"
        )
    if code.k:
        _check_logicals([*xs, *zs], code)
    return (*xs, *zs)


def _operators(letter: str, source: Any, n: int) -> list[Signed]:
    """Of strings, or of the rows of a matrix: n columns for the letter alone, 2n for X and Z."""
    if not _is_matrix(source):
        return _rotations.read_strings(source, "logicals", n)
    bits = _bits(source, "logicals")
    if bits.shape[1] == n:
        return list(_of_letter(letter, bits))
    if bits.shape[1] == 2 * n:
        return list(_of_halves(bits))
    raise errors.ShapeError(
        f"logicals: got a matrix of {bits.shape[1]} columns, wanted {n}, or {2 * n} for X and Z"
    )


def _check_logicals(operators: Sequence[Signed], code: Code) -> None:
    planes = _planes_of(operators)
    odd = _planes.anticommuting(planes, _planes_of(code.stabilizers))
    if odd.any():
        i, j = np.argwhere(odd)[0]
        raise errors.PauliError(
            f"logicals: got {operators[i][1]}, which does not commute with the stabilizer "
            f"{code.stabilizers[j][1]}"
        )
    k = code.k
    pairs = np.eye(2 * k, k=k, dtype=bool) | np.eye(2 * k, k=-k, dtype=bool)
    wrong = np.argwhere(_planes.anticommuting_among(planes) != pairs)
    if len(wrong):
        i, j = wrong[0]
        first, second = (f"{'XZ'[r // k]} on logical qubit {r % k}" for r in (i, j))
        raise errors.PauliError(
            f"logicals: got {operators[i][1]} for {first} and {operators[j][1]} for {second}, "
            f"which {'commute' if pairs[i, j] else 'do not commute'}, unlike {first} and {second}"
        )

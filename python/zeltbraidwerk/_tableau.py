"""Clifford operators as tableaus."""

from __future__ import annotations

from collections.abc import Iterable, Sequence
from functools import cached_property
from typing import TYPE_CHECKING, Any

import numpy as np
import numpy.typing as npt

from zeltbraidwerk import _core, _interop, _json, _planes, _rotations, _validate, errors
from zeltbraidwerk.circuits import Circuit, CnotCircuit
from zeltbraidwerk.gates import Gate
from zeltbraidwerk.instructions import gates_alone

if TYPE_CHECKING:
    import stim

# Bytes of a tableau over the square of its qubits, with what :meth:`images` makes.
_SQUARE = 40

Image = tuple[bool, str]  # true for minus, and letters

# The exponents (z, x) of a letter with a sign, at 4 z + x; the identity has no sign.
_EXPONENTS = {
    (bool(minus), "IXYZ"[letter]): divmod(place, 4)
    for place, (minus, letter) in reversed(list(enumerate(_core.SILUAP.tolist())))
} | {(True, "I"): (0, 0)}


class CliffordTableau(_json.Stored):
    """A Clifford operator on ``n`` qubits, given by the images of Pauli operators under it.

    Immutable; two are equal when they act alike on every Pauli operator, signs included, that is
    when the operators agree up to a global phase.

    >>> bell = CliffordTableau.from_circuit(Circuit(2, [Gate.h(0), Gate.cnot(0, 1)]))
    >>> bell.conjugate("ZI"), bell.conjugate("-IZ")
    ('+XX', '-ZZ')
    >>> bell @ bell.inverse() == CliffordTableau(2)
    True
    """

    def __init__(self, n: int) -> None:
        """The identity."""
        self._core = _core.OperatorTableau(_validate.qubit_count(n, square=_SQUARE))

    @classmethod
    def from_core(cls, tableau: _core.OperatorTableau) -> CliffordTableau:
        """The same operator, from :class:`zeltbraidwerk.core.OperatorTableau`."""
        kind = _core.OperatorTableau
        return cls._wrap(
            kind(_validate.instance(tableau, "tableau", kind, "a tableau of the core"))
        )

    @classmethod
    def from_circuit(cls, circuit: Circuit | CnotCircuit) -> CliffordTableau:
        """The operator of a circuit of Clifford gates."""
        kinds = (Circuit, CnotCircuit)
        _validate.instance(circuit, "circuit", kinds, "a Circuit or CnotCircuit")
        return cls(circuit.n).apply(circuit)

    @classmethod
    def from_images(cls, xs: Sequence[str], zs: Sequence[str]) -> CliffordTableau:
        """The operator with these images of X and of Z on each qubit, which :meth:`images` gives.

        >>> CliffordTableau.from_images(["+Z"], ["+X"]) == CliffordTableau(1).apply(Gate.h(0))
        True
        """
        first = _validate.items(xs, "xs", "signed strings")
        second = _validate.items(zs, "zs", "signed strings")
        n = len(first)
        if len(second) != n:
            raise errors.ShapeError(f"zs: got {len(second)} images, wanted {n}")
        images = [_validate.pauli(text, n, "xs") for text in first]
        images += [_validate.pauli(text, n, "zs") for text in second]
        check_images(images, "xs, zs")
        tableau = _core.OperatorTableau(n)
        data = tableau.data
        for row, (minus, letters) in enumerate(images[n:] + images[:n]):
            for q, letter in enumerate(letters):
                z, x = _EXPONENTS[minus, letter]
                data[1 + q, 1 + row], data[1 + n + q, 1 + row] = z, x
                minus = minus and letter == "I"  # one letter takes the sign
        tableau.data = data
        # Products want the exponents that gates leave, not any with these images.
        built = _core.OperatorTableau(n)
        for gate in _core.clifford_circuit(tableau):
            built.apply_left(gate)
        return cls._wrap(built)

    def to_core(self) -> _core.OperatorTableau:
        """The tableau as a value of :mod:`zeltbraidwerk.core`."""
        return _core.OperatorTableau(self._core)

    @property
    def n(self) -> int:
        """Number of qubits."""
        return self._core.nbqbits

    def apply(self, gates: Gate | Iterable[Gate] | Circuit | CnotCircuit) -> CliffordTableau:
        """This operator followed by the gates. Rotations take multiples of pi/2."""
        if isinstance(gates, CnotCircuit):
            gates = gates.to_circuit()
        if isinstance(gates, Circuit) and gates.n != self.n:
            raise errors.ShapeError(f"gates: got {gates.n} qubits, wanted {self.n}")
        result = self.to_core()
        listed = (gates,) if isinstance(gates, Gate) else gates
        items = _validate.items(listed, "gates", "a Gate, a list of them or a circuit")
        for gate in gates_alone(items, "gates"):
            _validate.qubits_below(gate.qubits, self.n, "gates")
            if any(param.is_symbolic for param in gate.params):
                raise errors.NotCliffordError(f"gates: got {gate}, wanted a numeric angle")
            if gate.name == "I":
                continue
            try:
                result.apply_left(gate.to_core())
            except RuntimeError:
                raise errors.NotCliffordError(
                    f"gates: got {gate}, wanted a Clifford gate"
                ) from None
        return self._wrap(result)

    def conjugate(self, pauli: str) -> str:
        """U P U-dagger as a sign and letters, the letter at place q for qubit q."""
        minus, letters = _validate.pauli(pauli, self.n, "pauli")
        operator = _core.WeylOperator(letters)
        operator.conjugate_with(self._core)
        turned, image = operator.to_pauli()
        return "-+"[minus == turned] + image

    def inverse(self) -> CliffordTableau:
        """The tableau of the inverse operator."""
        return self._wrap(self._core.inverse())

    def __matmul__(self, earlier: CliffordTableau) -> CliffordTableau:
        """The product of operators: the right one acts first."""
        if not isinstance(earlier, CliffordTableau):
            return NotImplemented
        if earlier.n != self.n:
            raise errors.ShapeError(f"got tableaus on {self.n} and {earlier.n} qubits")
        product = self.to_core()
        product.multiply_right(earlier._core)
        return self._wrap(product)

    def then(self, later: CliffordTableau) -> CliffordTableau:
        """This operator followed by the other."""
        _validate.instance(later, "later", CliffordTableau, "a CliffordTableau")
        return later @ self

    def images(self) -> tuple[list[str], list[str]]:
        """The images of X and of Z on each qubit, signed.

        >>> CliffordTableau(1).apply(Gate.s(0)).images()
        (['+Y'], ['+Z'])
        """
        signs, letters = self._signs_and_letters
        words = zip(signs.tolist(), _rotations.from_codes(letters), strict=True)
        texts = ["+-"[minus] + word for minus, word in words]
        return texts[self.n :], texts[: self.n]

    @cached_property
    def _signs_and_letters(self) -> tuple[npt.NDArray[np.bool_], npt.NDArray[np.uint8]]:
        """Of the images of all Z, then all X: whether minus, and the letters."""
        minus, letters = self._core._images()
        return minus, letters.reshape(2 * self.n, self.n)

    def to_stim(self) -> stim.Tableau:
        """The same operator as a ``stim.Tableau``."""
        stim = _interop._package("stim")
        xs, zs = ([stim.PauliString(text) for text in texts] for texts in self.images())
        return stim.Tableau.from_conjugated_generators(xs=xs, zs=zs)

    @classmethod
    def from_stim(cls, tableau: stim.Tableau) -> CliffordTableau:
        """The same operator, from a tableau of Stim."""
        if not (_validate.comes_from(tableau, "stim") and hasattr(tableau, "to_circuit")):
            raise errors.DtypeError(
                f"tableau: got {_validate.shown(tableau)}, wanted a tableau of Stim"
            )
        circuit = Circuit.from_stim(tableau.to_circuit())
        return cls(max(circuit.n, len(tableau))).apply(circuit.gates)

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, CliffordTableau):
            return NotImplemented
        return self._key() == other._key()

    def __hash__(self) -> int:
        return hash(self._key())

    def __repr__(self) -> str:
        return f"CliffordTableau({self.n} qubits)"

    def __str__(self) -> str:
        xs, zs = self.images()
        lines = [f"X{q} -> {x}   Z{q} -> {z}" for q, (x, z) in enumerate(zip(xs, zs, strict=True))]
        return "\n".join(lines)

    def __reduce__(self) -> tuple[Any, ...]:
        return _rebuild, (self.n, self._core.data)

    def _to_plain(self) -> dict[str, Any]:
        xs, zs = self.images()
        return {"x": xs, "z": zs}

    @classmethod
    def _of_plain(cls, plain: Any, where: str) -> CliffordTableau:
        table = _json.fields(plain, where)
        images = [_json.items(table.get(key), f"{where}.{key}") for key in "xz"]
        return _json.built(where, cls.from_images, *images)

    def _key(self) -> tuple[int, bytes, bytes]:
        signs, letters = self._signs_and_letters
        return self.n, signs.tobytes(), letters.tobytes()

    @classmethod
    def _wrap(cls, tableau: _core.OperatorTableau) -> CliffordTableau:
        wrapped = cls.__new__(cls)
        wrapped._core = tableau
        return wrapped


def _rebuild(n: int, data: npt.NDArray[np.uint8]) -> CliffordTableau:
    tableau = _core.OperatorTableau(n)
    tableau.data = data
    return CliffordTableau._wrap(tableau)


def check_images(images: Sequence[Image], name: str) -> None:
    """Refuses images that do not commute and anticommute as X and Z do."""
    n = len(images) // 2
    text = "".join(letters for _, letters in images).encode()
    letters = np.frombuffer(text, dtype=np.uint8).reshape(2 * n, n)
    x, y, z = (letters == code for code in b"XYZ")
    odd = _planes.anticommuting_among((x | y, y | z))
    wrong = odd.copy()
    wrong[range(n, 2 * n), range(n)] ^= True
    wrong[range(n), range(n, 2 * n)] ^= True
    if wrong.any():
        r, s = map(int, np.argwhere(np.tril(wrong))[0])
        first, second = _name(s, n), _name(r, n)
        raise errors.NotCliffordError(
            f"{name}: got images of {first} and {second} that "
            f"{'anticommute' if odd[r, s] else 'commute'}, unlike {first} and {second}"
        )


def _name(row: int, n: int) -> str:
    return f"{'XZ'[row // n]} on qubit {row % n}"

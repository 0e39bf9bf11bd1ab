"""The results of the family of Pauli rotations."""

from __future__ import annotations

from collections.abc import Iterable
from dataclasses import dataclass, field
from functools import cached_property
from typing import Literal

import numpy as np
import numpy.typing as npt

from zeltbraidwerk import _pauli_check, _renamed
from zeltbraidwerk._observables import MovesObservables
from zeltbraidwerk._results import Result, spread
from zeltbraidwerk._tableau import CliffordTableau
from zeltbraidwerk.circuits import Circuit
from zeltbraidwerk.gates import Parameter


@dataclass(frozen=True, kw_only=True, repr=False)
class PauliSynthesis(MovesObservables):
    """A circuit for Pauli rotations, and how it was found.

    The circuit is the rotations followed by ``tail``, a Clifford operator; None where it was
    closed, which leaves the exchange of wires that ``permutation`` tells. ``tail_option`` is
    "close", "return" or "given", as it was asked for; ``given_tail`` is the operator then, whose
    outputs ``permutation`` exchanges too. ``order`` is "commuting" where the circuit is the
    product of ``rotations`` in their order. ``identity_angle`` is the angle of all identity strings
    together, each a rotation exp(-i angle / 2).
    """

    circuit: Circuit
    rotations: tuple[tuple[str, Parameter], ...]
    identity_angle: Parameter
    order: str
    tail_option: Literal["close", "return", "given"]
    given_tail: CliffordTableau | None = None
    _rotates: npt.NDArray[np.bool_] = field(compare=False)  # which gates are rotations

    global_angle = _renamed.Field("global_phase", lambda result: result.identity_angle)

    @property
    def global_phase(self) -> Parameter:
        """What was asked for is exp(i ``global_phase``) times ``rotations``, in radians: minus half
        of ``identity_angle``."""
        return 0.0 - self.identity_angle / 2

    @property
    def tail(self) -> CliffordTableau | None:
        """What the circuit does after the rotations; None where it was closed."""
        return None if self.tail_option == "close" else self.clifford

    @cached_property
    def clifford(self) -> CliffordTableau:
        """The operator of the Clifford gates of the circuit: the tail, or the exchange of wires."""
        pairs = zip(self.circuit, self._rotates, strict=True)
        return CliffordTableau(self.n).apply([gate for gate, rotates in pairs if not rotates])

    def verify(self) -> bool:
        """Follows the rotations back through the circuit, gate by gate, with signs and without
        the library. With ``order="commuting"`` it proves that the circuit is the product of
        ``rotations``: each comes up once, none before another that it does not commute with. With
        ``order="free"`` it proves that each comes up once, in whatever order, which is not the
        product where they do not commute. In both cases what is left is what the result says, and
        gates are on edges."""
        found, pulled = _pauli_check.unfolded(self.circuit, [not r for r in self._rotates])
        wanted = [(self._placed(letters), angle) for letters, angle in self.rotations]
        if not _pauli_check.same_rotations(found, wanted, self.order == "commuting"):
            return False
        if self.tail_option == "return":
            return self._on_edges() and self._fits(pulled, self.clifford)
        return self._on_edges() and self._is_closed(pulled)

    def _is_closed(self, pulled: _pauli_check.PulledBack) -> bool:
        """What is left is the given tail, or nothing, with the outputs exchanged."""
        places = list(range(self.n))
        wanted = {(letter, q): (False, "I" * q + letter + "I" * (self.n - q - 1))
                  for q in range(self.n) for letter in "XZ"}  # fmt: skip
        undone = None if self.given_tail is None else self.given_tail.inverse()
        for k, wire in enumerate(self.permutation):
            places[self.placement[k]] = self.placement[wire]
            if undone is None:
                continue
            for letter in "XZ":
                image = undone.conjugate("I" * k + letter + "I" * (undone.n - k - 1))
                wanted[letter, self.placement[k]] = image[0] == "-", self._placed(image[1:])
        return all(
            pulled.letter(letter, wire) == wanted[letter, q]
            for q, wire in enumerate(places)
            for letter in "XZ"
        )

    def _fits(self, pulled: _pauli_check.PulledBack, tail: CliffordTableau) -> bool:
        xs, zs = tail.images()
        return all(
            pulled.image(image[1:]) == (image[0] == "-", "I" * q + letter + "I" * (self.n - q - 1))
            for letter, images in (("X", xs), ("Z", zs))
            for q, image in enumerate(images)
        )

    def _to_circuit(self) -> CliffordTableau:
        return self.clifford

    def _about(self) -> Iterable[str]:
        yield f"{len(self.rotations)} rotations"
        yield {"close": "tail closed", "return": "tail returned", "given": "tail made"}[
            self.tail_option
        ]


@dataclass(frozen=True, kw_only=True, repr=False)
class CoDiagonalization(Result):
    """A Clifford circuit that makes strings diagonal: ``images[k]`` is string k after it."""

    circuit: Circuit
    strings: tuple[str, ...]
    images: tuple[str, ...]

    def verify(self) -> bool:
        """Follows the images back through the circuit, gate by gate and without the library."""
        pulled = _pauli_check.PulledBack(self.n)
        for gate in self.circuit:
            pulled.append(gate)
        return self._on_edges() and all(
            not set(image[1:]) - set("IZ")
            and pulled.image(self._placed(image[1:]))
            == (string[0] != image[0], self._placed(string[1:]))
            for string, image in zip(self.strings, self.images, strict=True)
        )

    def _placed(self, letters: str) -> str:
        return spread(letters, self.placement, self.n)

    def _about(self) -> Iterable[str]:
        yield f"{len(self.strings)} strings"

"""The result of optimising a whole circuit."""

from __future__ import annotations

from dataclasses import dataclass

from zeltbraidwerk._results import Result
from zeltbraidwerk.circuits import Circuit


@dataclass(frozen=True, kw_only=True, repr=False)
class Optimization(Result):
    circuit: Circuit
    source: Circuit
    rounding: float = 0.0

    def verify(self) -> bool:
        raise NotImplementedError

"""Limits: how much memory a call may take, and how large a text readers take.

A call that would take more than :attr:`Limits.memory` is refused before it begins, by a
:class:`~zeltbraidwerk.errors.TooLargeError` that tells what it would take. Each limit can be set
for the process, for a block, or by an environment variable: ``ZELTBRAIDWERK_LIMIT_`` and its name
in upper case.

>>> import zeltbraidwerk as zb
>>> zb.limits.current().operations
4000000
>>> zb.CliffordTableau(10_000_000)  # doctest: +ELLIPSIS
Traceback (most recent call last):
  ...
zeltbraidwerk.errors.TooLargeError: n: got 10000000 qubits, which would take 4e+06 GB of memory, ...
>>> with zb.limits.using(operations=1000):  # doctest: +NORMALIZE_WHITESPACE
...     zb.Circuit.of("qreg q[2000]; h q;")
Traceback (most recent call last):
  ...
zeltbraidwerk.errors.QasmTooLargeError: line 1: got more than 1000 operations; the limit is set by
  limits.set(operations=...) or ZELTBRAIDWERK_LIMIT_OPERATIONS
"""

from __future__ import annotations

import math
import os
import warnings
from collections.abc import Iterator
from contextlib import contextmanager
from dataclasses import asdict, dataclass, fields, replace

from zeltbraidwerk import _core, errors
from zeltbraidwerk._shown import shown

__all__ = ["Limits", "current", "set", "using"]

Changed = tuple[int, dict[str, float]]  # a process, and limits by name

_PREFIX = "ZELTBRAIDWERK_LIMIT_"
_NEVER_CHECKED = 16_000_000  # bytes, which there are always


@dataclass(frozen=True)
class Limits:
    """The limits, and their usual values.

    ``memory`` is what a call may take: up to 1 a share of the memory of the machine, or of what the
    process may have where that is less; above 1 bytes; infinity lifts the limit. Each process of a
    batch has it for itself, and follows the one that started the batch where that has changed a
    limit. The others are limits of readers: ``file_bytes`` of a file, or of
    standard input at a shell; ``bits``, qubits of a text, and its classical bits; ``operations`` of
    a circuit after expansion, where one counts once for each bit of its condition, and a barrier
    once for each qubit; ``nesting``, levels of gates that are defined by others; ``digits`` of an
    integer.
    """

    memory: float = 0.5
    file_bytes: int = 2**28
    bits: int = 1_000_000
    operations: int = 4_000_000
    nesting: int = 100
    digits: int = 4000


def current() -> Limits:
    """The limits as they are set."""
    return replace(_limits, memory=_core._memory_limit_as_set())


def set(**limits: float) -> None:
    """Sets some limits, by name, for all later calls of the process.

    Raises an :class:`~zeltbraidwerk.errors.OptionError` for a value that is not greater than 0.
    """
    global _limits
    known = [each.name for each in fields(Limits)]
    for name, value in limits.items():
        if name not in known:
            raise errors.OptionError(f"limits: got {name!r}, wanted one of {', '.join(known)}")
        kinds = (int, float) if name == "memory" else int
        if isinstance(value, bool) or not isinstance(value, kinds) or not value > 0:
            raise errors.OptionError(f"{name}: got {shown(value)}, wanted {_wanted(name)}")
    if "memory" in limits:
        memory = limits["memory"]
        _core._set_memory_limit(float(memory) if memory < 1e300 else math.inf)
    _limits = replace(_limits, **limits)  # type: ignore[arg-type]


def changed() -> Changed:
    """The limits that are not as this process began, for processes that work for it."""
    now, before = asdict(current()), asdict(_first)
    return os.getpid(), {name: now[name] for name in now if now[name] != before[name]}


def follow(changed: Changed) -> None:
    """Sets the limits of this process, where it is another one, to those that it began with, but
    for the changed ones."""
    process, given = changed
    if process == os.getpid():
        return
    wanted = replace(_first, **given)  # type: ignore[arg-type]
    if wanted != current():
        set(**asdict(wanted))


@contextmanager
def using(**limits: float) -> Iterator[None]:
    """Sets some limits within a block, in all threads."""
    before = asdict(current())
    set(**limits)
    try:
        yield
    finally:
        set(**{name: before[name] for name in limits})


def check_memory(name: str, count: int, unit: str, needed: float) -> None:
    """Refuses what would take too many bytes; ``name`` is that of the argument, ``count`` its size
    in the ``unit``."""
    if needed > _NEVER_CHECKED and needed > _core._memory_limit():
        # Numbers of any size, of which a double has no more than 300 digits.
        got = str(count) if count < 10**30 else "more than 1e30"
        text = _core._too_large(name, f"{got} {unit}", float(min(needed, 1e300)))
        raise errors.TooLargeError(text)


def check_operations(count: int) -> None:
    """Refuses circuits of more operations than readers take."""
    if count > (most := get("operations")):
        raise errors.TooLargeError(f"got more than {most} operations; {told('operations')}")


def check_nesting(depth: int, what: str) -> None:
    """Refuses what is nested deeper than readers go."""
    if depth > (most := get("nesting")):
        raise errors.TooLargeError(f"{what} nested more than {most} deep; {told('nesting')}")


def told(limit: str) -> str:
    """The end of the text of an error: how that limit is set."""
    return f"the limit is set by limits.set({limit}=...) or {_PREFIX}{limit.upper()}"


def _of_environment() -> Limits:
    """What variables set, that of the memory aside, which the compiled part reads. Those that mean
    nothing are told of and left out."""
    given: dict[str, int] = {}
    for each in fields(Limits):
        variable = _PREFIX + each.name.upper()
        text = os.environ.get(variable)
        try:
            value = 1 if text is None else (float if each.name == "memory" else int)(text)
        except ValueError:
            value = 0
        if not value > 0:
            warnings.warn(
                f"{variable}: got {text!r:.80}, wanted {_wanted(each.name)}; it is left out",
                stacklevel=2,
            )
        elif text is not None and each.name != "memory":
            given[each.name] = int(value)
    return Limits(**given)


def _wanted(name: str) -> str:
    return "a share up to 1, or bytes" if name == "memory" else "an integer above 0"


_limits = _of_environment()
_first = current()


def get(name: str) -> int:
    """A limit of readers."""
    return getattr(_limits, name)  # type: ignore[no-any-return]

"""What is done with every input: a family's function, its options, and the digest of an input."""

from __future__ import annotations

import hashlib
import inspect
import json
import os
import pickle
from collections.abc import Callable, Mapping
from contextlib import suppress
from dataclasses import dataclass
from functools import cached_property
from typing import Any

import numpy as np

from zeltbraidwerk import (
    _codes,
    _files,
    _json,
    _matrices,
    _operators,
    _parities,
    _rotations,
    _search,
    _shell_commands,
    _shell_input,
    _states,
    _validate,
    errors,
    graph_state,
)
from zeltbraidwerk.circuits import Circuit
from zeltbraidwerk.devices import Device

_OWN = ("seed", "progress")  # arguments of the families that a batch sets itself
_OF_INPUT = ("placement", "n", "start", "logicals")  # options that fit one input and not another
_DIGITS = 32  # of a digest
_SHORTEST = 1e-3  # seconds


@dataclass(frozen=True)
class Family:
    """``canonical`` makes of an input, and the options, what its digest is taken of: the same for
    every form of the input. ``smallest`` is an input without work, on which options are tried."""

    command: str
    canonical: Callable[[Any, Mapping[str, Any]], Any]
    smallest: Any

    @property
    def function(self) -> Callable[..., Any]:
        return _shell_commands.COMMANDS[self.command].function

    def of_text(self, name: str, data: bytes) -> Any:
        """The input that a file of that name holds."""
        text = _shell_input.decoded(data, name)
        return _shell_commands.COMMANDS[self.command].read(name, text)


def _packed(bits: Any) -> list[Any]:
    return [len(bits), np.packbits(bits).tobytes().hex()]


def _circuit(value: Any, options: Mapping[str, Any]) -> Any:
    return Circuit.of(value)._to_plain()


def _polynomial(value: Any, options: Mapping[str, Any]) -> Any:
    terms, n = _parities.read(value, options.get("n"))
    return [n, [[format(parity, "x"), _json.plain(angle)] for parity, angle in terms.items()]]


def _pauli(value: Any, options: Mapping[str, Any]) -> Any:
    order = options.get("order", "commuting")
    found = _rotations.read(
        value, options.get("n"), order, options.get("repeated", "refuse")
    )  # fmt: skip
    return [found.n, found.strings, _json.plain(found.angles), _json.plain(found.identity_angle)]


def _matrix(value: Any, options: Mapping[str, Any]) -> Any:
    bits = _matrices.matrix_of(value, "matrix")
    return _packed(_validate.invertible_matrix(bits, "matrix"))


_BIT = np.ones((1, 1), dtype=np.bool_)
FAMILIES = {
    "optimize": Family("optimize", _circuit, "qreg q[1]; h q[0];"),
    "linear.synthesize": Family("linear", _matrix, _BIT),
    "phase.synthesize": Family("phase", _polynomial, {"1": 0.5}),
    "pauli.synthesize": Family("pauli", _pauli, [("Z", 0.5)]),
    "clifford.synthesize": Family(
        "clifford", lambda value, _: _operators.read(value), (["X"], ["Z"])
    ),
    "clifford.synthesize_state": Family("state", lambda value, _: _states.read(value), ["Z"]),
    "clifford.synthesize_encoder": Family(
        "encoder", lambda value, _: _codes.read(value, None).stabilizers, ["ZZ"]
    ),
    "graph_state.synthesize": Family(
        "graph-state", lambda value, _: _packed(graph_state._adjacency(value)), _BIT
    ),
    "routing.route": Family("route", _circuit, "qreg q[1]; h q[0];"),
}


@dataclass(frozen=True)
class Task:
    """A family's function by its name, and the options of all its calls, checked."""

    name: str
    options: Mapping[str, Any]
    verify: bool = True

    @classmethod
    def checked(cls, task: Any, options: Mapping[str, Any], verify: Any) -> Task:
        name = _name(task)
        function = FAMILIES[name].function
        parameters = list(inspect.signature(function).parameters)
        known = [option for option in parameters[1:] if option not in _OWN]
        for option in options:
            if option not in known:
                hint = _validate.meant(option, known) or f", wanted one of {', '.join(known)}"
                raise errors.OptionError(f"{option}: not an option of {name}{hint}")
        if name == "routing.route" and options.get("device") is None:
            raise errors.OptionError("device: got None, wanted one for routing.route")
        given = {option: _picklable(option, value) for option, value in options.items()}
        if given.get("device") is not None:
            given["device"] = Device.of(given["device"])
        found = cls(name, given, _validate.flag(verify, "verify"))
        found._try_options()
        return found

    @property
    def family(self) -> Family:
        return FAMILIES[self.name]

    @cached_property
    def objective(self) -> str:
        return str(self.options.get("objective", "count"))

    @cached_property
    def has_seed(self) -> bool:
        return "seed" in inspect.signature(self.family.function).parameters

    def run(self, value: Any, seed: int) -> Any:
        """The result for one input, checked by its own ``verify``."""
        options = dict(self.options)
        if self.has_seed:
            options["seed"] = seed
        result = self.family.function(value, **options)
        if self.verify and not result.verify():
            raise errors.Error("the result failed its own check; please report this")
        return result

    def digest(self, value: Any) -> str:
        """Of an input; it does not depend on the form in which the input is given."""
        return _digest(self.family.canonical(value, self.options))

    def plain(self) -> dict[str, Any]:
        """The options as JSON."""
        return {name: _plain(name, value) for name, value in sorted(self.options.items())}

    def _try_options(self) -> None:
        """Raises what the function raises for wrong options, before any work. Options that want
        the true input are left out, and those of the length of a search are made small."""
        effort = {name: self.options.get(name) for name in ("restarts", "budget", "jobs", "steps")}
        _search.Effort.checked(None, **{"jobs": 1, **effort})
        tried = {
            name: value
            for name, value in self.options.items()
            if name not in _OF_INPUT and (name != "tail" or isinstance(value, str))
        }
        for name, least in (("steps", 0), ("restarts", 1), ("budget", _SHORTEST)):
            if tried.get(name) is not None:
                tried[name] = least
        with suppress(errors.UnfinishedError):
            self.family.function(self.family.smallest, **tried)


def _name(task: Any) -> str:
    names = ", ".join(FAMILIES)
    if isinstance(task, str):
        if task not in FAMILIES:
            raise errors.OptionError(
                f"task: got {task!r}, wanted one of {names}{_validate.meant(task, FAMILIES)}"
            )
        return task
    for name, family in FAMILIES.items():
        if task is family.function:
            return name
    raise errors.OptionError(
        f"task: got {_validate.shown(task)}, which cannot be sent to other processes by name; "
        f"wanted one of {names}, or one of these functions"
    )


def _picklable(name: str, value: Any) -> Any:
    try:
        pickle.dumps(value)
    except Exception as error:  # what a class raises that cannot be pickled
        raise errors.OptionError(
            f"{name}: got {_validate.shown(value)}, which cannot be sent to other processes: "
            f"{error}"
        ) from None
    return value


def _plain(name: str, value: Any) -> Any:
    if isinstance(value, _json.Stored):
        return {"kind": type(value).__name__, "content": value._to_plain()}
    plain = _json.plain(value)
    try:
        return json.loads(json.dumps(plain, allow_nan=False))
    except (TypeError, ValueError):
        raise errors.OptionError(
            f"{name}: got {_validate.shown(value)}, wanted numbers, text, lists of them, or what "
            "has to_json"
        ) from None


def _digest(value: Any) -> str:
    text = json.dumps(value, separators=(",", ":"))
    return hashlib.sha256(text.encode()).hexdigest()[:_DIGITS]


# --- inputs -------------------------------------------------------------------------------------


@dataclass(frozen=True)
class File:
    """An input that is read where the work is done, which may be another machine."""

    name: str
    data: bytes


def opened(value: Any) -> tuple[Any, str | None]:
    """The input, or the bytes of the file where a path was given, and the path."""
    if not isinstance(value, os.PathLike):
        return value, None
    name = os.fspath(value)
    return File(str(name), _files.bytes_of(name)), str(name)


def seed_of(seed: int, index: int) -> int:
    """The seed of an input: of the seed of the batch and the index of the input alone."""
    digest = hashlib.sha256(f"{seed}:{index}".encode()).digest()
    return int.from_bytes(digest[:8], "big")

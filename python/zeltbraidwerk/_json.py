"""JSON of circuits, results, devices and tableaus: one form for all, with a version.

A text is one object: "format" is "zeltbraidwerk", "version" the number of this form, "package" the
version of the package that wrote it, "kind" the class, "counts" how large it is, which is not read
again, and "content" the value. Dataclasses are read by the types of their fields: an angle is a
number or the text of a symbolic one, an array of bits is text of 0 and 1, a matrix a list of rows
of it. Fields that are missing take their defaults, so that texts of older versions are read too.
"""

from __future__ import annotations

import dataclasses
import json
import types
import typing
from collections.abc import Callable, Iterable, Mapping, Sequence
from functools import cache
from typing import Any, ClassVar, Literal, Self, TypeVar

import numpy as np

from zeltbraidwerk import _core, _validate, errors, limits
from zeltbraidwerk.gates import Gate, Parameter
from zeltbraidwerk.instructions import Barrier, Conditional, Measure, Operation, Reset

T = TypeVar("T")

VERSION = 1

_FORMAT = "zeltbraidwerk"
_PLAIN: dict[Any, str] = {int: "an integer", float: "a number", str: "text", bool: "true or false"}


class Stored:
    """What can be written as JSON and read again. The default is for dataclasses."""

    _kinds: ClassVar[dict[str, type[Stored]]] = {}

    def __init_subclass__(cls, **options: Any) -> None:
        super().__init_subclass__(**options)
        Stored._kinds[cls.__name__] = cls

    def to_json(self) -> str:
        """JSON on one line; :meth:`from_json` and :func:`zeltbraidwerk.from_json` read it."""
        document = {
            "format": _FORMAT,
            "version": VERSION,
            "package": _core._version,
            "kind": type(self).__name__,
            "counts": self._counts(),
            "content": self._to_plain(),
        }
        return json.dumps(document, allow_nan=False, separators=(",", ":"))

    @classmethod
    def from_json(cls, text: str) -> Self:
        """Reads what :meth:`to_json` of this class wrote, of this version or an earlier one.

        Raises a :class:`~zeltbraidwerk.errors.JsonError`, which tells the place, for anything else.
        A result is not verified: ``verify()`` does that.
        """
        kind, content = _opened(text)
        found = Stored._kinds.get(kind)
        if found is None or not issubclass(found, cls):
            wanted = sorted(name for name, each in Stored._kinds.items() if issubclass(each, cls))
            raise errors.JsonError(
                f"kind: got {_validate.shown(kind)}, wanted {' or '.join(wanted)}"
            )
        try:
            return found._of_plain(content, "content")
        except RecursionError:
            raise errors.JsonError("content: got lists or objects nested too deep") from None

    def _counts(self) -> dict[str, int]:
        """For readers of the text."""
        return {}

    def _to_plain(self) -> dict[str, Any]:
        """As dicts, lists, text and numbers."""
        return _fields(self)

    @classmethod
    def _of_plain(cls, plain: Any, where: str) -> Self:
        return _dataclass(cls, plain, where)


def from_json(text: str) -> Any:
    """The circuit, result, device or tableau that its ``to_json`` wrote.

    >>> import zeltbraidwerk as zb
    >>> zb.from_json(zb.CnotCircuit(2, [(0, 1)]).to_json())
    CnotCircuit(2 qubits, 1 CNOTs, depth 1)
    """
    return Stored.from_json(text)


def _opened(text: Any) -> tuple[str, Any]:
    """The kind and the content."""
    _validate.instance(text, "text", str, "JSON as a string")
    if len(text) > (most := limits.get("file_bytes")):
        raise errors.TooLargeError(f"text: got more than {most} bytes; {limits.told('file_bytes')}")
    try:
        document = json.loads(text)
    except (ValueError, RecursionError) as error:
        cause = "nested too deep" if isinstance(error, RecursionError) else error
        raise errors.JsonError(f"text: got {_validate.shown(text)}, wanted JSON: {cause}") from None
    if not isinstance(document, dict) or document.get("format") != _FORMAT:
        raise errors.JsonError(
            f'text: got {_validate.shown(text)}, wanted an object with "format": "{_FORMAT}"'
        )
    version = document.get("version")
    if not isinstance(version, int) or not 1 <= version <= VERSION:
        raise errors.JsonError(
            f"version: got {_validate.shown(version)}, wanted {VERSION} at most; a newer version "
            "of the package reads it"
        )
    return str(document.get("kind")), document.get("content")


# --- out ----------------------------------------------------------------------------------------


def plain(value: Any) -> Any:
    """A value as dicts, lists, text and numbers."""
    if isinstance(value, Parameter):
        return value.expression if value.is_symbolic else float(value)
    if isinstance(value, Gate):
        return operation_out(value)
    if isinstance(value, Stored):
        return value._to_plain()
    if isinstance(value, np.ndarray):
        return _digits(value)
    if dataclasses.is_dataclass(value) or hasattr(value, "_fields"):
        return _fields(value)
    if isinstance(value, (tuple, list)):
        return [plain(part) for part in value]
    return value.item() if isinstance(value, np.generic) else value


def _fields(value: Any) -> dict[str, Any]:
    names: Iterable[str] = (
        value._fields
        if hasattr(value, "_fields")
        else [field.name for field in dataclasses.fields(value)]
    )
    return {name.lstrip("_"): plain(getattr(value, name)) for name in names}


def _digits(bits: np.ndarray[Any, Any]) -> Any:
    if bits.ndim > 1:
        return [_digits(row) for row in bits]
    return "".join("01"[int(bit)] for bit in bits)


def operation_out(item: Operation) -> dict[str, Any]:
    """A gate, or another operation of a circuit, by its name and fields."""
    if isinstance(item, Gate):
        found: dict[str, Any] = {"name": item.name, "qubits": list(item.qubits)}
        return found | {"params": plain(item.params)} if item.params else found
    if isinstance(item, Conditional):
        operation = operation_out(item.operation)
        return {
            "name": item.name,
            "operation": operation,
            "bits": list(item.bits),
            "value": item.value,
        }
    found = {"name": item.name, "qubits": list(item.qubits)}
    return found | {"bit": item.bit} if isinstance(item, Measure) else found


# --- in -----------------------------------------------------------------------------------------


def read(hint: Any, value: Any, where: str) -> Any:
    """The value of a field of that type; ``where`` is its place, for errors."""
    origin, of = typing.get_origin(hint), typing.get_args(hint)
    if origin in (typing.Union, types.UnionType):
        if value is None and type(None) in of:
            return None
        return read(next(each for each in of if each is not type(None)), value, where)
    if origin is Literal:
        return _checked(value, value in of, where, " or ".join(map(repr, of)))
    if origin in (tuple, Sequence):
        parts = items(value, where)
        if origin is tuple and of[-1:] != (...,):
            _checked(value, len(parts) == len(of), where, f"a list of {len(of)}")
            hints = of
        else:
            hints = (of[0],) * len(parts)
        return tuple(
            read(each, part, f"{where}[{k}]")
            for k, (each, part) in enumerate(zip(hints, parts, strict=True))
        )
    if origin is np.ndarray:
        return _validate.frozen(_bits(value, where))
    if hint in _PLAIN:
        kinds = (int, float) if hint is float else hint
        fits = isinstance(value, kinds) and (hint is bool or not isinstance(value, bool))
        return hint(_checked(value, fits, where, _PLAIN[hint]))
    return _object(hint, value, where)


def _object(kind: Any, value: Any, where: str) -> Any:
    if kind is Parameter:
        fits = isinstance(value, (int, float, str)) and not isinstance(value, bool)
        return built(where, Parameter, _checked(value, fits, where, "a number or text"))
    if kind is Gate:
        return operation_in(value, where)
    if issubclass(kind, Stored):
        return kind._of_plain(value, where)
    return _dataclass(kind, value, where)


def _dataclass(kind: Callable[..., T], value: Any, where: str) -> T:
    """Of a dataclass or a named tuple. Fields that it does not have are left out."""
    table = fields(value, where)
    given = {
        name: read(hint, table[name.lstrip("_")], f"{where}.{name.lstrip('_')}")
        for name, hint in _hints(kind).items()
        if name.lstrip("_") in table
    }
    try:
        return kind(**given)
    except TypeError as error:  # a field is missing
        raise errors.JsonError(f"{where}: {str(error).partition('() ')[2]}") from None
    except errors.Error as error:
        raise _at(where, error) from None


@cache
def _hints(kind: Any) -> Mapping[str, Any]:
    """The types of the fields that make the value."""
    hints = typing.get_type_hints(kind)
    if hasattr(kind, "_fields"):
        return {name: hints[name] for name in kind._fields}
    return {field.name: hints[field.name] for field in dataclasses.fields(kind) if field.init}


def operation_in(value: Any, where: str) -> Any:
    """A gate or another operation of a circuit."""
    table = fields(value, where)
    name = table.get("name")
    if name == "conditional":
        operation = operation_in(table.get("operation"), f"{where}.operation")
        return built(where, Conditional, operation, table.get("bits"), table.get("value"))
    qubits = items(table.get("qubits"), f"{where}.qubits")
    if name == "measure":
        return built(where, Measure, *qubits, table.get("bit"))
    if name == "reset":
        return built(where, Reset, *qubits)
    if name == "barrier":
        return built(where, Barrier, qubits)
    return built(where, Gate, name, qubits, items(table.get("params", []), f"{where}.params"))


def built(where: str, make: Callable[..., T], *given: Any) -> T:
    """What ``make`` makes; its errors tell the place."""
    try:
        return make(*given)
    except (errors.Error, TypeError) as error:
        raise _at(where, error) from None


def _at(where: str, error: Exception) -> errors.Error:
    kind = errors.TooLargeError if isinstance(error, errors.TooLargeError) else errors.JsonError
    return kind(f"{where}: {error}")


def fields(value: Any, where: str) -> dict[str, Any]:
    found: dict[str, Any] = _checked(value, isinstance(value, dict), where, "an object")
    return found


def items(value: Any, where: str) -> list[Any]:
    found: list[Any] = _checked(value, isinstance(value, list), where, "a list")
    return found


def _bits(value: Any, where: str) -> np.ndarray[Any, Any]:
    rows = value if isinstance(value, list) else [value]
    fits = all(isinstance(row, str) and not row.strip("01") for row in rows)
    _checked(value, fits and len({len(row) for row in rows}) < 2, where, "text of 0 and 1")
    bits = np.array([[digit == "1" for digit in row] for row in rows], dtype=np.bool_)
    return bits.reshape(len(rows), -1 if rows else 0) if isinstance(value, list) else bits[0]


def _checked(value: Any, fits: bool, where: str, wanted: str) -> Any:
    if not fits:
        raise errors.JsonError(f"{where}: got {_validate.shown(value)}, wanted {wanted}")
    return value

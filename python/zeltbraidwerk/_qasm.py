"""A reader of all of OpenQASM 2, which needs no other package."""

from __future__ import annotations

import re
from collections.abc import Iterator

from zeltbraidwerk import _angles, _names, errors, limits
from zeltbraidwerk._definitions import (
    APPLICATION,
    NAME,
    Definition,
    Primitive,
    check_counts,
    define,
    expression,
    short,
    split,
)  # fmt: skip
from zeltbraidwerk._header import table
from zeltbraidwerk._reading import Condition, Read, Reading, without_collection
from zeltbraidwerk.errors import QasmError, QasmTooLargeError
from zeltbraidwerk.gates import Gate
from zeltbraidwerk.instructions import Barrier, Measure, Operation, Register, Reset

_COMMENT = re.compile(r'"[^"\n]*"|//[^\n]*|/\*.*?(?:\*/|\Z)', re.DOTALL)
_PIECE = re.compile(r"([^;{}]*)([;{}]|\Z)")
_REGISTER = re.compile(r"([qc])reg\s+([A-Za-z_]\w*)\s*\[\s*(\d+)\s*\]", re.ASCII)
_OPERAND = re.compile(r"([A-Za-z_]\w*)\s*(?:\[\s*(\d+)\s*\])?", re.ASCII)
_NAMED = re.compile(r"([A-Za-z_]\w*)\s*(\[[^]]*\])?", re.ASCII)
_DECIMAL = re.compile(r"-?\d{1,17}\.\d{1,17}", re.ASCII)  # which most angles are
_VERSION = re.compile(r"OPENQASM\s+(\S+)")
_INCLUDE = re.compile(r"""include\s*(["'])(.*)\1""")
_IF = re.compile(r"if\s*\(\s*([A-Za-z_]\w*)\s*==\s*(\d+)\s*\)\s*(.+)", re.ASCII | re.DOTALL)

_LATER = "; a program of OpenQASM 3 begins with 'OPENQASM 3.0;'"


def plain(text: str) -> str:
    """Without comments and a byte order mark, all lines ended by a line feed. Line numbers stay the
    same. ``/* */`` is not in the standard, but used in files."""
    text = text.removeprefix("\ufeff")
    if "\r" in text:
        text = text.replace("\r\n", "\n").replace("\r", "\n")

    def blank(match: re.Match[str]) -> str:
        found = match[0]
        if found.startswith('"'):
            return found
        if found.startswith("/*") and (len(found) < 4 or not found.endswith("*/")):
            line = 1 + text.count("\n", 0, match.start())
            raise QasmError(f"line {line}: got /* without its */")
        return " " + "\n" * found.count("\n")

    return _COMMENT.sub(blank, text) if "/" in text else text


@without_collection()
def read(text: str) -> Read:
    """What text without comments holds."""
    reader = _Reader()
    for line, statement, body in _statements(text):
        try:
            reader.statement(line, statement, body)
        except QasmError as error:
            place = "" if str(error).startswith("line ") else f"line {line}: "
            raise type(error)(f"{place}{error}") from None
        except errors.TooLargeError as error:
            raise QasmTooLargeError(f"line {line}: {error}") from None
        except (errors.GateError, errors.AngleError) as error:
            raise QasmError(f"line {line}: {error}") from None
    if not reader.seen:
        raise QasmError("got no statement, wanted OpenQASM 2")
    names = _names.of_registers((name, len(at)) for name, at in reader.places.items())
    return Read(reader.qubits, reader.reading.operations, reader.registers, names)


def lines_of(text: str) -> list[int]:
    """The lines of the operations of a correct program, each one as often as its registers repeat
    it."""
    sizes: dict[str, int] = {}
    lines: list[int] = []
    for line, statement, body in _statements(text):
        word = re.match(r"\w*", statement)[0]  # type: ignore[index]
        if register := _REGISTER.fullmatch(statement):
            sizes[register[2]] = int(register[3])
        elif word == "barrier":
            lines.append(line)
        elif body is None and word not in ("OPENQASM", "include", "opaque"):
            if condition := _IF.fullmatch(statement):
                statement = condition[3]
            operands = re.sub(r"^\w+\s*(\(.*\))?", "", statement, flags=re.DOTALL)
            bare = [sizes[name] for name, place in _NAMED.findall(operands) if not place]
            lines += [line] * (max(bare) if bare else 1)
    return lines


Body = list[tuple[int, str]] | None


def _statements(text: str) -> Iterator[tuple[int, str, Body]]:
    """Each with its line; that of a gate with the statements in its braces."""
    line, head = 1, (0, "")
    body: Body = None
    for match in _PIECE.finditer(text):
        raw, end = match[1], match[2]
        statement = raw.strip()
        start = line + raw[: len(raw) - len(raw.lstrip())].count("\n")
        line += raw.count("\n")
        if statement and end not in (";", "{"):
            raise QasmError(f"line {start}: got {short(statement)!r} without its semicolon")
        if end == "{":
            if body is not None or not re.match(r"gate\b", statement):
                raise QasmError(f"line {start}: got '{{' after {short(statement)!r}")
            head, body = (start, statement), []
        elif end == "}":
            if body is None:
                raise QasmError(f"line {line}: got '}}' without its '{{'")
            yield *head, body
            body = None
        elif body is not None and statement:
            body.append((start, statement))
        elif statement:
            yield start, statement, None
    if body is not None:
        raise QasmError(f"line {head[0]}: got '{{' without its '}}'")


class _Reader:
    def __init__(self) -> None:
        self.qubits = 0
        self.bits = 0
        self.seen = 0
        self._cost = 0
        self.reading = Reading()
        self.registers: list[Register] = []
        self.places: dict[str, range] = {}  # of registers of qubits
        self._bit_places: dict[str, range] = {}
        self._gates: dict[str, Primitive | Definition] = dict(table())
        self._defined: set[str] = set()
        self._repeated: dict[str, list[Operation]] = {}  # by statement, of gates alone
        self._angles: dict[str, list[float]] = {"": []}
        self._operands: dict[str, range] = {}
        self._lists: dict[str, tuple[int, list[tuple[int, ...]]]] = {}

    def statement(self, line: int, text: str, body: Body) -> None:
        self.seen += 1
        if (gates := self._repeated.get(text)) is not None:
            self._room(len(gates) or 1, None)
            self.reading.operations += gates
            return
        found = NAME.match(text)
        match word := found[0] if found else "":
            case "OPENQASM":
                self._version(text)
            case "include":
                self._include(text)
            case "qreg" | "creg":
                self._register(text)
            case "gate" | "opaque" as keyword:
                if keyword == "gate" and body is None:
                    raise QasmError("got a gate without its body in braces")
                self._define(text[len(keyword) :].strip(), body)
            case "barrier":
                self._barrier(line, text[len("barrier") :])
            case "if":
                self._if(line, text)
            case "measure" | "reset":
                self._operation(line, word, text, None)
            case "qubit" | "bit" if word not in self._gates:
                raise QasmError(f"got {short(text)!r}{_LATER}")
            case _:
                first = len(self.reading.operations)
                self._apply(line, text, None)
                made = self.reading.operations[first:]
                if all(type(operation) is Gate for operation in made):
                    self._repeated[text] = made

    def _version(self, text: str) -> None:
        match = _VERSION.fullmatch(text)
        if not match or not re.fullmatch(r"0*2(\.0*)?", match[1]):
            found = short(match[1] if match else text)
            raise QasmError(f"got version {found} of OpenQASM, wanted 2.0")
        if self.seen > 1:
            raise QasmError("got OPENQASM after other statements, wanted it first")

    def _include(self, text: str) -> None:
        match = _INCLUDE.fullmatch(text)
        if not match or match[2] != "qelib1.inc":
            later = _LATER if match and match[2] == "stdgates.inc" else ""
            raise QasmError(f'got {short(text)!r}, wanted no file but "qelib1.inc"{later}')

    def _register(self, text: str) -> None:
        match = _REGISTER.fullmatch(text)
        if not match:
            raise QasmError(f"cannot read {short(text)!r}")
        quantum, name, size = match[1] == "q", match[2], _integer(match[3])
        if name in self.places or name in self._bit_places:
            raise QasmError(f"got the register {name} twice")
        first = self.qubits if quantum else self.bits
        most = limits.get("bits")
        if first + size > most:
            kind = "qubits" if quantum else "bits"
            got = short(match[3]) + (f" after {first} " if first else " ") + kind
            raise QasmTooLargeError(f"got {got}, wanted {most} at most; {limits.told('bits')}")
        if quantum:
            self.places[name] = range(first, first + size)
            self.qubits += size
        else:
            self._bit_places[name] = range(first, first + size)
            self.bits += size
            self.registers.append(Register(name, size))

    def _define(self, head: str, body: Body) -> None:
        name, gate = define(head, body, self._gates)
        if name in self._defined:
            raise QasmError(f"got the gate {name} twice")
        self._defined.add(name)
        self._gates[name] = gate
        self._repeated.clear()  # gates of the header may be defined anew

    def _if(self, line: int, text: str) -> None:
        match = _IF.fullmatch(text)
        if not match:
            raise QasmError(f"cannot read {short(text)!r}, wanted if(register==number) operation")
        if match[1] not in self._bit_places:
            raise QasmError(f"got {match[1]!r}, wanted a classical register")
        bits = tuple(self._bit_places[match[1]])
        if not bits:
            raise QasmError(f"got a condition on {match[1]!r}, which has no bits")
        found = NAME.match(match[3])
        word = found[0] if found else ""
        self._operation(line, word, match[3], (bits, _integer(match[2])))

    def _operation(self, line: int, word: str, text: str, condition: Condition | None) -> None:
        where = f"line {line}"
        if word == "measure":
            source, arrow, target = text[len("measure") :].partition("->")
            if not arrow:
                raise QasmError(f"cannot read {short(text)!r}, wanted measure qubit -> bit")
            qubits, bits = self._qubits(source.strip()), self._bits(target.strip())
            if len(qubits) != len(bits):
                raise QasmError(f"got {len(qubits)} qubits and {len(bits)} bits in {short(text)!r}")
            self._room(len(qubits), condition)
            for qubit, bit in zip(qubits, bits, strict=True):
                self.reading.add(Measure(qubit, bit, where=where), where, condition)
        elif word == "reset":
            qubits = self._qubits(text[len("reset") :].strip())
            self._room(len(qubits), condition)
            for qubit in qubits:
                self.reading.add(Reset(qubit, where=where), where, condition)
        else:
            self._apply(line, text, condition)

    def _barrier(self, line: int, text: str) -> None:
        names = split(text)
        parts = [self._qubits(name) for name in names] if names else [range(self.qubits)]
        self._room(sum(map(len, parts)), None)
        qubits = tuple(dict.fromkeys(qubit for part in parts for qubit in part))
        if qubits:
            self.reading.operations.append(Barrier(qubits, where=f"line {line}"))

    def _apply(self, line: int, text: str, condition: Condition | None) -> None:
        match = APPLICATION.fullmatch(text)
        if not match:
            raise QasmError(f"cannot read {short(text)!r}")
        name, (operands, each) = match[1], self._applied(match[3], text)
        gate = self._gates.get(name)
        if gate is None:
            raise QasmError(f"the gate {short(name)} is not known")
        if isinstance(gate, Definition) and gate.parts is None:
            raise QasmError(f"the gate {name} is opaque: it has no definition")
        angles = self._values(line, match[2] or "")
        check_counts(gate, name, operands, len(angles))
        self._room(len(each) * gate.size, condition)
        for qubits in each:
            try:
                self.reading.gate(gate, qubits, angles, f"line {line}", condition)
            except ValueError:
                raise QasmError(f"got an angle of {name} that is not a number") from None

    def _applied(self, text: str, statement: str) -> tuple[int, list[tuple[int, ...]]]:
        """How many operands there are, and the qubits of each gate: a register has all of its
        own."""
        if (found := self._lists.get(text)) is not None:
            return found
        operands = [self._qubits(part) for part in split(text)]
        wide = {len(operand) for operand in operands if len(operand) != 1}
        if len(wide) > 1:
            raise QasmError(f"got registers of unequal size in {short(statement)!r}")
        count = wide.pop() if wide else 1
        self._room(count, None, taken=False)
        each = [
            tuple([operand[place if len(operand) > 1 else 0] for operand in operands])
            for place in range(count)
        ]
        if any(len(set(qubits)) < len(qubits) for qubits in each):
            raise QasmError(f"got a qubit twice in {short(statement)!r}")
        self._lists[text] = len(operands), each
        return len(operands), each

    def _room(self, count: int, condition: Condition | None, taken: bool = True) -> None:
        """Refuses programs that are too long: an operation counts once for each bit of its
        condition, a barrier once for each qubit. What is not ``taken`` is asked about alone."""
        cost = self._cost + count * (len(condition[0]) if condition else 1)
        limits.check_operations(cost)
        if taken:
            self._cost = cost

    def _values(self, line: int, text: str) -> list[float]:
        values = self._angles.get(text)
        if values is None and _DECIMAL.fullmatch(text):
            values = self._angles[text] = [float(text)]
        if values is None:
            values = []
            for part in split(text):
                steps = expression(line, part)
                try:
                    values.append(_angles.evaluate(steps, {}))
                except ValueError:
                    raise QasmError(f"got the angle {short(part)!r}, wanted a number") from None
            self._angles[text] = values
        return values

    def _qubits(self, text: str) -> range:
        found = self._operands.get(text)
        if found is None:
            found = self._operands[text] = _operand(text, self.places, "a qubit of a register")
        return found

    def _bits(self, text: str) -> range:
        return _operand(text, self._bit_places, "a bit of a classical register")


def _operand(text: str, registers: dict[str, range], wanted: str) -> range:
    match = _OPERAND.fullmatch(text)
    if not match or match[1] not in registers:
        raise QasmError(f"got the operand {short(text)!r}, wanted {wanted}")
    register = registers[match[1]]
    if match[2] is None:
        return register
    place = _integer(match[2])
    if place >= len(register):
        raise QasmError(f"got {short(text)}, wanted places 0 to {len(register) - 1}")
    return register[place : place + 1]


def _integer(text: str) -> int:
    text = text.lstrip("0") or "0"
    most = limits.get("digits")
    if len(text) > most:
        raise QasmTooLargeError(
            f"got a number of {len(text)} digits, wanted {most} at most; {limits.told('digits')}"
        )
    # Python refuses texts of more than 4300 digits.
    return sum(int(text[-k - 4000 : -k or None]) * 10**k for k in range(0, len(text), 4000))

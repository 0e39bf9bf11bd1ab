"""Names of qubits: text such as "q[3]", "grid[1, 2]" or "ancilla".

A name is a register and an index, which may have several numbers or none. Formats that have
registers alone get those that neighbouring qubits fill in order.
"""

from __future__ import annotations

import re
from collections import Counter
from collections.abc import Collection, Iterable, Sequence
from functools import cache
from typing import Any

from zeltbraidwerk import _validate, errors
from zeltbraidwerk.instructions import Register

Names = tuple[str, ...]

REGISTER = "q"  # whose qubits a circuit without names has
_INDEXED = re.compile(r"(.+?)\[(-?\d+(?:, *-?\d+)*)\]", re.DOTALL | re.ASCII)


def text(register: str, index: Sequence[int]) -> str:
    return f"{register}[{', '.join(map(str, index))}]" if index else register


def parts(name: str) -> tuple[str, tuple[int, ...]]:
    """The register and the index; no index for a name without one."""
    match = _INDEXED.fullmatch(name)
    return (match[1], tuple(map(int, match[2].split(",")))) if match else (name, ())


@cache
def _plain(n: int) -> Names:
    return tuple([f"{REGISTER}[{k}]" for k in range(n)])


def all_of(names: Names | None, n: int) -> Names:
    """The names of ``n`` qubits, where None stands for the usual ones."""
    return _plain(n) if names is None else names


def kept(names: Iterable[str]) -> Names | None:
    """The names that a reader found; None where they are the usual ones or not unique."""
    found = tuple(names)
    is_usual = found[:1] == (f"{REGISTER}[0]",) and found == _plain(len(found))
    return None if is_usual or len(set(found)) < len(found) else found


def of_register(register: Register) -> list[str]:
    return [f"{register.name}[{k}]" for k in range(register.size)]


def of_registers(registers: Iterable[tuple[str, int]]) -> Names | None:
    """The names of the qubits of registers, by names and sizes."""
    sizes = [(name, size) for name, size in registers if size]
    if [name for name, _ in sizes] in ([], [REGISTER]):
        return None
    return kept(f"{name}[{k}]" for name, size in sizes for k in range(size))


def checked(given: Any, n: int) -> Names | None:
    """The names that a caller gives: texts, or registers as pairs of a name and a size."""
    if given is None:
        return None
    listed = _validate.items(given, "qubit_names", "names, or pairs of a name and a size")
    if listed and all(isinstance(each, (Register, tuple)) for each in listed):
        pairs = [each if isinstance(each, Register) else Register(*each) for each in listed]
        if sum(pair.size for pair in pairs) != n:
            raise errors.ShapeError(
                f"qubit_names: got {sum(pair.size for pair in pairs)}, wanted {n}"
            )
        listed = [name for pair in pairs for name in of_register(pair)]
    for name in listed:
        _validate.instance(name, "qubit_names", str, "names, or pairs of a name and a size")
    if "" in listed or len(set(listed)) < len(listed):
        got = _validate.shown(listed)
        raise errors.QubitError(f"qubit_names: got {got}, wanted different names, none of them ''")
    if len(listed) != n:
        raise errors.ShapeError(f"qubit_names: got {len(listed)}, wanted {n}")
    return kept(listed)


def registers(names: Names | None, n: int, taken: Collection[str] = ()) -> list[Register]:
    """Registers of all qubits in order, under names that are not ``taken``.

    A register that neighbours fill in order from index 0 keeps its name, and so does a qubit whose
    name has no index, as a register of one. Other neighbours make a register with a free name.
    """
    if names is None:
        return [Register(free(REGISTER, taken), n)]
    split = [parts(name) for name in names]
    sizes = Counter(register for register, _ in split)
    used = {*taken, *sizes}
    found: list[Register] = []
    loose = place = 0
    while place < n or loose:
        size = filled(split, place, sizes)
        if not size and place < n:
            loose, place = loose + 1, place + 1
            continue
        if loose:
            name = free(REGISTER, used)
            used.add(name)
            found.append(Register(name, loose))
            loose = 0
        if size:
            name = split[place][0]
            if name in taken:
                name = free(name, used)
                used.add(name)
            found.append(Register(name, size))
            place += size
    return found


def filled(split: list[tuple[str, tuple[int, ...]]], place: int, sizes: Counter[str]) -> int:
    """The size of the register that the qubits from ``place`` on fill; 0 where they fill none."""
    if place >= len(split):
        return 0
    register, index = split[place]
    size = sizes[register]
    if not index:
        return int(size == 1)
    wanted = [(register, (k,)) for k in range(size)]
    return size if split[place : place + size] == wanted else 0


def free(name: str, taken: Collection[str]) -> str:
    while name in taken:
        name += "_"
    return name


def bits(names: Sequence[str]) -> tuple[list[int], list[Register]]:
    """The registers of bits with these names, and the bits in the order of the registers. A bit
    that does not belong to a whole register makes one by itself, under its own name."""
    groups: dict[str, list[tuple[tuple[int, ...], int]]] = {}
    for place, name in enumerate(names):
        register, index = parts(name)
        groups.setdefault(register, []).append((index, place))
    found: list[Register] = []
    order: list[int] = []
    for name, group in groups.items():
        group.sort()
        order += [place for _, place in group]
        indices = [index for index, _ in group]
        if indices in ([()], [(k,) for k in range(len(group))]):
            found.append(Register(name, len(group)))
        else:
            found += [Register(text(name, index), 1) for index in indices]
    if len({register.name for register in found}) < len(found):
        return list(range(len(names))), [Register("c", len(names))]
    return order, found


def of_bits(registers: Iterable[Register]) -> list[str]:
    """The names of the bits of registers. The bit of a register of one may have an index in the
    name of the register."""
    return [
        name
        for register in registers
        for name in (
            [register.name]
            if register.size == 1 and parts(register.name)[1]
            else of_register(register)
        )
    ]

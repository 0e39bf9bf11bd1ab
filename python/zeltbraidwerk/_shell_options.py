"""The options of the command, those of each family by the arguments of its function."""

from __future__ import annotations

import argparse
import sys
from collections.abc import Callable, Sequence
from typing import Any, NoReturn

from zeltbraidwerk import _core, _validate
from zeltbraidwerk._shell_commands import COMMANDS, Command

PROGRAM = "zeltbraidwerk"

_CODES = """\
exit codes: 0 the result is written and verified; 1 no circuit was found in the time, or a result
failed its own check; 2 bad input or options; 130 stopped by Ctrl-C (the best circuit so far is
written where the result would be, if there is one); 141 the reader of the output went away"""


class Parser(argparse.ArgumentParser):
    """Tells errors in one line."""

    def error(self, message: str) -> NoReturn:
        fail(message)


def fail(text: str) -> NoReturn:
    print(f"{PROGRAM}: error: {' '.join(text.split())}", file=sys.stderr)
    raise SystemExit(2)


def parsed(arguments: Sequence[str] | None) -> argparse.Namespace:
    """The options; ends the program where they do not fit, or were a call for help."""
    parser = Parser(
        prog=PROGRAM, allow_abbrev=False, formatter_class=argparse.RawDescriptionHelpFormatter,
        description="Synthesis of quantum circuits with few two-qubit gates.",
        epilog=f"{PROGRAM} COMMAND --help tells more, with examples.\n\n{_CODES}",
    )  # fmt: skip
    parser.add_argument("--version", action="version", version=f"{PROGRAM} {_core._version}")
    commands = parser.add_subparsers(dest="command", metavar="COMMAND")
    known = {name: _add(commands, name, command) for name, command in COMMANDS.items()}
    compare = _plain(
        commands, "compare", "the same input by all methods of a family, as a table",
        ["compare linear matrix.txt --budget 1", "compare optimize circuit.qasm --seed 1"],
    )  # fmt: skip
    families = compare.add_subparsers(dest="family", metavar="COMMAND")
    below = {
        "compare": {
            name: _add(families, name, command, comparing=True)
            for name, command in COMMANDS.items()
        },
        "batch": _add_batch(commands),
    }
    given = list(sys.argv[1:] if arguments is None else arguments)
    _refuse_unknown_command(given, [*known, *below])
    if given and given[0] in below:
        _refuse_unknown_command(given[1:], list(below[given[0]]))
    namespace, unknown = parser.parse_known_args(given)
    if not namespace.command or (namespace.command in below and not namespace.family):
        names = below.get(namespace.command, [*known, *below])
        fail(f"got no command, wanted one of {', '.join(names)}; --help tells more")
    if unknown:
        group = below.get(namespace.command)
        _refuse_unknown(unknown, group[namespace.family] if group else known[namespace.command])
    return namespace


def _refuse_unknown_command(given: Sequence[str], names: Sequence[str]) -> None:
    if given and not given[0].startswith("-") and given[0] not in names:
        hint = _validate.meant(given[0], names) or f", wanted one of {', '.join(names)}"
        fail(f"got the command {given[0]!r}{hint}")


def _refuse_unknown(unknown: Sequence[str], parser: argparse.ArgumentParser) -> NoReturn:
    flags = [flag for action in parser._actions for flag in action.option_strings]
    first = next((word for word in unknown if word.startswith("-")), unknown[0])
    name = first.partition("=")[0]
    what = "the option" if name.startswith("-") else "one more argument,"
    fail(f"got {what} {name!r}{_validate.meant(name, flags) or ', which is not known here'}")


def _plain(commands: Any, name: str, about: str, examples: Sequence[str]) -> Parser:
    lines = "\n".join(f"  {PROGRAM} {example}" for example in examples)
    parser: Parser = commands.add_parser(
        name, help=about, description=about[:1].upper() + about[1:] + ".", allow_abbrev=False,
        formatter_class=argparse.RawDescriptionHelpFormatter, epilog=f"examples:\n{lines}",
    )  # fmt: skip
    return parser


def _add(commands: Any, name: str, command: Command, comparing: bool = False) -> Parser:
    examples = [f"compare {name} {command.file}"] if comparing else command.examples
    about = f"compare the methods for {command.about}" if comparing else command.about
    parser = _plain(commands, name, about, examples)
    parser.add_argument("input", help=f'{command.input}; "-" is standard input')
    _add_options(parser, command, ("method",) if comparing else ())
    if not comparing:
        parser.add_argument("-o", "--output", metavar="FILE", help="default: standard output")
        parser.add_argument(
            "--format", metavar="FORMAT",
            help=f"{', '.join(command.formats)}; default: by the suffix of FILE, else qasm",
        )  # fmt: skip
    return parser


def _add_batch(commands: Any) -> dict[str, Parser]:
    """The command batch, and the parsers of what comes after it."""
    parser = _plain(
        commands, "batch", "many files by one command, and a results file to go on from",
        [
            "batch clifford *.qasm --seed 1 -o runs.jsonl",
            "batch optimize --list names.txt --steps 100000 --seed 1 -o runs-3.jsonl "
            "--array-index 3 --array-size 20",
            "batch merge runs-*.jsonl -o runs.jsonl",
        ],
    )  # fmt: skip
    families = parser.add_subparsers(dest="family", metavar="COMMAND")
    return {name: _add_files(families, name, command) for name, command in COMMANDS.items()} | {
        "merge": _add_merge(families)
    }


def _add_files(families: Any, name: str, command: Command) -> Parser:
    parser = _plain(
        families,
        name,
        f"of each file, {command.about}",
        [f"batch {name} {command.file} -o runs.jsonl"],
    )
    parser.add_argument("input", nargs="*", help=f"files, each with {command.input}")
    parser.add_argument(
        "--list", metavar="FILE", help="a file with the names of more, one per line"
    )
    _add_options(parser, command)
    for option, about in (
        ("workers", "number of processes; default: one per core"),
        ("array-index", "this part, from 0, of those that the inputs are dealt to"),
        ("array-size", "number of parts; batch merge puts their files together"),
    ):
        parser.add_argument(f"--{option}", help=about, **_kind(_integer, "N"))
    parser.add_argument(
        "--retries", default=2, help="how often lost work is done again", **_kind(_integer, "N")
    )
    parser.add_argument(
        "-o", "--output", metavar="FILE", required=True,
        help="the results file; the same command goes on from it",
    )  # fmt: skip
    return parser


def _add_merge(families: Any) -> Parser:
    parser = _plain(
        families, "merge", "the best of each input of several results files",
        ["batch merge runs-*.jsonl -o runs.jsonl"],
    )  # fmt: skip
    parser.add_argument("input", nargs="+", help="results files")
    parser.add_argument("--quiet", action="store_true", help="write nothing to standard error")
    parser.add_argument("-o", "--output", metavar="FILE", required=True, help="the file of all")
    return parser


def _add_options(parser: Parser, command: Command, without: Sequence[str] = ()) -> None:
    for option, about, settings in OPTIONS:
        if option in command.parameters and option not in without:
            flag = "--" + option.replace("_", "-")
            parser.add_argument(flag, help=about, default=argparse.SUPPRESS, **settings)
    parser.add_argument("--quiet", action="store_true", help="write nothing to standard error")


def options_of(namespace: argparse.Namespace, command: Command) -> dict[str, Any]:
    """What was given of the options of the function."""
    names = [name for name, _, _ in OPTIONS if name in command.parameters]
    return {name: getattr(namespace, name) for name in names if hasattr(namespace, name)}


# --- options ------------------------------------------------------------------------------------


def _integer(text: str) -> int:
    try:
        return int(text)
    except ValueError:
        raise argparse.ArgumentTypeError(f"got {text!r}, wanted an integer") from None


def _number(text: str) -> float:
    try:
        return float(text)
    except ValueError:
        raise argparse.ArgumentTypeError(f"got {text!r}, wanted a number") from None


def _jobs(text: str) -> int | None:
    return None if text == "all" else _integer(text)


def _qubits(text: str) -> tuple[int, ...]:
    return tuple(_integer(part) for part in text.split(","))


def _kind(read: Callable[[str], Any], metavar: str) -> dict[str, Any]:
    return {"type": read, "metavar": metavar}


_WORD: dict[str, Any] = {"metavar": "NAME"}
OPTIONS: tuple[tuple[str, str, dict[str, Any]], ...] = (
    ("device", 'a name ("tokyo"), a shape ("grid:4x4", "line:10", "heavy-hex:3x9", '
               '"all-to-all:8"), or a file of edges', _WORD),
    ("method", "the method; default: auto, the best of several", _WORD),
    ("objective", "what is made small: count or depth of two-qubit gates; optimize: or t; on a "
                  "device with rates or durations: error or duration", _WORD),
    ("up_to", "phase: the state itself; local: up to gates on single qubits at the end", _WORD),
    ("permutation", "exact: outputs in place; free: outputs may change places", _WORD),
    ("tail", "close: undo what is left after the circuit; return: leave it", _WORD),
    ("order", "commuting: keep the product; free: one Trotter step in any order", _WORD),
    ("repeated", "refuse or merge: equal strings of several Trotter steps", _WORD),
    ("router", "who routes a circuit: own or qiskit", _WORD),
    ("placement", "where qubits of the circuit are on the device: 0,4,2", _kind(_qubits, "LIST")),
    ("exact", "keep to sums of the given angles", {"action": "store_true"}),
    ("keep_depth", "keep to as few layers of two-qubit gates as given", {"action": "store_true"}),
    ("lookahead", "how many steps are looked ahead", _kind(_integer, "N")),
    ("width", "width of the beam of greedy searches", _kind(_integer, "N")),
    ("section", "columns that pmh clears together", _kind(_integer, "N")),
    ("reach", "edges that an output may end from its place", _kind(_integer, "N")),
    ("tries", "random restarts of the decoding", _kind(_integer, "N")),
    ("seed", "the same seed and steps give the same circuit", _kind(_integer, "N")),
    ("steps", "length of the search; more is never worse", _kind(_integer, "N")),
    ("budget", "length of the search in seconds", _kind(_number, "SECONDS")),
    ("restarts", "number of runs", _kind(_integer, "N")),
    ("jobs", 'number of threads; "all": one per core', _kind(_jobs, "N")),
)  # fmt: skip

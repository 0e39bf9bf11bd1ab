"""Random calls of zeltbraidwerk.core in child processes, under limits of time and memory.

    fuzz_core.py [N]                      N calls, 100,000 by default
    fuzz_core.py --seconds 60 --module build/sanitize/python   in another module
    fuzz_core.py --only Table.cnot 5000   calls of one target

A call may return, or raise a ValueError (a TooLargeError is one), a TypeError, an IndexError on an
index of the caller's, or a RuntimeError that the library itself throws. A long one must answer
Ctrl-C. It may not end the process, hang, raise anything else, or hand on a text of the standard
library. A fault is told as a line of Python that makes it again. A call is made from the seed and
its number alone: --first goes on where a run ended, also one that Ctrl-C ended.
"""

import argparse
import importlib.util
import mmap
import os
import re
import resource
import signal
import sys
import tempfile
import time
from collections import Counter
from contextlib import suppress
from dataclasses import dataclass, field
from pathlib import Path

from core_calls import Draw
from core_stub import Target, read_targets

MEGABYTE = 1 << 20
MOST_OF_A_CALL = 64 * MEGABYTE  # the limit of the library: more only takes time
CALLS_OF_A_CHILD = 5000
# What a library of the system wrote, not this one.
FOREIGN = re.compile(r"std::|vector::|basic_string|bad_|map::|cannot create|sto[dil]\b")
# What the algorithms of the library throw where they find no answer.
OWN = re.compile(
    "Aborting|Attempt to apply non-Clifford gate|Can't get numeric value|Couldn't find a full rank|"
    "Neither a Clifford gate nor a rotation|Non-clifford rotation angle|Not a descending tree|"
    "Path is not hamiltonian|Something went wrong during co diag|Syndrome decoding: |"
    "Uknown clifford gate|graph_state: check_circuit|ooops"
)
GRACE = 5.0  # seconds between Ctrl-C and the end of the call
SANITIZED = "LD_PRELOAD" in os.environ  # the sanitizers reserve all addresses
WAITING = 30  # seconds of a busy machine's clock that count as one of processor time
PRELUDE = "import numpy as np; from math import inf, nan, pi; from zeltbraidwerk import core"


def make_call(seed: int, number: int, targets: list[Target]) -> tuple[int, Target, str]:
    """The place of the target in the list, the target, and the call."""
    draw = Draw(f"{seed} {number}")
    place = draw.randrange(len(targets))
    return place, targets[place], draw.line(targets[place])


def wrong_kind(error: BaseException) -> str | None:
    """The name of the kind where an exception is none that a caller may get."""
    text, kind = str(error), type(error).__name__
    allowed = isinstance(error, ValueError | TypeError) and not isinstance(error, UnicodeError)
    if isinstance(error, IndexError):
        allowed = re.match(r"[\w, ]+: got ", text) is not None
    elif type(error) is RuntimeError:
        allowed = OWN.match(text) is not None
    elif isinstance(error, KeyboardInterrupt):
        allowed = True
    return None if allowed and not FOREIGN.search(text) else kind


@dataclass
class Fault:
    number: int
    target: str
    kind: str
    line: str
    detail: str

    def __str__(self) -> str:
        return f"{self.number}: {self.kind} in {self.target}: {self.detail}\n    {self.line}"


@dataclass
class Limits:
    seconds: float  # of processor time per call, after which Ctrl-C comes
    megabytes: int


class Spent:
    """Processor time of a process from now on; of one that waits, a part of the clock's."""

    def __init__(self, pid: int):
        self.file = Path(f"/proc/{pid}/stat")
        self.start = self.processor(), time.monotonic()

    def processor(self) -> float:
        ticks = self.file.read_text().rpartition(")")[2].split()[11:13]
        return sum(map(int, ticks)) / os.sysconf("SC_CLK_TCK")

    def seconds(self) -> float:
        waited = (time.monotonic() - self.start[1]) / WAITING
        return max(self.processor() - self.start[0], waited)


class Shared:
    """Counts that survive the child: the call that runs, and the calls and refusals per target."""

    def __init__(self, targets: int):
        self.cells = memoryview(mmap.mmap(-1, 8 * (2 + 2 * targets))).cast("Q")

    @property
    def running(self) -> int:
        return self.cells[0]

    def begin(self, number: int, place: int) -> None:
        self.cells[0] = number
        self.cells[2 + 2 * place] += 1

    def refuse(self, place: int) -> None:
        self.cells[3 + 2 * place] += 1

    def table(self, targets: list[Target]) -> dict[str, tuple[int, int]]:
        """The counts by name: overloads together."""
        table: dict[str, tuple[int, int]] = {}
        for k, target in enumerate(targets):
            calls, refused = table.get(target.name, (0, 0))
            own = self.cells[2 + 2 * k], self.cells[3 + 2 * k]
            table[target.name] = calls + own[0], refused + own[1]
        return table


@dataclass
class Fuzzer:
    targets: list[Target]
    seed: int
    limits: Limits
    faults: list[Fault] = field(default_factory=list)

    def __post_init__(self):
        self.shared = Shared(len(self.targets))
        self.namespace: dict[str, object] = {}
        exec(PRELUDE, self.namespace)

    # --- in the child ---

    def call(self, number: int, report) -> None:
        place, _, line = make_call(self.seed, number, self.targets)
        self.shared.begin(number, place)
        try:
            exec(compile(line, "call", "exec"), dict(self.namespace))
        except BaseException as error:
            self.shared.refuse(place)
            if kind := wrong_kind(error):
                detail = repr(str(error)[:150])
                report.write(f"{number}\t{kind}\t{detail}\n")
                report.flush()

    def child(self, first: int, last: int, report, errors) -> None:
        os.dup2(os.open(os.devnull, os.O_WRONLY), 1)
        os.dup2(errors.fileno(), 2)
        signal.signal(signal.SIGINT, signal.default_int_handler)  # a job in background ignores it
        resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
        size = self.limits.megabytes * MEGABYTE
        sys.modules["zeltbraidwerk._core"]._set_memory_limit(float(MOST_OF_A_CALL))
        if not SANITIZED:
            resource.setrlimit(resource.RLIMIT_AS, (size, size))
        for number in range(first, last):
            with suppress(KeyboardInterrupt):  # one that came too late for its call
                self.call(number, report)

    # --- in the parent ---

    def watch(self, pid: int, first: int) -> str | None:
        """None where the child ended well, else how it ended."""
        seen, since, asked = first, Spent(pid), False
        while True:
            done, status = os.waitpid(pid, os.WNOHANG)
            if done:
                code = os.waitstatus_to_exitcode(status)
                return None if code == 0 else signal.Signals(-code).name if code < 0 else "exit"
            if self.shared.running != seen:
                seen, since, asked = self.shared.running, Spent(pid), False
            elif asked and since.seconds() > self.limits.seconds + GRACE:
                os.kill(pid, signal.SIGKILL)
                os.waitpid(pid, 0)
                return "hang"
            elif not asked and since.seconds() > self.limits.seconds:
                os.kill(pid, signal.SIGINT)
                asked = True
            time.sleep(0.005)

    def fault(self, number: int, kind: str, detail: str) -> None:
        _, target, line = make_call(self.seed, number, self.targets)
        self.faults.append(Fault(number, target.name, kind, line, detail))
        print(self.faults[-1], flush=True)

    def batch(self, first: int, last: int) -> int:
        """Makes calls in one child; the number of the call to go on with."""
        with tempfile.TemporaryFile("w+") as report, tempfile.TemporaryFile("w+") as errors:
            self.shared.cells[0] = first
            pid = os.fork()
            if pid == 0:
                status = 1
                try:
                    self.child(first, last, report, errors)
                    status = 0
                finally:
                    os._exit(status)
            end = self.watch(pid, first)
            report.seek(0)
            for row in report:
                number, kind, detail = row.rstrip("\n").split("\t")
                self.fault(int(number), kind, detail)
            if end is None:
                return last
            errors.seek(0)
            told = [row.strip() for row in errors if "ERROR: " in row or "runtime error" in row]
            self.fault(self.shared.running, end, told[0] if told else "")
            return self.shared.running + 1

    def run(self, first: int, count: int, seconds: float | None) -> int:
        """Stops after so many seconds. The number of the call after the last."""
        start, told, begin, last = time.monotonic(), time.monotonic(), first, first + count
        while first < last and (seconds is None or time.monotonic() - start < seconds):
            try:
                first = self.batch(first, min(first + CALLS_OF_A_CHILD, last))
            except KeyboardInterrupt:  # the child has had it too; its calls are made again
                break
            if time.monotonic() - told > 60:
                told = time.monotonic()
                print(f"up to --first {first}: {len(self.faults)} faults, "
                      f"{(first - begin) / (told - start):.0f} calls/s", flush=True)  # fmt: skip
        return first

    def tell(self) -> None:
        """A row per target with a fault: calls, refused calls, faults by kind."""
        kinds: dict[str, Counter[str]] = {}
        for fault in self.faults:
            kinds.setdefault(fault.target, Counter())[fault.kind] += 1
        table = self.shared.table(self.targets)
        for name in sorted(kinds):
            calls, refused = table[name]
            counts = ", ".join(f"{kind} {count}" for kind, count in sorted(kinds[name].items()))
            print(f"{name:45}{calls:8} calls{refused:8} refused  {counts}")
        calls, refused = (sum(column) for column in zip(*table.values(), strict=True))
        print(
            f"{calls} calls of {len(table)} targets, {refused} refused, {len(self.faults)} faults"
        )


def load(module: Path | None) -> Path:
    """Imports the core, from a folder of its own where one is given; the path of the stub."""
    if module is not None:
        (file,) = module.glob("_core*.so")
        spec = importlib.util.spec_from_file_location("zeltbraidwerk._core", file)
        sys.modules["zeltbraidwerk._core"] = importlib.util.module_from_spec(spec)
        spec.loader.exec_module(sys.modules["zeltbraidwerk._core"])
    from zeltbraidwerk import _core  # noqa: F401

    for folder in map(Path, sys.path):
        if (stub := folder / "zeltbraidwerk" / "_core.pyi").exists():
            return stub
    raise FileNotFoundError("_core.pyi: the package is not installed")


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__.partition("\n\n")[0])
    parser.add_argument("count", nargs="?", type=int, default=100_000, help="number of calls")
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--first", type=int, default=0, help="number of the first call")
    parser.add_argument("--seconds", type=float, help="end after so many seconds")
    parser.add_argument("--only", action="append", help="these targets")
    parser.add_argument("--module", type=Path, help="folder of the module, where it is another")
    parser.add_argument("--limit", type=float, default=2 if SANITIZED else 0.2,
                        help="seconds of a call after which Ctrl-C comes")  # fmt: skip
    parser.add_argument("--megabytes", type=int, default=1024, help="memory of the child")
    options = parser.parse_args()
    for number in (signal.SIGINT, signal.SIGTERM):  # of which a job in background ignores the first
        signal.signal(number, signal.default_int_handler)
    targets = [t for t in read_targets(load(options.module))
               if not options.only or t.name in options.only]  # fmt: skip
    fuzzer = Fuzzer(targets, options.seed, Limits(options.limit, options.megabytes))
    end = fuzzer.run(options.first, options.count, options.seconds)
    fuzzer.tell()
    if end < options.first + options.count:
        print(f"to go on: --seed {options.seed} --first {end}")
    sys.exit(len(fuzzer.faults) > 0)


if __name__ == "__main__":
    main()

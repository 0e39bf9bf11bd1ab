"""Many instances on several processes, what is done in a file, and results compared over
processes."""

import dataclasses
import faulthandler
import hashlib
import json
import multiprocessing
import os
import signal
import subprocess
import sys
import time
from multiprocessing.connection import wait
from pathlib import Path
from typing import NamedTuple

import numpy as np

CHUNK = 250  # instances that are written together
LIMIT = 300  # seconds of processor time of one instance
SILENCE = 3600  # seconds of the clock
NOT_COMPARED = ("seconds", "call")  # fields of results


# --- results as a whole -------------------------------------------------------------------------


def flat(value):
    """All fields but times, in an order that does not depend on the process."""
    if dataclasses.is_dataclass(value):
        fields = [field.name for field in dataclasses.fields(value)]
        own = [(name, flat(getattr(value, name))) for name in fields if name not in NOT_COMPARED]
        return type(value).__name__, own
    if isinstance(value, np.ndarray):
        return value.tolist()
    if isinstance(value, dict):
        return sorted((flat(key), flat(one)) for key, one in value.items())
    if isinstance(value, list | tuple):
        return [flat(one) for one in value]
    if hasattr(value, "images"):
        return value.images()
    if hasattr(value, "gates"):
        return value.n, [repr(one) for one in value]
    if hasattr(value, "edges"):
        return value.n, value.edges
    return repr(value)


def digest(result, threads=1):
    """When which of several runs was the best so far depends on threads."""
    if threads > 1 and getattr(result, "trace", ()):
        result = dataclasses.replace(result, trace=())
    return hashlib.sha256(repr(flat(result)).encode()).hexdigest()


class Twin:
    """Another process, with another hash seed and the module in a folder, that makes the same
    calls."""

    def __init__(self, folder):
        self.command = [sys.executable, str(Path(__file__).with_name("sweep.py")), "--answer",
                        "--module", str(folder)]  # fmt: skip
        self.process = None

    def answer(self, *instance):
        if self.process is None or self.process.poll() is not None:
            seed = str(os.getpid() % 1000 + 1)
            self.process = subprocess.Popen(
                self.command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True,
                env=os.environ | {"PYTHONHASHSEED": seed},
            )  # fmt: skip
        print(*(part for part in instance if part is not None), file=self.process.stdin, flush=True)
        return self.process.stdout.readline().rstrip("\n")


# --- processes ----------------------------------------------------------------------------------


class Worker:
    """A process that does the instances of one chunk after another. The instance that it has not
    told of when it ends is the one that ended it."""

    def __init__(self, work):
        self.work = work
        self.process = None
        self.indices = self.rows = ()

    def begin(self, chunk, indices):
        self.chunk, self.indices, self.rows = chunk, indices, []
        self.go_on()

    def go_on(self):
        if self.process is None:
            self.pipe, theirs = multiprocessing.Pipe()
            context = multiprocessing.get_context("fork")
            self.process = context.Process(target=self.live, args=(theirs,), daemon=True)
            self.process.start()
            theirs.close()
        self.since = time.monotonic()
        self.pipe.send(self.indices[len(self.rows) :])

    def live(self, theirs):
        self.pipe.close()
        faulthandler.enable()
        signal.signal(signal.SIGINT, signal.SIG_IGN)
        work = self.work()
        try:
            while True:
                for index in theirs.recv():
                    signal.setitimer(signal.ITIMER_PROF, LIMIT)
                    theirs.send(work(index))
                    signal.setitimer(signal.ITIMER_PROF, 0)
        except (EOFError, BrokenPipeError):  # the parent has ended
            os._exit(0)

    @property
    def is_idle(self):
        return len(self.rows) == len(self.indices)

    def look(self, lost):
        """Takes what the process tells; a row of ``lost(index, how it ended)`` where it ended."""
        if time.monotonic() - self.since > SILENCE:
            self.process.kill()
        try:
            while not self.is_idle and self.pipe.poll():
                self.rows.append(self.pipe.recv())
                self.since = time.monotonic()
        except (EOFError, ConnectionError):
            self.process.join()
            code, self.process = self.process.exitcode, None
            how = signal.Signals(-code).name if code < 0 else f"exit {code}"
            how = f"no end after {LIMIT} s" if how == "SIGPROF" else f"the process ended: {how}"
            self.rows.append(lost(self.indices[len(self.rows)], how))
            if not self.is_idle:
                self.go_on()

    def end(self):
        if self.process is not None:
            self.process.kill()


class Row(NamedTuple):
    """One instance. ``size`` is None where it is not known."""

    family: str
    number: int
    size: int | None
    seconds: float
    fault: str | None

    @property
    def again(self):
        return f"./dev test sweep 1 --only {self.family} --first {self.number}"


class Record:
    """What is done, by chunks of instances, as lines of a file."""

    def __init__(self, path, fresh):
        self.path, self.chunks = path, {}
        path.parent.mkdir(parents=True, exist_ok=True)
        text = path.read_text() if path.exists() and not fresh else ""
        text = text[: text.rfind("\n") + 1]  # without a line that was cut
        for line in text.splitlines():
            row = json.loads(line)
            self.chunks[row["chunk"]] = row
        path.write_text(text)

    def forget(self):
        self.chunks = {}
        self.path.write_text("")

    def add(self, chunk, rows):
        families = {}
        for row in rows:
            own = families.setdefault(row.family, [0, 0, 0.0, 0])
            size = 0 if row.size is None else 1 << row.size
            new = own[0] + 1, own[1] + bool(row.fault), own[2] + row.seconds, own[3] | size
            own[:] = new
        faults = [row.again for row in rows if row.fault]
        self.chunks[chunk] = {"chunk": chunk, "families": families, "faults": faults}
        with self.path.open("a") as file:
            file.write(json.dumps(self.chunks[chunk]) + "\n")

    def tell(self):
        """A line per family; the number of faults."""
        total = {}
        for chunk in self.chunks.values():
            for name, own in chunk["families"].items():
                whole = total.get(name, (0, 0, 0.0, 0))
                total[name] = *(a + b for a, b in zip(whole, own[:3])), whole[3] | own[3]
        sums = [sum(own[k] for own in total.values()) for k in range(3)]
        print(f"{'family':12}{'instances':>10}{'faults':>8}{'seconds':>9}{'ms each':>9}  sizes")
        rows = [*sorted(total.items()), ("all", (*sums, 0))]
        for name, (count, faults, seconds, bits) in rows:
            sizes = [n for n in range(bits.bit_length()) if bits >> n & 1]
            told = f"{len(sizes)} from {sizes[0]} to {sizes[-1]} qubits" if sizes else ""
            each = 1000 * seconds / max(count, 1)
            print(f"{name:12}{count:10}{faults:8}{seconds:9.0f}{each:9.2f}  {told}")
        for chunk in self.chunks.values():
            for line in chunk["faults"]:
                print(f"again: {line}")
        sys.stdout.flush()
        return sums[1]


def run(work, lost, indices, jobs, record):
    """Does the instances that are not in the record; ``work()`` makes what does one of them in a
    process of its own. The exit code: 1 where there are faults."""
    chunks = {first: indices[first : first + CHUNK] for first in range(0, len(indices), CHUNK)}
    if chunks.keys() <= record.chunks.keys():
        record.forget()
    elif record.chunks:
        print(f"going on: {len(record.chunks)} of {len(chunks)} chunks are done", flush=True)
    wanted = [chunk for chunk in reversed(chunks) if chunk not in record.chunks]
    workers = [Worker(work) for _ in range(min(jobs, len(wanted)))]
    start = told = time.monotonic()
    try:
        while wanted or not all(worker.is_idle for worker in workers):
            for worker in workers:
                if worker.is_idle and wanted:
                    chunk = wanted.pop()
                    worker.begin(chunk, chunks[chunk])
            wait([worker.pipe for worker in workers if not worker.is_idle], timeout=60)
            for worker in workers:
                before = len(worker.rows)
                worker.look(lost)
                for row in worker.rows[before:]:
                    if row.fault:
                        print(f"{row.fault}\nagain: {row.again}", flush=True)
                if worker.is_idle and before < len(worker.rows):
                    record.add(worker.chunk, worker.rows)
            if time.monotonic() - told > 600:
                told = time.monotonic()
                print(f"after {told - start:.0f} s:", flush=True)
                record.tell()
    except KeyboardInterrupt:
        print(f"stopped: the same command goes on; {record.path} holds what is done")
    finally:
        for worker in workers:
            worker.end()
    return int(record.tell() > 0)

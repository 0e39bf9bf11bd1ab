"""Random instances of every public synthesis against oracles that share nothing with the library.

    sweep.py [N]                          N instances in all, 1000 by default
    sweep.py 1 --only pauli --first 17    instance 17 of one family, as a fault names it

An instance is made from its family and number alone, so the first ones of a longer run are those of
a shorter one. Of a thousand instances each family has a fixed share. What is done stands in a file
below build/sweep: the same command goes on after anything that ended it, and makes what had faults
again.
"""

import argparse
import faulthandler
import json
import multiprocessing
import os
import signal
import sys
import time
from multiprocessing.connection import wait
from pathlib import Path

from fuzz_core import load

ROOT = Path(__file__).parents[2]
CHUNK = 250  # instances that are written together
LIMIT = 300  # seconds of processor time of one instance
SILENCE = 3600  # seconds of the clock


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


class Record:
    """What is done, by chunks of instances, as lines of a file. A chunk with faults is done again
    when a run is gone on with: they may have been mended."""

    def __init__(self, path, fresh):
        self.path, self.chunks = path, {}
        path.parent.mkdir(parents=True, exist_ok=True)
        text = path.read_text() if path.exists() and not fresh else ""
        text = text[: text.rfind("\n") + 1]  # without a line that was cut
        for line in text.splitlines():
            row = json.loads(line)
            if not row["faults"]:
                self.chunks[row["chunk"]] = row
        self.write()

    def write(self):
        beside = self.path.with_suffix(".new")
        beside.write_text("".join(json.dumps(row) + "\n" for row in self.chunks.values()))
        beside.replace(self.path)

    def forget(self):
        self.chunks = {}
        self.write()

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
                sums = (a + b for a, b in zip(whole[:3], own[:3], strict=True))
                total[name] = *sums, whole[3] | own[3]
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


def main():
    parser = argparse.ArgumentParser(description=__doc__.partition("\n\n")[0])
    parser.add_argument("count", nargs="?", type=int, default=1000, help="instances in all")
    parser.add_argument("--only", action="append", help="these families", default=[])
    parser.add_argument("--first", type=int, default=0, help="number of the first instance")
    parser.add_argument("--jobs", type=int, default=1, help="processes")
    parser.add_argument("--fresh", action="store_true", help="begin anew")
    parser.add_argument("--module", type=Path, help="folder of the compiled module to test")
    parser.add_argument("--twin", type=Path, help="folder of another one, to compare with")
    parser.add_argument("--answer", action="store_true", help=argparse.SUPPRESS)
    options = parser.parse_args()
    os.environ.setdefault("ZELTBRAIDWERK_CACHE", str(ROOT / "build/sweep/tables"))
    load(options.module)
    import sweep_instances as instances  # after the module that it is to use

    if options.answer:
        return instances.answer()
    names = options.only or list(instances.FAMILIES)
    if unknown := set(names) - set(instances.FAMILIES):
        known = ", ".join(instances.FAMILIES)
        sys.exit(f"--only: got {', '.join(unknown)}, wanted some of {known}")
    order = instances.order_of(names)
    kept = "-".join([*options.only, str(options.first), str(options.count)])
    record = Record(ROOT / f"build/sweep/{kept}.jsonl", options.fresh)
    indices = range(options.first, options.first + options.count)
    return run(
        lambda: instances.Work(order, options.twin),
        lambda index, how: instances.lost(order, index, how),
        indices, options.jobs, record,
    )  # fmt: skip


if __name__ == "__main__":
    sys.exit(main())

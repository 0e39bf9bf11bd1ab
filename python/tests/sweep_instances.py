"""The instances of the sweep: their numbers, what is looked at, results over several processes."""

import dataclasses
import hashlib
import os
import pickle
import subprocess
import sys
import time
import traceback
from pathlib import Path
from typing import NamedTuple

import numpy as np
import sweep_circuits
import sweep_families
from sweep_draws import Draw

import zeltbraidwerk as zb
from zeltbraidwerk import errors

NOT_COMPARED = ("seconds", "call")  # fields of results
# How many of a thousand instances.
SHARES = {
    "linear": 150, "phase": 140, "pauli": 110, "clifford": 110, "state": 80, "encoder": 70,
    "graph_state": 80, "diagonal": 30, "optimized": 110, "routed": 60, "formats": 59, "batch": 1,
}  # fmt: skip
FAMILIES = {
    name: getattr(sweep_families, name, None) or getattr(sweep_circuits, name) for name in SHARES
}
WEIGHTS = ("error", "duration")  # objectives
STARTS = ("linear", "phase", "pauli", "clifford", "state", "graph_state")


def instance(name, number, method=None):
    draw = Draw(f"{name} {number}")
    draw.only = method
    n = draw.n = draw.size(number)
    case = FAMILIES[name](draw, n)
    if name != "batch":  # which compares with calls of its own
        weigh(Draw(f"weights {name} {number}"), case.options)
    return draw, n if draw.used is None else draw.used, case


def weigh(draw, options):
    """Now and then the edges of a device get rates and durations, which become the objective."""
    device = options.get("device")
    if device is None or "objective" not in options or not draw.chance(0.08):
        return
    rates = draw.choice(((0, 0.01), (0.001, 0.3)))
    options["objective"] = draw.choice(WEIGHTS)
    options["device"] = zb.Device(
        device.n, device.edges, edge_errors={edge: draw.uniform(*rates) for edge in device.edges},
        edge_durations={edge: draw.uniform(1e-8, 1e-6) for edge in device.edges},
    )  # fmt: skip


def order_of(names):
    """The families of consecutive instances, each as often as its share says, and spread out."""
    slots = [((k + 0.5) / SHARES[name], name) for name in names for k in range(SHARES[name])]
    places = [name for _, name in sorted(slots)]
    seen = dict.fromkeys(names, 0)
    found = []
    for name in places:
        found.append((name, seen[name]))
        seen[name] += 1
    return found


def numbered(order, index):
    """Family and number of an instance of the whole run."""
    rounds, place = divmod(index, len(order))
    name, rank = order[place]
    return name, rounds * sum(name == other for other, _ in order) + rank


def try_instance(name, number, method=None, twin=None):
    """The size; raises where something is wrong. Of some, more is looked at."""
    draw, n, case = instance(name, number, method)
    try:
        result = case.call()
    except errors.NoHamiltonianPathError:
        assert case.options["method"] in ("steiner", "sorting")
        return n
    case.check(result)
    if draw.chance(0.05):
        assert pickle.loads(pickle.dumps(result)) == result
        assert not hasattr(result, "verify") or result.verify(), "its own verification says no"
        assert not hasattr(result, "to_json") or type(result).from_json(result.to_json()) == result
    if "budget" in case.options:
        return n
    if draw.chance(0.05):
        repeat(draw, case, result)
    grows = name != "batch" and case.options.get("objective") not in WEIGHTS
    if draw.chance(0.1) and "steps" in case.options and grows:
        more_steps(draw, name, case, result)
    if draw.chance(0.03) and "steps" in case.options and name not in ("routed", "batch"):
        heard, threads = [], case.options.get("jobs", 1)
        told = case.call(progress=heard.append)
        assert digest(told, threads) == digest(result, threads), "told of progress"
        assert heard == sorted(heard, reverse=True)
    if draw.chance(0.06) and twin is not None:
        found = digest(result, case.options.get("jobs", 1))
        assert twin.answer(name, number, method) == found, "another process, other vectors"
    return n


def repeat(draw, case, result):
    jobs = {}
    if "seed" in case.options and "steps" in case.options:
        jobs = {"jobs": draw.choice((1, 2, 4)), "restarts": case.options.get("restarts", 1)}
        result = case.call(**jobs | {"jobs": 1})
    threads = jobs.get("jobs", 1)
    assert digest(case.call(**jobs), threads) == digest(result, threads), f"{jobs} differs"


def more_steps(draw, name, case, result):
    steps = case.options["steps"] + int(100 * draw.random() ** 2) + 1
    again = {}
    if name in STARTS and draw.chance(0.4):
        again = {"start": result, "seed": draw.getrandbits(8)}
    elif case.options.get("device") is not None and name == "optimized":
        return
    longer = case.call(**again | {"steps": steps})
    case.check(longer)
    sizes = [case.size(one) for one in (longer, result)]
    assert sizes[0] <= sizes[1], f"{steps} steps, {sorted(again)}, were worse: {sizes}"


# --- results as a whole, over processes ----------------------------------------------------------


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


# --- for the processes of a run ------------------------------------------------------------------


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


class Work:
    """What a process does: one instance after another, some of them in its twin too."""

    def __init__(self, order, twin):
        self.order, self.twin = order, Twin(twin) if twin else None

    def __call__(self, index):
        name, number = numbered(self.order, index)
        start, fault, n = time.process_time(), None, None
        try:
            n = try_instance(name, number, twin=self.twin)
        except Exception:
            fault = f"{name} {number}: {traceback.format_exc(limit=-3)}{options_told(name, number)}"
        return Row(name, number, n, time.process_time() - start, fault)


def lost(order, index, how):
    """What is told of an instance that ended its process."""
    name, number = numbered(order, index)
    return Row(name, number, None, 0.0, f"{name} {number}: {how}\n{options_told(name, number)}")


def options_told(name, number):
    try:
        _, n, case = instance(name, number)
    except Exception as error:
        return f"not drawn: {error!r}"
    listed = ", ".join(f"{key}={value!r}" for key, value in case.options.items())
    return f"{n} qubits, {listed}"


def answer():
    """For the other process of a comparison: a digest for each line of a family and a number."""
    for line in sys.stdin:
        name, number, *method = line.split()
        try:
            case = instance(name, int(number), *method)[2]
            found = digest(case.call(), case.options.get("jobs", 1))
        except Exception as error:
            found = repr(error).replace("\n", " ")
        print(found, flush=True)

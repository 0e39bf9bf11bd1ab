"""Random instances of every public synthesis against oracles that share nothing with the library.

    sweep.py [N]                          N instances in all, 1000 by default
    sweep.py 1 --only pauli --first 17    instance 17 of one family, as a fault names it

An instance is made from its family and number alone, so the first ones of a longer run are those of
a shorter one. Of a thousand instances each family has a fixed share. What is done stands in a file
below build/sweep: the same command goes on after anything that ended it.
"""

import argparse
import os
import pickle
import sys
import time
import traceback
from pathlib import Path

ROOT = Path(__file__).parents[2]


def options_of(arguments=None):
    parser = argparse.ArgumentParser(description=__doc__.partition("\n\n")[0])
    parser.add_argument("count", nargs="?", type=int, default=1000, help="instances in all")
    parser.add_argument("--only", action="append", help="these families", default=[])
    parser.add_argument("--first", type=int, default=0, help="number of the first instance")
    parser.add_argument("--jobs", type=int, default=1, help="processes")
    parser.add_argument("--fresh", action="store_true", help="begin anew")
    parser.add_argument("--module", type=Path, help="folder of the compiled module to test")
    parser.add_argument("--twin", type=Path, help="folder of another one, to compare with")
    parser.add_argument("--answer", action="store_true", help=argparse.SUPPRESS)
    return parser.parse_args(arguments)


if __name__ == "__main__":
    OPTIONS = options_of()
    os.environ.setdefault("ZELTBRAIDWERK_CACHE", str(ROOT / "build/sweep/tables"))
    from fuzz_core import load

    load(OPTIONS.module)  # before the package

from sweep_draws import Draw
from sweep_families import FAMILIES, SHARES
from sweep_records import Record, Row, Twin, digest, run

from zeltbraidwerk import errors


def instance(name, number, method=None):
    draw = Draw(f"{name} {number}")
    draw.only = method
    n = draw.n = draw.size(number)
    return draw, n, FAMILIES[name](draw, n)


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
    if draw.chance(0.1) and "steps" in case.options and name != "batch":
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


STARTS = ("linear", "phase", "pauli", "clifford", "state", "graph_state")


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


def main():
    if OPTIONS.answer:
        return answer()
    names = OPTIONS.only or list(FAMILIES)
    if unknown := set(names) - set(FAMILIES):
        sys.exit(f"--only: got {', '.join(unknown)}, wanted some of {', '.join(FAMILIES)}")
    order = order_of(names)
    kept = "-".join([*OPTIONS.only, str(OPTIONS.first), str(OPTIONS.count)])
    record = Record(ROOT / f"build/sweep/{kept}.jsonl", OPTIONS.fresh)

    def lost(index, how):
        name, number = numbered(order, index)
        return Row(name, number, None, 0.0, f"{name} {number}: {how}\n{options_told(name, number)}")

    indices = range(OPTIONS.first, OPTIONS.first + OPTIONS.count)
    return run(lambda: Work(order, OPTIONS.twin), lost, indices, OPTIONS.jobs, record)


if __name__ == "__main__":
    sys.exit(main())

"""Inputs of calls that take long, and how long after Ctrl-C or their budget these end.

Times are those of the processor, so that a busy machine makes little difference.
"""

import os
import random
import signal
import threading
import time

import zeltbraidwerk as zb
from zeltbraidwerk import gallery


def parities(n, terms):
    rng = random.Random(terms)
    return {format(rng.randrange(1, 1 << n), f"0{n}b"): 0.1 for _ in range(terms)}


def rotations(n, terms, weight):
    rng, found = random.Random(terms), []
    for k in range(terms):
        letters = ["I"] * n
        for q in rng.sample(range(n), weight):
            letters[q] = rng.choice("XYZ")
        found.append(("".join(letters), 0.1 + k))
    return found


def circuit(n, count, pieces=1):
    rng, found = random.Random(count), []
    for k in range(count):
        a, b = rng.sample(range(n), 2)
        found.append(rng.choice((zb.Gate.cnot(a, b), zb.Gate.h(a), zb.Gate.rz(a, rng.random()))))
        if (k + 1) % (count // pieces) == 0 and k + 1 < count:
            found.append(zb.Barrier(range(n)))
    return zb.Circuit(n, found)


def operator(n):
    rng, found = random.Random(n), []
    for _ in range(8 * n):
        a, b = rng.sample(range(n), 2)
        found += [zb.Gate.cnot(a, b), zb.Gate.h(a), zb.Gate.s(b)]
    return zb.CliffordTableau.from_circuit(zb.Circuit(n, found))


def matrix(n):
    return gallery.random_invertible(n, 1, n)[0]


def threads():
    return len(os.listdir("/proc/self/task"))


def stopped(call, delay):
    """Processor seconds from Ctrl-C to the end of the call, and whether there is a best result."""
    signal.signal(signal.SIGINT, signal.default_int_handler)
    pressed = []
    begin = time.process_time()

    def press():
        while time.process_time() - begin < delay:
            time.sleep(0.01)
        pressed.append(time.process_time())
        os.kill(os.getpid(), signal.SIGINT)

    before = threads()
    key = threading.Thread(target=press, daemon=True)  # the call may end before
    key.start()
    try:
        call()
        raise AssertionError("the call ended by itself")
    except zb.errors.Interrupted as interrupted:
        late = time.process_time() - pressed[0]
        best = interrupted.best
    key.join()
    assert threads() <= before
    assert best is None or best.verify()
    return late, best is not None


def overtime(call, budget):
    """Processor seconds that a call takes after its budget."""
    over = []
    clock = threading.Timer(budget, lambda: over.append(time.process_time()))
    clock.start()
    call(budget=budget)
    late = time.process_time() - over[0] if over else 0.0
    clock.cancel()
    clock.join()
    return late

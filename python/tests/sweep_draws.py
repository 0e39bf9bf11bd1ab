"""Random instances of the sweep: sizes, devices, options, operators, angles, strings, circuits."""

import math
import random

import stim
from sweep_oracles import SYMBOLS

import zeltbraidwerk as zb
from zeltbraidwerk import Gate, Measure
from zeltbraidwerk.instructions import Barrier

MOST = 80  # qubits, but for one instance in two thousand, about the ends of machine words
BEYOND = (63, 64, 65, 127, 128, 129)
STEPS = 200
LONG = 4000  # steps of one search in a hundred
KINDS = ("dyadic", "same", "symbols", "forms", "quarters", "eighths", "edges", "floats", "any")
EXACT = ("symbols", "forms", "quarters", "eighths")  # that windows of numbers leave alone
EDGES = (0.0, -0.0, 1e-17, -1e-17, 1e6, -1e6, 1e-7, math.pi, -math.pi, 2 * math.pi, math.tau * 9)
RESTARTED = (
    "pmh", "pairs", "blocks", "greedy", "gray", "recursive", "greedy_depth", "sets", "sets_graph",
    "sets_decoding", "sets_closed", "decoding",
)  # fmt: skip
SHAPES = ("line", "ring", "grid", "star", "full", "tree", "graph", "parts")
ONE = ["H", "S", "D-S", "X", "Y", "Z", "I", "T", "D-T", "SX", "RX", "RY", "RZ", "RZ", "PH"]


class Draw(random.Random):
    """The draws of one instance; of `only` this method, where there is a choice that has it."""

    only: str | None = None
    n = 0  # qubits that were drawn
    used: int | None = None  # where a family takes fewer

    def chance(self, odds):
        return self.random() < odds

    def size(self, number):
        """Every size in turn, small ones more often."""
        if number % 2000 == 1999:
            return self.choice(BEYOND)
        part = number * 0.6180339887498949 % 1
        if part < 0.8:
            return int(12 * (part / 0.8) ** 1.5)
        return 12 + int((MOST - 11) * ((part - 0.8) / 0.2) ** 3)

    # --- devices and options --------------------------------------------------------------------

    def ground(self, n, odds=0.35):
        """Number of qubits and edges of a device with a connected part of n qubits or more."""
        if not self.chance(odds):
            return None
        width = n + self.choice((0, 0, 0, 0, 1, 5))
        kind = self.choice(SHAPES)
        pairs = [(k, k + 1) for k in range(width - 1)]
        if kind == "ring" and width > 2:
            pairs.append((0, width - 1))
        elif kind == "grid":
            columns = self.randint(2, 8)
            pairs = [pair for pair in pairs if pair[1] % columns]
            pairs += [(k, k + columns) for k in range(width - columns)]
        elif kind == "star":
            pairs = [(0, k) for k in range(1, width)]
        elif kind == "full" and width < 30:
            pairs = [(a, b) for b in range(width) for a in range(b)]
        elif kind in ("tree", "graph"):
            pairs = [(self.randrange(k), k) for k in range(1, width)]
            if kind == "graph" and width > 1:
                pairs += [self.sample(range(width), 2) for _ in range(self.randint(1, width))]
        if kind == "parts":  # another component, which is smaller
            spare = min(n, self.randint(2, 4))
            pairs += [(width + k - 1, width + k) for k in range(1, spare)]
            width += spare
        width += self.choice((0, 0, 0, 2))  # qubits apart
        names = self.sample(range(width), width) if self.chance(0.5) else range(width)
        return width, {tuple(sorted((names[a], names[b]))) for a, b in pairs}

    def method(self, module, n, ground):
        """Mostly the search; the others where they are quick and always end."""
        known = module.methods(device=ground is not None)
        if self.only in known:
            return self.only
        if n > 12 or self.chance(0.6):
            return "search"
        slow = ("auto", "steiner", "sorting", "greedy_log") if n > 5 else ()
        return self.choice([name for name in known if name not in slow])

    def options(self, ground, method="search", **choices):
        """One of each of the choices, an objective, a seed, an effort, and the device."""
        found = {name: self.choice(values) for name, values in choices.items()}
        found |= {"method": method, "objective": self.choice(("count", "depth"))}
        found["seed"] = self.getrandbits(self.choice((4, 64)))
        if ground is not None:
            found["device"] = zb.Device(ground[0], sorted(ground[1]))
        if method in ("search", "auto"):
            found |= self.effort()
        elif method in RESTARTED and self.chance(0.9):
            found["restarts"] = self.choice((1, 2, 3))
        return found

    def effort(self):
        if self.chance(0.01):
            return {"budget": self.choice((0.0005, 0.003))}
        most = LONG if self.chance(0.01) else STEPS
        found = {"steps": 0 if self.chance(0.2) else int(most * self.random() ** 2)}
        if self.chance(0.15 if self.n <= 24 else 0.02):
            found |= {"restarts": self.randint(1, 3), "jobs": self.randint(1, 2)}
        return found

    # --- angles and circuits --------------------------------------------------------------------

    def angles(self, most, kind=None):
        """Of one kind, or of any: numbers whose sums are exact, equal ones, symbols and linear
        forms, quarter and eighth turns, tiny and huge ones, floats."""
        kind = kind or self.choice(KINDS)
        same = self.randint(1, 255) / 256
        return [self.angle(self.choice(KINDS[:-1]) if kind == "any" else kind, same)
                for _ in range(most)]  # fmt: skip

    def angle(self, kind, same=0.5):
        if kind == "symbols":
            return f"t{self.randrange(300)}"
        if kind == "forms":
            one, other = self.sample(sorted(SYMBOLS), 2)
            factor, shift = self.randint(-7, 7) / 4 or 1.0, self.choice((0, 0.5, math.pi / 2))
            return f"{factor}*{one} - 0.5*{other} + {shift!r}"
        return {
            "dyadic": self.randint(-255, 255) / 256,
            "same": same,
            "quarters": self.randint(-5, 9) * math.pi / 2,
            "eighths": self.randint(-9, 9) * math.pi / 4,
            "edges": self.choice(EDGES),
            "floats": self.uniform(-7, 7),
        }[kind]

    def circuit_gates(self, n, most, kind):
        """Random gates, with angles of this kind: on all qubits, on few of them, or one part again
        and again. ``kind`` None is Clifford alone."""
        among = self.sample(range(n), min(n, self.choice((2, 3, n, n))))
        again = self.choice((1, 1, 2, 4))
        part = [self.gate(among, kind) for _ in range(most // again)]
        if self.chance(0.2):
            part += [gate.inverse() for gate in reversed(part)][self.randint(0, 3) :]
        return part * again

    def gate(self, among, kind):
        one = ONE if kind else [name for name in ONE if not name.endswith("T")]
        name = self.choice(one + ["CNOT", "CNOT", "CSIGN", "CZ"] * 4 * (len(among) > 1))
        qubits = self.sample(among, 2 if name in ("CNOT", "CSIGN", "CZ") else 1)
        if name in ("RX", "RY", "RZ", "PH"):
            return Gate(name, qubits, self.angles(1, kind or "quarters")[0])
        return Gate(name, qubits)

    def ending(self, n):
        """Measurements of some qubits, each into a bit of its own, with barriers."""
        some = self.sample(range(n), self.randint(1, n))
        return [Barrier(range(n))] * self.randrange(2) + [Measure(q, k) for k, q in enumerate(some)]

    # --- linear maps and Clifford operators -----------------------------------------------------

    def pairs(self, n):
        """Of different qubits, from none to enough that a map through them is dense."""
        if n < 2:
            return []
        count = self.choice((0, 1, 3, n, n, 3 * n, n * n // 2 + 5))
        return [self.sample(range(n), 2) for _ in range(count)]

    def rows(self, n):
        """An invertible matrix: random operations, blocks, low rank and identity, permutations."""
        rows, kind = [1 << k for k in range(n)], self.randrange(5)
        if kind == 0:  # blocks, equal or not
            size = self.randint(1, max(n, 1))
            pairs = self.pairs(size)
            for start in range(0, n - size + 1, size):
                for a, b in pairs if self.chance(0.7) else self.pairs(size):
                    rows[start + a] ^= rows[start + b]
        elif kind == 1 and n > 1:  # the same combination, or few, on many rows
            half = self.randint(1, n - 1)
            few = [self.getrandbits(half) for _ in range(self.randint(1, 3))]
            rows[half:] = [row ^ self.choice(few) for row in rows[half:]]
        elif kind > 1:
            for a, b in self.pairs(n):
                rows[a] ^= rows[b]
        if self.chance(0.4):
            self.shuffle(rows)
        return rows

    def clifford(self, n):
        """An operator of random gates, with random signs."""
        sim = stim.TableauSimulator()
        sim.set_num_qubits(n)
        for a, b in self.pairs(n) or [(q, q) for q in range(n)]:
            getattr(sim, self.choice(("h", "s", "sqrt_x")))(a)
            if a != b:
                sim.cx(a, b)
        sim.do_pauli_string(stim.PauliString("".join(self.choices("IXYZ", k=n))))
        return sim.current_inverse_tableau()

    def graph(self, n):
        graph = [[0] * n for _ in range(n)]
        kind = self.randrange(4)
        inner = self.sample(range(n), n // 2)
        for a, b in self.pairs(n) if kind else [(a, b) for a in inner for b in range(n) if a != b]:
            graph[a][b] = graph[b][a] = 1 - graph[a][b] if kind else 1
        if self.chance(0.2):
            for q in range(n):
                graph[q][q] = self.randrange(2)
        return graph

    def generators(self, stabilizers):
        """Others of the same group or, by signs, of one like it."""
        found = [self.choice((1, -1)) * stim.PauliString(text) for text in stabilizers]
        for a, b in self.pairs(len(found)) if self.chance(0.7) else ():
            found[a] *= found[b]
        self.shuffle(found)
        return [str(pauli) for pauli in found]

    # --- parities and strings -------------------------------------------------------------------

    def terms(self, n):
        """How many."""
        return self.choice(BEYOND if self.chance(0.01) else (0, 1, 2, 3, n, min(2 * n, 40)))

    def parities(self, n):
        """Sparse, dense, of neighbours, the same again."""
        kind, most = self.randrange(5), self.terms(n)
        odds = (0.1, 0.5, 0.5)[min(kind, 2)]
        found = [sum(self.chance(odds) << q for q in range(n)) for _ in range(most)]
        if kind == 3:
            found = [3 << self.randrange(n - 1) if n > 1 else n for _ in range(most)]
        return self.choices(found, k=most) if found and kind == 4 else found

    def layers(self, n, terms):
        pool, again = [], self.chance(0.5)
        for _ in range(self.randint(1, 3)):
            if not pool or not again:
                letters = [self.choice("XYZZZZ") for _ in range(n)]
                layer = [
                    "".join(self.choice(("I", "I", letter)) for letter in letters)
                    for _ in range(terms)
                ]
            pool += layer
            mixer = self.choice("XY")
            pool += ["".join(mixer if q == k else "I" for q in range(n)) for k in range(n)]
        return pool

    def commuting(self, n):
        operator, most = self.clifford(n), self.terms(n)
        diagonals = ["".join(self.choices("IIZ", k=n)) for _ in range(most)]
        return [str(operator(stim.PauliString(text))) for text in diagonals]

    def strings(self, n):
        """Pauli strings with signs."""
        most, kind = self.terms(n), self.randrange(6)
        pool = []
        if kind == 0:
            pool = self.commuting(n)
        elif kind == 1:  # layers that are diagonal on each qubit, single letters between them
            pool = self.layers(n, min(most, 20))
        elif kind == 2:  # the same letter on two qubits
            for _ in range(most if n > 1 else 0):
                pair, letter = self.sample(range(n), 2), self.choice("XYZ")
                pool.append("".join(letter if q in pair else "I" for q in range(n)))
        else:
            weight = n if kind == 3 else self.randint(0, min(n, 4))
            for _ in range(most):
                letters = ["I"] * n
                for q in self.sample(range(n), weight):
                    letters[q] = self.choice("IXYZ" if kind == 3 else "XYZ")
                pool.append(self.choice(("", "+", "-")) + "".join(letters))
        if pool and self.chance(0.3):
            pool = self.choices(pool[: self.randint(1, 6)], k=most)
        if self.chance(0.2):
            pool.insert(self.randint(0, len(pool)), "-" + "I" * n)
        return pool

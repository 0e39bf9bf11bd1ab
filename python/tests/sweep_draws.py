"""Random instances of the sweep: sizes, devices, options, operators, strings."""

import math
import random

import stim
from sweep_oracles import SYMBOLS, simulator

import zeltbraidwerk as zb
from zeltbraidwerk import Gate

MOST = 50  # qubits, but for one instance in a hundred, about the ends of machine words
BEYOND = (63, 64, 65, 127, 128, 129)
STEPS = 3000


class Draw(random.Random):
    """The draws of one instance; of `only` this method, where there is a choice that has it."""

    only: str | None = None

    def chance(self, odds):
        return self.random() < odds

    def size(self, number):
        """Every size in turn, small ones more often."""
        if number % 100 == 99:
            return self.choice(BEYOND)
        return int((MOST + 1) * (number * 0.6180339887498949 % 1) ** 2.5)

    def ground(self, n, odds=0.4):
        """Number of qubits and edges of a connected device of n qubits or more."""
        if not self.chance(odds):
            return None
        width = n + self.choice((0, 0, 0, 0, 1, 7))
        kind = self.choice(("line", "ring", "grid", "star", "full", "tree", "graph"))
        pairs = [(k, k + 1) for k in range(width - 1)]
        if kind == "ring" and width > 2:
            pairs.append((0, width - 1))
        elif kind == "grid":
            columns = self.randint(2, 8)
            pairs = [pair for pair in pairs if pair[1] % columns]
            pairs += [(k, k + columns) for k in range(width - columns)]
        elif kind == "star":
            pairs = [(0, k) for k in range(1, width)]
        elif kind == "full" and width < 80:  # beyond, operators take half a minute
            pairs = [(a, b) for b in range(width) for a in range(b)]
        elif kind in ("tree", "graph"):
            pairs = [(self.randrange(k), k) for k in range(1, width)]
            if kind == "graph" and width > 1:
                pairs += [self.sample(range(width), 2) for _ in range(self.randint(1, width))]
        width += self.choice((0, 0, 0, 2))  # qubits apart
        names = self.sample(range(width), width) if self.chance(0.5) else range(width)
        return width, {tuple(sorted((names[a], names[b]))) for a, b in pairs}

    def method(self, module, n, ground):
        """Mostly the search; the others where they are quick and always end."""
        known = module.methods() if ground is None else module.methods(device=True)
        if self.only in known:
            return self.only
        if n > 16 or self.chance(0.85):
            return "search"
        return self.choice([name for name in known if name not in ("auto", "steiner", "sorting")])

    def options(self, ground, method="search", **choices):
        """One of each of the choices, an objective, a seed, an effort, and the device."""
        found = {name: self.choice(values) for name, values in choices.items()}
        found |= {"method": method, "objective": self.choice(("count", "depth"))}
        found["seed"] = self.getrandbits(self.choice((4, 64)))
        if method != "search":
            return found | ({} if ground is None else {"device": zb.Device(*ground)})
        if self.chance(0.03):
            found["budget"] = self.choice((0.0005, 0.005))
        else:
            found["steps"] = 0 if self.chance(0.15) else int(STEPS * self.random() ** 2)
        if self.chance(0.2):
            found |= {"restarts": self.randint(1, 3), "jobs": self.randint(1, 2)}
        if ground is not None:
            found["device"] = zb.Device(*ground)
        return found

    def terms(self, n):
        """How many."""
        return self.choice(BEYOND if self.chance(0.04) else (0, 1, 3, n, 2 * n, 60))

    def pairs(self, n):
        """Of different qubits, from none to enough that a map through them is dense."""
        if n < 2:
            return []
        count = self.choice((0, 1, 3, n, n, 3 * n, n * n // 2 + 5))
        return [self.sample(range(n), 2) for _ in range(count)]

    def clifford(self, n):
        """An operator of random gates, with random signs."""
        sim = simulator(n)
        for a, b in self.pairs(n) or [(q, q) for q in range(n)]:
            getattr(sim, self.choice(("h", "s", "sqrt_x")))(a)
            if a != b:
                sim.cx(a, b)
        sim.do_pauli_string(stim.PauliString("".join(self.choices("IXYZ", k=n))))
        return sim.current_inverse_tableau()

    def graph(self, n):
        graph = [[0] * n for _ in range(n)]
        for a, b in self.pairs(n):
            graph[a][b] = graph[b][a] = 1 - graph[a][b]
        if self.chance(0.2):
            for q in range(n):
                graph[q][q] = self.randrange(2)
        return graph

    def generators(self, stabilisers):
        """Others of the same group or, by signs, of one like it."""
        found = [self.choice((1, -1)) * stim.PauliString(text) for text in stabilisers]
        for a, b in self.pairs(len(found)) if self.chance(0.7) else ():
            found[a] *= found[b]
        self.shuffle(found)
        return [str(pauli) for pauli in found]

    def gate(self, n, dense):
        names = ["H", "S", "D-S", "X", "Y", "Z", "RX", "RY", "RZ", "PH"]
        name = self.choice(names + ["CNOT", "CSIGN"] * 3 * (n > 1))
        qubits = self.sample(range(n), 2 if name in ("CNOT", "CSIGN") else 1)
        if name[0] not in "RP":
            return Gate(name, qubits)
        turn = math.pi / 4 * self.randint(-4, 4) if dense else self.randint(1, 255) / 256
        return Gate(name, qubits, turn)

    def angles(self, most):
        """Numbers whose sums are exact, many or few of them, or symbols."""
        kind, few = self.randrange(3), self.randint(1, 255) / 256
        names = self.sample(sorted(SYMBOLS), most) if kind == 2 else range(most)
        return [(few, self.randint(1, 255) / 256, name)[kind] for name in names]

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

    def strings(self, n):
        """Pauli strings with signs."""
        most, kind = self.terms(n), self.randrange(6)
        pool = []
        if kind == 0:  # all commute
            operator = self.clifford(n)
            for _ in range(most):
                diagonal = "".join(self.choice("IIZ") for _ in range(n))
                pool.append(str(operator(stim.PauliString(diagonal))))
        elif kind == 1:  # layers that are diagonal on each qubit, single letters between them
            pool = self.layers(n, most)
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

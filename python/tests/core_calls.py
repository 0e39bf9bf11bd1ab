"""Random calls of everything in zeltbraidwerk.core, each as one line of Python.

Arguments are drawn by their types in the stub, and by name where the name tells how they fit
together; then each is, with some probability, one that does not fit: of another size, out of range,
negative, huge, empty, or of another type.
"""

import ast
import functools
import random

from core_stub import Target

SIZES = {"n", "rows", "cols", "inner", "length"}
INDICES = {
    "a", "b", "col", "control", "i", "j", "k", "q", "qubit", "root", "row", "source", "start",
    "target", "v", "value", "w",
}  # fmt: skip
SMALL = {
    "depth": 3, "level": 2, "restarts": 3, "tries": 3, "section": 4, "width": 3, "position": 2,
    "method": 3, "code": 3, "control_basis": 3, "target_basis": 3, "sketch_mode": 1,
}  # fmt: skip
GATES = {
    "CNOT": 2, "CSIGN": 2, "CZ": 2, "XX": 2, "SWAP": 2, "H": 1, "S": 1, "S*": 1, "X": 1, "Y": 1,
    "Z": 1, "I": 1, "T": 1, "RX": 1, "RY": 1, "RZ": 1, "PH": 1,
}  # fmt: skip
ROTATIONS = {"RX", "RY", "RZ", "PH"}
HOSTILE_INTS = (
    -1, -1, -2, 0, 1, 5, 31, 33, 63, 64, 65, 100, 1000, 16383, 16384, 46341, 65536, 10**6, 2**24,
    10**9, 2**30, 2**31 - 1, -(2**31), 2**31, 2**63, -(10**30),
)  # fmt: skip
HOSTILE_FLOATS = ("nan", "inf", "-inf", "1e308", "-1e308", "1e-320", "1e6", "-0.0", "1e17")
ANGLES = ("pi / 2", "pi", "-pi / 2", "0.0", "0.25", "pi / 4", "-0.7", "2 * pi")
TEXTS = (
    "''", "'a'", "'+ a b'", "'- a'", "'* 0.5 a'", "'0.5*a'", "'XYZ'", "'ones'", "'log'", "'CNOT'",
    "'\\0'", "'x' * 5000", "'1e999'", "'- ' * 400", "'\\u00e9'", "'\\ud800'", "'('", "'nan'",
)  # fmt: skip
WRONG_TYPES = (
    "None", "0.5", "'a'", "[]", "{}", "object()", "b'x'", "1j", "[None]", "[[1], [1, 2]]", "nan",
    "np.array(0)", "'7'", "True", "(1,)", "{1}", "[10**30]", "range(3)", "[[[1]]]",
)  # fmt: skip


text_of = functools.cache(ast.unparse)  # of a type; nodes are the same for all calls


class Draw(random.Random):
    """Draws one call. What must be made before it stands in `before`."""

    def __init__(self, seed: str):
        super().__init__(seed)
        self.n = self.choice((0, 1, 2, 2, 3, 3, 4, 4, 5, 6, 8))
        if self.chance(0.02):
            self.n = self.choice((9, 31, 33, 63, 64, 65, 66, 130))
        self.hostility = self.choice((0, 0.1, 0.3, 0.6))
        self.before: list[str] = []
        self.made: dict[str, list[str]] = {}

    def chance(self, probability: float) -> bool:
        return self.random() < probability

    def hostile(self) -> bool:
        return self.chance(self.hostility)

    def line(self, target: Target) -> str:
        call = self.call(target)
        return "; ".join([*self.before, call])

    def call(self, target: Target) -> str:
        values = []
        for name, annotation in target.parameters:
            value = self.value(annotation, name.rstrip("="), target.name)
            values.append(name + value if name.endswith("=") else value)
        call = target.call.replace("%s", ", ".join(values)) if "%s" in target.call else target.call
        return call.replace("{}", self.instance(target.owner), 1) if target.owner else call

    def value(self, annotation: ast.expr, name: str, target: str) -> str:
        if self.chance(self.hostility / 10):
            return self.choice(WRONG_TYPES)
        kind = text_of(annotation)
        match kind:
            case "int":
                return str(self.integer(name))
            case "float":
                return self.choice(HOSTILE_FLOATS if self.hostile() else ANGLES)
            case "bool":
                return self.choice(("True", "False"))
            case "str":
                return self.text(name)
            case "numpy.typing.ArrayLike":
                return self.array(name, target)
            case "object":
                return self.choice((*WRONG_TYPES, self.instance("Table"), self.instance("Gate")))
        if isinstance(annotation, ast.Name):
            return self.instance(kind)
        return self.container(annotation, name, target)

    # --- plain values ---

    def integer(self, name: str) -> int:
        if self.hostile():
            return self.choice((*HOSTILE_INTS, self.n - 1, self.n, self.n + 1, 2 * self.n + 1))
        if name in SIZES:
            return self.n
        if name in INDICES:
            return self.index()
        if name in SMALL:
            return self.randint(name in ("section", "width"), SMALL[name])
        if name in ("h", "r"):
            return self.n // 2 if name == "h" else self.n - self.n // 2
        return self.randint(-2, 8)

    def index(self) -> int:
        return self.randrange(max(self.n, 1))

    def text(self, name: str) -> str:
        if self.hostile():
            return self.choice(TEXTS)
        if name == "cost":
            return self.choice(("'ones'", "'log'"))
        if name == "name":
            return repr(self.choice(list(GATES)))
        return repr(self.letters()) if self.chance(0.6) else self.choice(TEXTS)

    def letters(self) -> str:
        return "".join(self.choices("IXYZ", k=self.n))

    # --- arrays ---

    def shape(self, name: str, target: str) -> tuple[int, ...]:
        n, half = self.n, self.n // 2
        if name in ("s", "syndrome") or target == "HammingXOR":
            return (n,)
        if name == "data" or (name == "m" and target.startswith("mult_")):
            return (2 * n + 1, 2 * n + 1)
        if name in ("X", "Y"):
            return (n - half, half) if name == "X" else (half, n - half)
        if name == "g":
            return self.choice(((1, 1), (2, 2), (3, 3)))
        if name == "gates":
            return (self.randint(0, 2 * n), 2)
        if name in ("H", "table", "vectors") and self.chance(0.5):
            return (self.randint(0, 2 * n), n) if name == "vectors" else (n, self.randint(0, 2 * n))
        return (n, n)

    def array(self, name: str, target: str) -> str:
        if self.chance(self.hostility / 4):
            return self.choice(("np.ones((3, 6), bool)[:, ::2]", "np.eye(4, dtype=np.uint64)", "[]",
                                "np.eye(3)", "np.full((2, 2), nan)", "np.zeros((0, 5), int)",
                                "np.ones((2, 2, 2), int)", "np.eye(70, dtype=bool)[::-1]",
                                "np.full((3, 3), 2**62)", "[[1, 2], [3]]"))  # fmt: skip
        shape = self.shape(name, target)
        if self.hostile():
            shape = tuple(max(0, size + self.choice((-2, -1, 0, 1, 2, 60))) for size in shape)
        low, high = 0, 1
        if name in ("g", "data") or (name == "m" and target.startswith("mult_")):
            high = 3
        elif name in ("R", "C", "Ri", "Ci", "weights") or target.startswith("findmax"):
            low, high = -3, 3
        elif name == "gates":
            high = max(self.n - 1, 0)
        if self.hostile():
            low, high = self.choice(((-1, 1), (0, 9), (-(2**31), 2**31 - 1), (0, 2**40)))
        if len(shape) == 1:
            return repr([self.randint(low, high) for _ in range(shape[0])])
        return self.matrix(*shape, low, high, name)

    def matrix(self, rows: int, cols: int, low: int, high: int, name: str) -> str:
        if rows * cols > 400:
            generator = f"np.random.default_rng({self.randrange(99)})"
            return f"{generator}.integers({low}, {high + 1}, ({rows}, {cols}))"
        table = [[self.randint(low, high) for _ in range(cols)] for _ in range(rows)]
        if (low, high) == (0, 1) and rows == cols and self.chance(0.6):
            if name == "graph":
                table = [[table[max(r, c)][min(r, c)] for c in range(cols)] for r in range(rows)]
            else:  # invertible
                table = [[int(r == c) for c in range(cols)] for r in range(rows)]
                for _ in range(2 * rows if rows > 1 else 0):
                    a, b = self.sample(range(rows), 2)
                    table[a] = [x ^ y for x, y in zip(table[a], table[b], strict=True)]
        return repr(table)

    # --- containers ---

    def container(self, annotation: ast.expr, name: str, target: str) -> str:
        if not isinstance(annotation, ast.Subscript):
            raise TypeError(f"no values of type {text_of(annotation)} for {target}")
        outer, inner = text_of(annotation.value), annotation.slice
        if outer == "dict":
            return self.dictionary(text_of(inner))
        if outer == "tuple":
            return f"({', '.join(self.value(each, name, target) for each in inner.elts)})"
        kind = text_of(inner)
        if kind == "int":
            return self.places(name, outer == "Set", target)
        if kind == "bool":
            return repr(self.choices((False, True), k=self.length()))
        if kind == "Sequence[int]":
            return repr([self.codes() for _ in range(self.randint(0, 5))])
        if kind == "tuple[str, Parameter]":
            string = self.letters()[: self.length()]
            return f"[{', '.join(f'({string!r}, {self.angle()})' for _ in range(3))}]"
        count = self.randint(0, 5)
        return f"[{', '.join(self.value(inner, name, target) for _ in range(count))}]"

    def length(self) -> int:
        return self.choice((0, 1, self.n + 1, 3)) if self.hostile() else self.n

    def codes(self) -> list[int]:
        high = self.choice((4, 255, 256)) if self.chance(self.hostility / 10) else 3
        length = self.length() if self.chance(self.hostility / 10) else self.n
        return [self.randint(0, high) for _ in range(length)]

    def dictionary(self, kind: str) -> str:
        high = 1 if "bool" in kind else 3
        keys = {tuple(min(code, high) if high == 1 else code for code in self.codes())
                for _ in range(self.randint(0, 5))}  # fmt: skip
        items = {str(key): self.angle() for key in sorted(keys)}
        if self.chance(self.hostility / 5):
            items[self.choice(("None", "'XY'", "3", "(None,)", "(0.5, 1)", "()"))] = self.angle()
        if self.chance(self.hostility / 5):
            items[str((0,) * self.n)] = self.choice(WRONG_TYPES)
        return "{" + ", ".join(f"{key}: {value}" for key, value in items.items()) + "}"

    def places(self, name: str, is_set: bool, target: str) -> str:
        size = 2 * self.n + 1 if target.startswith("mult_") else self.n
        places = list(range(size))
        self.shuffle(places)
        if name == "qbits":
            places = places[:2]
        elif target.startswith("mult_"):
            places = places[: self.randint(1, 3)]
        elif name not in ("perm", "path") and not (name == "idx" and self.chance(0.5)):
            places = places[: self.randint(0, size)]
        if self.hostile():
            for _ in range(self.randint(1, 3)):
                k = self.randint(0, len(places))
                places[k : k + self.randint(0, 1)] = [self.integer("path")]
        return f"{{{', '.join(map(str, places))}}}" if is_set and places else (
            "set()" if is_set else repr(places))  # fmt: skip

    # --- objects of core ---

    def instance(self, kind: str) -> str:
        """A new object of a class, or one that is there already."""
        known = self.made.setdefault(kind, [])
        if known and self.chance(0.1):
            return self.choice(known)
        match kind:
            case "Parameter":
                return self.angle()
            case "Gate":
                return self.gate()
            case "WeylOperator":
                return f"core.WeylOperator({self.letters()!r})"
            case "Move":
                a, b = self.index(), self.index()
                return f"core.Move({a}, {b}, {self.randint(0, 3)}, {self.randint(0, 3)})"
            case "CnotCircuit":
                text = f"core.CnotCircuit({self.size()}, {self.cnots()})"
            case "Table":
                text = f"core.Table({self.size()})"
                if self.chance(0.7):
                    text = f"core.Table.from_matrix({self.matrix(self.n, self.n, 0, 1, '')})"
            case "OperatorTableau":
                text = f"core.OperatorTableau({self.size()})"
            case "Graph":
                text = f"core.Graph({self.size()})"
            case _:
                raise TypeError(f"no values of class {kind}")
        variable = f"{kind[0].lower()}{len(known)}"
        known.append(variable)
        self.before.append(f"{variable} = {text}")
        if kind == "Graph":
            self.join(variable)
        elif kind == "OperatorTableau":
            self.turn(variable)
        return variable

    def size(self) -> int:
        return self.choice((0, 1, self.n + 1, 64)) if self.chance(self.hostility / 5) else self.n

    def angle(self) -> str:
        if self.hostile():
            return f"core.Parameter({self.choice((*TEXTS, *HOSTILE_FLOATS))})"
        return f"core.Parameter({self.choice((*ANGLES, repr('a'), repr('- a')))})"

    def gate(self) -> str:
        name = self.choice(list(GATES))
        qubits = self.sample(range(self.n), min(GATES[name], self.n))
        angles = [self.angle()] if name in ROTATIONS else []
        if self.hostile():
            name = self.choice((*GATES, "", "QQ", "cnot"))
            qubits = [self.integer("q") if self.hostile() else self.index()
                      for _ in range(self.randint(0, 3))]  # fmt: skip
            angles = [self.angle() for _ in range(self.randint(0, 2))]
        return f"core.Gate({name!r}, {qubits}, [{', '.join(angles)}], {self.chance(0.5)})"

    def cnots(self) -> str:
        pairs = [
            self.sample(range(self.n), 2) for _ in range(self.randint(0, 6) if self.n > 1 else 0)
        ]
        return repr(pairs)

    def join(self, graph: str) -> None:
        """Edges: of a tree, and some more."""
        edges = [(v, self.randrange(v)) for v in range(1, self.n) if not self.hostile()]
        if self.n and self.chance(0.5):
            edges += [(self.index(), self.index()) for _ in range(self.randint(0, 3))]
        for a, b in edges if self.n < 20 else edges[:40]:
            weight = f", {self.choice(HOSTILE_FLOATS)}" if self.chance(self.hostility / 20) else ""
            self.before.append(f"{graph}.add_edge({a}, {b}{weight})")
        if not self.chance(self.hostility / 2):
            self.before.append(f"{graph}.set_shortest_paths()")
        if self.chance(self.hostility / 2) and self.n:
            last = f"disconnect({self.index()})", f"remove_edge({self.index()}, {self.index()})"
            self.before.append(f"{graph}.{self.choice((*last, 'initialize_sketches()'))}")

    def turn(self, tableau: str) -> None:
        """Clifford gates; or entries that are of no Clifford operator."""
        if self.chance(self.hostility / 3):
            self.before.append(f"{tableau}.data = {self.array('data', '')}")
        for _ in range(self.randint(0, 4) if self.n > 1 else 0):
            a, b = self.sample(range(self.n), 2)
            name = self.choice((f"cnot_left({a}, {b})", f"h_right({a})", f"rz_plus_left({b})"))
            self.before.append(f"{tableau}.{name}")

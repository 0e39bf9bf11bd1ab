"""Count lines of code: of the product, of its tests, and the ratio of tests to product.

Blank lines, comments and docstrings do not count. The product is src, python/bindings and
python/zeltbraidwerk; the tests are tests and python/tests.
"""

import ast
import io
import re
import sys
import tokenize
from collections import Counter
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
PRODUCT = ("src/zeltbraidwerk", "python/bindings", "python/zeltbraidwerk")
TESTS = ("tests", "python/tests")


def cpp_lines(text: str) -> int:
    code = re.sub(r'("(?:\\.|[^"\\\n])*")|//[^\n]*|/\*.*?\*/', r"\1", text, flags=re.DOTALL)
    return sum(1 for line in code.splitlines() if line.strip())


def python_lines(text: str) -> int:
    hidden = set()
    for node in ast.walk(ast.parse(text)):
        documented = isinstance(node, ast.Module | ast.ClassDef | ast.FunctionDef)
        if documented and ast.get_docstring(node):
            hidden.update(range(node.body[0].lineno, node.body[0].end_lineno + 1))
    seen = set()
    layout = (tokenize.COMMENT, tokenize.NL, tokenize.NEWLINE, tokenize.INDENT, tokenize.DEDENT)
    for token in tokenize.generate_tokens(io.StringIO(text).readline):
        if token.type not in (*layout, tokenize.ENDMARKER):
            seen.update(range(token.start[0], token.end[0] + 1))
    return len(seen - hidden)


def count(folder: str) -> Counter:
    """Lines of code in each subfolder; files directly in the folder count under its own name."""
    lines = Counter()
    for path in sorted((ROOT / folder).rglob("*")):
        if path.suffix in (".h", ".cpp", ".py", ".pyi"):
            counter = cpp_lines if path.suffix in (".h", ".cpp") else python_lines
            below = path.relative_to(ROOT / folder).parts
            name = f"{folder}/{below[0]}" if len(below) > 1 else folder
            lines[name] += counter(path.read_text())
    return lines


def main() -> int:
    totals = []
    for title, folders in (("product", PRODUCT), ("tests", TESTS)):
        lines = sum((count(folder) for folder in folders), Counter())
        for name, number in sorted(lines.items()):
            print(f"{number:7} {name}")
        totals.append(lines.total())
        print(f"{lines.total():7} {title}\n")
    print(f"tests / product = {totals[1] / totals[0]:.1%}")
    print(f"tests / (product + tests) = {totals[1] / sum(totals):.1%}")
    return 0


if __name__ == "__main__":
    sys.exit(main())

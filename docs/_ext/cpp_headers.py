"""The directive ``cpp-headers``: the public headers of one folder, shown as they stand.

The headers are the reference of the C++ interface, so nothing is written twice.
"""

from pathlib import Path

from docutils import nodes
from sphinx.application import Sphinx
from sphinx.util.docutils import SphinxDirective

SOURCES = Path(__file__).parents[2] / "src"


class CppHeaders(SphinxDirective):
    required_arguments = 1

    def run(self) -> list[nodes.Node]:
        headers = sorted((SOURCES / "zeltbraidwerk" / self.arguments[0]).glob("*.h"))
        if not headers:
            raise self.error(f"no headers in {self.arguments[0]}")
        return [self._section(header) for header in headers]

    def _section(self, header: Path) -> nodes.Node:
        self.env.note_dependency(str(header))
        name = str(header.relative_to(SOURCES))
        lines = header.read_text(encoding="utf-8").splitlines()
        text = "\n".join(line for line in lines if not line.startswith(("#pragma", "#include")))
        section = nodes.section(ids=[nodes.make_id(name)], names=[name])
        section += nodes.title(text=name)
        section += nodes.literal_block(text.strip(), text.strip(), language="cpp")
        return section


def setup(app: Sphinx) -> dict[str, bool]:
    app.add_directive("cpp-headers", CppHeaders)
    return {"parallel_read_safe": True}

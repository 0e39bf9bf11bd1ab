"""The directive ``cpp-reference``: what the public headers of one folder declare, with links.

Doxygen reads the headers, once per build; the directive turns what it read into declarations of
Sphinx's C++ domain, so that types in signatures and names in texts lead to their definitions. The
order is that of the headers. A public name without a comment is an error.
"""

from __future__ import annotations

import re
import subprocess
import tempfile
from collections import defaultdict
from collections.abc import Callable, Iterator
from dataclasses import dataclass, field
from pathlib import Path
from xml.etree import ElementTree
from xml.etree.ElementTree import Element

from docutils import nodes
from sphinx import addnodes
from sphinx.application import Sphinx
from sphinx.errors import ExtensionError
from sphinx.util.docutils import SphinxDirective

SOURCES = Path(__file__).parents[2] / "src"
DOXYFILE = Path(__file__).parent / "Doxyfile"
INNER = {"struct", "class"}


@dataclass
class Entry:
    """One declaration, and what is declared in it."""

    kind: str  # the name of a directive of the C++ domain
    signature: str
    text: str
    line: int
    members: list[Entry] = field(default_factory=list)

    def markdown(self, depth: int = 0) -> str:
        body = "\n\n".join([self.text, *(member.markdown(depth + 1) for member in self.members)])
        fence = "`" * (6 - depth)
        return f"{fence}{{cpp:{self.kind}}} {self.signature}\n{body}\n{fence}"


class Reference:
    """What Doxygen read, by header: the text of the file, and its entries."""

    def __init__(self) -> None:
        self.texts: dict[str, str] = {}
        self.entries: defaultdict[str, list[Entry]] = defaultdict(list)
        with tempfile.TemporaryDirectory() as folder:
            compounds = _run_doxygen(Path(folder))
        self._names = {
            element.get("id"): name
            for compound in compounds
            for element in (compound, *compound.iter("memberdef"))
            if element.get("kind") not in ("file", "namespace")
            and (name := element.findtext("qualifiedname") or element.findtext("compoundname"))
        }
        for compound in compounds:
            self._add(compound)
        if bare := [name for entries in self.entries.values() for name in _bare(entries)]:
            raise ExtensionError("C++ names without a comment: " + "; ".join(bare))

    def _add(self, compound: Element) -> None:
        kind = compound.get("kind", "")
        if kind in INNER:
            entry = self._class(compound)
            self.entries[_header(compound)].append(entry)
        elif kind in ("file", "namespace"):
            if kind == "file":
                self.texts[_header(compound)] = self._description(compound)
            for member in compound.iter("memberdef"):
                # An instantiation of a template is no name of its own.
                if not member.findtext("definition", "").startswith("template "):
                    self.entries[_header(member)].append(self._member(member))

    def _class(self, compound: Element) -> Entry:
        bases = [base.text or "" for base in compound.findall("basecompoundref")]
        name = compound.findtext("compoundname", "")
        signature = _template(compound) + name
        signature += " : public " + ", public ".join(bases) if bases else ""
        members = [self._member(member) for member in compound.iter("memberdef")
                   if member.get("prot") == "public"]  # fmt: skip
        members.sort(key=lambda member: member.line)
        for member in members:  # names within a class are without its name
            member.signature = member.signature.replace(f"{name}::", "", 1)
        kind, text = compound.get("kind", ""), self._description(compound)
        return Entry(kind, signature, text, _line(compound), members)

    def _member(self, member: Element) -> Entry:
        kind, text = member.get("kind", ""), self._description(member)
        name = member.findtext("qualifiedname", "")
        definition = member.findtext("definition", "") + member.findtext("argsstring", "")
        # A default of several lines would be read as the next argument of the directive.
        signature = re.sub(r"\s+", " ", _template(member) + definition)
        if kind == "enum":
            strong = "enum-class" if member.get("strong") == "yes" else "enum"
            values = [
                Entry("enumerator", value.findtext("name", ""), self._description(value), 0)
                for value in member.findall("enumvalue")
            ]
            return Entry(strong, name, text, _line(member), values)
        if kind == "typedef":
            alias = definition.removeprefix("using ").replace("= typedef ", "= ")
            return Entry("type", alias, text, _line(member))
        if kind == "variable":
            signature += " " + _flat(member.find("initializer")) if _is_short(member) else ""
        return Entry("member" if kind == "variable" else kind, signature, text, _line(member))

    def _description(self, element: Element) -> str:
        parts = (element.find(tag) for tag in ("briefdescription", "detaileddescription"))
        blocks = [block for part in parts if part is not None for block in self._blocks(part)]
        return "\n\n".join(blocks)

    def _blocks(self, element: Element) -> Iterator[str]:
        """Paragraphs, lists and tables of a description."""
        for child in element:
            if child.tag != "para":
                raise ExtensionError(f"no way to show <{child.tag}> of Doxygen")
            tables = [_table(table, self._inline) for table in child.findall("table")]
            for nested in child.findall("itemizedlist"):
                for item in nested.findall("listitem"):
                    yield "- " + "\n\n".join(self._blocks(item)).replace("\n", "\n  ")
            text = self._inline(child).strip()
            yield from ([text] if text else []) + tables

    def _inline(self, element: Element) -> str:
        text = _escaped(element.text or "")
        for child in element:
            if child.tag in ("computeroutput", "ref"):
                text += self._code(child)
            elif child.tag not in ("table", "itemizedlist"):
                text += {"ndash": "-", "mdash": "-"}.get(child.tag) or self._inline(child)
            text += _escaped(child.tail or "")
        return text

    def _code(self, element: Element) -> str:
        text, link = _flat(element), element if element.tag == "ref" else element.find("ref")
        name = self._names.get(link.get("refid")) if link is not None else None
        # A name with blanks, such as an operator, is shown without its link.
        if name and text.rstrip("()") == "".join(link.itertext()).rstrip("()") and " " not in name:
            return f"{{cpp:any}}`{text} <{name}>`"
        return f"`` {text} ``" if "`" in text else f"`{text}`"


def _run_doxygen(folder: Path) -> list[Element]:
    settings = f"{DOXYFILE.read_text(encoding='utf-8')}\nOUTPUT_DIRECTORY = {folder}\n"
    try:
        done = subprocess.run(["doxygen", "-"], cwd=SOURCES, input=settings, text=True, check=False,
                              capture_output=True)  # fmt: skip
    except FileNotFoundError:
        raise ExtensionError("the C++ reference needs doxygen: apt-get install doxygen") from None
    if done.returncode:
        raise ExtensionError(f"doxygen refuses the headers:\n{done.stderr}")
    files = sorted((folder / "xml").glob("*.xml"))
    return [compound for file in files for compound in ElementTree.parse(file).iter("compounddef")]


def _bare(entries: list[Entry]) -> Iterator[str]:
    """Signatures without a text, but for functions that the compiler writes."""
    for entry in entries:
        if not entry.text and not re.search(r"=\s*(default|delete)$", entry.signature):
            yield entry.signature
        yield from _bare(entry.members)


def _header(element: Element) -> str:
    location = element.find("location")
    return "" if location is None else location.get("file", "").removeprefix(f"{SOURCES}/")


def _line(element: Element) -> int:
    location = element.find("location")
    return 0 if location is None else int(location.get("line", 0))


def _flat(element: Element | None) -> str:
    return "" if element is None else " ".join("".join(element.itertext()).split())


def _is_short(member: Element) -> bool:
    text = _flat(member.find("initializer"))
    return text.startswith("=") and len(text) < 40


def _template(element: Element) -> str:
    parameters = element.findall("templateparamlist/param")
    pairs = ((_flat(each.find("type")), each.findtext("declname")) for each in parameters)
    texts = [" ".join(filter(None, pair)) for pair in pairs]
    return f"template <{', '.join(texts)}> " if texts else ""


def _table(table: Element, inline: Callable[[Element], str]) -> str:
    rows = [[" ".join(map(inline, entry)) for entry in row] for row in table.findall("row")]
    rows.insert(1, ["---"] * len(rows[0]))
    return "\n".join(f"| {' | '.join(row)} |" for row in rows)


def _escaped(text: str) -> str:
    return re.sub(r"([\\`*_{}\[\]<>#|$^~])", r"\\\1", text)


class CppReference(SphinxDirective):
    required_arguments = 1

    def run(self) -> list[nodes.Node]:
        folder = SOURCES / "zeltbraidwerk" / self.arguments[0]
        headers = sorted(folder.glob("*.h"))
        if not headers:
            raise self.error(f"no headers in {self.arguments[0]}")
        reference = _reference(self.env.app)
        parts = []
        for header in headers:
            self.env.note_dependency(str(header))
            name = str(header.relative_to(SOURCES))
            entries = sorted(reference.entries[name], key=lambda entry: entry.line)
            parts += [f"### {name}", reference.texts.get(name, "")]
            parts += [entry.markdown() for entry in entries]
        return self.parse_text_to_nodes("\n\n".join(parts), allow_section_headings=True)


def _join_groups(app: Sphinx, document: nodes.document) -> None:
    """Declarations that share a comment stand above one text."""
    for entry in list(document.findall(addnodes.desc)):
        before = entry.parent.children[: entry.parent.index(entry)]
        last = next((node for node in reversed(before) if isinstance(node, addnodes.desc)), None)
        if (
            last
            and entry["domain"] == "cpp"
            and last["objtype"] == entry["objtype"]
            and str(last[-1]) == str(entry[-1])
        ):
            last[-1:-1] = entry[:-1]
            entry.parent.remove(entry)


def _reference(app: Sphinx) -> Reference:
    if not hasattr(app, "cpp_reference"):
        app.cpp_reference = Reference()
    return app.cpp_reference


def setup(app: Sphinx) -> dict[str, bool]:
    app.add_directive("cpp-reference", CppReference)
    app.connect("doctree-read", _join_groups)
    return {"parallel_read_safe": True}

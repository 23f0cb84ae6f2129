"""The manual's section 3: a page for each public header, made from what Doxygen reads in its comments.

A page says nothing of its own: declarations stand as in the header, descriptions as in their blocks, the example is a program of
man/examples, which a test compiles and runs. A construct that is not known here is an error, never skipped.
"""

import pathlib
import re
import textwrap
import xml.etree.ElementTree as ElementTree

COLUMNS = 72  # of what is shown as it is, so that it fits a terminal of 80
TAB = "\t"

_SIZES = {"VASKDFC_RECORD_SIZE": "{} bytes", "VASKDFC_POINTER_RECORD_SIZE": "{} bytes on 32-bit systems, {} on 64-bit systems"}


def escaped(text):
    """Text in which nothing is markup."""
    text = re.sub(r"([\\_*~])", r"\\\1", text)
    return re.sub(r"^([#\-.|\[\]`;])", r"\\\1", text)


def literal(text):
    """Lines that are shown as they are."""
    return "```\n" + text.replace("\\", "\\\\").replace("```", "\\```").rstrip("\n") + "\n```\n"


def declaration(header, line):
    """The declaration that begins at a line of a header, broken to fit a page."""
    text = "\n".join(header.splitlines()[line - 1:])
    text = " ".join(re.sub(r"/\*.*?\*/", "", text[: text.index(";") + 1], flags=re.S).split())
    start, parenthesis, rest = text.partition("(")
    if len(text) <= COLUMNS or not parenthesis:
        return text
    # Parameters stand below each other if they fit behind the name, else on lines of their own.
    indent = len(start) + 1 if len(start) < COLUMNS // 2 else 4
    parameters = re.sub(r"(?<!,) ", "\0", rest)  # a parameter stays in one piece
    lines = textwrap.wrap(parameters, COLUMNS - indent, break_long_words=False, break_on_hyphens=False)
    return (start + "(" + ("" if indent > 4 else "\n" + " " * 4) + ("\n" + " " * indent).join(lines)).replace("\0", " ")


class Reference:
    """What Doxygen read, and the names that it knows."""

    def __init__(self, xml, include, examples, exported):
        self.include, self.examples, self.exported = include, examples, exported
        self.compounds = {path.stem: ElementTree.parse(path).getroot().find("compounddef") for path in xml.glob("*.xml")
                          if path.stem != "index"}
        self.headers = {file.find("location").get("file"): file for file in self.compounds.values()
                        if file is not None and file.get("kind") == "file" and file.findtext("compoundname").endswith(".h")}
        self.declared_in = {}
        for path, file in self.headers.items():
            for member in file.iter("memberdef"):
                self.declared_in[member.findtext("name")] = page_name(path)
        self._name = re.compile(rf"\b({'|'.join(sorted(self.declared_in, key=len, reverse=True))})\b")

    def marked(self, text):
        """A run of text with the names of functions, variables and constants in bold."""
        parts = self._name.split(re.sub(r"\s+", " ", text))
        return "".join(f"*{part}*" if position % 2 else escaped(part) for position, part in enumerate(parts))

    def text_of(self, element):
        """The text of an element without its blocks, in one line."""
        found = self.marked(element.text or "")
        for child in element:
            if child.tag in ("ref", "anchor", "para"):
                found += self.text_of(child)
            elif child.tag == "computeroutput":
                found += f"_{child.text}_"
            else:
                raise ValueError(f"a page cannot show <{child.tag}> within a line")
            found += self.marked(child.tail or "")
        return found.strip() if element.tag == "para" else found

    def blocks(self, element):
        """What a description says but for its results: paragraphs, lists, parameters and lines to be shown as they are."""
        run = self.marked(element.text or "")
        for child in element:
            block = self._block(child)
            if block is None:
                run += f"_{child.text}_" if child.tag == "computeroutput" else self.text_of(child)
            else:
                if run.strip():
                    yield run.strip() + "\n"
                run = ""
                yield from block
            run += self.marked(child.tail or "")
        if run.strip():
            yield run.strip() + "\n"

    def _block(self, element):
        """The blocks that an element stands for; None for what is part of a line."""
        if element.tag in ("ref", "computeroutput", "anchor"):
            return None
        if element.tag in ("para", "sect1"):
            return self.blocks(element)
        if element.tag in ("itemizedlist", "orderedlist"):
            mark = "-" if element.tag == "itemizedlist" else "."
            return ["".join(f"{mark} {self.text_of(item.find('para'))}\n" for item in element)]
        if element.tag == "verbatim":
            return [literal(element.text)]
        if element.tag == "parameterlist":
            return ["".join(self._parameter(item) for item in element)]
        if element.tag in ("simplesect", "title"):
            return []  # results have a section of their own, titles are the caller's
        raise ValueError(f"a page cannot show <{element.tag}>")

    def _parameter(self, item):
        name = item.findtext("parameternamelist/parametername")
        return definition(f"_{name}_", self.text_of(item.find("parameterdescription/para")))

    def description(self, element):
        """All that an element's block says, results excepted."""
        return "\n".join([*self.blocks(element.find("briefdescription")), *self.blocks(element.find("detaileddescription"))])

    def result(self, function):
        """What a function returns."""
        found = function.find(".//simplesect[@kind='return']/para")
        return "nothing" if found is None else self.text_of(found)

    def page(self, path):
        """The page of one header."""
        return Page(self, path).text()

    def overview_sections(self):
        """The sections of the page about conventions: title and text."""
        conventions = self.compounds["indexpage"].find("detaileddescription")
        return [(section.findtext("title"), "\n".join(self.blocks(section))) for section in conventions.findall("sect1")]


def definition(term, text):
    """A term and what it stands for, in one paragraph."""
    return f"{term}\n{TAB}{' '.join(text.split())}\n"


def page_name(path):
    """The name of a header's page: vaskdfc_info for vaskdfc/info.h."""
    return str(pathlib.PurePath(path).with_suffix("")).replace("/", "_")


class Page:
    """A header's page."""

    def __init__(self, reference, path):
        self.reference, self.path, self.name = reference, path, page_name(path)
        self.file = reference.headers[path]
        self.header = (reference.include / path).read_text(encoding="utf-8")
        members = sorted(self.file.iter("memberdef"), key=lambda member: int(member.find("location").get("line")))
        self.functions = [member for member in members if member.get("kind") in ("function", "variable", "typedef")]
        self.constants = [member for member in members if member.get("kind") == "define"]
        self.records = [reference.compounds[record.get("refid")] for record in self.file.findall("innerclass")]
        self.records.sort(key=lambda record: int(record.find("location").get("line")))

    def text(self):
        """The page's source."""
        sections = {"NAME": self._names(), "LIBRARY": self._library(), "SYNOPSIS": self._synopsis(),
                    "DESCRIPTION": self._description()}
        if self.name == "vaskdfc":
            sections |= {title.upper(): text for title, text in self.reference.overview_sections()}
        else:
            macros = "MACROS" if self.file.find(".//defname") is not None else "CONSTANTS"
            sections |= {"RETURN VALUE": self._results(), "RECORDS": self._records(), macros: self._constants()}
        sections["EXAMPLES"] = literal((self.reference.examples / f"{self.name}.c").read_text(encoding="utf-8"))
        body = "".join(f"# {title}\n\n{text}\n" for title, text in sections.items() if text)
        return f"{self.name}(3)\n\n{body}# SEE ALSO\n\n{self._see_also(body)}\n"

    def _names(self):
        names = [member.findtext("name") for member in self.functions] or [self.name]
        brief = " ".join("".join(self.file.find("briefdescription").itertext()).split()).rstrip(".")
        return f"{escaped(', '.join(names))} \\- {escaped(brief[:1].lower() + brief[1:] if brief[1:2].islower() else brief)}\n"

    def _library(self):
        names = {function.findtext("name") for function in self.functions}
        return "libvaskdfc, linked with *-lvaskdfc*\n" if names & self.reference.exported or self.name == "vaskdfc" else ""

    def _synopsis(self):
        lines = [declaration(self.header, int(member.find("location").get("line"))) for member in self.functions]
        return literal("\n".join([f"#include <{self.path}>", *(f"\n{line}" for line in lines)]))

    def _description(self):
        parts = [self.reference.description(self.file)]
        for member in self.functions:
            name = member.findtext("name")
            title = f"{name}()" if member.get("kind") == "function" else name
            parts.append(f"## {title}\n\n{self.reference.description(member)}")
        return "\n".join(parts)

    def _results(self):
        results = [definition(f"*{function.findtext('name')}*", self.reference.result(function)) for function in self.functions
                   if function.get("kind") == "function"]
        return "".join(results) or "The header declares no function.\n"

    def _records(self):
        return "\n".join(self._record(record) for record in self.records)

    def _record(self, record):
        name = record.findtext("compoundname")
        guard = re.search(rf"^(VASKDFC_\w+)\({name}, ([\d, ]+)\);", self.header, re.M)
        size = _SIZES[guard[1]].format(*guard[2].split(", "))
        fields = [definition(f"*{escaped(self._field(field))}*", self.reference.description(field))
                  for field in record.iter("memberdef")]
        return f"## {name}\n\n{' '.join(self.reference.description(record).split())} {size}.\n\n{''.join(fields)}"

    @staticmethod
    def _field(field):
        kind = "".join(field.find("type").itertext()).replace(" *", "*")
        return f"{kind} {field.findtext('name')}{field.findtext('argsstring')}"

    def _constants(self):
        groups = {}
        for section in self.file.findall("sectiondef"):
            for member in section.findall("memberdef"):
                groups[member.findtext("name")] = section
        parts, group = [], None
        for constant in self.constants:
            section = groups[constant.findtext("name")]
            if section is not group:
                group = section
                if section.get("kind") == "user-defined":
                    about = section.find("description")
                    parts.append(f"\n## {section.findtext('header')}\n\n")
                    parts += [f"{block}\n" for block in (self.reference.blocks(about) if about is not None else [])]
                elif parts:
                    parts.append("\n## Others\n\n")
            parts.append(self._constant(constant))
        return "".join(parts)

    def _constant(self, constant):
        parameters = ", ".join(each.text for each in constant.iter("defname"))
        value = constant.findtext("initializer")
        term = f"*{escaped(constant.findtext('name'))}*" + (f"({parameters})" if parameters else f" {escaped(value)}")
        return definition(term, self.reference.description(constant))

    def _see_also(self, body):
        used = {self.reference.declared_in[name] for name in re.findall(r"\*(\w+)\*", body) if name in self.reference.declared_in}
        included = {page_name(header.text) for header in self.file.findall("includes") if header.get("refid")} - {"vaskdfc_record"}
        pages = {f"{page}(3)" for page in used | included | {"vaskdfc", "vaskdfc_result"}}
        if self.name == "vaskdfc":
            pages = {f"{page_name(path)}(3)" for path in self.reference.headers} | {"vaskdfc(1)", "libvaskdfc.conf(5)"}
        pages.discard(f"{self.name}(3)")
        return ", ".join(re.sub(r"^(.*)(\(\d\))$", r"*\1*\2", page) for page in sorted(pages, key=lambda page: (page[-2], page)))


def pages(xml, include, examples, exported):
    """The source of every page by its name. Names that the library exports need no other library."""
    reference = Reference(xml, include, examples, exported)
    return {page_name(path): reference.page(path) for path in reference.headers}

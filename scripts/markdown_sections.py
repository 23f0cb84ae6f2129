"""Sections of the Markdown pages in docs/ as source of a manual page, so that what both say is written once.

What those sections are made of is known here: paragraphs, tables whose first column names something, lines to be shown as they are.
"""

import re

from function_pages import definition, escaped, literal


def _inline(text):
    """A run of Markdown: code and bold in bold, links by their text."""
    text = re.sub(r"\[([^\]]+)\]\([^)]+\)", r"\1", text)
    parts = re.split(r"`([^`]+)`|\*\*([^*]+)\*\*", text)
    found = ""
    for position in range(0, len(parts), 3):
        found += escaped(parts[position])
        if position + 1 < len(parts):
            found += f"*{escaped(parts[position + 1] or parts[position + 2])}*"
    return found


def _sentence(text):
    """A cell as a sentence of its own."""
    text = text.strip()
    if not text:
        return ""
    begin = text[:1].upper() + text[1:] if text[0].isalpha() else text
    return _inline(begin if begin.endswith(".") else f"{begin}.")


def _table(lines):
    """A table as definitions; the last of three columns says what holds where the first is absent."""
    rows = [[cell.strip() for cell in line.strip().strip("|").split("|")] for line in lines]
    head, body = rows[0], rows[2:]
    found = []
    for row in body:
        about = [_sentence(row[1])]
        if len(row) > 2 and row[2]:
            about.append("Required." if row[2] == "required" else _inline(f"{head[2]}: {row[2].rstrip('.')}."))
        found.append(definition(_inline(row[0]), " ".join(filter(None, about))))
    return "".join(found)


def _block(lines):
    if lines[0].startswith("```"):
        return literal("\n".join(lines[1:-1]))
    if lines[0].startswith("|"):
        return _table(lines)
    if re.match(r"[-*+>]|\d+\.", lines[0]):
        raise ValueError(f"a manual page cannot show this: {lines[0]}")
    return _inline(" ".join(lines)) + "\n"


def _blocks(text):
    """The blocks of a section; empty lines end them, but not within lines that are shown as they are."""
    block, fenced = [], False
    for line in [*text.splitlines(), ""]:
        fenced ^= line.startswith("```")
        if line or fenced:
            block.append(line)
        elif block:
            yield _block(block)
            block = []


def section(path, title):
    """The section of a page under a heading, up to the next heading of any level."""
    found = re.search(rf"^#+ {re.escape(title)}\n\n(.*?)(?=^#|\Z)", path.read_text(encoding="utf-8"), re.M | re.S)
    if not found:
        raise ValueError(f"{path} has no section {title}")
    return "\n".join(_blocks(found[1]))

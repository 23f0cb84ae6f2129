#!/usr/bin/python3
"""docs/formats against the library: the images byte for byte, the tables of fields without gaps.

    formats_test.py DOCS REGION_DUMP
"""

import pathlib
import re
import subprocess
import sys
import unittest

DOCS, DUMP = pathlib.Path(sys.argv[1]), sys.argv[2]

# Sizes in bytes of what the pages tabulate field by field.
SIZES = {
    "region22.md": {"Image": 512},
    "region23.md": {
        "Image": 1024,
        "Record": 4,
        "Record 0xA0: FCoE parameters": 12,
        "Record 0xA1: FCF connect list": 324,
        "Each entry:": 20,
        "Record 0xA2: persistent link down": 12,
    },
}


def tables(page):
    """Every table of a page under the last heading or line with a colon before it: a list of rows, each a list of cells."""
    found, title = {}, ""
    for line in (DOCS / page).read_text(encoding="utf-8").splitlines():
        if line.startswith("#") or line.endswith(":"):
            title = line.lstrip("# ")
        if line.startswith("|"):
            cells = [cell.strip() for cell in line.strip("|").split("|")]
            found.setdefault(title, []).append(cells)
    return {title: rows[2:] for title, rows in found.items()}


def bytes_of(cell):
    """The bytes that a cell such as `01 02` or 320 × `00` stands for."""
    times, text = re.fullmatch(r"(?:(\d+) × )?`([0-9A-F ]+)`", cell).groups()
    return bytes.fromhex(text) * int(times or 1)


def image_of(rows):
    """The bytes of a table of images, without gaps."""
    image = b""
    for offset, cell, _ in rows:
        assert int(offset) == len(image), f"row {offset} follows {len(image)} bytes"
        image += bytes_of(cell)
    return image


def dumped(what):
    """An image that the library makes."""
    return subprocess.run([DUMP, what], capture_output=True, check=True).stdout


class Formats(unittest.TestCase):
    """The pages as they stand."""

    def test_the_default_image_of_region_23_is_the_librarys(self):
        image = image_of(tables("region23.md")["Default image"])
        self.assertEqual(len(image), 359)
        self.assertEqual(image.ljust(1024, b"\0"), dumped("default"))

    def test_the_blank_image_of_region_22_is_the_librarys(self):
        self.assertEqual(image_of(tables("region22.md")["Blank image"]), dumped("blank"))

    def test_fields_follow_each_other_up_to_the_size(self):
        for page, sizes in SIZES.items():
            found = tables(page)
            for title, size in sizes.items():
                with self.subTest(page=page, title=title):
                    end = 0
                    for offset, width, *_ in found[title]:
                        self.assertEqual(int(offset), end)
                        end += int(width)
                    self.assertEqual(end, size)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])

#!/usr/bin/python3
"""Images of configuration regions, good and bad, and what the library must make of each.

    corpus.py --write           regenerates the folder `corpus` beside this file: NAME.bin and NAME.txt for every image
    corpus.py --check DUMP      compares the folder with this file, and what the program region_dump says with the expected texts

What is expected is worked out here, from the rules of docs/formats, and not by the library.
"""

import pathlib
import subprocess
import sys

FOLDER = pathlib.Path(__file__).resolve().parent / "corpus"

REGION23_BYTES = 1024
REGION22_BYTES = 512
END = 0xFF
KNOWN = {0xA0, 0xA1, 0xA2, END}
START = b"RG23\x01\0\0\0"


def record(kind, words, data=b""):
    """A record of region 23 with that many data words."""
    return bytes([kind, words, 0, 0]) + data.ljust(4 * words, b"\0")


def image(*records, start=START, size=REGION23_BYTES, fill=b"\0"):
    """An image of region 23, filled up to its size."""
    return (start + b"".join(records)).ljust(size, fill)[:size]


A0 = bytes.fromhex("A0020101 0EFC0000 00000000")
A1 = record(0xA1, 80)
A2 = bytes.fromhex("A2022000 01000100 FF000000")
DEFAULT = image(A0, A1, A2, b"\xff\0\0")


def region23_images():
    """Every image of region 23 under its name."""
    empty = record(0x01, 0)
    return {
        "default": DEFAULT,
        "end-marker-first": image(record(END, 0), record(0xA2, 0), record(0xA1, 0), record(0xA0, 0)),
        "link-kept-down": image(A0, A1, bytes.fromhex("A2022000 01000000 FF000000"), b"\xff\0\0"),
        "vlan-1002": image(bytes.fromhex("A0020101 0EFC0000 EA030000"), A1, A2, b"\xff\0\0"),
        "fourth-header-at-the-end": image(record(0xA0, 100), record(0xA1, 100), record(0xA2, 50), record(0xA0, 255)),
        "all-zero": bytes(REGION23_BYTES),
        "all-ones": b"\xff" * REGION23_BYTES,
        "other-signature": image(A0, A1, A2, start=b"RG22\x01\0\0\0"),
        "other-version": image(A0, A1, A2, start=b"RG23\x02\0\0\0"),
        "other-version-in-the-high-byte": image(A0, A1, A2, start=b"RG23\x01\0\0\x01"),
        "third-type-unknown": image(A0, A1, b"\xa3" + A2[1:], b"\xff\0\0"),
        "three-records": image(A0, A1, A2),
        "no-records": image(),
        "records-without-data": image(*[empty] * 254),
        "wanted-record-in-the-last-word": image(*[empty] * 253, record(0xA1, 80)),
        "last-record-of-255-words": image(*[empty] * 253, record(0x01, 255)),
        "record-straddles-the-end": image(record(0xA0, 100), record(0xA1, 100), record(0xA2, 48), record(0xA3, 20)),
        "bound-at-1023": image(record(0xA0, 253), size=REGION23_BYTES),
        "bound-at-1024": image(record(0xA0, 254), size=REGION23_BYTES),
        "longest-records": image(record(0xA0, 255), record(0xA1, 255), record(0xA2, 255)),
        "short-by-four": DEFAULT[:1020],
        "only-the-start": DEFAULT[:8],
        "half-a-header": DEFAULT[:10],
        "half-a-signature": DEFAULT[:2],
        "empty": b"",
    }


def region22_images():
    """Every image of region 22 under its name."""
    blank = b"RG22\x01".ljust(REGION22_BYTES, b"\0")
    return {
        "blank": blank,
        "full": blank[:8] + bytes(range(252)) * 2,
        "other-signature": b"RG23" + blank[4:],
        "all-zero": bytes(REGION22_BYTES),
        "short-by-four": blank[:508],
        "long-by-four": blank + bytes(4),
    }


def is_valid(data):
    """Whether the library delivers the image as it was read."""
    if len(data) != REGION23_BYTES or data[:8] != START:
        return False
    position, bound = 8, 8
    for number in range(4):
        header = data[position:position + 4]
        if len(header) < 4 or header[0] not in KNOWN:
            return False
        bound += 4 * header[1]
        position += 4 + 4 * header[1]
        if number < 3 and bound > REGION23_BYTES - 1:
            return False
    return True


def search(data, wanted):
    """What becomes of the search for a type."""
    exhausted = "none, length exhausted (252)"
    if len(data) >= 4 and data[:4] != START[:4]:
        return "none, signature (255)"
    if len(data) < 8:
        return exhausted
    if data[4:8] != START[4:]:
        return "none, version (254)"
    position, bound = 8, 8
    while position + 4 <= len(data):
        kind, words = data[position], data[position + 1]
        if kind == END:
            return "none, end marker (253)"
        if kind == wanted:
            return f"found at {position}"
        bound += 4 * words
        position += 4 + 4 * words
        if len(data) <= bound:
            break
    return exhausted


def expected23(data):
    """What region_dump must say of an image of region 23."""
    lines = ["image: " + ("valid" if is_valid(data) else "replaced by the default image")]
    lines += [f"{wanted:02X}: {search(data, wanted)}" for wanted in (0xA0, 0xA1, 0xA2, 0xA3)]
    return "".join(f"{line}\n" for line in lines)


def expected22(data):
    """What region_dump must say of an image of region 22."""
    return "image: " + ("valid" if len(data) == REGION22_BYTES and data[:4] == b"RG22" else "none") + "\n"


def corpus():
    """Every file of the corpus: its path in the folder, and its content."""
    files = {}
    for region, images, expected in (("23", region23_images(), expected23), ("22", region22_images(), expected22)):
        for name, data in images.items():
            text = expected(data)
            path = f"region{region}/{'good' if text.startswith('image: valid') else 'bad'}/{name}"
            files[f"{path}.bin"] = data
            files[f"{path}.txt"] = text.encode()
    return files


def write():
    """Makes the folder what this file says."""
    files = corpus()
    for path in FOLDER.rglob("*.*"):
        if path.relative_to(FOLDER).as_posix() not in files:
            path.unlink()
    for name, content in files.items():
        path = FOLDER / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(content)
    print(f"{len(files)} files in {FOLDER}")


def check(dump):
    """Complaints about the folder and about the library."""
    files = corpus()
    present = {path.relative_to(FOLDER).as_posix(): path.read_bytes() for path in FOLDER.rglob("*.*")}
    complaints = [f"{name}: not what corpus.py makes of it; run ./dev corpus"
                  for name in sorted(files.keys() | present.keys()) if files.get(name) != present.get(name)]
    for name in sorted(present):
        if not name.endswith(".bin"):
            continue
        said = subprocess.run([dump, name[6:8], FOLDER / name], capture_output=True, check=True).stdout
        expected = present.get(name[:-4] + ".txt")
        if said != expected:
            complaints.append(f"{name}: the library says\n{said.decode()}expected\n{(expected or b'nothing').decode()}")
    return complaints


def main():
    """Runs what the arguments ask for."""
    if sys.argv[1:] == ["--write"]:
        write()
        return 0
    if len(sys.argv) == 3 and sys.argv[1] == "--check":
        complaints = check(sys.argv[2])
        print("".join(f"{complaint}\n" for complaint in complaints), end="")
        return 1 if complaints else 0
    print(__doc__, file=sys.stderr)
    return 2


if __name__ == "__main__":
    sys.exit(main())

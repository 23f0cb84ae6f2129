"""Images of configuration regions for scenarios and files."""

import struct

REGION14_BYTES = 1000
REGION22_BYTES = 512
REGION23_BYTES = 1024

NAMES = bytes.fromhex("2000001122334455" "1000001122334455")


def scenario_region(number, image):
    """An image as a scenario gives it."""
    return {"region": number, "image": image.hex(" ")}


def record(kind, data, extra=b"\0\0"):
    """A record of region 23."""
    return bytes([kind, len(data) // 4]) + extra + data


def fcoe_record(fc_map=b"\x0e\xfc\x00", vlan=None):
    """The FCoE parameters."""
    data = fc_map + b"\0" + struct.pack("<I", 0 if vlan is None else vlan)
    return record(0xA0, data, bytes([1, 0 if vlan is None else 1]))


def connect_record(entries=()):
    """The FCF connect list: of each entry the VLAN id and the flags."""
    stored = b"".join(struct.pack("<HH", flags, vlan) + NAMES for vlan, flags in entries)
    return record(0xA1, stored.ljust(320, b"\0"))


def link_record(down=False):
    """The persistent link-down setting."""
    return record(0xA2, bytes([1, 0, 0 if down else 1, 0, 0xFF, 0, 0, 0]), b"\x20\0")


def chain(*records, signature=b"RG23", version=1):
    """An image of region 23 with these records and an end marker."""
    return (signature + struct.pack("<I", version) + b"".join(records) + b"\xff\0\0\0").ljust(REGION23_BYTES, b"\0")


def region23(vlan=None, connect=(), down=False):
    """An image of region 23 with the records that it should have."""
    return chain(fcoe_record(vlan=vlan), connect_record(connect), link_record(down))


def of_region23(**fields):
    """Such an image as a scenario gives it."""
    return scenario_region(23, region23(**fields))


def region22(*entries, head=b"\1\0\0\0"):
    """An image of region 22: entries of 16 bytes."""
    return (b"RG22" + head + b"".join(entries)).ljust(REGION22_BYTES, b"\0")

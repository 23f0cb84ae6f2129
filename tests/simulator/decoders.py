"""What simulated units say, as the decoders of sg3-utils understand it."""

import os
import subprocess
import sys
import tempfile

dump = sys.argv[1]


def ask(lun, cdb, room):
    """Data and sense, in hexadecimal with blanks, of one command to a unit behind the first port of the built-in scenario."""
    environment = {name: value for name, value in os.environ.items() if not name.startswith("VMKMGMT_SIM_")}
    lines = subprocess.run([dump, lun, cdb, str(room)], env=environment, capture_output=True, text=True, check=True).stdout
    fields = dict(line.split(":", 1) for line in lines.splitlines())
    return fields["data"].strip(), fields["sense"].strip()


def decode(tool, *arguments, data):
    """What a decoder prints; its complaints count as failures."""
    with tempfile.NamedTemporaryFile("w", suffix=".hex") as file:
        file.write(data + "\n")
        file.flush()
        done = subprocess.run([tool, *(argument.replace("FILE", file.name) for argument in arguments)],
                              capture_output=True, text=True, check=False)
    assert done.returncode == 0, f"{tool} of {data}: exit code {done.returncode}\n{done.stdout}{done.stderr}"
    return done.stdout


def expect(output, *wanted):
    """Every text stands in the output."""
    for text in wanted:
        assert text in output, f"no '{text}' in\n{output}"


def vital_product_data(lun, page):
    """A page as sg_vpd prints it."""
    data, sense = ask(lun, f"1201{page}00ff00", 255)
    assert not sense
    return decode("sg_vpd", "--long", "--inhex=FILE", f"--page=0x{page}", data=data)


# Standard data and pages.
standard, _ = ask("0000", "120000006000", 96)
expect(decode("sg_inq", "--inhex=FILE", data=standard), "Vendor identification: KESTAR", "Product identification: VIRTUAL DISK",
       "Product revision level: 0001", "[SPC-3]", "Peripheral device type: disk")
absent, _ = ask("0063", "120000006000", 96)
expect(decode("sg_inq", "--inhex=FILE", data=absent), "PQual=3")

expect(vital_product_data("0000", "00"), "Supported VPD pages", "Unit serial number", "Device identification")
expect(vital_product_data("0001", "80"), "Unit serial number: 505a41000c001000-1")
for lun in ("0000", "0001"):
    naa = vital_product_data(lun, "83")
    expect(naa, "Addressed logical unit:", "designator type: NAA", "NAA 6, IEEE Company_id: 0x5a41", "Relative target port: 0x1")
expect(vital_product_data("0002", "83"), "designator type: T10 vendor identification", "vendor id: KESTAR", "505a41000c001000-2")
expect(vital_product_data("0003", "83"), "NAA 6, IEEE Company_id: 0x5a41", "Relative target port: 0x1")
first_descriptor = ask("0003", "12018300ff00", 255)[0].split()[4:8]  # the decoder sorts by association, the page does not
assert first_descriptor == ["01", "14", "00", "04"], first_descriptor

# LUNs.
luns, _ = ask("0000", "a00000000000000001000000", 256)
entries = luns.split()[8:]
assert len(entries) == 5 * 8
for number in range(5):
    lun = "".join(entries[8 * number:8 * number + 8])
    tested = subprocess.run(["sg_luns", f"--test={lun}"], capture_output=True, text=True, check=True).stdout
    expect(tested, f"Peripheral device addressing: lun={number}")

# Sense.
SENSES = [
    ("0063", "000000000000", "Illegal Request", "Logical unit not supported"),
    ("0000", "28000000200000000100", "Illegal Request", "Logical block address out of range", "Info fld=0x2000"),
    ("0000", "a30000000000", "Illegal Request", "Invalid command operation code", "byte 0"),
    ("0000", "1201ff00ff00", "Illegal Request", "Invalid field in cdb", "byte 2"),
    ("0004", "2a000000000000000100", "Data Protect", "Write protected"),
]
for lun, cdb, *wanted in SENSES:
    data, sense = ask(lun, cdb, 512)
    assert not data and len(sense.split()) == 18
    decoded = subprocess.run(["sg_decode_sense", *sense.split()], capture_output=True, text=True, check=True).stdout
    for text in ("Fixed format, current", *wanted):
        assert text.lower() in decoded.lower(), f"{cdb}: no '{text}' in\n{decoded}"

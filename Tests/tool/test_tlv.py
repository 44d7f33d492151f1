import re
from pathlib import Path

import pytest
from conftest import on_terminal, table

NAMES = Path(__file__).parents[2] / "Tools/rzcrypto/tlv_names.txt"
SAMPLE = bytes.fromhex("7F4E 0B 5F29 01 00 5F20 04 4445 31FF 5A 81 12" + "41" * 18 + "30 80 0500 0000")


def test_every_form_of_input_is_read(tool, tmp_path):
    (tmp_path / "sample").write_bytes(SAMPLE)
    spaced = "\n".join(f"\t{SAMPLE.hex()[i:i + 3]} \r" for i in range(0, 2 * len(SAMPLE), 3))
    first = tool("tlv", "show", "sample")
    others = [tool("tlv", "show", "-", stdin=form) for form in (SAMPLE, spaced.encode(), SAMPLE.hex().upper().encode())]
    assert first.code == 0 and "7F4E 11" in first.text and all(other.text == first.text for other in others)


def test_a_certificate_has_the_offsets_and_lengths_that_openssl_prints(tool, sh, tmp_path):
    sh("openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-keyout", "key.pem", "-out", "cert.pem", "-subj",
       "/C=DE/O=Test/CN=Holder", "-addext", "subjectAltName=DNS:a.example")
    expected = [tuple(map(int, match)) for match in re.findall(
        r"^ *(\d+):d=(\d+) +hl=(\d+) l= *(\d+)", sh("openssl", "asn1parse", "-in", "cert.pem").decode(), re.M)]
    found = []

    def collect(objects, depth):
        for each in objects:
            header = len(each["tag"] + each["lengthOctets"]) // 2
            found.append((each["offset"], depth, header, each["length"]))
            collect(each.get("objects", []), depth + 1)

    collect(tool("tlv", "show", "--json", "cert.pem").json["objects"], 0)
    assert len(expected) > 30 and found == expected
    assert tool("tlv", "show", stdin=(tmp_path / "cert.pem").read_bytes() * 2).code == 3, "two PEM blocks"


@pytest.mark.parametrize("verb, path, value, before, after", table("tlv_edits.txt", " | "))
def test_changes_leave_every_other_byte_as_it_is(tool, verb, path, value, before, after):
    before, value, after = (re.sub(r"(\w\w)\*(\d+)", lambda found: found[1] * int(found[2]), each) for each in (before, value, after))
    result = tool("tlv", verb, path, *([value] if verb != "remove" else []), "--hex", stdin=before.encode())
    assert (result.code, result.text) == (0, bytes.fromhex(after).hex() + "\n")


@pytest.mark.parametrize("octets, offset, message", table("tlv_faults.txt", " | "))
def test_a_fault_is_told_with_its_offset_after_what_is_sound(tool, octets, offset, message):
    offset = int(offset)
    octets = octets[:-4] * 100_000 if octets.endswith(" ...") else octets
    shown = tool("tlv", "show", stdin=octets.encode())
    assert shown.code == 3 and shown.err.startswith(f"rzcrypto: standard input: offset {offset}: ")
    assert message in shown.err
    offsets = [int(line.split()[0]) for line in shown.text.splitlines()]
    assert offsets == sorted(offsets) and all(each < offset for each in offsets)
    assert bool(offsets) == (offset > 0)
    facts = tool("tlv", "show", "--json", stdin=octets.encode())
    assert facts.code == 3 and facts.json["error"]["offset"] == offset and message in facts.json["error"]["message"]
    for change in (["get", "5A"], ["set", "5A", "00"], ["append", "5A", "00"], ["remove", "5A"]):
        result = tool("tlv", *change, stdin=octets.encode())
        assert (result.code, result.out) == (3, b"") and f"offset {offset}: " in result.err


def test_every_cut_of_a_sample_is_a_fault_but_those_between_objects(tool):
    whole = {0, 14, 35, len(SAMPLE)}
    for end in range(len(SAMPLE)):
        assert (tool("tlv", "show", "--binary", stdin=SAMPLE[:end]).code == 0) == (end in whole), end


def test_a_hundred_levels_are_read_and_written(tool):
    octets = b""
    for _ in range(100):
        header = [0x30, len(octets)] if len(octets) < 128 else [0x30, 0x81, len(octets)]
        octets = bytes(header) + octets
    path = "/".join(["30"] * 100)
    assert tool("tlv", "show", "--json", "--binary", stdin=octets).code == 0
    assert tool("tlv", "get", path, "--binary", stdin=octets).out == b""
    for change in (["append", path + "/5A", "41"], ["set", path, "3000"]):
        deeper = tool("tlv", *change, "--binary", stdin=octets)
        assert deeper.code == 3 and "the result would be no BER-TLV" in deeper.err


def test_output_is_binary_but_hex_on_a_terminal(tool, tmp_path):
    (tmp_path / "sample").write_bytes(SAMPLE)
    assert tool("tlv", "get", "7F4E/5F20", "sample").out == b"DE1\xff"
    assert on_terminal("stdout", ["tlv", "get", "7F4E/5F20", "sample"], tmp_path)[:2] == (0, b"444531ff\r\n")
    assert tool("tlv", "set", "5A", "@missing", "sample").code == 4


def test_the_built_in_names_are_whole_tags_named_once(tool):
    parents, seen = ["any"], set()
    for line in NAMES.read_text().splitlines():
        if line.startswith("in "):
            parents = line.split()[1:]
        elif line and not line.startswith("#"):
            tag = line.split()[0]
            assert re.fullmatch(r"([0-9A-F]{2})+", tag), line
            for parent in parents:
                assert (parent, tag) not in seen, line
                seen.add((parent, tag))
    tags = sorted({tag for _, tag in seen})
    shown = tool("tlv", "show", "--json", stdin="".join(tag + "00" for tag in tags).encode())
    assert shown.code == 0 and [each["tag"] for each in shown.json["objects"]] == tags



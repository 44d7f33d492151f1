import re
from pathlib import Path

import pytest
from conftest import on_terminal, table

NAMES = Path(__file__).parents[2] / "Tools/rzcrypto/tlv_names.txt"


SAMPLE = bytes.fromhex("7F4E 0B 5F29 01 00 5F20 04 4445 31FF 5A 81 12" + "41" * 18 + "30 80 0500 0000")
SAMPLE_TEXT = """\
   0  7F4E 11  Certificate content template
   3    5F29 1  Certificate profile identifier  00  |.|
   7    5F20 4  Certificate holder reference  44 45 31 ff  |DE1.|
  14  5A 18  Primary account number (PAN)
        41 41 41 41 41 41 41 41 41 41 41 41 41 41 41 41  |AAAAAAAAAAAAAAAA|
        41 41                                            |AA|
  35  30 2 indefinite  SEQUENCE
  37    05 0  NULL
"""


def test_the_tree_as_text_in_every_form_of_input(tool, tmp_path):
    (tmp_path / "sample").write_bytes(SAMPLE)
    spaced = "\n".join(f"\t{SAMPLE.hex()[i:i + 3]} \r" for i in range(0, 2 * len(SAMPLE), 3))
    for result in (tool("tlv", "show", "sample"), tool("tlv", "show", stdin=SAMPLE),
                   tool("tlv", "show", "-", stdin=spaced.encode()),
                   tool("tlv", "show", stdin=SAMPLE.hex().upper().encode())):
        assert (result.code, result.text, result.err) == (0, SAMPLE_TEXT, "")
    first = tool("tlv", "show", "--json", "sample").json["objects"][0]
    assert (first["path"], first["class"], first["lengthOctets"]) == ("7F4E", "application", "0b")
    assert first["objects"][1] == {"path": "7F4E/5F20", "offset": 7, "tag": "5F20", "constructed": False, "class": "application",
                                   "length": 4, "lengthOctets": "04", "indefinite": False, "value": "444531ff", "text": None,
                                   "name": "Certificate holder reference"}
    brief = tool("tlv", "show", "--brief", "sample").text.splitlines()
    assert brief[5] == "        ... 2 more bytes" and len(brief) == 8
    assert tool("tlv", "show").text == "", "no objects at all"
    # A primitive object of 32 bytes that are hex digits reads as hex, unless said otherwise.
    digits = b"0 " + b"0" * 32
    assert tool("tlv", "show", stdin=digits).code == 3
    assert tool("tlv", "get", "30[0]", "--binary", stdin=digits).code == 3  # "0" is a constructed tag
    digits = b"A " + b"1" * 32
    assert tool("tlv", "get", "41", "--binary", stdin=digits).out == b"1" * 32
    assert tool("tlv", "show", "missing").code == 4


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


def test_paths(tool):
    data = bytes.fromhex("61 06 4F0101 500141 61 06 4F0102 4F0103 5A00")

    def get(path, *options):
        return tool("tlv", "get", path, *options, "--hex", "--binary", stdin=data)

    assert get("61/4F").text == "01\n" and get("61[0]/4f[0]").text == "01\n"
    assert get("61[1]/4F[1]").text == "03\n" and get("61[1]").text == "4f01024f0103\n"
    assert get("61[*]/4F[*]").text == "01\n02\n03\n" and get("61[*]/50").text == "41\n"
    assert get("5A").text == "\n"
    for path, message in (("61[2]", "no 61[2] at the top; there is 61 61 5A"),
                          ("61/4F[1]", "no 4F[1] in 61; there is 4F 50"), ("5A/50", "no 50 in 5A; there is nothing")):
        missing = get(path)
        assert (missing.code, missing.text) == (1, "") and message in missing.err
    facts = get("61[*]/4F", "--json").json
    assert facts["path"] == "61[*]/4F"
    assert [(each["path"], each["offset"], each["value"]) for each in facts["objects"]] == \
        [("61/4F", 2, "01"), ("61[1]/4F", 10, "02")]
    for path in ("", "/", "61/", "/61", "6", "6G", "5F", "5A5A", "61[", "61[]", "61[-1]", "61[x]", "61[0]x", "[0]"):
        for verb in (["get", path], ["set", path, "00"], ["append", path, "00"], ["remove", path]):
            assert tool("tlv", *verb, stdin=data).code == 2, verb
    assert tool("tlv", "append", "5A[0]", "00", stdin=data).code == 2, "a new object has no number"


def test_changing_several_and_inside_primitive_objects(tool, tmp_path):
    data = "53 09 7003414243 7100 FE00"
    changed = tool("tlv", "set", "53/70", "4445", "--hex", stdin=data.encode())
    assert changed.text == "5308" + "70024445" + "7100" + "fe00" + "\n"
    (tmp_path / "value").write_text("44 45\n")
    assert tool("tlv", "set", "53/70", "@value", "--hex", stdin=data.encode()).text == changed.text
    assert tool("tlv", "append", "53/72", "", "--hex", stdin=data.encode()).text == "530b7003414243" "7100fe007200\n"
    records = "7003 5A0141 7000 7003 5A0142"
    removed = tool("tlv", "remove", "70[*]/5A", "--json", stdin=records.encode()).json
    assert removed == {"path": "70[*]/5A", "changed": 2, "size": 6, "data": "700070007000"}
    assert tool("tlv", "append", "70[*]/80", "07", "--hex", stdin=records.encode()).text == \
        "70065a0141800107" "7003800107" "70065a0142800107\n"
    refused = tool("tlv", "set", "70", "5A05", stdin=records.encode())
    assert (refused.code, refused.out) == (3, b"") and "the result would be no BER-TLV: offset 2" in refused.err


def test_what_a_primitive_object_holds_is_read_on_demand(tool):
    # A card holder unique identifier: the tags 30, 34 and 35 look constructed, but hold numbers and digits.
    chuid = "53 39 3019 D4E739DA739CED39CE739D836858210842108421C84210C3EB 3410" + "0102030405060708" * 2 + \
        "3508 3230333031323331 FE00"
    flat = tool("tlv", "show", "--into", "53", "--json", stdin=chuid.encode())
    assert flat.code == 0, flat.err
    assert [(each["name"], each["length"]) for each in flat.json["objects"][0]["objects"]] == \
        [("FASC-N", 25), ("GUID", 16), ("Expiration date", 8), ("Error detection code", 0)]
    assert "objects" not in tool("tlv", "show", "--json", stdin=chuid.encode()).json["objects"][0]
    assert tool("tlv", "get", "53/35", stdin=chuid.encode()).out == b"20301231"
    assert tool("tlv", "show", "--into", "53", "--into", "35", stdin=chuid.encode()).code == 3
    certificate = b"53 0C 70 08 3006 3004 0C024142 FE00"
    shown = tool("tlv", "show", "--into", "53", "--into", "70", stdin=certificate)
    assert [line.split()[1] for line in shown.text.splitlines()] == ["53", "70", "30", "30", "0C", "FE"]
    assert tool("tlv", "get", "53/70/30/30/0C", stdin=certificate).out == b"AB"
    assert tool("tlv", "show", "--into", "53", stdin=b"5303414243").code == 3
    assert tool("tlv", "show", "--into", "53", stdin=b"5304 3080 0000").code == 3


def test_padding_is_kept(tool):
    for octets, padding in (("5A0141", "FFFFFF"), ("5A0100", "0000000000"), ("", "FF")):
        data = (octets + padding).encode()
        shown = tool("tlv", "show", "--padded", stdin=data)
        assert shown.code == 0 and shown.text.endswith(f"{len(padding) // 2} bytes of padding {padding[:2]}\n")
        assert tool("tlv", "show", "--padded", "--json", stdin=data).json["padding"] == len(padding) // 2
        longer = tool("tlv", "append", "80", "07", "--padded", "--hex", stdin=data)
        assert longer.text.upper() == octets + "800107" + padding + "\n"


def test_output_is_binary_but_hex_on_a_terminal(tool, tmp_path):
    (tmp_path / "sample").write_bytes(SAMPLE)
    assert tool("tlv", "get", "7F4E/5F20", "sample").out == b"DE1\xff"
    assert on_terminal("stdout", ["tlv", "get", "7F4E/5F20", "sample"], tmp_path)[:2] == (0, b"444531ff\r\n")
    assert tool("tlv", "set", "5A", "@missing", "sample").code == 4


def test_names_are_found_by_place_and_can_be_added(tool, tmp_path):
    data = b"62 03 820101 5A0141 82 00 DF01 00"

    def names(*options):
        shown = tool("tlv", "show", "--json", *options, stdin=data)
        assert shown.code == 0, shown.err
        first, *others = shown.json["objects"]
        return [each["name"] for each in [first, *first["objects"], *others]]

    assert names() == ["File control parameters (FCP)", "File descriptor", "Primary account number (PAN)", None, None]
    (tmp_path / "names").write_text("# ours\r\nDF01  Our own object\r\n in 62 63\n82 Ours\nin any\n 5a PAN\n")
    assert names("--names", "names") == ["File control parameters (FCP)", "Ours", "PAN", None, "Our own object"]
    for text, line in (("5A\n", 1), ("\n5F Cut\n", 2), ("in\n", 1), ("in 5\n", 1), ("5A PAN\nname\n", 2)):
        (tmp_path / "names").write_text(text)
        refused = tool("tlv", "show", "--names", "names", stdin=data)
        assert refused.code == 3 and f"names: line {line}: " in refused.err


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


@pytest.mark.parametrize("arguments, data", [
    (["append", "70/00", ""], "70800000"), (["set", "70/00", ""], "70800001410000"),
    (["set", "70", "0000"], "708000015a0000"), (["append", "00", "", "--padded"], "5a014100")])
def test_an_edit_that_would_read_as_something_else_is_refused(tool, arguments, data):
    refused = tool("tlv", *arguments, "--hex", stdin=data.encode())
    assert (refused.code, refused.out) == (3, b"")


def test_messages_name_the_file_at_fault_and_hex_with_a_slip_is_no_binary(tool, tmp_path):
    (tmp_path / "ok").write_text("5A0141")
    assert tool("tlv", "set", "5A", "@gone", "ok").err == "rzcrypto: gone: No such file or directory\n"
    for slip in b"5A 0", b"5A:01:41":
        assert "hex with a digit too few" in tool("tlv", "show", stdin=slip).err
    assert tool("tlv", "show", stdin=b" \n").code == 0

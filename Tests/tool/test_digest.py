import os
import subprocess

import pytest
from conftest import TOOL

SUMS = {"SHA1": "sha1sum", "SHA224": "sha224sum", "SHA256": "sha256sum", "SHA384": "sha384sum",
        "SHA512": "sha512sum", "MD5": "md5sum"}
NAMES = ["plain", "with blank", "back\\slash", "line\nend", "(odd) = name", "-dash", "ümlaut"]


@pytest.fixture
def files(tmp_path):
    for i, name in enumerate(NAMES):
        (tmp_path / name).write_bytes(bytes(range(256)) * (i * i * 600))
    return ["./" + name if name.startswith("-") else name for name in NAMES]


@pytest.mark.parametrize("algorithm", SUMS)
def test_lines_are_those_of_coreutils_and_go_back_and_forth(tool, sh, files, tmp_path, algorithm):
    ours = tool("digest", "-a", algorithm, *files)
    assert (ours.code, ours.err) == (0, "")
    assert ours.out == sh(SUMS[algorithm], *files)
    tagged = tool("digest", "--tag", "-a", algorithm, *files)
    assert tagged.out == sh(SUMS[algorithm], "--tag", *files)
    for lines in ours.out, tagged.out:
        sh(SUMS[algorithm], "-c", "--strict", stdin=lines)
        assert tool("digest", "--check", "-", stdin=lines).code == 0
    (tmp_path / "plain").write_bytes(b"changed")
    changed = tool("digest", "--check", "-", stdin=ours.out)
    assert changed.code == 1
    assert "plain: FAILED\n" in changed.text and "with blank: OK\n" in changed.text
    assert "1 of 7 computed digests did NOT match" in changed.err


def test_lines_of_openssl_are_read(tool, sh, files):
    lines = b"".join(sh("openssl", "dgst", "-" + name, "plain", "(odd) = name") for name in ("sha1", "sha256", "md5"))
    lines += sh("openssl", "dgst", "-r", "-sha512", "with blank")
    checked = tool("digest", "--check", "-", stdin=lines)
    assert (checked.code, checked.err, checked.text.count(": OK\n")) == (0, "", 7)


def test_several_algorithms_name_themselves_and_every_other_input_is_done(tool, files):
    result = tool("digest", "-a", "SHA256", "-a", "sha1", "-a", "MD5", "-a", "MD4", "missing", "plain", ".")
    assert result.code == 5  # the largest of 5 (two algorithms) and 4 (two inputs)
    assert [line.split(" ")[0] for line in result.text.splitlines()] == ["SHA256", "MD5"]
    for message in ("sha1: Unsupported algorithm", "MD4: Unsupported algorithm", "missing: No such file or directory",
                    ".: Is a directory"):
        assert f"rzcrypto: {message}\n" in result.err
    assert tool("digest", "missing", "plain").code == 4
    result = tool("digest", "gone\x1b[1m\n", "plain", "--json")
    assert result.err == "rzcrypto: gone\\x1b[1m\\x0a: No such file or directory\n", "no name moves the cursor"
    assert [entry.get("error") for entry in result.json["digests"]] == ["No such file or directory", None]


def test_standard_input_and_json(tool):
    facts = tool("digest", "-a", "MD5", "-a", "SHA1", "--json", "-", stdin=b"abc").json["digests"]
    assert facts == [
        {"file": "-", "algorithm": "MD5", "size": 3, "digest": "900150983cd24fb0d6963f7d28e17f72"},
        {"file": "-", "algorithm": "SHA1", "size": 3, "digest": "a9993e364706816aba3e25717850c26c9cd0d89d"}]


def test_checking_says_what_is_wrong_with_the_list(tool, files):
    good = tool("digest", "plain").out
    mixed = tool("digest", "--check", "-", stdin=b"# comment\n\nrubbish\n" + good + b"00  short\n")
    assert mixed.code == 0 and "2 line(s) are no checksum lines" in mixed.err
    for text in b"", b"rubbish\n", b"SHA256 (plain) = 00\n", b"\\" + good.replace(b"plain", b"pl\\ain"):
        assert tool("digest", "--check", "-", stdin=text).code == 3
    missing = tool("digest", "--check", "-", "--json", stdin=good.replace(b"plain", b"gone"))
    assert missing.code == 4
    assert missing.json["checks"] == [{"file": "gone", "algorithm": "SHA256", "result": "FAILED open or read"}]
    assert tool("digest", "--check", "nowhere").code == 4
    assert tool("digest", "-a", "SHA1", "--check", "-", stdin=good).code == 3, "the lines are not SHA1"


def test_an_empty_name_is_no_input_and_a_zero_octet_no_name(tool, files):
    assert tool("digest", "", stdin=b"abc").code == 4
    assert tool("digest", "--check", "", stdin=tool("digest", "plain").out).code == 4
    good = tool("digest", "plain").out
    assert tool("digest", "--check", "-", stdin=good.replace(b"plain", b"plain\0evil")).code == 3


def test_a_failed_write_is_said():
    reader, closed = os.pipe()
    os.close(reader)
    for target, error in (os.open("/dev/full", os.O_WRONLY), b"No space left on device"), (closed, b"Broken pipe"):
        process = subprocess.run([TOOL, "algorithms"], stdout=target, stderr=subprocess.PIPE)
        os.close(target)
        assert (process.returncode, process.stderr) == (4, b"rzcrypto: standard output: " + error + b"\n")

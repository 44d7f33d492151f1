import pytest

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

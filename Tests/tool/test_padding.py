import pytest

MESSAGE = b"\x11a session key\xff"
K = 128


@pytest.fixture
def raw(tool, sh):
    """The raw RSA operation, as a card does it, and openssl's own paddings around it."""
    sh("openssl", "genrsa", "-out", "key.pem", str(8 * K))

    def run(operation, *options, stdin):
        pairs = [word for option in options or ["rsa_padding_mode:none"] for word in ("-pkeyopt", option)]
        return sh("openssl", "pkeyutl", operation, "-inkey", "key.pem", *pairs, stdin=stdin)

    return run


def arguments(kind, operation, *more):
    return ["--type", kind, "--operation", operation, "--key-length", K, *more]


@pytest.mark.parametrize("scheme, theirs", [
    (["PKCS1", "encrypt"], ["rsa_padding_mode:pkcs1"]),
    (["OAEP", "encrypt"], ["rsa_padding_mode:oaep"]),
    (["OAEP", "encrypt", "--label", "01 02fF"], ["rsa_padding_mode:oaep", "rsa_oaep_label:0102ff"])])
def test_encryption_blocks_go_both_ways(tool, raw, scheme, theirs):
    made = tool("padding", "encode", *arguments(*scheme), stdin=MESSAGE)
    assert (made.code, made.err, len(made.out)) == (0, "", K)
    assert raw("-decrypt", *theirs, stdin=raw("-encrypt", stdin=made.out)) == MESSAGE
    block = raw("-decrypt", stdin=raw("-encrypt", *theirs, stdin=MESSAGE))
    for form in block, block.hex().encode() + b"\n":
        opened = tool("padding", "decode", *arguments(*scheme), stdin=form)
        assert (opened.code, opened.out, opened.err) == (0, MESSAGE, "")
    facts = tool("padding", "decode", *arguments(*scheme), "--json", stdin=block).json
    assert facts["accepted"] is True and facts["message"] == MESSAGE.hex() and facts["keyLength"] == K


def test_signature_blocks_are_those_of_openssl(tool, raw):
    info = bytes.fromhex("3021300906052b0e03021a05000414") + bytes(range(20))
    block = tool("padding", "encode", *arguments("PKCS1", "sign"), stdin=info).out
    assert block == raw("-encrypt", stdin=raw("-sign", "rsa_padding_mode:pkcs1", stdin=info))
    scheme = arguments("X_931", "sign", "--hash-id", "33")
    block = tool("padding", "encode", *scheme, stdin=info[-20:]).out
    assert block == b"\x6b" + 104 * b"\xbb" + b"\xba" + info[-20:] + b"\x33\xcc"
    recovered = raw("-verifyrecover", "digest:sha1", "rsa_padding_mode:x931", stdin=raw("-decrypt", stdin=block))
    assert recovered == info[-20:]
    facts = tool("padding", "encode", *scheme, "--json", stdin=info[-20:]).json
    assert facts["block"] == block.hex() and facts["messageLength"] == 20
    assert tool("padding", "decode", *arguments("X_931", "sign"), "--hex", stdin=block).text == info[-20:].hex() + "\n"
    other = tool("padding", "decode", *arguments("X_931", "sign", "--hash-id", "34"), stdin=block)
    assert (other.code, other.out) == (0, info[-20:]) and "identifier is 33" in other.err


@pytest.mark.parametrize("kind, operation, block, reason", [
    ("PKCS1", "encrypt", b"\0\1" + 125 * b"\xff" + b"\0", "header"),
    ("PKCS1", "encrypt", b"\0\2" + 7 * b"\xff" + b"\0" + 118 * b"x", "padding"),
    ("PKCS1", "encrypt", b"\0\2" + 125 * b"\xff" + b"\0", "padding"),
    ("PKCS1", "encrypt", b"\0\2" + 10 * b"\xff" + b"\0x", "length: the block has 14 bytes, not 128"),
    ("PKCS1", "encrypt", b"", "length"),
    ("OAEP", "encrypt", 128 * b"\0", "label"),
    ("OAEP", "encrypt", 127 * b"\0", "length"),
    ("X_931", "sign", b"\0" + 127 * b"\xcc", "header"),
    ("X_931", "sign", b"\x6b" + 127 * b"\xbb", "trailer"),
    ("X_931", "sign", b"\x6b" + 9 * b"\xbb" + b"\xba" + 116 * b"h" + b"\xcc", "padding"),
    ("X_931", "sign", 129 * b"\x6b", "length")])
def test_a_refused_block_says_why(tool, kind, operation, block, reason):
    refused = tool("padding", "decode", *arguments(kind, operation), stdin=block)
    assert (refused.code, refused.out) == (1, b"")
    assert refused.err.startswith("rzcrypto: standard input: refused: ") and reason in refused.err
    answer = tool("padding", "decode", *arguments(kind, operation), "--json", stdin=block)
    assert answer.code == 1 and answer.json["accepted"] is False and reason in answer.json["reason"]


@pytest.mark.parametrize("kind, operation, longest, lost", [
    ("PKCS1", "encrypt", 117, [0]), ("PKCS1", "sign", 117, []), ("OAEP", "encrypt", 86, [86]),
    ("X_931", "sign", 116, [115, 116])])
def test_limits(tool, kind, operation, longest, lost):
    identifier = ["--hash-id", "33"] if kind == "X_931" else []
    for size in {0, 1, longest - 2, longest - 1, longest}:
        made = tool("padding", "encode", *arguments(kind, operation, *identifier), stdin=size * b"\xaa")
        assert (made.code, len(made.out)) == (0, K)
        assert ("warning" in made.err) == (size in lost)
        if operation == "encrypt":
            opened = tool("padding", "decode", *arguments(kind, operation), stdin=made.out)
            assert (opened.code, opened.out) == ((1, b"") if size in lost else (0, size * b"\xaa"))
    long = tool("padding", "encode", *arguments(kind, operation, *identifier), stdin=(longest + 1) * b"\xaa")
    assert (long.code, long.out) == (3, b"") and f"at most {longest}" in long.err


def test_files(tool, tmp_path):
    (tmp_path / "in").write_bytes(MESSAGE)
    encode = ["padding", "encode", *arguments("OAEP", "encrypt"), "-o", "out", "in"]
    done = tool(*encode)
    assert (done.code, done.out, done.err) == (0, b"", "")
    assert (tmp_path / "out").stat().st_mode & 0o777 == 0o600
    assert tool("padding", "decode", *arguments("OAEP", "encrypt"), "out").out == MESSAGE
    before = (tmp_path / "out").read_bytes()
    assert tool(*encode).code == 4 and (tmp_path / "out").read_bytes() == before
    assert tool(*encode, "--force").code == 0 and (tmp_path / "out").read_bytes() != before
    missing = tool("padding", "decode", *arguments("OAEP", "encrypt"), "-o", "new", "gone")
    assert missing.code == 4 and "gone: No such file" in missing.err and not (tmp_path / "new").exists()


def test_signature_blocks_of_pkcs1_are_not_decoded(tool):
    refused = tool("padding", "decode", *arguments("PKCS1", "sign"), stdin=K * b"\0")
    assert (refused.code, refused.out) == (5, b"") and "verify" in refused.err

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

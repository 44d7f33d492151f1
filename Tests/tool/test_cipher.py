import os
import random

import pytest

KEY = bytes(range(16))
IV = bytes(range(16, 32))
MACS = ["HMAC_SHA1", "HMAC_SHA224", "HMAC_SHA256", "HMAC_SHA384", "HMAC_SHA512", "CMAC"]


@pytest.fixture
def keys(tmp_path, sh):
    """A raw key, and an RSA key in every form that is taken."""
    (tmp_path / "raw.key").write_bytes(KEY)
    (tmp_path / "hex.key").write_text(KEY.hex() + "\n")
    sh("openssl", "genrsa", "-out", "private.pem", "1024")
    sh("openssl", "rsa", "-in", "private.pem", "-pubout", "-out", "public.pem")
    sh("openssl", "req", "-x509", "-key", "private.pem", "-subj", "/CN=x", "-out", "certificate.pem")
    return tmp_path


def openssl_mac(sh, name, data):
    kind = ["-cipher", "AES-128-CBC", "CMAC"] if name == "CMAC" else ["-digest", name.split("_")[1], "HMAC"]
    command = ["openssl", "mac", "-macopt", f"hexkey:{KEY.hex()}", *kind[:2], "-in", "data", kind[2]]
    return sh(*command).decode().strip().lower()


@pytest.mark.parametrize("name", MACS)
def test_macs_are_those_of_openssl(tool, sh, keys, name):
    for size in 0, 1, 16, 1000:
        data = random.Random(size).randbytes(size)
        (keys / "data").write_bytes(data)
        expected = openssl_mac(sh, name, data)
        done = tool("mac", "-a", name, "--key", "file:raw.key", "data", "-", stdin=data)
        assert (done.code, done.text, done.err) == (0, f"{expected}  data\n{expected}  -\n", "")
        assert tool("mac", "-a", name, "-k", "hex.key", "--binary", "data").out.hex() == expected
        assert tool("mac", "-a", name, "-k", "hex.key", "--verify", expected.upper(), "data").text == "data: OK\n"
        wrong = ("0" if expected[0] != "0" else "1") + expected[1:]
        for code in wrong, expected[:-2], "":
            checked = tool("mac", "-a", name, "-k", "raw.key", "--verify", code, "data")
            assert (checked.code, checked.text) == (1, "data: FAILED\n")


def test_keys_come_from_files_the_environment_descriptors_and_with_a_warning_from_the_command_line(tool, keys):
    def mac(source, **options):
        return tool("mac", "-a", "CMAC", "--json", "--key", source, **options)

    expected = mac("file:raw.key").json
    assert mac("env:MY_KEY", env={"MY_KEY": KEY.hex()}).json == expected
    reading, writing = os.pipe()
    os.write(writing, KEY)
    os.close(writing)
    assert mac(f"fd:{reading}", pass_fds=[reading]).json == expected
    os.close(reading)
    shown = mac("hex:" + KEY.hex())
    assert shown.json == expected and "warning" in shown.err and KEY.hex() not in shown.err

    # What looks like DER, hex or PEM is a key all the same.
    for key, source in [(b"0\x0e" + bytes(14), "file:k"), (KEY.hex()[:16].encode(), "raw:k"),
                        (b"-----BEGIN 12345", "raw:k")]:
        (keys / "k").write_bytes(key)
        assert mac(source).json["macs"][0]["mac"] == mac("hex:" + key.hex()).json["macs"][0]["mac"]

    for source, code, what in [("env:NOT_THERE_AT_ALL", 4, "no such environment"), ("fd:x", 2, "number"),
                               ("fd:99", 4, "descriptor 99: Bad file descriptor"), ("hex:xyz", 2, "hex digits"),
                               ("file:gone", 4, "gone: No such file"), ("private.pem", 3, "secret key is needed"),
                               ("file:", 2, "--key file:"), ("raw:private.pem", 0, "first 16 bytes"),
                               ("hex:" + KEY[:15].hex(), 3, "Invalid key size")]:
        failed = mac(source)
        assert failed.code == code and (failed.out == b"") == (code != 0), (source, failed.err)
        assert what in failed.err and "xyz" not in failed.err


@pytest.mark.parametrize("name, bits", [("AES", 128), ("3DES", 192), ("3DES", 128), ("DES", 64)])
@pytest.mark.parametrize("mode", ["CBC", "ECB"])
@pytest.mark.parametrize("padding", ["PKCS7", "None"])
def test_openssl_and_we_decrypt_each_other(tool, sh, tmp_path, name, bits, mode, padding):
    key = random.Random(bits).randbytes(bits // 8)
    iv = IV[:16 if name == "AES" else 8]
    theirs = {"AES": "aes-128", "3DES": "des-ede3" if bits == 192 else "des-ede", "DES": "des"}[name]
    # Without a mode, des-ede and des-ede3 are ECB.
    theirs += "" if name == "3DES" and mode == "ECB" else f"-{mode.lower()}"
    openssl = ["openssl", "enc", f"-{theirs}", "-K", key.hex(), *(["-iv", iv.hex()] if mode == "CBC" else []),
               *(["-nopad"] if padding == "None" else []), "-provider", "legacy", "-provider", "default"]
    (tmp_path / "key").write_bytes(key)
    ours = ["-a", name, "--mode", mode, "--padding", padding, "--key", "file:key",
            *(["--iv", iv.hex()] if mode == "CBC" else [])]
    for size in (0, 16, 4096) if padding == "None" else (0, 15, 16, 4096):
        data = random.Random(size).randbytes(size)
        encrypted = tool("encrypt", *ours, stdin=data)
        assert encrypted.code == 0 and encrypted.out == sh(*openssl, "-e", stdin=data)
        assert tool("decrypt", *ours, stdin=encrypted.out).out == data
        warnings = ["ECB"] * (mode == "ECB") + ["DES"] * (name != "AES")
        assert [line for line in encrypted.err.splitlines() if "warning" in line].__len__() == len(warnings)
        for word in warnings:
            assert word in encrypted.err
    if padding == "None":
        failed = tool("encrypt", *ours, stdin=b"seven b")
        assert (failed.code, failed.out) == (3, b"") and "PKCS7" in failed.err
    damaged = tool("decrypt", *ours, stdin=b"x" * 15)
    assert (damaged.code, damaged.out) == (3, b"") and "does not decrypt" in damaged.err


def test_outputs_are_new_private_files_and_nothing_is_left_of_a_failure(tool, keys):
    done = tool("encrypt", "-a", "AES", "--key", "raw.key", "-o", "out", "hex.key")
    assert (done.code, done.out) == (0, b"") and "no IV" in done.err
    assert (keys / "out").stat().st_mode & 0o777 == 0o600
    again = tool("decrypt", "-a", "AES", "--key", "raw.key", "-o", "out", "out")
    assert again.code == 4 and "out" in again.err
    assert tool("decrypt", "-a", "AES", "--key", "raw.key", "-o", "out", "--force", "out").code == 0
    assert (keys / "out").read_bytes() == (keys / "hex.key").read_bytes()
    failed = tool("decrypt", "-a", "AES", "--key", "raw.key", "-o", "none", "raw.key")
    assert failed.code == 3 and not (keys / "none").exists()
    for name, size, block in ("AES", 16, 16), ("3DES", 24, 8), ("DES", 8, 8):
        def encrypt(key, iv):
            return tool("encrypt", "-a", name, "--iv", iv.hex(), "--key", "hex:" + key.hex(), stdin=b"x")

        key, iv = (2 * KEY)[:size], IV[:block]
        long, fitting, short = encrypt(key + b"k", iv + b"i"), encrypt(key, iv), encrypt(key[:-1], iv)
        assert long.out == fitting.out and fitting.err.count("first") == 0
        assert f"key's {size + 1} bytes only the first {size} bytes" in long.err
        assert f"IV's {block + 1} bytes only the first {block} bytes" in long.err
        assert short.code == 3 and f"--key hex:: a key of {size - 1} bytes is too short" in short.err


@pytest.mark.parametrize("padding, theirs", [("PKCS1", "pkcs1"), ("OAEP", "oaep"), ("None", "none")])
def test_rsa_blocks_go_both_ways(tool, sh, keys, padding, theirs):
    data = b"\0" + 127 * b"x" if padding == "None" else b"a session key"
    options = ["-pkeyopt", f"rsa_padding_mode:{theirs}"]
    for key in "certificate.pem", "public.pem", "private.pem":
        ours = tool("encrypt", "-a", "RSA", "--padding", padding, "--key", key, stdin=data)
        assert (ours.code, ours.err) == (0, "")
        assert sh("openssl", "pkeyutl", "-decrypt", "-inkey", "private.pem", *options, stdin=ours.out) == data
    block = sh("openssl", "pkeyutl", "-encrypt", "-pubin", "-inkey", "public.pem", *options, stdin=data)
    (keys / "both.pem").write_text((keys / "certificate.pem").read_text() + (keys / "private.pem").read_text())
    for key in "private.pem", "both.pem":
        assert tool("decrypt", "-a", "RSA", "--padding", padding, "--key", key, stdin=block).out == data
    public = tool("decrypt", "-a", "RSA", "--padding", padding, "--key", "certificate.pem", stdin=block)
    assert public.code == 3 and "private key" in public.err
    broken = tool("decrypt", "-a", "RSA", "--padding", padding, "--key", "private.pem", stdin=b"\xff" * 128)
    assert (broken.code, broken.out) == (3, b"")


@pytest.mark.parametrize("digest", ["SHA1", "SHA224", "SHA256", "SHA384", "SHA512", "MD5"])
def test_signatures_of_openssl_are_valid(tool, sh, keys, digest):
    (keys / "data").write_bytes(b"the signed text")
    sh("openssl", "dgst", f"-{digest.lower()}", "-sign", "private.pem", "-out", "signature", "data")
    for key in "certificate.pem", "public.pem", "private.pem":
        checked = tool("verify", "--key", key, "--digest", digest, "--signature", "signature", "data")
        assert (checked.code, checked.text) == (0, "data: the signature is valid\n")
    info = sh("openssl", "pkeyutl", "-verifyrecover", "-pubin", "-inkey", "public.pem", "-in", "signature",
              "-pkeyopt", "rsa_padding_mode:pkcs1")
    assert tool("verify", "--key", "public.pem", "--signature", "signature", stdin=info).code == 0


def test_a_signature_that_is_not_valid_fails_at_a_step(tool, sh, keys):
    (keys / "data").write_bytes(b"the signed text")
    (keys / "other").write_bytes(b"another text")
    sh("openssl", "dgst", "-sha256", "-sign", "private.pem", "-out", "signature", "data")
    signature = (keys / "signature").read_bytes()
    (keys / "short").write_bytes(signature[1:])
    (keys / "large").write_bytes(b"\xff" * 128)
    (keys / "damaged").write_bytes(signature[:-1] + bytes([signature[-1] ^ 1]))
    (keys / "free").write_bytes(
        sh("openssl", "pkeyutl", "-sign", "-inkey", "private.pem", "-pkeyopt", "rsa_padding_mode:pkcs1", stdin=b"x"))

    def fails(signature, step, *options, data="data"):
        checked = tool("verify", "--key", "public.pem", "--json", "--signature", signature, *options, data)
        assert checked.code == 1 and checked.json["valid"] is False
        assert checked.json["step"] == step and checked.json["reason"].startswith(step + ": "), checked.json

    fails("short", "length", "--digest", "SHA256")
    fails("large", "number", "--digest", "SHA256")
    fails("damaged", "padding", "--digest", "SHA256")
    fails("signature", "digest", "--digest", "SHA512")
    fails("free", "digest", "--digest", "SHA256")
    fails("signature", "data", "--digest", "SHA256", data="other")
    fails("signature", "data")
    fails("signature", "data", "--padding", "None")
    missing = tool("verify", "--key", "public.pem", "--json", "--signature", "signature", "gone")
    assert (missing.code, missing.json) == (4, {"file": "gone", "error": "No such file or directory"})


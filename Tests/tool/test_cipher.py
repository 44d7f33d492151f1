import random

import pytest

KEY = bytes(range(16))
IV = bytes(range(16, 32))
MACS = ["HMAC_SHA1", "HMAC_SHA224", "HMAC_SHA256", "HMAC_SHA384", "HMAC_SHA512", "CMAC"]


@pytest.fixture
def keys(tmp_path):
    (tmp_path / "raw.key").write_bytes(KEY)
    (tmp_path / "hex.key").write_text(KEY.hex() + "\n")
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

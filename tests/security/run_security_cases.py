#!/usr/bin/env python3
"""Lets openssl, sha256sum, gzip and python's zlib read what the tool writes, and the other way round.

    run_security_cases.py RUNNER TARN_EXE SCRATCH_FOLDER            the cases
    run_security_cases.py RUNNER TARN_EXE SCRATCH_FOLDER soak       files over 4 GiB, in little memory
"""
import gzip
import hashlib
import os
import pathlib
import random
import resource
import shutil
import struct
import subprocess
import sys
import zlib

PHRASE = "correct horse battery st\u00e4ple"
KEY = hashlib.sha256(PHRASE.encode()).hexdigest()
SYMBOLS = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_."
HEADER = 52
runner, tool, scratch = (pathlib.Path(argument).resolve() for argument in sys.argv[1:4])


def tarn(command, given=b"", phrase=PHRASE, status=0, tool=tool):
    """Runs the tool in the scratch folder; what it says no to is one line."""
    run = subprocess.run([runner, tool, *command.split()], input=given, capture_output=True, cwd=scratch,
                         env={**os.environ, "TARN_PHRASE": phrase})
    assert run.returncode == status, (command, run)
    assert status == 0 or (run.stdout == b"" and run.stderr.count(b"\n") == 1), (command, run)
    return run.stdout


def host(*command, given=b""):
    return subprocess.run(command, input=given, capture_output=True, check=True, cwd=scratch).stdout


def expect_openssl(cipher, clear):
    """openssl decrypts it, and sha256sum finds the digest that it carries."""
    iv, digest, rest = cipher[4:20], cipher[20:HEADER], cipher[HEADER:]
    assert cipher[:4] == b"\0\0\0\2"
    assert host("openssl", "enc", "-d", "-aes-256-ctr", "-K", KEY, "-iv", iv.hex(), given=rest) == clear
    assert host("sha256sum", given=iv + clear).split()[0].decode() == digest.hex()


def decode(text):
    bits = "".join(f"{SYMBOLS.index(symbol):06b}" for symbol in text)
    return bytes(int(bits[i:i + 8], 2) for i in range(0, len(bits) - 7, 8))


def refused(command, name, content, **options):
    """Nothing is made, and nothing left behind."""
    (scratch / name).write_bytes(content)
    before = sorted(scratch.iterdir())
    tarn(command, status=1, **options)
    assert sorted(scratch.iterdir()) == before, command


def encryption(sample):
    clear = "Zw\u00f6lf Boxk\u00e4mpfer\n".encode()
    line = tarn("encrypt -pass-env TARN_PHRASE", clear)
    expect_openssl(decode(line.decode().rstrip("\n")), clear)
    assert tarn("decrypt -pass-env TARN_PHRASE", line) == clear
    (scratch / "phrase").write_bytes(PHRASE.encode() + b"\r\nsecond line\n")
    assert tarn("decrypt -pass-file phrase", line.rstrip(b"\n")) == clear
    tarn("decrypt -pass-env TARN_PHRASE", line, phrase="another", status=1)
    (scratch / "clear").write_bytes(sample)
    tarn("encrypt -file clear -out hidden -pass-env TARN_PHRASE")
    hidden = (scratch / "hidden").read_bytes()
    expect_openssl(hidden, sample)
    tarn("decrypt -file hidden -out again -pass-env TARN_PHRASE")
    assert (scratch / "again").read_bytes() == sample
    decrypt = "decrypt -file broken -out none -pass-env TARN_PHRASE"
    refused(decrypt, "broken", hidden, phrase="another")
    refused(decrypt, "broken", hidden[:70000])
    refused(decrypt, "broken", hidden[:40])
    refused(decrypt, "broken", hidden[:-1] + bytes([hidden[-1] ^ 1]))


def compression(sample):
    (scratch / "clear").write_bytes(sample)
    tarn("compress -file clear -out block -block -level 9")
    block = (scratch / "block").read_bytes()
    assert block[:4] == struct.pack(">I", len(sample)) and zlib.decompress(block[4:]) == sample
    tarn("compress -file clear -out clear.gz -level 1 -strategy 2")
    assert host("gzip", "-dc", "clear.gz") == host("zcat", "clear.gz") == sample
    with (scratch / "named").open("wb") as file, gzip.GzipFile("a name", "wb", 5, file) as named:
        named.write(sample)
    host("gzip", "-k9f", "clear")
    one = (scratch / "clear.gz").read_bytes()
    others = {"block": struct.pack(">I", len(sample)) + zlib.compress(sample, 1), "named": None, "clear.gz": None,
              "members": one + gzip.compress(sample)}
    for name, content in others.items():
        if content:
            (scratch / name).write_bytes(content)
        tarn(f"expand -file {name} -out again" + (" -block" if name == "block" else ""))
        assert (scratch / "again").read_bytes() == sample * (2 if name == "members" else 1), name
    refused("expand -file broken -out none", "broken", one[:-3])
    refused("expand -file broken -out none", "broken", one[:900] + b"damage" + one[906:])
    refused("expand -file broken -out none", "broken", sample)
    refused("expand -file broken -out none -block", "broken", block[:-3])
    refused("compress -file broken -out none -block", "broken", b"")


def digests(sample):
    (scratch / "clear").write_bytes(sample)
    for option, program in (("-md5", "md5sum"), ("-sha256", "sha256sum")):
        wanted = host(program, "clear").split()[0]
        assert tarn(f"digest {option} -file clear").split() == tarn(f"digest {option}", sample).split() == [wanted]
    assert tarn("crc32 -file clear").decode() == f"{zlib.crc32(sample):08x}\n"


def identifiers():
    lines = tarn("guid -count 100").split()
    assert len(set(lines)) == 100 and {len(line) for line in lines} == {23}
    extended = tarn("guid -name abc -extend 4294967295").decode().strip()
    assert tarn(f"guid -strip {extended}") == b"CJABUJg80k_w1pY.fSjhf3I 4294967295\n"
    tarn(f"guid -strip {lines[0].decode()}", status=1)
    tarn("guid -strip x", status=1)


def without_openssl():
    """Its library is loaded when it is needed; without it the rest works, and the log says what is lacking."""
    for file in [tool, *tool.parent.glob("*.dll")]:
        if "crypto-3" not in file.name:
            shutil.copy(file, scratch)
    lean = scratch / tool.name
    assert tarn("crc32", b"x", tool=lean) == b"8cdc1683\n"
    tarn("encrypt -pass-env TARN_PHRASE -trace m -loggingPath logs", b"x", status=2, tool=lean)
    log = "".join(file.read_text() for file in (scratch / "logs").iterdir())
    assert "cannot load libcrypto-3.dll: error 126" in log, log


def soak(gibibytes=4.2):
    """The peak of the memory of all processes so far must not rise with the size of the files."""
    (scratch / "small").write_bytes(bytes(1 << 20))
    with (scratch / "large").open("wb") as file:
        file.truncate(int(gibibytes * 2**30))
    for step in ("encrypt -file {} -out made -pass-env TARN_PHRASE", "decrypt -file made -out again -pass-env TARN_PHRASE",
                 "compress -file {} -out made", "expand -file made -out again", "digest -sha256 -file {}"):
        peaks = []
        for name in ("small", "large"):
            if "{}" not in step and name == "small":
                continue
            tarn(step.format(name))
            peaks.append(resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss)
        if "again" in step:
            host("cmp", "again", "large")
            (scratch / "again").unlink()
        print(step, "peaks in KiB:", peaks, flush=True)
        assert peaks[-1] - peaks[0] < 1024, step


def main():
    shutil.rmtree(scratch, ignore_errors=True)
    scratch.mkdir(parents=True)
    if sys.argv[4:] == ["soak"]:
        soak()
    else:
        numbers = random.Random(12)
        sample = b"".join(bytes([numbers.randrange(256)]) * numbers.randrange(9) for _ in range(50000))
        encryption(sample)
        compression(sample)
        digests(sample)
        identifiers()
        without_openssl()
    shutil.rmtree(scratch)
    print("everything agrees")


if __name__ == "__main__":
    main()

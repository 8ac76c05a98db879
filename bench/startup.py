#!/usr/bin/env python3
"""How long a process takes that does nothing: an empty program in C, one with the C++ library, one that makes a string of ours,
and one that draws a random number by OpenSSL's. In turns; the times are those of whole processes.

    startup.py BUILD_FOLDER [ROUNDS]
"""
import os
import pathlib
import statistics
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
COMPILER = "i686-w64-mingw32-g++-posix"
FLAGS = ["-std=c++20", "-O2", "-s", "-msse2", "-mfpmath=sse"]
PROGRAMS = {
    "empty": "int main() {}",
    "C++ library": "#include <iostream>\nint main() { std::cout << 0; }",
    "tarnlib": '#include "tarnlib/sstring.h"\nint main() { return TarnLibA500::SAnsiString("text").isEmpty(); }',
    "tarnlib and libcrypto": '#include "tarnlib/scrypt.h"\n'
                             "int main() { unsigned char byte; return TarnLibA500::SCrypt().random(&byte, 1); }",
}


def build(folder, name, source):
    """Beside the library's DLLs. The empty program has no C++ in it."""
    program = folder / "bin" / f"startup-{name.replace(' ', '-')}.exe"
    library = ["-ltarnlib"] if "tarnlib" in name else []
    language = "c" if name == "empty" else "c++"
    compiler = COMPILER.replace("g++", "gcc") if name == "empty" else COMPILER
    flags = FLAGS[1:] if name == "empty" else FLAGS
    subprocess.run([compiler, *flags, f"-I{ROOT}/export/iface", f"-I{ROOT}/platform", f"-I{folder}/iface", "-x", language, "-", "-o",
                    program, f"-L{folder}/lib", *library], input=source.encode(), check=True)
    return program


def milliseconds(program):
    began = time.monotonic()
    subprocess.run([ROOT / "cmake/wine-run", program], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL)
    return 1000 * (time.monotonic() - began)


def main(folder, rounds=21):
    programs = {name: build(folder, name, source) for name, source in PROGRAMS.items()}
    times = {name: [] for name in programs}
    for _ in range(rounds + 1):
        for name, program in programs.items():
            times[name].append(milliseconds(program))
    least = {name: min(taken[1:]) for name, taken in times.items()}  # the first round starts Wine
    for name, program in programs.items():
        print(f"{name:<22} {least[name]:5.1f} ms at least, {least[name] - least['empty']:5.1f} beyond the empty program;"
              f" {statistics.median(times[name][1:]):5.1f} in the median")
        os.remove(program)


if __name__ == "__main__":
    main(pathlib.Path(sys.argv[1]).resolve(), *map(int, sys.argv[2:]))

#!/usr/bin/env python3
"""Checks that includes run down the house: no area includes one on a floor above it.

    check-layers.py ROOT          prints every include that runs up, and fails if there is one
    check-layers.py --self-test   shows that the check finds what it is to find
"""
import pathlib
import re
import sys
import tempfile

# From the ground up. Areas on one floor may use each other in one direction only.
FLOORS = [
    {"seam"},
    {"strings"},
    {"trace"},
    {"time", "system"},
    {"security", "config", "files"},
    {"net", "url"},
    {"logger"},
    {"tools", "examples"},
]
FLOOR_OF = {area: number for number, areas in enumerate(FLOORS) for area in areas}

# The folder diag holds three floors, told apart by the unit. All others there are the logger's, also sdescribeexception,
# which knows the exceptions of every area and so stands above them.
SEAM_UNITS = {"tarnapi", "sassert", "require", "unlogged", "levels"}
TRACE_UNITS = {"straceparameter", "straceobj", "sscopetrace", "traceformat"}

# Public headers without a unit of their name, templates for instance.
HEADER_AREAS = dict.fromkeys(["refcount", "sdecodedstring", "siarray", "simap", "siset"], "strings")
HEADER_AREAS["loggingplugin"] = "logger"

INCLUDE = re.compile(r'^\s*#\s*include\s*"([^"]+)"', re.MULTILINE)
SOURCES = {".h", ".cpp", ".tcc", ".inc"}


def area_of(folder, stem):
    if stem in SEAM_UNITS:
        return "seam"
    if folder == "diag":
        return "trace" if stem in TRACE_UNITS else "logger"
    return folder


class House:
    def __init__(self, root):
        self.root = pathlib.Path(root)
        self.problems = []
        self.sideways = {}
        self.units = {}
        for path in self.root.glob("src/*/*"):
            if path.suffix in SOURCES:
                self.units.setdefault(path.stem, area_of(path.parent.name, path.stem))

    def area_of_file(self, path):
        parts = path.relative_to(self.root).parts
        if parts[0] in ("tools", "examples"):
            return parts[0]
        if parts[0] == "src" and len(parts) == 3:
            return area_of(parts[1], path.stem)
        return self.area_of_public_header(path.stem)

    def area_of_public_header(self, stem):
        """A public header belongs to the area of the unit of its name."""
        if stem in SEAM_UNITS:
            return "seam"
        return self.units.get(stem) or HEADER_AREAS.get(stem)

    def area_of_include(self, name):
        folder, _, rest = name.partition("/")
        if not rest:
            return None  # beside the including file
        stem = pathlib.PurePath(rest).stem
        if folder == "tarnlib":
            return self.area_of_public_header(stem)
        return area_of(folder, stem) if (self.root / "src" / folder).is_dir() else None

    def check_include(self, path, area, name):
        used = self.area_of_include(name)
        where = f"{path.relative_to(self.root)}: includes {name}"
        if used is None:
            if name.startswith("tarnlib/"):
                self.problems.append(f"{where}: no unit src/*/{pathlib.PurePath(name).stem}.cpp, and HEADER_AREAS "
                                     "does not tell its area")
            return
        if FLOOR_OF[used] > FLOOR_OF[area]:
            self.problems.append(f"{where}: {area} is below {used}")
        elif used != area and FLOOR_OF[used] == FLOOR_OF[area]:
            self.sideways.setdefault((area, used), where)

    def check(self):
        files = [path for pattern in ("src/*/*", "export/iface/tarnlib/*", "tools/*/*", "examples/*")
                 for path in sorted(self.root.glob(pattern)) if path.suffix in SOURCES]
        for path in files:
            area = self.area_of_file(path)
            if area not in FLOOR_OF:
                self.problems.append(f"{path.relative_to(self.root)}: in no known area")
                continue
            for name in INCLUDE.findall(path.read_text(encoding="utf-8")):
                self.check_include(path, area, name)
        for (area, used), where in self.sideways.items():
            if (used, area) in self.sideways and area < used:
                self.problems.append(f"{area} and {used} include each other: {where}; "
                                     f"{self.sideways[used, area]}")
        return len(files)


def self_test():
    cases = [
        ({"src/strings/sstring.cpp": '#include "tarnlib/sstring.h"\n#include "strings/memory.h"\n',
          "src/strings/memory.h": "", "export/iface/tarnlib/sstring.h": '#include "tarnlib/tarnapi.h"\n',
          "src/files/sfile.cpp": '#include "tarnlib/sstring.h"\n'}, 0),
        ({"src/strings/sstring.cpp": '#include "files/sfile.h"\n', "src/files/sfile.h": ""}, 1),
        ({"src/strings/sstring.cpp": '  # include "tarnlib/sfile.h"\n', "src/files/sfile.cpp": "",
          "export/iface/tarnlib/sfile.h": ""}, 1),
        ({"src/diag/sassert.cpp": '#include "strings/memory.h"\n', "src/strings/memory.h": ""}, 1),
        ({"src/time/a.cpp": '#include "system/b.h"\n', "src/system/b.h": ""}, 0),
        ({"src/time/a.h": '#include "system/b.h"\n', "src/system/b.h": '#include "time/a.h"\n'}, 1),
        ({"src/attic/a.cpp": ""}, 1),
        ({"src/files/a.cpp": '#include "tarnlib/sdescribeexception.h"\n', "src/diag/sdescribeexception.cpp": ""}, 1),
        ({"src/files/a.cpp": '#include "tarnlib/siarray.h"\n'}, 0),
        ({"src/files/a.cpp": '#include "tarnlib/nowhere.h"\n'}, 1),
    ]
    for files, expected in cases:
        with tempfile.TemporaryDirectory() as folder:
            for name, text in files.items():
                path = pathlib.Path(folder, name)
                path.parent.mkdir(parents=True, exist_ok=True)
                path.write_text(text)
            house = House(folder)
            house.check()
            if len(house.problems) != expected:
                sys.exit(f"self-test: {files}\nexpected {expected} problems, found {house.problems}")
    print(f"{len(cases)} cases ok")


def main():
    if sys.argv[1:] == ["--self-test"]:
        self_test()
        return
    house = House(sys.argv[1] if len(sys.argv) > 1 else ".")
    count = house.check()
    print("\n".join(house.problems))
    print(f"{count} files, {len(house.problems)} includes out of order")
    sys.exit(1 if house.problems or count == 0 else 0)


main()

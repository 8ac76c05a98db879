#!/usr/bin/env python3
"""Checks that includes run down the house, as docs/architecture.md draws it.

    check-layers.py ROOT          prints every include that runs up, round in a circle or to a module that is none of
                                  the area's business, and fails if there is one
    check-layers.py --self-test   shows that the check finds what it is to find

The drawing is the block under "Who may know whom": a line a floor, from the top, its folders by commas, then remarks
behind two blanks; and a line a module, "platform/NAME  for FOLDER, FOLDER", where a folder
means all that is in it.
"""
import pathlib
import re
import sys
import tempfile

DRAWING = "docs/architecture.md"
HEADING = "## Who may know whom"
INCLUDE = re.compile(r'^\s*#\s*include\s*[<"]([^>"]+)[>"]', re.MULTILINE)
SOURCES = {".h", ".cpp", ".tcc", ".inc"}


def read_drawing(text):
    """The folders of each floor from the top, and who may use which module."""
    floors, modules = [], {}
    for line in text.split(HEADING, 1)[1].split("\n## ", 1)[0].splitlines():
        if not line.startswith("    "):
            continue
        folders, _, remark = line.strip().partition("  ")
        if folders.startswith("platform/"):
            modules[folders] = remark.strip().removeprefix("for ").split(", ")
        else:
            floors.append(folders.split(", "))
    return floors, modules


def find_circle(edges):
    """One way round in a graph of {node: {next: ...}}, or nothing."""
    finished, way = set(), []

    def walk(node):
        if node in way:
            return way[way.index(node):] + [node]
        if node in finished:
            return None
        way.append(node)
        for following in edges.get(node, ()):
            if circle := walk(following):
                return circle
        way.pop()
        finished.add(node)
        return None

    for node in list(edges):
        if circle := walk(node):
            return circle
    return None


class House:
    def __init__(self, root):
        self.root = pathlib.Path(root)
        self.problems = []
        floors, self.modules = read_drawing((self.root / DRAWING).read_text(encoding="utf-8"))
        self.depth = {folder: number for number, folders in enumerate(floors) for folder in folders}
        self.edges = {}  # between areas of one floor, with the include that makes each
        self.headers = {}  # between headers
        self.files = [path for pattern in ("src/**/*", "export/iface/**/*", "platform/**/*", "tools/**/*", "examples/**/*")
                      for path in sorted(self.root.glob(pattern)) if path.suffix in SOURCES]
        self.units = {path.stem: self.area_of_folder(path.parent)
                      for path in self.files if path.suffix == ".cpp" and self.name(path).startswith("src/")}

    def name(self, path):
        return path.relative_to(self.root).as_posix()

    def area_of_folder(self, folder):
        """The nearest folder above that the drawing shows."""
        name = self.name(folder)
        while name and name not in self.depth and name not in self.modules:
            name = name.rpartition("/")[0]
        return name or None

    def area_of_file(self, path):
        """A public header belongs to the area of the unit of its name."""
        if self.name(path).startswith("export/"):
            return self.units.get(path.name.partition(".")[0])
        return self.area_of_folder(path.parent)

    def find(self, path, included):
        """The file of the house that an include means, if it means one."""
        for folder in (path.parent, self.root / "src", self.root / "export/iface", self.root / "platform"):
            for name in (included, f"{included}.in"):  # CMake completes some
                if (folder / name).is_file():
                    return (folder / name).resolve()
        return None

    def check_include(self, path, area, included):
        target = self.find(path, included)
        where = f"{self.name(path)}: includes {included}"
        if target is None:
            if included.startswith("tarnlib/"):
                self.problems.append(f"{where}: there is no such header")
            return
        if path.suffix == ".h" and target.suffix == ".h":
            self.headers.setdefault(self.name(path), {})[self.name(target)] = where
        used = self.area_of_file(target)
        if used is None or used == area:
            return
        if used in self.modules:
            if not any(f"{area}/".startswith(f"{folder}/") for folder in self.modules[used]):
                self.problems.append(f"{where}: {used} is not for {area}")
        elif area in self.modules:
            self.problems.append(f"{where}: {area} is a module of its own, which knows nothing of {used}")
        elif self.depth[used] < self.depth[area]:
            self.problems.append(f"{where}: {area} is below {used}")
        elif self.depth[used] == self.depth[area]:
            self.edges.setdefault(area, {})[used] = where

    def check_circle(self, edges):
        if circle := find_circle(edges):
            steps = [edges[one][other] for one, other in zip(circle, circle[1:])]
            self.problems.append(f"{' -> '.join(circle)}: a circle ({'; '.join(steps)})")

    def check(self):
        for path in self.files:
            area = self.area_of_file(path)
            if area is None:
                self.problems.append(f"{self.name(path)}: in no area of {DRAWING}; a public header needs a unit of its name")
                continue
            for included in INCLUDE.findall(path.read_text(encoding="utf-8")):
                self.check_include(path, area, included)
        self.check_circle(self.edges)
        self.check_circle(self.headers)
        return len(self.files)


def self_test():
    drawing = f"""{HEADING}

    tools
      src/diag/logging  the logger
        src/files, src/config, src/time
          src/strings/text
            src/strings/base

    platform/jtc  for src/diag
    platform/waiting  for platform

## More
"""
    cases = [
        ("all in order", 0,
         {"src/strings/text/sstring.cpp": '#include "tarnlib/sstring.h"\n#include "strings/base/memory.h"\n',
          "src/strings/base/memory.h": "", "export/iface/tarnlib/sstring.h": "#include <cstdint>\n",
          "src/files/a.cpp": '#include "tarnlib/sstring.h"\n#include "config/b.h"\n', "src/config/b.h": "",
          "src/diag/logging/a.cpp": '#include "jtc/jtc.h"\n', "platform/jtc/jtc.h": "#include <waiting/waiting.h>\n",
          "platform/waiting/waiting.h": ""}),
        ("up", 1, {"src/strings/base/a.cpp": '#include "strings/text/b.h"\n', "src/strings/text/b.h": ""}),
        ("up to a public header", 1, {"src/strings/text/a.cpp": '  # include "tarnlib/b.h"\n', "src/files/b.cpp": "",
                                      "export/iface/tarnlib/b.h": ""}),
        ("up in angle brackets", 1, {"src/strings/text/a.cpp": "#include <files/b.h>\n", "src/files/b.h": ""}),
        ("a circle of two areas", 1, {"src/files/a.h": '#include "config/b.h"\n', "src/config/b.h": "",
                                      "src/config/c.h": '#include "files/d.h"\n', "src/files/d.h": ""}),
        ("a circle of three areas", 1,
         {"src/files/a.cpp": '#include "config/b.h"\n', "src/config/b.h": "", "src/config/b.cpp": '#include "time/c.h"\n',
          "src/time/c.h": "", "src/time/c.cpp": '#include "files/d.h"\n', "src/files/d.h": ""}),
        ("a circle of headers", 1, {"src/files/a.h": '#include "files/b.h"\n', "src/files/b.h": '#include "a.h"\n'}),
        ("a module for the logger only", 1, {"src/files/a.cpp": '#include "jtc/jtc.h"\n', "platform/jtc/jtc.h": ""}),
        ("a module that looks at the library", 1, {"platform/jtc/a.cpp": '#include "files/b.h"\n', "src/files/b.h": ""}),
        ("a folder that nobody knows", 1, {"src/attic/a.cpp": ""}),
        ("a public header without a unit", 1, {"export/iface/tarnlib/a.h": ""}),
        ("a public header that is missing", 1, {"src/files/a.cpp": '#include "tarnlib/nowhere.h"\n'}),
    ]
    for name, expected, files in cases:
        with tempfile.TemporaryDirectory() as folder:
            for place, text in {DRAWING: drawing, **files}.items():
                path = pathlib.Path(folder, place)
                path.parent.mkdir(parents=True, exist_ok=True)
                path.write_text(text)
            house = House(pathlib.Path(folder).resolve())
            house.check()
            if len(house.problems) != expected:
                sys.exit(f"self-test: {name}: expected {expected} problems, found {house.problems}")
    print(f"{len(cases)} cases ok")


def main():
    if sys.argv[1:] == ["--self-test"]:
        self_test()
        return
    house = House(pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else ".").resolve())
    count = house.check()
    print("\n".join(house.problems))
    print(f"{count} files, {len(house.problems)} includes out of order")
    sys.exit(1 if house.problems or count == 0 else 0)


main()

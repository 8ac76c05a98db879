#!/usr/bin/env python3
"""Looks into the headers and import tables of every DLL and program of a folder.

    check-modules.py FOLDER LIST          what LIST does not allow, or a header says wrongly; exit status 1 if anything
    check-modules.py --imports FOLDER     the functions of the system that they import, as LIST has them, "?" for the version

LIST is docs/imports.txt: a line for each function of the system, with the first Windows that has it by its documentation.
What is newer than the oldest system that is supported has no place there: it is looked up while the program runs. "Ours" are
all modules but those that FOREIGN names.
"""
import pathlib
import re
import struct
import subprocess
import sys

# Built by others; theirs are not our flags.
FOREIGN = re.compile(r"lib(crypto|ssl)-3|libssh2|libgcc_s_dw2-1|libstdc\+\+-6|libwinpthread-1|libssp-0")
SUPPORTED = ("XP", "Vista", "7")
OLDEST = (6, 1)
PAGE = 4096

LARGE_ADDRESS_AWARE, IS_DLL = 0x20, 0x2000
DYNAMIC_BASE, NX_COMPAT, TERMINAL_SERVER_AWARE = 0x40, 0x100, 0x8000
IMPORTS, RESOURCES, DEBUG = 1, 2, 6
DEBUG_CODEVIEW = 2
MANIFEST, VERSION = 24, 16


class Image:
    """A module in the format of 32-bit Windows."""

    def __init__(self, path):
        self.bytes = path.read_bytes()
        self.path = path
        at = self.number(0x3C)
        self.machine, sections = struct.unpack_from("<HH", self.bytes, at + 4)
        header_bytes, self.flags = struct.unpack_from("<HH", self.bytes, at + 20)
        self.symbols = self.number(at + 16)
        optional = at + 24
        self.base, _, self.file_alignment = struct.unpack_from("<III", self.bytes, optional + 28)
        self.system, self.subsystem = (struct.unpack_from("<HH", self.bytes, optional + offset) for offset in (40, 48))
        self.dll_flags = struct.unpack_from("<H", self.bytes, optional + 70)[0]
        self.directories = [struct.unpack_from("<II", self.bytes, optional + 96 + 8 * i) for i in range(16)]
        self.sections = []
        for i in range(sections):
            section = optional + header_bytes + 40 * i
            name = self.bytes[section:section + 8].rstrip(b"\0").decode()
            self.sections.append((name, *struct.unpack_from("<4I", self.bytes, section + 8)))

    def number(self, offset):
        return struct.unpack_from("<I", self.bytes, offset)[0]

    def section(self, address):
        """The section of a relative address: name, size, address, size and offset in the file."""
        return next(s for s in self.sections if s[2] <= address < s[2] + max(s[1], s[3]))

    def offset(self, address):
        section = self.section(address)
        return section[4] + address - section[2]

    def text(self, address):
        start = self.offset(address)
        return self.bytes[start:self.bytes.index(b"\0", start)].decode()

    def imports(self):
        """Yields (module, function); a function without a name is "#" and its number."""
        entry = self.offset(self.directories[IMPORTS][0]) if self.directories[IMPORTS][0] else None
        while entry is not None and self.number(entry + 12) != 0:
            module = self.text(self.number(entry + 12))
            thunk = self.offset(self.number(entry) or self.number(entry + 16))
            while self.number(thunk) != 0:
                value = self.number(thunk)
                yield module, f"#{value & 0xFFFF}" if value >> 31 else self.text(value + 2)
                thunk += 4
            entry += 20

    def resource_kinds(self):
        if not self.directories[RESOURCES][0]:
            return set()
        root = self.offset(self.directories[RESOURCES][0])
        named, numbered = struct.unpack_from("<HH", self.bytes, root + 12)
        return {self.number(root + 16 + 8 * i) for i in range(named, named + numbered)}

    def has_build_identifier(self):
        address, size = self.directories[DEBUG]
        entries = (self.offset(address) + at for at in range(0, size, 28)) if address else ()
        return any(self.number(entry + 12) == DEBUG_CODEVIEW and self.bytes[self.number(entry + 24):][:4] == b"RSDS"
                   for entry in entries)

    def symbols_beside(self):
        return self.path.with_name(self.path.name + ".debug")

    def patched_code(self):
        """How many places of the code the run-time changes when the module is loaded; needs the symbols."""
        names = subprocess.run(["i686-w64-mingw32-nm", self.symbols_beside()], capture_output=True, text=True, check=True).stdout
        ends = {name: int(value, 16) - self.base for value, _, name in
                (line.split(None, 2) for line in names.splitlines() if len(line.split(None, 2)) == 3)
                if name.startswith("___RUNTIME_PSEUDO_RELOC_LIST")}
        first = ends["___RUNTIME_PSEUDO_RELOC_LIST__"]
        size = ends["___RUNTIME_PSEUDO_RELOC_LIST_END__"] - first
        head = 12  # of version 2: 0, 0, 1
        places = (self.number(self.offset(first + at) + 4) for at in range(head, size, 12))
        return sum(self.section(place)[0] == ".text" for place in places)


def is_of_system(module, folder):
    return not (folder / module).exists()


def header_faults(image):
    """Yields what is wrong with any module."""
    if image.machine != 0x14C:
        yield "is no 32-bit module"
    if image.dll_flags & (DYNAMIC_BASE | NX_COMPAT) != DYNAMIC_BASE | NX_COMPAT:
        yield "cannot be placed anywhere, or has data that may be executed"
    if image.file_alignment % PAGE:
        yield f"has sections that begin at multiples of {image.file_alignment} bytes of the file, and cannot be mapped"
    if image.subsystem > OLDEST or image.system > OLDEST:
        yield f"wants system {image.system}, subsystem {image.subsystem}"


def own_faults(image):
    """Yields what is wrong with a module of ours."""
    if (image.system, image.subsystem) != (OLDEST, OLDEST):
        yield f"is for system {image.system} and subsystem {image.subsystem}, not {OLDEST}"
    if not image.has_build_identifier():
        yield "has no build identifier"
    if VERSION not in image.resource_kinds():
        yield "has no version resource"
    if image.symbols:
        yield "is not stripped"
    if not image.symbols_beside().exists():
        yield "has no symbols beside it"
    elif image.patched_code():
        yield f"has {image.patched_code()} places of code that are changed when it is loaded"
    if image.flags & IS_DLL:
        return
    if not image.flags & LARGE_ADDRESS_AWARE:
        yield "does not use addresses above 2 GiB"
    if not image.dll_flags & TERMINAL_SERVER_AWARE:
        yield "is not made for terminal servers"
    if MANIFEST not in image.resource_kinds():
        yield "has no manifest"


def read_list(path):
    """The version by (module, function)."""
    known = {}
    for line in path.read_text(encoding="utf-8").splitlines():
        if line and not line.startswith("#"):
            module, function, version = line.split()
            known[module.lower(), function] = version
    return known


def import_faults(image, known, folder):
    for module, function in image.imports():
        version = known.get((module.lower(), function))
        if not is_of_system(module, folder):
            continue
        if version is None:
            yield f"imports {function} of {module}, which the list does not have"
        elif version not in SUPPORTED:
            yield f"imports {function} of {module}, which Windows {version} has first"


def faults(images, known, folder):
    for image in images:
        is_ours = not FOREIGN.match(image.path.name)
        for fault in (*header_faults(image), *(own_faults(image) if is_ours else ()), *import_faults(image, known, folder)):
            yield f"{image.path.name} {fault}"


def print_imports(images, folder):
    all_of_them = {(module.lower(), function) for image in images for module, function in image.imports()
                   if is_of_system(module, folder)}
    for module, function in sorted(all_of_them):
        print(module, function, "?")


def main(*arguments):
    is_listing = arguments[0] == "--imports"
    folder = pathlib.Path(arguments[1 if is_listing else 0])
    images = [Image(path) for path in sorted(folder.iterdir()) if path.suffix in (".dll", ".exe")]
    if is_listing:
        return print_imports(images, folder)
    if not images:
        print(f"there are no modules in {folder}")
        return 1
    found = list(faults(images, read_list(pathlib.Path(arguments[1])), folder))
    print("\n".join([*found, f"{len(images)} modules, {len(found)} faults"]))
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))

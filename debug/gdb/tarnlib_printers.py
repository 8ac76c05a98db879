"""Shows tarnlib's strings, buffers and containers as what they hold.

In gdb, or in a .gdbinit:    source debug/gdb/tarnlib_printers.py

A multi-byte string is shown in gdb's target character set: `set target-charset CP932` for a program in that code page.
"""
import gdb
import gdb.printing

NAMESPACE = "TarnLibA500::"
MAX_UNITS = 0x100000  # a block that was overwritten must not make gdb read gigabytes


def units_at(pointer, length):
    """The text of `length` code units; wchar_t has 16 bits on the target, whatever the host thinks."""
    unit = pointer.type.target().strip_typedefs()
    encoding = "UTF-16LE" if unit.sizeof == 2 else ""
    if length > MAX_UNITS:
        return f"<damaged: length {length}>"
    return pointer.lazy_string(encoding, length) if encoding else pointer.lazy_string(length=length)


def template_base(value, name):
    """The part of a value that is an instantiation of a class template: itself, or a base."""
    type_ = value.type.strip_typedefs()
    while not str(type_.unqualified()).startswith(NAMESPACE + name + "<"):
        type_ = next(field.type for field in type_.fields() if field.is_base_class)
    return value.cast(type_)


class StringPrinter:
    """SString_t and the named strings: one pointer to a header, which the characters follow."""

    def __init__(self, value):
        self.base = template_base(value, "SString_t")

    def to_string(self):
        block = self.base["buffer_"]
        if int(block) == 0:
            return "<released>"
        unit = self.base.type.template_argument(0)
        return units_at((block + 1).cast(unit.pointer()), int(block["length"]))

    def display_hint(self):
        return "string"


class CharacterPrinter:
    """SChar_t: the code units of one character."""

    def __init__(self, value):
        self.data = value["data_"]

    def to_string(self):
        units = self.data["units"]
        return units_at(units[0].address, int(self.data["length"]))

    def display_hint(self):
        return "string"


class BytesPrinter:
    """SSimpleBuffer and SImmutableBuffer: a count and the bytes."""

    def __init__(self, value):
        if value.type.strip_typedefs().name.endswith("SSimpleBuffer"):
            block = value["buffer_"]
            self.count = int(block["bytesUsed"]) if int(block) else 0
            self.first = block["data"] if int(block) else None
        else:
            self.count = int(value["size_"])
            self.first = value["start_"]

    def to_string(self):
        return f"{self.count} bytes"

    def children(self):
        for i in range(min(self.count, MAX_UNITS)):
            yield f"[{i}]", self.first[i]

    def display_hint(self):
        return "array"


class HolderPrinter:
    """SIArray, SIMap, SISet and the case-insensitive key: the standard container or the string inside.

    The containers show their elements when the compiler's printers for its standard library are loaded.
    """

    MEMBERS = ("elements_", "tree_", "text_")

    def __init__(self, value):
        fields = {field.name for field in value.type.strip_typedefs().fields()}
        self.member = next(name for name in self.MEMBERS if name in fields)
        self.value = value[self.member]
        self.inside = gdb.default_visualizer(self.value)

    def to_string(self):
        return self.inside.to_string() if self.inside else None

    def children(self):
        if self.inside is None:
            return iter([(self.member, self.value)])
        return self.inside.children() if hasattr(self.inside, "children") else iter(())

    def display_hint(self):
        return self.inside.display_hint() if hasattr(self.inside, "display_hint") else None


def build():
    printers = gdb.printing.RegexpCollectionPrettyPrinter("tarnlib")
    ours = "^" + NAMESPACE
    printers.add_printer("strings", ours + r"(S(Ansi|Ascii|WChar|OCA)String(CI)?|SString_t<[^>]*>)$", StringPrinter)
    printers.add_printer("characters", ours + r"SChar_t<[^>]*>$", CharacterPrinter)
    printers.add_printer("bytes", ours + r"S(Simple|Immutable)Buffer$", BytesPrinter)
    printers.add_printer("holders", ours + r"(SI(Array|Map|Set)<.*>|SMapStringCaseInsensitive)$", HolderPrinter)
    return printers


gdb.printing.register_pretty_printer(gdb.current_objfile(), build(), replace=True)

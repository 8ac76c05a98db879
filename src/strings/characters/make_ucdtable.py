#!/usr/bin/env python3
"""Writes ucdtable.cpp from Python's copy of the Unicode Character Database.

    make_ucdtable.py > ucdtable.cpp
"""
import unicodedata

BMP_END = 0x10000
ASCII_END = 0x80

# White_Space is bidirectional class WS, B or S together with the separators; these are what PropList.txt adds or leaves out
# of that among the characters of the BMP beyond ASCII.
WHITE_SPACE = {0x85, 0xA0, 0x1680, *range(0x2000, 0x200B), 0x2028, 0x2029, 0x202F, 0x205F, 0x3000}
# Other_Uppercase of PropList.txt within the BMP: Roman numerals and circled letters.
OTHER_UPPERCASE = {*range(0x2160, 0x2170), *range(0x24B6, 0x24D0)}


def is_space(code):
    return code in WHITE_SPACE


def is_upper(code):
    return unicodedata.category(chr(code)) == "Lu" or code in OTHER_UPPERCASE


def check_white_space():
    """The separators of the database must all be there; the only control character beyond ASCII is NEL."""
    separators = {c for c in range(ASCII_END, BMP_END) if unicodedata.category(chr(c)) in ("Zs", "Zl", "Zp")}
    assert separators | {0x85} == WHITE_SPACE, separators ^ WHITE_SPACE


def ranges(test):
    """Sorted (first, last, step): every step-th code from first to last."""
    codes = [c for c in range(ASCII_END, BMP_END) if test(c)]
    found = []
    for code in codes:
        if found:
            first, last, step = found[-1]
            gap = code - last
            if first == last and gap <= 2:
                found[-1] = (first, code, gap)
                continue
            if first != last and gap == step:
                found[-1] = (first, code, step)
                continue
        found.append((code, code, 1))
    return found


def table(name, rows):
    cells = [f"{{0x{first:04X}, 0x{last:04X}, {step}}}" for first, last, step in rows]
    print(f"constexpr Range {name}[] = {{")
    for i in range(0, len(cells), 5):
        print("    " + ", ".join(cells[i:i + 5]) + ",")
    print("};\n")


def main():
    check_white_space()
    print(f"""// Written by make_ucdtable.py from the Unicode Character Database {unicodedata.unidata_version}. Do not edit.
// clang-format off

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <iterator>

#include "tarnlib/schar.h"

namespace TarnLibA500 {{
namespace {{

// Every step-th code from first to last.
struct Range {{
    std::uint16_t first;
    std::uint16_t last;
    std::uint16_t step;
}};
""")
    table("kSpaceRanges", ranges(is_space))
    table("kUpperRanges", ranges(is_upper))
    print("""constexpr wchar_t kAsciiEnd = 0x80;

template <std::size_t count>
bool Holds(const Range (&ranges)[count], wchar_t code) {
    const Range* const after = std::upper_bound(std::begin(ranges), std::end(ranges), code,
                                                [](wchar_t c, const Range& range) { return c < range.first; });
    if (after == std::begin(ranges)) return false;
    const Range& range = after[-1];
    return code <= range.last && (code - range.first) % range.step == 0;
}

}  // namespace

bool is_space(wchar_t unit) {
    return unit < kAsciiEnd ? std::isspace(unit) != 0 : Holds(kSpaceRanges, unit);
}

bool is_upper(wchar_t unit) {
    return unit < kAsciiEnd ? std::isupper(unit) != 0 : Holds(kUpperRanges, unit);
}

}  // namespace TarnLibA500""")


main()

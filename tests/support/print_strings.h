#pragma once

#include <ostream>

#include "tarnlib/sstring.h"

/// So that a failed comparison shows text.
namespace TarnLibA500 {

template <class unit, int flavour>
void PrintTo(const SString_t<unit, flavour>& text, std::ostream* out) {
    *out << '"';
    for (std::uint32_t i = 0; i < text.getLength(); ++i) {
        const auto code = static_cast<unsigned>(static_cast<std::make_unsigned_t<unit>>(text.getString()[i]));
        if (code >= 0x20 && code < 0x7F)
            *out << static_cast<char>(code);
        else
            *out << "\\x" << std::hex << code << std::dec;
    }
    *out << '"';
}

}  // namespace TarnLibA500

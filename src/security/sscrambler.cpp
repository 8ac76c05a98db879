#include "tarnlib/sscrambler.h"

#include "tarnlib/stringhelper.h"

namespace TarnLibA500 {

SAnsiString SScrambler::BinToAscii(const unsigned char* bytes, unsigned count) {
    return SStringHelper::toString(bytes, count);
}

bool SScrambler::AsciiToBin(const SAnsiString& text, SSimpleBuffer& bytes) {
    return SStringHelper::fromString(text, bytes);
}

unsigned SScrambler::GetAsciiSize(unsigned bytes) noexcept {
    constexpr std::uint64_t kMost = 0xFFFFFFFF;
    const std::uint64_t size = (std::uint64_t{bytes} * 4 + 2) / 3 + 1;
    return size <= kMost ? static_cast<unsigned>(size) : 0;
}

}  // namespace TarnLibA500

#pragma once

#include <cstdint>
#include <cstring>

/// Which bytes are a character in UTF-8 (Unicode 15, table 3-7), and how one is written.
namespace TarnLibA500::utf {

/// The bytes that follow the first one of a character. F5 to FF begin no character, whatever follows, so
/// nothing is waited for: who keeps the beginning of a character for later never keeps more than three bytes.
inline int TrailingBytes(unsigned char first) noexcept {
    if (first < 0xC0 || first > 0xF4) return 0;
    if (first < 0xE0) return 1;
    return first < 0xF0 ? 2 : 3;
}

/// True when a byte and those that its kind asks for are a character: which second bytes may follow depends on
/// the first one, the others only have to be trailing bytes. Looks at no byte behind one that does not belong,
/// and so at none behind a zero byte.
inline bool IsWellFormed(const unsigned char* at, int trailing) noexcept {
    if (at[0] < 0x80) return true;
    if (at[0] < 0xC2 || at[0] > 0xF4) return false;
    unsigned char low = 0x80;
    unsigned char high = 0xBF;
    if (at[0] == 0xE0) low = 0xA0;
    if (at[0] == 0xED) high = 0x9F;
    if (at[0] == 0xF0) low = 0x90;
    if (at[0] == 0xF4) high = 0x8F;
    if (at[1] < low || at[1] > high) return false;
    for (int i = 2; i <= trailing; ++i) {
        if ((at[i] & 0xC0) != 0x80) return false;
    }
    return true;
}

/// The bytes of the character at a place that has four bytes to look at; 0 when there is none. The same table, with
/// the bits of all bytes looked at together: texts are counted four times as fast.
inline unsigned BytesOfCharacter(const unsigned char* at) noexcept {
    std::uint32_t bytes;
    std::memcpy(&bytes, at, sizeof bytes);  // the first byte is low
    if ((bytes & 0x80) == 0) return 1;
    if ((bytes & 0xC0E0) == 0x80C0) return (bytes & 0x1E) != 0 ? 2 : 0;
    if ((bytes & 0xC0C0F0) == 0x8080E0) {
        const std::uint32_t start = bytes & 0x200F;
        const bool isShorter = start == 0;         // E0 80 to E0 9F
        const bool isSurrogate = start == 0x200D;  // ED A0 to ED BF
        return isShorter || isSurrogate ? 0 : 3;
    }
    if ((bytes & 0xC0C0C0F8) != 0x808080F0) return 0;
    const std::uint32_t start = bytes & 0x3007;
    const bool isShorter = start == 0;                     // F0 80 to F0 8F
    const bool isBeyond = (start & 4) != 0 && start != 4;  // from F4 90 on
    return isShorter || isBeyond ? 0 : 4;
}

/// The code point of a well-formed character.
inline std::uint32_t CodeOf(const unsigned char* at, int trailing) noexcept {
    std::uint32_t code = trailing == 0 ? *at : *at & (0x3FU >> trailing);
    for (int i = 1; i <= trailing; ++i) code = code << 6 | (at[i] & 0x3FU);
    return code;
}

/// The bytes that a code point takes; it must not exceed 10FFFF.
inline int BytesOfCode(std::uint32_t code) noexcept {
    return code < 0x80 ? 1 : code < 0x800 ? 2 : code < 0x10000 ? 3 : 4;
}

/// Writes a code point into as many bytes as it takes.
inline void WriteCode(std::uint32_t code, unsigned char* out, int bytes) noexcept {
    constexpr unsigned char kFirstMarks[] = {0, 0x00, 0xC0, 0xE0, 0xF0};
    for (int i = bytes - 1; i > 0; --i) {
        out[i] = static_cast<unsigned char>(0x80 | (code & 0x3F));
        code >>= 6;
    }
    out[0] = static_cast<unsigned char>(kFirstMarks[bytes] | code);
}

}  // namespace TarnLibA500::utf

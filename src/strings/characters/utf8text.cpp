#include "strings/characters/utf8text.h"

#include <algorithm>
#include <bit>

#include <emmintrin.h>

#include "strings/characters/surrogates.h"
#include "strings/characters/utf.h"
#include "strings/characters/utf8form.h"

namespace TarnLibA500::utf8text {
namespace {

using mbchar::Character;
using utf::Result;

constexpr unsigned kBlock = sizeof(__m128i);
constexpr auto kBlockLength = static_cast<std::ptrdiff_t>(kBlock);

const unsigned char* Bytes(const char* text) {
    return reinterpret_cast<const unsigned char*>(text);
}

enum class ZeroBytes { areCharacters, endTheText };

// The characters of ASCII at the beginning of a block, up to sixteen; none where no block is left.
template <ZeroBytes zeros>
unsigned LeadingAscii(const char* text, const char* end) {
    if (end - text < kBlockLength) return 0;
    const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text));
    auto others = static_cast<unsigned>(_mm_movemask_epi8(block));
    if constexpr (zeros == ZeroBytes::endTheText) {
        others |= static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(block, _mm_setzero_si128())));
    }
    return static_cast<unsigned>(std::countr_zero(others | 1U << kBlock));
}

// Bytes of the well-formed character at a place; 0 when there is none.
unsigned WellFormedBytes(const char* text, const char* end) {
    const int trailing = utf::TrailingBytes(*Bytes(text));
    const bool isWellFormed = end - text > trailing && utf::IsWellFormed(Bytes(text), trailing);
    return isWellFormed ? static_cast<unsigned>(trailing + 1) : 0;
}

// The sum over all characters: 1 for those of ASCII, and what "weigh" says for the others by their bytes, 0 for
// an invalid one.
template <ZeroBytes zeros, class Weigh>
std::uint32_t Sum(const char* text, const char* end, Weigh weigh) {
    std::uint32_t sum = 0;
    while (text < end) {
        const unsigned ascii = LeadingAscii<zeros>(text, end);
        text += ascii;
        sum += ascii;
        if (ascii == kBlock) continue;
        if (zeros == ZeroBytes::endTheText && *text == '\0') break;
        const unsigned bytes = WellFormedBytes(text, end);
        sum += weigh(bytes);
        text += std::max(bytes, 1U);
    }
    return sum;
}

}  // namespace

unsigned Step(const char* text) noexcept {
    return std::max(WellFormedBytes(text, text + mbchar::kMaxCharacterBytes), 1U);
}

Character CharacterAt(const char* text, const char* end) noexcept {
    const unsigned bytes = WellFormedBytes(text, end);
    if (bytes == 0) return {1, Character::kInvalid};
    return {bytes, utf::CodeOf(Bytes(text), static_cast<int>(bytes) - 1)};
}

int FromCode(char* out, char32_t code) noexcept {
    if (utf::IsSurrogate(code) || code > 0x10FFFF) return -1;
    const int bytes = utf::BytesOfCode(code);
    utf::WriteCode(code, reinterpret_cast<unsigned char*>(out), bytes);
    return bytes;
}

std::uint32_t CountCharacters(const char* text, const char* end) noexcept {
    return Sum<ZeroBytes::endTheText>(text, end, [](unsigned) { return 1U; });
}

const char* Advance(const char* text, const char* end, std::uint32_t characters) noexcept {
    while (characters != 0 && text < end) {
        const unsigned ascii = LeadingAscii<ZeroBytes::endTheText>(text, end);
        if (ascii != 0) {
            const std::uint32_t passed = std::min(ascii, characters);
            text += passed;
            characters -= passed;
            continue;
        }
        if (*text == '\0') break;
        text += std::max(WellFormedBytes(text, end), 1U);
        --characters;
    }
    return text;
}

const char* FindInvalid(const char* text, const char* end) noexcept {
    while (text < end) {
        const unsigned ascii = LeadingAscii<ZeroBytes::areCharacters>(text, end);
        text += ascii;
        if (ascii == kBlock) continue;
        const unsigned bytes = WellFormedBytes(text, end);
        if (bytes == 0) break;
        text += bytes;
    }
    return text;
}

std::uint32_t CountUnits(const char* text, const char* end) noexcept {
    return Sum<ZeroBytes::areCharacters>(text, end, [](unsigned bytes) { return bytes == 4 ? 2U : 1U; });
}

std::uint32_t Decode(const char*& text, const char* end, wchar_t* out, std::uint32_t room) noexcept {
    const unsigned char* at = Bytes(text);
    wchar_t* unit = out;
    wchar_t* const last = out + room;
    for (;;) {
        const Result result = utf::Convert(at, Bytes(end), unit, last);
        if (result == Result::converted || result == Result::targetExhausted || unit == last) break;
        *unit++ = mbchar::kReplacement;
        ++at;
    }
    text = reinterpret_cast<const char*>(at);
    return static_cast<std::uint32_t>(unit - out);
}

std::uint32_t Encode(const wchar_t*& text, const wchar_t* end, char* out, std::uint32_t room) noexcept {
    auto* byte = reinterpret_cast<unsigned char*>(out);
    unsigned char* const last = byte + room;
    for (;;) {
        const Result result = utf::Convert(text, end, byte, last, utf::Mode::strict);
        if (result == Result::converted || result == Result::targetExhausted || byte == last) break;
        *byte++ = mbchar::kReplacement;
        ++text;
    }
    return static_cast<std::uint32_t>(reinterpret_cast<char*>(byte) - out);
}

}  // namespace TarnLibA500::utf8text

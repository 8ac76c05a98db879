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

constexpr auto kBlockLength = static_cast<std::ptrdiff_t>(sizeof(__m128i));

constexpr std::uint64_t kMaxUnitBytes = 3;  // of a unit; a pair has four

const unsigned char* Bytes(const char* text) {
    return reinterpret_cast<const unsigned char*>(text);
}

// No zero byte, which may end a text.
bool IsAscii(char byte) {
    return static_cast<signed char>(byte) > 0;
}

enum class ZeroBytes { areCharacters, endTheText };

// A bit for each byte of a block that is not of ASCII, or ends the text.
template <ZeroBytes zeros>
unsigned OthersIn(const char* text) {
    __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text));
    if constexpr (zeros == ZeroBytes::endTheText) {
        block = _mm_or_si128(block, _mm_cmpeq_epi8(block, _mm_setzero_si128()));
    }
    return static_cast<unsigned>(_mm_movemask_epi8(block));
}

// The end of a run of ASCII, or a place in it that is less than a block before the end of the text.
template <ZeroBytes zeros>
const char* SkipAscii(const char* text, const char* end) {
    for (; end - text >= kBlockLength; text += kBlockLength) {
        if (const unsigned others = OthersIn<zeros>(text)) return text + std::countr_zero(others);
    }
    return text;
}

// Bytes of the well-formed character at a place; 0 when there is none.
unsigned WellFormedBytes(const char* text) {
    const int trailing = utf::TrailingBytes(*Bytes(text));
    return utf::IsWellFormed(Bytes(text), trailing) ? static_cast<unsigned>(trailing + 1) : 0;
}
unsigned WellFormedBytes(const char* text, const char* end) {
    if (end - text >= 4) return utf::BytesOfCharacter(Bytes(text));
    return end - text > utf::TrailingBytes(*Bytes(text)) ? WellFormedBytes(text) : 0;
}

Character DecodeWellFormed(const char* text, unsigned bytes) {
    if (bytes == 0) return {1, Character::kInvalid};
    return {bytes, utf::CodeOf(Bytes(text), static_cast<int>(bytes) - 1)};
}

// The sum over all characters: 1 for those of ASCII, and what "weigh" says for the others by their bytes, 0 for
// an invalid one.
template <ZeroBytes zeros, class Weigh>
std::uint32_t Sum(const char* text, const char* end, Weigh weigh) {
    std::uint32_t sum = 0;
    while (text < end) {
        if (IsAscii(*text)) {
            const char* const after = std::max(SkipAscii<zeros>(text, end), text + 1);
            sum += static_cast<std::uint32_t>(after - text);
            text = after;
            continue;
        }
        if (zeros == ZeroBytes::endTheText && *text == '\0') break;
        const unsigned bytes = WellFormedBytes(text, end);
        sum += weigh(bytes);
        text += std::max(bytes, 1U);
    }
    return sum;
}

}  // namespace

unsigned Step(const char* text) noexcept {
    return std::max(WellFormedBytes(text), 1U);
}

Character CharacterAt(const char* text) noexcept {
    return DecodeWellFormed(text, WellFormedBytes(text));
}

Character CharacterAt(const char* text, const char* end) noexcept {
    return DecodeWellFormed(text, WellFormedBytes(text, end));
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
    for (; characters != 0 && text < end; --characters) {
        if (IsAscii(*text)) {
            const char* const limit =
                text + std::min(static_cast<std::size_t>(end - text), std::size_t{characters});
            const char* const after = std::max(SkipAscii<ZeroBytes::endTheText>(text, limit), text + 1);
            characters -= static_cast<std::uint32_t>(after - text) - 1;
            text = after;
            continue;
        }
        if (*text == '\0') break;
        text += std::max(WellFormedBytes(text, end), 1U);
    }
    return text;
}

const char* FindInvalid(const char* text, const char* end) noexcept {
    while ((text = SkipAscii<ZeroBytes::areCharacters>(text, end)) < end) {
        const unsigned bytes = WellFormedBytes(text, end);
        if (bytes == 0) break;
        text += bytes;
    }
    return text;
}

std::uint32_t CountUnits(const char* text, const char* end) noexcept {
    return Sum<ZeroBytes::areCharacters>(text, end, [](unsigned bytes) { return bytes == 4 ? 2U : 1U; });
}

// A room may be given that leads beyond the address space, so it is not taken for longer than what can come out.
std::uint32_t Decode(const char*& text, const char* end, wchar_t* out, std::uint32_t room) noexcept {
    const unsigned char* at = Bytes(text);
    wchar_t* unit = out;
    wchar_t* const last = out + std::min(room, static_cast<std::uint32_t>(end - text));
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
    const std::uint64_t most = kMaxUnitBytes * static_cast<std::uint64_t>(end - text);
    unsigned char* const last = byte + std::min<std::uint64_t>(room, most);
    for (;;) {
        const Result result = utf::Convert(text, end, byte, last, utf::Mode::strict);
        if (result == Result::converted || result == Result::targetExhausted || byte == last) break;
        *byte++ = mbchar::kReplacement;
        ++text;
    }
    return static_cast<std::uint32_t>(reinterpret_cast<char*>(byte) - out);
}

}  // namespace TarnLibA500::utf8text

// How many bytes of UTF-8 a text takes. Every conversion into room of the exact size asks first; one unit at
// a time that took four times as long as converting.

#include <emmintrin.h>

#include "strings/characters/surrogates.h"
#include "strings/characters/utf.h"

namespace TarnLibA500::utf {
namespace {

constexpr std::uint32_t kBlock = sizeof(__m128i) / sizeof(wchar_t);

// All bits in the units that have none of the bits of the mask.
__m128i HasNone(__m128i units, int mask) {
    return _mm_cmpeq_epi16(_mm_and_si128(units, _mm_set1_epi16(static_cast<short>(mask))),
                           _mm_setzero_si128());
}

// The bytes of a block of units, each for itself: three for a unit, less what the smaller ones save.
std::uint32_t BytesOfBlock(const wchar_t* block) {
    const __m128i units = _mm_loadu_si128(reinterpret_cast<const __m128i*>(block));
    const __m128i saved = _mm_packs_epi16(HasNone(units, 0xFF80), HasNone(units, 0xF800));
    const __m128i sums = _mm_sad_epu8(_mm_sub_epi8(_mm_setzero_si128(), saved), _mm_setzero_si128());
    return 3 * kBlock -
           static_cast<std::uint32_t>(_mm_cvtsi128_si32(sums) + _mm_cvtsi128_si32(_mm_srli_si128(sums, 8)));
}

std::uint32_t BytesOfUnit(wchar_t unit) {
    return unit < 0x80 ? 1 : unit < 0x800 ? 2 : 3;
}

bool HasSurrogate(const wchar_t* block) {
    const __m128i units = _mm_loadu_si128(reinterpret_cast<const __m128i*>(block));
    const __m128i high = _mm_and_si128(units, _mm_set1_epi16(static_cast<short>(0xF800)));
    return _mm_movemask_epi8(_mm_cmpeq_epi16(high, _mm_set1_epi16(static_cast<short>(0xD800)))) != 0;
}

struct Surrogates {
    std::uint32_t pairs = 0;
    std::uint32_t lone = 0;
};

Surrogates CountSurrogates(const wchar_t* text, std::uint32_t units) {
    Surrogates found;
    for (std::uint32_t i = 0; i < units; ++i) {
        while (units - i >= kBlock && !HasSurrogate(text + i)) i += kBlock;
        if (i == units || !IsSurrogate(text[i])) continue;
        const bool isPair = i + 1 < units && IsHighSurrogate(text[i]) && IsLowSurrogate(text[i + 1]);
        ++(isPair ? found.pairs : found.lone);
        i += isPair;
    }
    return found;
}

}  // namespace

std::uint32_t BytesOfSingleUnits(const wchar_t* text, std::uint32_t units) {
    std::uint32_t bytes = 0;
    std::uint32_t i = 0;
    for (; units - i >= kBlock; i += kBlock) bytes += BytesOfBlock(text + i);
    for (; i < units; ++i) bytes += BytesOfUnit(text[i]);
    return bytes;
}

// Unit by unit a pair counts three bytes twice, but takes four.
std::uint32_t BytesOf(const wchar_t* text, std::uint32_t units) {
    return BytesOfSingleUnits(text, units) - 2 * CountSurrogates(text, units).pairs;
}

std::uint32_t BytesWithReplacements(const wchar_t* text, std::uint32_t units) {
    const Surrogates found = CountSurrogates(text, units);
    return BytesOfSingleUnits(text, units) - 2 * (found.pairs + found.lone);
}

}  // namespace TarnLibA500::utf

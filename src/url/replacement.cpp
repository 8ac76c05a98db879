#include "url/replacement.h"

#include <bit>

#include <emmintrin.h>

namespace TarnLibA500 {
namespace {

__m128i Load(const char* at) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
}

// A block at a time, as far as there are so many bytes.
const char* FindSpecialByte(const SpecialBytes& special, const char* at, const char* end) noexcept {
    constexpr auto kBlock = static_cast<std::ptrdiff_t>(SpecialBytes::kBlock);
    const __m128i highBits = _mm_set1_epi8(special.allBeyondAscii ? char(-128) : '\0');
    for (; end - at >= kBlock; at += kBlock) {
        const __m128i bytes = Load(at);
        __m128i hits = _mm_and_si128(bytes, highBits);
#pragma GCC unroll 6  // SpecialBytes::kMost
        for (const auto& block : special.blocks)
            hits = _mm_or_si128(hits, _mm_cmpeq_epi8(bytes, Load(block)));
        const auto mask = static_cast<unsigned>(_mm_movemask_epi8(hits));
        if (mask != 0) return at + std::countr_zero(mask);
    }
    while (at < end && !special.has(*at)) ++at;
    return at;
}

}  // namespace

const char* FindSpecial(const mbchar::CodePage& page, const SpecialBytes& special, const char* at,
                        const char* end) noexcept {
    if (page.isFoundByBytes()) return FindSpecialByte(special, at, end);
    while (at < end && !special.has(*at)) at += page.characterAt(at, end).bytes;
    return at;
}

}  // namespace TarnLibA500

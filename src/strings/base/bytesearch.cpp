#include "strings/base/bytesearch.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

#include <emmintrin.h>

namespace TarnLibA500 {
namespace {

constexpr std::size_t kBlock = sizeof(__m128i);

__m128i Load(const char* at) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
}

// The first place where "hits", given sixteen bytes, sets a bit; the end when there is none.
template <class Hits>
const char* FindHit(const char* text, const char* end, Hits hits) noexcept {
    constexpr auto kBlockLength = static_cast<std::ptrdiff_t>(kBlock);
    if (end - text < kBlockLength) {
        char padded[kBlock] = {};
        const auto length = static_cast<unsigned>(end - text);
        for (unsigned i = 0; i < length; ++i) padded[i] = text[i];
        const unsigned found = hits(Load(padded)) & ((1U << length) - 1);
        return found != 0 ? text + std::countr_zero(found) : end;
    }
    for (; end - text >= kBlockLength; text += kBlock) {
        const unsigned found = hits(Load(text));
        if (found != 0) return text + std::countr_zero(found);
    }
    // What is left, once more with bytes that were looked at.
    const char* const rest = end - kBlockLength;
    const unsigned found = hits(Load(rest));
    return found != 0 ? rest + std::countr_zero(found) : end;
}

const char* FindBytesPlainly(const char* text, const char* last, const char* what, std::size_t n) noexcept {
    for (; text <= last; ++text) {
        if (*text == *what && std::memcmp(text, what, n) == 0) return text;
    }
    return nullptr;
}

}  // namespace

// Sixteen places at a time: a place is looked at only when the first and the last byte of "what" stand there.
// That is several times faster than memchr followed by memcmp, which the runtime does byte by byte.
const char* FindBytes(const char* text, std::size_t length, const char* what, std::size_t n) noexcept {
    if (length < n) return nullptr;
    if (n == 1) {
        const char* const place = FindByte(text, text + length, *what);
        return place != text + length ? place : nullptr;
    }
    const char* const last = text + (length - n);  // the last place where a match can begin
    const __m128i firstByte = _mm_set1_epi8(what[0]);
    const __m128i lastByte = _mm_set1_epi8(what[n - 1]);
    for (; last - text >= static_cast<std::ptrdiff_t>(kBlock - 1); text += kBlock) {
        const __m128i firstHits = _mm_cmpeq_epi8(Load(text), firstByte);
        const __m128i lastHits = _mm_cmpeq_epi8(Load(text + n - 1), lastByte);
        auto hits = static_cast<unsigned>(_mm_movemask_epi8(_mm_and_si128(firstHits, lastHits)));
        for (; hits != 0; hits &= hits - 1) {
            const char* const place = text + std::countr_zero(hits);
            if (std::memcmp(place, what, n) == 0) return place;
        }
    }
    return FindBytesPlainly(text, last, what, n);
}

const char* FindByte(const char* text, const char* end, char byte) noexcept {
    const __m128i wanted = _mm_set1_epi8(byte);
    return FindHit(text, end, [wanted](__m128i bytes) {
        return static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(bytes, wanted)));
    });
}

// The runtime's strnlen goes byte by byte. Aligned blocks never reach into another page, so that what stands before
// and behind the text in the same block can be read; it is not used.
std::size_t LengthUpTo(const char* text, std::size_t most) noexcept {
    const auto before = static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(text) % kBlock);
    const char* block = text - before;
    const auto zerosIn = [](const char* at) {
        const __m128i bytes = _mm_load_si128(reinterpret_cast<const __m128i*>(at));
        return static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(bytes, _mm_setzero_si128())));
    };
    unsigned zeros = zerosIn(block) >> before << before;
    while (zeros == 0) {
        block += kBlock;
        if (static_cast<std::size_t>(block - text) >= most) return most;
        zeros = zerosIn(block);
    }
    return std::min(static_cast<std::size_t>(block + std::countr_zero(zeros) - text), most);
}

const char* FindNonAscii(const char* text, const char* end) noexcept {
    return FindHit(text, end, [](__m128i bytes) { return static_cast<unsigned>(_mm_movemask_epi8(bytes)); });
}

}  // namespace TarnLibA500

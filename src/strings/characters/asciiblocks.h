#pragma once

#include <cstddef>
#include <cstring>

#include <emmintrin.h>

/// Sixteen characters of ASCII at once, as bytes and as UTF-16 units.
namespace TarnLibA500::asciiblocks {

constexpr std::ptrdiff_t kBlock = sizeof(__m128i);

template <class T>
T Load(const void* from) {
    T value;
    std::memcpy(&value, from, sizeof value);
    return value;
}
template <class T>
void Store(void* to, T value) {
    std::memcpy(to, &value, sizeof value);
}

/// A bit for each of sixteen bytes that is not ASCII.
inline unsigned OthersIn(const char* bytes) {
    return static_cast<unsigned>(_mm_movemask_epi8(Load<__m128i>(bytes)));
}

/// A bit for each of sixteen units that is not ASCII.
inline unsigned OthersIn(const wchar_t* units) {
    const __m128i notAscii = _mm_set1_epi16(static_cast<short>(0xFF80));
    const __m128i zero = _mm_setzero_si128();
    const __m128i low = _mm_cmpeq_epi16(_mm_and_si128(Load<__m128i>(units), notAscii), zero);
    const __m128i high = _mm_cmpeq_epi16(_mm_and_si128(Load<__m128i>(units + kBlock / 2), notAscii), zero);
    return static_cast<unsigned>(_mm_movemask_epi8(_mm_packs_epi16(low, high))) ^ 0xFFFF;
}

/// Sixteen bytes as units, each with its own value.
inline void StoreWide(wchar_t* target, __m128i bytes) {
    Store(target, _mm_unpacklo_epi8(bytes, _mm_setzero_si128()));
    Store(target + kBlock / 2, _mm_unpackhi_epi8(bytes, _mm_setzero_si128()));
}

/// Sixteen units as bytes; those that are not ASCII become anything.
inline void StoreNarrow(void* target, const wchar_t* units) {
    Store(target, _mm_packus_epi16(Load<__m128i>(units), Load<__m128i>(units + kBlock / 2)));
}

/// Sixteen bytes with the other case of the letters from "first" on, 'A' or 'a': those are the bytes that come out below a
/// limit when their range is moved to the lowest values, and the cases differ in one bit.
inline __m128i FlipLetters(__m128i bytes, char first) {
    const __m128i moved = _mm_add_epi8(bytes, _mm_set1_epi8(static_cast<char>(-128 - first)));
    const __m128i isLetter = _mm_cmplt_epi8(moved, _mm_set1_epi8(-128 + 26));
    return _mm_xor_si128(bytes, _mm_and_si128(isLetter, _mm_set1_epi8('a' ^ 'A')));
}

/// A bit for each of sixteen bytes of this value.
inline unsigned PlacesOf(__m128i bytes, char value) {
    return static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(bytes, _mm_set1_epi8(value))));
}

}  // namespace TarnLibA500::asciiblocks

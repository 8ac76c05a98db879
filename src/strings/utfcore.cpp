// The range conversions of CUTFConverter. Runs of ASCII go sixteen bytes at a time, characters of two and
// three bytes in loops of their own; everything else, and everything near an end, goes one character at a
// time.

#include <bit>
#include <cstring>

#include <emmintrin.h>

#include "tarnlib/UTFConverter.h"

namespace TarnLibA500 {
namespace {

using Result = CUTFConverter::Result;
using Mode = CUTFConverter::Mode;
using UCS4 = CUTFConverter::UCS4;
using Byte = unsigned char;

constexpr UCS4 kReplacement = 0xFFFD;
constexpr UCS4 kLastCode = 0x10FFFF;
constexpr UCS4 kAsciiEnd = 0x80;
constexpr UCS4 kTwoByteEnd = 0x800;
constexpr UCS4 kThreeByteEnd = 0x10000;
constexpr std::ptrdiff_t kBlock = 16;
constexpr unsigned kWholeBlock = 0xFFFF;

constexpr bool IsSurrogate(UCS4 code) {
    return (code & 0xFFFFF800) == 0xD800;
}
constexpr bool IsHighSurrogate(UCS4 code) {
    return (code & 0xFFFFFC00) == 0xD800;
}
constexpr bool IsLowSurrogate(UCS4 code) {
    return (code & 0xFFFFFC00) == 0xDC00;
}

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

// --- one character from a source; the source moves only when there is one ---

// Trailing bytes by the first byte's highest bits.
int TrailingBytes(Byte first) {
    if (first < 0xC0) return 0;
    if (first < 0xE0) return 1;
    if (first < 0xF0) return 2;
    if (first < 0xF8) return 3;
    return first < 0xFC ? 4 : 5;
}

// Table 3-7: which second bytes may follow a first byte. The others only have to be trailing bytes.
bool IsWellFormed(const Byte* at, int trailing) {
    if (at[0] < 0x80) return true;
    if (at[0] < 0xC2 || at[0] > 0xF4) return false;
    Byte low = 0x80;
    Byte high = 0xBF;
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

Result Decode(const Byte*& source, const Byte* end, UCS4& code, Mode) {
    const int trailing = TrailingBytes(*source);
    if (trailing >= end - source) return CUTFConverter::SourceExhausted;
    if (!IsWellFormed(source, trailing)) return CUTFConverter::SourceIllegal;
    code = trailing == 0 ? *source : static_cast<UCS4>(*source & (0x3F >> trailing));
    for (int i = 1; i <= trailing; ++i) code = code << 6 | (source[i] & 0x3FU);
    source += trailing + 1;
    return CUTFConverter::ConversionOK;
}

// A lone surrogate: refused, or replaced and stepped over.
template <class unit>
Result ReplaceOne(const unit*& source, UCS4& code, Mode mode) {
    if (mode == CUTFConverter::Strict) return CUTFConverter::SourceIllegal;
    code = kReplacement;
    ++source;
    return CUTFConverter::ConversionOK;
}

Result Decode(const wchar_t*& source, const wchar_t* end, UCS4& code, Mode mode) {
    code = *source;
    if (!IsSurrogate(code)) {
        ++source;
        return CUTFConverter::ConversionOK;
    }
    if (IsHighSurrogate(code) && end - source < 2) return CUTFConverter::SourceExhausted;
    if (!IsHighSurrogate(code) || !IsLowSurrogate(source[1])) return ReplaceOne(source, code, mode);
    code = 0x10000 + ((code & 0x3FF) << 10 | (source[1] & 0x3FFU));
    source += 2;
    return CUTFConverter::ConversionOK;
}

Result Decode(const UCS4*& source, const UCS4*, UCS4& code, Mode mode) {
    code = *source;
    if (IsSurrogate(code) || code > kLastCode) return ReplaceOne(source, code, mode);
    ++source;
    return CUTFConverter::ConversionOK;
}

// --- one character into a target; false when it does not fit ---

bool Encode(UCS4 code, Byte*& target, const Byte* end) {
    const int bytes = code < kAsciiEnd ? 1 : code < kTwoByteEnd ? 2 : code < kThreeByteEnd ? 3 : 4;
    if (end - target < bytes) return false;
    constexpr Byte kFirstMarks[] = {0, 0x00, 0xC0, 0xE0, 0xF0};
    for (int i = bytes - 1; i > 0; --i) {
        target[i] = static_cast<Byte>(0x80 | (code & 0x3F));
        code >>= 6;
    }
    target[0] = static_cast<Byte>(kFirstMarks[bytes] | code);
    target += bytes;
    return true;
}

bool Encode(UCS4 code, wchar_t*& target, const wchar_t* end) {
    const int units = code < kThreeByteEnd ? 1 : 2;
    if (end - target < units) return false;
    if (units == 2) {
        code -= 0x10000;
        *target++ = static_cast<wchar_t>(0xD800 | code >> 10);
        code = 0xDC00 | (code & 0x3FF);
    }
    *target++ = static_cast<wchar_t>(code);
    return true;
}

bool Encode(UCS4 code, UCS4*& target, const UCS4* end) {
    if (target == end) return false;
    *target++ = code;
    return true;
}

// --- runs ---
// They work on copies of the pointers: bytes that are written could otherwise be the pointers themselves, and
// the compiler would load and store those each time.

template <class From, class To>
struct Cursor {
    const From* source;
    const From* sourceEnd;
    To* target;
    To* targetEnd;

    std::ptrdiff_t left() const { return sourceEnd - source; }
    std::ptrdiff_t room() const { return targetEnd - target; }
};

std::uint16_t TwoBytes(UCS4 code) {
    return static_cast<std::uint16_t>(0x80C0 | code >> 6 | (code & 0x3F) << 8);
}
std::uint32_t ThreeBytes(UCS4 code) {
    return 0x8080E0 | code >> 12 | (code & 0xFC0) << 2 | (code & 0x3F) << 16;
}

// Four units in lanes of 32 bits, stored three bytes apart: each store overwrites the last byte of the one
// before.
void StoreThreeBytes(Byte* target, __m128i codes) {
    const __m128i first = _mm_srli_epi32(codes, 12);
    const __m128i second = _mm_slli_epi32(_mm_and_si128(codes, _mm_set1_epi32(0xFC0)), 2);
    const __m128i third = _mm_slli_epi32(_mm_and_si128(codes, _mm_set1_epi32(0x3F)), 16);
    const __m128i marks = _mm_set1_epi32(0x8080E0);
    __m128i lanes = _mm_or_si128(_mm_or_si128(first, second), _mm_or_si128(third, marks));
    for (int i = 0; i < 4; ++i, lanes = _mm_srli_si128(lanes, 4))
        Store(target + 3 * i, _mm_cvtsi128_si32(lanes));
}

constexpr std::ptrdiff_t kWideBlock = 8;
constexpr std::ptrdiff_t kWideBlockRoom = 3 * kWideBlock + 1;  // the last store writes a byte too many

// Blocks of eight units of which every one takes three bytes.
Cursor<wchar_t, Byte> ConvertThreeByteBlocks(Cursor<wchar_t, Byte> at) {
    const __m128i highBits = _mm_set1_epi16(static_cast<short>(0xF800));
    const __m128i surrogates = _mm_set1_epi16(static_cast<short>(0xD800));
    const __m128i zero = _mm_setzero_si128();
    while (at.left() >= kWideBlock && at.room() >= kWideBlockRoom) {
        const __m128i units = Load<__m128i>(at.source);
        const __m128i high = _mm_and_si128(units, highBits);
        const __m128i others = _mm_or_si128(_mm_cmpeq_epi16(high, zero), _mm_cmpeq_epi16(high, surrogates));
        if (_mm_movemask_epi8(others) != 0) break;
        StoreThreeBytes(at.target, _mm_unpacklo_epi16(units, zero));
        StoreThreeBytes(at.target + 12, _mm_unpackhi_epi16(units, zero));
        at.source += kWideBlock;
        at.target += 3 * kWideBlock;
    }
    return at;
}

// Whole blocks while they fit; ends at the first other character, or short of an end.
Cursor<Byte, wchar_t> ConvertAsciiRun(Cursor<Byte, wchar_t> at) {
    while (at.left() >= kBlock && at.room() >= kBlock) {
        const __m128i bytes = Load<__m128i>(at.source);
        Store(at.target, _mm_unpacklo_epi8(bytes, _mm_setzero_si128()));
        Store(at.target + kBlock / 2, _mm_unpackhi_epi8(bytes, _mm_setzero_si128()));
        const auto others = static_cast<unsigned>(_mm_movemask_epi8(bytes));
        if (others != 0) {
            const int ascii = std::countr_zero(others);
            at.source += ascii;
            at.target += ascii;
            break;
        }
        at.source += kBlock;
        at.target += kBlock;
    }
    return at;
}

// Takes single characters of two bytes in its stride: in Latin text leaving the loop for each costs more than
// the rest.
Cursor<wchar_t, Byte> ConvertAsciiRun(Cursor<wchar_t, Byte> at) {
    const __m128i otherBits = _mm_set1_epi16(static_cast<short>(0xFF80));
    while (at.left() >= kBlock && at.room() > kBlock) {
        const __m128i low = Load<__m128i>(at.source);
        const __m128i high = Load<__m128i>(at.source + kBlock / 2);
        const __m128i zero = _mm_setzero_si128();
        const __m128i lowIsAscii = _mm_cmpeq_epi16(_mm_and_si128(low, otherBits), zero);
        const __m128i highIsAscii = _mm_cmpeq_epi16(_mm_and_si128(high, otherBits), zero);
        Store(at.target, _mm_packus_epi16(low, high));
        const auto ascii = static_cast<unsigned>(_mm_movemask_epi8(_mm_packs_epi16(lowIsAscii, highIsAscii)));
        if (ascii != kWholeBlock) {
            const int run = std::countr_one(ascii);
            at.source += run;
            at.target += run;
            const UCS4 code = *at.source;
            if (code >= kTwoByteEnd) break;
            Store(at.target, TwoBytes(code));
            at.source += 1;
            at.target += 2;
            continue;
        }
        at.source += kBlock;
        at.target += kBlock;
    }
    return at;
}

// Characters of two and three bytes, four bytes looked at together.
Cursor<Byte, wchar_t> ConvertOtherRun(Cursor<Byte, wchar_t> at) {
    while (at.left() >= 4 && at.room() != 0) {
        const auto bytes = Load<std::uint32_t>(at.source);
        if ((bytes & 0x00C0C0F0) == 0x008080E0) {
            const UCS4 code = (bytes & 0x0F) << 12 | (bytes & 0x3F00) >> 2 | (bytes >> 16 & 0x3F);
            if (code < kTwoByteEnd || IsSurrogate(code)) break;
            *at.target++ = static_cast<wchar_t>(code);
            at.source += 3;
        } else if ((bytes & 0xC0E0) == 0x80C0 && (bytes & 0x1E) != 0) {
            *at.target++ = static_cast<wchar_t>((bytes & 0x1F) << 6 | (bytes >> 8 & 0x3F));
            at.source += 2;
        } else {
            break;
        }
    }
    return at;
}

Cursor<wchar_t, Byte> ConvertOtherRun(Cursor<wchar_t, Byte> at) {
    while (at.left() != 0 && at.room() >= 4) {
        const UCS4 code = *at.source;
        if (code < kAsciiEnd || IsSurrogate(code)) break;
        if (code < kTwoByteEnd) {
            Store(at.target, TwoBytes(code));
            at.target += 2;
            ++at.source;
        } else {
            Store(at.target, ThreeBytes(code));
            at.target += 3;
            ++at.source;
            at = ConvertThreeByteBlocks(at);
        }
    }
    return at;
}

template <class From, class To>
Result ConvertOne(const From*& source, const From* sourceEnd, To*& target, To* targetEnd, Mode mode) {
    UCS4 code = 0;
    const From* next = source;
    const Result result = Decode(next, sourceEnd, code, mode);
    if (result != CUTFConverter::ConversionOK) return result;
    if (!Encode(code, target, targetEnd)) return CUTFConverter::TargetExhausted;
    source = next;
    return CUTFConverter::ConversionOK;
}

template <class From, class To>
Result ConvertPlainly(const From*& source, const From* sourceEnd, To*& target, To* targetEnd, Mode mode) {
    Result result = CUTFConverter::ConversionOK;
    while (source < sourceEnd && result == CUTFConverter::ConversionOK) {
        result = ConvertOne(source, sourceEnd, target, targetEnd, mode);
    }
    return result;
}

template <class From, class To>
Result ConvertByRuns(const From*& source, const From* sourceEnd, To*& target, To* targetEnd, Mode mode) {
    Result result = CUTFConverter::ConversionOK;
    while (source < sourceEnd && result == CUTFConverter::ConversionOK) {
        const auto at =
            ConvertOtherRun(ConvertAsciiRun(Cursor<From, To>{source, sourceEnd, target, targetEnd}));
        const bool moved = at.source != source;
        source = at.source;
        target = at.target;
        if (!moved) result = ConvertOne(source, sourceEnd, target, targetEnd, mode);
    }
    return result;
}

}  // namespace

Result CUTFConverter::Convert(const unsigned char*& source, const unsigned char* sourceEnd, wchar_t*& target,
                              wchar_t* targetEnd, Mode mode) {
    return ConvertByRuns(source, sourceEnd, target, targetEnd, mode);
}
Result CUTFConverter::Convert(const wchar_t*& source, const wchar_t* sourceEnd, unsigned char*& target,
                              unsigned char* targetEnd, Mode mode) {
    return ConvertByRuns(source, sourceEnd, target, targetEnd, mode);
}
Result CUTFConverter::Convert(const unsigned char*& source, const unsigned char* sourceEnd, UCS4*& target,
                              UCS4* targetEnd, Mode mode) {
    return ConvertPlainly(source, sourceEnd, target, targetEnd, mode);
}
Result CUTFConverter::Convert(const wchar_t*& source, const wchar_t* sourceEnd, UCS4*& target,
                              UCS4* targetEnd, Mode mode) {
    return ConvertPlainly(source, sourceEnd, target, targetEnd, mode);
}
Result CUTFConverter::Convert(const UCS4*& source, const UCS4* sourceEnd, unsigned char*& target,
                              unsigned char* targetEnd, Mode mode) {
    return ConvertPlainly(source, sourceEnd, target, targetEnd, mode);
}
Result CUTFConverter::Convert(const UCS4*& source, const UCS4* sourceEnd, wchar_t*& target,
                              wchar_t* targetEnd, Mode mode) {
    return ConvertPlainly(source, sourceEnd, target, targetEnd, mode);
}

}  // namespace TarnLibA500

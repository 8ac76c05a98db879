// The range conversions. UTF-8 and UTF-16 go in blocks of sixteen bytes or units where a
// block holds nothing unusual; everything else, and everything near an end, goes one character at a time.

#include <algorithm>
#include <bit>
#include <cstring>

#include <emmintrin.h>

#include "strings/characters/asciiblocks.h"
#include "strings/characters/surrogates.h"
#include "strings/characters/utf.h"
#include "strings/characters/utf8form.h"

namespace TarnLibA500::utf {
namespace {

using namespace asciiblocks;
using Byte = unsigned char;

constexpr Code kReplacement = 0xFFFD;
constexpr Code kLastCode = 0x10FFFF;
constexpr Code kAsciiEnd = 0x80;
constexpr Code kTwoByteEnd = 0x800;
constexpr Code kThreeByteEnd = 0x10000;
constexpr unsigned kWholeBlock = 0xFFFF;

// --- one character from a source; the source moves only when there is one ---

Result Decode(const Byte*& source, const Byte* end, Code& code, Mode) {
    const int trailing = TrailingBytes(*source);
    if (trailing >= end - source) return Result::sourceExhausted;
    if (!IsWellFormed(source, trailing)) return Result::sourceIllegal;
    code = CodeOf(source, trailing);
    source += trailing + 1;
    return Result::converted;
}

// A lone surrogate: refused, or replaced and stepped over.
template <class unit>
Result ReplaceOne(const unit*& source, Code& code, Mode mode) {
    if (mode == Mode::strict) return Result::sourceIllegal;
    code = kReplacement;
    ++source;
    return Result::converted;
}

Result Decode(const wchar_t*& source, const wchar_t* end, Code& code, Mode mode) {
    code = *source;
    if (!IsSurrogate(code)) {
        ++source;
        return Result::converted;
    }
    if (IsHighSurrogate(code) && end - source < 2) return Result::sourceExhausted;
    if (!IsHighSurrogate(code) || !IsLowSurrogate(source[1])) return ReplaceOne(source, code, mode);
    code = PairCode(code, source[1]);
    source += 2;
    return Result::converted;
}

Result Decode(const Code*& source, const Code*, Code& code, Mode mode) {
    code = *source;
    if (IsSurrogate(code) || code > kLastCode) return ReplaceOne(source, code, mode);
    ++source;
    return Result::converted;
}

// --- one character into a target; false when it does not fit ---

bool Encode(Code code, Byte*& target, const Byte* end) {
    const int bytes = BytesOfCode(code);
    if (end - target < bytes) return false;
    WriteCode(code, target, bytes);
    target += bytes;
    return true;
}

bool Encode(Code code, wchar_t*& target, const wchar_t* end) {
    if (end - target < (code < kThreeByteEnd ? 1 : 2)) return false;
    target += WriteUnits(code, target);
    return true;
}

bool Encode(Code code, Code*& target, const Code* end) {
    if (target == end) return false;
    *target++ = code;
    return true;
}

template <class From, class To>
Result ConvertOne(const From*& source, const From* sourceEnd, To*& target, To* targetEnd, Mode mode) {
    Code code = 0;
    const From* next = source;
    const Result result = Decode(next, sourceEnd, code, mode);
    if (result != Result::converted) return result;
    if (!Encode(code, target, targetEnd)) return Result::targetExhausted;
    source = next;
    return Result::converted;
}

// --- blocks ---
// They work on copies of the pointers: bytes that are written could otherwise be the pointers themselves, and
// the compiler would load and store those each time. What is not inlined would otherwise take the few
// registers of the loop around it.

template <class From, class To>
struct Cursor {
    const From* source;
    const From* sourceEnd;
    To* target;
    To* targetEnd;

    std::ptrdiff_t left() const { return sourceEnd - source; }
    std::ptrdiff_t room() const { return targetEnd - target; }
};

// Characters of two bytes by their first two bytes, the first one low.
bool IsTwoByteCharacter(Code bytes) {
    return (bytes & 0xC0E0) == 0x80C0 && (bytes & 0x1E) != 0;
}
wchar_t UnitOfTwoBytes(Code bytes) {
    return static_cast<wchar_t>((bytes & 0x1F) << 6 | (bytes >> 8 & 0x3F));
}
std::uint16_t TwoBytes(Code code) {
    return static_cast<std::uint16_t>(0x80C0 | code >> 6 | (code & 0x3F) << 8);
}

std::uint32_t ThreeBytes(Code code) {
    return 0x8080E0 | code >> 12 | (code & 0xFC0) << 2 | (code & 0x3F) << 16;
}
std::uint32_t FourBytes(Code code) {
    return 0x808080F0 | code >> 18 | (code >> 4 & 0x3F00) | (code & 0xFC0) << 10 | (code & 0x3F) << 24;
}

__m128i Repeated(int unit) {
    return _mm_set1_epi16(static_cast<short>(unit));
}

// A block of ASCII with single characters of two bytes in between, of whose bytes each has a bit. All of it
// has been stored as if it were ASCII; what follows such a character is stored once more in its right place.
// The places come from the bits alone, so that nothing waits for the character before. Returns the end, null
// when a character is none.
[[gnu::noinline]] wchar_t* ConvertLatinBlock(const Byte* source, wchar_t* target, unsigned others,
                                             std::ptrdiff_t length) {
    while (others != 0) {
        const int place = std::countr_zero(others);
        const Code bytes = Load<std::uint16_t>(source + place);
        if (!IsTwoByteCharacter(bytes)) return nullptr;
        target[place] = UnitOfTwoBytes(bytes);
        StoreWide(target + place + 1, Load<__m128i>(source + place + 2));
        --target;
        others &= ~(3U << place);
    }
    return target + length;
}

Cursor<Byte, wchar_t> ConvertBlocks(Cursor<Byte, wchar_t> at) {
    // There are never more units than bytes, so one limit serves for both ends.
    const Byte* const limit = at.source + std::min(at.left(), at.room()) - 3 * kBlock;
    while (at.source <= limit) {
        const __m128i block = Load<__m128i>(at.source);
        StoreWide(at.target, block);
        const auto others = static_cast<unsigned>(_mm_movemask_epi8(block));
        if (others == 0) {
            at.source += kBlock;
            at.target += kBlock;
            continue;
        }
        const bool areSingle = (others & others >> 2) == 0;
        if (!areSingle) break;
        const bool reachesBeyond = others >> 14 == 2;  // the last byte is the first one of a character
        const std::ptrdiff_t length = kBlock + reachesBeyond;
        wchar_t* const end = ConvertLatinBlock(at.source, at.target, others, length);
        if (end == nullptr) break;
        at.source += length;
        at.target = end;
    }
    return at;
}

// The same the other way.
[[gnu::noinline]] Byte* ConvertLatinBlock(const wchar_t* source, Byte* target, unsigned others) {
    for (; others != 0; others &= others - 1) {
        const int place = std::countr_zero(others);
        Store(target + place, TwoBytes(source[place]));
        StoreNarrow(target + place + 2, source + place + 1);
        ++target;
    }
    return target + kBlock;
}

// One bit for each of sixteen units whose masked bits have this value.
unsigned UnitsWhere(const wchar_t* units, int mask, int value) {
    const __m128i low = _mm_and_si128(Load<__m128i>(units), Repeated(mask));
    const __m128i high = _mm_and_si128(Load<__m128i>(units + kBlock / 2), Repeated(mask));
    return static_cast<unsigned>(_mm_movemask_epi8(
        _mm_packs_epi16(_mm_cmpeq_epi16(low, Repeated(value)), _mm_cmpeq_epi16(high, Repeated(value)))));
}

// Eight characters of three bytes, in lanes of 32 bits.
struct EightLanes {
    __m128i low;
    __m128i high;
};
EightLanes ThreeBytes(__m128i units) {
    const __m128i second = _mm_and_si128(_mm_slli_epi16(units, 2), Repeated(0x3F00));
    const __m128i firstTwo = _mm_or_si128(_mm_or_si128(_mm_srli_epi16(units, 12), second), Repeated(0x80E0));
    const __m128i third = _mm_or_si128(_mm_and_si128(units, Repeated(0x3F)), Repeated(0x80));
    return {_mm_unpacklo_epi16(firstTwo, third), _mm_unpackhi_epi16(firstTwo, third)};
}

// Four such lanes without the gaps: each two are moved together in a lane of 64 bits. Writes ten bytes too
// many.
void StoreTwelveBytes(Byte* target, __m128i lanes) {
    const __m128i even = _mm_and_si128(lanes, _mm_set_epi32(0, -1, 0, -1));
    const __m128i odd = _mm_srli_epi64(_mm_xor_si128(lanes, even), 8);
    const __m128i both = _mm_or_si128(even, odd);
    Store(target, both);
    Store(target + 6, _mm_srli_si128(both, 8));
}

[[gnu::noinline]] Byte* ConvertThreeByteBlock(const wchar_t* source, Byte* target) {
    for (int i = 0; i < 2; ++i, source += kBlock / 2, target += 24) {
        const EightLanes lanes = ThreeBytes(Load<__m128i>(source));
        StoreTwelveBytes(target, lanes.low);
        StoreTwelveBytes(target + 12, lanes.high);
    }
    return target;
}

// Eight units, no surrogates, as the one to three bytes that they take, in lanes of 32 bits; and how many, in
// lanes of 16 bits.
__m128i StoreLanes(std::uint32_t* target, const wchar_t* source) {
    const __m128i units = Load<__m128i>(source);
    const __m128i zero = _mm_setzero_si128();
    const __m128i isAscii = _mm_cmpeq_epi16(_mm_and_si128(units, Repeated(0xFF80)), zero);
    const __m128i isSmall = _mm_cmpeq_epi16(_mm_and_si128(units, Repeated(0xF800)), zero);
    const __m128i second = _mm_slli_epi16(_mm_and_si128(units, Repeated(0x3F)), 8);
    const __m128i two = _mm_or_si128(_mm_or_si128(_mm_srli_epi16(units, 6), second), Repeated(0x80C0));
    const __m128i ascii = _mm_and_si128(isAscii, units);
    const __m128i small = _mm_and_si128(isSmall, _mm_or_si128(ascii, _mm_andnot_si128(isAscii, two)));
    const EightLanes three = ThreeBytes(units);
    const __m128i large[] = {_mm_andnot_si128(_mm_unpacklo_epi16(isSmall, isSmall), three.low),
                             _mm_andnot_si128(_mm_unpackhi_epi16(isSmall, isSmall), three.high)};
    Store(target, _mm_or_si128(_mm_unpacklo_epi16(small, zero), large[0]));
    Store(target + 4, _mm_or_si128(_mm_unpackhi_epi16(small, zero), large[1]));
    return _mm_add_epi16(Repeated(3), _mm_add_epi16(isAscii, isSmall));
}

// A block of units, no surrogates, without a branch. Writes three bytes too many.
[[gnu::noinline]] Byte* ConvertMixedBlock(const wchar_t* source, Byte* target) {
    std::uint32_t lanes[kBlock];
    std::uint16_t lengths[kBlock];
    Store(lengths, StoreLanes(lanes, source));
    Store(lengths + kBlock / 2, StoreLanes(lanes + kBlock / 2, source + kBlock / 2));
#pragma GCC unroll 16
    for (int i = 0; i < kBlock; ++i) {
        Store(target, lanes[i]);
        target += lengths[i];
    }
    return target;
}

Cursor<wchar_t, Byte> ConvertBlocks(Cursor<wchar_t, Byte> at) {
    for (; at.left() >= 2 * kBlock && at.room() >= 4 * kBlock; at.source += kBlock) {
        StoreNarrow(at.target, at.source);
        const unsigned others = OthersIn(at.source);
        if (others == 0) {
            at.target += kBlock;
            continue;
        }
        const unsigned large = UnitsWhere(at.source, 0xF800, 0) ^ kWholeBlock;
        if (large != 0 && UnitsWhere(at.source, 0xF800, 0xD800) != 0) break;
        const bool areSingle = (others & others >> 1) == 0;
        if (large == kWholeBlock) {
            at.target = ConvertThreeByteBlock(at.source, at.target);
        } else if (large == 0 && areSingle) {
            at.target = ConvertLatinBlock(at.source, at.target, others);
        } else {
            at.target = ConvertMixedBlock(at.source, at.target);
        }
    }
    return at;
}

// Some characters of any kind, one at a time. Ends before one that is not well-formed, and near an end. The
// one limit keeps four bytes to look at and two units of room, for there are never more units than bytes.
Cursor<Byte, wchar_t> ConvertSomeCharacters(Cursor<Byte, wchar_t> at) {
    const Byte* const limit = at.source + std::min({at.left() - 3, at.room() - 1, 3 * kBlock});
    while (at.source < limit) {
        const auto bytes = Load<std::uint32_t>(at.source);
        if ((bytes & 0x00C0C0F0) == 0x008080E0) {
            const Code code = (bytes & 0x0F) << 12 | (bytes & 0x3F00) >> 2 | (bytes >> 16 & 0x3F);
            if (code < kTwoByteEnd || IsSurrogate(code)) break;
            *at.target++ = static_cast<wchar_t>(code);
            at.source += 3;
        } else if ((bytes & 0x80) == 0) {
            *at.target++ = static_cast<wchar_t>(bytes & 0x7F);
            at.source += 1;
        } else if (IsTwoByteCharacter(bytes)) {
            *at.target++ = UnitOfTwoBytes(bytes);
            at.source += 2;
        } else if ((bytes & 0xC0C0C0F8) == 0x808080F0) {
            const Code code =
                (bytes & 0x07) << 18 | (bytes & 0x3F00) << 4 | (bytes >> 10 & 0xFC0) | (bytes >> 24 & 0x3F);
            if (code < kThreeByteEnd || code > kLastCode) break;
            at.target[0] = HighSurrogate(code);
            at.target[1] = LowSurrogate(code);
            at.target += 2;
            at.source += 4;
        } else {
            break;
        }
    }
    return at;
}

// The one limit keeps two units to look at and room for four bytes; a unit takes three bytes at most.
Cursor<wchar_t, Byte> ConvertSomeCharacters(Cursor<wchar_t, Byte> at) {
    const wchar_t* const limit = at.source + std::min({at.left() - 1, (at.room() - 1) / 3, kBlock});
    for (; at.source < limit; ++at.source) {
        const Code code = *at.source;
        if (code < kAsciiEnd) {
            *at.target++ = static_cast<Byte>(code);
        } else if (code < kTwoByteEnd) {
            Store(at.target, TwoBytes(code));
            at.target += 2;
        } else if (!IsSurrogate(code)) {
            Store(at.target, ThreeBytes(code));
            at.target += 3;
        } else if (IsHighSurrogate(code) && IsLowSurrogate(at.source[1])) {
            Store(at.target, FourBytes(PairCode(code, at.source[1])));
            at.target += 4;
            ++at.source;
        } else {
            break;
        }
    }
    return at;
}

template <class From, class To>
Result ConvertPlainly(const From*& source, const From* sourceEnd, To*& target, To* targetEnd, Mode mode) {
    Result result = Result::converted;
    while (source < sourceEnd && result == Result::converted) {
        result = ConvertOne(source, sourceEnd, target, targetEnd, mode);
    }
    return result;
}

template <class From, class To>
Result ConvertByBlocks(const From*& source, const From* sourceEnd, To*& target, To* targetEnd, Mode mode) {
    Result result = Result::converted;
    while (source < sourceEnd && result == Result::converted) {
        const auto at =
            ConvertSomeCharacters(ConvertBlocks(Cursor<From, To>{source, sourceEnd, target, targetEnd}));
        const bool moved = at.source != source;
        source = at.source;
        target = at.target;
        if (!moved) result = ConvertOne(source, sourceEnd, target, targetEnd, mode);
    }
    return result;
}

}  // namespace

Result Convert(const unsigned char*& source, const unsigned char* sourceEnd, wchar_t*& target,
               wchar_t* targetEnd, Mode mode) {
    return ConvertByBlocks(source, sourceEnd, target, targetEnd, mode);
}
Result Convert(const wchar_t*& source, const wchar_t* sourceEnd, unsigned char*& target,
               unsigned char* targetEnd, Mode mode) {
    return ConvertByBlocks(source, sourceEnd, target, targetEnd, mode);
}
Result Convert(const unsigned char*& source, const unsigned char* sourceEnd, Code*& target, Code* targetEnd,
               Mode mode) {
    return ConvertPlainly(source, sourceEnd, target, targetEnd, mode);
}
Result Convert(const wchar_t*& source, const wchar_t* sourceEnd, Code*& target, Code* targetEnd, Mode mode) {
    return ConvertPlainly(source, sourceEnd, target, targetEnd, mode);
}
Result Convert(const Code*& source, const Code* sourceEnd, unsigned char*& target, unsigned char* targetEnd,
               Mode mode) {
    return ConvertPlainly(source, sourceEnd, target, targetEnd, mode);
}
Result Convert(const Code*& source, const Code* sourceEnd, wchar_t*& target, wchar_t* targetEnd, Mode mode) {
    return ConvertPlainly(source, sourceEnd, target, targetEnd, mode);
}

}  // namespace TarnLibA500::utf

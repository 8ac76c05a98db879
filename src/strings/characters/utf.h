#pragma once

#include <cstdint>

/// UTF-8, UTF-16 and UTF-32 into each other, below the strings; CUTFConverter gives it to clients and says what the results
/// and modes mean.
namespace TarnLibA500::utf {

using Code = unsigned int;

/// CUTFConverter::Result.
enum class Result { converted, sourceExhausted, targetExhausted, sourceIllegal };
/// CUTFConverter::Mode.
enum class Mode { strict, lenient };

/// Both pointers are advanced past what was converted; nothing is terminated.
Result Convert(const unsigned char*& source, const unsigned char* sourceEnd, wchar_t*& target,
               wchar_t* targetEnd, Mode mode = Mode::lenient);
Result Convert(const unsigned char*& source, const unsigned char* sourceEnd, Code*& target, Code* targetEnd,
               Mode mode = Mode::lenient);
Result Convert(const wchar_t*& source, const wchar_t* sourceEnd, unsigned char*& target,
               unsigned char* targetEnd, Mode mode = Mode::lenient);
Result Convert(const wchar_t*& source, const wchar_t* sourceEnd, Code*& target, Code* targetEnd,
               Mode mode = Mode::lenient);
Result Convert(const Code*& source, const Code* sourceEnd, unsigned char*& target, unsigned char* targetEnd,
               Mode mode = Mode::lenient);
Result Convert(const Code*& source, const Code* sourceEnd, wchar_t*& target, wchar_t* targetEnd,
               Mode mode = Mode::lenient);

/// Bytes of UTF-8 for the first "units" units of a text, without a terminator.
std::uint32_t BytesOf(const wchar_t* text, std::uint32_t units);
/// The same, every unit taken for itself, so that a surrogate pair counts 6 instead of 4.
std::uint32_t BytesOfSingleUnits(const wchar_t* text, std::uint32_t units);
/// The same with "?", one byte, for every surrogate that belongs to no pair.
std::uint32_t BytesWithReplacements(const wchar_t* text, std::uint32_t units);

/// A whole text, leniently: a high surrogate at its end is unpaired, not the start of more to come. False for illegal UTF-8
/// and for want of room.
template <class From, class To>
bool ConvertWhole(const From* source, const From* sourceEnd, To*& target, To* targetEnd) {
    const Result result = Convert(source, sourceEnd, target, targetEnd);
    if constexpr (sizeof(From) == sizeof(wchar_t)) {
        if (result == Result::sourceExhausted) {
            constexpr wchar_t kReplacement = 0xFFFD;
            const wchar_t* replacement = &kReplacement;
            return Convert(replacement, replacement + 1, target, targetEnd) == Result::converted;
        }
    }
    return result == Result::converted;
}

}  // namespace TarnLibA500::utf

#pragma once

#include <cstdint>

#include "tarnlib/sstring.h"

/// The conversions of each string flavour, which the strings' to... and from... members call. "text" is the
/// string's characters (zero-terminated), "length" their code units; sizes are in bytes, counts in code units
/// of the source.
namespace TarnLibA500 {

template <class unit, int flavour>
struct FlavourConvert {
    using String = SString_t<unit, flavour>;

    static int toAscii(const unit* text, std::uint32_t length, char* out, std::uint32_t nBytesInBuffer);
    static int toMBCS(const unit* text, std::uint32_t length, char* out, std::uint32_t nBytesInBuffer);
    static int toWide(const unit* text, std::uint32_t length, wchar_t* out, std::uint32_t nBytesInBuffer);
    static int toUTF8(const unit* text, std::uint32_t length, char* out, std::uint32_t nBytesInBuffer);

    static std::uint32_t getNBytesForAscii(const unit* text, std::uint32_t length);
    static std::uint32_t getNBytesForMBCS(const unit* text, std::uint32_t length);
    static std::uint32_t getNBytesForWide(const unit* text, std::uint32_t length);
    static std::uint32_t getNBytesForUTF8(const unit* text, std::uint32_t length);

    static bool fromAscii(String& target, const char* text, std::uint32_t count);
    static bool fromMBCS(String& target, const char* text, std::uint32_t count);
    static bool fromOCA(String& target, const wchar_t* text, std::uint32_t count);
    static bool fromWChar(String& target, const wchar_t* text, std::uint32_t count);
    static bool fromUTF8(String& target, const char* text, std::uint32_t nBytes);
};

}  // namespace TarnLibA500

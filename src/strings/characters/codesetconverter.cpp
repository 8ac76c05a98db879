#include "tarnlib/codesetconverter.h"

#include <cstring>
#include <cwchar>
#include <limits>

#include "diag/assert/require.h"
#include "strings/base/bytesearch.h"
#include "strings/characters/codepagetext.h"

namespace TarnLibA500 {
namespace {

using mbchar::CodePage;

constexpr const char* kUnit = "codesetconverter";

// As much of a text as the room can take, so that a long text is not measured for a short output.
const char* EndOfUnits(const char* in, std::uint32_t units) {
    constexpr std::size_t kMostBytes = std::numeric_limits<std::size_t>::max();
    constexpr std::size_t kMostOfUnit = mbchar::kLongestCharacter;
    return in + LengthUpTo(in, units < kMostBytes / kMostOfUnit ? kMostOfUnit * units : kMostBytes);
}

}  // namespace

int CodesetConverter::mbstoucs2(wchar_t* out, const char* in, std::uint32_t maxUnits) {
    if (!Require(in != nullptr, kUnit, "inBuffer != 0")) return 0;
    const CodePage& page = CodePage::Current();
    if (out == nullptr) return static_cast<int>(mbchar::CountUnits(page, in, in + std::strlen(in)));
    const std::uint32_t units = mbchar::Decode(page, in, EndOfUnits(in, maxUnits), out, maxUnits);
    if (units < maxUnits) out[units] = L'\0';
    return static_cast<int>(units);
}

int CodesetConverter::mbtoucs2(wchar_t* out, const char* in) {
    if (!Require(in != nullptr, kUnit, "inBuffer != 0")) return 0;
    wchar_t ignored = 0;
    return CodePage::Current().toWide(out != nullptr ? *out : ignored, in);
}

int CodesetConverter::ucs2tombs(char* out, const wchar_t* in, std::uint32_t nBytes) {
    if (!Require(in != nullptr, kUnit, "inBuffer != 0")) return 0;
    const CodePage& page = CodePage::Current();
    const wchar_t* const end = in + std::wcslen(in);
    if (out == nullptr) return static_cast<int>(mbchar::CountBytes(page, in, end));
    const std::uint32_t used = mbchar::Encode(page, in, end, out, nBytes);
    if (in != end) {
        std::memset(out + used, mbchar::kReplacement, nBytes - used);
        return static_cast<int>(nBytes);
    }
    if (used < nBytes) out[used] = '\0';
    return static_cast<int>(used);
}

int CodesetConverter::ucs2tomb(char* out, std::uint32_t nBytes, wchar_t in) {
    char bytes[mbchar::kMaxCharacterBytes];
    const int count = CodePage::Current().fromWide(bytes, in);
    if (count < 0 || (out != nullptr && static_cast<std::uint32_t>(count) > nBytes)) return -1;
    if (out != nullptr) std::memcpy(out, bytes, static_cast<std::size_t>(count));
    return count;
}

int CodesetConverter::ucs2towc(wchar_t* out, wchar_t in) {
    if (out != nullptr) *out = in;
    return 1;
}

int CodesetConverter::wctoucs2(wchar_t* out, wchar_t in) {
    return ucs2towc(out, in);
}

int CodesetConverter::ucs2towcs(wchar_t* out, const wchar_t* in, std::uint32_t maxUnits) {
    if (!Require(in != nullptr, kUnit, "inBuffer != 0")) return 0;
    std::uint32_t units = 0;
    for (; in[units] != L'\0' && (out == nullptr || units < maxUnits); ++units) {
        if (out != nullptr) out[units] = in[units];
    }
    if (out != nullptr && units < maxUnits) out[units] = L'\0';
    return static_cast<int>(units);
}

int CodesetConverter::wcstoucs2(wchar_t* out, const wchar_t* in, std::uint32_t maxUnits) {
    return ucs2towcs(out, in, maxUnits);
}

}  // namespace TarnLibA500

#include "tarnlib/codesetconverter.h"

#include <cstring>

#include "diag/require.h"
#include "strings/mbchar.h"

namespace TarnLibA500 {
namespace {

using mbchar::CodePage;

constexpr const char* kUnit = "codesetconverter";

// The bytes of a unit, "?" when it has none.
int EncodeOrReplace(const CodePage& page, char* bytes, wchar_t unit) {
    const int count = page.fromWide(bytes, unit);
    if (count > 0) return count;
    bytes[0] = mbchar::kReplacement;
    return 1;
}

std::uint32_t BytesNeeded(const CodePage& page, const wchar_t* in) {
    char bytes[mbchar::kMaxCharacterBytes];
    std::uint32_t needed = 0;
    for (; *in != L'\0'; ++in) needed += static_cast<std::uint32_t>(EncodeOrReplace(page, bytes, *in));
    return needed;
}

}  // namespace

int CodesetConverter::mbstoucs2(wchar_t* out, const char* in, std::uint32_t maxUnits) {
    if (!Require(in != nullptr, kUnit, "inBuffer != 0")) return 0;
    const CodePage& page = CodePage::Current();
    if (out == nullptr) return static_cast<int>(mbchar::CountCharacters(page, in));
    std::uint32_t units = 0;
    while (units < maxUnits && *in != '\0') {
        const int bytes = page.toWide(out[units], in);
        if (bytes < 0) out[units] = mbchar::kReplacement;
        in += bytes < 0 ? 1 : bytes;
        ++units;
    }
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
    if (out == nullptr) return static_cast<int>(BytesNeeded(page, in));
    std::uint32_t used = 0;
    for (; *in != L'\0'; ++in) {
        char bytes[mbchar::kMaxCharacterBytes];
        const auto count = static_cast<std::uint32_t>(EncodeOrReplace(page, bytes, *in));
        if (count > nBytes - used) {
            std::memset(out + used, mbchar::kReplacement, nBytes - used);
            return static_cast<int>(nBytes);
        }
        std::memcpy(out + used, bytes, count);
        used += count;
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

#include "system/systemtext.h"

#include <algorithm>
#include <cstring>
#include <cwchar>
#include <utility>

#include "seam/ostext.h"
#include "strings/characters/mbchar.h"
#include "strings/characters/surrogates.h"
#include "strings/text/stringbuilder.h"
#include "tarnlib/UTFConverter.h"
#include "tarnlib/snarrowtext.h"
#include "tarnlib/sstringconv.h"

#include <windows.h>

namespace TarnLibA500 {
namespace {

// A text goes to the code page a piece at a time.
constexpr std::ptrdiff_t kPieceUnits = 256;

// How many bytes the character at the text has, with its unit; 0 when there is none.
int DecodeOne(const mbchar::CodePage& page, const char* text, wchar_t& unit) {
    return std::max(page.toWide(unit, text), 0);
}

// How many bytes are written; 0 when there is no character that means this very unit when it is read.
int EncodeOne(const mbchar::CodePage& page, wchar_t unit, char* out) {
    const int bytes = page.fromWide(out, unit);
    wchar_t meaning = 0;
    return bytes > 0 && page.toWide(meaning, out) == bytes && meaning == unit ? bytes : 0;
}

wchar_t* Decode(const mbchar::CodePage& page, const char* text, wchar_t* out, bool& isExact) {
    for (; *text != '\0'; ++out) {
        const int bytes = DecodeOne(page, text, *out);
        if (bytes == 0) *out = mbchar::kReplacement;
        isExact = isExact && bytes != 0;
        text += bytes != 0 ? bytes : 1;
    }
    return out;
}

char* Encode(const mbchar::CodePage& page, const wchar_t* text, const wchar_t* end, char* out,
             bool& isExact) {
    for (; text != end; ++text) {
        const int bytes = EncodeOne(page, *text, out);
        if (bytes == 0) *out = mbchar::kReplacement;
        isExact = isExact && bytes != 0;
        out += bytes != 0 ? bytes : 1;
    }
    return out;
}

wchar_t* DecodeUtf8(const char* text, const char* end, wchar_t* out, bool& isExact) {
    const auto* at = reinterpret_cast<const unsigned char*>(text);
    const auto* const last = reinterpret_cast<const unsigned char*>(end);
    wchar_t* const outEnd = out + (last - at);
    while (CUTFConverter::Convert(at, last, out, outEnd) != CUTFConverter::ConversionOK) {
        *out++ = mbchar::kReplacement;
        ++at;
        isExact = false;
    }
    return out;
}

char* EncodeUtf8(const wchar_t* text, const wchar_t* end, char* out, bool& isExact) {
    constexpr std::ptrdiff_t kMostBytes = 3;  // of a unit; a pair has four
    auto* at = reinterpret_cast<unsigned char*>(out);
    unsigned char* const outEnd = at + (end - text) * kMostBytes;
    while (CUTFConverter::Convert(text, end, at, outEnd, CUTFConverter::Strict) !=
           CUTFConverter::ConversionOK) {
        *at++ = mbchar::kReplacement;
        ++text;
        isExact = false;
    }
    return reinterpret_cast<char*>(at);
}

unsigned PageOfNames() {
    return SNarrowText::IsUtf8() ? CP_UTF8 : ostext::AnsiPage();
}

// The end of a piece, which does not part a surrogate pair.
const wchar_t* PieceEnd(const wchar_t* at, const wchar_t* end) {
    if (end - at <= kPieceUnits) return end;
    return at + kPieceUnits - (utf::IsHighSurrogate(at[kPieceUnits - 1]) ? 1 : 0);
}

// A page that is null is UTF-8.
bool FromUtf16(const wchar_t* text, const mbchar::CodePage* page, SAnsiString& narrow) {
    const wchar_t* const end = text + std::wcslen(text);
    bool isExact = true;
    SAnsiString built;
    built.setSize(static_cast<std::uint32_t>(end - text));
    while (text != end) {
        const wchar_t* const pieceEnd = PieceEnd(text, end);
        char bytes[kPieceUnits * 3];
        char* const last = page == nullptr ? EncodeUtf8(text, pieceEnd, bytes, isExact)
                                           : Encode(*page, text, pieceEnd, bytes, isExact);
        built.concat(bytes, static_cast<std::uint32_t>(last - bytes));
        text = pieceEnd;
    }
    narrow = std::move(built);
    return isExact;
}

// In the page that narrow text has at present.
bool ToNarrowExactly(const wchar_t* text, SAnsiString& narrow) {
    const mbchar::CodePage& page = mbchar::CodePage::Current();
    return FromUtf16(text, page.isUtf8() ? nullptr : &page, narrow);
}

}  // namespace

bool ToUtf16(const SAnsiString& text, unsigned codePage, SWCharString& wide) {
    const char* const bytes = text.getString();
    const auto count = static_cast<std::uint32_t>(std::strlen(bytes));
    bool isExact = count == text.getLength();
    StringBuilder<wchar_t, 1> units(count);  // no character is more units than it has bytes
    wchar_t* const end = codePage == CP_UTF8
                             ? DecodeUtf8(bytes, bytes + count, units.units(), isExact)
                             : Decode(mbchar::CodePage::Of(codePage), bytes, units.units(), isExact);
    units.cut(static_cast<std::uint32_t>(end - units.units()));
    wide = units;
    return isExact;
}

bool FromUtf16(const wchar_t* text, unsigned codePage, SAnsiString& narrow) {
    return FromUtf16(text, codePage == CP_UTF8 ? nullptr : &mbchar::CodePage::Of(codePage), narrow);
}

bool ToSystemExactly(const SAnsiString& text, SWCharString& wide) {
    return ToUtf16(text, PageOfNames(), wide);
}

bool FromSystemExactly(const wchar_t* text, SAnsiString& narrow) {
    return FromUtf16(text, PageOfNames(), narrow);
}

SWCharString ToSystem(const SAnsiString& text) {
    SWCharString wide;
    ToSystemExactly(text, wide);
    return wide;
}

SAnsiString FromSystem(const wchar_t* text) {
    SAnsiString narrow;
    FromSystemExactly(text, narrow);
    return narrow;
}

bool FindSystemErrorText(unsigned long code, SAnsiString& text) {
    constexpr DWORD kMaxText = 500;
    for (const DWORD language : {DWORD{MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT)},
                                 DWORD{MAKELANGID(LANG_ENGLISH, SUBLANG_ENGLISH_US)}}) {
        wchar_t units[kMaxText];
        SAnsiString narrow;
        if (ostext::ErrorText(code, language, units, kMaxText) == 0 || !ToNarrowExactly(units, narrow))
            continue;
        text = std::move(narrow);
        return true;
    }
    return false;
}

SAnsiString SystemErrorText(unsigned long code) {
    SAnsiString text;
    if (FindSystemErrorText(code, text)) return text.trimRight();
    return SAnsiString("system error ") + SStringConv::ToString(code);
}

}  // namespace TarnLibA500

#include "strings/text/flavourconvert.h"

#include <algorithm>
#include <cstring>

#include "diag/assert/require.h"
#include "strings/base/bytesearch.h"
#include "strings/characters/codepagetext.h"
#include "strings/characters/utf.h"
#include "strings/characters/utf8text.h"
#include "strings/text/stringbuilder.h"
#include "strings/text/utftext.h"
#include "tarnlib/codesetconverter.h"

namespace TarnLibA500 {
namespace {

constexpr const char* kUnit = "sstring";
constexpr const char* kNoInput = "inBuffer != 0";
constexpr const char* kNoOutput = "outBuffer != 0";
constexpr const char* kNoUTF8Output = "outBuffer!=NULL";
constexpr const char* kNotAsciiHere = "Not a valid ASCII string in SString";
constexpr const char* kNotAsciiInMBCS = "Not a valid ASCII string in MBCS";
constexpr const char* kNotAsciiInOCA = "Not a valid ASCII string in OCA";
constexpr const char* kNotAsciiInWChar = "Not a valid ASCII string in WChar";

constexpr int kFailed = -1;
constexpr std::uint32_t kUpToTerminator = 0xFFFFFFFF;
constexpr unsigned kAsciiEnd = 0x80;
constexpr std::uint32_t kUnitBytes = sizeof(wchar_t);
constexpr std::uint32_t kMostUtf8Bytes = 3;  // of a byte of narrow text

using Ansi = SString_t<char, 0>;
using Ascii = SString_t<char, 1>;
using Wide = SString_t<wchar_t, 1>;
using mbchar::CodePage;

template <class unit>
bool IsAscii(unit character) {
    return static_cast<std::make_unsigned_t<unit>>(character) < kAsciiEnd;
}

// The units of a source: as many as are said, or up to its terminator. A null source is reported and counts as
// empty.
template <class unit>
std::uint32_t SourceLength(const unit* text, std::uint32_t count) {
    if (!Require(text != nullptr, kUnit, kNoInput)) return 0;
    if (count != kUpToTerminator) return count;
    return static_cast<std::uint32_t>(std::char_traits<unit>::length(text));
}

// Writes the text with its terminator when there is room for both.
template <class unit>
int WriteText(const unit* text, std::uint32_t length, unit* out, std::uint32_t nBytesInBuffer) {
    if (!Require(out != nullptr, kUnit, kNoOutput)) return kFailed;
    if (nBytesInBuffer / sizeof(unit) <= length) return kFailed;
    std::memcpy(out, text, std::size_t{length} * sizeof(unit));
    out[length] = unit();
    return static_cast<int>(length + 1);
}

// Leaves what is there in the target until the new text is whole: the source may lie in it.
template <class String>
bool Take(String& target, const String& text) {
    target = text;
    return true;
}

// --- narrow text and UTF-16 ---

Wide WideFromMBCS(const char* text, std::uint32_t count) {
    const CodePage& page = CodePage::Current();
    const char* const end = text + count;
    // UTF-8 is not read twice: there are never more units than bytes.
    StringBuilder<wchar_t, 1> built(page.isUtf8() ? count : mbchar::CountUnits(page, text, end));
    built.cut(mbchar::Decode(page, text, end, built.units(), built.room()));
    return built;
}

Ansi MBCSFromWide(const wchar_t* text, std::uint32_t count) {
    const CodePage& page = CodePage::Current();
    const wchar_t* const end = text + count;
    StringBuilder<char, 0> built(mbchar::CountBytes(page, text, end));
    built.cut(mbchar::Encode(page, text, end, built.units(), built.room()));
    return built;
}

/// A string's text as it is converted: up to the first zero byte, by the page of the moment. The process
/// may set another one while the text is measured and written.
class NarrowText {
  public:
    NarrowText(const char* text, std::uint32_t length)
        : text_(text), end_(FindByte(text, text + length, '\0')) {}

    std::uint32_t characters() const { return mbchar::CountCharacters(page_, text_, end_); }
    std::uint32_t units() const { return mbchar::CountUnits(page_, text_, end_); }
    std::uint32_t write(wchar_t* out, std::uint32_t room) const {
        const char* at = text_;
        return mbchar::Decode(page_, at, end_, out, room);
    }
    // "?" for every character that is not ASCII.
    char* writeAscii(char* out) const {
        for (const char* at = text_; at < end_; ++out) {
            const mbchar::Character character = page_.characterAt(at, end_);
            *out = character.code < kAsciiEnd ? static_cast<char>(character.code) : mbchar::kReplacement;
            at += character.bytes;
        }
        return out;
    }
    // In UTF-8 every byte stays, or becomes "?".
    std::uint32_t utf8Bytes() const {
        if (page_.isUtf8()) return static_cast<std::uint32_t>(end_ - text_);
        std::uint32_t bytes = 0;
        forEachPiece([&](const wchar_t* units, std::uint32_t count) { bytes += utf::BytesOf(units, count); });
        return bytes;
    }
    // Into room for all of it; returns the end.
    char* writeUtf8(char* out) const {
        if (page_.isUtf8()) return copyValid(out);
        forEachPiece([&](const wchar_t* units, std::uint32_t count) {
            auto* end = reinterpret_cast<unsigned char*>(out);
            utf::ConvertWhole(units, units + count, end, end + utf::BytesOf(units, count));
            out = reinterpret_cast<char*>(end);
        });
        return out;
    }

  private:
    char* copyValid(char* out) const {
        std::memcpy(out, text_, static_cast<std::size_t>(end_ - text_));
        char* const end = out + (end_ - text_);
        for (const char* at = text_; (at = utf8text::FindInvalid(at, end_)) != end_; ++at)
            out[at - text_] = mbchar::kReplacement;
        return end;
    }
    // Hands the text on as UTF-16, a piece at a time: reading a string allocates nothing.
    template <class Use>
    void forEachPiece(Use use) const {
        constexpr std::uint32_t kPieceUnits = 256;
        wchar_t piece[kPieceUnits];
        for (const char* at = text_; at < end_;) {
            const std::uint32_t units = mbchar::Decode(page_, at, end_, piece, kPieceUnits);
            use(piece, units);
        }
    }

    const CodePage& page_ = CodePage::Current();
    const char* const text_;
    const char* const end_;
};

// --- UTF-8 ---

// UTF-8 with a terminator; the bytes before it, or -1 when they do not fit.
int WriteUTF8(const wchar_t* text, std::uint32_t length, char* out, std::uint32_t nBytesInBuffer) {
    if (!Require(out != nullptr, kUnit, kNoUTF8Output)) return kFailed;
    const std::uint32_t needed = utf::BytesOf(text, length) + 1;
    if (needed > nBytesInBuffer) return kFailed;
    auto* const first = reinterpret_cast<unsigned char*>(out);
    unsigned char* const room = first + needed;  // the size that was given may lead beyond the address space
    unsigned char* end = first;
    utf::ConvertWhole(text, text + length, end, room);
    *end = 0;
    return static_cast<int>(end - first);
}

bool WideFromUTF8(const char* text, std::uint32_t nBytes, SOCAString& wide) {
    const std::uint32_t length = SourceLength(text, nBytes);
    return length == 0 || DecodeUTF8(text, length, wide);
}

// What is not legal as a whole is not taken, as in the other pages.
bool TakeUtf8(Ansi& target, const char* text, std::uint32_t length) {
    const bool isLegal = utf8text::FindInvalid(text, text + length) == text + length;
    Take(target, isLegal ? Ansi(text, length) : Ansi());
    return isLegal;
}

// --- ASCII ---

// "?" for every unit that is not ASCII.
void WriteAscii(const wchar_t* units, std::uint32_t count, char* out) {
    for (std::uint32_t i = 0; i < count; ++i)
        out[i] = IsAscii(units[i]) ? static_cast<char>(units[i]) : mbchar::kReplacement;
}

template <class unit>
bool TakeAscii(Ascii& target, const unit* text, std::uint32_t count, const char* complaint) {
    const std::uint32_t length = SourceLength(text, count);
    for (std::uint32_t i = 0; i < length; ++i) {
        if (!Require(IsAscii(text[i]), kUnit, complaint)) return false;
    }
    Ascii taken;
    taken.concatFromAsciiCharacters(text, length);
    return Take(target, taken);
}

}  // namespace

// ----------------------------------------------------------------------------------------------- SAnsiString

template <>
std::uint32_t FlavourConvert<char, 0>::getNBytesForWide(const char* text, std::uint32_t length) {
    return (NarrowText(text, length).units() + 1) * kUnitBytes;
}

template <>
std::uint32_t FlavourConvert<char, 0>::getNBytesForAscii(const char* text, std::uint32_t length) {
    return NarrowText(text, length).characters() + 1;
}

template <>
std::uint32_t FlavourConvert<char, 0>::getNBytesForMBCS(const char*, std::uint32_t length) {
    return length + 1;
}

template <>
std::uint32_t FlavourConvert<char, 0>::getNBytesForUTF8(const char* text, std::uint32_t length) {
    return NarrowText(text, length).utf8Bytes() + 1;
}

template <>
int FlavourConvert<char, 0>::toAscii(const char* text, std::uint32_t length, char* out,
                                     std::uint32_t nBytesInBuffer) {
    if (!Require(out != nullptr, kUnit, kNoOutput)) return kFailed;
    const NarrowText source(text, length);
    if (nBytesInBuffer <= source.characters()) return kFailed;
    char* const end = source.writeAscii(out);
    *end = '\0';
    return static_cast<int>(end - out + 1);
}

template <>
int FlavourConvert<char, 0>::toMBCS(const char* text, std::uint32_t length, char* out,
                                    std::uint32_t nBytesInBuffer) {
    return WriteText(text, length, out, nBytesInBuffer);
}

template <>
int FlavourConvert<char, 0>::toWide(const char* text, std::uint32_t length, wchar_t* out,
                                    std::uint32_t nBytesInBuffer) {
    if (!Require(out != nullptr, kUnit, kNoOutput)) return kFailed;
    const NarrowText source(text, length);
    // There are never more units than bytes, so that most texts need not be measured.
    const bool isEnough = nBytesInBuffer / kUnitBytes > length;
    const std::uint32_t room = isEnough ? length : source.units();
    if (nBytesInBuffer / kUnitBytes <= room) return kFailed;
    const std::uint32_t written = source.write(out, room);
    out[written] = L'\0';
    return static_cast<int>(written + 1);
}

// Deliberately without the terminator in its count.
template <>
int FlavourConvert<char, 0>::toUTF8(const char* text, std::uint32_t length, char* out,
                                    std::uint32_t nBytesInBuffer) {
    if (!Require(out != nullptr, kUnit, kNoUTF8Output)) return kFailed;
    const NarrowText source(text, length);
    const bool isEnough = nBytesInBuffer / kMostUtf8Bytes > length;
    if (!isEnough && nBytesInBuffer <= source.utf8Bytes()) return kFailed;
    char* const end = source.writeUtf8(out);
    *end = '\0';
    return static_cast<int>(end - out);
}

template <>
bool FlavourConvert<char, 0>::fromAscii(Ansi& target, const char* text, std::uint32_t count) {
    Ansi taken(text, SourceLength(text, count));
    const bool allAscii = std::all_of(taken.getString(), taken.end().getPtr(), &IsAscii<char>);
    if (!allAscii) {
        char* const bytes = taken.detach();
        std::replace_if(
            bytes, bytes + taken.getLength(), [](char byte) { return !IsAscii(byte); }, mbchar::kReplacement);
    }
    return Take(target, taken);
}

template <>
bool FlavourConvert<char, 0>::fromMBCS(Ansi& target, const char* text, std::uint32_t count) {
    return Take(target, Ansi(text, SourceLength(text, count)));
}

template <>
bool FlavourConvert<char, 0>::fromOCA(Ansi& target, const wchar_t* text, std::uint32_t count) {
    return Take(target, MBCSFromWide(text, SourceLength(text, count)));
}

template <>
bool FlavourConvert<char, 0>::fromWChar(Ansi& target, const wchar_t* text, std::uint32_t count) {
    return fromOCA(target, text, count);
}

template <>
bool FlavourConvert<char, 0>::fromUTF8(Ansi& target, const char* text, std::uint32_t nBytes) {
    if (CodePage::Current().isUtf8()) return TakeUtf8(target, text, SourceLength(text, nBytes));
    SOCAString wide;
    const bool converted = WideFromUTF8(text, nBytes, wide);
    Take(target, MBCSFromWide(wide.getString(), wide.getLength()));
    return converted;
}

// ---------------------------------------------------------------------------------------------- SAsciiString

template <>
std::uint32_t FlavourConvert<char, 1>::getNBytesForAscii(const char*, std::uint32_t length) {
    return length + 1;
}

template <>
std::uint32_t FlavourConvert<char, 1>::getNBytesForMBCS(const char*, std::uint32_t length) {
    return length + 1;
}

template <>
std::uint32_t FlavourConvert<char, 1>::getNBytesForWide(const char*, std::uint32_t length) {
    return (length + 1) * kUnitBytes;
}

template <>
std::uint32_t FlavourConvert<char, 1>::getNBytesForUTF8(const char*, std::uint32_t length) {
    return length + 1;
}

template <>
int FlavourConvert<char, 1>::toAscii(const char* text, std::uint32_t length, char* out,
                                     std::uint32_t nBytesInBuffer) {
    const int written = WriteText(text, length, out, nBytesInBuffer);
    for (std::uint32_t i = 0; written > 0 && i < length; ++i) {
        if (!Require(IsAscii(out[i]), kUnit, kNotAsciiHere)) out[i] = mbchar::kReplacement;
    }
    return written;
}

template <>
int FlavourConvert<char, 1>::toMBCS(const char* text, std::uint32_t length, char* out,
                                    std::uint32_t nBytesInBuffer) {
    if (!Require(nBytesInBuffer > length, kUnit, "nBytesInBuffer >= nBytesUsed")) return kFailed;
    return WriteText(text, length, out, nBytesInBuffer);
}

// A byte of 128 and more is widened with its sign, deliberately.
template <>
int FlavourConvert<char, 1>::toWide(const char* text, std::uint32_t length, wchar_t* out,
                                    std::uint32_t nBytesInBuffer) {
    if (!Require(out != nullptr, kUnit, kNoOutput)) return kFailed;
    if (nBytesInBuffer / kUnitBytes <= length) return kFailed;
    for (std::uint32_t i = 0; i < length; ++i)
        out[i] = static_cast<wchar_t>(static_cast<signed char>(text[i]));
    out[length] = L'\0';
    return static_cast<int>(length + 1);
}

template <>
int FlavourConvert<char, 1>::toUTF8(const char* text, std::uint32_t length, char* out,
                                    std::uint32_t nBytesInBuffer) {
    if (!Require(out != nullptr, kUnit, kNoUTF8Output)) return kFailed;
    return WriteText(text, length, out, nBytesInBuffer);
}

template <>
bool FlavourConvert<char, 1>::fromAscii(Ascii& target, const char* text, std::uint32_t count) {
    return TakeAscii(target, text, count, kNotAsciiHere);
}

template <>
bool FlavourConvert<char, 1>::fromMBCS(Ascii& target, const char* text, std::uint32_t count) {
    return TakeAscii(target, text, count, kNotAsciiInMBCS);
}

template <>
bool FlavourConvert<char, 1>::fromOCA(Ascii& target, const wchar_t* text, std::uint32_t count) {
    return TakeAscii(target, text, count, kNotAsciiInOCA);
}

template <>
bool FlavourConvert<char, 1>::fromWChar(Ascii& target, const wchar_t* text, std::uint32_t count) {
    return TakeAscii(target, text, count, kNotAsciiInWChar);
}

// Illegal UTF-8 leaves the string empty; legal UTF-8 beyond ASCII leaves it unchanged, as fromOCA does.
template <>
bool FlavourConvert<char, 1>::fromUTF8(Ascii& target, const char* text, std::uint32_t nBytes) {
    SOCAString wide;
    if (WideFromUTF8(text, nBytes, wide)) return fromOCA(target, wide.getString(), wide.getLength());
    target.empty();
    return false;
}

// ---------------------------------------------------------------------------------------------- wide strings

template <>
std::uint32_t FlavourConvert<wchar_t, 1>::getNBytesForAscii(const wchar_t*, std::uint32_t length) {
    return length + 1;
}

template <>
std::uint32_t FlavourConvert<wchar_t, 1>::getNBytesForMBCS(const wchar_t* text, std::uint32_t) {
    return static_cast<std::uint32_t>(CodesetConverter::ucs2tombs(nullptr, text, 0)) + 1;
}

template <>
std::uint32_t FlavourConvert<wchar_t, 1>::getNBytesForWide(const wchar_t*, std::uint32_t length) {
    return (length + 1) * kUnitBytes;
}

template <>
std::uint32_t FlavourConvert<wchar_t, 1>::getNBytesForUTF8(const wchar_t* text, std::uint32_t length) {
    return utf::BytesOf(text, length) + 1;
}

template <>
int FlavourConvert<wchar_t, 1>::toAscii(const wchar_t* text, std::uint32_t length, char* out,
                                        std::uint32_t nBytesInBuffer) {
    if (!Require(out != nullptr, kUnit, kNoOutput)) return kFailed;
    if (nBytesInBuffer <= length) return kFailed;
    WriteAscii(text, length, out);
    out[length] = '\0';
    return static_cast<int>(length + 1);
}

// A text that does not fit fills the room and is reported as size + 1, deliberately not as -1.
template <>
int FlavourConvert<wchar_t, 1>::toMBCS(const wchar_t* text, std::uint32_t, char* out,
                                       std::uint32_t nBytesInBuffer) {
    if (!Require(out != nullptr, kUnit, kNoOutput)) return kFailed;
    return CodesetConverter::ucs2tombs(out, text, nBytesInBuffer) + 1;
}

template <>
int FlavourConvert<wchar_t, 1>::toWide(const wchar_t* text, std::uint32_t length, wchar_t* out,
                                       std::uint32_t nBytesInBuffer) {
    return WriteText(text, length, out, nBytesInBuffer);
}

template <>
int FlavourConvert<wchar_t, 1>::toUTF8(const wchar_t* text, std::uint32_t length, char* out,
                                       std::uint32_t nBytesInBuffer) {
    const int bytes = WriteUTF8(text, length, out, nBytesInBuffer);
    return bytes >= 0 ? bytes + 1 : kFailed;
}

template <>
bool FlavourConvert<wchar_t, 1>::fromAscii(Wide& target, const char* text, std::uint32_t count) {
    const std::uint32_t length = SourceLength(text, count);
    StringBuilder<wchar_t, 1> built(length);
    for (std::uint32_t i = 0; i < length; ++i) {
        built.units()[i] = static_cast<wchar_t>(IsAscii(text[i]) ? text[i] : mbchar::kReplacement);
    }
    return Take<Wide>(target, built);
}

template <>
bool FlavourConvert<wchar_t, 1>::fromMBCS(Wide& target, const char* text, std::uint32_t count) {
    return Take(target, WideFromMBCS(text, SourceLength(text, count)));
}

template <>
bool FlavourConvert<wchar_t, 1>::fromOCA(Wide& target, const wchar_t* text, std::uint32_t count) {
    return Take(target, Wide(text, SourceLength(text, count)));
}

template <>
bool FlavourConvert<wchar_t, 1>::fromWChar(Wide& target, const wchar_t* text, std::uint32_t count) {
    return fromOCA(target, text, count);
}

template <>
bool FlavourConvert<wchar_t, 1>::fromUTF8(Wide& target, const char* text, std::uint32_t nBytes) {
    SOCAString wide;
    const bool converted = WideFromUTF8(text, nBytes, wide);
    Take<Wide>(target, wide);
    return converted;
}

}  // namespace TarnLibA500

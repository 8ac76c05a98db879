#include "codeset.h"

#include "command.h"
#include "tarnlib/UTFConverter.h"
#include "tarnlib/sstring.h"

#include <windows.h>

namespace tarn {
namespace {

using TarnLibA500::CUTFConverter;
using TarnLibA500::SAnsiString;

constexpr char32_t kReplacementCharacter = 0xFFFD;
constexpr char32_t kFirstNonAscii = 0x80;
constexpr char32_t kFirstSupplementary = 0x10000;
constexpr std::uint32_t kMaxUtf8Bytes = 4;

Character Valid(char32_t code, std::uint32_t nBytes) {
    return {code, static_cast<std::uint8_t>(nBytes), true};
}

Character Invalid(std::uint32_t nBytes) {
    return {kReplacementCharacter, static_cast<std::uint8_t>(nBytes), false};
}

unsigned char Byte(const char* at) {
    return static_cast<unsigned char>(*at);
}

// ------------------------------------------------------------------------------------------------ ASCII

Character DecodeAscii(const char* at, std::size_t) {
    return Byte(at) < kFirstNonAscii ? Valid(Byte(at), 1) : Invalid(1);
}

Fit EncodeAscii(char32_t code, std::string& out) {
    if (code >= kFirstNonAscii) return Fit::Missing;
    out += static_cast<char>(code);
    return Fit::Exact;
}

// ------------------------------------------------------------------------------------------------ code pages

// By the system's tables, character by character: the library converts whole texts, and does not tell what was
// wrong where.

template <UINT page>
Character DecodeCodePage(const char* at, std::size_t left) {
    if (Byte(at) < kFirstNonAscii) return Valid(Byte(at), 1);
    const bool isPair = IsDBCSLeadByteEx(page, static_cast<BYTE>(*at)) != FALSE;
    if (isPair && left < 2) return Invalid(1);
    // For single bytes the system is stricter than the code pages are.
    wchar_t unit = 0;
    const int units =
        MultiByteToWideChar(page, isPair ? MB_ERR_INVALID_CHARS : 0, at, isPair ? 2 : 1, &unit, 1);
    return units == 1 ? Valid(unit, isPair ? 2 : 1) : Invalid(1);
}

template <UINT page>
Fit EncodeCodePage(char32_t code, std::string& out) {
    if (code < kFirstNonAscii) return EncodeAscii(code, out);
    const auto unit = static_cast<wchar_t>(code);
    char bytes[2];
    BOOL isMissing = code >= kFirstSupplementary;
    const int count = isMissing ? 0 : WideCharToMultiByte(page, 0, &unit, 1, bytes, 2, nullptr, &isMissing);
    if (count == 0 || isMissing) return Fit::Missing;
    out.append(bytes, static_cast<std::size_t>(count));
    return DecodeCodePage<page>(bytes, static_cast<std::size_t>(count)).code == code ? Fit::Exact
                                                                                     : Fit::Likeness;
}

// ------------------------------------------------------------------------------------------------ UTF-8

// As the first byte announces it; 1 for a byte that begins no character.
std::uint32_t AnnouncedBytes(unsigned char first) {
    if (first < 0xC0 || first >= 0xF8) return 1;
    return first < 0xE0 ? 2 : first < 0xF0 ? 3 : kMaxUtf8Bytes;
}

// The announced bytes as far as they continue the first one.
std::uint32_t PresentBytes(const char* at, std::size_t left) {
    const std::uint32_t announced = AnnouncedBytes(Byte(at));
    std::uint32_t present = 1;
    while (present < announced && present < left && (Byte(at + present) & 0xC0) == 0x80) ++present;
    return present;
}

// One character of a range, by the library: false when there is none at its start.
template <class unit>
bool DecodeOne(const unit*& at, const unit* end, CUTFConverter::UCS4& code) {
    CUTFConverter::UCS4* out = &code;
    CUTFConverter::Convert(at, end, out, out + 1, CUTFConverter::Strict);
    return out != &code;
}

Character DecodeUtf8(const char* at, std::size_t left) {
    if (Byte(at) < kFirstNonAscii) return Valid(Byte(at), 1);
    const std::uint32_t nBytes = PresentBytes(at, left);
    const unsigned char* source = reinterpret_cast<const unsigned char*>(at);
    CUTFConverter::UCS4 code = 0;
    return DecodeOne(source, source + nBytes, code) ? Valid(code, nBytes) : Invalid(nBytes);
}

Fit EncodeUtf8(char32_t code, std::string& out) {
    if (code < kFirstNonAscii) return EncodeAscii(code, out);
    const CUTFConverter::UCS4 source[] = {code};
    const CUTFConverter::UCS4* at = source;
    unsigned char bytes[kMaxUtf8Bytes];
    unsigned char* end = bytes;
    CUTFConverter::Convert(at, at + 1, end, bytes + kMaxUtf8Bytes);
    out.append(bytes, end);
    return Fit::Exact;
}

// ------------------------------------------------------------------------------------------------ UTF-16

template <bool bigEndian>
wchar_t ReadUnit(const char* at) {
    return static_cast<wchar_t>(Byte(at + !bigEndian) << 8 | Byte(at + bigEndian));
}

template <bool bigEndian>
Character DecodeUtf16(const char* at, std::size_t left) {
    if (left < 2) return Invalid(1);
    const wchar_t units[] = {ReadUnit<bigEndian>(at), left < 4 ? L'\0' : ReadUnit<bigEndian>(at + 2)};
    const wchar_t* source = units;
    CUTFConverter::UCS4 code = 0;
    if (!DecodeOne(source, units + 2, code)) return Invalid(2);
    return Valid(code, code < kFirstSupplementary ? 2 : 4);
}

template <bool bigEndian>
Fit EncodeUtf16(char32_t code, std::string& out) {
    const CUTFConverter::UCS4 source[] = {code};
    const CUTFConverter::UCS4* at = source;
    wchar_t units[2];
    wchar_t* end = units;
    CUTFConverter::Convert(at, at + 1, end, units + 2);
    for (const wchar_t* unit = units; unit < end; ++unit) {
        const char high = static_cast<char>(*unit >> 8);
        const char low = static_cast<char>(*unit);
        out += bigEndian ? high : low;
        out += bigEndian ? low : high;
    }
    return Fit::Exact;
}

// ------------------------------------------------------------------------------------------------ the table

constexpr const char* kNoMark = "";

// The numbers 0 to 5 are those of the library's named code sets.
const CodeSet kCodeSets[] = {
    {"current 0", "the system's ANSI code page", kNoMark, '?', DecodeCodePage<CP_ACP>,
     EncodeCodePage<CP_ACP>},
    {"utf-8 1 utf8", "UTF-8", "\xEF\xBB\xBF", kReplacementCharacter, DecodeUtf8, EncodeUtf8},
    {"1252 2 4 cp1252 windows-1252", "Windows code page 1252, Western European", kNoMark, '?',
     DecodeCodePage<1252>, EncodeCodePage<1252>},
    {"932 3 cp932 shift_jis", "Windows code page 932, Japanese", kNoMark, '?', DecodeCodePage<932>,
     EncodeCodePage<932>},
    {"28605 5 iso-8859-15", "ISO 8859-15, Western European with the euro sign", kNoMark, '?',
     DecodeCodePage<28605>, EncodeCodePage<28605>},
    {"utf-16le utf-16 utf16 utf16le", "UTF-16, low bytes first", "\xFF\xFE", kReplacementCharacter,
     DecodeUtf16<false>, EncodeUtf16<false>},
    {"utf-16be utf16be", "UTF-16, high bytes first", "\xFE\xFF", kReplacementCharacter, DecodeUtf16<true>,
     EncodeUtf16<true>},
    {"ascii us-ascii", "7-bit ASCII", kNoMark, '?', DecodeAscii, EncodeAscii},
};

std::string Names(const CodeSet& set) {
    return std::string(" ") + set.names + " ";
}

}  // namespace

std::string CodeSet::name() const {
    const std::string all(names);
    return all.substr(0, all.find(' '));
}

const CodeSet& FindCodeSet(const std::string& name) {
    SAnsiString wanted((" " + name + " ").c_str());
    wanted.toLower();
    for (const CodeSet& set : kCodeSets) {
        const SAnsiString names(Names(set).c_str());
        const bool isNamed = name.find(' ') == name.npos && names.find(wanted) != names.end();
        if (isNamed) return &set == kCodeSets && GetACP() == CP_UTF8 ? Utf8CodeSet() : set;
    }
    throw Failure("there is no code set \"" + name + "\"; tarn text -help lists them");
}

const CodeSet& Utf8CodeSet() {
    return kCodeSets[1];
}

std::string DescribeCodeSets() {
    std::string list;
    for (const CodeSet& set : kCodeSets) {
        std::string names(set.names);
        names.resize(31, ' ');
        list += "  " + names + set.description + "\n";
    }
    return list;
}

}  // namespace tarn

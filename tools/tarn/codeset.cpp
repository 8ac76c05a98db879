#include "codeset.h"

#include <clocale>

#include "command.h"
#include "tarnlib/UTFConverter.h"
#include "tarnlib/sstring.h"

namespace tarn {
namespace {

using TarnLibA500::CUTFConverter;
using TarnLibA500::SAnsiString;

using AnsiChar = TarnLibA500::SChar_t<char, 0>;

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

Character DecodeCodePage(const char* at, std::size_t) {
    if (*at == '\0') return Valid(0, 1);
    const AnsiChar character = *SAnsiString::iterator(at);
    if (!character.isUnicode()) return Invalid(character.getLength());
    return Valid(character.toUChar(), character.getLength());
}

Fit EncodeCodePage(char32_t code, std::string& out) {
    if (code == 0) {
        out += '\0';
        return Fit::Exact;
    }
    AnsiChar character;
    if (code >= kFirstSupplementary || !character.fromUChar(static_cast<wchar_t>(code))) return Fit::Missing;
    out.append(character.getUnits(), character.getLength());
    return character.toUChar() == code ? Fit::Exact : Fit::Likeness;
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
    {"current 0", "the process's code page", "", kNoMark, '?', DecodeCodePage, EncodeCodePage},
    {"utf-8 1 utf8", "UTF-8", nullptr, "\xEF\xBB\xBF", kReplacementCharacter, DecodeUtf8, EncodeUtf8},
    {"1252 2 4 cp1252 windows-1252", "Windows code page 1252, Western European", ".1252", kNoMark, '?',
     DecodeCodePage, EncodeCodePage},
    {"932 3 cp932 shift_jis", "Windows code page 932, Japanese", ".932", kNoMark, '?', DecodeCodePage,
     EncodeCodePage},
    {"28605 5 iso-8859-15", "ISO 8859-15, Western European with the euro sign", ".28605", kNoMark, '?',
     DecodeCodePage, EncodeCodePage},
    {"utf-16le utf-16 utf16 utf16le", "UTF-16, low bytes first", nullptr, "\xFF\xFE", kReplacementCharacter,
     DecodeUtf16<false>, EncodeUtf16<false>},
    {"utf-16be utf16be", "UTF-16, high bytes first", nullptr, "\xFE\xFF", kReplacementCharacter,
     DecodeUtf16<true>, EncodeUtf16<true>},
    {"ascii us-ascii", "7-bit ASCII", nullptr, kNoMark, '?', DecodeAscii, EncodeAscii},
};

std::string Names(const CodeSet& set) {
    return std::string(" ") + set.names + " ";
}

}  // namespace

std::string CodeSet::name() const {
    const std::string all(names);
    return all.substr(0, all.find(' '));
}

void CodeSet::activate() const {
    if (std::setlocale(LC_CTYPE, locale != nullptr ? locale : "C") == nullptr) {
        throw Failure("the system does not have the code set " + name());
    }
}

const CodeSet& FindCodeSet(const std::string& name) {
    SAnsiString wanted((" " + name + " ").c_str());
    wanted.toLower();
    for (const CodeSet& set : kCodeSets) {
        const SAnsiString names(Names(set).c_str());
        if (name.find(' ') == name.npos && names.find(wanted) != names.end()) return set;
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

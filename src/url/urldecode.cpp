#include "url/urldecode.h"

#include <algorithm>
#include <type_traits>

#include "strings/base/bytesearch.h"
#include "strings/characters/codepagetext.h"
#include "strings/text/stringbuilder.h"
#include "tarnlib/sassert.h"

namespace TarnLibA500 {
namespace {

constexpr std::uint32_t kByteEscape = 3;  // %XX
constexpr std::uint32_t kUnitEscape = 6;  // %uXXXX
constexpr std::uint32_t kUnitDigitsAt = 2;
constexpr unsigned kNoDigit = 16;
constexpr wchar_t kReplacementUnit = 0xFFFD;  // for half a pair

struct DigitTable {
    unsigned char value[128];
};

constexpr DigitTable MakeDigits() {
    DigitTable table{};
    for (unsigned char& value : table.value) value = kNoDigit;
    for (unsigned digit = 0; digit < 16; ++digit) {
        const auto value = static_cast<unsigned char>(digit);
        table.value[static_cast<unsigned char>("0123456789ABCDEF"[digit])] = value;
        table.value[static_cast<unsigned char>("0123456789abcdef"[digit])] = value;
    }
    return table;
}
constexpr DigitTable kDigits = MakeDigits();

template <class unit>
unsigned DigitAt(const unit* at) {
    const auto code = static_cast<std::make_unsigned_t<unit>>(*at);
    return code < sizeof kDigits.value ? kDigits.value[code] : kNoDigit;
}

// The value of so many hexadecimal digits; false when others stand there.
template <class unit>
bool ReadDigits(const unit* at, unsigned count, unsigned& value) {
    unsigned read = 0;
    for (; count != 0; --count, ++at) {
        const unsigned digit = DigitAt(at);
        if (digit == kNoDigit) return false;
        read = read << 4 | digit;
    }
    value = read;
    return true;
}

template <class unit>
bool ReadByteEscape(const unit* at, const unit* end, unsigned& value) {
    return end - at >= static_cast<std::ptrdiff_t>(kByteEscape) && ReadDigits(at + 1, 2, value);
}

template <class unit>
bool ReadUnitEscape(const unit* at, const unit* end, unsigned& value) {
    return end - at >= static_cast<std::ptrdiff_t>(kUnitEscape) && at[0] == '%' && at[1] == 'u' &&
           ReadDigits(at + kUnitDigitsAt, 4, value);
}

bool IsHighHalf(unsigned value) {
    return value >= 0xD800 && value < 0xDC00;
}

bool IsLowHalf(unsigned value) {
    return value >= 0xDC00 && value < 0xE000;
}

// Writes the character of the "%uXXXX" at the place, which has that value, or of a pair of them. It takes no
// more room than its escape.
void DecodeUnit(unsigned value, const wchar_t*& at, const wchar_t*, wchar_t*& out) {
    *out++ = static_cast<wchar_t>(value);
    at += kUnitEscape;
}

void DecodeUnit(unsigned value, const char*& at, const char* end, char*& out) {
    wchar_t units[2] = {static_cast<wchar_t>(value)};
    std::uint32_t count = 1;
    at += kUnitEscape;
    unsigned next = 0;
    if (IsHighHalf(value) && ReadUnitEscape(at, end, next) && IsLowHalf(next)) {
        units[count++] = static_cast<wchar_t>(next);
        at += kUnitEscape;
    }
    const mbchar::CodePage& page = mbchar::CodePage::Current();
    if (count == 1 && page.isUtf8() && (IsHighHalf(value) || IsLowHalf(value))) units[0] = kReplacementUnit;
    const wchar_t* from = units;
    out += mbchar::Encode(page, from, units + count, out, count * kUnitEscape);
}

// Decodes what begins with the "%" at the place, which is the fault when it begins no escape and there was none
// before.
template <class unit>
void DecodePercent(const unit*& at, const unit* end, unit*& out, const unit*& fault) {
    unsigned value = 0;
    if (ReadByteEscape(at, end, value)) {
        *out++ = static_cast<unit>(value);
        at += kByteEscape;
    } else if (ReadUnitEscape(at, end, value)) {
        DecodeUnit(value, at, end, out);
    } else {
        if (fault == nullptr) fault = at;
        *out++ = *at++;
    }
}

template <class unit>
unit* Decode(const unit* at, const unit* end, unit* out, const unit*& fault) {
    while (at < end) {
        const unit here = *at;
        if (here == '%') {
            DecodePercent(at, end, out, fault);
            continue;
        }
        *out++ = here == '+' ? unit(' ') : here;
        ++at;
    }
    return out;
}

// Nothing becomes longer.
template <class String, class unit, int flavour>
String DecodeText(const unit* at, const unit* end, const unit*& fault) {
    if (at == end) return String();
    StringBuilder<unit, flavour> decoded(static_cast<std::uint32_t>(end - at));
    const unit* const last = Decode(at, end, decoded.units(), fault);
    decoded.cut(static_cast<std::uint32_t>(last - decoded.units()));
    return decoded;
}

template <class String, class unit, int flavour>
String DecodeAndReport(const unit* at, const unit* end) {
    const unit* fault = nullptr;
    String decoded = DecodeText<String, unit, flavour>(at, end, fault);
    if (fault != nullptr) {
        SAnsiString where;
        where << "at " << static_cast<std::uint32_t>(fault - at) << " of "
              << static_cast<std::uint32_t>(end - at);
        SAssert("nvpairs", __LINE__, "This should never happen, since the data should be encoded correctly",
                where.getString());
    }
    return decoded;
}

}  // namespace

// By bytes: "%" and "+" are trail bytes in no code page.
const char* FindEscape(const char* at, const char* end) noexcept {
    return FindByte(at, FindByte(at, end, '%'), '+');
}

const wchar_t* FindEscape(const wchar_t* at, const wchar_t* end) noexcept {
    return std::find_if(at, end, [](wchar_t unit) { return unit == L'%' || unit == L'+'; });
}

SAnsiString DecodeLeniently(const char* at, const char* end) {
    return DecodeAndReport<SAnsiString, char, 0>(at, end);
}

SWCharString DecodeLeniently(const wchar_t* at, const wchar_t* end) {
    return DecodeAndReport<SWCharString, wchar_t, 1>(at, end);
}

bool DecodeStrictly(const char* at, const char* end, SAnsiString& out) {
    const char* fault = nullptr;
    const SAnsiString decoded = DecodeText<SAnsiString, char, 0>(at, end, fault);
    if (fault != nullptr) return false;
    out = decoded;
    return true;
}

const char* FindUnitEscape(const char* at, const char* end) noexcept {
    unsigned value = 0;
    at = FindByte(at, end, '%');
    while (at < end && !ReadUnitEscape(at, end, value)) at = FindByte(at + 1, end, '%');
    return at;
}

const char* SkipUnitEscapes(const char* at, const char* end) noexcept {
    unsigned value = 0;
    while (ReadUnitEscape(at, end, value)) at += kUnitEscape;
    return at;
}

}  // namespace TarnLibA500

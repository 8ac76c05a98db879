#include "tarnlib/UTFConverter.h"

#include <new>

#include "diag/assert/require.h"
#include "strings/characters/utf.h"
#include "strings/text/stringbuilder.h"
#include "strings/text/utftext.h"

namespace TarnLibA500 {
namespace {

constexpr const char* kUnit = "UTFConverter";
constexpr std::uint32_t kUpToTerminator = 0xFFFFFFFF;
constexpr std::uint32_t kMaxUTF8Bytes = 4;

using Result = CUTFConverter::Result;
using Mode = CUTFConverter::Mode;
using UCS4 = CUTFConverter::UCS4;
using WideBuilder = StringBuilder<wchar_t, 1>;

template <class unit>
std::uint32_t LengthOf(const unit* text) {
    std::uint32_t length = 0;
    while (text != nullptr && text[length] != unit()) ++length;
    return length;
}

std::uint32_t CountedUnits(const wchar_t* text, std::uint32_t units) {
    return text == nullptr || units == kUpToTerminator ? LengthOf(text) : units;
}

const unsigned char* Bytes(const char* text) {
    return reinterpret_cast<const unsigned char*>(text);
}

static_assert(static_cast<int>(utf::Result::sourceExhausted) == CUTFConverter::SourceExhausted);
static_assert(static_cast<int>(utf::Result::targetExhausted) == CUTFConverter::TargetExhausted);
static_assert(static_cast<int>(utf::Result::sourceIllegal) == CUTFConverter::SourceIllegal);

template <class From, class To>
Result ConvertRange(const From*& source, const From* sourceEnd, To*& target, To* targetEnd, Mode mode) {
    const utf::Mode strictness = mode == CUTFConverter::Strict ? utf::Mode::strict : utf::Mode::lenient;
    return static_cast<Result>(utf::Convert(source, sourceEnd, target, targetEnd, strictness));
}

// Through a work area of "room" target units, then copied to the exact size.
template <class From, class To>
bool ConvertToBuffer(const From* source, std::uint32_t length, std::uint32_t room, UTFBuffer_t<To>& target) {
    using Unit = std::conditional_t<sizeof(To) == 1, unsigned char, To>;
    target = UTFBuffer_t<To>();
    if (length == 0) return true;
    SSimpleBuffer area(room * static_cast<std::uint32_t>(sizeof(To)));
    auto* const first = reinterpret_cast<Unit*>(area.getBuffer());
    Unit* end = first;
    if (!utf::ConvertWhole(source, source + length, end, first + room)) return false;
    target = UTFBuffer_t<To>(reinterpret_cast<const To*>(first), static_cast<std::uint32_t>(end - first));
    return true;
}

}  // namespace

Result CUTFConverter::Convert(const unsigned char*& source, const unsigned char* sourceEnd, wchar_t*& target,
                              wchar_t* targetEnd, Mode mode) {
    return ConvertRange(source, sourceEnd, target, targetEnd, mode);
}
Result CUTFConverter::Convert(const unsigned char*& source, const unsigned char* sourceEnd, UCS4*& target,
                              UCS4* targetEnd, Mode mode) {
    return ConvertRange(source, sourceEnd, target, targetEnd, mode);
}
Result CUTFConverter::Convert(const wchar_t*& source, const wchar_t* sourceEnd, unsigned char*& target,
                              unsigned char* targetEnd, Mode mode) {
    return ConvertRange(source, sourceEnd, target, targetEnd, mode);
}
Result CUTFConverter::Convert(const wchar_t*& source, const wchar_t* sourceEnd, UCS4*& target,
                              UCS4* targetEnd, Mode mode) {
    return ConvertRange(source, sourceEnd, target, targetEnd, mode);
}
Result CUTFConverter::Convert(const UCS4*& source, const UCS4* sourceEnd, unsigned char*& target,
                              unsigned char* targetEnd, Mode mode) {
    return ConvertRange(source, sourceEnd, target, targetEnd, mode);
}
Result CUTFConverter::Convert(const UCS4*& source, const UCS4* sourceEnd, wchar_t*& target,
                              wchar_t* targetEnd, Mode mode) {
    return ConvertRange(source, sourceEnd, target, targetEnd, mode);
}

bool CUTFConverter::UTF8ToUTF16(const char* source, std::uint32_t nBytes, SOCAString& target) {
    try {
        const bool isCounted = source != nullptr && nBytes != kUpToTerminator;
        return DecodeUTF8(source, isCounted ? nBytes : LengthOf(source), target);
    } catch (const std::bad_alloc&) {
        SAssert(kUnit, __LINE__, "targetStart");
        return false;
    }
}

bool CUTFConverter::UTF8ToUTF16(const char* source, SOCAString& target) {
    return UTF8ToUTF16(source, LengthOf(source), target);
}

bool CUTFConverter::UTF8ToUTF16(const unsigned char* source, SOCAString& target) {
    return UTF8ToUTF16(reinterpret_cast<const char*>(source), target);
}

bool CUTFConverter::UTF8ToUTF16(std::nullptr_t, SOCAString& target) {
    return UTF8ToUTF16(static_cast<const char*>(nullptr), target);
}

bool CUTFConverter::UTF16ToUTF8(const SOCAString& source, SSimpleBuffer& target) {
    const std::uint32_t needed = UTF16ToUTF8Length(source.getString(), source.getLength());
    SSimpleBuffer built(needed);
    unsigned char* const first = built.getBuffer();
    unsigned char* end = first;
    const wchar_t* const text = source.getString();
    const bool converted = utf::ConvertWhole(text, text + source.getLength(), end, first + needed);
    if (!converted) end = first;
    *end++ = 0;
    built.releaseBuffer(static_cast<std::uint32_t>(end - first));
    target = built;
    return converted;
}

bool CUTFConverter::UTF16ToUTF8(const SOCAString& source, UTF8Buffer& target) {
    const std::uint32_t room = UTF16ToUTF8Length(source.getString(), source.getLength());
    return ConvertToBuffer(source.getString(), source.getLength(), room, target);
}

bool CUTFConverter::UTF16ToUCS4(const SOCAString& source, UCS4Buffer& target) {
    return ConvertToBuffer(source.getString(), source.getLength(), source.getLength(), target);
}

bool CUTFConverter::UTF8ToUCS4(const char* source, UCS4Buffer& target) {
    const std::uint32_t length = LengthOf(source);
    return ConvertToBuffer(Bytes(source), length, length, target);
}

bool CUTFConverter::UCS4ToUTF16(const UCS4* source, SOCAString& target) {
    target.empty();
    const std::uint32_t length = LengthOf(source);
    WideBuilder built(2 * length);
    wchar_t* end = built.units();
    if (!utf::ConvertWhole(source, source + length, end, built.units() + built.room())) return false;
    built.cut(static_cast<std::uint32_t>(end - built.units()));
    target = static_cast<const SString_t<wchar_t, 1>&>(built);
    return true;
}

bool CUTFConverter::UCS4ToUTF8(const UCS4* source, UTF8Buffer& target) {
    const std::uint32_t length = LengthOf(source);
    return ConvertToBuffer(source, length, kMaxUTF8Bytes * length, target);
}

std::uint32_t CUTFConverter::UTF16ToUCS4(const wchar_t* source, UCS4* target, std::uint32_t size) {
    const std::uint32_t units = LengthOf(source);
    if (target == nullptr || source == nullptr) return units + 1;
    UCS4* end = target;
    const bool converted = utf::ConvertWhole(source, source + units, end, target + size);
    const auto count = static_cast<std::uint32_t>(end - target);
    if (!converted || count == size) return count;
    *end = 0;
    return units + 1;
}

bool CUTFConverter::ConvertToUTF8String(const wchar_t* source, std::uint32_t count, unsigned char*& target,
                                        std::uint32_t& length) {
    target = nullptr;
    length = 0;
    if (count == kUpToTerminator) count = LengthOf(source);
    if (count == 0 || source == nullptr) return false;
    const std::uint32_t needed = UTF16ToUTF8Length(source, count);
    SSimpleBuffer built(needed);
    unsigned char* const first = built.getBuffer();
    unsigned char* end = first;
    if (!utf::ConvertWhole(source, source + count, end, first + needed)) return false;
    length = static_cast<std::uint32_t>(end - first);
    *end = 0;
    built.releaseBuffer(length + 1);
    target = built.detach();
    return true;
}

std::uint32_t CUTFConverter::WideCharToUTF8Length(const wchar_t* source, std::uint32_t units) {
    return utf::BytesOfSingleUnits(source, CountedUnits(source, units)) + 1;
}

std::uint32_t CUTFConverter::UTF16ToUTF8Length(const wchar_t* source, std::uint32_t units) {
    return utf::BytesOf(source, CountedUnits(source, units)) + 1;
}

void CUTFConverter::setText(const SAnsiString& text) {
    SOCAString wide;
    wide.fromMBCS(text.getString());
    UTF16ToUTF8(wide, text_);
}

}  // namespace TarnLibA500

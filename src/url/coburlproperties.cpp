#include <cmath>

#include "diag/assert/levels.h"
#include "diag/assert/require.h"
#include "strings/base/bytesearch.h"
#include "tarnlib/coburl.h"
#include "tarnlib/neutralstr.h"
#include "tarnlib/sdatetimeconv.h"
#include "tarnlib/straceobj.h"
#include "url/urldecode.h"
#include "url/urltext.h"

namespace TarnLibA500 {
namespace {

constexpr const char* kUnit = "coburl";
constexpr const char* kDatePattern = "yyyy-MM-dd'T'HH:mm:ss.SSS'Z'";
constexpr short kLastYear = 9999;

bool RefuseText(const SAnsiStringCI& key, const SAnsiString& text) {
    TARN_TRACE_AT(levels::kFailure, kUnit, "the property %1 is not of the type that is asked for: %2", key,
                  text);
    return false;
}

// The elements as name/value pairs: their numbers, from 0 on, and their escaped texts.
template <class Array, class ToText>
SAnsiString ArrayText(const Array& values, ToText toText) {
    SAnsiString text;
    for (std::uint32_t i = 0; i < values.GetSize(); ++i) {
        if (i != 0) text.concat('&');
        text << i << "=" << toText(values[i]);
    }
    return text;
}

// Cuts off the next pair and decodes its value; false when that is no value.
bool TakeValue(TextPart& rest, SAnsiString& value) {
    TextPart encoded = CutBefore(rest, "&");
    TextPart name(encoded);
    return CutAt(encoded, "=", name) && !Holds(encoded, "=") &&
           DecodeStrictly(encoded.begin, encoded.end, value);
}

}  // namespace

const SAnsiString* CObUrl::find(const SAnsiStringCI& key) const {
    const auto found = pairs_.Find(SMapStringCaseInsensitive(key));
    return found != pairs_.End() ? &found.GetValue() : nullptr;
}

template <class T>
bool CObUrl::getNumber(const SAnsiStringCI& key, T& value) const {
    const SAnsiString* const text = find(key);
    if (text == nullptr) return false;
    T number{};
    if (!NeutralString::ToNumber(*text, number)) return RefuseText(key, *text);
    value = number;
    return true;
}

template <class Element, class Convert>
bool CObUrl::getArray(const SAnsiStringCI& key, SIArray<Element>& values, Convert convert) const {
    const SAnsiString* const text = find(key);
    if (text == nullptr) return false;
    SIArray<Element> read;
    for (TextPart rest(*text); !rest.isEmpty();) {
        SAnsiString value;
        Element element{};
        if (!TakeValue(rest, value) || !convert(value, element)) return RefuseText(key, *text);
        read.Add(element);
    }
    values = std::move(read);
    return true;
}

bool CObUrl::GetPropString(const SAnsiStringCI& key, SAnsiString& value) const {
    const SAnsiString* const text = find(key);
    if (text != nullptr) value = *text;
    return text != nullptr;
}

bool CObUrl::GetPropString(const SAnsiStringCI& key, SAsciiString& value) const {
    const SAnsiString* const text = find(key);
    if (text == nullptr) return false;
    const TextPart part(*text);
    if (FindNonAscii(part.begin, part.end) != part.end) return RefuseText(key, *text);
    value = SAsciiString(part.begin, part.length());
    return true;
}

void CObUrl::SetPropString(const SAnsiStringCI& key, const SAnsiString& value) {
    pairs_.SetAt(key, value);
}

void CObUrl::SetPropString(const SAnsiStringCI& key, const SAsciiString& value) {
    SetPropString(key, SAnsiString(value.getString(), value.getLength()));
}

void CObUrl::SetPropString(const SAnsiStringCI& key, const char* value) {
    SetPropString(key, SAnsiString(value));
}

bool CObUrl::GetPropBool(const SAnsiStringCI& key, bool& value) const {
    unsigned char number = 0;
    if (!getNumber(key, number)) return false;
    value = number != 0;
    return true;
}

void CObUrl::SetPropBool(const SAnsiStringCI& key, bool value) {
    SetPropString(key, value ? "1" : "0");
}

bool CObUrl::GetPropByte(const SAnsiStringCI& key, unsigned char& value) const {
    return getNumber(key, value);
}

void CObUrl::SetPropByte(const SAnsiStringCI& key, unsigned char value) {
    SetPropString(key, NeutralString::FromNumber(value));
}

bool CObUrl::GetPropShort(const SAnsiStringCI& key, short& value) const {
    return getNumber(key, value);
}

void CObUrl::SetPropShort(const SAnsiStringCI& key, short value) {
    SetPropString(key, NeutralString::FromNumber(value));
}

bool CObUrl::GetPropUShort(const SAnsiStringCI& key, unsigned short& value) const {
    return getNumber(key, value);
}

void CObUrl::SetPropUShort(const SAnsiStringCI& key, unsigned short value) {
    SetPropString(key, NeutralString::FromNumber(value));
}

bool CObUrl::GetPropLong(const SAnsiStringCI& key, long& value) const {
    return getNumber(key, value);
}

void CObUrl::SetPropLong(const SAnsiStringCI& key, long value) {
    SetPropString(key, NeutralString::FromNumber(value));
}

bool CObUrl::GetPropULong(const SAnsiStringCI& key, unsigned long& value) const {
    return getNumber(key, value);
}

void CObUrl::SetPropULong(const SAnsiStringCI& key, unsigned long value) {
    SetPropString(key, NeutralString::FromNumber(value));
}

bool CObUrl::GetPropDWord(const SAnsiStringCI& key, unsigned long& value) const {
    return getNumber(key, value);
}

void CObUrl::SetPropDWord(const SAnsiStringCI& key, unsigned long value) {
    SetPropULong(key, value);
}

bool CObUrl::GetPropInt64s(const SAnsiStringCI& key, long long& value) const {
    return getNumber(key, value);
}

void CObUrl::SetPropInt64s(const SAnsiStringCI& key, long long value) {
    SetPropString(key, NeutralString::FromNumber(value));
}

bool CObUrl::GetPropDouble(const SAnsiStringCI& key, double& value) const {
    return getNumber(key, value);
}

void CObUrl::SetPropDouble(const SAnsiStringCI& key, double value) {
    if (Require(std::isfinite(value), kUnit, "isfinite(value)"))
        SetPropString(key, NeutralString::FromNumber(value));
}

bool CObUrl::GetPropDateTime(const SAnsiStringCI& key, SDateTime& value) const {
    const SAnsiString* const text = find(key);
    if (text == nullptr) return false;
    return StringToDate(*text, value, STimeZone::TZ_UTC()) || RefuseText(key, *text);
}

void CObUrl::SetPropDateTime(const SAnsiStringCI& key, const SDateTime& value) {
    const STimeZone& utc = STimeZone::TZ_UTC();
    const short year = value.IsValid() ? value.GetYear(utc) : short{0};
    if (Require(year > 0 && year <= kLastYear, kUnit, "value.IsValid()"))
        SetPropString(key, value.Format(kDatePattern, utc));
}

bool CObUrl::GetPropDWordArray(const SAnsiStringCI& key, SIArray<unsigned long>& values) const {
    return getArray(key, values, [](const SAnsiString& text, unsigned long& number) {
        return NeutralString::ToNumber(text, number);
    });
}

void CObUrl::SetPropDWordArray(const SAnsiStringCI& key, const SIArray<unsigned long>& values) {
    SetPropString(key,
                  ArrayText(values, [](unsigned long number) { return NeutralString::FromNumber(number); }));
}

bool CObUrl::GetPropStringArray(const SAnsiStringCI& key, SIArray<SAnsiString>& values) const {
    return getArray(key, values, [](const SAnsiString& text, SAnsiString& element) {
        element = text;
        return true;
    });
}

void CObUrl::SetPropStringArray(const SAnsiStringCI& key, const SIArray<SAnsiString>& values) {
    SetPropString(
        key, ArrayText(values, [](const SAnsiString& text) { return CNameValuePairs::URLStrEncode(text); }));
}

}  // namespace TarnLibA500

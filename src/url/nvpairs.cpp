#include "tarnlib/nvpairs.h"

#include <cstdarg>
#include <cstring>

#include "diag/assert/levels.h"
#include "diag/assert/require.h"
#include "tarnlib/straceobj.h"
#include "url/urldecode.h"
#include "url/urlencode.h"
#include "url/urltext.h"

namespace TarnLibA500 {
namespace {

constexpr const char* kUnit = "nvpairs";
constexpr char kPairEnd = '&';

using ExplicitCodeset = CNameValuePairs::ExplicitCodeset;

SAnsiString Decode(const TextPart& part) {
    return DecodeLeniently(part.begin, part.end);
}

SAnsiString InCodePage(const SAnsiString& bytes, ExplicitCodeset codeset) {
    return MBCSCodesetConverter::ExplicitCodesetToT(bytes.getString(), bytes.getLength(), codeset);
}

// Only bytes are of the code set; a "%uXXXX" names its character whatever that is.
SAnsiString DecodeAndConvert(const TextPart& part, ExplicitCodeset codeset) {
    if (codeset == MBCSCodesetConverter::Current) return Decode(part);
    SAnsiString text;
    for (const char* at = part.begin; at < part.end;) {
        const char* const units = FindUnitEscape(at, part.end);
        text.concat(InCodePage(DecodeLeniently(at, units), codeset));
        at = SkipUnitEscapes(units, part.end);
        text.concat(DecodeLeniently(units, at));
    }
    return text;
}

// The text itself where the escaped text is all there is, so that nothing is copied.
template <class String>
void Append(String& target, const String& text) {
    if (target.isEmpty()) {
        target = text;
    } else {
        target.concat(text);
    }
}

void AppendEscaped(const EscapeTable& table, SAsciiString& target, const SWCharString& text) {
    Append(target, EscapeToAscii(table, text));
}

void AppendEscaped(const EscapeTable& table, SWCharString& target, const SWCharString& text) {
    Append(target, IsPlain(table, text) ? text : EscapeToWide(table, text));
}

bool EndsWithPairEnd(const SAnsiString& text) {
    return text.endsWith(SAnsiString::Char(kPairEnd));
}

}  // namespace

CNameValuePairs::CNameValuePairs(const SAnsiString& pairs) : pairs_(pairs) {}

CNameValuePairs::~CNameValuePairs() = default;

void CNameValuePairs::AssertValid() const {
    Require(position_ <= pairs_.getLength(), kUnit, "position <= length");
}

bool CNameValuePairs::HasMorePairs() const {
    return position_ < pairs_.getLength();
}

template <class DecodePart>
bool CNameValuePairs::takePair(SAnsiString& name, SAnsiString& value, DecodePart decode) {
    if (!HasMorePairs()) return false;
    const SAnsiString pairs(pairs_);  // a reference of its own: the name may be the text that is read
    TextPart rest(pairs);
    rest.begin += position_;
    const TextPart encodedName = CutBefore(rest, "=");
    const TextPart encodedValue = CutBefore(rest, "&");
    const SAnsiString decodedName = decode(encodedName);
    value = decode(encodedValue);
    name = decodedName;
    position_ = pairs.getLength() - rest.length();
    TARN_TRACE_AT(levels::kDetail, kUnit, "Name %s Value %sn", name, value);
    return true;
}

bool CNameValuePairs::Next(SAnsiString& name, SAnsiString& value) {
    return takePair(name, value, Decode);
}

bool CNameValuePairs::Next(SAnsiString& name, SAnsiString& value, ExplicitCodeset codeset) {
    return takePair(name, value, [codeset](const TextPart& part) { return DecodeAndConvert(part, codeset); });
}

void CNameValuePairs::ConcatPairs(const SAnsiString& pairs) {
    pairs_ = ConcatUrl(pairs_, pairs);
}

SAnsiString CNameValuePairs::Encode(const char* name, const char* value, ...) {
    SAnsiString query;
    va_list more;
    va_start(more, value);
    bool isWhole = true;
    while (name != nullptr && isWhole) {
        isWhole = Require(value != nullptr, kUnit, "FALSE");
        if (!query.isEmpty()) query.concat(kPairEnd);
        query.concat(URLStrEncode(name)).concat('=').concat(URLStrEncode(value));
        name = va_arg(more, const char*);
        if (name != nullptr) value = va_arg(more, const char*);
    }
    va_end(more);
    return isWhole ? query : SAnsiString();
}

SAnsiString CNameValuePairs::ConcatUrl(const SAnsiString& left, const SAnsiString& right) {
    if (left.isEmpty()) return right;
    if (right.isEmpty()) return left;
    const bool oneHasEnd = EndsWithPairEnd(left) != (right.getString()[0] == kPairEnd);
    SAnsiString both;
    both.setSize(StringUnits(std::uint64_t{left.getLength()} + right.getLength() + 1));
    both.concat(left);
    if (!oneHasEnd) both.concat(kPairEnd);
    return both.concat(right);
}

SAnsiString CNameValuePairs::URLStrEncode(const SAnsiString& text) {
    return EscapeText(kStandardEscapes, text);
}

SAnsiString CNameValuePairs::URLStrEncode(const char* text) {
    return text != nullptr ? EscapeBytes(kStandardEscapes, text, text + std::strlen(text)) : SAnsiString();
}

SWCharString CNameValuePairs::URLStrEncode(const SWCharString& text) {
    SWCharString encoded;
    URLStrEncodeAppend(encoded, text);
    return encoded;
}

SAnsiString CNameValuePairs::URLStrEncodeBytewise(const SAnsiString& text, ExplicitCodeset codeset,
                                                  bool spaceAsPlus) {
    const EscapeTable& table = spaceAsPlus ? kStandardEscapes : kStandardEscapesNoPlus;
    // What stands for itself is ASCII, and the same in every code set.
    const char* const end = text.getString() + text.getLength();
    if (codeset == MBCSCodesetConverter::Current || FindEscaped(table, text.getString(), end) == end)
        return EscapeText(table, text);
    const SSimpleBuffer bytes = MBCSCodesetConverter::TToExplicitCodeset(text, codeset);
    if (bytes.isEmpty()) return SAnsiString();
    const auto* const first = reinterpret_cast<const char*>(bytes.getBufferProtected());
    return EscapeBytes(table, first, first + bytes.getNBytes());
}

void CNameValuePairs::URLStrEncodeAppend(SAsciiString& target, const SWCharString& text) {
    AppendEscaped(kStandardEscapes, target, text);
}

void CNameValuePairs::URLStrEncodeAppend(SWCharString& target, const SWCharString& text) {
    AppendEscaped(kStandardEscapes, target, text);
}

void CNameValuePairs::URLStrEncodeAppend3(SAsciiString& target, const SWCharString& text) {
    AppendEscaped(kReducedEscapes, target, text);
}

void CNameValuePairs::URLStrEncodeAppend3(SWCharString& target, const SWCharString& text) {
    AppendEscaped(kReducedEscapes, target, text);
}

SAnsiString CNameValuePairs::URLStrDecode(const SAnsiString& text) {
    const TextPart all(text);
    return FindEscape(all.begin, all.end) != all.end ? Decode(all) : text;
}

SWCharString CNameValuePairs::URLStrDecode(const SWCharString& text) {
    const wchar_t* const begin = text.getString();
    const wchar_t* const end = begin + text.getLength();
    return FindEscape(begin, end) != end ? DecodeLeniently(begin, end) : text;
}

SAnsiString CNameValuePairs::URLStrDecodeAndConvert(const SAnsiString& text, ExplicitCodeset codeset) {
    return codeset == MBCSCodesetConverter::Current ? URLStrDecode(text)
                                                    : DecodeAndConvert(TextPart(text), codeset);
}

bool CNameValuePairs::tryURLStrDecode(SAnsiString& target, const char* text, std::uint32_t nBytes,
                                      bool* decoded) {
    if (!Require(text != nullptr || nBytes == 0, kUnit, "text != NULL")) return false;
    const char* const end = text + nBytes;
    const bool hasEscape = FindEscape(text, end) != end;
    if (!DecodeStrictly(text, end, target)) {
        TARN_TRACE_AT(levels::kFailure, kUnit, "a % begins no escape in %1", SAnsiString(text, nBytes));
        return false;
    }
    if (decoded != nullptr) *decoded = hasEscape;
    return true;
}

void CNameValuePairs::EscapeWideChar(wchar_t unit, SWCharString& out) {
    constexpr wchar_t kLastByte = 0xFF;
    out.concat(L'%');
    if (unit > kLastByte) out.concat(L'u');
    for (int shift = unit > kLastByte ? 12 : 4; shift >= 0; shift -= 4)
        out.concat(static_cast<wchar_t>(kUpperHexDigits[unit >> shift & 15]));
}

}  // namespace TarnLibA500

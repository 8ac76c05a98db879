#include "tarnlib/coburl.h"

#include "diag/assert/require.h"
#include "strings/text/stringbuilder.h"
#include "url/urlencode.h"
#include "url/urltext.h"

namespace TarnLibA500 {
namespace {

constexpr const char* kProtocol = "object";

SAnsiString AnsiText(const SAsciiString& text) {
    return {text.getString(), text.getLength()};
}

SAsciiString AsciiText(const SAnsiString& text) {
    return {text.getString(), text.getLength()};
}

bool Split(const SAnsiString& full, TextPart& objectUrl, TextPart& parameters) {
    parameters = TextPart(full);
    return CutAt(parameters, "?", objectUrl);
}

std::uint32_t QueryLength(const CMapNameValuePair& pairs) {
    std::uint64_t length = 0;
    for (const auto& [name, value] : pairs) {
        length += EscapedLength(kStandardEscapes, name.GetString()) + EscapedLength(kStandardEscapes, value) +
                  sizeof "=&" - 1;
    }
    return StringUnits(length != 0 ? length - 1 : 0);
}

SAnsiString MakeQuery(const CMapNameValuePair& pairs) {
    const std::uint32_t length = QueryLength(pairs);
    if (length == 0) return SAnsiString();
    StringBuilder<char, 0> query(StringUnits(std::uint64_t{length} + kEscapeSlack));
    char* out = query.units();
    for (const auto& [name, value] : pairs) {
        if (out != query.units()) *out++ = '&';
        out = WriteEscaped(kStandardEscapes, name.GetString(), out);
        *out++ = '=';
        out = WriteEscaped(kStandardEscapes, value, out);
    }
    query.cut(length);
    return query;
}

}  // namespace

CObUrl::CObUrl() {
    SetProtocol(kProtocol);
}

CObUrl::CObUrl(const SAnsiString& full) : CObUrl() {
    SetQueryString(full);
}

CObUrl::CObUrl(const SAsciiString& full) : CObUrl(AnsiText(full)) {}

CObUrl::CObUrl(const char* full) : CObUrl(SAnsiString(full)) {}

CObUrl::~CObUrl() = default;

void CObUrl::SetQueryString(const SAnsiString& full) {
    if (full.isEmpty()) return CUrlBase::SetQueryString(full);
    TextPart objectUrl(full);
    TextPart parameters(full);
    const SAnsiString path = Split(full, objectUrl, parameters) ? objectUrl.toString() : GetPath();
    pairs_.ParseParameter(parameters.begin, parameters.length());
    SetPath(path);
}

void CObUrl::SetQueryString(const SAsciiString& full) {
    SetQueryString(AnsiText(full));
}

void CObUrl::SetQueryString(const char* full) {
    SetQueryString(SAnsiString(full));
}

SAnsiString CObUrl::MakeURL() {
    Require(GetProtocol() == kProtocol, "coburl", "m_Protocol.compareBinary(objectString)==0");
    const SAnsiString query = MakeQuery(pairs_);
    const SAnsiString path = GetPath();
    const SAnsiString url = path.isEmpty() ? query : SAnsiString(path + "?" + query);
    CUrlBase::SetQueryString(query);
    return url;
}

SAsciiString CObUrl::MakeURLA() {
    const SAnsiString url = MakeURL();
    SAsciiString ascii;
    ascii.fromMBCS(url.getString(), url.getLength());
    return ascii;
}

bool CObUrl::SplitFullURL(const SAnsiString& full, SAnsiString& objectUrl, SAnsiString& parameters) {
    TextPart before(full);
    TextPart rest(full);
    const bool hasObjectUrl = Split(full, before, rest);
    const SAnsiString parametersText = hasObjectUrl ? rest.toString() : full;
    if (hasObjectUrl) objectUrl = before.toString();
    parameters = parametersText;
    return hasObjectUrl;
}

bool CObUrl::SplitFullURL(const SAsciiString& full, SAsciiString& objectUrl, SAsciiString& parameters) {
    SAnsiString before;
    SAnsiString rest;
    const bool hasObjectUrl = SplitFullURL(AnsiText(full), before, rest);
    if (hasObjectUrl) objectUrl = AsciiText(before);
    parameters = AsciiText(rest);
    return hasObjectUrl;
}

void CObUrl::Add(const CObUrl& other) {
    CMapNameValuePair added(other.pairs_);
    pairs_.Merge(added);
}

CObUrl::Iterator CObUrl::Begin() const {
    return pairs_.GetFirst();
}

CObUrl::Iterator CObUrl::End() const {
    return pairs_.End();
}

SAnsiStringCI CObUrl::GetName(const Iterator& position) {
    return position.GetKey().GetString();
}

SAnsiString CObUrl::GetValueString(const Iterator& position) {
    return position.GetValue();
}

}  // namespace TarnLibA500

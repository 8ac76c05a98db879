#include "tarnlib/curlbase.h"

#include "url/urlencode.h"
#include "url/urltext.h"

namespace TarnLibA500 {

CUrlBase::CUrlBase(const SAnsiString& protocol, const SAnsiString& server, const SAnsiString& path,
                   const SAnsiString& query)
    : protocol_(protocol), server_(server), path_(path), query_(query) {}

CUrlBase::~CUrlBase() = default;

void CUrlBase::SetQueryString(const SAnsiString& query) {
    query_ = query;
}

SAnsiString CUrlBase::MakeURL() {
    SAnsiString url;
    const std::uint64_t texts =
        std::uint64_t{protocol_.getLength()} + server_.getLength() + path_.getLength() + query_.getLength();
    url.setSize(StringUnits(texts + sizeof ":///?"));
    url.concat(protocol_).concat("://").concat(server_).concat('/').concat(path_);
    if (!query_.isEmpty()) url.concat('?').concat(query_);
    return url;
}

bool CUrlBase::ParseAndSetUrl(const SAnsiString& url) {
    TextPart rest(url);
    CUrlBase parsed(*this);
    TextPart part(rest);
    if (CutAt(rest, "://", part)) parsed.protocol_ = part.toString();
    if (CutAt(rest, "/", part)) parsed.server_ = part.toString();
    parsed.path_ = CutBefore(rest, "?").toString();
    parsed.query_ = rest.toString();
    *this = parsed;
    return true;
}

}  // namespace TarnLibA500

#include "tarnlib/siuri.h"

#include "diag/assert/levels.h"
#include "diag/assert/require.h"
#include "tarnlib/nvpairs.h"
#include "tarnlib/straceobj.h"
#include "url/urldecode.h"
#include "url/urltext.h"

namespace TarnLibA500 {
namespace {

constexpr const char* kUnit = "siuri";
constexpr const char* kProtocol = "osca:iiop";

SAnsiString Component(const SAnsiString& name, const SAnsiString& value) {
    return name + "=" + CNameValuePairs::URLStrEncode(value);
}

}  // namespace

SIUri::SIUri(const SAnsiString& server, const SAnsiString& name, const SAnsiString& value)
    : CUrlBase(kProtocol, server, Component(name, value), SAnsiString()) {}

SIUri::SIUri(const SAnsiString& uri) {
    ParseAndSetUrl(uri);
    if (GetProtocol().compareNoCase(kProtocol) == 0) return;
    const SAnsiString failure = "\"" + uri + "\" is not a valid URI.";
    TARN_TRACE_AT(levels::kFailure, kUnit, "%1", failure);
    throw failure;
}

SIUri::~SIUri() = default;

bool SIUri::getComponent(const SAnsiString& name, SAnsiString& value) const {
    if (!Require(!name.isEmpty(), kUnit, "false")) {
        value.empty();
        return true;
    }
    const SAnsiString path = GetPath();
    const SAnsiString::iterator place = path.find(name);
    TextPart rest(place.getPtr(), path.end().getPtr());
    TextPart before(rest);
    if (place == path.end() || !CutAt(rest, "=", before)) return false;
    const TextPart encoded = CutBefore(rest, ",");
    value = DecodeLeniently(encoded.begin, encoded.end);
    return true;
}

void SIUri::insertComponent(const SAnsiString& name, const SAnsiString& value) {
    if (!Require(!name.isEmpty(), kUnit, "false")) return;
    const SAnsiString component = Component(name, value);
    const SAnsiString path = GetPath();
    SetPath(path.isEmpty() ? component : SAnsiString(path + "," + component));
}

SAnsiString SIUri::makeURI() {
    return MakeURL();
}

}  // namespace TarnLibA500

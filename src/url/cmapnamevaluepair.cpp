#include <cstring>

#include "tarnlib/nvpairs.h"
#include "tarnlib/sassert.h"
#include "url/urldecode.h"
#include "url/urltext.h"

namespace TarnLibA500 {

CMapNameValuePair::CMapNameValuePair() = default;
CMapNameValuePair::CMapNameValuePair(const CMapNameValuePair& other) = default;
CMapNameValuePair::CMapNameValuePair(CMapNameValuePair&& other) noexcept = default;
CMapNameValuePair& CMapNameValuePair::operator=(const CMapNameValuePair& other) = default;
CMapNameValuePair& CMapNameValuePair::operator=(CMapNameValuePair&& other) noexcept = default;
CMapNameValuePair::~CMapNameValuePair() = default;

bool CMapNameValuePair::ParseParameter(const SAnsiString& text) {
    return ParseParameter(text.getString(), text.getLength());
}

bool CMapNameValuePair::ParseParameter(const SAsciiString::iterator& text) {
    return ParseParameter(text.getPtr(), static_cast<std::uint32_t>(std::strlen(text.getPtr())));
}

// The pairs come in when all are read: failing memory leaves the map as it was.
bool CMapNameValuePair::ParseParameter(const char* text, std::uint32_t nBytes) {
    CMapNameValuePair read;
    TextPart rest(text, text + nBytes);
    bool isGood = true;
    while (isGood && !rest.isEmpty()) {
        const TextPart pair = CutBefore(rest, "&");
        isGood = pair.isEmpty() || read.addPair(pair.begin, pair.end);
    }
    Merge(read);
    if (isGood) return true;
    SAnsiString fault("Error: Wrong number of parameters in URL ");
    fault.concat(text, nBytes);
    SAssert("nvpairs", __LINE__, fault.getString());
    return false;
}

void CMapNameValuePair::SetNameValuePair(const SAnsiString& name, const SAnsiString& value) {
    const TextPart namePart(name);
    const TextPart valuePart(value);
    SetAt(DecodeLeniently(namePart.begin, namePart.end), DecodeLeniently(valuePart.begin, valuePart.end));
}

// False when the pair has not one "=".
bool CMapNameValuePair::addPair(const char* at, const char* end) {
    TextPart value(at, end);
    TextPart name(at, at);
    if (!CutAt(value, "=", name) || Holds(value, "=")) return false;
    SetAt(DecodeLeniently(name.begin, name.end), DecodeLeniently(value.begin, value.end));
    return true;
}

}  // namespace TarnLibA500

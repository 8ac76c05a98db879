#include <algorithm>
#include <initializer_list>

#include "diag/assert/require.h"
#include "strings/base/asciichar.h"
#include "strings/characters/mbchar.h"
#include "tarnlib/frsurl.h"
#include "url/urltext.h"

namespace TarnLibA500 {
namespace {

constexpr const char* kGroups = "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx";  // x: a hexadecimal digit
constexpr std::uint32_t kGroupsLength = 36;
constexpr std::uint32_t kSymbolsLength = 23;

bool IsLetter(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

bool IsHexDigit(char c) {
    return IsDigit(c) || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f');
}

bool IsSymbol(char c) {
    return IsDigit(c) || IsLetter(c) || c == '_' || c == '.';
}

// All of what may stand between the braces is ASCII.
bool IsIdentifier(const TextPart& inner) {
    if (inner.length() == kSymbolsLength) return std::all_of(inner.begin, inner.end, IsSymbol);
    return inner.length() == kGroupsLength &&
           std::equal(inner.begin, inner.end, kGroups,
                      [](char c, char mark) { return mark == 'x' ? IsHexDigit(c) : c == mark; });
}

// The identifier that begins with the "{" at a place; empty when none does.
TextPart IdentifierAt(const char* brace, const char* end) {
    for (const std::uint32_t length : {kSymbolsLength, kGroupsLength}) {
        if (end - brace < static_cast<std::ptrdiff_t>(length) + 2) continue;
        const char* const closing = brace + 1 + length;
        if (*closing == '}' && IsIdentifier(TextPart(brace + 1, closing))) return {brace, closing + 1};
    }
    return {brace, brace};
}

// The base name: what stands behind the last slash and before the last dot, which may stand in an identifier,
// too.
struct BaseName {
    TextPart identifier;  // the last one; empty when there is none
    const char* brace;    // the last "{"; null when there is none
};

BaseName FindBaseName(const TextPart& name) {
    const mbchar::CodePage& page = mbchar::CodePage::Current();
    const BaseName nothing{TextPart(name.end, name.end), nullptr};
    BaseName soFar = nothing;
    BaseName beforeDot = nothing;
    bool hasDot = false;
    for (const char* at = name.begin; at < name.end;) {
        const unsigned bytes = page.characterAt(at, name.end).bytes;
        const TextPart identifier = *at == '{' ? IdentifierAt(at, name.end) : TextPart(at, at);
        if (*at == '{') soFar.brace = at;
        if (!identifier.isEmpty()) soFar.identifier = identifier;
        if (*at == '.') beforeDot = soFar;
        hasDot |= *at == '.';
        if (*at == '/' || *at == '\\') {
            soFar = nothing;
            hasDot = false;
        }
        at = identifier.isEmpty() ? at + bytes : identifier.end;
    }
    return hasDot ? beforeDot : soFar;
}

}  // namespace

SAnsiString FRSUrl::GetOriginalFilename(const SAnsiString& name) {
    const TextPart all(name);
    const BaseName base = FindBaseName(all);
    const bool isClosed = base.brace == nullptr || Holds(TextPart(base.brace, all.end), "}");
    if (!Require(isClosed, "frsurl", "Could not find guid closing tag") || base.identifier.isEmpty())
        return name;
    SAnsiString original(all.begin, static_cast<std::uint32_t>(base.identifier.begin - all.begin));
    return original.concat(base.identifier.end, static_cast<std::uint32_t>(all.end - base.identifier.end));
}

}  // namespace TarnLibA500

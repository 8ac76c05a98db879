#include "files/namepattern.h"

#include "strings/characters/surrogates.h"
#include "system/systemtext.h"
#include "tarnlib/snarrowtext.h"

#include <windows.h>

namespace TarnLibA500 {
namespace {

constexpr wchar_t kAsciiEnd = 0x80;

wchar_t FoldAscii(wchar_t unit) {
    return unit >= L'A' && unit <= L'Z' ? static_cast<wchar_t>(unit - L'A' + L'a') : unit;
}

// As the file system sees it.
bool SameLetter(wchar_t a, wchar_t b) noexcept {
    if (a < kAsciiEnd && b < kAsciiEnd) return FoldAscii(a) == FoldAscii(b);
    return a == b || CompareStringOrdinal(&a, 1, &b, 1, TRUE) == CSTR_EQUAL;
}

bool IsPair(const wchar_t* name) {
    return utf::IsHighSurrogate(name[0]) && utf::IsLowSurrogate(name[1]);
}

}  // namespace

NamePattern::NamePattern(const SAnsiString& pattern)
    : takesAll_(pattern.isEmpty() || pattern == "*" || pattern == "*.*"), hasPairs_(SNarrowText::IsUtf8()) {
    isText_ = ToSystemExactly(pattern, pattern_);  // what is no character would be a "?", which matches any
}

// A star takes nothing at first; where the rest does not match, the last one takes one more. No earlier star
// needs another look, so the time is the product of the lengths at most.
bool NamePattern::matches(const wchar_t* name) const noexcept {
    if (takesAll_) return true;
    if (!isText_) return false;
    const wchar_t* pattern = pattern_.getString();
    const wchar_t* afterStar = nullptr;
    const wchar_t* starEnd = nullptr;
    while (*name != L'\0') {
        if (*pattern == L'*') {
            afterStar = ++pattern;
            starEnd = name;
        } else if (*pattern != L'\0' && (*pattern == L'?' || SameLetter(*pattern, *name))) {
            name += *pattern == L'?' && hasPairs_ && IsPair(name) ? 2 : 1;
            ++pattern;
        } else if (afterStar != nullptr) {
            pattern = afterStar;
            name = ++starEnd;
        } else {
            return false;
        }
    }
    while (*pattern == L'*') ++pattern;
    return *pattern == L'\0';
}

}  // namespace TarnLibA500

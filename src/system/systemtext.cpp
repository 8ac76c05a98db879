#include "system/systemtext.h"

#include "tarnlib/sstringconv.h"

#include <windows.h>

namespace TarnLibA500 {
namespace {

constexpr wchar_t kReplacement = L'?';

}  // namespace

SWCharString ToSystem(const SAnsiString& text) {
    SWCharString wide;
    if (wide.fromMBCS(text.getString())) return wide;
    wide.empty();
    for (auto at = text.begin(); !at.isAtEnd(); ++at) {
        const wchar_t unit = (*at).toUChar();
        wide.concat(unit != 0 ? unit : kReplacement);
    }
    return wide;
}

SAnsiString FromSystem(const wchar_t* text) {
    SAnsiString narrow;
    if (narrow.fromWChar(text)) return narrow;
    narrow.empty();
    for (; *text != L'\0'; ++text) {
        SChar_t<char, 0> character;
        if (!character.fromUChar(*text)) character = '?';
        narrow.concat(character);
    }
    return narrow;
}

SAnsiString SystemErrorText(unsigned long code) {
    constexpr DWORD kMaxText = 512;
    wchar_t text[kMaxText];
    const DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                                        code, 0, text, kMaxText, nullptr);
    if (length == 0) return SAnsiString("system error ") + SStringConv::ToString(code);
    return FromSystem(text).trimRight();
}

}  // namespace TarnLibA500

#include "diag/logging/tracetext.h"

#include <cstring>

#include "strings/characters/utf8text.h"
#include "strings/text/stringbuilder.h"
#include "system/systemtext.h"
#include "tarnlib/snarrowtext.h"

namespace TarnLibA500 {
namespace {

// True for bytes that are the same in UTF-8.
bool IsUtf8(const char* text) {
    while (*text > 0) ++text;
    if (*text == '\0') return true;
    const char* const end = text + std::strlen(text);
    return SNarrowText::IsUtf8() && utf8text::FindInvalid(text, end) == end;
}

SAnsiString AsciiOnly(SAnsiString text) {
    char* const bytes = text.detach();
    for (std::uint32_t i = 0; i < text.getLength(); ++i) {
        if (bytes[i] < 0) bytes[i] = '?';
    }
    return text;
}

// Room for the longest result: to ask for its size first would be to ask for the locale, too, which another
// thread may change before the text is written.
SAnsiString ToUtf8(const char* text) {
    constexpr std::uint32_t kMostBytesOfByte = 3;
    const SAnsiString codePageText(text);
    StringBuilder<char, 0> utf8(kMostBytesOfByte * codePageText.getLength() + 1);
    const int written = codePageText.toUTF8(utf8.units(), utf8.room());
    if (written < 0) return AsciiOnly(codePageText);
    utf8.cut(static_cast<std::uint32_t>(written));
    return utf8;
}

}  // namespace

Utf8::Utf8(const char* text) : text_(text) {
    convert();
}

Utf8::Utf8(const SAnsiString& text) : kept_(text), text_(kept_.getString()) {
    convert();
}

void Utf8::convert() {
    if (text_ == nullptr || IsUtf8(text_)) return;
    kept_ = ToUtf8(text_);
    text_ = kept_.getString();
}

SAnsiString Utf8Name(const SAnsiString& name) {
    const SWCharString wide = ToSystem(name);
    StringBuilder<char, 0> utf8(wide.getNBytesForUTF8());
    const int written = wide.toUTF8(utf8.units(), utf8.room());  // with the terminator
    utf8.cut(written > 0 ? static_cast<std::uint32_t>(written - 1) : 0);
    return utf8;
}

SAnsiString NameFromUtf8(const SAnsiString& utf8) {
    SWCharString wide;
    return wide.fromUTF8(utf8.getString()) ? FromSystem(wide.getString()) : AsciiOnly(utf8);
}

void CollectedText::append(const char* text, std::size_t bytes) {
    utf8_.concat(text, static_cast<std::uint32_t>(bytes));
}

SAnsiString CollectedText::text() const {
    SAnsiString text;
    return text.fromUTF8(utf8_.getString()) ? text : AsciiOnly(utf8_);
}

}  // namespace TarnLibA500

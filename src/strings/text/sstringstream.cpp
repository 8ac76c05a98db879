// The appending operators of strings. Numbers are written straight to their final place or through a small
// local area.

#include "strings/base/intconv.h"
#include "strings/base/integertypes.h"
#include "strings/text/realtext.h"
#include "tarnlib/sstring.h"

namespace TarnLibA500 {
namespace {

constexpr int kRadix = 10;
constexpr int kDecimals = 6;

template <class String, class unit, class Integer>
String& AppendInteger(String& out, Integer number) {
    unit text[kIntegerTextUnits];
    const std::uint32_t length = StringConvFromInteger(text, number, kRadix);
    out.concat(text, length);
    return out;
}

void AppendAscii(SAnsiString& out, const char* text, std::uint32_t length) {
    out.concat(text, length);
}
void AppendAscii(SWCharString& out, const char* text, std::uint32_t length) {
    out.concatFromAsciiCharacters(text, length);
}

template <class String>
String& AppendReal(String& out, double number) {
    WithRealText(number, kDecimals,
                 [&](const char* text, std::uint32_t length) { AppendAscii(out, text, length); });
    return out;
}

template <class String, class Text>
String& Append(String& out, const Text& text) {
    out.concat(text);
    return out;
}

}  // namespace

SAnsiString& operator<<(SAnsiString& out, const SString_t<char, 0>& text) {
    return Append(out, text);
}
SAnsiString& operator<<(SAnsiString& out, const char* text) {
    return Append(out, text);
}
SAnsiString& operator<<(SAnsiString& out, const SChar_t<char, 0>& character) {
    return Append(out, character);
}
SAnsiString& operator<<(SAnsiString& out, char character) {
    return Append(out, character);
}
SAnsiString& operator<<(SAnsiString& out, double number) {
    return AppendReal(out, number);
}

SWCharString& operator<<(SWCharString& out, const SString_t<wchar_t, 1>& text) {
    return Append(out, text);
}
SWCharString& operator<<(SWCharString& out, const wchar_t* text) {
    return Append(out, text);
}
SWCharString& operator<<(SWCharString& out, const SChar_t<wchar_t, 1>& character) {
    return Append(out, character);
}
SWCharString& operator<<(SWCharString& out, wchar_t character) {
    return Append(out, character);
}
SWCharString& operator<<(SWCharString& out, double number) {
    return AppendReal(out, number);
}

#define TARN_APPEND_INTEGER(T)                                    \
    SAnsiString& operator<<(SAnsiString& out, T number) {         \
        return AppendInteger<SAnsiString, char>(out, number);     \
    }                                                             \
    SWCharString& operator<<(SWCharString& out, T number) {       \
        return AppendInteger<SWCharString, wchar_t>(out, number); \
    }
TARN_FOR_EACH_INTEGER(TARN_APPEND_INTEGER)

}  // namespace TarnLibA500

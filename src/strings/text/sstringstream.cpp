// The appending operators of strings. Numbers are written straight to their final place or through a small
// local area.

#include "strings/base/intconv.h"
#include "strings/base/realformat.h"
#include "tarnlib/sstring.h"

namespace TarnLibA500 {
namespace {

constexpr int kRadix = 10;
constexpr int kDecimals = 6;
constexpr std::uint32_t kUsualRealUnits = 32;

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
    char usual[kUsualRealUnits];
    const std::uint32_t length = FormatFixed(usual, sizeof usual, number, kDecimals);
    if (length < sizeof usual) {
        AppendAscii(out, usual, length);
    } else {
        SAsciiString whole;
        whole.setSize(length);
        FormatFixed(whole.detach(), length + 1, number, kDecimals);
        AppendAscii(out, whole.getString(), length);
    }
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
SAnsiString& operator<<(SAnsiString& out, short n) {
    return AppendInteger<SAnsiString, char>(out, n);
}
SAnsiString& operator<<(SAnsiString& out, unsigned short n) {
    return AppendInteger<SAnsiString, char>(out, n);
}
SAnsiString& operator<<(SAnsiString& out, int n) {
    return AppendInteger<SAnsiString, char>(out, n);
}
SAnsiString& operator<<(SAnsiString& out, unsigned int n) {
    return AppendInteger<SAnsiString, char>(out, n);
}
SAnsiString& operator<<(SAnsiString& out, long n) {
    return AppendInteger<SAnsiString, char>(out, n);
}
SAnsiString& operator<<(SAnsiString& out, unsigned long n) {
    return AppendInteger<SAnsiString, char>(out, n);
}
SAnsiString& operator<<(SAnsiString& out, long long n) {
    return AppendInteger<SAnsiString, char>(out, n);
}
SAnsiString& operator<<(SAnsiString& out, unsigned long long n) {
    return AppendInteger<SAnsiString, char>(out, n);
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
SWCharString& operator<<(SWCharString& out, short n) {
    return AppendInteger<SWCharString, wchar_t>(out, n);
}
SWCharString& operator<<(SWCharString& out, unsigned short n) {
    return AppendInteger<SWCharString, wchar_t>(out, n);
}
SWCharString& operator<<(SWCharString& out, int n) {
    return AppendInteger<SWCharString, wchar_t>(out, n);
}
SWCharString& operator<<(SWCharString& out, unsigned int n) {
    return AppendInteger<SWCharString, wchar_t>(out, n);
}
SWCharString& operator<<(SWCharString& out, long n) {
    return AppendInteger<SWCharString, wchar_t>(out, n);
}
SWCharString& operator<<(SWCharString& out, unsigned long n) {
    return AppendInteger<SWCharString, wchar_t>(out, n);
}
SWCharString& operator<<(SWCharString& out, long long n) {
    return AppendInteger<SWCharString, wchar_t>(out, n);
}
SWCharString& operator<<(SWCharString& out, unsigned long long n) {
    return AppendInteger<SWCharString, wchar_t>(out, n);
}
SWCharString& operator<<(SWCharString& out, double number) {
    return AppendReal(out, number);
}

}  // namespace TarnLibA500

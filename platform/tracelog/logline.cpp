#include "tracelog/logline.h"

#include <cstdint>
#include <cstring>

#include "seam/osclock.h"
#include "tracelog/effective.h"

#include <windows.h>

namespace TraceLog400::detail {
namespace {

constexpr std::size_t kMaxContext = 200;
constexpr std::size_t kMaxFile = 96;
constexpr unsigned kTicksPerMillisecond = 10'000;
constexpr std::int64_t kTicksPerSecond = 10'000'000;
constexpr std::int64_t kTicksPerMinute = 60 * kTicksPerSecond;
constexpr char kHex[] = "0123456789ABCDEF";

char* WriteDigits(char* out, unsigned value, int digits) {
    for (int i = digits - 1; i >= 0; --i, value /= 10) out[i] = static_cast<char>('0' + value % 10);
    return out + digits;
}

char* WriteNumber(char* out, unsigned long value) {
    int digits = 1;
    for (unsigned long rest = value; rest >= 10; rest /= 10) ++digits;
    return WriteDigits(out, value, digits);
}

char* WriteText(char* out, const char* text, std::size_t bytes) {
    std::memcpy(out, text, bytes);
    return out + bytes;
}

FILETIME FileTime(const SYSTEMTIME& time) {
    FILETIME ticks{};
    SystemTimeToFileTime(&time, &ticks);
    return ticks;
}

/// What all lines of one second have in common. Trivial, because it is one a thread.
struct SecondText {
    std::int64_t start;  ///< of the second, in ticks
    char dateTime[19];   ///< 2026-11-21T08:15:02
    char zone[6];        ///< +01:00
    unsigned long thread;
};
thread_local SecondText ofThisSecond{};

// The offset is asked anew each second, so a switch of daylight saving time is never missed.
void FillSecond(SecondText& text, std::int64_t ticks) {
    const FILETIME utcTicks = {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
    SYSTEMTIME utc{};
    FileTimeToSystemTime(&utcTicks, &utc);
    SYSTEMTIME local = utc;
    SystemTimeToTzSpecificLocalTime(nullptr, &utc, &local);
    char* at = WriteDigits(text.dateTime, local.wYear, 4);
    const unsigned parts[] = {local.wMonth, local.wDay, local.wHour, local.wMinute, local.wSecond};
    const char* separator = "--T::";
    for (const unsigned part : parts) {
        *at++ = *separator++;
        at = WriteDigits(at, part, 2);
    }
    const std::int64_t minutes =
        (osclock::UnitsOf(FileTime(local)) - osclock::UnitsOf(FileTime(utc))) / kTicksPerMinute;
    const auto size = static_cast<unsigned>(minutes < 0 ? -minutes : minutes);
    text.zone[0] = minutes < 0 ? '-' : '+';
    at = WriteDigits(text.zone + 1, size / 60, 2);
    *at++ = ':';
    WriteDigits(at, size % 60, 2);
    text.thread = GetCurrentThreadId();
    text.start = ticks - ticks % kTicksPerSecond;
}

const SecondText& SecondOf(std::int64_t ticks) {
    SecondText& text = ofThisSecond;
    const std::int64_t since = ticks - text.start;
    if (since < 0 || since >= kTicksPerSecond) FillSecond(text, ticks);
    return text;
}

// The file's name without its directories.
char* WriteFile(char* out, const char* file) {
    const char* name = file;
    for (const char* at = file; *at != '\0'; ++at) {
        if (*at == '/' || *at == '\\') name = at + 1;
    }
    const std::size_t bytes = WholeCharacters(name, strnlen(name, kMaxFile));
    return EscapedBytes(name, bytes) == bytes ? WriteText(out, name, bytes) : WriteText(out, "?", 1);
}

char* WritePlace(char* out, const EventInfo& event) {
    if (event.file == nullptr) return WriteText(out, "- ", 2);
    out = WriteFile(out, event.file);
    if (event.line > 0) {
        *out++ = '(';
        out = WriteNumber(out, static_cast<unsigned long>(event.line));
        *out++ = ')';
    }
    *out++ = ' ';
    return out;
}

// What ControlBytes tells of a character that is not plain ASCII, which it asks first.
std::size_t RareControlBytes(const unsigned char* text, std::size_t bytes) {
    const bool isC1 = text[0] == 0xC2 && bytes > 1 && text[1] >= 0x80 && text[1] <= 0x9F;
    if (isC1) return 2;
    const bool isSeparator = text[0] == 0xE2 && bytes > 2 && text[1] == 0x80 && (text[2] | 1) == 0xA9;
    return isSeparator ? 3 : 0;
}

std::size_t EscapeBytes(char c, std::size_t bytes) {
    constexpr std::size_t kLetter = 2;  // \n
    constexpr std::size_t kByte = 4;    // \x1B
    constexpr std::size_t kUnit = 6;    // \u2028
    if (bytes > 1) return kUnit;
    return c == '\r' || c == '\n' ? kLetter : kByte;
}

char* WriteHex(char* out, unsigned value, int digits) {
    for (int i = digits - 1; i >= 0; --i, value >>= 4) out[i] = kHex[value & 0xF];
    return out + digits;
}

char* WriteControl(char* out, const char* text, std::size_t bytes) {
    const auto* const at = reinterpret_cast<const unsigned char*>(text);
    *out++ = '\\';
    if (bytes > 1) {
        *out++ = 'u';
        return WriteHex(out, bytes == 2 ? at[1] : 0x2000U | (at[2] & 0x3FU), 4);
    }
    if (*text == '\r' || *text == '\n') {
        *out++ = *text == '\r' ? 'r' : 'n';
        return out;
    }
    *out++ = 'x';
    return WriteHex(out, *at, 2);
}

}  // namespace

std::size_t ControlBytes(const char* text, std::size_t bytes) {
    const auto first = static_cast<unsigned char>(*text);
    if (first < ' ') return first != '\t' ? 1 : 0;
    if (first < 0x7F) return 0;
    return first == 0x7F ? 1 : RareControlBytes(reinterpret_cast<const unsigned char*>(text), bytes);
}

std::size_t WritePrefix(char* out, char letter, const EventInfo& event) {
    const std::int64_t ticks = osclock::Now();
    const SecondText& second = SecondOf(ticks);
    char* at = WriteText(out, second.dateTime, sizeof second.dateTime);
    *at++ = '.';
    at = WriteDigits(at, static_cast<unsigned>(ticks - second.start) / kTicksPerMillisecond, 3);
    at = WriteText(at, second.zone, sizeof second.zone);
    *at++ = ' ';
    *at++ = letter;
    const std::string& identity = CurrentIdentity().linePrefix;
    at = WriteText(at, identity.data(), identity.size());
    at = WriteNumber(at, second.thread);
    at = WriteText(at, " [", 2);
    at += WriteContext(at, kMaxContext);
    at = WriteText(at, "] ", 2);
    at = WritePlace(at, event);
    if (event.marker != 0) at = WriteText(at, "# ", 2);
    return static_cast<std::size_t>(at - out);
}

std::size_t EscapedBytes(const char* text, std::size_t bytes) {
    std::size_t escaped = bytes;
    for (std::size_t i = 0; i < bytes; ++i) {
        const std::size_t control = ControlBytes(text + i, bytes - i);
        if (control == 0) continue;
        escaped += EscapeBytes(text[i], control) - control;
        i += control - 1;
    }
    return escaped;
}

char* WriteEscaped(char* out, const char* text, std::size_t bytes) {
    for (std::size_t i = 0; i < bytes; ++i) {
        const std::size_t control = ControlBytes(text + i, bytes - i);
        if (control == 0) {
            *out++ = text[i];
            continue;
        }
        out = WriteControl(out, text + i, control);
        i += control - 1;
    }
    return out;
}

std::string MakeLine(char letter, const char* text, std::size_t bytes) {
    char prefix[kMaxPrefix];
    std::string line(prefix, WritePrefix(prefix, letter, EventInfo()));
    line.append(text, bytes);
    return line.append(kLineEnd, kLineEndBytes);
}

}  // namespace TraceLog400::detail

#include "diag/assert/unlogged.h"

#include <cstddef>
#include <cstdio>

#include "diag/assert/narrowreports.h"

#include <windows.h>

namespace TarnLibA500 {
namespace {

constexpr std::size_t kPieceBytes = 512;
constexpr std::size_t kLongestEscape = 4;
constexpr std::size_t kMostTrailingBytes = 3;  // of a character in UTF-8
constexpr std::size_t kPieceRoom = kPieceBytes + kMostTrailingBytes + kLongestEscape + 2;
constexpr char kHex[] = "0123456789ABCDEF";

bool BreaksLine(char c) {
    return (static_cast<unsigned char>(c) < ' ' && c != '\t') || c == '\x7F';
}

// As the log writes it: \r, \n, \xNN for what would break the line.
std::size_t WriteVisible(char* out, char c) {
    if (!BreaksLine(c)) {
        out[0] = c;
        return 1;
    }
    out[0] = '\\';
    if (c == '\r' || c == '\n') {
        out[1] = c == '\r' ? 'r' : 'n';
        return 2;
    }
    out[1] = 'x';
    out[2] = kHex[static_cast<unsigned char>(c) >> 4];
    out[3] = kHex[c & 0xF];
    return 4;
}

// The system takes bytes for text of the ANSI code page.
void PutToDebugger(const char* piece) {
    if (!reportsAreUtf8) return OutputDebugStringA(piece);
    wchar_t units[kPieceRoom];
    if (MultiByteToWideChar(CP_UTF8, 0, piece, -1, units, kPieceRoom) != 0) OutputDebugStringW(units);
}

void Put(const char* piece) {
    PutToDebugger(piece);
    std::fputs(piece, stderr);
}

// What would part a character of UTF-8.
bool GoesOn(const char* next, std::size_t bytes) {
    return (*next & 0xC0) == 0x80 && bytes < kPieceBytes + kMostTrailingBytes;
}

}  // namespace

// In pieces, because this is also for times when there is no memory.
void ReportUnlogged(const char* text) {
    char piece[kPieceRoom];
    std::size_t bytes = 0;
    for (; *text != '\0'; ++text) {
        bytes += WriteVisible(piece + bytes, *text);
        if (bytes < kPieceBytes || GoesOn(text + 1, bytes)) continue;
        piece[bytes] = '\0';
        Put(piece);
        bytes = 0;
    }
    piece[bytes] = '\n';
    piece[bytes + 1] = '\0';
    Put(piece);
    std::fflush(stderr);
}

}  // namespace TarnLibA500

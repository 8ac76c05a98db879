#include "diag/assert/unlogged.h"

#include <cstddef>
#include <cstdio>
#include <cstring>

#include "console/console.h"
#include "diag/assert/narrowreports.h"

#include <windows.h>

namespace TarnLibA500 {
namespace {

constexpr std::size_t kPieceBytes = 512;
constexpr std::size_t kLongestEscape = 4;  // no character has more bytes either
constexpr std::size_t kPieceRoom = kPieceBytes + kLongestEscape + 2;
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

// What the system takes narrow text for here.
UINT Page() {
    return reportsAreUtf8 ? CP_UTF8 : CP_ACP;
}

void PutToDebugger(const char* piece) {
    wchar_t units[kPieceRoom];
    if (ostext::ToWide(Page(), 0, piece, -1, units, kPieceRoom) != 0) OutputDebugStringW(units);
}

void Put(const char* piece, std::size_t bytes) {
    PutToDebugger(piece);
    console::Write(stderr, piece, bytes, Page());
}

// Appends the character at a text; its bytes there.
std::size_t AppendCharacter(char* piece, std::size_t& bytes, const char* text, std::size_t left) {
    const std::size_t count = console::CharacterBytes(text, left, Page());
    if (count == 1) {
        bytes += WriteVisible(piece + bytes, *text);
    } else {
        std::memcpy(piece + bytes, text, count);
        bytes += count;
    }
    return count;
}

}  // namespace

// In pieces, because this is also for times when there is no memory.
void ReportUnlogged(const char* text) {
    char piece[kPieceRoom];
    std::size_t bytes = 0;
    for (const char* const end = text + std::strlen(text); text != end;) {
        text += AppendCharacter(piece, bytes, text, static_cast<std::size_t>(end - text));
        if (bytes < kPieceBytes) continue;
        piece[bytes] = '\0';
        Put(piece, bytes);
        bytes = 0;
    }
    piece[bytes++] = '\n';
    piece[bytes] = '\0';
    Put(piece, bytes);
    std::fflush(stderr);
}

}  // namespace TarnLibA500

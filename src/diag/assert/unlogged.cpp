#include "diag/assert/unlogged.h"

#include <cstddef>
#include <cstdio>

#include <windows.h>

namespace TarnLibA500 {
namespace {

constexpr std::size_t kPieceBytes = 512;
constexpr std::size_t kLongestEscape = 4;
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

void Put(const char* piece) {
    OutputDebugStringA(piece);
    std::fputs(piece, stderr);
}

}  // namespace

// In pieces, because this is also for times when there is no memory.
void ReportUnlogged(const char* text) {
    char piece[kPieceBytes + kLongestEscape + 2];
    std::size_t bytes = 0;
    for (; *text != '\0'; ++text) {
        bytes += WriteVisible(piece + bytes, *text);
        if (bytes < kPieceBytes) continue;
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

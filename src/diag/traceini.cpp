#include "diag/traceini.h"

#include "strings/stringbuilder.h"
#include "system/systemtext.h"
#include "tarnlib/stringhelper.h"

#include <windows.h>

namespace TarnLibA500 {
namespace {

constexpr DWORD kMaxBytes = 64 * 1024;
constexpr DWORD kEveryShare = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

unsigned long long Join(DWORD high, DWORD low) {
    return static_cast<unsigned long long>(high) << 32 | low;
}

bool ReadStart(const SWCharString& path, SAnsiString& start) {
    const HANDLE file = CreateFileW(path.getString(), GENERIC_READ, kEveryShare, nullptr, OPEN_EXISTING,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return false;
    StringBuilder<char, 0> text(kMaxBytes);
    DWORD bytes = 0;
    const bool isRead = ReadFile(file, text.units(), kMaxBytes, &bytes, nullptr) != 0;
    CloseHandle(file);
    text.cut(isRead ? bytes : 0);
    start = text;
    return isRead;
}

// "option=value", "option" for a switch; blank lines and those that begin with "#" or ";" say nothing.
void TakeLine(SAnsiString line, CParamLineArgs& options) {
    line.trim();
    const char first = line.getString()[0];
    if (first == '\0' || first == '#' || first == ';') return;
    const auto equals = line.find("=");
    SAnsiString name = line.left(equals);
    SAnsiString value = equals.isAtEnd() ? SAnsiString() : SAnsiString(equals.getPtr() + 1);
    options.SetArg(name.trim(), value.trim());
}

}  // namespace

TraceIni::Stamp TraceIni::look() const {
    WIN32_FILE_ATTRIBUTE_DATA data;
    if (path_.isEmpty() || !GetFileAttributesExW(ToSystem(path_).getString(), GetFileExInfoStandard, &data))
        return Stamp();
    const FILETIME& written = data.ftLastWriteTime;
    return {Join(written.dwHighDateTime, written.dwLowDateTime), Join(data.nFileSizeHigh, data.nFileSizeLow)};
}

bool TraceIni::update() {
    const Stamp now = look();
    SAnsiString text;
    if (now == seen_ || (now != Stamp() && !ReadStart(ToSystem(path_), text))) return false;
    seen_ = now;
    SIArray<SAnsiString> lines;
    SStringHelper::makeWords(text, lines, "\r\n", false, false);
    options_ = CParamLineArgs();
    for (const SAnsiString& line : lines) TakeLine(line, options_);
    return true;
}

}  // namespace TarnLibA500

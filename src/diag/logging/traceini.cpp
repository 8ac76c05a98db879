#include "diag/logging/traceini.h"

#include <cstring>
#include <utility>

#include "files/osfiles.h"
#include "files/systempath.h"
#include "oscodes/oscodes.h"
#include "strings/text/stringbuilder.h"
#include "system/systemtext.h"
#include "tarnlib/sstringconv.h"
#include "tarnlib/stringhelper.h"

namespace TarnLibA500 {
namespace {

constexpr DWORD kMaxBytes = 64 * 1024;
constexpr char kUtf8Mark[] = "\xEF\xBB\xBF";
constexpr std::uint32_t kUtf8MarkBytes = sizeof kUtf8Mark - 1;

unsigned long long Join(DWORD high, DWORD low) {
    return static_cast<unsigned long long>(high) << 32 | low;
}

/// The first bytes of a file, or the error that keeps them from being read.
unsigned long ReadStart(const SAnsiString& path, SAnsiString& start) {
    const osfiles::File file =
        osfiles::Open(LongSystemPath(path).getString(), GENERIC_READ, oscodes::kEveryShare, nullptr,
                      OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL);
    if (!file) return GetLastError();
    StringBuilder<char, 0> text(kMaxBytes);
    DWORD bytes = 0;
    if (!osfiles::Read(file.get(), text.units(), kMaxBytes, bytes)) return GetLastError();
    text.cut(bytes);
    start = text;
    return ERROR_SUCCESS;
}

// A byte order mark says that the rest is UTF-8; without one it is in the process's code page.
SAnsiString WithoutMark(const SAnsiString& bytes) {
    if (std::strncmp(bytes.getString(), kUtf8Mark, kUtf8MarkBytes) != 0) return bytes;
    const char* const rest = bytes.getString() + kUtf8MarkBytes;
    SAnsiString text;
    return text.fromUTF8(rest) ? text : SAnsiString(rest);
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

CParamLineArgs Parse(const SAnsiString& text) {
    SIArray<SAnsiString> lines;
    SStringHelper::makeWords(text, lines, "\r\n", false, false);
    CParamLineArgs options;
    for (const SAnsiString& line : lines) TakeLine(line, options);
    return options;
}

SAnsiString OverlongProblem(const SAnsiString& path, unsigned long long bytes) {
    if (bytes <= kMaxBytes) return SAnsiString();
    return path + ": what is beyond " + SStringConv::ToString(kMaxBytes) + " bytes is not read";
}

}  // namespace

// The stamp of a file that is not there is all zero.
unsigned long TraceIni::look(Stamp& stamp) const {
    WIN32_FILE_ATTRIBUTE_DATA data;
    if (path_.isEmpty()) return ERROR_SUCCESS;
    if (!osfiles::Attributes(LongSystemPath(path_).getString(), data))
        return oscodes::IsMissing(GetLastError()) ? ERROR_SUCCESS : GetLastError();
    const FILETIME& written = data.ftLastWriteTime;
    stamp = {Join(written.dwHighDateTime, written.dwLowDateTime),
             Join(data.nFileSizeHigh, data.nFileSizeLow)};
    return ERROR_SUCCESS;
}

bool TraceIni::complain(const SAnsiString& problem) {
    if (problem == problem_) return false;
    problem_ = problem;
    return true;
}

// Everything is made before anything is changed.
bool TraceIni::update() {
    Stamp now;
    unsigned long error = look(now);
    SAnsiString text;
    if (error == ERROR_SUCCESS) {
        if (now == seen_) return complain(OverlongProblem(path_, now.size));  // it may be readable again
        if (now != Stamp()) error = ReadStart(path_, text);
    }
    if (error != ERROR_SUCCESS)
        return complain(path_ + ": cannot be read (" + SStringConv::ToString(error) +
                        "): " + SystemErrorText(error) + " What it said before stays in effect.");
    CParamLineArgs options = Parse(WithoutMark(text));
    SAnsiString problem = OverlongProblem(path_, now.size);
    options_ = std::move(options);
    problem_ = std::move(problem);
    seen_ = now;
    return true;
}

}  // namespace TarnLibA500

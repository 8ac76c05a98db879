#include "tarnlib/sassert.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>

#include <windows.h>

namespace TarnLibA500 {
namespace {

constexpr const char* kNoMessage = "no message";
constexpr std::size_t kUsualTextBytes = 1024;

const SDiagnosticSink kBuiltInSink;
std::atomic<const SDiagnosticSink*> installedSink{nullptr};

// Trivially destructible on purpose: destructors of thread-local objects run after their storage is gone
// here.
thread_local bool reportingOnThisThread = false;

// Marks the thread as reporting, also when a sink throws.
class ReportingMark {
  public:
    ReportingMark() { reportingOnThisThread = true; }
    ~ReportingMark() { reportingOnThisThread = false; }
    ReportingMark(const ReportingMark&) = delete;
    ReportingMark& operator=(const ReportingMark&) = delete;
};

const SDiagnosticSink& CurrentSink() {
    const SDiagnosticSink* sink = installedSink.load(std::memory_order_acquire);
    return sink != nullptr ? *sink : kBuiltInSink;
}

const char* OrNothing(const char* text) {
    return text != nullptr ? text : "";
}

// No sink yet: the line must still be seen, by a debugger and on standard error.
void UnloadedAssert(const char* text) {
    OutputDebugStringA(text);
    OutputDebugStringA("\n");
    std::fprintf(stderr, "%s\n", text);
    std::fflush(stderr);
}

void Deliver(const char* text) {
    const SDiagnosticSink& sink = CurrentSink();
    (sink.assertion != nullptr ? sink.assertion : &UnloadedAssert)(text);
}

int Format(char* out, std::size_t size, const char* file, int line, const char* expression,
           const char* message) {
    return std::snprintf(out, size, "assert failure: (%s:%d). (%s : %s).", OrNothing(file), line,
                         OrNothing(expression), message != nullptr ? message : kNoMessage);
}

void Report(const char* file, int line, const char* expression, const char* message) {
    char usual[kUsualTextBytes];
    const int length = Format(usual, sizeof usual, file, line, expression, message);
    if (length < static_cast<int>(sizeof usual)) return Deliver(usual);
    const std::size_t size = static_cast<std::size_t>(length) + 1;
    char* whole = static_cast<char*>(std::malloc(size));
    if (whole == nullptr) return Deliver(usual);  // cut, but reported
    Format(whole, size, file, line, expression, message);
    Deliver(whole);
    std::free(whole);
}

}  // namespace

const SDiagnosticSink* InstallDiagnosticSink(const SDiagnosticSink* sink) {
    return installedSink.exchange(sink, std::memory_order_acq_rel);
}

namespace SLogger {
bool ShouldAssert() {
    const SDiagnosticSink& sink = CurrentSink();
    return sink.shouldAssert == nullptr || sink.shouldAssert();
}
}  // namespace SLogger

void SAssert(const char* file, int line, const char* expression, const char* message) {
    if (reportingOnThisThread) return;
    const ReportingMark mark;
    if (SLogger::ShouldAssert()) Report(file, line, expression, message);
}

void SAssert(const char* file, int line, const char* expression) {
    SAssert(file, line, expression, static_cast<const char*>(nullptr));
}

void SAssert(const char* file, int line, const char* expression, const wchar_t* message) {
    char narrow[kUsualTextBytes] = "";
    if (message != nullptr) {
        // Bytes 0 to size - 2 only, so that a message that is too long is cut and still terminated.
        const int units = static_cast<int>(wcsnlen(message, sizeof narrow / 2 - 1));
        const int bytes =
            WideCharToMultiByte(CP_ACP, 0, message, units, narrow, sizeof narrow - 1, "?", nullptr);
        narrow[bytes > 0 ? bytes : 0] = '\0';
    }
    SAssert(file, line, expression, message != nullptr ? narrow : nullptr);
}

bool ShouldTraceText(int level, const char* unit) {
    const SDiagnosticSink& sink = CurrentSink();
    return sink.shouldTrace != nullptr && sink.shouldTrace(level, OrNothing(unit));
}

void TraceText(int level, const char* unit, const char* text) {
    const SDiagnosticSink& sink = CurrentSink();
    if (sink.trace != nullptr && ShouldTraceText(level, unit))
        sink.trace(level, OrNothing(unit), OrNothing(text));
}

}  // namespace TarnLibA500

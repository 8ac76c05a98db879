#include "tarnlib/sassert.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>

#include "diag/unlogged.h"

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

void Deliver(const char* text) {
    const SDiagnosticSink& sink = CurrentSink();
    (sink.assertion != nullptr ? sink.assertion : &ReportUnlogged)(text);
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

void ReportUnlogged(const char* text) {
    OutputDebugStringA(text);
    OutputDebugStringA("\n");
    std::fprintf(stderr, "%s\n", text);
    std::fflush(stderr);
}

const SDiagnosticSink* InstallDiagnosticSink(const SDiagnosticSink* sink) {
    const SDiagnosticSink* const before = installedSink.exchange(sink, std::memory_order_acq_rel);
    // The new sink is asked for every level; it may close those it never wants.
    const bool asks = sink != nullptr && (sink->shouldTraceAt != nullptr || sink->shouldTrace != nullptr);
    SLogger::openTraceLevels.store(asks ? UINT32_MAX : 0, std::memory_order_release);
    return before;
}

namespace SLogger {
std::atomic<std::uint32_t> openTraceLevels{0};

bool ShouldTrace(int level, const char* file, int line) {
    const SDiagnosticSink& sink = CurrentSink();
    if (sink.shouldTraceAt != nullptr) return sink.shouldTraceAt(level, file, line);
    return sink.shouldTrace != nullptr && sink.shouldTrace(level, OrNothing(file));
}

bool ShouldTrace(int level, const char* file) {
    return ShouldTrace(level, file, 0);
}

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
    return SLogger::MayTrace(level) && SLogger::ShouldTrace(level, unit);
}

void TraceText(int level, const char* unit, const char* text) {
    if (ShouldTraceText(level, unit)) EmitTraceText(level, unit, 0, text);
}

void EmitTraceText(int level, const char* file, int line, const char* text) {
    const SDiagnosticSink& sink = CurrentSink();
    if (sink.traceAt != nullptr) {
        sink.traceAt(level, file, line, OrNothing(text));
    } else if (sink.trace != nullptr) {
        sink.trace(level, OrNothing(file), OrNothing(text));
    }
}

}  // namespace TarnLibA500

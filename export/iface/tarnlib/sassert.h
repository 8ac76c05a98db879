#pragma once

#include <atomic>
#include <cstdint>

#include "tarnlib/tarnapi.h"

/// Assertions and trace texts, below everything else in the library.
///
/// A broken precondition is reported here and the operation carries on with a neutral result; nothing is
/// thrown and nothing aborts. The report is one line,
///
///     assert failure: (sstring:120). (inBuffer != 0 : no message).
///
/// with the source unit, the line, the expression and a message. Until a sink is installed the line goes to
/// the debugger and to standard error. An assertion that is raised while another is being reported on the
/// same thread is dropped, so a sink may use the library. All functions may be called from any thread at any
/// time.
///
///     static void Remember(const char* text) { lastAssertion = text; }
///
///     SDiagnosticSink sink;
///     sink.assertion = &Remember;
///     const SDiagnosticSink* before = InstallDiagnosticSink(&sink);
///     ...
///     InstallDiagnosticSink(before);
namespace TarnLibA500 {

/// Where assertions and trace texts go. A null member stands for the built-in behaviour. The object must stay
/// alive and unchanged while it is installed, and until no other thread can still be inside one of its
/// functions. Texts are in the process's code page, or in UTF-8 (SNarrowText). The functions for assertions
/// must not throw.
struct SDiagnosticSink {
    /// Takes the finished line of an assertion, without a line end. Line ends inside are not escaped. Built in:
    /// to a debugger and to standard error, with \r, \n and \xNN for what would break the line.
    void (*assertion)(const char* text) = nullptr;
    /// Says whether assertions are reported at all. Built in: always.
    bool (*shouldAssert)() = nullptr;
    /// Says whether a text of this level (0 to 18) from this source unit is wanted. Built in: never.
    bool (*shouldTrace)(int level, const char* unit) = nullptr;
    /// Takes a trace text that shouldTrace let through.
    void (*trace)(int level, const char* unit, const char* text) = nullptr;
    /// shouldTrace with the line (0: unknown). Where it is set it is asked in place of shouldTrace.
    bool (*shouldTraceAt)(int level, const char* unit, int line) = nullptr;
    /// trace with the line. Where it is set it is called in place of trace.
    void (*traceAt)(int level, const char* unit, int line, const char* text) = nullptr;
    /// Takes the line of an assertion with a wide message, in UTF-8. Where it is not set, such a line goes to
    /// "assertion", with "?" for what the ANSI code page does not have, unless narrow text is UTF-8.
    void (*assertionUtf8)(const char* text) = nullptr;
};

/// Installs a sink (null: the built-in one) and returns the one that was installed before (null: the built-in
/// one).
TARN_API const SDiagnosticSink* InstallDiagnosticSink(const SDiagnosticSink* sink);

/// Reports the broken expression at a line of a source unit, with the message "no message".
TARN_API void SAssert(const char* file, int line, const char* expression);
/// Reports it with a message that is narrow text; a null message is "no message".
TARN_API void SAssert(const char* file, int line, const char* expression, const char* message);
/// Reports it with a UTF-16 message of any length; a null message is "no message".
TARN_API void SAssert(const char* file, int line, const char* expression, const wchar_t* message);

/// The front end of assertions and tracing; slogger.h has the rest of it.
namespace SLogger {
/// A trace level: 0 to 18. docs/logging.md tells what each stands for.
using tracelevel = int;

/// True when assertions are reported: always, unless an installed sink says otherwise.
TARN_API bool ShouldAssert();

/// Bit n is clear when no trace point of level n is switched on anywhere. The last bit stands for all numbers
/// that are no level. For MayTrace and the sinks.
TARN_API extern std::atomic<std::uint32_t> openTraceLevels;

/// A first look that costs a load and a test: false when ShouldTrace would be false for every file.
inline bool MayTrace(tracelevel level) noexcept {
    constexpr unsigned kNoLevel = 31;
    const unsigned bit = static_cast<unsigned>(level) < kNoLevel ? static_cast<unsigned>(level) : kNoLevel;
    return ((openTraceLevels.load(std::memory_order_relaxed) >> bit) & 1) != 0;
}

/// True when the trace point of this level, in this source file or unit, is switched on. False before a sink
/// is installed.
TARN_API bool ShouldTrace(tracelevel level, const char* file);
/// True when the trace point of this level, in this source file or unit and line, is switched on. False
/// before a sink is installed.
TARN_API bool ShouldTrace(tracelevel level, const char* file, int line);
}  // namespace SLogger

/// True when a trace text of this level (0 to 18) from this source unit would be taken.
TARN_API bool ShouldTraceText(int level, const char* unit);
/// Hands a finished text to the sink when ShouldTraceText holds; otherwise does nothing.
TARN_API void TraceText(int level, const char* unit, const char* text);
/// Hands a finished text to the sink without asking again: for callers that have asked ShouldTrace.
TARN_API void EmitTraceText(int level, const char* file, int line, const char* text);

}  // namespace TarnLibA500

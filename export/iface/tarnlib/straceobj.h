#pragma once

#include "tarnlib/sassert.h"
#include "tarnlib/straceparameter.h"
#include "tarnlib/tarnapi.h"

/// Trace points: a level, a place, and a text that is made only where somebody reads it.
///
/// Levels are numbers from 0 to 18; docs/logging.md lists what each stands for in the log. TARN_TRACE may
/// stand anywhere and be passed by many threads. Switched off it costs a load and a test, and evaluates no
/// argument.
///
///     TARN_TRACE(6, "sent %1 bytes to %2", bytes, hostName);
///
/// In a library unit, whose places are named by the unit and not by a path of the machine it was built on:
///
///     TARN_TRACE_AT(6, "csisocket", "connected after %1 ms", watch.GetElapsed());
namespace TarnLibA500 {

/// The level, file and line of one trace point. Calling it makes a text, whether the point is switched on or
/// not: ask SLogger::ShouldTrace first, or use TARN_TRACE.
class TARN_API STraceObj {
  public:
    /// The file is kept as a pointer; null is allowed.
    STraceObj(int level, const char* file, int line) noexcept : level_(level), file_(file), line_(line) {}

    /// Emits the format (narrow or wide) filled in with 0 to 12 arguments. A line end at the end of the text,
    /// as the system's messages have it, is left out; a zero byte in it is written as \x00.
    template <class unit, class... Parameters>
    requires TraceParameters<Parameters...>
    void operator()(const unit* format, const Parameters&... parameters) const {
        if constexpr (sizeof...(parameters) == 0) {
            emit(format, nullptr, 0);
        } else {
            const STraceParameter all[] = {STraceParameter(parameters)...};
            emit(format, all, sizeof...(parameters));
        }
    }

  private:
    void emit(const char* format, const STraceParameter* parameters, unsigned count) const;
    void emit(const wchar_t* format, const STraceParameter* parameters, unsigned count) const;

    int level_;
    const char* file_;
    int line_;
};

}  // namespace TarnLibA500

/// Traces a text from a named file or unit when its point is switched on.
#define TARN_TRACE_AT(level, file, ...)                                              \
    do {                                                                             \
        if (::TarnLibA500::SLogger::MayTrace(level) &&                               \
            ::TarnLibA500::SLogger::ShouldTrace(level, file, __LINE__)) [[unlikely]] \
            ::TarnLibA500::STraceObj(level, file, __LINE__)(__VA_ARGS__);            \
    } while (false)

/// Traces a text from this source file when its point is switched on.
#define TARN_TRACE(level, ...) TARN_TRACE_AT(level, __FILE__, __VA_ARGS__)

#pragma once

#include "tarnlib/sassert.h"
#include "tarnlib/straceparameter.h"
#include "tarnlib/tarnapi.h"

/// Trace points: a level, a place, and a text that is made only where somebody reads it.
///
/// Levels are numbers from 0 to 18; docs/logging.md lists what each stands for in the log. TARN_TRACE may
/// stand anywhere and be passed by many threads. Switched off it evaluates no argument, and costs a load and a
/// test, or two of them where the mask would let it through and the file filter holds it back; with a level or
/// a file that is no constant the filter is asked each time.
///
///     TARN_TRACE(6, "sent %1 bytes to %2", bytes, hostName);
///
/// In a library unit, whose places are named by the unit and not by a path of the machine it was built on:
///
///     TARN_TRACE_AT(6, "csisocket", "connected after %1 ms", watch.GetElapsed());
namespace TarnLibA500 {

namespace SLogger {
/// Goes up with every change of what is traced: a sink, an option, the trace ini file. For STracePoint.
TARN_API extern std::atomic<std::uint32_t> traceSettings;
}  // namespace SLogger

/// What the trace point of one level, file and line remembers: that the file filter excludes it. Any change of
/// what is traced makes that void. For TARN_TRACE; any thread may ask.
class STracePoint {
  public:
    /// SLogger::ShouldTrace. The level, file and line must be the same each time.
    bool ShouldTrace(int level, const char* file, int line) {
        const std::uint32_t settings = SLogger::traceSettings.load(std::memory_order_acquire);
        return excludedIn_.load(std::memory_order_relaxed) != settings && ask(level, file, line);
    }

  private:
    TARN_API bool ask(int level, const char* file, int line);

    std::atomic<std::uint32_t> excludedIn_{0};  ///< the settings that the answer belongs to; 0: none
};

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

// Only what the language itself calls a constant is the same at each passage. The optimiser would also take
// the argument of an inlined function for one, and all callers of that function share its point.

/// Traces a text from a named file or unit when its point is switched on.
#define TARN_TRACE_AT(level, file, ...)                                                             \
    do {                                                                                            \
        if (::TarnLibA500::SLogger::MayTrace(level)) [[unlikely]] {                                 \
            constexpr bool tarnIsFixed = __builtin_constant_p(level) && __builtin_constant_p(file); \
            static constinit ::TarnLibA500::STracePoint tarnPoint;                                  \
            if (tarnIsFixed ? tarnPoint.ShouldTrace(level, file, __LINE__)                          \
                            : ::TarnLibA500::SLogger::ShouldTrace(level, file, __LINE__))           \
                ::TarnLibA500::STraceObj(level, file, __LINE__)(__VA_ARGS__);                       \
        }                                                                                           \
    } while (false)

/// Traces a text from this source file when its point is switched on.
#define TARN_TRACE(level, ...) TARN_TRACE_AT(level, __FILE__, __VA_ARGS__)

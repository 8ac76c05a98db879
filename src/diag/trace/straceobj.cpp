#include "tarnlib/straceobj.h"

#include "diag/assert/tracefilter.h"
#include "diag/trace/traceformat.h"

namespace TarnLibA500 {

// The number is read before anything is asked: an answer that a change overtakes is kept for a number of the past.
bool STracePoint::ask(int level, const char* file, int line) {
    const std::uint32_t settings = SLogger::traceSettings.load(std::memory_order_acquire);
    if (SLogger::ShouldTrace(level, file, line)) return true;
    const TraceFilter* const filter = TraceFilterInForce();
    if (filter != nullptr && filter->excludes(level, file, line))
        excludedIn_.store(settings, std::memory_order_relaxed);
    return false;
}

void STraceObj::emit(const char* format, const STraceParameter* parameters, unsigned count) const {
    TraceTextBuffer text;
    FillTrace(text, format, parameters, count);
    EmitTraceText(level_, file_, line_, text.text());
}

void STraceObj::emit(const wchar_t* format, const STraceParameter* parameters, unsigned count) const {
    if (format != nullptr) emit(NarrowTraceText(format).getString(), parameters, count);
}

}  // namespace TarnLibA500

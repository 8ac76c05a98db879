#pragma once

#include "tarnlib/sassert.h"

/// What trace points may remember of the answers they get.
namespace TarnLibA500 {

namespace SLogger {
/// The number that straceobj.h, which is above this, shows to trace points.
TARN_API extern std::atomic<std::uint32_t> traceSettings;
}  // namespace SLogger

/// The file filter behind a sink.
struct TraceFilter {
    const SDiagnosticSink* sink;  ///< while this one is installed the filter is asked
    /// True when the filter, and not the mask, switches a point off, at whatever line it is asked.
    bool (*excludes)(int level, const char* file, int line);
};

/// The filter, which lives as long as the library, is asked from now on.
void UseTraceFilter(const TraceFilter& filter) noexcept;
/// The filter in use; null when its sink is not installed.
const TraceFilter* TraceFilterInForce() noexcept;
/// What trace points remember is void. To be called after each change of what sinks and filters answer.
void VoidKeptTraceAnswers() noexcept;

}  // namespace TarnLibA500

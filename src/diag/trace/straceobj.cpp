#include "tarnlib/straceobj.h"

#include "diag/trace/traceformat.h"

namespace TarnLibA500 {

void STraceObj::emit(const char* format, const STraceParameter* parameters, unsigned count) const {
    TraceTextBuffer text;
    FillTrace(text, format, parameters, count);
    EmitTraceText(level_, file_, line_, text.text());
}

void STraceObj::emit(const wchar_t* format, const STraceParameter* parameters, unsigned count) const {
    if (format != nullptr) emit(NarrowTraceText(format).getString(), parameters, count);
}

}  // namespace TarnLibA500

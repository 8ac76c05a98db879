#include "tarnlib/sscopetrace.h"

#include <new>

#include "diag/assert/levels.h"
#include "seam/osclock.h"
#include "tarnlib/straceobj.h"

namespace TarnLibA500 {
namespace {

constexpr int kDeepestIndent = 20;  // scopes; deeper ones stand below each other

thread_local int depth = 0;

SAnsiString Indent() {
    SAnsiString blanks;
    for (int i = 0; i < depth && i < kDeepestIndent; ++i) blanks.concat("  ");
    return blanks;
}

}  // namespace

SScopeTrace::SScopeTrace(bool on, int level, const char* file, int line, const char* name, const char* second,
                         const char* third, const char* fourth)
    : on_(on && SLogger::MayTrace(level) && SLogger::ShouldTrace(level, file, line)),
      level_(level),
      file_(file),
      line_(line),
      words_{name, second, third, fourth} {
    if (!on_) return;
    trace("->");
    ++depth;
    start_ = osclock::Counter();
}

SScopeTrace::SScopeTrace(bool on, int level, const char* file, int line, const char* name)
    : SScopeTrace(on, level, file, line, name, nullptr, nullptr, nullptr) {}

SScopeTrace::~SScopeTrace() {
    if (!on_) return;
    --depth;
    try {
        trace("<-");
    } catch (const std::bad_alloc&) {
        return;  // no memory for a text: the end is not traced
    }
}

unsigned long long SScopeTrace::GetMicroseconds() const {
    return on_ ? osclock::MicrosecondsSince(start_) : 0;
}

void SScopeTrace::trace(const char* mark) const {
    SAnsiString text = Indent();
    text.concat(mark);
    for (const char* word : words_) {
        if (word != nullptr && *word != '\0') text.concat(' ').concat(word);
    }
    if (start_ != 0) text += STraceHelper(" (%1 us)", GetMicroseconds());
    EmitTraceText(level_, file_, line_, text.getString());
}

InstrumentScopeTrace::InstrumentScopeTrace(int level, const char* file, const char* name, int line)
    : SScopeTrace(true, level, file, line, name) {}

InstrumentScopeTrace::InstrumentScopeTrace(const char* file, const char* name)
    : SScopeTrace(true, levels::kScope, file, 0, name) {}

InstrumentScopeTrace::InstrumentScopeTrace(const char* name)
    : SScopeTrace(true, levels::kScope, nullptr, 0, name) {}

WorkflowScopeTrace::WorkflowScopeTrace(bool root, const char* a, const char* b, const char* c)
    : SScopeTrace(true, levels::kStep, nullptr, 0, root ? "Root:" : "Step:", a, b, c) {}

}  // namespace TarnLibA500

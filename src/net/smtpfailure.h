#pragma once

#include "diag/assert/levels.h"
#include "tarnlib/csismtpmailexception.h"
#include "tarnlib/straceobj.h"

namespace TarnLibA500::smtp {

/// Traces a failure under the name of the step that has it, and throws it.
[[noreturn]] inline void Fail(const char* unit, const char* step, int code, const SAnsiString& details) {
    TARN_TRACE_AT(levels::kFailure, unit, "%1: %2", step, details);
    throw CSISMTPMailException(code, details);
}

}  // namespace TarnLibA500::smtp

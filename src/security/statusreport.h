#pragma once

#include <exception>

#include "diag/assert/levels.h"
#include "tarnlib/sassert.h"
#include "tarnlib/scrypt.h"

namespace TarnLibA500 {

/// Traces a status that is a failure of the operation, and returns it.
SCrypt::Status Reported(const char* operation, SCrypt::Status status) noexcept;

/// The status of an action, traced. What it throws, which is failing memory, is the failure noLibrary.
template <class Action>
SCrypt::Status StatusOf(const char* operation, Action action) {
    SCrypt::Status status = SCrypt::noLibrary;
    try {
        status = action();
    } catch (const std::exception& failure) {
        TraceText(levels::kFailure, "scrypt", failure.what());
    }
    return Reported(operation, status);
}

}  // namespace TarnLibA500

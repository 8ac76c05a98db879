#pragma once

#include "tarnlib/sstring.h"
#include "tarnlib/tarnapi.h"

/// Whatever was thrown, as a text for a log or a person.
///
/// The library's exception classes have no common base; this knows all of them. It is for the outermost place
/// that catches, in a thread or a service, where it does not matter any more which one it was:
///
///     try {
///         Serve(request);
///     } catch (...) {
///         TARN_TRACE(7, "the request %1 failed: %2", request.name(), SDescribeException());
///     }
namespace TarnLibA500 {

/// The exception that is being handled, as one line without a line end: what an exception of the library says
/// of itself, a thrown SAnsiString, what() of a std::exception. A fixed text for everything else, outside a
/// handler, and where there is no memory. Never throws.
TARN_API SAnsiString SDescribeException() noexcept;

}  // namespace TarnLibA500

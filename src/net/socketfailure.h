#pragma once

#include "diag/assert/levels.h"
#include "net/ossockets.h"
#include "tarnlib/csisocket.h"
#include "tarnlib/straceobj.h"

namespace TarnLibA500 {

/// Puts the last socket error back when it goes: writing a trace makes calls of its own.
class KeepSocketError {
  public:
    KeepSocketError() noexcept : error_(ossockets::LastError()) {}
    ~KeepSocketError() { WSASetLastError(error_); }
    KeepSocketError(const KeepSocketError&) = delete;
    KeepSocketError& operator=(const KeepSocketError&) = delete;

  private:
    int error_;
};

/// Not a failure but an answer: nothing yet (WSAEWOULDBLOCK, WSAEINPROGRESS), or ask again (WSAEINTR).
inline bool IsToBeAskedAgain(int error) noexcept {
    return error == WSAEINTR || error == WSAEWOULDBLOCK || error == WSAEINPROGRESS;
}

/// Traces a failure from a unit with the texts given; the last socket error stays.
template <class... Parameters>
void TraceSocketFailure(const char* unit, const char* format, const Parameters&... parameters) {
    const KeepSocketError keep;
    TARN_TRACE_AT(levels::kFailure, unit, format, parameters...);
}

}  // namespace TarnLibA500

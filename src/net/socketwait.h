#pragma once

#include "net/ossockets.h"

namespace TarnLibA500 {

/// What a socket is waited for.
enum class Direction { Read, Write };

// What a wait came to.
inline constexpr int kReady = 1;   ///< the socket is ready
inline constexpr int kBeside = 2;  ///< the other one has something to be read

/// Waits for a socket, and beside it for something to read from another one, if there is one. kReady, kBeside or both; 0 when so
/// many seconds have passed; -1, and traced, when the system does not tell.
int WaitForSocket(Direction direction, unsigned socket, unsigned seconds, unsigned beside = ossockets::kNone);

}  // namespace TarnLibA500

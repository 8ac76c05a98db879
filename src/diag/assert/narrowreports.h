#pragma once

#include <atomic>

namespace TarnLibA500 {

/// True where narrow text is UTF-8. SNarrowText sets it: reports are made below all strings and cannot ask there.
extern std::atomic<bool> reportsAreUtf8;

}  // namespace TarnLibA500

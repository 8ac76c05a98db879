#pragma once

#include <cstddef>

namespace TarnLibA500 {

/// The first place in [text, text + length) where the n bytes of "what" stand, or null. n is at least 1.
const char* FindBytes(const char* text, std::size_t length, const char* what, std::size_t n) noexcept;

}  // namespace TarnLibA500

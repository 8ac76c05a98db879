#pragma once

#include <cstdint>

#include "tarnlib/sstring.h"

namespace TarnLibA500 {

/// CUTFConverter::UTF8ToUTF16 as the strings need it: failing memory throws and leaves the target empty.
bool DecodeUTF8(const char* source, std::uint32_t nBytes, SOCAString& target);

}  // namespace TarnLibA500

#include "strings/base/realformat.h"

#include <cstdio>

namespace TarnLibA500 {

std::uint32_t FormatFixed(char* out, std::uint32_t room, double value, int precision) {
    return static_cast<std::uint32_t>(std::snprintf(out, room, "%#.*f", precision, value));
}

}  // namespace TarnLibA500

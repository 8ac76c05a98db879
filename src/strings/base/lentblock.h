#pragma once

#include <cstdint>

namespace TarnLibA500 {

/// Added to the reference count of a string's block by the one that lends it: who made it, reads nothing of it
/// any more, and takes it back for the next text when the last string has let go. The strings count as without
/// it: the last of them may wipe the block, which is not freed then. The lender subtracts it to part with the
/// block, and one that finds nobody else owns and frees it.
inline constexpr std::int32_t kLenderMark = 0x40000000;

}  // namespace TarnLibA500

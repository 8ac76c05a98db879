#pragma once

#include <cstdint>

namespace TarnLibA500 {

/// A number that this process has not had before (it has four billion), and that other processes are not
/// likely to have. Whoever makes a file by it must still make sure that it is new.
std::uint32_t NextUniqueNumber() noexcept;

}  // namespace TarnLibA500

#pragma once

namespace TarnLibA500 {

/// The protocol of the file repository.
inline constexpr const char* kFrsProtocol = "frs";

}  // namespace TarnLibA500

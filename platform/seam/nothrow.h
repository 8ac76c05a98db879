#pragma once

#include <new>

namespace seam {

/// Asks operator new for null in place of an exception. std::nothrow lies in another module, and code that refers to data
/// there has to be changed when it is loaded.
inline constexpr std::nothrow_t kNoThrow{};

}  // namespace seam

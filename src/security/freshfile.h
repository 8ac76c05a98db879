#pragma once

#include "tarnlib/sstring.h"

namespace TarnLibA500 {

/// A new file beside the one whose place it takes when it is whole. Without that nothing is left of it. Throws
/// SFileSysException.
class FreshFile {
  public:
    /// Makes the file, empty.
    explicit FreshFile(const SAnsiString& target);
    ~FreshFile();
    FreshFile(const FreshFile&) = delete;
    FreshFile& operator=(const FreshFile&) = delete;

    const SAnsiString& path() const noexcept { return path_; }
    /// Gives the file the name of its target. Nobody has it open.
    void takePlace();

  private:
    SAnsiString target_;
    SAnsiString path_;  ///< empty when there is no such file any more
    SWCharString systemPath_;
};

}  // namespace TarnLibA500

#pragma once

#include "net/oslibssh2.h"
#include "tarnlib/csharedlibrary.h"

namespace TarnLibA500 {

/// The SSH library, loaded when it is first asked for and unloaded with the object.
class SshLibrary {
  public:
    SshLibrary() = default;
    ~SshLibrary();
    SshLibrary(const SshLibrary&) = delete;
    SshLibrary& operator=(const SshLibrary&) = delete;

    /// Loads the library unless it is loaded, and makes it ready; throws CSharedLibraryException. False when it does not
    /// get ready.
    bool load();
    const oslibssh2::Table& table() const noexcept { return table_; }

  private:
    CSharedLibrary module_;
    oslibssh2::Table table_;
    bool isReady_ = false;
};

}  // namespace TarnLibA500

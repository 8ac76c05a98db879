#pragma once

#include "tarnlib/cparamlineargs.h"

namespace TarnLibA500 {

/// The file through which an operator changes tracing in a running process: "option=value" lines that name
/// logging options. A file that is not there counts as an empty one.
class TraceIni {
  public:
    TraceIni() = default;
    explicit TraceIni(const SAnsiString& path) : path_(path) {}

    /// Reads the file when it is not what it was at the last call; true when the options may have changed. A
    /// file that cannot be read at present keeps the options as they are, and is tried again by the next
    /// call.
    bool update();
    /// The options in the file. What lies beyond 64 KiB is not read.
    const CParamLineArgs& options() const { return options_; }

  private:
    struct Stamp {
        unsigned long long time = 0;
        unsigned long long size = 0;
        bool operator==(const Stamp&) const = default;
    };
    Stamp look() const;

    SAnsiString path_;
    Stamp seen_;
    CParamLineArgs options_;
};

}  // namespace TarnLibA500

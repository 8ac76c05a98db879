#pragma once

#include "tarnlib/cparamlineargs.h"

namespace TarnLibA500 {

/// The file through which an operator changes tracing in a running process: "option=value" lines that name
/// logging options. A file that is not there counts as an empty one.
class TraceIni {
  public:
    TraceIni() = default;
    explicit TraceIni(const SAnsiString& path) : path_(path) {}

    /// True when the file is not what it was at the last question; the first time, when there is one.
    bool hasChanged();
    /// The options in the file. What lies beyond 64 KiB is not read.
    CParamLineArgs read() const;

  private:
    struct Stamp {
        unsigned long long time = 0;
        unsigned long long size = 0;
        bool operator==(const Stamp&) const = default;
    };
    Stamp look() const;

    SAnsiString path_;
    Stamp seen_;
};

}  // namespace TarnLibA500

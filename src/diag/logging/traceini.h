#pragma once

#include "tarnlib/cparamlineargs.h"

namespace TarnLibA500 {

/// The file through which an operator changes tracing in a running process: "option=value" lines that name
/// logging options. A file that is not there counts as an empty one.
class TraceIni {
  public:
    TraceIni() = default;
    explicit TraceIni(const SAnsiString& path) : path_(path) {}

    const SAnsiString& path() const { return path_; }

    /// Reads the file when it is not what it was at the last call; true when the options or the problem may
    /// have changed. A file that cannot be read at present keeps the options as they are, and is tried again
    /// by the next call; so does a lack of memory, which throws std::bad_alloc.
    bool update();
    /// The options in the file.
    const CParamLineArgs& options() const { return options_; }
    /// What of the file is not in effect, and why; empty when all of it is.
    const SAnsiString& problem() const { return problem_; }

  private:
    struct Stamp {
        unsigned long long time = 0;
        unsigned long long size = 0;
        bool operator==(const Stamp&) const = default;
    };
    unsigned long look(Stamp& stamp) const;
    bool complain(const SAnsiString& problem);

    SAnsiString path_;
    Stamp seen_;
    CParamLineArgs options_;
    SAnsiString problem_;
};

}  // namespace TarnLibA500

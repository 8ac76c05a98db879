#pragma once

#include <string>

#include "options.h"
#include "tarnlib/sstring.h"

namespace tarn {

/// A password or a pass phrase: the value of a variable or the first line of a file, never the command line, which other users
/// of the machine can read. A text that is overwritten when it goes.
class PassPhrase : public TarnLibA500::SAnsiString {
  public:
    /// What -PREFIX-env or -PREFIX-file names. Throws Failure when both are given, or one is needed and there is none or nothing
    /// in it; empty where it may be left out.
    explicit PassPhrase(const Options& options, const std::string& prefix = "pass", bool isNeeded = true);
    ~PassPhrase() { releaseBuffer(true); }
    PassPhrase(const PassPhrase&) = delete;
    PassPhrase& operator=(const PassPhrase&) = delete;
};

}  // namespace tarn

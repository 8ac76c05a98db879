#pragma once

#include "options.h"
#include "tarnlib/sstring.h"

namespace tarn {

/// What -pass-env or -pass-file names, never the command line, which other users of the machine can read. A text
/// that is overwritten when it goes.
class PassPhrase : public TarnLibA500::SAnsiString {
  public:
    /// Throws Failure unless one of the two is given and has something.
    explicit PassPhrase(const Options& options);
    ~PassPhrase() { releaseBuffer(true); }
    PassPhrase(const PassPhrase&) = delete;
    PassPhrase& operator=(const PassPhrase&) = delete;
};

}  // namespace tarn

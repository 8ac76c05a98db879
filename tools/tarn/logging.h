#pragma once

#include "command.h"

namespace tarn {

/// Logging for as long as the object lives, with the options of the whole command line.
class Logging {
  public:
    Logging();
    ~Logging();
    Logging(const Logging&) = delete;
    Logging& operator=(const Logging&) = delete;
};

/// The words that are left for a command when the logging options are taken out.
Words WithoutLoggingOptions(const Words& words);

}  // namespace tarn

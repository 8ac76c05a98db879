#pragma once

#include "tarnlib/tarnapi.h"

namespace TarnLibA500 {

/// Told how far a long work is, on the thread that does it: for a progress line, or to end the work by an
/// exception, which passes through and leaves nothing half done.
class TARN_API SProgress {
  public:
    /// The bytes that are done, of all bytes that there are to do (0: nobody knows).
    virtual void advance(unsigned long long done, unsigned long long total) = 0;

  protected:
    /// Nobody owns one through this class.
    virtual ~SProgress();
};

}  // namespace TarnLibA500

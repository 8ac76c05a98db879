#pragma once

#include "tarnlib/tarnapi.h"

namespace TarnLibA500 {

/// A stop watch over SMonotonicClock: adds up the time between its starts and stops.
///
/// A plain value, owned and used by one thread at a time.
///
///     SStopWatch watch;
///     watch.Start();
///     Load();
///     watch.Stop();
///     Ask();                                     // not counted
///     watch.Start();
///     Save();
///     unsigned long long used = watch.GetElapsedMilliseconds();     // so far; it still runs
class SStopWatch {
  public:
    /// Stopped at 0.
    constexpr SStopWatch() noexcept = default;
    /// Runs on from what it shows; nothing happens when it runs already.
    TARN_API void Start() noexcept;
    /// Nothing happens when it stands already.
    TARN_API void Stop() noexcept;
    /// Shows 0; a running watch runs on from there.
    TARN_API void Reset() noexcept;
    /// True between Start and Stop.
    constexpr bool IsRunning() const noexcept { return running_; }
    /// Milliseconds that it has run since it was made or reset.
    TARN_API unsigned long long GetElapsedMilliseconds() const noexcept;

  private:
    unsigned long long collected_ = 0;
    unsigned long long startedAt_ = 0;
    bool running_ = false;
};

}  // namespace TarnLibA500

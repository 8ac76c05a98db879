#pragma once

#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

#include "counting.h"
#include "settings.h"
#include "stopsignal.h"

/// Threads that work until the signal is raised. A failure ends a piece of work, not the thread.
class Workers {
  public:
    Workers(const SharedSettings& settings, const StopSignal& stop);
    /// Raises nothing and waits for the threads: call join first.
    ~Workers();
    Workers(const Workers&) = delete;
    Workers& operator=(const Workers&) = delete;

    void start(int count);
    /// True when all have ended within that time.
    bool join(int milliseconds);

  private:
    void run();

    const SharedSettings& settings_;
    const StopSignal& stop_;
    Claims claims_;
    std::mutex mutex_;
    std::condition_variable ended_;
    int running_ = 0;
    std::vector<std::thread> threads_;
};

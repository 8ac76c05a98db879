#pragma once

#include <functional>

#include "jtc/jtc.h"

namespace TarnLibA500 {

/// The thread that hands waiting log lines to the system, and looks now and then whether the trace ini file
/// has changed. It is the only thread of the library.
class TraceStateUpdaterThread : public JTCThread {
  public:
    /// "refresh" is called on the thread every few seconds.
    explicit TraceStateUpdaterThread(std::function<void()> refresh);

    void run() override;
    /// Asks the thread to end. It ends within one tick.
    void stop();

  private:
    bool waitForTick();
    void refresh();

    std::function<void()> refresh_;
    bool stopping_ = false;
};

}  // namespace TarnLibA500

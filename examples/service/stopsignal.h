#pragma once

#include "tarnlib/sstring.h"

/// The wish to stop, wherever it comes from: Ctrl+C, the console's end, another process, the service control manager.
class StopSignal {
  public:
    /// The name is one for all processes of the session.
    explicit StopSignal(const TarnLibA500::SAnsiString& name);
    ~StopSignal();
    StopSignal(const StopSignal&) = delete;
    StopSignal& operator=(const StopSignal&) = delete;

    void raise() noexcept;
    /// True when it is raised, at once or within that time.
    bool wait(unsigned long milliseconds) const noexcept;
    /// The console's events raise it from now on.
    void takeConsoleEvents();

    /// Raises that of another process; false when there is none of the name.
    static bool raiseOf(const TarnLibA500::SAnsiString& name);

  private:
    void* event_;
};

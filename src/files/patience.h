#pragma once

#include <utility>

#include "tarnlib/sstring.h"

#include <windows.h>

/// What others do to files for a moment. Scanners, indexers and backups open a file that has just been written, often
/// without sharing deletion; and what is deleted while somebody has it open keeps its name until he closes it.
namespace TarnLibA500 {

/// How long an operation puts up with that: its pauses, of all its files together, last no longer than a second.
class Patience {
  public:
    /// Does something that gives the system's error code, 0 for done, and again after a pause as long as "passes" says of
    /// the code that it may pass. The last code.
    template <class Action, class Passes>
    DWORD retry(Action action, Passes passes) {
        DWORD error = action();
        for (int pauses = 0; error != ERROR_SUCCESS && passes(error) && pause(pauses); ++pauses)
            error = action();
        return error;
    }

    /// The same for an action that removes something: who finds at a later try that it is gone has done it. "passes" tells of
    /// further codes that may pass.
    template <class Action, class Passes>
    DWORD retryRemoval(Action action, Passes passes) {
        bool isFirst = true;
        const auto remove = [&] {
            const DWORD error = action();
            return std::exchange(isFirst, false) || !IsGone(error) ? error : DWORD{ERROR_SUCCESS};
        };
        return retry(remove, [&](DWORD error) { return IsRemovalHindered(error) || passes(error); });
    }
    template <class Action>
    DWORD retryRemoval(Action action) {
        return retryRemoval(action, [](DWORD) { return false; });
    }

  private:
    static bool IsGone(DWORD error) noexcept;
    static bool IsRemovalHindered(DWORD error) noexcept;
    /// Waits, longer from time to time. False when it has been long enough.
    bool pause(int before) noexcept;

    DWORD left_ = 1000;  ///< milliseconds
};

/// Another has the file open, or a part of it locked.
bool IsInUse(DWORD error) noexcept;
/// True when a refused renaming to a name, or replacement of what has it, may be due to others: nothing that stands there
/// forbids it.
bool IsRenamingHindered(DWORD error, const SWCharString& target);

}  // namespace TarnLibA500

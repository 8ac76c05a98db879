#pragma once

#include <mutex>

#include "settings.h"
#include "tarnlib/siset.h"

/// The files that a worker has in hand. (Renaming a file does not decide between two: the system lets both succeed when
/// both have opened it before either renames.)
class Claims {
  public:
    /// False when another worker has it.
    bool take(const SAnsiString& name);
    void giveBack(const SAnsiString& name);

  private:
    std::mutex mutex_;
    SISet<SAnsiString> names_;
};

/// The work itself: counts the words of one file of the inbox, if there is one that no other worker has; false when
/// there is none. A file that cannot be counted is renamed, so that it does not come again, and its failure thrown.
bool CountOne(const Settings& settings, Claims& claims);

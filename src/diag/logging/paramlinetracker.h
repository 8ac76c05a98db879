#pragma once

#include "tarnlib/cparamlineargs.h"
#include "tarnlib/siset.h"

namespace TarnLibA500 {

/// Options together with the knowledge of which of them somebody has used.
class CParamLineTracker {
  public:
    CParamLineTracker() = default;
    explicit CParamLineTracker(const CParamLineArgs& options) : options_(options) {}

    const CParamLineArgs& options() const { return options_; }

    /// True, with the value, when the option was given; it then counts as consumed.
    bool take(const char* name, SAnsiString& value) {
        if (!options_.Lookup(name, value)) return false;
        consumed_.Insert(name);
        return true;
    }
    /// The same for an option without a value.
    bool take(const char* name) {
        SAnsiString ignored;
        return take(name, ignored);
    }
    bool isConsumed(const SAnsiStringCI& name) const { return consumed_.Contains(name); }

  private:
    CParamLineArgs options_;
    SISet<SAnsiStringCI> consumed_;
};

}  // namespace TarnLibA500

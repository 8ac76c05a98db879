#pragma once

#include "tarnlib/sassert.h"

namespace tarn {

/// Notices whether the library reports an assertion while the object lives: its way to say that an argument
/// is wrong.
class AssertWatch {
  public:
    AssertWatch() {
        seen = false;
        sink_.assertion = [](const char*) { seen = true; };
        before_ = TarnLibA500::InstallDiagnosticSink(&sink_);
    }
    ~AssertWatch() { TarnLibA500::InstallDiagnosticSink(before_); }
    AssertWatch(const AssertWatch&) = delete;
    AssertWatch& operator=(const AssertWatch&) = delete;
    bool sawOne() const { return seen; }

  private:
    static inline bool seen = false;
    TarnLibA500::SDiagnosticSink sink_;
    const TarnLibA500::SDiagnosticSink* before_;
};

}  // namespace tarn

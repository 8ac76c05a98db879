#pragma once

#include <optional>

#include "streams.h"
#include "tarnlib/sprogress.h"

namespace tarn {

/// The line on a terminal, for the work of the library.
class LibraryProgress : public TarnLibA500::SProgress {
  public:
    void advance(unsigned long long done, unsigned long long total) override {
        if (!line_) line_.emplace(total != 0 ? static_cast<long long>(total) : -1);
        line_->show(done);
    }

  private:
    std::optional<Progress> line_;
};

}  // namespace tarn

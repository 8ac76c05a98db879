#pragma once

#include <string>
#include <vector>

#include "tarnlib/sassert.h"

namespace tarntest {

/// Collects the assertions that are reported while it lives, instead of printing them.
class AssertRecorder {
  public:
    AssertRecorder() {
        Lines().clear();
        sink_.assertion = [](const char* text) { Lines().push_back(text); };
        before_ = TarnLibA500::InstallDiagnosticSink(&sink_);
    }
    ~AssertRecorder() { TarnLibA500::InstallDiagnosticSink(before_); }
    AssertRecorder(const AssertRecorder&) = delete;
    AssertRecorder& operator=(const AssertRecorder&) = delete;

    std::size_t count() const { return Lines().size(); }
    /// True when the last assertion came from this unit with this expression; forgets what was collected.
    bool sawLast(const std::string& unit, const std::string& expression) {
        const std::string line = Lines().empty() ? "" : Lines().back();
        Lines().clear();
        return line.find("assert failure: (" + unit + ":") == 0 &&
               line.find("). (" + expression + " : ") != line.npos;
    }

  private:
    static std::vector<std::string>& Lines() {
        static std::vector<std::string> lines;
        return lines;
    }
    TarnLibA500::SDiagnosticSink sink_;
    const TarnLibA500::SDiagnosticSink* before_;
};

}  // namespace tarntest

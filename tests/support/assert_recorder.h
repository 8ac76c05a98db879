#pragma once

#include <string>
#include <utility>
#include <vector>

#include "tarnlib/sassert.h"

namespace tarntest {

enum Recorded { kAssertions, kTracesToo };

/// Collects the assertions that are reported while it lives, instead of printing them.
class AssertRecorder {
  public:
    /// Traces are those of levels up to the highest that is wanted.
    explicit AssertRecorder(Recorded recorded = kAssertions, int highestLevel = 18) {
        highest = highestLevel;
        Lines().clear();
        sink_.assertion = [](const char* text) { Lines().push_back(text); };
        if (recorded == kTracesToo) {
            sink_.shouldTrace = [](int level, const char*) { return level <= highest; };
            sink_.trace = [](int level, const char* unit, const char* text) {
                Lines().push_back(std::to_string(level) + " " + unit + ": " + text);
            };
        }
        before_ = TarnLibA500::InstallDiagnosticSink(&sink_);
    }
    ~AssertRecorder() { TarnLibA500::InstallDiagnosticSink(before_); }

    std::size_t count() const { return Lines().size(); }
    std::string last() const { return Lines().empty() ? "" : Lines().back(); }
    /// True when the last assertion came from this unit with this expression; forgets what was collected.
    bool sawLast(const std::string& unit, const std::string& expression) {
        const std::string line = last();
        Lines().clear();
        return line.find("assert failure: (" + unit + ":") == 0 &&
               line.find("). (" + expression + " : ") != line.npos;
    }
    /// What was collected that begins with this, without it, a line each; forgets all.
    std::string take(const std::string& beginning = "") {
        std::string text;
        for (const std::string& line : std::exchange(Lines(), {})) {
            if (line.compare(0, beginning.size(), beginning) == 0)
                text += line.substr(beginning.size()) + "\n";
        }
        return text;
    }

  private:
    static std::vector<std::string>& Lines() {
        // Not the vector itself: object files would give it sections of different sizes, which the linker remarks.
        static auto& lines = *new std::vector<std::string>;
        return lines;
    }
    static inline int highest = 0;
    TarnLibA500::SDiagnosticSink sink_;
    const TarnLibA500::SDiagnosticSink* before_;
};

}  // namespace tarntest

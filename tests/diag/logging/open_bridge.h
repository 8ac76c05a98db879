#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "diag/logging/loggeroptions.h"
#include "diag/logging/tracebridge.h"
#include "support/scratch_folder.h"

#include <windows.h>

namespace tarntest {

/// The engine in a folder of its own, open for as long as the object lives.
class OpenBridge {
  public:
    explicit OpenBridge(const std::string& options) : folder_(MakeScratchFolder("tracebridge")) {
        TarnLibA500::CParamLineTracker tracker(
            TarnLibA500::ParseLoggerOptions((options + " -tracecmpname unit").c_str()));
        TarnLibA500::TraceOptions read = TarnLibA500::ReadTraceOptions(tracker);
        read.noThread = true;  // every line is written at once
        EXPECT_TRUE(bridge_.Initialize(read, folder_.string().c_str()));
    }
    ~OpenBridge() { bridge_.Terminate(); }
    OpenBridge(const OpenBridge&) = delete;
    OpenBridge& operator=(const OpenBridge&) = delete;

    const TarnLibA500::TraceBridge* operator->() const { return &bridge_; }

    /// The texts of a device's lines: what stands behind the place.
    std::vector<std::string> texts(const std::string& device = "") const {
        std::vector<std::string> texts;
        const std::string process = std::to_string(GetCurrentProcessId());
        std::ifstream log(folder_ / ("unit_" + process + device + ".log"));
        for (std::string line; std::getline(log, line);) texts.push_back(afterPlace(line));
        return texts;
    }

  private:
    static std::string afterPlace(const std::string& line) {
        const std::size_t context = line.find("] ");
        return context == line.npos ? line : line.substr(line.find(' ', context + 2) + 1);
    }

    std::filesystem::path folder_;
    TarnLibA500::TraceBridge bridge_;
};

}  // namespace tarntest

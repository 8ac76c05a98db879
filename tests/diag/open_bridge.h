#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "diag/loggeroptions.h"
#include "diag/tracebridge.h"
#include "support/file_bytes.h"

#include <windows.h>

namespace tarntest {

/// The engine in a folder of its own, open for as long as the object lives.
class OpenBridge {
  public:
    explicit OpenBridge(const std::string& options) : folder_(MakeScratchFolder("tracebridge")) {
        EXPECT_TRUE(TarnLibA500::TraceBridge::Initialize(read(options), folder_.string().c_str()));
    }
    ~OpenBridge() { TarnLibA500::TraceBridge::Terminate(); }
    OpenBridge(const OpenBridge&) = delete;
    OpenBridge& operator=(const OpenBridge&) = delete;

    void change(const std::string& options) const { TarnLibA500::TraceBridge::Reconfigure(read(options)); }

    /// The texts of a device's lines: what stands behind the place.
    std::vector<std::string> texts(const std::string& device = "") const {
        const std::string name = "unit_" + std::to_string(GetCurrentProcessId()) + device + ".log";
        std::vector<std::string> texts = ReadLines(folder_ / name);
        for (std::string& text : texts) {
            const std::size_t context = text.find("] ");
            if (context != text.npos) text.erase(0, text.find(' ', context + 2) + 1);
        }
        return texts;
    }

  private:
    static TarnLibA500::TraceOptions read(const std::string& options) {
        TarnLibA500::CParamLineTracker tracker(
            TarnLibA500::ParseLoggerOptions((options + " -tracecmpname unit").c_str()));
        TarnLibA500::TraceOptions read = TarnLibA500::ReadTraceOptions(tracker);
        read.noThread = true;  // every line is written at once
        return read;
    }

    std::filesystem::path folder_;
};

}  // namespace tarntest

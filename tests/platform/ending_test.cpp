// Processes that end while their threads hold locks: they must end, and what the static destructors of other
// modules trace then must be in the log.
#include <gtest/gtest.h>

#include <string>

#include "support/file_bytes.h"

#include <windows.h>

namespace {

constexpr DWORD kLongestMilliseconds = 60'000;

/// The exit status of a command, or -1 when it does not end.
int StatusOf(std::string command) {
    STARTUPINFOA startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process{};
    if (!CreateProcessA(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                        &process))
        return -2;
    DWORD status = 0;
    const bool hasEnded = WaitForSingleObject(process.hProcess, kLongestMilliseconds) == WAIT_OBJECT_0;
    if (!hasEnded) TerminateProcess(process.hProcess, 1);
    GetExitCodeProcess(process.hProcess, &status);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return hasEnded ? static_cast<int>(status) : -1;
}

}  // namespace

TEST(Ending, WaitsForNoThreadThatIsGone) {
    const struct {
        const char* name;
        int runs;
    } cases[] = {{"log", 3}, {"writing", 5}, {"monitor", 1}, {"thread", 1}};
    for (const auto& c : cases) {
        for (int run = 0; run < c.runs; ++run) {
            const std::filesystem::path folder = tarntest::MakeScratchFolder("ending");
            ASSERT_EQ(StatusOf(std::string("ending.exe ") + c.name +
                               " -trace m -notracethread -loggingPath \"" + folder.string() + "\""),
                      0)
                << c.name;
            std::string log;
            for (const auto& entry : std::filesystem::directory_iterator(folder))
                log += tarntest::ReadBytes(entry.path());
            EXPECT_NE(log.find("came through"), log.npos) << c.name;
            std::filesystem::remove_all(folder);
        }
    }
}

// Processes that end while their threads hold locks: they must end, and what the static destructors of other
// modules trace then must be in the log.
#include <gtest/gtest.h>

#include <process.h>
#include <string>

#include "support/file_bytes.h"

#include <windows.h>

namespace {

/// The exit status of a case of ending.exe; -1 when it does not end.
int StatusOf(const char* name, const std::string& folder) {
    const std::string program = (std::filesystem::path(_pgmptr).parent_path() / "ending.exe").string();
    const std::intptr_t process =
        _spawnl(_P_NOWAIT, program.c_str(), "ending", name, "-trace", "m", "-notracethread", "-loggingPath",
                ('"' + folder + '"').c_str(), nullptr);
    if (process == -1) return -2;
    const auto handle = reinterpret_cast<HANDLE>(process);
    if (WaitForSingleObject(handle, 60'000) != WAIT_OBJECT_0) TerminateProcess(handle, ~0U);
    int status = -3;
    _cwait(&status, process, 0);
    return status;
}

}  // namespace

TEST(Ending, WaitsForNoThreadThatIsGone) {
    for (const auto& [name, runs] : {std::pair("log", 3), {"writing", 5}, {"threads", 1}, {"strings", 10}}) {
        for (int run = 0; run < runs; ++run) {
            const std::filesystem::path folder = tarntest::MakeScratchFolder("ending");
            ASSERT_EQ(StatusOf(name, folder.string()), 0) << name;
            std::string log;
            for (const auto& entry : std::filesystem::directory_iterator(folder))
                log += tarntest::ReadBytes(entry.path());
            EXPECT_NE(log.find("came through"), log.npos) << name;
            std::filesystem::remove_all(folder);
        }
    }
}

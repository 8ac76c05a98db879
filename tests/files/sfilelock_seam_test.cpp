#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <string>
#include <utility>

#include "files/osfiles.h"
#include "seam/osclock.h"
#include "support/alloc_hooks.h"
#include "support/case_file.h"
#include "support/failing.h"
#include "tarnlib/sfilelock.h"
#include "tarnlib/sinstancelock.h"

using namespace TarnLibA500;

namespace {

const std::string kPath =
    (std::filesystem::temp_directory_path() / ("tarn-lock-test-" + std::to_string(GetCurrentProcessId())))
        .string();

void Remove() {
    SetFileAttributesA(kPath.c_str(), FILE_ATTRIBUTE_NORMAL);
    DeleteFileA(kPath.c_str());
}

/// Makes the lock file another holder's; every call is another one.
void Forge() {
    static DWORD holder = 0x01D00000;
    const FILETIME time = {0, ++holder};
    const HANDLE file = CreateFileA(kPath.c_str(), GENERIC_WRITE, 7, nullptr, OPEN_ALWAYS, 0, nullptr);
    SetFileTime(file, &time, nullptr, &time);
    CloseHandle(file);
}

FILETIME TimeOfFile() {
    WIN32_FILE_ATTRIBUTE_DATA data = {};
    GetFileAttributesExA(kPath.c_str(), GetFileExInfoStandard, &data);
    return data.ftCreationTime;
}

FILETIME remembered;

/// As a file system does that gives a new file the times of the one which had its name a moment ago.
void GiveRememberedTime() {
    const HANDLE file = CreateFileA(kPath.c_str(), GENERIC_WRITE, 7, nullptr, OPEN_EXISTING, 0, nullptr);
    SetFileTime(file, &remembered, nullptr, &remembered);
    CloseHandle(file);
}

HANDLE inHand = INVALID_HANDLE_VALUE;
std::string waiterSaw;

void DeleteAsWaiter() {
    waiterSaw = DeleteFileA(kPath.c_str()) ? "deleted" : "refused";
}

/// What others do to the file.
void Disturb(char step) {
    if (step == 'F') Forge();
    if (step == 'H') inHand = CreateFileA(kPath.c_str(), GENERIC_READ, 3, nullptr, OPEN_EXISTING, 0, nullptr);
    if (step == 'G' || step == 'V') CloseHandle(std::exchange(inHand, INVALID_HANDLE_VALUE));
    if (step == 'X' || step == 'V') Remove();
    if (step == 'P') SetFileAttributesA(kPath.c_str(), FILE_ATTRIBUTE_READONLY);
}

std::string othersSteps;
unsigned long sleeps = 0;

void WINAPI SleepAmongOthers(DWORD milliseconds) {
    ++sleeps;
    EXPECT_TRUE(milliseconds == 100 || inHand != INVALID_HANDLE_VALUE) << milliseconds;
    Disturb(othersSteps[0]);
    othersSteps.erase(0, 1);
}

void WINAPI NoPause(DWORD /*milliseconds*/) {}

/// What a step of a case shows.
std::string Play(char step, std::optional<SFileLock>& lock) {
    const bool isThere = GetFileAttributesA(kPath.c_str()) != INVALID_FILE_ATTRIBUTES;
    const FILETIME created = TimeOfFile();
    if (step == 'L') {
        const std::string result = std::to_string(lock->lock());
        return std::exchange(waiterSaw, "") + result;
    }
    if (step == 'U') return std::to_string(lock->unlock());
    if (step == '?') return isThere ? "y" : "n";
    if (step == '=') return CompareFileTime(&remembered, &created) == 0 ? "y" : "n";
    if (step == 'R') remembered = created;
    if (step == 't') osfiles::Calls::DoBefore(2, GiveRememberedTime);
    if (step == 'S') osfiles::Calls::DoBefore(7, DeleteAsWaiter);
    if (step == 'E') lock.reset();
    if (step == 'K') lock.emplace(SFileLock(*lock));
    if (step == 'M') tarntest::FailAllocation(1);
    if (step >= '1' && step <= '9')
        osfiles::Calls::Fail(static_cast<unsigned long>(step - '0'), ERROR_ACCESS_DENIED);
    if (step >= 'a' && step <= 'i')
        osfiles::Calls::DoBefore(static_cast<unsigned long>(step - 'a' + 1), Forge);
    Disturb(step);
    return "";
}

}  // namespace

TEST(FileLock, TakesTurns) {
    const long handles = osfiles::Calls::OpenNow();
    const tarntest::Instead among(osclock::sleep, SleepAmongOthers);
    for (const auto& c : tarntest::ReadCases("files/lock_turns.txt")) {
        const auto number = [&](std::size_t field) {
            return static_cast<unsigned short>(std::stoi(c[field]));
        };
        std::optional<SFileLock> lock(std::in_place, kPath.c_str(), number(0), number(1), c[2] == "yes");
        sleeps = 0;
        unsigned long calls = osfiles::Calls::SoFar();
        othersSteps = c[4];
        std::string seen;
        for (const char step : c[3]) {
            seen += Play(step, lock);
            if (step == 'T') seen += std::to_string(sleeps);
            if (step != 'C') continue;
            seen += calls != osfiles::Calls::SoFar() ? "c" : "-";
            calls = osfiles::Calls::SoFar();
        }
        EXPECT_EQ(seen, c[5]) << c[0] << "|" << c[1] << "|" << c[2] << "|" << c[3] << "|" << c[4];
        osfiles::Calls::Fail(0, 0);
        tarntest::FailAllocation(0);
        lock.reset();
        Remove();
    }
    EXPECT_EQ(osfiles::Calls::OpenNow(), handles);
    EXPECT_EQ(SFileLock(SAnsiString(), 9, 1, false).unlock(), SFileLock::lockOk);  // nothing to give back
}

// A lock that is taken stays taken, whether its holder can be told or not.
TEST(InstanceLock, WhateverFailsNobodyElseGetsIt) {
    const SAnsiString name(kPath.c_str());
    const struct {
        unsigned long nth;
        DWORD error;
        SInstanceLock::Result result, next;
    } cases[] = {{1, ERROR_NO_SYSTEM_RESOURCES, SInstanceLock::failed, SInstanceLock::taken},
                 {1, ERROR_ACCESS_DENIED, SInstanceLock::taken, SInstanceLock::heldByAnother},  // at first
                 {2, ERROR_ACCESS_DENIED, SInstanceLock::taken, SInstanceLock::heldByAnother},
                 {3, ERROR_ACCESS_DENIED, SInstanceLock::taken, SInstanceLock::heldByAnother}};
    const long handles = osfiles::Calls::OpenNow();
    const tarntest::Instead noPause(osclock::sleep, NoPause);
    for (const auto& c : cases) {
        SInstanceLock lock(name);
        SInstanceLock next(name);
        osfiles::Calls::Fail(c.nth, c.error);
        EXPECT_EQ(lock.take(), c.result) << c.nth;
        osfiles::Calls::Fail(0, 0);
        EXPECT_EQ(lock.lastError(), c.result == SInstanceLock::failed ? c.error : 0U);
        EXPECT_EQ(next.take(), c.next) << c.nth;
        EXPECT_EQ(next.ownerProcess(), GetCurrentProcessId()) << c.nth;
    }
    EXPECT_EQ(osfiles::Calls::OpenNow(), handles);
}

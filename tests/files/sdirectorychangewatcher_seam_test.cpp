#include <gtest/gtest.h>
#include "tarnlib/sdirectorychangewatcher.h"

#include <cstring>
#include <fstream>
#include <thread>

#include "files/osfiles.h"
#include "support/alloc_hooks.h"
#include "support/case_file.h"
#include "support/failing.h"
#include "support/scratch_folder.h"

using namespace TarnLibA500;
using Watcher = SDirectoryChangeWatcher;

namespace {

std::string forged;  // what a server sends
unsigned long asked = 0;

BOOL WINAPI ServeForged(HANDLE /*directory*/, void* records, DWORD bytes, BOOL /*subtree*/, DWORD /*filter*/,
                        DWORD* /*done*/, OVERLAPPED* request, LPOVERLAPPED_COMPLETION_ROUTINE /*unused*/) {
    asked = bytes;
    if (bytes > 0x10000) SetLastError(ERROR_INVALID_PARAMETER);
    if (bytes > 0x10000) return FALSE;
    request->Internal = 0;
    request->InternalHigh = forged.size();
    std::memcpy(records, forged.data(), forged.size());
    return SetEvent(request->hEvent);
}

class DirectoryWatch : public testing::Test {
  protected:
    ~DirectoryWatch() override {
        watcher_.close();
        std::filesystem::remove_all(folder_);
        EXPECT_EQ(osfiles::Calls::OpenNow(), handles_ + 1);  // the event for stop
    }

    bool open(bool subtree, unsigned long bytes = Watcher::defaultRecordBytes) {
        return watcher_.open(folder_.string().c_str(), subtree, bytes);
    }
    void make(const std::string& name) { std::filesystem::create_directory(folder_ / name); }

    /// What is reported until it is quiet, and how that ended. Changed contents are only noted: how often
    /// they are reported depends on the system.
    std::string changes() {
        std::string all;
        for (;;) {
            const Watcher::WaitResult result = watcher_.wait(200, changes_);
            if (result != Watcher::changesSeen) return all + std::to_string(result);
            for (const SDirectoryChange& change : changes_) {
                if (change.kind == SDirectoryChange::modified)
                    isModified_ = true;
                else
                    all += std::string(1, " +- <>"[change.kind]) + change.path.getString() + " ";
            }
        }
    }

    const long handles_ = osfiles::Calls::OpenNow();
    const std::filesystem::path folder_ = tarntest::MakeScratchFolder("watch");
    Watcher watcher_;
    SIArray<SDirectoryChange> changes_;
    bool isModified_ = false;
};

}  // namespace

TEST_F(DirectoryWatch, ReportsWhatHappensInItsOrder) {
    for (const bool subtree : {false, true}) {
        ASSERT_TRUE(open(subtree));
        make("sub");  // Wine does not look into those that are there before
        make("a");
        EXPECT_EQ(changes(), "+sub +a 1");
        std::ofstream(folder_ / "sub/b") << "text";
        std::filesystem::rename(folder_ / "a", folder_ / "c\xE9");
        std::filesystem::remove(folder_ / "sub/b");
        std::filesystem::remove(folder_ / "c\xE9");
        std::filesystem::remove(folder_ / "sub");
        EXPECT_EQ(changes(), subtree ? "+sub\\b <a >c\xE9 -sub\\b -c\xE9 -sub 1" : "<a >c\xE9 -c\xE9 -sub 1");
    }
    EXPECT_TRUE(isModified_);
}

TEST_F(DirectoryWatch, LosesNothingThatHasRoomAndSaysWhenItHasNone) {
    for (const bool hasRoom : {true, false}) {
        ASSERT_TRUE(open(false, hasRoom ? Watcher::defaultRecordBytes : 0));
        std::string expected;
        for (int i = 0; i < 300; ++i) {
            make(std::to_string(i) + (hasRoom ? "a" : "b"));
            expected += "+" + std::to_string(i) + (hasRoom ? "a " : "b ");
        }
        const std::string reported = changes();
        EXPECT_EQ(reported == expected + "1", hasRoom) << reported;
        EXPECT_EQ(reported.back(), hasRoom ? '1' : '2');
        make(hasRoom ? "later" : "latest");
        EXPECT_EQ(changes(), hasRoom ? "+later 1" : "+latest 1");
    }
}

TEST_F(DirectoryWatch, EndsAWaitInTimeWhenItIsStoppedAndWhenTheDirectoryGoes) {
    EXPECT_EQ(watcher_.wait(0xFFFFFFFF, changes_), Watcher::failed);
    std::thread([this] { EXPECT_TRUE(open(false)); }).join();  // a request ends with its thread
    make("a");
    EXPECT_EQ(changes(), "+a 1");
    const unsigned long long start = GetTickCount64();
    EXPECT_EQ(watcher_.wait(1200, changes_), Watcher::timedOut);
    EXPECT_NEAR(static_cast<double>(GetTickCount64() - start), 1200, 300);
    std::thread stopper([this] {
        Sleep(100);
        watcher_.stop();
    });
    EXPECT_EQ(watcher_.wait(0xFFFFFFFF, changes_), Watcher::stopped);
    stopper.join();
    make("b");
    EXPECT_EQ(watcher_.wait(0, changes_), Watcher::stopped);
    ASSERT_TRUE(open(false));
    EXPECT_EQ(watcher_.wait(0, changes_), Watcher::timedOut);
    std::filesystem::rename(folder_, folder_.string() + "-moved");
    EXPECT_EQ(watcher_.wait(0xFFFFFFFF, changes_), Watcher::directoryGone);
    std::filesystem::rename(folder_.string() + "-moved", folder_);
}

TEST_F(DirectoryWatch, WhateverFailsTheResultSaysSoAndNothingIsLost) {
    // the request's event, the directory, the request; then the wait, what it brought, and no memory
    for (unsigned long nth = 1; nth <= 6; ++nth) {
        osfiles::Calls::Fail(nth, ERROR_NO_SYSTEM_RESOURCES);
        EXPECT_EQ(open(false), nth > 3) << nth;
        make(std::to_string(nth));
        if (nth > 5) tarntest::FailAllocation(1);
        if (nth > 5) EXPECT_THROW(watcher_.wait(1000, changes_), std::bad_alloc);
        osfiles::Calls::Fail(nth == 4 || nth == 5 ? nth - 3 : 0, ERROR_NO_SYSTEM_RESOURCES);
        EXPECT_EQ(watcher_.wait(1000, changes_), nth > 5 ? Watcher::changesSeen : Watcher::failed) << nth;
        EXPECT_EQ(watcher_.lastError(), nth < 4 ? ERROR_INVALID_HANDLE : ERROR_NO_SYSTEM_RESOURCES) << nth;
    }
    EXPECT_TRUE(Watcher().open(folder_.string().c_str(), false));  // closed by its destructor
}

TEST_F(DirectoryWatch, RecordsOfServersAreLookedAtBeforeTheyAreRead) {
    const tarntest::Instead server(osfiles::readChanges, ServeForged);
    for (const auto& c : tarntest::ReadCases("files/change_records.txt")) {
        forged = c[0];
        ASSERT_TRUE(open(false, 0x20000));
        EXPECT_EQ(asked, 0x10000U);  // servers refuse more
        std::string reported = std::to_string(watcher_.wait(0, changes_));
        for (const SDirectoryChange& change : changes_)
            reported += std::string(1, " +-m<>"[change.kind]) + change.path.getString();
        EXPECT_EQ(reported, c[1]) << testing::PrintToString(forged);
    }
}

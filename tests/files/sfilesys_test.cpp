#include <gtest/gtest.h>

#include <set>

#include "support/assert_recorder.h"
#include "support/case_file.h"
#include "support/file_bytes.h"
#include "support/print_strings.h"
#include "support/wine.h"
#include "tarnlib/sfilesys.h"

using namespace TarnLibA500;
using tarntest::Bytes;
using tarntest::Failure;
using tarntest::Text;
using tarntest::WriteBytes;
namespace fs = std::filesystem;

namespace {

class FileSys : public testing::Test {
  protected:
    const fs::path folder = tarntest::MakeScratchFolder("sfilesys");
    ~FileSys() override { SFileSys::rremove(Text(folder)); }
    fs::path write(const fs::path& name, const std::string& bytes) const {
        fs::create_directories((folder / name).parent_path());
        WriteBytes(folder / name, bytes);
        return folder / name;
    }
    SAnsiString path(const fs::path& name) const { return Text(folder / name); }
};

}  // namespace

TEST_F(FileSys, APathNeedsADirectoryOfADrive) {
    if (!tarntest::IsOnWine())
        GTEST_SKIP() << "only the emulator has directories that neither a drive nor a share has";
    const SAnsiString before = SFileSys::getCurrentDirectory();
    ASSERT_TRUE(SetCurrentDirectoryW(L"\\\\?\\unix\\tmp"));  // a directory that no drive leads to
    try {
        SFileSys::getFullPath("x");
        ADD_FAILURE();
    } catch (const SFileSysException& failure) {
        EXPECT_EQ(failure.reason(),
                  "No drive letter in current directory: " + SFileSys::getCurrentDirectory());
    }
    EXPECT_EQ(SFileSys::getFullPath("C:\\x"), "C:\\x");
    SFileSys::setCurrentDirectory(before);
}

TEST_F(FileSys, ListsMayTakeThePlaceOfWhatAskedForThem) {
    write("one/file", "12");
    write("one/sub.txt/x", "");
    SIArray<SAnsiString> names;
    names.Add(path("one"));
    SFileSys::listDirectory(names[0], names);
    ASSERT_EQ(names.GetSize(), 2U);
    EXPECT_EQ((std::set<std::string>{Bytes(names[0]), Bytes(names[1])}),
              (std::set<std::string>{"file", "sub.txt"}));
    SIArray<FileProp> entries;
    SFileSys::listing(path("one"), "f*", entries);
    ASSERT_EQ(entries.GetSize(), 1U);
    entries[0].name = path("one");
    SFileSys::listing(entries[0].name, "*", entries);
    EXPECT_EQ(Failure([&] { SFileSys::listing(path("none"), "*", entries); }), "6 1");
    EXPECT_EQ(entries.GetSize(), 2U);
    SSFileSearch search;
    EXPECT_FALSE(search.FindFirst(path("one"), "*.none"));
    EXPECT_FALSE(search.IsOpen() || search.FindNext());
}

TEST_F(FileSys, TimesAreExact) {
    const SDateTime when(2001, 2, 3, 4, 5, 6, 789, STimeZone::TZ_UTC());
    write("file", "x");
    for (const char* name : {"file", "."}) {
        SFileSys::setLastModifiedTime(path(name), when);
        EXPECT_EQ(SFileSys::getLastModifiedTime(path(name)), when) << name;
    }
    SIArray<FileProp> entries;
    SFileSys::listing(Text(folder), "file", entries);
    const SDateTime modified(entries[0].modified, STimeZone::TZ_UTC());
    EXPECT_EQ((when - modified).GetTotalMilliseconds(), 789);
    EXPECT_EQ(Failure([&] { SFileSys::setLastModifiedTime(path("file"), SDateTime()); }), "9 8");
    EXPECT_EQ(Failure([&] { SFileSys::setLastModifiedTime(path("none"), when); }), "9 1");
}

TEST_F(FileSys, DisksHaveRoom) {
    unsigned long long total = 0;
    unsigned long long free = 0;
    unsigned long long available = 0;
    SFileSys::diskUsageInfo(Text(folder), total, free, available);
    EXPECT_TRUE(0 < available && available <= free && free < total);
    EXPECT_EQ(Failure([&] { SFileSys::diskUsageInfo("Q:\\", total, free, available); }), "12 1");
}

TEST_F(FileSys, TheTemporaryDirectoryMayHaveALongName) {
    tarntest::AssertRecorder recorder;
    wchar_t before[MAX_PATH];
    GetEnvironmentVariableW(L"TMP", before, MAX_PATH);
    const std::string directory = "C:\\" + std::string(253, 't');
    SetEnvironmentVariableA("TMP", directory.c_str());
    EXPECT_EQ(Bytes(SFileSys::getTempDirname()), directory + "\\");
    EXPECT_TRUE(recorder.sawLast("sfilesys", "Length of temp dir returned is bigger than _MAX_DIR"));
    const fs::path polish = folder / L"\x0141ukasz";  // no character of the code page: by its short name
    fs::create_directory(polish);
    SetEnvironmentVariableW(L"TMP", polish.c_str());
    EXPECT_TRUE(SFileSys::exists(SFileSys::getTempFilename("t")));
    EXPECT_EQ(std::distance(fs::directory_iterator(polish), {}), 1);
    SetEnvironmentVariableW(L"TMP", before);
    EXPECT_EQ(SFileSys::getTempDirname().right(1), "\\");
}

TEST(SFileSysException, TextsOfEveryCode) {
    for (const auto& c : tarntest::ReadCases("files/filesys_failures.txt")) {
        const auto code = static_cast<SFileSysException::ErrorCodes>(std::stoi(c[0]));
        const SFileSysException e(code, SFileSysException::reasonOther, "why", "P1", "P2", "extra");
        EXPECT_EQ(Bytes(e.toString()), c[1]);
        EXPECT_EQ(Bytes(e.summary()), c[1] + ":extra");
    }
}

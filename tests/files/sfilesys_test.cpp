#include <gtest/gtest.h>

#include <set>

#include "support/assert_recorder.h"
#include "support/case_file.h"
#include "support/file_bytes.h"
#include "support/locale_scope.h"
#include "support/print_strings.h"
#include "tarnlib/sfile.h"
#include "tarnlib/sfilesys.h"

using namespace TarnLibA500;
using tarntest::Bytes;
using tarntest::Failure;
using tarntest::ReadBytes;
using tarntest::Text;
using tarntest::WriteBytes;
namespace fs = std::filesystem;

namespace {

constexpr int kRights = SFile::defaultPermissions;
constexpr int kNew = SFile::writeOnly | SFile::create | SFile::truncate;

class FileSys : public testing::Test {
  protected:
    const fs::path folder = tarntest::MakeScratchFolder("sfilesys");
    ~FileSys() override {
        SetFileAttributesW((folder / "fixed").c_str(), FILE_ATTRIBUTE_NORMAL);
        SFileSys::rremove(Text(folder));
    }
    fs::path write(const fs::path& name, const std::string& bytes) const {
        fs::create_directories((folder / name).parent_path());
        WriteBytes(folder / name, bytes);
        return folder / name;
    }
    SAnsiString path(const fs::path& name) const { return Text(folder / name); }
};

using Cp932FileSys = FileSys;

}  // namespace

TEST_F(FileSys, TestsSayNoInsteadOfFailing) {
    write("file.txt", "x");
    const struct {
        SAnsiString path;
        bool exists, isDir, isFile;
    } cases[] = {{path("file.txt"), true, false, true},
                 {path("FILE.TXT"), true, false, true},
                 {path("file.txt."), true, false, true},
                 {Text(folder), true, true, false},
                 {path("."), true, true, false},
                 {path("none"), false, false, false},
                 {path("none/none"), false, false, false},
                 {path("a?b"), false, false, false},
                 {"", false, false, false},
                 {SAnsiString(std::string(40'000, 'a').c_str()), false, false, false}};
    for (const auto& c : cases) {
        EXPECT_EQ(SFileSys::exists(c.path), c.exists) << Bytes(c.path).substr(0, 99);
        EXPECT_EQ(SFileSys::isDir(c.path), c.isDir);
        EXPECT_EQ(SFileSys::isFile(c.path), c.isFile);
    }
    for (const char* drive : {"C:", "c:\\", "C:/"}) EXPECT_TRUE(SFileSys::isDrive(drive)) << drive;
    for (const char* none : {"", "Q:", "C:\\windows", "C", "C:x", "\\"})
        EXPECT_FALSE(SFileSys::isDrive(none)) << none;
    for (const char* full : {"C:\\", "c:/x", "\\\\server\\share", "\\\\?\\C:\\x"})
        EXPECT_TRUE(SFileSys::isFullPath(full)) << full;
    for (const char* relative : {"", "x", "C:x", "\\x", "..\\x"})
        EXPECT_FALSE(SFileSys::isFullPath(relative)) << relative;
    EXPECT_TRUE(SFileSys::HasOwnerExePermission(Text(folder)));
    EXPECT_FALSE(SFileSys::HasOwnerExePermission(path("file.txt")));
    for (const fs::path& name :
         {fs::path("p.CMD"), fs::path(std::string(150, 'd')) / (std::string(150, 'p') + ".exe")})
        EXPECT_TRUE(SFileSys::HasOwnerExePermission(Text(write(name, "")))) << name;
    EXPECT_EQ(Failure([&] { SFileSys::HasOwnerWritePermission(path("none")); }), "7 1");
}

TEST_F(FileSys, AbsoluteAndLongPaths) {
    const SAnsiString before = SFileSys::getCurrentDirectory();
    SFileSys::setCurrentDirectory(Text(folder));
    EXPECT_EQ(SFileSys::getFullPath("a\\..\\b."), path("b"));
    SFileSys::setCurrentDirectory(before);
    const std::string component(100, 'c');
    const std::string upTo259 = "C:\\" + component + "\\" + component + "\\" + std::string(54, 'd');
    const std::string share = "\\\\server\\share\\" + component + "\\" + component + "\\" + component;
    const std::pair<std::string, std::string> longPaths[] = {
        {upTo259, upTo259},
        {upTo259 + "d", "\\\\?\\" + upTo259 + "d"},
        {share, "\\\\?\\UNC" + share.substr(1)},
        {"\\\\?\\" + upTo259 + "d", "\\\\?\\" + upTo259 + "d"},
        {"NUL", "\\\\.\\NUL"}};
    for (const auto& [path, expected] : longPaths)
        EXPECT_EQ(Bytes(SFileSys::toLongPath(path.c_str())), expected) << path.size();
    EXPECT_EQ(Failure([] { SFileSys::getFullPath(""); }).substr(0, 2), "7 ");
    EXPECT_EQ(Failure([&] { SFileSys::setCurrentDirectory(path("none")); }), "15 1");
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

TEST_F(FileSys, DirectoriesAreMadeAndListed) {
    const std::string deep =
        std::string(120, 'a') + "/" + std::string(120, 'b') + "\\" + std::string(120, 'c') + "/";
    SFileSys::makeDirectories(path(deep), kRights);
    EXPECT_TRUE(SFileSys::isDir(path(deep)));
    SFileSys::makeDirectories(path(deep), kRights);
    SFileSys::makeDirectory(path("one"), kRights);
    EXPECT_EQ(Failure([&] { SFileSys::makeDirectory(path("one"), kRights); }), "1 8");
    EXPECT_EQ(Failure([&] { SFileSys::makeDirectory(path("no/one"), kRights); }), "1 1");
    write("one/file", "12");
    EXPECT_EQ(Failure([&] { SFileSys::makeDirectories(path("one/file/x"), kRights); }).substr(0, 2), "1 ");
    EXPECT_EQ(Failure([&] { SFileSys::makeDirectories(path("one/file"), kRights); }), "1 8");
    EXPECT_EQ(Failure([&] { SFileSys::makeDirectories("Q:\\x\\y", kRights); }).substr(0, 2), "1 ");

    write("one/File2.TXT", "123");
    fs::create_directory(folder / "one" / "sub.txt");
    SIArray<SAnsiString> names;
    SFileSys::listDirectory(path("one"), names);
    std::set<std::string> found;
    for (const SAnsiString& name : names) found.insert(Bytes(name));
    EXPECT_EQ(found, (std::set<std::string>{"file", "File2.TXT", "sub.txt"}));
    SIArray<SAnsiString> same;
    same.Add(path("one"));
    SFileSys::listDirectory(same[0], same);
    EXPECT_EQ(same.GetSize(), 3U);
    EXPECT_EQ(SFileSys::countFiles(path("one")), 2U);
    EXPECT_EQ(SFileSys::countAll(path("one")), 3U);
    SIArray<FileProp> entries;
    SFileSys::listing(path("one"), "FILE?.*", entries);
    ASSERT_EQ(entries.GetSize(), 1U);
    EXPECT_EQ(entries[0].size, 3U);
    EXPECT_FALSE(entries[0].isDirectory);
    const SDateTime when(2001, 2, 3, 4, 5, 6, 789, STimeZone::TZ_UTC());
    SFileSys::setLastModifiedTime(path("one/file2.txt"), when);
    SFileSys::listing(path("one"), "file2.txt", entries);
    const SDateTime modified(entries[0].modified, STimeZone::TZ_UTC());
    EXPECT_EQ((when - modified).GetTotalMilliseconds(), 789);
    entries[0].name = path("one");
    SFileSys::listing(entries[0].name, "*", entries);
    EXPECT_EQ(entries.GetSize(), 3U);
    EXPECT_EQ(Failure([&] { SFileSys::listing(path("none"), "*", entries); }), "6 1");
    EXPECT_EQ(entries.GetSize(), 3U);
    EXPECT_EQ(Failure([&] { SFileSys::countAll(path("one/file")); }), "7 8");  // no directory
    SSFileSearch search;
    EXPECT_FALSE(search.FindFirst(path("one"), "*.none"));
    EXPECT_FALSE(search.IsOpen() || search.FindNext());
}

TEST_F(FileSys, PatternsMatchLongNamesOnly) {
    for (const auto& c : tarntest::ReadCases("file_patterns.txt")) {
        write(fs::path("patterns") / c[0], "");
        SIArray<FileProp> entries;
        SFileSys::listing(path("patterns"), c[1].c_str(), entries);
        EXPECT_EQ(entries.GetSize(), c[2] == "yes" ? 1U : 0U) << c[0] << " " << c[1];
        fs::remove(folder / "patterns" / c[0]);
    }
}

TEST_F(FileSys, CopiesAreWholeOrNotThere) {
    write("from", "new bytes");
    write("old", "old");
    SFileSys::copyFile(path("from"), path("to"), false);
    EXPECT_EQ(ReadBytes(folder / "to"), "new bytes");
    EXPECT_EQ(Failure([&] { SFileSys::copyFile(path("from"), path("old"), false); }), "5 8");
    EXPECT_EQ(ReadBytes(folder / "old"), "old");
    SFileSys::copyFile(path("from"), path("old"), true);
    SFileSys::copyFile(path("old"), path("old"), true);
    SFileSys::copyFile(path("old"), "NUL", true);
    EXPECT_EQ(ReadBytes(folder / "old"), "new bytes");
    EXPECT_EQ(Failure([&] { SFileSys::copyFile(path("none"), path("to"), true); }), "5 1");
    EXPECT_EQ(Failure([&] { SFileSys::copyFile(path("from"), path("none/to"), true); }), "5 1");
    EXPECT_EQ(Failure([&] { SFileSys::copyFile(path("from"), Text(folder), true); }), "5 4");
    {
        const SFile holder(path("to"), SFile::readOnly, 0, SFile::denyRead);
        EXPECT_EQ(Failure([&] { SFileSys::copyFile(path("to"), path("x"), true); }), "5 4");
        EXPECT_EQ(Failure([&] { SFileSys::copyFile(path("from"), path("to"), true); }), "5 4");
    }
    SFileSys::giveAccess(path("from"), SFile::ownerRMask);
    SFileSys::copyFile(path("from"), path("to"), true);
    EXPECT_FALSE(SFileSys::HasOwnerWritePermission(path("to")));  // as its source
    SFileSys::giveAllAccess(Text(folder), true);
    SFileSys::renameFile(path("to"), path("moved"));
    EXPECT_EQ(Failure([&] { SFileSys::renameFile(path("moved"), path("old")); }), "13 8");
    EXPECT_EQ(Failure([&] { SFileSys::renameFile(path("to"), path("x")); }), "13 1");
    EXPECT_EQ(SFileSys::countAll(Text(folder)), 3U);  // no half copy is left
}

TEST_F(FileSys, AFileTakesThePlaceOfAnother) {
    const struct {
        const char *to, *old, *failure;  // old: what is there before, null for nothing
    } cases[] = {{"to", nullptr, ""},          {"to", "longer than new", ""}, {"from", "new", ""},
                 {"none/to", nullptr, "13 1"}, {"fixed", "old", "13 4"},      {"sub", nullptr, "13 4"}};
    fs::create_directory(folder / "sub");
    for (const auto& c : cases) {
        if (c.old != nullptr) write(c.to, c.old);
        SFileSys::giveAccess(Text(write("fixed", "old")), SFile::ownerRMask);
        write("from", "new");
        EXPECT_EQ(Failure([&] { SFileSys::replaceFile(path("from"), path(c.to)); }), c.failure) << c.to;
        const bool isDone = *c.failure == '\0';
        EXPECT_EQ(ReadBytes(folder / (isDone ? c.to : "from")), "new") << c.to;
        EXPECT_EQ(fs::exists(folder / "from"), !isDone || c.to == std::string("from")) << c.to;
        SFileSys::giveAllAccess(path("fixed"), false);
        EXPECT_EQ(ReadBytes(folder / "fixed"), "old");
    }
    SFileSys::remove(path("from"));
    EXPECT_EQ(Failure([&] { SFileSys::replaceFile(path("from"), path("fixed")); }), "13 1");
    EXPECT_EQ(Failure([&] { SFileSys::replaceFile(path("sub"), path("new")); }), "13 4");
    EXPECT_EQ(SFileSys::countAll(Text(folder)), 3U);  // fixed, sub, to
}

TEST_F(FileSys, RemovingGoesOnAfterAFailure) {
    write("tree/a/one", "1");
    write("tree/z/two", "22");
    {
        const SFile held(Text(write("tree/m/held", "x")), SFile::readOnly, 0, SFile::denyNothing);
        EXPECT_EQ(Failure([&] { SFileSys::rremove(path("tree")); }), "4 4");
        EXPECT_EQ(SFileSys::rsizeEx(path("tree")), 1U);
        EXPECT_FALSE(fs::exists(folder / "tree" / "a") || fs::exists(folder / "tree" / "z"));
    }
    SFileSys::rremoveContent(path("tree"));
    EXPECT_EQ(SFileSys::countAll(path("tree")), 0U);
    SFileSys::remove(path("tree"));
    EXPECT_EQ(Failure([&] { SFileSys::remove(path("tree")); }), "4 1");
    EXPECT_EQ(Failure([&] { SFileSys::rremove(path("tree")); }), "4 1");
    write("c/1.log", "12345");
    write("c/2.LOG", "123");
    write("c/sub.log/3.log", "1");
    EXPECT_EQ(Failure([&] { SFileSys::remove(path("c")); }), "8 8");  // not empty
    std::uint32_t freed = 0;
    {
        const SFile held(path("c/1.log"), SFile::readOnly, 0, SFile::denyNothing);
        EXPECT_EQ(Failure([&] { SFileSys::removeContent(path("c"), "*.log", freed); }), "4 4");
        EXPECT_EQ(freed, 3U);  // of the one that is gone
    }
    SFileSys::removeContent(path("c"), "*.log", freed);
    EXPECT_EQ(freed, 5U);
    EXPECT_EQ(SFileSys::rsize(path("c")), 1U);
    EXPECT_EQ(Failure([&] { SFileSys::removeContent(path("none"), "*", freed); }), "4 1");
    EXPECT_EQ(freed, 0U);
}

// Names that only "\\\\?\\" can spell. What a listing gave must not be read as another name.
TEST_F(FileSys, NamesThatWouldMeanAnotherAreThemselves) {
    const std::wstring exact = L"\\\\?\\" + folder.wstring() + L"\\odd";
    CreateDirectoryW(exact.c_str(), nullptr);
    for (const wchar_t* name : {L"\\x", L"\\x.", L"\\y ", L"\\aux.c"})
        CloseHandle(CreateFileW((exact + name).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr));
    std::uint32_t freed = 0;
    SFileSys::removeContent(path("odd"), "x?", freed);
    EXPECT_TRUE(SFileSys::isFile(path("odd/x")));
    EXPECT_EQ(SFileSys::countAll(path("odd")), 3U);
    SFileSys::rremove(path("odd"));
    EXPECT_FALSE(SFileSys::exists(path("odd")));
}

// By likeness they would be "..\\keep.txt" and "L\xF3dz.txt", which are others.
TEST_F(FileSys, NoNameIsTakenForASimilarOne) {
    write("keep.txt", "1");
    write(L"in/..\xFF3Ckeep.txt", "2");
    write(
        L"in/\x0141\x00F3"
        L"d\x017A.txt",
        "3");
    write(L"in/\x20AC.txt", "4");
    SIArray<FileProp> entries;
    SFileSys::listing(path("in"), "*", entries);
    std::set<std::string> found;
    for (const FileProp& entry : entries) {
        found.insert(Bytes(entry.name) + (entry.isExact ? "" : " shown"));
        if (!entry.isExact)
            EXPECT_EQ(Failure([&] { SFileSys::remove(path("in") + "\\" + entry.name); }), "4 8");
    }
    EXPECT_EQ(found, (std::set<std::string>{"..?keep.txt shown",
                                            "?\xF3"
                                            "d?.txt shown",
                                            "\x80.txt"}));
    EXPECT_TRUE(SFileSys::exists(path("keep.txt")));
    EXPECT_EQ(SFileSys::size(path("in") + "\\\x80.txt"), 1U);
}

TEST_F(FileSys, ExactPathsAreTakenAsTheyAre) {
    write("a", "1");
    const SAnsiString exact = "\\\\?\\" + Text(folder) + "\\a.";
    EXPECT_EQ(Failure([&] { SFileSys::remove(exact); }), "4 1");
    EXPECT_EQ(SFileSys::getFullPath(exact), exact);
    SFile(exact, SFile::writeOnly | SFile::create, 0, 0).writeString("12");
    SFileSys::remove(exact);
    EXPECT_EQ(SFileSys::countAll(Text(folder)), 1U);
    EXPECT_EQ(SFileSys::size(path("a")), 1U);
}

TEST_F(FileSys, WhatIsNoPathIsNotTheCurrentDirectory) {
    const SAnsiString before = SFileSys::getCurrentDirectory();
    write("kept", "1");
    SFileSys::setCurrentDirectory(Text(folder));
    std::uint32_t freed = 0;
    SIArray<SAnsiString> names;
    EXPECT_EQ(Failure([] { SFileSys::rremoveContent(""); }), "8 1");
    EXPECT_EQ(Failure([&] { SFileSys::removeContent("", "*", freed); }), "4 1");
    EXPECT_EQ(Failure([&] { SFileSys::listDirectory("", names); }), "6 1");
    EXPECT_EQ(Failure([] { SFileSys::rsize(""); }).substr(0, 2), "10");
    const SAnsiString cut("kept\0.bak", 9);
    EXPECT_EQ(Failure([&] { SFileSys::remove(cut); }).substr(0, 1), "4");
    EXPECT_EQ(Failure([&] { SFileSys::getFullPath(cut); }), "7 8");
    EXPECT_FALSE(SFileSys::isDrive(SAnsiString("C:\0x", 4)));
    EXPECT_EQ(Failure([] { SFileSys::setCurrentDirectory(SAnsiString("C:\\\0x", 5)); }), "15 8");
    EXPECT_EQ(SFileSys::getCurrentDirectory(), Text(folder));
    const int temporary = SFile::writeOnly | SFile::create | SFile::temporary;
    write("other/t.tmp", "not this one");
    for (const wchar_t* name : {L".", L"\x0142"}) {  // one that the code page has not
        fs::create_directory(folder / name);
        SetCurrentDirectoryW((folder / name).c_str());
        SFile file("t.tmp", temporary, 0, SFile::denyNothing);
        SetCurrentDirectoryW((folder / "other").c_str());
        file.close();
        EXPECT_TRUE(fs::exists(folder / "other" / "t.tmp"));
        EXPECT_FALSE(fs::exists(folder / name / "t.tmp"));
    }
    SFileSys::setCurrentDirectory(before);
    EXPECT_TRUE(SFileSys::exists(path("kept")));
}

TEST_F(FileSys, RightsAndTimes) {
    write("fixed", "x");
    SFileSys::giveAccess(path("fixed"), SFile::ownerRMask);
    EXPECT_FALSE(SFileSys::HasOwnerWritePermission(path("fixed")));
    EXPECT_EQ(Failure([&] { SFileSys::remove(path("fixed")); }), "4 4");
    EXPECT_EQ(Failure([&] { SFileSys::copyFile(Text(write("f", "")), path("fixed"), true); }), "5 4");
    SFileSys::giveAllAccess(Text(folder), true);
    EXPECT_TRUE(SFileSys::HasOwnerWritePermission(path("fixed")));
    EXPECT_EQ(Failure([&] { SFileSys::giveAccess(path("none"), 0); }), "3 1");
    const SDateTime when(2001, 2, 3, 4, 5, 6, 789, STimeZone::TZ_UTC());
    for (const char* name : {"fixed", "."}) {
        SFileSys::setLastModifiedTime(path(name), when);
        EXPECT_EQ(SFileSys::getLastModifiedTime(path(name)), when) << name;
    }
    EXPECT_EQ(Failure([&] { SFileSys::setLastModifiedTime(path("fixed"), SDateTime()); }), "9 8");
    EXPECT_EQ(Failure([&] { SFileSys::setLastModifiedTime(path("none"), when); }), "9 1");
}

TEST_F(FileSys, SizesAndDisks) {
    EXPECT_EQ(Failure([&] { SFileSys::size(path("none")); }), "10 1");
    SFile large(path("large"), kNew, 0, SFile::denyNothing);
    large.seekEx(SFile::seekBegin, 0x100000000);
    large.write("x", 1);  // a file with a hole
    large.close();
    EXPECT_EQ(SFileSys::sizeEx(path("large")), 0x100000001U);
    EXPECT_EQ(SFileSys::rsizeEx(Text(folder)), 0x100000001U);
    EXPECT_EQ(Failure([&] { SFileSys::size(path("large")); }), "10 8");
    unsigned long long total = 0;
    unsigned long long free = 0;
    unsigned long long available = 0;
    SFileSys::diskUsageInfo(Text(folder), total, free, available);
    EXPECT_TRUE(0 < available && available <= free && free < total);
    EXPECT_EQ(Failure([&] { SFileSys::diskUsageInfo("Q:\\", total, free, available); }), "12 1");
}

TEST_F(FileSys, UniqueNamesAvoidDevices) {
    const SAnsiString first = SFileSys::getUniqueFilename(Text(folder), "a-", ".tmp", true, kRights);
    const SAnsiString second = SFileSys::getUniqueFilename(Text(folder), "a-", ".tmp", false, kRights);
    EXPECT_TRUE(SFileSys::isFile(first));
    EXPECT_FALSE(SFileSys::exists(second));
    EXPECT_EQ(second.getLength(), Text(folder).getLength() + sizeof "\\a-12345678.tmp" - 1);
    EXPECT_TRUE(SFileSys::isDir(SFileSys::getUniqueDirname(Text(folder), "d", true, kRights)));
    EXPECT_EQ(Failure([&] { SFileSys::getUniqueFilename(path("none"), "a", "", true, kRights); }), "11 1");
    const std::pair<const char*, const char*> names[] = {
        {"com4.", "com4x"}, {"nul.tar", "nulxtar"},   {"Clock$.", "Clock$x"}, {"LPT9.", "LPT9x"},
        {"prn", "prn"},     {"console.", "console."}, {"com10.", "com10."}};
    for (const auto& [prefix, expected] : names) {
        const SAnsiString made = SFileSys::getUniqueFilename(Text(folder), prefix, ".gz", false, kRights);
        EXPECT_EQ(Bytes(made).substr(folder.string().size() + 1, std::string(expected).size()), expected);
    }
    const SAnsiString temporary = SFileSys::getTempFilename("tarn");
    EXPECT_EQ(SFileSys::size(temporary), 0U);
    SFileSys::remove(temporary);
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

TEST_F(Cp932FileSys, NamesOfTheCodePage) {  // the process's, not the C locale's
    const SAnsiString directory = Text(folder) + "\\\x95\x5C";
    SFileSys::makeDirectories(directory + "\\\x83\x5C", kRights);
    SFile(directory + "\\\x83\x5C\\\x94\x5C.txt", kNew, 0, 0).writeString("x");
    EXPECT_TRUE(fs::exists(folder / L"\x8868" / L"\x30BD" / L"\x80FD.txt"));
    SIArray<FileProp> entries;
    SFileSys::listing(directory + "\\\x83\x5C", "\x94\x5C.*", entries);
    ASSERT_EQ(entries.GetSize(), 1U);
    EXPECT_EQ(entries[0].name, "\x94\x5C.txt");
    EXPECT_TRUE(entries[0].isExact);
    const SAnsiString unique = SFileSys::getUniqueFilename(directory, "u", "", true, kRights);
    EXPECT_EQ(unique.getLength(), directory.getLength() + sizeof "\\u12345678" - 1);
    SFileSys::rremove(directory);
    EXPECT_FALSE(SFileSys::exists(directory));
    write("a.txt", "");
    std::uint32_t freed = 0;
    SFileSys::removeContent(Text(folder), "\x81.txt", freed);  // no character, and no wildcard
    EXPECT_TRUE(fs::exists(folder / "a.txt"));
}

TEST(SFileSysException, TextsOfEveryCode) {
    for (const auto& c : tarntest::ReadCases("filesys_failures.txt")) {
        const auto code = static_cast<SFileSysException::ErrorCodes>(std::stoi(c[0]));
        const SFileSysException e(code, SFileSysException::reasonOther, "why", "P1", "P2", "extra");
        EXPECT_EQ(Bytes(e.toString()), c[1]);
        EXPECT_EQ(Bytes(e.summary()), c[1] + ":extra");
    }
}

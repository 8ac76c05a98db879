#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <functional>
#include <map>
#include <sstream>

#include "files/filesysfailure.h"
#include "files/osfiles.h"
#include "files/sreadahead.h"
#include "files/systempath.h"
#include "seam/osclock.h"
#include "support/alloc_hooks.h"
#include "support/case_file.h"
#include "support/failing.h"
#include "support/file_bytes.h"
#include "support/open_handles.h"
#include "support/owners.h"
#include "support/print_strings.h"
#include "tarnlib/sfile.h"
#include "tarnlib/sfilesys.h"
#include "tarnlib/simplebuffer.h"

using namespace TarnLibA500;
using tarntest::FailsAt;
using tarntest::Failure;
using tarntest::Instead;
using tarntest::ReadBytes;
using tarntest::Text;
using tarntest::WriteBytes;
namespace fs = std::filesystem;

namespace {

constexpr int kShared = SFile::denyNothing;

class FileFaults : public testing::Test {
  protected:
    const fs::path folder = tarntest::MakeScratchFolder("filefaults");
    const SAnsiString file = Text(folder / "file");
    ~FileFaults() override { SFileSys::rremove(Text(folder)); }

    // Fails every call of an action in turn, until it gets by without. Each failure must be one of those
    // given, and no handle may stay open.
    template <class Prepare, class Action>
    unsigned long failEach(Prepare prepare, Action action, const std::set<std::string>& expected) {
        for (unsigned long nth = 1; nth < 200; ++nth) {
            prepare();
            std::string failure;
            if (!FailsAt<osfiles::Calls>(nth, ERROR_DISK_FULL, [&] { failure = Failure(action); })) {
                EXPECT_EQ(failure, "");
                return nth - 1;
            }
            EXPECT_TRUE(expected.count(failure) == 1) << nth << ": " << failure;
        }
        ADD_FAILURE() << "no end";
        return 0;
    }
};

void Nothing() {}
void WINAPI NoPause(DWORD /*milliseconds*/) {}

unsigned long emptyReads = 0;

BOOL WINAPI ReadNothingAtFirst(HANDLE file, void* bytes, DWORD count, DWORD* done, OVERLAPPED* request) {
    if (emptyReads == 0) return ReadFile(file, bytes, count, done, request);
    --emptyReads;
    return TRUE;
}

// What the system answers in turn, by the letter of the call: an error, or 0 for what it does. 303 is a refusal because of a
// deletion that is pending.
std::map<char, std::deque<DWORD>> answers;
std::string seen;
LONG lastStatus = 0;

DWORD Refused(char call) {
    std::deque<DWORD>& next = answers[call];
    const DWORD answer = next.empty() ? 0 : next.front();
    if (!next.empty()) next.pop_front();
    lastStatus = answer == 303 ? static_cast<LONG>(0xC0000056) : 0;
    if (answer != 0) SetLastError(answer == 303 ? ERROR_ACCESS_DENIED : answer);
    return answer;
}

template <char kCall, auto kFunction>
struct Scripted;
template <char kCall, class... Arguments, BOOL(WINAPI* kFunction)(Arguments...)>
struct Scripted<kCall, kFunction> {
    static BOOL WINAPI Call(Arguments... arguments) { return Refused(kCall) == 0 && kFunction(arguments...); }
};

// As Windows does, which takes the old file away first and merges attributes.
BOOL WINAPI ScriptedReplace(const wchar_t* target, const wchar_t* file, const wchar_t* backup, DWORD flags,
                            void* /*unused*/, void* /*unused*/) {
    const DWORD error = Refused('R');
    const bool isWritable = (GetFileAttributesW(file) & FILE_ATTRIBUTE_READONLY) == 0;
    seen += isWritable && flags == 0 && backup != nullptr ? "R " : "? ";
    if (error == 0) return ReplaceFileW(target, file, backup, flags, nullptr, nullptr);
    if (error == ERROR_UNABLE_TO_MOVE_REPLACEMENT_2) {
        MoveFileW(target, backup);
        SetFileAttributesW(file, FILE_ATTRIBUTE_SYSTEM);
    }
    SetLastError(error);
    return FALSE;
}

// A deletion is asked for in two ways.
BOOL WINAPI ScriptedSet(HANDLE file, FILE_INFO_BY_HANDLE_CLASS what, void* info, DWORD bytes) {
    static DWORD refusal = 0;
    if (what == FileDispositionInfo ? refusal != 0 : (refusal = Refused('S')) != 0) {
        SetLastError(refusal == 303 ? ERROR_ACCESS_DENIED : refusal);
        return FALSE;
    }
    return SetFileInformationByHandle(file, what, info, bytes);
}

LONG NTAPI ScriptedStatus() {
    return lastStatus;
}

void WINAPI NotedPause(DWORD milliseconds) {
    seen += std::to_string(milliseconds) + " ";
}

BOOL WINAPI NotedFlush(HANDLE file) {
    seen += "flush ";
    return FlushFileBuffers(file);
}

BOOL WINAPI NotedOwner(HANDLE /*file*/, SECURITY_INFORMATION /*what*/, PSECURITY_DESCRIPTOR from) {
    PSID owner = nullptr;
    BOOL isDefault = FALSE;
    seen += GetSecurityDescriptorOwner(from, &owner, &isDefault) && IsWellKnownSid(owner, WinWorldSid)
                ? "owner "
                : "?";
    return TRUE;
}

std::wstring linkPath;

BOOL WINAPI SeeLink(const wchar_t* path, GET_FILEEX_INFO_LEVELS level, void* data) {
    const BOOL isThere = GetFileAttributesExW(path, level, data);
    if (isThere && path == linkPath)
        static_cast<WIN32_FILE_ATTRIBUTE_DATA*>(data)->dwFileAttributes |= FILE_ATTRIBUTE_REPARSE_POINT;
    return isThere;
}

DWORD reparseTag = 0;

// What a handle shows as a reparse point of that kind; with a link's path, what only the path does.
BOOL WINAPI TagByHandle(HANDLE file, FILE_INFO_BY_HANDLE_CLASS what, void* into, DWORD bytes) {
    const BOOL isThere = GetFileInformationByHandleEx(file, what, into, bytes);
    auto* const info = static_cast<FILE_ATTRIBUTE_TAG_INFO*>(into);
    if (linkPath.empty()) *info = {FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT, reparseTag};
    return isThere;
}

HANDLE WINAPI TagByPath(const wchar_t* path, FINDEX_INFO_LEVELS level, void* into, FINDEX_SEARCH_OPS how,
                        void* filter, DWORD flags) {
    const HANDLE search = FindFirstFileExW(path, level, into, how, filter, flags);
    auto* const entry = static_cast<WIN32_FIND_DATAW*>(into);
    if (path == linkPath) entry->dwFileAttributes |= FILE_ATTRIBUTE_REPARSE_POINT;
    if (path == linkPath) entry->dwReserved0 = reparseTag;
    return search;
}

HANDLE WINAPI NotedOpening(const wchar_t* path, DWORD access, DWORD share, SECURITY_ATTRIBUTES* security,
                           DWORD disposition, DWORD flags, HANDLE like) {
    seen += std::to_string(flags >> 16) + " ";
    return CreateFileW(path, access, share, security, disposition, flags, like);
}

bool isNewer = true;

DWORD WINAPI TempOfServices(DWORD /*units*/, wchar_t* path) {
    return static_cast<DWORD>(std::wcslen(std::wcscpy(path, L"C:\\windows\\SystemTemp\\")));
}

BOOLEAN NTAPI Yes() {
    return TRUE;
}

// An older system has not got them.
FARPROC WINAPI FunctionOfNewer(HMODULE /*module*/, const char* name) {
    if (!isNewer) return nullptr;
    const bool isTemp = std::string(name) == "GetTempPath2W";
    return reinterpret_cast<FARPROC>(isTemp ? reinterpret_cast<void*>(TempOfServices)
                                            : reinterpret_cast<void*>(Yes));
}

fs::path swapRoot;

// What another process might do: "sub" of a tree becomes a link to a directory elsewhere. (A link that is made of
// the directory itself and of what the system is to say about it.)
void SwapForLink() {
    const std::wstring link = L"\\\\?\\" + (swapRoot / "tree" / "sub").wstring();
    if (!MoveFileW(link.c_str(), (swapRoot / "aside").c_str())) return;
    if (MoveFileW((swapRoot / "foreign").c_str(), link.c_str())) linkPath = link;
}

constexpr const char* kTreeFiles[] = {"a", "deep/a"};

void MakeTree(const fs::path& root, const std::string& bytes) {
    fs::create_directories(root / "deep");
    for (const char* name : kTreeFiles) {
        WriteBytes(root / name, bytes);
        if (bytes.size() > 1) SetFileAttributesW((root / name).c_str(), FILE_ATTRIBUTE_READONLY);
    }
}

bool IsUntouched(const fs::path& root) {
    return std::all_of(std::begin(kTreeFiles), std::end(kTreeFiles), [&](const char* name) {
        const DWORD attributes = GetFileAttributesW((root / name).c_str());
        return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) != 0;
    });
}

void RemoveTree(const fs::path& root) {
    if (!fs::exists(root)) return;
    SFileSys::giveAllAccess(Text(root), true);
    SFileSys::rremove(Text(root));
}

void MakeParents() {
    fs::create_directories(swapRoot / "x" / "y");
}

void RemoveParents() {
    fs::remove_all(swapRoot / "x");
}

class Secret : public SAnsiString {
  public:
    using SAnsiString::getStringBuffer;
    using SAnsiString::SAnsiString;
    using SAnsiString::unlinkBuffer;
    explicit Secret(SAnsiString&& text) : SAnsiString(std::move(text)) {}
};

}  // namespace

TEST_F(FileFaults, WhicheverCallOfAFileFailsIsReported) {
    const auto prepare = [&] { WriteBytes(folder / "file", "one\ntwo\n\xC3\xBC"); };
    EXPECT_GE(failEach(prepare,
                       [&] {
                           SFile read(file, SFile::readAndWrite | SFile::append, 0, kShared);
                           read.seek(SFile::seekBegin, 0);
                           read.readLine();
                           read.readString();
                           read.eof();
                       },
                       {"0 5 112", "1 5 112", "4 5 112"}),
              8U);
    EXPECT_GE(failEach(Nothing,
                       [&] {
                           SFile write(file, SFile::readAndWrite | SFile::create, 0, kShared);
                           write.writeString("text");
                           write.flush();
                           write.size();
                           write.close();
                       },
                       {"0 5 112", "2 5 112", "3 5 112", "4 5 112"}),
              4U);
    const int temporary = SFile::writeOnly | SFile::create | SFile::temporary;
    EXPECT_EQ(failEach(Nothing, [&] { SFile(file, temporary, 0, kShared).close(); }, {"0 5 112", "7 5 0"}),
              3U);
}

TEST_F(FileFaults, WhicheverCallOfTheFileSystemFailsIsReported) {
    const auto tree = [&] {
        fs::create_directories(folder / "tree" / "sub");
        WriteBytes(folder / "tree" / "sub" / "a", "1");
        WriteBytes(folder / "tree" / "b", "2");
    };
    const SAnsiString root = Text(folder / "tree");
    EXPECT_GE(failEach(tree, [&] { SFileSys::rremove(root); }, {"4 6", "8 6"}), 10U);
    EXPECT_FALSE(fs::exists(folder / "tree"));
    tree();
    failEach(Nothing, [&] { SFileSys::rsizeEx(root); }, {"10 6"});
    failEach(Nothing, [&] { SFileSys::giveAllAccess(root, true); }, {"3 6", ""});
    SIArray<FileProp> entries;
    failEach(Nothing, [&] { SFileSys::listing(root, "*", entries); }, {"7 6"});
    failEach(Nothing, [&] { SFileSys::countAll(root); }, {"7 6"});
    failEach(Nothing, [&] { SFileSys::getLastModifiedTime(root); }, {"7 6"});
    unsigned long long bytes = 0;
    failEach(Nothing, [&] { SFileSys::diskUsageInfo(root, bytes, bytes, bytes); }, {"12 6"});
    failEach(Nothing, [&] { SFileSys::setCurrentDirectory(SFileSys::getCurrentDirectory()); },
             {"7 6", "15 6"});
    failEach(Nothing, [&] { SFileSys::getUniqueFilename(root, "u", "", true, 0); }, {"11 6"});
    failEach(Nothing, [&] { SFileSys::getUniqueDirname(root, "u", false, 0); }, {"11 6", ""});
    const auto noLevels = [&] { fs::remove_all(folder / "x"); };
    for (void (*const others)() : {MakeParents, RemoveParents}) {  // at the same time
        swapRoot = folder;
        for (unsigned long nth = 1; nth <= 12; ++nth) {
            noLevels();
            osfiles::Calls::DoBefore(nth, others);
            EXPECT_EQ(Failure([&] { SFileSys::makeDirectories(Text(folder / "x" / "y" / "z"), 0); }), "")
                << nth;
        }
        osfiles::Calls::DoBefore(0, nullptr);
    }
    failEach(noLevels, [&] { SFileSys::makeDirectories(Text(folder / "x" / "y" / "z"), 0); },
             {"1 6", ""});  // looking whether a level is there may fail: making it is tried all the same
}

// Whatever the moment at which a directory becomes a link, nothing that the link leads to is touched.
TEST_F(FileFaults, ADirectoryThatBecomesALinkIsNotEntered) {
    const SAnsiString root = Text(folder / "tree");
    const std::pair<const char*, std::function<void()>> cases[] = {
        {"rremove", [&] { SFileSys::rremove(root); }},
        {"rremoveContent", [&] { SFileSys::rremoveContent(root); }},
        {"giveAllAccess", [&] { SFileSys::giveAllAccess(root, true); }}};
    swapRoot = folder;
    const Instead noPause(osclock::sleep, NoPause);
    const Instead links(osfiles::getFileAttributes, SeeLink);
    for (const auto& [name, work] : cases) {
        int swaps = 0;
        for (unsigned long nth = 1; nth <= 20; ++nth) {
            MakeTree(folder / "tree" / "sub", "1");
            MakeTree(folder / "foreign", std::string(1000, 'f'));
            osfiles::Calls::DoBefore(nth, SwapForLink);
            Failure(work);
            osfiles::Calls::DoBefore(0, nullptr);
            linkPath.clear();
            const bool isSwapped = !fs::exists(folder / "foreign");
            EXPECT_TRUE(IsUntouched(isSwapped ? folder / "tree" / "sub" : folder / "foreign")) << name << nth;
            swaps += isSwapped ? 1 : 0;
            for (const char* left : {"tree", "foreign", "aside"}) RemoveTree(folder / left);
        }
        EXPECT_GT(swaps, 2) << name;
    }
    MakeTree(folder / "tree", std::string(1000, 'f'));  // a link from the beginning
    linkPath = (folder / "tree").wstring();
    EXPECT_EQ(Failure(cases[0].second), "8 8");
    linkPath.clear();
    EXPECT_TRUE(IsUntouched(folder / "tree"));
    RemoveTree(folder / "tree");
}

TEST_F(FileFaults, OnlyWhatStandsForAnotherIsALink) {
    const Instead noPause(osclock::sleep, NoPause);
    const Instead byHandle(osfiles::getInformation, TagByHandle);
    const Instead byPath(osfiles::findFirst, TagByPath);
    const Instead attributes(osfiles::getFileAttributes, SeeLink);
    const fs::path tree = folder / "tree";
    for (const auto& c : tarntest::ReadCases("files/reparse_tags.txt")) {
        reparseTag = static_cast<DWORD>(std::stoul(c[0], nullptr, 16));
        for (const std::wstring& path : {std::wstring(), tree.wstring()}) {
            MakeTree(tree, "1");
            linkPath = path;
            EXPECT_EQ(Failure([&] { SFileSys::rremove(Text(tree)); }), c[1]) << c[0] << path.size();
            linkPath.clear();
            EXPECT_EQ(fs::exists(tree / "deep" / "a"), !c[1].empty()) << c[0] << path.size();
        }
    }
    fs::remove_all(tree);
}

TEST_F(FileFaults, NewerSystemsAreAskedForWhatTheyHave) {
    const Instead opening(osfiles::createFile, NotedOpening);
    const Instead functions(osmodules::getProcAddress, FunctionOfNewer);
    seen.clear();
    SFile(file, SFile::writeOnly | SFile::create | SFile::sequential, 0, kShared).close();
    EXPECT_EQ(seen, std::to_string(0x811) + " ");  // who opens a pipe may be identified, no more
    for (const bool newer : {true, false}) {
        isNewer = newer;
        EXPECT_EQ(SFileSys::getTempDirname() == "C:\\windows\\SystemTemp\\", newer);
        EXPECT_EQ(KnowsLongPaths(), newer);
    }
}

// What others do for a moment, and what a replacement leaves when it fails halfway.
TEST_F(FileFaults, WhatOthersHinderIsTriedAgainForASecond) {
    const Instead pause(osclock::sleep, NotedPause);
    const Instead copies(osfiles::copyFile, Scripted<'C', CopyFileW>::Call);
    const Instead moves(osfiles::moveFile, Scripted<'M', MoveFileExW>::Call);
    const Instead deletions(osfiles::deleteFile, Scripted<'D', DeleteFileW>::Call);
    const Instead directories(osfiles::removeDirectory, Scripted<'Y', RemoveDirectoryW>::Call);
    const Instead replacements(osfiles::replaceFile, ScriptedReplace);
    const Instead dispositions(osfiles::setInformation, ScriptedSet);
    const Instead status(osfiles::lastStatus, ScriptedStatus);
    const Instead flushes(osfiles::flush, NotedFlush);
    const Instead ownersAre(osfiles::getSecurity, tarntest::OwnerInTurn);
    const Instead ownerGiven(osfiles::setSecurity, NotedOwner);
    const SAnsiString target = Text(folder / "target");
    const SAnsiString tree = Text(folder / "tree");
    const std::map<std::string, std::function<void()>> operations = {
        {"copy", [&] { SFileSys::copyFile(file, Text(folder / "new"), false); }},
        {"copy over", [&] { SFileSys::copyFile(file, target, true); }},
        {"replace", [&] { SFileSys::replaceFile(file, target); }},
        {"rename", [&] { SFileSys::renameFile(file, Text(folder / "new")); }},
        {"rename to fixed", [&] { SFileSys::renameFile(file, Text(folder / "fixed")); }},
        {"rename to tree", [&] { SFileSys::renameFile(file, tree); }},
        {"remove", [&] { SFileSys::remove(target); }},
        {"remove directory", [&] { SFileSys::remove(tree); }},
        {"remove tree", [&] { SFileSys::rremove(tree); }}};
    for (const auto& c : tarntest::ReadCases("files/moments.txt")) {
        RemoveTree(folder);
        MakeTree(folder / "tree", "1");  // "a" and "deep/a"
        for (const auto& [name, attribute] : {std::pair("file", 1), {"target", 2}, {"fixed", 1}}) {
            WriteBytes(folder / name, name);
            SetFileAttributesW((folder / name).c_str(), static_cast<DWORD>(attribute));
        }
        seen.clear();
        tarntest::owners = {"O:WD"};  // everybody, and then this process
        std::istringstream script(c[1]);
        for (std::string answer; script >> answer;)
            answers[answer[0]].push_back(std::stoul(answer.substr(1)));
        const std::string failure = Failure(operations.at(c[0]));
        answers.clear();
        const DWORD attributes = GetFileAttributesW((folder / "target").c_str());
        const std::string left = ReadBytes(folder / "target") + " " + std::to_string(attributes & 7) + " " +
                                 std::to_string(SFileSys::countAll(Text(folder)));
        EXPECT_EQ(seen + "|" + failure + "|" + left, c[2] + "|" + c[3] + "|" + c[4]) << c[0] << "|" << c[1];
    }
    SFileSys::giveAllAccess(Text(folder), true);
}

TEST_F(FileFaults, NothingIsHalfWritten) {
    const SAnsiString target = Text(folder / "target");
    WriteBytes(folder / "file", std::string(100'000, 'n'));
    const auto prepare = [&] {
        for (const auto& entry : fs::directory_iterator(folder)) {
            // The old file, which could not be removed.
            if (entry.path().filename().string()[0] == '~') EXPECT_EQ(ReadBytes(entry.path()), "old");
            if (entry.path().filename().string()[0] == '~') fs::remove(entry.path());
        }
        WriteBytes(folder / "target", "old");
    };
    EXPECT_GE(failEach(prepare,
                       [&] {
                           try {
                               SFileSys::copyFile(file, target, true);
                               EXPECT_EQ(ReadBytes(folder / "target").size(), 100'000U);
                           } catch (const SFileSysException&) {
                               EXPECT_EQ(ReadBytes(folder / "target"), "old");
                               throw;
                           }
                       },
                       {"5 6", ""}),
              2U);
    const auto copy = [&] { SFileSys::copyFile(file, target, true); };
    for (unsigned long nth = 1; tarntest::FailsAt(nth, copy); ++nth)
        EXPECT_EQ(SFileSys::countAll(Text(folder)), 2U) << nth;
    SFileSys::remove(target);
    EXPECT_EQ(SFileSys::countAll(Text(folder)), 1U);

    const SSimpleBuffer buffer("new bytes", 9, false);
    for (const DWORD error : {ERROR_DISK_FULL, ERROR_ACCESS_DENIED}) {
        prepare();
        EXPECT_TRUE(FailsAt<osfiles::Calls>(
            2, error, [&] { EXPECT_FALSE(SSimpleBuffer(buffer).saveToFile(target)); }));  // the write
        EXPECT_FALSE(fs::exists(folder / "target"));
    }
    const auto saved = [&] { return SSimpleBuffer(buffer).saveToFile(target, false); };
    prepare();
    osfiles::Calls::Fail(1, ERROR_SHARING_VIOLATION);
    EXPECT_FALSE(saved());
    EXPECT_EQ(ReadBytes(folder / "target"), "old");
    for (unsigned long nth = 1; nth <= 5; ++nth) {
        for (const bool map : {false, true}) {
            bool isLoaded = false;
            const bool wasHit = FailsAt<osfiles::Calls>(nth, ERROR_NOT_ENOUGH_MEMORY, [&] {
                SSimpleBuffer loaded;
                isLoaded = loaded.loadFromFile(file, map);
                EXPECT_TRUE(isLoaded || loaded.isEmpty());
            });
            EXPECT_EQ(isLoaded, !wasHit) << nth << map;
        }
    }
}

TEST_F(FileFaults, LinesCostFewCallsAndNoAllocations) {
    constexpr int kLines = 20'000;
    std::string bytes;
    for (int i = 0; i < kLines; ++i) bytes += std::string(58, 'x') + "\r\n";
    WriteBytes(folder / "file", bytes);
    SFile lines(file, SFile::readOnly, 0, kShared);
    const unsigned long before = osfiles::Calls::SoFar();
    lines.readLine();
    const tarntest::AllocationCount allocations;
    int count = 1;
    for (; !lines.eof(); ++count) lines.readLine();
    EXPECT_EQ(count, kLines);
    EXPECT_LT(osfiles::Calls::SoFar() - before, kLines / 20U);
    EXPECT_LT(allocations.Taken(), kLines / 100U);  // for lines that lie across two blocks
}

TEST_F(FileFaults, WhatWasReadCanBeWiped) {
    WriteBytes(folder / "file", "password\nnext\n");
    SFile lines(file, SFile::readOnly, 0, kShared);
    Secret line(lines.readLine());
    const char* const characters = line.getString();
    line.unlinkBuffer(true);                            // throws when the string has not got it for itself
    EXPECT_EQ(std::string(characters, 8), "########");  // in memory that is the file's still
    Secret next(lines.readLine());
    EXPECT_EQ(next, "next");
    lines.close();
    char freed[sizeof(Secret::SStringBuffer) + 4] = {};
    tarntest::CopyWhenFreed(next.getStringBuffer(), freed, sizeof freed);
    next.unlinkBuffer(true);  // now it is the string's alone
    EXPECT_EQ(std::string(freed + sizeof freed - 4, 4), "####");

    alignas(SReadAhead) static char place[sizeof(SReadAhead)];
    auto* const ahead = new (place) SReadAhead;
    const char* volatile const read = std::strcpy(ahead->room(), "password");
    ahead->filled(8);
    ahead->~SReadAhead();
    EXPECT_EQ(std::string(read, 8), std::string(8, '\0'));
}

TEST_F(FileFaults, ZeroBytesCostNoAllocationEach) {
    SFile out(file, SFile::writeOnly | SFile::create, 0, kShared);
    const std::string text = "\xFC" + std::string(10'000, '\0') + "\xFC";
    const SAnsiString zeros(text.data(), static_cast<std::uint32_t>(text.size()));
    const tarntest::AllocationCount allocations;
    EXPECT_EQ(out.writeString(zeros), 10'004U);
    EXPECT_LT(allocations.Taken(), 100U);
}

TEST_F(FileFaults, ChildrenInheritUnlessToldOtherwise) {
    for (const int flag : {0, SFile::noInherit}) {
        const std::set<HANDLE> before = tarntest::OpenHandles();
        SFile opened(file, SFile::writeOnly | SFile::create | flag, 0, kShared);
        std::size_t inherited = 0;
        for (const HANDLE handle : tarntest::OpenHandles()) {
            DWORD flags = 0;
            GetHandleInformation(handle, &flags);
            if (before.count(handle) == 0 && (flags & HANDLE_FLAG_INHERIT) != 0) ++inherited;
        }
        EXPECT_EQ(inherited, flag == 0 ? 1U : 0U);
    }
}

TEST_F(FileFaults, TenReadsMayComeBackEmpty) {
    const std::pair<unsigned long, const char*> cases[] = {{0, "text"}, {9, "text"}, {10, ""}};
    WriteBytes(folder / "file", "text");
    const Instead slowly(osfiles::readFile, ReadNothingAtFirst);
    for (const auto& [times, expected] : cases) {
        SFile slow(file, SFile::readOnly, 0, kShared);
        emptyReads = times;
        EXPECT_EQ(slow.readLine(), expected) << times;
        slow.seek(SFile::seekBegin, 0);
        emptyReads = times;
        EXPECT_EQ(slow.readString(), expected) << times;
        emptyReads = 0;
    }
}

TEST_F(FileFaults, TooLittleMemoryIsAnErrorOfTheReading) {
    WriteBytes(folder / "file", std::string(100, 'x') + "\n" + std::string(200'000, '\xC3'));
    SFile large(file, SFile::readOnly, 0, kShared);
    for (const bool line : {true, false}) {
        for (unsigned long nth = 1; nth < 3; ++nth) {
            large.seek(SFile::seekBegin, 0);
            tarntest::FailAllocation(nth);
            const std::string failure = Failure([&] { line ? large.readLine() : large.readString(); });
            tarntest::FailAllocation(0);
            EXPECT_TRUE(failure == "1 3 12" || (failure.empty() && !tarntest::FailureHappened()))
                << nth << line;
        }
    }
}

TEST_F(FileFaults, UniqueNamesEndSomewhere) {
    const auto find = [&] { SFileSys::getUniqueFilename(Text(folder), "u", "", true, 0); };
    osfiles::Calls::Fail(1, ERROR_FILE_EXISTS, true);
    EXPECT_EQ(Failure(find), "11 8");
    osfiles::Calls::Fail(1, ERROR_BAD_NETPATH);
    EXPECT_EQ(Failure([] { SFileSys::getTempDirname(); }), "11 1");
    osfiles::Calls::Fail(0, 0);
}

TEST(FileSysFailure, ReasonsOfEveryError) {
    for (const auto& c : tarntest::ReadCases("files/file_errors.txt")) {
        const auto error = static_cast<DWORD>(std::stoul(c[0]));
        EXPECT_EQ(SFileException::MapSystemError(error), std::stoi(c[1])) << error;
        EXPECT_EQ(FileSysFailure::reasonOf(error), std::stoi(c[2])) << error;
    }
    for (const auto& [error, reason] :
         {std::pair(12, 0), {2, 1}, {22, 2}, {38, 2}, {1, 4}, {13, 4}, {28, 6}, {17, 7}, {41, 8}})
        EXPECT_EQ(FileSysFailure::reasonOfErrno(error), reason) << error;
}

#include <gtest/gtest.h>

#include "diag/logging/logdirectory.h"

#include <string>
#include <vector>

#include "files/osfiles.h"
#include "support/case_file.h"
#include "support/failing.h"
#include "support/file_bytes.h"
#include "support/owners.h"

using namespace TarnLibA500;
using tarntest::Instead;

namespace {

std::vector<std::string> level;  // its tag, and in the third place the flags of its volume

BOOL WINAPI TagOfCase(HANDLE /*file*/, FILE_INFO_BY_HANDLE_CLASS /*what*/, void* into, DWORD /*bytes*/) {
    const auto tag = static_cast<DWORD>(std::stoul(level[0], nullptr, 16));
    *static_cast<FILE_ATTRIBUTE_TAG_INFO*>(into) = {tag != 0 ? 0x410UL : 0x10UL, tag};
    return tag != 1;
}

BOOL WINAPI VolumeOfCase(HANDLE /*file*/, wchar_t*, DWORD, DWORD*, DWORD*, DWORD* flags, wchar_t*, DWORD) {
    *flags = static_cast<DWORD>(std::stoul(level[2], nullptr, 16));
    return *flags != 0;
}

}  // namespace

TEST(LogDirectories, TheDefaultOneIsRefusedWhenOthersMayHaveMadeIt) {
    const Instead tag(osfiles::getInformation, TagOfCase);
    const Instead owner(osfiles::getSecurity, tarntest::OwnerInTurn);
    const Instead volume(osfiles::volumeInformation, VolumeOfCase);
    const auto folder = tarntest::MakeScratchFolder("logdirectories");
    const LogDirectory directory = {tarntest::Text(folder / "velmora" / "logging"), false};
    for (const auto& c : tarntest::ReadCases("diag/log_directories.txt")) {
        level = c;
        tarntest::owners.assign(4, c[1]);  // both levels, before and after they are made
        SAnsiString refusal;
        EXPECT_EQ(MakeLogDirectory(directory, refusal), c[3].empty()) << c[0] << c[1];
        EXPECT_FALSE(refusal.find(c[3].c_str()).isAtEnd() && !c[3].empty()) << refusal.getString();
        EXPECT_TRUE(MakeLogDirectory({directory.path, true}, refusal) && refusal.isEmpty());
    }
    std::filesystem::remove_all(folder);
    SAnsiString refusal;
    EXPECT_FALSE(MakeLogDirectory({NoLogDirectory(), true}, refusal));
}

#include <gtest/gtest.h>

#include "diag/logging/logdirectory.h"

#include <algorithm>
#include <string>
#include <vector>

#include "files/osfiles.h"
#include "support/case_file.h"
#include "support/failing.h"
#include "support/file_bytes.h"

#include <sddl.h>

using namespace TarnLibA500;
using tarntest::Instead;

namespace {

std::vector<std::string> level;  // tag, owner and flags of the volume

BOOL WINAPI TagOfCase(HANDLE /*file*/, FILE_INFO_BY_HANDLE_CLASS /*what*/, void* into, DWORD /*bytes*/) {
    const auto tag = static_cast<DWORD>(std::stoul(level[0], nullptr, 16));
    *static_cast<FILE_ATTRIBUTE_TAG_INFO*>(into) = {tag != 0 ? 0x410UL : 0x10UL, tag};
    return tag != 1;
}

BOOL WINAPI OwnerOfCase(HANDLE file, SECURITY_INFORMATION what, PSECURITY_DESCRIPTOR into, DWORD bytes,
                        DWORD* needed) {
    if (level[1] == "own") return GetKernelObjectSecurity(file, what, into, bytes, needed);
    PSECURITY_DESCRIPTOR made = nullptr;
    if (!ConvertStringSecurityDescriptorToSecurityDescriptorA(level[1].c_str(), SDDL_REVISION_1, &made,
                                                              needed))
        return FALSE;
    std::copy_n(static_cast<BYTE*>(made), std::min(*needed, bytes), static_cast<BYTE*>(into));
    LocalFree(made);
    return TRUE;
}

BOOL WINAPI VolumeOfCase(HANDLE /*file*/, wchar_t*, DWORD, DWORD*, DWORD*, DWORD* flags, wchar_t*, DWORD) {
    *flags = static_cast<DWORD>(std::stoul(level[2], nullptr, 16));
    return *flags != 0;
}

}  // namespace

TEST(LogDirectories, TheDefaultOneIsRefusedWhenOthersMayHaveMadeIt) {
    const Instead tag(osfiles::getInformation, TagOfCase);
    const Instead owner(osfiles::getSecurity, OwnerOfCase);
    const Instead volume(osfiles::volumeInformation, VolumeOfCase);
    const auto folder = tarntest::MakeScratchFolder("logdirectories");
    const LogDirectory directory = {tarntest::Text(folder / "velmora" / "logging"), false};
    for (const auto& c : tarntest::ReadCases("diag/log_directories.txt")) {
        level = c;
        SAnsiString refusal;
        EXPECT_EQ(MakeLogDirectory(directory, refusal), c[3].empty()) << c[0] << c[1];
        EXPECT_FALSE(refusal.find(c[3].c_str()).isAtEnd() && !c[3].empty()) << refusal.getString();
        EXPECT_TRUE(MakeLogDirectory({directory.path, true}, refusal) && refusal.isEmpty());
    }
    std::filesystem::remove_all(folder);
    SAnsiString refusal;
    EXPECT_FALSE(MakeLogDirectory({NoLogDirectory(), true}, refusal));
}

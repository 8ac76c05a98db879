#include "system/systemtext.h"

#include <gtest/gtest.h>

#include "seam/osmodules.h"
#include "support/case_file.h"
#include "support/failing.h"
#include "support/print_strings.h"
#include "tarnlib/csharedlibrary.h"

using namespace TarnLibA500;

namespace {

std::wstring Units(const std::string& hex) {
    std::wstring units;
    for (std::size_t i = 0; i < hex.size(); i += 5)
        units += static_cast<wchar_t>(std::stoi(hex.substr(i, 4), nullptr, 16));
    return units;
}

}  // namespace

TEST(SharedLibraryFaults, AreToldAndLeaveNothingLoaded) {
    std::string codes;
    const auto use = [&codes] {
        try {
            CSharedLibrary(SAnsiString("Ole32.dll")).Resolve("CoCreateGuid");
        } catch (const CSharedLibraryException& failure) {
            codes += std::to_string(failure.GetErrorCode()) + " ";
        }
    };
    for (unsigned long nth = 1; tarntest::FailsAt<osmodules::Calls>(nth, ERROR_NOT_ENOUGH_MEMORY, use);)
        ++nth;
    EXPECT_EQ(codes, "8 127 ");  // whoever cannot look beside the library looks elsewhere
}

TEST(SystemText, IsExactOrSaysSo) {
    for (const auto& c : tarntest::ReadCases("system/system_texts.txt")) {
        const auto page = static_cast<unsigned>(std::stoul(c[0]));
        const SAnsiString bytes(c[1].c_str());
        const std::wstring units = Units(c[2]);
        SWCharString wide;
        SAnsiString narrow;
        if (c[3] != "units") {
            EXPECT_EQ(ToUtf16(bytes, page, wide), c[3].empty()) << c[0] << c[1];
            EXPECT_EQ(wide, units.c_str()) << c[0] << c[1];
        }
        if (c[3] != "bytes") {
            EXPECT_EQ(FromUtf16(units.c_str(), page, narrow), c[3].empty()) << c[0] << c[2];
            EXPECT_EQ(narrow, bytes) << c[0] << c[2];
        }
    }
    // Texts of several pieces: a pair must not be parted between two.
    for (const std::size_t before : {255U, 256U, 511U}) {
        const std::wstring units = std::wstring(before, L'x') + L"\xD83D\xDE00";
        SAnsiString narrow;
        EXPECT_TRUE(FromUtf16(units.c_str(), 65001, narrow));
        EXPECT_EQ(narrow.right(4), "\xF0\x9F\x98\x80") << before;
    }
    SWCharString cut;
    EXPECT_FALSE(ToSystemExactly(SAnsiString("a\0b", 3), cut));
}

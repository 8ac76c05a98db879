#include "diag/assert/unlogged.h"

#include <gtest/gtest.h>

#include <string>

#include "diag/assert/narrowreports.h"
#include "seam/osconsole.h"
#include "seam/ostext.h"
#include "support/failing.h"
#include "system/systemtext.h"
#include "tarnlib/sassert.h"

using namespace TarnLibA500;
using tarntest::Instead;

namespace {

UINT WINAPI Utf8Page() {
    return CP_UTF8;
}

std::wstring shown;
DWORD mostUnits = 0;

BOOL WINAPI IsConsole(HANDLE, DWORD*) {
    return TRUE;
}

BOOL WINAPI Show(HANDLE, const void* text, DWORD units, DWORD* done, void*) {
    *done = units < mostUnits ? units : mostUnits;
    shown.append(static_cast<const wchar_t*>(text), *done);
    return *done != 0;
}

}  // namespace

TEST(ReportsWhereTheCodePageIsUtf8, AreWhole) {
    const Instead page(ostext::ansiPage, &Utf8Page);
    BOOL isReplaced = FALSE;
    char out = 0;
    EXPECT_EQ(ostext::FromWide(CP_ACP, 0, L"a", 1, &out, 1, nullptr, &isReplaced), 0);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(ostext::FromWide(CP_ACP, WC_NO_BEST_FIT_CHARS, L"a", 1, &out, 1), 0);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_FLAGS});
    testing::internal::CaptureStderr();
    SAssert("unit", 1, "e", L"\x20AC");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "assert failure: (unit:1). (e : \xE2\x82\xAC).\n");
    EXPECT_EQ(FromSystem(L"\x20AC"), "\xE2\x82\xAC");
}

TEST(ReportsOnAConsole, AreItsCharactersWhateverThePage) {
    const Instead isConsole(osconsole::consoleMode, &IsConsole);
    const Instead write(osconsole::writeConsole, &Show);
    const std::string filling(1019, 'x');  // puts the euro sign across the end of a piece
    mostUnits = 100;
    for (const bool isUtf8 : {false, true}) {
        reportsAreUtf8 = isUtf8;
        shown.clear();
        testing::internal::CaptureStderr();
        ReportUnlogged((filling + (isUtf8 ? "\xE2\x82\xAC" : "\x80") + "\n").c_str());
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
        EXPECT_EQ(shown, std::wstring(1019, L'x') + L"\x20AC\\n\n");
    }
    reportsAreUtf8 = false;
    mostUnits = 0;  // a console that takes nothing keeps nobody
    ReportUnlogged("lost");
}

#include "diag/logging/traceini.h"

#include <gtest/gtest.h>

#include "files/osfiles.h"
#include "support/alloc_hooks.h"
#include "support/failing.h"
#include "support/file_bytes.h"
#include "support/print_strings.h"

using namespace TarnLibA500;

TEST(TraceIniFiles, KeepWhatIsInEffectUntilTheNewIsRead) {
    const std::filesystem::path file = tarntest::MakeScratchFolder("traceini") / "trace.ini";
    TraceIni ini(file.string().c_str());
    SAnsiString value;
    EXPECT_FALSE(ini.update());
    tarntest::WriteBytes(file, "\xEF\xBB\xBFtrace=\xC3\xBC\n");
    EXPECT_TRUE(ini.update());
    EXPECT_TRUE(ini.options().Lookup("trace", value));
    EXPECT_EQ(value, "\xFC");
    tarntest::WriteBytes(file, "trace=s\nkeep=off\n");
    bool isRead = false;
    for (unsigned long nth = 1; !isRead; ++nth) {
        EXPECT_EQ(ini.options().GetCount(), 1U) << nth;
        tarntest::FailAllocation(nth);
        isRead = tarntest::Succeeds([&] { ini.update(); });
        tarntest::FailAllocation(0);
        EXPECT_EQ(osfiles::Calls::OpenNow(), 0);
    }
    EXPECT_EQ(ini.options().GetCount(), 2U);
    tarntest::WriteBytes(file, "trace=d");
    for (unsigned long call = 1; call <= 3; ++call) {  // attributes, opening, reading
        EXPECT_TRUE(tarntest::FailsAt<osfiles::Calls>(
            call, ERROR_ACCESS_DENIED, [&] { EXPECT_EQ(ini.update(), call == 1); }));  // said once
        EXPECT_NE(ini.problem().find("trace.ini: cannot be read (5): "), ini.problem().end()) << call;
        EXPECT_EQ(ini.options().GetCount(), 2U) << call;
    }
    EXPECT_TRUE(ini.update());
    EXPECT_TRUE(ini.problem().isEmpty());
    EXPECT_EQ(ini.options().GetCount(), 1U);
    tarntest::WriteBytes(file, "trace=d\n#" + std::string(64 * 1024, '#'));
    EXPECT_TRUE(ini.update());
    EXPECT_NE(ini.problem().find("what is beyond 65536 bytes is not read"), ini.problem().end());
}

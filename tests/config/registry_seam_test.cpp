#include <gtest/gtest.h>

#include <string>

#include "config/osregistry.h"
#include "support/alloc_hooks.h"
#include "support/assert_recorder.h"
#include "tarnlib/cparamlineargs.h"
#include "tarnlib/registry.h"

using namespace TarnLibA500;

namespace {

SAnsiStringCI KeyPath(const char* name) {
    const std::string process = std::to_string(GetCurrentProcessId());
    return ("Software\\tarnlib-test\\" + process + name).c_str();
}

}  // namespace

TEST(RegistryCalls, AKeyIsOpenedOnce) {
    Registry settings(KeyPath("calls"), "calls", HKEY_CURRENT_USER, true);
    settings.WriteValue("v", 1UL);
    settings.ReadValue("v");
    const unsigned long opens = osregistry::OpensSoFar();
    const unsigned long calls = osregistry::CallsSoFar();
    for (int i = 0; i < 100; ++i) settings.ReadValue("v");
    EXPECT_EQ(osregistry::OpensSoFar(), opens);
    EXPECT_EQ(osregistry::CallsSoFar(), calls + 100);
    EXPECT_TRUE(settings.DeleteKey());
}

TEST(RegistryCalls, WhicheverFailsTheResultSaysSo) {
    tarntest::AssertRecorder recorder;
    for (unsigned long nth = 1; nth < 9; ++nth) {
        osregistry::FailCall(nth, ERROR_NOT_ENOUGH_MEMORY);
        Registry settings(KeyPath("faults"), "faults", HKEY_CURRENT_USER, false);
        const bool isWritten = settings.WriteValue("v", 7UL);
        const SAnsiString read = settings.ReadValue("v");
        const bool isDeleted = settings.DeleteKey();
        osregistry::FailCall(0, 0);
        EXPECT_TRUE(read == "7" || read.isEmpty()) << nth;
        EXPECT_TRUE((isWritten && read == "7" && isDeleted) || nth <= 7) << nth;
        Registry(KeyPath("faults"), "", HKEY_CURRENT_USER, false).DeleteKey();
    }
}

TEST(RegistryCalls, AnUnreadableSettingIsNotReplacedAndAPartOfACopyIsNoCopy) {
    Registry settings(KeyPath("kept"), "kept", HKEY_CURRENT_USER, true);
    settings.ReadValue("v", 1UL);
    osregistry::FailCall(1, ERROR_NOT_ENOUGH_MEMORY);
    settings.ReadValue("v", 2UL);
    EXPECT_EQ(settings.ReadValue("v"), "1");
    osregistry::FailCall(3, ERROR_NOT_ENOUGH_MEMORY);  // the first name
    EXPECT_FALSE(Registry::CopyKey(HKEY_CURRENT_USER, KeyPath("kept"), HKEY_CURRENT_USER, KeyPath("part")));
    EXPECT_TRUE(Registry(KeyPath("part"), "", HKEY_CURRENT_USER, false).DeleteKey());
    EXPECT_TRUE(settings.DeleteKey());
}

TEST(OptionLookups, AllocateNothing) {
    const CParamLineArgs args("prog -first 1 -second 2");
    const SAnsiString name("SECOND");
    SAnsiString value;
    const tarntest::AllocationCount count;
    const bool isFound = args.Lookup(name, value);
    const unsigned long taken = count.Taken();
    EXPECT_TRUE(isFound);
    EXPECT_EQ(taken, 0U);
}

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "support/alloc_hooks.h"
#include "support/failing.h"
#include "system/osregistry.h"
#include "tarnlib/registry.h"
#include "tarnlib/sassert.h"

using namespace TarnLibA500;
using tarntest::FailsAt;

namespace {

const SAnsiStringCI kTop =
    ("Software\\tarnlib-test\\" + std::to_string(GetCurrentProcessId()) + "-seam").c_str();

Registry Key(const char* below) {
    return Registry(kTop + below, "name", HKEY_CURRENT_USER, false);
}

/// Notices what is traced and asserted, without allocating.
struct Watch : SDiagnosticSink {
    Watch() {
        assertion = [](const char*) {};
        shouldTrace = [](int level, const char* unit) {
            return level >= 7 && std::string_view(unit) == "registry";
        };
        trace = [](int, const char*, const char*) { ++traces; };
        before = InstallDiagnosticSink(this);
    }
    ~Watch() { InstallDiagnosticSink(before); }
    static inline int traces = 0;
    const SDiagnosticSink* before;
};

/// A key with a value and two keys below it, which other means than ours make, look at and remove.
struct Tree {
    Tree() {
        set("\\from", "7");
        set("\\from\\below\\deep", "deep");
        set("\\from\\other", "other");
    }
    ~Tree() { RegDeleteTreeA(HKEY_CURRENT_USER, kTop.getString()); }
    static void set(const char* below, const std::string& text) {
        RegSetKeyValueA(HKEY_CURRENT_USER, (kTop + below).getString(), "v", REG_SZ, text.c_str(),
                        static_cast<DWORD>(text.size()) + 1);
    }
    /// The text of the value, a number as "number N", "-" for none.
    static std::string get(const char* below) {
        char bytes[64] = "";
        DWORD type = REG_NONE, size = sizeof bytes - 1;
        if (RegGetValueA(HKEY_CURRENT_USER, (kTop + below).getString(), "v", RRF_RT_ANY, &type, bytes,
                         &size) != 0)
            return "-";
        return type == REG_DWORD ? "number " + std::to_string(*reinterpret_cast<DWORD*>(bytes)) : bytes;
    }
};

std::string Listed() {
    Registry from = Key("\\from");
    std::string all;
    for (Registry::KeyIterator at = from.EnumSubKeys(); at; ++at) all += at.GetKey().getString();
    for (Registry::ValueIterator at = from.EnumValues(); at; ++at)
        all += std::string(at.GetName().getString()) + at.GetValue().getString();
    return all;
}

bool CopyAll() {
    return Registry::CopyKey(HKEY_CURRENT_USER, kTop + "\\from", HKEY_CURRENT_USER, kTop + "\\to\\here") &&
           Tree::get("\\to\\here") == "7" && Tree::get("\\to\\here\\other") == "other";
}

bool CopyOne() {
    return Registry::CopyValue(HKEY_CURRENT_USER, kTop + "\\from", "v", HKEY_CURRENT_USER, kTop + "\\to");
}

bool HasType() {
    unsigned long type = 0;
    return Key("\\from").GetType("v", type) && type == REG_SZ;
}

/// What is done, and what the value of a key is then.
const struct Operation {
    const char* name;
    bool (*act)();
    const char* below;
    std::string whenDone;
    std::string whenFailed;  // * for any
} kOperations[] = {
    {"exists", [] { return Key("\\from").KeyExists(); }, "\\from", "7", "7"},
    {"type", HasType, "\\from", "7", "7"},
    {"read", [] { return Key("\\from").ReadValue("v") == "7"; }, "\\from", "7", "7"},
    {"list", [] { return Listed() == "belowotherv7" && Watch::traces == 0; }, "\\from", "7", "7"},
    {"read a missing one with a default", [] { return Key("\\new").ReadValue("v", SAnsiString("x")) == "x"; },
     "\\new", "x", "*"},
    {"read one that is there with a default",
     [] { return Key("\\from").ReadValue("v", 8UL) == "7" && Watch::traces == 0; }, "\\from", "7", "7"},
    {"write a text", [] { return Key("\\new").WriteValue("v", SAnsiString("x")); }, "\\new", "x", "-"},
    {"write a number", [] { return Key("\\from").WriteValue("v", 7UL); }, "\\from", "number 7", "7"},
    {"delete a value", [] { return Key("\\from").DeleteValue("v"); }, "\\from", "-", "7"},
    {"delete a key", [] { return Key("\\from\\other").DeleteKey(); }, "\\from\\other", "-", "other"},
    {"delete all", [] { return Key("\\from").DeleteKeyRecursive(); }, "\\from", "-", "7"},
    {"delete below", [] { return Key("\\from").DeleteKeyRecursive(false); }, "\\from\\other", "-", "*"},
    {"delete only below", [] { return Key("\\from").DeleteKeyRecursive(false); }, "\\from", "7", "7"},
    {"copy a key", CopyAll, "\\to\\here\\below\\deep", "deep", "*"},
    {"copy a value", CopyOne, "\\to", "7", "-"},
};

}  // namespace

TEST(RegistryCalls, AKeyIsOpenedOnceAndAssignmentTurnsToTheOther) {
    const Tree tree;
    const long openBefore = osregistry::Calls::OpenNow();
    {
        Registry settings = Key("\\from");
        settings.ReadValue("v");
        const unsigned long calls = osregistry::Calls::SoFar();
        for (int i = 0; i < 100; ++i) settings.ReadValue("v");
        EXPECT_EQ(osregistry::Calls::SoFar(), calls + 100);  // none that opens
        Registry other = Key("\\from\\other");
        EXPECT_EQ(other.ReadValue("v"), "other");
        settings = other;
        EXPECT_EQ(osregistry::Calls::OpenNow(), openBefore + 1);
        EXPECT_EQ(settings.ReadValue("v"), "other");
    }
    EXPECT_EQ(osregistry::Calls::OpenNow(), openBefore);
}

class RegistryFailures : public testing::TestWithParam<bool> {};

// Calls of the system's, or allocations.
TEST_P(RegistryFailures, AreToldAndLeaveNothingOpen) {
    const Watch watch;
    const long openBefore = osregistry::Calls::OpenNow();
    for (const Operation& operation : kOperations) {
        bool isHit = true;
        for (unsigned long nth = 1; isHit; ++nth) {
            SCOPED_TRACE(operation.name + std::to_string(nth));
            const Tree tree;
            bool said = false, isThrown = false;
            Watch::traces = 0;
            const auto act = [&] { isThrown = !tarntest::Succeeds([&] { said = operation.act(); }); };
            isHit = GetParam() ? FailsAt<osregistry::Calls>(nth, ERROR_NOT_ENOUGH_MEMORY, act)
                               : FailsAt<tarntest::Allocations>(nth, ERROR_NOT_ENOUGH_MEMORY, act);
            const std::string value = Tree::get(operation.below);
            ASSERT_EQ(osregistry::Calls::OpenNow(), openBefore);
            EXPECT_EQ(said, !isHit);
            EXPECT_EQ(isThrown, isHit && !GetParam());
            if (isThrown) continue;
            EXPECT_EQ(Watch::traces != 0, isHit);
            const std::string& expected = said ? operation.whenDone : operation.whenFailed;
            EXPECT_TRUE(expected == "*" || value == expected) << value;
        }
    }
}
INSTANTIATE_TEST_SUITE_P(Calls, RegistryFailures, testing::Bool());

#include <gtest/gtest.h>

#include <new>
#include <string>
#include <string_view>

#include "config/osregistry.h"
#include "support/alloc_hooks.h"
#include "tarnlib/registry.h"
#include "tarnlib/sassert.h"

using namespace TarnLibA500;

namespace {

const std::string kTop = "Software\\tarnlib-test\\" + std::to_string(GetCurrentProcessId()) + "-seam";

SAnsiStringCI Path(const char* below) {
    return (kTop + below).c_str();
}

Registry Key(const char* below, bool create = false) {
    return Registry(Path(below), "name", HKEY_CURRENT_USER, create);
}

/// Notices what is traced and asserted, without allocating.
class Watch {
  public:
    Watch() {
        traces = 0;
        sink_.assertion = [](const char*) {};
        sink_.shouldTrace = [](int level, const char* unit) {
            return level >= 7 && std::string_view(unit) == "registry";
        };
        sink_.trace = [](int, const char*, const char*) { ++traces; };
        before_ = InstallDiagnosticSink(&sink_);
    }
    ~Watch() { InstallDiagnosticSink(before_); }
    static inline int traces = 0;

  private:
    SDiagnosticSink sink_;
    const SDiagnosticSink* before_;
};

/// A key with a value and two keys below it, which other means than ours make, look at and remove.
struct Tree {
    Tree() {
        set("\\from", "v", "7");
        set("\\from\\below\\deep", "v", "deep");
        set("\\from\\other", "v", "other");
    }
    ~Tree() { RegDeleteTreeA(HKEY_CURRENT_USER, kTop.c_str()); }
    static void set(const char* below, const char* name, const std::string& text) {
        RegSetKeyValueA(HKEY_CURRENT_USER, (kTop + below).c_str(), name, REG_SZ, text.c_str(),
                        static_cast<DWORD>(text.size()) + 1);
    }
    /// The text of a value, a number as "number N", "-" for none.
    static std::string get(const char* below, const char* name) {
        char bytes[64] = "";
        DWORD type = REG_NONE, size = sizeof bytes - 1;
        if (RegGetValueA(HKEY_CURRENT_USER, (kTop + below).c_str(), name, RRF_RT_ANY, &type, bytes, &size) !=
            0)
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

bool CopyTo(const char* below) {
    return Registry::CopyKey(HKEY_CURRENT_USER, Path("\\from"), HKEY_CURRENT_USER, Path(below));
}

bool HasType() {
    unsigned long type = 0;
    return Key("\\from").GetType("v", type) && type == REG_SZ;
}

/// What is done, and whether the registry bears out what it said.
const struct Operation {
    const char* name;
    bool (*act)();
    bool (*holds)(bool said);
} kOperations[] = {
    {"exists", [] { return Key("\\from").KeyExists(); }, [](bool) { return true; }},
    {"type", HasType, [](bool) { return true; }},
    {"read", [] { return Key("\\from").ReadValue("v") == "7"; }, [](bool) { return true; }},
    {"list", [] { return Listed() == "belowotherv7" && Watch::traces == 0; }, [](bool) { return true; }},
    {"read a missing one with a default", [] { return Key("\\new").ReadValue("d", SAnsiString("x")) == "x"; },
     [](bool said) { return !said || Tree::get("\\new", "d") == "x"; }},
    {"read one that is there with a default",
     [] { return Key("\\from").ReadValue("v", 8UL) == "7" && Watch::traces == 0; },
     [](bool) { return Tree::get("\\from", "v") == "7"; }},
    {"write a text", [] { return Key("\\new").WriteValue("v", SAnsiString("x")); },
     [](bool said) { return (Tree::get("\\new", "v") == "x") == said; }},
    {"write a number", [] { return Key("\\from").WriteValue("v", 7UL); },
     [](bool said) { return Tree::get("\\from", "v") == (said ? "number 7" : "7"); }},
    {"delete a value", [] { return Key("\\from").DeleteValue("v"); },
     [](bool said) { return (Tree::get("\\from", "v") == "-") == said; }},
    {"delete a key", [] { return Key("\\from\\other").DeleteKey(); },
     [](bool said) { return (Tree::get("\\from\\other", "v") == "-") == said; }},
    {"delete all", [] { return Key("\\from").DeleteKeyRecursive(); },
     [](bool said) { return (Tree::get("\\from", "v") == "-") == said; }},
    {"delete what is below", [] { return Key("\\from").DeleteKeyRecursive(false); },
     [](bool said) {
         return (!said || Tree::get("\\from\\other", "v") == "-") && Tree::get("\\from", "v") == "7";
     }},
    {"copy a key", [] { return CopyTo("\\to\\here"); },
     [](bool said) {
         return !said ||
                (Tree::get("\\to\\here", "v") == "7" && Tree::get("\\to\\here\\other", "v") == "other" &&
                 Tree::get("\\to\\here\\below\\deep", "v") == "deep");
     }},
    {"copy a value",
     [] {
         return Registry::CopyValue(HKEY_CURRENT_USER, Path("\\from"), "v", HKEY_CURRENT_USER, Path("\\to"));
     },
     [](bool said) { return (Tree::get("\\to", "v") == "7") == said; }},
};

}  // namespace

TEST(RegistryCalls, AKeyIsOpenedOnceAndAssignmentTurnsToTheOther) {
    const Tree tree;
    const long openBefore = osregistry::OpenKeys();
    {
        Registry settings = Key("\\from");
        settings.ReadValue("v");
        const unsigned long opens = osregistry::OpensSoFar();
        const unsigned long calls = osregistry::CallsSoFar();
        for (int i = 0; i < 100; ++i) settings.ReadValue("v");
        EXPECT_EQ(osregistry::OpensSoFar(), opens);
        EXPECT_EQ(osregistry::CallsSoFar(), calls + 100);
        Registry other = Key("\\from\\other");
        EXPECT_EQ(other.ReadValue("v"), "other");
        settings = other;
        EXPECT_EQ(osregistry::OpenKeys(), openBefore + 1);
        EXPECT_EQ(settings.ReadValue("v"), "other");
    }
    EXPECT_EQ(osregistry::OpenKeys(), openBefore);
}

TEST(RegistryCalls, WhicheverFailsTheResultSaysSo) {
    const Watch watch;
    const long openBefore = osregistry::OpenKeys();
    for (const Operation& operation : kOperations) {
        bool isHit = true;
        for (unsigned long nth = 1; isHit; ++nth) {
            const Tree tree;
            const unsigned long callsBefore = osregistry::CallsSoFar();
            Watch::traces = 0;
            osregistry::FailCall(nth, ERROR_NOT_ENOUGH_MEMORY);
            const bool said = operation.act();
            osregistry::FailCall(0, 0);
            isHit = osregistry::CallsSoFar() - callsBefore >= nth;
            EXPECT_EQ(said, !isHit) << operation.name << nth;
            EXPECT_TRUE(operation.holds(said)) << operation.name << nth;
            EXPECT_EQ(Watch::traces != 0, isHit) << operation.name << nth;
            ASSERT_EQ(osregistry::OpenKeys(), openBefore) << operation.name << nth;
        }
    }
}

TEST(RegistryCalls, MemoryThatFailsLeavesNothingOpenAndNothingBehind) {
    const Watch watch;
    const long openBefore = osregistry::OpenKeys();
    for (const Operation& operation : kOperations) {
        bool isHit = true;
        for (unsigned long nth = 1; isHit; ++nth) {
            const Tree tree;
            const long blocksBefore = tarntest::LiveBlocks();
            bool isThrown = false;
            tarntest::FailAllocation(nth);
            try {
                operation.act();
            } catch (const std::bad_alloc&) {
                isThrown = true;
            }
            isHit = tarntest::FailureHappened();
            tarntest::FailAllocation(0);
            const long blocks = tarntest::LiveBlocks();
            EXPECT_EQ(isThrown, isHit) << operation.name << nth;
            EXPECT_EQ(blocks, blocksBefore) << operation.name << nth;
            ASSERT_EQ(osregistry::OpenKeys(), openBefore) << operation.name << nth;
        }
    }
}

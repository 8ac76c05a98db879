#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "tarnlib/sinstancelock.h"

#include <windows.h>

using namespace TarnLibA500;

namespace {

// Names that must not be taken for one another.
std::vector<SAnsiString> DifferentNames() {
    const std::string base = "tarn test " + std::to_string(GetCurrentProcessId());
    std::vector<SAnsiString> names;
    for (const std::string& end :
         {std::string(), std::string("\\"), std::string("%005C"), std::string("/"), std::string("\0", 1),
          std::string("%0000"), std::string("A"), std::string("a"), std::string("\t:*?\"<>|\xE4"),
          std::string(40'000, '\\') + "1", std::string(40'000, '\\') + "2"}) {
        const std::string name = base + end;
        names.emplace_back(name.data(), static_cast<std::uint32_t>(name.size()));
    }
    return names;
}

}  // namespace

TEST(InstanceLock, OneHolderForEachNameWhateverItsCharacters) {
    const auto names = DifferentNames();
    std::vector<std::unique_ptr<SInstanceLock>> held;
    for (const SAnsiString& name : names) {
        held.push_back(std::make_unique<SInstanceLock>(name));
        EXPECT_EQ(held.back()->ownerProcess(), 0U);
        EXPECT_EQ(held.back()->take(), SInstanceLock::taken) << held.size();
        EXPECT_EQ(held.back()->take(), SInstanceLock::taken) << held.size();
    }
    for (const SAnsiString& name : names) {
        SInstanceLock second(name);
        EXPECT_EQ(second.take(), SInstanceLock::heldByAnother);
        EXPECT_EQ(second.ownerProcess(), GetCurrentProcessId());
        EXPECT_FALSE(second.isHeld());
    }  // which gives nothing back
    SInstanceLock next(names[0]);
    EXPECT_EQ(next.take(), SInstanceLock::heldByAnother);
    held[0]->giveBack();
    EXPECT_FALSE(held[0]->isHeld());
    EXPECT_EQ(next.take(), SInstanceLock::taken);
    held[1].reset();
    EXPECT_EQ(SInstanceLock(names[1]).take(), SInstanceLock::taken);
}

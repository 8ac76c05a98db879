#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "tarnlib/sinstancelock.h"

#include <windows.h>

using namespace std::string_literals;
using namespace TarnLibA500;

TEST(InstanceLock, OneHolderForEachNameWhateverItsCharacters) {
    const std::string base = "tarn test " + std::to_string(GetCurrentProcessId());
    const std::string slashes(40'000, '\\');
    std::vector<SAnsiString> names;
    for (const std::string& end : {""s, "\\"s, "%005C"s, "/"s, "\0"s, "%0000"s, "A"s, "a"s, "\t:*?\"<>|\xE4"s,
                                   slashes + "1", slashes + "2"})
        names.push_back(SAnsiString((base + end).data(), static_cast<std::uint32_t>((base + end).size())));
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

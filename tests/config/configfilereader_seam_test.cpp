#include "tarnlib/configfilereader.h"

#include <gtest/gtest.h>

#include <functional>
#include <new>

#include "support/alloc_hooks.h"
#include "support/failing.h"
#include "support/file_bytes.h"
#include "support/scratch_folder.h"

using namespace TarnLibA500;

// Each allocation of a use fails in turn.
TEST(ConfigMemory, WhatFailsLeavesNothingBehind) {
    const std::filesystem::path folder = tarntest::MakeScratchFolder("config-memory");
    const auto file = [&](const char* name, const char* bytes) {
        tarntest::WriteBytes(folder / name, bytes);
        return tarntest::Text(folder / name);
    };
    const SAnsiString sections =
        file("sections", "[A]\na long key that has a block=\xC3\xBC\nb=2\n[A]\nc=3\n[C]\nx\ny=1\n");
    const SAnsiString landscape =
        file("landscape",
             "<?xml version='1.0' encoding='utf-8'?><Landscape><Services><Service type='mirelms' "
             "name='one' server='host:3200'/><Service type='mirelms' name='two' msid='m'/></Services>"
             "<Messageservers><Messageserver uuid='m' host='h:1'/></Messageservers></Landscape>");
    const SAnsiString broken = file("broken", "<Landscape>\n<Services></Landscape>");
    ConfigFileReader loaded;
    ASSERT_TRUE(loaded.initialize(sections));
    const std::function<bool()> uses[] = {
        [&] { return ConfigFileReader().initialize(sections); },
        [&] { return ConfigFileReader().initializeFromXML(landscape); },
        [&] {
            ConfigFileReader reader;
            return !reader.initializeFromXML(broken) && !reader.GetLastErrorText().isEmpty();
        },
        [&] {
            SIArray<SAnsiString> names;
            names.Add("before");
            try {
                return loaded.getSections(names) && loaded.enumerateSection("A", names) &&
                       names.GetSize() == 3;
            } catch (const std::bad_alloc&) {
                EXPECT_TRUE(names[0] == "before" || names.GetSize() == 3U);  // whole or not at all
                throw;
            }
        },
    };
    for (const auto& use : uses) {
        use();  // what is made once
        bool isHit = true;
        for (unsigned long nth = 1; isHit; ++nth) {
            bool isDone = false;
            const auto act = [&] { tarntest::Succeeds([&] { isDone = use(); }); };
            isHit = tarntest::FailsAt<tarntest::Allocations>(nth, ERROR_NOT_ENOUGH_MEMORY, act);
            EXPECT_EQ(isDone, !isHit) << &use - uses << " " << nth;
        }
    }
    std::filesystem::remove_all(folder);
}

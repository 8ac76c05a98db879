#include "tarnlib/configfilereader.h"

#include <gtest/gtest.h>

#include <new>
#include <string>

#include "support/alloc_hooks.h"
#include "support/file_bytes.h"
#include "support/scratch_folder.h"
#include "tarnlib/sfilesys.h"

using namespace TarnLibA500;
namespace fs = std::filesystem;

namespace {

class ConfigMemory : public testing::Test {
  protected:
    const fs::path folder = tarntest::MakeScratchFolder("config-memory");
    const SAnsiString file = tarntest::Text(folder / "file");
    ~ConfigMemory() override { SFileSys::rremove(tarntest::Text(folder)); }

    /// Fails each allocation of a use in turn: nothing may stay behind.
    template <class Use>
    void failEach(Use use) {
        use();  // what is made once

        bool isHit = true;
        for (unsigned long nth = 1; isHit; ++nth) {
            const long before = tarntest::LiveBlocks();
            bool isDone = false;
            tarntest::FailAllocation(nth);
            try {
                isDone = use();
            } catch (const std::bad_alloc&) {
            }
            isHit = tarntest::FailureHappened();
            tarntest::FailAllocation(0);
            const long after = tarntest::LiveBlocks();
            EXPECT_EQ(isDone, !isHit) << nth;
            ASSERT_EQ(after, before) << nth;
        }
    }
};

}  // namespace

TEST_F(ConfigMemory, AFailedLoadLeavesNothingBehind) {
    tarntest::WriteBytes(folder / "file", "[A]\nk=\xC3\xBC\n[B]\nx\ny=1\n");
    failEach([this] {
        ConfigFileReader reader;
        return reader.initialize(file);
    });
}

TEST_F(ConfigMemory, AFailedLandscapeLeavesNothingBehind) {
    tarntest::WriteBytes(
        folder / "file",
        "<?xml version='1.0' encoding='utf-8'?><Landscape><Services><Service type='mirelms' "
        "name='one' server='host:3200'/><Service type='mirelms' name='two' msid='m'/></Services>"
        "<Messageservers><Messageserver uuid='m' host='h:1'/></Messageservers></Landscape>");
    failEach([this] {
        ConfigFileReader reader;
        return reader.initializeFromXML(file);
    });
    tarntest::WriteBytes(folder / "file", "<Landscape>\n<Services></Landscape>");
    failEach([this] {
        ConfigFileReader reader;
        return !reader.initializeFromXML(file) && !reader.GetLastErrorText().isEmpty();
    });
}

TEST_F(ConfigMemory, ListsAreFilledWholeOrNotAtAll) {
    tarntest::WriteBytes(folder / "file", "[A]\na long key that has a block=1\nb=2\n[A]\nc=3\n[C]\n");
    ConfigFileReader reader;
    ASSERT_TRUE(reader.initialize(file));
    failEach([&] {
        SIArray<SAnsiString> names;
        names.Add("before");
        try {
            return reader.getSections(names) && reader.enumerateSection("A", names) && names.GetSize() == 3;
        } catch (const std::bad_alloc&) {
            EXPECT_TRUE(names[0] == "before" || names.GetSize() == 3U);
            throw;
        }
    });
}

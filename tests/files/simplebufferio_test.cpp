#include <gtest/gtest.h>

#include "support/assert_recorder.h"
#include "support/file_bytes.h"
#include "tarnlib/sfilesys.h"
#include "tarnlib/simplebuffer.h"

using namespace TarnLibA500;
using tarntest::ReadBytes;
using tarntest::Text;
using tarntest::WriteBytes;
namespace fs = std::filesystem;

namespace {

std::string Content(const SSimpleBuffer& buffer) {
    return std::string(reinterpret_cast<const char*>(buffer.getBufferProtected()), buffer.getNBytes());
}

class BufferFiles : public testing::Test {
  protected:
    const fs::path folder = tarntest::MakeScratchFolder("buffers");
    const SAnsiString file = Text(folder / "file");
    ~BufferFiles() override { SFileSys::rremove(Text(folder)); }
};

}  // namespace

TEST_F(BufferFiles, PartsOfAFile) {
    WriteBytes(folder / "file", "0123456789");
    const struct {
        long long start;
        std::uint32_t count;
        const char* bytes;  // null: refused
    } cases[] = {{0, 0, "0123456789"}, {3, 4, "3456"},   {7, 99, "789"},         {9, 0, "9"},
                 {10, 0, nullptr},     {-1, 1, nullptr}, {1LL << 33, 1, nullptr}};
    for (const auto& c : cases) {
        SSimpleBuffer buffer("before", 6, false);
        EXPECT_EQ(buffer.loadFromFileEx(file, false, true, c.start, c.count), c.bytes != nullptr) << c.start;
        EXPECT_EQ(Content(buffer), c.bytes != nullptr ? c.bytes : "before");
    }
    SSimpleBuffer buffer;
    EXPECT_FALSE(buffer.loadFromFile(Text(folder / "none")));
    EXPECT_FALSE(buffer.loadFromFile(Text(folder / "none"), true));
    WriteBytes(folder / "file", "");
    EXPECT_FALSE(buffer.loadFromFile(file));
    EXPECT_FALSE(buffer.loadFromFile(file, true));
}

TEST_F(BufferFiles, MappedBytesAreNeverWrittenInPlace) {
    tarntest::AssertRecorder recorder;
    WriteBytes(folder / "file", "mapped");
    {
        SSimpleBuffer mapped;
        EXPECT_TRUE(mapped.loadFromFile(file, true));
        EXPECT_EQ(Content(mapped), "mapped");
        SSimpleBuffer changed = mapped;
        changed.getBuffer()[0] = 'M';
        changed << '!';
        EXPECT_EQ(Content(changed), "Mapped!");
        EXPECT_EQ(Content(mapped), "mapped");
        unsigned char* const bytes = mapped.detach();
        EXPECT_EQ(bytes[5], 'd');
        SSimpleBuffer::dealloc(bytes);
        EXPECT_FALSE(mapped.loadFromFileEx(file, true, false, 1, 0));
        EXPECT_TRUE(recorder.sawLast("simplebuffer", "startByte==0 && bytesToRead==0"));
    }
    EXPECT_EQ(ReadBytes(folder / "file"), "mapped");
    EXPECT_TRUE(DeleteFileW((folder / "file").c_str()));  // no view and no handle is left
}

TEST_F(BufferFiles, SavingCutsOrKeepsTheTail) {
    SSimpleBuffer buffer("ab", 2, false);
    EXPECT_TRUE(buffer.saveToFile(file, false));
    WriteBytes(folder / "file", "12345");
    EXPECT_TRUE(buffer.saveToFile(file, false));
    EXPECT_EQ(ReadBytes(folder / "file"), "ab345");
    EXPECT_TRUE(buffer.saveToFile(file));
    EXPECT_EQ(ReadBytes(folder / "file"), "ab");
    EXPECT_FALSE(SSimpleBuffer().saveToFile(Text(folder / "empty")));
    EXPECT_FALSE(fs::exists(folder / "empty"));
    EXPECT_FALSE(buffer.saveToFile(Text(folder)));
}

#include <gtest/gtest.h>

#include "support/assert_recorder.h"
#include "support/file_bytes.h"
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

}  // namespace

TEST(BufferFiles, MappedBytesAreNeverWrittenInPlace) {
    const fs::path folder = tarntest::MakeScratchFolder("buffers");
    const SAnsiString file = Text(folder / "file");
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
    fs::remove(folder);
}

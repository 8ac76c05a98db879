#include "tarnlib/scompression.h"

#include <gtest/gtest.h>

#include <random>

#include "support/assert_recorder.h"
#include "support/case_file.h"
#include "support/file_bytes.h"
#include "support/hex_bytes.h"

using namespace TarnLibA500;
using namespace tarntest;
namespace fs = std::filesystem;

namespace {

SSimpleBuffer BufferOf(const std::string& bytes) {
    SSimpleBuffer buffer;
    buffer.append(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
    return buffer;
}

std::string BytesOf(const SSimpleBuffer& buffer) {
    return {reinterpret_cast<const char*>(buffer.getBufferProtected()), buffer.getNBytes()};
}

// A text with and without what repeats.
std::string Sample(std::size_t size) {
    std::mt19937 random(3);
    std::string text(size, 'x');
    for (std::size_t i = 0; i < size; ++i) text[i] = static_cast<char>(i % 3000 < 1500 ? random() : i % 7);
    return text;
}

std::string Expanded(const std::string& block) {
    SSimpleBuffer dest = BufferOf("old");
    const int code = SCompression::decompress_buffer(BufferOf(block), dest);
    return std::to_string(code) + " " + BytesOf(dest);
}

struct CompressedFiles : testing::Test {
    ~CompressedFiles() override { fs::remove_all(folder); }
    SAnsiString path(const char* name) const { return Text(folder / name); }
    std::string names() const {
        std::string all;
        for (const auto& entry : fs::directory_iterator(folder))
            all += entry.path().filename().string() + " ";
        return all;
    }
    const fs::path folder = MakeScratchFolder("compressed");
};

}  // namespace

TEST(Compression, BlocksAreExpanded) {
    for (const std::size_t size : {1, 1000, 65536, 300000}) {
        const std::string text = Sample(size);
        for (int level = -1; level <= 9; ++level) {
            SSimpleBuffer block, dest;
            EXPECT_EQ(SCompression::compress_buffer(BufferOf(text), block, level, level / 2 % 5), 0);
            std::uint32_t length = 0;
            EXPECT_TRUE(SCompression::GetOriginalLength(block, length));
            EXPECT_EQ(length, size);
            EXPECT_EQ(Expanded(BytesOf(block)), "0 " + text);
        }
    }
    SSimpleBuffer block;
    SAsciiString text = "some text", again;
    EXPECT_EQ(SCompression::compress_buffer(text, block), 0);
    EXPECT_EQ(BytesOf(block).substr(0, 4), std::string("\0\0\0\x9", 4));
    EXPECT_EQ(SCompression::decompress_buffer(block, again), 0);
    EXPECT_EQ(again, text);
    EXPECT_EQ(SCompression::get_crc32(0, reinterpret_cast<const unsigned char*>("123456789"), 9),
              0xCBF43926U);
}

// block in hex | result and text
TEST(Compression, BlocksOfOthersAndBrokenOnes) {
    for (const auto& c : ReadCases("security/compressed_blocks.txt")) {
        const AssertRecorder recorder;
        EXPECT_EQ(Expanded(FromHex(c[0])), c[1]) << c[0];
    }
}

TEST(Compression, EveryCutIsRefused) {
    SSimpleBuffer block;
    EXPECT_EQ(SCompression::compress_buffer(BufferOf(Sample(1000)), block), 0);
    const std::string whole = BytesOf(block);
    const AssertRecorder recorder;
    for (std::size_t length = 0; length < whole.size(); ++length) {
        const char* code = length < 4 ? "-4 " : length + 4 >= whole.size() ? "-1 " : "-3 ";
        EXPECT_EQ(Expanded(whole.substr(0, length)), code) << length;
    }
}

TEST(Compression, MisuseIsReported) {
    AssertRecorder recorder(kTracesToo);
    const unsigned char one = 'x';
    unsigned char* dest = nullptr;
    std::uint32_t length = 9;
    EXPECT_EQ(SCompression::compress_buffer(&one, 0, &dest, &length), -4);
    EXPECT_EQ(SCompression::compress_buffer(nullptr, 1, &dest, &length), -4);
    EXPECT_EQ(SCompression::compress_buffer(&one, 0xFFFFFFF0, &dest, &length), -4);
    EXPECT_EQ(SCompression::decompress_buffer(nullptr, 1, &dest, &length), -4);
    EXPECT_EQ(length, 0U);
    EXPECT_EQ(SCompression::compress_buffer(&one, 1, nullptr, &length), -4);
    EXPECT_TRUE(recorder.sawLast("scompress", "pDest != NULL"));
    EXPECT_EQ(SCompression::compress_buffer(&one, 1, &dest, &length, 12), -3);
    EXPECT_EQ(recorder.take("7 scompress: "), "compression failed, error code: -3 \n");
    SSimpleBuffer buffer = BufferOf("old");
    EXPECT_EQ(SCompression::compress_buffer(SSimpleBuffer(), buffer), -4);
    EXPECT_TRUE(buffer.isEmpty() && dest == nullptr);
}

TEST_F(CompressedFiles, AreExpanded) {
    for (const std::size_t size : {0, 1, 16384, 100000}) {
        const std::string text = Sample(size);
        WriteBytes(folder / "text", text);
        EXPECT_EQ(SCompression::compress_file(path("text"), path("gz"), 12, 1, true), 0);
        EXPECT_EQ(names(), "gz ");
        EXPECT_EQ(ReadBytes(folder / "gz").substr(0, 3), "\x1F\x8B\x08");
        EXPECT_EQ(SCompression::decompress_file(path("gz"), path("text"), false), 0);
        EXPECT_EQ(ReadBytes(folder / "text"), text);
    }
    EXPECT_EQ(SCompression::compress_file(path("text"), path("text"), 9, 0, true), 0);  // into itself
    EXPECT_EQ(SCompression::decompress_file(path("text"), path("text"), true), 0);
    EXPECT_EQ(ReadBytes(folder / "text"), Sample(100000));
    EXPECT_EQ(SCompression::compress_file(path("text"), path("gz3"), 3, 2, false), 0);
    EXPECT_EQ(SCompression::compress_file(path("text"), path("gz12"), 12, 2, false), 0);
    EXPECT_EQ(ReadBytes(folder / "gz3"), ReadBytes(folder / "gz12"));
}

TEST_F(CompressedFiles, LeaveWhatWasThereWhenTheyFail) {
    WriteBytes(folder / "text", Sample(1000));
    WriteBytes(folder / "kept", "kept");
    EXPECT_EQ(SCompression::compress_file(path("text"), path("gz"), 6, 0, false), 0);
    const std::string whole = ReadBytes(folder / "gz");
    WriteBytes(folder / "gz", whole.substr(0, whole.size() - 1));
    EXPECT_EQ(SCompression::decompress_file(path("gz"), path("kept"), true), -1);
    WriteBytes(folder / "gz", whole.substr(0, 50) + "damage" + whole.substr(56));
    EXPECT_EQ(SCompression::decompress_file(path("gz"), path("kept"), true), -5);
    EXPECT_EQ(SCompression::compress_file(path("none"), path("kept"), 6, 0, true), -5);
    EXPECT_EQ(ReadBytes(folder / "kept"), "kept");
    EXPECT_EQ(names(), "gz kept text ");
    EXPECT_EQ(SCompression::decompress_file(path("kept"), path("copy"), true), 0);  // is no gzip file
    EXPECT_EQ(ReadBytes(folder / "copy"), "kept");
}

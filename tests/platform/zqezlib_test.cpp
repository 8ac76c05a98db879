#include "zqezlib/zqezlib.h"

#include <gtest/gtest.h>

#include "support/case_file.h"
#include "support/file_bytes.h"
#include "support/hex_bytes.h"

using namespace tarntest;

namespace {

// The room that is left tells how much was written.
int Expand(std::string block, std::string& room) {
    unsigned long size = Size(room);
    const int result = ZQ_uncompress(Data(room), &size, Data(block), Size(block));
    room.resize(size);
    return result;
}

// "results of reads, what was read, result of closing"
std::string ReadGzip(const std::string& path) {
    void* const file = ZQ_gzopen(path.c_str(), "rb");
    if (file == nullptr) return "none";
    char bytes[4];
    std::string results, text;
    for (int count = 1; count > 0;) {
        count = ZQ_gzread(file, bytes, sizeof bytes);
        results += std::to_string(count) + " ";
        if (count > 0) text.append(bytes, static_cast<unsigned>(count));
    }
    return results + text + " " + std::to_string(ZQ_gzclose(file));
}

}  // namespace

TEST(Zqezlib, BlocksAreThoseOfOthers) {
    for (const auto& c : ReadCases("platform/zqezlib_blocks.txt")) {
        std::string text = c[0], block(std::stoul(c[3]), '\0'), same(text.size(), '\0');
        unsigned long size = Size(block);
        ASSERT_EQ(ZQ_compress3(Data(block), &size, Data(text), Size(text), std::stoi(c[1]), std::stoi(c[2])),
                  std::stoi(c[4]));
        if (c[4] != "0") continue;
        EXPECT_EQ(block.substr(0, size), FromHex(c[5])) << c[1] << c[2];
        EXPECT_TRUE(Expand(block, same) == 0 && same == text);
        EXPECT_EQ(Expand(block.substr(0, size - 1), same), -5);
        block.back() ^= 1;
        EXPECT_EQ(Expand(block, same), -3);
        same.pop_back();
        EXPECT_EQ(Expand(block, same), -5);
    }
    EXPECT_EQ(ZQ_crc32(ZQ_crc32(0, nullptr, 0), reinterpret_cast<const unsigned char*>("123456789"), 9),
              0xCBF43926u);
}

TEST(Zqezlib, GzipFilesUnderAnyName) {
    const std::filesystem::path folder = MakeScratchFolder("zqezlib");
    const std::filesystem::path file =
        LR"(\\?\)" + folder.wstring() + L"\\\xE9\x6F22" + std::wstring(200, L'x');
    const std::string name = reinterpret_cast<const char*>(file.u8string().c_str());
    for (const char* wrong : {"", "b", "rw", "r+", "rT"})
        EXPECT_EQ(ZQ_gzopen(name.c_str(), wrong), nullptr) << wrong;
    EXPECT_EQ(ZQ_gzopen((name + "\xE9").c_str(), "wb"), nullptr);
    EXPECT_TRUE(std::filesystem::is_empty(folder));
    for (const char* member : {"wxb9", "ab1h"}) {
        void* const opened = ZQ_gzopen(name.c_str(), member);
        ASSERT_NE(opened, nullptr) << member;
        EXPECT_EQ(ZQ_gzopen(name.c_str(), "wb"), nullptr);  // not while another one writes
        EXPECT_EQ(ZQ_gzwrite(opened, "abcdef", 6), 6);
        EXPECT_EQ(ZQ_gzclose(opened), 0);
    }
    EXPECT_EQ(ZQ_gzopen(name.c_str(), "wxb"), nullptr);
    EXPECT_EQ(ReadGzip(name), "4 4 4 0 abcdefabcdef 0");
    const std::string whole = ReadBytes(file), damaged = whole.substr(0, whole.size() - 8) + "xxxxxxxx";
    const std::pair<std::string, const char*> others[] = {
        {whole.substr(0, whole.size() - 1), "4 4 4 0 abcdefabcdef -5"},
        {damaged, "4 -1 abcd 0"},
        {"plain", "4 1 0 plain 0"},
        {"", "0  0"}};
    for (const auto& [bytes, read] : others) {
        WriteBytes(file, bytes);
        EXPECT_EQ(ReadGzip(name), read);
    }
    std::filesystem::remove_all(folder);
    EXPECT_TRUE(ReadGzip(name) == "none" && ZQ_gzclose(nullptr) == -2);
}

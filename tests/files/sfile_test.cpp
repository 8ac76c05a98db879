#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "support/assert_recorder.h"
#include "support/case_file.h"
#include "support/file_bytes.h"
#include "support/locale_scope.h"
#include "support/print_strings.h"
#include "tarnlib/sfile.h"
#include "tarnlib/sfilesys.h"
#include "tarnlib/snarrowtext.h"

using namespace TarnLibA500;
using tarntest::Bytes;
using tarntest::Failure;
using tarntest::ReadBytes;
using tarntest::Text;
using tarntest::WriteBytes;
namespace fs = std::filesystem;

namespace {

constexpr int kRights = SFile::readWriteMask;
constexpr int kShared = SFile::denyNothing;
constexpr int kNewToReadToo = SFile::readAndWrite | SFile::create | SFile::truncate;

class Files : public testing::Test {
  protected:
    const fs::path folder = tarntest::MakeScratchFolder("sfile");
    ~Files() override { SFileSys::rremove(Text(folder)); }
    fs::path write(const char* name, const std::string& bytes) const {
        WriteBytes(folder / name, bytes);
        return folder / name;
    }
    void readIllegalTexts() const;
};

using SFileText = Files;
using Utf8SFileText = Files;

class BareFile : public SFile {
  public:
    using SFile::raisePosixError;
    using SFile::raiseSystemError;
    using SFile::seekEx;
    using SFile::SFile;
};

void Files::readIllegalTexts() const {
    const bool isKept = SNarrowText::IsUtf8();
    for (const auto& c : tarntest::ReadCases("files/file_illegal_texts.txt")) {
        const std::string bytes = std::string(std::stoul(c[0]), 'b') + c[1];
        std::string line = isKept ? bytes : "";
        line.erase(std::remove(line.begin(), line.end(), '\r'), line.end());
        SFile file(Text(write("illegal", "first\n" + bytes + "\nlast")), SFile::readOnly, kRights, kShared);
        tarntest::AssertRecorder traces(tarntest::kTracesToo);
        const std::string expected = "\"" + Bytes(file.name()) + "\" is not valid UTF-8 at byte " + c[2] +
                                     ", so its text " +
                                     (isKept ? "is kept as it stands\n" : "counts as empty\n");
        EXPECT_EQ(file.readLine(), "first");
        EXPECT_EQ(Bytes(file.readLine()), line) << c[1];
        EXPECT_EQ(traces.take("9 sfile: "), expected);
        EXPECT_EQ(file.readLine(), "last");
        file.seek(SFile::seekBegin, 6);
        EXPECT_EQ(Bytes(file.readString()), isKept ? bytes + "\nlast" : "") << c[1];
        EXPECT_EQ(traces.take("9 sfile: "), expected);
        EXPECT_TRUE(file.eof());
        file.seek(SFile::seekBegin, 6);
        EXPECT_EQ(Bytes(file.readString(SFile::nativeCodePage)), bytes + "\nlast");
    }
}

}  // namespace

TEST_F(Files, OpensByTheModeAlone) {
    for (const auto& c : tarntest::ReadCases("files/file_modes.txt")) {
        const int mode = std::stoi(c[0]);
        const fs::path file = folder / "file";
        fs::remove(file);
        SFile made;
        EXPECT_EQ(Failure([&] { made.open(Text(file), mode, kRights, kShared); }), c[1]) << mode;
        made.close();
        EXPECT_EQ(fs::exists(file), c[1].empty()) << mode;
        WriteBytes(file, "bytes");
        const std::string failure = Failure([&] { made.open(mode, kRights, kShared); });  // by its name
        made.close();
        const std::string after = ReadBytes(file) == "bytes" ? "kept" : "emptied";
        EXPECT_EQ(failure.empty() ? after : failure, c[2]) << mode;
    }
}

TEST_F(Files, OpeningAndItsFailureAreTraced) {
    tarntest::AssertRecorder traces(tarntest::kTracesToo);
    for (const int mode :
         {0, SFile::writeOnly | SFile::create | SFile::exclusive, kNewToReadToo, 3 | SFile::exclusive})
        Failure([&] { SFile("f", mode, kRights, kShared); });
    std::string expected;
    for (const auto& [how, error] : {std::pair("r and creation disposition: OPEN_EXISTING", 2),
                                     {"w and creation disposition: OPEN_ALWAYS", 0},
                                     {"rw and creation disposition: CREATE_ALWAYS", 0},
                                     {" and creation disposition: CREATE_NEW", 80}}) {
        expected += std::string("2 sfile: opening f with desired access: ") + how + "\n";
        if (error == 0) continue;
        expected +=
            "7 sfile: cannot open \"f\": " + Bytes(SFileException::GetSystemMessage(error).trimRight()) +
            "\n";
    }
    EXPECT_EQ(traces.take(), expected);
    fs::remove("f");
}

TEST(SFile, AClosedFileSaysSo) {
    tarntest::AssertRecorder recorder;
    EXPECT_EQ(Failure([] { SFile("x").seek(0, 0); }), "4 2 0");
    EXPECT_TRUE(recorder.sawLast("sfile", "m_hFile != INVALID_HANDLE_VALUE"));
    EXPECT_FALSE(BareFile::seekEx(INVALID_HANDLE_VALUE, 0, 0, nullptr));
    EXPECT_TRUE(recorder.sawLast("sfile", "hFile != INVALID_HANDLE_VALUE"));
}

// Characters of all lengths at every distance from the end of a block, with ASCII runs of all lengths
// between.
TEST_F(SFileText, CharactersMayLieAcrossBlocks) {
    const tarntest::LocaleScope locale(tarntest::kLocale932);
    std::string utf8;
    std::string ansi;
    for (int i = 0; utf8.size() < 300'000; ++i) {
        utf8 += std::string(static_cast<std::size_t>(i % 131), 'a') + "\xE8\xA1\xA8\xC2\xB1\xF0\x9F\x98\x80";
        ansi += std::string(static_cast<std::size_t>(i % 131), 'a') + "\x95\x5C\x81\x7D??";
    }
    for (const char* shift : {"", "b", "bc", "bcd"}) {
        SFile file(Text(write("across", shift + utf8)), SFile::readOnly, kRights, kShared);
        EXPECT_TRUE(Bytes(file.readString()) == shift + ansi);
        file.seek(SFile::seekBegin, 0);
        EXPECT_TRUE(Bytes(file.readLine()) == shift + ansi);
    }
}

TEST_F(SFileText, IllegalUtf8IsEmptyAndNamed) {
    readIllegalTexts();
}

TEST_F(Utf8SFileText, IllegalUtf8IsKeptAndNamed) {
    readIllegalTexts();
}

// Lines, blocks, writes and seeks in any order are those of a reader that takes one byte at a time.
TEST_F(SFileText, AnyMixtureIsThatOfSingleBytes) {
    std::mt19937 random(5);
    const auto below = [&](std::size_t end) { return random() % end; };
    std::string bytes(200'000, 'x');
    for (char& one : bytes) one = below(40) == 0 ? "\r\n\0a"[below(4)] : one;
    for (std::size_t at : {50'000U, 120'000U}) bytes.replace(at, 60'000, std::string(60'000, 'y'));
    SFile file(Text(write("any", bytes)), SFile::readAndWrite, kRights, kShared);
    std::size_t at = 0;
    for (int step = 0; step < 1'500; ++step) {
        std::string block(below(9) == 0 ? below(70'000) : below(50), 'w');
        block += "\r\n";
        const auto count = static_cast<std::uint32_t>(block.size());
        const std::size_t left = at < bytes.size() ? bytes.size() - at : 0;
        switch (below(6)) {
            case 0:
                ASSERT_EQ(file.write(block.data(), count), static_cast<int>(count));
                bytes.resize(std::max(bytes.size(), at + count));
                bytes.replace(at, count, block);
                at += count;
                break;
            case 1:
                ASSERT_EQ(file.read(block.data(), count),
                          static_cast<int>(std::min<std::size_t>(count, left)));
                block.resize(std::min<std::size_t>(count, left));
                ASSERT_TRUE(left == 0 || bytes.substr(at, block.size()) == block) << step;
                at += block.size();
                break;
            case 2:
                at = below(bytes.size() + 10);
                file.seekEx(below(2) == 0 ? SFile::seekBegin : 7, static_cast<long long>(at));
                break;
            default:
                std::string line;
                for (bool isEnd = false; at < bytes.size() && !isEnd; ++at) {
                    isEnd = bytes[at] == '\n';
                    if (!isEnd && bytes[at] != '\r') line += bytes[at];
                }
                ASSERT_TRUE(Bytes(file.readLine()) == line) << step;
        }
        ASSERT_EQ(file.seekEx(SFile::seekCurrent, 0), static_cast<long long>(at)) << step;
        ASSERT_EQ(file.eof(), at >= bytes.size()) << step;
        ASSERT_EQ(file.sizeEx(), static_cast<long long>(bytes.size())) << step;
    }
    file.close();
    EXPECT_TRUE(ReadBytes(folder / "any") == bytes);
}

TEST(SFileException, TextsAndMappings) {
    using Exception = SFileException;
    const SAnsiString name("N%2");
    for (const auto& c : tarntest::ReadCases("files/file_failures.txt")) {
        const auto stage = static_cast<Exception::ErrorCodes>(std::stoi(c[0]));
        const Exception e(stage, 9, name, Exception::notFound, "why", "more");
        EXPECT_EQ(Bytes(e.toString()), c[1]);
        EXPECT_EQ(Bytes(e.summary()), c[1] + ":more");
    }
    for (const auto& [error, detail] : {std::pair(13, 0), {2, 1}, {12, 3}, {22, 5}})
        EXPECT_EQ(Exception::MapErrno(error), detail) << error;
    EXPECT_EQ(Exception::GetSystemMessage(0x20001234), "system error");
    const std::string message = Bytes(Exception::GetSystemMessage(2));
    EXPECT_EQ(message.substr(message.size() - 2), "\r\n");
    BareFile file(name);
    EXPECT_EQ(Failure([&] { file.raisePosixError(Exception::readError, 12); }), "1 3 12");
    EXPECT_EQ(Failure([&] { file.raiseSystemError(Exception::lockError, 50); }), "5 4 50");
}

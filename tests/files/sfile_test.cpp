#include <gtest/gtest.h>

#include <random>

#include "support/assert_recorder.h"
#include "support/case_file.h"
#include "support/file_bytes.h"
#include "support/locale_scope.h"
#include "support/print_strings.h"
#include "tarnlib/sdirectorychangewatcher.h"
#include "tarnlib/sfile.h"
#include "tarnlib/sfilesys.h"

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
constexpr int kNew = SFile::writeOnly | SFile::create | SFile::truncate;
constexpr int kNewToReadToo = SFile::readAndWrite | SFile::create | SFile::truncate;

class Files : public testing::Test {
  protected:
    const fs::path folder = tarntest::MakeScratchFolder("sfile");
    ~Files() override { SFileSys::rremove(Text(folder)); }
    fs::path write(const char* name, const std::string& bytes) const {
        WriteBytes(folder / name, bytes);
        return folder / name;
    }
};

using SFileText = Files;
using Cp932SFile = Files;

// Values behind references, which the compiler must not replace by what it knows.
template <class First, class... More>
[[gnu::noinline]] std::vector<First> Referred(const First& first, const More&... more) {
    return {first, more...};
}

// What the unit traces while it lives: "level text|".
class Traces {
  public:
    Traces() {
        Lines().clear();
        sink_.shouldTrace = [](int, const char* unit) { return std::string(unit) == "sfile"; };
        sink_.trace = [](int level, const char*, const char* text) {
            Lines() += std::to_string(level) + " " + text + "|";
        };
        before_ = InstallDiagnosticSink(&sink_);
    }
    ~Traces() { InstallDiagnosticSink(before_); }
    Traces(const Traces&) = delete;
    Traces& operator=(const Traces&) = delete;
    std::string text() const { return Lines(); }

  private:
    static std::string& Lines() {
        static std::string lines;
        return lines;
    }
    SDiagnosticSink sink_;
    const SDiagnosticSink* before_;
};

class BareFile : public SFile {
  public:
    using SFile::raisePosixError;
    using SFile::raiseSystemError;
    using SFile::seekEx;
    using SFile::SFile;
};

}  // namespace

TEST_F(Files, OpensByTheModeAlone) {
    for (const auto& c : tarntest::ReadCases("file_modes.txt")) {
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
    const Traces traces;
    for (const int mode :
         {0, SFile::writeOnly | SFile::create | SFile::exclusive, kNewToReadToo, 3 | SFile::exclusive})
        Failure([&] { SFile("f", mode, kRights, kShared); });
    std::string expected;
    for (const auto& [how, error] : {std::pair("r and creation disposition: OPEN_EXISTING", 2),
                                     {"w and creation disposition: OPEN_ALWAYS", 0},
                                     {"rw and creation disposition: CREATE_ALWAYS", 0},
                                     {" and creation disposition: CREATE_NEW", 80}}) {
        expected += std::string("2 opening f with desired access: ") + how + "|";
        if (error == 0) continue;
        expected +=
            "7 cannot open \"f\": " + Bytes(SFileException::GetSystemMessage(error).trimRight()) + "|";
    }
    EXPECT_EQ(traces.text(), expected);
    fs::remove("f");
}

TEST_F(Files, ConstantsAreObjectsToo) {
    using F = SFile;
    const std::vector<int> values = Referred(
        F::readOnly, F::writeOnly, F::readAndWrite, F::append, F::random, F::sequential, F::temporary,
        F::noInherit, F::create, F::truncate, F::exclusive, F::denyReadAndWrite, F::denyWrite, F::denyRead,
        F::denyNothing, F::ownerRWXMask, F::ownerRMask, F::ownerWMask, F::ownerXMask, F::groupRWXMask,
        F::groupRMask, F::groupWMask, F::groupXMask, F::othersRWXMask, F::othersRMask, F::othersWMask,
        F::othersXMask, F::readMask, F::writeMask, F::readWriteMask, F::defaultPermissions, F::seekBegin,
        F::seekSet, F::seekCurrent, F::seekEnd, F::lockUnlock, F::lockRetryLock, F::lockNoRetryLock);
    EXPECT_EQ(values, (std::vector<int>{0,  1,   2,   8,   16,         32, 64, 128, 256, 512, 1024, 16, 32,
                                        48, 64,  448, 256, 128,        64, 0,  0,   0,   0,   0,    0,  0,
                                        0,  256, 448, 448, 1610612736, 0,  0,  1,   2,   0,   1,    2}));
    EXPECT_EQ(Referred(SDirectoryChangeWatcher::defaultRecordBytes), std::vector<unsigned long>{65'536});
}

TEST_F(Files, SharesByTheArgumentAlone) {
    const SAnsiString name = Text(write("shared", "bytes"));
    for (const int deny : {SFile::denyRead, SFile::denyWrite, SFile::denyReadAndWrite}) {
        SFile holder(name, SFile::readOnly, kRights, deny);
        // A sharing violation is no denied access here.
        EXPECT_EQ(Failure([&] { SFile(name, SFile::readOnly, kRights, kShared); }), "0 5 32") << deny;
    }
    SFile holder(name, SFile::readOnly, kRights, 0);
    EXPECT_EQ(Failure([&] { SFile(name, SFile::writeOnly, kRights, kShared); }), "");
    EXPECT_FALSE(DeleteFileW((folder / "shared").c_str()));
}

TEST_F(Files, SaysWhatIsWrongWithAName) {
    EXPECT_EQ(Failure([&] { SFile("", 0, kRights, kShared); }).substr(0, 3), "0 1");
    EXPECT_EQ(Failure([&] { SFile(Text(folder), 0, kRights, kShared); }), "0 0 5");  // a directory
    EXPECT_EQ(Failure([&] { SFile(Text(folder / "a?b"), 0, kRights, kShared); }), "0 5 123");
    EXPECT_EQ(Failure([&] { SFile(Text(folder / "none" / "f"), 0, kRights, kShared); }), "0 1 3");
    EXPECT_EQ(Failure([&] { SFile("NUL", SFile::writeOnly, kRights, kShared).writeString("x"); }), "");
    SFile kept(Text(write("old", "")), 0, kRights, kShared);
    EXPECT_NE(Failure([&] { kept.open(Text(folder / "new"), 0, kRights, kShared); }), "");
    WriteBytes(folder / "new", "now");
    EXPECT_FALSE(kept.isOpen());
    EXPECT_EQ(kept.name(), Text(folder / "new"));
    kept.open(0, kRights, kShared);  // the new name is there although it failed
    EXPECT_TRUE(kept.isOpen());
    EXPECT_EQ(kept.readString(), "now");
}

TEST_F(Files, LongNamesAndOnesThatEndOddly) {
    const fs::path deep = folder / std::string(200, 'd') / std::string(200, 'e');
    fs::create_directories(L"\\\\?\\" + deep.wstring());
    SFile(Text(deep / "file"), kNew, kRights, kShared).writeString("deep");
    EXPECT_EQ(ReadBytes(L"\\\\?\\" + (deep / "file").wstring()), "deep");
    SFile(Text(folder / "blank. ."), kNew, kRights, kShared).writeString("cut");
    EXPECT_EQ(ReadBytes(folder / "blank"), "cut");
    SFile(Text(folder) + "\\\x80.txt", kNew, kRights, kShared).writeString("euro");  // without a locale
    EXPECT_EQ(ReadBytes(folder / L"\x20AC.txt"), "euro");
}

TEST_F(Files, BytesPositionsAndSizes) {
    SFile file(Text(folder / "bytes"), kNew | SFile::readAndWrite, kRights, kShared);
    char bytes[8] = {};
    EXPECT_EQ(Failure([&] { file.open(kNewToReadToo, kRights, kShared); }), "");
    EXPECT_EQ(file.write("0123456789", 10), 10);
    EXPECT_EQ(file.size(), 10U);
    EXPECT_EQ(file.seek(SFile::seekCurrent, 0), 10);
    EXPECT_EQ(file.seek(SFile::seekEnd, -4), 6);
    EXPECT_EQ(file.seek(7, 2), 2);  // every other origin is the beginning
    EXPECT_EQ(file.read(bytes, 3), 3);
    EXPECT_STREQ(bytes, "234");
    EXPECT_EQ(Failure([&] { file.seek(SFile::seekBegin, -1); }), "4 5 131");
    EXPECT_EQ(file.seekEx(SFile::seekCurrent, 0), 5);
    EXPECT_FALSE(file.eof());
    EXPECT_EQ(file.seekEx(SFile::seekBegin, 5'000'000'000), 5'000'000'000);
    EXPECT_TRUE(file.eof());
    EXPECT_EQ(Failure([&] { file.seek(SFile::seekCurrent, 0); }), "4 5 87");  // no 32-bit number
    EXPECT_EQ(file.read(bytes, 1), 0);
    file.flush();
    file.open(SFile::readOnly, kRights, kShared);
    file.flush();  // nothing to do; the system would refuse it
    EXPECT_EQ(Failure([&] { file.write("x", 1); }), "2 0 5");
    SFile empty(Text(write("empty", "")), SFile::writeOnly, kRights, kShared);
    EXPECT_EQ(empty.readLine() + empty.readString(), "");  // nothing to read that could be refused
    SFile none(Text(folder / "bytes"), 3, kRights, kShared);
    EXPECT_EQ(none.sizeEx(), 10);
    EXPECT_EQ(Failure([&] { none.read(bytes, 1); }), "1 0 5");
    SFile end(Text(folder / "bytes"), SFile::writeOnly | SFile::append, kRights, kShared);
    end.write("AB", 2);
    EXPECT_EQ(ReadBytes(folder / "bytes"), "0123456789AB");
}

TEST(SFile, AClosedFileSaysSo) {
    tarntest::AssertRecorder recorder;
    SFile closed("x");
    char one = 0;
    EXPECT_EQ(Failure([&] { closed.read(&one, 1); }), "1 2 0");
    EXPECT_EQ(Failure([&] { closed.readLine(); }), "1 2 0");
    EXPECT_EQ(Failure([&] { closed.readString(); }), "1 2 0");
    EXPECT_EQ(Failure([&] { closed.write(&one, 1); }), "2 2 0");
    EXPECT_EQ(Failure([&] { closed.writeNewLine(); }), "2 2 0");
    EXPECT_EQ(Failure([&] { closed.eof(); }), "4 2 0");
    EXPECT_EQ(Failure([&] { closed.sizeEx(); }), "4 2 0");
    EXPECT_EQ(Failure([&] { closed.seekEx(0, 0); }), "4 2 0");
    EXPECT_EQ(recorder.count(), 0U);
    EXPECT_EQ(Failure([&] { closed.seek(0, 0); }), "4 2 0");
    EXPECT_TRUE(recorder.sawLast("sfile", "m_hFile != INVALID_HANDLE_VALUE"));
    EXPECT_EQ(Failure([&] { closed.flush(); }), "3 5 6");  // has no mode yet, and asks the system
    EXPECT_FALSE(BareFile::seekEx(INVALID_HANDLE_VALUE, 0, 0, nullptr));
    EXPECT_TRUE(recorder.sawLast("sfile", "hFile != INVALID_HANDLE_VALUE"));
    closed.close();
}

TEST_F(Files, TemporaryFilesGoWithTheirObject) {
    const fs::path file = folder / "temporary";
    const int mode = SFile::writeOnly | SFile::create | SFile::temporary;
    SFile temporary(Text(file), mode, kRights, kShared);
    temporary.close();
    EXPECT_FALSE(fs::exists(file));
    WriteBytes(file, "");
    temporary.close();  // of a closed file: nothing
    EXPECT_TRUE(fs::exists(file));
    temporary.open(mode, kRights, kShared);
    const SFile other(Text(file), SFile::readOnly, kRights, kShared);
    EXPECT_EQ(Failure([&] { temporary.close(); }), "7 5 0");
    EXPECT_EQ(Failure([&] { temporary.close(); }), "");
    temporary.open(mode, kRights, kShared);
    const SAnsiString next = Text(folder / "next");
    EXPECT_EQ(Failure([&] { temporary.open(next, mode, kRights, kShared); }), "7 5 0");
    temporary.open(SFile::writeOnly | SFile::create, kRights, kShared);  // the new name is there all the same
    EXPECT_TRUE(fs::exists(folder / "next"));
    temporary.open(Text(file), mode, kRights, kShared);  // the destructor must not throw what it meets
}

TEST_F(SFileText, LinesAsCallersSeeThem) {
    const std::string block(70'000, 'b');  // more than is read at once
    struct Case {
        std::string bytes;
        std::vector<std::string> lines;
    };
    const Case cases[] = {
        {"", {}},
        {"\n", {""}},
        {"a\r\nb", {"a", "b"}},
        {"x\ry\nz\r", {"xy", "z"}},
        {"\r\r\n\r", {"", ""}},
        {std::string("n\0m\n\0", 5), {std::string("n\0m", 3), std::string("\0", 1)}},
        {block + "\r\n" + block + "\r" + block + "\n\n", {block, block + block, ""}},
    };
    for (const Case& c : cases) {
        SFile file(Text(write("lines", c.bytes)), SFile::readOnly, kRights, kShared);
        std::vector<std::string> lines;
        while (!file.eof()) lines.push_back(Bytes(file.readLine()));
        EXPECT_EQ(lines, c.lines) << c.bytes.substr(0, 20);
        EXPECT_EQ(Bytes(file.readLine()), "");
    }
}

TEST_F(SFileText, ReadingAheadShowsNowhere) {
    SFile file(Text(write("mixed", "one\r\ntwo\nthree\nfour")), SFile::readAndWrite, kRights, kShared);
    char bytes[3] = {};
    EXPECT_EQ(file.readLine(), "one");
    EXPECT_EQ(file.seek(SFile::seekCurrent, 0), 5);
    EXPECT_EQ(file.read(bytes, 2), 2);
    EXPECT_STREQ(bytes, "tw");
    EXPECT_EQ(file.readLine(), "o");
    EXPECT_EQ(file.seek(SFile::seekCurrent, 2), 11);
    EXPECT_EQ(file.readLine(), "ree");
    EXPECT_EQ(file.size(), 19U);
    file.write("F", 1);
    EXPECT_EQ(file.readString(), "our");
    file.seek(SFile::seekBegin, 0);
    EXPECT_EQ(file.readLine(), "one");
    EXPECT_EQ(file.readString(), "two\nthree\nFour");
    EXPECT_TRUE(file.eof());
    file.seek(SFile::seekBegin, 0);
    const SAnsiString kept = file.readLine();  // its memory does not serve the next line
    EXPECT_EQ(file.readLine() + kept, "twoone");
}

TEST_F(SFileText, EncodingsAreConverted) {
    const tarntest::LocaleScope locale(tarntest::kLocale1252);
    const std::string utf8 =
        "Gr\xC3\xBC\xC3\x9F"
        "e \xE2\x82\xAC";
    const std::string ansi =
        "Gr\xFC\xDF"
        "e \x80";
    const fs::path name = write("utf8", utf8 + "\r\n" + utf8);
    SFile file(Text(name), SFile::readAndWrite, kRights, kShared);
    EXPECT_EQ(Bytes(file.readLine()), ansi);
    EXPECT_EQ(Bytes(file.readString()), ansi);
    file.seek(SFile::seekBegin, 0);
    EXPECT_EQ(Bytes(file.readLine(SFile::nativeCodePage)), utf8);
    EXPECT_EQ(Bytes(file.readString(SFile::nativeCodePage)), utf8);
    file.open(SFile::writeOnly | SFile::truncate, kRights, kShared);
    EXPECT_EQ(file.writeString(ansi.c_str()), utf8.size());
    EXPECT_EQ(file.writeString(""), 0U);
    EXPECT_EQ(file.writeNewLine(), 2U);
    EXPECT_EQ(file.writeString(SAnsiString("\xFC\0\xFC", 3)), 5U);
    file.close();
    EXPECT_EQ(ReadBytes(name), utf8 + "\r\n\xC3\xBC" + '\0' + "\xC3\xBC");
    EXPECT_EQ(SFile::EOL, "\r\n");
    file.open(SFile::readOnly, kRights, kShared);
    file.readLine();
    EXPECT_EQ(Bytes(file.readString()), std::string("\xFC\0\xFC", 3));
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
    const std::string block(65'535, 'b');  // one less than is read at once
    const struct {
        std::string bytes;
        std::size_t wrong;  // byte
    } cases[] = {{"\xFF", 0},
                 {"good \xE2\x82", 5},
                 {"\xED\xA0\x80 good", 0},
                 {"caf\xE9 au lait", 3},
                 {"\r\xC3\xBC\ra\r\xE9\r\r", 6},
                 {"\xFC"
                  "ABCD",
                  0},
                 {"ab\xFC\x80\x80\x80\x80", 2},
                 {block + "\xFC\x80\x80\x80\x80\x80", 65'535},
                 {block + "\r\xE2\x82\xAC\xF8"
                          "x",
                  65'539}};
    for (const auto& c : cases) {
        SFile file(Text(write("illegal", "first\n" + c.bytes + "\nlast")), SFile::readOnly, kRights, kShared);
        const Traces traces;
        const std::string expected = "9 \"" + Bytes(file.name()) + "\" is not valid UTF-8 at byte " +
                                     std::to_string(c.wrong + 6) + ", so its text counts as empty|";
        EXPECT_EQ(file.readLine(), "first");
        EXPECT_EQ(file.readLine(), "") << c.bytes.substr(0, 9);
        EXPECT_EQ(traces.text(), expected);
        EXPECT_EQ(file.readLine(), "last");
        file.seek(SFile::seekBegin, 6);
        EXPECT_EQ(file.readString(), "") << c.bytes.substr(0, 9);
        EXPECT_EQ(traces.text(), expected + expected);
        EXPECT_TRUE(file.eof());
        file.seek(SFile::seekBegin, 6);
        EXPECT_EQ(Bytes(file.readString(SFile::nativeCodePage)), c.bytes + "\nlast");
    }
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

TEST_F(Cp932SFile, NamesWithATrailByteThatLooksLikeASeparator) {
    const SAnsiString name = Text(folder) + "\\\x95\x5C\x83\x5C.txt";
    SFile(name, kNew, kRights, kShared).writeString("no locale is set");
    EXPECT_EQ(ReadBytes(folder / L"\x8868\x30BD.txt"), "no locale is set");
    EXPECT_EQ(Failure([&] { SFile(Text(folder) + "\\\x95", kNew, kRights, kShared); }).substr(0, 1), "0");
}

TEST(SFileException, TextsAndMappings) {
    using Exception = SFileException;
    const SAnsiString name("N%2");
    for (const auto& c : tarntest::ReadCases("file_failures.txt")) {
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
    EXPECT_EQ(Exception(Exception::readError, 9, name, Exception::notFound, "why", "").fileName(), name);
    EXPECT_EQ(Exception(Exception::readError, 9, name, Exception::notFound, "why", "").reason(), "why");
    EXPECT_EQ(Failure([&] { file.raisePosixError(Exception::readError, 12); }), "1 3 12");
    EXPECT_EQ(Failure([&] { file.raiseSystemError(Exception::lockError, 50); }), "5 4 50");
}

#include <gtest/gtest.h>

#include <clocale>

#include "support/assert_recorder.h"
#include "support/case_file.h"
#include "support/file_bytes.h"
#include "support/locale_scope.h"
#include "support/print_strings.h"
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

TEST_F(Files, OpeningIsTraced) {
    static std::string traced;
    SDiagnosticSink sink;
    sink.shouldTrace = [](int level, const char* unit) { return level == 2 && std::string(unit) == "sfile"; };
    sink.trace = [](int, const char*, const char* text) { traced += text + std::string("|"); };
    const SDiagnosticSink* const before = InstallDiagnosticSink(&sink);
    for (const int mode :
         {0, SFile::writeOnly | SFile::create | SFile::exclusive, kNewToReadToo, 3 | SFile::exclusive})
        Failure([&] { SFile("f", mode, kRights, kShared); });
    InstallDiagnosticSink(before);
    std::string expected;
    for (const char* how :
         {"r and creation disposition: OPEN_EXISTING", "w and creation disposition: OPEN_ALWAYS",
          "rw and creation disposition: CREATE_ALWAYS", " and creation disposition: CREATE_NEW"})
        expected += std::string("opening f with desired access: ") + how + "|";
    EXPECT_EQ(traced, expected);
    fs::remove("f");
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
    kept.open(0, kRights, kShared);  // the new name is there although it failed
    EXPECT_EQ(kept.readString(), "now");
}

TEST_F(Files, LongNamesAndOnesThatEndOddly) {
    const fs::path deep = folder / std::string(200, 'd') / std::string(200, 'e');
    fs::create_directories(L"\\\\?\\" + deep.wstring());
    SFile(Text(deep / "file"), kNew, kRights, kShared).writeString("deep");
    EXPECT_EQ(ReadBytes(L"\\\\?\\" + (deep / "file").wstring()), "deep");
    SFile(Text(folder / "blank. ."), kNew, kRights, kShared).writeString("cut");
    EXPECT_EQ(ReadBytes(folder / "blank"), "cut");
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

TEST_F(SFileText, IllegalUtf8IsEmpty) {
    for (const char* bytes : {"\xFF", "good \xE2\x82", "\xED\xA0\x80 good", "caf\xE9 au lait"}) {
        SFile file(Text(write("illegal", bytes)), SFile::readOnly, kRights, kShared);
        EXPECT_EQ(file.readString(), "") << bytes;
        EXPECT_TRUE(file.eof());
        file.seek(SFile::seekBegin, 0);
        EXPECT_EQ(file.readLine(), "") << bytes;
        file.seek(SFile::seekBegin, 0);
        EXPECT_EQ(file.readString(SFile::nativeCodePage), bytes);
    }
}

TEST_F(Cp932SFile, NamesWithATrailByteThatLooksLikeASeparator) {
    const tarntest::LocaleScope locale(tarntest::kLocale932);
    const SAnsiString name = Text(folder) + "\\\x95\x5C\x83\x5C.txt";
    SFile(name, kNew, kRights, kShared).writeString("\x95\x5C");
    EXPECT_EQ(ReadBytes(folder / L"\x8868\x30BD.txt"), "\xE8\xA1\xA8");
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
    EXPECT_EQ(Failure([&] { file.raisePosixError(Exception::readError, 12); }), "1 3 12");
    EXPECT_EQ(Failure([&] { file.raiseSystemError(Exception::lockError, 50); }), "5 4 50");
}

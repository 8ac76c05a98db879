#include <gtest/gtest.h>

#include <utility>

#include "support/assert_recorder.h"
#include "support/case_file.h"
#include "support/file_bytes.h"
#include "support/locale_scope.h"
#include "support/print_strings.h"
#include "tarnlib/configfilereader.h"
#include "tarnlib/sfilesys.h"

using namespace TarnLibA500;
using tarntest::Bytes;
using tarntest::Text;
using tarntest::WriteBytes;
namespace fs = std::filesystem;

namespace {

class ConfigFiles : public testing::Test {
  protected:
    const fs::path folder = tarntest::MakeScratchFolder("config");
    ~ConfigFiles() override { SFileSys::rremove(Text(folder)); }
    SAnsiString write(const std::string& bytes) const {
        WriteBytes(folder / "file", bytes);
        return Text(folder / "file");
    }
};

using Cp932ConfigFiles = ConfigFiles;
using LandscapeFiles = ConfigFiles;

std::string Joined(const SIArray<SAnsiString>& texts) {
    std::string all;
    for (const SAnsiString& text : texts) all += Bytes(text) + ",";
    return all;
}

/// Takes the trace texts of the reader that a log shows by default, a line each.
class ReaderTraces {
  public:
    ReaderTraces() {
        take();
        sink_.shouldTrace = [](int level, const char* unit) {
            return level == 9 && std::string(unit) == "configfilereader";
        };
        sink_.trace = [](int, const char*, const char* text) { text_ += std::string(text) + "\n"; };
        before_ = InstallDiagnosticSink(&sink_);
    }
    ~ReaderTraces() { InstallDiagnosticSink(before_); }
    static std::string take() { return std::exchange(text_, ""); }

  private:
    static inline std::string text_;
    SDiagnosticSink sink_;
    const SDiagnosticSink* before_;
};

// All sections as "[name] key=value ...".
std::string Shown(const ConfigFileReader& reader) {
    SIArray<SAnsiString> names;
    reader.getSections(names);
    std::string all;
    for (const SAnsiString& name : names) {
        SIArray<SAnsiString> keys;
        reader.enumerateSection(name, keys);
        all += "[" + Bytes(name) + "]";
        for (const SAnsiString& key : keys)
            all += " " + Bytes(key) + "=" + Bytes(reader.getValue(name, key, "?"));
        all += "\n";
    }
    return all;
}

}  // namespace

TEST_F(ConfigFiles, LookUpsByTheLetter) {
    const tarntest::LocaleScope locale(tarntest::kLocale1252);
    for (const auto& c : tarntest::ReadCases("config_texts.txt")) {
        ConfigFileReader reader;
        ASSERT_EQ(reader.initialize(write(c[0])), c[3] != "refused") << c[0];
        if (c[3] == "refused") continue;
        EXPECT_EQ(Bytes(reader.getValue(c[1].c_str(), c[2].c_str(), "-")), c[3]) << c[0];
    }
}

TEST_F(ConfigFiles, WhatIsNotReadIsTold) {
    const std::string name = (folder / "file").string();
    const auto told = [&](const std::string& bytes, const char* expected) {
        ConfigFileReader reader;
        const ReaderTraces traces;
        const bool isRead = reader.initialize(write(bytes));
        std::string text = Bytes(reader.GetLastErrorText());
        EXPECT_EQ(traces.take(), isRead ? text + (text.empty() ? "" : "\n")
                                        : "ConfigFileReader::initialize() failed: " + text + "\n");
        for (std::size_t at = 0; (at = text.find(name, at)) != text.npos;)
            text.replace(at, name.size(), "FILE");
        EXPECT_EQ(text, expected) << bytes.substr(0, 60);
    };
    for (const auto& c : tarntest::ReadCases("config_losses.txt")) told(c[0], c[1].c_str());
    told(std::string(4095, '\n') + "\xC3\xBC\xE2\x82\xAC" + std::string(9000, ' ') + "\xFF",
         "FILE: not UTF-8 at byte 13100");
    std::string many, lines;
    for (int i = 1; i <= 22; ++i) {
        many += "[A]\nx\n";
        const std::string line = "line " + std::to_string(i * 2);
        if (i <= 20) lines += "FILE, " + line + ": no =, " + line + " of [A] is not read\n";
    }
    told(many, (lines + "FILE: 2 more sections end before their last line").c_str());
    ConfigFileReader reader;
    EXPECT_FALSE(reader.initialize(Text(folder / "none")));
    EXPECT_EQ(Bytes(reader.GetLastErrorText()), (folder / "none").string() + ": not found");
    EXPECT_FALSE(reader.initializeFromXML(Text(folder)));
    EXPECT_EQ(Bytes(reader.GetLastErrorText()).find(folder.string() + ": "), 0U);
    EXPECT_TRUE(reader.initialize(write("[A]\nk=1")));
    EXPECT_EQ(Bytes(reader.GetLastErrorText()), "");
    const ReaderTraces traces;
    const ConfigFileReader::SectionData section("A", "a=1\nb\nc=2\n");
    EXPECT_EQ(traces.take(), "a section's text, line 2: no =, lines 2 to 3 of [A] are not read\n");
}

TEST_F(ConfigFiles, SectionsAndKeysAreListed) {
    ConfigFileReader reader;
    ASSERT_TRUE(reader.initialize(
        write("[b]\nz=1\nz=2\n10=x\n\xC3\xBC=2\n9=y\nlonger_key_2=\nlonger_key_1=\n[a][c]\n[b]\nk=2\n[d]"),
        ConfigFileReader::nativeCodePage));
    SIArray<SAnsiString> names;
    names.Add("old");
    EXPECT_TRUE(reader.getSections(names));
    EXPECT_EQ(Joined(names), "b,a,b,");
    EXPECT_TRUE(reader.enumerateSection(" b", names));
    EXPECT_EQ(Joined(names), "10,9,longer_key_1,longer_key_2,z,\xC3\xBC,k,");
    EXPECT_FALSE(reader.enumerateSection("c", names));
    EXPECT_EQ(names.GetSize(), 0U);
    EXPECT_TRUE(reader.initialize("no such file"));  // it is loaded already
    const ConfigFileReader copy = reader;
    const ConfigFileReader moved = std::move(reader);
    EXPECT_EQ(copy.getValue("b", "k", ""), moved.getValue("b", "k", "?"));
    tarntest::AssertRecorder recorder;
    EXPECT_EQ(reader.getValue("b", "k", "default"), "default");
    EXPECT_TRUE(recorder.sawLast("configfilereader", "m_initialized"));
    EXPECT_FALSE(reader.getSections(names) || reader.enumerateSection("b", names));
    EXPECT_EQ(recorder.count(), 2U);
    ConfigFileReader blank;
    const ReaderTraces traces;
    EXPECT_FALSE(blank.initialize(Text(folder / "none")));
    EXPECT_EQ(traces.take().find("ConfigFileReader::initialize() failed to open config file. Reason is: "),
              0U);
    EXPECT_TRUE(blank.initialize(write(" \r\n\n")));
    EXPECT_TRUE(blank.getSections(names));
}

TEST_F(ConfigFiles, LargeSectionsFollowTheSameRules) {
    std::string text = "[large]\n";
    for (int round = 0; round < 3; ++round) {
        for (int i = 0; i < 1000; ++i) {
            const bool isSpaced = round == 1 && i % 3 == 0;
            text +=
                "key" + std::to_string(i * 7 % 1000) + (isSpaced ? " =" : "=") + std::to_string(round) + "\n";
        }
    }
    ConfigFileReader reader;
    ASSERT_TRUE(reader.initialize(write(text)));
    for (int i = 0; i < 1000; ++i) {
        const SAnsiString key = ("key" + std::to_string(i * 7 % 1000)).c_str();
        EXPECT_EQ(reader.getValue("large", key, "-"), i % 3 == 0 ? "1" : "0") << i;
    }
    SIArray<SAnsiString> keys;
    EXPECT_TRUE(reader.enumerateSection("large", keys));
    EXPECT_EQ(keys.GetSize(), 1000U);
    EXPECT_EQ(reader.getValue("large", "key1000", "-"), "-");
}

TEST_F(Cp932ConfigFiles, TrailBytesAreNoBracketsAndWideBlanksAreTrimmed) {
    const tarntest::LocaleScope locale(tarntest::kLocale932);
    ConfigFileReader reader;
    // Characters whose trail bytes are 5B, 5D and 40, which is the wide blank.
    ASSERT_TRUE(reader.initialize(write("[\x83\x5D]\n\x81\x40key\x81\x40=\x83\x5B\x81\x40\n"),
                                  ConfigFileReader::nativeCodePage));
    EXPECT_EQ(reader.getValue("\x83\x5D", "key", "-"), "\x83\x5B");
}

TEST_F(LandscapeFiles, ServicesBecomeSections) {
    std::string nobody;  // more of them than levels are allowed
    for (int i = 0; i < 100; ++i) nobody += "<Item name='nobody'/>";
    const std::string body =
        "<Landscape><Workspaces><Item uuid='s2' name='Production'/>" + nobody +
        "</Workspaces><Service type='mirelms' name='loose'/><Services>"
        "<Service type='mirelms' name=' Direct ' server='host1:3200' systemid='AB1' routerid='r1'/>"
        "<Service type='mirelms' uuid='s2' name='Group' server='PUBLIC' systemid='PR1' msid='m1' sncop='9' "
        "routerid='r1' sncname='p:CN=x&#10;Server=evil'/><Service type='other' name='skipped'/></Services>"
        "<Messageservers><Messageserver uuid='m1' name='PR1' host='ms.example:3600'/></Messageservers>"
        "<Routers><Router uuid='r1' name='gate' router='/H/gate/S/3299'/></Routers></Landscape>";
    const char* const sections =
        "[Direct] Database=AB1 Description=Direct Origin=USEREDIT Server=/H/gate/S/3299/H/host1:3200 "
        "USEREDIT=1\n"
        "[Group] Database=PR1 Description=Production MSSrvName=/H/gate/S/3299/H/ms.example MSSrvPort=3600 "
        "MSSysName=PR1 "
        "MS_SEL_GROUPS_SNC=1 Origin=MS_SEL_GROUPS_SNC Server=PUBLIC SncChoice=9 SncName=p:CN=x Server=evil\n";
    ConfigFileReader reader;
    ASSERT_TRUE(reader.initializeFromXML(write("<?xml version='1.0' encoding='utf-8'?>" + body)));
    EXPECT_EQ(Shown(reader), sections);
    std::string utf16("\xFF\xFE");
    for (const char unit : body) utf16 += std::string{unit, '\0'};
    ConfigFileReader wide;
    ASSERT_TRUE(wide.initializeFromXML(write(utf16)));
    EXPECT_EQ(Shown(wide), sections);
}

TEST_F(LandscapeFiles, HostileDocumentsAreRefused) {
    const std::string secret = "[secret]";
    WriteBytes(folder / "secret", secret);
    std::string bomb = "<!DOCTYPE Landscape [<!ENTITY a0 'ha'>";
    for (char level = '1'; level <= '9'; ++level)
        bomb +=
            std::string("<!ENTITY a") + level + " '&a" + char(level - 1) + ";&a" + char(level - 1) + ";'>";
    std::string many = "<Landscape";
    for (int i = 0; i < 100'000; ++i) many += " a" + std::to_string(i) + "=''";
    const std::string element = "<a" + many.substr(std::string("<Landscape").size(), 690) + "/>";
    std::string longList = "<Landscape>";
    for (int i = 0; i < 10'000; ++i) longList += element;  // with a hundred attributes each
    std::string nested = "<Landscape>";
    for (int i = 0; i < 100'000; ++i) nested += "<a>";
    std::string colliding = "<Landscape>";  // all names have one hash in the parser's table
    for (unsigned i = 0; i < 1 << 14; ++i) {
        colliding += "<";
        for (unsigned bit = 0; bit < 14; ++bit) colliding += (i >> bit & 1) != 0 ? "BA" : "Ag";
        colliding += "/>";
    }
    const struct {
        std::string document;
        const char* traced;
    } refused[] = {
        {bomb + "]><Landscape>&a9;</Landscape>", "line 1, column 21: a document type declaration"},
        {"<!DOCTYPE Landscape [<!ENTITY x SYSTEM 'secret'>]><Landscape>&x;</Landscape>",
         "declaration is not"},
        {"<!DOCTYPE Landscape SYSTEM 'secret'><Landscape/>", "a document type declaration is not allowed"},
        {"<!DOCTYPE Landscape><Landscape/>", "a document type declaration is not allowed"},
        {"\n<!DOCTYPE Landscape []><Landscape/>", "line 2, column 21: a document type declaration"},
        {"<Landscape>\n&undefined;</Landscape>", "line 2, column 12: "},
        {nested, "line 1, column 204: elements are nested too deeply"},
        {longList, "too many elements and attributes"},
        {many + "/>", "a tag or another item is too long"},
        {colliding, "too many names of elements"},
        {"<Landscape>\n\n<Services></Landscape>", "line 3, column "},
        {"<Landscape/><Landscape/>", "line 1, column "},
        {"<Landscape><Services>", "line 1, column "},
        {"<Landscape name='\xFF\xFE'/>", "line 1, column "},
        {"<Landscape a='1' a='2'/>", "line 1, column "},
        {"<Other/>", "it is no landscape"},
        {"text", "line 1, column "},
        {std::string("\0\0\0\0", 4), "line 1, column "},
        {" ", "line 1, column "},
        {"", "the file is empty"}};
    const ReaderTraces traces;
    for (const auto& c : refused) {
        ConfigFileReader reader;
        EXPECT_FALSE(reader.initializeFromXML(write(c.document))) << c.document.substr(0, 60);
        const std::string line = traces.take();
        EXPECT_EQ(line.find("ConfigFileReader::initializeFromXML() failed to read "), 0U) << line;
        EXPECT_NE(line.find(c.traced), line.npos) << line;
    }
    ConfigFileReader reader;
    EXPECT_FALSE(reader.initializeFromXML(Text(folder)));
    EXPECT_TRUE(reader.initializeFromXML(write("<Landscape/>")));
    ConfigFileReader large;
    EXPECT_FALSE(large.initializeFromXML(write("<Landscape/>" + std::string(9 << 20, ' '))));
    EXPECT_NE(traces.take().find("the file is too large"), std::string::npos);
}

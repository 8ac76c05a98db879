#include <gtest/gtest.h>

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

TEST_F(ConfigFiles, SectionsAndKeysAreListed) {
    ConfigFileReader reader;
    ASSERT_TRUE(reader.initialize(
        write("[b]\nz=1\n10=x\n\xC3\xBC=2\n9=y\nlonger_key_2=\nlonger_key_1=\n[a][c]\n[b]\nk=2\n"),
        ConfigFileReader::nativeCodePage));
    SIArray<SAnsiString> names;
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
    EXPECT_FALSE(blank.initialize(Text(folder / "none")));
    EXPECT_TRUE(blank.initialize(write(" \r\n\n")));
    EXPECT_TRUE(blank.getSections(names));
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
    const std::string body =
        "<Landscape><Workspaces><Item uuid='s2' name='Production'/></Workspaces><Services>"
        "<Service type='mirelms' uuid='s1' name=' Direct ' server='host1:3200' systemid='AB1' routerid='r1'/>"
        "<Service type='mirelms' uuid='s2' name='Group' server='PUBLIC' systemid='PR1' msid='m1' sncop='9' "
        "sncname='p:CN=x&#10;Server=evil'/><Service type='other' name='skipped'/></Services>"
        "<Messageservers><Messageserver uuid='m1' name='PR1' host='ms.example:3600'/></Messageservers>"
        "<Routers><Router uuid='r1' name='gate' router='/H/gate/S/3299'/></Routers></Landscape>";
    const char* const sections =
        "[Direct] Database=AB1 Description=Direct Origin=USEREDIT Server=/H/gate/S/3299/H/host1:3200 "
        "USEREDIT=1\n"
        "[Group] Database=PR1 Description=Production MSSrvName=ms.example MSSrvPort=3600 MSSysName=PR1 "
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
    std::string nested = "<Landscape>";
    for (int i = 0; i < 100'000; ++i) nested += "<a>";
    const std::string refused[] = {
        bomb + "]><Landscape>&a9;</Landscape>",
        "<!DOCTYPE Landscape [<!ENTITY x SYSTEM 'secret'>]><Landscape>&x;</Landscape>",
        "<!DOCTYPE Landscape SYSTEM 'secret'><Landscape/>",
        "<Landscape>&undefined;</Landscape>",
        nested,
        many.substr(0, many.size() - 4),
        "<Landscape><Services></Landscape>",
        "<Landscape/><Landscape/>",
        "<Landscape><Services>",
        "<Landscape name='\xFF\xFE'/>",
        "<Landscape a='1' a='2'/>",
        "<Other/>",
        "text",
        std::string("\0\0\0\0", 4),
        " ",
        ""};
    for (const std::string& document : refused) {
        ConfigFileReader reader;
        EXPECT_FALSE(reader.initializeFromXML(write(document))) << document.substr(0, 60);
    }
    ConfigFileReader reader;
    EXPECT_FALSE(reader.initializeFromXML(Text(folder)));
    EXPECT_TRUE(reader.initializeFromXML(write("<Landscape/>")));
    fs::resize_file(folder / "file", 17 * 1024 * 1024);
    ConfigFileReader large;
    EXPECT_FALSE(large.initializeFromXML(Text(folder / "file")));
}

#include <gtest/gtest.h>

#include <utility>

#include "support/assert_recorder.h"
#include "support/case_file.h"
#include "support/file_bytes.h"
#include "support/locale_scope.h"
#include "support/print_strings.h"
#include "tarnlib/configfilereader.h"

using namespace TarnLibA500;
using tarntest::Bytes;
using tarntest::Text;
namespace fs = std::filesystem;

namespace {

class ConfigFiles : public testing::Test {
  protected:
    const fs::path folder = tarntest::MakeScratchFolder("config");
    const SAnsiString missing = Text(folder / "none");
    ~ConfigFiles() override { fs::remove_all(folder); }
    SAnsiString write(const std::string& bytes) const {
        tarntest::WriteBytes(folder / "file", bytes);
        return Text(folder / "file");
    }
    void lookUp(const char* cases) const {
        for (const auto& c : tarntest::ReadCases(cases)) {
            ConfigFileReader reader;
            ASSERT_EQ(reader.initialize(write(c[0])), c[3] != "refused") << c[0];
            if (c[3] == "refused") continue;
            EXPECT_EQ(Bytes(reader.getValue(c[1].c_str(), c[2].c_str(), "-")), c[3]) << c[0];
        }
    }
};

using Cp932ConfigFiles = ConfigFiles;
using Utf8ConfigFiles = ConfigFiles;

constexpr const char* kTold = "9 configfilereader: ";

/// "{3:x#}" is "x1x2x3", also within another.
std::string Expanded(std::string text) {
    for (std::size_t end; (end = text.find('}')) != text.npos;) {
        const std::size_t begin = text.rfind('{', end);
        const std::string part = text.substr(begin + 1, end - begin - 1);
        std::string all;
        for (int i = 1; i <= std::stoi(part); ++i) {
            for (const char c : part.substr(part.find(':') + 1))
                all += c == '#' ? std::to_string(i) : std::string(1, c);
        }
        text.replace(begin, end + 1 - begin, all);
    }
    return text;
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
    lookUp("config/config_texts.txt");
    lookUp("config/config_texts_1252.txt");
}

TEST_F(Utf8ConfigFiles, LookUpsByTheLetter) {
    lookUp("config/config_texts.txt");
    lookUp("config/config_texts_utf8.txt");
}

TEST_F(ConfigFiles, WhatIsNotReadIsTold) {
    const std::string name = (folder / "file").string();
    tarntest::AssertRecorder recorder(tarntest::kTracesToo);
    for (const auto& c : tarntest::ReadCases("config/config_losses.txt")) {
        ConfigFileReader reader;
        const bool isRead = reader.initialize(write(Expanded(c[0])));
        std::string text = Bytes(reader.GetLastErrorText());
        EXPECT_EQ(recorder.take(kTold), isRead ? text + (text.empty() ? "" : "\n")
                                               : "ConfigFileReader::initialize() failed: " + text + "\n");
        for (std::size_t at = 0; (at = text.find(name, at)) != text.npos;)
            text.replace(at, name.size(), "FILE");
        EXPECT_EQ(text, Expanded(c[1])) << c[0];
    }
    ConfigFileReader reader;
    EXPECT_FALSE(reader.initialize(missing));
    EXPECT_EQ(reader.GetLastErrorText(), missing + ": not found");
    EXPECT_EQ(
        recorder.take(kTold).find("ConfigFileReader::initialize() failed to open config file. Reason is: "),
        0U);
    EXPECT_FALSE(reader.initializeFromXML(Text(folder)));
    EXPECT_EQ(Bytes(reader.GetLastErrorText()).find(folder.string() + ": "), 0U);
    EXPECT_TRUE(reader.initialize(write("[A]\nk=1")));
    EXPECT_EQ(reader.GetLastErrorText(), "");
    recorder.take(kTold);
    const ConfigFileReader::SectionData section("A", "a=1\nb\nc=2\n");
    EXPECT_EQ(recorder.take(kTold), "a section's text, line 2: no =, lines 2 to 3 of [A] are not read\n");
}

TEST_F(ConfigFiles, SectionsAndKeysAreListed) {
    ConfigFileReader reader;
    ASSERT_TRUE(reader.initialize(
        write("[b]\nz=1\nz=2\n10=x\n\xC3\xBC=2\n9=y\nlonger_key_2=\nlonger_key_1=\n[a][c]\n[b]\nk=2\n[d]"),
        ConfigFileReader::nativeCodePage));
    const std::string b = "[b] 10=? 9=? longer_key_1=? longer_key_2=? z=? \xC3\xBC=? k=2\n";
    EXPECT_EQ(Shown(reader), b + "[a]\n" + b);
    SIArray<SAnsiString> names;
    names.Add("old");
    EXPECT_TRUE(reader.getSections(names));
    EXPECT_EQ(names.GetSize(), 3U);
    EXPECT_TRUE(reader.enumerateSection(" b", names));
    EXPECT_EQ(names.GetSize(), 7U);
    EXPECT_FALSE(reader.enumerateSection("c", names));
    EXPECT_EQ(names.GetSize(), 0U);
    EXPECT_TRUE(reader.initialize(missing));  // it is loaded already
    const ConfigFileReader copy = reader;
    const ConfigFileReader moved = std::move(reader);
    EXPECT_EQ(Shown(copy), Shown(moved));
    tarntest::AssertRecorder recorder;
    EXPECT_EQ(reader.getValue("b", "k", "default"), "default");
    EXPECT_TRUE(recorder.sawLast("configfilereader", "m_initialized"));
    EXPECT_FALSE(reader.getSections(names) || reader.enumerateSection("b", names));
    EXPECT_EQ(recorder.count(), 2U);
    EXPECT_TRUE(reader.initialize(write(" \r\n\n")));
    EXPECT_TRUE(reader.getSections(names));
}

TEST_F(ConfigFiles, LargeSectionsFollowTheSameRules) {
    ConfigFileReader reader;
    ASSERT_TRUE(reader.initialize(write(Expanded("[large]\n{1000:key#=0\n}{500:key# =1\n}{1000:key#=2\n}"))));
    for (int i = 1; i <= 1001; ++i) {
        const SAnsiString key = ("key" + std::to_string(i)).c_str();
        EXPECT_EQ(reader.getValue("large", key, "-"), i <= 500 ? "1" : i <= 1000 ? "0" : "-") << i;
    }
    SIArray<SAnsiString> keys;
    EXPECT_TRUE(reader.enumerateSection("large", keys));
    EXPECT_EQ(keys.GetSize(), 1000U);
}

TEST_F(Cp932ConfigFiles, LookUpsByTheLetter) {
    const tarntest::LocaleScope locale(tarntest::kLocale932);
    lookUp("config/config_texts_932.txt");
}

TEST_F(ConfigFiles, LandscapesBecomeSectionsAndHostileOnesAreRefused) {
    for (const auto& c : tarntest::ReadCases("config/config_landscapes.txt")) {
        ConfigFileReader reader;
        tarntest::AssertRecorder recorder(tarntest::kTracesToo);
        EXPECT_EQ(reader.initializeFromXML(write(Expanded(c[0]))), c[1] == "read") << c[0];
        const std::string told = recorder.take(kTold);
        if (c[1] == "read") {
            EXPECT_EQ(Shown(reader), c[2]);
        } else {
            EXPECT_EQ(told.find("ConfigFileReader::initializeFromXML() failed to read "), 0U) << told;
            EXPECT_NE(told.find(c[2]), told.npos) << c[0] << "\n" << told;
        }
    }
}

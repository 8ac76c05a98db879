#include "tarnlib/pathparts.h"

#include <gtest/gtest.h>

#include "support/assert_recorder.h"
#include "support/case_file.h"
#include "support/locale_scope.h"
#include "tarnlib/stringhelper.h"

using namespace TarnLibA500;

namespace {

// The three outputs with "!" between; "*" is an output that was left alone.
std::string Split(const SAnsiString& path) {
    SAnsiString dir("*"), name("*"), ext("*");
    SplitPathEx(path, dir, name, ext);
    return std::string(dir.getString()) + "!" + name.getString() + "!" + ext.getString();
}

std::string Resolve(const char* base, const char* relative) {
    SAnsiString result("unchanged");
    const bool done = SStringHelper::getAbsolutePath(base, relative, result);
    return done ? result.getString() : result == "unchanged" ? "no" : "changed";
}

}  // namespace

TEST(PathParts, LastLevelAndParent) {
    for (const auto& c : tarntest::ReadCases("path_levels.txt")) {
        EXPECT_EQ(GetBottomLevelDir(c[0].c_str(), '/'), c[1].c_str()) << c[0];
        EXPECT_EQ(GetParentLevelDir(c[0].c_str(), '/'), c[2].c_str()) << c[0];
    }
}

TEST(PathParts, Splits) {
    for (const auto& c : tarntest::ReadCases("path_splits.txt")) EXPECT_EQ(Split(c[0].c_str()), c[1]) << c[0];
    SAnsiString path("C:\\d\\n.x"), name, ext;
    SplitPathEx(path, path, name, ext);  // an output may be the path itself
    EXPECT_EQ(path + name + ext, "C:\\d\\n.x");
}

TEST(PathParts, RefusesComponentsOf256Bytes) {
    const SAnsiString fits(std::string(255, 'n').c_str());
    EXPECT_EQ(Split(fits + ".e"), std::string("*!") + fits.getString() + "!.e");
    tarntest::AssertRecorder recorder;
    EXPECT_EQ(Split(fits + "n.e"), "*!*!*");
    EXPECT_EQ(recorder.count(), 1U);
}

TEST(PathParts, Joins) {
    EXPECT_EQ(MakePath("C:\\a", "b"), "C:\\a\\b");
    EXPECT_EQ(MakePath("a/", "/b", '/'), "a/b");
    EXPECT_EQ(MakePath("", "b"), "b");
    EXPECT_EQ(MakePath("a", ""), "a");
    EXPECT_EQ(MakePath("C:\\a\\", "b", "txt"), "C:\\a\\b.txt");
    EXPECT_EQ(MakePath("C:\\a\\", "b", ".txt"), "C:\\a\\b.txt");
    EXPECT_EQ(MakePath("C:\\a\\", "b", SAnsiString()), "C:\\a\\b");
}

TEST(PathParts, Slashes) {
    for (const auto& c : tarntest::ReadCases("path_slashes.txt")) {
        const SAnsiString path(c[0].c_str());
        EXPECT_EQ(ReduceConsecutiveSlashes(path), c[1].c_str());
        EXPECT_EQ(StripSlashOffDirBegin(path), c[2].c_str());
        EXPECT_EQ(StripSlashOffDirEnd(path), c[3].c_str());
        EXPECT_EQ(UnifyAllSlashes(path, '/'), c[4].c_str());
    }
}

TEST(PathParts, Recognises) {
    for (const char* path : {"C:\\", "c:/x", "\\\\server\\share", "\\x", "/"})
        EXPECT_TRUE(IsAbsolutePath(path));
    for (const char* path : {"", "x", "C:", "C:x", "x\\C:\\", ":\\x"})
        EXPECT_FALSE(IsAbsolutePath(path)) << path;
    for (const char* path : {".", "..\\x", "a/./b", "C:\\a\\.."}) {
        EXPECT_TRUE(PathContainsRelativeDirTokens(path)) << path;
    }
    for (const char* path : {"", "...", "a.b\\.c", "a../b"}) {
        EXPECT_FALSE(PathContainsRelativeDirTokens(path)) << path;
    }
}

TEST(PathParts, ResolvesAgainstABase) {
    for (const auto& c : tarntest::ReadCases("path_resolved.txt")) {
        EXPECT_EQ(Resolve(c[0].c_str(), c[1].c_str()), c[2]) << c[0] << ' ' << c[1];
    }
}

TEST(Cp932PathParts, TrailBytesAreNoSlashes) {
    tarntest::LocaleScope locale(tarntest::kLocale932);
    EXPECT_EQ(GetBottomLevelDir("C:\\\x95\x5C\\\x83\x5C", '\\'), "\x83\x5C");
    EXPECT_EQ(GetParentLevelDir("\x95\x5C\\\x83\x5C", '\\'), "\x95\x5C");
    EXPECT_EQ(Split("C:\\\x83\x5C\x8F\x5C.\x95\x5C"), "C:\\!\x83\x5C\x8F\x5C!.\x95\x5C");
    EXPECT_EQ(MakePath("\x83\x5C", "x"), "\x83\x5C\\x");
    EXPECT_EQ(UnifyAllSlashes("\x83\x5C\\", '/'), "\x83\x5C/");
    EXPECT_EQ(Resolve("C:\\\x83\x5C\\x", "..\\\x95\x5C"), "C:\\\x83\x5C\\\x95\x5C");
}

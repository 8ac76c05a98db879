#include "tarnlib/pathparts.h"

#include <gtest/gtest.h>

#include "support/assert_recorder.h"
#include "support/locale_scope.h"
#include "tarnlib/stringhelper.h"

using namespace TarnLibA500;

namespace {

// The three outputs with bars between; "*" is an output that was left alone.
std::string Split(const SAnsiString& path) {
    SAnsiString dir("*"), name("*"), ext("*");
    SplitPathEx(path, dir, name, ext);
    return std::string(dir.getString()) + "|" + name.getString() + "|" + ext.getString();
}

std::string Resolve(const char* base, const char* relative) {
    SAnsiString result("unchanged");
    const bool done = SStringHelper::getAbsolutePath(base, relative, result);
    return done ? result.getString() : result == "unchanged" ? "no" : "changed";
}

}  // namespace

TEST(PathParts, LastLevelAndParent) {
    const struct {
        const char *path, *bottom, *parent;
    } cases[] = {
        {"abc/", "abc/", ""}, {"/a/b//", "b", "/a"}, {"a/b", "b", "a"},    {"/abc", "abc", ""},
        {"/", "/", ""},       {"", "", ""},          {"a\\b", "a\\b", ""}, {"a//b", "b", "a/"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(GetBottomLevelDir(c.path, '/'), c.bottom) << c.path;
        EXPECT_EQ(GetParentLevelDir(c.path, '/'), c.parent) << c.path;
    }
}

TEST(PathParts, Splits) {
    const struct {
        const char *path, *parts;
    } cases[] = {
        {"C:\\a.b\\c.d.e", "C:\\a.b\\|c.d|.e"},
        {"C:name", "C:|name|*"},
        {"/x/y/", "/x/y/|*|*"},
        {"a.b/c", "a.b/|c|*"},
        {".profile", "*|*|.profile"},
        {"name.", "*|name|."},
        {"", "*|*|*"},
    };
    for (const auto& c : cases) EXPECT_EQ(Split(c.path), c.parts) << c.path;
    SAnsiString path("C:\\d\\n.x"), name, ext;
    SplitPathEx(path, path, name, ext);  // an output may be the path itself
    EXPECT_EQ(path + name + ext, "C:\\d\\n.x");
}

TEST(PathParts, RefusesComponentsOf256Bytes) {
    const SAnsiString fits(std::string(255, 'n').c_str());
    EXPECT_EQ(Split(fits + ".e"), std::string("*|") + fits.getString() + "|.e");
    tarntest::AssertRecorder recorder;
    EXPECT_EQ(Split(fits + "n.e"), "*|*|*");
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
    const struct {
        const char *path, *reduced, *noBegin, *noEnd, *unified;
    } cases[] = {
        {"\\\\s\\\\t/\\", "\\\\s\\t/", "s\\\\t/\\", "\\\\s\\\\t", "//s//t//"},
        {"//a", "/a", "a", "//a", "//a"},
        {"/", "/", "", "", "/"},
        {"a", "a", "a", "a", "a"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(ReduceConsecutiveSlashes(c.path), c.reduced);
        EXPECT_EQ(StripSlashOffDirBegin(c.path), c.noBegin);
        EXPECT_EQ(StripSlashOffDirEnd(c.path), c.noEnd);
        EXPECT_EQ(UnifyAllSlashes(c.path, '/'), c.unified);
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
    const struct {
        const char *base, *relative, *result;
    } cases[] = {
        {"C:\\a\\b", "..\\c\\.\\d", "C:\\a\\c\\d"},
        {"C:\\a", "..", "C:\\"},
        {"C:\\a", "..\\..", "no"},
        {"C:\\a", "D:/x//y/../z", "D:/x/z"},
        {"", "D:\\x", "D:\\x"},
        {"", "x", "no"},
        {"C:\\a", "D:x", "no"},
        {"C:\\a\\", "", "C:\\a"},
        {"/srv/ftp", "../in/f", "/srv/in/f"},
        {"/srv", "../..", "no"},
        {"\\\\host\\share\\d", "..\\e", "\\\\host\\share\\e"},
        {"\\\\host\\share\\d", "..\\..", "no"},
        {"\\\\?\\C:\\d", "..", "\\\\?\\C:\\"},
        {"\\\\?\\UNC\\host\\share", "..", "no"},
        {"conf/x", "../..", "."},
        {"conf", "../..", "no"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(Resolve(c.base, c.relative), c.result) << c.base << " " << c.relative;
}

TEST(Cp932PathParts, TrailBytesAreNoSlashes) {
    tarntest::LocaleScope locale(tarntest::kLocale932);
    EXPECT_EQ(GetBottomLevelDir("C:\\\x95\x5C\\\x83\x5C", '\\'), "\x83\x5C");
    EXPECT_EQ(GetParentLevelDir("\x95\x5C\\\x83\x5C", '\\'), "\x95\x5C");
    EXPECT_EQ(Split("C:\\\x83\x5C\x8F\x5C.\x95\x5C"), "C:\\|\x83\x5C\x8F\x5C|.\x95\x5C");
    EXPECT_EQ(MakePath("\x83\x5C", "x"), "\x83\x5C\\x");
    EXPECT_EQ(UnifyAllSlashes("\x83\x5C\\", '/'), "\x83\x5C/");
    EXPECT_EQ(Resolve("C:\\\x83\x5C\\x", "..\\\x95\x5C"), "C:\\\x83\x5C\\\x95\x5C");
}

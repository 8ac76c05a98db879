#include "tarnlib/pathparts.h"

#include <gtest/gtest.h>

#include "support/assert_recorder.h"
#include "support/calls.h"
#include "support/locale_scope.h"
#include "tarnlib/stringhelper.h"

using namespace TarnLibA500;
using tarntest::Arguments;

namespace {

// The three outputs with "!" between; "*" is an output that was left alone.
SAnsiString Split(const SAnsiString& path) {
    SAnsiString dir("*"), name("*"), ext("*");
    SplitPathEx(path, dir, name, ext);
    return dir + "!" + name + "!" + ext;
}

SAnsiString Resolve(const Arguments& a) {
    SAnsiString result("unchanged");
    const bool done = SStringHelper::getAbsolutePath(a[0], a[1], result);
    return done ? result : result == "unchanged" ? "no" : "changed";
}

const tarntest::Calls kCalls = {
    {"bottom", [](const Arguments& a) { return GetBottomLevelDir(a[0], a[1].getAt(0)); }},
    {"parent", [](const Arguments& a) { return GetParentLevelDir(a[0], a[1].getAt(0)); }},
    {"split", [](const Arguments& a) { return Split(a[0]); }},
    {"join", [](const Arguments& a) { return MakePath(a[0], a[1]); }},
    {"join by", [](const Arguments& a) { return MakePath(a[0], a[1], a[2].getAt(0)); }},
    {"join extension", [](const Arguments& a) { return MakePath(a[0], a[1], a[2]); }},
    {"reduce", [](const Arguments& a) { return ReduceConsecutiveSlashes(a[0]); }},
    {"strip begin", [](const Arguments& a) { return StripSlashOffDirBegin(a[0]); }},
    {"strip end", [](const Arguments& a) { return StripSlashOffDirEnd(a[0]); }},
    {"unify", [](const Arguments& a) { return UnifyAllSlashes(a[0], a[1].getAt(0)); }},
    {"is absolute", [](const Arguments& a) { return tarntest::YesNo(IsAbsolutePath(a[0])); }},
    {"has tokens", [](const Arguments& a) { return tarntest::YesNo(PathContainsRelativeDirTokens(a[0])); }},
    {"resolve", Resolve},
};

}  // namespace

TEST(PathParts, AnswersAsInTheFile) {
    tarntest::ExpectCalls("strings/path_calls.txt", kCalls);
    SAnsiString path("C:\\d\\n.x"), name, ext;
    SplitPathEx(path, path, name, ext);  // an output may be the path itself
    EXPECT_EQ(path + name + ext, "C:\\d\\n.x");
}

TEST(PathParts, RefusesComponentsOf256Bytes) {
    const SAnsiString fits(std::string(255, 'n').c_str());
    EXPECT_EQ(Split(fits + ".e"), "*!" + fits + "!.e");
    tarntest::AssertRecorder recorder;
    EXPECT_EQ(Split(fits + "n.e"), "*!*!*");
    EXPECT_EQ(recorder.count(), 1U);
}

TEST(Cp932PathParts, TrailBytesAreNoSlashes) {
    tarntest::LocaleScope locale(tarntest::kLocale932);
    tarntest::ExpectCalls("strings/path_calls_932.txt", kCalls);
}

TEST(Utf8PathParts, CountUnitsAndNotBytes) {
    tarntest::ExpectCalls("strings/path_calls.txt", kCalls);
    tarntest::ExpectCalls("strings/path_calls_utf8.txt", kCalls);
    SAnsiString longest;
    for (int i = 0; i < 255; ++i) longest += "\xE6\x97\xA5";
    EXPECT_EQ(Split(longest + ".e"), "*!" + longest + "!.e");
    tarntest::AssertRecorder recorder;
    EXPECT_EQ(Split(longest + "n.e"), "*!*!*");
}

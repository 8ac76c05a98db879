#include "tarnlib/csharedlibrary.h"

#include <gtest/gtest.h>

#include "support/places.h"
#include "support/print_strings.h"
#include "tarnlib/senvironment.h"
#include "tarnlib/sfileexception.h"

#include <windows.h>

using namespace TarnLibA500;

TEST(SharedLibraries, AreLoadedResolvedAndUnloaded) {
    CSharedLibrary library(SAnsiString("Ole32.dll"));
    EXPECT_NE(library.Resolve("CoCreateGuid"), nullptr);
    EXPECT_EQ(library.TryResolve("NoSuchFunction"), nullptr);
    CSharedLibrary moved(std::move(library));
    EXPECT_FALSE(library.IsLoaded());
    EXPECT_TRUE(moved.IsLoaded());
    try {
        moved.Resolve("NoSuchFunction");
        FAIL();
    } catch (const CSharedLibraryException& failure) {
        EXPECT_EQ(failure.GetErrorCode(), 127U);
        EXPECT_EQ(failure.toString(), "Ole32.dll: has no function NoSuchFunction (127): " +
                                          SFileException::GetSystemMessage(127).trimRight());
    }
    EXPECT_THROW(moved.Load("no-such-library.dll"), CSharedLibraryException);
    EXPECT_FALSE(moved.IsLoaded());
    EXPECT_THROW(moved.LoadAbsolute("Ole32.dll"), CSharedLibraryException);
    EXPECT_THROW(moved.Load(SAnsiString("Ole32.dll\0x", 11)), CSharedLibraryException);
    moved.LoadAbsolute((tarntest::Beside("plugins") / "log_xn_sample.dll").string().c_str());
    EXPECT_NE(moved.TryResolve("GetDLLVersion"), nullptr);
}

TEST(Environment, ValuesOfAnyLengthAndNoneAreToldApart) {
    SAnsiString value("untouched");
    EXPECT_FALSE(SEnvironment::Get("TARN_TEST_VARIABLE", value));
    EXPECT_EQ(value, "untouched");
    const SAnsiString large(std::string(20'000, 'x').c_str());
    for (const SAnsiString& text :
         {SAnsiString("caf\xE9"), SAnsiString(std::string(512, 'y').c_str()), large}) {
        EXPECT_TRUE(SEnvironment::Set("TARN_TEST_VARIABLE", text));
        EXPECT_TRUE(SEnvironment::Get("tarn_test_variable", value));
        EXPECT_EQ(value, text);
    }
    EXPECT_EQ(SEnvironment::Expand("%TARN_TEST_VARIABLE%%TARN_NO_SUCH%."), large + "%TARN_NO_SUCH%.");
    EXPECT_TRUE(SEnvironment::Set("TARN_TEST_VARIABLE", ""));
    EXPECT_TRUE(SEnvironment::Get("TARN_TEST_VARIABLE", value));
    EXPECT_TRUE(value.isEmpty());
    EXPECT_TRUE(SEnvironment::Remove("TARN_TEST_VARIABLE"));
    EXPECT_TRUE(SEnvironment::Remove("TARN_TEST_VARIABLE"));
    EXPECT_FALSE(SEnvironment::Get("TARN_TEST_VARIABLE", value));
    EXPECT_FALSE(SEnvironment::Set("", "x"));
    EXPECT_FALSE(SEnvironment::Set(SAnsiString("TARN_TEST_VARIABLE\0x", 20), "x"));
    EXPECT_FALSE(SEnvironment::Get("TARN_TEST_VARIABLE", value));
    SetEnvironmentVariableW(L"TARN_TEST_VARIABLE", L"\x0141\x20AC\xFF3C");
    EXPECT_TRUE(SEnvironment::Get("TARN_TEST_VARIABLE", value));
    EXPECT_EQ(value, "?\x80?");  // no character by likeness
}

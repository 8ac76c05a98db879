#include <gtest/gtest.h>

#include "support/case_file.h"
#include "support/file_bytes.h"
#include "support/places.h"
#include "support/print_strings.h"
#include "tarnlib/csharedlibrary.h"
#include "tarnlib/registry.h"
#include "tarnlib/senvironment.h"
#include "tarnlib/slogger.h"

using namespace TarnLibA500;
namespace fs = std::filesystem;

// Names in many scripts, as the library and as the system have them. (Files: files/run_file_cases.py.)
TEST(Utf8Scripts, PassUnchangedAtEveryEdge) {
    const fs::path folder = tarntest::MakeScratchFolder("scripts");
    for (const auto& fields : tarntest::ReadCases("system/scripts.txt")) {
        const SAnsiString name(fields[0].c_str());
        const std::wstring wide = fs::u8path(fields[0]).wstring();
        const SAnsiString module = tarntest::Text(folder) + "\\" + name + ".dll";
        fs::copy_file(tarntest::Beside("plugins") / "log_xn_sample.dll", folder / (wide + L".dll"));
        CSharedLibrary().LoadAbsolute(module);

        ASSERT_TRUE(SEnvironment::Set(name, name));
        wchar_t value[64] = {};
        EXPECT_EQ(std::wstring(value, GetEnvironmentVariableW(wide.c_str(), value, 64)), wide);
        EXPECT_EQ(SEnvironment::Expand("%" + name + "%"), name);

        Registry key("Software\\tarnlib-test-" + name, name, HKEY_CURRENT_USER, true);
        EXPECT_TRUE(key.WriteValue(name, name));
        const Registry::ValueIterator written = key.EnumValues();
        EXPECT_TRUE(written && written.GetName() == name && written.GetValue() == name) << fields[0];
        EXPECT_EQ(RegDeleteKeyW(HKEY_CURRENT_USER, (L"Software\\tarnlib-test-" + wide).c_str()), 0);

        SLogger::Initialize(CParamLineArgs("tests -trace m -tracecmpname \"" + name + "\" -loggingPath \"" +
                                           module + ".logs\""));
        SLog(loglevel(), logcategory(), 1, name.getString());
        SLogger::Terminate();
        const fs::path log = fs::directory_iterator(folder / (wide + L".dll.logs"))->path();
        EXPECT_EQ(log.filename().wstring().find(wide + L"_"), 0U) << fields[0];
        EXPECT_NE(tarntest::ReadBytes(log).find(" p=" + fields[0]), std::string::npos);
    }
    fs::remove_all(folder);
}

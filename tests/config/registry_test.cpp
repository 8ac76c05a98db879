#include "tarnlib/registry.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include "support/assert_recorder.h"
#include "support/locale_scope.h"
#include "support/print_strings.h"
#include "support/scratch_folder.h"
#include "tarnlib/senvironment.h"

#include <windows.h>

#include <aclapi.h>

using namespace TarnLibA500;

namespace {

/// Takes what the registry reports, by assertion and by trace.
class Reports {
  public:
    Reports() {
        take();
        sink_.assertion = [](const char* text) { text_ += std::string(text) + "\n"; };
        sink_.shouldTrace = [](int level, const char* unit) {
            return level == 7 && std::string(unit) == "registry";
        };
        sink_.trace = [](int, const char*, const char* text) {
            text_ += std::string("trace: ") + text + "\n";
        };
        before_ = InstallDiagnosticSink(&sink_);
    }
    ~Reports() { InstallDiagnosticSink(before_); }
    static std::string take() { return std::exchange(text_, ""); }

  private:
    static inline std::string text_;
    SDiagnosticSink sink_;
    const SDiagnosticSink* before_;
};

/// A key of the test's own, gone at its end.
class RegistryKeys : public testing::Test {
  protected:
    void TearDown() override { Registry(top_, "top", HKEY_CURRENT_USER, false).DeleteKeyRecursive(); }
    Registry key(const char* below = "") const {
        return Registry((top_ + below).getString(), "name", HKEY_CURRENT_USER, false);
    }
    std::string path(const char* below = "") const { return ("HKCU\\" + top_ + below).getString(); }
    /// What the system's own tool prints.
    static std::string Reg(const std::string& arguments) {
        std::FILE* const pipe = _popen(("reg " + arguments + " 2>&1").c_str(), "r");
        std::string text;
        char part[256];
        while (std::fgets(part, sizeof part, pipe) != nullptr) text += part;
        _pclose(pipe);
        return text;
    }
    /// What the system's tool exports of the key: UTF-16, of which the ASCII part is kept.
    std::string exported() const {
        const std::string file = (tarntest::MakeScratchFolder("registry") / "export.reg").string();
        Reg("export " + path() + " \"" + file + "\" /y");
        std::ifstream in(file, std::ios::binary);
        std::string text;
        for (char c = 0; in.get(c);) text += c > 0 ? std::string(1, c) : std::string();
        return text;
    }
    static std::vector<BYTE> Utf16(const std::string& text) {
        std::vector<BYTE> bytes;
        for (const char c : text) bytes.insert(bytes.end(), {static_cast<BYTE>(c), 0});
        return bytes;
    }
    /// The key's path below HKEY_USERS, where this user's keys have another name.
    SAnsiString pathInUsers() const {
        Registry users("", "", HKEY_USERS, false);
        for (Registry::KeyIterator hive = users.EnumSubKeys(); hive; ++hive) {
            const SAnsiString found = hive.GetKey() + "\\" + top_;
            if (Registry(found.getString(), "", HKEY_USERS, false).KeyExists()) return found;
        }
        return SAnsiString();
    }
    void setRaw(const char* name, DWORD type, std::vector<BYTE> bytes) const {
        HKEY raw = nullptr;
        RegCreateKeyExA(HKEY_CURRENT_USER, top_.getString(), 0, nullptr, 0, KEY_WRITE, nullptr, &raw,
                        nullptr);
        const auto size = static_cast<DWORD>(bytes.size());
        bytes.insert(bytes.end(), {0xFF, 0xFF});  // the system looks there for a terminator
        const std::wstring wideName(name, name + std::strlen(name));
        RegSetValueExW(raw, wideName.c_str(), 0, type, bytes.data(), size);
        RegCloseKey(raw);
    }

    SAnsiString top_ =
        "Software\\tarnlib-test\\" + SAnsiString(std::to_string(GetCurrentProcessId()).c_str());
};

}  // namespace

TEST_F(RegistryKeys, OurValuesAreSeenByOthersAndTheirsByUs) {
    Registry settings = key();
    EXPECT_FALSE(settings.KeyExists());
    const SAnsiString text("caf\xE9 \x80");
    EXPECT_TRUE(settings.WriteValue("text", SAnsiString("some words")));
    EXPECT_TRUE(settings.WriteValue("number", 4294967295UL));
    EXPECT_TRUE(settings.KeyExists());
    const std::string shown = Reg("query " + path());
    EXPECT_NE(shown.find("text    REG_SZ    some words"), shown.npos) << shown;
    EXPECT_NE(shown.find("number    REG_DWORD    0xffffffff"), shown.npos) << shown;
    EXPECT_EQ(settings.ReadValue("NUMBER"), "4294967295");
    SEnvironment::Set("TARN_TEST", "expanded");
    Reg("add " + path() + " /v theirs /t REG_EXPAND_SZ /d \"%TARN_TEST% text\" /f");
    Reg("add " + path("\\below") + " /v n /t REG_DWORD /d 17 /f");
    EXPECT_EQ(settings.ReadValue("theirs"), "expanded text");
    EXPECT_EQ(key("\\below").ReadValue("n"), "17");
    unsigned long type = 0;
    EXPECT_TRUE(settings.GetType("theirs", type));
    EXPECT_EQ(type, 2U);
    EXPECT_FALSE(settings.GetType("missing", type));
    EXPECT_EQ(type, 2U);
}

TEST_F(RegistryKeys, ValuesOfEveryKind) {
    Registry settings = key();
    const SAnsiString large(std::string(5000, 'x').c_str());
    EXPECT_TRUE(settings.WriteValue("large", large));
    EXPECT_EQ(settings.ReadValue("large"), large);
    EXPECT_TRUE(settings.WriteValue("empty", SAnsiString()));
    setRaw("none at all", REG_SZ, {});
    setRaw("unterminated", REG_SZ, {'a', 0, 'b', 0});
    setRaw("short number", REG_DWORD, {1, 2, 3});
    setRaw("binary", REG_BINARY, {'a', 0});
    setRaw("several", REG_MULTI_SZ, {'a', 0, 'b', 0, 0});
    EXPECT_EQ(settings.ReadValue("unterminated"), "ab");
    for (const char* name : {"empty", "none at all", "short number", "binary", "several", "missing"})
        EXPECT_EQ(settings.ReadValue(name), "") << name;
    EXPECT_NE(exported().find("\"binary\"=hex:61,00"), std::string::npos) << exported();
    EXPECT_NE(exported().find("\"large\"=\"" + std::string(5000, 'x') + "\""), std::string::npos);
    tarntest::AssertRecorder recorder;
    setRaw("expands", REG_EXPAND_SZ, Utf16(std::string(259, 'y')));
    EXPECT_EQ(settings.ReadValue("expands").getLength(), 259U);
    EXPECT_EQ(recorder.count(), 0U);
    setRaw("expands", REG_EXPAND_SZ, Utf16(std::string(260, 'y')));
    EXPECT_EQ(settings.ReadValue("expands"), "");
    EXPECT_TRUE(recorder.sawLast("registry", "numChars && numChars <= MAX_PATH"));
}

TEST_F(RegistryKeys, AMissingSettingIsCreatedWithItsDefault) {
    Registry settings = key();
    EXPECT_EQ(settings.ReadValue("host", SAnsiString("localhost")), "localhost");
    EXPECT_EQ(settings.ReadValue("port", 25UL), "25");
    EXPECT_EQ(settings.ReadValue("host", SAnsiString("other")), "localhost");
    EXPECT_EQ(settings.ReadValue("port", 26UL), "25");
    Reg("delete " + path() + " /f");  // under our open handle
    Reg("add " + path() + " /v host /d theirs /f");
    EXPECT_EQ(settings.ReadValue("host", SAnsiString("other")), "theirs");
    settings.WriteValue("host", SAnsiString());
    EXPECT_EQ(settings.ReadValue("host", SAnsiString("other")), "");  // empty is not missing
    tarntest::AssertRecorder recorder;
    EXPECT_EQ(settings.ReadValue("cut", SAnsiString("a\0b", 3)), "a");
    EXPECT_TRUE(recorder.sawLast("registry", "defaultValue == retval"));
}

TEST_F(RegistryKeys, KeysAndValuesAreEnumeratedAndDeleted) {
    for (const char* below : {"\\one\\deep", "\\two", "\\three"})
        key(below).WriteValue("v", SAnsiString(below));
    Registry settings = key();
    settings.WriteValue("a", 1UL);
    settings.WriteValue("b", SAnsiString("text"));
    std::string names;
    for (Registry::KeyIterator at = settings.EnumSubKeys(); at; ++at)
        names += std::string(at.GetKey().getString()) + " ";
    EXPECT_EQ(names, "one three two ");
    Registry::ValueIterator first = settings.EnumValues();
    Registry::ValueIterator value(std::move(first));
    EXPECT_FALSE(first);
    std::string values;
    for (; value; ++value)
        values += std::string(value.GetName().getString()) + "=" + value.GetValue().getString() + " ";
    EXPECT_EQ(values, "a=1 b=text ");
    EXPECT_FALSE(value.NextValue());
    tarntest::AssertRecorder recorder;
    EXPECT_FALSE(settings.DeleteKey());
    EXPECT_TRUE(recorder.sawLast("registry", "false"));
    EXPECT_TRUE(settings.DeleteValue("a"));
    EXPECT_FALSE(settings.DeleteValue("a"));
    EXPECT_TRUE(settings.DeleteKeyRecursive(false));
    EXPECT_FALSE(settings.EnumSubKeys());
    EXPECT_TRUE(settings.DeleteKey());
    EXPECT_FALSE(key().KeyExists());
    EXPECT_FALSE(key("\\one").DeleteKeyRecursive());
}

TEST_F(RegistryKeys, CopiesAreExact) {
    setRaw("binary", REG_BINARY, {1, 0, 255});
    setRaw("unterminated", REG_SZ, {'a', 0});
    key("\\below\\deep").WriteValue("v", SAnsiString("text"));
    const SAnsiString copy = top_ + "-copy";
    EXPECT_TRUE(Registry::CopyKey(HKEY_CURRENT_USER, top_.getString(), HKEY_CURRENT_USER, copy.getString()));
    EXPECT_NE(Reg(std::string("query HKCU\\") + copy.getString()).find("binary    REG_BINARY    0100FF"),
              std::string::npos);
    EXPECT_EQ(Registry((copy + "\\below\\deep").getString(), "", HKEY_CURRENT_USER, false).ReadValue("v"),
              "text");
    DWORD bytes = 0;
    RegGetValueA(HKEY_CURRENT_USER, copy.getString(), "unterminated", RRF_RT_ANY, nullptr, nullptr, &bytes);
    EXPECT_EQ(bytes, 1U);  // still without a terminator
    EXPECT_TRUE(Registry::CopyValue(HKEY_CURRENT_USER, top_.getString(), "binary", HKEY_CURRENT_USER,
                                    (copy + "\\other").getString()));
    EXPECT_FALSE(Registry::CopyValue(HKEY_CURRENT_USER, top_.getString(), "missing", HKEY_CURRENT_USER,
                                     copy.getString()));
    EXPECT_FALSE(Registry::CopyKey(HKEY_CURRENT_USER, top_.getString(), HKEY_CURRENT_USER,
                                   (top_ + "\\x").getString()));
    EXPECT_FALSE(Registry::CopyKey(HKEY_CURRENT_USER, (top_ + "\\no").getString(), HKEY_CURRENT_USER,
                                   copy.getString()));
    EXPECT_TRUE(Registry(copy.getString(), "", HKEY_CURRENT_USER, false).DeleteKeyRecursive());
}

TEST_F(RegistryKeys, NoKeyIsCopiedIntoItself) {
    const tarntest::LocaleScope locale(tarntest::kLocale1252);
    const SAnsiString classes = "tarnlib-test-" + SAnsiString(std::to_string(GetCurrentProcessId()).c_str());
    const SAnsiString machineClasses = "Software\\Classes\\" + classes;
    key("\\\xC4").WriteValue("v", 1UL);
    Registry(machineClasses.getString(), "", HKEY_LOCAL_MACHINE, false).WriteValue("v", 1UL);
    const SAnsiString user = pathInUsers();
    ASSERT_FALSE(user.isEmpty());
    const struct {
        HKEY sourceRoot;
        SAnsiString source;
        HKEY targetRoot;
        SAnsiString target;
    } refused[] = {
        {HKEY_CURRENT_USER, top_, HKEY_CURRENT_USER, top_},
        {HKEY_CURRENT_USER, top_, HKEY_CURRENT_USER, top_ + "\\x"},
        {HKEY_CURRENT_USER, top_ + "\\", HKEY_CURRENT_USER, top_ + "\\x\\y"},
        {HKEY_CURRENT_USER, top_ + "\\", HKEY_CURRENT_USER, top_},
        {HKEY_CURRENT_USER, top_ + "\\\xC4", HKEY_CURRENT_USER, top_ + "\\\xE4\\x"},
        {HKEY_CURRENT_USER, top_, HKEY_USERS, user + "\\x"},
        {HKEY_USERS, user, HKEY_CURRENT_USER, top_ + "\\x"},
        {HKEY_USERS, user.left(user.find('\\')), HKEY_CURRENT_USER, "tarnlib-test-not-there"},
        {HKEY_CLASSES_ROOT, classes, HKEY_LOCAL_MACHINE, machineClasses + "\\x"},
        {HKEY_LOCAL_MACHINE, machineClasses, HKEY_CLASSES_ROOT, classes + "\\x"},
        {HKEY_LOCAL_MACHINE, "Software\\Classes", HKEY_CLASSES_ROOT, "tarnlib-test-not-there"},
    };
    for (const auto& c : refused) {
        EXPECT_FALSE(
            Registry::CopyKey(c.sourceRoot, c.source.getString(), c.targetRoot, c.target.getString()))
            << c.source.getString() << " " << c.target.getString();
        const SAnsiString last = c.target.right(1);
        EXPECT_FALSE(last == "x" && Registry(c.target.getString(), "", c.targetRoot, false).KeyExists())
            << c.source.getString() << " " << c.target.getString();
    }
    EXPECT_TRUE(Registry::CopyKey(HKEY_CURRENT_USER, (top_ + "\\\xC4").getString(), HKEY_CURRENT_USER,
                                  (top_ + "\\\xC4\xC4").getString()));
    EXPECT_TRUE(Registry(machineClasses.getString(), "", HKEY_LOCAL_MACHINE, false).DeleteKeyRecursive());
}

TEST_F(RegistryKeys, LinksAreNotFollowed) {
    key("\\kept").WriteValue("v", 1UL);
    key("\\tree\\below").WriteValue("v", 2UL);
    const std::vector<BYTE> target =
        Utf16("\\REGISTRY\\USER\\" + std::string(pathInUsers().getString()) + "\\kept");
    HKEY raw = nullptr;
    ASSERT_EQ(RegCreateKeyExA(HKEY_CURRENT_USER, (top_ + "\\tree\\link").getString(), 0, nullptr,
                              REG_OPTION_CREATE_LINK, KEY_WRITE, nullptr, &raw, nullptr),
              0);
    RegSetValueExW(raw, L"SymbolicLinkValue", 0, REG_LINK, target.data(), static_cast<DWORD>(target.size()));
    RegCloseKey(raw);
    EXPECT_EQ(key("\\tree\\link").ReadValue("v"), "1");
    const SAnsiString copy = top_ + "\\copy";
    EXPECT_TRUE(Registry::CopyKey(HKEY_CURRENT_USER, (top_ + "\\tree").getString(), HKEY_CURRENT_USER,
                                  copy.getString()));
    EXPECT_EQ(key("\\copy\\below").ReadValue("v"), "2");
    key("\\kept").WriteValue("v", 3UL);
    EXPECT_EQ(key("\\copy\\link").ReadValue("v"), "3");  // a link again
    EXPECT_TRUE(key("\\copy").DeleteKeyRecursive());
    EXPECT_TRUE(key("\\tree").DeleteKeyRecursive());
    EXPECT_FALSE(key("\\copy").KeyExists() || key("\\tree").KeyExists());
    EXPECT_EQ(key("\\kept").ReadValue("v"), "3");
}

TEST_F(RegistryKeys, OnlyReadingAndWritingMakeAMissingKey) {
    const auto made = [this](auto use) {
        Registry settings((top_ + "\\made").getString(), "name", HKEY_CURRENT_USER, true);
        use(settings);
        return key("\\made").DeleteKey();
    };
    unsigned long type = 0;
    EXPECT_FALSE(made([](Registry& at) { at.KeyExists(); }));
    EXPECT_FALSE(made([&](Registry& at) { at.GetType("v", type); }));
    EXPECT_FALSE(made([](Registry& at) { at.EnumSubKeys(); }));
    EXPECT_FALSE(made([](Registry& at) { at.EnumValues(); }));
    EXPECT_FALSE(made([](Registry& at) { at.DeleteValue("v"); }));
    EXPECT_FALSE(made([](Registry& at) { at.DeleteKeyRecursive(false); }));
    EXPECT_TRUE(made([](Registry& at) { at.ReadValue("v"); }));
    EXPECT_TRUE(made([](Registry& at) { at.WriteValue("v", 1UL); }));
}

TEST_F(RegistryKeys, ARefusedAccessIsReported) {
    key("\\denied").WriteValue("v", SAnsiString("secret"));
    HKEY raw = nullptr;
    RegOpenKeyExA(HKEY_CURRENT_USER, (top_ + "\\denied").getString(), 0, WRITE_DAC | READ_CONTROL, &raw);
    SECURITY_DESCRIPTOR nobody{};
    ACL empty{};
    InitializeAcl(&empty, sizeof empty, ACL_REVISION);
    InitializeSecurityDescriptor(&nobody, SECURITY_DESCRIPTOR_REVISION);
    SetSecurityDescriptorDacl(&nobody, TRUE, &empty, FALSE);
    ASSERT_EQ(RegSetKeySecurity(raw, DACL_SECURITY_INFORMATION, &nobody), ERROR_SUCCESS);
    const std::string denied = top_.getString() + std::string("\\denied");
    const std::string reason = "HKEY_CURRENT_USER\\" + denied;
    {
        const Reports reports;
        const auto saw = [](const std::string& report, const std::string& trace) {
            const std::string text = Reports::take();
            EXPECT_NE(text.find(" : " + report + ")."), text.npos) << text;
            EXPECT_NE(text.find("trace: cannot " + trace), text.npos) << text;
            EXPECT_NE(text.find("(5)\n"), text.npos) << text;
        };
        EXPECT_FALSE(key("\\denied").KeyExists());
        saw("KeyExists failed. Access Denied", "open " + reason + ": ");
        EXPECT_EQ(key("\\denied").ReadValue("v"), "");
        saw("RegOpenKeyEx(" + denied + ") failed. Error code: 5", "open " + reason + ": ");
        EXPECT_FALSE(key("\\denied").WriteValue("v", 1UL));
        saw("RegSetValueEx(v) failed. Error code: 5", "write " + reason + ", value \"v\": ");
        EXPECT_EQ(key("\\missing").ReadValue("v"), "");
        EXPECT_FALSE(key("\\missing").KeyExists() || key("\\missing").DeleteKey());
        EXPECT_EQ(Reports::take(), "");  // an answer, no failure
    }
    SetSecurityDescriptorDacl(&nobody, TRUE, nullptr, FALSE);
    RegSetKeySecurity(raw, DACL_SECURITY_INFORMATION, &nobody);
    RegCloseKey(raw);
}

TEST_F(RegistryKeys, MisuseAndOtherMachines) {
    tarntest::AssertRecorder recorder;
    EXPECT_FALSE(key("\\").KeyExists());
    EXPECT_TRUE(recorder.sawLast("registry", "m_subKey.getAt (m_subKey.getNChars() - 1) != _T('\\\\')"));
    Registry local = key();
    local.WriteValue("v", 3UL);
    EXPECT_EQ(local.GetKeyName(), "name");
    local.SetRemoteMachine("no-such-machine.invalid");
    EXPECT_TRUE(local.IsRemoteReg());
    EXPECT_EQ(local.ReadValue("v"), "");
    const Registry copy(local);
    EXPECT_EQ(copy.GetRemoteMachineName(), "no-such-machine.invalid");
    local.SetRemoteKeyHandle(HKEY_CURRENT_USER);
    EXPECT_EQ(local.ReadValue("v"), "3");
    local.SetRemoteMachine("");
    EXPECT_FALSE(local.IsRemoteReg());
    EXPECT_EQ(local.ReadValue("v"), "3");
}

#include "tarnlib/registry.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "support/assert_recorder.h"
#include "support/case_file.h"
#include "support/locale_scope.h"
#include "support/print_strings.h"
#include "tarnlib/senvironment.h"

#include <windows.h>

#include <aclapi.h>

using namespace TarnLibA500;

namespace {

/// A key of the test's own, gone at its end.
class RegistryKeys : public testing::Test {
  protected:
    const std::string top = "Software\\tarnlib-test\\" + std::to_string(GetCurrentProcessId());
    ~RegistryKeys() override { key().DeleteKeyRecursive(); }
    SAnsiStringCI path(const char* below = "") const { return (top + below).c_str(); }
    Registry key(const char* below = "") const { return At(HKEY_CURRENT_USER, path(below)); }
    static Registry At(HKEY root, const SAnsiStringCI& path) { return Registry(path, "name", root, false); }
    bool copy(const char* from, const char* to) const {
        return Registry::CopyKey(HKEY_CURRENT_USER, path(from), HKEY_CURRENT_USER, path(to));
    }
    /// The key's path below HKEY_USERS, where this user's keys have another name.
    SAnsiStringCI pathInUsers() const {
        for (Registry::KeyIterator hive = At(HKEY_USERS, "").EnumSubKeys(); hive; ++hive) {
            const SAnsiStringCI found = hive.GetKey() + "\\" + path();
            if (At(HKEY_USERS, found).KeyExists()) return found;
        }
        return SAnsiStringCI();
    }
    static std::string Utf16(const std::string& text) {
        std::string bytes;
        for (const char c : text) bytes += {c, '\0'};
        return bytes;
    }
    void setRaw(const wchar_t* name, DWORD type, std::string bytes) const {
        const auto size = static_cast<DWORD>(bytes.size());
        bytes += "\xFF\xFF";  // the system looks there for a terminator
        RegSetKeyValueW(HKEY_CURRENT_USER, std::wstring(top.begin(), top.end()).c_str(), name, type,
                        bytes.data(), size);
    }
    /// What the system has: the type and the bytes, a text in the code page. (The function for bytes may add a terminator
    /// that is not there.)
    std::string raw(const char* below, const char* name) const {
        const std::string path = top + below, value = name;
        HKEY opened = nullptr;
        RegOpenKeyExA(HKEY_CURRENT_USER, path.c_str(), 0, KEY_READ, &opened);
        std::wstring units(10'000, L'\0');
        DWORD type = 0, size = static_cast<DWORD>(units.size() * sizeof(wchar_t));
        const LONG error = RegQueryValueExW(opened, std::wstring(value.begin(), value.end()).c_str(), nullptr,
                                            &type, reinterpret_cast<BYTE*>(units.data()), &size);
        RegCloseKey(opened);
        if (error != 0) return "none";
        std::string bytes(reinterpret_cast<const char*>(units.data()), size);
        if (type == REG_SZ)
            bytes.resize(static_cast<std::size_t>(
                WideCharToMultiByte(CP_ACP, 0, units.c_str(), static_cast<int>(size / 2), bytes.data(),
                                    static_cast<int>(size), nullptr, nullptr)));
        return std::to_string(type) + " " + bytes;
    }
};

}  // namespace

TEST_F(RegistryKeys, ValuesAreWrittenAndReadExactly) {
    Registry settings = key();
    EXPECT_FALSE(settings.KeyExists());
    const std::string large(5000, 'x');
    EXPECT_TRUE(settings.WriteValue("text", SAnsiString("caf\xE9 \x80")));
    EXPECT_TRUE(settings.WriteValue("empty", SAnsiString()));
    EXPECT_TRUE(settings.WriteValue("large", SAnsiString(large.c_str())));
    EXPECT_TRUE(settings.WriteValue("number", 4294967295UL));
    EXPECT_TRUE(settings.KeyExists());
    EXPECT_EQ(raw("", "text"), std::string("1 caf\xE9 \x80\0", 9));
    EXPECT_EQ(raw("", "empty"), std::string("1 \0", 3));
    EXPECT_EQ(raw("", "large"), "1 " + large + '\0');
    EXPECT_EQ(raw("", "number"), "4 \xFF\xFF\xFF\xFF");
    EXPECT_EQ(settings.ReadValue("NUMBER"), "4294967295");
    EXPECT_EQ(settings.ReadValue("large"), large.c_str());
    for (const char* name : {"empty", "missing"}) EXPECT_EQ(settings.ReadValue(name), "") << name;
    SEnvironment::Set("TARN_TEST", "expanded");
    unsigned long type = 0;
    for (const auto& c : tarntest::ReadCases("config/registry_values.txt")) {
        setRaw(L"theirs", std::stoul(c[0]), c[1]);
        EXPECT_EQ(settings.ReadValue("theirs"), c[2].c_str()) << c[1];
        EXPECT_TRUE(settings.GetType("theirs", type));
        EXPECT_EQ(type, std::stoul(c[0]));
    }
    EXPECT_FALSE(settings.GetType("missing", type));
    EXPECT_EQ(type, DWORD{REG_MULTI_SZ});
    tarntest::AssertRecorder recorder;
    setRaw(L"expands", REG_EXPAND_SZ, Utf16(std::string(259, 'y')));
    EXPECT_EQ(settings.ReadValue("expands").getLength(), 259U);
    EXPECT_EQ(recorder.count(), 0U);
    setRaw(L"expands", REG_EXPAND_SZ, Utf16(std::string(260, 'y')));
    EXPECT_EQ(settings.ReadValue("expands"), "");
    EXPECT_TRUE(recorder.sawLast("registry", "numChars && numChars <= MAX_PATH"));
}

TEST_F(RegistryKeys, AMissingSettingIsCreatedWithItsDefault) {
    Registry settings = key();
    for (const char* host : {"localhost", "other"})
        EXPECT_EQ(settings.ReadValue("host", SAnsiString(host)), "localhost");
    for (const unsigned long port : {25UL, 26UL}) EXPECT_EQ(settings.ReadValue("port", port), "25");
    RegDeleteTreeA(HKEY_CURRENT_USER, top.c_str());  // under our open handle
    setRaw(L"host", REG_SZ, Utf16("theirs"));
    EXPECT_EQ(settings.ReadValue("host", SAnsiString("other")), "theirs");
    settings.WriteValue("host", SAnsiString());
    EXPECT_EQ(settings.ReadValue("host", SAnsiString("other")), "");  // empty is not missing
    tarntest::AssertRecorder recorder;
    EXPECT_EQ(settings.ReadValue("cut", SAnsiString("a\0b", 3)), "a");
    EXPECT_TRUE(recorder.sawLast("registry", "defaultValue == retval"));
}

TEST_F(RegistryKeys, DeletingNeedsWhatItDeletesAndNothingBelow) {
    key("\\one\\deep").WriteValue("v", 2UL);
    Registry settings = key();
    settings.WriteValue("a", 1UL);
    settings.WriteValue("b", SAnsiString("text"));
    Registry::ValueIterator first = settings.EnumValues();
    Registry::ValueIterator value(std::move(first));
    EXPECT_FALSE(first);
    EXPECT_TRUE(value.GetName() == "a" && value.GetValue() == "1" && value.NextValue());
    EXPECT_TRUE(value.GetName() == "b" && value.GetValue() == "text" && !value.NextValue());
    tarntest::AssertRecorder recorder;
    EXPECT_FALSE(settings.DeleteKey());
    EXPECT_TRUE(recorder.sawLast("registry", "false"));
    EXPECT_TRUE(settings.DeleteValue("a"));
    EXPECT_FALSE(settings.DeleteValue("a"));
    EXPECT_TRUE(settings.DeleteKeyRecursive());
    EXPECT_FALSE(key().KeyExists() || settings.EnumSubKeys() || key("\\one").DeleteKeyRecursive());
}

TEST_F(RegistryKeys, CopiesAreExact) {
    setRaw(L"binary", REG_BINARY, std::string("\1\0\xFF", 3));
    setRaw(L"unterminated", REG_SZ, Utf16("a"));
    key("\\below\\deep").WriteValue("v", SAnsiString("text"));
    EXPECT_TRUE(copy("", "-copy"));
    EXPECT_EQ(raw("-copy", "binary"), std::string("3 \1\0\xFF", 5));
    EXPECT_EQ(raw("-copy", "unterminated"), "1 a");  // still
    EXPECT_EQ(key("-copy\\below\\deep").ReadValue("v"), "text");
    EXPECT_FALSE(Registry::CopyValue(HKEY_CURRENT_USER, path(), "missing", HKEY_CURRENT_USER, path("-copy")));
    EXPECT_FALSE(copy("\\no", "-copy"));
    EXPECT_TRUE(key("-copy").DeleteKeyRecursive());
}

TEST_F(RegistryKeys, NoKeyIsCopiedIntoItself) {
    const tarntest::LocaleScope locale(tarntest::kLocale1252);
    using Place = std::pair<HKEY, SAnsiStringCI>;
    const auto own = [this](const char* below) { return Place(HKEY_CURRENT_USER, path(below)); };
    const SAnsiStringCI classes = ("tarnlib-test-" + std::to_string(GetCurrentProcessId())).c_str();
    const SAnsiStringCI machineClasses = "Software\\Classes\\" + classes;
    key("\\\xC4").WriteValue("v", 1UL);
    At(HKEY_LOCAL_MACHINE, machineClasses).WriteValue("v", 1UL);
    const SAnsiStringCI user = pathInUsers();
    ASSERT_FALSE(user.isEmpty());
    const std::pair<Place, Place> refused[] = {
        {own(""), own("")},
        {own(""), own("\\x")},
        {own("\\"), own("\\x\\y")},
        {own("\\"), own("")},
        {own("\\\xC4"), own("\\\xE4\\x")},
        {own(""), {HKEY_USERS, user + "\\x"}},
        {{HKEY_USERS, user}, own("\\x")},
        {{HKEY_USERS, user.left(user.find('\\'))}, {HKEY_CURRENT_USER, "tarnlib-test-not-there"}},
        {{HKEY_CLASSES_ROOT, classes}, {HKEY_LOCAL_MACHINE, machineClasses + "\\x"}},
        {{HKEY_LOCAL_MACHINE, machineClasses}, {HKEY_CLASSES_ROOT, classes + "\\x"}},
        {{HKEY_LOCAL_MACHINE, "Software\\Classes"}, {HKEY_CLASSES_ROOT, "tarnlib-test-not-there"}},
    };
    for (const auto& [source, target] : refused) {
        const bool isCopied = Registry::CopyKey(source.first, source.second, target.first, target.second);
        const bool isNew = target.second.right(1) == "x" && At(target.first, target.second).KeyExists();
        EXPECT_FALSE(isCopied || isNew) << source.second.getString() << " " << target.second.getString();
    }
    EXPECT_TRUE(copy("\\\xC4", "\\\xC4\xC4"));
    EXPECT_TRUE(At(HKEY_LOCAL_MACHINE, machineClasses).DeleteKeyRecursive());
}

TEST_F(RegistryKeys, LinksAreNotFollowed) {
    key("\\kept").WriteValue("v", 1UL);
    key("\\tree\\below").WriteValue("v", 2UL);
    const std::string target =
        Utf16("\\REGISTRY\\USER\\" + std::string(pathInUsers().getString()) + "\\kept");
    HKEY link = nullptr;
    ASSERT_EQ(RegCreateKeyExA(HKEY_CURRENT_USER, (top + "\\tree\\link").c_str(), 0, nullptr,
                              REG_OPTION_CREATE_LINK, KEY_WRITE, nullptr, &link, nullptr),
              0);
    RegSetValueExW(link, L"SymbolicLinkValue", 0, REG_LINK, reinterpret_cast<const BYTE*>(target.data()),
                   static_cast<DWORD>(target.size()));
    RegCloseKey(link);
    EXPECT_EQ(key("\\tree\\link").ReadValue("v"), "1");
    EXPECT_TRUE(copy("\\tree", "\\copy"));
    EXPECT_EQ(key("\\copy\\below").ReadValue("v"), "2");
    key("\\kept").WriteValue("v", 3UL);
    EXPECT_EQ(key("\\copy\\link").ReadValue("v"), "3");  // a link again
    for (const char* with : {"\\copy", "\\tree"})
        EXPECT_TRUE(key(with).DeleteKeyRecursive() && !key(with).KeyExists());
    EXPECT_EQ(key("\\kept").ReadValue("v"), "3");
}

TEST_F(RegistryKeys, OnlyReadingAndWritingMakeAMissingKey) {
    const auto made = [this](auto use) {
        Registry settings(path("\\made"), "name", HKEY_CURRENT_USER, true);
        use(settings);
        return key("\\made").DeleteKey();
    };
    EXPECT_FALSE(made([](Registry& at) {
        unsigned long type = 0;
        at.KeyExists(), at.GetType("v", type), at.EnumSubKeys(), at.EnumValues();
        at.DeleteValue("v"), at.DeleteKeyRecursive(false);
    }));
    EXPECT_TRUE(made([](Registry& at) { at.ReadValue("v"); }));
    EXPECT_TRUE(made([](Registry& at) { at.WriteValue("v", 1UL); }));
}

TEST_F(RegistryKeys, ARefusedAccessIsReported) {
    key("\\denied").WriteValue("v", SAnsiString("secret"));
    const std::string denied = top + "\\denied";
    const std::string reason = "HKEY_CURRENT_USER\\" + denied;
    HKEY opened = nullptr;
    RegOpenKeyExA(HKEY_CURRENT_USER, denied.c_str(), 0, WRITE_DAC | READ_CONTROL, &opened);
    SECURITY_DESCRIPTOR nobody{};
    ACL empty{};
    InitializeAcl(&empty, sizeof empty, ACL_REVISION);
    InitializeSecurityDescriptor(&nobody, SECURITY_DESCRIPTOR_REVISION);
    SetSecurityDescriptorDacl(&nobody, TRUE, &empty, FALSE);
    ASSERT_EQ(RegSetKeySecurity(opened, DACL_SECURITY_INFORMATION, &nobody), ERROR_SUCCESS);
    tarntest::AssertRecorder recorder(tarntest::kTracesToo);
    const auto saw = [&](const std::string& report, const std::string& trace) {
        const std::string text = "\n" + recorder.take();
        EXPECT_NE(text.find(" : " + report + ")."), text.npos) << text;
        EXPECT_NE(text.find("\n7 registry: cannot " + trace), text.npos) << text;
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
    EXPECT_EQ(recorder.take(), "");  // an answer, no failure
    SetSecurityDescriptorDacl(&nobody, TRUE, nullptr, FALSE);
    RegSetKeySecurity(opened, DACL_SECURITY_INFORMATION, &nobody);
    RegCloseKey(opened);
}

TEST_F(RegistryKeys, MisuseAndOtherMachines) {
    tarntest::AssertRecorder recorder;
    EXPECT_FALSE(key("\\").KeyExists());
    EXPECT_TRUE(recorder.sawLast("registry", "m_subKey.getAt (m_subKey.getNChars() - 1) != _T('\\\\')"));
    Registry local = key();
    local.WriteValue("v", 3UL);
    local.SetRemoteMachine("no-such-machine.invalid");
    EXPECT_EQ(local.ReadValue("v"), "");
    const Registry copied(local);
    EXPECT_EQ(copied.GetRemoteMachineName(), "no-such-machine.invalid");
    local.SetRemoteKeyHandle(HKEY_CURRENT_USER);
    EXPECT_EQ(local.ReadValue("v"), "3");
    local.SetRemoteMachine("");
    EXPECT_TRUE(!local.IsRemoteReg() && local.ReadValue("v") == "3");
}

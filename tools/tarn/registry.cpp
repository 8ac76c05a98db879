#include "tarnlib/registry.h"
#include "codepagetext.h"
#include "command.h"
#include "options.h"
#include "system.h"
#include "tarnlib/sstringconv.h"

#include <windows.h>

namespace tarn {
namespace {

using TarnLibA500::Registry;
using TarnLibA500::SAnsiString;
using TarnLibA500::SAnsiStringCI;

constexpr const char* kHelp =
    "-key K [-value V] [-set T | -setnumber N | -delete | -list | -copy K2]\n\n"
    "Reads and changes the registry. K begins with HKLM, HKCU, HKCR, HKU or HKCC (or their long names) and\n"
    "a backslash.\n\n"
    "  -value V      prints the value; with -set or -setnumber writes it as text or number; with -delete\n"
    "                deletes it; with -copy copies it to the key K2\n"
    "  -list         prints the key's sub-keys and values\n"
    "  -delete       without -value: deletes the key, which must have no sub-keys\n"
    "  -copy K2      without -value: copies the key with everything below it to K2\n\n"
    "Exit status: 0; 1 when the key or the value is not there, or the registry refuses.\n";

/// A root and the path below it.
struct Place {
    HKEY root;
    SAnsiStringCI path;
};

struct Root {
    const char* shortName;
    const char* longName;
    HKEY key;
};

const Root* FindRoot(const SAnsiStringCI& name) {
    static const Root roots[] = {{"HKLM", "HKEY_LOCAL_MACHINE", HKEY_LOCAL_MACHINE},
                                 {"HKCU", "HKEY_CURRENT_USER", HKEY_CURRENT_USER},
                                 {"HKCR", "HKEY_CLASSES_ROOT", HKEY_CLASSES_ROOT},
                                 {"HKU", "HKEY_USERS", HKEY_USERS},
                                 {"HKCC", "HKEY_CURRENT_CONFIG", HKEY_CURRENT_CONFIG}};
    for (const Root& root : roots) {
        if (name == root.shortName || name == root.longName) return &root;
    }
    return nullptr;
}

Place FindPlace(const std::string& key, const char* option) {
    const std::size_t backslash = key.find('\\');
    const Root* const root = FindRoot(key.substr(0, backslash).c_str());
    if (root == nullptr)
        throw Failure(std::string(option) + " must begin with HKLM, HKCU, HKCR, HKU or HKCC: " + key);
    const std::string path = backslash == key.npos ? std::string() : key.substr(backslash + 1);
    if (!path.empty() && path.back() == '\\')
        throw Failure(std::string(option) + " must not end with a backslash");
    return {root->key, CodePageText(path, option)};
}

std::string TypeName(unsigned long type) {
    static const char* const names[] = {"REG_NONE",
                                        "REG_SZ",
                                        "REG_EXPAND_SZ",
                                        "REG_BINARY",
                                        "REG_DWORD",
                                        "REG_DWORD_BIG_ENDIAN",
                                        "REG_LINK",
                                        "REG_MULTI_SZ",
                                        "REG_RESOURCE_LIST",
                                        "REG_FULL_RESOURCE_DESCRIPTOR",
                                        "REG_RESOURCE_REQUIREMENTS_LIST",
                                        "REG_QWORD"};
    return type < std::size(names) ? names[type] : "type " + std::to_string(type);
}

ExitStatus Answer(bool isDone) {
    return isDone ? kYes : kNo;
}

unsigned long ReadNumber(const std::string& text) {
    unsigned long number = 0;
    const bool isNumber = !text.empty() && text.find_first_not_of("0123456789") == text.npos &&
                          TarnLibA500::SStringConv::FromString(SAnsiString(text.c_str()), number);
    if (!isNumber) throw Failure("-setnumber must be a number from 0 to 4294967295");
    return number;
}

ExitStatus PrintValue(Registry& key, const SAnsiStringCI& name) {
    unsigned long type = 0;
    if (!key.GetType(name, type)) return kNo;
    Print(TypeName(type) + " " + Utf8Text(key.ReadValue(name)) + "\n");
    return kYes;
}

ExitStatus PrintKey(Registry& key) {
    if (!key.KeyExists()) return kNo;
    for (Registry::KeyIterator subKey = key.EnumSubKeys(); subKey; ++subKey)
        Print("[" + Utf8Text(subKey.GetKey()) + "]\n");
    for (Registry::ValueIterator value = key.EnumValues(); value; ++value) {
        unsigned long type = 0;
        key.GetType(value.GetName(), type);
        Print(Utf8Text(value.GetName()) + " " + TypeName(type) + " " + Utf8Text(value.GetValue()) + "\n");
    }
    return kYes;
}

ExitStatus UseValue(const Options& options, Registry& key, const Place& place) {
    const SAnsiStringCI name = CodePageText(options.value("value"), "-value");
    if (options.has("set")) return Answer(key.WriteValue(name, CodePageText(options.value("set"), "-set")));
    if (options.has("setnumber")) return Answer(key.WriteValue(name, ReadNumber(options.value("setnumber"))));
    if (options.has("delete")) return Answer(key.DeleteValue(name));
    if (!options.has("copy")) return PrintValue(key, name);
    const Place target = FindPlace(options.value("copy"), "-copy");
    return Answer(Registry::CopyValue(place.root, place.path, name, target.root, target.path));
}

ExitStatus UseKey(const Options& options, Registry& key, const Place& place) {
    if (options.has("set") || options.has("setnumber")) throw Failure("-set and -setnumber need -value");
    if (options.has("delete")) return Answer(key.DeleteKey());
    if (options.has("list")) return PrintKey(key);
    if (!options.has("copy")) return Answer(key.KeyExists());
    const Place target = FindPlace(options.value("copy"), "-copy");
    return Answer(Registry::CopyKey(place.root, place.path, target.root, target.path));
}

ExitStatus UseRegistry(const Words& arguments) {
    using Kind = Options::Kind;
    const Options options(arguments, {{"key", Kind::RequiredValue},
                                      {"value", Kind::Value},
                                      {"set", Kind::Value},
                                      {"setnumber", Kind::Value},
                                      {"delete", Kind::Switch},
                                      {"list", Kind::Switch},
                                      {"copy", Kind::Value}});
    int actions = 0;
    for (const char* action : {"set", "setnumber", "delete", "list", "copy"})
        actions += options.has(action) ? 1 : 0;
    if (actions > 1) throw Failure("only one of -set, -setnumber, -delete, -list and -copy can be given");
    const Place place = FindPlace(options.value("key"), "-key");
    Registry key(place.path, place.path, place.root, false);
    return options.has("value") ? UseValue(options, key, place) : UseKey(options, key, place);
}

}  // namespace

const Command kRegistryCommand = {"registry", "what a registry key holds", kHelp, UseRegistry};

}  // namespace tarn

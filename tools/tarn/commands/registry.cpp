#include "tarnlib/registry.h"
#include "command.h"
#include "options.h"
#include "system.h"
#include "tarnlib/sassert.h"
#include "tarnlib/sstringconv.h"

#include <string_view>

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

/// Keeps what the registry last said of a failure; the log gets its traces as before.
class FailureWatch {
  public:
    FailureWatch() {
        log = TarnLibA500::InstallDiagnosticSink(nullptr);
        if (log != nullptr) sink_ = *log;
        sink_.shouldTraceAt = [](int level, const char* unit, int line) {
            return IsFailure(level, unit) || IsLogged(level, unit, line);
        };
        sink_.traceAt = [](int level, const char* unit, int line, const char* text) {
            if (IsFailure(level, unit)) reason = text;
            if (IsLogged(level, unit, line)) log->traceAt(level, unit, line, text);
        };
        TarnLibA500::InstallDiagnosticSink(&sink_);
    }
    ~FailureWatch() { TarnLibA500::InstallDiagnosticSink(log); }
    FailureWatch(const FailureWatch&) = delete;
    FailureWatch& operator=(const FailureWatch&) = delete;
    static const SAnsiString& why() { return reason; }

  private:
    static bool IsFailure(int level, const char* unit) {
        constexpr int kFailure = 7, kLoss = 9;
        return (level == kFailure || level == kLoss) && std::string_view(unit) == "registry";
    }
    static bool IsLogged(int level, const char* unit, int line) {
        return log != nullptr && log->shouldTraceAt != nullptr && log->shouldTraceAt(level, unit, line);
    }

    static inline const TarnLibA500::SDiagnosticSink* log = nullptr;
    static inline SAnsiString reason;
    TarnLibA500::SDiagnosticSink sink_;
};

/// A root and the path below it, and how they were given.
struct Place {
    HKEY root;
    SAnsiStringCI path;
    std::string text;
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
    return {root->key, path.c_str(), key};
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

ExitStatus SayNo(const std::string& why) {
    PrintError("tarn registry: " + why);
    return kNo;
}

// What was not there, or what the library said of it.
ExitStatus SayWhy(const Place& place, const SAnsiStringCI* value) {
    if (!FailureWatch::why().isEmpty()) return SayNo(Str(FailureWatch::why()));
    Registry key(place.path, place.path, place.root, false);
    if (!key.KeyExists()) return SayNo("there is no key " + place.text);
    unsigned long type = 0;
    if (value != nullptr && !key.GetType(*value, type))
        return SayNo("there is no value \"" + Str(*value) + "\" in " + place.text);
    return SayNo("the registry refuses");
}

ExitStatus Answer(bool isDone, const Place& place, const SAnsiStringCI* value = nullptr) {
    return isDone ? kYes : SayWhy(place, value);
}

unsigned long ReadNumber(const std::string& text) {
    unsigned long number = 0;
    const bool isNumber = !text.empty() && text.find_first_not_of("0123456789") == text.npos &&
                          TarnLibA500::SStringConv::FromString(SAnsiString(text.c_str()), number);
    if (!isNumber) throw Failure("-setnumber must be a number from 0 to 4294967295");
    return number;
}

ExitStatus PrintValue(Registry& key, const SAnsiStringCI& name, const Place& place) {
    unsigned long type = 0;
    if (!key.GetType(name, type)) return SayWhy(place, &name);
    Print(TypeName(type) + " " + Str(key.ReadValue(name)) + "\n");
    return kYes;
}

ExitStatus PrintKey(Registry& key, const Place& place) {
    if (!key.KeyExists()) return SayWhy(place, nullptr);
    for (Registry::KeyIterator subKey = key.EnumSubKeys(); subKey; ++subKey)
        Print("[" + Str(subKey.GetKey()) + "]\n");
    for (Registry::ValueIterator value = key.EnumValues(); value; ++value) {
        unsigned long type = 0;
        key.GetType(value.GetName(), type);
        Print(Str(value.GetName()) + " " + TypeName(type) + " " + Str(value.GetValue()) + "\n");
    }
    return kYes;
}

ExitStatus UseValue(const Options& options, Registry& key, const Place& place) {
    const SAnsiStringCI name = options.value("value").c_str();
    if (options.has("set")) return Answer(key.WriteValue(name, options.value("set").c_str()), place);
    if (options.has("setnumber"))
        return Answer(key.WriteValue(name, ReadNumber(options.value("setnumber"))), place);
    if (options.has("delete")) return Answer(key.DeleteValue(name), place, &name);
    if (!options.has("copy")) return PrintValue(key, name, place);
    const Place target = FindPlace(options.value("copy"), "-copy");
    return Answer(Registry::CopyValue(place.root, place.path, name, target.root, target.path), place, &name);
}

ExitStatus UseKey(const Options& options, Registry& key, const Place& place) {
    if (options.has("set") || options.has("setnumber")) throw Failure("-set and -setnumber need -value");
    if (options.has("delete")) return Answer(key.DeleteKey(), place);
    if (options.has("list")) return PrintKey(key, place);
    if (!options.has("copy")) return Answer(key.KeyExists(), place);
    const Place target = FindPlace(options.value("copy"), "-copy");
    return Answer(Registry::CopyKey(place.root, place.path, target.root, target.path), place);
}

ExitStatus UseRegistry(const Words& arguments) {
    const Options options(arguments, {.required = {"key"},
                                      .values = {"value", "set", "setnumber", "copy"},
                                      .switches = {"delete", "list"}});
    if (options.count({"set", "setnumber", "delete", "list", "copy"}) > 1)
        throw Failure("only one of -set, -setnumber, -delete, -list and -copy can be given");
    const Place place = FindPlace(options.value("key"), "-key");
    const FailureWatch watch;
    Registry key(place.path, place.path, place.root, false);
    return options.has("value") ? UseValue(options, key, place) : UseKey(options, key, place);
}

}  // namespace

const Command kRegistryCommand = {"registry", "what a registry key holds", kHelp, UseRegistry};

}  // namespace tarn

#include "settings.h"

#include "tarnlib/configfilereader.h"
#include "tarnlib/neutralstr.h"
#include "tarnlib/registry.h"

#include <windows.h>

namespace {

constexpr const char* kSection = "service";

bool ReadText(const ConfigFileReader& reader, const char* key, SAnsiString& value, SAnsiString& why) {
    value = reader.getValue(kSection, key, "");
    if (!value.isEmpty()) return true;
    why << "[" << kSection << "] has no " << key;
    return false;
}

bool ReadNumber(const ConfigFileReader& reader, const char* key, int least, int most, int& number,
                SAnsiString& why) {
    const SAnsiString text = reader.getValue(kSection, key, "");
    if (text.isEmpty()) return true;  // the usual one stays
    int value = 0;
    if (!NeutralString::ToNumberStrict(text, value) || value < least || value > most) {
        why << key << "=" << text << " is no number from " << least << " to " << most;
        return false;
    }
    number = value;
    return true;
}

}  // namespace

SAnsiString FindSettingsFile(const CParamLineArgs& args) {
    SAnsiString file;
    if (args.Lookup("config", file) && !file.isEmpty()) return file;
    Registry settings("SOFTWARE\\Tarn", "ExampleService", HKEY_LOCAL_MACHINE, false);
    return settings.ReadValue("config", SAnsiString());
}

bool ReadSettings(const SAnsiString& file, Settings& settings, SAnsiString& why) {
    ConfigFileReader reader;
    if (!reader.initialize(file)) {
        why = reader.GetLastErrorText();
        return false;
    }
    Settings read;
    const bool isGood = ReadText(reader, "inbox", read.inbox, why) &&
                        ReadText(reader, "outbox", read.outbox, why) &&
                        ReadNumber(reader, "workers", 1, 64, read.workers, why) &&
                        ReadNumber(reader, "pollMilliseconds", 10, 3'600'000, read.pollMilliseconds, why) &&
                        ReadNumber(reader, "stopMilliseconds", 100, 120'000, read.stopMilliseconds, why);
    if (isGood) settings = read;
    return isGood;
}

CParamLineArgs WithLoggingOptions(const CParamLineArgs& args, const SAnsiString& file) {
    CParamLineArgs all(args);
    ConfigFileReader reader;
    SIArray<SAnsiString> names;
    if (!reader.initialize(file) || !reader.enumerateSection("logging", names)) return all;
    for (const SAnsiString& name : names) {
        SAnsiString given;
        if (!args.Lookup(name, given)) all.SetArg(name, reader.getValue("logging", name, ""));
    }
    return all;
}

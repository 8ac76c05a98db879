#include "command.h"
#include "conversion.h"
#include "options.h"
#include "system.h"
#include "tarnlib/configfilereader.h"
#include "tarnlib/sfile.h"
#include "tarnlib/sfilesys.h"

#include <algorithm>
#include <set>

namespace tarn {
namespace {

using TarnLibA500::ConfigFileReader;
using TarnLibA500::SAnsiString;
using TarnLibA500::SFile;
using TarnLibA500::SFileSys;
using TarnLibA500::SIArray;

constexpr const char* kHelp =
    "-file F [-section S] [-key K] [-default V] [-native] [-xml]\n\n"
    "Shows a configuration file: its sections; with -section the keys and values of one; with -key one\n"
    "value, or the default. Keys before the first section, or behind a line without \"=\", do not count.\n\n"
    "  -native   the file is in the system's ANSI code page, not UTF-8\n"
    "  -xml      the file is a landscape of connections\n\n"
    "Lines that are not read are told on standard error.\n"
    "Exit status: 0; 1 when there is no such section or value; 2 when the file cannot be loaded.\n";

// The library reads a copy in UTF-8 then, whose name nobody wants to see.
bool LoadNative(ConfigFileReader& reader, const SAnsiString& file, std::string& why) {
    SFile native(file, SFile::readOnly, SFile::readWriteMask, SFile::denyNothing);
    Conversion text(FindCodeSet("current"), Utf8CodeSet());
    text.take(Str(native.readString(SFile::nativeCodePage)), true);
    SFile copy(SFileSys::getTempFilename("tarn"), SFile::writeOnly | SFile::temporary, SFile::readWriteMask,
               SFile::denyNothing);
    copy.writeAll(text.output().data(), static_cast<std::uint32_t>(text.output().size()));
    const bool isLoaded = reader.initialize(copy.name());
    why = Str(reader.GetLastErrorText());
    const std::string name = Str(copy.name());
    for (std::size_t at = 0; (at = why.find(name, at)) != why.npos; at += file.getLength())
        why.replace(at, name.size(), Str(file));
    return isLoaded;
}

bool Load(ConfigFileReader& reader, const Options& options, std::string& why) {
    const SAnsiString file = options.value("file").c_str();
    if (options.has("native")) return LoadNative(reader, file, why);
    const bool isLoaded = options.has("xml") ? reader.initializeFromXML(file) : reader.initialize(file);
    why = Str(reader.GetLastErrorText());
    return isLoaded;
}

void Load(ConfigFileReader& reader, const Options& options) {
    std::string why;
    const bool isLoaded = Load(reader, options, why);
    if (!isLoaded) throw Failure("cannot load " + why);
    for (std::size_t at = 0; at < why.size();) {
        const std::size_t end = std::min(why.find('\n', at), why.size());
        PrintError("tarn config: " + why.substr(at, end - at));
        at = end + 1;
    }
}

ExitStatus SayMissing(const Options& options, const std::string& what) {
    PrintError("tarn config: there is no " + what + " in " + options.value("file"));
    return kNo;
}

// The value of a key, or null. Values may be empty, so two defaults tell whether there is one.
const SAnsiString* Find(const ConfigFileReader& reader, const SAnsiString& section, const SAnsiString& key,
                        SAnsiString& value) {
    value = reader.getValue(section, key, "1");
    const bool isThere = value != "1" || reader.getValue(section, key, "2") == "1";
    return isThere ? &value : nullptr;
}

ExitStatus PrintValue(const ConfigFileReader& reader, const Options& options) {
    SAnsiString value;
    const SAnsiString section = options.value("section").c_str();
    const SAnsiString* const found = Find(reader, section, options.value("key").c_str(), value);
    if (found == nullptr && !options.has("default")) {
        SIArray<SAnsiString> keys;
        const std::string where = "section [" + options.value("section") + "]";
        return SayMissing(options, reader.enumerateSection(section, keys)
                                       ? "key " + options.value("key") + " in " + where
                                       : where);
    }
    Print((found != nullptr ? Str(*found) : options.value("default")) + "\n");
    return kYes;
}

ExitStatus PrintSection(const ConfigFileReader& reader, const Options& options) {
    const SAnsiString section = options.value("section").c_str();
    SIArray<SAnsiString> keys;
    if (!reader.enumerateSection(section, keys))
        return SayMissing(options, "section [" + options.value("section") + "]");
    std::set<SAnsiString> shown;
    for (const SAnsiString& key : keys) {
        SAnsiString value;
        // Sections of one name have keys that a look-up does not see.
        if (!shown.insert(key).second || Find(reader, section, key, value) == nullptr) continue;
        Print(Str(key) + "=" + Str(value) + "\n");
    }
    return kYes;
}

ExitStatus ShowConfig(const Words& arguments) {
    const Options options(
        arguments,
        {.required = {"file"}, .values = {"section", "key", "default"}, .switches = {"native", "xml"}});
    if (options.has("native") && options.has("xml")) throw Failure("an XML document names its own encoding");
    if (options.has("key") && !options.has("section")) throw Failure("-key needs -section");
    ConfigFileReader reader;
    Load(reader, options);
    if (options.has("key")) return PrintValue(reader, options);
    if (options.has("section")) return PrintSection(reader, options);
    SIArray<SAnsiString> names;
    reader.getSections(names);
    for (const SAnsiString& name : names) Print("[" + Str(name) + "]\n");
    return kYes;
}

}  // namespace

const Command kConfigCommand = {"config", "what a configuration file holds", kHelp, ShowConfig};

}  // namespace tarn

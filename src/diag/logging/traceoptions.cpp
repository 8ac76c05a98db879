#include "diag/logging/traceoptions.h"

#include "diag/logging/tracetext.h"
#include "tarnlib/pathparts.h"
#include "tarnlib/sstringconv.h"
#include "tarnlib/stringhelper.h"

namespace TarnLibA500 {
namespace {

using TraceLog400::ByFileLine;
using TraceLog400::EvalConfig;

constexpr const char* kDefaultMask = "cw";

void Notify(TraceOptions& options, OptionNotice::Kind kind, const SAnsiString& text) {
    options.notices.Add({kind, text});
}

void Refuse(TraceOptions& options, const char* name, const SAnsiString& value, const SAnsiString& wanted) {
    Notify(options, OptionNotice::Loss,
           "TraceBridge::Initialize: Invalid argument " + value + " provided to " + name + " - must be " +
               wanted);
}

void ReadMask(CParamLineTracker& given, TraceOptions& options) {
    options.eval.assign_mask(kDefaultMask);
    SAnsiString letters;
    const bool isGiven = given.take("trace", letters);
    if (isGiven && !options.eval.assign_mask(letters.getString()))
        Refuse(options, "trace", letters, SAnsiString("letters of ") + EvalConfig::known_letters());
    if (!given.take("warningTrace")) return;
    if (isGiven) {
        options.eval.add_mask("w");
    } else {
        options.eval.assign_mask("w");
    }
    Notify(options, OptionNotice::Deprecated,
           "TraceBridge::Initialize: Deprecated option -warningTrace used: use -trace w instead");
}

void ReadKeep(CParamLineTracker& given, TraceOptions& options) {
    SAnsiString value;
    if (!given.take("keep", value)) return;
    if (value.compareNoCase("on") == 0) {
        options.keep = true;
    } else if (value.compareNoCase("off") == 0) {
        options.keep = false;
    } else {
        Refuse(options, "keep", value, "'on' or 'off'");
    }
}

// Stricter than the number conversions, which take "12.5" and "" for integers.
bool IsInteger(const SAnsiString& text) {
    for (const char* at = text.getString(); *at != '\0'; ++at) {
        if (*at < '0' || *at > '9') return false;
    }
    return !text.isEmpty();
}

template <class Number>
void ReadLimit(CParamLineTracker& given, TraceOptions& options, const char* name, Number& limit) {
    SAnsiString value;
    Number number = 0;
    if (!given.take(name, value)) return;
    if (!IsInteger(value) || !SStringConv::FromString(value, number))
        return Refuse(options, name, value, "an integer");
    limit = number;
}

void ReadLimits(CParamLineTracker& given, TraceOptions& options) {
    ReadLimit(given, options, "maxLogFileSize", options.maxFileSize);
    ReadLimit(given, options, "maxLogFiles", options.maxFiles);
    ReadLimit(given, options, "maxLogDays", options.maxDays);
}

void AddToFilter(const SAnsiString& entry, ByFileLine& filter) {
    SAnsiString directory, name, extension;
    SplitPathEx(entry, directory, name, extension);
    filter.set(Utf8(directory).text(), Utf8(name + extension).text());
}

// The entries of a list without blanks around them, and without empty ones.
SIArray<SAnsiString> Entries(const SAnsiString& list) {
    SIArray<SAnsiString> words, entries;
    SStringHelper::makeWords(list, words, ",", false, false);
    for (SAnsiString& word : words) {
        if (!word.trim().isEmpty()) entries.Add(word);
    }
    return entries;
}

ByFileLine MakeFilter(const SIArray<SAnsiString>& entries) {
    ByFileLine filter;
    for (std::uint32_t i = 0; i < entries.GetSize(); ++i) {
        if (i == 0 && entries[i] == "^") {
            filter.invert(true);
        } else {
            AddToFilter(entries[i], filter);
        }
    }
    return filter;
}

void ReadFilter(CParamLineTracker& given, TraceOptions& options) {
    SAnsiString value;
    if (!given.take("fileLogFilter", value)) return options.eval.assign_filter(ByFileLine());
    const SIArray<SAnsiString> entries = Entries(value);
    if (entries.GetSize() == 0) {
        options.eval.assign_filter(ByFileLine());
        return Notify(options, OptionNotice::Loss,
                      "Empty argument passed to fileLogFilter - comma delimited list of filenames required");
    }
    const ByFileLine filter = MakeFilter(entries);
    options.eval.assign_filter(filter);
    CollectedText files;
    filter.print(files);
    Notify(options, OptionNotice::Information, "Using ByFileLine predicate:\n" + files.text());
}

void ReadSwitches(CParamLineTracker& given, TraceOptions& options) {
    options.never = given.take("nevertrace");
    options.alwaysClose = given.take("alwaysclose");
    options.requestChannel = given.take("reqTrace");
    options.sdkChannel = given.take("sdkTrace");
    options.noAssert = given.take("noassert");
    options.stackDump = given.take("stackdump");
    options.verbose = given.take("verbose");
    options.noThread = given.take("notracethread");
    options.noIni = given.take("notraceini");
    const bool native = given.take("nativeassert");
    options.nativeAssert = !given.take("nonativeassert") && native;
}

void ReadTexts(CParamLineTracker& given, TraceOptions& options) {
    given.take("loggingPath", options.directory);
    given.take("tracecmpname", options.component);
    given.take("loggingPluginDir", options.pluginDirectory);
    if (given.take("traceinipath", options.iniPath))
        Notify(options, OptionNotice::Information,
               "TraceBridge::Initialize: pullable set to " + options.iniPath);
    if (given.take("logFile"))
        Notify(options, OptionNotice::Abandoned, "The logFile argument is no longer accepted.");
}

}  // namespace

TraceOptions ReadTraceOptions(CParamLineTracker& given) {
    TraceOptions options;
    ReadMask(given, options);
    ReadFilter(given, options);
    ReadKeep(given, options);
    ReadLimits(given, options);
    ReadSwitches(given, options);
    ReadTexts(given, options);
    return options;
}

}  // namespace TarnLibA500

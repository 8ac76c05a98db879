#include "logging.h"

#include "tarnlib/cparamlineargs.h"
#include "tarnlib/senvironment.h"
#include "tarnlib/slogger.h"

namespace tarn {
namespace {

using TarnLibA500::SAnsiStringCI;

constexpr const char* kSwitches[] = {"warningTrace", "reqTrace",   "sdkTrace",      "noassert",
                                     "alwaysclose",  "notraceini", "notracethread", "verbose",
                                     "nevertrace",   "stackdump",  "nativeassert",  "nonativeassert"};
constexpr const char* kWithValue[] = {"trace",        "keep",         "maxLogFileSize",  "maxLogFiles",
                                      "maxLogDays",   "loggingPath",  "logFile",         "fileLogFilter",
                                      "traceinipath", "tracecmpname", "loggingPluginDir"};

bool IsOption(const std::string& word) {
    return !word.empty() && word[0] == '-';
}

template <class Names>
bool IsAmong(const std::string& word, const Names& names) {
    const SAnsiStringCI name(word.c_str() + word.find_first_not_of('-'));
    for (const char* candidate : names) {
        if (name == candidate) return true;
    }
    return false;
}

}  // namespace

Logging::Logging() {
    TarnLibA500::SLogger::Initialize(TarnLibA500::CParamLineArgs(TarnLibA500::SEnvironment::GetArguments()));
}

Logging::~Logging() {
    TarnLibA500::SLogger::Terminate();
}

Words WithoutLoggingOptions(const Words& words) {
    Words left;
    for (std::size_t i = 0; i < words.size(); ++i) {
        const bool isNamed = IsOption(words[i]) && words[i].find_first_not_of('-') != std::string::npos;
        if (isNamed && IsAmong(words[i], kSwitches)) continue;
        if (!isNamed || !IsAmong(words[i], kWithValue)) {
            left.push_back(words[i]);
        } else if (i + 1 < words.size() && !IsOption(words[i + 1])) {
            ++i;  // its value
        }
    }
    return left;
}

}  // namespace tarn

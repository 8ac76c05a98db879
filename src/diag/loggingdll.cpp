#include "diag/loggingdll.h"

#include "diag/loggeroptions.h"
#include "system/systemtext.h"
#include "tarnlib/pathparts.h"
#include "tarnlib/registry.h"
#include "tarnlib/straceobj.h"

#include <windows.h>

namespace TarnLibA500 {
namespace {

constexpr const char* kUnit = "loggingdll";
constexpr int kFailureLevel = 7;
constexpr const char* kPattern = "log_xn_*.dll";
constexpr const char* kSystemPlugin = "log_xn_system";

// Closes a search of the system's.
class FileSearch {
  public:
    explicit FileSearch(const SAnsiString& pattern) {
        search_ = FindFirstFileW(ToSystem(pattern).getString(), &found_);
        isValid_ = search_ != INVALID_HANDLE_VALUE;
    }
    ~FileSearch() {
        if (search_ != INVALID_HANDLE_VALUE) FindClose(search_);
    }
    FileSearch(const FileSearch&) = delete;
    FileSearch& operator=(const FileSearch&) = delete;

    bool isValid() const { return isValid_; }
    SAnsiString name() const { return FromSystem(found_.cFileName); }
    void next() { isValid_ = FindNextFileW(search_, &found_) != 0; }

  private:
    WIN32_FIND_DATAW found_;
    HANDLE search_;
    bool isValid_;
};

SAnsiString Stem(const SAnsiString& fileName) {
    SAnsiString directory, name, extension;
    SplitPathEx(fileName, directory, name, extension);
    return name;
}

// The system plug-in first, then in the order of the directory.
SIArray<SAnsiString> FindModules(const SAnsiString& directory) {
    SIArray<SAnsiString> first, others;
    for (FileSearch search(MakePath(directory, kPattern)); search.isValid(); search.next()) {
        const SAnsiString name = search.name();
        (Stem(name).compareNoCase(kSystemPlugin) == 0 ? first : others).Add(name);
    }
    first.Append(others);
    return first;
}

void TraceFailure(const SAnsiString& path, const SAnsiString& why) {
    TARN_TRACE_AT(kFailureLevel, kUnit, "the logging plug-in %1 is not used: %2", path, why);
}

}  // namespace

void LoggingDLL::load(const SAnsiString& directory, const SAnsiString& options) {
    if (directory.isEmpty()) return;
    if (!IsAbsolutePath(directory)) return TraceFailure(directory, "the directory is not an absolute path");
    for (const SAnsiString& name : FindModules(directory))
        loadOne(MakePath(directory, name), Stem(name), options);
}

void LoggingDLL::loadOne(const SAnsiString& path, const SAnsiString& name, const SAnsiString& options) {
    try {
        loggers_.SetAt(name, new SLoggerImpl(path, options));
    } catch (const CSharedLibraryException& failure) {
        TraceFailure(path, failure.toString());
    } catch (const SAnsiString& why) {
        TraceFailure(path, why);
    }
}

void LoggingDLL::unload() {
    loggers_.RemoveAll();
}

void LoggingDLL::log(int level, int category, unsigned long message, const SAnsiString& text,
                     const SIArray<SAnsiString>& arguments) const {
    for (const auto& [name, logger] : loggers_) logger->log(level, category, message, text, arguments);
}

SAnsiString PluginOptions(const CParamLineArgs& given) {
    const SAnsiString kept =
        Registry("SOFTWARE\\velmora", "velmora", HKEY_LOCAL_MACHINE, false).ReadValue("CmdLine");
    CParamLineArgs options = ParseLoggerOptions(kept);
    options.MergeArgs(given);
    return options.GetCmdLine();
}

}  // namespace TarnLibA500

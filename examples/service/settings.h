#pragma once

#include <mutex>

#include "tarnlib/cparamlineargs.h"
#include "tarnlib/sstring.h"

using namespace TarnLibA500;

/// What the service is told: by its ini file, which it reads again when it changes.
struct Settings {
    SAnsiString inbox;             ///< files that come here are counted
    SAnsiString outbox;            ///< counts go here
    int workers = 2;               ///< counted at the start alone
    int pollMilliseconds = 500;    ///< between two looks into the inbox
    int stopMilliseconds = 10000;  ///< that a stop may take
};

/// The ini file: the option -config, or else the value "config" of HKLM\SOFTWARE\Tarn\ExampleService.
SAnsiString FindSettingsFile(const CParamLineArgs& args);

/// Reads the section [service]. When something is missing or wrong, false, the reason, and the settings as they were.
bool ReadSettings(const SAnsiString& file, Settings& settings, SAnsiString& why);

/// The command line with the logging options of the ini file's section [logging]; the command line's own win.
CParamLineArgs WithLoggingOptions(const CParamLineArgs& args, const SAnsiString& file);

/// Settings that one thread renews while others read them.
class SharedSettings {
  public:
    explicit SharedSettings(const Settings& settings) : settings_(settings) {}
    Settings get() const {
        const std::lock_guard<std::mutex> lock(mutex_);
        return settings_;  // strings share their text: nothing is copied
    }
    void set(const Settings& settings) {
        const std::lock_guard<std::mutex> lock(mutex_);
        settings_ = settings;
    }

  private:
    mutable std::mutex mutex_;
    Settings settings_;
};

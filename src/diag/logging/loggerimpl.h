#pragma once

#include "tarnlib/csharedlibrary.h"
#include "tarnlib/loggingplugin.h"
#include "tarnlib/refcount.h"
#include "tarnlib/siarray.h"

namespace TarnLibA500 {

/// One loaded logging plug-in. What its functions throw is described and thrown on as a text, when the
/// plug-in's own object is gone: its code may be, too, soon after.
class SLoggerImpl : public CRefCount {
  public:
    /// Loads and starts the module. Throws CSharedLibraryException when it cannot be loaded or lacks a
    /// function, and a text for a module that does not want to work.
    SLoggerImpl(const SAnsiString& path, const SAnsiString& options);

    const SAnsiString& path() const { return path_; }

    /// Hands an entry over. Throws a text when the plug-in throws.
    void log(int level, int category, unsigned long message, const SAnsiString& text,
             const SIArray<SAnsiString>& arguments) const;

  protected:
    ~SLoggerImpl() override;

  private:
    void resolve();
    void start(const SAnsiString& options);
    int askForCategories() const;
    void terminate() const noexcept;

    SAnsiString path_;
    CSharedLibrary module_;
    LoggingPlugin::InitializeFunction initialize_ = nullptr;
    LoggingPlugin::TraceFunction trace_ = nullptr;
    LoggingPlugin::TerminateFunction terminate_ = nullptr;
    LoggingPlugin::GetParamFunction getParam_ = nullptr;
    LoggingPlugin::GetParamListFunction getParamList_ = nullptr;
    LoggingPlugin::FreeStringFunction freeString_ = nullptr;
    int categories_ = 0;
};

}  // namespace TarnLibA500

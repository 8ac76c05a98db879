#include "diag/loggerimpl.h"

#include <climits>

#include "diag/require.h"
#include "tarnlib/sstringconv.h"

namespace TarnLibA500 {
namespace {

constexpr const char* kUnit = "sloggerimpl";

template <class Function>
Function Needed(const CSharedLibrary& module, const char* name) {
    return reinterpret_cast<Function>(module.Resolve(name));
}

template <class Function>
Function Optional(const CSharedLibrary& module, const char* name) {
    return reinterpret_cast<Function>(module.TryResolve(name));
}

}  // namespace

SLoggerImpl::SLoggerImpl(const SAnsiString& path, const SAnsiString& options) {
    module_.LoadAbsolute(path);
    resolve();
    start(options);
}

void SLoggerImpl::resolve() {
    initialize_ = Needed<LoggingPlugin::InitializeFunction>(module_, "Initialize");
    trace_ = Needed<LoggingPlugin::TraceFunction>(module_, "Trace");
    terminate_ = Needed<LoggingPlugin::TerminateFunction>(module_, "Terminate");
    getParam_ = Optional<LoggingPlugin::GetParamFunction>(module_, "GetParam");
    getParamList_ = Optional<LoggingPlugin::GetParamListFunction>(module_, "GetParamList");
    freeString_ = Optional<LoggingPlugin::FreeStringFunction>(module_, "FreeString");
}

void SLoggerImpl::start(const SAnsiString& options) {
    const int version = Needed<LoggingPlugin::GetDLLVersionFunction>(module_, "GetDLLVersion")();
    if (version != LoggingPlugin::kInterfaceVersion)
        throw SAnsiString("it was built for version ") + SStringConv::ToString(version) + " of the interface";
    if (initialize_(options.getString()) == 0) throw SAnsiString("it refused to start");
    try {
        categories_ = askForCategories();
    } catch (...) {
        terminate_();  // it has started
        throw;
    }
}

int SLoggerImpl::askForCategories() const {
    int categories = INT_MAX;
    if (getParam_ == nullptr || freeString_ == nullptr) return categories;
    char* const text = getParam_("numcategories");
    if (text == nullptr) return categories;
    if (!SStringConv::FromString(SAnsiString(text), categories)) categories = INT_MAX;
    freeString_(text);
    return categories;
}

void SLoggerImpl::log(int level, int category, unsigned long message, const SAnsiString& text,
                      const SIArray<SAnsiString>& arguments) const {
    if (category >= categories_) return;
    SIArray<const char*> pointers;
    for (const SAnsiString& argument : arguments) pointers.Add(argument.getString());
    trace_(level, category, message, text.getString(), pointers.Data(), pointers.GetSize());
}

SLoggerImpl::~SLoggerImpl() {
    Require(GetRefCount() == 0, kUnit, "GetRefCount() == 0");
    terminate_();
}

}  // namespace TarnLibA500

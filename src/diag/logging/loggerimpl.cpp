#include "diag/logging/loggerimpl.h"

#include <climits>
#include <new>

#include "diag/assert/levels.h"
#include "diag/assert/require.h"
#include "diag/trace/traceformat.h"
#include "tarnlib/sdescribeexception.h"
#include "tarnlib/sstringconv.h"
#include "tarnlib/straceobj.h"

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

// Always the one type that is caught: a sum of texts is of their base's.
[[noreturn]] void Refuse(const SAnsiString& why) {
    throw why;
}

// Calls a function of a plug-in. An exception of the plug-in's ends here, and a text is thrown in its place.
template <class Call>
auto Guarded(const char* function, Call call) {
    SAnsiString why;
    try {
        return call();
    } catch (...) {
        why = SDescribeException();
    }
    Refuse(SAnsiString("its function ") + function + " threw: " + why);
}

// Ends go on without memory for a text.
void TraceEnd(const SAnsiString& path, const SAnsiString& why) noexcept {
    try {
        TARN_TRACE_AT(levels::kLoss, kUnit, "the logging plug-in %1 threw at its end: %2", path, why);
    } catch (const std::bad_alloc&) {
        return;
    }
}

}  // namespace

SLoggerImpl::SLoggerImpl(const SAnsiString& path, const SAnsiString& options) : path_(path) {
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
    const int version =
        Guarded("GetDLLVersion", Needed<LoggingPlugin::GetDLLVersionFunction>(module_, "GetDLLVersion"));
    if (version != LoggingPlugin::kInterfaceVersion)
        Refuse(SAnsiString("it was built for version ") + SStringConv::ToString(version) +
               " of the interface");
    if (Guarded("Initialize", [&] { return initialize_(options.getString()); }) == 0)
        Refuse("it refused to start");
    try {
        categories_ = Guarded("GetParam", [this] { return askForCategories(); });
    } catch (...) {
        terminate();  // it has started
        throw;
    }
}

int SLoggerImpl::askForCategories() const {
    int categories = INT_MAX;
    if (getParam_ == nullptr || freeString_ == nullptr) return categories;
    char* const text = getParam_("numcategories");
    if (text == nullptr) return categories;
    try {
        if (!SStringConv::FromString(SAnsiString(text), categories)) categories = INT_MAX;
    } catch (...) {
        freeString_(text);
        throw;
    }
    freeString_(text);
    return categories;
}

void SLoggerImpl::log(int level, int category, unsigned long message, const SAnsiString& text,
                      const SIArray<SAnsiString>& arguments) const {
    if (category >= categories_) return;
    SIArray<SAnsiString> visible;
    for (const SAnsiString& argument : arguments) visible.Add(VisibleZeros(argument));
    SIArray<const char*> pointers;
    for (const SAnsiString& argument : visible) pointers.Add(argument.getString());
    Guarded("Trace",
            [&] { trace_(level, category, message, text.getString(), pointers.Data(), pointers.GetSize()); });
}

void SLoggerImpl::terminate() const noexcept {
    try {
        terminate_();
    } catch (...) {
        TraceEnd(path_, SDescribeException());
    }
}

SLoggerImpl::~SLoggerImpl() {
    Require(GetRefCount() == 0, kUnit, "GetRefCount() == 0");
    terminate();
}

}  // namespace TarnLibA500

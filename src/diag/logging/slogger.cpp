#include "tarnlib/slogger.h"

#include "diag/assert/levels.h"
#include "diag/assert/require.h"
#include "diag/logging/activelogger.h"
#include "diag/logging/tracetext.h"
#include "diag/trace/traceformat.h"
#include "jtc/jtc.h"
#include "tarnlib/straceobj.h"

namespace TarnLibA500 {
namespace {

constexpr const char* kUnit = "slogger";

/// What the process has of logging. It is never destroyed: trace points outlive static objects.
struct LoggerState {
    JTCMonitor startAndStop;  ///< held while logging starts or stops, and by nobody else
    JTCMonitor lock;          ///< guards the pointer, and is never held while anything else is called
    int initializations = 0;
    bool isChanging = false;  ///< a plug-in is called then, and must not start or stop logging itself
    TraceBridge bridge;
    CRefPtr<ActiveLogger> active;
};

LoggerState& State() {
    static LoggerState& state = *new LoggerState;
    return state;
}

// The logger in use, which stays alive as long as the caller looks at it; null before Initialize.
CRefPtr<ActiveLogger> Active() {
    const JTCSynchronized lock(State().lock);
    return State().active;
}

void SetActive(const CRefPtr<ActiveLogger>& active) {
    const JTCSynchronized lock(State().lock);
    State().active = active;
}

/// Marks that logging is being started or stopped.
class Change {
  public:
    explicit Change(LoggerState& state) : state_(state) { state_.isChanging = true; }
    ~Change() { state_.isChanging = false; }
    Change(const Change&) = delete;
    Change& operator=(const Change&) = delete;

  private:
    LoggerState& state_;
};

SAnsiString LogLine(loglevel level, logcategory category, unsigned long message,
                    const SIArray<SAnsiString>& arguments) {
    SAnsiString line = STraceHelper("Log: level=%1 cat=%2 msg=%3", static_cast<int>(level),
                                    static_cast<int>(category), message);
    for (const SAnsiString& argument : arguments) line.concat(" p=").concat(argument);
    return line;
}

}  // namespace

namespace SLogger {

bool Initialize(const CParamLineArgs& args) {
    LoggerState& state = State();
    const JTCSynchronized lock(state.startAndStop);
    if (!Require(!state.isChanging, kUnit, "!isChanging")) return false;
    if (state.initializations == 0) {
        const Change change(state);
        SetActive(new ActiveLogger(state.bridge, args));
    }
    ++state.initializations;
    return true;
}

bool Initialize() {
    return Initialize(CParamLineArgs());
}

void Terminate() {
    LoggerState& state = State();
    const JTCSynchronized lock(state.startAndStop);
    if (!Require(!state.isChanging, kUnit, "!isChanging")) return;
    if (!Require(state.initializations > 0, kUnit, "initializations > 0")) return;
    if (--state.initializations != 0) return;
    const Change change(state);
    const CRefPtr<ActiveLogger> last = Active();
    SetActive(nullptr);
    last->stop();
}

void Log(loglevel level, logcategory category, unsigned long message, const SIArray<SAnsiString>& arguments) {
    const bool isTraced = MayTrace(levels::kEntry) && ShouldTrace(levels::kEntry, kUnit);
    const CRefPtr<ActiveLogger> active = Active();
    const bool hasPlugins = active != nullptr && !active->plugins().isEmpty();
    if (!isTraced && !hasPlugins) return;
    const SAnsiString line = VisibleZeros(LogLine(level, category, message, arguments));
    if (isTraced) EmitTraceText(levels::kEntry, kUnit, 0, line.getString());
    if (hasPlugins) active->plugins().log(level, category, message, line, arguments);
}

SAnsiString GetCmdLine() {
    const CRefPtr<ActiveLogger> active = Active();
    return active != nullptr ? active->getCmdLine() : SAnsiString();
}

SAnsiString GetLogFile() {
    if (Active() == nullptr) return SAnsiString();
    CollectedText path;
    TraceLog400::DeviceAdmin::get().device("main")->path(path);
    return NameFromUtf8(path.utf8());
}

unsigned long long GetMajorTick() {
    return TraceLog400::major_tick();
}

bool CanStackDump() {
    return State().bridge.CanStackDump();
}

bool IsNativeAssert() {
    return State().bridge.IsNativeAssert();
}

}  // namespace SLogger

void SLog(loglevel level, logcategory category, unsigned long message, const char* a0, const char* a1,
          const char* a2, const char* a3, const char* a4, const char* a5, const char* a6, const char* a7,
          const char* a8, const char* a9) {
    SIArray<SAnsiString> arguments;
    for (const char* argument : {a0, a1, a2, a3, a4, a5, a6, a7, a8, a9}) {
        if (argument != nullptr) arguments.Add(argument);
    }
    SLogger::Log(level, category, message, arguments);
}

SInstrumentationInitialize::SInstrumentationInitialize(const CParamLineArgs& args) {
    SLogger::Initialize(args);
}

SInstrumentationInitialize::~SInstrumentationInitialize() {
    SLogger::Terminate();
}

}  // namespace TarnLibA500

#include "command.h"
#include "options.h"
#include "system.h"
#include "tarnlib/slogger.h"
#include "tarnlib/straceobj.h"
#include "tracelog/tracelog.h"

#include <windows.h>

namespace tarn {
namespace {

using TarnLibA500::CParamLineArgs;
using TarnLibA500::SAnsiString;
using TarnLibA500::STraceObj;
using TraceLog400::EvalConfig;
namespace SLogger = TarnLibA500::SLogger;

constexpr const char* kUnit = "tarn";
constexpr int kMaxRepeats = 10'000'000;
constexpr int kMaxPause = 60'000;

constexpr const char* kHelp =
    "-level N -text T [-repeat N] [-pause MS]\n\n"
    "Emits a trace point of the level (0 to 18) with the text, once or N times with MS milliseconds\n"
    "between them, and says whether the logging options let it through, and where the log is. The\n"
    "options (-trace MASK, -loggingPath DIR, ...) are those of every command.\n"
    "Exit status: 0; 1 when the trace point is switched off; 2 for a wrong mask.\n";

// The log says it too, but here it is what was asked about.
void RequireMask() {
    SAnsiString letters;
    const bool isGiven = CParamLineArgs(SLogger::GetCmdLine()).Lookup("trace", letters);
    if (isGiven && !EvalConfig().assign_mask(letters.getString()))
        throw Failure(std::string("-trace must be letters of ") + EvalConfig::known_letters() +
                      ", and is \"" + Str(letters) + "\"");
}

ExitStatus Trace(const Words& arguments) {
    const Options options(arguments, {.required = {"level", "text"}, .values = {"repeat", "pause"}});
    const int level = options.number("level", 0, 18);
    const int repeats = options.has("repeat") ? options.number("repeat", 1, kMaxRepeats) : 1;
    const int pause = options.has("pause") ? options.number("pause", 0, kMaxPause) : 0;
    const SAnsiString text = options.value("text").c_str();
    RequireMask();
    if (!SLogger::ShouldTrace(level, kUnit, __LINE__)) {
        Print("level " + std::to_string(level) + " is switched off\n");
        return kNo;
    }
    for (int i = 0; i < repeats; ++i) {
        if (i != 0 && pause != 0) Sleep(static_cast<DWORD>(pause));
        STraceObj(level, kUnit, __LINE__)("%1", text);
    }
    Print("level " + std::to_string(level) + " is switched on\nlog: " + Str(SLogger::GetLogFile()) + "\n");
    return kYes;
}

}  // namespace

const Command kTraceCommand = {"trace", "what a logging mask lets through", kHelp, Trace};

}  // namespace tarn

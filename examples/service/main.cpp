// A service to begin with: command line, ini file, registry, log with rotation, workers, one instance, a stop in time.
// README.md says how it is run.
#include <cstdio>

#include "scm.h"
#include "serve.h"
#include "tarnlib/sdescribeexception.h"
#include "tarnlib/senvironment.h"
#include "tarnlib/snarrowtext.h"

#include <windows.h>

namespace {

using TarnLibA500::CParamLineArgs;
using TarnLibA500::SAnsiString;

bool Has(const CParamLineArgs& args, const char* option) {
    SAnsiString value;
    return args.Lookup(option, value);
}

int StopOther(const CParamLineArgs& args) {
    if (StopSignal::raiseOf(InstanceName(args))) return kStopped;
    std::fprintf(stderr, "service: none is running\n");
    return kRefused;
}

int RunOnConsole(const CParamLineArgs& args) {
    StopSignal stop(InstanceName(args));
    stop.takeConsoleEvents();
    return Serve(args, stop, [] {
        std::printf("running, process %lu\n", GetCurrentProcessId());
        std::fflush(stdout);
    });
}

}  // namespace

int main() {
    try {
        // Before anything else: names and texts of any script, from the command line on.
        TarnLibA500::SNarrowText::UseUtf8();
        SetConsoleOutputCP(CP_UTF8);
        const CParamLineArgs args(TarnLibA500::SEnvironment::GetArguments());
        if (Has(args, "stop")) return StopOther(args);
        return Has(args, "service") ? RunAsService(args) : RunOnConsole(args);
    } catch (...) {
        std::fprintf(stderr, "service: %s\n", TarnLibA500::SDescribeException().getString());
        return kFailed;
    }
}

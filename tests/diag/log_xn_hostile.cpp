// A logging plug-in that does what none should: the variable TARN_HOSTILE says what. What
// it saw it leaves in TARN_HOSTILE_SAW.
#include <atomic>
#include <cstdlib>
#include <stdexcept>
#include <thread>

#include "tarnlib/loggingplugin.h"
#include "tarnlib/senvironment.h"
#include "tarnlib/slogger.h"
#include "tarnlib/straceobj.h"

using namespace TarnLibA500;

namespace {

SAnsiString given, behaviour;
std::atomic<bool> inside{false}, mayEnd{false};
std::atomic<int> overlaps{0}, calls{0};
std::thread logging;

}  // namespace

#define EXPORTED extern "C" __declspec(dllexport)

EXPORTED int GetDLLVersion() {
    SEnvironment::Get("TARN_HOSTILE", behaviour);
    return LoggingPlugin::kInterfaceVersion + (behaviour == "of-another-time" ? 1 : 0);
}

EXPORTED int Initialize(const char* options) {
    given = options;
    if (behaviour == "throws-at-start") throw SAnsiString("not\r\ntoday\r\n");
    if (behaviour == "restarts" && SLogger::Initialize()) SLogger::Terminate();
    if (behaviour == "waits-at-end") {
        logging = std::thread([] {
            while (!mayEnd) SLog(loglevel_debug, logcategory_general, 1, "from another thread");
        });
    }
    return 1;
}

EXPORTED void Trace(int, int, unsigned long, const char*, const char* const*, unsigned) {
    if (inside.exchange(true)) ++overlaps;
    ++calls;
    std::this_thread::yield();
    if (behaviour == "logs") SLog(loglevel_debug, logcategory_general, 1, "from within");
    inside = false;
    if (behaviour == "throws") throw std::runtime_error("broken");
}

EXPORTED void Terminate() {
    mayEnd = true;
    if (logging.joinable()) logging.join();
    SEnvironment::Set("TARN_HOSTILE_SAW", STraceHelper("%1 calls, %2 in another, options %3", calls.load(),
                                                       overlaps.load(), given));
    if (behaviour == "throws-at-end") throw 1;
}

EXPORTED char* GetParam(const char*) {
    if (behaviour == "throws-when-asked") throw std::bad_alloc();
    return nullptr;
}

EXPORTED void FreeString(char* text) {
    std::free(text);
}

// A logging plug-in that does what none should: the variable TARN_HOSTILE says what. The test that loads it asks what
// it saw.
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <thread>

#include "tarnlib/loggingplugin.h"
#include "tarnlib/senvironment.h"
#include "tarnlib/slogger.h"

using namespace TarnLibA500;

namespace {

SAnsiString given;
SAnsiString behaviour;
std::atomic<bool> inside{false};
std::atomic<int> overlaps{0};
std::atomic<int> calls{0};
std::atomic<bool> mayEnd{false};
std::thread logging;

void Log(const char* text) {
    SLog(loglevel_debug, logcategory_general, 1, text);
}

}  // namespace

extern "C" {

__declspec(dllexport) int GetDLLVersion() {
    SEnvironment::Get("TARN_HOSTILE", behaviour);
    return LoggingPlugin::kInterfaceVersion + (behaviour == "of-another-time" ? 1 : 0);
}

__declspec(dllexport) int Initialize(const char* options) {
    given = options;
    if (behaviour == "throws-at-start") throw SAnsiString("not\r\ntoday\r\n");
    if (behaviour == "restarts" && SLogger::Initialize()) SLogger::Terminate();
    if (behaviour == "waits-at-end") {
        logging = std::thread([] {
            while (!mayEnd) Log("from another thread");
        });
    }
    return 1;
}

__declspec(dllexport) void Trace(int, int, unsigned long, const char*, const char* const*, unsigned) {
    if (inside.exchange(true)) ++overlaps;
    ++calls;
    std::this_thread::yield();
    if (behaviour == "logs") Log("from within");
    inside = false;
    if (behaviour == "throws") throw std::runtime_error("broken");
}

__declspec(dllexport) void Terminate() {
    mayEnd = true;
    if (logging.joinable()) logging.join();
    if (behaviour == "throws-at-end") throw 1;
}

__declspec(dllexport) char* GetParam(const char*) {
    if (behaviour == "throws-when-asked") throw std::bad_alloc();
    return nullptr;
}

__declspec(dllexport) void FreeString(char* text) {
    std::free(text);
}

__declspec(dllexport) int Overlaps() {
    return overlaps;
}

__declspec(dllexport) int Calls() {
    return calls;
}

__declspec(dllexport) const char* Options() {
    return given.getString();
}

}  // extern "C"

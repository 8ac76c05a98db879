// A DLL that acts when the process ends: its static destructor runs when all other threads are gone, and
// before those of the library, which it uses.
#include "tarnlib/slogger.h"

namespace {

struct LastWords {
    void (*say)() = nullptr;
    ~LastWords() {
        if (TarnLibA500::SLogger::ShouldTrace(6, "last_words") && say != nullptr) say();
    }
} lastWords;

}  // namespace

extern "C" __declspec(dllexport) void AtTheEnd(void (*say)()) {
    lastWords.say = say;
}

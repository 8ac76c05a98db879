// Takes a lock so many times. A turn adds one to the number in a file and is logged with a line before and
// after.
//
//   lock_turns NAME FOLDER TURNS STALE HOLD PAUSE          milliseconds in a turn and between two
#include <cstdlib>
#include <fstream>
#include <string>

#include "tarnlib/sfilelock.h"

#include <windows.h>

using TarnLibA500::SFileLock;

int main(int, char** arguments) {
    const std::string name = arguments[1];
    const std::string folder = arguments[2];
    const auto number = [&](int which) { return static_cast<unsigned short>(std::atoi(arguments[which])); };
    std::ofstream log(folder + "/log", std::ios::app);
    for (int turn = 0; turn < number(3); ++turn) {
        SFileLock lock((folder + "/lock").c_str(), number(4), 65535, false);
        const SFileLock::ErrorCodes taken = lock.lock();
        if (taken != SFileLock::lockOk && taken != SFileLock::lockOkBrokeStale) return taken;
        log << name << (taken == SFileLock::lockOk ? " begins" : " breaks") << std::endl;
        int count = 0;
        std::ifstream(folder + "/count") >> count;
        std::ofstream(folder + "/count") << count + 1;
        Sleep(number(5));
        log << name << " ends" << std::endl;
        if (lock.unlock() != SFileLock::lockOk) return 1;
        Sleep(number(6));  // lets others in
    }
    return 0;
}

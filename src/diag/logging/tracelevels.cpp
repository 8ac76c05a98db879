#include "diag/logging/tracelevels.h"

namespace TarnLibA500 {
namespace {

using TraceLog400::Logger;

// Repeated values are deliberate: a level is a purpose, and several purposes share an importance.
constexpr TraceLevel kLevels[] = {
    {0, 2, -1, -1, 0},  {1, 3, -1, -1, 1},  {2, 2, 1, -1, 0},   {3, 1, -1, -1, 1},   {4, 0, -1, -1, 0},
    {5, 1, -1, -1, 0},  {6, 2, -1, -1, 0},  {7, 3, -1, -1, 0},  {8, 4, -1, -1, 0},   {9, 3, 2, -1, 0},
    {10, 4, 2, -1, 0},  {11, -1, 2, -1, 0}, {12, 2, -1, -1, 0}, {13, -1, -1, -1, 0}, {14, 0, -1, -1, 0},
    {15, -1, -1, 0, 0}, {16, -1, -1, 1, 0}, {17, -1, -1, 2, 0}, {18, -1, -1, 3, 0},  {19, -1, -1, -1, 1},
};
static_assert(sizeof kLevels / sizeof kLevels[0] == kTerminatorLevel + 1);

}  // namespace

const TraceLevel& FindTraceLevel(int level) {
    return kLevels[level >= 0 && level < kTerminatorLevel ? level : kTerminatorLevel];
}

TraceLog400::EventInfo MakeEvent(const TraceLevel& row, const char* file, int line) {
    TraceLog400::EventInfo event;
    if (row.direct >= 0) {
        event.direct = row.direct;
    } else {
        event.importance = row.importance;
        event.attribute = row.attribute;
    }
    event.file = file;
    event.line = line;
    return event;
}

bool ValidateMapping(const TraceLevel* rows, int terminatorIndex) {
    for (int i = 0; i < terminatorIndex; ++i) {
        if (rows[i].level == i) continue;
        Logger(Logger::Assert) << "ValidateMapping: TraceLog mapping is out of sync index " << i
                               << " had trace_level " << rows[i].level;
        return false;
    }
    if (rows[terminatorIndex].level == kTerminatorLevel) return true;
    Logger(Logger::Assert) << "ValidateMapping: TraceLog mapping was incorrectly terminated - found level "
                           << rows[terminatorIndex].level;
    return false;
}

bool ValidateMapping() {
    return ValidateMapping(kLevels, kTerminatorLevel);
}

}  // namespace TarnLibA500

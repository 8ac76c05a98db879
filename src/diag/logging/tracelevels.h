#pragma once

#include <cstdint>

#include "tracelog/tracelog.h"

/// What the trace levels are to the tracing engine.
namespace TarnLibA500 {

inline constexpr int kRequestLevel = 1;
inline constexpr int kSdkRequestLevel = 3;
inline constexpr int kTerminatorLevel = 19;

/// A row of the mapping table.
struct TraceLevel {
    int level;       ///< the row's own index
    int importance;  ///< 0 to 4, -1 for none
    int attribute;   ///< the second attribute, -1 for none
    int direct;      ///< -1 for none; otherwise it stands in place of the other two
    int isRequest;   ///< 1 for the two request levels and the terminator
};

/// The row of a level; the terminator's for everything that is none.
const TraceLevel& FindTraceLevel(int level);

/// The event of a row at a place in the source.
TraceLog400::EventInfo MakeEvent(const TraceLevel& row, const char* file, int line);

/// Checks the table: every row is in its place, and the terminator follows the last. Otherwise false, with
/// what is wrong written to the assert logger.
bool ValidateMapping(const TraceLevel* rows, int terminatorIndex);
bool ValidateMapping();

}  // namespace TarnLibA500

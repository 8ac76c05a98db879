#include "tarnlib/smonotonicclock.h"

#include "seam/osclock.h"

namespace TarnLibA500 {

unsigned long long SMonotonicClock::GetMilliseconds() noexcept {
    return osclock::Tick();
}

}  // namespace TarnLibA500

#include "tarnlib/stimespan.h"

#include "diag/assert/require.h"

namespace TarnLibA500 {
namespace {

constexpr const char* kUnit = "stime";
constexpr const char* kOneSign =
    "((nDays >= 0) && (nHours >= 0) && (nMinutes >= 0) && (nSeconds >= 0) && (nMilliseconds >= 0)) || "
    "((nDays <= 0) && (nHours <= 0) && (nMinutes <= 0) && (nSeconds <= 0) && (nMilliseconds <= 0))";

}  // namespace

STimeSpan::STimeSpan(long days, long hours, long minutes, long seconds, long milliseconds)
    : milliseconds_(days * kDay + hours * kHour + minutes * kMinute + seconds * kSecond + milliseconds) {
    const bool forward = days >= 0 && hours >= 0 && minutes >= 0 && seconds >= 0 && milliseconds >= 0;
    const bool backward = days <= 0 && hours <= 0 && minutes <= 0 && seconds <= 0 && milliseconds <= 0;
    Require(forward || backward, kUnit, kOneSign);
}

void STimeSpan::Set(long days, long hours, long minutes, long seconds, long milliseconds) {
    *this = STimeSpan(days, hours, minutes, seconds, milliseconds);
}

}  // namespace TarnLibA500

// Dates and times as trace arguments: here, because trace points stand below them.
#include <cstdio>
#include <cstdlib>

#include "tarnlib/sdatetime.h"
#include "tarnlib/stimezone.h"
#include "tarnlib/straceparameter.h"

namespace TarnLibA500 {
namespace {

constexpr long long kHoursPerDay = 24;

// Each part has the span's sign; they are made positive one by one, because the longest negative span has no
// positive counterpart.
SAnsiString SpanText(const STimeSpan& span) {
    const char* const sign = span.GetTotalMilliseconds() < 0 ? "-" : "";
    const long long days = std::llabs(span.GetTotalHours() / kHoursPerDay);
    char text[64];
    int length = days != 0 ? std::snprintf(text, sizeof text, "%s%lldd ", sign, days)
                           : std::snprintf(text, sizeof text, "%s", sign);
    length +=
        std::snprintf(text + length, sizeof text - static_cast<std::size_t>(length),
                      "%02ld:%02ld:%02ld.%03ld", std::labs(span.GetHours()), std::labs(span.GetMinutes()),
                      std::labs(span.GetSeconds()), std::labs(span.GetMilliseconds()));
    return SAnsiString(text, static_cast<std::uint32_t>(length));
}

}  // namespace

STraceParameter::STraceParameter(const SDateTime& dateTime)
    : long_(dateTime.IsValid() ? dateTime.Format("yyyy-MM-dd@HH:mm:ss.SS", STimeZone::TZ_UTC())
                               : SAnsiString("invalid-date-time")) {}

STraceParameter::STraceParameter(const SDate& date)
    : long_(date.IsValid() ? date.Format("yyyy-MM-dd") : SAnsiString("invalid-date")) {}

STraceParameter::STraceParameter(const STime& time)
    : long_(time.IsValid() ? time.Format("HH:mm:ss.SS", STimeZone::TZ_UTC()) : SAnsiString("invalid-time")) {}

STraceParameter::STraceParameter(const STimeSpan& span) : long_(SpanText(span)) {}

}  // namespace TarnLibA500

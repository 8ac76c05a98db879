// A date-time as a trace argument: here, because trace points stand below dates.
#include "tarnlib/sdatetime.h"
#include "tarnlib/stimezone.h"
#include "tarnlib/straceparameter.h"

namespace TarnLibA500 {

STraceParameter::STraceParameter(const SDateTime& dateTime)
    : long_(dateTime.IsValid() ? dateTime.Format("yyyy-MM-dd@HH:mm:ss.SS", STimeZone::TZ_UTC())
                               : SAnsiString("invalid-date-time")) {}

}  // namespace TarnLibA500

#pragma once

#include "seam/seam.h"

#include <windows.h>

/// The one way to the system's time zone data.
namespace TarnLibA500::oszone {

/// The rules of the system's zone in a year. False when the system does not say.
bool ReadFromSystem(unsigned short year, TIME_ZONE_INFORMATION& zone) noexcept;

inline constinit seam::Replaceable<decltype(ReadFromSystem)> readZone;

/// The same; tests set the zone.
inline bool Read(unsigned short year, TIME_ZONE_INFORMATION& zone) noexcept {
    return readZone.orElse(ReadFromSystem)(year, zone);
}

}  // namespace TarnLibA500::oszone

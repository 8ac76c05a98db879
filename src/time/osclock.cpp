#include "time/osclock.h"

namespace TarnLibA500::osclock {
namespace {

using ReadYear = BOOL(WINAPI*)(USHORT, DYNAMIC_TIME_ZONE_INFORMATION*, TIME_ZONE_INFORMATION*);

// Looked up, because the first systems of version 6 do not have it.
ReadYear FindReadYear() noexcept {
    const HMODULE kernel = GetModuleHandleW(L"kernel32.dll");
    if (kernel == nullptr) return nullptr;
    void* const found = reinterpret_cast<void*>(GetProcAddress(kernel, "GetTimeZoneInformationForYear"));
    return reinterpret_cast<ReadYear>(found);
}

}  // namespace

bool ReadSystemZone(unsigned short year, TIME_ZONE_INFORMATION& zone) noexcept {
    static const ReadYear readYear = FindReadYear();
    if (readYear != nullptr && readYear(year, nullptr, &zone)) return true;
    return GetTimeZoneInformation(&zone) != TIME_ZONE_ID_INVALID;
}

}  // namespace TarnLibA500::osclock

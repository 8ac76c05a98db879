#include "time/oszone.h"

#include <atomic>

#include "seam/osmodules.h"

namespace TarnLibA500::oszone {
namespace {

using ReadYear = BOOL(WINAPI*)(USHORT, DYNAMIC_TIME_ZONE_INFORMATION*, TIME_ZONE_INFORMATION*);

// Looked up, because the first systems of version 6 do not have it.
ReadYear FindReadYear() noexcept {
    const HMODULE kernel = osmodules::Loaded(L"kernel32.dll");
    if (kernel == nullptr) return nullptr;
    return reinterpret_cast<ReadYear>(osmodules::Find(kernel, "GetTimeZoneInformationForYear"));
}

}  // namespace

bool ReadFromSystem(unsigned short year, TIME_ZONE_INFORMATION& zone) noexcept {
    // Not a static that waits for its construction: a thread that asks the loader is ended in there when the
    // process ends, and nothing would construct it any more.
    static constinit std::atomic<ReadYear> known{nullptr};
    ReadYear readYear = known.load(std::memory_order_relaxed);
    if (readYear == nullptr) known.store(readYear = FindReadYear(), std::memory_order_relaxed);
    if (readYear != nullptr && readYear(year, nullptr, &zone)) return true;
    return GetTimeZoneInformation(&zone) != TIME_ZONE_ID_INVALID;
}

}  // namespace TarnLibA500::oszone

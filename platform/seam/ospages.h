#pragma once

#include <cstddef>

#include "seam/seam.h"

#include <windows.h>

/// What a pool of memory asks of the system: pages, and to be told when a thread ends. The calls fail as the system
/// does: with null or false, and the code in GetLastError.
namespace ospages {

/// What is open is regions of pages and notices.
struct Kind {
    static void SetError(DWORD error) noexcept { SetLastError(error); }
};
using Calls = seam::Calls<Kind>;

/// The step between the addresses of regions: each begins at a multiple of it.
inline constexpr std::size_t kRegionStep = 65536;

inline void* Take(std::size_t bytes) noexcept {
    if (Calls::MustFail()) return nullptr;
    void* const region = VirtualAlloc(nullptr, bytes, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
    if (region != nullptr) Calls::Opened();
    return region;
}

/// Takes pages of a region away; they may be committed again.
inline void Decommit(void* pages, std::size_t bytes) noexcept {
    VirtualFree(pages, bytes, MEM_DECOMMIT);
}

/// Pages that are there already stay as they are.
inline bool Commit(void* pages, std::size_t bytes) noexcept {
    return !Calls::MustFail() && VirtualAlloc(pages, bytes, MEM_COMMIT, PAGE_READWRITE) != nullptr;
}

inline void Release(void* region) noexcept {
    Calls::Closed();
    VirtualFree(region, 0, MEM_RELEASE);
}

/// A notice, by which each thread that set a value hears of its end; FLS_OUT_OF_INDEXES when there is none.
inline DWORD NewNotice(PFLS_CALLBACK_FUNCTION atEnd) noexcept {
    const DWORD notice = Calls::MustFail() ? FLS_OUT_OF_INDEXES : FlsAlloc(atEnd);
    if (notice != FLS_OUT_OF_INDEXES) Calls::Opened();
    return notice;
}

inline bool SetValue(DWORD notice, void* value) noexcept {
    return !Calls::MustFail() && FlsSetValue(notice, value) != FALSE;
}

/// Calls the function once more for every thread that set a value.
inline void FreeNotice(DWORD notice) noexcept {
    Calls::Closed();
    FlsFree(notice);
}

}  // namespace ospages

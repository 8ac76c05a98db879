#include "files/patience.h"

#include <algorithm>
#include <iterator>

#include "files/osfiles.h"
#include "oscodes/oscodes.h"
#include "seam/osclock.h"

namespace TarnLibA500 {

bool IsInUse(DWORD error) noexcept {
    return error == ERROR_SHARING_VIOLATION || error == ERROR_LOCK_VIOLATION;
}

bool IsRenamingHindered(DWORD error, const SWCharString& target) {
    constexpr DWORD kFixed = FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_DIRECTORY;
    WIN32_FILE_ATTRIBUTE_DATA data;
    if (error != ERROR_ACCESS_DENIED) return IsInUse(error);
    return !osfiles::Attributes(target.getString(), data) || (data.dwFileAttributes & kFixed) == 0;
}

bool Patience::IsGone(DWORD error) noexcept {
    return oscodes::IsMissing(error);
}

// A refusal stays one, unless it is that of a file which is deleted and open.
bool Patience::IsRemovalHindered(DWORD error) noexcept {
    return IsInUse(error) || (error == ERROR_ACCESS_DENIED && osfiles::WasBeingDeleted());
}

bool Patience::pause(int before) noexcept {
    static constexpr DWORD kMilliseconds[] = {10, 50, 200, 350, 350};
    if (before >= static_cast<int>(std::size(kMilliseconds)) || left_ == 0) return false;
    const DWORD milliseconds = std::min(kMilliseconds[before], left_);
    left_ -= milliseconds;
    osclock::Sleep(milliseconds);
    return true;
}

}  // namespace TarnLibA500

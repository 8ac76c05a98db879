#pragma once

#include "seam/seam.h"

#include <windows.h>

/// The one way to the windows that somebody may see. user32.dll, which has them, is looked up when it is needed.
namespace TarnLibA500::osdesktop {

inline constinit seam::Replaceable<decltype(ProcessIdToSessionId)> sessionOf;
inline constinit seam::Replaceable<decltype(GetUserObjectInformationW)> information;
inline constinit seam::Replaceable<decltype(MessageBoxW)> messageBox;

/// The session of this process. Without an answer it is that of the services.
inline DWORD OwnSession() {
    DWORD session = 0;
    return sessionOf.orElse(ProcessIdToSessionId)(GetCurrentProcessId(), &session) ? session : 0;
}

}  // namespace TarnLibA500::osdesktop

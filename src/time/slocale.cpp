#include "tarnlib/slocale.h"

#include <windows.h>

namespace TarnLibA500 {

unsigned long SLocale::GetCurrentThreadLocale() noexcept {
    return GetThreadLocale();
}

}  // namespace TarnLibA500

#include "tarnlib/tarnversion.h"

namespace TarnLibA500 {

int TarnVersion() noexcept {
    return TARN_VERSION;
}

const char* TarnVersionText() noexcept {
    return TARN_VERSION_TEXT;
}

}  // namespace TarnLibA500

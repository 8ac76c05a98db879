#include "kcm/kcm.h"
#include "kcm/oscrypto.h"

#include <windows.h>

namespace KCM400 {

bool random(unsigned char* bytes, unsigned count) {
    if (count == 0) return true;
    if (bytes == nullptr) return false;
    if (oscrypto::Random(bytes, count)) return true;
    SecureZeroMemory(bytes, count);
    return false;
}

}  // namespace KCM400

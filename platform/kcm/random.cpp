#include <openssl/crypto.h>

#include "kcm/kcm.h"
#include "kcm/oscrypto.h"

namespace KCM400 {

bool random(unsigned char* bytes, unsigned count) {
    if (count == 0) return true;
    if (bytes == nullptr) return false;
    if (oscrypto::Random(bytes, count)) return true;
    OPENSSL_cleanse(bytes, count);
    return false;
}

}  // namespace KCM400

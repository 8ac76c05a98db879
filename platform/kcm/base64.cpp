#include "kcm/kcm.h"
#include "kcm/libcrypto.h"

namespace KCMUtility400 {

namespace {

// The library counts in int. No text of a 32-bit process is longer.
constexpr unsigned kMostBytes = 0x5FFF'FFFFu;

}  // namespace

unsigned base64Into(char* text, unsigned capacity, const unsigned char* bytes, unsigned count) {
    if (text == nullptr || count > kMostBytes || (bytes == nullptr && count != 0)) return KCM400::kFailed;
    const unsigned length = (count + 2) / 3 * 4;
    if (capacity <= length) return KCM400::kFailed;
    const KCM400::libcrypto::Functions* const functions = KCM400::libcrypto::Get();
    if (functions == nullptr) return KCM400::kFailed;
    functions->encodeBlock(reinterpret_cast<unsigned char*>(text), bytes, static_cast<int>(count));
    return length;
}

}  // namespace KCMUtility400

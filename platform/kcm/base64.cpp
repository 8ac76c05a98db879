#include "kcm/kcm.h"

namespace KCMUtility400 {

namespace {

// No text of a 32-bit process is longer.
constexpr unsigned kMostBytes = 0x5FFF'FFFFu;
constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// 24 bits as four characters.
void Write(char* text, unsigned bits) {
    text[0] = kAlphabet[bits >> 18];
    text[1] = kAlphabet[bits >> 12 & 63];
    text[2] = kAlphabet[bits >> 6 & 63];
    text[3] = kAlphabet[bits & 63];
}

}  // namespace

// Written here, because those who have room enough do not expect a failure, and OpenSSL may be missing.
unsigned base64Into(char* text, unsigned capacity, const unsigned char* bytes, unsigned count) {
    if (text == nullptr || count > kMostBytes || (bytes == nullptr && count != 0)) return KCM400::kFailed;
    const unsigned length = (count + 2) / 3 * 4;
    if (capacity <= length) return KCM400::kFailed;
    unsigned left = count;
    for (; left >= 3; left -= 3, bytes += 3, text += 4)
        Write(text, unsigned{bytes[0]} << 16 | unsigned{bytes[1]} << 8 | bytes[2]);
    if (left != 0) {
        Write(text, unsigned{bytes[0]} << 16 | (left == 2 ? unsigned{bytes[1]} << 8 : 0));
        if (left == 1) text[2] = '=';
        text[3] = '=';
        text += 4;
    }
    *text = '\0';
    return length;
}

}  // namespace KCMUtility400

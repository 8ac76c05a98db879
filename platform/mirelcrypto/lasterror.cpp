// Why something failed: OpenSSL's list of errors of the thread.
#include "mirelcrypto/lasterror.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "mirelcrypto/entries.h"
#include "mirelcrypto/osssl.h"

namespace mirelcrypto {

int CopyText(const char* text, char* out, int room) {
    const auto length = static_cast<int>(std::strlen(text));
    if (out == nullptr || room < 1) return length;
    const int copied = std::min(length, room - 1);
    std::memcpy(out, text, static_cast<std::size_t>(copied));
    out[copied] = '\0';
    return length;
}

void Complain(int library, int reason, const char* text) {
    ERR_raise_data(library, reason, "%s", text);
}

void ComplainOfSystem(int library, int reason, const char* text) {
    const unsigned long error = GetLastError();
    ERR_raise_data(library, reason, "%s: system error %lu", text, error);
    SetLastError(error);
}

int LastError(char* text, int room) {
    constexpr std::size_t kMost = 2048;
    constexpr std::size_t kMostWords = 256;
    char all[kMost] = "";
    std::size_t used = 0;
    const unsigned long newest = ERR_peek_last_error();
    const char* data = nullptr;
    int flags = 0;
    while (const unsigned long code = ERR_get_error_all(nullptr, nullptr, nullptr, &data, &flags)) {
        char words[kMostWords];
        ERR_error_string_n(code, words, sizeof words);
        const bool hasData = (flags & ERR_TXT_STRING) != 0 && *data != '\0';
        const int length = std::snprintf(all + used, kMost - used, "%s%s%s%s%s", used == 0 ? "" : "; ", words,
                                         hasData ? " (" : "", hasData ? data : "", hasData ? ")" : "");
        used = std::min(kMost - 1, used + static_cast<std::size_t>(std::max(length, 0)));
    }
    CopyText(all, text, room);
    return static_cast<int>(newest);
}

}  // namespace mirelcrypto

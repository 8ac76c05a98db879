#include "net/smtpbase64.h"

#include <algorithm>
#include <cstring>

#include "kcm/kcm.h"

namespace TarnLibA500::smtp {

void Base64Lines::writeLine(const unsigned char* bytes, unsigned count) {
    constexpr unsigned kRoom = 80;  // 76 characters, CR LF, or a zero in their place
    char* const line = file_.room(kRoom);
    const unsigned length = KCMUtility400::base64Into(line, kRoom, bytes, count);
    line[length] = '\r';
    line[length + 1] = '\n';
    file_.wrote(length + 2);
}

void Base64Lines::add(const unsigned char* bytes, unsigned count) {
    if (kept_ != 0) {
        const unsigned part = std::min(count, kLineBytes - kept_);
        std::memcpy(line_ + kept_, bytes, part);
        kept_ += part;
        bytes += part;
        count -= part;
        if (kept_ < kLineBytes) return;
        writeLine(line_, kLineBytes);
    }
    for (; count >= kLineBytes; count -= kLineBytes, bytes += kLineBytes) writeLine(bytes, kLineBytes);
    std::memcpy(line_, bytes, count);
    kept_ = count;
}

void Base64Lines::finish() {
    if (kept_ != 0) writeLine(line_, kept_);
    kept_ = 0;
}

}  // namespace TarnLibA500::smtp

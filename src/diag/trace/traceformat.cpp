#include "diag/trace/traceformat.h"

#include "strings/text/lineend.h"

namespace TarnLibA500 {

SAnsiString VisibleZeros(const SAnsiString& text) {
    const char* const end = text.getString() + text.getLength();
    const char* at = text.getString();
    const char* zero = static_cast<const char*>(std::memchr(at, '\0', text.getLength()));
    if (zero == nullptr) return text;
    SAnsiString visible;
    for (; zero != nullptr;
         zero = static_cast<const char*>(std::memchr(at, '\0', static_cast<std::size_t>(end - at)))) {
        visible.concat(at, static_cast<std::uint32_t>(zero - at)).concat("\\x00");
        at = zero + 1;
    }
    return visible.concat(at, static_cast<std::uint32_t>(end - at));
}

const char* TraceTextBuffer::text() {
    if (!long_.isEmpty()) {
        long_ = VisibleZeros(WithoutLineEnd(long_));
        return long_.getString();
    }
    length_ = LengthWithoutLineEnd(usual_, length_);
    usual_[length_] = '\0';
    if (std::memchr(usual_, '\0', length_) == nullptr) return usual_;
    long_ = VisibleZeros(SAnsiString(usual_, length_));
    return long_.getString();
}

}  // namespace TarnLibA500

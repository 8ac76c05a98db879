#include "tarnlib/swordcursor.h"

#include <cstring>

#include "strings/words/characterset.h"

namespace TarnLibA500 {
namespace {

// The kinds of a byte. One that is not a character by itself may be a separator, too.
constexpr unsigned char kPartial = 1;
constexpr unsigned char kSeparator = 2;
static_assert(kPartial == static_cast<unsigned char>(true));  // as a code page tells it

}  // namespace

SWordCursor::SWordCursor(const SAnsiString& text, const SAnsiString& separators)
    : text_(text), separators_(separators), page_(&mbchar::CodePage::Current()), at_(text_.getString()) {
    std::memcpy(kinds_, page_->partials(), sizeof kinds_);
    const char* const end = separators_.end().getPtr();
    for (const char* at = separators_.getString(); at < end;) {
        const unsigned bytes = CharacterBytes(*page_, at);
        if (bytes == 1) kinds_[static_cast<unsigned char>(*at)] |= kSeparator;
        at += bytes;
    }
}

// For a character of more than one byte.
bool SWordCursor::isSeparator(unsigned bytes) const noexcept {
    const char* const end = separators_.end().getPtr();
    for (const char* at = separators_.getString(); at < end;) {
        const unsigned length = CharacterBytes(*page_, at);
        if (length == bytes && std::memcmp(at, at_, bytes) == 0) return true;
        at += length;
    }
    return false;
}

// Most characters are one byte that stands for itself.
void SWordCursor::skip(bool separators) noexcept {
    const char* const end = text_.end().getPtr();
    const unsigned char passed = separators ? kSeparator : 0;
    for (;;) {
        const char* at = at_;
        while (at < end && kindOf(*at) == passed) ++at;
        at_ = at;
        if (at >= end || (kindOf(*at) & kPartial) == 0) return;
        const unsigned bytes = CharacterBytes(*page_, at);
        const bool isOne = bytes == 1 ? (kindOf(*at) & kSeparator) != 0 : isSeparator(bytes);
        if (isOne != separators) return;
        at_ += bytes;
    }
}

// Mostly by single bytes that stand for themselves, as skip does it, but without a call.
bool SWordCursor::next() noexcept {
    const char* const end = text_.end().getPtr();
    const auto isOther = [this, end](const char* at) { return at < end && (kindOf(*at) & kPartial) != 0; };
    const char* at = at_;
    while (at < end && kindOf(*at) == kSeparator) ++at;
    at_ = at;
    if (isOther(at)) skip(true);
    const char* const start = at = at_;
    while (at < end && kindOf(*at) == 0) ++at;
    at_ = at;
    if (isOther(at)) skip(false);
    length_ = static_cast<std::uint32_t>(at_ - start);
    word_ = length_ != 0 ? start : nullptr;
    return length_ != 0;
}

bool SWordCursor::is(const char* text) const noexcept {
    return text != nullptr && word_ != nullptr && std::strlen(text) == length_ &&
           std::memcmp(text, word_, length_) == 0;
}

}  // namespace TarnLibA500

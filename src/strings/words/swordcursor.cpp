#include "tarnlib/swordcursor.h"

#include <cstring>

#include "strings/words/characterset.h"

namespace TarnLibA500 {

SWordCursor::SWordCursor(const SAnsiString& text, const SAnsiString& separators)
    : text_(text), separators_(separators), page_(&mbchar::CodePage::Current()), at_(text_.getString()) {
    const char* const end = separators_.end().getPtr();
    for (const char* at = separators_.getString(); at < end;) {
        const unsigned bytes = CharacterBytes(*page_, at);
        if (bytes == 1) single_[static_cast<unsigned char>(*at)] = true;
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
    for (;;) {
        const char* at = at_;
        while (at < end && page_->isAlone(*at) && single_[static_cast<unsigned char>(*at)] == separators)
            ++at;
        at_ = at;
        if (at >= end || page_->isAlone(*at)) return;
        const unsigned bytes = CharacterBytes(*page_, at);
        if ((bytes == 1 ? single_[static_cast<unsigned char>(*at)] : isSeparator(bytes)) != separators)
            return;
        at_ += bytes;
    }
}

// Mostly by single bytes that stand for themselves, as skip does it, but without a call.
bool SWordCursor::next() noexcept {
    const char* const end = text_.end().getPtr();
    const auto isOther = [this, end](const char* at) { return at < end && !page_->isAlone(*at); };
    const char* at = at_;
    while (at < end && page_->isAlone(*at) && single_[static_cast<unsigned char>(*at)]) ++at;
    at_ = at;
    if (isOther(at)) skip(true);
    const char* const start = at = at_;
    while (at < end && page_->isAlone(*at) && !single_[static_cast<unsigned char>(*at)]) ++at;
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

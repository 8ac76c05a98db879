// Copying and concatenating zero-terminated arrays. The byte forms give what the C library's bounded
// functions give, but check the sizes here: other C runtimes end the process when a text does not fit.

#include <algorithm>
#include <cstring>
#include <string>

#include "tarnlib/sstring.h"

namespace TarnLibA500 {
namespace {

template <class unit>
std::uint32_t LengthUpTo(const unit* text, std::uint32_t maximum) {
    std::uint32_t length = 0;
    while (length < maximum && text[length] != unit()) ++length;
    return length;
}

template <class unit>
void Put(unit* destination, const unit* source, std::uint32_t length) {
    std::char_traits<unit>::move(destination, source, length);
    destination[length] = unit();
}

template <class unit>
void CopyCut(unit* destination, std::uint32_t size, const unit* source, std::uint32_t maximum) {
    if (destination == nullptr || size == 0) return;
    Put(destination, source, LengthUpTo(source, std::min(maximum, size - 1)));
}

// The count that asks the bounded functions for a cut text instead of a refusal; also "no limit" where they
// have no count.
constexpr std::uint32_t kCutToFit = 0xFFFFFFFF;

// Appends at most "maximum" units; a text that does not fit, or an unterminated destination, leaves it empty.
template <class unit>
void AppendWhole(unit* destination, std::uint32_t size, const unit* source, std::uint32_t maximum) {
    if (destination == nullptr || size == 0) return;
    const std::uint32_t used = LengthUpTo(destination, size);
    const std::uint32_t room = size - used;  // the terminator included; 0 for an unterminated destination
    const std::uint32_t added = source != nullptr ? LengthUpTo(source, std::min(maximum, room)) : room;
    if (added < room) {
        Put(destination + used, source, added);
    } else {
        destination[0] = unit();
    }
}

template <class unit>
void AppendAtMost(unit* destination, std::uint32_t size, const unit* source, std::uint32_t maximum) {
    if (destination == nullptr || source == nullptr) return;
    const std::uint32_t used = LengthUpTo(destination, size);
    const bool cut = maximum == kCutToFit && used < size;
    AppendWhole(destination, size, source, cut ? size - used - 1 : maximum);
}

}  // namespace

void CopyString(char* destination, std::uint32_t size, const char* source) {
    CopyCut(destination, size, source != nullptr ? source : "", kCutToFit);
}

void CopyString(wchar_t* destination, std::uint32_t size, const wchar_t* source) {
    if (source != nullptr) return CopyCut(destination, size, source, kCutToFit);
    if (destination != nullptr) *destination = L'\0';  // deliberately without regard to the size
}

void CopyStringN(char* destination, std::uint32_t size, const char* source, std::uint32_t maximum) {
    if (source == nullptr || destination == nullptr || size == 0) return;
    if (maximum == kCutToFit) return CopyCut(destination, size, source, maximum);
    const std::uint32_t length = LengthUpTo(source, std::min(maximum, size));
    if (length < size) {
        Put(destination, source, length);
    } else {
        destination[0] = '\0';
    }
}

void CopyStringN(wchar_t* destination, std::uint32_t size, const wchar_t* source, std::uint32_t maximum) {
    if (source != nullptr) CopyCut(destination, size, source, maximum);
}

void ConcatString(char* destination, std::uint32_t size, const char* source) {
    AppendWhole(destination, size, source, kCutToFit);
}
void ConcatString(wchar_t* destination, std::uint32_t size, const wchar_t* source) {
    AppendWhole(destination, size, source, kCutToFit);
}
void ConcatStringN(char* destination, std::uint32_t size, const char* source, std::uint32_t maximum) {
    AppendAtMost(destination, size, source, maximum);
}
void ConcatStringN(wchar_t* destination, std::uint32_t size, const wchar_t* source, std::uint32_t maximum) {
    AppendAtMost(destination, size, source, maximum);
}

}  // namespace TarnLibA500

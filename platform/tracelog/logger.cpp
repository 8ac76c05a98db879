#include <cstring>

#include "seam/osmemory.h"
#include "tracelog/effective.h"
#include "tracelog/logline.h"

namespace TraceLog400 {
namespace {

constexpr std::size_t kMaxText = 64 * 1024;
constexpr std::size_t kMaxLongText = 1024 * 1024;
constexpr int kUrgentImportance = 3;
constexpr int kWarningAttribute = 2;
constexpr char kCut[] = "...";

char LetterOf(Logger::Kind kind, const EventInfo& event) {
    switch (kind) {
        case Logger::M:
            return event.importance != -1 ? detail::ImportanceLetter(event) : 'i';
        case Logger::Warning:
            return 'w';
        case Logger::Assert:
            return 'a';
        case Logger::S:
        case Logger::XL:
            break;
    }
    return detail::ImportanceLetter(event);
}

bool IsOn(Logger::Kind kind, const EventInfo& event) {
    const bool isEvent = kind == Logger::S || kind == Logger::XL;
    return isEvent ? event.would_trace() : detail::isWriting.load(std::memory_order_relaxed);
}

bool IsUrgent(Logger::Kind kind, const EventInfo& event) {
    return kind == Logger::Assert || kind == Logger::Warning || event.importance >= kUrgentImportance ||
           event.attribute == kWarningAttribute;
}

}  // namespace

Logger::Logger(Kind kind, const EventInfo& event) : Logger(kind, event, nullptr) {}

Logger::Logger(Kind kind, const EventInfo& event, Device* device)
    : event_(event), kind_(kind), on_(IsOn(kind, event)), device_(device), text_(usual_) {
    static_assert(kUsualBytes > detail::kMaxPrefix);
    if (on_) bytes_ = detail::WritePrefix(text_, LetterOf(kind, event), event);
}

Logger::~Logger() {
    if (on_) {
        Device& device = device_ != nullptr ? *device_ : detail::MainDevice();
        device.write(text_, bytes_);
        if (IsUrgent(kind_, event_)) device.flush();
    }
    if (text_ != usual_) osmemory::Free(text_);
}

Logger& Logger::operator<<(const char* text) {
    return text != nullptr ? write(text, std::strlen(text)) : *this;
}

Logger& Logger::operator<<(long long number) {
    char digits[24];
    char* at = digits + sizeof digits;
    unsigned long long rest =
        number < 0 ? 0ULL - static_cast<unsigned long long>(number) : static_cast<unsigned long long>(number);
    do {
        *--at = static_cast<char>('0' + rest % 10);
        rest /= 10;
    } while (rest != 0);
    if (number < 0) *--at = '-';
    return write(at, static_cast<std::size_t>(digits + sizeof digits - at));
}

Logger& Logger::write(const char* text, std::size_t bytes) {
    if (!on_ || isCut_) return *this;
    const std::size_t most = kind_ == XL ? kMaxLongText : kMaxText;
    if (bytes_ + bytes > most) {
        isCut_ = true;
        bytes = detail::WholeCharacters(text, most > bytes_ ? most - bytes_ : 0);
    }
    const std::size_t escaped = detail::EscapedBytes(text, bytes);
    if (!grow(bytes_ + escaped + sizeof kCut)) return *this;
    if (escaped == bytes) {
        std::memcpy(text_ + bytes_, text, bytes);
    } else {
        detail::WriteEscaped(text_ + bytes_, text, bytes);
    }
    bytes_ += escaped;
    if (isCut_) {
        std::memcpy(text_ + bytes_, kCut, sizeof kCut - 1);
        bytes_ += sizeof kCut - 1;
    }
    return *this;
}

// Without memory the line stays as short as it is.
bool Logger::grow(std::size_t bytes) {
    if (bytes <= capacity_) return true;
    const std::size_t capacity = bytes * 2;
    char* const larger =
        static_cast<char*>(osmemory::Reallocate(text_ != usual_ ? text_ : nullptr, capacity));
    if (larger == nullptr) {
        isCut_ = true;
        return false;
    }
    if (text_ == usual_) std::memcpy(larger, usual_, bytes_);
    text_ = larger;
    capacity_ = capacity;
    return true;
}

}  // namespace TraceLog400

#include <atomic>
#include <cstring>

#include "tracelog/effective.h"

namespace TraceLog400 {
namespace {

constexpr std::uint32_t kImportances = 5;
constexpr std::uint32_t kAllImportances = (1U << kImportances) - 1;
constexpr std::uint32_t kFirstAttributeBit = 8;
constexpr std::uint32_t kFirstDirectBit = 16;
constexpr std::uint32_t kEverything = 0xFFFFFFFF;
constexpr std::uint32_t kUnknown = 1U << 31;  // part of everything, and of no letter
constexpr int kOutOfRangeImportance = 2;

constexpr char kImportanceLetters[] = "dlmhc";

struct AttributeLetter {
    char letter;
    std::uint32_t bit;
};
constexpr AttributeLetter kAttributeLetters[] = {
    {'w', 1U << (kFirstAttributeBit + 2)}, {'e', 1U << (kFirstAttributeBit + 3)},
    {'s', 1U << (kFirstAttributeBit + 1)}, {'0', 1U << kFirstDirectBit},
    {'1', 1U << (kFirstDirectBit + 1)},    {'2', 1U << (kFirstDirectBit + 2)},
    {'3', 1U << (kFirstDirectBit + 3)},
};

char ToLower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

std::uint32_t BitsOf(char letter) {
    const char lower = ToLower(letter);
    if (const char* const found = std::strchr(kImportanceLetters, lower)) {
        const auto importance = static_cast<std::uint32_t>(found - kImportanceLetters);
        return kAllImportances & ~((1U << importance) - 1);
    }
    for (const AttributeLetter& attribute : kAttributeLetters) {
        if (attribute.letter == lower) return attribute.bit;
    }
    return lower == '*' ? kEverything : kUnknown;
}

bool AddLetters(const char* letters, std::uint32_t& bits) {
    if (letters == nullptr || *letters == '\0') return false;
    std::uint32_t sum = bits;
    for (const char* at = letters; *at != '\0'; ++at) {
        if (*at == '-') {
            sum = 0;
            continue;
        }
        const std::uint32_t added = BitsOf(*at);
        if (added == kUnknown) return false;
        sum |= added;
    }
    bits = sum;
    return true;
}

std::uint32_t BitsOf(const EventInfo& event) {
    if (event.direct >= 0 && event.direct <= 3)
        return 1U << (kFirstDirectBit + static_cast<unsigned>(event.direct));
    std::uint32_t bits = kUnknown;
    if (event.importance != -1) {
        const bool isInRange = event.importance >= 0 && event.importance < static_cast<int>(kImportances);
        bits |= 1U << static_cast<unsigned>(isInRange ? event.importance : kOutOfRangeImportance);
    }
    if (event.attribute >= 1 && event.attribute <= 3)
        bits |= 1U << (kFirstAttributeBit + static_cast<unsigned>(event.attribute));
    return bits;
}

constexpr std::uint32_t kDefaultMask = 1U << (kImportances - 1) | 1U << (kFirstAttributeBit + 2);  // "cw"

std::atomic<std::uint32_t> maskInEffect{kDefaultMask};

}  // namespace

bool EventInfo::would_trace() const {
    return detail::isWriting.load(std::memory_order_relaxed) &&
           (BitsOf(*this) & maskInEffect.load(std::memory_order_relaxed)) != 0 &&
           detail::PassesFilter(file, line);
}

char detail::ImportanceLetter(const EventInfo& event) {
    if (event.direct >= 0 || event.importance == -1) return '-';
    const bool isInRange = event.importance >= 0 && event.importance < static_cast<int>(kImportances);
    return kImportanceLetters[isInRange ? event.importance : kOutOfRangeImportance];
}

void detail::ResetMask() {
    maskInEffect.store(kDefaultMask, std::memory_order_relaxed);
}

EvalConfig::EvalConfig() : bits_(maskInEffect.load(std::memory_order_relaxed)) {}

bool EvalConfig::assign_mask(const char* letters) {
    std::uint32_t bits = 0;
    if (!AddLetters(letters, bits)) return false;
    bits_ = bits;
    return true;
}

bool EvalConfig::add_mask(const char* letters) {
    return AddLetters(letters, bits_);
}

void EvalConfig::mask(TextTarget& out) const {
    if (bits_ == 0) return out.append("-", 1);
    if (bits_ == kEverything) return out.append("*", 1);
    for (unsigned importance = 0; importance < kImportances; ++importance) {
        if ((bits_ >> importance & 1) == 0) continue;
        out.append(kImportanceLetters + importance, 1);
        break;
    }
    for (const AttributeLetter& attribute : kAttributeLetters) {
        if ((bits_ & attribute.bit) != 0) out.append(&attribute.letter, 1);
    }
}

const char* EvalConfig::known_letters() {
    return "d l m h c w e s 0 1 2 3 * -";
}

void EvalConfig::assign_filter(const ByFileLine& filter) {
    filter_ = filter;
    filterIsSet_ = true;
}

bool EvalConfig::passes(const EventInfo& event) const {
    return (BitsOf(event) & bits_) != 0;
}

void EvalConfig::apply() const {
    if (filterIsSet_) detail::PublishFilter(filter_);
    maskInEffect.store(bits_, std::memory_order_relaxed);
}

}  // namespace TraceLog400

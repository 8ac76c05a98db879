#pragma once

#include <compare>
#include <limits>

#include "tarnlib/tarnapi.h"

namespace TarnLibA500 {

/// A length of time: a signed count of milliseconds.
///
/// A plain value of 8 bytes, to be copied freely; different objects may be used by different threads.
///
///     STimeSpan limit(0, 1, 30, 0, 0);                       // an hour and a half
///     SDateTime end = SDateTime::GetCurrentDateTime() + limit;
///     STimeSpan left = end - SDateTime::GetCurrentDateTime();
///     if (left.GetTotalMilliseconds() <= 0) ...              // late
///     left.GetHours();                                       // 1: the hours beside days, minutes, ...
///     left.GetTotalMinutes();                                // 89
class STimeSpan {
  public:
    /// No time at all.
    constexpr STimeSpan() noexcept : milliseconds_(0) {}
    /// The sum of the components, which must not have different signs: that is reported by assertion, and the
    /// sum is stored all the same. Components need not be in their usual ranges.
    TARN_API STimeSpan(long days, long hours, long minutes, long seconds, long milliseconds);
    /// A span of this length.
    static constexpr STimeSpan FromMilliseconds(long long milliseconds) noexcept {
        STimeSpan span;
        span.milliseconds_ = milliseconds;
        return span;
    }
    /// The same as constructing it anew.
    TARN_API void Set(long days, long hours, long minutes, long seconds, long milliseconds);

    /// The whole days, with the sign of the span; the largest or smallest long when there are more.
    constexpr long GetDays() const noexcept {
        const long long days = milliseconds_ / kDay;
        if (days > std::numeric_limits<long>::max()) return std::numeric_limits<long>::max();
        if (days < std::numeric_limits<long>::min()) return std::numeric_limits<long>::min();
        return static_cast<long>(days);
    }
    /// The hours beside the days, 0 to 23, with the sign of the span.
    constexpr long GetHours() const noexcept { return static_cast<long>(milliseconds_ % kDay / kHour); }
    /// The minutes beside days and hours, 0 to 59, with the sign of the span.
    constexpr long GetMinutes() const noexcept { return static_cast<long>(milliseconds_ % kHour / kMinute); }
    /// The seconds beside the larger units, 0 to 59, with the sign of the span.
    constexpr long GetSeconds() const noexcept {
        return static_cast<long>(milliseconds_ % kMinute / kSecond);
    }
    /// The milliseconds beside the larger units, 0 to 999, with the sign of the span.
    constexpr long GetMilliseconds() const noexcept { return static_cast<long>(milliseconds_ % kSecond); }

    /// The whole span in hours, truncated towards zero.
    constexpr long long GetTotalHours() const noexcept { return milliseconds_ / kHour; }
    /// The whole span in minutes, truncated towards zero.
    constexpr long long GetTotalMinutes() const noexcept { return milliseconds_ / kMinute; }
    /// The whole span in seconds, truncated towards zero.
    constexpr long long GetTotalSeconds() const noexcept { return milliseconds_ / kSecond; }
    /// The whole span in milliseconds.
    constexpr long long GetTotalMilliseconds() const noexcept { return milliseconds_; }

    /// Adds; a sum that 64 bits do not hold becomes the longest span of its sign.
    constexpr STimeSpan& operator+=(const STimeSpan& other) noexcept {
        long long sum = 0;
        if (__builtin_add_overflow(milliseconds_, other.milliseconds_, &sum)) sum = Longest(milliseconds_);
        milliseconds_ = sum;
        return *this;
    }
    /// Takes away, with the same limits.
    constexpr STimeSpan& operator-=(const STimeSpan& other) noexcept {
        long long sum = 0;
        if (__builtin_sub_overflow(milliseconds_, other.milliseconds_, &sum)) sum = Longest(milliseconds_);
        milliseconds_ = sum;
        return *this;
    }
    /// The sum, as += makes it.
    constexpr STimeSpan operator+(const STimeSpan& other) const noexcept { return STimeSpan(*this) += other; }
    /// The difference, as -= makes it.
    constexpr STimeSpan operator-(const STimeSpan& other) const noexcept { return STimeSpan(*this) -= other; }
    /// Spans compare as numbers.
    constexpr std::strong_ordering operator<=>(const STimeSpan&) const noexcept = default;

  private:
    static constexpr long long kSecond = 1000;
    static constexpr long long kMinute = 60 * kSecond;
    static constexpr long long kHour = 60 * kMinute;
    static constexpr long long kDay = 24 * kHour;
    // An operation that overflows goes on in the direction of its left operand.
    static constexpr long long Longest(long long left) noexcept {
        return left < 0 ? std::numeric_limits<long long>::min() : std::numeric_limits<long long>::max();
    }

    long long milliseconds_;
};

static_assert(sizeof(STimeSpan) == 8);

}  // namespace TarnLibA500

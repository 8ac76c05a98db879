#include "diag/assert/require.h"
#include "tarnlib/sdatetimeconv.h"
#include "time/dateparts.h"

namespace TarnLibA500 {
namespace {

// What a text says. The offset is milliseconds, universal time minus local time.
struct ParsedDate {
    calendar::YearMonthDay date{};
    TimeParts time{};
    bool hasTime = false;
    bool hasOffset = false;
    std::int32_t offset = 0;
};

class DateReader {
  public:
    explicit DateReader(const SAnsiString& text)
        : at_(text.getString()), end_(text.getString() + text.getLength()) {}

    bool readDate(calendar::YearMonthDay& date) {
        if (!takeNumber(4, date.year)) return false;
        const bool parted = isAt('-') || isAt('/');
        const char separator = parted ? *at_++ : '\0';
        if (!takeNumber(2, date.month) || (parted && !take(separator))) return false;
        return takeNumber(2, date.day) && date.year != 0 && calendar::IsDate(date.year, date.month, date.day);
    }

    bool readAll(ParsedDate& parsed) {
        if (!readDate(parsed.date)) return false;
        if (atEnd()) return true;
        parsed.hasTime = true;
        if (!take('T') && !take('@') && !take(' ')) return false;
        return readTime(parsed.time) && readOffset(parsed) && atEnd();
    }

    bool atEnd() const { return at_ == end_; }

  private:
    bool isAt(char wanted) const { return at_ != end_ && *at_ == wanted; }
    bool take(char wanted) {
        if (!isAt(wanted)) return false;
        ++at_;
        return true;
    }
    // The value of the digit here, or 10 and more when there is none.
    std::uint32_t digit() const { return at_ == end_ ? 10 : static_cast<std::uint32_t>(*at_) - '0'; }
    bool takeNumber(int digits, std::int32_t& number) {
        for (number = 0; digits > 0; --digits, ++at_) {
            if (digit() > 9) return false;
            number = number * 10 + static_cast<std::int32_t>(digit());
        }
        return true;
    }

    bool readTime(TimeParts& time) {
        if (!takeNumber(2, time.hour) || !take(':') || !takeNumber(2, time.minute)) return false;
        if (take(':') && (!takeNumber(2, time.second) || (take('.') && !readFraction(time)))) return false;
        return IsTime(time);
    }
    bool readFraction(TimeParts& time) {
        std::int32_t weight = 100;
        for (; weight > 0 && digit() <= 9; weight /= 10, ++at_) {
            time.millisecond += static_cast<std::int32_t>(digit()) * weight;
        }
        return weight < 100;
    }
    // Nothing at all is an offset, too.
    bool readOffset(ParsedDate& parsed) {
        if (atEnd()) return true;
        parsed.hasOffset = true;
        if (take('Z')) return true;
        const bool east = take('+');
        TimeParts shift{};
        if (!east && !take('-')) return false;
        if (!takeNumber(2, shift.hour) || !take(':') || !takeNumber(2, shift.minute)) return false;
        parsed.offset = east ? -MillisecondsOf(shift) : MillisecondsOf(shift);
        return IsTime(shift);
    }

    const char* at_;
    const char* end_;
};

SDateTime ValueOf(const ParsedDate& parsed, const STimeZone& zone) {
    if (!parsed.hasOffset) return FromLocalParts(parsed.date, parsed.time, zone);
    const SDateTime local = FromLocalParts(parsed.date, parsed.time, STimeZone::TZ_UTC());
    return local + STimeSpan::FromMilliseconds(parsed.offset);
}

}  // namespace

bool StringToDate(const SAnsiString& text, SDateTime& value, bool& hasDate, bool& hasTime,
                  const STimeZone& zone) {
    ParsedDate parsed;
    hasDate = DateReader(text).readAll(parsed);
    hasTime = hasDate && parsed.hasTime;
    if (hasDate) value = ValueOf(parsed, zone);
    return hasDate;
}

bool StringToDate(const SAnsiString& text, SDateTime& value, const STimeZone& zone) {
    bool hasDate = false;
    bool hasTime = false;
    return StringToDate(text, value, hasDate, hasTime, zone);
}

bool StringToYMD(const SAnsiString& text, short& year, unsigned char& month, unsigned char& day) {
    DateReader reader(text);
    calendar::YearMonthDay date{};
    if (!reader.readDate(date) || !reader.atEnd()) return false;
    year = static_cast<short>(date.year);
    month = static_cast<unsigned char>(date.month);
    day = static_cast<unsigned char>(date.day);
    return true;
}

}  // namespace TarnLibA500

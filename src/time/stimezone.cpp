#include "tarnlib/stimezone.h"

#include <cstring>

#include "diag/assert/require.h"
#include "strings/base/asciichar.h"
#include "strings/base/intconv.h"
#include "tarnlib/sdatetime.h"
#include "time/dateparts.h"
#include "time/systemzone.h"
#include "time/zoneaccess.h"

namespace TarnLibA500 {
namespace {

constexpr std::int32_t kMinutesPerDay = 1440;
constexpr std::int32_t kMillisecondsPerMinute = 60'000;

// Reads rules from left to right; a part that is not as it must be is not stepped over.
class RuleReader {
  public:
    explicit RuleReader(const SAnsiString& text)
        : at_(text.getString()), end_(text.getString() + text.getLength()) {}

    bool atEnd() const { return at_ == end_; }
    bool take(char wanted) {
        if (atEnd() || *at_ != wanted) return false;
        ++at_;
        return true;
    }
    /// Bytes up to a comma; the array must be larger than the name, which is not empty.
    bool takeName(char* name, std::uint32_t size) {
        const char* const start = at_;
        while (!atEnd() && *at_ != ',' && *at_ != '\0') ++at_;
        const auto length = static_cast<std::uint32_t>(at_ - start);
        if (length == 0 || length >= size) return false;
        std::memcpy(name, start, length);
        name[length] = '\0';
        return true;
    }
    /// Reads a number of one to "digits" digits; false when there is none.
    bool takeNumber(std::int32_t& number, int digits) {
        const char* const start = at_;
        for (number = 0; !atEnd() && at_ - start < digits && IsDigit(*at_); ++at_) {
            number = number * 10 + (*at_ - '0');
        }
        return at_ != start;
    }
    bool takeOffset(std::int16_t& minutes) {
        const bool negative = take('-');
        std::int32_t number = 0;
        if (!takeNumber(number, 4) || number >= kMinutesPerDay) return false;
        minutes = static_cast<std::int16_t>(negative ? -number : number);
        return true;
    }

  private:
    const char* at_;
    const char* end_;
};

// A switch as it is written.
struct RuleText {
    std::int32_t month = 0;
    std::int32_t week = 0;
    std::int32_t day = 0;
    std::int32_t minute = 0;
};

bool TakeClock(RuleReader& reader, std::int32_t& minute) {
    std::int32_t hour = 0;
    if (!reader.takeNumber(hour, 2) || !reader.take(':') || !reader.takeNumber(minute, 2)) return false;
    if (hour > 24 || minute > 59) return false;
    minute += hour * 60;
    return minute <= kMinutesPerDay;
}

bool TakeSwitch(RuleReader& reader, RuleText& rule) {
    const bool taken = reader.take('M') && reader.takeNumber(rule.month, 2) && reader.take('.') &&
                       reader.takeNumber(rule.week, 1) && reader.take('.') &&
                       reader.takeNumber(rule.day, 1) && reader.take('/') && TakeClock(reader, rule.minute);
    return taken && rule.month >= 1 && rule.month <= calendar::kMonthsPerYear && rule.week >= 1 &&
           rule.week <= 5 && rule.day < calendar::kDaysPerWeek;
}

void AppendPair(SAnsiString& text, std::int32_t value) {
    char digits[2];
    intconv::PutPair(digits, static_cast<std::uint32_t>(value));
    text.concat(digits, 2);
}

void AppendSwitch(SAnsiString& text, const RuleText& rule) {
    text << ",M" << rule.month << "." << rule.week << "." << rule.day << "/";
    AppendPair(text, rule.minute / 60);
    text << ":";
    AppendPair(text, rule.minute % 60);
}

// ------------------------------------------------------------------------------------------- the system's

// Commas part the rules.
SAnsiString NameOf(const wchar_t* systemName) {
    SAnsiString name;
    if (!name.fromWChar(systemName) || name.isEmpty()) return "Local";
    for (std::uint32_t i = 0; i < name.getNChars(); ++i) {
        if (name.getAt(i) == ',') name.setAt(i, SAnsiString::Char(' '));
    }
    return name;
}

// The system writes midnight as the last millisecond of the day before.
RuleText RuleOf(const SYSTEMTIME& date, std::int32_t year) {
    const calendar::YearMonthDay day = calendar::Split(systemzone::DayOfSwitch(date, year));
    const bool isLast = day.day + calendar::kDaysPerWeek > calendar::DaysOfMonth(day.year, day.month);
    const std::int32_t roundUp = date.wSecond == 59 ? 1 : 0;
    return {day.month, isLast ? 5 : (day.day - 1) / calendar::kDaysPerWeek + 1,
            calendar::DayOfWeek(systemzone::DayOfSwitch(date, year)),
            date.wHour * 60 + date.wMinute + roundUp};
}

SAnsiString SystemRules() {
    const std::int32_t year = SDate::GetCurrentDate(STimeZone::TZ_Local()).GetYear();
    TIME_ZONE_INFORMATION zone;
    if (!systemzone::Read(year, zone)) return STimeZone::TZ_UTC().GetRules();
    const ZoneYear offsets = systemzone::OfYear(year);
    SAnsiString text = NameOf(zone.StandardName);
    text << "," << offsets.standard / kMillisecondsPerMinute;
    if (!offsets.hasDaylight()) return text;
    text << "," << NameOf(zone.DaylightName) << "," << offsets.daylight / kMillisecondsPerMinute;
    AppendSwitch(text, RuleOf(zone.DaylightDate, year));
    AppendSwitch(text, RuleOf(zone.StandardDate, year));
    return text;
}

// Neither needs construction or destruction: they serve code that runs before and after everything else.
constinit const STimeZone universal = ZoneAccess::makeUniversal();
constinit const STimeZone local = ZoneAccess::makeSystem();

}  // namespace

STimeZone::STimeZone(const SAnsiString& rules) {
    if (!Require(ReadRules(rules), kTimeUnit, "ReadRules( Rules )")) *this = universal;
}

// Leaves a half-read zone behind when the text is wrong.
bool STimeZone::ReadRules(const SAnsiString& rules) noexcept {
    RuleReader reader(rules);
    if (!reader.takeName(standardName_, kNameBytes) || !reader.take(',')) return false;
    if (!reader.takeOffset(standardMinutes_)) return false;
    if (reader.atEnd()) return true;
    RuleText start;
    RuleText end;
    const bool read = reader.take(',') && reader.takeName(daylightName_, kNameBytes) && reader.take(',') &&
                      reader.takeOffset(daylightMinutes_) && reader.take(',') && TakeSwitch(reader, start) &&
                      reader.take(',') && TakeSwitch(reader, end);
    const auto pack = [](const RuleText& rule) {
        return Switch{static_cast<unsigned char>(rule.month), static_cast<unsigned char>(rule.week),
                      static_cast<unsigned char>(rule.day), static_cast<std::int16_t>(rule.minute)};
    };
    kind_ = Kind::Daylight;
    toDaylight_ = pack(start);
    toStandard_ = pack(end);
    return read && reader.atEnd();
}

const STimeZone& STimeZone::TZ_UTC() noexcept {
    return universal;
}

const STimeZone& STimeZone::TZ_Local() noexcept {
    return local;
}

SAnsiString STimeZone::GetRules() const {
    if (kind_ == Kind::System) return SystemRules();
    SAnsiString text(standardName_);
    text << "," << static_cast<int>(standardMinutes_);
    if (kind_ == Kind::Fixed) return text;
    text << "," << daylightName_ << "," << static_cast<int>(daylightMinutes_);
    AppendSwitch(text, {toDaylight_.month, toDaylight_.week, toDaylight_.day, toDaylight_.minute});
    AppendSwitch(text, {toStandard_.month, toStandard_.week, toStandard_.day, toStandard_.minute});
    return text;
}

STimeSpan STimeZone::UTCOffset(const SDateTime& utc) const {
    const bool valid = Require(utc.IsValid(), kTimeUnit, kIsValid);
    return STimeSpan::FromMilliseconds(valid ? ZoneAccess::offsetAt(*this, ZoneAccess::utcOf(utc))
                                             : ZoneAccess::standardOffset(*this));
}

bool STimeZone::InDST(const SDateTime& utc) const {
    return Require(utc.IsValid(), kTimeUnit, kIsValid) &&
           ZoneAccess::isDaylightAt(*this, ZoneAccess::utcOf(utc));
}

}  // namespace TarnLibA500

#include "time/datepattern.h"

#include <cstring>
#include <utility>

#include "diag/assert/require.h"
#include "strings/base/intconv.h"
#include "strings/characters/mbchar.h"
#include "tarnlib/sdatetimestring.h"
#include "time/dateparts.h"

namespace TarnLibA500 {
namespace {

// Numbers are seldom longer than their letters; the room beyond the pattern makes one block of most results.
constexpr std::uint32_t kExtraRoom = 9;
// Bytes that may be written without a look at the room: any number, any character.
constexpr std::uint32_t kAtOnce = 16;

// Longer texts take a block, also on the way into memory of the caller.
constexpr std::uint32_t kUsualBytes = 128;

constexpr std::uint32_t kTwoDigits = 2;

// Without zeros in front.
char* PutNumber(char* at, std::int32_t number) {
    return at + intconv::FromDecimal(at, static_cast<std::uint32_t>(number));
}

// Below 100: plain for a run of one letter, otherwise in two digits.
char* PutSmall(char* at, std::int32_t number, std::uint32_t run) {
    const auto value = static_cast<std::uint32_t>(number);
    if (run == 1 && value < intconv::kDecimal) {
        *at = static_cast<char>('0' + value);
        return at + 1;
    }
    intconv::PutPair(at, value);
    return at + kTwoDigits;
}

// The text is written straight into the string's block, or into memory of the caller as long as that lasts.
// The place to write is handed on from step to step, because a member would have to be stored and loaded
// again around every byte.
class PatternWriter : private SAnsiString {
  public:
    explicit PatternWriter(const ShownTime& shown)
        : shown_(shown),
          date_(calendar::Split(shown.value.day)),
          time_(SplitTime(shown.value.milliseconds)) {}

    SAnsiString write(const char* pattern) {
        useBlock(static_cast<std::uint32_t>(std::strlen(pattern)) + kExtraRoom + kAtOnce);
        const char* const end = writeAll(pattern);
        if (end == begin_) return SAnsiString();
        terminateBuffer(written(end));
        return SAnsiString(std::move(*static_cast<SAnsiString*>(this)));
    }

    int write(const char* pattern, char* out, std::uint32_t nBytes) {
        begin_ = usual_;
        end_ = usual_ + kUsualBytes;
        const std::uint32_t length = written(writeAll(pattern));
        if (length >= nBytes) return -1;
        std::memcpy(out, begin_, length);
        out[length] = '\0';
        return static_cast<int>(length);
    }

  private:
    std::uint32_t written(const char* at) const { return static_cast<std::uint32_t>(at - begin_); }
    void useBlock(std::uint32_t room) {
        allocBuffer(room);
        begin_ = getStringBuffer()->getBuffer();
        end_ = begin_ + room;
    }
    char* makeRoom(char* at, std::uint32_t bytes) {
        if (end_ - at >= static_cast<std::ptrdiff_t>(bytes)) [[likely]]
            return at;
        return grow(at, bytes);
    }
    [[gnu::noinline]] char* grow(const char* at, std::uint32_t bytes) {
        const char* const before = begin_;
        const std::uint32_t length = written(at);
        SStringBuffer* const block = getStringBuffer();
        useBlock(2 * length + bytes + kAtOnce);
        std::memcpy(begin_, before, length);
        ReleaseBuffer(block);
        return begin_ + length;
    }

    char* writeAll(const char* pattern) {
        char* at = begin_;
        while (*pattern != '\0') at = step(pattern, makeRoom(at, kAtOnce));
        return at;
    }

    char* step(const char*& pattern, char* at) {
        switch (*pattern) {
            case 'y':
                return putDate<&PatternWriter::putYear>(pattern, at);
            case 'M':
                return putDate<&PatternWriter::putMonth>(pattern, at);
            case 'd':
                return putDate<&PatternWriter::putDay>(pattern, at);
            case 'g':
                return putDate<&PatternWriter::putEra>(pattern, at);
            case 'H':
                return putTime<&PatternWriter::putHour>(pattern, at);
            case 'h':
                return putTime<&PatternWriter::putHourOfHalfDay>(pattern, at);
            case 'm':
                return putTime<&PatternWriter::putMinute>(pattern, at);
            case 's':
                return putTime<&PatternWriter::putSecond>(pattern, at);
            case 'S':
                return putTime<&PatternWriter::putMillisecond>(pattern, at);
            case 't':
                return putTime<&PatternWriter::putHalfDay>(pattern, at);
            case '\'':
            case '"':
                return copyQuoted(pattern, at);
            default:
                return copyCharacter(pattern, at);
        }
    }

    // How often the letter at the place is repeated; goes on behind it.
    static std::uint32_t takeRun(const char*& pattern) {
        const char* const start = pattern;
        do {
            ++pattern;
        } while (*pattern == *start);
        return static_cast<std::uint32_t>(pattern - start);
    }

    // A part of the date for a run of its letter; nothing where no date is shown.
    template <char* (PatternWriter::*put)(std::uint32_t run, char* at)>
    char* putDate(const char*& pattern, char* at) {
        const std::uint32_t run = takeRun(pattern);
        return shown_.hasDate ? (this->*put)(run, at) : at;
    }

    // The same for the time of day.
    template <char* (PatternWriter::*put)(std::uint32_t run, char* at)>
    char* putTime(const char*& pattern, char* at) {
        const std::uint32_t run = takeRun(pattern);
        return shown_.hasTime ? (this->*put)(run, at) : at;
    }

    // The trail byte of a character may look like a letter or a quote.
    static char* copyCharacter(const char*& pattern, char* at) {
        unsigned bytes = 1;
        if (static_cast<unsigned char>(*pattern) >= 0x80) bytes = mbchar::CodePage::Current().step(pattern);
        for (; bytes > 0; --bytes) *at++ = *pattern++;
        return at;
    }

    char* copyQuoted(const char*& pattern, char* at) {
        const char quote = *pattern++;
        while (*pattern != '\0' && *pattern != quote) at = copyCharacter(pattern, makeRoom(at, kAtOnce));
        if (*pattern == quote) ++pattern;
        return at;
    }

    char* putName(const SAnsiString& name, char* at) {
        at = makeRoom(at, name.getLength());
        std::memcpy(at, name.getString(), name.getLength());
        return at + name.getLength();
    }

    char* putYear(std::uint32_t run, char* at) {
        const std::int32_t year = date_.year < 0 ? -date_.year : date_.year;
        if (run < 3) return PutSmall(at, year % 100, run);
        if (date_.year < 0) *at++ = '-';
        return PutNumber(at, year);
    }

    char* putMonth(std::uint32_t run, char* at) {
        if (run < 3) return PutSmall(at, shownMonth(), run);
        return putName(run == 3 ? SDateTimeString::GetShortMonth(date_.month)
                                : SDateTimeString::GetLongMonth(date_.month),
                       at);
    }

    char* putDay(std::uint32_t run, char* at) {
        if (run < 3) return PutSmall(at, shownDay(), run);
        const std::int32_t day = calendar::DayOfWeek(shown_.value.day);
        return putName(run == 3 ? SDateTimeString::GetShortDay(day) : SDateTimeString::GetLongDay(day), at);
    }

    char* putEra(std::uint32_t /*run*/, char* at) {
        return putName(SDateTimeString::GetEra(SDate::FromDayNumber(shown_.value.day)), at);
    }

    // Before the first year that leads back, the parts of a day number are no date and may be negative.
    std::int32_t shownMonth() const { return date_.month < 0 ? 0 : date_.month; }
    std::int32_t shownDay() const { return date_.day < 0 ? 0 : date_.day; }

    char* putHour(std::uint32_t run, char* at) { return PutSmall(at, time_.hour, run); }
    char* putHourOfHalfDay(std::uint32_t run, char* at) {
        return PutSmall(at, (time_.hour + 11) % 12 + 1, run);
    }
    char* putMinute(std::uint32_t run, char* at) { return PutSmall(at, time_.minute, run); }
    char* putSecond(std::uint32_t run, char* at) { return PutSmall(at, time_.second, run); }
    char* putMillisecond(std::uint32_t run, char* at) {
        if (run == 1) return PutNumber(at, time_.millisecond);
        intconv::PutDecimal(at, static_cast<std::uint32_t>(time_.millisecond), 3);
        return at + 3;
    }
    char* putHalfDay(std::uint32_t run, char* at) {
        const bool isMorning = time_.hour < 12;
        return putName(
            run == 1 ? SDateTimeString::GetShortAM(isMorning) : SDateTimeString::GetLongAM(isMorning), at);
    }

    char usual_[kUsualBytes];
    char* begin_ = nullptr;
    char* end_ = nullptr;
    const ShownTime& shown_;
    const calendar::YearMonthDay date_;
    const TimeParts time_;
};

}  // namespace

SAnsiString RenderPattern(const char* pattern, const ShownTime& shown) {
    if (!Require(pattern != nullptr, kTimeUnit, "pattern != NULL")) return SAnsiString();
    return PatternWriter(shown).write(pattern);
}

int RenderPattern(const char* pattern, const ShownTime& shown, char* out, std::uint32_t nBytes) {
    if (!Require(out != nullptr && nBytes > 0, kTimeUnit, "outBuffer != 0")) return -1;
    out[0] = '\0';
    if (!Require(pattern != nullptr, kTimeUnit, "pattern != NULL")) return -1;
    return PatternWriter(shown).write(pattern, out, nBytes);
}

}  // namespace TarnLibA500

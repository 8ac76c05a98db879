#include "time/datepattern.h"

#include <array>
#include <cstring>
#include <utility>

#include "diag/assert/require.h"
#include "strings/base/intconv.h"
#include "strings/characters/codepagetext.h"
#include "tarnlib/sdatetimestring.h"
#include "time/datenames.h"
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

constexpr auto kIsLetter = [] {
    std::array<bool, 256> is{};
    for (const unsigned char letter : {'y', 'M', 'd', 'g', 'H', 'h', 'm', 's', 'S', 't'}) is[letter] = true;
    return is;
}();

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
        while (*pattern != '\0') {
            at = makeRoom(at, kAtOnce);
            if (!kIsLetter[static_cast<unsigned char>(*pattern)]) {
                at = copyOther(pattern, at);
                continue;
            }
            const char letter = *pattern;
            at = putRun(letter, takeRun(pattern), at);
        }
        return at;
    }

    char* copyOther(const char*& pattern, char* at) {
        const bool isQuote = *pattern == '\'' || *pattern == '"';
        return isQuote ? copyQuoted(pattern, at) : copyCharacter(pattern, at);
    }

    // How often the letter at the place is repeated; goes on behind it.
    static std::uint32_t takeRun(const char*& pattern) {
        const char* const start = pattern;
        do {
            ++pattern;
        } while (*pattern == *start);
        return static_cast<std::uint32_t>(pattern - start);
    }

    // The trail byte of a character may look like a letter or a quote.
    static char* copyCharacter(const char*& pattern, char* at) {
        *at++ = *pattern++;
        if (static_cast<signed char>(at[-1]) >= 0) return at;
        for (unsigned bytes = mbchar::CodePage::Current().step(pattern - 1); bytes > 1; --bytes)
            *at++ = *pattern++;
        return at;
    }

    char* copyQuoted(const char*& pattern, char* at) {
        const char quote = *pattern++;
        while (*pattern != '\0' && *pattern != quote) at = copyCharacter(pattern, makeRoom(at, kAtOnce));
        if (*pattern == quote) ++pattern;
        return at;
    }

    [[gnu::noinline]] char* putText(const SAnsiString& text, char* at) {
        at = makeRoom(at, text.getLength());
        std::memcpy(at, text.getString(), text.getLength());
        return at + text.getLength();
    }

    // Seldom more than once around: for text that takes more bytes than there is room for.
    [[gnu::noinline]] char* putName(DateNames names, std::int32_t number, char* at) {
        wchar_t room[kDateNameUnits];
        const std::wstring_view name = DateName(names, number, room);
        const mbchar::CodePage& page = mbchar::CodePage::Current();
        const wchar_t* from = name.data();
        const wchar_t* const last = from + name.size();
        for (;;) {
            at += mbchar::Encode(page, from, last, at, static_cast<std::uint32_t>(end_ - at));
            if (from == last) return at;
            at = grow(at, static_cast<std::uint32_t>(last - from) * mbchar::kLongestCharacter);
        }
    }

    // A part of the date or of the time of day for a run of its letter; nothing where that is not shown.
    char* putRun(char letter, std::uint32_t run, char* at) {
        switch (letter) {
            case 'y':
                return shown_.hasDate ? putYear(run, at) : at;
            case 'M':
                return shown_.hasDate ? putMonth(run, at) : at;
            case 'd':
                return shown_.hasDate ? putDay(run, at) : at;
            case 'g':
                return shown_.hasDate ? putEra(at) : at;
            case 'H':
                return shown_.hasTime ? PutSmall(at, time_.hour, run) : at;
            case 'h':
                return shown_.hasTime ? PutSmall(at, (time_.hour + 11) % 12 + 1, run) : at;
            case 'm':
                return shown_.hasTime ? PutSmall(at, time_.minute, run) : at;
            case 's':
                return shown_.hasTime ? PutSmall(at, time_.second, run) : at;
            case 'S':
                return shown_.hasTime ? putMillisecond(run, at) : at;
            default:
                return shown_.hasTime ? putHalfDay(run, at) : at;
        }
    }

    char* putYear(std::uint32_t run, char* at) {
        const std::int32_t year = date_.year < 0 ? -date_.year : date_.year;
        if (run < 3) return PutSmall(at, year % 100, run);
        if (date_.year < 0) *at++ = '-';
        return PutNumber(at, year);
    }

    // Before the first year that leads back, the parts of a day number are no date and may be negative.
    char* putMonth(std::uint32_t run, char* at) {
        if (run < 3) return PutSmall(at, date_.month < 0 ? 0 : date_.month, run);
        return putName(run == 3 ? DateNames::ShortMonths : DateNames::LongMonths, date_.month, at);
    }

    char* putDay(std::uint32_t run, char* at) {
        if (run < 3) return PutSmall(at, date_.day < 0 ? 0 : date_.day, run);
        const std::int32_t day = calendar::DayOfWeek(shown_.value.day);
        return putName(run == 3 ? DateNames::ShortDays : DateNames::LongDays, day, at);
    }

    [[gnu::noinline]] char* putEra(char* at) {
        return putText(SDateTimeString::GetEra(SDate::FromDayNumber(shown_.value.day)), at);
    }

    char* putMillisecond(std::uint32_t run, char* at) {
        if (run == 1) return PutNumber(at, time_.millisecond);
        intconv::PutDecimal(at, static_cast<std::uint32_t>(time_.millisecond), 3);
        return at + 3;
    }

    [[gnu::noinline]] char* putHalfDay(std::uint32_t run, char* at) {
        const bool isMorning = time_.hour < 12;
        return putText(
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

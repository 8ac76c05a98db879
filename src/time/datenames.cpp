#include "time/datenames.h"

#include <algorithm>
#include <atomic>

#include <windows.h>

#include "tarnlib/slocale.h"
#include "time/calendar.h"

namespace TarnLibA500 {
namespace {

// The names do not depend on the year, and this one begins with a Friday.
constexpr WORD kYearOfNames = 1999;
constexpr WORD kFirstSundayOfNames = 3;

/// Names of one kind: how the system is asked, how they are numbered, and where they stand among those of a locale.
struct Kind {
    const wchar_t* pattern;
    int firstNumber;
    int count;
    int place;
};
constexpr Kind kKinds[] = {
    {L"MMMM", 1, calendar::kMonthsPerYear, 0},
    {L"MMM", 1, calendar::kMonthsPerYear, calendar::kMonthsPerYear},
    {L"dddd", 0, calendar::kDaysPerWeek, 2 * calendar::kMonthsPerYear},
    {L"ddd", 0, calendar::kDaysPerWeek, 2 * calendar::kMonthsPerYear + calendar::kDaysPerWeek},
};
constexpr int kNamesOfLocale = 2 * (calendar::kMonthsPerYear + calendar::kDaysPerWeek);

// The system takes half a microsecond for a name. A few locales are kept, the first that come; what finds no place, and
// a longer name, is asked each time.
constexpr int kKeptLocales = 16;
constexpr int kKeptUnits = 32;

/// A name that is written once, by the thread that comes first; who meets it half written asks the system.
class KeptName {
  public:
    /// Empty when it is not known.
    std::wstring_view get() const {
        const int length = length_.load(std::memory_order_acquire);
        return {units_, static_cast<std::size_t>(std::max(length, 0))};
    }
    void set(std::wstring_view name) {
        int before = 0;
        if (name.size() > kKeptUnits || !length_.compare_exchange_strong(before, kBeingWritten)) return;
        name.copy(units_, kKeptUnits);
        length_.store(static_cast<int>(name.size()), std::memory_order_release);
    }

  private:
    static constexpr int kBeingWritten = -1;
    std::atomic<int> length_{0};
    wchar_t units_[kKeptUnits] = {};
};

struct KeptLocale {
    std::atomic<LCID> locale{0};
    KeptName names[kNamesOfLocale];
};
constinit KeptLocale kept[kKeptLocales];

// Identifiers without a language, such as that of the user's own locale, mean what the settings say at the moment.
bool IsOneLocale(LCID locale) {
    return PRIMARYLANGID(LANGIDFROMLCID(locale)) != LANG_NEUTRAL;
}

// Where the names of a locale are kept; null when there is no place for it.
KeptName* NamesOf(LCID locale) {
    if (!IsOneLocale(locale)) return nullptr;
    for (KeptLocale& place : kept) {
        LCID found = place.locale.load(std::memory_order_relaxed);
        const bool taken = found == 0 && place.locale.compare_exchange_strong(found, locale);
        if (taken || found == locale) return place.names;
    }
    return nullptr;
}

SYSTEMTIME DateOf(const Kind& kind, int number) {
    const auto which = static_cast<WORD>(number);
    if (kind.count == calendar::kMonthsPerYear) return {kYearOfNames, which, 0, 1, 0, 0, 0, 0};
    return {kYearOfNames, 1, which, static_cast<WORD>(kFirstSundayOfNames + number), 0, 0, 0, 0};
}

}  // namespace

std::wstring_view DateName(DateNames names, int number, wchar_t (&room)[kDateNameUnits]) {
    const Kind& kind = kKinds[static_cast<int>(names)];
    if (number < kind.firstNumber || number >= kind.firstNumber + kind.count) return {};
    const LCID locale = SLocale::GetCurrentThreadLocale();
    KeptName* const places = NamesOf(locale);
    KeptName* const place = places != nullptr ? places + kind.place + (number - kind.firstNumber) : nullptr;
    if (place != nullptr && !place->get().empty()) return place->get();
    const SYSTEMTIME date = DateOf(kind, number);
    const int count = GetDateFormatW(locale, 0, &date, kind.pattern, room, kDateNameUnits);
    const std::wstring_view name(room, static_cast<std::size_t>(std::max(count - 1, 0)));
    if (place != nullptr && !name.empty()) place->set(name);
    return name;
}

}  // namespace TarnLibA500

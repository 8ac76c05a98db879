#include "strings/characters/unicodecase.h"

#include <atomic>

#include <windows.h>

#include "strings/characters/surrogates.h"

namespace TarnLibA500::unicodecase {
namespace {

constexpr unsigned kRowEntries = 256;

// Not by the C runtime, which in the "C" locale knows the case of ASCII alone.
bool AskSystem(DWORD map, const wchar_t* units, int count, wchar_t* out) {
    return LCMapStringW(LOCALE_INVARIANT, map, units, count, out, count) == count;
}

/// The maps of the codes of one unit. A row of 256 is asked for when it is first needed, because the system
/// takes a hundred times as long as a look into a table; threads that fill one at once write the same.
template <DWORD map>
class Table {
  public:
    wchar_t get(wchar_t unit) noexcept {
        const unsigned row = unit / kRowEntries;
        if (!isReady_[row].load(std::memory_order_acquire)) fill(row);
        return rows_[row][unit % kRowEntries].load(std::memory_order_relaxed);
    }

  private:
    void fill(unsigned row) noexcept {
        wchar_t units[kRowEntries];
        wchar_t mapped[kRowEntries];
        for (unsigned i = 0; i < kRowEntries; ++i) units[i] = static_cast<wchar_t>(row * kRowEntries + i);
        const bool known = AskSystem(map, units, kRowEntries, mapped);
        for (unsigned i = 0; i < kRowEntries; ++i)
            rows_[row][i].store(known ? mapped[i] : units[i], std::memory_order_relaxed);
        isReady_[row].store(true, std::memory_order_release);
    }

    std::atomic<bool> isReady_[kRowEntries] = {};
    std::atomic<wchar_t> rows_[kRowEntries][kRowEntries] = {};
};

constinit Table<LCMAP_LOWERCASE> lower;
constinit Table<LCMAP_UPPERCASE> upper;

template <DWORD map>
char32_t Map(Table<map>& table, char32_t code) {
    if (code <= 0xFFFF) return table.get(static_cast<wchar_t>(code));
    const wchar_t pair[] = {utf::HighSurrogate(code), utf::LowSurrogate(code)};
    wchar_t mapped[2];
    return AskSystem(map, pair, 2, mapped) ? utf::PairCode(mapped[0], mapped[1]) : code;
}

}  // namespace

char32_t Lower(char32_t code) noexcept {
    return Map(lower, code);
}

char32_t Upper(char32_t code) noexcept {
    return Map(upper, code);
}

}  // namespace TarnLibA500::unicodecase

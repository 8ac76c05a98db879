#include "strings/characters/mbchar.h"

#include <atomic>
#include <cstring>
#include <new>

#include <windows.h>

#include "strings/base/memory.h"
#include "waiting/waiting.h"

extern "C" __declspec(dllimport) unsigned int __cdecl ___lc_codepage_func(void);

namespace TarnLibA500::mbchar {
namespace {

constexpr unsigned kByteValues = 256;

std::atomic<const CodePage*> lastUsed{nullptr};
std::atomic<CodePage*> known{nullptr};
// A table is made, and a row filled, by one thread at a time. A table that an ended thread left unfinished is
// not known yet, and its row is filled anew: whether the lock is held does not matter then.
constinit waiting::Lock fillLock;

bool IsReady(volatile long& flag) noexcept {
    return __atomic_load_n(&flag, __ATOMIC_ACQUIRE) != 0;
}
void SetReady(volatile long& flag) noexcept {
    __atomic_store_n(&flag, 1, __ATOMIC_RELEASE);
}

// The number to ask the system with, or 0 when the code page is the C locale's or cannot be served by one or
// two bytes.
unsigned SystemNumber(unsigned number, CPINFO& info) {
    const bool usable = number != 0 && GetCPInfo(number, &info) && info.MaxCharSize <= 2;
    return usable ? number : 0;
}

// Not towlower: the table outlives the C locale that is set when it is made.
wchar_t LowerCase(wchar_t unit) {
    wchar_t lower = unit;
    LCMapStringW(LOCALE_INVARIANT, LCMAP_LOWERCASE, &unit, 1, &lower, 1);
    return lower;
}

}  // namespace

const CodePage& CodePage::Current() {
    const unsigned number = ___lc_codepage_func();
    const CodePage* page = lastUsed.load(std::memory_order_acquire);
    return page != nullptr && page->number_ == number ? *page : FindOrCreate(number);
}

const CodePage& CodePage::Of(unsigned number) {
    for (const CodePage* page = known.load(std::memory_order_acquire); page != nullptr; page = page->next_) {
        if (page->number_ == number) return *page;
    }
    const waiting::Guard guard(fillLock);
    CodePage* first = known.load(std::memory_order_acquire);
    for (const CodePage* page = first; page != nullptr; page = page->next_) {
        if (page->number_ == number) return *page;
    }
    CodePage* made = Create(number);
    made->next_ = first;
    known.store(made, std::memory_order_release);
    return *made;
}

const CodePage& CodePage::FindOrCreate(unsigned number) {
    const CodePage& page = Of(number);
    lastUsed.store(&page, std::memory_order_release);
    return page;
}

CodePage* CodePage::Create(unsigned number) {
    // Zeroed pages straight from the system: rows that nobody needs cost no memory.
    constexpr DWORD kForGood = MEM_RESERVE | MEM_COMMIT;
    void* place = osmemory::Calls::Error() == 0
                      ? VirtualAlloc(nullptr, sizeof(CodePage), kForGood, PAGE_READWRITE)
                      : nullptr;
    if (place == nullptr) throw BadAllocation();
    CodePage* page = new (place) CodePage;
    CPINFO info = {};
    page->number_ = number;
    page->systemNumber_ = SystemNumber(number, info);
    page->singleByte_ = true;
    const bool hasPairs = page->systemNumber_ != 0 && info.MaxCharSize == 2;
    for (const BYTE* range = info.LeadByte; hasPairs && range[0] != 0; range += 2) {
        for (unsigned byte = range[0]; byte <= range[1]; ++byte) page->lead_[byte] = true;
        page->singleByte_ = false;
    }
    page->fillSingles();
    page->fillFolds();
    return page;
}

void CodePage::fillSingles() {
    for (unsigned byte = 0; byte < kByteValues; ++byte) {
        const char text = static_cast<char>(byte);
        wchar_t unit = static_cast<wchar_t>(byte);
        // No MB_ERR_INVALID_CHARS here: it refuses single bytes that the C locale takes, such as A0 in 932.
        if (systemNumber_ != 0 && !lead_[byte]) MultiByteToWideChar(systemNumber_, 0, &text, 1, &unit, 1);
        single_.entry[byte] = static_cast<std::uint16_t>(unit);
    }
}

void CodePage::fillFolds() {
    for (unsigned byte = 0; byte < kByteValues; ++byte) {
        fold_[byte] = static_cast<unsigned char>(byte);
        const bool isAsciiUpper = byte >= 'A' && byte <= 'Z';
        if (isAsciiUpper) fold_[byte] = static_cast<unsigned char>(byte - 'A' + 'a');
        if (byte < 0x80 || systemNumber_ == 0 || lead_[byte]) continue;
        const std::uint16_t lower = encodeOne(LowerCase(static_cast<wchar_t>(single_.entry[byte])));
        const bool mapsBack = lower != kNoCharacter && lower < kByteValues && !lead_[lower] && lower >= 0x80;
        if (mapsBack) fold_[byte] = static_cast<unsigned char>(lower);
    }
}

void CodePage::fillPairRow(unsigned char lead) const noexcept {
    const waiting::Guard guard(fillLock);
    if (IsReady(pairReady_[lead])) return;
    for (unsigned trail = 1; trail < kByteValues; ++trail) {
        const char pair[2] = {static_cast<char>(lead), static_cast<char>(trail)};
        wchar_t units[2] = {};
        const int count = MultiByteToWideChar(systemNumber_, MB_ERR_INVALID_CHARS, pair, 2, units, 2);
        pairs_[lead].entry[trail] = count == 1 ? static_cast<std::uint16_t>(units[0]) : kNoCharacter;
    }
    SetReady(pairReady_[lead]);
}

std::uint16_t CodePage::decodePair(const char* text) const noexcept {
    const auto lead = static_cast<unsigned char>(text[0]);
    if (!IsReady(pairReady_[lead])) fillPairRow(lead);
    return pairs_[lead].entry[static_cast<unsigned char>(text[1])];  // a zero byte has no entry
}

int CodePage::toWide(wchar_t& out, const char* text) const noexcept {
    if (!isLeadByte(*text)) {
        out = static_cast<wchar_t>(single_.entry[static_cast<unsigned char>(*text)]);
        return *text != '\0' ? 1 : 0;
    }
    const std::uint16_t unit = decodePair(text);
    if (unit == kNoCharacter) return -1;
    out = static_cast<wchar_t>(unit);
    return 2;
}

// One byte as it is, two bytes with the first one high, kNoCharacter when there is none.
std::uint16_t CodePage::encodeOne(wchar_t unit) const noexcept {
    if (systemNumber_ == 0) return unit < kByteValues ? static_cast<std::uint16_t>(unit) : kNoCharacter;
    char bytes[kMaxCharacterBytes] = {};
    BOOL replaced = FALSE;
    const int count =
        WideCharToMultiByte(systemNumber_, 0, &unit, 1, bytes, sizeof bytes, nullptr, &replaced);
    if (count < 1 || count > 2 || replaced) return kNoCharacter;
    const auto first = static_cast<unsigned char>(bytes[0]);
    const auto second = static_cast<unsigned char>(bytes[1]);
    return static_cast<std::uint16_t>(count == 1 ? first : first << 8 | second);
}

void CodePage::fillEncodeRow(unsigned high) const noexcept {
    const waiting::Guard guard(fillLock);
    if (IsReady(encodeReady_[high])) return;
    for (unsigned low = 0; low < kByteValues; ++low) {
        encode_[high].entry[low] = encodeOne(static_cast<wchar_t>(high << 8 | low));
    }
    SetReady(encodeReady_[high]);
}

int CodePage::fromWide(char* out, wchar_t unit) const noexcept {
    const unsigned high = unit >> 8;
    if (!IsReady(encodeReady_[high])) fillEncodeRow(high);
    const std::uint16_t code = encode_[high].entry[unit & 0xFF];
    if (code == kNoCharacter && unit != 0) return -1;
    if (code < kByteValues) {
        out[0] = static_cast<char>(code);
        return 1;
    }
    out[0] = static_cast<char>(code >> 8);
    out[1] = static_cast<char>(code & 0xFF);
    return 2;
}

std::uint32_t CountCharacters(const CodePage& page, const char* text) noexcept {
    if (page.isSingleByte()) return static_cast<std::uint32_t>(std::strlen(text));
    std::uint32_t count = 0;
    for (unsigned bytes = page.step(text); bytes != 0; bytes = page.step(text)) {
        text += bytes;
        ++count;
    }
    return count;
}

const char* Advance(const CodePage& page, const char* text, std::uint32_t characters) noexcept {
    if (page.isSingleByte()) return text + strnlen(text, characters);
    for (; characters != 0 && *text != '\0'; --characters) text += page.step(text);
    return text;
}

}  // namespace TarnLibA500::mbchar

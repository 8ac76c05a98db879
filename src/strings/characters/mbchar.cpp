#include "strings/characters/mbchar.h"

#include <atomic>
#include <cstring>
#include <new>

#include <windows.h>

#include "seam/ostext.h"
#include "strings/base/bytesearch.h"
#include "strings/base/memory.h"
#include "strings/characters/utf8form.h"
#include "strings/characters/utf8text.h"
#include "tarnlib/schar.h"
#include "waiting/waiting.h"

extern "C" __declspec(dllimport) unsigned int __cdecl ___lc_codepage_func(void);

namespace TarnLibA500::mbchar {
namespace {

constexpr unsigned kByteValues = 256;
constexpr unsigned kAsciiEnd = 0x80;

// The page that was used last; UTF-8 stays there, because it is used by choice.
std::atomic<const CodePage*> lastUsed{nullptr};
std::atomic<CodePage*> known{nullptr};
// A table is made, and a row filled, by one thread at a time. A table that an ended thread left unfinished is
// not known yet, and its row is filled anew: whether the lock is held does not matter then.
constinit waiting::Lock fillLock;

bool IsReady(const std::atomic<bool>& flag) noexcept {
    return flag.load(std::memory_order_acquire);
}
void SetReady(std::atomic<bool>& flag) noexcept {
    flag.store(true, std::memory_order_release);
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

// Called for every step of an iterator: nothing is kept across the runtime's function, and what happens seldom
// is not inlined, so that no register must be saved.
const CodePage& CodePage::Current() {
    const CodePage* page = lastUsed.load(std::memory_order_acquire);
    if (page != nullptr && page->isUtf8_) return *page;
    const unsigned number = ___lc_codepage_func();
    page = lastUsed.load(std::memory_order_acquire);
    if (page != nullptr && page->number_ == number) return *page;
    return FollowLocale(page);
}

// A choice that another thread made meanwhile is not overwritten.
[[gnu::noinline]] const CodePage& CodePage::FollowLocale(const CodePage* before) {
    if (before != nullptr && before->isUtf8_) return *before;
    const CodePage& page = Of(___lc_codepage_func());
    lastUsed.compare_exchange_strong(before, &page, std::memory_order_acq_rel);
    return page;
}

void CodePage::UseUtf8() {
    lastUsed.store(&Utf8(), std::memory_order_release);
}

void CodePage::FollowLocale() noexcept {
    lastUsed.store(nullptr, std::memory_order_release);
}

bool CodePage::CurrentIsUtf8() noexcept {
    const CodePage* page = lastUsed.load(std::memory_order_acquire);
    return page != nullptr && page->isUtf8_;
}

const CodePage& CodePage::Of(unsigned number) {
    return FindOrCreate(number, false);
}

const CodePage& CodePage::Utf8() {
    return FindOrCreate(CP_UTF8, true);
}

const CodePage& CodePage::FindOrCreate(unsigned number, bool isUtf8) {
    const auto find = [&](const CodePage* page) {
        while (page != nullptr && !(page->number_ == number && page->isUtf8_ == isUtf8)) page = page->next_;
        return page;
    };
    if (const CodePage* page = find(known.load(std::memory_order_acquire))) return *page;
    const waiting::Guard guard(fillLock);
    CodePage* first = known.load(std::memory_order_acquire);
    if (const CodePage* page = find(first)) return *page;
    CodePage* made = Create(number, isUtf8);
    made->next_ = first;
    known.store(made, std::memory_order_release);
    return *made;
}

CodePage* CodePage::Create(unsigned number, bool isUtf8) {
    // Pages straight from the system: rows that nobody needs cost no memory.
    constexpr DWORD kForGood = MEM_RESERVE | MEM_COMMIT;
    void* place = osmemory::Calls::Error() == 0
                      ? VirtualAlloc(nullptr, sizeof(CodePage), kForGood, PAGE_READWRITE)
                      : nullptr;
    if (place == nullptr) throw BadAllocation();
    CodePage* page = new (place) CodePage;
    page->number_ = number;
    page->isUtf8_ = isUtf8;
    page->findPartials();
    page->fillSingles();
    page->fillSpaces();
    page->fillFolds();
    return page;
}

void CodePage::findPartials() noexcept {
    CPINFO info = {};
    if (!isUtf8_) systemNumber_ = SystemNumber(number_, info);
    const bool hasPairs = systemNumber_ != 0 && info.MaxCharSize == 2;
    const BYTE beyondAscii[] = {0x80, 0xFF, 0, 0};
    const BYTE* range = isUtf8_ ? beyondAscii : info.LeadByte;
    for (; (isUtf8_ || hasPairs) && range[0] != 0; range += 2) {
        for (unsigned byte = range[0]; byte <= range[1]; ++byte) partial_[byte] = true;
        singleByte_ = false;
    }
}

void CodePage::fillSingles() noexcept {
    for (unsigned byte = 0; byte < kByteValues; ++byte) {
        const char text = static_cast<char>(byte);
        wchar_t unit = static_cast<wchar_t>(byte);
        // No MB_ERR_INVALID_CHARS here: it refuses single bytes that the C locale takes, such as A0 in 932.
        if (systemNumber_ != 0 && !partial_[byte]) ostext::ToWide(systemNumber_, 0, &text, 1, &unit, 1);
        single_.entry[byte] = static_cast<std::uint16_t>(unit);
        if (byte < kAsciiEnd && (unit != byte || partial_[byte])) hasAscii_ = false;
    }
}

void CodePage::fillSpaces() noexcept {
    for (unsigned byte = 0; byte < kByteValues; ++byte) {
        const wchar_t unit = static_cast<wchar_t>(single_.entry[byte]);
        space_[byte] = !partial_[byte] && is_space(unit);
    }
}

void CodePage::fillFolds() noexcept {
    for (unsigned byte = 0; byte < kByteValues; ++byte) {
        fold_[byte] = static_cast<unsigned char>(byte);
        const bool isAsciiUpper = byte >= 'A' && byte <= 'Z';
        if (isAsciiUpper) fold_[byte] = static_cast<unsigned char>(byte - 'A' + 'a');
        if (byte < kAsciiEnd || systemNumber_ == 0 || partial_[byte]) continue;
        const std::uint16_t lower = encodeOne(LowerCase(static_cast<wchar_t>(single_.entry[byte])));
        const bool mapsBack =
            lower != kNoCharacter && lower < kByteValues && !partial_[lower] && lower >= kAsciiEnd;
        if (mapsBack) fold_[byte] = static_cast<unsigned char>(lower);
    }
}

void CodePage::fillPairRow(unsigned char lead) const noexcept {
    const waiting::Guard guard(fillLock);
    if (IsReady(pairReady_[lead])) return;
    for (unsigned trail = 1; trail < kByteValues; ++trail) {
        const char pair[2] = {static_cast<char>(lead), static_cast<char>(trail)};
        wchar_t units[2] = {};
        const int count = ostext::ToWide(systemNumber_, MB_ERR_INVALID_CHARS, pair, 2, units, 2);
        pairs_[lead].entry[trail] = count == 1 ? static_cast<std::uint16_t>(units[0]) : kNoCharacter;
    }
    SetReady(pairReady_[lead]);
}

unsigned CodePage::stepInUtf8(const char* text) noexcept {
    return utf8text::Step(text);
}

Character CodePage::partialAt(const char* text) const noexcept {
    if (isUtf8_) return utf8text::CharacterAt(text);
    const wchar_t unit = unitOfPair(text);
    return unit != kNoCharacter ? Character{2, unit} : Character{1, Character::kInvalid};
}

Character CodePage::partialAt(const char* text, const char* end) const noexcept {
    if (isUtf8_) return utf8text::CharacterAt(text, end);
    return end - text > 1 ? partialAt(text) : Character{1, Character::kInvalid};
}

int CodePage::toWide(wchar_t& out, const char* text) const noexcept {
    const Character character = characterAt(text);
    if (!character.isOneUnit()) return -1;
    out = static_cast<wchar_t>(character.code);
    return static_cast<int>(character.bytes);
}

// One byte as it is, two bytes with the first one high, kNoCharacter when there is none.
std::uint16_t CodePage::encodeOne(wchar_t unit) const noexcept {
    if (systemNumber_ == 0) return unit < kByteValues ? static_cast<std::uint16_t>(unit) : kNoCharacter;
    char bytes[kMaxCharacterBytes] = {};
    BOOL replaced = FALSE;
    const int count = ostext::FromWide(systemNumber_, 0, &unit, 1, bytes, sizeof bytes, nullptr, &replaced);
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
    if (isUtf8_) return utf8text::FromCode(out, unit);
    const std::uint16_t code = bytesOf(unit);
    if (code == kNoCharacter && unit != 0) return -1;
    if (code < kByteValues) {
        out[0] = static_cast<char>(code);
        return 1;
    }
    out[0] = static_cast<char>(code >> 8);
    out[1] = static_cast<char>(code & 0xFF);
    return 2;
}

int CodePage::fromCode(char* out, char32_t code) const noexcept {
    if (isUtf8_) return utf8text::FromCode(out, code);
    return code <= 0xFFFF ? fromWide(out, static_cast<wchar_t>(code)) : -1;
}

std::uint32_t CountCharacters(const CodePage& page, const char* text) noexcept {
    return CountCharacters(page, text, text + std::strlen(text));
}

std::uint32_t CountCharacters(const CodePage& page, const char* text, const char* end) noexcept {
    if (page.isSingleByte())
        return static_cast<std::uint32_t>(LengthUpTo(text, static_cast<std::size_t>(end - text)));
    if (page.isUtf8()) return utf8text::CountCharacters(text, end);
    std::uint32_t count = 0;
    for (; text < end && *text != '\0'; text += page.step(text)) ++count;
    return count;
}

const char* Advance(const CodePage& page, const char* text, std::uint32_t characters) noexcept {
    if (page.isSingleByte()) return text + LengthUpTo(text, characters);
    for (; characters != 0 && *text != '\0'; --characters) text += page.step(text);
    return text;
}

const char* Advance(const CodePage& page, const char* text, const char* end,
                    std::uint32_t characters) noexcept {
    if (page.isSingleByte()) return text + LengthUpTo(text, characters);
    return page.isUtf8() ? utf8text::Advance(text, end, characters) : Advance(page, text, characters);
}

}  // namespace TarnLibA500::mbchar

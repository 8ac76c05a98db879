#include "strings/characters/flavour.h"

namespace TarnLibA500 {
namespace {

// True when a character begins at the place. "known" is an earlier place where one does, and is moved as far
// as is now known. A byte that is a character by itself ends one, whatever stood before it; so only the run of
// other bytes right before the place must be walked.
bool BeginsCharacter(const mbchar::CodePage& page, const char* place, const char*& known) {
    const char* run = place;
    while (run > known && !page.isAlone(run[-1])) --run;
    while (run < place) run += std::max(page.step(run), 1U);
    known = run;
    return run == place;
}

bool IsSpace(const mbchar::Character& character) {
    return character.isOneUnit() && is_space(static_cast<wchar_t>(character.code));
}

// Blanks of ASCII are never trail bytes. In a page without trail bytes no white space is.
bool EndsInBlank(const mbchar::CodePage& page, char last) {
    return page.isSpaceAlone(last) && (page.isSingleByte() || static_cast<signed char>(last) >= 0);
}

// The end of the last character that is no white space, among whole characters.
const char* EndOfLast(const mbchar::CodePage& page, const char* first, const char* end) {
    const char* last = first;
    for (const char* at = first; at < end;) {
        const mbchar::Character character = page.characterAt(at, end);
        at += character.bytes;
        if (!IsSpace(character)) last = at;
    }
    return last;
}

// Where one trail byte looks like what is sought, the next ones often do: some characters are looked at one by one, from
// a place where one begins. Returns where "what" stands, or null, with the place moved on.
const char* FindByCharacters(const mbchar::CodePage& page, const char*& at, const char* end, const char* what,
                             std::uint32_t n) {
    constexpr int kCharacters = 32;
    const char* place = at;
    for (int i = 0; i < kCharacters && end - place >= static_cast<std::ptrdiff_t>(n); ++i) {
        if (*place == *what && std::memcmp(place, what, n) == 0) return place;
        place += std::max(page.step(place), 1U);
    }
    at = place;
    return nullptr;
}

}  // namespace

const char* Flavour<char, 0>::skipSpace(const char* at, const char* end) {
    const mbchar::CodePage& page = mbchar::CodePage::Current();
    while (at < end) {
        if (page.isSpaceAlone(*at)) {
            ++at;
            continue;
        }
        if (page.isAlone(*at)) break;
        const mbchar::Character character = page.characterAt(at, end);
        if (!IsSpace(character)) break;
        at += character.bytes;
    }
    return at;
}

// From the end, by single bytes. What the last of them belongs to is told from the nearest place before it where a
// character begins: behind a byte that is one by itself, or ends one.
const char* Flavour<char, 0>::endWithoutSpace(const char* first, const char* end) {
    const mbchar::CodePage& page = mbchar::CodePage::Current();
    while (end > first) {
        if (EndsInBlank(page, end[-1])) {
            --end;
            continue;
        }
        const char* run = end - 1;
        while (run > first && !page.isAlone(run[-1])) --run;
        const char* const last = EndOfLast(page, run, end);
        if (last != run) return last;
        end = run;
    }
    return end;
}

bool Flavour<char, 0>::beginsCharacter(const char* first, const char* place) {
    const mbchar::CodePage& page = mbchar::CodePage::Current();
    return page.isFoundByBytes() || BeginsCharacter(page, place, first);
}

// Equal bytes at the beginning of a character are equal characters, because every character of "what" is
// valid.
const char* Flavour<char, 0>::find(const char* from, const char* end, const char* what, std::uint32_t n) {
    const mbchar::CodePage& page = mbchar::CodePage::Current();
    const char* place = FindBytes(from, static_cast<std::size_t>(end - from), what, n);
    if (page.isFoundByBytes()) return place;
    const char* known = from;
    while (place != nullptr && !BeginsCharacter(page, place, known)) {
        place = FindByCharacters(page, known, end, what, n);
        if (place != nullptr) break;
        place = FindBytes(known, static_cast<std::size_t>(end - known), what, n);
    }
    return place;
}

}  // namespace TarnLibA500

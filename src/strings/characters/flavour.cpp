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

}  // namespace

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
        place = FindBytes(known, static_cast<std::size_t>(end - known), what, n);
    }
    return place;
}

}  // namespace TarnLibA500

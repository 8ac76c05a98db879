#include "strings/words/characterset.h"

namespace TarnLibA500 {

void CharacterSet::add(const SAnsiString& characters) {
    const char* const end = characters.end().getPtr();
    for (const char* at = characters.getString(); at < end;) {
        const unsigned bytes = CharacterBytes(*page_, at);
        insert(at, bytes);
        at += bytes;
    }
}

void CharacterSet::insert(const char* character, unsigned bytes) {
    if (bytes == 1) {
        kinds_[static_cast<unsigned char>(*character)] |= kMember;
    } else if (bytes <= sizeof(Key)) {
        longs_.Add(KeyOf(character, bytes));
    }
}

void CharacterSet::remove(const SChar_t<char, 0>& character) {
    if (character.getLength() == 1) {
        kinds_[static_cast<unsigned char>(character.getUnits()[0])] &= kPartial;
        return;
    }
    const Key removed = KeyOf(character.getUnits(), character.getLength());
    SIArray<Key> kept;
    for (const Key key : longs_) {
        if (key != removed) kept.Add(key);
    }
    longs_ = kept;
}

bool CharacterSet::holdsLong(Key key) const noexcept {
    return std::find(longs_.begin(), longs_.end(), key) != longs_.end();
}

// Most characters are one byte that stands for itself; they are passed by one table.
template <bool isMember>
const char* CharacterSet::findFirst(const char* at, const char* end) const noexcept {
    constexpr unsigned char kPassed = isMember ? 0 : kMember;
    for (;;) {
        while (at < end && kindOf(*at) == kPassed) ++at;
        if (at >= end) return end;
        const unsigned bytes = CharacterBytes(*page_, at);
        if (contains(at, bytes) == isMember) return at;
        at += bytes;
    }
}

const char* CharacterSet::findMember(const char* at, const char* end) const noexcept {
    return findFirst<true>(at, end);
}

const char* CharacterSet::skipMembers(const char* at, const char* end) const noexcept {
    return findFirst<false>(at, end);
}

// Backwards, from one place where a character surely begins to the one before: behind a byte that is a character by
// itself, or the last of one. Forwards in between.
const char* CharacterSet::stripMembers(const char* at, const char* end) const noexcept {
    while (end > at) {
        const char* run = end - 1;
        while (run > at && !page_->isAlone(run[-1])) --run;
        const char* kept = run;
        for (const char* place = run; place < end;) {
            const unsigned bytes = CharacterBytes(*page_, place);
            const bool member = contains(place, bytes);
            place += bytes;
            if (!member) kept = place;
        }
        if (kept != run) return kept;
        end = run;
    }
    return end;
}

}  // namespace TarnLibA500

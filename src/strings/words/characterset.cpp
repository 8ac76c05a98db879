#include "strings/words/characterset.h"

#include <cstring>

namespace TarnLibA500 {
namespace {

constexpr unsigned kPairBytes = 2;

}  // namespace

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
        singles_[static_cast<unsigned char>(*character)] = true;
    } else if (bytes == kPairBytes) {
        pairs_.concat(character, kPairBytes);
    }
}

void CharacterSet::remove(const SChar_t<char, 0>& character) {
    if (character.getLength() == 1) {
        singles_[static_cast<unsigned char>(character.getUnits()[0])] = false;
        return;
    }
    SAnsiString kept;
    for (const char* pair = pairs_.getString(); pair < pairs_.end().getPtr(); pair += kPairBytes) {
        if (std::memcmp(pair, character.getUnits(), kPairBytes) != 0) kept.concat(pair, kPairBytes);
    }
    pairs_ = kept;
}

const char* CharacterSet::findPair(const char* at) const noexcept {
    const char* const end = pairs_.end().getPtr();
    for (const char* pair = pairs_.getString(); pair < end; pair += kPairBytes) {
        if (std::memcmp(pair, at, kPairBytes) == 0) return pair;
    }
    return nullptr;
}

const char* CharacterSet::findMember(const char* at, const char* end) const noexcept {
    while (at < end) {
        const unsigned bytes = CharacterBytes(*page_, at);
        if (contains(at, bytes)) return at;
        at += bytes;
    }
    return end;
}

const char* CharacterSet::skipMembers(const char* at, const char* end) const noexcept {
    while (at < end) {
        const unsigned bytes = CharacterBytes(*page_, at);
        if (!contains(at, bytes)) return at;
        at += bytes;
    }
    return end;
}

// Forwards, because the bytes before a place do not tell where its character begins.
const char* CharacterSet::stripMembers(const char* at, const char* end) const noexcept {
    const char* kept = at;
    while (at < end) {
        const unsigned bytes = CharacterBytes(*page_, at);
        const bool member = contains(at, bytes);
        at += bytes;
        if (!member) kept = at;
    }
    return kept;
}

}  // namespace TarnLibA500

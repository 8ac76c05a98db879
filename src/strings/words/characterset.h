#pragma once

#include <algorithm>
#include <cstring>

#include "strings/characters/mbchar.h"
#include "tarnlib/siarray.h"
#include "tarnlib/sstring.h"

namespace TarnLibA500 {

/// Bytes of the character at a place before the end of a string. A zero byte inside the string counts as a
/// character.
inline unsigned CharacterBytes(const mbchar::CodePage& page, const char* at) noexcept {
    return std::max(page.step(at), 1U);
}

/// A set of characters of one page.
class CharacterSet {
  public:
    explicit CharacterSet(const mbchar::CodePage& page) : page_(&page) {
        std::memcpy(kinds_, page.partials(), sizeof kinds_);
    }
    CharacterSet(const mbchar::CodePage& page, const SAnsiString& characters) : CharacterSet(page) {
        add(characters);
    }

    const mbchar::CodePage& page() const noexcept { return *page_; }
    void add(const SAnsiString& characters);
    void add(const SChar_t<char, 0>& character) { insert(character.getUnits(), character.getLength()); }
    void remove(const SChar_t<char, 0>& character);
    /// The character is given by its place and its bytes.
    bool contains(const char* at, unsigned bytes) const noexcept {
        return bytes == 1 ? (kindOf(*at) & kMember) != 0 : holdsLong(KeyOf(at, bytes));
    }

    /// The first place of a range where a character is, or is not, in the set; the range's end when there is
    /// none.
    const char* findMember(const char* at, const char* end) const noexcept;
    const char* skipMembers(const char* at, const char* end) const noexcept;
    /// The end of the range without the members at its end.
    const char* stripMembers(const char* at, const char* end) const noexcept;

  private:
    /// The bytes of a character of more than one, with zero bytes behind them.
    using Key = std::uint32_t;

    /// What a byte is: one that is not a character by itself, as a code page tells it, or a member.
    static constexpr unsigned char kPartial = 1;
    static constexpr unsigned char kMember = 2;
    static_assert(kPartial == static_cast<unsigned char>(true));

    unsigned char kindOf(char byte) const noexcept { return kinds_[static_cast<unsigned char>(byte)]; }
    static Key KeyOf(const char* character, unsigned bytes) noexcept {
        Key key = 0;
        std::memcpy(&key, character, bytes);
        return key;
    }
    void insert(const char* character, unsigned bytes);
    template <bool isMember>
    const char* findFirst(const char* at, const char* end) const noexcept;
    bool holdsLong(Key key) const noexcept;

    const mbchar::CodePage* page_;
    unsigned char kinds_[256];
    SIArray<Key> longs_;  // the members of more than one byte
};

}  // namespace TarnLibA500

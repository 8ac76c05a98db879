#pragma once

#include <algorithm>

#include "strings/characters/mbchar.h"
#include "tarnlib/sstring.h"

namespace TarnLibA500 {

/// Bytes of the character at a place before the end of a string. A zero byte inside the string counts as a
/// character.
inline unsigned CharacterBytes(const mbchar::CodePage& page, const char* at) noexcept {
    return std::max(page.step(at), 1U);
}

/// A set of characters of one code page.
class CharacterSet {
  public:
    explicit CharacterSet(const mbchar::CodePage& page) : page_(&page) {}
    CharacterSet(const mbchar::CodePage& page, const SAnsiString& characters) : page_(&page) {
        add(characters);
    }

    const mbchar::CodePage& page() const noexcept { return *page_; }
    void add(const SAnsiString& characters);
    void add(const SChar_t<char, 0>& character) { insert(character.getUnits(), character.getLength()); }
    void remove(const SChar_t<char, 0>& character);
    /// The character is given by its place and its bytes.
    bool contains(const char* at, unsigned bytes) const noexcept {
        return bytes == 1 ? singles_[static_cast<unsigned char>(*at)] : findPair(at) != nullptr;
    }

    /// The first place of a range where a character is, or is not, in the set; the range's end when there is
    /// none.
    const char* findMember(const char* at, const char* end) const noexcept;
    const char* skipMembers(const char* at, const char* end) const noexcept;
    /// The end of the range without the members at its end.
    const char* stripMembers(const char* at, const char* end) const noexcept;

  private:
    void insert(const char* character, unsigned bytes);
    const char* findPair(const char* at) const noexcept;

    const mbchar::CodePage* page_;
    bool singles_[256] = {};
    SAnsiString pairs_;  // the double-byte members, one after the other
};

}  // namespace TarnLibA500

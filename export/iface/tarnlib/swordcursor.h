#pragma once

#include <cstdint>

#include "tarnlib/sstring.h"
#include "tarnlib/tarnapi.h"

/// The words of a text, one at a time, where they stand: no string is made and no memory is asked for.
///
/// A cursor shares the text's block, so the words stay valid while it lives, whatever becomes of the string that
/// it was made from. It works in multi-byte characters of the code page that the process has when it is made. A
/// cursor is used by one thread at a time.
///
///     SIMap<SMapStringCaseInsensitive, int> counts;
///     for (SWordCursor word(line, " \t"); word.next();) {
///         auto found = counts.Find(word.getWord(), word.getLength());
///         if (found != counts.End()) ++found.GetValue();
///     }
namespace TarnLibA500 {

namespace mbchar {
class CodePage;
}

/// Cuts a text at the characters of a set; runs of separators make no empty words.
class TARN_API SWordCursor {
  public:
    /// Stands before the first word. Without separators the whole text is one word.
    SWordCursor(const SAnsiString& text, const SAnsiString& separators);
    /// A cursor of its own at the same place of the same text.
    SWordCursor(const SWordCursor&) = default;
    /// Goes to the same place of the same text.
    SWordCursor& operator=(const SWordCursor&) = default;

    /// Goes to the next word; false when there is none.
    bool next() noexcept;
    /// The first byte of the word, which is not zero-terminated; null before the first next and after the last.
    const char* getWord() const noexcept { return word_; }
    /// Bytes of the word.
    std::uint32_t getLength() const noexcept { return length_; }
    /// True when the word is this zero-terminated text.
    bool is(const char* text) const noexcept;
    /// The word as a string of its own.
    SAnsiString toString() const { return SAnsiString(word_, length_); }
    /// What stands behind the word, up to the text's terminator; the whole text before the first next.
    const char* getRest() const noexcept { return at_; }

  private:
    unsigned char kindOf(char byte) const noexcept { return kinds_[static_cast<unsigned char>(byte)]; }
    bool isSeparator(unsigned bytes) const noexcept;
    void skip(bool separators) noexcept;

    SAnsiString text_;
    SAnsiString separators_;
    const mbchar::CodePage* page_;
    unsigned char kinds_[256];  // what each byte is: not a character by itself, a separator, neither
    const char* at_;
    const char* word_ = nullptr;
    std::uint32_t length_ = 0;
};

}  // namespace TarnLibA500

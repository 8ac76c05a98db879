#include "strings/words/characterset.h"
#include "tarnlib/stringhelper.h"

namespace TarnLibA500 {
namespace {

class WordSplitter {
  public:
    WordSplitter(const SAnsiString& text, const SAnsiString& separators, SIArray<SAnsiString>& words,
                 bool keepSeparators)
        : text_(text),
          words_(words),
          keepSeparators_(keepSeparators),
          separators_(mbchar::CodePage::Current(), separators),
          wordEnds_(separators_),
          quote_(separators_.page()) {}
    WordSplitter(const WordSplitter&) = delete;
    WordSplitter& operator=(const WordSplitter&) = delete;
    // Drops what is left of the old words, also when memory fails in the middle.
    ~WordSplitter() { words_.SetSize(count_); }

    // A quote ends a word as a separator does, but is never one: it would be consumed before it could open a
    // quoted word.
    void quoteWith(const SStringHelper::Char& quote) {
        quote_.add(quote);
        separators_.remove(quote);
        wordEnds_.add(quote);
    }

    void split() {
        at_ = text_.getString();
        end_ = text_.end().getPtr();
        takeSeparators();
        while (at_ < end_) {
            takeWord();
            takeSeparators();
        }
    }

  private:
    static constexpr std::uint32_t kMoreWords = 8;

    // An old word's block takes the new one where it has room: splitting line after line into one array soon
    // allocates nothing.
    void add(const char* from, const char* to) {
        if (count_ == room_) makeRoom();
        place_[count_].copyFrom(from, static_cast<std::uint32_t>(to - from));
        ++count_;
    }

    // Some empty words at a time; the destructor drops those that stay so.
    void makeRoom() {
        words_.SetSize(count_ + kMoreWords);
        place_ = words_.Data();
        room_ = words_.GetSize();
    }

    void takeSeparators() {
        const char* const after = separators_.skipMembers(at_, end_);
        while (keepSeparators_ && at_ < after) {
            const unsigned bytes = CharacterBytes(separators_.page(), at_);
            add(at_, at_ + bytes);
            at_ += bytes;
        }
        at_ = after;
    }

    void takeWord() {
        const unsigned bytes = CharacterBytes(separators_.page(), at_);
        if (quote_.contains(at_, bytes)) {
            const char* const closing = quote_.findMember(at_ + bytes, end_);
            add(at_ + bytes, closing);
            at_ = closing < end_ ? closing + bytes : end_;
        } else {
            const char* const after = wordEnds_.findMember(at_, end_);
            add(at_, after);
            at_ = after;
        }
    }

    const SAnsiString text_;  // a reference of its own: the text may be one of the old words
    SIArray<SAnsiString>& words_;
    SAnsiString* place_ = words_.Data();
    std::uint32_t room_ = words_.GetSize();
    std::uint32_t count_ = 0;  // words of the new text
    const bool keepSeparators_;
    CharacterSet separators_;
    CharacterSet wordEnds_;
    CharacterSet quote_;  // empty when words are not quoted
    const char* at_ = nullptr;
    const char* end_ = nullptr;
};

}  // namespace

void SStringHelper::makeWords(const SAnsiString& text, SIArray<SAnsiString>& words,
                              const SAnsiString& separators, bool quoted, bool keepSeparators) {
    makeWords(text, words, Char('"'), separators, quoted, keepSeparators);
}

void SStringHelper::makeWords(const SAnsiString& text, SIArray<SAnsiString>& words, const Char& quote,
                              const SAnsiString& separators, bool quoted, bool keepSeparators) {
    WordSplitter splitter(text, separators, words, keepSeparators);
    if (quoted && quote.getLength() != 0) splitter.quoteWith(quote);
    splitter.split();
}

}  // namespace TarnLibA500

#include "strings/characterset.h"
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
          separators_(separators),
          wordEnds_(separators_) {}

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
    void add(const char* from, const char* to) {
        words_.Add(SAnsiString(from, static_cast<std::uint32_t>(to - from)));
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

    const SAnsiString text_;  // a reference of its own: the text may be one of the words that are dropped
    SIArray<SAnsiString>& words_;
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
    words.RemoveAll();
    splitter.split();
}

}  // namespace TarnLibA500

#pragma once

#include <string>
#include <vector>

#include "conversion.h"
#include "streams.h"

/// What is looked for in a text that comes character by character.
namespace tarn {

/// The characters of a text from the command line.
std::u32string CharactersOf(const std::string& utf8);

/// The words between separators.
class WordCutter {
  public:
    /// Prints the words when it is asked to, a line each.
    WordCutter(std::u32string separators, bool isPrinting);
    void take(char32_t code);
    void finish();
    Count count() const { return count_; }
    void print() { words_.print(); }

  private:
    bool isSeparator(char32_t code) const;

    std::u32string separators_;
    bool isPrinting_;
    bool isInWord_ = false;
    Count count_ = 0;
    Spool words_;
};

/// Where a text occurs. Matches do not overlap.
class Finder {
  public:
    explicit Finder(std::u32string text);
    void take(char32_t code);
    Count count() const { return count_; }
    /// Prints line and column of each match, both from 1.
    void print() { places_.print(); }

  private:
    struct Place {
        Count line = 1;
        Count column = 1;
    };

    std::u32string text_;
    std::vector<std::size_t>
        fallback_;  ///< what still matches when the next character does not, by matched characters
    std::vector<Place> recent_;  ///< of as many characters as the text has, in a ring
    std::size_t matched_ = 0;
    std::size_t oldest_ = 0;
    Place place_;
    Count count_ = 0;
    Spool places_;
};

}  // namespace tarn

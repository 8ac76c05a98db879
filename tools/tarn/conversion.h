#pragma once

#include <string>
#include <vector>

#include "codeset.h"

namespace tarn {

using Count = unsigned long long;  // texts may be larger than the memory

/// What could not be converted as it is.
struct Problem {
    Count offset;       ///< of the source's first byte concerned
    Count line;         ///< from 1
    std::string bytes;  ///< of the source
    bool isValid;       ///< whether they are a character of the source's code set
    char32_t code;      ///< that character
    Fit fit;            ///< in the target's code set
};

/// What is known of a text when it has been converted.
struct Figures {
    static constexpr std::size_t kProblemsKept = 20;

    Count bytesRead = 0;
    Count bytesMade = 0;
    Count markBytes = 0;  ///< of a byte order mark at the start, which is dropped
    Count codeUnits = 0;  ///< of UTF-16
    Count characters = 0;
    Count lines = 0;
    Count longestLine = 0;      ///< in characters, its end not counted
    Count byUtf8Bytes[4] = {};  ///< characters that take 1, 2, 3, 4 bytes in UTF-8
    Count problemCount = 0;
    std::vector<Problem> problems;  ///< the first of them
};

/// A text on its way from one code set to another, piece by piece.
class Conversion {
  public:
    Conversion(const CodeSet& from, const CodeSet& to);

    /// Converts the next bytes of the text. The first piece holds a whole byte order mark, or the whole text.
    void take(const std::string& bytes, bool isLast);

    /// What the last piece became, in the target's code set.
    const std::string& output() const { return output_; }
    /// The same characters; U+FFFD for what was not valid.
    const std::vector<Character>& characters() const { return characters_; }
    const Figures& figures() const { return figures_; }

  private:
    void skipMark();
    void decode(bool isLast);
    void encode();
    void report(const Character& character, std::size_t at, Fit fit);
    void count(char32_t code);

    const CodeSet& from_;
    const CodeSet& to_;
    Figures figures_;
    std::string bytes_;  ///< of this piece, with those that the last one left over
    std::vector<Character> characters_;
    std::string output_;
    Count offset_ = 0;  ///< of bytes_ in the text
    Count line_ = 1;
    Count lineCharacters_ = 0;
    bool isInLine_ = false;
};

}  // namespace tarn

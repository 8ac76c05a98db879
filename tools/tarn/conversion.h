#pragma once

#include <string>
#include <vector>

#include "codeset.h"

namespace tarn {

/// What could not be converted as it is.
struct Problem {
    std::size_t offset;  ///< of the source's first byte concerned
    std::size_t line;    ///< from 1
    std::string bytes;   ///< of the source
    bool isValid;        ///< whether they are a character of the source's code set
    char32_t code;       ///< that character
    Fit fit;             ///< in the target's code set
};

/// A text on its way from one code set to another.
struct Conversion {
    static constexpr std::size_t kProblemsKept = 20;

    std::size_t markBytes = 0;  ///< of a byte order mark at the start, which is dropped
    std::size_t codeUnits = 0;  ///< of UTF-16
    std::size_t characters = 0;
    std::size_t lines = 0;
    std::size_t longestLine = 0;      ///< in characters, its end not counted
    std::size_t byUtf8Bytes[4] = {};  ///< characters that take 1, 2, 3, 4 bytes in UTF-8
    std::size_t problemCount = 0;
    std::vector<Problem> problems;  ///< the first of them
    std::string output;             ///< in the target's code set
    std::string utf8;               ///< the same text; what was not valid is U+FFFD
};

Conversion Convert(const std::string& bytes, const CodeSet& from, const CodeSet& to);

}  // namespace tarn

#pragma once

#include <cstdint>
#include <string>

/// The code sets that the tool converts between, one character at a time.
namespace tarn {

/// One character of a source text.
struct Character {
    char32_t code;        ///< the Unicode code point; U+FFFD when it is not valid
    std::uint8_t nBytes;  ///< of the source
    bool isValid;
};

enum class Fit { Exact, Likeness, Missing };

struct CodeSet {
    const char* names;  ///< between blanks; the first is the usual one
    const char* description;
    const char* byteOrderMark;
    /// Stands for what the code set has no character for.
    char32_t replacement;
    /// Reads the character at a place with at least one byte left; a zero byte follows the last.
    Character (*decode)(const char* at, std::size_t left);
    /// Appends the character. A likeness is another character that the system offers; nothing is appended for
    /// a missing one.
    Fit (*encode)(char32_t code, std::string& out);

    std::string name() const;
};

/// By any of its names, without regard to case; throws Failure for an unknown one.
const CodeSet& FindCodeSet(const std::string& name);
const CodeSet& Utf8CodeSet();
/// The names of all code sets with their descriptions, a line each.
std::string DescribeCodeSets();

}  // namespace tarn

#include "conversion.h"

#include <algorithm>
#include <cstring>

namespace tarn {
namespace {

constexpr char32_t kFirstSupplementary = 0x10000;
constexpr std::size_t kLongestCharacter = 4;

std::size_t Utf8Bytes(char32_t code) {
    return code < 0x80 ? 1 : code < 0x800 ? 2 : code < kFirstSupplementary ? 3 : 4;
}

}  // namespace

Conversion::Conversion(const CodeSet& from, const CodeSet& to) : from_(from), to_(to) {}

void Conversion::take(const std::string& bytes, bool isLast) {
    bytes_ += bytes;
    figures_.bytesRead += bytes.size();
    if (offset_ == 0) skipMark();
    decode(isLast);
    encode();
    for (const Character& character : characters_) count(character.code);
}

void Conversion::skipMark() {
    const std::size_t mark = std::strlen(from_.byteOrderMark);
    if (mark == 0 || bytes_.compare(0, mark, from_.byteOrderMark) != 0) return;
    figures_.markBytes = offset_ = mark;
    bytes_.erase(0, mark);
}

// A character that may go on in the next piece is left for it.
void Conversion::decode(bool isLast) {
    characters_.clear();
    const std::size_t needed = isLast ? 1 : kLongestCharacter;
    for (std::size_t at = 0; at + needed <= bytes_.size(); at += characters_.back().nBytes)
        characters_.push_back(from_.decode(bytes_.data() + at, bytes_.size() - at));
}

void Conversion::encode() {
    output_.clear();
    std::size_t at = 0;
    for (const Character& character : characters_) {
        const Fit fit = character.isValid ? to_.encode(character.code, output_) : Fit::Missing;
        if (fit == Fit::Missing) to_.encode(to_.replacement, output_);
        if (fit != Fit::Exact) report(character, at, fit);
        at += character.nBytes;
        if (character.code == '\n') ++line_;
    }
    bytes_.erase(0, at);
    offset_ += at;
    figures_.bytesMade += output_.size();
}

void Conversion::report(const Character& character, std::size_t at, Fit fit) {
    if (++figures_.problemCount > Figures::kProblemsKept) return;
    figures_.problems.push_back(
        {offset_ + at, line_, bytes_.substr(at, character.nBytes), character.isValid, character.code, fit});
}

void Conversion::count(char32_t code) {
    ++figures_.byUtf8Bytes[Utf8Bytes(code) - 1];
    ++figures_.characters;
    figures_.codeUnits += code < kFirstSupplementary ? 1 : 2;
    if (!isInLine_) ++figures_.lines;
    isInLine_ = code != '\n';
    if (!isInLine_) lineCharacters_ = 0;
    if (isInLine_ && code != '\r') ++lineCharacters_;
    figures_.longestLine = std::max(figures_.longestLine, lineCharacters_);
}

}  // namespace tarn

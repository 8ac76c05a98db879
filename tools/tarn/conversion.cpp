#include "conversion.h"

#include <algorithm>
#include <cstring>

namespace tarn {
namespace {

// Each side has its own locale; switching it for every character would cost more than the conversion.
constexpr std::size_t kBlockCharacters = 65536;
constexpr char32_t kFirstSupplementary = 0x10000;

class Converter {
  public:
    Converter(const std::string& bytes, const CodeSet& from, const CodeSet& to)
        : bytes_(bytes), from_(from), to_(to) {}

    Conversion run() {
        const std::size_t mark = std::strlen(from_.byteOrderMark);
        if (mark != 0 && bytes_.compare(0, mark, from_.byteOrderMark) == 0) result_.markBytes = mark;
        offset_ = decoded_ = result_.markBytes;
        while (decoded_ < bytes_.size()) {
            decodeBlock();
            encodeBlock();
            Utf8CodeSet().activate();
            for (const Character& character : block_) count(character);
        }
        return std::move(result_);
    }

  private:
    void decodeBlock() {
        from_.activate();
        block_.clear();
        while (decoded_ < bytes_.size() && block_.size() < kBlockCharacters) {
            block_.push_back(from_.decode(bytes_.data() + decoded_, bytes_.size() - decoded_));
            decoded_ += block_.back().nBytes;
        }
    }

    void encodeBlock() {
        to_.activate();
        for (const Character& character : block_) {
            const Fit fit = character.isValid ? to_.encode(character.code, result_.output) : Fit::Missing;
            if (fit == Fit::Missing) to_.encode(to_.replacement, result_.output);
            if (fit != Fit::Exact) report(character, fit);
            offset_ += character.nBytes;
            if (character.code == '\n') ++line_;
        }
    }

    void report(const Character& character, Fit fit) {
        if (++result_.problemCount > Conversion::kProblemsKept) return;
        result_.problems.push_back({offset_, line_, bytes_.substr(offset_, character.nBytes),
                                    character.isValid, character.code, fit});
    }

    void count(const Character& character) {
        const std::size_t before = result_.utf8.size();
        Utf8CodeSet().encode(character.code, result_.utf8);
        ++result_.byUtf8Bytes[result_.utf8.size() - before - 1];
        ++result_.characters;
        result_.codeUnits += character.code < kFirstSupplementary ? 1 : 2;
        if (!inLine_) ++result_.lines;
        inLine_ = character.code != '\n';
        if (!inLine_) lineCharacters_ = 0;
        if (inLine_ && character.code != '\r') ++lineCharacters_;
        result_.longestLine = std::max(result_.longestLine, lineCharacters_);
    }

    const std::string& bytes_;
    const CodeSet& from_;
    const CodeSet& to_;
    Conversion result_;
    std::vector<Character> block_;
    std::size_t decoded_ = 0;
    std::size_t offset_ = 0;  // of the character that is being encoded
    std::size_t line_ = 1;
    std::size_t lineCharacters_ = 0;
    bool inLine_ = false;
};

}  // namespace

Conversion Convert(const std::string& bytes, const CodeSet& from, const CodeSet& to) {
    return Converter(bytes, from, to).run();
}

}  // namespace tarn

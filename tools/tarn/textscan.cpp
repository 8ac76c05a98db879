#include "textscan.h"

namespace tarn {
namespace {

constexpr const char* kWordIndent = "  ";

// The longest proper start of text that is also the end of its first n characters, for each n.
std::vector<std::size_t> Fallbacks(const std::u32string& text) {
    std::vector<std::size_t> fallback(text.size() + 1, 0);
    for (std::size_t n = 2; n <= text.size(); ++n) {
        std::size_t length = fallback[n - 1];
        while (length > 0 && text[length] != text[n - 1]) length = fallback[length];
        fallback[n] = text[length] == text[n - 1] ? length + 1 : 0;
    }
    return fallback;
}

}  // namespace

std::u32string CharactersOf(const std::string& utf8) {
    std::u32string characters;
    for (std::size_t at = 0; at < utf8.size();) {
        const Character character = Utf8CodeSet().decode(utf8.data() + at, utf8.size() - at);
        characters += character.code;
        at += character.nBytes;
    }
    return characters;
}

// ------------------------------------------------------------------------------------------------ words

WordCutter::WordCutter(std::u32string separators, bool isPrinting)
    : separators_(std::move(separators)), isPrinting_(isPrinting) {}

bool WordCutter::isSeparator(char32_t code) const {
    return separators_.find(code) != separators_.npos;
}

void WordCutter::take(char32_t code) {
    if (isSeparator(code)) {
        finish();
        return;
    }
    std::string text;
    if (!isInWord_) {
        isInWord_ = true;
        ++count_;
        text = kWordIndent;
    }
    if (!isPrinting_) return;
    Utf8CodeSet().encode(code, text);
    words_.write(text);
}

void WordCutter::finish() {
    if (isInWord_ && isPrinting_) words_.write("\n");
    isInWord_ = false;
}

// ------------------------------------------------------------------------------------------------ places

Finder::Finder(std::u32string text)
    : text_(std::move(text)), fallback_(Fallbacks(text_)), recent_(text_.size()) {}

// Each character is looked at once, however long the text that is looked for: what has matched tells where it goes on.
void Finder::take(char32_t code) {
    recent_[oldest_] = place_;
    oldest_ = (oldest_ + 1) % recent_.size();
    while (matched_ > 0 && text_[matched_] != code) matched_ = fallback_[matched_];
    if (text_[matched_] == code) ++matched_;
    if (matched_ == text_.size()) {
        const Place& start = recent_[oldest_];
        places_.write("  " + std::to_string(start.line) + ":" + std::to_string(start.column) + "\n");
        ++count_;
        matched_ = 0;
    }
    ++place_.column;
    if (code == '\n') place_ = {place_.line + 1, 1};
}

}  // namespace tarn

#include "net/smtpcapability.h"

#include <algorithm>

namespace TarnLibA500::smtp {
namespace {

/// Takes what stands before the first of some characters off a text, and that character with it.
std::string_view Take(std::string_view& text, std::string_view ends) {
    const std::size_t end = text.find_first_of(ends);
    const std::string_view taken = text.substr(0, end);
    text.remove_prefix(end == text.npos ? text.size() : end + 1);
    return taken;
}

bool IsSameWord(std::string_view a, std::string_view b) {
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [&](char left, char right) { return lower(left) == lower(right); });
}

bool Has(std::string_view line, std::string_view word, std::string_view option) {
    constexpr std::size_t kCode = 4;  // with what follows it
    constexpr std::string_view kBetweenWords = " =";
    line.remove_prefix(std::min(line.size(), kCode));
    if (!IsSameWord(Take(line, kBetweenWords), word)) return false;
    if (option.empty()) return true;
    while (!line.empty()) {
        if (IsSameWord(Take(line, kBetweenWords), option)) return true;
    }
    return false;
}

}  // namespace

bool Offers(std::string_view helloReply, std::string_view word, std::string_view option) {
    while (!helloReply.empty()) {
        if (Has(Take(helloReply, "\r\n"), word, option)) return true;
    }
    return false;
}

}  // namespace TarnLibA500::smtp

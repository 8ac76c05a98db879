#include "net/ftpports.h"

#include <charconv>
#include <string_view>

namespace TarnLibA500 {
namespace {

constexpr std::size_t kCodeLength = 4;  // with the blank behind it

std::string_view BehindCode(const SAnsiString& reply) {
    const std::string_view text(reply.getString(), reply.getLength());
    return text.substr(std::min(kCodeLength, text.size()));
}

/// Takes a number from the front of a text; -1 when there is none, or when it is larger.
int TakeNumber(std::string_view& text, int most) {
    unsigned number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || number > static_cast<unsigned>(most)) return -1;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return static_cast<int>(number);
}

}  // namespace

unsigned short PortOfEpsv(const SAnsiString& reply) {
    constexpr std::size_t kBars = 3;
    constexpr int kMostPort = 65535;
    std::string_view text = BehindCode(reply);
    const std::size_t open = text.find('(');
    if (open == text.npos) return 0;
    text.remove_prefix(open + 1);
    const char bar = text.empty() ? '\0' : text[0];
    if (text.size() <= kBars || text[1] != bar || text[2] != bar) return 0;
    text.remove_prefix(kBars);
    const int port = TakeNumber(text, kMostPort);
    return port > 0 && !text.empty() && text[0] == bar ? static_cast<unsigned short>(port) : 0;
}

unsigned short PortOfPasv(const SAnsiString& reply) {
    constexpr int kNumbers = 6;
    constexpr int kMostByte = 255;
    std::string_view text = BehindCode(reply);
    const std::size_t first = text.find_first_of("0123456789");
    if (first == text.npos) return 0;
    text.remove_prefix(first);
    int numbers[kNumbers];
    for (int i = 0; i < kNumbers; ++i) {
        if (i != 0 && (text.empty() || text[0] != ',')) return 0;
        if (i != 0) text.remove_prefix(1);
        numbers[i] = TakeNumber(text, kMostByte);
        if (numbers[i] < 0) return 0;
    }
    return static_cast<unsigned short>(numbers[4] << 8 | numbers[5]);
}

}  // namespace TarnLibA500

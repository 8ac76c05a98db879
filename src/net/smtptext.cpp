#include "net/smtptext.h"

#include <algorithm>

#include "net/smtpbase64.h"
#include "strings/base/asciichar.h"

namespace TarnLibA500::smtp {
namespace {

/// The lines of a text: each ends with CR, LF or CR LF, the last perhaps with nothing.
class Lines {
  public:
    explicit Lines(std::string_view text) : rest_(text) {}

    bool next() {
        if (rest_.empty()) return false;
        const auto end = std::find_if(rest_.begin(), rest_.end(), IsLineEnd);
        line_ = rest_.substr(0, static_cast<std::size_t>(end - rest_.begin()));
        rest_.remove_prefix(line_.size());
        isEnded_ = !rest_.empty();
        if (isEnded_) rest_.remove_prefix(rest_.starts_with("\r\n") ? 2 : 1);
        return true;
    }
    std::string_view line() const { return line_; }
    /// False for a last line that has no end.
    bool isEnded() const { return isEnded_; }

  private:
    std::string_view rest_;
    std::string_view line_;
    bool isEnded_ = false;
};

/// A line that a reader would take for the end of the part.
bool IsDelimiter(std::string_view line) {
    return line.starts_with("--") && line.substr(2).starts_with(kBoundary);
}

void WriteLines(std::string_view utf8, bool doublesDots, MessageFile& file) {
    for (Lines lines(utf8); lines.next();) {
        if (doublesDots && lines.line().starts_with('.')) file.write(".");
        file.write(lines.line());
        if (lines.isEnded()) file.write("\r\n");
    }
}

void WriteBase64(std::string_view utf8, MessageFile& file) {
    Base64Lines base64(file);
    const auto add = [&base64](std::string_view bytes) {
        base64.add(reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<unsigned>(bytes.size()));
    };
    for (Lines lines(utf8); lines.next();) {
        add(lines.line());
        if (lines.isEnded()) add("\r\n");
    }
    base64.finish();
}

}  // namespace

Encoding EncodingOf(std::string_view utf8, bool takes8Bit) {
    constexpr std::size_t kMostLineBytes = 998;
    for (Lines lines(utf8); lines.next();) {
        const std::string_view line = lines.line();
        if (line.size() > kMostLineBytes || line.find('\0') != line.npos || IsDelimiter(line))
            return Encoding::Base64;
    }
    if (std::all_of(utf8.begin(), utf8.end(), [](char c) { return c >= 0; })) return Encoding::SevenBit;
    return takes8Bit ? Encoding::EightBit : Encoding::Base64;
}

void WriteText(std::string_view utf8, Encoding encoding, bool doublesDots, MessageFile& file) {
    if (encoding == Encoding::Base64) {
        WriteBase64(utf8, file);
    } else {
        WriteLines(utf8, doublesDots, file);
    }
}

}  // namespace TarnLibA500::smtp

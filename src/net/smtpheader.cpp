#include "net/smtpheader.h"

#include <algorithm>
#include <cstring>

#include "kcm/kcm.h"
#include "security/utf8text.h"
#include "strings/base/asciichar.h"

namespace TarnLibA500::smtp {
namespace {

constexpr char kFirstPrintable = ' ';
constexpr char kLastPrintable = '~';

/// Other texts would be taken for something else, or be too long for a line.
bool IsPlain(std::string_view utf8) {
    return utf8.size() <= kFoldAt && IsPrintable(utf8) && utf8.find("=?") == utf8.npos;
}

/// Encoded words: a line with one has 76 characters at most, a word 75.
struct Words {
    static constexpr const char* kBegin = "=?UTF-8?B?";
    static constexpr const char* kEnd = "?=";
    static constexpr unsigned kAround = 12;  ///< characters of both
    static constexpr unsigned kLine = 76;
    static constexpr unsigned kMostBytes = 45;   ///< in a word of 72 characters
    static constexpr unsigned kLeastBytes = 12;  ///< in the first, however far right it begins
};

/// The bytes of the first word.
unsigned FirstWordBytes(unsigned column) {
    const unsigned room = Words::kLine - std::min(column, Words::kLine);
    const unsigned bytes = room < Words::kAround ? 0 : (room - Words::kAround) / 4 * 3;
    return std::clamp(bytes, Words::kLeastBytes, Words::kMostBytes);
}

/// At most so many bytes, without a part of a character at their end.
std::string_view WholeCharacters(std::string_view utf8, unsigned bytes) {
    if (utf8.size() <= bytes) return utf8;
    constexpr unsigned char kMarks = 0xC0;
    constexpr unsigned char kContinues = 0x80;
    while ((static_cast<unsigned char>(utf8[bytes]) & kMarks) == kContinues) --bytes;
    return utf8.substr(0, bytes);
}

SAnsiString EncodedWord(std::string_view bytes) {
    char base64[Words::kLine];
    KCMUtility400::base64Into(base64, sizeof base64, reinterpret_cast<const unsigned char*>(bytes.data()),
                              static_cast<unsigned>(bytes.size()));
    return SAnsiString(Words::kBegin) + base64 + Words::kEnd;
}

SAnsiString EncodedWords(std::string_view utf8, unsigned column) {
    SAnsiString words;
    for (unsigned most = FirstWordBytes(column); !utf8.empty(); most = Words::kMostBytes) {
        const std::string_view part = WholeCharacters(utf8, most);
        if (!words.isEmpty()) words += kFold;
        words += EncodedWord(part);
        utf8.remove_prefix(part.size());
    }
    return words;
}

SAnsiString Escaped(std::string_view text) {
    SAnsiString escaped;
    for (const char c : text) {
        if (c == '"' || c == '\\') escaped += '\\';
        escaped += c;
    }
    return escaped;
}

SAnsiString WithoutEscapes(std::string_view text) {
    SAnsiString plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\\' && i + 1 < text.size()) ++i;
        plain += text[i];
    }
    return plain;
}

std::string_view Trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(' ');
    return first == text.npos ? std::string_view()
                              : text.substr(first, text.find_last_not_of(' ') - first + 1);
}

SAnsiString Text(std::string_view text) {
    return SAnsiString(text.data(), static_cast<std::uint32_t>(text.size()));
}

/// True for words of letters and digits with single blanks between them, which need no quotes.
bool IsPhrase(std::string_view name) {
    const auto isLetter = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || IsDigit(c) || c == '-' || c == ' ';
    };
    return std::all_of(name.begin(), name.end(), isLetter) && name.find("  ") == name.npos;
}

/// The column behind a text that begins at a column.
unsigned ColumnAfter(std::string_view text, unsigned column) {
    const std::size_t feed = text.rfind('\n');
    return static_cast<unsigned>(feed == text.npos ? column + text.size() : text.size() - feed - 1);
}

}  // namespace

SAnsiString ToUtf8(const SAnsiString& text) {
    Utf8Text utf8(text);
    const auto bytes = utf8.bytes();
    return SAnsiString(reinterpret_cast<const char*>(bytes.bytes), bytes.count);
}

SAnsiString WithoutLineEnds(const SAnsiString& text) {
    SAnsiString line;
    bool wasLineEnd = false;
    for (const char c : View(text)) {
        if (!IsLineEnd(c)) {
            line += c;
        } else if (!wasLineEnd) {
            line += ' ';
        }
        wasLineEnd = IsLineEnd(c);
    }
    return line;
}

bool HasControls(std::string_view text) {
    constexpr char kDelete = '\x7F';
    return std::any_of(text.begin(), text.end(),
                       [](char c) { return (c >= 0 && c < kFirstPrintable) || c == kDelete; });
}

bool IsPrintable(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) {
        return c >= kFirstPrintable && c <= kLastPrintable;  // what is beyond ASCII is negative
    });
}

SAnsiString HeaderText(const SAnsiString& utf8, unsigned column) {
    const SAnsiString line = WithoutLineEnds(utf8);
    const bool keepsItsEnds = Trimmed(View(line)).size() == line.getLength();
    return keepsItsEnds && IsPlain(View(line)) ? line : EncodedWords(View(line), column);
}

SAnsiString QuotedText(const SAnsiString& utf8, unsigned column) {
    const SAnsiString line = WithoutLineEnds(utf8);
    return IsPlain(View(line)) ? Escaped(View(line)) : EncodedWords(View(line), column);
}

Mailbox::Mailbox(const SAnsiString& text) {
    const SAnsiString utf8 = ToUtf8(text);
    hasControls_ = HasControls(View(utf8));
    const std::string_view whole = Trimmed(View(utf8));
    const std::size_t open = whole.rfind('<');
    if (open == whole.npos || whole.back() != '>') {
        address = Text(whole);
        return;
    }
    address = Text(Trimmed(whole.substr(open + 1, whole.size() - open - 2)));
    const std::string_view front = Trimmed(whole.substr(0, open));
    const bool isQuoted = front.size() > 1 && front.front() == '"' && front.back() == '"';
    name = isQuoted ? WithoutEscapes(front.substr(1, front.size() - 2)) : Text(front);
}

bool Mailbox::isValid() const {
    const std::string_view view = View(address);
    return !hasControls_ && !view.empty() && view.size() <= kFoldAt && IsPrintable(view) &&
           view.find_first_of("<>") == view.npos;
}

SAnsiString Mailbox::shown(unsigned column) const {
    if (name.isEmpty()) return address;
    const std::string_view view = View(name);
    SAnsiString text = name;
    if (!IsPlain(view)) {
        text = EncodedWords(view, column);
    } else if (!IsPhrase(view)) {
        text = "\"" + Escaped(view) + "\"";
    }
    return text << " <" << address << ">";
}

SAnsiString AddressLine(const char* field, const SIArray<SAnsiString>& addresses) {
    SAnsiString line(field);
    line += ": ";
    unsigned column = line.getLength();
    bool isFirst = true;
    for (const SAnsiString& text : addresses) {
        const Mailbox mailbox(text);
        if (!isFirst) line += ",";
        if (!isFirst && column + mailbox.name.getLength() + mailbox.address.getLength() > kFoldAt) {
            line += kFold;
            column = 1;
        } else if (!isFirst) {
            line += " ";
            column += 2;
        }
        const SAnsiString shown = mailbox.shown(column);
        line += shown;
        column = ColumnAfter(View(shown), column);
        isFirst = false;
    }
    return line += "\r\n";
}

}  // namespace TarnLibA500::smtp

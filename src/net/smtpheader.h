#pragma once

#include <string_view>

#include "tarnlib/siarray.h"
#include "tarnlib/sstring.h"

/// What stands in the lines of a mail's header. Texts are UTF-8 here, in strings that are only bytes.
namespace TarnLibA500::smtp {

/// No line of a header is longer than this without a fold, beyond which addresses are not joined.
inline constexpr unsigned kFoldAt = 900;
/// Goes on with a header line in the next one.
inline constexpr const char* kFold = "\r\n ";

inline std::string_view View(const SAnsiString& text) {
    return {text.getString(), text.getLength()};
}

/// Narrow text as UTF-8; "?" for what is no character, which is traced.
SAnsiString ToUtf8(const SAnsiString& text);

/// The text with a blank in place of each run of line ends.
SAnsiString WithoutLineEnds(const SAnsiString& text);

/// True when a text has a control character, a line end or a zero byte among them.
bool HasControls(std::string_view text);

/// True when all of a text is printable ASCII.
bool IsPrintable(std::string_view text);

/// A text as it may stand in a header line, at a column of it: as it is, or in encoded words (RFC 2047), one a line.
SAnsiString HeaderText(const SAnsiString& utf8, unsigned column);

/// The same for a place between quotes, where quotes and backslashes get a backslash.
SAnsiString QuotedText(const SAnsiString& utf8, unsigned column);

/// One address: `addr` or `Name <addr>`.
struct Mailbox {
    /// From narrow text. Nothing is refused yet.
    explicit Mailbox(const SAnsiString& text);
    /// True when the address can stand in a command and in a header: ASCII without controls and angle brackets.
    bool isValid() const;
    /// As it stands in a header line, at a column of it.
    SAnsiString shown(unsigned column) const;

    SAnsiString name;  ///< without quotes around it
    SAnsiString address;

  private:
    bool hasControls_;
};

/// "To: a, b" with CR LF, folded after a comma where it gets long.
SAnsiString AddressLine(const char* field, const SIArray<SAnsiString>& addresses);

}  // namespace TarnLibA500::smtp

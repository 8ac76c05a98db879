#pragma once

#include <string_view>

#include "net/smtpfile.h"

namespace TarnLibA500::smtp {

/// What parts the parts of a message.
inline constexpr std::string_view kBoundary = "----_=_next_enterprise_message";

/// How a text stands in a message.
enum class Encoding {
    SevenBit,  ///< ASCII as it is, which needs no word
    EightBit,  ///< UTF-8 as it is
    Base64
};

/// How a text must stand in it, where bytes beyond ASCII may be sent or not. What has lines of more than 998 bytes,
/// zero bytes or a line that would end the part is Base64.
Encoding EncodingOf(std::string_view utf8, bool takes8Bit);

/// Writes a text with CR LF at the end of each line, whatever it has there. Unless it is Base64, lines that begin
/// with a dot begin with two, if that is asked for.
void WriteText(std::string_view utf8, Encoding encoding, bool doublesDots, MessageFile& file);

}  // namespace TarnLibA500::smtp

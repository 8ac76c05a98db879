#pragma once

#include "tarnlib/sstring.h"
#include "tarnlib/tarnapi.h"

namespace TarnLibA500 {

/// What the mail classes have in common, for those who look at addresses and headers themselves. All operations are
/// static and keep no state.
///
///     SMTPHelper::GetAddress("Ann Smith <ann@example.com>");   // "ann@example.com"
///     SMTPHelper::EncodeHeaderText("Gr\xC3\xBC\xC3\x9F");      // "=?UTF-8?B?R3LDvMOf?=" where text is UTF-8
class TARN_API SMTPHelper {
  public:
    /// What goes into the envelope for `addr` or `Name <addr>`. Empty when it could not be sent: with a control
    /// character, an angle bracket more, or beyond ASCII.
    static SAnsiString GetAddress(const SAnsiString& address);
    /// A text as it stands in the line of a header: the text itself, or encoded words of at most 75 characters,
    /// which are parted by CR LF and a blank. A line end becomes a blank.
    static SAnsiString EncodeHeaderText(const SAnsiString& text);
    /// The name by which this machine greets a server: its own, or its address in brackets when the name is none
    /// of the Internet's ("my_pc").
    static SAnsiString GetLocalHost();
};

}  // namespace TarnLibA500

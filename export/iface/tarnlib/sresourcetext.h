#pragma once

#include "tarnlib/sstring.h"
#include "tarnlib/tarnapi.h"

namespace TarnLibA500 {

/// The library's message texts by their numbers, as exceptions of the network clients carry them.
///
///     SAnsiString text = SResourceText::Get(41321, "530 Not logged in");
///     // "The FTP server refuses the user name: 530 Not logged in"
class TARN_API SResourceText {
  public:
    /// The text with the detail in its place, if it has one. "[41399]" for a number that no text has.
    static SAnsiString Get(unsigned short identifier, const SAnsiString& detail = SAnsiString());
};

}  // namespace TarnLibA500

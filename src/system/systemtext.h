#pragma once

#include "tarnlib/sstring.h"

/// Texts for the system, which has UTF-16, and from it.
namespace TarnLibA500 {

/// A code-page text in UTF-16; "?" for bytes that are no character.
SWCharString ToSystem(const SAnsiString& text);

/// A text of the system in the code page; "?" for characters that it does not have.
SAnsiString FromSystem(const wchar_t* text);

/// The system's text for an error code, without its line end; the number when there is none.
SAnsiString SystemErrorText(unsigned long code);

}  // namespace TarnLibA500

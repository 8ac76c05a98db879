#pragma once

#include "tarnlib/sstring.h"

/// Texts for the system, which has UTF-16, and from it: names of files, modules, registry keys and variables,
/// and what they hold.
///
/// They are UTF-8 where narrow text is (SNarrowText). Otherwise they go by the process's ANSI code page, as
/// they do in the system's own functions for bytes, whatever the C locale is. Unlike there nothing is replaced
/// by a likeness ("best fit"), in neither direction: a name would mean another thing then, because the
/// full-width U+FF3C resembles a backslash and U+0141 an L. What has no exact counterpart becomes "?", which no
/// file has in its name.
namespace TarnLibA500 {

/// A narrow text in UTF-16, up to its first zero byte; "?" for bytes that are no character.
SWCharString ToSystem(const SAnsiString& text);
/// The same; false when that is not all of the text, or something was no character.
bool ToSystemExactly(const SAnsiString& text, SWCharString& wide);

/// A text of the system as narrow text; "?" for characters that the code page does not have, and for half a
/// surrogate pair.
SAnsiString FromSystem(const wchar_t* text);
/// The same; false when something became "?".
bool FromSystemExactly(const wchar_t* text, SAnsiString& narrow);

/// The conversions for a code page that is told: one with characters of one or two bytes, or UTF-8.
bool ToUtf16(const SAnsiString& text, unsigned codePage, SWCharString& wide);
bool FromUtf16(const wchar_t* text, unsigned codePage, SAnsiString& narrow);

/// The system's text for an error code as it comes, with its line end: in the system's language where narrow text
/// can hold all of it, and in English otherwise. A text is not a name, so it is in the C locale's code page, or in
/// UTF-8. False when there is none that narrow text can hold.
bool FindSystemErrorText(unsigned long code, SAnsiString& text);
/// The same without the line end; "system error" and the number when there is none.
SAnsiString SystemErrorText(unsigned long code);

}  // namespace TarnLibA500

#pragma once

#include "tarnlib/siarray.h"
#include "tarnlib/sstring.h"
#include "tarnlib/tarnapi.h"

/// What the process was started with: its words and its environment variables.
///
/// Names of variables ignore case, as the system has it. Texts are in the process's ANSI code page, whatever
/// the C locale is, or in UTF-8 (SNarrowText), and of any length; the system's own functions for bytes cut
/// double-byte values and replace characters by similar ones, so the wide ones are asked. What the C runtime's
/// getenv sees may differ. Functions may be called from any thread.
///
///     const CParamLineArgs args(SEnvironment::GetArguments());
///     SAnsiString proxy;
///     if (!SEnvironment::Get("HTTP_PROXY", proxy)) ...        // not set; set to nothing is another matter
///     SAnsiString path = SEnvironment::Expand("%TEMP%\\work"); // C:\users\me\Temp\work
namespace TarnLibA500 {

/// What the process was started with: its words and its environment variables; all members are static.
class TARN_API SEnvironment {
  public:
    /// The words of the command line, the program's name first, parted as for main and without wildcards put in
    /// place. They come from the system's UTF-16: main's own are in the ANSI code page whatever SNarrowText says,
    /// and have similar characters in place of those that this does not have. Those become "?" here.
    static SIArray<SAnsiString> GetArguments();
    /// True, with the value, when the variable is set; otherwise the value stays as it was. Characters that
    /// the code page does not have become "?".
    static bool Get(const SAnsiString& name, SAnsiString& value);
    /// False, which is traced, when the system refuses, for an empty name or one with "=" in it, for instance;
    /// also for texts with a zero byte inside or bytes that are no character.
    static bool Set(const SAnsiString& name, const SAnsiString& value);
    /// True when the variable is not there afterwards.
    static bool Remove(const SAnsiString& name);
    /// The text, up to its first zero byte, with %NAME% replaced by the values of variables; unknown ones stay
    /// as they are. Bytes that are no character, and characters that the code page does not have, become "?".
    static SAnsiString Expand(const SAnsiString& text);
};

}  // namespace TarnLibA500

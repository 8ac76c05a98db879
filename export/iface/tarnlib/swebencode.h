#pragma once

#include "tarnlib/mbcscodesetconverter.h"
#include "tarnlib/sstring.h"
#include "tarnlib/tarnapi.h"

/// Text for web pages: for HTML, for string literals of scripts, for URLs.
///
/// Texts are in the process's code page and are escaped by whole characters. All members are static, never fail,
/// and may be called from any thread. A text in which nothing is escaped comes back shared.
///
///     page << "<td title=\"" << SWebEncode::HTMLEncode(title) << "\">";
///     page << "<script>show(\"" << SWebEncode::JavaScriptEncode(title) << "\");</script>";
///     script << "MsgBox " << SWebEncode::VBScriptStringEncode(title);
///     page << "<a href=\"?q=" << SWebEncode::URLEncode(title, MBCSCodesetConverter::UTF8) << "\">";
namespace TarnLibA500 {

/// Encoders for web pages; all members are static.
class TARN_API SWebEncode {
  public:
    /// A code set by its name.
    using ExplicitCodeset = MBCSCodesetConverter::ExplicitCodeset;

    /// The text with & < > " as "&amp;", "&lt;", "&gt;" and "&quot;". An apostrophe stays, so attributes belong
    /// between double quotes.
    static SAnsiString HTMLEncode(const SAnsiString& text);
    /// The text with every space as "&nbsp;". Nothing else is escaped: HTMLEncode comes first.
    static SAnsiString HTMLNonBreakableSpace(const SAnsiString& text);
    /// The text with every second space of a run, the first one to begin with, as "&nbsp;": a run keeps its
    /// width, and lines may still break in it.
    static SAnsiString HTMLNonBreakableSpaceStippled(const SAnsiString& text);
    /// The inside of a string literal of JavaScript, in either kind of quotes, in a script element too: \ and
    /// both quotes with a \ before them, "<" as "\x3C", a line end (LF, CR or CR LF) as "\n". In UTF-8 U+2028
    /// and U+2029 are escaped. A byte that is no character is "\xNN": it would take the \ behind it for its
    /// other half.
    static SAnsiString JavaScriptEncode(const SAnsiString& text);
    /// A string expression of VBScript, with its quotes: quotes inside are doubled, a line end leaves the
    /// literal and is chr(13), or chr(10) for a lone LF. At the very start or end of the text it stands outside
    /// the quotes.
    static SAnsiString VBScriptStringEncode(const SAnsiString& text);

    /// See CNameValuePairs::URLStrEncodeBytewise.
    static SAnsiString URLEncode(const SAnsiString& text, ExplicitCodeset codeset, bool spaceAsPlus = true);
    /// See CNameValuePairs::URLStrEncode: the bytes as they are.
    static SAnsiString URLEncodeSimple(const SAnsiString& text);
    /// See CNameValuePairs::URLStrDecode.
    static SAnsiString URLDecodeEx(const SAnsiString& text);
};

}  // namespace TarnLibA500

#include "tarnlib/swebencode.h"

#include "strings/base/asciichar.h"
#include "tarnlib/nvpairs.h"
#include "url/replacement.h"

namespace TarnLibA500 {
namespace {

using mbchar::CodePage;

constexpr SpecialBytes kHtmlBytes("&<>\"");
constexpr SpecialBytes kSpace(" ");
constexpr SpecialBytes kJavaScriptBytes("\n\r\"'\\<", true);
constexpr SpecialBytes kVBScriptBytes("\n\r\"");
constexpr std::string_view kQuote("\"");
constexpr char32_t kLineSeparator = 0x2028;
constexpr char32_t kParagraphSeparator = 0x2029;

// CR LF is one line end.
unsigned LineEndBytes(const char* at, const char* end) {
    return end - at > 1 && at[0] == '\r' && at[1] == '\n' ? 2 : 1;
}

Replacement HtmlEntity(const CodePage&, const char* at, const char*) {
    switch (*at) {
        case '&':
            return {"&amp;", 1};
        case '<':
            return {"&lt;", 1};
        case '>':
            return {"&gt;", 1};
        default:
            return {"&quot;", 1};
    }
}

Replacement NonBreakableSpace(const CodePage&, const char*, const char*) {
    return {"&nbsp;", 1};
}

// Remembers where the next space of the same run would be.
class EverySecondSpace {
  public:
    Replacement operator()(const CodePage&, const char* at, const char*) {
        isPlain_ = at == next_ && !isPlain_;
        next_ = at + 1;
        return {isPlain_ ? " " : "&nbsp;", 1};
    }

  private:
    const char* next_ = nullptr;
    bool isPlain_ = false;
};

class JavaScriptEscape {
  public:
    Replacement operator()(const CodePage& page, const char* at, const char* end) {
        switch (*at) {
            case '\n':
            case '\r':
                return {"\\n", LineEndBytes(at, end)};
            case '<':
                return {"\\x3C", 1};
            case '"':
                return {"\\\"", 1};
            case '\'':
                return {"\\'", 1};
            case '\\':
                return {"\\\\", 1};
            default:
                return escapeBeyondAscii(page.characterAt(at, end), at);
        }
    }

  private:
    Replacement escapeBeyondAscii(const mbchar::Character& character, const char* at) {
        if (character.code == kLineSeparator) return {"\\u2028", character.bytes};
        if (character.code == kParagraphSeparator) return {"\\u2029", character.bytes};
        if (character.isValid()) return {std::string_view(at, character.bytes), character.bytes};
        const auto byte = static_cast<unsigned char>(*at);
        byte_[2] = kUpperHexDigits[byte >> 4];
        byte_[3] = kUpperHexDigits[byte & 15];
        return {std::string_view(byte_, sizeof byte_), character.bytes};
    }

    char byte_[4] = {'\\', 'x'};
};

// The literal is closed before a line end and opened again behind it.
class VBScriptEscape {
  public:
    explicit VBScriptEscape(const SAnsiString& text) : begin_(text.getString()) {}
    Replacement operator()(const CodePage&, const char* at, const char* end) const {
        if (!IsLineEnd(*at)) return {"\"\"", 1};
        const bool isCr = *at == '\r';
        const unsigned bytes = LineEndBytes(at, end);
        if (at == begin_) return {isCr ? "chr(13) + \"" : "chr(10) + \"", bytes};
        if (at + bytes == end) return {isCr ? "\" + chr(13)" : "\" + chr(10)", bytes};
        return {isCr ? "\" + chr(13) + \"" : "\" + chr(10) + \"", bytes};
    }
    // True when a line end is the last thing of the text, and not the first as well.
    bool endsOutside(const char* end) const {
        const bool isPair = end - begin_ > 1 && end[-2] == '\r' && end[-1] == '\n';
        return end != begin_ && IsLineEnd(end[-1]) && end - begin_ > (isPair ? 2 : 1);
    }

  private:
    const char* begin_;
};

}  // namespace

SAnsiString SWebEncode::HTMLEncode(const SAnsiString& text) {
    return ReplaceSpecial(text, kHtmlBytes, HtmlEntity);
}

SAnsiString SWebEncode::HTMLNonBreakableSpace(const SAnsiString& text) {
    return ReplaceSpecial(text, kSpace, NonBreakableSpace);
}

SAnsiString SWebEncode::HTMLNonBreakableSpaceStippled(const SAnsiString& text) {
    return ReplaceSpecial(text, kSpace, EverySecondSpace());
}

SAnsiString SWebEncode::JavaScriptEncode(const SAnsiString& text) {
    return ReplaceSpecial(text, kJavaScriptBytes, JavaScriptEscape());
}

SAnsiString SWebEncode::VBScriptStringEncode(const SAnsiString& text) {
    const VBScriptEscape rule(text);
    const bool startsOutside = IsLineEnd(*text.getString());
    const bool endsOutside = rule.endsOutside(text.getString() + text.getLength());
    return ReplaceSpecial(text, kVBScriptBytes, rule, startsOutside ? std::string_view() : kQuote,
                          endsOutside ? std::string_view() : kQuote);
}

SAnsiString SWebEncode::URLEncode(const SAnsiString& text, ExplicitCodeset codeset, bool spaceAsPlus) {
    return CNameValuePairs::URLStrEncodeBytewise(text, codeset, spaceAsPlus);
}

SAnsiString SWebEncode::URLEncodeSimple(const SAnsiString& text) {
    return CNameValuePairs::URLStrEncode(text);
}

SAnsiString SWebEncode::URLDecodeEx(const SAnsiString& text) {
    return CNameValuePairs::URLStrDecode(text);
}

}  // namespace TarnLibA500

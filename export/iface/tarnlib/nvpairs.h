#pragma once

#include <cstdint>

#include "tarnlib/mbcscodesetconverter.h"
#include "tarnlib/simap.h"
#include "tarnlib/sstring.h"
#include "tarnlib/tarnapi.h"

/// Query strings: pairs of a name, "=" and a value, joined by "&", with everything that could be mistaken
/// escaped.
///
/// Texts are in the process's code page. Escaped, a byte that is no letter, digit, "." or "_" is "%" and two
/// hexadecimal digits, and a space is "+". A UTF-16 unit above U+00FF is "%u" and four digits, which browsers'
/// unescape reads. Static members may be called from any thread; an object is used by one at a time.
///
///     SAnsiString query = CNameValuePairs::Encode("user", "Anna B.", "mode", "a&b", NULL);
///     CNameValuePairs pairs(query);                                       // user=Anna+B.&mode=a%26b
///     SAnsiString name, value;
///     while (pairs.Next(name, value)) Use(name, value);
///     if (!CNameValuePairs::tryURLStrDecode(value, text, length)) ...   // a "%" that begins no escape
///
///     CMapNameValuePair map;
///     if (map.ParseParameter(query)) map.Lookup("USER", value);          // "Anna B."
namespace TarnLibA500 {

/// A query string that is read pair by pair; and the encoders and decoders of URLs.
class TARN_API CNameValuePairs {
  public:
    /// A code set by its name.
    using ExplicitCodeset = MBCSCodesetConverter::ExplicitCodeset;

    /// No pairs.
    CNameValuePairs() = default;
    /// The pairs of a text, from its start.
    explicit CNameValuePairs(const SAnsiString& pairs);
    /// The same pairs, read as far.
    CNameValuePairs(const CNameValuePairs&) = default;
    /// Takes on the same pairs, read as far.
    CNameValuePairs& operator=(const CNameValuePairs&) = default;
    /// Lets go of the text.
    virtual ~CNameValuePairs();
    /// Reports by assertion when the read position is beyond the text.
    virtual void AssertValid() const;

    /// True while there is text that was not read.
    bool HasMorePairs() const;
    /// Reads the next pair and decodes both parts as URLStrDecode does. The name runs to the next "=", even past
    /// an "&", the value from there to the next "&"; without a "=" all that is left is the name, and the value
    /// is empty. False, and nothing changed, when nothing is left.
    bool Next(SAnsiString& name, SAnsiString& value);
    /// The same, decoded as URLStrDecodeAndConvert does.
    bool Next(SAnsiString& name, SAnsiString& value, ExplicitCodeset codeset);
    /// The whole text, what was read included.
    const SAnsiString& GetPairs() const { return pairs_; }
    /// Puts other pairs behind these, as ConcatUrl does. What was read stays read.
    void ConcatPairs(const SAnsiString& pairs);

    /// A query string of names and values in turn, zero-terminated, with NULL behind the last; all are escaped.
    /// A name without a value is reported by assertion and gives an empty text.
    static SAnsiString Encode(const char* name, const char* value, ...);
    /// Two query strings in one. When either is empty, the other. When one of them has an "&" at the seam, they
    /// are put together as they are, otherwise with an "&" between: three stand in a row, deliberately, when
    /// both have one.
    static SAnsiString ConcatUrl(const SAnsiString& left, const SAnsiString& right);

    /// The text with each byte of the code page escaped. Shared when there is nothing to escape.
    static SAnsiString URLStrEncode(const SAnsiString& text);
    /// The same for a zero-terminated text; null is an empty one.
    static SAnsiString URLStrEncode(const char* text);
    /// The text with units up to U+00FF as "%XX" and others as "%uXXXX". Shared when there is nothing to escape.
    static SWCharString URLStrEncode(const SWCharString& text);
    /// The text with the bytes that it has in a code set escaped; a space is "+", or "%20" when spaceAsPlus is
    /// false. Characters that the code set does not have become "?" or the nearest that the system offers.
    static SAnsiString URLStrEncodeBytewise(const SAnsiString& text, ExplicitCodeset codeset,
                                            bool spaceAsPlus = true);
    /// Appends the text, escaped as URLStrEncode does, to an ASCII text.
    static void URLStrEncodeAppend(SAsciiString& target, const SWCharString& text);
    /// Appends the text, escaped as URLStrEncode does.
    static void URLStrEncodeAppend(SWCharString& target, const SWCharString& text);
    /// Appends the text to an ASCII text with only control characters, characters above "~" and % + , = { } & $
    /// escaped; spaces stay.
    static void URLStrEncodeAppend3(SAsciiString& target, const SWCharString& text);
    /// The same to a wide text.
    static void URLStrEncodeAppend3(SWCharString& target, const SWCharString& text);

    /// The text with "+" as a space, "%XX" as that byte, a zero byte too, and "%uXXXX" as that character of the
    /// code page, or "?". A "%" that begins neither stays, and the first one is reported by assertion. Shared
    /// when there is nothing to decode. In UTF-8 two halves of a surrogate pair are one character, and a lone
    /// half is U+FFFD.
    static SAnsiString URLStrDecode(const SAnsiString& text);
    /// The same in UTF-16: "%XX" is the unit of that number, and "%uXXXX" that unit.
    static SWCharString URLStrDecode(const SWCharString& text);
    /// The same, where the bytes of the text, escaped or not, are of a code set. They are converted as
    /// MBCSCodesetConverter does: illegal UTF-8 between two "%uXXXX" is traced and lost.
    static SAnsiString URLStrDecodeAndConvert(const SAnsiString& text, ExplicitCodeset codeset);
    /// Decodes so many bytes strictly: false, and the target as it was, when a "%" begins no escape. With a
    /// pointer to "decoded", that tells after success whether there was anything to decode.
    static bool tryURLStrDecode(SAnsiString& target, const char* text, std::uint32_t nBytes,
                                bool* decoded = nullptr);

  protected:
    /// Appends a unit as "%XX", or "%uXXXX" from U+0100 on.
    static void EscapeWideChar(wchar_t unit, SWCharString& out);

  private:
    template <class Decode>
    bool takePair(SAnsiString& name, SAnsiString& value, Decode decode);

    SAnsiString pairs_;
    std::uint32_t position_ = 0;  // bytes that were read
};

/// Names and values, found without regard to the case of names. As in every map with this key, names are in
/// order of their length in bytes, and only names of one length in that of the alphabet.
class TARN_API CMapNameValuePair : public SIMap<SMapStringCaseInsensitive, SAnsiString> {
  public:
    /// No pairs.
    CMapNameValuePair();
    /// Copies of the pairs.
    CMapNameValuePair(const CMapNameValuePair& other);
    /// Takes the pairs and leaves the other map empty.
    CMapNameValuePair(CMapNameValuePair&& other) noexcept;
    /// Copies of the pairs in place of its own.
    CMapNameValuePair& operator=(const CMapNameValuePair& other);
    /// Takes the pairs in place of its own.
    CMapNameValuePair& operator=(CMapNameValuePair&& other) noexcept;
    /// Destroys the pairs.
    ~CMapNameValuePair();

    /// Adds the pairs of a query string, decoded as URLStrDecode does. A name that is there already gets the new
    /// value. Nothing between two "&" is no pair. A pair with no "=", or with more than one, is reported by
    /// assertion and ends the reading: false, and the pairs before it are added.
    bool ParseParameter(const SAnsiString& text);
    /// The same for so many bytes.
    bool ParseParameter(const char* text, std::uint32_t nBytes);
    /// The same for the zero-terminated text from a position on.
    bool ParseParameter(const SAsciiString::iterator& text);

  protected:
    /// Decodes a name and a value and adds them.
    void SetNameValuePair(const SAnsiString& name, const SAnsiString& value);

  private:
    bool addPair(const char* at, const char* end);
};

}  // namespace TarnLibA500

#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "tarnlib/simplebuffer.h"
#include "tarnlib/sstring.h"
#include "tarnlib/tarnapi.h"

/// UTF-8, UTF-16 and UCS-4 (UTF-32) into each other, by the rules of the Unicode Standard (chapter 3, table
/// 3-7).
///
/// The Convert members work on ranges and tell how far they came: for input of unknown quality and for text
/// that comes in pieces. The others convert whole texts leniently: an unpaired surrogate becomes U+FFFD,
/// illegal UTF-8 is refused. All static members may be called from any thread.
///
///     SOCAString wide;
///     if (!CUTFConverter::UTF8ToUTF16(bytes, wide)) ...             // illegal UTF-8; wide is empty
///     SSimpleBuffer utf8;
///     CUTFConverter::UTF16ToUTF8(wide, utf8);                       // with a zero byte at the end
///
///     const unsigned char* at = first;
///     wchar_t* out = room;
///     auto result = CUTFConverter::Convert(at, last, out, room + units, CUTFConverter::Strict);
///     if (result == CUTFConverter::SourceIllegal) Report(at - first);   // the byte where it went wrong
namespace TarnLibA500 {

/// Code units that copies share, with a zero unit behind the last.
template <class unit>
class UTFBuffer_t {
  public:
    /// No code units.
    UTFBuffer_t() = default;
    /// A copy of "length" code units.
    UTFBuffer_t(const unit* units, std::uint32_t length) {
        const std::uint32_t bytes = length * static_cast<std::uint32_t>(sizeof(unit));
        const unit terminator = unit();
        bytes_ = SSimpleBuffer(bytes + static_cast<std::uint32_t>(sizeof(unit)));
        bytes_.append(units, bytes);
        // The room for the terminator was asked for, so writing it there moves nothing.
        std::memcpy(bytes_.getBuffer() + bytes, &terminator, sizeof terminator);
    }
    /// The code units; never null.
    const unit* getBuffer() const noexcept {
        static constexpr unit nothing[1] = {};
        return bytes_.isEmpty() ? nothing : reinterpret_cast<const unit*>(bytes_.getBufferProtected());
    }
    /// Code units, the terminator not counted.
    std::uint32_t getLength() const noexcept {
        return bytes_.getNBytes() / static_cast<std::uint32_t>(sizeof(unit));
    }

  private:
    SSimpleBuffer bytes_;
};

/// The conversions, and an object that holds a text in UTF-8.
class TARN_API CUTFConverter {
  public:
    using UCS4 = unsigned int;             ///< a Unicode value
    using UTF8Buffer = UTFBuffer_t<char>;  ///< a shared text in UTF-8
    using UCS4Buffer = UTFBuffer_t<UCS4>;  ///< a shared text in Unicode values

    /// How a conversion of a range ended.
    enum Result {
        ConversionOK = 0,     ///< everything is converted
        SourceExhausted = 1,  ///< the source ends inside a character, which stays: up to 3 bytes, or a unit
        TargetExhausted = 2,  ///< the next character does not fit; it stays
        SourceIllegal = 3     ///< the source goes on with something that is no character
    };
    /// What becomes of values that are no characters.
    enum Mode {
        Strict = 0,  ///< an unpaired surrogate, or a value beyond U+10FFFF, is illegal
        Lenient = 1  ///< it becomes U+FFFD; illegal UTF-8 stays illegal
    };

    // --- ranges: both pointers are advanced past what was converted; nothing is terminated ---

    /// UTF-8 into UTF-16.
    static Result Convert(const unsigned char*& source, const unsigned char* sourceEnd, wchar_t*& target,
                          wchar_t* targetEnd, Mode mode = Lenient);
    /// UTF-8 into UCS-4.
    static Result Convert(const unsigned char*& source, const unsigned char* sourceEnd, UCS4*& target,
                          UCS4* targetEnd, Mode mode = Lenient);
    /// UTF-16 into UTF-8.
    static Result Convert(const wchar_t*& source, const wchar_t* sourceEnd, unsigned char*& target,
                          unsigned char* targetEnd, Mode mode = Lenient);
    /// UTF-16 into UCS-4.
    static Result Convert(const wchar_t*& source, const wchar_t* sourceEnd, UCS4*& target, UCS4* targetEnd,
                          Mode mode = Lenient);
    /// UCS-4 into UTF-8.
    static Result Convert(const UCS4*& source, const UCS4* sourceEnd, unsigned char*& target,
                          unsigned char* targetEnd, Mode mode = Lenient);
    /// UCS-4 into UTF-16.
    static Result Convert(const UCS4*& source, const UCS4* sourceEnd, wchar_t*& target, wchar_t* targetEnd,
                          Mode mode = Lenient);

    // --- whole texts ---
    // Sources are zero-terminated where they come without a count; null is empty. True on success, otherwise the
    // output is empty.

    /// UTF-8 into UTF-16. Failing memory is reported by assertion and gives false, deliberately unlike everywhere
    /// else.
    static bool UTF8ToUTF16(const char* source, SOCAString& target);
    /// The same.
    static bool UTF8ToUTF16(const unsigned char* source, SOCAString& target);
    /// The same for no text: the output is empty, and the result true.
    static bool UTF8ToUTF16(std::nullptr_t, SOCAString& target);
    /// The same for "nBytes" bytes, zero bytes included; 0xFFFFFFFF: up to the terminator.
    static bool UTF8ToUTF16(const char* source, std::uint32_t nBytes, SOCAString& target);
    /// UTF-16 into UTF-8. The bytes include a zero byte at the end; an empty text is that byte alone.
    static bool UTF16ToUTF8(const SOCAString& source, SSimpleBuffer& target);
    /// UTF-16 into UTF-8.
    static bool UTF16ToUTF8(const SOCAString& source, UTF8Buffer& target);
    /// UTF-16 into UCS-4.
    static bool UTF16ToUCS4(const SOCAString& source, UCS4Buffer& target);
    /// UTF-8 into UCS-4.
    static bool UTF8ToUCS4(const char* source, UCS4Buffer& target);
    /// UCS-4 into UTF-16.
    static bool UCS4ToUTF16(const UCS4* source, SOCAString& target);
    /// UCS-4 into UTF-8.
    static bool UCS4ToUTF8(const UCS4* source, UTF8Buffer& target);
    /// UTF-16 into an array of "size" values, the terminator included. Returns the source's units + 1 on
    /// success (and for a null array), so a surrogate pair counts 2; when the array is too small, how many
    /// values were converted.
    static std::uint32_t UTF16ToUCS4(const wchar_t* source, UCS4* target, std::uint32_t size);
    /// UTF-16 into UTF-8 in memory of SSimpleBuffer::alloc, which the caller frees with
    /// SSimpleBuffer::dealloc; the length does not count the terminator. False, with null, for a count of 0.
    static bool ConvertToUTF8String(const wchar_t* source, std::uint32_t count, unsigned char*& target,
                                    std::uint32_t& length);

    /// Bytes of UTF-8 for a text, the terminator included; 0xFFFFFFFF units: up to the terminator.
    static std::uint32_t UTF16ToUTF8Length(const wchar_t* source, std::uint32_t units = 0xFFFFFFFF);
    /// The same, every unit taken for itself, so that a surrogate pair counts 6 instead of 4.
    static std::uint32_t WideCharToUTF8Length(const wchar_t* source, std::uint32_t units = 0xFFFFFFFF);

    // --- an object that holds the UTF-8 form of a text ---

    /// No text.
    CUTFConverter() = default;
    /// The same as setText.
    explicit CUTFConverter(const SAnsiString& text) { setText(text); }
    /// Takes the UTF-8 form of a text, up to its first zero byte.
    void setText(const SAnsiString& text);
    /// The bytes, zero-terminated; valid until the next setText.
    const char* getBuffer() const noexcept { return text_.getBuffer(); }
    /// How many bytes there are, the terminator not counted.
    std::uint32_t getLength() const noexcept { return text_.getLength(); }

  private:
    UTF8Buffer text_;
};

}  // namespace TarnLibA500

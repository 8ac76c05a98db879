#pragma once

#include "tarnlib/sstring.h"
#include "tarnlib/tarnapi.h"

struct _GUID;  // the system's GUID

/// Identifiers that are unique, or follow from a text, and say which.
///
/// A value of 35 bytes without an owner: copied, passed and kept as it is. Its text has only letters, digits, "_" and
/// ".": 23 characters for most kinds, which matter with their case. An identifier can be extended by a number, once,
/// and stripped of it again.
///
///     SGUID id;
///     const SAnsiString text = id.Create().ToString();
///     if (SGUID(text) == id) ...
///     const SGUID part = SGUID::ExtendGUID(id, 7);
namespace TarnLibA500 {

/// An identifier with the kind of its source.
class TARN_API SGUID {
  public:
    /// What goes wrong with identifiers.
    class TARN_API Error {
      public:
        /// With a sentence.
        explicit Error(const SAnsiString& sentence);
        /// Shares the sentence.
        Error(const Error& other) noexcept;
        /// Shares the sentence.
        Error& operator=(const Error& other) noexcept;
        /// For the kinds of errors.
        virtual ~Error();
        /// The sentence.
        SAnsiString toString() const { return sentence_; }

      private:
        SAnsiString sentence_;
    };
    /// A text that is no identifier's.
    class TARN_API Error_InvalidString : public Error {
      public:
        /// With the text.
        explicit Error_InvalidString(const SAnsiString& text);
    };
    /// Neither the system nor the cryptographic module gives what an identifier is made of.
    class TARN_API Error_GeneratingGUID : public Error {
      public:
        /// With a fixed sentence.
        Error_GeneratingGUID();
    };

    /// The bytes that the text of a random identifier is read with; deliberately not those that it has.
    static const int MaxRandomStringLength = 26;

    /// The null identifier.
    SGUID() noexcept;
    /// The system's GUID, its 16 bytes as they are in memory: those of the first three numbers least significant
    /// first.
    SGUID(const ::_GUID& guid) noexcept;
    /// Reads the text form: "NULL", the empty text, or what ToString gave. Throws Error_InvalidString.
    explicit SGUID(const SAnsiString& text);
    /// Copies the value.
    SGUID(const SGUID& other) noexcept;
    /// Copies the value.
    SGUID(SGUID&& other) noexcept;
    /// Copies the value.
    SGUID& operator=(const SGUID& other) noexcept;
    /// Copies the value.
    SGUID& operator=(SGUID&& other) noexcept;
    /// Nothing to do.
    ~SGUID() = default;

    /// Makes it a new identifier by the system's generator. Where that fails, which is reported by assertion, it is
    /// made of 32 random bytes: unique, but its text cannot be read back, nor can it be extended. Throws
    /// Error_GeneratingGUID, and the value stays.
    SGUID& Create();

    /// The text form; "NULL" for the null identifier.
    SAnsiString ToString() const;
    /// The same.
    SAnsiString ToAnsiString() const;
    /// True for the null identifier.
    bool IsNULL() const noexcept;
    /// True for one that was extended by a number.
    bool IsExtendedGUID() const noexcept;

    /// Compares bytes over the length of this one alone, deliberately: -1, 0 or 1. One that the other begins with
    /// equals it from this side, so identifiers of several kinds are no keys of a map.
    int compare(const SGUID& other) const noexcept;
    /// True when compare says 0.
    bool operator==(const SGUID& other) const noexcept { return compare(other) == 0; }
    /// True when compare does not say 0.
    bool operator!=(const SGUID& other) const noexcept { return compare(other) != 0; }
    /// The order of compare.
    bool operator<(const SGUID& other) const noexcept { return compare(other) < 0; }
    /// The order of compare.
    bool operator>(const SGUID& other) const noexcept { return compare(other) > 0; }

    /// The identifier with a number. One that is extended already, or that was made of random bytes, is reported by
    /// assertion and gives the null identifier.
    static SGUID ExtendGUID(const SGUID& id, unsigned long number);
    /// The way back. False, with the null identifier and 0, for one that is not extended. The two may be one object.
    static bool StripExtendedGUID(const SGUID& extended, SGUID& base, unsigned long& number);
    /// The identifier that follows from a text, up to its first zero byte.
    static SGUID Make3rdPartyGUID(const SAnsiString& text);
    /// The text form of another one that follows from a text.
    static SAnsiString MakeQRTXCUID(const SAnsiString& text);

  private:
    /// The low four bits of the first byte.
    enum _Source : unsigned char {
        nullSource = 0,
        systemSource = 1,
        firstHostSource = 2,  // to 4, and 6
        lastHostSource = 4,
        randomSource = 5,
        otherHostSource = 6,
        cuidSource = 7,
        thirdPartySource = 8,
        extendedSource = 9,
        reservedSource = 10
    };

    static SGUID Hash_CreateGuid(const SAnsiString& text, _Source source);
    static unsigned SourceToLength(unsigned char source);
    static unsigned GetHostIdSize(unsigned char source);
    static const char* GetHostIdName(unsigned char source) noexcept;
    unsigned GetExpectedSize() const;
    void take(unsigned char source, const unsigned char* data, unsigned count) noexcept;
    _Source kind() const noexcept;
    const unsigned char* bytes() const noexcept { return reinterpret_cast<const unsigned char*>(this); }

    static constexpr unsigned kDataBytes = 32;

    unsigned char source_;
    unsigned char data_[kDataBytes];
    unsigned char used_;    ///< bytes of the data
    unsigned char isNull_;  ///< 1 for the null identifier
};

}  // namespace TarnLibA500

#pragma once

#include <atomic>
#include <compare>
#include <cstdint>
#include <utility>

#include "tarnlib/schar.h"
#include "tarnlib/tarnapi.h"

/// Strings: one pointer to a shared, reference-counted, copy-on-write block.
///
/// Copying, passing and returning a string is O(1) and allocates nothing; the first change of a shared string
/// gives it a block of its own. Reading through any const member never allocates and never detaches. Copies
/// that share a block may be copied, assigned and destroyed by several threads at once; one string object
/// must not be changed by two threads. Pointers and iterators into a string are valid until that string is
/// changed, assigned or destroyed.
///
/// Code units are bytes or UTF-16 units. Positions and counts of characters are multi-byte characters in
/// SAnsiString and code units in the other flavours; wherever a raw pointer comes with a count, the count is
/// code units.
///
///     SAnsiString name("  C:\\data\\report.txt ");
///     name.trim();
///     SAnsiString::iterator point = name.findLast('.');
///     SAnsiString stem = name.left(point);              // "C:\data\report"
///     SAnsiString line;
///     line << stem << ": " << stem.getLength() << " bytes";
///     SAnsiString copy = line;                          // shares the block
///     copy += "!";                                      // now it does not
///     if (SAnsiStringCI(stem) == "c:\\DATA\\REPORT") ...
namespace TarnLibA500 {

enum class LetterCase { Lower, Upper };

/// The capacity that marks the shared empty block.
constexpr std::uint32_t kEmptyBufferCapacity = 0xFFFFFFFF;

template <class unit, int flavour>
class SString_t {
  public:
    using Char = SChar_t<unit, flavour>;

    /// The header of a block; the characters follow it, with a zero unit after the last.
    class TARN_API SStringBuffer {
      public:
        TARN_MEM SStringBuffer() noexcept : refCount(0), length(0), capacity(0) {}
        TARN_MEM constexpr SStringBuffer(std::int32_t references, std::uint32_t units,
                                         std::uint32_t room) noexcept
            : refCount(references), length(units), capacity(room) {}
        TARN_MEM SStringBuffer(const SStringBuffer& other) noexcept : SStringBuffer() { *this = other; }
        TARN_MEM SStringBuffer(SStringBuffer&& other) noexcept : SStringBuffer() { *this = other; }
        /// Copy the three header fields, never the characters.
        TARN_MEM SStringBuffer& operator=(const SStringBuffer& other) noexcept {
            refCount.exchange(other.refCount.load(std::memory_order_acquire));
            length = other.length;
            capacity = other.capacity;
            return *this;
        }
        TARN_MEM SStringBuffer& operator=(SStringBuffer&& other) noexcept {
            return *this = std::as_const(other);
        }
        /// Count 1, length 0, capacity 0.
        TARN_MEM void Initialize() noexcept {
            refCount.exchange(1);
            length = 0;
            capacity = 0;
        }
        /// The characters.
        TARN_MEM unit* getBuffer() noexcept { return reinterpret_cast<unit*>(this + 1); }
        TARN_MEM const unit* getBuffer() const noexcept { return reinterpret_cast<const unit*>(this + 1); }

        std::atomic<std::int32_t> refCount;  ///< strings that share the block; -1 in the empty block
        std::uint32_t length;                ///< code units, the terminator not counted
        std::uint32_t capacity;              ///< code units that fit, the terminator counted
    };

    /// The shared empty block of an instantiation: never counted, written or freed.
    struct _EmptyBuffer {
        SStringBuffer header;
        unit terminator;
    };

    /// A position in a text. It steps by characters and stays on the terminator.
    class TARN_API iterator {
      public:
        TARN_MEM iterator() noexcept : p_(nullptr) {}
        TARN_MEM explicit iterator(const unit* position) noexcept : p_(position) {}
        iterator& operator++();
        TARN_MEM iterator operator++(int) {
            const iterator before = *this;
            ++*this;
            return before;
        }
        /// Advances by a number of characters, stopping at the terminator.
        iterator& operator+=(std::uint32_t characters);
        /// The character here; the null character on the terminator.
        const Char operator*() const;
        /// True on the terminator.
        TARN_MEM bool isAtEnd() const noexcept { return *p_ == unit(); }
        TARN_MEM const unit* getPtr() const noexcept { return p_; }
        TARN_MEM bool operator==(const iterator& other) const noexcept { return p_ == other.p_; }
        TARN_MEM bool operator<(const iterator& other) const noexcept { return p_ < other.p_; }

      private:
        const unit* p_;
    };

    // --- construction and assignment; a null pointer counts as an empty text ---
    SString_t();
    /// A copy of a zero-terminated text.
    SString_t(const unit* text);
    /// A copy of a number of code units, zero units included.
    SString_t(const unit* text, std::uint32_t nUnits);
    /// A copy of the code units from the first position up to the second.
    SString_t(const iterator& first, const iterator& last);
    explicit SString_t(const Char& character);
    /// Shares the block.
    TARN_MEM SString_t(const SString_t& other) noexcept : buffer_(other.buffer_) { AddReference(buffer_); }
    /// Takes the block and leaves the other string empty.
    TARN_MEM SString_t(SString_t&& other) noexcept
        : buffer_(std::exchange(other.buffer_, GetEmptyBuffer())) {}
    TARN_MEM ~SString_t() {
        if (buffer_ != nullptr) DropReference(buffer_);
    }
    /// Shares the block.
    TARN_MEM SString_t& operator=(const SString_t& other) noexcept {
        AddReference(other.buffer_);
        DropReference(std::exchange(buffer_, other.buffer_));
        return *this;
    }
    TARN_MEM SString_t& operator=(SString_t&& other) noexcept {
        std::swap(buffer_, other.buffer_);
        if (&other != this) other.empty();
        return *this;
    }
    SString_t& operator=(const unit* text);
    SString_t& operator=(unit single);
    SString_t& operator=(const Char& character);

    // --- size ---
    /// Code units, the terminator not counted.
    TARN_MEM std::uint32_t getLength() const noexcept { return buffer_->length; }
    /// Characters; an invalid byte counts as one.
    std::uint32_t getNChars() const;
    /// Bytes of the code units, the terminator not counted.
    TARN_MEM std::uint32_t getTotalBytes() const noexcept {
        return buffer_->length * static_cast<std::uint32_t>(sizeof(unit));
    }
    /// True when the length is 0.
    TARN_MEM bool isEmpty() const noexcept { return buffer_->length == 0; }
    /// Makes the string empty; it then stands on the shared empty block.
    void empty() noexcept;

    // --- access ---
    /// The characters, with a zero unit after the last. Valid until the string is changed, assigned or
    /// destroyed.
    TARN_MEM const unit* getString() const noexcept { return std::as_const(*buffer_).getBuffer(); }
    /// The character at a position in characters; the null character beyond the end.
    Char getAt(std::uint32_t position) const;
    TARN_MEM Char getChar(std::uint32_t position) const { return getAt(position); }
    TARN_MEM Char operator[](std::uint32_t position) const { return getAt(position); }
    /// Replaces the character at a position; beyond the end, or with the null character, nothing happens.
    void setAt(std::uint32_t position, const Char& character);
    /// The iterator at a position in characters; the end when there are fewer.
    iterator getCursor(std::uint32_t position = 0) const;
    /// How many characters stand before the iterator.
    std::uint32_t getCharIndex(const iterator& position) const;
    TARN_MEM iterator begin() const noexcept { return iterator(getString()); }
    TARN_MEM iterator end() const noexcept { return iterator(getString() + getLength()); }

    // --- editing; on failure to allocate the string keeps its text ---
    /// Appends one code unit.
    TARN_MEM SString_t& concat(unit single) {
        SStringBuffer* const buffer = buffer_;
        const std::uint32_t length = buffer->length;
        if (buffer->refCount.load(std::memory_order_acquire) != 1 || buffer->capacity < length + 2) {
            return concatSlowly(single);
        }
        unit* const end = buffer->getBuffer() + length;
        end[0] = single;
        end[1] = unit();
        buffer->length = length + 1;
        return *this;
    }
    SString_t& concat(const unit* text);
    /// Appends code units; they may lie inside this string.
    SString_t& concat(const unit* text, std::uint32_t nUnits);
    SString_t& concat(const SString_t& text);
    SString_t& concat(const Char& character);
    TARN_MEM SString_t& operator+=(unit single) { return concat(single); }
    TARN_MEM SString_t& operator+=(const unit* text) { return concat(text); }
    TARN_MEM SString_t& operator+=(const SString_t& text) { return concat(text); }
    TARN_MEM SString_t& operator+=(const Char& character) { return concat(character); }
    /// Appends the low 7 or 8 bits of characters without any check or conversion: bytes, or the low byte of
    /// each unit.
    void concatFromAsciiCharacters(const char* text, std::uint32_t count);
    void concatFromAsciiCharacters(const wchar_t* text, std::uint32_t count);
    /// Insert before a position in characters; beyond the end they append.
    void insertChar(std::uint32_t position, const Char& character);
    void insertChars(std::uint32_t position, const SString_t& text);
    void insertChars(std::uint32_t position, const unit* text);
    /// Remove characters from a position on; counts that reach beyond the end are cut, a position there does
    /// nothing.
    void deleteChar(std::uint32_t position);
    void deleteChars(std::uint32_t position, std::uint32_t count);
    /// Replaces the text by a copy with a block of its own.
    SString_t& copyFrom(const SString_t& text);
    SString_t& copyFrom(const unit* text);
    SString_t& copyFrom(const unit* text, std::uint32_t nUnits);
    /// Drop leading, trailing or both runs of white space (is_space; in SAsciiString the C library's
    /// isspace). A multi-byte character that does not convert ends the trimming there. An unchanged string
    /// keeps its block.
    SString_t& trim();
    SString_t& trimLeft();
    SString_t& trimRight();
    /// Map every character to the other case, up to the first invalid one.
    SString_t& toLower();
    SString_t& toUpper();
    /// Makes the block private with room for so many code units. A shorter size cuts the text; a longer one
    /// only reserves.
    void setSize(std::uint32_t units);
    /// Makes the block private and returns its characters for writing in place; the length may not be changed
    /// there.
    unit* detach();

    // --- sub-strings; counts in characters, cut at the end, never a failure ---
    /// The first characters, as a copy.
    SString_t left(std::uint32_t count) const;
    /// The text before the position.
    SString_t left(const iterator& position) const;
    /// The last characters; a string that is no longer than that is shared.
    SString_t right(std::uint32_t count) const;
    /// The text from the position on.
    SString_t right(const iterator& position) const;
    SString_t mid(std::uint32_t start) const;
    SString_t mid(std::uint32_t start, std::uint32_t count) const;
    SString_t mid(const iterator& start) const;
    SString_t mid(const iterator& start, std::uint32_t count) const;
    SString_t mid(const iterator& start, const iterator& end) const;

    // --- search; the result is the end (the terminator) when there is no match ---
    /// The first match from the start or from a position on. A match never begins inside a character; an
    /// empty text is found at once; a null text, or one with an invalid character in it, never.
    TARN_MEM iterator find(const SString_t& text) const { return find(text, begin()); }
    TARN_MEM iterator find(const unit* text) const { return find(text, begin()); }
    TARN_MEM iterator find(const Char& character) const { return find(character, begin()); }
    iterator find(const SString_t& text, const iterator& from) const;
    iterator find(const unit* text, const iterator& from) const;
    iterator find(const Char& character, const iterator& from) const;
    /// The last match that begins at or after a position (by default: anywhere); the end for an empty text.
    TARN_MEM iterator findLast(const SString_t& text) const { return findLast(text, begin()); }
    TARN_MEM iterator findLast(const unit* text) const { return findLast(text, begin()); }
    TARN_MEM iterator findLast(const Char& character) const { return findLast(character, begin()); }
    iterator findLast(const SString_t& text, const iterator& from) const;
    iterator findLast(const unit* text, const iterator& from) const;
    iterator findLast(const Char& character, const iterator& from) const;

    // --- comparison ---
    /// Compares code units as unsigned numbers, whole lengths: -1, 0 or 1. A null pointer is an empty text.
    int compare(const SString_t& other) const;
    int compare(const unit* other) const;
    TARN_MEM int compareBinary(const SString_t& other) const { return compare(other); }
    /// Compares without regard to case, up to the first zero unit. In the multi-byte and wide flavours by the
    /// locale's collation: -1, 0 or 1. In SAsciiString the difference of the first two differing bytes in
    /// lower case, deliberately not normalised: only its sign has a meaning.
    int compareNoCase(const SString_t& other) const;
    int compareNoCase(const unit* other) const;
    TARN_MEM bool operator==(const SString_t& other) const { return compare(other) == 0; }
    TARN_MEM bool operator==(const unit* other) const { return compare(other) == 0; }
    TARN_MEM std::strong_ordering operator<=>(const SString_t& other) const { return compare(other) <=> 0; }
    TARN_MEM std::strong_ordering operator<=>(const unit* other) const { return compare(other) <=> 0; }

    // --- conversion ---
    /// Write the text with a terminator; sizes are in bytes for every output. The result is the code units
    /// written, the terminator included, or -1 when the room is too small, a pointer is null or the text
    /// cannot be converted. Deliberate exceptions: SAnsiString::toUTF8 does not count the terminator; toMBCS
    /// of a wide string that does not fit fills the room with "?" without a terminator and returns the size
    /// + 1.
    int toAscii(char* out, std::uint32_t nBytesInBuffer) const;
    int toMBCS(char* out, std::uint32_t nBytesInBuffer) const;
    int toOCA(wchar_t* out, std::uint32_t nBytesInBuffer) const;
    int toWChar(wchar_t* out, std::uint32_t nBytesInBuffer) const;
    int toUTF8(char* out, std::uint32_t nBytesInBuffer) const;
    /// Bytes that the conversion needs, the terminator included.
    std::uint32_t getNBytesForAscii() const;
    std::uint32_t getNBytesForMBCS() const;
    std::uint32_t getNBytesForOCA() const;
    std::uint32_t getNBytesForWChar() const;
    std::uint32_t getNBytesForUTF8() const;
    /// Replace the text by a converted one; counts are code units of the source, 0xFFFFFFFF the whole
    /// zero-terminated text. A zero unit ends the source in any case, so a count that is too large reads
    /// nothing beyond it. False when it does not convert: unchanged when that shows before the rebuild, empty
    /// when UTF-8 proves illegal.
    bool fromAscii(const char* text, std::uint32_t count = 0xFFFFFFFF);
    bool fromMBCS(const char* text, std::uint32_t count = 0xFFFFFFFF);
    bool fromOCA(const wchar_t* text, std::uint32_t count = 0xFFFFFFFF);
    bool fromWChar(const wchar_t* text, std::uint32_t count = 0xFFFFFFFF);
    bool fromUTF8(const char* text, std::uint32_t nBytes = 0xFFFFFFFF);

  protected:
    // Buffer control: what derived classes that hold secrets or build text in place need.
    /// Replaces the (unowned) buffer by a fresh one for n code units, terminator counted, and 32 of slack.
    /// Throws std::bad_alloc with the text "bad allocation".
    void allocBuffer(std::uint32_t n);
    /// Makes the block private with room for n code units and the terminator; the text stays.
    void copyOnWrite(std::uint32_t n);
    /// Makes the string k code units longer and returns where they go; null, and nothing changed, for k = 0
    /// or when the length would pass 32 bits (reported by assertion).
    unit* concatAllocHelper(std::uint32_t k);
    /// Sets the length and writes the terminator there.
    void terminateBuffer(std::uint32_t length) noexcept;
    /// Releases the current block, wiped if asked for, and adopts another, counting it. Throws
    /// std::runtime_error when a wipe was asked for and the block is still shared; the string stands on the
    /// new block then.
    void setBuffer(SStringBuffer* buffer, bool wipe = false);
    /// Releases the block and leaves the pointer null: only a destructor may follow. False when a wipe was
    /// asked for and the block is still shared.
    bool releaseBuffer(bool wipe = false) noexcept;
    /// setBuffer with the empty block.
    void unlinkBuffer(bool wipe = false);
    static SStringBuffer* GetEmptyBuffer() noexcept;
    TARN_MEM static bool IsEmptyBuffer(const SStringBuffer* buffer) noexcept {
        return buffer->capacity == kEmptyBufferCapacity;
    }
    /// Counts a block down and frees it with the last holder.
    TARN_MEM static void ReleaseBuffer(SStringBuffer* buffer) noexcept { releaseStringBuffer(buffer, false); }
    /// The same; a block that is freed is first overwritten with "#" when a wipe is asked for. True unless a
    /// wipe was asked for and others still hold the block (it is counted down all the same).
    static bool releaseStringBuffer(SStringBuffer* buffer, bool wipe) noexcept;
    TARN_MEM SStringBuffer* getStringBuffer() const noexcept { return buffer_; }

  private:
    TARN_MEM static void AddReference(SStringBuffer* buffer) noexcept {
        if (!IsEmptyBuffer(buffer)) buffer->refCount.fetch_add(1, std::memory_order_relaxed);
    }
    TARN_MEM static void DropReference(SStringBuffer* buffer) noexcept {
        if (IsEmptyBuffer(buffer)) return;
        if (buffer->refCount.fetch_sub(1, std::memory_order_acq_rel) == 1) FreeBuffer(buffer);
    }
    static void FreeBuffer(SStringBuffer* buffer) noexcept;
    static SStringBuffer* NewBuffer(std::uint32_t n);
    static SStringBuffer* NewBuffer(const unit* text, std::uint32_t length, std::uint32_t n);
    TARN_MEM bool isExclusive() const noexcept {
        return buffer_->refCount.load(std::memory_order_acquire) == 1;
    }
    TARN_MEM unit* characters() noexcept { return buffer_->getBuffer(); }
    TARN_MEM void adopt(SStringBuffer* buffer) noexcept { DropReference(std::exchange(buffer_, buffer)); }
    SString_t& concatSlowly(unit single);
    void replaceUnits(std::uint32_t offset, std::uint32_t removed, const unit* text, std::uint32_t added);
    void keepRange(const unit* first, const unit* last);
    void changeCase(LetterCase to);
    const unit* locate(const unit* from, const unit* what, std::uint32_t n) const;
    const unit* locateLast(const unit* from, const unit* what, std::uint32_t n) const;

    SStringBuffer* buffer_;
};

extern template class TARN_API SString_t<char, 0>;
extern template class TARN_API SString_t<char, 1>;
extern template class TARN_API SString_t<wchar_t, 1>;

/// Concatenation as a new string of the left operand's flavour.
template <class unit, int flavour>
SString_t<unit, flavour> operator+(const SString_t<unit, flavour>& left,
                                   const SString_t<unit, flavour>& right) {
    SString_t<unit, flavour> sum(left);
    sum.concat(right);
    return sum;
}
template <class unit, int flavour>
SString_t<unit, flavour> operator+(const SString_t<unit, flavour>& left, const unit* right) {
    SString_t<unit, flavour> sum(left);
    sum.concat(right);
    return sum;
}
template <class unit, int flavour>
SString_t<unit, flavour> operator+(const unit* left, const SString_t<unit, flavour>& right) {
    SString_t<unit, flavour> sum(left);
    sum.concat(right);
    return sum;
}

class SAsciiString;
class SWCharString;
class SOCAString;

/// Text in the process's multi-byte code page.
class TARN_API SAnsiString : public SString_t<char, 0> {
  public:
    using Base = SString_t<char, 0>;
    using Base::Base;
    SAnsiString() = default;
    SAnsiString(const Base& other) noexcept : Base(other) {}
    SAnsiString(Base&& other) noexcept : Base(std::move(other)) {}
    using Base::operator=;
};

/// Seven-bit ASCII text. The conversions admit nothing else; a constructor copies the bytes that it is given.
class TARN_API SAsciiString : public SString_t<char, 1> {
  public:
    using Base = SString_t<char, 1>;
    using Base::Base;
    SAsciiString() = default;
    SAsciiString(const Base& other) noexcept : Base(other) {}
    SAsciiString(Base&& other) noexcept : Base(std::move(other)) {}
    /// With the flag: the bytes, or the low byte of each unit, unchecked. From an SAnsiString as many bytes
    /// as it has characters, deliberately, so double-byte text is cut short. Without the flag: empty.
    SAsciiString(const SAnsiString& other, bool take);
    SAsciiString(const SWCharString& other, bool take);
    SAsciiString(const SOCAString& other, bool take);
    using Base::operator=;
};

/// UTF-16 text.
class TARN_API SWCharString : public SString_t<wchar_t, 1> {
  public:
    using Base = SString_t<wchar_t, 1>;
    using Base::Base;
    SWCharString() = default;
    SWCharString(const Base& other) noexcept : Base(other) {}
    SWCharString(Base&& other) noexcept : Base(std::move(other)) {}
    using Base::operator=;
};

/// UTF-16 text as the UTF conversions take and give it; the same storage as SWCharString under another name.
class TARN_API SOCAString : public SString_t<wchar_t, 1> {
  public:
    using Base = SString_t<wchar_t, 1>;
    using Base::Base;
    SOCAString() = default;
    SOCAString(const Base& other) noexcept : Base(other) {}
    SOCAString(Base&& other) noexcept : Base(std::move(other)) {}
    using Base::operator=;
};

/// Code-page text whose operators and find ignore case.
class TARN_API SAnsiStringCI : public SString_t<char, 0> {
  public:
    using Base = SString_t<char, 0>;
    using Base::Base;
    SAnsiStringCI() = default;
    SAnsiStringCI(const SAnsiString& other) noexcept : Base(other) {}
    SAnsiStringCI(const Base& other) noexcept : Base(other) {}
    SAnsiStringCI(Base&& other) noexcept : Base(std::move(other)) {}
    using Base::operator=;
    /// The first match without regard to case: both texts are searched in lower case, the result is a
    /// position here.
    iterator find(const Base& text) const { return find(text, begin()); }
    iterator find(const char* text) const { return find(text, begin()); }
    iterator find(const Char& character) const { return find(character, begin()); }
    iterator find(const Base& text, const iterator& from) const;
    iterator find(const char* text, const iterator& from) const;
    iterator find(const Char& character, const iterator& from) const;
};

/// UTF-16 text whose operators ignore case.
class TARN_API SWCharStringCI : public SString_t<wchar_t, 1> {
  public:
    using Base = SString_t<wchar_t, 1>;
    using Base::Base;
    SWCharStringCI() = default;
    SWCharStringCI(const SWCharString& other) noexcept : Base(other) {}
    SWCharStringCI(const Base& other) noexcept : Base(other) {}
    SWCharStringCI(Base&& other) noexcept : Base(std::move(other)) {}
    using Base::operator=;
};

/// The usual name of a text in the process's code page.
using SString = SAnsiString;

// The operators of the types that ignore case: by the collation of compareNoCase. Each comparand type has its
// own overload, so that none is ambiguous with the case-sensitive members of the base.
inline bool operator==(const SAnsiStringCI& a, const SAnsiStringCI& b) {
    return a.compareNoCase(b) == 0;
}
inline bool operator==(const SAnsiStringCI& a, const SString_t<char, 0>& b) {
    return a.compareNoCase(b) == 0;
}
inline bool operator==(const SAnsiStringCI& a, const char* b) {
    return a.compareNoCase(b) == 0;
}
inline std::weak_ordering operator<=>(const SAnsiStringCI& a, const SAnsiStringCI& b) {
    return a.compareNoCase(b) <=> 0;
}
inline std::weak_ordering operator<=>(const SAnsiStringCI& a, const SString_t<char, 0>& b) {
    return a.compareNoCase(b) <=> 0;
}
inline std::weak_ordering operator<=>(const SAnsiStringCI& a, const char* b) {
    return a.compareNoCase(b) <=> 0;
}
inline bool operator==(const SWCharStringCI& a, const SWCharStringCI& b) {
    return a.compareNoCase(b) == 0;
}
inline bool operator==(const SWCharStringCI& a, const SString_t<wchar_t, 1>& b) {
    return a.compareNoCase(b) == 0;
}
inline bool operator==(const SWCharStringCI& a, const wchar_t* b) {
    return a.compareNoCase(b) == 0;
}
inline std::weak_ordering operator<=>(const SWCharStringCI& a, const SWCharStringCI& b) {
    return a.compareNoCase(b) <=> 0;
}
inline std::weak_ordering operator<=>(const SWCharStringCI& a, const SString_t<wchar_t, 1>& b) {
    return a.compareNoCase(b) <=> 0;
}
inline std::weak_ordering operator<=>(const SWCharStringCI& a, const wchar_t* b) {
    return a.compareNoCase(b) <=> 0;
}

/// Append and return the left operand. Integers are written in decimal, a double with six decimals after a
/// ".".
TARN_API SAnsiString& operator<<(SAnsiString& out, const SString_t<char, 0>& text);
TARN_API SAnsiString& operator<<(SAnsiString& out, const char* text);
TARN_API SAnsiString& operator<<(SAnsiString& out, const SChar_t<char, 0>& character);
TARN_API SAnsiString& operator<<(SAnsiString& out, char character);
SAnsiString& operator<<(SAnsiString& out, wchar_t character) = delete;  // would append a number
TARN_API SAnsiString& operator<<(SAnsiString& out, short number);
TARN_API SAnsiString& operator<<(SAnsiString& out, unsigned short number);
TARN_API SAnsiString& operator<<(SAnsiString& out, int number);
TARN_API SAnsiString& operator<<(SAnsiString& out, unsigned int number);
TARN_API SAnsiString& operator<<(SAnsiString& out, long number);
TARN_API SAnsiString& operator<<(SAnsiString& out, unsigned long number);
TARN_API SAnsiString& operator<<(SAnsiString& out, long long number);
TARN_API SAnsiString& operator<<(SAnsiString& out, unsigned long long number);
TARN_API SAnsiString& operator<<(SAnsiString& out, double number);
TARN_API SWCharString& operator<<(SWCharString& out, const SString_t<wchar_t, 1>& text);
TARN_API SWCharString& operator<<(SWCharString& out, const wchar_t* text);
TARN_API SWCharString& operator<<(SWCharString& out, const SChar_t<wchar_t, 1>& character);
TARN_API SWCharString& operator<<(SWCharString& out, wchar_t character);
SWCharString& operator<<(SWCharString& out, char character) = delete;  // would append a number
TARN_API SWCharString& operator<<(SWCharString& out, short number);
TARN_API SWCharString& operator<<(SWCharString& out, unsigned short number);
TARN_API SWCharString& operator<<(SWCharString& out, int number);
TARN_API SWCharString& operator<<(SWCharString& out, unsigned int number);
TARN_API SWCharString& operator<<(SWCharString& out, long number);
TARN_API SWCharString& operator<<(SWCharString& out, unsigned long number);
TARN_API SWCharString& operator<<(SWCharString& out, long long number);
TARN_API SWCharString& operator<<(SWCharString& out, unsigned long long number);
TARN_API SWCharString& operator<<(SWCharString& out, double number);

// --- raw character arrays; sizes are the destination's room in code units, the terminator included ---

/// Copies as much as fits and always terminates; a size of 0 writes nothing. A null source gives an empty
/// text; the wide form then writes the terminator without looking at the size, deliberately.
TARN_API void CopyString(char* destination, std::uint32_t size, const char* source);
TARN_API void CopyString(wchar_t* destination, std::uint32_t size, const wchar_t* source);
/// Copies at most so many units. The byte form refuses a text that does not fit and leaves an empty one, like
/// strncpy_s; the wide form cuts it. The asymmetry is deliberate. A null source does nothing.
TARN_API void CopyStringN(char* destination, std::uint32_t size, const char* source, std::uint32_t maximum);
TARN_API void CopyStringN(wchar_t* destination, std::uint32_t size, const wchar_t* source,
                          std::uint32_t maximum);
/// Appends a text; when it does not fit, or a pointer is null, the destination (if any) becomes empty, like
/// strcat_s.
TARN_API void ConcatString(char* destination, std::uint32_t size, const char* source);
TARN_API void ConcatString(wchar_t* destination, std::uint32_t size, const wchar_t* source);
/// Appends at most so many units, like strncat_s; a null pointer does nothing.
TARN_API void ConcatStringN(char* destination, std::uint32_t size, const char* source, std::uint32_t maximum);
TARN_API void ConcatStringN(wchar_t* destination, std::uint32_t size, const wchar_t* source,
                            std::uint32_t maximum);

/// Map a zero-terminated text in place, the byte forms by multi-byte characters, up to a size in code units
/// (0xFFFFFFFF: its own length). The byte forms stop at an invalid character and before one that would pass
/// the size; what follows stays as it was. A text may get shorter, never longer.
TARN_API void MakeLowerCase(char* text, std::uint32_t size = 0xFFFFFFFF);
TARN_API void MakeLowerCase(wchar_t* text, std::uint32_t size = 0xFFFFFFFF);
TARN_API void MakeUpperCase(char* text, std::uint32_t size = 0xFFFFFFFF);
TARN_API void MakeUpperCase(wchar_t* text, std::uint32_t size = 0xFFFFFFFF);
/// Map the one multi-byte character at a place where "room" bytes may be written. True on success, with its
/// new size in bytes; a character that does not convert, or does not fit, is reported by assertion.
TARN_API bool MakeLowerCaseChar(char* position, std::uint32_t room, std::uint32_t& nBytes);
TARN_API bool MakeUpperCaseChar(char* position, std::uint32_t room, std::uint32_t& nBytes);

}  // namespace TarnLibA500

#pragma once

#include <atomic>
#include <compare>
#include <concepts>
#include <cstdint>
#include <cstring>
#include <string>
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
/// Code units are bytes or UTF-16 units. The bytes of an SAnsiString are text in the process's code page, the C
/// locale's, or UTF-8 where the process says so (snarrowtext.h). Positions and counts of characters are multi-byte characters in
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

/// Maps to lower or to upper case.
enum class LetterCase {
    Lower,  ///< to lower case
    Upper   ///< to upper case
};

/// The capacity that marks the shared empty block.
constexpr std::uint32_t kEmptyBufferCapacity = 0xFFFFFFFF;

/// What all string classes are made of: a character type and a flavour (see SChar_t). Use the named classes below.
template <class unit, int flavour>
class SString_t {
  public:
    /// One character of the flavour.
    using Char = SChar_t<unit, flavour>;

    /// The header of a block; the characters follow it, with a zero unit after the last.
    class TARN_API SStringBuffer {
      public:
        /// All three fields 0.
        TARN_MEM SStringBuffer() noexcept : refCount(0), length(0), capacity(0) {}
        /// The three fields.
        TARN_MEM constexpr SStringBuffer(std::int32_t references, std::uint32_t units,
                                         std::uint32_t room) noexcept
            : refCount(references), length(units), capacity(room) {}
        /// Copies the three fields, never the characters.
        TARN_MEM SStringBuffer(const SStringBuffer& other) noexcept : SStringBuffer() { *this = other; }
        /// Copies the three fields, never the characters.
        TARN_MEM SStringBuffer(SStringBuffer&& other) noexcept : SStringBuffer() { *this = other; }
        /// Copies the three fields, never the characters.
        TARN_MEM SStringBuffer& operator=(const SStringBuffer& other) noexcept {
            refCount.exchange(other.refCount.load(std::memory_order_acquire));
            length = other.length;
            capacity = other.capacity;
            return *this;
        }
        /// Copies the three fields, never the characters.
        TARN_MEM SStringBuffer& operator=(SStringBuffer&& other) noexcept {
            return *this = std::as_const(other);
        }
        /// Count 1, length 0, capacity 0.
        TARN_MEM void Initialize() noexcept {
            refCount.exchange(1);
            length = 0;
            capacity = 0;
        }
        /// The characters, for writing.
        TARN_MEM unit* getBuffer() noexcept { return reinterpret_cast<unit*>(this + 1); }
        /// The characters.
        TARN_MEM const unit* getBuffer() const noexcept { return reinterpret_cast<const unit*>(this + 1); }

        std::atomic<std::int32_t> refCount;  ///< strings that share the block; -1 in the empty block
        std::uint32_t length;                ///< code units, the terminator not counted
        std::uint32_t capacity;              ///< code units that fit, the terminator counted
    };

    /// The shared empty block of an instantiation: never counted, written or freed.
    struct _EmptyBuffer {
        SStringBuffer header;  ///< length 0, and the capacity that marks it
        unit terminator;       ///< the zero unit behind the header
    };

    /// A position in a text: a plain pointer that steps by characters. In a multi-byte text every zero byte is
    /// the end, in the other flavours a zero unit inside the text is a character.
    class TARN_API iterator {
      public:
        /// Stands nowhere until a position is assigned.
        TARN_MEM iterator() noexcept : p_(nullptr) {}
        /// At a place in a string.
        TARN_MEM explicit iterator(const unit* position) noexcept : p_(position) {}
        /// Steps to the next character. At the end of a multi-byte text it stays; in the other flavours, where it
        /// steps over one unit whatever that is, it must not be used there.
        iterator& operator++();
        /// The same, and returns the position before the step.
        TARN_MEM iterator operator++(int) {
            const iterator before = *this;
            ++*this;
            return before;
        }
        /// Advances by a number of characters, stopping at a zero unit. (SString_t::getCursor finds a position
        /// behind one.)
        iterator& operator+=(std::uint32_t characters);
        /// The character here; the null character on a zero unit.
        const Char operator*() const;
        /// True on a zero unit: at the terminator.
        TARN_MEM bool isAtEnd() const noexcept { return *p_ == unit(); }
        /// The place in the string.
        TARN_MEM const unit* getPtr() const noexcept { return p_; }
        /// True at the same place; in a multi-byte text also when both are at an end.
        TARN_MEM bool operator==(const iterator& other) const noexcept {
            if constexpr (flavour == 0) {
                return p_ == other.p_ || (endsText() && other.endsText());
            } else {
                return p_ == other.p_;
            }
        }
        /// True when this position comes before the other one.
        TARN_MEM bool operator<(const iterator& other) const noexcept {
            return p_ < other.p_ && !(*this == other);
        }

      private:
        TARN_MEM bool endsText() const noexcept { return p_ != nullptr && isAtEnd(); }

        const unit* p_;
    };

    // --- construction and assignment; a null pointer counts as an empty text ---

    /// Empty, on the shared empty block.
    SString_t();
    /// A copy of a zero-terminated text.
    SString_t(const unit* text);
    /// A copy of a number of code units, zero units included.
    SString_t(const unit* text, std::uint32_t nUnits);
    /// A truth value is no number of units.
    template <std::same_as<bool> T>
    SString_t(const unit* text, T nUnits) = delete;
    /// A copy of the code units from the first position up to the second.
    SString_t(const iterator& first, const iterator& last);
    /// The one character; empty for the null character.
    explicit SString_t(const Char& character);
    /// A number is no text: SStringConv and operator<< write one.
    explicit SString_t(SRefusedNumber<unit> number) = delete;
    /// Shares the block.
    TARN_MEM SString_t(const SString_t& other) noexcept : buffer_(other.buffer_) { AddReference(buffer_); }
    /// Takes the block and leaves the other string empty.
    TARN_MEM SString_t(SString_t&& other) noexcept
        : buffer_(std::exchange(other.buffer_, GetEmptyBuffer())) {}
    /// Lets go of the block.
    TARN_MEM ~SString_t() {
        if (buffer_ != nullptr) DropReference(buffer_);
    }
    /// Shares the block.
    TARN_MEM SString_t& operator=(const SString_t& other) noexcept {
        AddReference(other.buffer_);
        DropReference(std::exchange(buffer_, other.buffer_));
        return *this;
    }
    /// Takes the block and leaves the other string empty.
    TARN_MEM SString_t& operator=(SString_t&& other) noexcept {
        std::swap(buffer_, other.buffer_);
        if (&other != this) other.empty();
        return *this;
    }
    /// A copy of a zero-terminated text, which may lie inside this string; 0, NULL and nullptr make it empty.
    SString_t& operator=(const unit* text);
    /// One code unit, a zero unit included.
    template <std::same_as<unit> T>
    SString_t& operator=(T single) {
        return copyFrom(&single, 1);
    }
    /// One character; empty for the null character.
    SString_t& operator=(const Char& character);
    /// A number is no text: SStringConv and operator<< write one.
    SString_t& operator=(SRefusedNumber<unit> number) = delete;

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
    /// The same as getAt.
    TARN_MEM Char getChar(std::uint32_t position) const { return getAt(position); }
    /// The same as getAt: a copy of the character, which setAt replaces.
    TARN_MEM Char operator[](std::uint32_t position) const { return getAt(position); }
    /// Replaces the character at a position; beyond the end, or with the null character, nothing happens.
    void setAt(std::uint32_t position, const Char& character);
    /// The iterator at a position in characters; the end when there are fewer.
    iterator getCursor(std::uint32_t position = 0) const;
    /// How many characters stand before the iterator.
    std::uint32_t getCharIndex(const iterator& position) const;
    /// The position of the first character.
    TARN_MEM iterator begin() const noexcept { return iterator(getString()); }
    /// The position of the terminator.
    TARN_MEM iterator end() const noexcept { return iterator(getString() + getLength()); }

    // --- editing; on failure to allocate the string keeps its text; sources may lie inside this string ---

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
    /// Appends a zero-terminated text; null appends nothing.
    TARN_MEM SString_t& concat(const unit* text) {
        if (text == nullptr) return *this;
        return concat(text, static_cast<std::uint32_t>(std::char_traits<unit>::length(text)));
    }
    /// Appends a number of code units, zero units included; null appends nothing.
    TARN_MEM SString_t& concat(const unit* text, std::uint32_t nUnits) {
        SStringBuffer* const buffer = buffer_;
        const std::uint32_t length = buffer->length;
        // A block has more room than its text is long.
        if (text == nullptr || !isExclusive() || nUnits >= buffer->capacity - length) {
            return concatSlowly(text, nUnits);
        }
        unit* const end = buffer->getBuffer() + length;
        CopyUnits(end, text, nUnits);
        end[nUnits] = unit();
        buffer->length = length + nUnits;
        return *this;
    }
    /// Appends a string.
    TARN_MEM SString_t& concat(const SString_t& text) { return concat(text.getString(), text.getLength()); }
    /// Appends a character; the null character appends nothing.
    SString_t& concat(const Char& character);
    /// A number is no text: operator<< appends one.
    template <SForeignNumber<unit> T>
    SString_t& concat(T number) = delete;
    /// Appends one code unit.
    TARN_MEM SString_t& operator+=(unit single) { return concat(single); }
    /// Appends a zero-terminated text; null appends nothing.
    TARN_MEM SString_t& operator+=(const unit* text) { return concat(text); }
    /// Appends a string.
    TARN_MEM SString_t& operator+=(const SString_t& text) { return concat(text); }
    /// Appends a character; the null character appends nothing.
    TARN_MEM SString_t& operator+=(const Char& character) { return concat(character); }
    /// A number is no text: operator<< appends one.
    template <SForeignNumber<unit> T>
    SString_t& operator+=(T number) = delete;
    /// Appends bytes as characters, without any check or conversion.
    void concatFromAsciiCharacters(const char* text, std::uint32_t count);
    /// Appends the low byte of each unit as a character, without any check or conversion.
    void concatFromAsciiCharacters(const wchar_t* text, std::uint32_t count);
    /// Inserts before a position in characters; beyond the end it appends. The null character inserts nothing.
    void insertChar(std::uint32_t position, const Char& character);
    /// Inserts a string before a position in characters; beyond the end it appends.
    void insertChars(std::uint32_t position, const SString_t& text);
    /// Inserts a zero-terminated text before a position in characters; beyond the end it appends.
    void insertChars(std::uint32_t position, const unit* text);
    /// Removes the character at a position; beyond the end nothing happens.
    void deleteChar(std::uint32_t position);
    /// Removes characters from a position on; a count that reaches beyond the end is cut.
    void deleteChars(std::uint32_t position, std::uint32_t count);
    /// Replaces the text by a copy with a block of its own.
    SString_t& copyFrom(const SString_t& text);
    /// The same from a zero-terminated text; null makes the string empty.
    SString_t& copyFrom(const unit* text);
    /// The same from a number of code units, zero units included. A block that the string holds alone is kept
    /// where the text fits.
    SString_t& copyFrom(const unit* text, std::uint32_t nUnits);
    /// Drops white space at both ends (is_space; in SAsciiString the C library's isspace). A multi-byte character
    /// that does not convert ends the trimming there. An unchanged string keeps its block.
    SString_t& trim();
    /// The same at the start only.
    SString_t& trimLeft();
    /// The same at the end only.
    SString_t& trimRight();
    /// Maps every character to lower case, in a multi-byte text up to the first invalid one or zero byte. The C
    /// library's maps in the current locale; in narrow text that is UTF-8 the system's for the whole of Unicode, and
    /// the bytes may be more or fewer afterwards.
    SString_t& toLower();
    /// Maps every character to upper case, as toLower does.
    SString_t& toUpper();
    /// Makes the block private with room for "units" code units. Fewer than the text has cut it; more are
    /// only reserved.
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
    /// The text without its first characters.
    SString_t mid(std::uint32_t start) const;
    /// At most "count" characters, without the first "start" ones.
    SString_t mid(std::uint32_t start, std::uint32_t count) const;
    /// The text from the position on.
    SString_t mid(const iterator& start) const;
    /// At most "count" characters from the position on.
    SString_t mid(const iterator& start, std::uint32_t count) const;
    /// The text from the first position up to the second.
    SString_t mid(const iterator& start, const iterator& end) const;

    // --- search; the result is the end (the terminator) when there is no match ---
    // A match never begins inside a character. An empty text is found at once; never found are a null text and,
    // in the multi-byte flavour, one with an invalid character in it or with a zero byte at its start.

    /// The first match of a string.
    TARN_MEM iterator find(const SString_t& text) const { return find(text, begin()); }
    /// The first match of a zero-terminated text.
    TARN_MEM iterator find(const unit* text) const { return find(text, begin()); }
    /// The first place of a character; the null character is never found.
    TARN_MEM iterator find(const Char& character) const { return find(character, begin()); }
    /// The first match of a string at or after a position.
    iterator find(const SString_t& text, const iterator& from) const;
    /// The first match of a zero-terminated text at or after a position.
    iterator find(const unit* text, const iterator& from) const;
    /// The first place of a character at or after a position.
    iterator find(const Char& character, const iterator& from) const;
    /// The last match of a string; the end for an empty one.
    TARN_MEM iterator findLast(const SString_t& text) const { return findLast(text, begin()); }
    /// The last match of a zero-terminated text; the end for an empty one.
    TARN_MEM iterator findLast(const unit* text) const { return findLast(text, begin()); }
    /// The last place of a character.
    TARN_MEM iterator findLast(const Char& character) const { return findLast(character, begin()); }
    /// The last match of a string that begins at or after a position; the end for an empty one.
    iterator findLast(const SString_t& text, const iterator& from) const;
    /// The last match of a zero-terminated text that begins at or after a position; the end for an empty one.
    iterator findLast(const unit* text, const iterator& from) const;
    /// The last place of a character at or after a position.
    iterator findLast(const Char& character, const iterator& from) const;
    /// True when the text begins with this one, by whole characters; so does every text with an empty one. False
    /// for what find never finds.
    bool startsWith(const SString_t& text) const;
    /// The same for a zero-terminated text; false for null.
    bool startsWith(const unit* text) const;
    /// True when the first character is this one.
    bool startsWith(const Char& character) const;
    /// True when the text ends with this one, by whole characters; so does every text with an empty one. False
    /// for what find never finds.
    bool endsWith(const SString_t& text) const;
    /// The same for a zero-terminated text; false for null.
    bool endsWith(const unit* text) const;
    /// True when the last character is this one.
    bool endsWith(const Char& character) const;

    // --- comparison ---

    /// Compares code units as unsigned numbers, whole lengths: -1, 0 or 1.
    int compare(const SString_t& other) const;
    /// The same with a zero-terminated text; a null pointer is an empty one.
    int compare(const unit* other) const;
    /// The same with a number of code units, zero units included.
    int compare(const unit* other, std::uint32_t nUnits) const;
    /// The same as compare.
    TARN_MEM int compareBinary(const SString_t& other) const { return compare(other); }
    /// Compares without regard to case, up to the first zero unit. In the multi-byte and wide flavours by the
    /// locale's collation: -1, 0 or 1. In SAsciiString the difference of the first two differing bytes in
    /// lower case, deliberately not normalised: only its sign has a meaning.
    int compareNoCase(const SString_t& other) const;
    /// The same with a zero-terminated text; a null pointer is an empty one.
    int compareNoCase(const unit* other) const;
    /// True when all code units are the same.
    TARN_MEM bool operator==(const SString_t& other) const { return compare(other) == 0; }
    /// True when all code units are those of the zero-terminated text.
    TARN_MEM bool operator==(const unit* other) const { return compare(other) == 0; }
    /// The order of compare.
    TARN_MEM std::strong_ordering operator<=>(const SString_t& other) const { return compare(other) <=> 0; }
    /// The order of compare.
    TARN_MEM std::strong_ordering operator<=>(const unit* other) const { return compare(other) <=> 0; }

    // --- conversion to: sizes are in bytes for every output ---
    // The text is written with a terminator. The result is the code units written, the terminator included, or -1
    // when the room is too small, a pointer is null or the text cannot be converted.

    /// Into ASCII, "?" for every other character (in a wide string, unit).
    int toAscii(char* out, std::uint32_t nBytesInBuffer) const;
    /// Into the process's code page, "?" for what it does not have. A wide string that does not fit fills the room
    /// with "?" without a terminator, deliberately, and returns the size + 1.
    int toMBCS(char* out, std::uint32_t nBytesInBuffer) const;
    /// Into UTF-16.
    int toOCA(wchar_t* out, std::uint32_t nBytesInBuffer) const;
    /// Into UTF-16.
    int toWChar(wchar_t* out, std::uint32_t nBytesInBuffer) const;
    /// Into UTF-8. The result of an SAnsiString deliberately does not count the terminator.
    int toUTF8(char* out, std::uint32_t nBytesInBuffer) const;
    /// Bytes that toAscii needs, the terminator included.
    std::uint32_t getNBytesForAscii() const;
    /// Bytes that toMBCS needs, the terminator included.
    std::uint32_t getNBytesForMBCS() const;
    /// Bytes that toOCA needs, the terminator included.
    std::uint32_t getNBytesForOCA() const;
    /// Bytes that toWChar needs, the terminator included.
    std::uint32_t getNBytesForWChar() const;
    /// Bytes that toUTF8 needs, the terminator included.
    std::uint32_t getNBytesForUTF8() const;

    // --- conversion from ---
    // The text is replaced by a converted one. Counts are code units of the source, zero units included; only
    // 0xFFFFFFFF means a zero-terminated text. False when it does not convert: unchanged when that shows before
    // the rebuild, empty when UTF-8 proves illegal. A null source is reported by assertion and is an empty text.

    /// From ASCII. Other bytes become "?"; an SAsciiString refuses them.
    bool fromAscii(const char* text, std::uint32_t count = 0xFFFFFFFF);
    /// From the process's code page. An SAsciiString refuses what is not ASCII.
    bool fromMBCS(const char* text, std::uint32_t count = 0xFFFFFFFF);
    /// From UTF-16, "?" for what the code page does not have, and in UTF-8 for half a surrogate pair. An SAsciiString refuses what is not ASCII.
    bool fromOCA(const wchar_t* text, std::uint32_t count = 0xFFFFFFFF);
    /// The same as fromOCA.
    bool fromWChar(const wchar_t* text, std::uint32_t count = 0xFFFFFFFF);
    /// From UTF-8, then as fromOCA. False, with an empty text, when it is not legal.
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
    /// The shared empty block.
    static SStringBuffer* GetEmptyBuffer() noexcept;
    /// True for the shared empty block.
    TARN_MEM static bool IsEmptyBuffer(const SStringBuffer* buffer) noexcept {
        return buffer->capacity == kEmptyBufferCapacity;
    }
    /// Counts a block down and frees it with the last holder.
    TARN_MEM static void ReleaseBuffer(SStringBuffer* buffer) noexcept { releaseStringBuffer(buffer, false); }
    /// The same; a block that is freed is first overwritten with "#" when a wipe is asked for. True unless a
    /// wipe was asked for and others still hold the block (it is counted down all the same).
    static bool releaseStringBuffer(SStringBuffer* buffer, bool wipe) noexcept;
    /// The block; null after releaseBuffer.
    TARN_MEM SStringBuffer* getStringBuffer() const noexcept { return buffer_; }

  private:
    TARN_MEM static void AddReference(SStringBuffer* buffer) noexcept {
        if (!IsEmptyBuffer(buffer)) buffer->refCount.fetch_add(1, std::memory_order_relaxed);
    }
    TARN_MEM static void DropReference(SStringBuffer* buffer) noexcept {
        if (IsEmptyBuffer(buffer)) return;
        // The only holder needs no locked subtraction: nobody else is there who could count.
        if (buffer->refCount.load(std::memory_order_acquire) == 1 ||
            buffer->refCount.fetch_sub(1, std::memory_order_acq_rel) == 1) {
            FreeBuffer(buffer);
        }
    }
    // The source may reach into the place it is copied to.
    TARN_MEM static void CopyUnits(unit* to, const unit* from, std::uint32_t count) noexcept {
        const std::size_t bytes = std::size_t{count} * sizeof(unit);
        // Where the compiler knows an array but not the length of its text, it would warn of all that is longer.
        __asm__("" : "+r"(from));
        if (bytes > 2 * sizeof(std::uint64_t)) {
            std::memmove(to, from, bytes);
        } else if (bytes >= sizeof(std::uint64_t)) {
            CopyEnds<std::uint64_t>(to, from, bytes);
        } else if (bytes >= sizeof(std::uint32_t)) {
            CopyEnds<std::uint32_t>(to, from, bytes);
        } else if (bytes != 0) {
            const unit first = from[0], middle = from[count / 2], last = from[count - 1];
            to[0] = first;
            to[count / 2] = middle;
            to[count - 1] = last;
        }
    }
    // As many bytes as one word or two: both ends are read before they are written.
    template <class Word>
    static void CopyEnds(unit* to, const unit* from, std::size_t bytes) noexcept {
        Word first, last;
        std::memcpy(&first, from, sizeof first);
        std::memcpy(&last, reinterpret_cast<const char*>(from) + bytes - sizeof last, sizeof last);
        std::memcpy(to, &first, sizeof first);
        std::memcpy(reinterpret_cast<char*>(to) + bytes - sizeof last, &last, sizeof last);
    }
    static std::uint64_t BlockBytes(std::uint64_t capacity) noexcept;
    static void FreeBuffer(SStringBuffer* buffer) noexcept;
    static SStringBuffer* NewBuffer(std::uint32_t n);
    static SStringBuffer* NewBuffer(const unit* text, std::uint32_t length, std::uint32_t n);
    TARN_MEM bool isExclusive() const noexcept {
        return buffer_->refCount.load(std::memory_order_acquire) == 1;
    }
    TARN_MEM unit* characters() noexcept { return buffer_->getBuffer(); }
    TARN_MEM void adopt(SStringBuffer* buffer) noexcept { DropReference(std::exchange(buffer_, buffer)); }
    void growBuffer(std::uint32_t capacity);
    SString_t& concatSlowly(unit single);
    SString_t& concatSlowly(const unit* text, std::uint32_t nUnits);
    TARN_MEM bool holds(const void* place) const noexcept {
        return place >= getString() && place <= getString() + getLength();
    }
    void replaceUnits(std::uint32_t offset, std::uint32_t removed, const unit* text, std::uint32_t added);
    void keepRange(const unit* first, const unit* last);
    void changeCase(LetterCase to);
    const unit* locate(const unit* from, const unit* what, std::uint32_t n) const;
    const unit* locateLast(const unit* from, const unit* what, std::uint32_t n) const;
    bool startsWith(const unit* text, std::uint32_t n) const;
    bool endsWith(const unit* text, std::uint32_t n) const;

    SStringBuffer* buffer_;
};

extern template class TARN_API SString_t<char, 0>;
extern template class TARN_API SString_t<char, 1>;
extern template class TARN_API SString_t<wchar_t, 1>;

// A sum takes a temporary on its left over and appends to it; Concat (sconcat.h) makes one block of many parts.

/// Two strings as a new one.
template <class unit, int flavour>
SString_t<unit, flavour> operator+(const SString_t<unit, flavour>& left,
                                   const SString_t<unit, flavour>& right) {
    SString_t<unit, flavour> sum(left);
    sum.concat(right);
    return sum;
}
/// A string and a zero-terminated text as a new string.
template <class unit, int flavour>
SString_t<unit, flavour> operator+(const SString_t<unit, flavour>& left, const unit* right) {
    SString_t<unit, flavour> sum(left);
    sum.concat(right);
    return sum;
}
/// A zero-terminated text and a string as a new string.
template <class unit, int flavour>
SString_t<unit, flavour> operator+(const unit* left, const SString_t<unit, flavour>& right) {
    SString_t<unit, flavour> sum(left);
    sum.concat(right);
    return sum;
}
/// The temporary with a string behind it.
template <class unit, int flavour>
SString_t<unit, flavour> operator+(SString_t<unit, flavour>&& left, const SString_t<unit, flavour>& right) {
    left.concat(right);
    return std::move(left);
}
/// The temporary with a zero-terminated text behind it.
template <class unit, int flavour>
SString_t<unit, flavour> operator+(SString_t<unit, flavour>&& left, const unit* right) {
    left.concat(right);
    return std::move(left);
}

class SAsciiString;
class SWCharString;
class SOCAString;

/// Text in the process's multi-byte code page, or UTF-8 (snarrowtext.h).
class TARN_API SAnsiString : public SString_t<char, 0> {
  public:
    /// The template that it stands on, with all members.
    using Base = SString_t<char, 0>;
    /// The constructors of the template.
    using Base::Base;
    /// Empty.
    SAnsiString() = default;
    /// Shares the block.
    SAnsiString(const Base& other) noexcept : Base(other) {}
    /// Takes the block and leaves the other string empty.
    SAnsiString(Base&& other) noexcept : Base(std::move(other)) {}
    /// The assignments of the template.
    using Base::operator=;
};

/// Seven-bit ASCII text. The conversions admit nothing else; a constructor copies the bytes that it is given.
class TARN_API SAsciiString : public SString_t<char, 1> {
  public:
    /// The template that it stands on, with all members.
    using Base = SString_t<char, 1>;
    /// The constructors of the template.
    using Base::Base;
    /// Empty.
    SAsciiString() = default;
    /// Shares the block.
    SAsciiString(const Base& other) noexcept : Base(other) {}
    /// Takes the block and leaves the other string empty.
    SAsciiString(Base&& other) noexcept : Base(std::move(other)) {}
    /// With the flag: as many bytes as there are characters, unchecked, so that double-byte text is cut short,
    /// deliberately. Without the flag: empty.
    SAsciiString(const SAnsiString& other, bool take);
    /// With the flag: the low byte of each unit, unchecked. Without it: empty.
    SAsciiString(const SWCharString& other, bool take);
    /// The same.
    SAsciiString(const SOCAString& other, bool take);
    /// The assignments of the template.
    using Base::operator=;
};

/// UTF-16 text.
class TARN_API SWCharString : public SString_t<wchar_t, 1> {
  public:
    /// The template that it stands on, with all members.
    using Base = SString_t<wchar_t, 1>;
    /// The constructors of the template.
    using Base::Base;
    /// Empty.
    SWCharString() = default;
    /// Shares the block.
    SWCharString(const Base& other) noexcept : Base(other) {}
    /// Takes the block and leaves the other string empty.
    SWCharString(Base&& other) noexcept : Base(std::move(other)) {}
    /// The assignments of the template.
    using Base::operator=;
};

/// UTF-16 text as the UTF conversions take and give it; the same storage as SWCharString under another name.
class TARN_API SOCAString : public SString_t<wchar_t, 1> {
  public:
    /// The template that it stands on, with all members.
    using Base = SString_t<wchar_t, 1>;
    /// The constructors of the template.
    using Base::Base;
    /// Empty.
    SOCAString() = default;
    /// Shares the block.
    SOCAString(const Base& other) noexcept : Base(other) {}
    /// Takes the block and leaves the other string empty.
    SOCAString(Base&& other) noexcept : Base(std::move(other)) {}
    /// The assignments of the template.
    using Base::operator=;
};

/// Code-page text whose operators and find ignore case.
class TARN_API SAnsiStringCI : public SString_t<char, 0> {
  public:
    /// The template that it stands on, with all members.
    using Base = SString_t<char, 0>;
    /// The constructors of the template.
    using Base::Base;
    /// Empty.
    SAnsiStringCI() = default;
    /// Shares the block.
    SAnsiStringCI(const SAnsiString& other) noexcept : Base(other) {}
    /// Shares the block.
    SAnsiStringCI(const Base& other) noexcept : Base(other) {}
    /// Takes the block and leaves the other string empty.
    SAnsiStringCI(Base&& other) noexcept : Base(std::move(other)) {}
    /// The assignments of the template.
    using Base::operator=;
    /// The first match without regard to case: both texts are searched in lower case, the result is a
    /// position here.
    iterator find(const Base& text) const { return find(text, begin()); }
    /// The same for a zero-terminated text; the end for null.
    iterator find(const char* text) const { return find(text, begin()); }
    /// The same for a character.
    iterator find(const Char& character) const { return find(character, begin()); }
    /// The first match at or after a position.
    iterator find(const Base& text, const iterator& from) const;
    /// The same for a zero-terminated text; the end for null.
    iterator find(const char* text, const iterator& from) const;
    /// The same for a character.
    iterator find(const Char& character, const iterator& from) const;
    /// True when the text begins with this one without regard to case.
    bool startsWith(const Base& text) const;
    /// The same for a zero-terminated text; false for null.
    bool startsWith(const char* text) const;
    /// The same for a character.
    bool startsWith(const Char& character) const;
    /// True when the text ends with this one without regard to case.
    bool endsWith(const Base& text) const;
    /// The same for a zero-terminated text; false for null.
    bool endsWith(const char* text) const;
    /// The same for a character.
    bool endsWith(const Char& character) const;
};

/// UTF-16 text whose operators ignore case.
class TARN_API SWCharStringCI : public SString_t<wchar_t, 1> {
  public:
    /// The template that it stands on, with all members.
    using Base = SString_t<wchar_t, 1>;
    /// The constructors of the template.
    using Base::Base;
    /// Empty.
    SWCharStringCI() = default;
    /// Shares the block.
    SWCharStringCI(const SWCharString& other) noexcept : Base(other) {}
    /// Shares the block.
    SWCharStringCI(const Base& other) noexcept : Base(other) {}
    /// Takes the block and leaves the other string empty.
    SWCharStringCI(Base&& other) noexcept : Base(std::move(other)) {}
    /// The assignments of the template.
    using Base::operator=;
};

/// The usual name of a text in the process's code page.
using SString = SAnsiString;

// The operators of the types that ignore case. Each comparand type has its own overload, so that none is
// ambiguous with the case-sensitive members of the base.

/// True when compareNoCase says 0.
inline bool operator==(const SAnsiStringCI& a, const SAnsiStringCI& b) {
    return a.compareNoCase(b) == 0;
}
/// True when compareNoCase says 0.
inline bool operator==(const SAnsiStringCI& a, const SString_t<char, 0>& b) {
    return a.compareNoCase(b) == 0;
}
/// True when compareNoCase says 0.
inline bool operator==(const SAnsiStringCI& a, const char* b) {
    return a.compareNoCase(b) == 0;
}
/// The order of compareNoCase.
inline std::weak_ordering operator<=>(const SAnsiStringCI& a, const SAnsiStringCI& b) {
    return a.compareNoCase(b) <=> 0;
}
/// The order of compareNoCase.
inline std::weak_ordering operator<=>(const SAnsiStringCI& a, const SString_t<char, 0>& b) {
    return a.compareNoCase(b) <=> 0;
}
/// The order of compareNoCase.
inline std::weak_ordering operator<=>(const SAnsiStringCI& a, const char* b) {
    return a.compareNoCase(b) <=> 0;
}
/// True when compareNoCase says 0.
inline bool operator==(const SWCharStringCI& a, const SWCharStringCI& b) {
    return a.compareNoCase(b) == 0;
}
/// True when compareNoCase says 0.
inline bool operator==(const SWCharStringCI& a, const SString_t<wchar_t, 1>& b) {
    return a.compareNoCase(b) == 0;
}
/// True when compareNoCase says 0.
inline bool operator==(const SWCharStringCI& a, const wchar_t* b) {
    return a.compareNoCase(b) == 0;
}
/// The order of compareNoCase.
inline std::weak_ordering operator<=>(const SWCharStringCI& a, const SWCharStringCI& b) {
    return a.compareNoCase(b) <=> 0;
}
/// The order of compareNoCase.
inline std::weak_ordering operator<=>(const SWCharStringCI& a, const SString_t<wchar_t, 1>& b) {
    return a.compareNoCase(b) <=> 0;
}
/// The order of compareNoCase.
inline std::weak_ordering operator<=>(const SWCharStringCI& a, const wchar_t* b) {
    return a.compareNoCase(b) <=> 0;
}

// The appending operators return the left operand.

/// Appends a string.
TARN_API SAnsiString& operator<<(SAnsiString& out, const SString_t<char, 0>& text);
/// Appends a zero-terminated text; null appends nothing.
TARN_API SAnsiString& operator<<(SAnsiString& out, const char* text);
/// Appends a character; the null character appends nothing.
TARN_API SAnsiString& operator<<(SAnsiString& out, const SChar_t<char, 0>& character);
/// Appends one code unit.
TARN_API SAnsiString& operator<<(SAnsiString& out, char character);
/// Refused: it would append a number.
SAnsiString& operator<<(SAnsiString& out, wchar_t character) = delete;
/// Appends an integer in decimal.
TARN_API SAnsiString& operator<<(SAnsiString& out, short number);
/// Appends an integer in decimal.
TARN_API SAnsiString& operator<<(SAnsiString& out, unsigned short number);
/// Appends an integer in decimal.
TARN_API SAnsiString& operator<<(SAnsiString& out, int number);
/// Appends an integer in decimal.
TARN_API SAnsiString& operator<<(SAnsiString& out, unsigned int number);
/// Appends an integer in decimal.
TARN_API SAnsiString& operator<<(SAnsiString& out, long number);
/// Appends an integer in decimal.
TARN_API SAnsiString& operator<<(SAnsiString& out, unsigned long number);
/// Appends an integer in decimal.
TARN_API SAnsiString& operator<<(SAnsiString& out, long long number);
/// Appends an integer in decimal.
TARN_API SAnsiString& operator<<(SAnsiString& out, unsigned long long number);
/// Appends a real with six decimals after the decimal point of the C library's current locale.
TARN_API SAnsiString& operator<<(SAnsiString& out, double number);
/// Appends a string.
TARN_API SWCharString& operator<<(SWCharString& out, const SString_t<wchar_t, 1>& text);
/// Appends a zero-terminated text; null appends nothing.
TARN_API SWCharString& operator<<(SWCharString& out, const wchar_t* text);
/// Appends a character; the null character appends nothing.
TARN_API SWCharString& operator<<(SWCharString& out, const SChar_t<wchar_t, 1>& character);
/// Appends one code unit.
TARN_API SWCharString& operator<<(SWCharString& out, wchar_t character);
/// Refused: it would append a number.
SWCharString& operator<<(SWCharString& out, char character) = delete;
/// Appends an integer in decimal.
TARN_API SWCharString& operator<<(SWCharString& out, short number);
/// Appends an integer in decimal.
TARN_API SWCharString& operator<<(SWCharString& out, unsigned short number);
/// Appends an integer in decimal.
TARN_API SWCharString& operator<<(SWCharString& out, int number);
/// Appends an integer in decimal.
TARN_API SWCharString& operator<<(SWCharString& out, unsigned int number);
/// Appends an integer in decimal.
TARN_API SWCharString& operator<<(SWCharString& out, long number);
/// Appends an integer in decimal.
TARN_API SWCharString& operator<<(SWCharString& out, unsigned long number);
/// Appends an integer in decimal.
TARN_API SWCharString& operator<<(SWCharString& out, long long number);
/// Appends an integer in decimal.
TARN_API SWCharString& operator<<(SWCharString& out, unsigned long long number);
/// Appends a real with six decimals after the decimal point of the C library's current locale.
TARN_API SWCharString& operator<<(SWCharString& out, double number);

// --- raw character arrays; sizes are the destination's room in code units, the terminator included ---

/// Copies as much as fits and always terminates; a size of 0 writes nothing. A null source gives an empty
/// text; the wide form then writes the terminator without looking at the size, deliberately.
TARN_API void CopyString(char* destination, std::uint32_t size, const char* source);
/// The same for UTF-16, but for the null source.
TARN_API void CopyString(wchar_t* destination, std::uint32_t size, const wchar_t* source);
/// Copies at most "maximum" units. The byte form refuses a text that does not fit and leaves an empty one,
/// like strncpy_s; the wide form cuts it. The asymmetry is deliberate. A null source does nothing.
TARN_API void CopyStringN(char* destination, std::uint32_t size, const char* source, std::uint32_t maximum);
/// The same for UTF-16, which cuts.
TARN_API void CopyStringN(wchar_t* destination, std::uint32_t size, const wchar_t* source,
                          std::uint32_t maximum);
/// Appends a text; when it does not fit, or a pointer is null, the destination (if any) becomes empty, like
/// strcat_s.
TARN_API void ConcatString(char* destination, std::uint32_t size, const char* source);
/// The same for UTF-16.
TARN_API void ConcatString(wchar_t* destination, std::uint32_t size, const wchar_t* source);
/// Appends at most "maximum" units, like strncat_s; a null pointer does nothing.
TARN_API void ConcatStringN(char* destination, std::uint32_t size, const char* source, std::uint32_t maximum);
/// The same for UTF-16.
TARN_API void ConcatStringN(wchar_t* destination, std::uint32_t size, const wchar_t* source,
                            std::uint32_t maximum);

/// Maps a zero-terminated text in place, by multi-byte characters, up to a size in bytes (0xFFFFFFFF: its own
/// length). Stops at an invalid character and before one that would pass the size; what follows stays as it was.
/// A text may get shorter, never longer: in UTF-8 a letter whose other case takes more bytes stays, too.
TARN_API void MakeLowerCase(char* text, std::uint32_t size = 0xFFFFFFFF);
/// The same for UTF-16, unit by unit.
TARN_API void MakeLowerCase(wchar_t* text, std::uint32_t size = 0xFFFFFFFF);
/// The same to upper case.
TARN_API void MakeUpperCase(char* text, std::uint32_t size = 0xFFFFFFFF);
/// The same to upper case for UTF-16, unit by unit.
TARN_API void MakeUpperCase(wchar_t* text, std::uint32_t size = 0xFFFFFFFF);
/// Maps the one multi-byte character at a place where "room" bytes may be written. True on success, with its
/// new size in bytes; a character that does not convert, or does not fit, is reported by assertion.
TARN_API bool MakeLowerCaseChar(char* position, std::uint32_t room, std::uint32_t& nBytes);
/// The same to upper case.
TARN_API bool MakeUpperCaseChar(char* position, std::uint32_t room, std::uint32_t& nBytes);

}  // namespace TarnLibA500

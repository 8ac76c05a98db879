#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <unordered_map>
#include <utility>

#include "tarnlib/simap.h"
#include "tarnlib/sstring.h"
#include "tarnlib/tarnapi.h"

/// A map without an order: what SIMap is, but a look-up takes the same short time however many pairs there are.
///
/// The map owns its pairs. A reference to a value is valid until its pair is removed or the map goes; a position
/// also ends when a pair is inserted. Pairs come in no order that could be relied on. There is no locking: several
/// threads may read one map, one may change it.
///
/// Maps whose keys are strings are also looked up by a pointer and a number of bytes, as a word cursor has them: no
/// key is made for that.
///
///     SHashMap<SMapStringCaseInsensitive, int> counts;
///     for (SWordCursor word(line, " \t"); word.next();) {
///         auto found = counts.Find(word.getWord(), word.getLength());
///         if (found != counts.End()) ++found.GetValue();
///         else counts.Insert(word.toString(), 1);
///     }
///     counts.Contains("ERROR");                            // true after "error"
///     for (const auto& [word, count] : counts) Print(word.GetString(), count);
///
/// Without regard to case means less here than in an SIMap. There two keys of one length are the same when they
/// collate the same, which no hash can follow: in a German locale "a\xDFss" and "ass\xDF" do. Here they are the same when
/// they have the same length in bytes, and the same characters after each of them was mapped to its lower case, one for
/// one. The collation has no part in that. The map follows the process's code page: one that was filled under one page
/// must not be used under another.
///
/// The hash is no secret. Whoever may choose the keys can choose many with the same hash, and each look-up then goes
/// through all of these; for keys that come from strangers take an SIMap.
///
/// Keys of another type need a hash and an equality: std::hash and == by themselves, or function objects of one's own.
///
///     struct ByNumber {
///         std::size_t operator()(const Account& account) const { return account.number; }
///         bool operator()(const Account& a, const Account& b) const { return a.number == b.number; }
///     };
///     SHashMap<Account, SAnsiString, ByNumber, ByNumber> owners;
namespace TarnLibA500 {

/// A hash of a text's bytes.
std::uint32_t SHashText(const char* text, std::uint32_t nBytes);
/// A hash of a text without regard to case: the same for texts that SHashSameNoCase calls the same.
std::uint32_t SHashNoCase(const char* text, std::uint32_t nBytes);
/// The same for a text with other characters than those of ASCII.
TARN_API std::uint32_t SHashNoCaseBeyondAscii(const char* text, std::uint32_t nBytes);
/// True when two texts of one length have the same characters in lower case. A zero byte is a character like others,
/// and a byte that is no character is the same as itself only.
bool SHashSameNoCase(const char* left, const char* right, std::uint32_t nBytes);
/// The same for texts with other characters than those of ASCII.
TARN_API bool SHashSameNoCaseBeyondAscii(const char* left, const char* right, std::uint32_t nBytes);

/// The hash of a key, std::hash where nothing else is said.
template <class K>
struct SHashOf : std::hash<K> {};

// Not noexcept, deliberately: the standard map then keeps each key's hash beside it, and compares that first.

/// The hash of a string: of its bytes.
template <>
struct SHashOf<SAnsiString> {
    using is_transparent = void;  ///< keys and texts have the same hash
    /// Of a key.
    std::size_t operator()(const SAnsiString& key) const {
        return SHashText(key.getString(), key.getLength());
    }
    /// Of a text.
    std::size_t operator()(const SMapText& text) const { return SHashText(text.text, text.length); }
};

/// The hash of a key without regard to case.
template <>
struct SHashOf<SMapStringCaseInsensitive> {
    using is_transparent = void;  ///< keys and texts have the same hash
    /// Of a key.
    std::size_t operator()(const SMapStringCaseInsensitive& key) const {
        return SHashNoCase(key.GetString().getString(), key.GetString().getLength());
    }
    /// Of a text.
    std::size_t operator()(const SMapText& text) const { return SHashNoCase(text.text, text.length); }
};

/// Whether two keys are the same, == where nothing else is said.
template <class K>
struct SHashEqual : std::equal_to<K> {};

/// Strings are the same when their bytes are.
template <>
struct SHashEqual<SAnsiString> {
    using is_transparent = void;  ///< keys and texts may be compared
    /// Two keys.
    bool operator()(const SAnsiString& a, const SAnsiString& b) const {
        return (*this)(SMapText{a.getString(), a.getLength()}, b);
    }
    /// A text and a key.
    bool operator()(const SMapText& text, const SAnsiString& key) const {
        return text.length == key.getLength() &&
               (text.length == 0 || std::memcmp(text.text, key.getString(), text.length) == 0);
    }
};

/// Keys without regard to case are the same when they have one length and SHashSameNoCase says so.
template <>
struct SHashEqual<SMapStringCaseInsensitive> {
    using is_transparent = void;  ///< keys and texts may be compared
    /// Two keys.
    bool operator()(const SMapStringCaseInsensitive& a, const SMapStringCaseInsensitive& b) const {
        return (*this)(SMapText{a.GetString().getString(), a.GetString().getLength()}, b);
    }
    /// A text and a key.
    bool operator()(const SMapText& text, const SMapStringCaseInsensitive& key) const {
        return text.length == key.GetString().getLength() &&
               SHashSameNoCase(text.text, key.GetString().getString(), text.length);
    }
};

/// A hash and an equality by which keys can be looked up by a text: both take texts, and say so with is_transparent.
template <class K, class Hash, class Equal>
concept SHashTextKey = requires(const Hash& hash, const Equal& equal, const K& key, const SMapText& text) {
    typename Hash::is_transparent;
    typename Equal::is_transparent;
    { hash(text) } -> std::convertible_to<std::size_t>;
    { equal(text, key) } -> std::convertible_to<bool>;
};

/// A map from keys to values, without an order.
template <class K, class V, class Hash = SHashOf<K>, class Equal = SHashEqual<K>>
class SHashMap {
    using Table = std::unordered_map<K, V, Hash, Equal>;

  public:
    /// A position in the map, through which values may be changed. It steps forward.
    using Iterator = SIMapIterator<typename Table::iterator>;
    /// The same for reading.
    using ConstIterator = SIMapIterator<typename Table::const_iterator>;

    /// Sets the value of a key. A key that is there already keeps its own spelling.
    void Insert(const K& key, const V& value) { table_.insert_or_assign(key, value); }
    /// Inserts every pair of another map.
    void Insert(const SHashMap& other) {
        if (&other == this) return;
        for (const auto& [key, value] : other.table_) Insert(key, value);
    }
    /// Takes the pairs of another map, which is empty then: their values replace those of equal keys. Should memory
    /// run out, each pair is in one of the maps.
    void Merge(SHashMap& other) {
        if (&other == this) return;
        table_.merge(other.table_);
        for (auto left = other.table_.begin(); left != other.table_.end(); left = other.table_.erase(left))
            table_.find(left->first)->second = std::move(left->second);
    }
    /// The same as Insert.
    void SetAt(const K& key, const V& value) { Insert(key, value); }
    /// True, with the value, when the key is there; otherwise the value stays as it was.
    bool Lookup(const K& key, V& value) const { return TakeValue(Find(key), value); }
    /// The same by a text of "nBytes" bytes.
    bool Lookup(const char* key, std::uint32_t nBytes, V& value) const requires SHashTextKey<K, Hash, Equal> {
        return TakeValue(Find(key, nBytes), value);
    }
    /// True when the key is there.
    bool Contains(const K& key) const { return table_.contains(key); }
    /// The same by a text of "nBytes" bytes.
    bool Contains(const char* key, std::uint32_t nBytes) const requires SHashTextKey<K, Hash, Equal> {
        return table_.contains(SMapText{key, nBytes});
    }
    /// Removes the pair with the key; true when it was there.
    bool RemoveKey(const K& key) { return table_.erase(key) != 0; }
    /// Removes all pairs.
    void RemoveAll() { table_.clear(); }

    /// True when there are no pairs.
    bool IsEmpty() const { return table_.empty(); }
    /// How many pairs there are.
    std::uint32_t GetCount() const { return static_cast<std::uint32_t>(table_.size()); }

    /// The pair with the key, or End().
    Iterator Find(const K& key) { return Iterator(table_.find(key)); }
    /// The same for reading.
    ConstIterator Find(const K& key) const { return ConstIterator(table_.find(key)); }
    /// The same by a text of "nBytes" bytes.
    Iterator Find(const char* key, std::uint32_t nBytes) requires SHashTextKey<K, Hash, Equal> {
        return Iterator(table_.find(SMapText{key, nBytes}));
    }
    /// The same by a text of "nBytes" bytes, for reading.
    ConstIterator Find(const char* key, std::uint32_t nBytes) const requires SHashTextKey<K, Hash, Equal> {
        return ConstIterator(table_.find(SMapText{key, nBytes}));
    }
    /// Some pair to begin with; End() of an empty map.
    Iterator GetFirst() { return Iterator(table_.begin()); }
    /// The same for reading.
    ConstIterator GetFirst() const { return ConstIterator(table_.begin()); }
    /// The same as GetFirst.
    Iterator GetIterator() { return GetFirst(); }
    /// The same as GetFirst, for reading.
    ConstIterator GetIterator() const { return GetFirst(); }
    /// The position after the last pair.
    Iterator End() { return Iterator(table_.end()); }
    /// The same for reading.
    ConstIterator End() const { return ConstIterator(table_.end()); }

    /// For range-for.
    Iterator begin() { return GetFirst(); }
    /// For range-for.
    Iterator end() { return End(); }
    /// For range-for.
    ConstIterator begin() const { return GetFirst(); }
    /// For range-for.
    ConstIterator end() const { return End(); }

  private:
    bool TakeValue(ConstIterator found, V& value) const {
        if (found == End()) return false;
        value = found.GetValue();
        return true;
    }

    Table table_;
};

/// A text's hash, four bytes at a time.
class SHashSteps {
  public:
    /// Takes four bytes.
    void add(std::uint32_t bytes) noexcept {
        hash_ = (hash_ ^ bytes) * 0x9E3779B1;
        hash_ ^= hash_ >> 15;
    }
    /// The hash of what was taken.
    std::uint32_t get() const noexcept { return hash_; }

    /// Four bytes of a text, or, with zeros behind them, as many as are left.
    static std::uint32_t Read(const char* text, std::uint32_t nBytes) noexcept {
        std::uint32_t bytes = 0;
        if (nBytes >= sizeof bytes) return Four(text);
        for (std::uint32_t i = 0; i < nBytes; ++i)
            bytes |= std::uint32_t{static_cast<unsigned char>(text[i])} << 8 * i;
        return bytes;
    }
    /// Four bytes of a text.
    static std::uint32_t Four(const char* text) noexcept {
        std::uint32_t bytes = 0;
        std::memcpy(&bytes, text, sizeof bytes);
        return bytes;
    }
    /// The last four bytes of a text; of a shorter one, that is not empty, what tells all its bytes.
    static std::uint32_t Last(const char* text, std::uint32_t nBytes) noexcept {
        if (nBytes >= 4) return Four(text + nBytes - 4);
        const auto byte = [text](std::uint32_t i) {
            return std::uint32_t{static_cast<unsigned char>(text[i])};
        };
        return byte(0) | byte(nBytes / 2) << 8 | byte(nBytes - 1) << 16;
    }
    /// Four ASCII characters in lower case.
    static std::uint32_t Lower(std::uint32_t bytes) noexcept { return SMapLower(bytes); }

  private:
    std::uint32_t hash_ = 0x811C9DC5;
};

/// The hash of bytes as they are.
inline std::uint32_t SHashText(const char* text, std::uint32_t nBytes) {
    SHashSteps steps;
    for (std::uint32_t i = 0; i < nBytes; i += 4) steps.add(SHashSteps::Read(text + i, nBytes - i));
    return steps.get();
}

/// The hash of a text without regard to case, by its lower case.
inline std::uint32_t SHashNoCase(const char* text, std::uint32_t nBytes) {
    SHashSteps steps;
    if (nBytes == 0) return steps.get();
    std::uint32_t all = 0;
    const auto add = [&](std::uint32_t bytes) {
        all |= bytes;
        steps.add(SHashSteps::Lower(bytes));
    };
    for (std::uint32_t i = 0; nBytes - i > 4; i += 4) add(SHashSteps::Four(text + i));
    add(SHashSteps::Last(text, nBytes));
    return (all & 0x80808080) != 0 ? SHashNoCaseBeyondAscii(text, nBytes) : steps.get();
}

/// Whether two texts of one length are the same but for case: SHashNoCase is the same then.
inline bool SHashSameNoCase(const char* left, const char* right, std::uint32_t nBytes) {
    if (nBytes == 0) return true;
    std::uint32_t all = 0;
    std::uint32_t differing = 0;
    const auto compare = [&](std::uint32_t a, std::uint32_t b) {
        all |= a | b;
        differing |= SHashSteps::Lower(a) ^ SHashSteps::Lower(b);
    };
    for (std::uint32_t i = 0; nBytes - i > 4; i += 4)
        compare(SHashSteps::Four(left + i), SHashSteps::Four(right + i));
    compare(SHashSteps::Last(left, nBytes), SHashSteps::Last(right, nBytes));
    return (all & 0x80808080) != 0 ? SHashSameNoCaseBeyondAscii(left, right, nBytes) : differing == 0;
}

}  // namespace TarnLibA500

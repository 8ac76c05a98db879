#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <map>
#include <type_traits>
#include <utility>

#include "tarnlib/sstring.h"
#include "tarnlib/tarnapi.h"

/// An ordered map, and a key that ignores case.
///
/// The map owns its pairs and keeps them in the order of their keys' operator<. An iterator is valid until
/// its pair is removed or the map goes. There is no locking: several threads may read one map, one may change
/// it.
///
/// Maps whose keys are strings, with or without regard to case, are also looked up by a pointer and a number of
/// bytes, as a word cursor or a parser has them: no key is made for that.
///
/// Keys of the type SMapStringCaseInsensitive follow the C locale's collation: a map that was filled under
/// one locale must not be used under another.
///
///     SIMap<SMapStringCaseInsensitive, SAnsiString> headers;
///     headers.Insert("Content-Type", "text/plain");
///     headers.Insert("CONTENT-TYPE", "text/html");         // replaces the value, the key keeps its spelling
///     SAnsiString type;
///     if (headers.Lookup("content-type", type)) ...        // text/html
///     if (headers.Contains(name, nameBytes)) ...           // no key is made
///     for (auto i = headers.GetFirst(); i != headers.End(); ++i)
///         Print(i.GetKey().GetString(), i.GetValue());
namespace TarnLibA500 {

/// A position in a map. It steps in the order of the keys, either way, and in a map without an order forward only.
template <class TreeIterator>
class SIMapIterator {
    using Traits = std::iterator_traits<TreeIterator>;

  public:
    using iterator_category = typename Traits::iterator_category;  ///< either way in a map with an order
    using value_type = typename Traits::value_type;                ///< the pair (key, value)
    using difference_type = typename Traits::difference_type;      ///< of two positions
    using pointer = typename Traits::pointer;                      ///< to the pair
    using reference = typename Traits::reference;                  ///< of the pair

    /// Stands nowhere until a position is assigned.
    SIMapIterator() = default;
    /// From a position in terms of the standard library.
    explicit SIMapIterator(TreeIterator position) : position_(position) {}
    /// From a position that may change values to one that may not.
    template <class Other>
    requires(!std::is_same_v<Other, TreeIterator> && std::is_convertible_v<Other, TreeIterator>)
        SIMapIterator(const SIMapIterator<Other>& other)
        : position_(other.GetPosition()) {}

    /// The key.
    const auto& GetKey() const { return position_->first; }
    /// The value.
    auto& GetValue() const { return position_->second; }
    /// The pair (key, value).
    reference operator*() const { return *position_; }
    /// The pair (key, value).
    pointer operator->() const { return position_.operator->(); }
    /// Goes to the next pair.
    SIMapIterator& operator++() {
        ++position_;
        return *this;
    }
    /// The same, and returns the position before the step.
    SIMapIterator operator++(int) { return SIMapIterator(position_++); }
    /// Goes to the pair before.
    SIMapIterator& operator--() requires std::bidirectional_iterator<TreeIterator> {
        --position_;
        return *this;
    }
    /// The same, and returns the position before the step.
    SIMapIterator operator--(int) requires std::bidirectional_iterator<TreeIterator> {
        return SIMapIterator(position_--);
    }
    /// True at the same pair.
    friend bool operator==(const SIMapIterator& a, const SIMapIterator& b) {
        return a.position_ == b.position_;
    }
    /// The same position in terms of the standard library.
    TreeIterator GetPosition() const { return position_; }

  private:
    TreeIterator position_;
};

class SMapStringCaseInsensitive;

/// A text as a map is asked for it: the place of its first byte, and how many there are.
struct SMapText {
    const char* text;      ///< need not be zero-terminated
    std::uint32_t length;  ///< in bytes
};

/// The collation of two texts of one length without regard to case: -1, 0 or 1. Only the first must be
/// zero-terminated.
TARN_API int SMapCollate(const char* left, const char* right, std::uint32_t nBytes);

/// How a key is ordered against a text: negative, 0 or positive, as its operator< has it.
/// Below 0, 0 or above 0 as the key comes before, is the same as, or comes behind the text.
inline int SMapOrder(const SAnsiString& key, const SMapText& text) {
    return key.compare(text.text, text.length);
}
/// The same for a key without regard to case.
TARN_MEM int SMapOrder(const SMapStringCaseInsensitive& key, const SMapText& text);

/// What each of the 256 bytes weighs for the collation without regard to case, where letters can be told by their bytes;
/// null where the system has to be asked about every pair of texts. It holds until the C locale changes.
TARN_API const unsigned char* SMapWeights();
/// A weight of more than this does not decide: where only one of two bytes has it, the collation must be asked.
constexpr unsigned char kSMapDecides = 0x7F;
/// The weight of a byte that is no character of ASCII: it never decides, not even where both texts have it.
constexpr unsigned char kSMapNoAscii = 0xFF;

/// A text that is looked up among keys without regard to case, with the weights that hold: asked for once, they make
/// each comparison on the way cheap.
struct SMapWanted {
    SMapText text;                 ///< the text
    const unsigned char* weights;  ///< what SMapWeights said

    /// Below 0, 0 or above 0 as the key comes before, is the same as, or comes behind the text.
    int OrderOf(const SMapStringCaseInsensitive& key) const;
};

/// Four ASCII characters in lower case.
inline std::uint32_t SMapLower(std::uint32_t bytes) noexcept {
    const std::uint32_t fromA = bytes + 0x3F3F3F3F;    // the highest bit of a byte from "A" on
    const std::uint32_t beyondZ = bytes + 0x25252525;  // the same beyond "Z"
    return bytes | (fromA & ~beyondZ & 0x80808080) >> 2;
}

/// For how many bytes two texts are the same but for case, by fours: of ASCII, and none of them zero.
inline std::uint32_t SMapSame(const char* left, const char* right, std::uint32_t nBytes) noexcept {
    std::uint32_t same = 0;
    for (std::uint32_t a = 0, b = 0; nBytes - same >= sizeof a; same += sizeof a) {
        std::memcpy(&a, left + same, sizeof a);
        std::memcpy(&b, right + same, sizeof b);
        const std::uint32_t others = (a | b | (a - 0x01010101)) & 0x80808080;
        if (others != 0 || SMapLower(a) != SMapLower(b)) break;
    }
    return same;
}

/// True, with the order (-1, 0 or 1), when the weights alone decide how two texts of one length collate.
inline bool SMapDecide(const unsigned char* weights, const char* left, const char* right,
                       std::uint32_t nBytes, int& order) noexcept {
    order = 0;
    for (std::uint32_t i = 0; i < nBytes; ++i) {
        const unsigned char a = weights[static_cast<unsigned char>(left[i])];
        const unsigned char b = weights[static_cast<unsigned char>(right[i])];
        if (a != b || a == 0 || a == kSMapNoAscii) {
            order = (a > b) - (a < b);
            return (a | b) <= kSMapDecides;  // a zero byte on both sides ends both texts
        }
        // Most texts differ in their first byte. Those that do not may have much in common.
        if (i == 0) i = SMapSame(left + 1, right + 1, nBytes - 1);
    }
    return true;
}

/// What a map is searched by for a key, which is not a temporary: the key itself.
template <class K>
K& SMapWantedOf(K& key) {
    return key;
}
/// The same for a key without regard to case: its text.
SMapWanted SMapWantedOf(const SMapStringCaseInsensitive& key);
/// The same for a text: itself, or with weights where the keys have no regard to case.
template <class K>
auto SMapWantedOf(const SMapText& text) {
    if constexpr (std::same_as<K, SMapStringCaseInsensitive>) {
        return SMapWanted{text, SMapWeights()};
    } else {
        return text;
    }
}

/// Keys that can be looked up by a text.
template <class K>
concept SMapTextKey = std::same_as<K, SAnsiString> || std::same_as<K, SMapStringCaseInsensitive>;

/// The order of a map: the keys' operator<, and for texts SMapOrder.
struct SMapLess {
    using is_transparent = void;  ///< keys and texts may be compared

    /// By the keys' own order.
    template <class K>
    bool operator()(const K& a, const K& b) const {
        return a < b;
    }
    /// A key before a text.
    template <SMapTextKey K>
    bool operator()(const K& key, const SMapText& text) const {
        return SMapOrder(key, text) < 0;
    }
    /// A text before a key.
    template <SMapTextKey K>
    bool operator()(const SMapText& text, const K& key) const {
        return SMapOrder(key, text) > 0;
    }
    /// A key before a text with weights.
    bool operator()(const SMapStringCaseInsensitive& key, const SMapWanted& wanted) const {
        return wanted.OrderOf(key) < 0;
    }
    /// A text with weights before a key.
    bool operator()(const SMapWanted& wanted, const SMapStringCaseInsensitive& key) const {
        return wanted.OrderOf(key) > 0;
    }
};

// Members stand outside the class, so that the instance the library exports is imported by its clients and
// others are not exported by accident.

/// A map from keys to values.
template <class K, class V>
class SIMap {
    using Tree = std::map<K, V, SMapLess>;

  public:
    /// A position in the map, through which values may be changed.
    using Iterator = SIMapIterator<typename Tree::iterator>;
    /// The same for reading.
    using ConstIterator = SIMapIterator<typename Tree::const_iterator>;

    /// Sets the value of a key. A key that is there already keeps its own spelling.
    void Insert(const K& key, const V& value);
    /// Inserts every pair of another map.
    void Insert(const SIMap& other);
    /// Takes the pairs of another map, which is empty then, without memory for them: their values replace those of
    /// equal keys. Should comparing keys run out of memory, each pair is in one of the maps.
    void Merge(SIMap& other);
    /// The same as Insert.
    void SetAt(const K& key, const V& value);
    /// True, with the value, when the key is there; otherwise the value stays as it was.
    bool Lookup(const K& key, V& value) const;
    /// The same by a text of "nBytes" bytes.
    bool Lookup(const char* key, std::uint32_t nBytes, V& value) const requires SMapTextKey<K>;
    /// True when the key is there.
    bool Contains(const K& key) const;
    /// The same by a text of "nBytes" bytes.
    bool Contains(const char* key, std::uint32_t nBytes) const requires SMapTextKey<K>;
    /// Removes the pair with the key; true when it was there.
    bool RemoveKey(const K& key);
    /// Removes all pairs.
    void RemoveAll();

    /// True when there are no pairs.
    bool IsEmpty() const;
    /// How many pairs there are.
    std::uint32_t GetCount() const;

    /// The pair with the key, or End().
    Iterator Find(const K& key);
    /// The same for reading.
    ConstIterator Find(const K& key) const;
    /// The same by a text of "nBytes" bytes.
    Iterator Find(const char* key, std::uint32_t nBytes) requires SMapTextKey<K>;
    /// The same by a text of "nBytes" bytes, for reading.
    ConstIterator Find(const char* key, std::uint32_t nBytes) const requires SMapTextKey<K>;
    /// The first pair whose key is not less than this one, or End().
    Iterator BeginAt(const K& key);
    /// The same for reading.
    ConstIterator BeginAt(const K& key) const;
    /// The first pair; End() of an empty map.
    Iterator GetFirst();
    /// The same for reading.
    ConstIterator GetFirst() const;
    /// The same as GetFirst.
    Iterator GetIterator();
    /// The same as GetFirst, for reading.
    ConstIterator GetIterator() const;
    /// The last pair; End() of an empty map.
    Iterator GetLast();
    /// The same for reading.
    ConstIterator GetLast() const;
    /// The position after the last pair.
    Iterator End();
    /// The same for reading.
    ConstIterator End() const;

    /// For range-for.
    Iterator begin();
    /// For range-for.
    Iterator end();
    /// For range-for.
    ConstIterator begin() const;
    /// For range-for.
    ConstIterator end() const;

  private:
    Tree tree_;
};

/// A text as a key without regard to case. Deliberately, keys are ordered by their length in bytes first;
/// only keys of one length are collated (compareNoCase).
class TARN_API SMapStringCaseInsensitive {
  public:
    /// The empty text.
    SMapStringCaseInsensitive() = default;
    /// Shares the text's block.
    SMapStringCaseInsensitive(const SString_t<char, 0>& text) noexcept : text_(text) {}
    /// A copy of a zero-terminated text.
    SMapStringCaseInsensitive(const char* text) : text_(text) {}

    /// The text in its own spelling.
    const SAnsiString& GetString() const noexcept { return text_; }
    /// By length, and only between equal lengths by collation.
    TARN_MEM bool operator<(const SMapStringCaseInsensitive& other) const {
        return SMapOrder(*this, {other.text_.getString(), other.text_.getLength()}) < 0;
    }

  private:
    SAnsiString text_;
};

/// Below 0, 0 or above 0 as the key comes before, is the same as, or comes behind the text.
inline int SMapOrder(const SMapStringCaseInsensitive& key, const SMapText& text) {
    const std::uint32_t length = key.GetString().getLength();
    if (length != text.length) return length < text.length ? -1 : 1;
    return SMapCollate(key.GetString().getString(), text.text, length);
}

/// Below 0, 0 or above 0 as the key comes before, is the same as, or comes behind the text.
inline int SMapWanted::OrderOf(const SMapStringCaseInsensitive& key) const {
    const std::uint32_t length = key.GetString().getLength();
    int order = 0;
    const bool isDecided = length == text.length && weights != nullptr &&
                           SMapDecide(weights, key.GetString().getString(), text.text, length, order);
    return isDecided ? order : SMapOrder(key, text);
}

/// The text of the key, with the weights.
inline SMapWanted SMapWantedOf(const SMapStringCaseInsensitive& key) {
    return {{key.GetString().getString(), key.GetString().getLength()}, SMapWeights()};
}

template <class K, class V>
void SIMap<K, V>::Insert(const K& key, const V& value) {
    tree_.insert_or_assign(key, value);
}

template <class K, class V>
void SIMap<K, V>::Insert(const SIMap& other) {
    for (const auto& [key, value] : other.tree_) Insert(key, value);
}

template <class K, class V>
void SIMap<K, V>::Merge(SIMap& other) {
    if (&other == this) return;
    tree_.merge(other.tree_);
    for (auto left = other.tree_.begin(); left != other.tree_.end(); left = other.tree_.erase(left))
        tree_.find(left->first)->second = std::move(left->second);
}

template <class K, class V>
void SIMap<K, V>::SetAt(const K& key, const V& value) {
    Insert(key, value);
}

template <class K, class V>
bool SIMap<K, V>::Lookup(const K& key, V& value) const {
    const auto found = tree_.find(SMapWantedOf(key));
    if (found == tree_.end()) return false;
    value = found->second;
    return true;
}

template <class K, class V>
bool SIMap<K, V>::Lookup(const char* key, std::uint32_t nBytes, V& value) const requires SMapTextKey<K> {
    const auto found = tree_.find(SMapWantedOf<K>(SMapText{key, nBytes}));
    if (found == tree_.end()) return false;
    value = found->second;
    return true;
}

template <class K, class V>
bool SIMap<K, V>::Contains(const K& key) const {
    return tree_.find(SMapWantedOf(key)) != tree_.end();
}

template <class K, class V>
bool SIMap<K, V>::Contains(const char* key, std::uint32_t nBytes) const requires SMapTextKey<K> {
    return tree_.find(SMapWantedOf<K>(SMapText{key, nBytes})) != tree_.end();
}

template <class K, class V>
bool SIMap<K, V>::RemoveKey(const K& key) {
    const auto found = tree_.find(SMapWantedOf(key));
    if (found == tree_.end()) return false;
    tree_.erase(found);
    return true;
}

template <class K, class V>
void SIMap<K, V>::RemoveAll() {
    tree_.clear();
}

template <class K, class V>
bool SIMap<K, V>::IsEmpty() const {
    return tree_.empty();
}

template <class K, class V>
std::uint32_t SIMap<K, V>::GetCount() const {
    return static_cast<std::uint32_t>(tree_.size());
}

template <class K, class V>
typename SIMap<K, V>::Iterator SIMap<K, V>::Find(const K& key) {
    return Iterator(tree_.find(SMapWantedOf(key)));
}

template <class K, class V>
typename SIMap<K, V>::ConstIterator SIMap<K, V>::Find(const K& key) const {
    return ConstIterator(tree_.find(SMapWantedOf(key)));
}

template <class K, class V>
typename SIMap<K, V>::Iterator SIMap<K, V>::Find(const char* key,
                                                 std::uint32_t nBytes) requires SMapTextKey<K> {
    return Iterator(tree_.find(SMapWantedOf<K>(SMapText{key, nBytes})));
}

template <class K, class V>
typename SIMap<K, V>::ConstIterator SIMap<K, V>::Find(const char* key,
                                                      std::uint32_t nBytes) const requires SMapTextKey<K> {
    return ConstIterator(tree_.find(SMapWantedOf<K>(SMapText{key, nBytes})));
}

template <class K, class V>
typename SIMap<K, V>::Iterator SIMap<K, V>::BeginAt(const K& key) {
    return Iterator(tree_.lower_bound(SMapWantedOf(key)));
}

template <class K, class V>
typename SIMap<K, V>::ConstIterator SIMap<K, V>::BeginAt(const K& key) const {
    return ConstIterator(tree_.lower_bound(SMapWantedOf(key)));
}

template <class K, class V>
typename SIMap<K, V>::Iterator SIMap<K, V>::GetFirst() {
    return Iterator(tree_.begin());
}

template <class K, class V>
typename SIMap<K, V>::ConstIterator SIMap<K, V>::GetFirst() const {
    return ConstIterator(tree_.begin());
}

template <class K, class V>
typename SIMap<K, V>::Iterator SIMap<K, V>::GetIterator() {
    return GetFirst();
}

template <class K, class V>
typename SIMap<K, V>::ConstIterator SIMap<K, V>::GetIterator() const {
    return GetFirst();
}

template <class K, class V>
typename SIMap<K, V>::Iterator SIMap<K, V>::GetLast() {
    return IsEmpty() ? End() : --End();
}

template <class K, class V>
typename SIMap<K, V>::ConstIterator SIMap<K, V>::GetLast() const {
    return IsEmpty() ? End() : --End();
}

template <class K, class V>
typename SIMap<K, V>::Iterator SIMap<K, V>::End() {
    return Iterator(tree_.end());
}

template <class K, class V>
typename SIMap<K, V>::ConstIterator SIMap<K, V>::End() const {
    return ConstIterator(tree_.end());
}

template <class K, class V>
typename SIMap<K, V>::Iterator SIMap<K, V>::begin() {
    return GetFirst();
}

template <class K, class V>
typename SIMap<K, V>::Iterator SIMap<K, V>::end() {
    return End();
}

template <class K, class V>
typename SIMap<K, V>::ConstIterator SIMap<K, V>::begin() const {
    return GetFirst();
}

template <class K, class V>
typename SIMap<K, V>::ConstIterator SIMap<K, V>::end() const {
    return End();
}

extern template class TARN_API SIMap<SMapStringCaseInsensitive, SAnsiString>;

}  // namespace TarnLibA500

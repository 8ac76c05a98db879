#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <map>
#include <type_traits>

#include "tarnlib/sstring.h"
#include "tarnlib/tarnapi.h"

/// An ordered map, and a key that ignores case.
///
/// The map owns its pairs and keeps them in the order of their keys' operator<. An iterator is valid until
/// its pair is removed or the map goes. There is no locking: several threads may read one map, one may change
/// it.
///
/// Keys of the type SMapStringCaseInsensitive follow the C locale's collation: a map that was filled under
/// one locale must not be used under another.
///
///     SIMap<SMapStringCaseInsensitive, SAnsiString> headers;
///     headers.Insert("Content-Type", "text/plain");
///     headers.Insert("CONTENT-TYPE", "text/html");         // replaces the value, the key keeps its spelling
///     SAnsiString type;
///     if (headers.Lookup("content-type", type)) ...        // text/html
///     for (auto i = headers.GetFirst(); i != headers.End(); ++i)
///         Print(i.GetKey().GetString(), i.GetValue());
namespace TarnLibA500 {

/// A position in a map. It steps in the order of the keys, either way.
template <class TreeIterator>
class SIMapIterator {
    using Traits = std::iterator_traits<TreeIterator>;

  public:
    using iterator_category = std::bidirectional_iterator_tag;
    using value_type = typename Traits::value_type;
    using difference_type = typename Traits::difference_type;
    using pointer = typename Traits::pointer;
    using reference = typename Traits::reference;

    /// Stands nowhere until a position is assigned.
    SIMapIterator() = default;
    explicit SIMapIterator(TreeIterator position) : position_(position) {}
    /// From a position that may change values to one that may not.
    template <class Other>
    requires(!std::is_same_v<Other, TreeIterator> && std::is_convertible_v<Other, TreeIterator>)
        SIMapIterator(const SIMapIterator<Other>& other)
        : position_(other.GetPosition()) {}

    const auto& GetKey() const { return position_->first; }
    auto& GetValue() const { return position_->second; }
    /// The pair (key, value).
    reference operator*() const { return *position_; }
    pointer operator->() const { return position_.operator->(); }
    SIMapIterator& operator++() {
        ++position_;
        return *this;
    }
    SIMapIterator operator++(int) { return SIMapIterator(position_++); }
    SIMapIterator& operator--() {
        --position_;
        return *this;
    }
    SIMapIterator operator--(int) { return SIMapIterator(position_--); }
    friend bool operator==(const SIMapIterator& a, const SIMapIterator& b) {
        return a.position_ == b.position_;
    }
    /// The same position in terms of the standard library.
    TreeIterator GetPosition() const { return position_; }

  private:
    TreeIterator position_;
};

// Members stand outside the class, so that the instance the library exports is imported by its clients and
// others are not exported by accident.
template <class K, class V>
class SIMap {
    using Tree = std::map<K, V>;

  public:
    using Iterator = SIMapIterator<typename Tree::iterator>;
    using ConstIterator = SIMapIterator<typename Tree::const_iterator>;

    /// Sets the value of a key. A key that is there already keeps its own spelling.
    void Insert(const K& key, const V& value);
    /// Inserts every pair of another map.
    void Insert(const SIMap& other);
    void SetAt(const K& key, const V& value);
    /// True, with the value, when the key is there; otherwise the value stays as it was.
    bool Lookup(const K& key, V& value) const;
    /// True when the key was there.
    bool RemoveKey(const K& key);
    void RemoveAll();

    bool IsEmpty() const;
    std::uint32_t GetCount() const;

    /// The pair with the key, or End().
    Iterator Find(const K& key);
    ConstIterator Find(const K& key) const;
    /// The first pair whose key is not less than this one, or End().
    Iterator BeginAt(const K& key);
    ConstIterator BeginAt(const K& key) const;
    /// The first pair; End() of an empty map.
    Iterator GetFirst();
    ConstIterator GetFirst() const;
    Iterator GetIterator();
    ConstIterator GetIterator() const;
    /// The last pair; End() of an empty map.
    Iterator GetLast();
    ConstIterator GetLast() const;
    /// The position after the last pair.
    Iterator End();
    ConstIterator End() const;

    // For range-for.
    Iterator begin();
    Iterator end();
    ConstIterator begin() const;
    ConstIterator end() const;

  private:
    Tree tree_;
};

/// A text as a key without regard to case. Deliberately, keys are ordered by their length in bytes first;
/// only keys of one length are collated (compareNoCase).
class TARN_API SMapStringCaseInsensitive {
  public:
    SMapStringCaseInsensitive() = default;
    SMapStringCaseInsensitive(const SString_t<char, 0>& text) noexcept : text_(text) {}
    SMapStringCaseInsensitive(const char* text) : text_(text) {}

    const SAnsiString& GetString() const noexcept { return text_; }
    bool operator<(const SMapStringCaseInsensitive& other) const;

  private:
    SAnsiString text_;
};

template <class K, class V>
void SIMap<K, V>::Insert(const K& key, const V& value) {
    tree_.insert_or_assign(key, value);
}

template <class K, class V>
void SIMap<K, V>::Insert(const SIMap& other) {
    for (const auto& [key, value] : other.tree_) Insert(key, value);
}

template <class K, class V>
void SIMap<K, V>::SetAt(const K& key, const V& value) {
    Insert(key, value);
}

template <class K, class V>
bool SIMap<K, V>::Lookup(const K& key, V& value) const {
    const auto found = tree_.find(key);
    if (found == tree_.end()) return false;
    value = found->second;
    return true;
}

template <class K, class V>
bool SIMap<K, V>::RemoveKey(const K& key) {
    return tree_.erase(key) != 0;
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
    return Iterator(tree_.find(key));
}

template <class K, class V>
typename SIMap<K, V>::ConstIterator SIMap<K, V>::Find(const K& key) const {
    return ConstIterator(tree_.find(key));
}

template <class K, class V>
typename SIMap<K, V>::Iterator SIMap<K, V>::BeginAt(const K& key) {
    return Iterator(tree_.lower_bound(key));
}

template <class K, class V>
typename SIMap<K, V>::ConstIterator SIMap<K, V>::BeginAt(const K& key) const {
    return ConstIterator(tree_.lower_bound(key));
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

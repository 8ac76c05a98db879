#pragma once

#include <cstdint>
#include <set>

/// An ordered set: every element once, in the order of their operator<.
///
/// The set owns its elements. An iterator is valid until its element is removed or the set goes; elements
/// cannot be changed in place. There is no locking: several threads may read one set, one may change it.
///
///     SISet<SAnsiString> names;
///     names.Insert("beta");
///     bool isNew = names.Insert("beta");                   // false
///     if (!names.Contains("alpha")) names.Insert("alpha");
///     for (const SAnsiString& name : names) Print(name);   // alpha beta
namespace TarnLibA500 {

/// A set of elements.
template <class T>
class SISet {
  public:
    /// A position in the set.
    using Iterator = typename std::set<T>::const_iterator;

    /// True when the element was not there yet.
    bool Insert(const T& element) { return elements_.insert(element).second; }
    /// True when the element is there.
    bool Contains(const T& element) const { return elements_.find(element) != elements_.end(); }
    /// True when the element was there.
    bool Remove(const T& element) { return elements_.erase(element) != 0; }
    /// Removes all elements.
    void RemoveAll() { elements_.clear(); }

    /// True when there are no elements.
    bool IsEmpty() const { return elements_.empty(); }
    /// How many elements there are.
    std::uint32_t GetCount() const { return static_cast<std::uint32_t>(elements_.size()); }
    /// The same as GetCount.
    std::uint32_t GetSize() const { return GetCount(); }

    /// The smallest element.
    Iterator Begin() const { return elements_.begin(); }
    /// The position after the largest element.
    Iterator End() const { return elements_.end(); }
    /// For range-for.
    Iterator begin() const { return elements_.begin(); }
    /// For range-for.
    Iterator end() const { return elements_.end(); }

  private:
    std::set<T> elements_;
};

}  // namespace TarnLibA500

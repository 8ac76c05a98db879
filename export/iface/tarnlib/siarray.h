#pragma once

#include <algorithm>
#include <cstdint>
#include <stdexcept>
#include <utility>
#include <vector>

#include "tarnlib/sstring.h"
#include "tarnlib/tarnapi.h"

/// An ordered array: elements by value, in one piece of memory.
///
/// The array owns its elements. Indexes and counts are elements and are not checked. References, pointers and
/// iterators are valid until an element is added or removed. There is no locking: several threads may read
/// one array, one may change it. A capacity that no memory could hold throws std::length_error.
///
///     SIArray<SAnsiString> words;
///     words.Add("alpha");
///     std::uint32_t second = words.Add("beta");            // 1
///     words.SetAt(second, "gamma");
///     words.Append(words);                                 // alpha gamma alpha gamma
///     words.RemoveAt(0, 2);
///     for (const SAnsiString& word : words) Print(word);
namespace TarnLibA500 {

// Members stand outside the class, so that the instances the library exports are imported by its clients and
// others are not exported by accident.

/// An array of elements.
template <class T>
class SIArray {
  public:
    /// A random-access position.
    using Iterator = typename std::vector<T>::iterator;
    /// The same for reading.
    using ConstIterator = typename std::vector<T>::const_iterator;

    /// No elements, and no allocation.
    SIArray();
    /// Copies of the elements.
    SIArray(const SIArray& other);
    /// Takes the elements and leaves the other array empty.
    SIArray(SIArray&& other) noexcept;
    /// Replaces all elements by copies.
    SIArray& operator=(const SIArray& other);
    /// Replaces all elements by the other array's, which is empty then.
    SIArray& operator=(SIArray&& other) noexcept;
    /// Destroys the elements.
    virtual ~SIArray();

    /// Appends an element and returns its index.
    std::uint32_t Add(const T& element);
    /// The same with an element that is not needed any more.
    std::uint32_t Add(T&& element);
    /// Appends all elements of an array, which may be this one, and returns the index of the first of them.
    std::uint32_t Append(const SIArray& other);
    /// Replaces all elements by another array's.
    void Copy(const SIArray& other);

    /// A copy of an element.
    T CopyAt(std::uint32_t index) const;
    /// An element.
    T& ElementAt(std::uint32_t index);
    /// An element, for reading.
    const T& ElementAt(std::uint32_t index) const;
    /// An element.
    T& operator[](std::uint32_t index);
    /// An element, for reading.
    const T& operator[](std::uint32_t index) const;
    /// Replaces an element.
    void SetAt(std::uint32_t index, const T& element);
    /// The first element; the others follow it.
    T* Data();
    /// The same for reading.
    const T* Data() const;

    /// The position of the first element.
    Iterator Begin();
    /// The position after the last element.
    Iterator End();
    /// The position of the first element, for reading.
    ConstIterator Begin() const;
    /// The position after the last element, for reading.
    ConstIterator End() const;
    /// For range-for.
    Iterator begin();
    /// For range-for.
    Iterator end();
    /// For range-for.
    ConstIterator begin() const;
    /// For range-for.
    ConstIterator end() const;

    /// How many elements there are.
    std::uint32_t GetSize() const;
    /// Changes the number of elements: new ones are made by default, surplus ones destroyed.
    void SetSize(std::uint32_t size);
    /// The same; when the size reaches the capacity, the capacity first grows by growBy elements, but at most
    /// by itself and at most by 4,096, if that is enough.
    void SetSize(std::uint32_t size, std::uint32_t growBy);
    /// Removes a number of elements from an index on.
    void RemoveAt(std::uint32_t index, std::uint32_t count = 1);
    /// Removes all elements; the memory stays for new ones.
    void RemoveAll();

  private:
    void CheckCapacity(std::uint64_t elements) const;

    std::vector<T> elements_;
};

template <class T>
SIArray<T>::SIArray() = default;

template <class T>
SIArray<T>::SIArray(const SIArray& other) = default;

template <class T>
SIArray<T>::SIArray(SIArray&& other) noexcept = default;

template <class T>
SIArray<T>& SIArray<T>::operator=(const SIArray& other) = default;

template <class T>
SIArray<T>& SIArray<T>::operator=(SIArray&& other) noexcept = default;

template <class T>
SIArray<T>::~SIArray() = default;

// The standard library's own texts differ from one to the next.
template <class T>
void SIArray<T>::CheckCapacity(std::uint64_t elements) const {
    if (elements > elements_.max_size()) throw std::length_error("vector<T> too long");
}

template <class T>
std::uint32_t SIArray<T>::Add(const T& element) {
    CheckCapacity(std::uint64_t{GetSize()} + 1);
    elements_.push_back(element);
    return GetSize() - 1;
}

template <class T>
std::uint32_t SIArray<T>::Add(T&& element) {
    CheckCapacity(std::uint64_t{GetSize()} + 1);
    elements_.push_back(std::move(element));
    return GetSize() - 1;
}

template <class T>
std::uint32_t SIArray<T>::Append(const SIArray& other) {
    if (&other == this) return Append(SIArray(other));
    const std::uint32_t oldSize = GetSize();
    CheckCapacity(std::uint64_t{oldSize} + other.GetSize());
    elements_.insert(elements_.end(), other.elements_.begin(), other.elements_.end());
    return oldSize;
}

template <class T>
void SIArray<T>::Copy(const SIArray& other) {
    elements_ = other.elements_;
}

template <class T>
T SIArray<T>::CopyAt(std::uint32_t index) const {
    return elements_[index];
}

template <class T>
T& SIArray<T>::ElementAt(std::uint32_t index) {
    return elements_[index];
}

template <class T>
const T& SIArray<T>::ElementAt(std::uint32_t index) const {
    return elements_[index];
}

template <class T>
T& SIArray<T>::operator[](std::uint32_t index) {
    return elements_[index];
}

template <class T>
const T& SIArray<T>::operator[](std::uint32_t index) const {
    return elements_[index];
}

template <class T>
void SIArray<T>::SetAt(std::uint32_t index, const T& element) {
    elements_[index] = element;
}

template <class T>
T* SIArray<T>::Data() {
    return elements_.data();
}

template <class T>
const T* SIArray<T>::Data() const {
    return elements_.data();
}

template <class T>
typename SIArray<T>::Iterator SIArray<T>::Begin() {
    return elements_.begin();
}

template <class T>
typename SIArray<T>::Iterator SIArray<T>::End() {
    return elements_.end();
}

template <class T>
typename SIArray<T>::ConstIterator SIArray<T>::Begin() const {
    return elements_.begin();
}

template <class T>
typename SIArray<T>::ConstIterator SIArray<T>::End() const {
    return elements_.end();
}

template <class T>
typename SIArray<T>::Iterator SIArray<T>::begin() {
    return elements_.begin();
}

template <class T>
typename SIArray<T>::Iterator SIArray<T>::end() {
    return elements_.end();
}

template <class T>
typename SIArray<T>::ConstIterator SIArray<T>::begin() const {
    return elements_.begin();
}

template <class T>
typename SIArray<T>::ConstIterator SIArray<T>::end() const {
    return elements_.end();
}

template <class T>
std::uint32_t SIArray<T>::GetSize() const {
    return static_cast<std::uint32_t>(elements_.size());
}

template <class T>
void SIArray<T>::SetSize(std::uint32_t size) {
    CheckCapacity(size);
    elements_.resize(size);
}

template <class T>
void SIArray<T>::SetSize(std::uint32_t size, std::uint32_t growBy) {
    constexpr std::size_t kMaxIncrement = 4096;
    const std::size_t capacity = elements_.capacity();
    if (size >= capacity) {
        const std::size_t increment = std::min({std::size_t{growBy}, capacity, kMaxIncrement});
        const std::uint64_t grown = std::uint64_t{capacity} + increment;
        if (grown >= size) {
            CheckCapacity(grown);
            elements_.reserve(static_cast<std::size_t>(grown));
        }
    }
    SetSize(size);
}

template <class T>
void SIArray<T>::RemoveAt(std::uint32_t index, std::uint32_t count) {
    const Iterator first = elements_.begin() + static_cast<std::ptrdiff_t>(index);
    elements_.erase(first, first + static_cast<std::ptrdiff_t>(count));
}

template <class T>
void SIArray<T>::RemoveAll() {
    elements_.clear();
}

extern template class TARN_API SIArray<SAnsiString>;
extern template class TARN_API SIArray<SAnsiStringCI>;

}  // namespace TarnLibA500

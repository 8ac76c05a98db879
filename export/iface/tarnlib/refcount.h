#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>

/// Objects that count who holds them, and the pointer that does the counting.
///
/// An object starts with count 0, is made with new, and deletes itself when the last pointer goes, in the
/// module that made it. Pointers to one object may be copied and destroyed by several threads at once; one
/// pointer must not be changed by two threads. Two objects that point at each other keep each other alive.
///
///     class Section : public CRefCount { ... };
///
///     CRefPtr<Section> section(new Section("main"));       // count 1
///     sections.Add(section);                               // count 2
///     section->Rename("other");
///     section = nullptr;                                   // the array still holds it
namespace TarnLibA500 {

/// The base of objects that are counted.
class CRefCount {
  public:
    /// Counts one more holder and returns how many there are.
    std::int32_t AddRef() const noexcept { return refCount_.fetch_add(1, std::memory_order_relaxed) + 1; }
    /// Counts one holder less and returns how many are left; with the last one the object is deleted.
    std::int32_t Release() const noexcept {
        const std::int32_t left = refCount_.fetch_sub(1, std::memory_order_acq_rel) - 1;
        if (left == 0) delete this;
        return left;
    }
    /// How many holders there are at the moment.
    std::int32_t GetRefCount() const noexcept { return refCount_.load(std::memory_order_acquire); }

  protected:
    /// No holders yet.
    CRefCount() noexcept = default;
    /// A copy has holders of its own: none yet.
    CRefCount(const CRefCount&) noexcept {}
    /// Leaves the count alone.
    CRefCount& operator=(const CRefCount&) noexcept { return *this; }
    /// Only Release deletes.
    virtual ~CRefCount() = default;

  private:
    mutable std::atomic<std::int32_t> refCount_{0};
};

/// Holds an object that derives from CRefCount, or nothing.
template <class T>
class CRefPtr {
  public:
    /// Holds nothing.
    CRefPtr() noexcept = default;
    /// Counts the object; null is allowed.
    CRefPtr(T* object) noexcept : object_(object) { Hold(); }
    /// Holds the same object.
    CRefPtr(const CRefPtr& other) noexcept : object_(other.object_) { Hold(); }
    /// Takes the object and leaves the other pointer without one.
    CRefPtr(CRefPtr&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    /// From a pointer to a derived class.
    template <class Derived>
    requires std::is_convertible_v<Derived*, T*> CRefPtr(const CRefPtr<Derived>& other)
    noexcept : object_(other.get()) { Hold(); }
    /// Lets go of the object, which is deleted with its last holder.
    ~CRefPtr() {
        if (object_ != nullptr) object_->Release();
    }
    /// Lets go of the old object once the new one is held.
    CRefPtr& operator=(const CRefPtr& other) noexcept {
        CRefPtr(other).swap(*this);
        return *this;
    }
    /// Takes the object and leaves the other pointer without one.
    CRefPtr& operator=(CRefPtr&& other) noexcept {
        CRefPtr(std::move(other)).swap(*this);
        return *this;
    }
    /// Exchanges the objects.
    void swap(CRefPtr& other) noexcept { std::swap(object_, other.object_); }

    /// The object; null when there is none.
    T* get() const noexcept { return object_; }
    /// The object, which must be there.
    T& operator*() const noexcept { return *object_; }
    /// The object, which must be there.
    T* operator->() const noexcept { return object_; }
    /// True when an object is held.
    explicit operator bool() const noexcept { return object_ != nullptr; }

    /// By identity of the object.
    bool operator==(const CRefPtr& other) const noexcept { return object_ == other.object_; }
    /// True when nothing is held.
    bool operator==(std::nullptr_t) const noexcept { return object_ == nullptr; }

  private:
    void Hold() const noexcept {
        if (object_ != nullptr) object_->AddRef();
    }

    T* object_ = nullptr;
};

}  // namespace TarnLibA500

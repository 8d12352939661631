#pragma once
// MList, a growing array, and MStaticList, the same interface on a fixed one. An index out of bounds, and one
// element too many for a fixed array, raise "Index out of range."

#include <algorithm>
#include <cstring>
#include <new>
#include <type_traits>
#include <utility>

#include "core/MException.h"

// True for types whose objects may be moved to another address as plain bytes.
template <typename T>
constexpr bool MIsRelocatable = std::is_trivially_copyable_v<T>;
template <>
inline constexpr bool MIsRelocatable<MString> = true;

// The interface of both lists, over the storage of `List`, which gives GetItems() and GrowTo(count).
template <typename T, typename List>
class MListOperations {
 public:
  MListOperations(const MListOperations&) = delete;
  MListOperations& operator=(const MListOperations&) = delete;

  int32_t GetCount() const noexcept { return Self().count_; }
  bool IsEmpty() const noexcept { return GetCount() == 0; }

  T& operator[](int32_t index) { return begin()[Checked(index)]; }
  const T& operator[](int32_t index) const { return begin()[Checked(index)]; }

  T* begin() noexcept { return Self().GetItems(); }
  T* end() noexcept { return begin() + GetCount(); }
  const T* begin() const noexcept { return Self().GetItems(); }
  const T* end() const noexcept { return begin() + GetCount(); }

  // First index of an equal element, or -1.
  int32_t Find(const T& value) const {
    const T* const found = std::find(begin(), end(), value);
    return found == end() ? -1 : static_cast<int32_t>(found - begin());
  }

  void Add(T value) {
    Self().GrowTo(GetCount() + 1);
    new (end()) T(std::move(value));
    ++Self().count_;
  }

  // Index 0 to the count.
  void Insert(int32_t index, T value) {
    if (index != GetCount()) Checked(index);
    if constexpr (MIsRelocatable<T>) {  // as bytes, many times as fast as by moves
      static_assert(std::is_nothrow_move_constructible_v<T>);
      Self().GrowTo(GetCount() + 1);
      T* const place = begin() + index;
      std::memmove(static_cast<void*>(place + 1), place, static_cast<std::size_t>(end() - place) * sizeof(T));
      new (place) T(std::move(value));
      ++Self().count_;
    } else {
      Add(std::move(value));
      std::rotate(begin() + index, end() - 1, end());
    }
  }

  void Remove(int32_t index) {
    Checked(index);
    std::move(begin() + index + 1, end(), begin() + index);
    RemoveLast();
  }

  // Removes the first equal element; false if there is none.
  bool RemoveValue(const T& value) {
    const int32_t index = Find(value);
    if (index >= 0) Remove(index);
    return index >= 0;
  }

  // Destroys the elements and keeps the memory.
  void Clear() noexcept {
    while (!IsEmpty()) RemoveLast();
  }

 protected:
  MListOperations() noexcept = default;
  ~MListOperations() = default;

  void AddAll(const MListOperations& other) {
    Self().GrowTo(other.GetCount());
    for (const T& item : other) Add(item);
  }

 private:
  List& Self() noexcept { return static_cast<List&>(*this); }
  const List& Self() const noexcept { return static_cast<const List&>(*this); }
  int32_t Checked(int32_t index) const {
    if (index < 0 || index >= GetCount()) MThrowIndexOutOfRange();
    return index;
  }
  void RemoveLast() noexcept { begin()[--Self().count_].~T(); }
};

// Members: capacity, elements, count. Grows by doubling through the allocator table's `reallocate`, so its
// elements must be relocatable. Mode 2 is the one mode there is.
template <typename T, int Mode = 2>
class MList final : public MListOperations<T, MList<T, Mode>> {
  static_assert(Mode == 2);
  static_assert(MIsRelocatable<T>, "elements move as bytes");
  static_assert(alignof(T) <= alignof(std::max_align_t));
  using Operations = MListOperations<T, MList<T, Mode>>;
  friend Operations;

 public:
  MList() noexcept = default;
  MList(const MList& other) : MList() { Operations::AddAll(other); }
  MList(MList&& other) noexcept : MList() { Swap(other); }
  MList& operator=(MList other) noexcept {
    Swap(other);
    return *this;
  }
  ~MList() {
    Operations::Clear();
    if (items_) MRelease(items_);
  }

  // Makes room for `count` elements at once.
  void Reserve(int32_t count) { GrowTo(count); }

  void Swap(MList& other) noexcept {
    std::swap(capacity_, other.capacity_);
    std::swap(items_, other.items_);
    std::swap(count_, other.count_);
  }

 private:
  T* GetItems() const noexcept { return items_; }
  void GrowTo(int32_t count) {
    if (count <= capacity_) return;
    const int64_t wanted = std::max<int64_t>(count, 2 * int64_t{capacity_});
    if (wanted > 0x7FFFFFFF / static_cast<int64_t>(sizeof(T))) MThrowOutOfMemory();
    const std::size_t size = static_cast<std::size_t>(wanted) * sizeof(T);
    items_ = static_cast<T*>(MReallocate(static_cast<void*>(items_), size));
    capacity_ = static_cast<int32_t>(wanted);
  }

  int32_t capacity_ = 0;
  T* items_ = nullptr;
  int32_t count_ = 0;
};

// Room for N elements inside the object.
template <typename T, int32_t N>
class MStaticList final : public MListOperations<T, MStaticList<T, N>> {
  static_assert(N > 0);
  using Operations = MListOperations<T, MStaticList<T, N>>;
  friend Operations;

 public:
  MStaticList() noexcept = default;
  MStaticList(const MStaticList& other) : MStaticList() { Operations::AddAll(other); }
  MStaticList& operator=(const MStaticList& other) {
    if (this != &other) {
      Operations::Clear();
      Operations::AddAll(other);
    }
    return *this;
  }
  ~MStaticList() { Operations::Clear(); }

 private:
  T* GetItems() noexcept { return reinterpret_cast<T*>(bytes_); }
  const T* GetItems() const noexcept { return reinterpret_cast<const T*>(bytes_); }
  void GrowTo(int32_t count) const {
    if (count > N) MThrowIndexOutOfRange();
  }

  alignas(T) unsigned char bytes_[sizeof(T) * static_cast<std::size_t>(N)];
  int32_t count_ = 0;
};

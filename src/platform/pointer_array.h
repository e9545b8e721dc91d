// The growable array of pointers on which every collection of the component is built.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <new>
#include <stdexcept>

namespace depot {

// Thrown when a reference to one of an array's own slots is appended to that array. It carries the
// code E_FAIL and marks a programming error, never a condition of the data.
class SelfReferencingAdd : public std::logic_error {
public:
    SelfReferencingAdd() : std::logic_error("an array's own slot was appended to it") {}
    static constexpr std::uint32_t kCode = 0x80004005;
};

// Pointers in the order in which they were added. The array never deletes what they point to: the
// collection around it says who owns the elements. It grows by doubling from one slot and does
// not grow when that would take more than `MaxCount` slots.
template <class T, std::size_t MaxCount = 0x0FFFFFFF>
class PointerArray {
public:
    std::size_t Count() const { return count_; }
    std::size_t Capacity() const { return capacity_; }
    T* At(std::size_t index) const { return slots_[index]; }
    T** begin() const { return slots_.get(); }
    T** end() const { return slots_.get() + count_; }

    // Appends a pointer. Returns false, with the array as it was, when it cannot grow.
    bool Add(T* const& element) {
        if (IsOwnSlot(&element)) throw SelfReferencingAdd();
        if (count_ == capacity_ && !Grow()) return false;
        slots_[count_++] = element;
        return true;
    }

    // Takes out the first slot that holds `element`, keeping the order of the rest. Returns false
    // when there is none.
    bool Remove(const T* element) {
        T** const found = std::find(begin(), end(), element);
        if (found == end()) return false;
        std::move(found + 1, end(), found);
        --count_;
        return true;
    }

    // Frees the slots.
    void Clear() {
        slots_.reset();
        count_ = 0;
        capacity_ = 0;
    }

    // Takes over the other array's slots; the other array gets this one's.
    void Swap(PointerArray& other) {
        std::swap(slots_, other.slots_);
        std::swap(count_, other.count_);
        std::swap(capacity_, other.capacity_);
    }

private:
    bool IsOwnSlot(T* const* slot) const {
        const std::less<const void*> before;
        return !before(slot, begin()) && before(slot, end());
    }

    bool Grow() {
        const std::size_t wanted = capacity_ == 0 ? 1 : capacity_ * 2;
        if (wanted > MaxCount) return false;
        std::unique_ptr<T*[]> grown(new (std::nothrow) T*[wanted]);
        if (!grown) return false;
        std::copy(begin(), end(), grown.get());
        slots_ = std::move(grown);
        capacity_ = wanted;
        return true;
    }

    std::unique_ptr<T*[]> slots_;
    std::size_t count_ = 0;
    std::size_t capacity_ = 0;
};

}  // namespace depot

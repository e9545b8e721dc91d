// What the four collections of the model do alike with the elements of their pointer arrays.
#pragma once

#include <memory>

#include "platform/pointer_array.h"

namespace depot {

// Appends `element` itself, or a clone of it when `clone` is set. The element is dropped silently
// when the array cannot grow: a clone is then deleted, `element` itself stays the caller's.
// Returns whether the array grew.
template <class T>
bool AddElement(PointerArray<T>& array, T* element, bool clone) {
    if (element == nullptr) return false;
    if (!clone) return array.Add(element);
    std::unique_ptr<T> copy = element->Clone();
    if (!copy || !array.Add(copy.get())) return false;
    static_cast<void>(copy.release());  // the collection's from here on
    return true;
}

// Appends an element that the array's collection is to own; it is deleted when the array cannot
// grow. Returns the element, or null when it was dropped.
template <class T>
T* AddOwned(PointerArray<T>& array, std::unique_ptr<T> element) {
    T* const added = element.get();
    if (added == nullptr || !array.Add(added)) return nullptr;
    static_cast<void>(element.release());  // the collection's from here on
    return added;
}

// Appends a clone of each element of the other array, in order; what cannot be cloned is left out.
template <class T>
void CopyElements(PointerArray<T>& array, const PointerArray<T>& other) {
    // By index: a list may be copied onto itself and then grows while it is read.
    for (std::size_t index = 0, count = other.Count(); index < count; ++index) {
        AddElement(array, other.At(index), true);
    }
}

// Empties the array and, when `deleteElements` is set, deletes what it held.
template <class T>
void RemoveAllElements(PointerArray<T>& array, bool deleteElements) {
    PointerArray<T> removed;
    removed.Swap(array);
    if (!deleteElements) return;
    for (T* element : removed) std::default_delete<T>()(element);
}

// Takes the element out of the array, keeping the order of the rest, and deletes it.
//
// Kept: the element is deleted also when the array does not hold it.
template <class T>
void RemoveElement(PointerArray<T>& array, T* element) {
    if (element == nullptr) return;
    array.Remove(element);
    std::default_delete<T>()(element);
}

}  // namespace depot

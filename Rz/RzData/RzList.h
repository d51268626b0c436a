// RzList<T>: a growable double-ended sequence stored as a ring buffer.
//
// Element i lives in slot (head + i) modulo the capacity of `storage`. A new
// list has room for 10 elements; adding to a full list resizes it to
// 2 * count + 1 elements (21, 43, 87, ...) and puts element 0 in slot 0.
// Slots outside the used range keep whatever was last assigned to them.
// Indexing is bounds-checked and raises "RzIndexError" (7, unit "RzList").
#ifndef RZ_RZDATA_RZLIST_H
#define RZ_RZDATA_RZLIST_H

#include <stdint.h>

#include <Rz/RzCore/RzError.h>
#include <Rz/RzData/RzArray.h>

template <class T>
class RzList {
public:
    RzList() : count(0), head(0), tail(-1), storage(10) {}
    // Keeps the ring layout of `other` as it is.
    RzList(const RzList& other)
        : count(other.count), head(other.head), tail(other.tail), storage(other.storage) {}
    // Linearises: element 0 goes to slot 0.
    RzList& operator=(const RzList& other) {
        if (this == &other) return *this;
        count = other.count;
        storage.ReSize(other.storage.count);
        head = 0;
        tail = count - 1;
        for (int32_t i = 0; i < count; ++i) storage.data[i] = other.storage.data[other.Slot(i)];
        return *this;
    }

    T& operator[](int i) {
        if (i < 0 || i >= count) RzRaise(kRzIndexError, "RzIndexError", "RzList", __LINE__);
        return storage.data[Slot(i)];
    }
    const T& operator[](int i) const {
        if (i < 0 || i >= count) RzRaise(kRzIndexError, "RzIndexError", "RzList", __LINE__);
        return storage.data[Slot(i)];
    }

    void AddBack(const T& x) {
        if (count < storage.count) {
            tail = (tail + 1) % storage.count;
            storage.data[tail] = x;
        } else {
            T copy(x);  // x may be an element of this list
            ReSize(2 * count + 1);
            tail = (tail + 1) % storage.count;
            storage.data[tail] = copy;
        }
        ++count;
    }

    void AddFront(const T& x) {
        if (count >= storage.count) {
            T copy(x);
            ReSize(2 * count + 1);
            PutFront(copy);
        } else {
            PutFront(x);
        }
    }

    // Moves the elements behind i down by one place; the last step reads the
    // slot just behind the last element.
    void Remove(int i) {
        if (i < 0 || i >= count) RzRaise(kRzIndexError, "RzIndexError", "RzList", __LINE__);
        const int32_t capacity = storage.count;
        for (int32_t j = i; j < count; ++j)
            storage.data[Slot(j)] = storage.data[(head + j + 1) % capacity];
        tail = (tail - 1 + capacity) % capacity;
        --count;
    }

    // Keeps the first min(n, count) elements, linearised. No effect when n
    // equals the element count (not the capacity).
    void ReSize(int n) {
        if (n == count) return;
        if (n < 0) n = 0;
        const int32_t kept = n < count ? n : count;
        RzArray<T> block(n);
        for (int32_t i = 0; i < kept; ++i) block.data[i] = storage.data[Slot(i)];
        storage = block;
        head = 0;
        count = kept;
        tail = count - 1;
    }

    int GetCount() const { return count; }

    int32_t count;       // elements in the list
    int32_t head;        // slot of element 0
    int32_t tail;        // slot of the last element; -1 before the first one
    RzArray<T> storage;  // the ring; its count is the capacity

private:
    int32_t Slot(int32_t i) const { return (head + i) % storage.count; }
    void PutFront(const T& x) {
        head = head - 1 < 0 ? storage.count - 1 : head - 1;
        storage.data[head] = x;
        ++count;
        if (tail == -1) tail = head;
    }
};

#endif

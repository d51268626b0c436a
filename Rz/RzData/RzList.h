// RzList<T>: a growable double-ended sequence stored as a ring buffer.
//
// Element i lives in slot (head + i) modulo the capacity of `storage`. A new
// list has room for 10 elements; adding to a full list resizes it to
// 2 * count + 1 elements (21, 43, 87, ...) and puts element 0 in slot 0.
// Slots outside the used range keep whatever was last assigned to them.
// Indexing is bounds-checked and raises "RzIndexError" (7, unit "RzList").
//
// Failures: an exception from an element's constructor or assignment (or
// std::bad_alloc) propagates. ReSize, AddBack and AddFront then keep the
// list's elements as they were (a growth that succeeded may have linearised
// the ring); Remove and assignment may leave elements half moved.
#ifndef RZ_RZDATA_RZLIST_H
#define RZ_RZDATA_RZLIST_H

#include <stdint.h>

#include <type_traits>
#include <utility>

#include <Rz/RzCore/RzError.h>
#include <Rz/RzData/RzArray.h>

template <class T>
class RzList {
public:
    RzList() : count(0), head(0), tail(-1), storage(10) {}
    // An empty list with room for `capacity` elements.
    explicit RzList(int capacity) : count(0), head(0), tail(-1), storage(capacity) {}
    // Keeps the ring layout of `other` as it is.
    RzList(const RzList& other)
        : count(other.count), head(other.head), tail(other.tail), storage(other.storage) {}
    // Takes `other`'s capacity and linearises: element 0 goes to slot 0.
    // Slots beyond the copied elements keep their old values.
    RzList& operator=(const RzList& other) {
        if (this == &other) return *this;
        storage.ReSize(other.storage.count);  // first, so that a failure changes nothing
        count = other.count;
        head = 0;
        tail = count - 1;
        for (int32_t i = 0; i < count; ++i) storage.data[i] = other.storage.data[other.Slot(i)];
        return *this;
    }

    T& operator[](int i) {
        if (i < 0 || i >= count) RzRaiseCode(kRzIndexError, "RzList", __LINE__);
        return storage.data[Slot(i)];
    }
    const T& operator[](int i) const {
        if (i < 0 || i >= count) RzRaiseCode(kRzIndexError, "RzList", __LINE__);
        return storage.data[Slot(i)];
    }

    // Appends x; a full list first grows to 2 * count + 1 elements.
    void AddBack(const T& x) {
        if (count < storage.count) {
            PutBack(x);
        } else {
            T copy;  // x may be an element of this list
            copy = x;
            ReSize(2 * count + 1);
            PutBack(copy);
        }
    }

    // The same, moving x into the list.
    void AddBack(T&& x) {
        if (count < storage.count) {
            PutBack(std::move(x));
        } else {
            T kept(std::move(x));
            ReSize(2 * count + 1);
            PutBack(std::move(kept));
        }
    }

    // Prepends x; a full list first grows to 2 * count + 1 elements.
    void AddFront(const T& x) {
        if (count < storage.count) {
            PutFront(x);
        } else {
            T copy;
            copy = x;
            ReSize(2 * count + 1);
            PutFront(copy);
        }
    }

    // Moves the elements behind i down by one place, each taking the value of
    // the next; the last one takes a copy of the slot just behind it (element
    // 0's slot when the list is full).
    void Remove(int i) {
        if (i < 0 || i >= count) RzRaiseCode(kRzIndexError, "RzList", __LINE__);
        const int32_t capacity = storage.count;
        T* slots = storage.data;
        int32_t to = Slot(i);
        for (int32_t j = i; j < count; ++j) {
            const int32_t from = to + 1 == capacity ? 0 : to + 1;
            // The slot taken from is overwritten by the next step, so its value
            // may be moved; the last step must copy.
            if (j + 1 < count) {
                Take(slots[to], slots[from], Moves());
            } else {
                slots[to] = slots[from];
            }
            to = from;
        }
        tail = tail == 0 ? capacity - 1 : tail - 1;
        --count;
    }

    // Keeps the first min(n, count) elements, linearised. No effect when n
    // equals the element count (not the capacity).
    void ReSize(int n) {
        if (n == count) return;
        if (n < 0) n = 0;
        const int32_t kept = n < count ? n : count;
        RzArray<T> block(n);
        for (int32_t i = 0; i < kept; ++i) Take(block.data[i], storage.data[Slot(i)], Moves());
        storage.Swap(block);  // cannot fail; the old ring goes with `block`
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
    // Elements whose move assignment cannot fail are moved where the source
    // is overwritten or destroyed next; others are copied, so that a failure
    // leaves the list's values intact.
    typedef std::integral_constant<bool, std::is_nothrow_move_assignable<T>::value> Moves;
    static void Take(T& to, T& from, std::true_type) { to = std::move(from); }
    static void Take(T& to, T& from, std::false_type) { to = from; }

    // head < capacity and i < count <= capacity, so one subtraction wraps.
    int32_t Slot(int32_t i) const {
        const int32_t slot = head + i;
        return slot >= storage.count ? slot - storage.count : slot;
    }
    // The slot is assigned before the bookkeeping changes, so that a failing
    // assignment leaves the list as it was.
    template <class U>
    void PutBack(U&& x) {
        const int32_t slot = tail + 1 == storage.count ? 0 : tail + 1;
        storage.data[slot] = std::forward<U>(x);
        tail = slot;
        ++count;
    }
    void PutFront(const T& x) {
        const int32_t slot = head - 1 < 0 ? storage.count - 1 : head - 1;
        storage.data[slot] = x;
        head = slot;
        ++count;
        if (tail == -1) tail = head;
    }
};

#endif

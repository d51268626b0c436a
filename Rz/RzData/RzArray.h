// RzArray<T>: a fixed-size array of values that is resized explicitly.
//
// Elements are default-constructible and assignable values, stored by value
// and copied with their own assignment. `count` is the number of elements.
// Indexing is bounds-checked and raises "RzIndexError" (7, unit "RzArray").
//
// Growing an array one element at a time is amortised: the array keeps spare
// room behind its elements, so ReSize(count + 1) usually constructs one new
// element in place. Which elements exist and when they are destroyed is as if
// every ReSize built a new block: shrinking destroys the elements beyond the
// new size at once, and Clear() destroys all of them.
#ifndef RZ_RZDATA_RZARRAY_H
#define RZ_RZDATA_RZARRAY_H

#include <stddef.h>
#include <stdint.h>

#include <new>
#include <utility>

#include <Rz/RzCore/RzError.h>

template <class T>
class RzArray {
public:
    // n default-constructed elements (none for n <= 0).
    explicit RzArray(int n = 0) : count(0), data(nullptr), capacity(0) { ReSize(n); }
    RzArray(const RzArray& other) : count(0), data(nullptr), capacity(0) { CopyFrom(other); }
    RzArray& operator=(const RzArray& other) {
        if (this != &other) {
            Clear();
            CopyFrom(other);
        }
        return *this;
    }
    ~RzArray() { Clear(); }

    T& operator[](int i) {
        if (i < 0 || i >= count) RzRaise(kRzIndexError, "RzIndexError", "RzArray", __LINE__);
        return data[i];
    }
    const T& operator[](int i) const {
        if (i < 0 || i >= count) RzRaise(kRzIndexError, "RzIndexError", "RzArray", __LINE__);
        return data[i];
    }

    // Keeps the first min(count, n) elements in order; new ones are
    // default-constructed. No effect when n equals count.
    void ReSize(int n) {
        if (n < 0) n = 0;
        if (n == count) return;
        if (n < count) {
            DestroyRange(n, count);
            count = n;
            if (n <= capacity / 4) Reallocate(n);
            return;
        }
        if (n > capacity) {
            int32_t grown = capacity + capacity / 2;
            if (grown < 4) grown = 4;
            Reallocate(n > grown ? n : grown);
        }
        for (; count < n; ++count) new (data + count) T();
    }

    // Destroys all elements and frees the block.
    void Clear() {
        DestroyRange(0, count);
        ::operator delete(data);
        data = nullptr;
        count = 0;
        capacity = 0;
    }

    int GetCount() const { return count; }

    int32_t count;  // number of elements
    T* data;        // the elements (null when there are none and no room)

private:
    void DestroyRange(int32_t from, int32_t to) {
        for (int32_t i = to; i-- > from;) data[i].~T();
    }
    // Moves the elements into a block of the given room.
    void Reallocate(int32_t room) {
        T* block = room > 0 ? static_cast<T*>(::operator new(sizeof(T) * size_t(room))) : nullptr;
        int32_t built = 0;
        try {
            for (; built < count; ++built) {
                new (block + built) T();
                block[built] = std::move(data[built]);
            }
        } catch (...) {
            for (int32_t i = built; i-- > 0;) block[i].~T();
            ::operator delete(block);
            throw;
        }
        DestroyRange(0, count);
        ::operator delete(data);
        data = block;
        capacity = room;
    }
    void CopyFrom(const RzArray& other) {
        ReSize(other.count);
        for (int32_t i = 0; i < count; ++i) data[i] = other.data[i];
    }

    int32_t capacity;  // elements the block can hold
};

#endif

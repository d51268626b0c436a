// RzArray<T>: a fixed-size array of values that is resized explicitly.
//
// Elements are default-constructible and assignable values, stored by value
// and copied with their own assignment. `count` is the number of elements.
// Indexing is bounds-checked and raises "RzIndexError" (7, unit "RzArray").
//
// Growing an array one element at a time is amortised: the array keeps spare
// room behind its elements, so ReSize(count + 1) usually constructs one new
// element in place. Which elements exist, their values and when they are
// destroyed are as if every ReSize built a new block: shrinking destroys the
// elements beyond the new size at once, and Clear() destroys all of them.
// Spare room holds no elements (it is raw memory).
//
// Failures: an exception from an element's constructor or assignment (or
// std::bad_alloc) propagates. ReSize then leaves the array as it was; a copy
// or assignment that fails leaves the target empty (its old elements were
// already destroyed).
#ifndef RZ_RZDATA_RZARRAY_H
#define RZ_RZDATA_RZARRAY_H

#include <stddef.h>
#include <stdint.h>

#include <new>
#include <type_traits>
#include <utility>

#include <Rz/RzCore/RzError.h>

template <class T>
class RzArray {
public:
    // n default-constructed elements (none for n <= 0).
    explicit RzArray(int n = 0) : count(0), data(nullptr), capacity(0) {
        try {
            ReSize(n);
        } catch (...) {
            Clear();  // the destructor does not run for a failed constructor
            throw;
        }
    }
    // Default-constructs each element, then assigns it from `other`.
    RzArray(const RzArray& other) : count(0), data(nullptr), capacity(0) { CopyFrom(other); }
    // Destroys all own elements, then builds copies of `other`'s.
    RzArray& operator=(const RzArray& other) {
        if (this != &other) {
            Clear();
            CopyFrom(other);
        }
        return *this;
    }
    ~RzArray() { Clear(); }

    T& operator[](int i) {
        if (i < 0 || i >= count) RzRaiseCode(kRzIndexError, "RzArray", __LINE__);
        return data[i];
    }
    const T& operator[](int i) const {
        if (i < 0 || i >= count) RzRaiseCode(kRzIndexError, "RzArray", __LINE__);
        return data[i];
    }

    // Keeps the first min(count, n) elements in order; new ones are
    // default-constructed. No effect when n equals count; n < 0 counts as 0.
    void ReSize(int n) {
        if (n < 0) n = 0;
        if (n == count) return;
        if (n < count) {
            // Give memory back once the room is mostly unused.
            if (n <= capacity / 4) {
                Reallocate(n, n);
            } else {
                DestroyRange(n, count);
            }
            count = n;
            return;
        }
        if (n > capacity) {
            int64_t grown = int64_t(capacity) + capacity / 2;
            if (grown < 4) grown = 4;
            Reallocate(n > grown ? n : int32_t(grown > INT32_MAX ? INT32_MAX : grown), count);
        }
        const int32_t old = count;
        try {
            for (; count < n; ++count) new (data + count) T();
        } catch (...) {
            DestroyRange(old, count);
            count = old;
            throw;
        }
    }

    // Destroys all elements and frees the block.
    void Clear() {
        DestroyRange(0, count);
        ::operator delete(data);
        data = nullptr;
        count = 0;
        capacity = 0;
    }

    // Exchanges the contents of two arrays; no element is copied or destroyed.
    void Swap(RzArray& other) {
        std::swap(count, other.count);
        std::swap(data, other.data);
        std::swap(capacity, other.capacity);
    }

    int GetCount() const { return count; }

    int32_t count;  // number of elements
    T* data;        // the elements (null when there are none and no room)

private:
    // Elements whose move assignment cannot throw are moved into a new block
    // (and moved back if the new block cannot be completed); others are
    // copied, so that a failure leaves the old elements untouched.
    typedef std::integral_constant<bool, std::is_nothrow_move_assignable<T>::value> Moves;

    void DestroyRange(int32_t from, int32_t to) {
        for (int32_t i = to; i-- > from;) data[i].~T();
    }
    static void Transfer(T& to, T& from, std::true_type) { to = std::move(from); }
    static void Transfer(T& to, T& from, std::false_type) { to = from; }
    static void Restore(T& to, T& from, std::true_type) { to = std::move(from); }
    static void Restore(T&, T&, std::false_type) {}

    // Carries the first `keep` elements into a block with room for `room`,
    // then destroys all old elements and frees the old block. Leaves the
    // array as it was when anything throws.
    void Reallocate(int32_t room, int32_t keep) {
        T* block = room > 0 ? static_cast<T*>(::operator new(sizeof(T) * size_t(room))) : nullptr;
        int32_t built = 0;
        try {
            for (; built < keep; ++built) {
                new (block + built) T();
                try {
                    Transfer(block[built], data[built], Moves());
                } catch (...) {
                    block[built].~T();
                    throw;
                }
            }
        } catch (...) {
            while (built-- > 0) {
                Restore(data[built], block[built], Moves());
                block[built].~T();
            }
            ::operator delete(block);
            throw;
        }
        DestroyRange(0, count);
        ::operator delete(data);
        data = block;
        capacity = room;
    }

    void CopyFrom(const RzArray& other) {
        try {
            ReSize(other.count);
            for (int32_t i = 0; i < count; ++i) data[i] = other.data[i];
        } catch (...) {
            Clear();
            throw;
        }
    }

    int32_t capacity;  // elements the block can hold
};

#endif

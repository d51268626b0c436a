// Drives an RzList and an RzArray of strings with operations read from the
// input and checks them after each step against a model of their documented
// layout: the list slot by slot (ring, head, tail, capacity, what Remove and
// the growth steps leave in unused slots), the array element by element.
// Strings that share one buffer are counted: every element holding the probe
// text must share the probe's buffer, and none may keep it once the model
// has dropped it. Indexing outside the elements must raise "RzIndexError"
// with the container's unit, and a failed Remove must change nothing.
//
// Input: pairs of bytes, an operation and its argument.
#include <stdint.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <climits>
#include <string>
#include <vector>

#include <Rz/RzCore/RzString.h>
#include <Rz/RzData/RzArray.h>
#include <Rz/RzData/RzList.h>

#include "support/RzContainerTestSupport.h"

namespace {

void Check(bool ok) {
    if (!ok) abort();
}

// The list as documented: slots of the ring, element 0 at `head`.
struct ListModel {
    std::vector<std::string> slots = std::vector<std::string>(10);
    int32_t count = 0, head = 0, tail = -1;

    int32_t Slot(int32_t i) const { return (head + i) % static_cast<int32_t>(slots.size()); }
    void ReSize(int32_t n) {
        if (n == count) return;
        if (n < 0) n = 0;
        std::vector<std::string> block(static_cast<size_t>(n));
        const int32_t kept = std::min(n, count);
        for (int32_t i = 0; i < kept; ++i) block[i] = slots[Slot(i)];
        slots.swap(block);
        head = 0;
        count = kept;
        tail = count - 1;
    }
    void Add(std::string x, bool front) {  // a copy: x may be one of the slots
        if (count == static_cast<int32_t>(slots.size())) ReSize(2 * count + 1);
        const int32_t capacity = static_cast<int32_t>(slots.size());
        if (front) {
            head = head == 0 ? capacity - 1 : head - 1;
            slots[head] = x;
            if (tail == -1) tail = head;
        } else {
            tail = tail + 1 == capacity ? 0 : tail + 1;
            slots[tail] = x;
        }
        ++count;
    }
    // Each element behind i takes the next one's value; the last takes a
    // copy of the slot behind it.
    void Remove(int32_t i) {
        for (int32_t j = i; j < count; ++j) slots[Slot(j)] = slots[Slot(j + 1)];
        const int32_t capacity = static_cast<int32_t>(slots.size());
        tail = tail == 0 ? capacity - 1 : tail - 1;
        --count;
    }
    // Assignment: the capacity of `other`, element 0 in slot 0; slots beyond
    // the elements keep their values.
    void Assign(const ListModel& other) {
        std::vector<std::string> block(other.slots.size());
        for (size_t k = 0; k < block.size() && k < slots.size(); ++k) block[k] = slots[k];
        for (int32_t i = 0; i < other.count; ++i) block[i] = other.slots[other.Slot(i)];
        slots.swap(block);
        count = other.count;
        head = 0;
        tail = count - 1;
    }
};

template <class Container>
void CheckIndexing(Container& c, const char* unit) {
    const Container& constant = c;
    for (int i : {-1, static_cast<int>(c.count), INT_MIN, INT_MAX}) {
        for (int access = 0; access < 2; ++access) {
            bool raised = false;
            try {
                (void)(access ? constant[i] : c[i]);
            } catch (const RzError& e) {
                raised = e.GetErr() == kRzIndexError && strcmp(e.GetFileName(), unit) == 0;
            }
            Check(raised);
        }
    }
}

bool Same(const RzString& s, const std::string& model) {
    return strcmp(s.c_str(), model.c_str()) == 0;
}

void CheckList(RzList<RzString>& list, const ListModel& model) {
    Check(list.count == model.count && list.head == model.head && list.tail == model.tail);
    Check(list.storage.count == static_cast<int32_t>(model.slots.size()));
    for (size_t k = 0; k < model.slots.size(); ++k) Check(Same(list.storage[k], model.slots[k]));
    for (int32_t i = 0; i < list.count; ++i) Check(Same(list[i], model.slots[model.Slot(i)]));
}

void CheckArray(RzArray<RzString>& array, const std::vector<std::string>& model) {
    Check(array.count == static_cast<int32_t>(model.size()));
    for (int32_t i = 0; i < array.count; ++i) Check(Same(array[i], model[i]));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const RzString probe("probe");
    RzList<RzString> list;
    ListModel listModel;
    RzArray<RzString> array;
    std::vector<std::string> arrayModel;
    for (size_t at = 0; at + 1 < size; at += 2) {
        const int op = data[at] % 8;
        const int arg = data[at + 1];
        // Odd arguments add the probe, even ones a text of their own.
        const std::string text = arg % 2 ? "probe" : std::to_string(at);
        const RzString value = arg % 2 ? probe : RzString(text.c_str());
        const int32_t count = list.count;
        switch (op) {
            case 0:
            case 1:
                op == 0 ? list.AddBack(value) : list.AddFront(value);
                listModel.Add(text, op == 1);
                break;
            case 2: {  // -1 to count: the ends raise and change nothing
                const int i = arg % (count + 2) - 1;
                if (i >= 0 && i < count) listModel.Remove(i);
                try {
                    list.Remove(i);
                    Check(i >= 0 && i < count);
                } catch (const RzError& e) {
                    Check((i < 0 || i >= count) && e.GetErr() == kRzIndexError);
                }
                break;
            }
            case 3:  // -1 to count + 3, the element count included
                list.ReSize(arg % (count + 5) - 1);
                listModel.ReSize(arg % (count + 5) - 1);
                break;
            case 4: {
                RzList<RzString> copy(list);  // keeps the ring layout
                CheckList(copy, listModel);
                CheckIndexing(copy, "RzList");
                RzList<RzString>& alias = list;
                list = alias;  // nothing
                CheckList(list, listModel);
                list = copy;
                listModel.Assign(listModel);
                break;
            }
            case 5:  // an element of the list itself, also when the list is full
                if (count == 0) break;
                arg & 2 ? list.AddFront(list[arg % count]) : list.AddBack(list[arg % count]);
                listModel.Add(listModel.slots[listModel.Slot(arg % count)], (arg & 2) != 0);
                break;
            case 6:  // -4 to 59; the last element then gets the argument's value
                array.ReSize(arg % 64 - 4);
                arrayModel.resize(static_cast<size_t>(std::max(arg % 64 - 4, 0)));
                if (!arrayModel.empty()) {
                    array[array.count - 1] = value;
                    arrayModel.back() = text;
                }
                break;
            default: {
                RzArray<RzString> copy(array);
                CheckArray(copy, arrayModel);
                CheckIndexing(copy, "RzArray");
                RzArray<RzString>& alias = array;
                array = alias;  // nothing
                CheckArray(array, arrayModel);
                if (arg % 4 == 0) {
                    copy.Clear();
                    Check(copy.count == 0 && copy.data == nullptr);
                    arrayModel.clear();
                }
                array = copy;
                break;
            }
        }
        CheckList(list, listModel);
        CheckArray(array, arrayModel);
        const auto holding = std::count(listModel.slots.begin(), listModel.slots.end(), "probe") +
                             std::count(arrayModel.begin(), arrayModel.end(), "probe");
        Check(SharingCount(probe) == 1 + arg % 2 + holding);  // probe and value
    }
    return 0;
}

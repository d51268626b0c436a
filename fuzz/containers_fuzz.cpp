// Drives an RzList and an RzArray of strings with operations read from the
// input and checks them against std::deque and std::vector after each step.
#include <stdint.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <deque>
#include <string>
#include <vector>

#include <Rz/RzCore/RzString.h>
#include <Rz/RzData/RzArray.h>
#include <Rz/RzData/RzList.h>

namespace {

void Check(bool ok) {
    if (!ok) abort();
}

template <class Container, class Model>
void CheckSame(const Container& c, const Model& model) {
    Check(c.count == static_cast<int32_t>(model.size()));
    for (int i = 0; i < c.count; ++i) Check(strcmp(c[i].c_str(), model[i].c_str()) == 0);
    bool raised = false;
    try {
        (void)c[c.count];
    } catch (const RzError& e) {
        raised = e.GetErr() == 7;
    }
    Check(raised);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    RzList<RzString> list;
    std::deque<std::string> listModel;
    RzArray<RzString> array;
    std::vector<std::string> arrayModel;
    int32_t capacity = 10;
    for (size_t at = 0; at + 1 < size; at += 2) {
        const int op = data[at] % 7;
        const int arg = data[at + 1];
        const std::string text = std::to_string(at);
        const int32_t count = list.count;
        switch (op) {
            case 0:
            case 1:
                if (count == capacity) capacity = 2 * count + 1;
                if (op == 0) {
                    list.AddBack(RzString(text.c_str()));
                    listModel.push_back(text);
                } else {
                    list.AddFront(RzString(text.c_str()));
                    listModel.push_front(text);
                }
                break;
            case 2:
                if (count == 0) break;
                list.Remove(arg % count);
                listModel.erase(listModel.begin() + arg % count);
                break;
            case 3:
                list.ReSize(arg % (count + 4));
                if (arg % (count + 4) != count) capacity = arg % (count + 4);
                listModel.resize(std::min(arg % (count + 4), count));
                break;
            case 4: {
                RzList<RzString> copy(list);  // keeps the ring layout
                Check(copy.head == list.head && copy.tail == list.tail);
                CheckSame(copy, listModel);
                list = copy;
                Check(list.head == 0);
                break;
            }
            case 5:
                array.ReSize(arg);
                arrayModel.resize(static_cast<size_t>(arg));
                if (arg > 0) {
                    array[arg - 1] = RzString(text.c_str());
                    arrayModel[arg - 1] = text;
                }
                break;
            default: {
                RzArray<RzString> copy(array);
                array = copy;
                CheckSame(array, arrayModel);
                break;
            }
        }
        Check(list.storage.count == capacity);
        CheckSame(list, listModel);
    }
    return 0;
}

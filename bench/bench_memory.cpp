/// W8: bytes of the heap for each box: shape, object, its place in the scene and its group, with
/// what the allocator adds. The public calls hold the tree of groups and the ids as well.
///
/// One line for each library: "W8/box/LIBRARY", bytes, with a tab between.

#include <malloc.h>

#include <cstdio>
#include <vector>

#include "Boxes.h"
#include "Library.h"

namespace {

double HeapBytes() {
    const struct mallinfo2 info = mallinfo2();
    return static_cast<double>(info.uordblks + info.hblkhd);
}

double BytesOfBox(const bench::LibraryKind& kind) {
    constexpr int kCount = 10000;
    oracle::Random random(8);
    const std::vector<oracle::Spec> boxes = bench::RandomBoxes(random, kCount);
    const auto library = kind.make();
    const int group = library->AddGroup(bench::kNoGroup);
    const double before = HeapBytes() - static_cast<double>(library->OwnBytes());
    for (const oracle::Spec& box : boxes) {
        library->AddObject(box, group);
    }
    // A first test, for what is built only then.
    library->CountAtPoint(group, {0, 0, 0});
    return (HeapBytes() - static_cast<double>(library->OwnBytes()) - before) / kCount;
}

}  // namespace

int main() {
    for (const bench::LibraryKind& kind : bench::AllLibraries()) {
        if ((kind.questions & bench::kScenes) != 0) {
            std::printf("W8/box/%s\t%.0f\n", kind.name.c_str(), BytesOfBox(kind));
        }
    }
    return 0;
}

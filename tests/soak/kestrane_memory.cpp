// What an object costs in memory, and whether all of it comes back:
//
//     kestrane_memory [OBJECTS [GROUPS]]
//
// Creates boxes in groups that take part in collision checks, moves every one, and destroys them;
// 1,000,000 boxes in 1,000 groups by default. Ends with 1 when a box takes 1,536 bytes or more, or
// when memory is still in use at the end that was not at the start.

#include <cstdio>
#include <cstdlib>
#include <vector>

#include "HeapUse.h"
#include "kestrane.h"

namespace {

constexpr int kDefaultObjects = 1000000;
constexpr int kDefaultGroups = 1000;
constexpr double kMostBytesPerObject = 1536;

// Lists that threads keep between queries may have grown.
constexpr std::size_t kSlack = 64 * 1024;

bool Good(int code, const char* what) {
    if (code != KST_OK) {
        std::fprintf(stderr, "%s: code %d\n", what, code);
    }
    return code == KST_OK;
}

void Report(const char* what) {
    std::printf("%-24s %14zu in use %14zu resident\n", what, BytesInUse(), BytesResident());
    std::fflush(stdout);
}

bool Create(int objects, std::vector<int>& groups) {
    for (int& group : groups) {
        if (!Good(KST_CreateGroup(&group, 0, true, nullptr, false), "group")) {
            return false;
        }
    }
    for (int i = 0; i < objects; ++i) {
        const int group = groups[static_cast<std::size_t>(i) % groups.size()];
        const auto x = static_cast<float>(i % 1000);
        const auto y = static_cast<float>(i / 1000);
        if (!Good(KST_CreateBox(group, 0.5f, 0.5f, 0.5f, x, y, 0, nullptr, nullptr), "box")) {
            return false;
        }
    }
    return true;
}

bool MoveAndAsk(int objects, const std::vector<int>& groups) {
    for (int id = 0; id < objects; ++id) {
        if (!Good(KST_SetObjectPosition(id, static_cast<float>(id % 1000), 0,
                                        static_cast<float>(id / 1000)),
                  "move")) {
            return false;
        }
    }
    // A question has the broad phase built, which counts as well.
    int count = 0;
    return Good(KST_CheckGroupCollision(groups.front(), groups.back(), true, &count), "check");
}

bool Destroy(int objects, const std::vector<int>& groups) {
    // Half of the objects one by one, the rest with their groups.
    for (int id = 0; id < objects; id += 2) {
        if (!Good(KST_DestroyObject(id), "destroy")) {
            return false;
        }
    }
    for (const int group : groups) {
        if (!Good(KST_DestroyGroup(group), "destroy")) {
            return false;
        }
    }
    return true;
}

/// One life of the library; `full` is what was in use while all objects stood.
bool Live(int objects, int groupCount, std::size_t& full) {
    std::vector<int> groups(static_cast<std::size_t>(groupCount));
    if (!Good(KST_Initialisation(false, false, false), "start") || !Create(objects, groups)) {
        return false;
    }
    Report("created");
    if (!MoveAndAsk(objects, groups)) {
        return false;
    }
    Report("moved and asked");
    full = BytesInUse();
    if (!Destroy(objects, groups)) {
        return false;
    }
    Report("destroyed");
    return Good(KST_End(), "end");
}

int Run(int objects, int groupCount) {
    std::size_t full = 0;
    // A small life first: what the process keeps for good, such as buffers of stdio, is made then.
    if (!Live(1000, 10, full)) {
        return 1;
    }
    Report("at the start");
    const std::size_t start = BytesInUse();
    if (!Live(objects, groupCount, full)) {
        return 1;
    }
    GiveBackPages();
    Report("ended");
    if (!HeapIsMeasured()) {
        return 0;
    }
    const double perObject = static_cast<double>(full - start) / objects;
    const std::size_t end = BytesInUse();
    const std::size_t kept = end > start ? end - start : 0;
    std::printf("%d objects: %.0f bytes each; %zu bytes not given back\n", objects, perObject,
                kept);
    return perObject < kMostBytesPerObject && kept <= kSlack ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    const int objects = argc > 1 ? std::atoi(argv[1]) : kDefaultObjects;
    const int groups = argc > 2 ? std::atoi(argv[2]) : kDefaultGroups;
    if (objects < 1 || groups < 1) {
        std::fprintf(stderr, "usage: kestrane_memory [OBJECTS [GROUPS]]\n");
        return 2;
    }
    return Run(objects, groups);
}

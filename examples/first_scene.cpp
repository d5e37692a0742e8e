// The first scene: two groups with a box each. One moves towards the other; how near do they come,
// and what collides?
//
// Build against an installed library, in CMake:
//     find_package(Kestrane REQUIRED)
//     target_link_libraries(first_scene Kestrane::kestrane)
#include <kestrane.h>

#include <cstdio>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

void Require(int code, const char* call) {
    if (code != KST_OK)
        throw std::runtime_error(std::string(call) + " gave " + std::to_string(code));
}

/// The library runs as long as this lives.
class Library {
  public:
    Library() { Require(KST_Initialisation(false, false, false), "KST_Initialisation"); }
    ~Library() { KST_End(); }
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;
};

/// The records of the last query.
std::vector<KstCollisionResult> Results(int count) {
    std::vector<KstCollisionResult> results(static_cast<std::size_t>(count));
    if (count > 0)
        Require(KST_GetResults(results.data()), "KST_GetResults");
    return results;
}

void MoveAndCheck(int gripper, int table, float height) {
    Require(KST_SetGroupPosition(gripper, 0, height, 0), "KST_SetGroupPosition");
    int count = 0;
    Require(KST_CheckGroupCollision(gripper, table, true, &count), "KST_CheckGroupCollision");
    if (count == 0) {
        Require(KST_GetClosestPairs(gripper, table, &count), "KST_GetClosestPairs");
        std::printf("height %.2f: free, distance %.3f\n", height, Results(count).front().value);
        return;
    }
    Require(KST_GetPenetrationDepths(gripper, table, &count), "KST_GetPenetrationDepths");
    for (const KstCollisionResult& result : Results(count))
        std::printf("height %.2f: object %d collides with object %d, depth %.3f\n", height,
                    result.id1, result.id2, result.value);
}

void Run() {
    const Library library;
    int gripper = 0;
    int table = 0;
    Require(KST_CreateGroup(&gripper, 0, true, "gripper", false), "KST_CreateGroup");
    Require(KST_CreateGroup(&table, 0, true, "table", false), "KST_CreateGroup");
    Require(KST_CreateBox(gripper, 0.2f, 0.2f, 0.2f, 0, 0, 0, nullptr, "tool"), "KST_CreateBox");
    Require(KST_CreateBox(table, 2, 0.1f, 1, 0, 0, 0, nullptr, "plate"), "KST_CreateBox");

    for (int step = 0; step < 3; ++step)
        MoveAndCheck(gripper, table, 0.5f - 0.2f * static_cast<float>(step));
}

}  // namespace

int main() {
    try {
        Run();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "first_scene: %s\n", error.what());
        return 2;
    }
}

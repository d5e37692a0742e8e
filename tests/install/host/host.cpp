// A host in C++11: one box, one sphere that reaches into it, one question.
#include <kestrane.h>

#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

void Check(int code, const std::string& what) {
    if (code != KST_OK) {
        throw std::runtime_error(what + ": " + std::to_string(code));
    }
}

std::vector<KstCollisionResult> CollisionsBetween(int group1, int group2) {
    int count = 0;
    Check(KST_CheckGroupCollision(group1, group2, true, &count), "check");
    std::vector<KstCollisionResult> results(static_cast<std::size_t>(count));
    Check(KST_GetResults(results.data()), "results");
    return results;
}

void Run() {
    int table = -1;
    int ball = -1;
    Check(KST_Initialisation(false, false, false), "start");
    Check(KST_CreateGroup(&table, 0, true, "table", false), "group");
    Check(KST_CreateGroup(&ball, 0, true, "ball", false), "group");
    Check(KST_CreateBox(table, 2.0f, 1.0f, 2.0f, 0.0f, 0.0f, 0.0f, nullptr, "top"), "box");
    Check(KST_CreateSphere(ball, 0.5f, 0.0f, 0.9f, 0.0f, nullptr, nullptr), "sphere");
    for (const KstCollisionResult& result : CollisionsBetween(table, ball)) {
        std::cout << "1 collision between box " << result.id1 << " and sphere " << result.id2
                  << '\n';
    }
    Check(KST_End(), "end");
}

}  // namespace

int main() {
    try {
        Run();
        return 0;
    } catch (const std::exception& fault) {
        std::cerr << fault.what() << '\n';
        return 1;
    }
}

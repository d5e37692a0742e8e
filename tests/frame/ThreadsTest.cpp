#include <atomic>
#include <functional>
#include <string>
#include <thread>

#include "Library.h"

namespace {

constexpr int kThreads = 3;

void RunInThreads(const std::function<void(int)>& body) {
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back(body, i);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

TEST_F(Library, HostThreadsBuildAndQuerySideBySide) {
    std::atomic<int> faults{0};
    RunInThreads([&](int index) {
        const auto expect = [&](bool holds) { faults += holds ? 0 : 1; };
        const std::string label = "thread " + std::to_string(index);
        int group = -1;
        expect(KST_CreateGroup(&group, 0, true, label.c_str(), false) == KST_OK);
        for (int i = 0; i < 200; ++i) {
            int box = -1;
            int count = -1;
            int id = -1;
            KstObjectInfo info = {};
            expect(KST_CreateBox(group, 1, 1, 1, 0, 0, 0, &box, nullptr) == KST_OK);
            expect(KST_SetObjectPosition(box, static_cast<float>(10 * index), 0, 0) == KST_OK);
            expect(KST_GetObject(box, &info) == KST_OK && info.groupId == group);
            expect(KST_CheckPointCollision(group, static_cast<float>(10 * index), 0, 0, true,
                                           &count) == KST_OK &&
                   count == i % 10 + 1);
            expect(KST_GetID(&id, label.c_str()) == KST_OK && id == group);
            expect(KST_SetTime(static_cast<float>(i)) == KST_OK);
            expect(KST_ShowView(1 + index % 3, label.c_str()) == KST_OK);
            if (i % 10 == 9) {
                expect(KST_EmptyGroup(group) == KST_OK);
            }
        }
    });
    EXPECT_EQ(0, faults);
    EXPECT_EQ(KST_OK, KST_SetTime(0));
}

TEST(Threads, StartsAndEndsMayRaceWithCalls) {
    std::atomic<bool> stop{false};
    std::atomic<int> worked{0};
    std::atomic<int> refused{0};
    std::atomic<int> faults{0};
    std::thread caller([&] {
        while (!stop) {
            int group = -1;
            const int status = KST_CreateGroup(&group, 0, true, "raced", false);
            int count = -1;
            if (status == KST_OK) {
                ++worked;
                const int asked = KST_CheckPointCollision(group, 0, 0, 0, true, &count);
                // The group may be gone with its scene, and another may have come in its place.
                faults += asked == KST_OK || asked == KST_ERROR_NOT_INITIALISED ||
                                  asked == KST_ERROR_UNKNOWN_GROUP
                              ? 0
                              : 1;
            } else {
                ++refused;
                faults += status == KST_ERROR_NOT_INITIALISED ? 0 : 1;
            }
        }
    });
    std::thread starter([&] {
        while (!stop) {
            KST_Initialisation(false, false, false);
            std::this_thread::yield();
        }
    });
    for (int i = 0; i < 100 || worked == 0 || refused == 0; ++i) {
        KST_Initialisation(false, false, false);
        std::this_thread::yield();
        KST_End();
    }
    stop = true;
    caller.join();
    starter.join();
    KST_End();
    EXPECT_EQ(0, faults);
    EXPECT_EQ(KST_ERROR_NOT_INITIALISED, KST_SetTime(0));
}

}  // namespace

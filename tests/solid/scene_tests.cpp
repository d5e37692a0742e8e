#include <algorithm>
#include <limits>

#include "random_scene.h"

using namespace scene_tests;

namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

/// A response as the test itself remembers it.
struct Rule {
    std::vector<int> classes1, classes2;
    std::unique_ptr<Client> client;
};

bool Names(const std::vector<int>& classes, int c) {
    return std::find(classes.begin(), classes.end(), c) != classes.end();
}

class SceneTest : public testing::Test {
  protected:
    SceneTest() {
        for (int i = 0; i < kClasses; ++i) {
            EXPECT_EQ(DT_GenResponseClass(m_table.get()), i);
        }
    }

    Body& AddBody(std::unique_ptr<Body> body, int responseClass, const Matrix& placement = {}) {
        m_bodies.push_back(std::move(body));
        Body& added = *m_bodies.back();
        added.Place(placement);
        SetClass(added, responseClass);
        SetInScene(added, true);
        return added;
    }
    void SetClass(Body& body, int responseClass) {
        DT_SetResponseClass(m_table.get(), body.object, responseClass);
        body.responseClass = responseClass;
    }
    void SetInScene(Body& body, bool inScene) {
        (inScene ? DT_AddObject : DT_RemoveObject)(m_scene.get(), body.object);
        body.inScene = inScene;
    }
    const void* AddRule(std::vector<int> classes1, std::vector<int> classes2) {
        auto client = std::make_unique<Client>(Client{&m_recorder});
        if (classes1.size() == 1 && classes2.size() == 1) {
            DT_AddPairResponse(m_table.get(), classes1[0], classes2[0], Record, DT_SIMPLE_RESPONSE,
                               client.get());
        } else {
            DT_AddPairResponses(m_table.get(), classes1.data(), classes1.size(), classes2.data(),
                                classes2.size(), Record, DT_SIMPLE_RESPONSE, client.get());
        }
        m_rules.push_back({std::move(classes1), std::move(classes2), std::move(client)});
        return m_rules.back().client.get();
    }
    void RemoveRule(std::size_t i) {
        const Rule& rule = m_rules[i];
        if (rule.classes1.size() == 1 && rule.classes2.size() == 1) {
            DT_RemovePairResponse(m_table.get(), rule.classes1[0], rule.classes2[0], Record);
        } else {
            DT_RemovePairResponses(m_table.get(), rule.classes1.data(), rule.classes1.size(),
                                   rule.classes2.data(), rule.classes2.size(), Record);
        }
        m_rules.erase(m_rules.begin() + static_cast<std::ptrdiff_t>(i));
    }
    /// Every pair of bodies in the order of their creation, every rule, no tree.
    std::vector<Recorder::Call> BruteForce() const {
        std::vector<const Body*> bodies;
        for (const auto& body : m_bodies) {
            if (body->inScene && body->object->TakesPart()) {
                bodies.push_back(body.get());
            }
        }
        std::sort(bodies.begin(), bodies.end(), [](const Body* a, const Body* b) {
            return a->object->Number() < b->object->Number();
        });
        std::vector<Recorder::Call> calls;
        for (std::size_t i = 0; i < bodies.size(); ++i) {
            for (std::size_t j = i + 1; j < bodies.size(); ++j) {
                const int a = bodies[i]->responseClass;
                const int b = bodies[j]->responseClass;
                for (const Rule& rule : m_rules) {
                    if (((Names(rule.classes1, a) && Names(rule.classes2, b)) ||
                         (Names(rule.classes1, b) && Names(rule.classes2, a))) &&
                        InContact(bodies[i]->object->GetPlaced(), bodies[j]->object->GetPlaced())) {
                        calls.emplace_back(rule.client.get(), bodies[i], bodies[j]);
                    }
                }
            }
        }
        return calls;
    }
    std::size_t Test() {
        m_recorder.calls.clear();
        return DT_Test(m_scene.get(), m_table.get());
    }
    void ExpectAsBruteForce() {
        const std::size_t count = Test();
        EXPECT_EQ(count, m_recorder.calls.size() % 65536);
        EXPECT_TRUE(m_recorder.calls == BruteForce());
    }

    static constexpr int kClasses = 12;
    std::vector<std::unique_ptr<Body>> m_bodies;
    ScenePtr m_scene{DT_CreateScene()};
    TablePtr m_table{DT_CreateRespTable()};
    std::vector<Rule> m_rules;
    Recorder m_recorder;
};

std::vector<int> RandomClasses(Random& random, int classCount) {
    std::vector<int> classes(1 + random.Below(6));
    for (int& c : classes) {
        // Now and then one that the table does not have.
        c = static_cast<int>(random.Below(static_cast<std::uint32_t>(classCount) + 2)) - 1;
    }
    return classes;
}

TEST_F(SceneTest, AgreesWithBruteForceThroughRandomChanges) {
    Random random(1);
    std::size_t found = 0;
    std::size_t emptyTests = 0;
    const auto change = [&] {
        if (m_bodies.size() < 100 || random.Below(20) == 0) {
            AddBody(std::make_unique<Body>(RandomShape(random)),
                    static_cast<int>(random.Below(kClasses)), RandomPlacement(random, 4));
            return;
        }
        const std::size_t i = random.Below(static_cast<std::uint32_t>(m_bodies.size()));
        Body& body = *m_bodies[i];
        switch (random.Below(10)) {
            case 0:
                SetInScene(body, random.Below(4) != 0);
                break;
            case 1:
                SetClass(body, static_cast<int>(random.Below(kClasses)));
                break;
            case 2:
                DT_SetMargin(body.object, random.In(-0.1f, 0.3f));
                break;
            case 3:
                if (random.Below(3) == 0) {
                    m_bodies.erase(m_bodies.begin() + static_cast<std::ptrdiff_t>(i));
                }
                break;
            case 4: {
                const float position[3] = {random.In(-4, 4), random.In(-4, 4), random.In(-4, 4)};
                DT_SetPosition(body.object, position);
                break;
            }
            case 5: {
                Matrix broken = At(0, 0, 0);
                broken.m[random.Below(4) * 4] = random.Below(2) == 0 ? kNaN : kInfinity;
                body.Place(broken);
                break;
            }
            default:
                body.Place(RandomPlacement(random, 4));
        }
    };
    for (int step = 0; step < 1500; ++step) {
        // Few changes and many, so that the tree is changed, refitted and built.
        for (std::uint32_t n = step % 50 == 0 ? 400 : random.Below(6); n > 0; --n) {
            change();
        }
        while (!m_rules.empty() && random.Below(3) != 0) {
            RemoveRule(random.Below(static_cast<std::uint32_t>(m_rules.size())));
        }
        for (std::uint32_t n = random.Below(3); n > 0; --n) {
            const auto same = [&](const std::vector<int>& a, const std::vector<int>& b) {
                return std::any_of(m_rules.begin(), m_rules.end(), [&](const Rule& r) {
                    return r.classes1 == a && r.classes2 == b;
                });
            };
            std::vector<int> classes1 = RandomClasses(random, kClasses);
            std::vector<int> classes2 = RandomClasses(random, kClasses);
            if (!same(classes1, classes2)) {
                AddRule(std::move(classes1), std::move(classes2));
            }
        }
        ExpectAsBruteForce();
        if (HasFailure()) {
            FAIL() << "at step " << step;
        }
        found += m_recorder.calls.size();
        emptyTests += m_recorder.calls.empty() ? 1 : 0;
    }
    EXPECT_GT(found, 20000u);
    EXPECT_GT(emptyTests, 100u);
    EXPECT_LT(emptyTests, 1400u);
}

TEST_F(SceneTest, ManyMovingObjectsAgainstMany) {
    Random random(2);
    for (int i = 0; i < 600; ++i) {
        AddBody(std::make_unique<Body>(RandomShape(random)), i % 2, RandomPlacement(random, 6));
    }
    AddRule({0}, {1});
    for (int step = 0; step < 20; ++step) {
        for (const auto& body : m_bodies) {
            // Sometimes the whole scene goes far away, and its boxes become coarser.
            Matrix m = RandomPlacement(random, 6);
            m.m[12] += step % 5 == 4 ? 1e5f : 0;
            body->Place(m);
        }
        ExpectAsBruteForce();
        EXPECT_GT(m_recorder.calls.size(), 200u);
    }
}

TEST_F(SceneTest, ReportsInOrderOfCreationWhateverTheOrderOfAdding) {
    std::vector<Body*> bodies;
    for (int i = 0; i < 40; ++i) {
        m_bodies.push_back(NewCube());
        bodies.push_back(m_bodies.back().get());
    }
    Random random(3);
    for (std::size_t i = bodies.size(); i-- > 1;) {
        std::swap(bodies[i], bodies[random.Below(static_cast<std::uint32_t>(i + 1))]);
    }
    for (Body* body : bodies) {
        SetClass(*body, static_cast<int>(random.Below(2)));
        SetInScene(*body, true);
    }
    AddRule({1}, {0});
    ExpectAsBruteForce();
    EXPECT_GT(m_recorder.calls.size(), 300u);
    for (const auto& [client, first, second] : m_recorder.calls) {
        EXPECT_LT(first->object->Number(), second->object->Number());
    }
}

TEST_F(SceneTest, EachResponseOncePerPairAndNoObjectAgainstItself) {
    AddBody(NewCube(), 0);
    AddBody(NewCube(), 0);
    AddBody(NewCube(), 1);
    AddRule({0, 1, 0, 1}, {1, 0, 0, 1});  // all three pairs, both ways, several times
    EXPECT_EQ(Test(), 3u);
    const void* const second = AddRule({1}, {0});
    AddRule({0}, {1});
    ASSERT_EQ(Test(), 7u);
    // Responses of one pair stand in the order of their adding.
    EXPECT_EQ(std::get<0>(m_recorder.calls[2]), second);
    ExpectAsBruteForce();
    AddRule({0}, {0});
    EXPECT_EQ(Test(), 8u);
}

TEST_F(SceneTest, AddingAResponseAgainReplacesItsClient) {
    AddBody(NewCube(), 0);
    AddBody(NewCube(), 1);
    AddRule({0}, {1});
    const void* const client = AddRule({0}, {1});
    EXPECT_EQ(Test(), 1u);
    EXPECT_EQ(std::get<0>(m_recorder.calls[0]), client);
    RemoveRule(1);
    EXPECT_EQ(Test(), 0u);
    DT_RemovePairResponse(m_table.get(), 0, 1, Record);
    EXPECT_EQ(Test(), 0u);
}

TEST_F(SceneTest, ATestOfOnePairOfListsAnswersAsIfItHadBeenEntered) {
    Random random(5);
    for (int i = 0; i < 200; ++i) {
        AddBody(std::make_unique<Body>(RandomShape(random)), i % kClasses,
                RandomPlacement(random, 4));
    }
    std::size_t found = 0;
    for (int round = 0; round < 50; ++round) {
        const std::vector<int> classes1 = RandomClasses(random, kClasses);
        const std::vector<int> classes2 = RandomClasses(random, kClasses);
        Client client{&m_recorder};
        m_recorder.calls.clear();
        const std::uint16_t count =
            DT_TestPairs(m_scene.get(), m_table.get(), classes1.data(), classes1.size(),
                         classes2.data(), classes2.size(), Record, DT_SIMPLE_RESPONSE, &client);
        std::vector<Recorder::Call> calls = m_recorder.calls;
        EXPECT_EQ(count, calls.size());
        EXPECT_EQ(Test(), 0u);  // nothing has been entered
        const void* const entered = AddRule(classes1, classes2);
        for (auto& call : calls) {
            std::get<0>(call) = entered;
        }
        EXPECT_TRUE(calls == BruteForce());
        found += calls.size();
        RemoveRule(0);
    }
    EXPECT_GT(found, 500u);
}

TEST_F(SceneTest, ManySingleResponsesComeAndGo) {
    constexpr int kMany = 300;
    for (int i = 0; i < kMany; ++i) {
        DT_GenResponseClass(m_table.get());
    }
    AddBody(NewCube(), 7);
    AddBody(NewCube(), 200);
    Client client{&m_recorder};
    for (int a = 0; a < kMany; ++a) {
        for (int b = 0; b < kMany; ++b) {
            DT_AddPairResponse(m_table.get(), a, b, Record, DT_SIMPLE_RESPONSE, &client);
        }
    }
    EXPECT_EQ(Test(), 2u);  // (7, 200) and (200, 7)
    for (int a = 0; a < kMany; ++a) {
        for (int b = 0; b < kMany; ++b) {
            if (a != 200) {
                DT_RemovePairResponse(m_table.get(), a, b, Record);
            }
        }
    }
    EXPECT_EQ(Test(), 1u);
    for (int b = 0; b < kMany; ++b) {
        DT_RemovePairResponse(m_table.get(), 200, b, Record);
    }
    EXPECT_EQ(Test(), 0u);
}

TEST_F(SceneTest, DoneEndsTheTest) {
    for (int i = 0; i < 30; ++i) {
        AddBody(NewCube(), i % 3);
    }
    AddRule({0, 1}, {2});
    const std::vector<Recorder::Call> all = BruteForce();
    ASSERT_EQ(all.size(), 200u);
    for (const std::size_t n : {1u, 2u, 199u, 200u}) {
        m_recorder.doneAfter = n;
        EXPECT_EQ(Test(), n);
        EXPECT_TRUE(std::equal(m_recorder.calls.begin(), m_recorder.calls.end(), all.begin()));
    }
}

TEST_F(SceneTest, TheCountIsModulo65536AndTheCallsAreAllMade) {
    for (int i = 0; i < 530; ++i) {
        AddBody(NewCube(), i % 2);
    }
    AddRule({0}, {1});
    EXPECT_EQ(Test(), 265u * 265u - 65536u);
    EXPECT_EQ(m_recorder.calls.size(), 265u * 265u);
}

TEST_F(SceneTest, TouchingIsContact) {
    AddBody(NewCube(), 0);
    const Body& other = AddBody(NewCube(), 1, At(1, 0, 0));
    AddRule({0}, {1});
    EXPECT_EQ(Test(), 1u);
    other.Place(At(std::nextafter(1.0f, 2.0f), 0, 0));
    EXPECT_EQ(Test(), 0u);
    DT_SetMargin(other.object, 1e-6f);
    EXPECT_EQ(Test(), 1u);
    DT_SetMargin(other.object, -1);
    EXPECT_EQ(Test(), 0u);
}

TEST_F(SceneTest, NotFiniteObjectsTakeNoPartAndComeBack) {
    const Body& a = AddBody(NewCube(), 0);
    const Body& b = AddBody(NewCube(), 1);
    AddRule({0}, {1});
    float p[3], q[3];
    for (const Body* body : {&a, &b}) {
        for (const float bad : {kNaN, kInfinity, -kInfinity}) {
            for (const int element : {0, 5, 9, 12, 14}) {
                Matrix m;
                m.m[element] = bad;
                body->Place(m);
                EXPECT_EQ(Test(), 0u);
                EXPECT_EQ(DT_GetClosestPair(a.object, b.object, p, q), kInfinity);
                EXPECT_FALSE(DT_GetPenDepth(a.object, b.object, p, q));
                body->Place({});
                EXPECT_EQ(Test(), 1u);
            }
            DT_SetMargin(body->object, bad);
            EXPECT_EQ(Test(), bad < 0 ? 1u : 0u);
            DT_SetMargin(body->object, 0);
            EXPECT_EQ(Test(), 1u);
        }
        Matrix m;
        m.m[3] = m.m[7] = m.m[11] = m.m[15] = kNaN;  // the last row is not looked at
        body->Place(m);
        EXPECT_EQ(Test(), 1u);
    }
    AddBody(std::make_unique<Body>(DT_NewBox(kInfinity, 1, 1)), 0);
    EXPECT_EQ(Test(), 1u);
}

TEST_F(SceneTest, HugeFlatAndCoincidentObjects) {
    AddBody(std::make_unique<Body>(DT_NewBox(3e38f, 3e38f, 3e38f)), 0);
    AddBody(std::make_unique<Body>(DT_NewBox(1, 1, 1)), 1, At(1e30f, 1e30f, 1e30f));
    AddBody(std::make_unique<Body>(DT_NewSphere(0)), 1, At(-1e38f, 0, 0));
    AddBody(std::make_unique<Body>(DT_NewSphere(0)), 1, At(3e38f, 0, 0));
    Matrix huge;
    huge.m[0] = 3e38f, huge.m[12] = 3e38f, huge.m[13] = huge.m[14] = 2;
    AddBody(std::make_unique<Body>(DT_NewBox(3e38f, 1, 1)), 1, huge);
    for (int i = 0; i < 200; ++i) {
        Matrix flat = At(2, 2, 2);
        flat.m[5 * (i % 3)] = 0;
        AddBody(NewCube(), i % 2, flat);
    }
    AddRule({0}, {1});
    ExpectAsBruteForce();
    EXPECT_GT(m_recorder.calls.size(), 10000u);
    for (const auto& body : m_bodies) {
        body->Place({});
    }
    ExpectAsBruteForce();
}

TEST_F(SceneTest, OnlyObjectsOfTheSceneAndOfTheTableCount) {
    Body& a = AddBody(NewCube(), 0);
    Body& b = AddBody(NewCube(), 1);
    AddRule({0}, {1});
    const ScenePtr otherScene(DT_CreateScene());
    EXPECT_EQ(DT_Test(otherScene.get(), m_table.get()), 0u);
    DT_AddObject(otherScene.get(), b.object);  // and so leaves the first one
    EXPECT_EQ(Test(), 0u);
    DT_RemoveObject(m_scene.get(), b.object);
    DT_AddObject(otherScene.get(), a.object);
    EXPECT_EQ(DT_Test(otherScene.get(), m_table.get()), 1u);

    // Second classes in other tables, as for a probe of its own.
    const TablePtr otherTable(DT_CreateRespTable());
    const TablePtr thirdTable(DT_CreateRespTable());
    for (const TablePtr* table : {&otherTable, &thirdTable}) {
        const int c = DT_GenResponseClass(table->get());
        DT_SetResponseClass(table->get(), a.object, c);
        DT_SetResponseClass(table->get(), b.object, c);
        DT_SetResponseClass(table->get(), b.object, c + 1);  // no such class
        Client client{&m_recorder};
        DT_AddPairResponse(table->get(), c, c, Record, DT_SIMPLE_RESPONSE, &client);
        EXPECT_EQ(DT_Test(otherScene.get(), table->get()), 1u);
    }
    EXPECT_EQ(DT_Test(otherScene.get(), m_table.get()), 1u);
}

/// A scene that has lost most of its objects gives memory back; the rest stay where they were.
TEST_F(SceneTest, AnswersHoldWhileASceneShrinksAndGrowsAgain) {
    AddRule({0}, {0, 1});
    for (int round = 0; round < 2; ++round) {
        for (int i = 0; i < 3000; ++i) {
            AddBody(NewCube(), i % 2,
                    At(0.75F * static_cast<float>(i % 50), 0.75F * static_cast<float>(i / 50), 0));
        }
        EXPECT_GT(Test(), 1000u);
        while (m_bodies.size() > 40) {
            // From the front, the middle and the back.
            m_bodies.erase(m_bodies.begin() + static_cast<std::ptrdiff_t>(
                                                  m_bodies.size() * (m_bodies.size() % 3) / 3));
            if (m_bodies.size() % 64 == 0 && m_bodies.size() < 512) {
                ExpectAsBruteForce();
            }
        }
        ExpectAsBruteForce();
    }
}

TEST_F(SceneTest, TablesScenesAndObjectsMayGoInAnyOrder) {
    const auto a = NewCube();
    auto b = NewCube();
    auto otherTable = TablePtr(DT_CreateRespTable());
    DT_GenResponseClass(otherTable.get());
    for (const Body* body : {a.get(), b.get()}) {
        DT_AddObject(m_scene.get(), body->object);
        DT_SetResponseClass(m_table.get(), body->object, 3);
        DT_SetResponseClass(otherTable.get(), body->object, 0);
    }
    AddRule({3}, {3});
    EXPECT_EQ(Test(), 1u);
    m_table.reset();
    Client client{&m_recorder};
    DT_AddPairResponse(otherTable.get(), 0, 0, Record, DT_SIMPLE_RESPONSE, &client);
    EXPECT_EQ(DT_Test(m_scene.get(), otherTable.get()), 1u);
    b.reset();
    EXPECT_EQ(DT_Test(m_scene.get(), otherTable.get()), 0u);
    m_scene.reset();
    a->Place(At(1, 2, 3));
    otherTable.reset();
    a->Place(At(3, 2, 1));
}

TEST_F(SceneTest, ACallbackMayAskTheSameTableAgain) {
    for (int i = 0; i < 6; ++i) {
        AddBody(NewCube(), i % 2);
    }
    struct Nested {
        DT_SceneHandle scene;
        DT_RespTableHandle table;
        int depth = 0;
        int calls = 0;
    } nested{m_scene.get(), m_table.get()};
    const DT_ResponseCallback ask = [](void* client, void*, void*, const void*) {
        Nested& n = *static_cast<Nested*>(client);
        ++n.calls;
        if (n.depth == 0) {
            ++n.depth;
            EXPECT_EQ(DT_Test(n.scene, n.table), 9u);
            --n.depth;
        }
        return DT_CONTINUE;
    };
    DT_AddPairResponse(m_table.get(), 0, 1, ask, DT_SIMPLE_RESPONSE, &nested);
    EXPECT_EQ(Test(), 9u);
    EXPECT_EQ(nested.calls, 90);
}

}  // namespace

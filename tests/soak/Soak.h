#pragma once

#include <string>
#include <vector>

#include "Random.h"
#include "ReferenceScene.h"
#include "kestrane.h"

/// Makes random calls and compares every answer with the reference scene's. The first difference is
/// thrown as std::runtime_error, with what was called.
class Soak {
  public:
    explicit Soak(std::uint64_t seed);
    ~Soak();
    Soak(const Soak&) = delete;
    Soak& operator=(const Soak&) = delete;

    /// One random call, and now and then a look at something that it should not have touched.
    void Step();

    /// Compares the whole scene.
    void CompareAll();

    /// Empties library and reference, so that what is left in use is a leak.
    void Empty();

    const reference::Scene& Reference() const { return m_reference; }

  private:
    using Operation = void (Soak::*)();
    struct Choice {
        int weight;
        const char* name;
        Operation operation;
    };
    static const std::vector<Choice> kChoices;

    // ---- Calls: groups ----
    void CreateGroup();
    void DestroyGroup();
    void EmptyGroup();
    void MoveGroup();
    void CloneGroup();
    void CloneGroupRecursive();
    void SetCapability();
    void SetGroupClearance();
    void PlaceGroup();
    void AddGroupKey();
    void ClearGroupKeys();
    void SetGroupCyclic();
    void GroupDisplayCalls();

    // ---- Calls: objects ----
    void CreateSolid();
    void CreateMesh();
    void DestroyObject();
    void MoveObject();
    void PlaceObject();
    void SetObjectClearance();
    void AddObjectKey();
    void ClearObjectKeys();
    void SetObjectCyclic();
    void ObjectDisplayCalls();

    // ---- Calls: queries and the rest ----
    void CheckPoint();
    void CheckLine();
    void CheckGroups();
    void ClosestPairs();
    void GetId();
    void SetTime();
    void ViewCalls();
    void LoadMissingScene();
    void Restart();

    // ---- Comparisons ----
    void CompareGroup(int id);
    void CompareObject(int id);
    void CompareMatrix(const reference::Object& object, const float* matrix);
    void CompareGeometry(const reference::Object& object, const KstObjectInfo& info);
    void Expect(int expected, int actual, const char* what);
    void Require(bool holds, const std::string& what);

    // ---- Arguments ----
    int SomeGroup();
    int SomeObject();
    std::string SomeLabel();
    float SomeTime() { return 0.25f * static_cast<float>(m_random.Below(40)); }
    float SomeMargin();
    std::vector<float> SomeVertices(int count);
    reference::Quaternion SomeTurn(float (&floats)[4]);
    void PlaceNode(reference::Node* node, int id, bool isGroup);
    void AddKey(reference::Node* node, int id, bool isGroup);
    void CreateAndCompare(int code, int newId, reference::Object object);
    std::vector<KstCollisionResult> Results(int count);

    Random m_random;
    reference::Scene m_reference;
    const char* m_call = "";
    long m_calls = 0;
};

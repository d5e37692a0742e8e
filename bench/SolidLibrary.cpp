#include <cmath>
#include <memory>
#include <vector>

#include "Library.h"
#include "platform/solid/Solid.h"
#include "tests/solid/accuracy/Engine.h"

namespace bench {

namespace {

/// This library at the level of the engine.
class SolidLibrary : public Library {
  public:
    void Add(const Spec& spec, int) override {
        m_objects.push_back(std::make_unique<oracle::EngineObject>(spec));
    }

    bool InContact(int object1, int object2) override {
        return DT_InContact(Handle(object1), Handle(object2));
    }
    double Distance(int object1, int object2, Points& points) override {
        return static_cast<double>(DT_GetClosestPair(Handle(object1), Handle(object2),
                                                     points.first.data(), points.second.data()));
    }
    double Depth(int object1, int object2, Points& points) override {
        if (!DT_GetPenDepth(Handle(object1), Handle(object2), points.first.data(),
                            points.second.data())) {
            return -1;
        }
        double square = 0;
        for (std::size_t i = 0; i < 3; ++i) {
            const double d =
                static_cast<double>(points.first[i]) - static_cast<double>(points.second[i]);
            square += d * d;
        }
        return std::sqrt(square);
    }

  private:
    DT_ObjectHandle Handle(int object) const {
        return m_objects[static_cast<std::size_t>(object)]->Handle();
    }

    std::vector<std::unique_ptr<oracle::EngineObject>> m_objects;
};

}  // namespace

std::vector<LibraryKind> SolidLibraries() {
    return {{"dt", [] { return std::make_unique<SolidLibrary>(); }}};
}

}  // namespace bench

// The nine kinds of object.

#include <climits>
#include <vector>

#include "frame/CheckerApp.h"
#include "scenefiles/AttributeReader.h"
#include "scenefiles/ScenePose.h"
#include "scenefiles/XmlSceneLoader.h"

namespace {

/// Appends the vertices of an element's `point` children, at most so many, and counts them. False
/// if a coordinate is missing.
bool AppendPoints(const XmlElement& element, int most, std::vector<float>& vertices, int& count) {
    count = 0;
    for (const XmlElement* point = element.FirstChild("point"); point != nullptr && count < most;
         point = point->NextSibling("point")) {
        float vertex[3];
        if (!ReadVector(*point, vertex)) {
            return false;
        }
        vertices.insert(vertices.end(), vertex, vertex + 3);
        ++count;
    }
    return true;
}

/// The same for all children of a name, each with points of its own.
bool AppendParts(const XmlElement& element, const char* name, int most,
                 std::vector<float>& vertices, std::vector<int>& counts) {
    for (const XmlElement* part = element.FirstChild(name); part != nullptr;
         part = part->NextSibling(name)) {
        int count = 0;
        if (!AppendPoints(*part, most, vertices, count)) {
            return false;
        }
        counts.push_back(count);
    }
    return true;
}

}  // namespace

// ---- Box, sphere, cylinder, cone ----

/// `create` is given the element's attributes, the position and the place for the id. It gives the
/// model's code.
template <typename Create>
int XmlSceneLoader::ReadSimpleObject(const XmlElement& element, Create create) {
    const XmlElement* const motion = element.FirstChild("motion");
    // An animated object starts where its animation does.
    const XmlElement* const pose = motion != nullptr ? motion->FirstChild("keyState") : &element;
    if (pose == nullptr) {
        return KST_ERROR_ARGUMENT;
    }
    float position[3] = {0.0f, 0.0f, 0.0f};
    if (const XmlElement* const own = element.FirstChild("pos")) {
        // A key state without a position leaves it as it is.
        const XmlElement* const first = pose->FirstChild("pos");
        if (!ReadVector(first != nullptr ? *first : *own, position)) {
            return KST_ERROR_ARGUMENT;
        }
    }
    int id = 0;
    AttributeReader attributes(element);
    int status = create(attributes, position, &id);
    if (status != KST_OK) {
        return status;
    }
    const ObjectPose target{m_app, id};
    target.Orientation(*pose);
    target.Quaternion(*pose);
    target.Scaling(*pose);
    ReadColors(element, Owner::kObject, id);
    status = ReadTextures(element, Owner::kObject, id);
    if (motion != nullptr) {
        status = ReadMotion(*motion, Owner::kObject, id);
    }
    return status;
}

int XmlSceneLoader::ReadBox(const XmlElement& element, int group) {
    return ReadSimpleObject(
        element, [this, group](AttributeReader& attributes, const float* at, int* id) {
            const float width = attributes.Float("width");
            const float height = attributes.Float("height");
            const float depth = attributes.Float("depth");
            return attributes.IsComplete() ? m_app.CreateBox(group, width, height, depth, at[0],
                                                             at[1], at[2], id, attributes.Label())
                                           : KST_ERROR_ARGUMENT;
        });
}

int XmlSceneLoader::ReadSphere(const XmlElement& element, int group) {
    return ReadSimpleObject(element, [this, group](AttributeReader& attributes, const float* at,
                                                   int* id) {
        const float radius = attributes.Float("radius");
        return attributes.IsComplete()
                   ? m_app.CreateSphere(group, radius, at[0], at[1], at[2], id, attributes.Label())
                   : KST_ERROR_ARGUMENT;
    });
}

int XmlSceneLoader::ReadCylinder(const XmlElement& element, int group) {
    return ReadSimpleObject(element, [this, group](AttributeReader& attributes, const float* at,
                                                   int* id) {
        const float radius = attributes.Float("radius");
        const float height = attributes.Float("height");
        return attributes.IsComplete() ? m_app.CreateCylinder(group, radius, height, at[0], at[1],
                                                              at[2], id, attributes.Label())
                                       : KST_ERROR_ARGUMENT;
    });
}

int XmlSceneLoader::ReadCone(const XmlElement& element, int group) {
    return ReadSimpleObject(
        element, [this, group](AttributeReader& attributes, const float* at, int* id) {
            const float radius = attributes.Float("radius");
            const float height = attributes.Float("height");
            return attributes.IsComplete() ? m_app.CreateCone(group, radius, height, at[0], at[1],
                                                              at[2], id, attributes.Label())
                                           : KST_ERROR_ARGUMENT;
        });
}

// ---- Shapes with vertices ----

int XmlSceneLoader::ReadTriangles(const XmlElement& element, int group) {
    std::vector<float> vertices;
    std::vector<int> counts;
    bool complete = AppendParts(element, "triangle", 3, vertices, counts);
    complete = complete && vertices.size() == 9 * counts.size();
    if (!complete) {
        return KST_ERROR_ARGUMENT;
    }
    int id = 0;
    int status = m_app.CreateTriangles(group, static_cast<int>(counts.size()), vertices.data(), &id,
                                       AttributeReader(element).Label());
    status = status == KST_OK ? ReadMeshPose(element, id) : status;
    return status == KST_OK ? ReadColors(element, Owner::kObject, id) : status;
}

int XmlSceneLoader::ReadPolygon(const XmlElement& element, int group) {
    std::vector<float> vertices;
    int count = 0;
    if (!AppendPoints(element, INT_MAX, vertices, count)) {
        return KST_ERROR_ARGUMENT;
    }
    int id = 0;
    int status =
        m_app.CreatePolygon(group, count, vertices.data(), &id, AttributeReader(element).Label());
    status = status == KST_OK ? ReadMeshPose(element, id) : status;
    return status == KST_OK ? ReadColors(element, Owner::kObject, id) : status;
}

int XmlSceneLoader::ReadPolygonGroup(const XmlElement& element, int group) {
    std::vector<float> vertices;
    std::vector<int> counts;
    if (!AppendParts(element, "polygon", INT_MAX, vertices, counts)) {
        return KST_ERROR_ARGUMENT;
    }
    int id = 0;
    int status =
        m_app.CreatePolygonGroup(group, static_cast<int>(counts.size()), counts.data(),
                                 vertices.data(), nullptr, &id, AttributeReader(element).Label());
    status = status == KST_OK ? ReadMeshPose(element, id) : status;
    return status == KST_OK ? ReadColors(element, Owner::kObject, id) : status;
}

int XmlSceneLoader::ReadPolyline(const XmlElement& element, int group) {
    std::vector<float> vertices;
    std::vector<int> counts;
    if (!AppendParts(element, "line", INT_MAX, vertices, counts)) {
        return KST_ERROR_ARGUMENT;
    }
    int id = 0;
    const int status = m_app.CreatePolyline(group, static_cast<int>(counts.size()), counts.data(),
                                            vertices.data(), &id, AttributeReader(element).Label());
    return status == KST_OK ? ReadMeshPose(element, id) : status;
}

int XmlSceneLoader::ReadTetrahedron(const XmlElement& element, int group) {
    std::vector<float> vertices;
    int count = 0;
    if (!AppendPoints(element, 4, vertices, count) || count < 4) {
        return KST_ERROR_ARGUMENT;
    }
    int id = 0;
    int status =
        m_app.CreateTetrahedron(group, vertices.data(), &id, AttributeReader(element).Label());
    status = status == KST_OK ? ReadMeshPose(element, id) : status;
    return status == KST_OK ? ReadColors(element, Owner::kObject, id) : status;
}

int XmlSceneLoader::ReadMeshPose(const XmlElement& element, int id) {
    const ObjectPose target{m_app, id};
    target.Position(element);
    target.Quaternion(element);
    target.Orientation(element);
    return target.Scaling(element);
}

// Geometry nodes as objects of the model.

#include "frame/CheckerApp.h"
#include "nodes/nodes/NodeClasses.h"
#include "scenefiles/VrmlChildren.h"
#include "scenefiles/VrmlSceneLoader.h"

namespace {

int RefuseText(const char* text) {
    CCheckerApp::SetErrorText(text);
    return KST_ERROR_FILE;
}

int RefuseIndex(const nodes::Node& node, const char* field, int index) {
    return RefuseText((node.typeName() + std::string(": ") + field + " " + std::to_string(index) +
                       " is out of range")
                          .c_str());
}

}  // namespace

int VrmlSceneLoader::ConvertGeometry(nodes::Node& geometry) {
    const int group = m_groupStack.back();
    int id = -1;
    int status = KST_OK;
    switch (geometry.type()) {
        case nodes::kBox: {
            const auto& [x, y, z] = static_cast<const nodes::BoxNode&>(geometry).size().value();
            status = m_app.CreateBox(group, x, y, z, 0, 0, 0, &id, "");
            break;
        }
        case nodes::kSphere: {
            const auto& sphere = static_cast<const nodes::SphereNode&>(geometry);
            status = m_app.CreateSphere(group, sphere.radius(), 0, 0, 0, &id, "");
            break;
        }
        case nodes::kCylinder: {
            const auto& cylinder = static_cast<const nodes::CylinderNode&>(geometry);
            status =
                m_app.CreateCylinder(group, cylinder.radius(), cylinder.height(), 0, 0, 0, &id, "");
            break;
        }
        case nodes::kCone: {
            const auto& cone = static_cast<const nodes::ConeNode&>(geometry);
            status = m_app.CreateCone(group, cone.bottomRadius(), cone.height(), 0, 0, 0, &id, "");
            break;
        }
        case nodes::kIndexedFaceSet:
            status =
                CreateFaceSet(static_cast<const nodes::IndexedFaceSetNode&>(geometry), group, &id);
            break;
        case nodes::kIndexedLineSet:
            status =
                CreateLineSet(static_cast<const nodes::IndexedLineSetNode&>(geometry), group, &id);
            break;
        case nodes::kExtrusion:
            status = RefuseText("Extrusion not (yet) supported!");
            break;
        default:
            break;
    }
    return status == KST_OK && id != -1 ? ApplySurface(id) : status;
}

int VrmlSceneLoader::CreateFaceSet(const nodes::IndexedFaceSetNode& node, int group, int* id) {
    if (!node.convex()) {
        return RefuseText("Non-convex polygons not supported. Triangulate your scene!");
    }
    const auto* const coordinate = ChildOfType<nodes::CoordinateNode>(node, nodes::kCoordinate);
    if (coordinate == nullptr) {
        return KST_OK;
    }
    const IndexedVertices::Indices indices = node.coordIndex().values();
    if (!m_vertices.Read(indices, coordinate->point().values())) {
        return RefuseIndex(node, "coordIndex", m_vertices.BadIndex());
    }
    const float* textureCoordinates = nullptr;
    const auto* const texture =
        ChildOfType<nodes::TextureCoordinateNode>(node, nodes::kTextureCoordinate);
    if (texture != nullptr && texture->pointCount() > 0) {
        if (!m_vertices.ReadTexture(indices, node.texCoordIndex().values(),
                                    texture->point().values())) {
            return RefuseIndex(node, "texCoordIndex", m_vertices.BadIndex());
        }
        textureCoordinates = m_vertices.TextureCoordinates();
    }
    return m_app.CreatePolygonGroup(group, m_vertices.FaceCount(), m_vertices.Counts(),
                                    m_vertices.Vertices(), textureCoordinates, id, "");
}

int VrmlSceneLoader::CreateLineSet(const nodes::IndexedLineSetNode& node, int group, int* id) {
    const auto* const coordinate = ChildOfType<nodes::CoordinateNode>(node, nodes::kCoordinate);
    if (coordinate == nullptr) {
        return KST_OK;
    }
    if (!m_vertices.Read(node.coordIndex().values(), coordinate->point().values())) {
        return RefuseIndex(node, "coordIndex", m_vertices.BadIndex());
    }
    return m_app.CreatePolyline(group, m_vertices.FaceCount(), m_vertices.Counts(),
                                m_vertices.Vertices(), id, "");
}

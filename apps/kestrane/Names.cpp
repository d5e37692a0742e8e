#include "Names.h"

#include "model/Group.h"
#include "model/Registries.h"
#include "model/SceneObject.h"

namespace {

std::string Name(const char* kind, int id, const std::string& label) {
    std::string name = std::string(kind) + " " + std::to_string(id);
    if (!label.empty())
        name += " " + Quoted(label);
    return name;
}

}  // namespace

std::string GroupName(int id) {
    return Name("group", id, GroupLabel(id));
}

std::string ObjectName(int id) {
    return Name("object", id, ObjectLabel(id)) + " of " +
           GroupName(g_objects.at(id)->Group()->Id());
}

const std::string& GroupLabel(int id) {
    return g_groups.at(id)->Label();
}

const std::string& ObjectLabel(int id) {
    return g_objects.at(id)->Label();
}

std::string TypeName(int type) {
    static const char* const names[] = {"box",          "sphere",    "cylinder",
                                        "cone",         "triangles", "polygon",
                                        "polygonGroup", "polyline",  "tetrahedron"};
    if (type < kTypeBox || type > kTypeTetrahedron)
        return "object of type " + std::to_string(type);
    return names[type - kTypeBox];
}

Json GroupJson(int id) {
    return {{"id", id}, {"label", LabelJson(GroupLabel(id))}};
}

Json ObjectJson(int id) {
    const CSceneObject& object = *g_objects.at(id);
    return {{"id", id},
            {"label", LabelJson(object.Label())},
            {"type", TypeName(object.Type())},
            {"group", GroupJson(object.Group()->Id())}};
}

Json LabelJson(const std::string& label) {
    return label.empty() ? Json() : Json(label);
}

#include "scenefiles/VrmlSceneLoader.h"

#include <climits>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <system_error>
#include <utility>

#include "frame/CheckerApp.h"
#include "model/DeferredCounts.h"
#include "nodes/SceneGraph.h"
#include "scenefiles/FileNames.h"
#include "scenefiles/VrmlChildren.h"

namespace {

using nodes::Node;

/// What all loads of the process share.
struct Surfaces {
    /// Red, green, blue and opacity of the material read last: a shape without one looks like the
    /// shape before it.
    float color[4] = {1.0F, 0.0F, 0.0F, 1.0F};
    int nextTextureIndex = 0;
};
Surfaces surfaces;

/// Places of the palette. Beyond them only an index that no display has loaded can stand.
constexpr int kPaletteSize = 100;

/// Empty if the file cannot be opened.
std::string TextOf(const nodes::ReadError& error, const char* fileName) {
    if (error.message.empty()) {
        std::error_code fault;
        const auto type = std::filesystem::status(fileName, fault).type();
        // To open a pipe would wait for one who writes to it.
        const bool isPlain = type == std::filesystem::file_type::regular;
        const std::unique_ptr<std::FILE, decltype(&std::fclose)> file(
            isPlain ? std::fopen(fileName, "rb") : nullptr, &std::fclose);
        if (file == nullptr && (isPlain || type == std::filesystem::file_type::not_found)) {
            return "";
        }
        return "not a VRML97 file";
    }
    // What is wrong with the file as a whole has no place in it.
    return error.line == 0 && error.token.empty()
               ? error.message
               : error.message + " (line " + std::to_string(error.line) + "): " + error.token;
}

}  // namespace

VrmlSceneLoader::VrmlSceneLoader() : m_app(Application()) {}

int VrmlSceneLoader::Load(const char* fileName, int group, bool capable, char** errorText) {
    m_baseDirectory = FolderOf(fileName);
    m_inheritedColCheck = capable;
    nodes::SceneGraph graph;
    if (!graph.load(fileName, true, nullptr, nullptr)) {
        const std::string text = TextOf(graph.error(), fileName);
        if (!text.empty() && errorText != nullptr) {
            CCheckerApp::SetErrorText(text);
            *errorText = CCheckerApp::ErrorText();
        }
        return KST_ERROR_FILE;
    }
    m_groupStack = {group};
    if (graph.firstNode() == nullptr) {
        return KST_ERROR_FILE;
    }
    const CDeferredCounts counts(group);
    for (Node* node = graph.firstNode(); node != nullptr; node = node->nextSibling()) {
        const int status = WalkNode(*node, KST_OK);
        if (status != KST_OK) {
            if (errorText != nullptr) {
                *errorText = CCheckerApp::ErrorText();
            }
            return status;
        }
    }
    return KST_OK;
}

/// The status passes from node to node: most types hand on what they are given, and a Group and a
/// Transform what their last child has left. Nodes inside nodes wait on a list of their own, not on
/// the stack, which must not be the limit of how deep a file may nest.
int VrmlSceneLoader::WalkNode(Node& top, int status) {
    struct Level {
        Node* next;
        bool isTransform;
        bool isEntered = false;
    };
    std::vector<Level> levels;
    Node* node = &top;
    for (;;) {
        if (node != nullptr) {
            Node& visited = *std::exchange(node, nullptr);
            switch (visited.type()) {
                case nodes::kGroup:
                    levels.push_back({visited.firstChild(), false});
                    break;
                case nodes::kTransform:
                    ConvertTransform(static_cast<nodes::TransformNode&>(visited));
                    levels.push_back({visited.firstChild(), true});
                    break;
                case nodes::kSwitch:
                    node = visited.childAt(static_cast<nodes::SwitchNode&>(visited).whichChoice());
                    break;
                case nodes::kShape:
                    status = ConvertShape(visited);
                    break;
                case nodes::kViewpoint:
                    status = ConvertViewpoint(visited);
                    break;
                default:
                    break;
            }
            continue;
        }
        if (levels.empty()) {
            return status;
        }
        Level& level = levels.back();
        const bool stops = !level.isTransform && level.isEntered && status != KST_OK;
        if (level.next == nullptr || stops) {
            if (level.isTransform && status == KST_OK) {
                m_groupStack.pop_back();
            }
            levels.pop_back();
            continue;
        }
        level.isEntered = true;
        node = std::exchange(level.next, level.next->nextSibling());
    }
}

int VrmlSceneLoader::ConvertTransform(nodes::TransformNode& node) {
    int id = m_groupStack.back();
    int status =
        m_app.CreateGroup(&id, m_groupStack.back(), m_inheritedColCheck, node.nameText(), true);
    m_groupStack.push_back(id);
    if (status != KST_OK) {
        return status;
    }
    const auto& [scaleX, scaleY, scaleZ] = node.scale().value();
    status = m_app.SetGroupScaling(id, scaleX, scaleY, scaleZ);
    if (status != KST_OK) {
        return status;
    }
    const auto& [x, y, z, angle] = node.rotation().value();
    const float sine = std::sin(angle / 2);
    status = m_app.SetGroupQuaternion(id, x * sine, y * sine, z * sine, std::cos(angle / 2));
    if (status != KST_OK) {
        return status;
    }
    const auto& [atX, atY, atZ] = node.translation().value();
    return m_app.SetGroupPosition(id, atX, atY, atZ);
}

int VrmlSceneLoader::ConvertViewpoint(const Node& node) {
    static constexpr float kPoint[3] = {-1.0F, -1.0F, -1.0F};
    static constexpr float kUp[3] = {0.0F, 1.0F, 0.0F};
    const auto& viewpoint = static_cast<const nodes::ViewpointNode&>(node);
    return m_app.SetViewParams(0, viewpoint.position().value().data(), kPoint, kUp);
}

// ---- Shapes ----

int VrmlSceneLoader::ConvertShape(Node& node) {
    m_currentTexturePath.clear();
    int status = KST_OK;
    if (Node* const appearance = ChildOfType<Node>(node, nodes::kAppearance)) {
        status = ReadAppearance(*appearance);
    }
    Node* const geometry = node.geometryChild();
    return status == KST_OK && geometry != nullptr ? ConvertGeometry(*geometry) : status;
}

int VrmlSceneLoader::ReadAppearance(Node& appearance) {
    if (const auto* const material =
            ChildOfType<nodes::MaterialNode>(appearance, nodes::kMaterial)) {
        material->diffuseColor().get(surfaces.color);
        surfaces.color[3] = 1.0F - material->transparency();
    }
    const auto* const texture =
        ChildOfType<nodes::ImageTextureNode>(appearance, nodes::kImageTexture);
    const char* const url = texture != nullptr ? texture->urlAt(0) : nullptr;
    const std::string_view name = url != nullptr ? url : "";
    if (name.size() < 2) {
        return KST_OK;
    }
    m_currentTexturePath = IsAbsolute(name) ? std::string(name) : m_baseDirectory + url;
    // Where an appearance is used again, its texture has been loaded where it was defined.
    return appearance.instanceOf() == nullptr ? LoadVrmlTexture(m_currentTexturePath) : KST_OK;
}

int VrmlSceneLoader::LoadVrmlTexture(const std::string& path) {
    if (!EndsWith(path, ".ppm")) {
        CCheckerApp::SetErrorText("Texture has wrong file type :" + path);
        return KST_ERROR_FILE;
    }
    if (m_app.LoadTexture(surfaces.nextTextureIndex, path.c_str(), 1.0F) != KST_OK) {
        CCheckerApp::SetErrorText("Error loading texture: " + path);
        return KST_ERROR_FILE;
    }
    m_textures[path] = surfaces.nextTextureIndex;
    surfaces.nextTextureIndex += surfaces.nextTextureIndex < INT_MAX ? 1 : 0;
    return KST_OK;
}

int VrmlSceneLoader::ApplySurface(int object) {
    if (m_currentTexturePath.empty()) {
        const float* const color = surfaces.color;
        return m_app.SetObjectColor(object, color[0], color[1], color[2], color[3], 0);
    }
    const int texture = m_textures[m_currentTexturePath];
    return texture < kPaletteSize ? m_app.SetObjectTexture(object, texture, 1.0F, 1.0F, 0) : KST_OK;
}

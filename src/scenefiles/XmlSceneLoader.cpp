#include "scenefiles/XmlSceneLoader.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <string_view>
#include <system_error>
#include <vector>

#include "frame/CheckerApp.h"
#include "scenefiles/AttributeReader.h"
#include "scenefiles/FileNames.h"
#include "scenefiles/ScenePose.h"
#include "scenefiles/xml/XmlDocument.h"

namespace {

bool HasFolder(std::string_view name) {
    return std::any_of(name.begin(), name.end(), IsSeparator);
}

}  // namespace

XmlSceneLoader::XmlSceneLoader() : m_app(Application()) {}

int XmlSceneLoader::Load(const char* fileName, int group, char** errorText) {
    static char noFile[] = "File does not exist.";
    std::error_code error;
    const bool exists = std::filesystem::exists(fileName, error);
    const int status = exists ? ReadDocument(fileName, group) : KST_ERROR_FILE;
    if (errorText != nullptr) {
        *errorText = exists ? CCheckerApp::ErrorText() : noFile;
    }
    return status;
}

int XmlSceneLoader::ReadDocument(const char* fileName, int group) {
    m_baseDirectory = FolderOf(fileName);
    XmlDocument document;
    if (document.Load(fileName) != 0) {
        CCheckerApp::SetErrorText(document.GetError());
        return KST_ERROR_FILE;
    }
    if (document.GetDocTypeSystemId() != "kestrane.dtd") {
        CCheckerApp::SetErrorText("No/wrong DTD file.");
        return KST_ERROR_FILE;
    }
    return WalkElements(*document.Root(), group);
}

/// Groups inside groups wait on a list of their own, not on the stack: a scene of many includes,
/// each as deep as a document may be, must get by with the stack of a small thread.
int XmlSceneLoader::WalkElements(const XmlElement& parent, int group) {
    struct Item {
        std::string_view name;
        int (XmlSceneLoader::*read)(const XmlElement&, int);
        bool failureStops;
    };
    static constexpr Item kItems[] = {
        {"include", &XmlSceneLoader::ReadInclude, true},
        {"defineTexture", &XmlSceneLoader::ReadDefineTexture, true},
        {"viewParams", &XmlSceneLoader::ReadViewParams, true},
        {"bgcolor", &XmlSceneLoader::ReadBackground, true},
        {"box", &XmlSceneLoader::ReadBox, false},
        {"sphere", &XmlSceneLoader::ReadSphere, false},
        {"cylinder", &XmlSceneLoader::ReadCylinder, false},
        {"cone", &XmlSceneLoader::ReadCone, false},
        {"triangles", &XmlSceneLoader::ReadTriangles, false},
        {"polygon", &XmlSceneLoader::ReadPolygon, false},
        {"polygonGroup", &XmlSceneLoader::ReadPolygonGroup, false},
        {"polyline", &XmlSceneLoader::ReadPolyline, false},
        {"tetrahedron", &XmlSceneLoader::ReadTetrahedron, false},
    };
    struct Level {
        const XmlElement* next;
        int group;
    };
    std::vector<Level> levels{{parent.FirstChild(), group}};
    // Of the innermost list. It is 0 when a list inside starts and must be when that one ends, so
    // that one status serves all levels.
    int status = KST_OK;
    while (!levels.empty()) {
        const XmlElement* const child = levels.back().next;
        const int into = levels.back().group;
        if (child == nullptr) {
            levels.pop_back();
            if (status != KST_OK) {
                return status;
            }
            continue;
        }
        levels.back().next = child->NextSibling();
        const std::string_view name = child->GetName();
        if (name == "group") {
            int made = 0;
            status = ReadGroup(*child, &made, into);
            if (status != KST_OK) {
                return status;
            }
            levels.push_back({child->FirstChild(), made});
            continue;
        }
        const auto* const item =
            std::find_if(std::begin(kItems), std::end(kItems),
                         [name](const Item& known) { return known.name == name; });
        if (item != std::end(kItems)) {
            status = (this->*item->read)(*child, into);
            if (status != KST_OK && item->failureStops) {
                return status;
            }
        }
    }
    return status;
}

int XmlSceneLoader::ReadInclude(const XmlElement& element, int group) {
    AttributeReader attributes(element);
    std::string name = attributes.Text("fileName");
    if (!attributes.IsComplete()) {
        return KST_ERROR_ARGUMENT;
    }
    if (!HasFolder(name)) {
        name = m_baseDirectory + name;
    }
    char* text = CCheckerApp::ErrorText();
    const int status = m_app.LoadScene(name.c_str(), group, &text);
    if (status == KST_ERROR_FILE && text != CCheckerApp::ErrorText()) {
        CCheckerApp::SetErrorText(text);
    }
    return status;
}

int XmlSceneLoader::ReadDefineTexture(const XmlElement& element, int /*group*/) {
    AttributeReader attributes(element);
    std::string path = attributes.Text("fileName");
    if (!IsAbsolute(path)) {
        path = m_baseDirectory + path;
    }
    if (!EndsWith(path, ".ppm")) {
        CCheckerApp::SetErrorText("Texture has wrong file type.");
        return KST_ERROR_FILE;
    }
    const int slot = attributes.Integer("ID");
    const float alpha = attributes.Float("alpha", 1.0f);
    if (!attributes.IsComplete()) {
        return KST_ERROR_ARGUMENT;
    }
    const int status = m_app.LoadTexture(slot, path.c_str(), alpha);
    if (status == KST_ERROR_FILE) {
        CCheckerApp::SetErrorText("Texture file not found.");
    }
    return status;
}

int XmlSceneLoader::ReadBackground(const XmlElement& element, int /*group*/) {
    AttributeReader attributes(element);
    const float red = attributes.Float("red");
    const float green = attributes.Float("green");
    const float blue = attributes.Float("blue");
    return attributes.IsComplete() ? m_app.SetBackgroundColor(0, red, green, blue)
                                   : KST_ERROR_ARGUMENT;
}

int XmlSceneLoader::ReadGroup(const XmlElement& element, int* newId, int parent) {
    AttributeReader attributes(element);
    const bool colCheck = attributes.Bool("colCheck");
    if (!attributes.IsComplete()) {
        return KST_ERROR_ARGUMENT;
    }
    int status = m_app.CreateGroup(newId, parent, colCheck, attributes.Label(), true);
    if (status != KST_OK) {
        return status;
    }
    const int id = *newId;
    const GroupPose pose{m_app, id};
    status = pose.Position(element);
    if (status == KST_OK) {
        status = pose.Orientation(element);
    }
    if (status == KST_OK) {
        status = pose.Quaternion(element);
    }
    if (status == KST_OK) {
        status = pose.Scaling(element);
    }
    if (status != KST_OK) {
        return status;
    }
    ReadColors(element, Owner::kGroup, id);
    ReadTextures(element, Owner::kGroup, id);
    if (const XmlElement* const motion = element.FirstChild("motion")) {
        ReadMotion(*motion, Owner::kGroup, id);
    }
    return KST_OK;
}

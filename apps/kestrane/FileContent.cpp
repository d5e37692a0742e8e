#include "FileContent.h"

#include <filesystem>
#include <string_view>
#include <system_error>
#include <vector>

#include "Names.h"
#include "Output.h"
#include "model/SceneObject.h"
#include "scenefiles/xml/XmlDocument.h"

namespace {

/// 0 for an element that is no object.
int ObjectTypeOf(std::string_view name) {
    for (int type = kTypeBox; type <= kTypeTetrahedron; ++type) {
        if (name == TypeName(type))
            return type;
    }
    return 0;
}

bool TakesMotion(int objectType) {
    return objectType >= kTypeBox && objectType <= kTypeCone;
}

std::size_t CountKeyStates(const XmlElement& element) {
    const XmlElement* const motion = element.FirstChild("motion");
    return motion ? motion->GetChildren("keyState").size() : 0;
}

/// Adds what an include asks for; false if that cannot be told.
bool AddInclude(const XmlElement& include, const std::string& file, FileContent& content) {
    const XmlAttribute* const attribute = include.GetAttribute("fileName");
    if (!attribute)
        return false;
    std::string name(attribute->value);
    if (name.find_first_of("/\\") == std::string::npos) {
        std::error_code error;
        const auto folder = std::filesystem::absolute(file, error).parent_path();
        name = (folder / name).string();
    }
    const auto included = CountFileContent(name);
    if (!included)
        return false;
    content.objects += included->objects;
    content.keyStates += included->keyStates;
    return true;
}

}  // namespace

std::optional<FileContent> CountFileContent(const std::string& file) {
    XmlDocument document;
    if (!HasSuffix(file, ".xml") || document.Load(file) != 0)
        return std::nullopt;
    FileContent content;
    // Where each enclosing element's children go on.
    std::vector<const XmlElement*> levels{document.Root()->FirstChild()};
    while (!levels.empty()) {
        const XmlElement* const element = levels.back();
        if (!element) {
            levels.pop_back();
            continue;
        }
        levels.back() = element->NextSibling();
        const int type = ObjectTypeOf(element->GetName());
        const bool isGroup = element->GetName() == "group";
        if (type != 0)
            ++content.objects;
        if (isGroup || TakesMotion(type))
            content.keyStates += CountKeyStates(*element);
        if (isGroup)
            levels.push_back(element->FirstChild());
        if (element->GetName() == "include" && !AddInclude(*element, file, content))
            return std::nullopt;
    }
    return content;
}

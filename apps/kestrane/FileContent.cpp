#include "FileContent.h"

#include <filesystem>
#include <map>
#include <string_view>
#include <system_error>
#include <vector>

#include "ElementFault.h"
#include "Failure.h"
#include "Names.h"
#include "Output.h"
#include "WorldContent.h"
#include "frame/LoadingScenes.h"
#include "model/SceneObject.h"
#include "scenefiles/xml/XmlDocument.h"

namespace {

/// An element behind all that it stands in, the root first.
using Path = std::vector<const XmlElement*>;

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

/// `box "crate"`, or `box #2` for the second without a label where there are several.
std::string ElementName(const XmlElement& element, const XmlElement& parent) {
    std::string name(element.GetName());
    const XmlAttribute* const label = element.GetAttribute("label");
    if (label && *label->value != '\0')
        return name.append(" ").append(Quoted(label->value));
    const std::vector<XmlElement*> all = parent.GetChildren(element.GetName());
    for (std::size_t i = 0; all.size() > 1 && i < all.size(); ++i) {
        if (all[i] == &element)
            name.append(" #").append(std::to_string(i + 1));
    }
    return name;
}

/// `group "a" / box #2 / or`
std::string Place(const Path& path) {
    if (path.size() == 1)
        return std::string(path[0]->GetName());
    // Enough to find it by, and to fit into a line.
    constexpr std::size_t kMostNames = 5;
    const std::size_t first = path.size() > kMostNames + 1 ? path.size() - kMostNames : 1;
    std::string place = first > 1 ? "... / " : "";
    for (std::size_t i = first; i < path.size(); ++i)
        place.append(i > first ? " / " : "").append(ElementName(*path[i], *path[i - 1]));
    return place;
}

class ContentReader {
  public:
    /// Each file is read once, so that files that include each other come to an end.
    FileContent Read(const std::string& file) {
        const auto [known, isNew] = m_files.try_emplace(file);
        if (!isNew)
            return known->second;
        FileContent content;
        // The library refuses what nests deeper.
        if (m_depth > LoadingScenes::kDeepestInclude)
            return content;
        ++m_depth;
        XmlDocument document;
        if (document.Load(file) != 0)
            throw Failure(OneLine(document.GetError()));
        const XmlElement* element = document.Root();
        if (element->GetName() != "scene")
            throw Failure(file + ": the root element is <" + std::string(element->GetName()) +
                          ">, not <scene>");
        Path path;
        while (element || !path.empty()) {
            if (element) {
                path.push_back(element);
                Visit(path, file, content);
                element = element->FirstChild();
            } else {
                element = path.back()->NextSibling();
                path.pop_back();
            }
        }
        --m_depth;
        m_files[file] = content;
        return content;
    }

  private:
    void Visit(const Path& path, const std::string& file, FileContent& content) {
        const XmlElement& element = *path.back();
        const XmlElement* const parent = path.size() > 1 ? path[path.size() - 2] : nullptr;
        const std::string fault = ElementFault(element, parent);
        if (!fault.empty())
            throw Failure(file + ": " + Place(path) + ": " + fault);
        if (!parent || (parent->GetName() != "scene" && parent->GetName() != "group"))
            return;
        const int type = ObjectTypeOf(element.GetName());
        if (type != 0)
            ++content.objects;
        if (element.GetName() == "group" || TakesMotion(type))
            content.keyStates += CountKeyStates(element);
        if (element.GetName() == "include")
            AddInclude(path, file, content);
    }

    void AddInclude(const Path& path, const std::string& file, FileContent& content) {
        const XmlAttribute* const attribute = path.back()->GetAttribute("fileName");
        const std::string context = file + ": " + Place(path) + ": ";
        if (!attribute)
            throw Failure(context + "no fileName");
        std::string name(attribute->value);
        RequireSceneSuffix(name, context);
        std::error_code error;
        if (name.find_first_of("/\\") == std::string::npos) {
            const auto folder = std::filesystem::absolute(file, error).parent_path();
            name = (folder / name).string();
        }
        if (!std::filesystem::exists(name, error))
            throw Failure(context + name + " does not exist");
        if (HasSuffix(name, ".wrl")) {
            content.objects += ReadWorldContent(name).objects;
            return;
        }
        const FileContent included = Read(name);
        content.objects += included.objects;
        content.keyStates += included.keyStates;
    }

    std::map<std::string, FileContent> m_files;
    std::size_t m_depth = 0;
};

}  // namespace

FileContent ReadFileContent(const std::string& file) {
    return ContentReader().Read(file);
}

void RequireSceneSuffix(const std::string& file, const std::string& context) {
    if (!HasSuffix(file, ".xml") && !HasSuffix(file, ".wrl"))
        throw Failure(context + Quoted(file) +
                      " is not a scene file: its name ends neither in .xml nor in .wrl");
}

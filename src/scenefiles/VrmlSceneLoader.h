#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "scenefiles/IndexedVertices.h"

class CCheckerApp;

namespace nodes {
class AppearanceNode;
class IndexedFaceSetNode;
class IndexedLineSetNode;
class Node;
class ShapeNode;
class TransformNode;
}  // namespace nodes

/// Reads the geometry of one VRML97 file into the model, through the methods of the application
/// object: each Transform makes a group, each Shape an object; a Group, a Switch and a Viewpoint do
/// their part, and all else is passed over with what is below it. There is no rollback: what was
/// made before a failure stays.
///
/// A node without what it cannot do without counts as absent: a texture without a name, a face set
/// without points, a choice that there is not.
class VrmlSceneLoader {
  public:
    VrmlSceneLoader();

    /// Reads the file into a group, which must exist; `capable` says whether the groups made in it
    /// take part in collisions. KST_ERROR_FILE for whatever is wrong with the file, with a text
    /// unless it cannot be opened or holds no node; otherwise the code of the node that ended the
    /// walk.
    ///
    /// `errorText` may be null. After a failure with a text it receives the application's, which is
    /// not the caller's to free; otherwise it is left alone.
    int Load(const char* fileName, int group, bool capable, char** errorText);

  private:
    int WalkNode(nodes::Node& top, int status);
    int ConvertTransform(nodes::TransformNode& node);
    int ConvertViewpoint(const nodes::Node& node);

    int ConvertShape(nodes::Node& node);
    int ReadAppearance(nodes::Node& appearance);
    int LoadVrmlTexture(const std::string& path);

    /// An object into the group on top, looking as the appearance in hand says.
    int ConvertGeometry(nodes::Node& geometry);
    int CreateFaceSet(const nodes::IndexedFaceSetNode& node, int group, int* id);
    int CreateLineSet(const nodes::IndexedLineSetNode& node, int group, int* id);
    int ApplySurface(int object);

    CCheckerApp& m_app;
    // The folder of the file with its separator at the end.
    std::string m_baseDirectory;
    bool m_inheritedColCheck = false;
    // Ids of the groups around the node in hand, the target first. One that a failure left behind
    // stays on it and receives what comes after.
    std::vector<int> m_groupStack;
    // Palette index by path, and the path of the shape in hand; empty without a texture.
    std::unordered_map<std::string, int> m_textures;
    std::string m_currentTexturePath;
    IndexedVertices m_vertices;
};

#pragma once

#include <string>

class CCheckerApp;
class XmlElement;

/// Reads one XML scene file into the model, element by element, through the methods of the
/// application object. There is no rollback: what was made before a failure stays.
///
/// An attribute or child that a valid file has, but a DTD of somebody's own let be left out, counts
/// as an argument out of range: KST_ERROR_ARGUMENT where the model would have given its code.
class XmlSceneLoader {
  public:
    XmlSceneLoader();

    /// Reads the file into a group, which must exist. KST_ERROR_FILE with a text for whatever is
    /// wrong with the file; otherwise the code of the element that ended the walk, or of the last
    /// object if that one failed.
    ///
    /// `errorText` may be null. It receives a text that is constant or the application's error
    /// text, in either case not the caller's to free; after success it means nothing.
    int Load(const char* fileName, int group, char** errorText);

  private:
    int ReadDocument(const char* fileName, int group);
    int WalkElements(const XmlElement& parent, int group);

    int ReadInclude(const XmlElement& element, int group);
    int ReadDefineTexture(const XmlElement& element, int group);
    int ReadBackground(const XmlElement& element, int group);
    int ReadGroup(const XmlElement& element, int* newId, int parent);

    int ReadViewParams(const XmlElement& element, int group);
    int ReadViewMotion(const XmlElement& element, int view);

    // What a group and an object have in common; the id is of the one or the other.
    enum class Owner { kGroup, kObject };
    int ReadColors(const XmlElement& element, Owner owner, int id);
    int ReadTextures(const XmlElement& element, Owner owner, int id);
    int ReadMotion(const XmlElement& element, Owner owner, int id);

    int ReadBox(const XmlElement& element, int group);
    int ReadSphere(const XmlElement& element, int group);
    int ReadCylinder(const XmlElement& element, int group);
    int ReadCone(const XmlElement& element, int group);
    template <typename Create>
    int ReadSimpleObject(const XmlElement& element, Create create);

    int ReadTriangles(const XmlElement& element, int group);
    int ReadPolygon(const XmlElement& element, int group);
    int ReadPolygonGroup(const XmlElement& element, int group);
    int ReadPolyline(const XmlElement& element, int group);
    int ReadTetrahedron(const XmlElement& element, int group);
    int ReadMeshPose(const XmlElement& element, int id);

    CCheckerApp& m_app;
    // The folder of the file with its separator at the end.
    std::string m_baseDirectory;
};

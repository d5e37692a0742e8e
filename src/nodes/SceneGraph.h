#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "nodes/NodeTree.h"
#include "nodes/reader/ReadError.h"

namespace nodes {

/// What the first bytes of a file say of it.
enum FileType : std::int32_t {
    kUnknownFile = 0,
    kVrmlFile = 1,
    kXmlFile = 2,
    kGifFile = 4,
    kJpegFile = 5,
    kPngFile = 7,
    kGzipFile = 8,
};
/// kUnknownFile also for a file that cannot be opened or is shorter than five bytes.
std::int32_t detectFileType(const char* path);

/// What kept a save from being whole.
enum class SaveFault : std::uint8_t {
    kNone,
    kNotCreated,
    kNotWritten,
    kCut,  // more text than the form may have
};

/// A whole world: a tree that is read from files and written to them, and the stacks of its bound
/// nodes. One thread at a time may use the node library.
class SceneGraph : public NodeTree {
  public:
    using BindStack = std::vector<Node*>;
    static constexpr std::size_t kInstanceNodes = std::size_t{1} << 20;
    static constexpr std::size_t kInstanceNodesEach = 64;

    SceneGraph();
    ~SceneGraph() override;

    /// Deletes all nodes and routes; nothing is bound then.
    void clear() override;
    /// Moves all nodes and routes below PARENT; nothing is bound then.
    void moveTo(Node& parent) override;
    /// clear(), then read().
    bool load(const char* path, bool callInitialise, ProgressFn progressFn, void* userData);
    /// Adds the nodes and routes of a VRML97 file, plain or packed by gzip, and binds the first
    /// node of each bindable type. False if it cannot be read, with the reason in error(); nothing
    /// is added then. With callInitialise, each USE becomes an instance of its node, at the end of
    /// the children beside which it stands.
    bool read(const char* path, bool callInitialise, ProgressFn progressFn, void* userData);
    /// Writes the world as gzip-packed VRML97 of at most 100,000,000 characters; what is beyond is
    /// dropped. Always true.
    bool saveVrml(const char* path, ProgressFn progressFn, void* userData);
    /// Writes the world as XML, top-level nodes and routes side by side. False if the file cannot
    /// be created.
    bool saveXml(const char* path, ProgressFn progressFn, void* userData);
    /// Whether all of the last save reached the file.
    bool savedWhole() const { return m_savedWhole; }
    /// As the saves, without initialising the world again at the end, so that it stays prepared for
    /// a save; that is not worth its time for a world that is not used any further.
    SaveFault writeVrml(const char* path);
    SaveFault writeXml(const char* path, ProgressFn progressFn, void* userData);
    /// Initialises all nodes, and puts instances in place of all references. Nodes that show each
    /// other may ask for more nodes than any memory holds: what goes beyond kInstanceNodes and
    /// kInstanceNodesEach for each node of the tree stays a reference.
    void initialise(ProgressFn progressFn, void* userData);

    void setBound(Node& node, bool state) override;
    const ViewpointNode& viewer() const override;
    /// The top of a stack, null if it is empty.
    static Node* boundNode(const BindStack& stack);
    const BindStack& backgrounds() const { return m_backgrounds; }
    const BindStack& fogs() const { return m_fogs; }
    const BindStack& navigationInfos() const { return m_navigationInfos; }
    const BindStack& viewpoints() const { return m_viewpoints; }
    BackgroundNode& defaultBackground() { return m_defaultBackground; }
    FogNode& defaultFog() { return m_defaultFog; }
    NavigationInfoNode& defaultNavigationInfo() { return m_defaultNavigationInfo; }
    ViewpointNode& defaultViewpoint() { return m_defaultViewpoint; }

    const ReadError& error() const { return m_error; }
    /// True after a successful read.
    bool loaded() const { return m_loaded; }

  private:
    void clearStacks();
    BindStack& stackOf(const Node& node);
    void bind(BindStack& stack, Node& node);
    void unbind(BindStack& stack, Node& node);
    void prepareSave();
    void initialiseNodes(ProgressFn progressFn, void* userData);
    void replaceInstances();
    bool resolveReferences();
    bool makeInstances();
    bool add(NodeTree& tree, bool callInitialise);

    BindStack m_backgrounds;
    BindStack m_fogs;
    BindStack m_navigationInfos;
    BindStack m_viewpoints;
    BackgroundNode m_defaultBackground;
    FogNode m_defaultFog;
    NavigationInfoNode m_defaultNavigationInfo;
    ViewpointNode m_defaultViewpoint;
    ReadError m_error;
    bool m_loaded = false;
    bool m_savedWhole = true;
};

}  // namespace nodes

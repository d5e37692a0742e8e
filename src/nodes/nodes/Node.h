#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "nodes/fields/Field.h"
#include "nodes/fields/Lists.h"
#include "nodes/fields/Matrix.h"
#include "nodes/nodes/FieldSpec.h"
#include "nodes/nodes/NodeType.h"

namespace nodes {

class NodeTree;

/// A node: a name, fields, and children in order.
///
/// A node belongs to the node or tree whose child it is, or to the unique_ptr that holds it; its
/// children go with it. Walks, copies and destruction need no stack, however deep the tree is.
///
/// An instance has no name and no values of its own: it shows those of another node, so that a
/// change through either is a change of both.
class Node {
  public:
    Node(const Node&) = delete;
    Node& operator=(const Node&) = delete;
    virtual ~Node();

    // What a class may do in its own way.

    /// Whether a file may hold NODE as a child of this one. addChild() does not ask.
    virtual bool acceptsChild(const Node& node) const;
    /// Prints the node's own lines, each behind INDENT.
    virtual void writeFields(TextStream& stream, std::string_view indent) const;
    /// A route has delivered to this node.
    virtual void eventReceived() {}
    /// Values and children are complete.
    virtual void initialise() {}
    /// Called on every node before a save.
    virtual void prepareSave() {}
    /// Writes the hidden box of a geometry.
    virtual void computeBounds() {}

    // Name and type.

    /// Characters below 33 and above 127 become "_"; null gives an empty name.
    static std::string storedName(const char* text);
    /// The name is storedName(). An instance names the node that it shows.
    void setName(const char* text);
    const char* name() const { return holder().m_name.c_str(); }
    const std::string& nameText() const { return holder().m_name; }
    bool hasName() const { return !holder().m_name.empty(); }
    std::int32_t type() const { return m_type; }
    const char* typeName() const { return nodeTypeName(m_type); }
    bool isType(std::int32_t type) const { return m_type == type; }
    bool isGrouping() const { return isGroupingType(m_type); }
    bool isGeometry() const { return isGeometryType(m_type); }
    bool isBindable() const { return isBindableType(m_type); }
    bool isSensor() const { return isSensorType(m_type); }
    bool isInterpolator() const { return isInterpolatorType(m_type); }
    bool isTexture() const { return isTextureType(m_type); }
    bool isChildLeaf() const { return isChildLeafType(m_type); }
    bool isDynamicGroup() const { return isDynamicGroupType(m_type); }
    bool isPlaceholder() const { return isPlaceholderType(m_type); }

    // Place in the tree. What is not there is null.

    /// Null for a node at the top level.
    Node* parent() const;
    /// Null outside a tree.
    NodeTree* scene() const { return m_scene; }
    Node* nextSibling() const { return m_next; }
    Node* previousSibling() const { return m_previous; }
    Node* firstChild() const { return m_firstChild; }
    Node* childAt(int i) const;
    int childCount() const;
    /// The first child of a type; of an instance, the type of the node that it shows counts.
    Node* childOfType(std::int32_t type) const;
    Node* geometryChild() const;
    Node* textureChild() const;
    /// The node behind this one, children before siblings, over the whole tree; null at its end.
    Node* next() const { return nextWithin(nullptr); }
    /// As next(), inside the subtree of TOP; null at its end.
    Node* nextWithin(const Node* top) const;
    /// The next node that is not in this one's subtree.
    Node* nextBehind() const;
    Node* nextOfType(std::int32_t type) const;
    /// Null finds nothing.
    Node* nextNamed(const char* text) const;

    // Building.

    /// Appends CHILD, which belongs to this node from now on, and returns it.
    Node& addChild(std::unique_ptr<Node> child, bool callInitialise);
    /// Moves CHILD here, behind the other children, from where it stands. Does nothing if CHILD is
    /// this node or stands above it, or if it stands nowhere. One that comes from another tree
    /// leaves its routes there.
    void addChild(Node& child, bool callInitialise);
    /// Takes this node out of its tree: with it go its routes, what Script fields say of it, its
    /// place among the bound nodes, and its instances, which are deleted wherever they stand. The
    /// next bound node is told, while this one is half out of the tree. The caller gets the node;
    /// null if nothing owned it but the caller already.
    std::unique_ptr<Node> detach();

    // Instances.

    /// The node whose values this one shows, if it is an instance.
    Node* instanceOf() const { return m_isInstance ? m_source : nullptr; }
    /// A placeholder, as USE leaves it, for this node or the one that it shows.
    std::unique_ptr<Node> makeReference();
    /// An instance of this node's type, with instances of all its children, each with its scene set
    /// to SCENE and initialised. Null for a placeholder and a root, and when the copy would have
    /// more nodes than *BUDGET, which is lowered by their number; without a budget there is no
    /// limit.
    std::unique_ptr<Node> instantiate(NodeTree* scene = nullptr, std::size_t* budget = nullptr);
    /// Shows name and fields of OTHER; null does nothing.
    void shareFieldsOf(Node* other);

    // Fields. Of an instance, those of the node that it shows.

    /// Also under the names of their events, NAME being the whole name: "set_NAME" and
    /// "NAME_changed". Fields that were added to the class's own are found by the name that they
    /// had then.
    Field* findExposedField(const char* text) const;
    Field* findEventIn(const char* text) const;
    Field* findEventOut(const char* text) const;
    Field* findField(const char* text) const;
    Field* findHiddenField(const char* text) const;

    /// Appends FIELD, which belongs to the node from now on, and returns it; with TEXT under that
    /// name.
    Field& addExposedField(std::unique_ptr<Field> field);
    Field& addExposedField(const char* text, std::unique_ptr<Field> field);
    Field& addEventIn(std::unique_ptr<Field> field);
    Field& addEventIn(const char* text, std::unique_ptr<Field> field);
    Field& addEventOut(std::unique_ptr<Field> field);
    Field& addEventOut(const char* text, std::unique_ptr<Field> field);
    Field& addField(std::unique_ptr<Field> field);
    Field& addField(const char* text, std::unique_ptr<Field> field);
    Field& addHiddenField(std::unique_ptr<Field> field);
    Field& addHiddenField(const char* text, std::unique_ptr<Field> field);

    int exposedFieldCount() const { return fieldCountOf(kExposedField); }
    int eventInCount() const { return fieldCountOf(kEventIn); }
    int eventOutCount() const { return fieldCountOf(kEventOut); }
    int fieldCount() const { return fieldCountOf(kPlainField); }
    Field* exposedFieldAt(int i) const { return fieldOf(kExposedField, i); }
    Field* eventInAt(int i) const { return fieldOf(kEventIn, i); }
    Field* eventOutAt(int i) const { return fieldOf(kEventOut, i); }
    Field* fieldAt(int i) const { return fieldOf(kPlainField, i); }
    int fieldCountOf(FieldKind kind) const;
    /// Null for an index out of range.
    Field* fieldOf(FieldKind kind, int i) const;

    /// The children that a Switch or an LOD chooses from. Only a child of this node is staged, and
    /// one that leaves it is staged no more.
    int stagedCount() const;
    Node* stagedAt(int i) const;
    void stage(Node& node);
    /// Stages NODE, another child, in the place of PRESENT. Does nothing if PRESENT is not staged.
    void restage(Node& present, Node& node);
    /// Puts all staged children back into the ring, and forgets that they were staged.
    void clearStaged();

    // Events and places.

    /// Passes FIELD's event on along the routes of the tree; lost outside a tree.
    void sendEvent(Field& field);
    /// The product of the transformations from this node up to the top.
    void worldMatrix(SFMatrix& out) const;

    // Text.

    /// This node and all below it, DEPTH tabs in.
    void writeNode(TextStream& stream, int depth) const;
    void writeXml(TextStream& stream, int depth) const;
    void writeHeader(TextStream& stream, std::string_view indent) const;
    void writeChildFields(TextStream& stream, std::string_view indent,
                          std::string_view extra) const;
    /// Whether a field of the node, of any kind, is a list.
    bool hasListFields() const;

  protected:
    explicit Node(std::int32_t type) : m_type(type) {}
    /// What goes with the node: its children, its instances, its routes. For the destructor of each
    /// class without subclasses, while the fields are there.
    void retire();
    /// Gives the fields of the class the names of the table.
    void nameFields();

    /// The MEMBER of this node or, in an instance, of the node that it shows.
    template <class Class, class Type>
    Type& held(Type Class::*member, FieldKind kind, const char* name) {
        if (!m_source) {
            return static_cast<Class&>(*this).*member;
        }
        if (m_source->m_type == m_type) {
            return static_cast<Class&>(*m_source).*member;
        }
        Field* found = m_source->fieldNamed(kind, name);
        Type& own = static_cast<Class&>(*this).*member;
        return found && found->classType() == own.classType() ? static_cast<Type&>(*found) : own;
    }

    void deleteChildren();
    /// Takes every staged child out of the ring; it stays this node's own, and keeps its routes and
    /// its instances. showStaged() puts one, or all, back at the end.
    void hideStaged();
    void showStaged(Node& node);
    void showStaged();
    /// Puts all staged children at the end of the ring in the order in which they were staged,
    /// initialises each, and forgets that they were staged.
    void giveBackStaged();

    bool initialised() const { return m_initialised; }
    void setInitialised(bool initialised) { m_initialised = initialised; }

  private:
    friend class NodeTree;
    friend class SFNode;

    /// Fields and staged children that the class does not have by itself.
    struct Extras {
        std::array<std::vector<std::unique_ptr<Field>>, kFieldKinds> fields;
        // The place of the first field of each name, under the name that it was added with.
        std::array<std::unordered_map<std::string, std::size_t>, kFieldKinds> placeOfName;

        /// The first field of those that have one of NAMES, of which all but the first may be
        /// empty.
        Field* find(FieldKind kind, std::span<const std::string_view> names) const;

        // Null where a child has left since the last look. Children out of the ring belong to this
        // list; their parent is set.
        std::vector<Node*> staged;
        bool stagedHasGaps = false;
    };

    Node& holder() { return m_source ? *m_source : *this; }
    const Node& holder() const { return m_source ? *m_source : *this; }
    Field* fieldNamed(FieldKind kind, const char* name) const;
    Field* findEvent(FieldKind kind, const char* text, bool in, bool out) const;
    Field& addFieldOf(FieldKind kind, std::unique_ptr<Field> field);
    Field& addFieldOf(FieldKind kind, const char* text, std::unique_ptr<Field> field);
    std::unique_ptr<Node> makeShell(NodeTree* scene);
    void link(Node& child);
    void unlink();
    void unlinkFromRing();
    void setSceneBelow(NodeTree* scene);
    void showFieldsOf(Node& source);
    void forgetNamers();
    void forgetRoutes();
    void forgetSource();
    void closeStagedGaps() const;
    // A list of nodes that have no parent, or no parent any more, linked by m_next. To take nodes
    // down allocates nothing, so that it works where memory has run out; whoever hears of it, as a
    // viewpoint that is bound again does, must not allocate either.
    Node* takeChildren();
    Node* takeInstances(Node* list);
    static void destroy(Node* list);
    static void free(Node& top);

    // Siblings and children; the links from a node to its children own them.
    Node* m_parent = nullptr;
    Node* m_previous = nullptr;
    Node* m_next = nullptr;
    Node* m_firstChild = nullptr;
    Node* m_lastChild = nullptr;
    NodeTree* m_scene = nullptr;
    // The node whose values this one shows, and the ring of those that show this one's.
    Node* m_source = nullptr;
    Node* m_firstSharer = nullptr;
    Node* m_previousSharer = nullptr;
    Node* m_nextSharer = nullptr;
    // The first of the fields that name this node.
    SFNode* m_firstNamer = nullptr;
    std::unique_ptr<Extras> m_extras;
    std::string m_name;
    std::int32_t m_type;
    // Ends of routes of the tree that are this node.
    std::uint32_t m_routeEnds = 0;
    // The place among the staged children of the parent, -1 if it has none.
    std::int32_t m_stagedAt = -1;
    bool m_isInstance = false;
    bool m_initialised = false;
    bool m_isRoot = false;
    bool m_isParked = false;
    bool m_doomed = false;
};

}  // namespace nodes

#include "nodes/nodes/Node.h"

#include <algorithm>
#include <cassert>
#include <memory>
#include <utility>

#include "nodes/NodeTree.h"

namespace nodes {

Node::~Node() {
    retire();
    forgetNamers();
    forgetSource();
    while (m_firstSharer) {
        m_firstSharer->forgetSource();
    }
}

std::string Node::storedName(const char* text) {
    std::string name = text ? text : "";
    std::replace_if(
        name.begin(), name.end(), [](char c) { return static_cast<signed char>(c) < 33; }, '_');
    return name;
}

void Node::setName(const char* text) {
    holder().m_name = storedName(text);
}

Node* Node::parent() const {
    return m_parent && !m_parent->m_isRoot ? m_parent : nullptr;
}

Node* Node::childAt(int i) const {
    if (i < 0) {
        return nullptr;
    }
    Node* child = m_firstChild;
    for (; child && i > 0; --i) {
        child = child->m_next;
    }
    return child;
}

int Node::childCount() const {
    int count = 0;
    for (const Node* child = m_firstChild; child; child = child->m_next) {
        ++count;
    }
    return count;
}

Node* Node::childOfType(std::int32_t type) const {
    Node* child = m_firstChild;
    while (child && (child->m_isInstance ? child->m_source : child)->m_type != type) {
        child = child->m_next;
    }
    return child;
}

Node* Node::geometryChild() const {
    Node* child = m_firstChild;
    while (child && !child->isGeometry()) {
        child = child->m_next;
    }
    return child;
}

Node* Node::textureChild() const {
    Node* child = m_firstChild;
    while (child && !child->isTexture()) {
        child = child->m_next;
    }
    return child;
}

Node* Node::nextWithin(const Node* top) const {
    if (m_firstChild) {
        return m_firstChild;
    }
    const Node* node = this;
    while (node && node != top) {
        if (node->m_next) {
            return node->m_next;
        }
        node = node->m_parent;
    }
    return nullptr;
}

Node* Node::nextBehind() const {
    const Node* node = this;
    while (node && !node->m_next) {
        node = node->m_parent;
    }
    return node ? node->m_next : nullptr;
}

Node* Node::nextOfType(std::int32_t type) const {
    Node* node = next();
    while (node && node->m_type != type) {
        node = node->next();
    }
    return node;
}

Node* Node::nextNamed(const char* text) const {
    if (!text) {
        return nullptr;
    }
    Node* node = next();
    while (node && node->nameText() != text) {
        node = node->next();
    }
    return node;
}

void Node::link(Node& child) {
    child.m_parent = this;
    child.m_previous = m_lastChild;
    child.m_next = nullptr;
    (m_lastChild ? m_lastChild->m_next : m_firstChild) = &child;
    m_lastChild = &child;
    if (child.m_scene != m_scene) {
        child.setSceneBelow(m_scene);
    }
}

void Node::unlinkFromRing() {
    (m_previous ? m_previous->m_next : m_parent->m_firstChild) = m_next;
    (m_next ? m_next->m_previous : m_parent->m_lastChild) = m_previous;
    m_previous = m_next = nullptr;
}

void Node::unlink() {
    if (!m_parent) {
        return;
    }
    if (m_stagedAt >= 0) {
        m_parent->m_extras->staged[static_cast<std::size_t>(m_stagedAt)] = nullptr;
        m_parent->m_extras->stagedHasGaps = true;
        m_stagedAt = -1;
    }
    if (!m_isParked) {
        unlinkFromRing();
    }
    m_isParked = false;
    m_parent = nullptr;
}

void Node::setSceneBelow(NodeTree* scene) {
    if (m_scene) {
        for (Node* node = this; node; node = node->nextWithin(this)) {
            node->showStaged();
        }
        m_scene->forgetLeaving(*this);
    }
    for (Node* node = this; node; node = node->nextWithin(this)) {
        // Again, since those who heard of the leaving may have hidden some.
        node->showStaged();
        node->m_scene = scene;
    }
}

Node& Node::addChild(std::unique_ptr<Node> child, bool callInitialise) {
    assert(child && !child->m_parent);
    Node& node = *child.release();
    link(node);
    if (callInitialise) {
        node.initialise();
    }
    return node;
}

void Node::addChild(Node& child, bool callInitialise) {
    for (const Node* above = this; above; above = above->m_parent) {
        if (above == &child) {
            return;
        }
    }
    if (!child.m_parent) {
        return;
    }
    child.unlink();
    link(child);
    if (callInitialise) {
        child.initialise();
    }
}

std::unique_ptr<Node> Node::detach() {
    const bool owned = m_parent != nullptr;
    unlink();
    setSceneBelow(nullptr);
    destroy(takeInstances(nullptr));
    return owned ? std::unique_ptr<Node>(this) : nullptr;
}

Node* Node::takeInstances(Node* list) {
    for (Node* sharer = m_firstSharer; sharer; sharer = sharer->m_nextSharer) {
        if (sharer->m_isInstance && sharer->m_parent && !sharer->m_doomed) {
            sharer->unlink();
            sharer->m_doomed = true;
            sharer->m_next = list;
            list = sharer;
        }
    }
    return list;
}

Node* Node::takeChildren() {
    clearStaged();
    for (Node* child = m_firstChild; child; child = child->m_next) {
        child->m_parent = nullptr;
        child->m_previous = nullptr;
    }
    m_lastChild = nullptr;
    return std::exchange(m_firstChild, nullptr);
}

void Node::destroy(Node* list) {
    // Whatever shows a node that goes, goes too: the list grows at its front.
    Node* doomed = nullptr;
    while (list) {
        Node* top = list;
        list = top->m_next;
        top->setSceneBelow(nullptr);
        for (Node* node = top; node; node = node->nextWithin(top)) {
            node->clearStaged();
            node->m_doomed = true;
        }
        for (Node* node = top; node; node = node->nextWithin(top)) {
            list = node->takeInstances(list);
        }
        top->m_next = doomed;
        doomed = top;
    }
    while (doomed) {
        free(*std::exchange(doomed, doomed->m_next));
    }
}

void Node::retire() {
    if (m_doomed) {
        return;
    }
    m_doomed = true;
    setSceneBelow(nullptr);
    destroy(takeChildren());
    destroy(takeInstances(nullptr));
}

void Node::deleteChildren() {
    destroy(takeChildren());
}

void Node::free(Node& top) {
    // From leaf to leaf, so that no destructor finds children.
    Node* node = &top;
    while (node) {
        while (node->m_firstChild) {
            node = node->m_firstChild;
        }
        Node* above = node->m_parent;
        node->unlink();
        delete node;
        node = above;
    }
}

std::unique_ptr<Node> Node::makeReference() {
    auto reference = makeNode(kDef);
    reference->shareFieldsOf(this);
    reference->m_isInstance = true;
    return reference;
}

std::unique_ptr<Node> Node::makeShell(NodeTree* scene) {
    auto shell = makeNode(m_type);
    shell->shareFieldsOf(this);
    shell->m_isInstance = true;
    // The box of a geometry is among what it shows.
    shell->m_initialised = isGeometry() && holder().m_initialised;
    if (scene) {
        shell->setSceneBelow(scene);
    }
    return shell;
}

std::unique_ptr<Node> Node::instantiate(NodeTree* scene, std::size_t* budget) {
    const auto mayCopy = [](const Node& node) {
        return node.m_type != kDef && node.m_type != kRoot && node.m_type < kNodeClassCount;
    };
    const auto pay = [budget] { return !budget || (*budget > 0 && (*budget)-- > 0); };
    if (!mayCopy(*this) || !pay()) {
        return nullptr;
    }
    std::unique_ptr<Node> top = makeShell(scene);
    Node* to = top.get();
    Node* from = this;
    Node* child = m_firstChild;
    for (;;) {
        while (child && !mayCopy(*child)) {
            child = child->m_next;
        }
        if (child) {
            if (!pay()) {
                top->setSceneBelow(nullptr);
                return nullptr;
            }
            from = child;
            to = &to->addChild(child->makeShell(scene), false);
            child = from->m_firstChild;
        } else if (to == top.get()) {
            return top;
        } else {
            to->initialise();
            child = from->m_next;
            from = from->m_parent;
            to = to->m_parent;
        }
    }
}

void Node::shareFieldsOf(Node* other) {
    if (!other || &other->holder() == this) {
        return;
    }
    forgetRoutes();
    forgetSource();
    // What has shown this node shows the other one now.
    Node& source = other->holder();
    while (m_firstSharer) {
        Node* sharer = m_firstSharer;
        const bool isInstance = sharer->m_isInstance;
        sharer->forgetSource();
        sharer->showFieldsOf(source);
        sharer->m_isInstance = isInstance;
    }
    showFieldsOf(source);
}

void Node::forgetRoutes() {
    if (m_scene && m_routeEnds > 0) {
        m_scene->removeRoutesOf(*this);
    }
}

void Node::forgetNamers() {
    while (m_firstNamer) {
        m_firstNamer->setValue(nullptr);
    }
}

void Node::showFieldsOf(Node& source) {
    m_source = &source;
    m_nextSharer = source.m_firstSharer;
    m_previousSharer = nullptr;
    if (m_nextSharer) {
        m_nextSharer->m_previousSharer = this;
    }
    source.m_firstSharer = this;
}

void Node::forgetSource() {
    if (!m_source) {
        return;
    }
    // They join fields of what the node shows.
    forgetRoutes();
    (m_previousSharer ? m_previousSharer->m_nextSharer : m_source->m_firstSharer) = m_nextSharer;
    if (m_nextSharer) {
        m_nextSharer->m_previousSharer = m_previousSharer;
    }
    m_source = m_previousSharer = m_nextSharer = nullptr;
    m_isInstance = false;
}

// Closed at the next look alone, so that many children may leave one after the other.
void Node::closeStagedGaps() const {
    if (!m_extras || !m_extras->stagedHasGaps) {
        return;
    }
    std::erase(m_extras->staged, nullptr);
    m_extras->stagedHasGaps = false;
    std::int32_t at = 0;
    for (Node* node : m_extras->staged) {
        node->m_stagedAt = at++;
    }
}

int Node::stagedCount() const {
    closeStagedGaps();
    return m_extras ? static_cast<int>(m_extras->staged.size()) : 0;
}

Node* Node::stagedAt(int i) const {
    return i >= 0 && i < stagedCount() ? m_extras->staged[static_cast<std::size_t>(i)] : nullptr;
}

void Node::stage(Node& node) {
    if (node.m_parent != this || node.m_stagedAt >= 0) {
        return;
    }
    if (!m_extras) {
        m_extras = std::make_unique<Extras>();
    }
    const int at = stagedCount();
    m_extras->staged.push_back(&node);
    node.m_stagedAt = at;
}

void Node::restage(Node& present, Node& node) {
    if (present.m_parent != this || node.m_parent != this || present.m_stagedAt < 0 ||
        node.m_stagedAt >= 0) {
        return;
    }
    showStaged(present);
    m_extras->staged[static_cast<std::size_t>(present.m_stagedAt)] = &node;
    node.m_stagedAt = std::exchange(present.m_stagedAt, -1);
}

void Node::clearStaged() {
    showStaged();
    if (!m_extras) {
        return;
    }
    for (Node* node : std::exchange(m_extras->staged, {})) {
        node->m_stagedAt = -1;
    }
}

void Node::hideStaged() {
    closeStagedGaps();
    if (!m_extras) {
        return;
    }
    for (Node* node : m_extras->staged) {
        if (!node->m_isParked) {
            node->unlinkFromRing();
            node->m_isParked = true;
        }
    }
}

void Node::showStaged(Node& node) {
    if (node.m_parent == this && node.m_isParked) {
        node.m_isParked = false;
        link(node);
    }
}

void Node::showStaged() {
    closeStagedGaps();
    if (!m_extras) {
        return;
    }
    for (Node* node : m_extras->staged) {
        showStaged(*node);
    }
}

void Node::giveBackStaged() {
    hideStaged();
    const int count = stagedCount();
    showStaged();
    clearStaged();
    Node* child = nullptr;
    for (int i = 0; i < count; ++i) {
        child = child ? child->m_previous : m_lastChild;
    }
    for (; child; child = child->m_next) {
        child->initialise();
    }
}

}  // namespace nodes

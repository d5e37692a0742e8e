#pragma once

#include "model/Group.h"

/// Walks over a subtree that need neither memory nor call stack: the way back up goes over the
/// parent pointers, the way on over the parent's map. Each step costs the logarithm of the number
/// of siblings. `Group` is CGroup or const CGroup.

namespace groupwalk {

template <class Group>
Group* NextSibling(Group& group) noexcept {
    const auto& siblings = group.Parent()->Children();
    const auto it = siblings.upper_bound(group.Id());
    return it == siblings.end() ? nullptr : it->second.get();
}

template <class Group>
Group* FirstChild(Group& group) noexcept {
    return group.Children().empty() ? nullptr : group.Children().begin()->second.get();
}

/// The group at which a walk with children first begins.
template <class Group>
Group* FirstLeaf(Group& group) noexcept {
    Group* leaf = &group;
    while (Group* child = FirstChild(*leaf))
        leaf = child;
    return leaf;
}

/// Calls visit(group) on `root` and all below it, parents first, children in id order.
template <class Group, class Visit>
void ParentsFirst(Group& root, Visit&& visit) {
    Group* group = &root;
    while (group) {
        visit(*group);
        if (Group* child = FirstChild(*group)) {
            group = child;
            continue;
        }
        Group* next = nullptr;
        while (group != &root && !(next = NextSibling(*group)))
            group = group->Parent();
        group = next;
    }
}

/// Calls visit(group) on all below `root` and on `root`, children first, in id order.
template <class Group, class Visit>
void ChildrenFirst(Group& root, Visit&& visit) {
    Group* group = FirstLeaf(root);
    for (;;) {
        visit(*group);
        if (group == &root)
            return;
        Group* const sibling = NextSibling(*group);
        group = sibling ? FirstLeaf(*sibling) : group->Parent();
    }
}

/// Calls visit(object) on all objects of the subtree: those of children first, own ones in id
/// order.
template <class Group, class Visit>
void Objects(Group& root, Visit&& visit) {
    ChildrenFirst(root, [&visit](Group& group) {
        for (const auto& [id, object] : group.Objects())
            visit(*object);
    });
}

}  // namespace groupwalk

#include "nodes/Route.h"

#include <array>
#include <cstddef>
#include <initializer_list>

#include "nodes/NodeTree.h"

namespace nodes {
namespace {

using Copy = void (*)(const Field& from, Field& to);

template <class Type>
void copyValue(const Field& from, Field& to) {
    static_cast<Type&>(to).setValue(static_cast<const Type&>(from).value());
}

void copyList(const Field& from, Field& to) {
    static_cast<MField&>(to).assign(from);
}

/// How values of a type are carried; types without an entry are not.
constexpr std::array<Copy, kFieldTypeCount> kCopies = [] {
    std::array<Copy, kFieldTypeCount> copies{};
    copies[kSFBool] = copyValue<SFBool>;
    copies[kSFFloat] = copyValue<SFFloat>;
    copies[kSFInt32] = copyValue<SFInt32>;
    copies[kSFVec2f] = copyValue<SFVec2f>;
    copies[kSFVec3f] = copyValue<SFVec3f>;
    copies[kSFString] = copyValue<SFString>;
    copies[kSFColor] = copyValue<SFColor>;
    copies[kSFTime] = copyValue<SFTime>;
    copies[kSFRotation] = copyValue<SFRotation>;
    for (const std::size_t list : std::initializer_list<std::size_t>{
             kMFFloat, kMFInt32, kMFVec2f, kMFVec3f, kMFString, kMFColor, kMFTime, kMFRotation}) {
        copies[list] = copyList;
    }
    return copies;
}();

}  // namespace

void Route::deliver() {
    if (m_delivered && m_fromField->equals(*m_toField)) {
        return;
    }
    m_delivered = true;
    // The fields are one where a node and an instance of it are joined.
    if (m_fromField->classType() == m_toField->classType() && m_fromField != m_toField) {
        if (const Copy copy = kCopies[static_cast<std::size_t>(m_fromField->classType())]) {
            copy(*m_fromField, *m_toField);
        }
    }
    if (m_toNode->isBindable() && m_toNode->scene()) {
        const SFBool& request = static_cast<BindableNode&>(*m_toNode).bindRequestField();
        if (m_toField == &request) {
            m_toNode->scene()->setBound(*m_toNode, request.value());
        }
    }
}

}  // namespace nodes

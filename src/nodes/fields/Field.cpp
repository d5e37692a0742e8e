#include "nodes/fields/Field.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "nodes/fields/ScalarFields.h"
#include "nodes/fields/ValueText.h"
#include "nodes/fields/VectorFields.h"

namespace nodes {
namespace {

constexpr const char* kTypeNames[] = {
    "None",     "SFBool",   "SFFloat",  "SFDouble",   "SFInt32",    "SFVec2f", "SFVec3f", "SFVec2d",
    "SFVec3d",  "SFString", "SFColor",  "SFTime",     "SFRotation", "SFImage", "SFNode",  "SFChar",
    "MFBool",   "MFFloat",  "MFDouble", "MFInt32",    "MFVec2f",    "MFVec3f", "MFVec2d", "MFVec3d",
    "MFString", "MFColor",  "MFTime",   "MFRotation", "MFImage",    "MFNode",  "MFChar"};
static_assert(std::size(kTypeNames) == kFieldTypeCount);

constexpr std::int32_t kListTypes[] = {kMFFloat, kMFInt32, kMFVec2f,    kMFVec3f, kMFString,
                                       kMFColor, kMFTime,  kMFRotation, kMFNode};

/// A field's type number can be set to another class's, so the class is asked for here.
template <class Item>
void writeValueOf(TextStream& stream, const Field& field) {
    if (const auto* item = dynamic_cast<const Item*>(&field)) {
        putValue(stream, item->value());
    }
}

}  // namespace

std::int32_t fieldTypeFromName(const char* text) {
    if (text) {
        for (std::int32_t type = kSFBool; type < kFieldTypeCount; ++type) {
            if (std::strcmp(kTypeNames[type], text) == 0) {
                return type;
            }
        }
    }
    return kNoField;
}

const char* fieldTypeName(std::int32_t type) {
    return type > kNoField && type < kFieldTypeCount ? kTypeNames[type] : nullptr;
}

bool isSingleValueType(std::int32_t type) {
    return std::find(std::begin(kListTypes), std::end(kListTypes), type) == std::end(kListTypes);
}

Field::~Field() {
    setNameOfTable("");
}

const char* Field::toText(std::string& out) const {
    char buffer[kFixedLength + 1];
    out = print(buffer, sizeof buffer);
    return out.c_str();
}

const char* Field::asText() const {
    static std::string text;
    return toText(text);
}

bool Field::equals(const Field&) const {
    return false;
}

void Field::setName(const char* text) {
    if (!text || !*text) {
        setNameOfTable("");
        return;
    }
    const std::size_t size = std::strlen(text) + 1;
    char* const copy = new char[size];
    std::memcpy(copy, text, size);
    setNameOfTable(copy);
    m_ownsName = true;
}

void Field::setNameOfTable(const char* text) {
    if (m_ownsName) {
        delete[] m_name;
    }
    m_name = text;
    m_ownsName = false;
}

void writeValue(TextStream& stream, const Field& field) {
    switch (field.type()) {
        case kSFBool:
            return writeValueOf<SFBool>(stream, field);
        case kSFFloat:
            return writeValueOf<SFFloat>(stream, field);
        case kSFInt32:
            return writeValueOf<SFInt32>(stream, field);
        case kSFVec2f:
            return writeValueOf<SFVec2f>(stream, field);
        case kSFVec3f:
            return writeValueOf<SFVec3f>(stream, field);
        case kSFString:
            return writeValueOf<SFString>(stream, field);
        case kSFColor:
            return writeValueOf<SFColor>(stream, field);
        case kSFTime:
            return writeValueOf<SFTime>(stream, field);
        case kSFRotation:
            return writeValueOf<SFRotation>(stream, field);
        default:
            return;
    }
}

}  // namespace nodes

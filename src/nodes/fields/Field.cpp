#include "nodes/fields/Field.h"

#include <cstring>
#include <iterator>
#include <string>
#include <string_view>

#include "nodes/fields/ScalarFields.h"
#include "nodes/fields/VectorFields.h"
#include "nodes/writer/TextStream.h"

namespace nodes {
namespace {

constexpr const char* kTypeNames[] = {
    "None",     "SFBool",   "SFFloat",  "SFDouble",   "SFInt32",    "SFVec2f", "SFVec3f", "SFVec2d",
    "SFVec3d",  "SFString", "SFColor",  "SFTime",     "SFRotation", "SFImage", "SFNode",  "SFChar",
    "MFBool",   "MFFloat",  "MFDouble", "MFInt32",    "MFVec2f",    "MFVec3f", "MFVec2d", "MFVec3d",
    "MFString", "MFColor",  "MFTime",   "MFRotation", "MFImage",    "MFNode",  "MFChar",
};
static_assert(std::size(kTypeNames) == kFieldTypeCount);

template <class Values>
void putAll(TextStream& stream, const Values& values) {
    bool first = true;
    for (const float value : values) {
        if (!first) {
            stream.put(' ');
        }
        first = false;
        stream.put(value);
    }
}

}  // namespace

std::int32_t fieldTypeFromName(const char* text) {
    if (text) {
        for (std::int32_t type = kSFBool; type < kFieldTypeCount; ++type) {
            if (std::strcmp(text, kTypeNames[type]) == 0) {
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
    switch (type) {
        case kMFFloat:
        case kMFInt32:
        case kMFVec2f:
        case kMFVec3f:
        case kMFString:
        case kMFColor:
        case kMFTime:
        case kMFRotation:
        case kMFNode:
            return false;
        default:
            return true;
    }
}

Field::~Field() {
    setNameOfTable("");
}

const char* Field::toText(std::string& out) const {
    char buffer[256];
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
    const std::string_view name = text ? text : "";
    char* copy = new char[name.size() + 1];  // goes with the next name, or with the field
    name.copy(copy, name.size());
    copy[name.size()] = '\0';
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
            stream.put(
                std::string_view(static_cast<const SFBool&>(field).value() ? "TRUE" : "FALSE"));
            break;
        case kSFFloat:
            stream.put(static_cast<const SFFloat&>(field).value());
            break;
        case kSFInt32:
            stream.put(static_cast<const SFInt32&>(field).value());
            break;
        case kSFTime:
            stream.put(static_cast<const SFTime&>(field).value());
            break;
        case kSFVec2f:
            putAll(stream, static_cast<const SFVec2f&>(field).value());
            break;
        case kSFVec3f:
        case kSFColor:
            putAll(stream, static_cast<const TripleField&>(field).value());
            break;
        case kSFRotation:
            putAll(stream, static_cast<const SFRotation&>(field).value());
            break;
        case kSFString:
            stream.put('"');
            stream.put(std::string_view(static_cast<const SFString&>(field).value()));
            stream.put('"');
            break;
        default:
            break;
    }
}

}  // namespace nodes

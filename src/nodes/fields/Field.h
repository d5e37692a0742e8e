#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace nodes {

class TextStream;

/// Type numbers of fields, the index into the table of their names. Nothing makes a field of a type
/// that has a number and no class.
enum FieldType : std::int32_t {
    kNoField = 0,  // SFMatrix, which no file can hold
    kSFBool,
    kSFFloat,
    kSFDouble,
    kSFInt32,
    kSFVec2f,
    kSFVec3f,
    kSFVec2d,
    kSFVec3d,
    kSFString,
    kSFColor,
    kSFTime,
    kSFRotation,
    kSFImage,
    kSFNode,
    kSFChar,
    kMFBool,
    kMFFloat,
    kMFDouble,
    kMFInt32,
    kMFVec2f,
    kMFVec3f,
    kMFVec2d,
    kMFVec3d,
    kMFString,
    kMFColor,
    kMFTime,
    kMFRotation,
    kMFImage,
    kMFNode,
    kMFChar,
    kFieldTypeCount
};

/// The number of a type's name, compared exactly; 0 for null, "" and anything unknown.
std::int32_t fieldTypeFromName(const char* text);
/// The name of a type number from 1 to 30, null for any other.
const char* fieldTypeName(std::int32_t type);
/// False for the lists; SFImage counts as one value.
bool isSingleValueType(std::int32_t type);

/// A named, typed value: it reads itself from text, writes itself as text and compares itself with
/// another. A field has one owner, a node or a list. Not for use by several threads at a time.
class Field {
  public:
    virtual ~Field();
    Field(const Field&) = delete;
    Field& operator=(const Field&) = delete;

    /// Takes the value from text; a null text changes nothing, nor does a vector's or a rotation's
    /// text that does not convert.
    virtual void fromText(const char* text) = 0;
    /// The text form in OUT; returns its characters. The whole text, however long.
    virtual const char* toText(std::string& out) const;
    /// The text form in BUFFER, cut off to CAPACITY characters with the terminating zero; returns
    /// BUFFER, which a capacity of 0 leaves alone.
    virtual char* print(char* buffer, std::size_t capacity) const = 0;
    /// Numbers in one value: 1, 2, 3, 4 or 16; a list counts those of an item.
    virtual int componentCount() const { return 1; }
    /// toText() in one string of the whole process, good until the next call.
    const char* asText() const;
    /// Exact, component by component. Lists and matrices are never equal.
    virtual bool equals(const Field& other) const;

    const char* name() const { return m_name; }
    /// Copies TEXT; null gives the empty name.
    void setName(const char* text);
    /// As setName, of a text that outlives the field: the names in the tables of node types.
    void setNameOfTable(const char* text);

    std::int32_t type() const { return m_type; }
    /// The type that the field was made with, whatever setTypeByName() has said since.
    std::int32_t classType() const { return m_classType; }
    const char* typeName() const { return fieldTypeName(m_type); }
    void setTypeByName(const char* text) { m_type = fieldTypeFromName(text); }
    bool isSingleValue() const { return isSingleValueType(m_type); }

  protected:
    explicit Field(FieldType type) : m_type(type), m_classType(static_cast<std::int8_t>(type)) {}

  private:
    const char* m_name = "";
    std::int32_t m_type;
    const std::int8_t m_classType;
    bool m_ownsName = false;
};

/// The form in which the VRML writers print a single value: numbers with six digits, TRUE and
/// FALSE, texts between double quotes as they are. Types without such a form print nothing.
void writeValue(TextStream& stream, const Field& field);

}  // namespace nodes
